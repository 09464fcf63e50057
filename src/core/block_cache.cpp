#include "core/block_cache.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <type_traits>

#include "zorv/engine/mutex.h"

namespace zorv {

namespace {

constexpr uint64_t kHugePageBytes = uint64_t{2} << 20;
constexpr uint64_t kMaxBytes = PTRDIFF_MAX;  // of any object

uint64_t configured_bytes() {
  uint64_t mib = kKeptMib;
  if (const char* text = std::getenv("ZORV_KEPT_MIB")) {
    char* end;
    const unsigned long long n = std::strtoull(text, &end, 10);
    if (end != text) mib = n;
  }
  return std::min(mib, kMaxBytes >> 20) << 20;
}

uint64_t most_kept_bytes() {
  static const uint64_t bytes = configured_bytes();
  return bytes;
}

// The kept blocks, oldest first. Never destroyed: lists of static lifetime may still give blocks
// back while the process ends.
struct KeptBlocks {
  Mutex mutex;
  std::array<Block, kMaxKeptBlocks> blocks ZORV_GUARDED_BY(mutex);
  size_t count ZORV_GUARDED_BY(mutex) = 0;
  uint64_t bytes ZORV_GUARDED_BY(mutex) = 0;

  static KeptBlocks& instance() {
    static KeptBlocks kept;
    return kept;
  }

  Block take(size_t i) ZORV_REQUIRES(mutex) {
    const Block block = blocks[i];
    std::copy(blocks.begin() + i + 1, blocks.begin() + count, blocks.begin() + i);
    --count;
    bytes -= block.bytes;
    return block;
  }
  void keep(Block block) ZORV_REQUIRES(mutex) {
    blocks[count] = block;
    ++count;
    bytes += block.bytes;
  }
  bool has_room_for(Block block) const ZORV_REQUIRES(mutex) {
    return count < kMaxKeptBlocks && bytes + block.bytes <= most_kept_bytes();
  }
};
static_assert(std::is_trivially_destructible_v<KeptBlocks>);

// Advises the kernel about the whole pages of a block. With huge pages, a fault clears 2 MiB
// instead of 4 KiB.
void advise(const Block& block, uint64_t page, int advice) {
  const uintptr_t begin = (reinterpret_cast<uintptr_t>(block.data) + page - 1) & ~(page - 1);
  const uintptr_t end = (reinterpret_cast<uintptr_t>(block.data) + block.bytes) & ~(page - 1);
  if (begin < end) madvise(reinterpret_cast<void*>(begin), end - begin, advice);
}

Block find_kept(uint64_t bytes) {
  KeptBlocks& kept = KeptBlocks::instance();
  const MutexLock lock(kept.mutex);
  for (size_t i = kept.count; i-- > 0;) {
    const uint64_t size = kept.blocks[i].bytes;
    if (bytes <= size && size <= bytes + bytes / 4) return kept.take(i);
  }
  return {};
}

}  // namespace

Block acquire_block(uint64_t bytes) {
  if (bytes < kLargeBlockBytes) return resize_block({}, bytes);
  const Block kept = find_kept(bytes);
  if (kept.data != nullptr) return kept;
  if (bytes > kMaxBytes - kHugePageBytes) throw std::bad_alloc();
  void* const fresh = std::aligned_alloc(kHugePageBytes, bytes + (-bytes & (kHugePageBytes - 1)));
  if (fresh == nullptr) throw std::bad_alloc();
  advise({fresh, bytes}, kHugePageBytes, MADV_HUGEPAGE);
  return {fresh, bytes};
}

Block resize_block(Block block, uint64_t bytes) {
  void* resized = std::realloc(block.data, bytes);
  if (resized == nullptr) throw std::bad_alloc();
  if (bytes >= kLargeBlockBytes && bytes > block.bytes) {
    advise({resized, bytes}, kHugePageBytes, MADV_HUGEPAGE);
  }
  return {resized, bytes};
}

void release_block(Block block) {
  if (block.bytes < kLargeBlockBytes || block.bytes > most_kept_bytes()) {
    return std::free(block.data);
  }
  // Nobody needs what it holds.
  advise(block, static_cast<uint64_t>(sysconf(_SC_PAGESIZE)), MADV_FREE);
  KeptBlocks& kept = KeptBlocks::instance();
  std::array<Block, kMaxKeptBlocks> dropped;
  size_t drops = 0;
  {
    const MutexLock lock(kept.mutex);
    while (!kept.has_room_for(block)) dropped[drops++] = kept.take(0);
    kept.keep(block);
  }
  for (size_t i = 0; i < drops; ++i) std::free(dropped[i].data);
}

uint64_t kept_bytes() {
  KeptBlocks& kept = KeptBlocks::instance();
  const MutexLock lock(kept.mutex);
  return kept.bytes;
}

}  // namespace zorv
