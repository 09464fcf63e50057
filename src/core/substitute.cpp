// The size of the result is counted first, term by term, and its terms are then made in their
// places, by several threads if there are many. Nothing grows, and nothing is made twice: the last
// factor of a product that holds several terms is multiplied straight into the result.
#include "core/substitute.h"

#include "core/arithmetic.h"
#include "core/attr_rules.h"
#include "core/parallel.h"
#include "core/sizes.h"

namespace zorv {

namespace {

bool holds_zero_terms(const ExprImpl& e) {
  for (uint64_t i = 0; i < e.list.count; ++i) {
    if (is_zero(e.list.terms[i].coeff)) return true;
  }
  return false;
}

// How many terms an expression without zero terms has, and whether it has a constant.
struct Size {
  uint64_t terms;
  bool has_constant;

  Size operator*(const Size& other) const {
    const uint64_t with_constant = (has_constant ? other.terms : 0) +  //
                                   (other.has_constant ? terms : 0);
    return {size_sum(size_product(terms, other.terms), with_constant),
            has_constant && other.has_constant};
  }
};

// Where the terms of a result go.
struct Output {
  TermList& to;
  uint64_t at;  // the next slot
  coeff_t constant;

  void put(const CompactCoeff& a, const CompactCoeff& b, VarList vars) {
    new (to.slot(at++)) TermImpl(a * b, std::move(vars));
  }
};

VarList concat(const VarList& a, const VarList& b, const VarList& tail) {
  VarList all = VarList::concat(a, b);
  if (tail.degree() > 0) all.append(tail);
  return all;
}

// a times b times tail, in the order of mul(): what a constant gives comes first.
void put_product(const ExprImpl& a, const ExprImpl& b, const VarList& tail, Output& out) {
  const bool a_has_constant = !is_zero(a.constant);
  const bool b_has_constant = !is_zero(b.constant);
  if (a_has_constant && b_has_constant) {
    if (tail.degree() > 0) {
      out.put(a.constant, b.constant, tail);
    } else {
      out.constant += a.constant * b.constant;
    }
  }
  if (a_has_constant) {
    b.list.for_each(
        [&](const TermImpl& t) { out.put(a.constant, t.coeff, VarList::concat(t.vars, tail)); });
  }
  if (b_has_constant) {
    a.list.for_each(
        [&](const TermImpl& t) { out.put(t.coeff, b.constant, VarList::concat(t.vars, tail)); });
  }
  a.list.for_each([&](const TermImpl& s) {
    b.list.for_each(
        [&](const TermImpl& t) { out.put(s.coeff, t.coeff, concat(s.vars, t.vars, tail)); });
  });
}

// Multiplies out one term at a time.
class Expander {
 public:
  Expander(const Substitution& substitution, TermsOfDegree0 degree_0)
      : substitution_(substitution), degree_0_(degree_0) {}

  uint64_t count_terms(const TermImpl& term) const {
    if (stays(term)) return 1;
    Size size = {0, !is_zero(term.coeff)};
    for (const uint32_t literal : term.vars) size = size * size_of(literal);
    return size.terms;
  }

  // Makes exactly those terms.
  void put_terms(const TermImpl& term, Output& out) const {
    if (is_zero(term.coeff)) return;
    const uint32_t degree = term.vars.degree();
    uint32_t last = degree;  // the last literal that is replaced, counted from 1
    while (last > 0 && substitution_.find(term.vars[last - 1]) == nullptr) --last;
    if (last > 0) {
      VarList tail;
      for (uint32_t i = last; i < degree; ++i) tail.append(term.vars[i]);
      put_product(head(term, last - 1), *substitution_.find(term.vars[last - 1]), tail, out);
    } else if (degree > 0 || stays(term)) {
      new (out.to.slot(out.at++)) TermImpl(term);
    } else {
      out.constant += term.coeff;
    }
  }

