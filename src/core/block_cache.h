// Memory for long term lists, recycled.
//
// Building a model is bound by memory that is touched for the first time: the kernel has to find
// and clear every page. Measured for a block of 384 MB, on the kind of machine that this is
// developed on: 0.13 to 0.5 s to fill a fresh one, 0.03 s to fill it again. A product and its
// simplified form, one after the other, are of much the same size, so a few large blocks that were
// just freed are kept for the next list, up to a bound that ZORV_KEPT_MIB sets. The kernel is told
// that it may take their pages whenever it needs them (0.04 s, less than unmapping costs), so what
// is kept is no burden to the machine; pages that it took are merely fresh again.
#pragma once

#include <cstdint>

namespace zorv {

// Smaller blocks go straight to malloc and free.
inline constexpr uint64_t kLargeBlockBytes = uint64_t{4} << 20;
inline constexpr uint64_t kMaxKeptBlocks = 4;
inline constexpr uint64_t kKeptMib = 256;  // at most, by default

// A block of malloc and its true size.
struct Block {
  void* data = nullptr;
  uint64_t bytes = 0;
};

// At least `bytes`; a kept block may be up to a quarter larger.
Block acquire_block(uint64_t bytes);
// realloc: grows or cuts, and moves the contents if need be.
Block resize_block(Block block, uint64_t bytes);
void release_block(Block block);
// How much is kept now.
uint64_t kept_bytes();

}  // namespace zorv
