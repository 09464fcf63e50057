// Contraction against plain nested loops.
#include <memory>

#include "arrays/einsum_plan.h"
#include "reference/plain_einsum.h"
#include "support/random.h"

namespace zorv::test {
namespace {

constexpr uint32_t kVar = 0, kInt = 1, kTerm = 2, kExpr = 3;  // as inputs
constexpr int kIntOutput = 0, kExprOutput = 1;

// The handles of inputs, by the kinds of their elements.
class Inputs {
 public:
  Inputs(const std::vector<PlainInput>& inputs, std::vector<uint32_t> kinds)
      : kinds_(std::move(kinds)) {
    for (size_t i = 0; i < inputs.size(); ++i) add(inputs[i], kinds_[i]);
  }
  void* contract(const std::string& subscript, int output_kind, uint64_t out_dim) const {
    return zorv_einsum(subscript.c_str(), static_cast<int32_t>(kinds_.size()), kinds_.data(),
                       handles_.data(), output_kind, out_dim);
  }

 private:
  void add(const PlainInput& input, uint32_t kind) {
    switch (kind) {
      case kVar:
        return add<uint32_t>(input);
      case kTerm:
        return add<TermImpl>(input);
      case kExpr:
        return add<ExprImpl>(input);
      default:
        return add<coeff_t>(input);
    }
  }
  template <typename T>
  void add(const PlainInput& input) {
    const auto array = std::make_shared<Array<T>>(
        input.shape, [&](uint64_t i) { return std::get<T>(input.elements[i]); });
    handles_.push_back(static_cast<typename Array<T>::Raw*>(*array));
    owners_.push_back(array);
  }

