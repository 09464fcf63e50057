// Every text that comes from outside, for libFuzzer: search parameters, of the library and of the
// solver libraries, subscripts of einsum, names, and coefficients as records. A text that the
// contract refuses is no finding: abort_with is replaced, at link time, by a function that throws.
//
// ZORV_TARGET names the function below that is fuzzed. Without it there is a main that tries all of
// them on texts put together at random from the words that they know.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <random>
#include <string>
#include <vector>

#include "core/coeff.h"
#include "zorv/solver_abi.h"
#include "zorv/zorv.h"

namespace {
struct Refused {};
}  // namespace

#define ZORV_WRAP(place)                                                                           \
  extern "C" [[noreturn]] void                                                                     \
      __wrap__ZN4zorv##place##10abort_withERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE( \
          const std::string&) {                                                                    \
    throw Refused();                                                                               \
  }
ZORV_WRAP()
ZORV_WRAP(6plugin)

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

// "key=value" in each line, and what ends a search at once; of equal keys the last one counts.
struct Params {
  explicit Params(const std::string& text) : words(1) {
    for (const char c : text) {
      if (c == '\n' || (c == '=' && words.size() % 2 == 1)) {
        words.emplace_back();
      } else {
        words.back() += c;
      }
    }
    for (size_t i = 0; i + 1 < words.size(); i += 2) {
      pairs.push_back({words[i].c_str(), words[i + 1].c_str()});
    }
  }
  const ParamPair* until(std::vector<ParamPair> end) {
    pairs.insert(pairs.end(), end.begin(), end.end());
    pairs.push_back({nullptr, nullptr});
    return pairs.data();
  }
  std::vector<std::string> words;
  std::vector<ParamPair> pairs;
};
const std::vector<ParamPair> kShort = {{"time_limit", "0"}, {"threads", "1"}};

[[maybe_unused]] void params(const std::string& text) {
  static zorv_model* const model = [] {
    uint64_t limb = 5;
    const CoeffWire zero = {0, 0, nullptr}, five = {1, 1, &limb};
    zorv_expr* e = zorv_expr_create_var(zorv_new_int_var("n", &zero, &five));
    zorv_model* m = zorv_model_create(e);
    zorv_expr_destroy(e);
    return m;
  }();
  static zorv_easy_wrapper* const easy = zorv_easy_solver_wrapper_create(model);
  static zorv_exhaustive_wrapper* const exhaustive = zorv_exhaustive_wrapper_create(model);
  zorv_easy_solver_result_destroy(
      zorv_easy_solver_wrapper_search(easy, Params(text).until(kShort), nullptr));
  zorv_easy_solver_result_destroy(
      zorv_exhaustive_wrapper_search(exhaustive, Params(text).until({})));
}

// The same of the solver libraries, on a model of two variables and a constant.
[[maybe_unused]] void library_params(const std::string& text) {
  static const zorv::coeff_t three = 3;
  static const auto* constant = reinterpret_cast<const coeff_t*>(&three);
  static void* const easy =
      zorv_easy_solver_create(nullptr, 2, 0, constant, nullptr, nullptr, nullptr);
  static void* const exhaustive =
      zorv_exhaustive_create(nullptr, 2, 0, constant, nullptr, nullptr, nullptr, ~0ull);
  const auto search = [](const auto& run, auto destroy_list) {
    uint32_t nbits = 2, nwords = 1;
    uint64_t bits = 0;
    double tts = 0;
    CoeffWire energy = {0, 0, nullptr};
    SolutionOut out = {&nbits, &nwords, &energy, &bits, &tts};
    if (void* list = run(&out)) destroy_list(list);
    require(energy.sign == 1 && energy.nlimbs == 1 && energy.limbs[0] == 3);
    std::free(energy.limbs);
  };
  Params own(text), others(text);
  search([&](auto* out) { return zorv_easy_solver_search(easy, out, own.until(kShort), nullptr); },
         zorv_easy_solver_sol_list_destroy);
  search([&](auto* out) { return zorv_exhaustive_search(exhaustive, out, others.until(kShort)); },
         zorv_exhaustive_sol_list_destroy);
}

