// The inner loops on 32-bit fields, in two forms: for any x86-64 and for AVX2. Both give the same
// results, which form runs is settled once, by the processor.
//
// Arrays of fields, signs, draws and deadlines have room for kBlock more elements than there are
// variables, since the loops read whole blocks.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zorv::plugin::easy {

inline constexpr size_t kLanes = 8;
inline constexpr size_t kBlock = 64;

inline constexpr int32_t kNoMove = INT32_MAX;
// What stands for a variable that may be flipped, and for one that may not.
inline constexpr int32_t kFree = INT32_MIN, kBarred = INT32_MAX;

struct Kernels {
  // Which of the kBlock variables from `begin` on raise the energy by at most temperature times
  // their draw if they are flipped, as a mask; draws[0] is that of `begin`. The rise by a flip is
  // fields[i] where signs[i] is 0 and -fields[i] where it is -1; null are signs that are all 0.
  uint64_t (*accepted)(const int32_t* fields, const int32_t* signs, size_t begin,
                       const float* draws, float temperature);
  // The least rise of the free variables of each block, or kNoMove. Returns that of all variables,
  // or what lies behind them, which is 0.
  int32_t (*least_rises)(const int32_t* fields, const int32_t* signs, const int32_t* bars,
                         size_t blocks, int32_t* least);
  // Which of the kBlock variables from `begin` on are free and have that rise, as a mask.
  uint64_t (*equal)(const int32_t* fields, const int32_t* signs, const int32_t* bars, size_t begin,
                    int32_t value);
  // rises[i] += row[i] * spins[i] or, with is_minus, -=. Spins are 1 or -1, n is a multiple of
  // 2 * kLanes, and no row[i] is the least of its type.
  void (*add_row16)(int32_t* rises, const int16_t* row, const int16_t* spins, bool is_minus,
                    size_t n);
  void (*add_row32)(int32_t* rises, const int32_t* row, const int16_t* spins, bool is_minus,
                    size_t n);
};

extern const Kernels kPlainKernels;
// The fastest form that this processor can run.
const Kernels& kernels();

}  // namespace zorv::plugin::easy
