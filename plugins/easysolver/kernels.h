// The inner loops on 32-bit fields, in two forms: for any x86-64 and for AVX2. Both give the same
// results, which form runs is settled once, by the processor.
//
// Arrays of fields, signs and deadlines have room for kLanes more elements than there are
// variables, since the loops read whole vectors.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zorv::plugin::easy {

inline constexpr size_t kLanes = 8;

struct BestMove {
  int32_t delta;
  uint32_t variable;  // of the first that has the delta; without meaning where delta is kNoMove
};
inline constexpr int32_t kNoMove = INT32_MAX;

struct Kernels {
  // The first i of [begin, end) whose flip raises the energy by at most temperature * draws[i], or
  // end. The rise of a flip is fields[i] where signs[i] is 0 and -fields[i] where it is -1.
  size_t (*next_accepted)(const int32_t* fields, const int32_t* signs, const float* draws,
                          float temperature, size_t begin, size_t end);
  // The best of [begin, end) among flips that are not tabu, which they are as long as
  // tabu_until[i] > now, or lower the energy below `aspiration`.
  BestMove (*best_move)(const int32_t* fields, const int32_t* signs, const uint32_t* tabu_until,
                        uint32_t now, int32_t aspiration, size_t begin, size_t end);
  // fields[i] += row[i] or, with sign -1, fields[i] -= row[i]. n is a multiple of kLanes.
  void (*add_row16)(int32_t* fields, const int16_t* row, int32_t sign, size_t n);
  void (*add_row32)(int32_t* fields, const int32_t* row, int32_t sign, size_t n);
};

extern const Kernels kPlainKernels;
// The fastest form that this processor can run.
const Kernels& kernels();

}  // namespace zorv::plugin::easy
