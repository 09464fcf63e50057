// Products and squares. The result's block is allocated once; every slot is then constructed by
// whoever owns its index, and no slot is read.
#include "core/arithmetic.h"
#include "core/parallel.h"
#include "core/sizes.h"

namespace zorv {

namespace {

// More threads than this gain nothing: the fill is bound by memory.
constexpr uint32_t kMaxProductThreads = 8;
// n(n - 1) ordered pairs of different terms from which a square is spread over threads.
constexpr uint64_t kParallelSquarePairs = 20'000;

uint32_t product_threads() { return std::min(num_threads(), kMaxProductThreads); }

// Slots [offset, offset + n) receive factor times each term of `list`.
void fill_scaled(TermList& to, uint64_t offset, const TermList& list, const CompactCoeff& factor) {
  const TermView terms(list);
  par_for(list.size(), [&](uint64_t i) {
    new (to.slot(offset + i)) TermImpl(terms[i].coeff * factor, terms[i].vars);
  });
}

// Slot offset + i * nb + j receives a_i * b_j, for the flat indices [begin, end) of i * nb + j.
void fill_cross(TermList& to, uint64_t offset, const TermView& a, const TermView& b, uint64_t nb,
                uint64_t begin, uint64_t end) {
  uint64_t i = begin / nb;
  uint64_t j = begin % nb;
  for (uint64_t k = begin; k < end; ++k) {
    new (to.slot(offset + k)) TermImpl(product(a[i], b[j]));
    if (++j == nb) {
      j = 0;
      ++i;
    }
  }
}

// Row i of a square: t_i * t_i, 2 * constant * t_i if the constant is not 0, 2 * t_i * t_j.
void fill_square_row(TermList& to, const ExprImpl& e, uint64_t i) {
  const TermView list(e.list);
  const uint64_t n = e.list.size();
  const bool has_constant = !is_zero(e.constant);
  uint64_t at = n * i - (i == 0 ? 0 : i * (i - 1) / 2) + (has_constant ? i : 0);
  const TermImpl& row = list[i];
  new (to.slot(at++)) TermImpl(product(row, row));
  const CompactCoeff doubled = row.coeff * 2;
  if (has_constant) new (to.slot(at++)) TermImpl(doubled * e.constant, row.vars);
  for (uint64_t j = i + 1; j < n; ++j) {
    const TermImpl& other = list[j];
    new (to.slot(at++)) TermImpl(doubled * other.coeff, VarList::concat(row.vars, other.vars));
  }
}

}  // namespace

ExprImpl mul_term(const ExprImpl& e, const TermImpl& t) {
  const bool has_constant = !is_zero(e.constant);
  const uint64_t n = e.list.size();
  const uint64_t s = n + (has_constant ? 1 : 0);
  ExprImpl scaled;
  if (s == 0) return scaled;
  scaled.list.allocate_slots(s);
  if (has_constant) scaled.list.first = TermImpl(e.constant * t.coeff, t.vars);
  const uint64_t offset = s - n;
  const TermView terms(e.list);
  par_for(n,
          [&](uint64_t i) { new (scaled.list.slot(offset + i)) TermImpl(product(terms[i], t)); });
  scaled.list.commit_slots(s);
  return scaled;
}

ExprImpl mul(const ExprImpl& a, const ExprImpl& b) {
  const uint64_t na = a.list.size();
  const uint64_t nb = b.list.size();
  const bool a_has_constant = !is_zero(a.constant);
  const bool b_has_constant = !is_zero(b.constant);
  ExprImpl result(a.constant * b.constant);
  const uint64_t pairs = size_product(na, nb);
  const uint64_t s = pairs + (a_has_constant ? nb : 0) + (b_has_constant ? na : 0);
  if (s == 0) return result;

  TermList& to = result.list;
  to.allocate_slots(s);
  uint64_t offset = 0;
  if (a_has_constant) {
    fill_scaled(to, offset, b.list, a.constant);
    offset += nb;
  }
  if (b_has_constant) {
    fill_scaled(to, offset, a.list, b.constant);
    offset += na;
  }
  const uint32_t threads = pairs > kSerialItems ? product_threads() : 1;
  for_chunks_on_fresh_threads(Chunking(pairs, threads), threads,
                              [&](uint32_t, uint64_t, uint64_t begin, uint64_t end) {
                                fill_cross(to, offset, a.list, b.list, nb, begin, end);
                              });
  to.commit_slots(s);
  return result;
}

ExprImpl sqr(const ExprImpl& e) {
  const uint64_t n = e.list.size();
  ExprImpl square(e.constant * e.constant);
  if (n == 0) return square;
  const uint64_t s = size_product(n, n + 1) / 2 + (is_zero(e.constant) ? 0 : n);
  square.list.allocate_slots(s);
  const uint32_t threads = n * (n - 1) >= kParallelSquarePairs ? product_threads() : 1;
  for_chunks_on_fresh_threads(Chunking(n, threads), threads,
                              [&](uint32_t, uint64_t, uint64_t begin, uint64_t end) {
                                for (uint64_t i = begin; i < end; ++i)
                                  fill_square_row(square.list, e, i);
                              });
  square.list.commit_slots(s);
  return square;
}

ExprImpl mul_var(const ExprImpl& e, uint32_t literal) {
  return mul_term(e, TermImpl(1, VarList(literal)));
}

}  // namespace zorv
