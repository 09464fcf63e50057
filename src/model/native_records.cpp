#include "model/native_records.h"

#include <algorithm>

#include "core/fatal.h"
#include "model/binary_form.h"

namespace zorv {

namespace {

void check_body_term(const VarList& vars) {
  const uint32_t degree = vars.degree();
  uint32_t previous = kNoLiteral;
  for (uint32_t i = 0; i < degree; ++i) {
    switch (form_fault(vars[i], previous, degree)) {
      case FormFault::kNone:
        break;
      case FormFault::kNegated:
        fatal(
            "Model: constraint body not simplified as binary (negated literal in degree 1-2 term). "
            "Call simplify_as_binary() on the model expression first.");
      case FormFault::kUnsorted:
        fatal(
            "Model: constraint body not simplified as binary (unsorted/duplicate vars). "
            "Call simplify_as_binary() on the model expression first.");
    }
    previous = vars[i];
  }
}

bool is_linear(const ExprImpl& body) {
  bool linear = true;
  body.list.for_each([&](const TermImpl& term) { linear &= term.vars.degree() <= 1; });
  return linear;
}

NativeCons record_without_body(const ConstraintItem& item) {
  const ExprExpr& entry = *item.constraint;
  NativeCons record;
  record.weight = *item.weight;
  record.lo = entry.lo;
  record.hi = entry.hi;
  record.body_constant = coeff_t(entry.body->constant);
  return record;
}

void refuse_negated(uint32_t literal) {
  if (is_negated(literal)) fatal("Model: unexpected negated literal in constraint body");
}

void append_linear_term(const TermImpl& term, NativeCons& record) {
  refuse_negated(term.vars[0]);
  record.vars.push_back(term.vars[0]);
  record.coeffs.emplace_back(term.coeff);
}

void append_nonlinear_term(const TermImpl& term, NativeCons& record) {
  for (const uint32_t literal : term.vars) {
    refuse_negated(literal);
    record.nl_vars.push_back(literal);
  }
  record.nl_coeffs.emplace_back(term.coeff);
  record.nl_head.push_back(record.nl_vars.size());
}

void refuse_repeated_variable(std::vector<uint32_t> vars) {
  std::sort(vars.begin(), vars.end());
  if (std::adjacent_find(vars.begin(), vars.end()) != vars.end()) {
    fatal(
        "Model: constraint body not simplified as binary (duplicate variable across terms). "
        "Call simplify_as_binary() on the model expression first.");
  }
}

NativeCons linear_record(const ConstraintItem& item) {
  const ExprExpr& entry = *item.constraint;
  NativeCons record = record_without_body(item);
  record.allowed = entry.allowed;
  record.shape_k = entry.shape_k;
  record.shape_kind = entry.shape_kind;
  record.vars.reserve(entry.body->list.size());
  record.coeffs.reserve(entry.body->list.size());
  entry.body->list.for_each([&](const TermImpl& term) {
    const uint32_t degree = term.vars.degree();
    if (degree > 1) {
      fatal("Model: native constraints require a linear body (degree >= 2 term found)");
    }
    if (degree == 1) append_linear_term(term, record);
  });
  refuse_repeated_variable(record.vars);
  return record;
}

NativeCons nonlinear_record(const ConstraintItem& item) {
  NativeCons record = record_without_body(item);
  record.nl_head.push_back(0);
  item.constraint->body->list.for_each([&](const TermImpl& term) {
    const uint32_t degree = term.vars.degree();
    if (degree == 1) append_linear_term(term, record);
    if (degree > 1) append_nonlinear_term(term, record);
  });
  return record;
}

}  // namespace

SplitConstraints split_constraints(const ConstraintListImpl* constraints) {
  SplitConstraints split;
  if (constraints == nullptr) return split;
  for (const ConstraintItem& item : constraints->items) {
    const ExprExpr& entry = *item.constraint;
    if (!entry.has_bounds) fatal("Model: constraint carries no bounds");
    entry.body->list.for_each([](const TermImpl& term) { check_body_term(term.vars); });
    if (is_linear(*entry.body)) {
      split.linear.push_back(&item);
    } else if (entry.shape_k != 2 || entry.shape_kind != 0) {
      fatal("zorv::abs/relu: nonlinear bodies are not supported yet (the body must be linear)");
    } else {
      split.nonlinear.push_back(&item);
    }
  }
  return split;
}

std::vector<NativeCons> native_records(const SplitConstraints& split) {
  std::vector<NativeCons> records;
  records.reserve(split.linear.size() + split.nonlinear.size());
  for (const ConstraintItem* item : split.linear) records.push_back(linear_record(*item));
  for (const ConstraintItem* item : split.nonlinear) records.push_back(nonlinear_record(*item));
  return records;
}

void mark_variables(const std::vector<NativeCons>& records, UsedVariables& used) {
  for (const NativeCons& record : records) {
    for (const uint32_t literal : record.vars) used.check_and_mark(literal);
    for (const uint32_t literal : record.nl_vars) used.check_and_mark(literal);
  }
}

void adopt_records(std::vector<NativeCons> records, ModelImpl& m) {
  for (NativeCons& record : records) {
    for (uint32_t& literal : record.vars) literal = dense_literal(m, literal);
    for (uint32_t& literal : record.nl_vars) literal = dense_literal(m, literal);
  }
  m.native_cons = std::move(records);
}

}  // namespace zorv
