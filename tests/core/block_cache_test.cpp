#include "core/block_cache.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

namespace zorv::test {
namespace {

// Also run with ZORV_KEPT_MIB=20.
TEST(BlockCache, KeepsWhatWasReleasedLastWithinItsBound) {
  const char* const configured = std::getenv("ZORV_KEPT_MIB");
  const uint64_t bound = (configured == nullptr ? kKeptMib : std::strtoull(configured, nullptr, 10))
                         << 20;
  for (const uint64_t bytes : {uint64_t{5} << 20, uint64_t{8} << 20, uint64_t{15} << 20}) {
    const Block block = acquire_block(bytes);
    ASSERT_GE(block.bytes, bytes);
    std::memset(block.data, 7, bytes);
    release_block(block);
    ASSERT_LE(kept_bytes(), bound);
    ASSERT_GE(kept_bytes(), bytes);
    const Block again = acquire_block(bytes);
    EXPECT_EQ(again.data, block.data);
    release_block(again);
  }
  const uint64_t before = kept_bytes();
  release_block(acquire_block(bound + 1));
  release_block(acquire_block(kLargeBlockBytes - 1));
  EXPECT_EQ(kept_bytes(), before);
  EXPECT_THROW(acquire_block(UINT64_MAX), std::bad_alloc);
}

}  // namespace
}  // namespace zorv::test
