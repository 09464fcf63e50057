// The dense numbering of a model: which of the registered variables it uses, and the place of each
// among them. Numbers ascend with the variable's id, whatever order the variables were met in.
#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include "core/literal.h"
#include "model/model.h"

namespace zorv {

// One flag for each variable that is registered when a compilation starts. Any number of threads
// may mark at the same time.
class UsedVariables {
 public:
  UsedVariables();

  // The text to abort with if the literal names no registered variable, otherwise null.
  const char* complaint(uint32_t literal) const {
    if (is_atom(literal)) {
      return index_of(literal) < atoms_.size() ? nullptr : "Model: unknown integer variable index.";
    }
    return identity_of(literal) < vars_.size() ? nullptr : "Model: unknown variable index.";
  }
  // The literal must be a known one.
  void mark(uint32_t literal) {
    uint8_t& flag = is_atom(literal) ? atoms_[index_of(literal)] : vars_[identity_of(literal)];
    // Relaxed, so an ordinary byte access; the look first keeps threads from fighting over lines.
    const std::atomic_ref<uint8_t> shared(flag);
    if (shared.load(std::memory_order_relaxed) == 0) shared.store(1, std::memory_order_relaxed);
  }
  // Aborts if the literal is unknown.
  void check_and_mark(uint32_t literal);

  const std::vector<uint8_t>& vars() const { return vars_; }
  const std::vector<uint8_t>& atoms() const { return atoms_; }

 private:
  std::vector<uint8_t> vars_;   // by variable id
  std::vector<uint8_t> atoms_;  // by atom index
};

// Fills `variables` and `index_map` of the model, in chunks for `threads` threads.
void number_variables(const UsedVariables& used, uint32_t threads, ModelImpl& m);
// Fills `int_atoms`, `int_index_map`, `int_lo` and `int_hi`.
void number_atoms(const UsedVariables& used, ModelImpl& m);

// The compiled form of a literal that the model uses.
inline uint32_t dense_literal(const ModelImpl& m, uint32_t literal) {
  if (is_atom(literal)) return atom_literal(m.int_index_map[index_of(literal)]);
  const uint32_t dense = m.index_map[identity_of(literal)];
  return is_negated(literal) ? dense | kNegationBit : dense;
}

}  // namespace zorv
