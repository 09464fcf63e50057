// Models, solutions, searches and integer programs of one expression.
#include <algorithm>
#include <cstring>

#include "fuzz/call.h"

namespace zorv::fuzz {

namespace {

using Values = std::function<coeff_t(uint32_t)>;

// What the C program has as variables of the same names.
zorv_expr* s;
zorv_model* m;
zorv_sol *sol, *copy;
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

// What `s` should be, and its items as the library shows them.
const Elem* should;
std::vector<const Item*> items;  // null for the free-form one
std::vector<std::unique_ptr<Body>> bodies;

// The energy of `s` and how many of its items do not hold, by the contract of a model: of a
// nonlinear body the bounds alone count.
struct Energy {
  coeff_t energy;
  uint64_t violations = 0;
};
Energy energy_of(const Values& value_of) {
  Energy result = {evaluate(s, value_of)};
  for (size_t i = 0; i < items.size(); ++i) {
    const coeff_t value = evaluate(bodies[i]->e, value_of);
    if (items[i] == nullptr) {
      result.energy += value;
      result.violations += value != 0;
    } else {
      Entry entry = *items[i]->entry;
      if (zorv_expr_max_degree(bodies[i]->e) > 1) entry.allowed.clear();
      const coeff_t violation = entry.violation(value);
      result.energy += bodies[i]->weight * (entry.k == 2 ? violation * violation : violation);
      result.violations += entry.kind == 0 && violation != 0;
    }
  }
  return result;
}

bool is_linear(size_t item) { return zorv_expr_max_degree(bodies[item]->e) <= 1; }

// Whether a model accepts `s`.
bool compiles() {
  for (size_t i = 0; i < items.size(); ++i) {
    const zorv_expr* body = bodies[i]->e;
    if (items[i] == nullptr && zorv_expr_has_int_atom(body)) return false;
    if (items[i] == nullptr) continue;
    // Terms of degree 3 and more keep complements, and a body must have none.
    for (const uint32_t v : literals_of(body)) {
      if ((v & kComplementBit) != 0) return false;
    }
    const Entry& entry = *items[i]->entry;
    // The last is legal, but counted another way below.
    if (!entry.bounded || (entry.kind != 0 && !is_linear(i)) ||
        (!entry.allowed.empty() && !is_linear(i))) {
      return false;
    }
  }
  return true;
}

Values values_in(const zorv_sol* sol) {
  return [sol](uint32_t literal) -> coeff_t {
    if ((literal & kAtomBit) != 0) return got(zorv_sol_get_int, sol, literal);
    // What cancelled out has no value, and may have any.
    return zorv_sol_has(sol, literal) ? zorv_sol_get(sol, literal) : 0;
  };
}

// ---- Models -------------------------------------------------------------------------------------

// The value of a literal by the numbers of the model.
coeff_t numbered(uint32_t literal) {
  if ((literal & kAtomBit) != 0) {
    return world->value(zorv_model_int_var_orig(m, literal & ~kAtomBit), kBits);
  }
  const uint32_t complement = literal & kComplementBit;
  return world->value(zorv_model_var(m, literal ^ complement) | complement, kBits);
}
// The sum of terms in flat arrays, `degree` literals each, or as `head` says.
coeff_t table_value(uint64_t n, uint32_t degree, const uint64_t* head, const uint32_t* vars,
                    const ::coeff_t* coeffs) {
  coeff_t sum;
  for (uint64_t t = 0; t < n; ++t) {
    coeff_t product = reinterpret_cast<const coeff_t*>(coeffs)[t];
    const uint64_t first = head != nullptr ? head[t] : t * degree;
    const uint64_t last = head != nullptr ? head[t + 1] : first + degree;
    for (uint64_t j = first; j < last; ++j) product *= numbered(vars[j]);
    sum += product;
  }
  return sum;
}

void look_at_variables() {
  for (uint32_t i = 0; i < zorv_model_var_count(m); ++i) {
    const uint32_t v = zorv_model_var(m, i);
    check(zorv_model_has(m, v) == 1 && zorv_model_var_index(m, v) == i, "a variable of a model");
    check(i == 0 || zorv_model_var(m, i - 1) < v, "order of variables");
  }
  uint64_t found = 0;
  for (uint32_t v = 0; v < zorv_var_count(); ++v) found += zorv_model_has(m, v | kComplementBit);
  check(found == zorv_model_var_count(m), "variables of a model");
  for (uint64_t i = 0; i < zorv_model_int_var_count(m); ++i) {
    const auto bounds = got<2>(zorv_model_int_var_bounds, m, i);
    check(bounds == got<2>(zorv_int_var_bounds, zorv_model_int_var_orig(m, i)), "bounds");
  }
}

void look_at_polynomial() {
  coeff_t value = got(zorv_model_constant, m);
  bool negated = false;
  for (uint32_t d = 1; d <= zorv_model_max_degree(m); ++d) {
    const uint64_t n = zorv_model_term_count(m, d);
    const uint32_t* vars = zorv_model_term_vars(m, d);
    const auto* coeffs = zorv_model_coeff_array(m, d);
    value += table_value(n, d, nullptr, vars, coeffs);
    for (uint64_t t = 0; t < n; ++t) {
      check(got(zorv_model_coeff_at, m, d, t) == reinterpret_cast<const coeff_t*>(coeffs)[t], "c");
    }
    for (uint64_t j = 0; j < n * d; ++j) negated |= (vars[j] & kComplementBit) != 0;
  }
  // A free-form penalty is part of the polynomial.
  const bool penalty = should->declared() && should->rest;
  check(value == *should->p[kBits] + (penalty ? *(*should->rest)[kBits] : 0), "polynomial");
  check(zorv_model_has_negated_literals(m) == negated, "negated literals");
  check(zorv_model_scale(m) == 1, "scale");
  // A model of nothing but a constant has none.
  uint64_t n = 0;
  value = got([&](CoeffWire* c) { zorv_model_remainder_info(m, c, &n); });
  if (zorv_model_has_remainder(m)) {
    value += table_value(n, 0, zorv_model_remainder_head(m), zorv_model_remainder_vars(m),
                         zorv_model_remainder_coeffs(m));
    check(penalty && value == *(*should->rest)[kBits], "remainder");
  } else {
    check(n == 0 && (!penalty || zorv_model_max_degree(m) == 0), "no remainder");
  }
}

// The numbers of the items that are native constraints, in the order of the model.
std::vector<size_t> rows() {
  std::vector<size_t> order;
  for (const bool linear : {true, false}) {
    for (size_t i = 0; i < items.size(); ++i) {
      if (items[i] != nullptr && is_linear(i) == linear) order.push_back(i);
    }
  }
  return order;
}

void look_at_constraints() {
  const auto order = rows();
  bool shaped = false;
  check(zorv_model_native_cons_count(m) == order.size(), "number of constraints");
  for (uint64_t r = 0; r < order.size(); ++r) {
    const Item& item = *items[order[r]];
    uint32_t k = 0, kind = 0;
    zorv_model_native_cons_shape(m, r, &k, &kind);
    check(k == item.entry->k && kind == item.entry->kind, "shape of a constraint");
    shaped |= k != 2 || kind != 0;
    if (!is_linear(order[r]) || !item.entry->allowed.empty()) continue;
    const uint64_t n = zorv_model_native_cons_nterms(m, r);
    const auto [lo, hi, constant, weight] = got<4>(zorv_model_native_cons_bounds, m, r);
    check(lo == item.entry->lo && hi == item.entry->hi && weight == item.weight, "bounds");
    check(constant + table_value(n, 1, nullptr, zorv_model_native_cons_vars(m, r),
                                 zorv_model_native_cons_coeffs(m, r)) ==
              *item.entry->body[kBits],
          "value of a constraint");
  }
  check(zorv_model_has_penalty_shapes(m) == shaped, "penalty shapes");
}

// ---- Solutions ----------------------------------------------------------------------------------

void look_at_values(Call& call) {
  const In<const zorv_array_var*> vars(call);
  zorv_array_int* values = zorv_array_int_from_sol(sol, vars.handle);
  for (uint64_t i = 0; i < vars.model.e.size(); ++i) {
    const uint32_t v = vars.model.e[i].literal;
    if ((v & kAtomBit) != 0 && v < kNothing) continue;
    const int value = zorv_sol_has(sol, v) ? zorv_sol_get(sol, v) : (v & kComplementBit) != 0;
    check(got(zorv_array_int_get, values, i) == value, "value of a literal");
  }
  zorv_array_int_destroy(values);
  bool dense = true;
  std::string text = got(zorv_sol_energy, sol).str() + ":{";
  for (uint32_t i = 0; i < zorv_sol_var_count(sol); ++i) {
    dense = dense && zorv_sol_model_var(sol, i) == i;
    text += (i > 0 ? ",{" : "{") + std::string(zorv_var_str(zorv_sol_model_var(sol, i))) + "," +
            std::to_string(zorv_sol_get(sol, zorv_sol_model_var(sol, i))) + "}";
  }
  check(!dense || zorv_sol_str(sol) == text + "}", "text of a solution");
}

// A solution with the values of a sample.
void look_at_solution(Call& call) {
  const size_t sample = call.draw(2) == 0 ? kBits : kMoreBits;
  const bool by_flips = call.draw(2) == 0;
  ZORV_DO(sol = zorv_sol_create(m));
  check(zorv_sol_energy_valid(sol) == 1 && zorv_sol_tts(sol) == -1, "a new solution");
  check(got(zorv_sol_energy, sol) == energy_of(values_in(sol)).energy, "energy at the start");
  for (uint64_t i = 0; i < zorv_sol_var_count(sol); ++i) {
    const uint32_t v = zorv_sol_model_var(sol, i);
    const int value = static_cast<int>(world->value(v, sample));
    if (by_flips && value == 1) zorv_sol_flip(sol, v);
    // A complement stores 1 minus the value, and any value but 0 counts as 1.
    const int any = static_cast<int>(call.draw(9)) - 4, negated = i % 2;
    const int set = value == 0 ? negated : any == negated ? 1 - negated : any;
    if (!by_flips) zorv_sol_set(sol, v | (negated == 1 ? kComplementBit : 0), set);
    check(zorv_sol_get(sol, v) == value, "a value that was set");
    check(by_flips || zorv_sol_energy_valid(sol) == 0, "an energy that is not valid any more");
  }
  for (uint64_t i = 0; i < zorv_sol_int_count(sol); ++i) {
    const uint32_t atom = zorv_model_int_var_orig(zorv_sol_model(sol), i);
    const coeff_t value = world->value(atom, sample);
    zorv_sol_set_int(sol, atom, Wires({value}).c.data());
    check(reinterpret_cast<const coeff_t*>(zorv_sol_int_vals(sol))[i] == value, "integer value");
  }
  const Energy expected = energy_of(values_in(sol));
  check(got(zorv_sol_compute_energy, sol) == expected.energy, "energy of a solution");
  check(got(zorv_sol_energy_int, sol) == expected.energy, "valid energy");
  check(got(zorv_sol_eval_expr, sol, s) == expected.energy, "value on a solution");
  for (uint64_t i = 0; i < items.size(); ++i) {
    const auto numbers = got<5>([i](auto... out) { zorv_cons_item_eval(s, i, sol, out...); });
    const coeff_t& value = numbers[0];
    check(value == evaluate(bodies[i]->e, values_in(sol)), "value of a body");
    check(numbers[3] == (items[i] != nullptr ? items[i]->entry->violation(value) : value), "gap");
  }
  if (should->declared()) {
    check(zorv_cons_violation_count(s, sol) == expected.violations, "violations");
  } else if (!should->constrained() && zorv_sol_int_count(sol) == 0) {
    const uint64_t* bits = zorv_sol_bits(sol);
    check(got(zorv_model_eval, m, bits) == expected.energy, "value by the model");
    check(got(zorv_expr_eval_with_model, s, m, bits) == expected.energy, "by its bits");
  }
  look_at_values(call);
  ZORV_DO(copy = zorv_sol_clone(sol));
  ZORV_DO(zorv_sol_set_from_sol(copy, sol));
  check(got(zorv_sol_compute_energy, copy) == expected.energy, "energy of a copy");
  zorv_sol_set_energy(copy, Wires({7}).c.data()), zorv_sol_set_tts(copy, 0.5);
  check(got(zorv_sol_energy, copy) == 7 && zorv_sol_tts(copy) == 0.5, "what was set");
  check(zorv_sol_scale(copy) == 1, "scale");
  WordVec words = {nullptr, nullptr, nullptr};
  ZORV_DO(zorv_sol_steal_bits(copy, &words));
  for (uint64_t i = 0; i < zorv_sol_var_count(sol); ++i) {
    const int bit = static_cast<int>(words.begin[i / 64] >> i % 64 & 1);
    check(bit == zorv_sol_get(sol, zorv_sol_model_var(sol, i)), "a bit");
  }
  operator delete(words.begin);
  ZORV_DO(zorv_sol_destroy(copy));
}

// ---- Searches -----------------------------------------------------------------------------------

// The least energy over all states, if there are few enough of them.
std::optional<coeff_t> least_energy() {
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
    const coeff_t energy = energy_of([&](uint32_t literal) {
                             const coeff_t& value = at[literal & ~kComplementBit];
                             return (literal & kComplementBit) != 0 ? coeff_t(1 - value) : value;
                           }).energy;
    if (!best || energy < *best) best = energy;
  }
  return best;
}

// One state of a result: state(energy), its bits, its time, and as a solution.
void look_at_state(const coeff_t& energy, const coeff_t& best, const uint64_t* bits, double tts,
                   const std::vector<uint64_t>& stolen, zorv_sol* found) {
  for (uint64_t i = 0; i < zorv_sol_var_count(found); ++i) {
    const auto bit = static_cast<int>(stolen[i / 64] >> i % 64 & 1);
    check(bit == zorv_sol_get(found, zorv_sol_model_var(found, i)), "a bit of a result");
  }
  check(bits == zorv_sol_bits(found) && tts == zorv_sol_tts(found) && tts >= 0, "bits and time");
  check(energy == got(zorv_sol_energy, found), "energy in a result");
  check(energy == energy_of(values_in(found)).energy, "energy of what was found");
  check(energy == got(zorv_sol_eval_expr, found, s), "value of what was found");
  check(energy >= best, "the best energy");
  zorv_sol_destroy(found);
}

// The energies of a result against those of its states.
coeff_t look_at_result(const std::optional<coeff_t>& least, bool proves) {
  const coeff_t best = got(zorv_easy_solver_result_energy, result);
  // Words swapped out and back again.
  const auto stolen = [](auto swap) {
    WordVec words = {nullptr, nullptr, nullptr};
    swap(&words);
    std::vector<uint64_t> copy(words.begin, words.end);
    swap(&words);
    check(words.begin == nullptr, "words that were swapped");
    return copy;
  };
  for (uint64_t i = 0; i < zorv_easy_solver_result_topk_count(result); ++i) {
    const auto words =
        stolen([i](WordVec* v) { zorv_easy_solver_result_steal_topk_bits(result, i, v); });
    const uint64_t* bits = zorv_easy_solver_result_topk_bits(result, i);
    const uint64_t before = i > 0 ? i - 1 : i;
    check(got(zorv_easy_solver_result_topk_energy, result, before) <=
              got(zorv_easy_solver_result_topk_energy, result, i),
          "order of a list");
    look_at_state(got(zorv_easy_solver_result_topk_energy, result, i), best, bits,
                  zorv_easy_solver_result_topk_tts(result, i), words,
                  zorv_easy_solver_result_topk_to_sol(result, i, m));
  }
  const auto words = stolen([](WordVec* v) { zorv_easy_solver_result_steal_bits(result, v); });
  const uint64_t* bits = zorv_easy_solver_result_bits(result);
  look_at_state(best, best, bits, zorv_easy_solver_result_tts(result), words,
                zorv_easy_solver_result_to_sol(result, m));
  if (least) check(proves ? best == *least : best >= *least, "the least energy");
  for (uint64_t i = 0; i < zorv_easy_solver_result_info_count(result); ++i) {
    check(std::strlen(zorv_easy_solver_result_info_key(result, i)) > 0, "info");
    check(zorv_easy_solver_result_info_value(result, i) != nullptr, "info");
  }
  ZORV_DO(zorv_easy_solver_result_destroy(result));
  return best;
}

// A tick of the timer before anything was found has no state.
double on_event(void*, zorv_sol* found, uint32_t event) {
  check(event <= 2, "an event");
  if (event < 2 || zorv_sol_bits(found) != nullptr) {
    check(got(zorv_sol_energy, found) == got(zorv_sol_eval_expr, found, s), "energy in an event");
  }
  zorv_sol_destroy(found);
  return event == 0 ? 0.0005 : -1;
}

void search(Call& call) {
  const std::optional<coeff_t> least = least_energy();
  const bool native = zorv_model_int_var_count(m) > 0;
  if (native && zorv_model_has_remainder(m)) return;  // solvers abort on these
  static constexpr struct {
    const char* name;
    const ParamPair* pairs;
  } kLists[] = {{"params = kPlain;", kPlain}, {"params = kTop;", kTop}, {"params = kBest;", kBest}};
  const auto& list = kLists[call.draw(std::size(kLists))];
  say(list.name);
  params = list.pairs;
  // The state to start from is never better than what is found.
  const coeff_t hint = got(zorv_sol_compute_energy, sol);
  static const uint64_t kNoBits = 0;
  const uint64_t* bits = zorv_sol_var_count(sol) > 0 ? zorv_sol_bits(sol) : &kNoBits;
  const ::coeff_t* ints = zorv_sol_int_vals(sol);
  const uint64_t n = zorv_sol_int_count(sol);
  say("bits = zorv_sol_var_count(sol) ? zorv_sol_bits(sol) : room;");
  say("ints = zorv_sol_int_vals(sol), n = zorv_sol_int_count(sol);");
  if (call.draw(2) == 0) {
    ZORV_DO(easy = zorv_easy_solver_wrapper_create(m));
    if (native) {
      ZORV_DO(result = zorv_easy_solver_wrapper_search_int(easy, params, bits, ints, n));
      check(look_at_result(least, false) <= hint, "better than the hint");
    }
    ZORV_DO(result = zorv_easy_solver_wrapper_search(easy, params, 0));
    look_at_result(least, false);
    ZORV_DO(zorv_easy_solver_wrapper_destroy(easy));
  } else if (least) {
    ZORV_DO(exhaustive = zorv_exhaustive_wrapper_create(m));
    ZORV_DO(result = zorv_exhaustive_wrapper_search(exhaustive, kNone));
    look_at_result(least, true);
    ZORV_DO(zorv_exhaustive_wrapper_destroy(exhaustive));
  } else if (native) {
    ZORV_DO(klb5 = zorv_klb5_wrapper_create(m, 0));
    ZORV_DO(zorv_klb5_wrapper_set_callback(klb5, on_event, 0));
    ZORV_DO(zorv_klb5_wrapper_terminate(klb5));
    ZORV_DO(zorv_klb5_wrapper_hint(klb5, sol));
    ZORV_DO(result = zorv_klb5_wrapper_search(klb5, params, 0));
    look_at_result(least, false);
    ZORV_DO(result = zorv_klb5_wrapper_search_int(klb5, params, bits, ints, n));
    check(look_at_result(least, false) <= hint, "better than the hint");
    ZORV_DO(zorv_klb5_wrapper_destroy(klb5));
  }
}

// ---- Integer programs ---------------------------------------------------------------------------

// The value of a column at a sample; of a VarInt, by its bits.
coeff_t column_value(uint64_t c) {
  const auto [lo, hi] = got<2>(zorv_ilp_col_bounds, ilp, c);
  const int32_t v = zorv_ilp_col_model_var(ilp, c);
  const uint64_t n = zorv_ilp_col_nbits(ilp, c);
  check(v < 0 || n == 0, "bits of a column");
  if (v >= 0) {
    const coeff_t value =
        numbered(static_cast<uint32_t>(v) | (zorv_ilp_col_kind(ilp, c) == 0 ? 0 : kAtomBit));
    check(lo <= value && value <= hi, "bounds of a column");
    return value;
  }
  coeff_t value = lo, again = lo;
  for (uint64_t b = 0; b < n; ++b) {
    value += got(zorv_ilp_col_bit_coeff, ilp, c, b) * numbered(zorv_ilp_col_bit_var(ilp, c, b));
  }
  std::vector<uint8_t> bits(n);
  zorv_ilp_col_decode(ilp, c, Wires({value}).c.data(), bits.data());
  for (uint64_t b = 0; b < n; ++b) again += got(zorv_ilp_col_bit_coeff, ilp, c, b) * bits[b];
  check(value == again, "bits of a column's value");
  return value;
}

// The program of a model whose constraints are rows: where it has one, its parts fit together.
void look_at_ilp() {
  for (size_t i = 0; i < items.size(); ++i) {
    if (items[i] != nullptr && (!items[i]->entry->allowed.empty() || !is_linear(i))) return;
  }
  ZORV_DO(ilp = zorv_model_ilp_build(m));
  check((ilp == nullptr) == (*zorv_ilp_last_error() != '\0'), "reason of a missing program");
  if (ilp == nullptr) return;
  std::vector<coeff_t> at(zorv_ilp_ncols(ilp));
  bool fits = true;  // a VarInt may have been given bounds that its bits pass
  for (uint64_t c = 0; c < at.size(); ++c) {
    at[c] = column_value(c);
    const auto [lo, hi] = got<2>(zorv_ilp_col_bounds, ilp, c);
    fits = fits && lo <= at[c] && at[c] <= hi;
  }
  coeff_t value = got(zorv_ilp_obj_constant, ilp);
  for (uint64_t c = 0; c < at.size(); ++c) value += got(zorv_ilp_obj, ilp, c) * at[c];
  const bool exact = !should->rest && zorv_model_max_degree(m) <= 1;
  check(!exact || value == *should->p[kBits], "objective");
  const auto order = rows();
  check(zorv_ilp_nrows(ilp) >= order.size(), "number of rows");
  for (uint64_t r = 0; r < zorv_ilp_nrows(ilp); ++r) {
    uint32_t lo_free = 0, hi_free = 0;
    const auto [lo, hi] =
        got<2>([&](auto... out) { zorv_ilp_row_bounds(ilp, r, out..., &lo_free, &hi_free); });
    value = 0;
    for (uint64_t j = 0; j < zorv_ilp_row_nnz(ilp, r); ++j) {
      value += got(zorv_ilp_row_coeff, ilp, r, j) * at[zorv_ilp_row_col(ilp, r, j)];
    }
    const bool holds = (lo_free || value >= lo) && (hi_free || value <= hi);
    if (r >= order.size() || !fits) continue;
    const Entry& entry = *items[order[r]]->entry;
    check(holds == (entry.violation(*entry.body[kBits]) == 0), "a row");
  }
  ZORV_DO(zorv_ilp_destroy(ilp));
}

void use_model(Call& call) {
  const In<const zorv_expr*> e(call);
  should = &e.model.e[0];
  say("s = zorv_expr_simplify_as_binary(" + e.text + ");");
  s = zorv_expr_simplify_as_binary(e.handle);
  items.clear(), bodies.clear();
  for (uint64_t i = 0; should->declared() && i < zorv_cons_item_count(s); ++i) {
    items.push_back(i < should->items.size() ? &should->items[i] : nullptr);
    bodies.push_back(std::make_unique<Body>(s, i));
  }
  if (compiles()) {
    if (call.draw(2) == 0) {
      ZORV_DO(m = zorv_model_create(s));
    } else {
      ZORV_DO(m = zorv_model_create_scaled(s, 2));
    }
    look_at_variables(), look_at_polynomial(), look_at_constraints();
    look_at_solution(call);
    if (call.draw(8) == 0) look_at_ilp();
    if (call.draw(4) == 0) search(call);
    ZORV_DO(zorv_model_destroy(zorv_model_clone(m)));
    ZORV_DO(zorv_model_destroy(m));
    ZORV_DO(zorv_sol_destroy(sol));
  }
  bodies.clear();
  ZORV_DO(sol = zorv_sol_create_from_expr(s));
  check(got(zorv_sol_energy, sol) == evaluate(s, values_in(sol)), "energy of an expression");
  ZORV_DO(zorv_sol_destroy(sol));
  ZORV_DO(zorv_expr_destroy(s));
}

}  // namespace

void add_search_calls() {
  for (int share = 0; share < 24; ++share) ops().push_back({"use_model", use_model});
}

}  // namespace zorv::fuzz
