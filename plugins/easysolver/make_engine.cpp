#include <numeric>

#include "easysolver/build_tables.h"
#include "easysolver/dense_fields.h"
#include "easysolver/product_fields.h"
#include "easysolver/search_threads.h"
#include "easysolver/source_of_model.h"
#include "easysolver/spin_fields.h"
#include "easysolver/spin_form.h"

namespace zorv::plugin::easy {

namespace {

// Above this share of neighbours a flip goes through whole rows, which vectors do eight or more
// entries at a time.
constexpr double kDenseShare = 0.1;
constexpr uint64_t kMostDenseVariables = 16384;

// Whether no field of any assignment, nor a sum on the way to it, leaves 32 bits.
constexpr int64_t kMost32 = INT32_MAX - 1;

// Bounds the size of all fields.
int64_t reach_of_fields(const Source<int64_t>& source) {
  std::vector<int64_t> reaches(source.size());
  for (uint32_t i = 0; i < source.size(); ++i) reaches[i] = std::abs(source.linear[i]);
  for (const auto& pair : source.pairs) {
    reaches[pair.i] += std::abs(pair.coeff);
    reaches[pair.j] += std::abs(pair.coeff);
  }
  for (uint64_t t = 0; t < source.product_coeffs.size(); ++t) {
    for (uint64_t k = source.product_head[t]; k < source.product_head[t + 1]; ++k) {
      reaches[variable_of(source.product_literals[k])] += std::abs(source.product_coeffs[t]);
    }
  }
  return reaches.empty() ? 0 : *std::max_element(reaches.begin(), reaches.end());
}
bool fields_fit_32(const Source<int64_t>& source) { return reach_of_fields(source) <= kMost32; }

bool fields_fit_32(const SpinForm<int64_t>& form, uint32_t n) {
  std::vector<int64_t> reaches(n);
  for (const auto& term : form.terms) {
    for (uint32_t k = 0; k < term.degree; ++k) {
      reaches[term.variables[k]] += 4 * std::abs(term.coeff);
    }
  }
  return std::all_of(reaches.begin(), reaches.end(), [](int64_t r) { return r <= kMost32; });
}

// The remainder, as far as it is linear and quadratic.
PairTable<Coeff> remainder_pairs(const BinaryModel& model) {
  Source<Coeff> source;
  source.linear.resize(model.nvars);
  model.remainder.for_each([&](const Coeff& coeff, const uint32_t* literals, uint64_t degree) {
    if (degree == 1) source.linear[literals[0]] += coeff;
    if (degree == 2) source.pairs.push_back({literals[0], literals[1], coeff});
  });
  return pair_table<Coeff>(source);
}

// Declared sets, or else those in the pairs of the remainder, or of the polynomial; and what the
// constraints that stay have to do with the other variables.
template <typename Num, typename E>
Groups find_groups(const BinaryModel& model, const PairTable<Num>& pairs,
                   const BodyTable<E>& bodies) {
  std::vector<uint32_t> loose;
  Sets sets = declared_one_hots(model, loose);
  if (sets.empty()) {
    sets = model.has_remainder ? recognised_one_hots(remainder_pairs(model))
                               : recognised_one_hots(pairs);
  }
  Groups groups = groups_of(sets, pairs.size());
  for (uint32_t i = 0; i < pairs.size(); ++i) {
    if (bodies.use_head[i] < bodies.use_head[i + 1]) loose.push_back(i);
  }
  std::sort(loose.begin(), loose.end());
  loose.erase(std::unique(loose.begin(), loose.end()), loose.end());
  std::erase_if(loose, [&](uint32_t i) { return groups.row_of[i] != Groups::kNone; });
  groups.loose = std::move(loose);
  return groups;
}

// The value of all products with the variables at 0.
template <typename E>
E products_at_zeros(const Source<E>& source) {
  E sum = 0;
  for (uint64_t t = 0; t < source.product_coeffs.size(); ++t) {
    const auto begin = source.product_literals.begin();
    if (std::all_of(begin + source.product_head[t], begin + source.product_head[t + 1],
                    is_complement)) {
      sum += source.product_coeffs[t];
    }
  }
  return sum;
}

bool is_dense(const PairTable<int32_t>& pairs) {
  const uint64_t n = pairs.size();
  return n <= kMostDenseVariables &&
         static_cast<double>(pairs.links.size()) > kDenseShare * static_cast<double>(n * n);
}

// What all engines of one model are made with.
template <typename E>
struct Parts {
  const BinaryModel& model;
  SharedSearch& shared;  // that waits for the engine
  Source<E> source;
  EnergyUnit unit;
};

template <typename Num, typename E>
Groups groups_in_time(const Parts<E>& parts, const PairTable<Num>& pairs) {
  if (parts.shared.time_is_up()) return groups_of({}, pairs.size());
  return find_groups(parts.model, pairs, parts.source.bodies);
}

template <typename Fields, typename E>
std::unique_ptr<Engine> engine_on(typename Fields::Table table, Parts<E> parts, Groups groups,
                                  E at_zeros, const char* numbers) {
  return std::make_unique<EngineOf<Fields>>(std::move(table), std::move(parts.source.bodies),
                                            std::move(at_zeros), std::move(parts.unit),
                                            std::move(groups), numbers);
}

template <typename Num, typename E>
std::unique_ptr<Engine> product_engine(Parts<E> parts, const char* numbers) {
  ProductTable<Num> table = product_table<Num>(parts.source);
  Groups groups = groups_in_time(parts, table.pairs);
  E at_zeros = products_at_zeros(parts.source);
  return engine_on<ProductFields<Num>>(std::move(table), std::move(parts), std::move(groups),
                                       std::move(at_zeros), numbers);
}

template <typename Num>
std::unique_ptr<Engine> spin_engine(const SpinForm<int64_t>& form, Parts<int64_t> parts,
                                    const char* numbers) {
  int64_t at_zeros = form.constant;
  for (const auto& term : form.terms) at_zeros += term.coeff;
  parts.unit.scale *= form.scale;
  for (auto& constraint : parts.source.bodies.constraints) {
    constraint.weight *= static_cast<int64_t>(form.scale);
  }
  SpinTable<Num> table = spin_table<Num>(form, parts.source.size());
  Groups groups = groups_in_time(parts, pair_table<int64_t>(parts.source));
  return engine_on<SpinFields<Num>>(std::move(table), std::move(parts), std::move(groups), at_zeros,
                                    numbers);
}

// Constraints that stay are softened by weights in small steps. For these the unit of energy is
// made finer, as far as all numbers keep their type.
unsigned fine_bits(const Source<int64_t>& source, const SearchBound<Coeff>& bound) {
  if (source.bodies.constraints.empty()) return 0;
  const int64_t reach = reach_of_fields(source);
  unsigned bits = 10;
  while (bits > 0 && (!bound.fits(kMachineBits - kMaxSpinDegree - bits) ||
                      (reach <= kMost32 && reach > kMost32 >> bits))) {
    --bits;
  }
  return bits;
}
void refine(Source<int64_t>& source, int64_t scale) {
  if (scale == 1) return;
  for (int64_t& coeff : source.linear) coeff *= scale;
  for (auto& pair : source.pairs) pair.coeff *= scale;
  for (int64_t& coeff : source.product_coeffs) coeff *= scale;
  for (auto& constraint : source.bodies.constraints) constraint.weight *= scale;
}

std::unique_ptr<Engine> quadratic_engine(Parts<int64_t> parts) {
  if (!fields_fit_32(parts.source)) {
    PairTable<int64_t> pairs = pair_table<int64_t>(parts.source);
    Groups groups = groups_in_time(parts, pairs);
    return engine_on<SparseFields<int64_t>>(std::move(pairs), std::move(parts), std::move(groups),
                                            int64_t{0}, "int64");
  }
  PairTable<int32_t> pairs = pair_table<int32_t>(parts.source);
  Groups groups = groups_in_time(parts, pairs);
  if (is_dense(pairs)) {
    return engine_on<DenseFields>(dense_table(pairs), std::move(parts), std::move(groups),
                                  int64_t{0}, "int32");
  }
  if (auto narrow = narrow_table(pairs)) {
    return engine_on<SparseFields<int32_t, NarrowLink>>(std::move(*narrow), std::move(parts),
                                                        std::move(groups), int64_t{0}, "int32");
  }
  return engine_on<SparseFields<int32_t>>(std::move(pairs), std::move(parts), std::move(groups),
                                          int64_t{0}, "int32");
}

std::unique_ptr<Engine> machine_engine(Parts<int64_t> parts, bool has_room_for_spins) {
  const Source<int64_t>& source = parts.source;
  if (source.product_coeffs.empty()) return quadratic_engine(std::move(parts));
  if (has_room_for_spins) {
    const auto is_over = [&] { return parts.shared.time_is_up(); };
    if (const auto form = cheaper_spin_form(source, is_over)) {
      return fields_fit_32(*form, source.size())
                 ? spin_engine<int32_t>(*form, std::move(parts), "int32")
                 : spin_engine<int64_t>(*form, std::move(parts), "int64");
    }
  }
  return fields_fit_32(source) ? product_engine<int32_t>(std::move(parts), "int32")
                               : product_engine<int64_t>(std::move(parts), "int64");
}

}  // namespace

std::unique_ptr<Engine> make_engine(const BinaryModel& model, SharedSearch& shared) {
  const std::vector<bool> folded = folded_constraints(model);
  const SearchBound<Coeff> bound = engine_bound(model, folded);
  EnergyUnit unit;
  if (bound.fits(kMachineBits)) {
    Source<int64_t> source = source_of<int64_t>(model, folded, unit.constant);
    unit.scale = uint64_t{1} << fine_bits(source, bound);
    refine(source, static_cast<int64_t>(unit.scale));
    return machine_engine({model, shared, std::move(source), std::move(unit)},
                          bound.fits(kMachineBits - kMaxSpinDegree));
  }
  Source<Coeff> source = source_of<Coeff>(model, folded, unit.constant);
  return product_engine<Coeff, Coeff>({model, shared, std::move(source), std::move(unit)},
                                      "unbounded");
}

}  // namespace zorv::plugin::easy
