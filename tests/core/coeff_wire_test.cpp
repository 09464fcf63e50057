#include "core/coeff_wire.h"

#include "support/random.h"
#include "support/support.h"

namespace zorv::test {
namespace {

TEST(CoeffWire, WritesSignAndExactLimbs) {
  const coeff_t two_64 = coeff_t(1) << 64;
  const struct {
    coeff_t value;
    int32_t sign;
    std::vector<uint64_t> limbs;
  } rows[] = {
      {0, 0, {}},
      {1, 1, {1}},
      {-1, -1, {1}},
      {two_64 - 1, 1, {~uint64_t{0}}},
      {1 - two_64, -1, {~uint64_t{0}}},
      {two_64, 1, {0, 1}},
      {-(two_64 << 64), -1, {0, 0, 1}},
  };
  for (const auto& row : rows) {
    CoeffWire wire = {7, 1, static_cast<uint64_t*>(std::malloc(8))};  // what it holds is freed
    write_wire(row.value, &wire);
    EXPECT_EQ(wire.sign, row.sign) << row.value;
    EXPECT_EQ(std::vector<uint64_t>(wire.limbs, wire.limbs + wire.nlimbs), row.limbs) << row.value;
    EXPECT_EQ(wire.limbs == nullptr, row.limbs.empty());
    EXPECT_EQ(read_wire(&wire), row.value);
    std::free(wire.limbs);
  }
}

TEST(CoeffWire, ReadsLooseRecords) {
  uint64_t limbs[] = {5, 0, 0};
  uint64_t zeros[] = {0, 0};
  auto* dangling = reinterpret_cast<uint64_t*>(1);
  const struct {
    CoeffWire wire;
    coeff_t value;
  } rows[] = {
      {{+5, 1, limbs}, 5},   {{-5, 1, limbs}, -5},  {{1, 3, limbs}, 5},  // leading zeros
      {{1, 0, dangling}, 0}, {{0, 3, dangling}, 0},                      // not looked at
      {{-1, 2, zeros}, 0},   {{-1, 1, zeros}, 0},                        // no negative zero
  };
  for (const auto& row : rows) {
    EXPECT_EQ(read_wire(&row.wire), row.value);
    EXPECT_EQ(read_wire(&row.wire).str(), row.value.str());
    EXPECT_EQ(read_compact(&row.wire), CompactCoeff(row.value));
  }
}

TEST(CoeffWire, RoundTripsTroublesomeValues) {
  Random random(1);
  for (int i = 0; i < 1000; ++i) {
    const coeff_t value = troublesome(random);
    const Wire wire(value);
    EXPECT_EQ(wire.value(), value);
    EXPECT_EQ(coeff_t(read_compact(wire)), value);
  }
}

}  // namespace
}  // namespace zorv::test
