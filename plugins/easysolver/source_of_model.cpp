#include "easysolver/source_of_model.h"

#include <algorithm>
#include <numeric>

#include "common/literal.h"

namespace zorv::plugin::easy {

namespace {

// What static_cast does, with the usual case of one limb inline.
template <typename E>
E number_of(const Coeff& value) {
  if constexpr (std::is_same_v<E, Coeff>) {
    return value;
  } else {
    const auto magnitude = static_cast<E>(*value.backend().limbs());
    return value.backend().sign() ? -magnitude : magnitude;
  }
}

// The sum of the magnitudes of all coefficients.
Coeff reach_of_terms(const BinaryModel& model) {
  Coeff large = 0;
  boost::multiprecision::double_limb_type sum = 0;  // has room for 2^64 limbs
  for (const TermTable& table : model.terms) {
    for (uint64_t t = 0; t < table.count; ++t) {
      if (table.coeffs[t].backend().size() == 1) {
        sum += *table.coeffs[t].backend().limbs();
      } else {
        large += magnitude(table.coeffs[t]);
      }
    }
  }
  return large + Coeff(sum);
}

bool is_square_of_linear(const BinaryConstraint& c) {
  return c.is_linear() && c.shape_k != 1 && c.allowed.size() == 1 &&
         c.allowed[0].first == c.allowed[0].second;
}

// The body as a sum of plain variables, each once and ascending: a complement ~x is 1 - x.
struct LinearBody {
  std::vector<std::pair<uint32_t, Coeff>> coeffs;
  Coeff constant;
};
LinearBody linear_body(const BinaryConstraint& c) {
  LinearBody body = {{}, c.body_constant};
  auto& terms = body.coeffs;
  for (uint64_t t = 0; t < c.linear_count; ++t) {
    const uint32_t literal = c.body.literals[t];
    const Coeff& coeff = c.body.coeffs[t];
    if (is_complement(literal)) body.constant += coeff;
    terms.emplace_back(variable_of(literal), is_complement(literal) ? Coeff(-coeff) : coeff);
  }
  const auto is_before = [](const auto& a, const auto& b) { return a.first < b.first; };
  if (!std::is_sorted(terms.begin(), terms.end(), is_before)) {
    std::sort(terms.begin(), terms.end(), is_before);
  }
  size_t count = 0;
  for (size_t t = 0; t < terms.size(); ++t) {
    if (count > 0 && terms[count - 1].first == terms[t].first) {
      terms[count - 1].second += terms[t].second;
    } else if (count++ != t) {
      terms[count - 1] = std::move(terms[t]);
    }
  }
  terms.resize(count);
  return body;
}

// weight * (body - value)^2, multiplied out.
template <typename E>
void add_square(const BinaryConstraint& c, Source<E>& source, Coeff& constant) {
  const LinearBody body = linear_body(c);
  const Coeff offset = body.constant - c.allowed[0].first;
  constant += c.weight * offset * offset;
  for (auto a = body.coeffs.begin(); a != body.coeffs.end(); ++a) {
    source.linear[a->first] +=
        static_cast<E>(Coeff(c.weight * a->second * (a->second + 2 * offset)));
    for (auto b = std::next(a); b != body.coeffs.end(); ++b) {
      source.pairs.push_back(
          {a->first, b->first, static_cast<E>(Coeff(2 * c.weight * a->second * b->second))});
    }
  }
}

// The constraints that stay, with what each variable has to do with them.
template <typename E>
class BodyBuilder {
 public:
  explicit BodyBuilder(uint32_t variables) { table_.use_head.assign(variables + 1, 0); }

  void add(const BinaryConstraint& c) {
    const auto number = static_cast<uint32_t>(table_.constraints.size());
    const LinearBody body = linear_body(c);
    Coeff start = body.constant;
    for (const auto& [variable, coeff] : body.coeffs) {
      parts_.push_back({variable, number, kNoProduct, static_cast<E>(coeff)});
    }
    for (uint64_t t = c.linear_count; t < c.body.size(); ++t) add_product(c, t, number, start);
    // Bounds are taken relative to the body's constant, so it may be large.
    add_bounds(c);
    table_.start.push_back(static_cast<E>(Coeff(start - c.body_constant)));
  }

  BodyTable<E> take() {
    uint32_t variable = 0;
    for (const uint64_t k : order_by_variable()) {
      const Part& part = parts_[k];
      while (variable < part.variable) table_.use_head[++variable] = table_.uses.size();
      use_of(part).coeff += part.coeff;
      if (part.product == kNoProduct) continue;
      ++table_.uses.back().products;
      table_.product_uses.push_back(part.product);
    }
    while (variable + 1 < table_.use_head.size()) table_.use_head[++variable] = table_.uses.size();
    return std::move(table_);
  }

 private:
  // A term of a constraint's body, as one of its variables sees it.
  struct Part {
    uint32_t variable, constraint;
    uint64_t product;
    E coeff;  // 0 in a product
  };
  static constexpr uint64_t kNoProduct = ~uint64_t{0};

