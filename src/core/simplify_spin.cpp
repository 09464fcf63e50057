// The rules of -1/+1 variables: s*s = 1, and ~s is -s.
#include "core/fatal.h"
#include "core/merge_terms.h"
#include "core/simplify.h"

namespace zorv {

namespace {

class SpinRule {
 public:
  static constexpr uint32_t kChanging = kNegationBit | kAtomBit;

  bool operator()(const TermImpl& term, NormalTerm& normal, SideEffects*) {
    normal.is_negated = false;
    switch (term.vars.degree()) {
      case 0:
        normal.set();
        break;
      case 1:
        normal.set(spin_key(term.vars[0], normal));
        break;
      case 2: {
        const uint32_t a = spin_key(term.vars[0], normal);
        const uint32_t b = spin_key(term.vars[1], normal);
        if (a == b) {
          normal.set();
        } else {
          normal.set(std::min(a, b), std::max(a, b));
        }
        break;
      }
      default:
        keys_.clear();
        for (const uint32_t literal : term.vars) keys_.push_back(spin_key(literal, normal));
        std::sort(keys_.begin(), keys_.end());
        cancel_pairs(keys_);
        normal.set(keys_);
    }
    return true;
  }

 private:
  // The key of the variable; a negation goes to the sign of the term.
  static uint32_t spin_key(uint32_t literal, NormalTerm& normal) {
    if (is_atom(literal)) {
      fatal(
          "simplify_as_spin(): native integer variables (int_var) are not supported (spin rules "
          "do not apply to integer atoms).");
    }
    if (is_negated(literal)) normal.is_negated = !normal.is_negated;
    return sort_key(identity_of(literal));
  }

  Keys keys_;
};

}  // namespace

ExprImpl expr_simplify_as_spin(const ExprImpl& e) {
  return merge_terms(e.list, e.constant, SpinRule());
}

}  // namespace zorv