  std::vector<uint32_t> kinds_;
  std::vector<void*> handles_;
  std::vector<std::shared_ptr<void>> owners_;
};

template <typename T>
void expect_elements(void* got, const Shape& shape, const std::vector<T>& want) {
  const Array<T> result(static_cast<typename Array<T>::Raw*>(got));
  ASSERT_EQ(result.shape(), shape);
  ASSERT_EQ(result.size(), want.size());
  for (uint64_t i = 0; i < want.size(); ++i) {
    ASSERT_TRUE(same_value(result[i], want[i])) << "at " << i;
    ASSERT_EQ(tag_of(result[i]), kPlainAttr);
  }
}

// The subscript, whatever its spelling, means these output labels; integers for integers too.
void expect_contraction(const std::string& subscript, const std::vector<PlainInput>& inputs,
                        const std::vector<uint32_t>& kinds, const std::string& output) {
  SCOPED_TRACE("\"" + subscript + "\"");
  const Inputs handles(inputs, kinds);
  const Shape shape = output_shape(inputs, output);
  expect_elements<ExprImpl>(handles.contract(subscript, kExprOutput, output.size()), shape,
                            plain_einsum(inputs, output, kinds));
  if (std::all_of(kinds.begin(), kinds.end(), [](uint32_t kind) { return kind == kInt; })) {
    expect_elements<coeff_t>(handles.contract(subscript, kIntOutput, output.size()), shape,
                             plain_einsum_int(inputs, output));
  }
}

Value element(const Pools& pools, uint32_t kind, uint64_t i) {
  if (kind == kVar) return pools.vars[i % pools.vars.size()];
  if (kind == kInt) return pools.ints[i % pools.ints.size()];
  if (kind == kTerm) return pools.terms[i % pools.terms.size()];
  return pools.exprs[i % pools.exprs.size()];
}

// An input of these labels, each of which has the extent that the map gives it.
PlainInput input(const Pools& pools, const std::string& labels, const LabelValues& extents,
                 uint32_t kind, uint64_t from = 0) {
  PlainInput made{labels, {}, {}};
  for (const char c : labels) made.shape.push_back(extents.at(c));
  for (uint64_t i = 0; i < element_count(made.shape); ++i) {
    made.elements.push_back(element(pools, kind, from + i));
  }
  return made;
}

// Random subscripts ------------------------------------------------------------------------------

constexpr char kLabels[] = {'i', 'j', 'K', '-', '>', '\r', '\xE9'};

std::string random_labels(Random& random, size_t longest) {
  std::string labels;
  for (uint64_t n = below(random, longest + 1); n > 0; --n) {
    labels += kLabels[below(random, std::size(kLabels))];
  }
  return labels;
}

// With blanks here and there, and where "-" and ">" would read as an arrow.
std::string spelled(Random& random, const std::string& labels) {
  static const char* const kBlanks[] = {" ", "\t", "\n", " \n "};
  std::string line;
  for (const char c : labels) {
    const bool arrow = c == '>' && !line.empty() && line.back() == '-';
    if (arrow || below(random, 4) == 0) line += kBlanks[below(random, std::size(kBlanks))];
    line += c;
  }
  return line;
}

TEST(Einsum, AgreesWithPlainLoopsOnRandomSubscripts) {
  const uint64_t seed = 47;
  SCOPED_TRACE("seed " + std::to_string(seed));
  Random random(seed);
  Pools pools[] = {plain_pools(), plain_pools()};
  // No product of these can vanish.
  std::erase(pools[1].ints, 0);
  std::erase_if(pools[1].terms, [](const TermImpl& t) { return t.coeff == 0; });
  pools[1].terms.erase(pools[1].terms.begin() + 2);
  for (int round = 0; round < 1'500; ++round) {
    LabelValues extents;
    for (const char c : kLabels) extents[c] = below(random, 20) == 0 ? 0 : 1 + below(random, 3);
    std::vector<PlainInput> inputs(1 + below(random, 3));
    std::vector<uint32_t> kinds;
    const bool only_ints = below(random, 4) == 0;
    std::string subscript;
    for (PlainInput& made : inputs) {
      kinds.push_back(only_ints ? kInt : static_cast<uint32_t>(below(random, 4)));
      made = input(pools[below(random, 2)], random_labels(random, 3), extents, kinds.back(),
                   below(random, 10));
      subscript += (&made == &inputs[0] ? "" : ",") + spelled(random, made.labels);
    }
    std::string output = implicit_labels(inputs);
    if (below(random, 3) > 0) {
      output = random_labels(random, 4);
      const std::string known = sorted_labels(inputs);
      std::erase_if(output, [&](char c) { return known.find(c) == std::string::npos; });
      subscript += "->" + spelled(random, output);
    }
    expect_contraction(subscript, inputs, kinds, output);
    if (HasFatalFailure()) return;
  }
}

// The grammar ------------------------------------------------------------------------------------

TEST(Einsum, ReadsSubscriptsTolerantly) {
  const Pools pools = plain_pools();
  const LabelValues extents = {{'i', 2}, {'j', 3},  {'k', 4},    {'n', 3}, {'-', 3},
                               {'>', 2}, {'\r', 2}, {'\xFF', 3}, {'.', 2}};
  const struct {
    std::string subscript;
    std::vector<std::string> inputs;
    std::string output;
  } rows[] = {
      {"ij,jk->ik", {"ij", "jk"}, "ik"},
      {"ij,jk", {"ij", "jk"}, "ik"},
      {" i j ,\tj k\n -> i k ", {"ij", "jk"}, "ik"},
      {"kj", {"kj"}, "jk"},  // sorted, and so transposed
      {"ii", {"ii"}, ""},
      {"ii->i", {"ii"}, "i"},
      {"i,i", {"i", "i"}, ""},
      {"iji->ji", {"iji"}, "ji"},
      {"ij->", {"ij"}, ""},
      {"i->iii", {"i"}, "iii"},  // only the last axis selects anything
      {"ij,jk", {"ij"}, "ij"},   // the comma ends the reading
      {"i,j,k", {"i", "j"}, "ij"},
      {"ij,j,->j", {"ij", "j"}, "i"},  // implicit, for the same reason
      {"i,j,-", {"i", "j"}, "ij"},
      {"", {""}, ""},
      {"->", {""}, ""},
      {",", {"", ""}, ""},
      {" ,i", {"", "i"}, "i"},
      {"i,,->i", {"i", "", ""}, "i"},
      {"j-,-->-", {"j-", "-"}, "-"},
      {"- >->>", {"->"}, ">"},
      {"-", {"-"}, "-"},
      {"\ri,i->\r", {"\ri", "i"}, "\r"},  // a carriage return is no blank
      {"ij.", {"ij."}, ".ij"},
      {"i\xFF", {"i\xFF"}, "\xFFi"},  // bytes are signed
  };
  for (const auto& row : rows) {
    for (const uint32_t kind : {kVar, kInt, kTerm, kExpr}) {
      std::vector<PlainInput> inputs;
      for (const std::string& labels : row.inputs) {
        inputs.push_back(input(pools, labels, extents, kind, inputs.size()));
      }
      expect_contraction(row.subscript, inputs, std::vector<uint32_t>(inputs.size(), kind),
                         row.output);
    }
  }
}

TEST(Einsum, SaysWhatDoesNotFit) {
  const struct {
    std::string subscript;
    std::vector<uint32_t> kinds;
    std::vector<Shape> shapes;
    int output_kind;
    uint64_t out_dim;
    std::string text;
  } rows[] = {
      {"i,j,k", {}, {}, 1, 0, "requires at least one input"},
      {"a,b",
       {0, 0, 0},
       {{1}, {1}, {1}},
       1,
       2,
       "expected ',' separating 3 inputs in subscript \"a,b\""},
      {"a->a", {0, 0}, {{1}, {1}}, 1, 1, "expected ',' separating 2 inputs in subscript \"a->a\""},
      {"", {0, 0}, {{}, {}}, 1, 0, "expected ',' separating 2 inputs in subscript \"\""},
      {"a,b", {1, 4}, {{1}, {1}}, 1, 2, "unknown input type tag 4"},
      {"a", {0xFFFFFFFF}, {{1}}, 1, 1, "unknown input type tag 4294967295"},
      {"a,bc",
       {1, 1},
       {{1}, {1}},
       1,
       2,
       "input 1 has 1 dims but subscript has 2 labels (subscript=\"a,bc\")"},
      {" ", {2}, {{2, 2}}, 1, 0, "input 0 has 2 dims but subscript has 0 labels (subscript=\" \")"},
      {"ab,ba", {1, 0}, {{2, 3}, {3, 4}}, 1, 0, "inconsistent size for label 'a': 2 vs 4"},
      {"aa", {3}, {{2, 0}}, 1, 0, "inconsistent size for label 'a': 2 vs 0"},
      {"a->b", {1}, {{2}}, 1, 1, "output label 'b' not in any input"},
      {"a->a,a", {1}, {{2}}, 1, 3, "output label ',' not in any input"},
      {"ab",
       {1},
       {{2, 3}},
       0,
       1,
       "OutDim mismatch \xE2\x80\x94 subscript \"ab\" produces 2 output axis(es), but the call was "
       "einsum<1>()"},
      {"a->",
       {1},
       {{2}},
       0,
       1,
       "OutDim mismatch \xE2\x80\x94 subscript \"a->\" produces 0 output axis(es), but the call "
       "was "
       "einsum<1>()"},
      {"a",
       {0},
       {{2}},
       0,
       1,
       "int output requires all inputs to be coeff_t (input 0 has type tag 0)"},
      {"a,a",
       {1, 3},
       {{2}, {2}},
       0,
       0,
       "int output requires all inputs to be coeff_t (input 1 has type tag 3)"},
      // Of several faults, the earlier one in the order of the checks.
      {"a", {9, 0}, {{1}, {2, 2}}, 0, 7, "expected ',' separating 2 inputs in subscript \"a\""},
      {"a,b->c", {9, 0}, {{}, {2, 2}}, 0, 7, "unknown input type tag 9"},
      {"a,b->c",
       {0, 9},
       {{}, {2}},
       0,
       7,
       "input 0 has 0 dims but subscript has 1 labels (subscript=\"a,b->c\")"},
      {"aa,b->c", {0, 9}, {{1, 2}, {2}}, 0, 7, "inconsistent size for label 'a': 1 vs 2"},
      {"a,b->c", {0, 0}, {{1}, {2}}, 0, 7, "output label 'c' not in any input"},
      {"a,b->b",
       {0, 0},
       {{1}, {2}},
       0,
       2,
       "OutDim mismatch \xE2\x80\x94 subscript \"a,b->b\" produces 1 output axis(es), but the call "
       "was einsum<2>()"},
  };
  const Pools pools = plain_pools();
  for (const auto& row : rows) {
    SCOPED_TRACE(row.subscript);
    std::vector<PlainInput> inputs;
    for (size_t i = 0; i < row.shapes.size(); ++i) {
      inputs.push_back({"", row.shapes[i], {}});
      const uint32_t kind = row.kinds[i] > kExpr ? kInt : row.kinds[i];
      for (uint64_t k = 0; k < element_count(row.shapes[i]); ++k) {
        inputs.back().elements.push_back(element(pools, kind, k));
      }
    }
    EXPECT_FATAL(Inputs(inputs, row.kinds).contract(row.subscript, row.output_kind, row.out_dim),
                 "einsum: " + row.text);
  }
  EXPECT_FATAL(zorv_einsum("", -1, nullptr, nullptr, 0, 0), "einsum: requires at least one input");
}

// Work for several threads -----------------------------------------------------------------------

TEST(Einsum, FewLongSumsAreLikeShortOnes) {
  Pools pools = plain_pools();
  const struct {
    std::vector<std::string> inputs;
    std::string output;
    LabelValues extents;
    std::vector<uint32_t> kinds;
  } rows[] = {
      {{"i", "i"}, "", {{'i', 100'000}}, {kVar, kVar}},                         // always terms
      {{"ij", "ij"}, "", {{'i', 250}, {'j', 400}}, {kInt, kVar}},               // some are 0
      {{"kij", "ij"}, "k", {{'i', 250}, {'j', 400}, {'k', 3}}, {kTerm, kInt}},  // or constants
      {{"kij", "j"}, "k", {{'i', 250}, {'j', 400}, {'k', 3}}, {kInt, kInt}},
      {{"i", "ij"}, "", {{'i', 1'000}, {'j', 100}}, {kExpr, kInt}},
      {{"ki", "j"}, "k", {{'i', 1'000}, {'j', 100}, {'k', 3}}, {kExpr, kTerm}},
      // Many outputs are spread over threads themselves.
      {{"ki", "i"}, "k", {{'i', 10}, {'k', 10'000}}, {kVar, kInt}},
      {{"k", "k"}, "k", {{'k', 10'000}}, {kExpr, kExpr}},
  };
  for (const auto& row : rows) {
    std::vector<PlainInput> inputs;
    for (size_t i = 0; i < row.inputs.size(); ++i) {
      inputs.push_back(input(pools, row.inputs[i], row.extents, row.kinds[i], i));
    }
    expect_contraction(row.inputs[0] + "," + row.inputs[1] + "->" + row.output, inputs, row.kinds,
                       row.output);
  }
}

// The first term of the whole sum takes the first slot, and stands before terms that came earlier.
TEST(Einsum, LongSumsMayBeginWithTermsThatDoNotLead) {
  const ExprImpl leading = var(1) + 2 * var(2), trailing = bulk_built(0, {term_of(3, {4})});
  for (const uint64_t before : {0, 5, 17'000, 40'000}) {
    std::vector<PlainInput> inputs = {{"i", {40'000}, {}}};
    for (uint64_t i = 0; i < 40'000; ++i) {
      // Times 0 a term stays, and leaves the first slot free.
      const bool leads = i >= before && i % 16'384 > 0;
      inputs[0].elements.push_back(leads ? leading : 0 * leading + trailing);
    }
    expect_contraction("i->", inputs, {kExpr}, "");
  }
}

}  // namespace
}  // namespace zorv::test