  // The numbers of the parts; those of one variable stay in order.
  std::vector<uint64_t> order_by_variable() const {
    std::vector<uint64_t> next(table_.use_head.size());
    for (const Part& part : parts_) ++next[part.variable + 1];
    std::partial_sum(next.begin(), next.end(), next.begin());
    std::vector<uint64_t> order(parts_.size());
    for (uint64_t k = 0; k < parts_.size(); ++k) order[next[parts_[k].variable]++] = k;
    return order;
  }

  typename BodyTable<E>::Use& use_of(const Part& part) {
    auto& uses = table_.uses;
    const bool is_first = uses.size() == table_.use_head[part.variable];
    if (is_first || uses.back().constraint != part.constraint) {
      uses.push_back({part.constraint, 0, table_.product_uses.size(), 0});
    }
    return uses.back();
  }

  void add_product(const BinaryConstraint& c, uint64_t t, uint32_t number, Coeff& start) {
    const uint64_t product = table_.product_coeffs.size();
    uint32_t false_ones = 0;
    for (uint64_t k = c.body.head[t]; k < c.body.head[t + 1]; ++k) {
      const uint32_t literal = c.body.literals[k];
      parts_.push_back({variable_of(literal), number, product << 1 | literal >> 31, 0});
      if (!is_complement(literal)) ++false_ones;
    }
    if (false_ones == 0) start += c.body.coeffs[t];
    table_.product_coeffs.push_back(static_cast<E>(c.body.coeffs[t]));
    table_.product_literals.push_back(false_ones);
  }

  void add_bounds(const BinaryConstraint& c) {
    const auto intervals = joined_within(c.allowed, body_extent(c).range);
    const auto relative = [&](const Coeff& end) {
      return static_cast<E>(Coeff(end - c.body_constant));
    };
    typename BodyTable<E>::Constraint constraint = {relative(intervals[0].first),
                                                    relative(intervals[0].second),
                                                    static_cast<E>(c.weight),
                                                    c.shape_k != 1,
                                                    static_cast<uint32_t>(table_.intervals.size()),
                                                    0};
    if (intervals.size() > 1) {
      constraint.intervals = static_cast<uint32_t>(intervals.size());
      for (const auto& [lo, hi] : intervals) {
        table_.intervals.push_back({relative(lo), relative(hi)});
      }
    }
    table_.constraints.push_back(constraint);
  }

  BodyTable<E> table_;
  std::vector<Part> parts_;
};

template <typename E>
void add_terms(const BinaryModel& model, Source<E>& source) {
  for (const TermTable& table : model.terms) {
    if (table.degree == 2) source.pairs.reserve(table.count);
  }
  model.for_each_term([&](const Coeff& coeff, const uint32_t* literals, uint64_t degree) {
    const E value = number_of<E>(coeff);
    if (degree == 1) {
      source.linear[literals[0]] += value;
    } else if (degree == 2) {
      source.pairs.push_back({literals[0], literals[1], value});
    } else {
      source.product_coeffs.push_back(value);
      source.product_literals.insert(source.product_literals.end(), literals, literals + degree);
      source.product_head.push_back(source.product_literals.size());
    }
  });
}

}  // namespace

std::vector<bool> folded_constraints(const BinaryModel& model) {
  constexpr uint64_t kFreePairs = 4'000'000;
  uint64_t room = kFreePairs;
  for (const TermTable& table : model.terms) room += 2 * table.count;
  std::vector<bool> folded;
  for (const BinaryConstraint& c : model.constraints) {
    const uint64_t pairs = c.linear_count * c.linear_count / 2;
    folded.push_back(is_square_of_linear(c) && pairs <= room);
    if (folded.back()) room -= pairs;
  }
  return folded;
}

SearchBound<Coeff> engine_bound(const BinaryModel& model, const std::vector<bool>& folded) {
  SearchBound<Coeff> bound;
  bound.add_terms(reach_of_terms(model));
  for (size_t k = 0; k < folded.size(); ++k) {
    const BinaryConstraint& c = model.constraints[k];
    const BodyExtent<Coeff> extent = body_extent(c);
    if (folded[k]) {
      const Coeff size = extent.reach + magnitude(c.allowed[0].first);
      bound.add_terms(4 * magnitude(c.weight) * size * size);
    } else {
      bound.add_constraint(c.weight, c.shape_k, joined_within(c.allowed, extent.range), extent);
      // Bodies are computed without their constants, which moves the ends of the intervals.
      bound.add_value(2 * (magnitude(c.body_constant) + extent.reach));
    }
  }
  return bound;
}

template <typename E>
Source<E> source_of(const BinaryModel& model, const std::vector<bool>& folded, Coeff& constant) {
  Source<E> source;
  source.linear.resize(model.nvars);
  constant = *model.constant;
  add_terms(model, source);
  BodyBuilder<E> bodies(source.size());
  for (size_t k = 0; k < folded.size(); ++k) {
    if (folded[k]) {
      add_square(model.constraints[k], source, constant);
    } else {
      bodies.add(model.constraints[k]);
    }
  }
  source.bodies = bodies.take();
  return source;
}

template Source<int64_t> source_of(const BinaryModel&, const std::vector<bool>&, Coeff&);
template Source<Coeff> source_of(const BinaryModel&, const std::vector<bool>&, Coeff&);

}  // namespace zorv::plugin::easy
