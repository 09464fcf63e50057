#include "constraints/constraint_tables.h"

#include <algorithm>
#include <atomic>
#include <tuple>

#include "constraints/interned_set.h"
#include "core/arithmetic.h"
#include "core/fatal.h"
#include "core/hash.h"
#include "core/stable_blocks.h"
#include "zorv/engine/mutex.h"

namespace zorv {

namespace {

constexpr uint64_t kMaxEntries = uint64_t{kMaxConstraintIndex} + 1;
constexpr const char* kExprExprSetFull = "ExprExprSet: index overflow";
constexpr const char* kConstraintSumSetFull = "ConstraintSumSet: index overflow";

struct SumContent : SumParts {
  bool declared = false;
};

uint64_t hash_of(const SumContent& sum) {
  const auto pair = [](Sequence s) { return uint64_t{s.front} << 32 | s.back; };
  return hash_with(hash_with(sum.declared ? 1 : 0, pair(sum.items)), pair(sum.penalty));
}

bool same(const SumContent& a, const SumContent& b) {
  return static_cast<const SumParts&>(a) == b && a.declared == b.declared;
}

// An item names a stored constraint, or with this bit an entry of ExprExprSet.
constexpr uint32_t kEntryBit = 1u << 31;
// On the content of a sum: the sum is shared.
constexpr uint32_t kSharedBit = 1u << 31;

using NumberTable = StableBlocks<std::atomic<uint32_t>>;

// Members are read without the mutex; only additions to them need it.
class ConstraintTables {
 public:
  uint32_t add_expr_expr(ExprImpl body, Requirement requirement) ZORV_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    const uint32_t constraint = stored(std::move(body), std::move(requirement));
    check_room(expr_exprs_, kExprExprSetFull);
    return static_cast<uint32_t>(expr_exprs_.append(constraint));
  }

  void append_constraint(SumParts& parts, ExprImpl body, Requirement requirement,
                         const coeff_t& weight) ZORV_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    const uint32_t constraint = stored(std::move(body), std::move(requirement));
    check_room(expr_exprs_, kExprExprSetFull);
    expr_exprs_.skip(1);
    parts.items = sequences_.pushed(parts.items, constraint, weight);
  }

  const ExprExpr& expr_expr(uint32_t index, const char* bad_index) const {
    if (index >= expr_exprs_.size()) fatal(bad_index);
    return constraints_[expr_exprs_[index]];
  }

  // Lets an entry stand for the changed constraint.
  template <typename Change>
  void change(uint32_t index, const char* bad_index, Change change) ZORV_EXCLUDES(mutex_) {
    if (index >= expr_exprs_.size()) fatal(bad_index);
    const MutexLock lock(mutex_);
    ExprExpr changed = constraints_[expr_exprs_[index]];
    change(changed);
    expr_exprs_[index] = constraints_.number_of(std::move(changed));
  }

