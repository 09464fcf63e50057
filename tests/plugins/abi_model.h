// A binary model as a solver library receives it, made at random, and what it says of an assignment
// by the plainest loop there is.
#pragma once

#include <boost/multiprecision/cpp_int.hpp>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "zorv/solver_abi.h"

namespace zorv::test {

using Coeff = boost::multiprecision::number<boost::multiprecision::cpp_int_backend<>,
                                            boost::multiprecision::et_off>;
inline const coeff_t* abi(const Coeff& c) { return reinterpret_cast<const coeff_t*>(&c); }
inline const coeff_t* abi(const std::vector<Coeff>& c) {
  return reinterpret_cast<const coeff_t*>(c.data());
}

// Assignments are words here, variable i at bit i.
struct Terms {
  std::vector<Coeff> coeffs;
  std::vector<uint64_t> head{0};
  std::vector<uint32_t> literals;

  void add(const Coeff& coeff, const std::vector<uint32_t>& term) {
    coeffs.push_back(coeff);
    literals.insert(literals.end(), term.begin(), term.end());
    head.push_back(literals.size());
  }
  Coeff value(uint64_t state) const {
    Coeff sum = 0;
    for (size_t t = 0; t < coeffs.size(); ++t) {
      bool is_one = true;
      for (uint64_t i = head[t]; i < head[t + 1]; ++i) {
        is_one = is_one && (state >> (literals[i] & 63) & 1) != literals[i] >> 31;
      }
      if (is_one) sum += coeffs[t];
    }
    return sum;
  }
};

enum class Form { kLinear, kNonlinear, kAllowed };

struct Constraint {
  Form form = Form::kLinear;
  Coeff weight = 1, body_constant = 0;
  Terms linear = {}, nonlinear = {};
  std::vector<Coeff> lows = {}, highs = {};  // one of each unless values are allowed
  uint8_t shape_k = 2, shape_kind = 0;

  Coeff violation(uint64_t state) const {
    const Coeff body = body_constant + linear.value(state) + nonlinear.value(state);
    Coeff least = -1;
    for (size_t i = 0; i < lows.size(); ++i) {
      Coeff distance = 0;
      if (body > highs[i]) distance = body - highs[i];
      if (body < lows[i]) distance = lows[i] - body;
      if (least < 0 || distance < least) least = distance;
    }
    return least;
  }
};

struct AbiModel {
  uint64_t variables = 0;
  Coeff constant = 0;
  std::vector<Terms> degrees = {};  // from 1
  std::vector<Constraint> constraints = {};
  Terms remainder = {};  // a copy of terms that `degrees` has

  Coeff energy(uint64_t state) const {
    Coeff sum = constant;
    for (const Terms& terms : degrees) sum += terms.value(state);
    for (const Constraint& c : constraints) {
      const Coeff v = c.violation(state);
      sum += c.shape_k == 1 ? Coeff(c.weight * v) : Coeff(c.weight * v * v);
    }
    return sum;
  }
  // Of requirements.
  uint64_t violated(uint64_t state) const {
    uint64_t count = 0;
    for (const Constraint& c : constraints) count += c.shape_kind == 0 && c.violation(state) != 0;
    return count;
  }
};

// Models of all kinds, with coefficients that are small numbers times `scale`.
class RandomModels {
 public:
  explicit RandomModels(uint64_t seed) : random_(seed) {}

  uint64_t below(uint64_t n) { return random_() % n; }

  AbiModel make(uint64_t variables, const Coeff& scale) {
    AbiModel m{variables, number(9) * scale};
    m.degrees.resize(below(variables + 1));
    for (size_t d = 1; d <= m.degrees.size(); ++d) {
      for (uint64_t t = below(d <= 2 ? 9 : 4); t > 0; --t) {
        m.degrees[d - 1].add(number(6) * scale, literals(variables, d, d >= 3));
      }
    }
    for (uint64_t c = variables > 0 ? below(4) : 0; c > 0; --c) {
      m.constraints.push_back(constraint(variables, scale));
    }
    if (!m.degrees.empty() && below(4) == 0) m.remainder = m.degrees[0];
    return m;
  }

