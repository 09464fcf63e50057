// Small tools that tests of all layers share.
#pragma once

#include <gtest/gtest.h>

#include <csignal>
#include <string>

#include "core/arithmetic.h"
#include "core/coeff_wire.h"
#include "core/expr.h"
#include "core/text.h"
#include "core/var_registry.h"

// The statement writes exactly "zorv: ", `message` and a newline, and aborts.
#define EXPECT_FATAL(statement, message)                     \
  EXPECT_EXIT(statement, ::testing::KilledBySignal(SIGABRT), \
              ::testing::Eq(std::string("zorv: ") + (message) + "\n"))

namespace zorv::test {

// A coefficient record that frees its block.
class Wire {
 public:
  Wire() = default;
  explicit Wire(const coeff_t& value) { write_wire(value, &wire_); }
  Wire(const Wire&) = delete;
  Wire& operator=(const Wire&) = delete;
  ~Wire() { std::free(wire_.limbs); }

  operator const CoeffWire*() const { return &wire_; }
  CoeffWire* out() { return &wire_; }
  coeff_t value() const { return read_wire(&wire_); }

 private:
  CoeffWire wire_ = {0, 0, nullptr};
};

// Polynomials, written down: 3 * var(x) * var(y) - 1. Nothing is merged.
inline ExprImpl var(uint32_t literal) { return ExprImpl(TermImpl(1, VarList(literal))); }
inline ExprImpl constant(const coeff_t& c) { return ExprImpl(c); }
inline ExprImpl operator+(ExprImpl a, const ExprImpl& b) { return add_poly(a, b), a; }
inline ExprImpl operator-(ExprImpl a, const ExprImpl& b) { return sub_poly(a, b), a; }
inline ExprImpl operator*(const ExprImpl& a, const ExprImpl& b) { return mul(a, b); }
inline ExprImpl operator+(ExprImpl a, const coeff_t& c) { return a.constant += c, a; }
inline ExprImpl operator-(ExprImpl a, const coeff_t& c) { return a.constant -= c, a; }
inline ExprImpl operator*(const coeff_t& c, ExprImpl e) { return imul_int(e, c), e; }

inline std::string text(const ExprImpl& e) {
  std::string line;
  append_text(line, e);
  return line;
}

// A fresh binary variable.
inline uint32_t fresh(const std::string& name = "v") { return new_var(name); }

}  // namespace zorv::test