  uint32_t add_sum(const SumContent& content) ZORV_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    check_room(sums_, kConstraintSumSetFull);
    return static_cast<uint32_t>(sums_.append(contents_.number_of(content)));
  }

  ConstraintSum sum(uint32_t index) const {
    const uint32_t word = sum_word(index);
    const SumContent& content = contents_[word & ~kSharedBit];
    return {content, content.declared, (word & kSharedBit) != 0};
  }

  void mark_shared(uint32_t index) {
    if ((sum_word(index) & kSharedBit) == 0) sums_[index] |= kSharedBit;
  }

  bool append_to_sum(uint32_t index, const SumParts& parts) ZORV_EXCLUDES(mutex_) {
    const uint32_t word = sum_word(index);
    if ((word & kSharedBit) != 0) return false;
    if (parts == SumParts()) return true;
    const MutexLock lock(mutex_);
    const SumContent& content = contents_[word];
    sums_[index] = contents_.number_of({joined_locked(content, parts), content.declared});
    return true;
  }

  SumParts entry_part(uint32_t index) ZORV_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    return {sequences_.pushed({}, index | kEntryBit, 1), {}};
  }

  SumParts penalty_part(ExprImpl polynomial) ZORV_EXCLUDES(mutex_) {
    polynomial.attr = kPlainAttr;
    const MutexLock lock(mutex_);
    return {{}, sequences_.pushed({}, bodies_.number_of(std::move(polynomial)), 1)};
  }

  SumParts joined(const SumParts& a, const SumParts& b) ZORV_EXCLUDES(mutex_) {
    if (a == SumParts()) return b;
    if (b == SumParts()) return a;
    const MutexLock lock(mutex_);
    return joined_locked(a, b);
  }

  SumParts scaled(const SumParts& parts, const coeff_t& factor) ZORV_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    return {sequences_.scaled(parts.items, factor), sequences_.scaled(parts.penalty, factor)};
  }

  const SequenceTable& sequences() const { return sequences_; }
  const ExprImpl& body(uint32_t number) const { return bodies_[number]; }
  const ExprExpr& constraint_of(const SequenceNode& item) const {
    const bool is_entry = (item.what & kEntryBit) != 0;
    return constraints_[is_entry ? expr_exprs_[item.what & ~kEntryBit].load() : item.what];
  }

  ConstraintTableSizes sizes() const {
    return {expr_exprs_.size(),      sums_.size(),    bodies_.size(), constraints_.size(),
            sequences_.node_count(), contents_.size()};
  }

 private:
  static void check_room(const NumberTable& table, const char* full_message) {
    if (table.size() >= kMaxEntries) fatal(full_message);
  }

  uint32_t stored(ExprImpl body, Requirement requirement) ZORV_REQUIRES(mutex_) {
    body.attr = kPlainAttr;
    const ExprImpl& kept = bodies_[bodies_.number_of(std::move(body))];
    return constraints_.number_of({std::move(requirement), &kept});
  }

  SumParts joined_locked(const SumParts& a, const SumParts& b) ZORV_REQUIRES(mutex_) {
    return {sequences_.joined(a.items, b.items), sequences_.joined(a.penalty, b.penalty)};
  }

  uint32_t sum_word(uint32_t index) const {
    if (index >= sums_.size()) fatal("ConstraintSumSet: bad index");
    return sums_[index];
  }

  Mutex mutex_;
  InternedSet<ExprImpl> bodies_{kExprExprSetFull};
  InternedSet<ExprExpr> constraints_{kExprExprSetFull};
  SequenceTable sequences_{kConstraintSumSetFull};  // items of constraints, penalties of bodies
  InternedSet<SumContent> contents_{kConstraintSumSetFull};
  NumberTable expr_exprs_;  // the constraint of an entry; nothing for those that no tag names
  NumberTable sums_;        // the content of a sum, and whether it is shared
};

ConstraintTables& tables() {
  static ConstraintTables tables;
  return tables;
}

// A polynomial without a first term, but with others, takes the first term of the next one before
// its own. Behind other polynomials it would not, so there the sum of the two is what must go.
SumParts fit_to_follow(const SumParts& parts) {
  const SequenceTable& sequences = tables().sequences();
  if (sequences.length(parts.penalty) < 2) return parts;
  const TermList& terms = tables().body(sequences.at(parts.penalty, 0).what).list;
  if (terms.has_first() || terms.count == 0) return parts;
  return {parts.items, penalty_part(remainder_of(parts)).penalty};
}

}  // namespace

Requirement within(const coeff_t& lo, const coeff_t& hi) { return {true, lo, hi, {}, 2, 0}; }

Requirement one_of(std::vector<Interval> allowed) {
  if (allowed.empty()) fatal("ExprExprSet: set_allowed empty set");
  auto [lo, hi] = allowed.front();
  for (const auto& [low, high] : allowed) {
    lo = std::min(lo, low);
    hi = std::max(hi, high);
  }
  return {true, lo, hi, std::move(allowed), 2, 0};
}

uint64_t hash_of(const ExprExpr& constraint) {
  uint64_t hash = reinterpret_cast<uintptr_t>(constraint.body);
  hash = hash_with(hash_with(hash, constraint.lo), constraint.hi);
  for (const auto& [low, high] : constraint.allowed) hash = hash_with(hash_with(hash, low), high);
  const int bounds = constraint.has_bounds ? 1 : 0;
  return hash_with(hash, uint64_t{constraint.shape_k} << 16 | constraint.shape_kind << 8 | bounds);
}

