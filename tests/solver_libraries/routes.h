// Models, searches and their results through the public header alone, for tests of the library as
// it is installed. A case runs in a process of its own, since libraries are opened once a process,
// and all that it has to tell goes to the standard error stream: the calls that a fake received,
// the results that it led to, and the message of an abort.
#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "fakes/recorder.h"
#include "zorv/zorv.h"

namespace zorv::test {

inline std::string fakes(const std::string& folder) { return ZORV_FAKES "/" + folder; }

// Every case starts the program anew, so that it loads the library from where the environment of
// that moment says.
class Routes : public ::testing::Test {
 protected:
  Routes() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
  ~Routes() override {
    for (const auto& [name, old] : replaced_) {
      old ? setenv(name.c_str(), old->c_str(), 1) : unsetenv(name.c_str());
    }
  }
  // Until the end of the test.
  void set(const std::string& name, const std::string& value) {
    const char* old = std::getenv(name.c_str());
    replaced_.try_emplace(name, old != nullptr ? std::optional<std::string>(old) : std::nullopt);
    setenv(name.c_str(), value.c_str(), 1);
  }
  // Takes the library, and with it all that is looked for beside it, from a folder of the fakes.
  void load_from(const std::string& folder) { set("LD_LIBRARY_PATH", fakes(folder)); }

  using Body = std::function<void()>;
  // What follows "failed to load " for a file that cannot be opened: its path and why.
  static std::string load_failure(const std::string& path) {
    EXPECT_EQ(dlopen(path.c_str(), RTLD_NOW), nullptr);
    return path + ": " + dlerror();
  }
  // The body writes exactly `log`, and leaks nothing.
  static void expect_log(const Body& body, const std::string& log) {
    const auto run = [&] { body(), std::exit(0); };
    EXPECT_EXIT(run(), ::testing::ExitedWithCode(0), ::testing::Eq(log));
  }
  // It writes exactly `log`, "zorv: ", `message` and a newline, and aborts.
  static void expect_fatal(const Body& body, const std::string& log, const std::string& message) {
    EXPECT_EXIT(body(), ::testing::KilledBySignal(SIGABRT),
                ::testing::Eq(log + "zorv: " + message + "\n"));
  }

 private:
  std::map<std::string, std::optional<std::string>> replaced_;
};

template <auto kDestroy>
struct Destroy {
  template <typename Raw>
  void operator()(Raw* raw) const {
    kDestroy(raw);
  }
};
template <typename Raw, auto kDestroy>
class Owned : public std::unique_ptr<Raw, Destroy<kDestroy>> {
 public:
  Owned(Raw* raw) : std::unique_ptr<Raw, Destroy<kDestroy>>(raw) {}
  operator Raw*() const { return this->get(); }
};
using Expr = Owned<zorv_expr, zorv_expr_destroy>;
using Model = Owned<zorv_model, zorv_model_destroy>;
using Result = Owned<zorv_result, zorv_easy_solver_result_destroy>;

class Int {
 public:
  Int(int64_t value) : limb_(value < 0 ? -value : value), sign_(value < 0 ? -1 : value > 0) {}
  CoeffWire wire() { return {sign_, 1, &limb_}; }

 private:
  uint64_t limb_;
  int32_t sign_;
};

struct Term {
  int64_t coeff;
  std::vector<uint32_t> literals;
};
inline Expr poly(int64_t k, const std::vector<Term>& terms) {
  std::vector<Int> ints;
  std::vector<uint32_t> degrees, literals;
  for (const Term& t : terms) {
    ints.push_back(t.coeff);
    degrees.push_back(static_cast<uint32_t>(t.literals.size()));
    literals.insert(literals.end(), t.literals.begin(), t.literals.end());
  }
  std::vector<CoeffWire> coeffs;
  for (Int& i : ints) coeffs.push_back(i.wire());
  Int constant(k);
  const CoeffWire wire = constant.wire();
  return zorv_expr_create_from_bulk(&wire, terms.size(), coeffs.data(), degrees.data(),
                                    literals.data());
}
inline Expr times(int64_t factor, Expr e) {
  Int i(factor);
  const CoeffWire wire = i.wire();
  zorv_expr_imul_int(e, &wire);
  return e;
}
inline Expr plus(Expr a, const Expr& b) { return zorv_expr_iadd_expr(a, b), std::move(a); }
inline Expr between(const Expr& e, int64_t lo, int64_t hi) {
  Int low(lo), high(hi);
  const CoeffWire wires[] = {low.wire(), high.wire()};
  return zorv_cons_between(e, &wires[0], &wires[1]);
}
// One of two values.
inline Expr either(const Expr& e, int64_t first, int64_t second) {
  Int a(first), b(second);
  const CoeffWire values[] = {a.wire(), b.wire()};
  return zorv_cons_equal(e, values, values, 2);
}
inline Model compiled(const Expr& e) {
  return zorv_model_create(Expr(zorv_expr_simplify_as_binary(e)));
}

// What an export writes to its coefficient output.
template <typename Export, typename... Args>
fake::Coeff written(Export read, Args... args) {
  CoeffWire w = {0, 0, nullptr};
  read(args..., &w);
  fake::Coeff c = 0;
  for (uint32_t i = w.nlimbs; i > 0; --i) c = (c << 64) + w.limbs[i - 1];
  std::free(w.limbs);
  return w.sign < 0 ? -c : c;
}

// The value of a fact about a search, the last one of that name.
inline std::string fact(const zorv_result* r, const std::string& key) {
  uint64_t i = zorv_easy_solver_result_info_count(r);
  while (i > 0 && key != zorv_easy_solver_result_info_key(r, i - 1)) --i;
  return i > 0 ? zorv_easy_solver_result_info_value(r, i - 1) : "none";
}

// "result -5 after 0.25, bits 5; 1 after 0, bits 1; info run_time moves=12 os cpu gpu ram": the
// best solution, the others, and the facts, with the values of those that do not tell of a time or
// a machine.
inline void say_result(const zorv_result* r) {
  std::ostringstream line;
  line << "result " << written(zorv_easy_solver_result_energy, r) << " after "
       << zorv_easy_solver_result_tts(r) << ", bits "
       << fake::words(zorv_easy_solver_result_bits(r), 1);
  for (uint64_t i = 0; i < zorv_easy_solver_result_topk_count(r); ++i) {
    line << "; " << written(zorv_easy_solver_result_topk_energy, r, i) << " after "
         << zorv_easy_solver_result_topk_tts(r, i) << ", bits "
         << fake::words(zorv_easy_solver_result_topk_bits(r, i), 1);
  }
  line << "; info";
  for (uint64_t i = 0; i < zorv_easy_solver_result_info_count(r); ++i) {
    const std::string key = zorv_easy_solver_result_info_key(r, i);
    line << ' ' << key;
    if (key == "moves" || key == "engine") {
      line << '=' << zorv_easy_solver_result_info_value(r, i);
    }
  }
  fake::say(line.str());
}

}  // namespace zorv::test
