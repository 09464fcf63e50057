#include "model/term_layout.h"

#include <cstring>

#include "core/fatal.h"
#include "model/binary_form.h"
#include "model/chunk_loop.h"

namespace zorv {

namespace {

constexpr char kNegatedText[] =
    "Model: expression not simplified as binary (negated literal in degree 1-2 term). "
    "Call simplify_as_binary() first.";
constexpr char kUnsortedText[] =
    "Model: expression not simplified as binary (unsorted/duplicate vars). "
    "Call simplify_as_binary() first.";

void copy_literals(const VarList& vars, uint32_t degree, uint32_t* to) {
  for (uint32_t i = 0; i < degree; ++i) to[i] = vars[i];
}

constexpr uint64_t kPageBytes = 4096;

// Resizes an empty table. Clearing fresh memory is mostly page faults, so a large table is touched
// by all threads first, a byte in each page.
template <typename T>
void size_table(uint64_t n, std::vector<T>& table) {
  table.reserve(n);
  auto* const bytes = reinterpret_cast<volatile unsigned char*>(table.data());
  par_for(n * sizeof(T) / kPageBytes, [bytes](uint64_t page) { bytes[page * kPageBytes] = 0; });
  table.resize(n);
}

}  // namespace

TermLayout::TermLayout(const TermList& terms)
    : terms_(terms), threads_(par_threads(terms.count)), chunking_(terms.count, threads_) {
  if (terms_.count > 0) {
    max_degree_ = terms_.terms[terms_.count - 1].vars.degree();
  } else if (terms_.has_first()) {
    max_degree_ = terms_.first.vars.degree();
  }
  rows_.assign(row_count() * (max_degree_ + kRowGap), 0);
}

template <typename Visit>
void TermLayout::for_each_row(Visit visit) {
  if (terms_.has_first()) visit(row(0), &terms_.first, &terms_.first + 1);
  for_each_chunk(chunking_, [&](uint64_t c) {
    visit(row(c + 1), terms_.terms + chunking_.begin(c), terms_.terms + chunking_.end(c));
  });
}

const char* TermLayout::count_term(const VarList& vars, uint64_t* row, UsedVariables& used) const {
  const uint32_t degree = vars.degree();
  if (degree == 0) return nullptr;
  // The table has no column for it: a longer term before the last one means unsorted terms.
  if (degree > max_degree_) return kUnsortedText;
  ++row[degree - 1];
  uint32_t previous = kNoLiteral;
  for (uint32_t i = 0; i < degree; ++i) {
    const uint32_t literal = vars[i];
    if (const char* text = used.complaint(literal)) return text;
    const FormFault fault = form_fault(literal, previous, degree);
    if (fault != FormFault::kNone) {
      return fault == FormFault::kNegated ? kNegatedText : kUnsortedText;
    }
    used.mark(literal);
    previous = literal;
  }
  return nullptr;
}

void TermLayout::count_and_check(UsedVariables& used) {
  std::atomic<const char*> first_fault{nullptr};
  for_each_row([&](uint64_t* row, const TermImpl* term, const TermImpl* end) {
    for (; term != end; ++term) {
      if (const char* text = count_term(term->vars, row, used)) {
        const char* none = nullptr;
        first_fault.compare_exchange_strong(none, text);
      }
    }
  });
  if (const char* text = first_fault) fatal(text);
}

void TermLayout::allocate(ModelImpl& m) {
  m.term_count.assign(max_degree_, 0);
  for (uint64_t r = 0; r < row_count(); ++r) {
    for (uint32_t d = 0; d < max_degree_; ++d) {
      const uint64_t count = row(r)[d];
      row(r)[d] = m.term_count[d];
      m.term_count[d] += count;
    }
  }
  m.term_vars.resize(max_degree_);
  m.term_coeffs.resize(max_degree_);
  for (uint64_t d = 0; d < max_degree_; ++d) {
    size_table((d + 1) * m.term_count[d], m.term_vars[d]);
    size_table(m.term_count[d], m.term_coeffs[d]);
  }
}

void TermLayout::fill(ModelImpl& m) {
  for_each_row([&](uint64_t* row, const TermImpl* term, const TermImpl* end) {
    for (; term != end; ++term) {
      const uint32_t degree = term->vars.degree();
      if (degree == 0) continue;
      const uint64_t t = row[degree - 1]++;
      m.term_coeffs[degree - 1][t] = coeff_t(term->coeff);
      copy_literals(term->vars, degree, &m.term_vars[degree - 1][t * degree]);
    }
  });
}

void renumber_terms(ModelImpl& m) {
  for (std::vector<uint32_t>& literals : m.term_vars) {
    par_for(literals.size(), [&](uint64_t i) { literals[i] = dense_literal(m, literals[i]); });
  }
}

}  // namespace zorv
