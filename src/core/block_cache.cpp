#include "core/block_cache.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <new>
#include <vector>

namespace zorv {

namespace {

// The kept blocks, oldest first; all under `mutex`. Never destroyed: lists of static lifetime may
// still give blocks back while the process ends.
struct KeptBlocks {
  std::mutex mutex;
  std::vector<Block> blocks;
  uint64_t bytes = 0;

  static KeptBlocks& instance() {
    static auto* kept = new KeptBlocks();
    return *kept;
  }

  Block take(size_t i) {
    const Block block = blocks[i];
    blocks.erase(blocks.begin() + static_cast<std::ptrdiff_t>(i));
    bytes -= block.bytes;
    return block;
  }
};

// Tells the kernel that nobody needs what the block's whole pages hold.
void offer_pages(const Block& block) {
  const auto page = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
  const uintptr_t begin = (reinterpret_cast<uintptr_t>(block.data) + page - 1) & ~(page - 1);
  const uintptr_t end = (reinterpret_cast<uintptr_t>(block.data) + block.bytes) & ~(page - 1);
  if (begin < end) madvise(reinterpret_cast<void*>(begin), end - begin, MADV_FREE);
}

Block find_kept(uint64_t bytes) {
  KeptBlocks& kept = KeptBlocks::instance();
  const std::lock_guard lock(kept.mutex);
  for (size_t i = kept.blocks.size(); i-- > 0;) {
    const uint64_t size = kept.blocks[i].bytes;
    if (bytes <= size && size <= bytes + bytes / 4) return kept.take(i);
  }
  return {};
}

}  // namespace

Block acquire_block(uint64_t bytes) {
  if (bytes >= kLargeBlockBytes) {
    const Block kept = find_kept(bytes);
    if (kept.data != nullptr) return kept;
  }
  return resize_block({}, bytes);
}

Block resize_block(Block block, uint64_t bytes) {
  void* resized = std::realloc(block.data, bytes);
  if (resized == nullptr) throw std::bad_alloc();
  return {resized, bytes};
}

void release_block(Block block) {
  if (block.bytes < kLargeBlockBytes || block.bytes > kMaxKeptBytes) return std::free(block.data);
  offer_pages(block);
  KeptBlocks& kept = KeptBlocks::instance();
  std::vector<Block> dropped;
  {
    const std::lock_guard lock(kept.mutex);
    while (kept.blocks.size() >= kMaxKeptBlocks || kept.bytes + block.bytes > kMaxKeptBytes) {
      dropped.push_back(kept.take(0));
    }
    kept.blocks.push_back(block);
    kept.bytes += block.bytes;
  }
  for (const Block& old : dropped) std::free(old.data);
}

}  // namespace zorv