bool same(const ExprExpr& a, const ExprExpr& b) {
  return a.body == b.body && static_cast<const Requirement&>(a) == b;
}

uint32_t add_expr_expr(ExprImpl body, Requirement requirement) {
  return tables().add_expr_expr(std::move(body), std::move(requirement));
}

const ExprExpr& expr_expr(uint32_t index, const char* bad_index) {
  return tables().expr_expr(index, bad_index);
}

void set_bounds(uint32_t index, const coeff_t& lo, const coeff_t& hi) {
  tables().change(index, "ExprExprSet: set_bounds bad index", [&](Requirement& requirement) {
    requirement.has_bounds = true;
    requirement.lo = lo;
    requirement.hi = hi;
  });
}

void set_allowed(uint32_t index, std::vector<Interval> allowed) {
  tables().change(index, "ExprExprSet: set_allowed bad index", [&](Requirement& requirement) {
    const uint8_t k = requirement.shape_k, kind = requirement.shape_kind;
    requirement = one_of(std::move(allowed));
    requirement.shape_k = k;
    requirement.shape_kind = kind;
  });
}

uint32_t add_constraint_sum(const SumParts& parts, bool declared) {
  return tables().add_sum({parts, declared});
}

ConstraintSum constraint_sum(uint32_t index) { return tables().sum(index); }

void mark_sum_shared(uint32_t index) { tables().mark_shared(index); }

bool append_to_sum(uint32_t index, const SumParts& parts) {
  return tables().append_to_sum(index, fit_to_follow(parts));
}

SumParts parts_of(uint32_t attr) {
  if (is_expr_expr_attr(attr)) return tables().entry_part(attr_index(attr));
  return is_sum_attr(attr) ? constraint_sum(attr_index(attr)) : SumParts();
}

SumParts penalty_part(ExprImpl polynomial) { return tables().penalty_part(std::move(polynomial)); }

void append_constraint(SumParts& parts, ExprImpl body, Requirement requirement,
                       const coeff_t& weight) {
  tables().append_constraint(parts, std::move(body), std::move(requirement), weight);
}

SumParts joined(const SumParts& a, const SumParts& b) {
  return tables().joined(a, has_remainder(a) ? fit_to_follow(b) : b);
}

SumParts scaled(const SumParts& parts, const coeff_t& factor) {
  return tables().scaled(parts, factor);
}

uint64_t item_count(const SumParts& parts) { return tables().sequences().length(parts.items); }

ConstraintItem item_at(const SumParts& parts, uint64_t i) {
  const SequenceNode& item = tables().sequences().at(parts.items, i);
  return {&tables().constraint_of(item), &item.weight};
}

std::vector<ConstraintItem> items_of(const SumParts& parts) {
  std::vector<ConstraintItem> items;
  items.reserve(item_count(parts));
  tables().sequences().for_each(parts.items, [&](const SequenceNode& item) {
    items.push_back({&tables().constraint_of(item), &item.weight});
  });
  return items;
}

ExprImpl remainder_of(const SumParts& parts) {
  std::vector<ExprImpl> polynomials;
  uint64_t terms = 0;
  tables().sequences().for_each(parts.penalty, [&](const SequenceNode& item) {
    polynomials.push_back(plain_copy(tables().body(item.what)));
    if (!is_one(item.weight)) imul_int(polynomials.back(), item.weight);
    terms += polynomials.back().list.size();
  });
  if (polynomials.empty()) return ExprImpl();
  ExprImpl remainder = std::move(polynomials.front());
  remainder.list.reserve(terms - remainder.list.size());
  for (uint64_t i = 1; i < polynomials.size(); ++i) add_poly(remainder, polynomials[i]);
  return remainder;
}

coeff_t remainder_value(const SumParts& parts, const Evaluation& value_of) {
  coeff_t value = 0;
  tables().sequences().for_each(parts.penalty, [&](const SequenceNode& item) {
    value += item.weight * value_of(tables().body(item.what));
  });
  return value;
}

ConstraintTableSizes constraint_table_sizes() { return tables().sizes(); }

}  // namespace zorv
