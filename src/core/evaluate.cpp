#include "core/evaluate.h"

#include "core/coeff_sum.h"
#include "core/fatal.h"
#include "core/literal_map.h"
#include "core/parallel.h"

namespace zorv {

namespace {

// A variable's value and that of its complement, worked out once and not for every term.
struct LiteralValues {
  coeff_t plain;
  coeff_t complement;
};

using Assignment = LiteralMap<LiteralValues>;

const coeff_t& value_of(uint32_t literal, const Assignment& at) {
  const LiteralValues* values = at.find(identity_of(literal));
  if (values == nullptr) fatal("eval: variable not found in mapping");
  return is_negated(literal) ? values->complement : values->plain;
}

// Nearly all values are 0 or 1, so a product is made only where something is to be multiplied.
// Every literal is looked up, also behind a 0.
void add_term(const TermImpl& term, const Assignment& at, CoeffSum& sum) {
  bool vanishes = false;
  bool has_product = false;
  coeff_t product;
  for (const uint32_t literal : term.vars) {
    const coeff_t& value = value_of(literal, at);
    if (is_zero(value)) vanishes = true;
    if (vanishes || is_one(value)) continue;
    if (!has_product) product = coeff_t(term.coeff);
    product *= value;
    has_product = true;
  }
  if (vanishes) return;
  if (has_product) {
    sum += product;
  } else {
    sum += term.coeff;
  }
}

}  // namespace

coeff_t evaluate(const ExprImpl& e, const uint32_t* literals, const coeff_t* values, uint64_t n) {
  std::vector<LiteralValues> both(n);
  for (uint64_t i = 0; i < n; ++i) {
    both[i].plain = values[i];
    both[i].complement = 1;
    both[i].complement -= values[i];
  }
  const Assignment at(literals, n, [&](uint64_t i) { return &both[i]; });

  const uint64_t terms = e.list.size();
  const uint32_t threads = terms > kSerialItems ? num_threads() : 1;
  const TermView list(e.list);
  std::vector<coeff_t> sums(threads);
  for_chunks_on_fresh_threads(Chunking(terms, threads), threads,
                              [&](uint32_t thread, uint64_t, uint64_t begin, uint64_t end) {
                                CoeffSum sum;
                                for (uint64_t i = begin; i < end; ++i) add_term(list[i], at, sum);
                                sums[thread] += sum.total();
                              });
  auto total = coeff_t(e.constant);
  for (const coeff_t& sum : sums) total += sum;
  return total;
}

coeff_t coefficient_gcd(const ExprImpl& e) {
  coeff_t divisor = abs(coeff_t(e.constant));
  e.list.for_each([&](const TermImpl& term) { divisor = gcd(divisor, coeff_t(term.coeff)); });
  return divisor;
}

}  // namespace zorv
