// Integers on their way in and out, held against Boost's.
#include "zorv/integer.hpp"

#include <gtest/gtest.h>

#include <boost/multiprecision/cpp_int.hpp>
#include <sstream>

namespace {

using boost::multiprecision::cpp_int;
using zorv::Integer;

// Values around the borders of halves, limbs and built-in types.
std::vector<cpp_int> interesting_values() {
  std::vector<cpp_int> values = {0};
  for (const unsigned bits : {1u, 9u, 31u, 32u, 63u, 64u, 65u, 96u, 127u, 128u, 129u, 640u}) {
    for (const int offset : {-1, 0, 1}) {
      const cpp_int value = (cpp_int(1) << bits) + offset;
      values.push_back(value);
      values.push_back(-value);
    }
  }
  for (cpp_int power = 1; power < (cpp_int(1) << 200); power *= 1000000000) values.push_back(power);
  return values;
}

TEST(Integer, AgreesWithBoostInEveryForm) {
  const std::vector<cpp_int> values = interesting_values();
  for (const cpp_int& value : values) {
    const Integer integer(value);
    EXPECT_EQ(integer.str(), value.str());
    EXPECT_EQ(integer, Integer(value.str()));
    EXPECT_EQ(integer.to<cpp_int>(), value);
    EXPECT_EQ(integer.sign(), value.sign());
    EXPECT_EQ((-integer).str(), cpp_int(-value).str());
    EXPECT_EQ(abs(integer).str(), cpp_int(abs(value)).str());
    for (const cpp_int& other : values) {
      EXPECT_EQ(integer < Integer(other), value < other) << value << " and " << other;
      EXPECT_EQ(integer == Integer(other), value == other) << value << " and " << other;
      EXPECT_EQ((integer + Integer(other)).str(), cpp_int(value + other).str());
      EXPECT_EQ((integer - Integer(other)).str(), cpp_int(value - other).str());
      EXPECT_EQ((integer * Integer(other)).str(), cpp_int(value * other).str());
    }
  }
}

TEST(Integer, KeepsItsValueWhenCopiedMovedAndAssigned) {
  for (const cpp_int& value : interesting_values()) {
    Integer a(value);
    Integer b(a);
    Integer c(std::move(a));
    EXPECT_EQ(b, c);
    a = b;
    b = Integer(7);
    EXPECT_EQ(a.to<cpp_int>(), value);
    const Integer& alias = a;
    a = alias;
    EXPECT_EQ(a, c);
  }
}

template <typename T>
void expect_borders_of() {
  const cpp_int lowest = std::numeric_limits<T>::min(), highest = std::numeric_limits<T>::max();
  EXPECT_EQ(Integer(lowest).to<T>(), std::numeric_limits<T>::min());
  EXPECT_EQ(Integer(highest).to<T>(), std::numeric_limits<T>::max());
  EXPECT_EQ(Integer(std::numeric_limits<T>::min()), Integer(lowest));
  EXPECT_FALSE(Integer(cpp_int(lowest - 1)).fits<T>());
  EXPECT_FALSE(Integer(cpp_int(highest + 1)).fits<T>());
  EXPECT_THROW(Integer(cpp_int(highest + 1)).to<T>(), std::overflow_error);
  EXPECT_THROW((void)static_cast<T>(Integer(cpp_int(highest << 64))), std::overflow_error);
}

TEST(Integer, ConvertsToBuiltInTypesWhereItFits) {
  expect_borders_of<int8_t>();
  expect_borders_of<uint8_t>();
  expect_borders_of<int>();
  expect_borders_of<uint32_t>();
  expect_borders_of<int64_t>();
  expect_borders_of<uint64_t>();
}

TEST(Integer, ReadsDecimalTextAndNothingElse) {
  EXPECT_EQ(Integer("-00012"), -12);
  EXPECT_EQ(Integer("+7"), 7);
  EXPECT_EQ(Integer("-0").sign(), 0);
  for (const char* text : {"", "-", "+", "1 ", " 1", "1e3", "0x10", "--1", "1.0"}) {
    EXPECT_THROW(Integer{text}, std::invalid_argument) << text;
  }
  std::ostringstream out;
  out << Integer("-340282366920938463463374607431768211456");
  EXPECT_EQ(out.str(), "-340282366920938463463374607431768211456");
}

}  // namespace
