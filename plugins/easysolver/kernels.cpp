#include "easysolver/kernels.h"

#include <immintrin.h>

#include <algorithm>

namespace zorv::plugin::easy {

namespace {

int32_t rise(const int32_t* fields, const int32_t* signs, size_t i) {
  return signs == nullptr ? fields[i] : (fields[i] ^ signs[i]) - signs[i];
}

uint64_t accepted_plain(const int32_t* fields, const int32_t* signs, size_t begin,
                        const float* draws, float temperature) {
  uint64_t mask = 0;
  for (size_t i = 0; i < kBlock; ++i) {
    const float bound = temperature * draws[i];
    const bool is_accepted = static_cast<float>(rise(fields, signs, begin + i)) <= bound;
    mask |= uint64_t{is_accepted} << i;
  }
  return mask;
}

int32_t least_rises_plain(const int32_t* fields, const int32_t* signs, const int32_t* bars,
                          size_t blocks, int32_t* least) {
  int32_t of_all = kNoMove;
  for (size_t block = 0; block < blocks; ++block) {
    int32_t of_block = kNoMove;
    for (size_t i = block * kBlock; i < (block + 1) * kBlock; ++i) {
      const int32_t delta = rise(fields, signs, i);
      of_all = std::min(of_all, delta);
      of_block = std::min(of_block, std::max(delta, bars[i]));
    }
    least[block] = of_block;
  }
  return of_all;
}

uint64_t equal_plain(const int32_t* fields, const int32_t* signs, const int32_t* bars, size_t begin,
                     int32_t value) {
  uint64_t mask = 0;
  for (size_t i = 0; i < kBlock; ++i) {
    const bool is_equal = std::max(rise(fields, signs, begin + i), bars[begin + i]) == value;
    mask |= uint64_t{is_equal} << i;
  }
  return mask;
}

template <typename Coeff>
void add_row_plain(int32_t* rises, const Coeff* row, const int16_t* spins, bool is_minus,
                   size_t n) {
  const int32_t sign = is_minus ? -1 : 1;
  for (size_t i = 0; i < n; ++i) rises[i] += sign * spins[i] * row[i];
}

#define ZORV_AVX2 __attribute__((target("avx2")))

ZORV_AVX2 __m256i load(const void* p) { return _mm256_loadu_si256(static_cast<const __m256i*>(p)); }
template <bool kHasSigns>
ZORV_AVX2 __m256i rises(const int32_t* fields, const int32_t* signs, size_t i) {
  if constexpr (!kHasSigns) return load(fields + i);
  const __m256i sign = load(signs + i);
  return _mm256_sub_epi32(_mm256_xor_si256(load(fields + i), sign), sign);
}

template <bool kHasSigns>
ZORV_AVX2 uint64_t accepted_avx2(const int32_t* fields, const int32_t* signs, size_t begin,
                                 const float* draws, float temperature) {
  const __m256 scale = _mm256_set1_ps(temperature);
  uint64_t mask = 0;
  for (size_t i = 0; i < kBlock; i += kLanes) {
    const __m256 delta = _mm256_cvtepi32_ps(rises<kHasSigns>(fields, signs, begin + i));
    const __m256 bound = _mm256_mul_ps(scale, _mm256_loadu_ps(draws + i));
    const int passes = _mm256_movemask_ps(_mm256_cmp_ps(delta, bound, _CMP_LE_OQ));
    mask |= static_cast<uint64_t>(passes) << i;
  }
  return mask;
}
ZORV_AVX2 uint64_t accepted_avx2_any(const int32_t* fields, const int32_t* signs, size_t begin,
                                     const float* draws, float temperature) {
  return signs == nullptr ? accepted_avx2<false>(fields, signs, begin, draws, temperature)
                          : accepted_avx2<true>(fields, signs, begin, draws, temperature);
}

ZORV_AVX2 int32_t least_of(__m256i values) {
  __m128i least =
      _mm_min_epi32(_mm256_castsi256_si128(values), _mm256_extracti128_si256(values, 1));
  least = _mm_min_epi32(least, _mm_shuffle_epi32(least, 0x4E));
  return _mm_cvtsi128_si32(_mm_min_epi32(least, _mm_shuffle_epi32(least, 0xB1)));
}

template <bool kHasSigns>
ZORV_AVX2 int32_t least_rises_avx2(const int32_t* fields, const int32_t* signs, const int32_t* bars,
                                   size_t blocks, int32_t* least) {
  __m256i of_all = _mm256_set1_epi32(kNoMove);
  for (size_t block = 0; block < blocks; ++block) {
    __m256i of_block = _mm256_set1_epi32(kNoMove);
    for (size_t i = block * kBlock; i < (block + 1) * kBlock; i += kLanes) {
      const __m256i delta = rises<kHasSigns>(fields, signs, i);
      of_all = _mm256_min_epi32(of_all, delta);
      of_block = _mm256_min_epi32(of_block, _mm256_max_epi32(delta, load(bars + i)));
    }
    least[block] = least_of(of_block);
  }
  return least_of(of_all);
}
ZORV_AVX2 int32_t least_rises_avx2_any(const int32_t* fields, const int32_t* signs,
                                       const int32_t* bars, size_t blocks, int32_t* least) {
  return signs == nullptr ? least_rises_avx2<false>(fields, signs, bars, blocks, least)
                          : least_rises_avx2<true>(fields, signs, bars, blocks, least);
}

template <bool kHasSigns>
ZORV_AVX2 uint64_t equal_avx2(const int32_t* fields, const int32_t* signs, const int32_t* bars,
                              size_t begin, int32_t value) {
  const __m256i values = _mm256_set1_epi32(value);
  uint64_t mask = 0;
  for (size_t i = 0; i < kBlock; i += kLanes) {
    const __m256i delta =
        _mm256_max_epi32(rises<kHasSigns>(fields, signs, begin + i), load(bars + begin + i));
    const __m256i equal = _mm256_cmpeq_epi32(delta, values);
    const int lanes = _mm256_movemask_ps(_mm256_castsi256_ps(equal));
    mask |= static_cast<uint64_t>(lanes) << i;
  }
  return mask;
}
ZORV_AVX2 uint64_t equal_avx2_any(const int32_t* fields, const int32_t* signs, const int32_t* bars,
                                  size_t begin, int32_t value) {
  return signs == nullptr ? equal_avx2<false>(fields, signs, bars, begin, value)
                          : equal_avx2<true>(fields, signs, bars, begin, value);
}

ZORV_AVX2 void add(int32_t* rises, __m256i step, bool is_minus) {
  const __m256i sum =
      is_minus ? _mm256_sub_epi32(load(rises), step) : _mm256_add_epi32(load(rises), step);
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(rises), sum);
}

template <bool kIsMinus>
ZORV_AVX2 void add_row16_avx2(int32_t* rises, const int16_t* row, const int16_t* spins, size_t n) {
  for (size_t i = 0; i < n; i += 2 * kLanes) {
    const __m256i step = _mm256_sign_epi16(load(row + i), load(spins + i));
    add(rises + i, _mm256_cvtepi16_epi32(_mm256_castsi256_si128(step)), kIsMinus);
    add(rises + i + kLanes, _mm256_cvtepi16_epi32(_mm256_extracti128_si256(step, 1)), kIsMinus);
  }
}
template <bool kIsMinus>
ZORV_AVX2 void add_row32_avx2(int32_t* rises, const int32_t* row, const int16_t* spins, size_t n) {
  for (size_t i = 0; i < n; i += kLanes) {
    const __m128i signs = _mm_loadu_si128(reinterpret_cast<const __m128i*>(spins + i));
    add(rises + i, _mm256_sign_epi32(load(row + i), _mm256_cvtepi16_epi32(signs)), kIsMinus);
  }
}
void add_row16_avx2_any(int32_t* rises, const int16_t* row, const int16_t* spins, bool is_minus,
                        size_t n) {
  is_minus ? add_row16_avx2<true>(rises, row, spins, n)
           : add_row16_avx2<false>(rises, row, spins, n);
}
void add_row32_avx2_any(int32_t* rises, const int32_t* row, const int16_t* spins, bool is_minus,
                        size_t n) {
  is_minus ? add_row32_avx2<true>(rises, row, spins, n)
           : add_row32_avx2<false>(rises, row, spins, n);
}

const Kernels kAvx2Kernels = {accepted_avx2_any, least_rises_avx2_any, equal_avx2_any,
                              add_row16_avx2_any, add_row32_avx2_any};

}  // namespace

const Kernels kPlainKernels = {accepted_plain, least_rises_plain, equal_plain,
                               add_row_plain<int16_t>, add_row_plain<int32_t>};

const Kernels& kernels() {
  static const bool has_avx2 = __builtin_cpu_supports("avx2") != 0;
  return has_avx2 ? kAvx2Kernels : kPlainKernels;
}

}  // namespace zorv::plugin::easy