 private:
  Coeff number(int64_t most) { return static_cast<int64_t>(below(2 * most + 1)) - most; }

  // Of `degree` different variables.
  std::vector<uint32_t> literals(uint64_t variables, uint64_t degree, bool has_complements) {
    std::vector<uint32_t> chosen;
    for (uint32_t v = 0; v < variables; ++v) {
      if (below(variables - v) >= degree - chosen.size()) continue;
      chosen.push_back(has_complements && below(3) == 0 ? v | 0x80000000u : v);
    }
    return chosen;
  }

  Constraint constraint(uint64_t variables, const Coeff& scale) {
    Constraint c{static_cast<Form>(below(3)), number(3) * scale, number(3)};
    for (uint64_t t = below(variables + 1); t > 0; --t) {
      c.linear.add(number(4), literals(variables, 1, true));
    }
    for (uint64_t t = c.form == Form::kNonlinear ? 1 + below(5) : 0; t > 0; --t) {
      c.nonlinear.add(number(4), literals(variables, 1 + below(variables), true));
    }
    for (uint64_t i = c.form == Form::kAllowed ? 1 + below(4) : 1; i > 0; --i) {
      c.lows.push_back(number(6));
      c.highs.push_back(c.lows.back() + static_cast<int64_t>(below(5)) - (below(9) == 0 ? 3 : 0));
    }
    c.shape_k = static_cast<uint8_t>(1 + below(2));
    c.shape_kind = static_cast<uint8_t>(below(2));
    return c;
  }

  std::mt19937_64 random_;
};

// The functions of one family under names of their own: struct Family { static constexpr auto
// create = ..., add_constraint = ..., }, and so on.
template <typename Family>
class Handle {
 public:
  template <typename... More>
  explicit Handle(const AbiModel& m, More... more) {
    for (const Terms& terms : m.degrees) {
      counts_.push_back(terms.coeffs.size());
      literals_.push_back(terms.literals.data());
      coeffs_.push_back(abi(terms.coeffs));
    }
    handle_ =
        Family::create(nullptr, m.variables, static_cast<uint32_t>(m.degrees.size()),
                       abi(m.constant), counts_.data(), literals_.data(), coeffs_.data(), more...);
    for (const Constraint& c : m.constraints) add(c);
    const Terms& part = m.remainder;
    if (part.coeffs.empty()) return;
    Family::set_remainder(handle_, abi(m.constant), part.coeffs.size(), part.head.data(),
                          part.literals.data(), abi(part.coeffs));
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle() { Family::destroy(handle_); }
  operator void*() const { return handle_; }

 private:
  void add(const Constraint& c) {
    const auto send = [&](auto function, auto... more) {
      function(handle_, abi(c.weight), abi(c.lows[0]), abi(c.highs[0]), abi(c.body_constant),
               c.linear.coeffs.size(), c.linear.literals.data(), abi(c.linear.coeffs), more...);
    };
    if (c.form == Form::kLinear) {
      send(Family::add_constraint);
    } else if (c.form == Form::kNonlinear) {
      send(Family::add_constraint_nl, c.nonlinear.coeffs.size(), c.nonlinear.head.data(),
           c.nonlinear.literals.data(), abi(c.nonlinear.coeffs));
    } else {
      send(Family::add_constraint_set, c.lows.size(), abi(c.lows), abi(c.highs));
    }
    if (c.shape_k != 2 || c.shape_kind != 0) {
      Family::set_cons_shape(handle_, c.shape_k, c.shape_kind);
    }
  }

  std::vector<uint64_t> counts_;
  std::vector<const uint32_t*> literals_;
  std::vector<const coeff_t*> coeffs_;
  void* handle_;
};

}  // namespace zorv::test
