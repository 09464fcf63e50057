// The inner loops in the form that this processor runs fastest, against the plain one.
#include "easysolver/kernels.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace zorv::plugin::easy {
namespace {

TEST(Kernels, GiveTheSameInBothForms) {
  std::mt19937_64 random(1);
  const auto drawn = [&](auto& numbers, int64_t least, int64_t most) {
    for (auto& number : numbers) {
      const int64_t value = least + static_cast<int64_t>(random() % uint64_t(most - least + 1));
      number = static_cast<std::decay_t<decltype(number)>>(value);
    }
  };
  constexpr size_t kBlocks = 3, kSize = kBlocks * kBlock;
  const Kernels &plain = kPlainKernels, &fast = kernels();
  for (int round = 0; round < 100; ++round) {
    const int64_t most = round % 2 == 0 ? 5 : 1 << 30;
    std::vector<int32_t> fields(kSize), signs(kSize), bars(kSize), wide(kSize);
    std::vector<int16_t> narrow(kSize), spins(kSize);
    std::vector<float> draws(kBlock);
    drawn(fields, -most, most);
    drawn(signs, -1, 0);
    drawn(wide, -most, most);
    drawn(narrow, -INT16_MAX, INT16_MAX);
    drawn(spins, 0, 1);
    drawn(draws, 0, 4);
    for (int16_t& spin : spins) spin = static_cast<int16_t>(2 * spin - 1);
    for (int32_t& bar : bars) bar = random() % 3 == 0 ? kFree : kBarred;
    if (round % 10 == 0) std::fill_n(bars.begin(), kBlock, kBarred);
    for (const int32_t* s : {signs.data(), static_cast<int32_t*>(nullptr)}) {
      const float temperature = static_cast<float>(most) / 3;
      std::vector<int32_t> a(kBlocks), b(kBlocks);
      EXPECT_EQ(plain.least_rises(fields.data(), s, bars.data(), kBlocks, a.data()),
                fast.least_rises(fields.data(), s, bars.data(), kBlocks, b.data()));
      EXPECT_EQ(a, b);
      EXPECT_EQ(a[0] == kNoMove, round % 10 == 0);
      for (size_t begin = 0; begin < kSize; begin += kBlock) {
        EXPECT_EQ(plain.accepted(fields.data(), s, begin, draws.data(), temperature),
                  fast.accepted(fields.data(), s, begin, draws.data(), temperature));
        const int32_t value = a[begin / kBlock];
        const uint64_t equal = plain.equal(fields.data(), s, bars.data(), begin, value);
        EXPECT_NE(equal, 0u);
        EXPECT_EQ(equal, fast.equal(fields.data(), s, bars.data(), begin, value));
      }
    }
    for (const bool is_minus : {false, true}) {
      std::vector<int32_t> a = fields, b = fields;
      plain.add_row16(a.data(), narrow.data(), spins.data(), is_minus, kSize);
      fast.add_row16(b.data(), narrow.data(), spins.data(), is_minus, kSize);
      EXPECT_EQ(a, b);
      a = b = std::vector<int32_t>(kSize);
      plain.add_row32(a.data(), wide.data(), spins.data(), is_minus, kSize);
      fast.add_row32(b.data(), wide.data(), spins.data(), is_minus, kSize);
      EXPECT_EQ(a, b);
    }
  }
}

}  // namespace
}  // namespace zorv::plugin::easy
