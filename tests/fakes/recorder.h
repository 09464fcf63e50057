// For solver libraries that solve nothing: each call they receive becomes a line on the standard
// error stream, where the test that made the call finds it beside the messages of the library.
#pragma once

#include <boost/multiprecision/cpp_int.hpp>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <sstream>
#include <string>
#include <utility>

#include "zorv/solver_abi.h"

namespace fake {

using Coeff = boost::multiprecision::number<boost::multiprecision::cpp_int_backend<>,
                                            boost::multiprecision::et_off>;

inline const Coeff* values(const ::coeff_t* c) { return reinterpret_cast<const Coeff*>(c); }
inline Coeff* values(::coeff_t* c) { return reinterpret_cast<Coeff*>(c); }

// One line, written in one go.
template <typename... Parts>
void say(const Parts&... parts) {
  std::ostringstream line;
  (line << ... << parts) << '\n';
  std::fputs(line.str().c_str(), stderr);
}

// "7", "~7" for a complement, "i7" for an integer variable.
inline std::string literal(uint32_t l) {
  return ((l >> 31) != 0 ? "~" : "") + std::string((l >> 30 & 1) != 0 ? "i" : "") +
         std::to_string(l & 0x3FFFFFFF);
}

inline std::string number(const ::coeff_t* c) { return values(c)->str(); }

// "[1 -2]"
inline std::string numbers(const ::coeff_t* c, uint64_t n) {
  std::string text;
  for (uint64_t i = 0; i < n; ++i) text += (i > 0 ? " " : "") + values(c)[i].str();
  return "[" + text + "]";
}

// " -2*0*~1": one term.
inline std::string term(const Coeff& c, const uint32_t* literals, uint64_t degree) {
  std::string text = " " + c.str();
  for (uint64_t i = 0; i < degree; ++i) text += "*" + literal(literals[i]);
  return text;
}

// "3 1*0 -2*0*1": constant and terms of a model, degree after degree.
inline std::string polynomial(const ::coeff_t* constant, uint32_t max_degree,
                              const uint64_t* term_count, const uint32_t* const* term_vars,
                              const ::coeff_t* const* term_coeffs) {
  std::string text = number(constant);
  for (uint32_t d = 1; d <= max_degree; ++d) {
    for (uint64_t t = 0; t < term_count[d - 1]; ++t) {
      text += term(values(term_coeffs[d - 1])[t], term_vars[d - 1] + t * d, d);
    }
  }
  return text;
}

// The same of the linear part of a constraint, and of what has a table of heads.
inline std::string linear(const ::coeff_t* constant, uint64_t n, const uint32_t* vars,
                          const ::coeff_t* coeffs) {
  std::string text = number(constant);
  for (uint64_t i = 0; i < n; ++i) text += term(values(coeffs)[i], vars + i, 1);
  return text;
}
inline std::string nonlinear(uint64_t n, const uint64_t* head, const uint32_t* vars,
                             const ::coeff_t* coeffs) {
  std::string text;
  for (uint64_t t = 0; t < n; ++t) {
    text += term(values(coeffs)[t], vars + head[t], head[t + 1] - head[t]);
  }
  return text;
}

// What all forms of a constraint begin with: "4 * (3 1*0 -2*1) in -1..6".
inline std::string constraint(const ::coeff_t* weight, const ::coeff_t* lo, const ::coeff_t* hi,
                              const std::string& body) {
  return number(weight) + " * (" + body + ") in " + number(lo) + ".." + number(hi);
}

// " 1..1 4..6": allowed intervals.
inline std::string intervals(uint64_t n, const ::coeff_t* lo, const ::coeff_t* hi) {
  std::string text;
  for (uint64_t i = 0; i < n; ++i) {
    text += " " + values(lo)[i].str() + ".." + values(hi)[i].str();
  }
  return text;
}

// " seed=5 key=(null)"
inline std::string params(const ParamPair* pair) {
  std::string text;
  for (; pair->key != nullptr; ++pair) {
    text += std::string(" ") + pair->key + "=" + (pair->value != nullptr ? pair->value : "(null)");
  }
  return text;
}

// The value of a parameter, or null: tests steer a fake by parameters of its own.
inline const char* param(const ParamPair* pair, const char* key) {
  for (; pair->key != nullptr; ++pair) {
    if (std::strcmp(pair->key, key) == 0) return pair->value;
  }
  return nullptr;
}

// "3 0": words in hexadecimal, or "none".
inline std::string words(const uint64_t* bits, uint64_t n) {
  if (bits == nullptr) return "none";
  std::ostringstream text;
  for (uint64_t i = 0; i < n; ++i) text << (i > 0 ? " " : "") << std::hex << bits[i];
  return text.str();
}

// Results -----------------------------------------------------------------------------------------

inline void write(const Coeff& c, CoeffWire* out) {
  std::string limbs;  // bytes of the magnitude, low ones first
  boost::multiprecision::export_bits(c, std::back_inserter(limbs), 8, false);
  limbs.resize((limbs.size() + 7) / 8 * 8);
  out->sign = c.sign();
  out->nlimbs = static_cast<uint32_t>(limbs.size() / 8);
  out->limbs = static_cast<uint64_t*>(std::malloc(limbs.size()));
  std::memcpy(out->limbs, limbs.data(), limbs.size());
}

// A list of facts in blocks of malloc; freed by free_facts here, or by who receives it.
inline InfoPair* facts(std::initializer_list<std::pair<const char*, const char*>> pairs) {
  auto* list = static_cast<InfoPair*>(std::calloc(pairs.size() + 1, sizeof(InfoPair)));
  InfoPair* next = list;
  for (const auto& [key, value] : pairs) *next++ = {strdup(key), strdup(value)};
  return list;
}
inline void free_facts(InfoPair* list) {
  for (InfoPair* pair = list; pair->key != nullptr; ++pair) {
    std::free(pair->key);
    std::free(pair->value);
  }
  std::free(list);
}

}  // namespace fake
