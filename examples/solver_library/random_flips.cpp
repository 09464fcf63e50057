// A solver library for EasySolver: descents by single flips from random assignments.
#include <algorithm>
#include <boost/multiprecision/cpp_int.hpp>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <random>
#include <vector>

#include "zorv/solver_abi.h"

namespace {

using Coeff = boost::multiprecision::number<boost::multiprecision::cpp_int_backend<>,
                                            boost::multiprecision::et_off>;

struct Term {
  const Coeff* coeff;
  const uint32_t* literals;  // [degree]
  uint32_t degree;
};

struct Solver {
  const Coeff* constant;
  std::vector<Term> terms;
  std::vector<std::vector<Term>> terms_of;  // by variable
};

using Bits = std::vector<uint64_t>;  // variable v at bit v % 64 of word v / 64

uint32_t variable_of(uint32_t literal) { return literal & 0x7FFFFFFF; }
bool is_complement(uint32_t literal) { return (literal >> 31) != 0; }
bool get(const Bits& x, uint32_t v) { return (x[v / 64] >> v % 64 & 1) != 0; }
void flip(Bits& x, uint32_t v) { x[v / 64] ^= uint64_t{1} << v % 64; }

Coeff sum_of(const std::vector<Term>& terms, const Bits& x) {
  Coeff sum = 0;
  for (const Term& t : terms) {
    const bool is_one = std::all_of(t.literals, t.literals + t.degree, [&](uint32_t literal) {
      return get(x, variable_of(literal)) != is_complement(literal);
    });
    if (is_one) sum += *t.coeff;
  }
  return sum;
}

// Flips variables as long as that lowers the energy, which is returned.
Coeff descend(const Solver& s, Bits& x) {
  Coeff energy = *s.constant + sum_of(s.terms, x);
  for (bool has_moved = true; has_moved;) {
    has_moved = false;
    for (uint32_t v = 0; v < s.terms_of.size(); ++v) {
      const Coeff before = sum_of(s.terms_of[v], x);
      flip(x, v);
      const Coeff after = sum_of(s.terms_of[v], x);
      if (after < before) {
        energy += after - before;
        has_moved = true;
      } else {
        flip(x, v);
      }
    }
  }
  return energy;
}

// The value of a parameter, the last one of that name.
const char* param(const ParamPair* pair, const char* key) {
  const char* value = "";
  for (; pair->key != nullptr; ++pair) {
    if (std::strcmp(pair->key, key) == 0 && pair->value != nullptr) value = pair->value;
  }
  return value;
}

void store(const Bits& x, const Coeff& energy, double seconds, SolutionOut* out) {
  std::copy(x.begin(), x.end(), out->bits);
  *out->tts = seconds;
  std::vector<uint64_t> limbs;
  export_bits(energy, std::back_inserter(limbs), 64, false);  // of the magnitude, low ones first
  const size_t bytes = limbs.size() * sizeof(uint64_t);
  std::free(out->energy->limbs);  // of the solution before this one
  out->energy->limbs = static_cast<uint64_t*>(std::malloc(bytes));
  std::memcpy(out->energy->limbs, limbs.data(), bytes);
  out->energy->nlimbs = static_cast<uint32_t>(limbs.size());
  out->energy->sign = energy.sign();
}

}  // namespace

extern "C" {

void* zorv_easy_solver_create(void*, uint64_t nvars, uint32_t max_degree, const coeff_t* constant,
                              const uint64_t* term_count, const uint32_t* const* term_vars,
                              const coeff_t* const* term_coeffs) {
  auto* s = new Solver{reinterpret_cast<const Coeff*>(constant), {}, {}};
  s->terms_of.resize(nvars);
  for (uint32_t d = 1; d <= max_degree; ++d) {
    const auto* coeffs = reinterpret_cast<const Coeff*>(term_coeffs[d - 1]);
    for (uint64_t t = 0; t < term_count[d - 1]; ++t) {
      const Term term = {coeffs + t, term_vars[d - 1] + t * d, d};
      s->terms.push_back(term);
      for (uint32_t i = 0; i < d; ++i) s->terms_of[variable_of(term.literals[i])].push_back(term);
    }
  }
  return s;
}

void zorv_easy_solver_destroy(void* handle) { delete static_cast<Solver*>(handle); }

void* zorv_easy_solver_search(void* handle, SolutionOut* out, const ParamPair* params,
                              const uint64_t* hint) {
  using Clock = std::chrono::steady_clock;
  const auto start = Clock::now();
  const auto seconds = [&] { return std::chrono::duration<double>(Clock::now() - start).count(); };
  const double time_limit = std::strtod(param(params, "time_limit"), nullptr);
  std::mt19937_64 random(std::strtoull(param(params, "seed"), nullptr, 10));

  const Solver& s = *static_cast<Solver*>(handle);
  Bits x(*out->nwords);
  if (hint != nullptr) x.assign(hint, hint + x.size());
  Coeff best = descend(s, x);
  store(x, best, seconds(), out);
  while (seconds() < time_limit) {
    for (uint32_t v = 0; v < s.terms_of.size(); ++v) {
      if ((random() & 1) != 0) flip(x, v);
    }
    const Coeff energy = descend(s, x);
    if (energy < best) store(x, best = energy, seconds(), out);
  }
  return nullptr;  // no list of further solutions, so the next three are never called
}

uint64_t zorv_easy_solver_sol_list_count(void*) { return 0; }
void zorv_easy_solver_sol_list_get(void*, uint64_t, SolutionOut*) {}
void zorv_easy_solver_sol_list_destroy(void*) {}
void zorv_easy_solver_register_callback(SolverCallback) {}

}  // extern "C"