  // The same by the definition, which also holds where factors have terms that are 0.
  ExprImpl expand(const TermImpl& term) const {
    return stays(term) ? ExprImpl(term) : head(term, term.vars.degree());
  }

 private:
  bool stays(const TermImpl& term) const {
    return degree_0_ == TermsOfDegree0::kStay && !is_zero(term.coeff) && term.vars.degree() == 0;
  }

  Size size_of(uint32_t literal) const {
    const ExprImpl* e = substitution_.find(literal);
    return e == nullptr ? Size{1, false} : Size{e->list.size(), !is_zero(e->constant)};
  }

  // The coefficient times the first n factors.
  ExprImpl head(const TermImpl& term, uint32_t n) const {
    VarList literals;
    uint32_t i = 0;
    for (; i < n && substitution_.find(term.vars[i]) == nullptr; ++i) literals.append(term.vars[i]);
    ExprImpl product =
        i == 0 ? ExprImpl(term.coeff) : ExprImpl(TermImpl(term.coeff, std::move(literals)));
    for (; i < n; ++i) {
      const ExprImpl* e = substitution_.find(term.vars[i]);
      product = e == nullptr ? mul_var(product, term.vars[i]) : mul(product, *e);
    }
    return product;
  }

  const Substitution& substitution_;
  TermsOfDegree0 degree_0_;
};

ExprImpl substitute_one_by_one(const ExprImpl& e, const Expander& expander) {
  ExprImpl result(e.constant);
  e.list.for_each([&](const TermImpl& term) { add_poly(result, expander.expand(term)); });
  return result;
}

}  // namespace

Substitution::Substitution(const uint32_t* literals, const ExprImpl* const* exprs, uint64_t n)
    : map_(literals, n, [exprs](uint64_t i) { return exprs[i]; }) {
  for (uint64_t i = 0; i < n && !has_zero_terms_; ++i)
    has_zero_terms_ = holds_zero_terms(*exprs[i]);
}

ExprImpl substitute(const ExprImpl& e, const Substitution& substitution, TermsOfDegree0 degree_0) {
  const Expander expander(substitution, degree_0);
  if (substitution.has_zero_terms()) return substitute_one_by_one(e, expander);

  const uint64_t n = e.list.size();
  const uint32_t threads = n > kSerialItems ? num_threads() : 1;
  const Chunking chunking(n, threads);
  const TermView terms(e.list);
  std::vector<uint64_t> starts(chunking.chunks + 1);
  for_chunks_on_fresh_threads(chunking, threads,
                              [&](uint32_t, uint64_t c, uint64_t begin, uint64_t end) {
                                uint64_t count = 0;
                                for (uint64_t i = begin; i < end; ++i)
                                  count = size_sum(count, expander.count_terms(terms[i]));
                                starts[c + 1] = count;
                              });
  for (uint64_t c = 0; c < chunking.chunks; ++c) starts[c + 1] = size_sum(starts[c + 1], starts[c]);

  ExprImpl result(e.constant);
  result.list.allocate_slots(starts.back());
  std::vector<coeff_t> constants(chunking.chunks);
  for_chunks_on_fresh_threads(chunking, threads,
                              [&](uint32_t, uint64_t c, uint64_t begin, uint64_t end) {
                                Output out = {result.list, starts[c], 0};
                                for (uint64_t i = begin; i < end; ++i)
                                  expander.put_terms(terms[i], out);
                                constants[c] = std::move(out.constant);
                              });
  for (const coeff_t& constant : constants) result.constant += constant;
  result.list.commit_slots(starts.back());
  return result;
}

ExprImpl replace(const ExprImpl& e, const Substitution& substitution) {
  const Rewrite rewrite = [&](const ExprImpl& polynomial) {
    return substitute(polynomial, substitution, TermsOfDegree0::kJoinConstant);
  };
  ExprImpl replaced = rewrite(e);
  if (carries_declared(e.attr)) replaced.attr = rewritten_attr(e.attr, rewrite);
  return replaced;
}

}  // namespace zorv
