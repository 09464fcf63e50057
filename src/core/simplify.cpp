#include "core/simplify.h"

#include "core/merge_terms.h"

namespace zorv {

namespace {

// Sorts the literals and changes nothing else.
class PlainRule {
 public:
  static constexpr uint32_t kChanging = kNegationBit;  // such a literal sorts by another key

  bool operator()(const TermImpl& term, NormalTerm& normal, SideEffects*) {
    switch (term.vars.degree()) {
      case 0:
        normal.set();
        break;
      case 1:
        normal.set(sort_key(term.vars[0]));
        break;
      case 2: {
        const uint32_t a = sort_key(term.vars[0]);
        const uint32_t b = sort_key(term.vars[1]);
        normal.set(std::min(a, b), std::max(a, b));
        break;
      }
      default:
        load_sorted_keys(term.vars, keys_);
        normal.set(keys_);
    }
    return true;
  }

 private:
  Keys keys_;
};

}  // namespace

ExprImpl expr_simplify(const ExprImpl& e) { return merge_terms(e.list, e.constant, PlainRule()); }

ExprImpl simplify_with_attr(const ExprImpl& e, const Rewrite& simplify) {
  ExprImpl simplified = simplify(e);
  simplified.attr = rewritten_attr(e.attr, simplify);
  return simplified;
}

}  // namespace zorv
