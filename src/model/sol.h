// Sol: one assignment of a compiled model, with its energy.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "arrays/array.h"
#include "model/model.h"

namespace zorv {

// The model handle stands first: a Sol is handed out as a model handle too, and whoever receives
// one may touch these two words only.
struct Sol {
  ModelHandle model;
  double scale;
  std::vector<uint64_t> bits;     // variable i at bit i % 64 of word i / 64, the rest zero
  std::vector<coeff_t> int_vals;  // one for each dense integer atom
  coeff_t energy;
  bool energy_valid;  // false after any change of a value
  double tts = -1.0;  // seconds until a solver found it

  // All bits 0, all atoms at their lower bound, the energy computed.
  explicit Sol(ModelHandle m);
  // As a solver reports it; the energy is taken as valid.
  Sol(ModelHandle m, std::vector<uint64_t> words, std::vector<coeff_t> ints, coeff_t reported,
      double seconds);
};

// Simplifies `e` as binary and compiles it without constraints.
Sol make_sol(const ExprImpl& e);

// The three abort if the model does not have the variable.
int sol_get(const Sol& sol, uint32_t literal);
void sol_set(Sol& sol, uint32_t literal, int value);
void sol_flip(Sol& sol, uint32_t literal);
// Both abort if `atom` is no atom of the model; setting also on a value out of bounds.
const coeff_t& sol_get_int(const Sol& sol, uint32_t atom);
void sol_set_int(Sol& sol, uint32_t atom, const coeff_t& value);
// The value of each literal, 0 or 1. A variable that the model does not have counts as 0, so its
// complement is 1.
ArrayImpl<coeff_t> sol_values(const Sol& sol, const ArrayImpl<uint32_t>& literals);
// Copies every value of `src`; the model of `dst` must have all of its variables.
void sol_set_from(Sol& dst, const Sol& src);

// The energy; both abort, each with its own text, if it is not valid.
const coeff_t& sol_energy(const Sol& sol);
const coeff_t& sol_energy_int(const Sol& sol);
// Computes it first if it is not valid.
const coeff_t& compute_energy(Sol& sol);
// Takes the energy on trust, as solvers report it.
void set_energy(Sol& sol, const coeff_t& energy);
// "energy:{{name,value},...}". Aborts if the energy is not valid, and unless the ids of the model's
// variables are 0 to n - 1.
std::string sol_text(const Sol& sol);

// The energy of any assignment of the model, from the definition.
coeff_t full_energy(const ModelImpl& m, const uint64_t* bits, const coeff_t* int_vals);
// The value of a native constraint's body.
coeff_t body_value(const NativeCons& cons, const uint64_t* bits, const coeff_t* int_vals);
// Its distance from what the constraint asks, and what that adds to the energy.
coeff_t violation_of(const NativeCons& cons, const coeff_t& body);
coeff_t penalty_of(const NativeCons& cons, const coeff_t& body);

// The value of `e` on the assignment, the penalties of declared constraints included.
coeff_t sol_eval(const Sol& sol, const ExprImpl& e);
// The value of the polynomial of `e` on a model's bits, where a variable that the model does not
// have counts as 0 whether negated or not. Aborts on declared constraints, then on atoms.
//   bits  [(variables + 63) / 64] words, variable i at bit i % 64 of word i / 64
coeff_t value_on_bits(const ExprImpl& e, const ModelImpl& m, const uint64_t* bits);

}  // namespace zorv
