#include "core/var_list.h"

#include "reference/plain_poly.h"
#include "support/support.h"

namespace zorv::test {
namespace {

std::vector<uint32_t> numbers(uint32_t n, uint32_t from = 10) {
  std::vector<uint32_t> v(n);
  for (uint32_t i = 0; i < n; ++i) v[i] = from + i;
  return v;
}

VarList list_of(const std::vector<uint32_t>& v) {
  return {v.data(), static_cast<uint32_t>(v.size())};
}

void expect_list(const VarList& list, const std::vector<uint32_t>& expected) {
  EXPECT_EQ(list.degree(), expected.size());
  std::vector<uint32_t> walked;
  for (const uint32_t literal : list) walked.push_back(literal);
  EXPECT_EQ(walked, expected);
  for (uint32_t i = 0; i < expected.size(); ++i) EXPECT_EQ(list[i], expected[i]);
  EXPECT_EQ(list, list_of(expected));
}

TEST(VarList, GrowsByOneLiteralAcrossTheInlineLimit) {
  VarList list;
  for (uint32_t n = 0; n < 20; ++n) {
    expect_list(list, numbers(n));
    list.append(10 + n);
  }
}

TEST(VarList, CopiesAndMovesAtEveryDegree) {
  for (uint32_t n = 0; n < 20; ++n) {
    VarList list = list_of(numbers(n));
    const VarList copy = list;
    expect_list(copy, numbers(n));
    VarList moved = std::move(list);
    expect_list(moved, numbers(n));
    expect_list(list, {});  // NOLINT(bugprone-use-after-move): a moved-from list is empty
    list = copy;
    list = *&list;
    expect_list(list, numbers(n));
  }
}

TEST(VarList, JoinsEveryPairOfDegrees) {
  for (uint32_t a = 0; a < 8; ++a) {
    for (uint32_t b = 0; b < 8; ++b) {
      std::vector<uint32_t> joined = numbers(a);
      const std::vector<uint32_t> second = numbers(b, 100);
      joined.insert(joined.end(), second.begin(), second.end());
      const VarList left = list_of(numbers(a)), right = list_of(second);
      expect_list(VarList::concat(left, right), joined);
      VarList grown = left;
      grown.append(right);
      expect_list(grown, joined);
      grown.append(7);
      joined.push_back(7);
      expect_list(grown, joined);
    }
    VarList doubled = list_of(numbers(a));
    doubled.append(doubled);
    std::vector<uint32_t> twice = numbers(a);
    twice.insert(twice.end(), twice.begin(), twice.begin() + a);
    expect_list(doubled, twice);
  }
}

TEST(VarList, TakesHeadPairsAndOverflowBlocks) {
  const uint64_t full = 1 | uint64_t{2} << 32;
  const uint64_t one = 1 | uint64_t{kNoLiteral} << 32;
  const uint32_t three[] = {3, 4, 5, kNoLiteral};
  const uint32_t none[] = {kNoLiteral};
  expect_list(VarList::copy_of(full, three), {1, 2, 3, 4, 5});
  expect_list(VarList::copy_of(full, none), {1, 2});
  expect_list(VarList::copy_of(full, nullptr), {1, 2});
  expect_list(VarList::copy_of(one, three), {1});  // only behind two filled slots
  expect_list(VarList(kNoLiteral, 8), {8});
  expect_list(VarList(8, kNoLiteral), {8});

  auto* empty = static_cast<uint32_t*>(std::malloc(2 * sizeof(uint32_t)));
  empty[0] = kNoLiteral;
  VarList adopted = VarList::adopt(full, empty);
  EXPECT_EQ(adopted.degree(), 2u);
  EXPECT_EQ(adopted, VarList(1, 2));
  EXPECT_EQ(adopted.overflow(), nullptr);
  adopted.append(3);
  adopted.append(4);
  expect_list(adopted, {1, 2, 3, 4});
  EXPECT_EQ(std::vector<uint32_t>(adopted.overflow(), adopted.overflow() + 3),
            (std::vector<uint32_t>{3, 4, kNoLiteral}));
}

// Around the borders of what is packed into one word, with the run that callers see.
TEST(VarList, KeepsThreeAndFourLiteralsInEveryForm) {
  const uint32_t edges[] = {0,
                            1,
                            2046,
                            2047,
                            2048,
                            32'767,
                            32'768,
                            1 | kAtomBit,
                            0 | kNegationBit,
                            2047 | kNegationBit,
                            2048 | kNegationBit,
                            32'767 | kNegationBit};
  for (const uint32_t a : edges) {
    for (const uint32_t b : edges) {
      for (const uint32_t n : {3u, 4u}) {
        const std::vector<uint32_t> literals(n == 3 ? std::vector<uint32_t>{7, b, a}
                                                    : std::vector<uint32_t>{a, 7, b, a});
        const VarList list = list_of(literals);
        const VarList early = list;  // before there is a run
        expect_list(list, literals);
        const uint32_t* const run = list.overflow();
        for (uint32_t i = 2; i < n; ++i) ASSERT_EQ(run[i - 2], literals[i]);
        ASSERT_EQ(run[n - 2], kNoLiteral);
        ASSERT_EQ(list.overflow(), run);
        expect_list(list, literals);
        ASSERT_EQ(early, list);
        VarList copy = list;
        ASSERT_EQ(copy, early);
        copy.append(7);
        ASSERT_EQ(copy.degree(), n + 1);
        ASSERT_FALSE(copy == list);
        const VarList moved = std::move(copy);
        ASSERT_EQ(moved[n], 7u);
        ASSERT_FALSE(early == list_of({a, 7, b, a ^ 1}));
      }
    }
  }
}

// Callers hand over literals unchecked. Some second literals look like the mark of a block.
TEST(VarList, KeepsEveryPairOfBits) {
  const uint32_t halves[] = {0,          1,          0x7FFFFFFF, 0x80000000, 0xBFFFFFFF,
                             0xC0000000, 0xC0000001, 0xC0007FFF, 0xC000FFFF, 0xC0010000,
                             0xC0030000, 0xC0041234, 0xC0050000, 0xFFFFFFFE, kNoLiteral};
  for (const uint32_t low : halves) {
    for (const uint32_t high : halves) {
      const uint64_t pair = low | uint64_t{high} << 32;
      const uint32_t degree = low == kNoLiteral ? 0 : high == kNoLiteral ? 1 : 2;
      VarList list = VarList::copy_of(pair, nullptr);
      const VarList copy = list;
      for (const VarList* each : {static_cast<const VarList*>(&list), &copy}) {
        ASSERT_EQ(each->degree(), degree);
        ASSERT_EQ(each->head_pair(), pair);
        ASSERT_EQ((*each)[0], low);
        ASSERT_EQ((*each)[1], high);
        ASSERT_EQ(each->overflow(), nullptr);
      }
      ASSERT_EQ(list, copy);
      ASSERT_FALSE(list == VarList::copy_of(pair ^ 1, nullptr));
      if (degree == 0) continue;
      std::vector<uint32_t> expected = {low, high};
      expected.resize(degree);
      for (const uint32_t more : {5u, 0xC0000001u, 6u}) {
        list.append(more);
        expected.push_back(more);
        expect_list(list, expected);
      }
      expect_list(VarList::concat(VarList(low), VarList(0xC0000001)), {low, 0xC0000001});
    }
  }
}

}  // namespace
}  // namespace zorv::test
