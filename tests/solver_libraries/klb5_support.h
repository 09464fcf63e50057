// KLB5Solver on the klb5 fake. A process opens its library and registers its callbacks once, so
// every case runs in a process of its own, which writes calls and findings to its standard error
// stream.
#pragma once

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "fakes/klb5_fake.h"
#include "model/model_handles.h"
#include "solvers/search_models.h"
#include "support/support.h"

// The statement, with nothing else in its process, ends and has written what the matcher asks, or
// exactly these lines.
#define EXPECT_TO_WRITE(statement, matcher) \
  EXPECT_EXIT(                              \
      {                                     \
        statement;                          \
        std::exit(0);                       \
      },                                    \
      ::testing::ExitedWithCode(0), matcher)
#define EXPECT_LINES(statement, lines) EXPECT_TO_WRITE(statement, ::testing::Eq(std::string(lines)))

namespace zorv::test {

using Klb5 = Owned<zorv_klb5_wrapper, zorv_klb5_wrapper_destroy>;
using Result = Owned<zorv_result, zorv_easy_solver_result_destroy>;

// A folder with a copy of the fake that lacks some of its symbols, for as long as this lives: their
// names in the copy's tables are changed in one letter.
class FakeFolder {
 public:
  FakeFolder(const std::vector<std::string>& lacking = {})
      : path_(::testing::TempDir() + "zorv_klb5_XXXXXX") {
    EXPECT_NE(mkdtemp(path_.data()), nullptr);
    std::ifstream in(ZORV_KLB5_FAKE, std::ios::binary);
    std::string image{std::istreambuf_iterator<char>(in), {}};
    for (const std::string& symbol : lacking) {
      const std::string name = '\0' + symbol + '\0';
      size_t at = image.find(name);
      EXPECT_NE(at, std::string::npos) << symbol;
      for (; at != std::string::npos; at = image.find(name, at)) image[at + 1] = '-';
    }
    write(image);
  }
  ~FakeFolder() { std::filesystem::remove_all(path_); }

  void write(const std::string& image) {
    std::ofstream(file(), std::ios::binary | std::ios::trunc) << image;
  }
  std::string file() const { return path_ + "/klb5_cppint.so"; }
  const std::string& path() const { return path_; }

  // Makes it the folder of solver libraries; returns the fake's record, for this process.
  fake::Klb5Fake& use() const {
    setenv("ZORV_LIB_DIR", path_.c_str(), 1);
    void* library = dlopen(file().c_str(), RTLD_NOW);
    return *reinterpret_cast<decltype(&klb5_fake)>(dlsym(library, "klb5_fake"))();
  }

 private:
  std::string path_;
};

// Parameters of a search: pairs that live as long as the program.
class Params {
 public:
  Params(std::initializer_list<ParamPair> pairs) : pairs_(pairs) { pairs_.push_back({}); }
  operator const ParamPair*() const { return pairs_.data(); }

 private:
  std::vector<ParamPair> pairs_;
};

inline Model model_of(const ExprImpl& e) { return compiled(e); }

inline Klb5 klb5(const Model& m, int32_t mode) { return zorv_klb5_wrapper_create(m, mode); }

inline std::string info(const Result& result, const std::string& key) {
  return info(unwrap(result), key);
}

// What a callback is handed, as one line; destroys it.
inline std::string take(zorv_sol* raw, uint32_t event) {
  const Solution sol = raw;
  std::string line = "event " + std::to_string(event) + " energy " + unwrap(raw).energy.str();
  line += " bits " + fake::words(unwrap(raw).bits.data(), unwrap(raw).bits.size()) + " ints";
  for (const coeff_t& value : unwrap(raw).int_vals) line += " " + value.str();
  std::ostringstream tts;
  tts << " at " << unwrap(raw).tts;
  return line + tts.str();
}

// Minimise e, which is -1 at one assignment of 60 bits, with a 0, and otherwise a^2: out of reach
// for a search that nobody tells.
struct Needle {
  uint32_t a = new_int_var("a", 0, 3);
  uint64_t bits = 0x0DEADBEEF5C4F1A;
  Model model = [&] {
    std::vector<uint32_t> literals;
    for (int i = 0; i < 60; ++i) {
      literals.push_back(fresh() | ((bits >> i & 1) != 0 ? 0 : kNegationBit));
    }
    return compiled(expr_simplify_as_binary(sum_of({term(-1, literals)}) + var(a) * var(a)));
  }();

  Solution solution() const { return wrap(Sol(unwrap(model), {bits}, {0}, 0, 0.0)); }
};

}  // namespace zorv::test
