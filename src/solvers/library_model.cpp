#include "solvers/library_model.h"

#include <algorithm>

#include "core/fatal.h"
#include "core/literal.h"

namespace zorv {

namespace {

void require(bool is_present, const char* text) {
  if (!is_present) fatal(text);
}

void set_shape(const NativeCons& cons, void* solver, const ConstraintFunctions& functions) {
  functions.set_cons_shape(solver, cons.shape_k, cons.shape_kind);
}

// One call for one constraint, by the form of its body. `vars` are its literals as the solver is to
// see them.
void deliver(const NativeCons& cons, const std::vector<uint32_t>& vars, void* solver,
             const ConstraintFunctions& functions, const ConstraintTexts& texts) {
  const auto send = [&](auto function, auto... more) {
    function(solver, as_abi(&cons.weight), as_abi(&cons.lo), as_abi(&cons.hi),
             as_abi(&cons.body_constant), vars.size(), vars.data(), as_abi(cons.coeffs.data()),
             more...);
  };
  if (!cons.nl_coeffs.empty()) {
    require(functions.add_constraint_nl != nullptr, texts.no_nonlinear);
    send(functions.add_constraint_nl, cons.nl_coeffs.size(), cons.nl_head.data(),
         cons.nl_vars.data(), as_abi(cons.nl_coeffs.data()));
  } else if (!cons.allowed.empty()) {
    require(functions.add_constraint_set != nullptr, texts.no_allowed);
    const AllowedRuns allowed(cons);
    send(functions.add_constraint_set, allowed.lows.size(), as_abi(allowed.lows.data()),
         as_abi(allowed.highs.data()));
  } else {
    send(functions.add_constraint);
  }
}

}  // namespace

TermTables::TermTables(const ModelImpl& model) {
  for (uint32_t d = 0; d < model.max_degree; ++d) {
    vars.push_back(model.term_vars[d].data());
    coeffs.push_back(as_abi(model.term_coeffs[d].data()));
  }
}

AllowedRuns::AllowedRuns(const NativeCons& cons) {
  for (const auto& [low, high] : cons.allowed) {
    lows.push_back(low);
    highs.push_back(high);
  }
}

void deliver_constraints(const ModelImpl& model, void* solver, const ConstraintFunctions& functions,
                         const ConstraintTexts& texts) {
  if (!model.native_cons.empty()) {
    require(!has_penalty_shapes(model) || functions.set_cons_shape != nullptr, texts.no_shape);
    require(functions.add_constraint != nullptr, texts.no_constraints);
  }
  for (const NativeCons& cons : model.native_cons) {
    deliver(cons, cons.vars, solver, functions, texts);
    if (!cons.has_default_shape()) set_shape(cons, solver, functions);
  }
  if (model.has_remainder) {
    require(functions.set_remainder != nullptr, texts.no_remainder);
    functions.set_remainder(solver, as_abi(&model.remainder_constant),
                            model.remainder_coeffs.size(), model.remainder_head.data(),
                            model.remainder_vars.data(), as_abi(model.remainder_coeffs.data()));
  }
}

void deliver_integer_constraints(const ModelImpl& model, void* solver,
                                 const ConstraintFunctions& functions,
                                 const ConstraintTexts& texts) {
  if (model.native_cons.empty()) return;
  require(functions.add_constraint != nullptr, texts.no_constraints);
  for (const NativeCons& cons : model.native_cons) {
    deliver(cons, flat_literals(model, cons.vars), solver, functions, texts);
    if (cons.has_default_shape()) continue;
    require(functions.set_cons_shape != nullptr, texts.no_shape);
    set_shape(cons, solver, functions);
  }
}

std::vector<uint32_t> flat_literals(const ModelImpl& model, const std::vector<uint32_t>& literals) {
  const auto bits = static_cast<uint32_t>(model.variables.size());
  std::vector<uint32_t> flat(literals.size());
  std::transform(literals.begin(), literals.end(), flat.begin(), [=](uint32_t literal) {
    return is_atom(literal) ? index_of(literal) + bits : identity_of(literal);
  });
  return flat;
}

bool has_nonlinear_bodies(const ModelImpl& model) {
  return std::any_of(model.native_cons.begin(), model.native_cons.end(),
                     [](const NativeCons& cons) { return !cons.nl_coeffs.empty(); });
}

bool has_allowed_values(const ModelImpl& model) {
  return std::any_of(model.native_cons.begin(), model.native_cons.end(),
                     [](const NativeCons& cons) { return !cons.allowed.empty(); });
}

}  // namespace zorv
