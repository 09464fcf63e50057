// ModelImpl: one expression, compiled to flat tables. Every engine, the energy of a Sol and all
// exports read it; it never changes after its constructor.
//
//   energy = constant + all terms + for each native constraint weight * violation^shape_k
//
// A free-form penalty is already part of the terms. The remainder table repeats it apart, for
// consumers that must treat it as hard, and is never added to the energy a second time.
//
// A compiled literal is a dense model index, with bit 31 if negated (degree 3 and up only), or a
// dense integer index with bit 30.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "constraints/constraint_tables.h"
#include "core/expr.h"

namespace zorv {

// A declared constraint in the model. Linear bodies come first in the table, then the others.
struct NativeCons {
  coeff_t weight;  // may be negative
  coeff_t lo, hi;  // the hull if `allowed` is not empty
  coeff_t body_constant;
  std::vector<uint32_t> vars;     // degree-1 part of the body, never negated
  std::vector<coeff_t> coeffs;    // parallel to `vars`
  std::vector<uint64_t> nl_head;  // starts into nl_vars and one end; empty for a linear body
  std::vector<uint32_t> nl_vars;
  std::vector<coeff_t> nl_coeffs;
  std::vector<Interval> allowed;  // empty: lo and hi apply
  uint8_t shape_k = 2;
  uint8_t shape_kind = 0;

  bool has_default_shape() const { return shape_k == 2 && shape_kind == 0; }
};

// The constraints of a declared sum on their way into the model.
struct ConstraintListImpl {
  std::vector<ConstraintItem> items;
  ExprImpl remainder;
  bool has_remainder = false;
};

struct ModelImpl {
  std::vector<uint32_t> variables;  // dense index -> variable id, ascending
  std::vector<uint32_t> index_map;  // variable id -> dense index or kNoLiteral
  coeff_t constant;
  uint32_t max_degree = 0;
  std::vector<uint64_t> term_count;               // [max_degree], entry d-1 for degree d
  std::vector<std::vector<uint32_t>> term_vars;   // [max_degree], d literals a term
  std::vector<std::vector<coeff_t>> term_coeffs;  // [max_degree]
  double scale = 1.0;
  std::vector<NativeCons> native_cons;
  bool has_remainder = false;
  coeff_t remainder_constant;
  std::vector<uint64_t> remainder_head;
  std::vector<uint32_t> remainder_vars;
  std::vector<coeff_t> remainder_coeffs;
  std::vector<uint32_t> int_atoms;      // dense integer index -> atom index, ascending
  std::vector<uint32_t> int_index_map;  // atom index -> dense integer index or kNoLiteral
  std::vector<coeff_t> int_lo, int_hi;  // in dense integer order

  // Aborts if `e`, or a constraint body, is not simplified as binary. The scale is not read:
  // coefficients are exact and nothing is ever converted.
  ModelImpl(const ExprImpl& e, double scale, const ConstraintListImpl* constraints);
};

// What callers hold: the model pointer and its control block, two words.
using ModelHandle = std::shared_ptr<const ModelImpl>;
static_assert(sizeof(ModelHandle) == 16);

// Compiles `e`; declared constraints become native ones.
ModelHandle make_model(const ExprImpl& e);

// Queries that are more than a field ------------------------------------------------------------

bool model_has(const ModelImpl& m, uint32_t literal);
// Dense index, or kNoLiteral for a variable that the model does not have.
uint32_t model_var_index(const ModelImpl& m, uint32_t literal);
// The tables of one degree, unchecked above max_degree; the constant, degree 0, has none.
uint64_t term_count_of_degree(const ModelImpl& m, uint32_t degree);
const uint32_t* term_vars_of_degree(const ModelImpl& m, uint32_t degree);
const coeff_t* term_coeffs_of_degree(const ModelImpl& m, uint32_t degree);
bool has_negated_literals(const ModelImpl& m);
bool has_penalty_shapes(const ModelImpl& m);
// Literal and bounds of the atom with dense integer index i; both abort if there is none.
uint32_t model_atom(const ModelImpl& m, uint64_t i);
struct AtomBounds {
  const coeff_t& lo;
  const coeff_t& hi;
};
AtomBounds model_atom_bounds(const ModelImpl& m, uint64_t i);
// The record, after refusing what consumers of linear rows cannot take.
const NativeCons& linear_native_cons(const ModelImpl& m, uint64_t i);
// Energy of the polynomial alone; aborts on a model with integer atoms.
//   bits  [(variables + 63) / 64] words, variable i at bit i % 64 of word i / 64
coeff_t polynomial_energy(const ModelImpl& m, const uint64_t* bits);

}  // namespace zorv
