#include "easysolver/kernels.h"

#include <immintrin.h>

#include <algorithm>

namespace zorv::plugin::easy {

namespace {

int32_t rise(int32_t field, int32_t sign) { return (field ^ sign) - sign; }

size_t next_accepted_plain(const int32_t* fields, const int32_t* signs, const float* draws,
                           float temperature, size_t begin, size_t end) {
  size_t i = begin;
  while (i<end&& static_cast<float>(rise(fields[i], signs[i]))> temperature * draws[i]) ++i;
  return i;
}

BestMove best_move_plain(const int32_t* fields, const int32_t* signs, const uint32_t* tabu_until,
                         uint32_t now, int32_t aspiration, size_t begin, size_t end) {
  BestMove best = {kNoMove, 0};
  for (size_t i = begin; i < end; ++i) {
    const int32_t delta = rise(fields[i], signs[i]);
    if (delta >= best.delta || (tabu_until[i] > now && delta >= aspiration)) continue;
    best = {delta, static_cast<uint32_t>(i)};
  }
  return best;
}

template <typename Coeff>
void add_row_plain(int32_t* fields, const Coeff* row, int32_t sign, size_t n) {
  for (size_t i = 0; i < n; ++i) fields[i] += (row[i] ^ sign) - sign;
}

#define ZORV_AVX2 __attribute__((target("avx2,bmi")))

ZORV_AVX2 __m256i load(const void* p) { return _mm256_loadu_si256(static_cast<const __m256i*>(p)); }
ZORV_AVX2 __m256i rises(const int32_t* fields, const int32_t* signs) {
  const __m256i sign = load(signs);
  return _mm256_sub_epi32(_mm256_xor_si256(load(fields), sign), sign);
}

ZORV_AVX2 size_t next_accepted_avx2(const int32_t* fields, const int32_t* signs, const float* draws,
                                    float temperature, size_t begin, size_t end) {
  const __m256 scale = _mm256_set1_ps(temperature);
  for (size_t i = begin; i < end; i += kLanes) {
    const __m256 delta = _mm256_cvtepi32_ps(rises(fields + i, signs + i));
    const __m256 bound = _mm256_mul_ps(scale, _mm256_loadu_ps(draws + i));
    const int passes = _mm256_movemask_ps(_mm256_cmp_ps(delta, bound, _CMP_LE_OQ));
    if (passes != 0) return std::min(end, i + static_cast<size_t>(__builtin_ctz(passes)));
  }
  return end;
}

ZORV_AVX2 BestMove best_move_avx2(const int32_t* fields, const int32_t* signs,
                                  const uint32_t* tabu_until, uint32_t now, int32_t aspiration,
                                  size_t begin, size_t end) {
  const size_t whole = begin + (end - begin) / kLanes * kLanes;
  const __m256i nows = _mm256_set1_epi32(static_cast<int32_t>(now));
  const __m256i aspirations = _mm256_set1_epi32(aspiration);
  const __m256i none = _mm256_set1_epi32(kNoMove);
  __m256i best = none, where = _mm256_setzero_si256();
  __m256i here = _mm256_add_epi32(_mm256_set1_epi32(static_cast<int32_t>(begin)),
                                  _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7));
  for (size_t i = begin; i < whole; i += kLanes) {
    __m256i delta = rises(fields + i, signs + i);
    const __m256i tabu = _mm256_andnot_si256(_mm256_cmpgt_epi32(aspirations, delta),
                                             _mm256_cmpgt_epi32(load(tabu_until + i), nows));
    delta = _mm256_blendv_epi8(delta, none, tabu);
    const __m256i better = _mm256_cmpgt_epi32(best, delta);
    best = _mm256_blendv_epi8(best, delta, better);
    where = _mm256_blendv_epi8(where, here, better);
    here = _mm256_add_epi32(here, _mm256_set1_epi32(kLanes));
  }
  alignas(32) int32_t deltas[kLanes], variables[kLanes];
  _mm256_store_si256(reinterpret_cast<__m256i*>(deltas), best);
  _mm256_store_si256(reinterpret_cast<__m256i*>(variables), where);
  BestMove first = best_move_plain(fields, signs, tabu_until, now, aspiration, whole, end);
  for (size_t lane = 0; lane < kLanes; ++lane) {
    const BestMove other = {deltas[lane], static_cast<uint32_t>(variables[lane])};
    if (other.delta < first.delta ||
        (other.delta == first.delta && other.variable < first.variable)) {
      first = other;
    }
  }
  return first;
}

ZORV_AVX2 void add_row16_avx2(int32_t* fields, const int16_t* row, int32_t sign, size_t n) {
  const __m256i signs = _mm256_set1_epi32(sign);
  for (size_t i = 0; i < n; i += kLanes) {
    const __m256i step =
        _mm256_cvtepi16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(row + i)));
    const __m256i sum =
        _mm256_add_epi32(load(fields + i), _mm256_sub_epi32(_mm256_xor_si256(step, signs), signs));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(fields + i), sum);
  }
}

ZORV_AVX2 void add_row32_avx2(int32_t* fields, const int32_t* row, int32_t sign, size_t n) {
  const __m256i signs = _mm256_set1_epi32(sign);
  for (size_t i = 0; i < n; i += kLanes) {
    const __m256i step = _mm256_sub_epi32(_mm256_xor_si256(load(row + i), signs), signs);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(fields + i),
                        _mm256_add_epi32(load(fields + i), step));
  }
}

const Kernels kAvx2Kernels = {next_accepted_avx2, best_move_avx2, add_row16_avx2, add_row32_avx2};

}  // namespace

const Kernels kPlainKernels = {next_accepted_plain, best_move_plain, add_row_plain<int16_t>,
                               add_row_plain<int32_t>};

const Kernels& kernels() {
  static const bool has_avx2 =
      __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("bmi") != 0;
  return has_avx2 ? kAvx2Kernels : kPlainKernels;
}

}  // namespace zorv::plugin::easy