// The first byte is the rank that the caller expects.
[[maybe_unused]] void subscripts(const std::string& text) {
  static const uint64_t kShape[] = {2, 2, 3};
  static zorv_array_var* const vars = zorv_array_var_create(kShape, 2);
  static zorv_array_int* const ints = zorv_array_int_create(kShape, 3);
  static const uint32_t kKinds[] = {0, 1};
  void* const inputs[] = {vars, ints};
  if (text.empty()) return;
  zorv_array_expr_destroy(static_cast<zorv_array_expr*>(
      zorv_einsum(text.c_str() + 1, 2, kKinds, inputs, 1, static_cast<uint8_t>(text[0] - '0'))));
}

[[maybe_unused]] void names(const std::string& text) {
  const uint32_t v = zorv_new_var(text.c_str());
  require(text.c_str()[0] == '\0' || std::strcmp(zorv_var_str(v), text.c_str()) == 0);
  const uint64_t shape[] = {2, 3};
  const uint32_t first = zorv_new_var_array(text.c_str(), shape, 2);
  require(std::string(zorv_var_str(first + 5)).ends_with("[1][2]"));
  uint64_t limb = 9;
  const CoeffWire zero = {0, 0, nullptr}, nine = {1, 1, &limb};
  zorv_expr* e = zorv_expr_create_var(zorv_new_int_var(text.c_str(), &zero, &nine));
  zorv_expr* in_bits = zorv_expr_binarize(e);
  zorv_expr* value = zorv_varintelem_create(text.c_str(), &zero, &nine);
  for (zorv_expr* x : {e, in_bits, value}) {
    require(*zorv_expr_str(x) != '\0');
    zorv_expr_destroy(x);
  }
  zorv_var_reset();
}

// A sign and limbs; what is written back has none to spare.
[[maybe_unused]] void wires(const std::string& text) {
  if (text.empty()) return;
  std::vector<uint64_t> limbs((text.size() - 1) / sizeof(uint64_t));
  if (!limbs.empty()) std::memcpy(limbs.data(), text.data() + 1, 8 * limbs.size());
  const CoeffWire in = {static_cast<signed char>(text[0]), static_cast<uint32_t>(limbs.size()),
                        limbs.data()};
  zorv_expr* e = zorv_expr_create_int(&in);
  CoeffWire out = {0, 0, nullptr};
  zorv_expr_constant(e, &out);
  zorv_expr_destroy(e);
  while (!limbs.empty() && limbs.back() == 0) limbs.pop_back();
  if (in.sign == 0) limbs.clear();
  require(out.sign == (limbs.empty() ? 0 : in.sign < 0 ? -1 : 1) && out.nlimbs == limbs.size());
  require(std::equal(limbs.begin(), limbs.end(), out.limbs));
  std::free(out.limbs);
}

void try_on(void (*target)(const std::string&), const std::string& text) {
  try {
    target(text);
  } catch (const Refused&) {
  } catch (const std::bad_alloc&) {  // for a size beyond any memory
  }
}

}  // namespace

#ifdef ZORV_TARGET
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  try_on(ZORV_TARGET, std::string(reinterpret_cast<const char*>(data), size));
  return 0;
}
#else
int main() {
  const std::vector<std::string> words = {"time_limit",
                                          "target_energy",
                                          "seed",
                                          "threads",
                                          "topk_sols",
                                          "best_energy_sols",
                                          "=",
                                          "=",
                                          "\n",
                                          "\n",
                                          "-",
                                          "1e308",
                                          "nan",
                                          "0x1p3",
                                          "99999999999999999999999",
                                          "ij",
                                          "jkl",
                                          ",",
                                          "->",
                                          "i",
                                          " ",
                                          "1",
                                          "2",
                                          "x[1]",
                                          "~",
                                          "{0}",
                                          "\xff",
                                          "\x80",
                                          std::string(8, '\0'),
                                          std::string(1, '\0')};
  std::mt19937_64 random(1);
  for (int round = 0; round < 2000; ++round) {
    std::string text;
    for (uint64_t n = random() % 9; n > 0; --n) text += words[random() % words.size()];
    try_on(subscripts, text), try_on(wires, text), try_on(names, text);
    if (round % 20 == 0) try_on(params, text), try_on(library_params, text);
  }
}
#endif
