// Models, solutions, searches and integer programs of one expression.
#include <algorithm>
#include <cstring>

#include "fuzz/call.h"

namespace zorv::fuzz {

namespace {

using Values = std::function<coeff_t(uint32_t)>;

void check(bool holds, const char* what) {
  if (!holds) wrong(what);
}

template <typename F, typename... A>
coeff_t got(F f, A... args) {
  Wire out;
  f(args..., out.get());
  return out.value();
}

// The energy of `e` and how many of its items do not hold, by the contract of a model: of a
// nonlinear body the bounds alone count.
struct Energy {
  coeff_t energy;
  uint64_t violations = 0;
};
Energy energy_of(const zorv_expr* e, const Elem& should, const Values& value_of) {
  Energy result = {evaluate(e, value_of)};
  for (uint64_t i = 0; i < (should.declared() ? zorv_cons_item_count(e) : 0); ++i) {
    zorv_expr* body = nullptr;
    Wire weight, lo, hi;
    zorv_cons_item_info(e, i, &body, weight.get(), lo.get(), hi.get());
    const coeff_t value = evaluate(body, value_of);
    if (i == should.items.size()) {
      result.energy += value;
      result.violations += value != 0;
    } else {
      Entry entry = *should.items[i].entry;
      if (zorv_expr_max_degree(body) > 1) entry.allowed.clear();
      const coeff_t violation = entry.violation(value);
      result.energy += weight.value() * (entry.k == 2 ? violation * violation : violation);
      result.violations += entry.kind == 0 && violation != 0;
    }
    zorv_expr_destroy(body);
  }
  return result;
}

// Terms of degree 3 and more keep them, and a body must have none.
bool has_complements(const zorv_expr* e) {
  for (uint64_t i = 0; i < zorv_expr_term_count(e); ++i) {
    const zorv_term* t = zorv_expr_term_at(e, i);
    for (uint32_t j = 0; j < zorv_term_degree(t); ++j) {
      if ((zorv_term_var_at(t, j) & kComplementBit) != 0) return true;
    }
  }
  return false;
}

bool compiles(const zorv_expr* e, const Elem& should) {
  for (uint64_t i = 0; should.declared() && i < zorv_cons_item_count(e); ++i) {
    zorv_expr* body = nullptr;
    Wire out[3];
    zorv_cons_item_info(e, i, &body, out[0].get(), out[1].get(), out[2].get());
    const uint32_t degree = zorv_expr_max_degree(body);
    const bool atoms = zorv_expr_has_int_atom(body) != 0, complements = has_complements(body);
    zorv_expr_destroy(body);
    if (i == should.items.size() && atoms) return false;
    if (i < should.items.size()) {
      const Entry& entry = *should.items[i].entry;
      if (complements || !entry.bounded || (entry.kind != 0 && degree > 1)) return false;
      if (!entry.allowed.empty() && degree > 1) return false;  // counted another way below
    }
  }
  return true;
}

// What the C program has as variables of the same names.
zorv_expr* s;
zorv_model* m;
zorv_sol* sol;
zorv_result* result;
zorv_ilp* ilp;
zorv_easy_wrapper* easy;
zorv_exhaustive_wrapper* exhaustive;
zorv_klb5_wrapper* klb5;
const ParamPair* params;
constexpr ParamPair kPlain[] = {{"time_limit", "0.001"}, {"threads", "1"}, {nullptr, nullptr}};
constexpr ParamPair kTop[] = {{"time_limit", "0"}, {"topk_sols", "3"}, {nullptr, nullptr}};
constexpr ParamPair kBest[] = {
    {"best_energy_sols", "4"}, {"time_limit", "1e-3"}, {nullptr, nullptr}};
constexpr ParamPair kNone[] = {{"best_energy_sols", "5"}, {nullptr, nullptr}};

Values values_in(const zorv_sol* sol) {
  return [sol](uint32_t literal) -> coeff_t {
    if ((literal & kAtomBit) != 0) return got(zorv_sol_get_int, sol, literal);
    // What cancelled out has no value, and may have any.
    return zorv_sol_has(sol, literal) ? zorv_sol_get(sol, literal) : 0;
  };
}

void look_at_model(const Elem& should) {
  const uint64_t n = zorv_model_var_count(m);
  uint64_t terms = 0;
  for (uint32_t i = 0; i < n; ++i) {
    const uint32_t v = zorv_model_var(m, i);
    check(zorv_model_has(m, v) == 1 && zorv_model_var_index(m, v) == i, "a variable of a model");
    check(i == 0 || zorv_model_var(m, i - 1) < v, "order of variables");
  }
  for (uint32_t d = 1; d <= zorv_model_max_degree(m); ++d) {
    terms += zorv_model_term_count(m, d);
    for (uint64_t t = 0; t < zorv_model_term_count(m, d); ++t) {
      check(got(zorv_model_coeff_at, m, d, t) ==
                reinterpret_cast<const zorv::coeff_t*>(zorv_model_coeff_array(m, d))[t],
            "a coefficient of a model");
    }
  }
  // A free-form penalty is part of the polynomial.
  check(should.rest || terms == zorv_expr_term_count(s), "terms of a model");
  check(should.rest || got(zorv_model_constant, m) == got(zorv_expr_constant, s), "constant");
  check(zorv_model_native_cons_count(m) == (should.declared() ? should.items.size() : 0), "rows");
  for (uint64_t i = 0; i < zorv_model_int_var_count(m); ++i) {
    Wire lo, hi, low, high;
    zorv_model_int_var_bounds(m, i, lo.get(), hi.get());
    zorv_int_var_bounds(zorv_model_int_var_orig(m, i), low.get(), high.get());
    check(lo.value() == low.value() && hi.value() == high.value(), "bounds of an atom");
  }
}

// A solution with the values of a sample.
void look_at_solution(const Elem& should, size_t sample, bool by_flips) {
  ZORV_DO(sol = zorv_sol_create(m));
  const bool was_valid = zorv_sol_energy_valid(sol) != 0;
  check(was_valid && got(zorv_sol_energy, sol) == energy_of(s, should, values_in(sol)).energy,
        "energy at the start");
  for (uint64_t i = 0; i < zorv_sol_var_count(sol); ++i) {
    const uint32_t v = zorv_sol_model_var(sol, i);
    const int value = static_cast<int>(world->value(v, sample));
    if (!by_flips)
      zorv_sol_set(sol, v | (i % 2 == 1 ? kComplementBit : 0), i % 2 == 1 ? 1 - value : value);
    if (by_flips && value == 1) zorv_sol_flip(sol, v);
  }
  for (uint64_t i = 0; i < zorv_model_int_var_count(m); ++i) {
    const uint32_t atom = zorv_model_int_var_orig(m, i);
    Wire value(world->value(atom, sample));
    zorv_sol_set_int(sol, atom, value.get());
  }
  const Values values = [sample](uint32_t literal) { return world->value(literal, sample); };
  const Energy expected = energy_of(s, should, values);
  check(got(zorv_sol_compute_energy, sol) == expected.energy, "energy of a solution");
  check(got(zorv_sol_eval_expr, sol, s) == expected.energy, "value on a solution");
  check(zorv_sol_energy_valid(sol) == 1, "valid energy");
  const uint64_t items = should.declared() ? should.items.size() : 0;
  for (uint64_t i = 0; i < items; ++i) {
    Wire value, lo, hi, violation, weight;
    zorv_cons_item_eval(s, i, sol, value.get(), lo.get(), hi.get(), violation.get(), weight.get());
    check(violation.value() == should.items[i].entry->violation(value.value()), "violation");
    check(value.value() == *should.items[i].entry->body[sample], "value of a body");
  }
  if (should.constrained()) {
    if (should.declared()) {
      check(zorv_cons_violation_count(s, sol) == expected.violations, "violations");
    }
  } else if (zorv_model_int_var_count(m) == 0) {
    check(got(zorv_model_eval, m, zorv_sol_bits(sol)) == expected.energy, "value by the model");
    check(got(zorv_expr_eval_with_model, s, m, zorv_sol_bits(sol)) == expected.energy,
          "by its bits");
  }
  zorv_sol* copy = zorv_sol_clone(sol);
  zorv_sol_set_from_sol(copy, sol);
  check(got(zorv_sol_compute_energy, copy) == expected.energy, "energy of a copy");
  zorv_sol_destroy(copy);
  ZORV_DO(zorv_sol_destroy(sol));
}

// The least energy over all states, and whether there are few enough of them to know.
std::optional<coeff_t> least_energy(const Elem& should) {
  std::vector<std::pair<uint32_t, Interval>> variables;
  coeff_t states = 1;
  for (uint64_t i = 0; i < zorv_model_var_count(m); ++i) {
    variables.push_back({zorv_model_var(m, i), {0, 1}});
    states *= 2;
  }
  for (uint64_t i = 0; i < zorv_model_int_var_count(m); ++i) {
    const uint32_t atom = zorv_model_int_var_orig(m, i);
    variables.push_back({atom, world->atoms[atom - kAtomBit]});
    states *= variables.back().second.second - variables.back().second.first + 1;
  }
  if (states > 64) return {};
  std::optional<coeff_t> best;
  for (uint64_t n = 0; n < static_cast<uint64_t>(states); ++n) {
    std::map<uint32_t, coeff_t> at;
    uint64_t rest = n;
    for (const auto& [v, range] : variables) {
      const auto count = static_cast<uint64_t>(range.second - range.first + 1);
      at[v] = range.first + rest % count;
      rest /= count;
    }
    const coeff_t energy = energy_of(s, should, [&](uint32_t literal) {
                             const coeff_t& value = at[literal & ~kComplementBit];
                             return (literal & kComplementBit) != 0 ? coeff_t(1 - value) : value;
                           }).energy;
    if (!best || energy < *best) best = energy;
  }
  return best;
}

// The energies of a result against those of its states.
void look_at_result(const Elem& should, const std::optional<coeff_t>& least, bool proves) {
  std::vector<coeff_t> listed;
  const coeff_t best = got(zorv_easy_solver_result_energy, result);
  for (uint64_t i = 0; i <= zorv_easy_solver_result_topk_count(result); ++i) {
    const bool is_best = i == zorv_easy_solver_result_topk_count(result);
    zorv_sol* found = is_best ? zorv_easy_solver_result_to_sol(result, m)
                              : zorv_easy_solver_result_topk_to_sol(result, i, m);
    const coeff_t energy = got(zorv_sol_energy, found);
    check(energy == (is_best ? best : got(zorv_easy_solver_result_topk_energy, result, i)),
          "energy in a result");
    check(energy == energy_of(s, should, values_in(found)).energy, "energy of what was found");
    check(energy == got(zorv_sol_eval_expr, found, s), "value of what was found");
    check(energy >= best, "the best energy");
    zorv_sol_destroy(found);
  }
  if (least) check(proves ? best == *least : best >= *least, "the least energy");
  for (uint64_t i = 0; i < zorv_easy_solver_result_info_count(result); ++i) {
    check(std::strlen(zorv_easy_solver_result_info_key(result, i)) > 0, "info");
    check(zorv_easy_solver_result_info_value(result, i) != nullptr, "info");
  }
  ZORV_DO(zorv_easy_solver_result_destroy(result));
}

void search(Call& call, const Elem& should) {
  const std::optional<coeff_t> least = least_energy(should);
  const bool native = zorv_model_int_var_count(m) > 0;
  if (native && zorv_model_has_remainder(m)) return;  // solvers abort on these
  static constexpr struct {
    const char* name;
    const ParamPair* pairs;
  } kLists[] = {{"params = kPlain;", kPlain}, {"params = kTop;", kTop}, {"params = kBest;", kBest}};
  const auto& list = kLists[call.draw(std::size(kLists))];
  say(list.name);
  params = list.pairs;
  if (call.draw(2) == 0) {
    ZORV_DO(easy = zorv_easy_solver_wrapper_create(m));
    ZORV_DO(result = zorv_easy_solver_wrapper_search(easy, params, 0));
    look_at_result(should, least, false);
    if (native) {
      ZORV_DO(result = zorv_easy_solver_wrapper_search_int(easy, params, 0, 0, 0));
      look_at_result(should, least, false);
    }
    ZORV_DO(zorv_easy_solver_wrapper_destroy(easy));
  } else if (least) {
    ZORV_DO(exhaustive = zorv_exhaustive_wrapper_create(m));
    ZORV_DO(result = zorv_exhaustive_wrapper_search(exhaustive, kNone));
    look_at_result(should, least, true);
    ZORV_DO(zorv_exhaustive_wrapper_destroy(exhaustive));
  } else if (native) {
    ZORV_DO(klb5 = zorv_klb5_wrapper_create(m, 0));
    ZORV_DO(result = zorv_klb5_wrapper_search(klb5, params, 0));
    look_at_result(should, least, false);
    ZORV_DO(zorv_klb5_wrapper_destroy(klb5));
  }
}

// The program of a model whose constraints are rows: where it has one, its parts fit together.
void look_at_ilp(const Elem& should) {
  for (const Item& item : should.items) {
    if (!item.entry->allowed.empty()) return;
  }
  for (uint64_t i = 0; should.declared() && i < should.items.size(); ++i) {
    zorv_expr* body = nullptr;
    Wire out[3];
    zorv_cons_item_info(s, i, &body, out[0].get(), out[1].get(), out[2].get());
    const bool linear = zorv_expr_max_degree(body) <= 1;
    zorv_expr_destroy(body);
    if (!linear) return;
  }
  ZORV_DO(ilp = zorv_model_ilp_build(m));
  check((ilp == nullptr) == (*zorv_ilp_last_error() != '\0'), "reason of a missing program");
  if (ilp == nullptr) return;
  coeff_t value = got(zorv_ilp_obj_constant, ilp);
  bool whole = true;
  for (uint64_t c = 0; c < zorv_ilp_ncols(ilp); ++c) {
    const int32_t v = zorv_ilp_col_model_var(ilp, c);
    whole = whole && v >= 0;
    if (v < 0) continue;
    const auto i = static_cast<uint64_t>(v);
    const uint32_t literal =
        zorv_ilp_col_kind(ilp, c) == 0 ? zorv_model_var(m, i) : zorv_model_int_var_orig(m, i);
    value += got(zorv_ilp_obj, ilp, c) * world->value(literal, kBits);
  }
  const bool exact = whole && !should.rest && zorv_model_max_degree(m) <= 1;
  check(!exact || value == evaluate(s, [](uint32_t l) { return world->value(l, kBits); }),
        "objective");
  ZORV_DO(zorv_ilp_destroy(ilp));
}

void use_model(Call& call) {
  const In<const zorv_expr*> e(call);
  const Elem& given = e.model.e[0];
  say("s = zorv_expr_simplify_as_binary(" + e.text() + ");");
  s = zorv_expr_simplify_as_binary(e.handle);
  if (compiles(s, given)) {
    ZORV_DO(m = zorv_model_create(s));
    look_at_model(given);
    look_at_solution(given, call.draw(2) == 0 ? kBits : kMoreBits, call.draw(2) == 0);
    if (call.draw(8) == 0) look_at_ilp(given);
    if (call.draw(4) == 0) search(call, given);
    ZORV_DO(zorv_model_destroy(m));
  }
  ZORV_DO(zorv_expr_destroy(s));
}

}  // namespace

void add_search_calls() {
  for (int share = 0; share < 24; ++share) ops().push_back({"use_model", use_model});
}

}  // namespace zorv::fuzz
