#include "model/sol.h"

#include <utility>

#include "core/fatal.h"
#include "core/literal.h"
#include "core/simplify.h"
#include "core/var_registry.h"
#include "model/bit_words.h"

namespace zorv {

namespace {

// The three questions about a variable name themselves in their text.
uint32_t index_or_abort(const Sol& sol, uint32_t literal, const char* who) {
  const uint32_t i = model_var_index(*sol.model, literal);
  if (i == kNoLiteral) {
    fatal(who, ": variable not in model (index=", identity_of(literal), ")");
  }
  return i;
}

uint32_t atom_index_or_abort(const Sol& sol, uint32_t atom, const char* who) {
  if (!is_atom(atom) || is_negated(atom)) fatal(who, ": not an integer variable index");
  const std::vector<uint32_t>& map = sol.model->int_index_map;
  const uint32_t index = index_of(atom);
  const uint32_t i = index < map.size() ? map[index] : kNoLiteral;
  if (i == kNoLiteral) fatal(who, ": integer variable not in model");
  return i;
}

void require_energy(const Sol& sol, const char* message) {
  if (!sol.energy_valid) fatal(message);
}

}  // namespace

Sol::Sol(ModelHandle m)
    : model(std::move(m)),
      scale(model->scale),
      bits(words_for(model->variables.size())),
      int_vals(model->int_lo),
      energy(full_energy(*model, bits.data(), int_vals.data())),
      energy_valid(true) {}

Sol::Sol(ModelHandle m, std::vector<uint64_t> words, std::vector<coeff_t> ints, coeff_t reported,
         double seconds)
    : model(std::move(m)),
      scale(model->scale),
      bits(std::move(words)),
      int_vals(std::move(ints)),
      energy(std::move(reported)),
      energy_valid(true),
      tts(seconds) {}

Sol make_sol(const ExprImpl& e) {
  return Sol(std::make_shared<const ModelImpl>(expr_simplify_as_binary(e), 1.0, nullptr));
}

int sol_get(const Sol& sol, uint32_t literal) {
  const uint32_t i = index_or_abort(sol, literal, "Sol::get");
  return bit_at(sol.bits.data(), i) != is_negated(literal) ? 1 : 0;
}

void sol_set(Sol& sol, uint32_t literal, int value) {
  const uint32_t i = index_or_abort(sol, literal, "Sol::set");
  // For a negated literal 1 - value is what counts, so any value but 1 sets the bit.
  set_bit(sol.bits.data(), i, is_negated(literal) ? value != 1 : value != 0);
  sol.energy_valid = false;
}

void sol_flip(Sol& sol, uint32_t literal) {
  flip_bit(sol.bits.data(), index_or_abort(sol, literal, "Sol::flip"));
  sol.energy_valid = false;
}

const coeff_t& sol_get_int(const Sol& sol, uint32_t atom) {
  return sol.int_vals[atom_index_or_abort(sol, atom, "Sol::get")];
}

void sol_set_int(Sol& sol, uint32_t atom, const coeff_t& value) {
  const uint32_t i = atom_index_or_abort(sol, atom, "Sol::set");
  const coeff_t& lo = sol.model->int_lo[i];
  const coeff_t& hi = sol.model->int_hi[i];
  if (value < lo || hi < value) {
    fatal("Sol::set: value ", value, " outside the integer variable's bounds [", lo, ",", hi, "]");
  }
  sol.int_vals[i] = value;
  sol.energy_valid = false;
}

ArrayImpl<coeff_t> sol_values(const Sol& sol, const ArrayImpl<uint32_t>& literals) {
  return map_array(literals, [&](uint32_t literal) {
    const uint32_t i = model_var_index(*sol.model, literal);
    const bool bit = i != kNoLiteral && bit_at(sol.bits.data(), i);
    return coeff_t(bit != is_negated(literal) ? 1 : 0);
  });
}

void sol_set_from(Sol& dst, const Sol& src) {
  const ModelImpl& m = *src.model;
  for (const uint32_t id : m.variables) sol_set(dst, id, sol_get(src, id));
  for (uint64_t i = 0; i < m.int_atoms.size(); ++i) {
    sol_set_int(dst, atom_literal(m.int_atoms[i]), src.int_vals[i]);
  }
  dst.energy_valid = false;
}

const coeff_t& sol_energy(const Sol& sol) {
  require_energy(sol,
                 "Sol::energy(): energy is invalid (variable changed after last computation). "
                 "Call comp_energy() first.");
  return sol.energy;
}

const coeff_t& sol_energy_int(const Sol& sol) {
  require_energy(sol, "Sol::energy_int(): energy is invalid. Call comp_energy() first.");
  return sol.energy;
}

const coeff_t& compute_energy(Sol& sol) {
  if (!sol.energy_valid) {
    sol.energy = full_energy(*sol.model, sol.bits.data(), sol.int_vals.data());
    sol.energy_valid = true;
  }
  return sol.energy;
}

void set_energy(Sol& sol, const coeff_t& energy) {
  sol.energy = energy;
  sol.energy_valid = true;
}

std::string sol_text(const Sol& sol) {
  require_energy(sol,
                 "Sol::str(): energy is invalid (variable changed after last computation). "
                 "Call comp_energy() first.");
  std::string text = sol.energy.str();
  text += ":{";
  const std::vector<uint32_t>& variables = sol.model->variables;
  for (uint32_t i = 0; i < variables.size(); ++i) {
    if (i > 0) text += ',';
    text += '{';
    append_var_name(text, variables[i]);
    text += ',';
    // Deliberate, and tests hold it: the name is that of the i-th variable of the model, the value
    // that of the variable with id i. They are one variable in a model of the ids 0 to n - 1; any
    // other model lacks some id below n, and the call aborts on it.
    text += std::to_string(sol_get(sol, i));
    text += '}';
  }
  text += '}';
  return text;
}

}  // namespace zorv
