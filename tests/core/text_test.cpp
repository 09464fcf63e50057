#include "core/text.h"

#include "support/support.h"
#include "zorv/zorv.h"

namespace zorv::test {
namespace {

TEST(Text, RendersExpressions) {
  const uint32_t x = fresh("x"), y = fresh("y"), z = fresh("z"), dash = fresh("d-");
  const auto not_ = [](uint32_t v) { return var(v | kNegationBit); };
  const coeff_t big = coeff_t(1) << 64;
  ExprImpl zero_coeff;
  zero_coeff.list.append(TermImpl(1, VarList(y)));
  zero_coeff.list.append(TermImpl(0, VarList(x)));
  const struct {
    ExprImpl e;
    const char* text;
  } rows[] = {
      {constant(0), "0"},
      {constant(5), "5"},
      {constant(-5), "-5"},
      {var(x), "x"},
      {-1 * var(x), "-x"},
      {3 * var(x), "3*x"},
      {var(x) + var(y), "x +y"},
      {var(x) - var(y), "x -y"},
      {var(x) + var(x), "x +x"},
      {2 * var(x) + constant(0), "2*x"},
      {var(x) - 3 * var(y) + coeff_t(2), "2 +x -3*y"},
      {constant(1) - var(x), "1 -x"},
      {var(x) * var(y) - not_(x) * var(z) + coeff_t(1), "1 +x*y -~x*z"},
      {-2 * var(x) * var(y) + var(y), "-2*x*y +y"},
      {-1 * var(x) * var(y), "-x*y"},
      {big * var(x), "18446744073709551616*x"},
      {2 * var(0x3FFFFFF0), "2*?"},
      {var(x | kAtomBit | kNegationBit), "?"},
      {zero_coeff, "y +0*x"},
      {var(dash) * var(x) * var(y), "d-x*y"},  // no "*" behind a name that ends in "-"
  };
  for (const auto& row : rows) EXPECT_EQ(text(row.e), row.text);
  std::string one;
  append_text(one, TermImpl(1, VarList()));
  EXPECT_EQ(one, "1");
}

TEST(VarStr, NamesVariablesAndBlocks) {
  const uint32_t x = zorv_new_var("x");
  EXPECT_EQ(zorv_new_var("x"), x + 1);  // names may repeat
  EXPECT_STREQ(zorv_var_str(x), "x");
  EXPECT_STREQ(zorv_var_str(x | kNegationBit), "~x");
  EXPECT_STREQ(zorv_var_str(kMaxVariables - 1), "?");

  const uint64_t shape[] = {2, 3}, none[] = {0, 4};
  EXPECT_EQ(zorv_new_var_array("nothing", none, 2), x + 2);
  const uint32_t y = zorv_new_var_array("y", shape, 2);
  EXPECT_EQ(y, x + 2);
  EXPECT_STREQ(zorv_var_str(y), "y[0][0]");
  EXPECT_STREQ(zorv_var_str(y + 4), "y[1][1]");
  EXPECT_STREQ(zorv_var_str((y + 5) | kNegationBit), "~y[1][2]");
  const uint32_t alone = zorv_new_var_array("alone", nullptr, 0);
  EXPECT_EQ(alone, y + 6);
  EXPECT_STREQ(zorv_var_str(alone), "alone");
  EXPECT_EQ(zorv_var_count(), alone + 1);
}

TEST(VarStr, DrawsOneGeneratedNameAndNeverStartsAgain) {
  const auto number = [](const std::string& name) { return std::stoul(name.substr(1)); };
  const unsigned long n = number(zorv_auto_var_name());
  const uint64_t shape[] = {2};
  const std::string expected[] = {"{" + std::to_string(n + 1) + "}",
                                  "{" + std::to_string(n + 2) + "}",
                                  "{" + std::to_string(n + 3) + "}[1]"};
  EXPECT_EQ(zorv_var_str(zorv_new_var(nullptr)), expected[0]);
  EXPECT_EQ(zorv_var_str(zorv_new_var("")), expected[1]);
  EXPECT_EQ(zorv_var_str(zorv_new_var_array(nullptr, shape, 1) + 1), expected[2]);
  EXPECT_EXIT(
      {
        zorv_var_reset();
        const bool emptied = zorv_var_count() == 0 && zorv_used_var_count() == 0;
        const bool goes_on = number(zorv_var_str(zorv_new_var(nullptr))) == n + 4;
        _exit(emptied && goes_on ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

TEST(VarRegistry, FillsTheIndexSpaceAndRefusesMore) {
  EXPECT_EXIT(
      {
        zorv_var_reset();
        const uint64_t nearly_all[] = {kMaxVariables - 1};
        const uint32_t last = zorv_new_var_array("x", nearly_all, 1) + kMaxVariables - 1;
        _exit(zorv_new_var("last") == last && std::string(zorv_var_str(last)) == "last" &&
                      std::string(zorv_var_str(last - 1)) == "x[1073741821]"
                  ? 0
                  : 1);
      },
      ::testing::ExitedWithCode(0), "");
  const uint64_t too_many[] = {kMaxVariables - zorv_var_count() + 1};
  EXPECT_FATAL(zorv_new_var_array("x", too_many, 1),
               "Binary variable index space exhausted (2^30 - 1 variables).");
}

}  // namespace
}  // namespace zorv::test
