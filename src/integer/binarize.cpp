#include "integer/binarize.h"

#include <unordered_set>

#include "core/fatal.h"
#include "core/substitute.h"
#include "integer/int_var.h"

namespace zorv {

namespace {

// Atom literals of the terms that count, each once, in order of appearance.
std::vector<uint32_t> atoms_of(const ExprImpl& e) {
  std::vector<uint32_t> atoms;
  std::unordered_set<uint32_t> seen;
  e.list.for_each([&](const TermImpl& term) {
    if (is_zero(term.coeff)) return;
    for (const uint32_t literal : term.vars) {
      if (is_atom(literal) && seen.insert(literal).second) atoms.push_back(literal);
    }
  });
  return atoms;
}

ExprImpl in_bits(uint32_t atom) {
  const IntVarGroup* group = IntVarRegistry::instance().find(index_of(atom));
  if (group == nullptr) fatal("binarize: unknown integer variable");
  ExprImpl e(group->lo);
  for (auto& [c, bit] : encoding_of(atom)) e.list.append(TermImpl(std::move(c), VarList(bit)));
  return e;
}

}  // namespace

ExprImpl binarize(const ExprImpl& e) {
  if (is_constraint_attr(e.attr)) {
    fatal(
        "binarize: constraint expressions are not supported — call expand_cons() first, then "
        "binarize the plain penalty form.");
  }
  if (!has_int_atom(e)) return plain_copy(e);
  const std::vector<uint32_t> atoms = atoms_of(e);
  std::vector<ExprImpl> encodings;
  encodings.reserve(atoms.size());
  std::vector<const ExprImpl*> exprs;
  for (const uint32_t atom : atoms) {
    encodings.push_back(in_bits(atom));
    exprs.push_back(&encodings.back());
  }
  return substitute(e, Substitution(atoms.data(), exprs.data(), atoms.size()),
                    TermsOfDegree0::kStay);
}

}  // namespace zorv
