// What the fakes for models of binary variables have in common: all functions of a family but its
// create and search functions. Before the include, FAKE(name) is defined as the family's symbol.
//
// Tests steer a search by parameters: "sols" is the number of further solutions, "facts" asks for
// facts about the search.
#pragma once

#include "fakes/received.h"
#include "fakes/recorder.h"

namespace fake {

inline Received received;

struct Solver {
  int id;
  uint32_t max_degree;
  const ::coeff_t* constant;
  const uint64_t* term_count;
  const uint32_t* const* term_vars;
  const ::coeff_t* const* term_coeffs;
  uint64_t ints = 0;
  const char* facts_asked = nullptr;
  InfoPair* facts = nullptr;

  std::string model() const {
    return polynomial(constant, max_degree, term_count, term_vars, term_coeffs);
  }
};
inline Solver& solver(void* handle) { return *static_cast<Solver*>(handle); }
inline int solvers_made = 0;

inline Solver* make_solver(uint32_t max_degree, const ::coeff_t* constant,
                           const uint64_t* term_count, const uint32_t* const* term_vars,
                           const ::coeff_t* const* term_coeffs) {
  received.term_vars = term_vars;
  received.term_coeffs = term_coeffs;
  return new Solver{++solvers_made, max_degree, constant, term_count, term_vars, term_coeffs};
}

struct SolList {
  uint64_t count;
};

// The model is told from the tables of the create call, which must have stayed good. The answer has
// an energy of two limbs, the bits 5, and the time 0.25.
inline void* search(void* handle, const char* name, SolutionOut* out, const ParamPair* pairs) {
  Solver& s = solver(handle);
  say(name, " #", s.id, params(pairs), ": ", s.model());
  if (*out->nwords != (*out->nbits + 63) / 64 || *out->bits != 0 || *out->tts != 0) say("unclean");
  s.facts_asked = param(pairs, "facts");
  write(-(Coeff(1) << 64) - *out->nbits, out->energy);
  out->bits[0] = 5;
  *out->tts = 0.25;
  const char* sols = param(pairs, "sols");
  return sols != nullptr ? new SolList{std::strtoul(sols, nullptr, 10)} : nullptr;
}

}  // namespace fake

extern "C" {

const fake::Received* fake_received() { return &fake::received; }

void FAKE(destroy)(void* handle) {
  fake::Solver* s = &fake::solver(handle);
  fake::say("destroy #", s->id);
  if (s->facts != nullptr) fake::free_facts(s->facts);
  delete s;
}

uint64_t FAKE(sol_list_count)(void* list) {
  fake::say("sol_list_count");
  return static_cast<fake::SolList*>(list)->count;
}

// Entry i has the energy i * 2^64, the bits i + 1 and the time i.
void FAKE(sol_list_get)(void*, uint64_t i, SolutionOut* out) {
  fake::say("sol_list_get ", i, " nbits=", *out->nbits, " bits=", *out->bits);
  fake::write(fake::Coeff(i) << 64, out->energy);
  out->bits[0] = i + 1;
  *out->tts = static_cast<double>(i);
}

void FAKE(sol_list_destroy)(void* list) {
  fake::say("sol_list_destroy");
  delete static_cast<fake::SolList*>(list);
}

void FAKE(register_callback)(SolverCallback fn) {
  fake::say("register_callback, gives ", fn(nullptr, nullptr, nullptr, 1, 0.5));
}

InfoPair* FAKE(get_info)(void* handle) {
  fake::Solver& s = fake::solver(handle);
  fake::say("get_info #", s.id);
  if (s.facts_asked == nullptr) return nullptr;
  if (s.facts == nullptr) s.facts = fake::facts({{"moves", "12"}, {"engine", "fake"}});
  return s.facts;
}

// The list stays with its solver, so that a test of a library without this function leaks nothing.
void FAKE(free_info)(InfoPair* list) { fake::say("free_info ", list->key); }

void FAKE(add_constraint)(void* handle, const coeff_t* weight, const coeff_t* lo, const coeff_t* hi,
                          const coeff_t* body_constant, uint64_t nvars, const uint32_t* vars,
                          const coeff_t* coeffs) {
  fake::received.cons_vars = vars;
  fake::received.cons_coeffs = coeffs;
  const std::string body = fake::linear(body_constant, nvars, vars, coeffs);
  fake::say("add_constraint #", fake::solver(handle).id, " ",
            fake::constraint(weight, lo, hi, body));
}

void FAKE(add_constraint_nl)(void* handle, const coeff_t* weight, const coeff_t* lo,
                             const coeff_t* hi, const coeff_t* body_constant, uint64_t nvars,
                             const uint32_t* vars, const coeff_t* coeffs, uint64_t nl_count,
                             const uint64_t* nl_head, const uint32_t* nl_vars,
                             const coeff_t* nl_coeffs) {
  const std::string body = fake::linear(body_constant, nvars, vars, coeffs) + " |" +
                           fake::nonlinear(nl_count, nl_head, nl_vars, nl_coeffs);
  fake::say("add_constraint_nl #", fake::solver(handle).id, " ",
            fake::constraint(weight, lo, hi, body));
}

void FAKE(add_constraint_set)(void* handle, const coeff_t* weight, const coeff_t* lo,
                              const coeff_t* hi, const coeff_t* body_constant, uint64_t nvars,
                              const uint32_t* vars, const coeff_t* coeffs, uint64_t n_allowed,
                              const coeff_t* allowed_lo, const coeff_t* allowed_hi) {
  const std::string body = fake::linear(body_constant, nvars, vars, coeffs);
  fake::say("add_constraint_set #", fake::solver(handle).id, " ",
            fake::constraint(weight, lo, hi, body), ":",
            fake::intervals(n_allowed, allowed_lo, allowed_hi));
}

void FAKE(set_cons_shape)(void* handle, uint8_t shape_k, uint8_t shape_kind) {
  fake::say("set_cons_shape #", fake::solver(handle).id, " ", +shape_k, " ", +shape_kind);
}

void FAKE(set_remainder)(void* handle, const coeff_t* remainder_constant, uint64_t n_coeffs,
                         const uint64_t* remainder_head, const uint32_t* remainder_vars,
                         const coeff_t* remainder_coeffs) {
  fake::received.remainder_head = remainder_head;
  fake::received.remainder_vars = remainder_vars;
  fake::received.remainder_coeffs = remainder_coeffs;
  fake::say("set_remainder #", fake::solver(handle).id, " ", fake::number(remainder_constant),
            fake::nonlinear(n_coeffs, remainder_head, remainder_vars, remainder_coeffs));
}

}  // extern "C"
