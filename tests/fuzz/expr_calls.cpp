// Terms, expressions, integers and constraints.
#include <cstring>

#include "fuzz/call.h"

namespace zorv::fuzz {

namespace {

// The values of all variables that were drawn from, as zorv_expr_eval_map takes them.
struct Values {
  explicit Values(Call&) : literals(world->literals) {
    for (const uint32_t literal : literals) own.emplace_back(world->value(literal, kBits));
    for (Wire& wire : own) wires.push_back(wire.get());
  }
  bool cover(const zorv_expr* e) const {
    for (uint64_t i = 0; i < zorv_expr_term_count(e); ++i) {
      const zorv_term* t = zorv_expr_term_at(e, i);
      for (uint32_t j = 0; j < zorv_term_degree(t); ++j) {
        const uint32_t v = zorv_term_var_at(t, j) & ~kComplementBit;
        if (std::find(literals.begin(), literals.end(), v) == literals.end()) return false;
      }
    }
    return true;
  }
  std::string text() const {
    std::string all = numbers_text("uint32_t", literals) + ", (const CoeffWire*[]){";
    for (const Wire& wire : own) all += "&(CoeffWire)" + text_of(wire.value()) + ", ";
    return all + "0}, " + std::to_string(literals.size());
  }
  std::tuple<const uint32_t*, const CoeffWire* const*, uint64_t> c() const {
    return {literals.data(), wires.data(), literals.size()};
  }
  std::vector<uint32_t> literals;
  std::vector<Wire> own;
  std::vector<const CoeffWire*> wires;
};

// How the tag of the first operand fares when something is added to it.
enum class Rule { kJoin, kKeep, kClear };

template <Rule kRule>
Elem tagged(Call& call, const Elem& e, const Poly& added, int sign) {
  const Poly p = e.p + number(sign) * added;
  if (kRule == Rule::kJoin)
    return e.constrained() ? joined({e, plain(added)}, p, call.legal) : plain(p);
  return kRule == Rule::kKeep ? kept(e, p) : plain(p);
}
template <Rule kRule, int kSign = 1>
constexpr auto adding = [](Call& call, const Elem& e, const Elem& b, const auto&...) {
  return tagged<kRule>(call, e, b.p, kSign);
};
// With a coefficient before the literals.
template <Rule kRule, int kSign = 1>
constexpr auto adding_scaled = [](Call& call, const Elem& e, const Elem& c, const Elem& b) {
  return tagged<kRule>(call, e, c.p * b.p, kSign);
};

constexpr auto same = [](Call&, const Elem& e, const auto&...) { return e; };
constexpr auto sum = [](Call&, const Elem& a, const Elem& b) { return plain(a.p + b.p); };
constexpr auto difference = [](Call&, const Elem& a, const Elem& b) { return plain(a.p - b.p); };
constexpr auto product = [](Call&, const Elem& a, const Elem& b, const auto&...) {
  return plain(a.p * b.p);
};
constexpr auto negative = [](Call& call, const Elem& e) {
  const Poly p = number(-1) * e.p;
  return e.declared() ? scaled(e, -1, p, call.legal) : plain(p);
};

// A product of polynomials, which no declared constraint survives.
constexpr auto free_product = [](Call& call, const Elem& a, const auto&... b) {
  if ((a.declared() || ... || b.declared())) call.legal = false;
  return plain((a.p * ... * b.p));
};
constexpr auto times_integer = [](Call& call, const Elem& e, const Elem& c) {
  return scaled(e, c.integer(), e.p * c.p, call.legal);
};

// e + b: `shortcut` for the sum in place, in which a zero adopts the constraints of the other side.
template <bool kInPlace>
constexpr auto sum_of_both = [](Call& call, const auto& a, const auto& b) {
  const Elem &x = a.model.e[0], &y = b.model.e[0];
  const Poly p = x.p + y.p;
  Elem e = joined({x, y}, p, call.legal);
  if (kInPlace && x.tag == Tag::kPlain && y.constrained() && zorv_expr_term_count(a.handle) == 0 &&
      read(a.handle)[kFree] == coeff_t(0)) {
    e = with(y, p);
  }
  return Thing{nullptr, {}, {e}};
};
constexpr auto difference_of_both = [](Call& call, const Elem& a, const Elem& b) {
  const Poly p = a.p - b.p;
  return b.declared() ? joined({a, scaled(b, -1, {}, call.legal)}, p, call.legal) : kept(a, p);
};

// Division is exact or an abort; which of them depends on coefficients, so those are read.
bool divides(const coeff_t& c, const zorv_expr* e) {
  Wire gcd;
  zorv_expr_gcd(e, gcd.get());
  return c != 0 && gcd.value() % c == 0;
}
constexpr auto quotient = [](const coeff_t& a, const coeff_t& b) { return coeff_t(a / b); };

void terms() {
  EACH(term_create, same);
  EACH(term_create_var, product);
  EACH(term_create_var_var,
       [](Call&, auto& c, auto& a, auto& b) { return plain(c.p * a.p * b.p); });
  Table<Coeff, Head<Block::kCopied>>::each(FN(term_create_vararray), product);
  EACH(term_clone, same);
  EACH(term_mul_var, product);
  EACH(term_mul_coeff, product);
  EACH(term_mul_term, product);
  // Returns its first operand.
  Table<In<zorv_term*>, In<const zorv_term*>>::each(
      "(void)zorv_term_mul_term_move",
      +[](zorv_term* a, const zorv_term* b) {
        if (zorv_term_mul_term_move(a, b) != a) wrong("another term");
      },
      product);
  EACH(term_negate, [](Call&, auto& t) { return plain(number(-1) * t.p); });
  WHOLE(term_div_coeff, [](Call& call, auto& t, auto& c) {
    Wire own;
    zorv_term_coeff(t.handle, own.get());
    call.legal = c.value != 0 && own.value() % c.value == 0;
    const Poly p = call.legal ? pointwise(t.model.e[0].p, number(c.value), quotient) : Poly();
    return Thing{nullptr, {}, {plain(p)}};
  });
  QUERY(term_str, [](const char* text, auto&) { return *text != '\0'; });
}

void building() {
  using T = In<const zorv_term*>;
  Table<>::each(FN(expr_create), [](Call&) { return plain(number(0)); });
  EACH(expr_create_int, same);
  EACH(expr_create_var, same);
  Table<In<zorv_term*>, Number<int, 0, 1>>::each(FN(expr_create_term), same);
  Table<Taken<zorv_term>, Number<int, 1, 2>>::each(FN(expr_create_term), same);
  EACH(expr_clone, same);
  EACH(exprexprelem_clone, same);
  EACH(varintelem_clone, same);
  Table<Coeff, Literals, Coeff>::each(
      FN(expr_create_raw_term),
      [](Call&, auto& c, auto& v, auto& k) { return plain(c.p * v.p + k.p); });
  Table<Coeff, Head<Block::kAdopted>, Coeff>::each(
      FN(expr_create_move_term),
      [](Call&, auto& c, auto& v, auto& k) { return plain(c.p * v.p + k.p); });
  Table<Coeff, Literals, Coeff, Literals>::each(
      FN(expr_create_add_raw_terms),
      [](Call&, auto& c, auto& v, auto& d, auto& w) { return plain(c.p * v.p + d.p * w.p); });
  EACH(expr_create_add_var_var, sum);
  EACH(expr_create_add_var_int, sum);
  EACH(expr_create_sub_int_var, difference);
  EACH(expr_create_add_term_var, sum);
  EACH(expr_create_add_term_int, sum);
  EACH(expr_create_sub_int_term, difference);
  EACH(expr_create_add_term_term, sum);
  Table<Taken<zorv_term>, T>::each(FN(expr_create_add_term_term_ml), sum);
  Table<Taken<zorv_term>, Taken<zorv_term>>::each(FN(expr_create_add_term_term_mm), sum);
  EACH(expr_create_sub_term_term, difference);
  Table<Coeff, Bulk>::each(FN(expr_create_from_bulk), sum);
  Table<In<zorv_expr*>, Coeff, Bulk>::each(
      FN(expr_iadd_terms_bulk),
      [](Call&, auto& e, auto& k, auto& terms) { return kept(e, e.p + k.p + terms.p); });
}

void sums() {
  using E = In<zorv_expr*>;
  using Moved = Head<Block::kAdopted>;
  EACH(expr_iadd_var, adding<Rule::kJoin>);
  EACH(expr_iadd_term, adding<Rule::kJoin>);
  Table<E, Taken<zorv_term>>::each(FN(expr_iadd_term_move), adding<Rule::kJoin>);
  Table<E, Coeff, Literals>::each(FN(expr_iadd_raw_term), adding_scaled<Rule::kJoin>);
  EACH(expr_iadd_int, adding<Rule::kKeep>);
  EACH(expr_isub_int, (adding<Rule::kKeep, -1>));
  EACH(expr_isub_var, (adding<Rule::kKeep, -1>));
  EACH(expr_isub_term, (adding<Rule::kKeep, -1>));
  Table<E, Coeff, Literals>::each(FN(expr_isub_raw_term), adding_scaled<Rule::kKeep, -1>);
  Table<E, Coeff, Moved>::each(FN(expr_iadd_move_term), adding_scaled<Rule::kKeep>);
  Table<E, Coeff, Moved>::each(FN(expr_isub_move_term), adding_scaled<Rule::kKeep, -1>);
  WHOLE(expr_iadd_expr, sum_of_both<true>);
  WHOLE(expr_clone_add_expr, sum_of_both<false>);
  EACH(expr_isub_expr, difference_of_both);
  EACH(expr_clone_sub_expr, difference_of_both);
  EACH(expr_clone_add_int, [](Call&, auto& e, auto& c) {
    return c.integer() == 0 && e.constrained() ? e : kept(e, e.p + c.p);
  });
  EACH(expr_clone_sub_int, (adding<Rule::kKeep, -1>));
  EACH(expr_clone_add_var, adding<Rule::kKeep>);
  EACH(expr_clone_sub_var, (adding<Rule::kKeep, -1>));
  EACH(expr_clone_add_term, adding<Rule::kJoin>);
  EACH(expr_clone_sub_term, (adding<Rule::kKeep, -1>));
}

void products() {
  EACH(expr_imul_int, times_integer);
  EACH(expr_clone_mul_int, times_integer);
  EACH(expr_negate, negative);
  EACH(expr_imul_var, free_product);
  Table<In<zorv_expr*>, Coeff, Head<Block::kCopied>>::each(FN(expr_imul_term_direct), free_product);
  EACH(expr_imul_expr, free_product);
  EACH(expr_mul_expr, free_product);
  EACH(expr_sqr, [](Call& call, auto& e) { return free_product(call, e, e); });
  WHOLE(expr_idiv_int, [](Call& call, auto& e, auto& c) {
    call.legal = !e.model.e[0].declared() && divides(c.value, e.handle);
    const Poly p = call.legal ? pointwise(e.model.e[0].p, number(c.value), quotient) : Poly();
    return Thing{nullptr, {}, {plain(p)}};
  });
}

// Whether `e` has no atoms in its polynomial, nor in any body.
bool is_binary(const zorv_expr* e) {
  if (zorv_expr_has_int_atom(e)) return false;
  if (zorv_expr_has_body(e) && zorv_expr_has_int_atom(zorv_exprexprelem_get_body(e))) return false;
  for (uint64_t i = 0; i < zorv_cons_item_count(e); ++i) {
    zorv_expr* body = nullptr;
    Wire out[3];
    zorv_cons_item_info(e, i, &body, out[0].get(), out[1].get(), out[2].get());
    const bool binary = !zorv_expr_has_int_atom(body);
    zorv_expr_destroy(body);
    if (!binary) return false;
  }
  return true;
}

void rewriting() {
  EACH(expr_simplify, [](Call&, auto& e) { return rewritten(e, [](const Poly& p) { return p; }); });
  EACH(expr_simplify_as_binary, [](Call&, auto& e) { return rewritten(e, only_bits); });
  WHOLE(expr_simplify_as_spin, [](Call& call, auto& e) {
    call.usable = is_binary(e.handle);
    return Thing{nullptr, {}, {rewritten(e.model.e[0], only_spin)}};
  });
  // Only there and back again does the value come again, 2^D fold.
  Table<In<const zorv_expr*>>::whole(
      "there_and_back",
      +[](const zorv_expr* e) {
        zorv_expr* spin = zorv_expr_binary_to_spin(e);
        zorv_expr* back = zorv_expr_spin_to_binary(spin);
        zorv_expr_destroy(spin);
        return back;
      },
      [](Call& call, auto& e) {
        const coeff_t factor = coeff_t(1) << zorv_expr_max_degree(e.handle);
        call.legal = !e.model.e[0].declared() && !zorv_expr_has_int_atom(e.handle);
        return Thing{nullptr, {}, {plain(number(factor) * only_bits(e.model.e[0].p))}};
      });
  Table<In<const zorv_expr*>, Replacements>::whole(
      FN(expr_replace), [](Call& call, auto& e, auto& map) {
        call.usable = zorv_expr_max_degree(e.handle) <= 2;
        Thing should{nullptr, {}, {e.model.e[0]}};
        Elem& result = should.e[0];
        result = result.declared() ? rewritten(result, [](const Poly&) { return Poly(); })
                                   : plain(Poly());
        if (!call.usable) return should;
        // By the definition, literal by literal.
        Poly& p = result.p;
        for (size_t s = 0; s < kSamples; ++s) {
          p[s] = evaluate(e.handle, [&](uint32_t literal) {
            for (size_t i = map.keys.size(); i-- > 0;) {
              if (map.keys[i] == literal) return *world->things[kExpr][map.slots[i]].e[0].p[s];
            }
            return world->value(literal, s);
          });
        }
        return should;
      });
}

void questions() {
  EACH(expr_binarize, [](Call& call, auto& e) {
    call.legal = !e.constrained();
    return plain(only_bits(e.p));
  });
  QUERY(expr_str, [](const char* text, auto&) { return *text != '\0'; });
  QUERY(expr_solver_type, [](const char* text, auto&) { return std::strcmp(text, "cppint") == 0; });
  QUERY(expr_has, [](int got, auto& e, auto& literal) {
    bool has = false;
    for (uint64_t i = 0; i < zorv_expr_term_count(e.handle); ++i) {
      const zorv_term* t = zorv_expr_term_at(e.handle, i);
      for (uint32_t j = 0; j < zorv_term_degree(t); ++j) {
        has |= ((zorv_term_var_at(t, j) ^ literal.value) & ~kComplementBit) == 0;
      }
    }
    return got == has;
  });
  Table<In<const zorv_expr*>, Number<int, 0, 9>>::query(
      FN(expr_term_count_degree), [](uint64_t got, auto& e, auto& degree) {
        uint64_t n = 0;
        for (uint64_t i = 0; i < zorv_expr_term_count(e.handle); ++i) {
          n += static_cast<int>(zorv_term_degree(zorv_expr_term_at(e.handle, i))) == degree.value;
        }
        return got == n;
      });
  Table<In<const zorv_expr*>, Values, Out>::query(
      FN(expr_eval_map),
      [](bool, auto& e, auto&, auto& out) { return out.value() == *e.model.e[0].p[kBits]; },
      [](Call& call, auto& e, auto& values, auto&) {
        call.legal = !e.model.e[0].declared() && values.cover(e.handle);
      });
  QUERY(expr_pos_sum, [](bool, auto& e, auto& out) {
    return out.value() >= *e.model.e[0].p[kBits] && out.value() >= *e.model.e[0].p[kMoreBits];
  });
  QUERY(expr_neg_sum, [](bool, auto& e, auto& out) {
    return out.value() <= *e.model.e[0].p[kBits] && out.value() <= *e.model.e[0].p[kMoreBits];
  });
}

void integers() {
  // VarInt values: their bits are new variables, whose values are whatever they are.
  Table<NoName, SmallCoeff, Coeff>::whole(FN(varintelem_create), [](Call&, auto&, auto&, auto&) {
    return Thing{nullptr, {}, {{Poly(), Tag::kVarInt, {}, {}, 0}}};
  });
  const auto legal = [](Call& call, auto& e, auto&...) {
    call.legal = e.model.e[0].tag == Tag::kVarInt;
  };
  QUERY(
      varintelem_min, [](bool, auto&, auto&) { return true; }, legal);
  QUERY(
      varintelem_max, [](bool, auto&, auto&) { return true; }, legal);
  QUERY(
      varintelem_var_count,
      [](uint64_t n, auto& e) {
        coeff_t sum;
        Wire lo, hi;
        zorv_varintelem_min(e.handle, lo.get()), zorv_varintelem_max(e.handle, hi.get());
        for (uint64_t i = 0; i < n; ++i) {
          Wire c;
          zorv_varintelem_coeff(e.handle, i, c.get());
          if (zorv_varintelem_var(e.handle, i) >= kAtomBit) return false;
          sum += c.value();
        }
        return sum == std::max(coeff_t(0), coeff_t(hi.value() - lo.value()));
      },
      legal);
  EACH(varintelem_replace_expr, [](Call&, auto& element, auto& e) { return with(element, e.p); });
}

Elem requirement(const Elem& e, std::vector<Interval> allowed, coeff_t lo, coeff_t hi) {
  return single(number(0), Tag::kDeclared, {e.p, true, lo, hi, std::move(allowed)});
}
Elem objective(Call& call, const Elem& f, uint32_t k, const coeff_t& lo) {
  call.legal = !f.declared() && (k == 1 || k == 2);
  return single(number(0), Tag::kDeclared, {f.p, true, lo, 0, {}, k, 1});
}
Interval hull(const std::vector<Interval>& ranges) {
  Interval all = ranges.empty() ? Interval() : ranges[0];
  for (const auto& [lo, hi] : ranges) {
    all = {std::min(all.first, lo), std::max(all.second, hi)};
  }
  return all;
}

void constraints() {
  EACH(cons_mark, [](Call&, auto& e) {
    if (e.declared()) return with(e, number(0));
    Elem marked = {number(0), Tag::kDeclared, e.items, e.rest, 0};
    if (!e.constrained()) marked.rest = e.p;
    return marked;
  });
  EACH(cons_between, [](Call& call, auto& e, auto& lo, auto& hi) {
    call.legal = !e.declared();
    return requirement(e, {}, lo.integer(), hi.integer());
  });
  Table<In<const zorv_expr*>, SmallCoeff, SmallCoeff>::each(
      FN(cons_between), [](Call& call, auto& e, auto& lo, auto& hi) {
        call.legal = !e.declared();
        return requirement(e, {}, lo.integer(), hi.integer());
      });
  Table<In<const zorv_expr*>, Intervals>::each(FN(cons_equal), [](Call& call, auto& e, auto& in) {
    call.legal = !e.declared() && !in.ranges.empty();
    const auto [lo, hi] = hull(in.ranges);
    return requirement(e, in.ranges, lo, hi);
  });
  EACH(exprexprelem_create, [](Call& call, auto& penalty, auto& body) {
    call.legal = !penalty.declared() && !body.declared();
    return single(penalty.p, Tag::kSingle, {body.p, false, 0, 0, {}, 2, 0});
  });
  EACH(exprexpr_set_bounds, [](Call& call, auto& e, auto& lo, auto& hi) {
    call.legal = e.tag == Tag::kSingle;
    if (!call.legal) return e;
    Entry& entry = *e.items[0].entry;
    entry.bounded = true, entry.lo = lo.integer(), entry.hi = hi.integer();
    return e;
  });
  Table<In<const zorv_expr*>, Intervals>::each(
      FN(exprexpr_set_allowed), [](Call& call, auto& e, auto& in) {
        call.legal = e.tag == Tag::kSingle && !in.ranges.empty();
        if (!call.legal) return e;
        Entry& entry = *e.items[0].entry;
        std::tie(entry.lo, entry.hi) = hull(in.ranges);
        entry.bounded = true, entry.allowed = in.ranges;
        return e;
      });
  Table<In<const zorv_expr*>, Number<uint32_t, 0, 4>>::each(
      FN(abs_term), [](Call& call, auto& f, auto& k) { return objective(call, f, k.value, 0); });
  // The lower bound of a relu term is min(0, neg_sum).
  Table<In<const zorv_expr*>, Number<uint32_t, 0, 4>>::whole(FN(relu_term), [](Call& call, auto& f,
                                                                               auto& k) {
    Wire lo;
    zorv_expr_neg_sum(f.handle, lo.get());
    return Thing{
        nullptr, {}, {objective(call, f.model.e[0], k.value, std::min(lo.value(), coeff_t(0)))}};
  });
  QUERY(exprexpr_get_bounds, [](int got, auto& e, auto& lo, auto& hi) {
    const Elem& x = e.model.e[0];
    if (x.tag != Tag::kSingle || !x.items[0].entry->bounded) return got == 0;
    return got == 1 && lo.value() == x.items[0].entry->lo && hi.value() == x.items[0].entry->hi;
  });
  QUERY(
      exprexprelem_get_body,
      [](const zorv_expr* body, auto& e) {
        return read(body) == e.model.e[0].items[0].entry->body;
      },
      [](Call& call, auto& e) {
        call.legal = e.model.e[0].items.size() == 1 && !e.model.e[0].rest;
      });
}

// Penalties with slack variables: what they are worth with the best slack.
zorv_expr* checked_penalty(const zorv_expr* f, const CoeffWire* lo, const CoeffWire* hi) {
  const auto first = static_cast<uint32_t>(zorv_var_count());
  zorv_expr* penalty = zorv_between(f, lo, hi);
  const Poly value = read(f), at_best = least(penalty, first);
  for (const size_t s : {kBits, kMoreBits}) {
    if (!at_best[s]) continue;
    const Entry entry = {{}, true, value_of(lo), value_of(hi), {}, 2, 0};
    const bool holds = entry.lo > entry.hi || entry.violation(*value[s]) == 0;
    if (holds ? *at_best[s] != 0 : *at_best[s] <= 0) wrong("penalty at its best");
  }
  return penalty;
}
zorv_expr* checked_expansion(const zorv_expr* e) {
  const auto first = static_cast<uint32_t>(zorv_var_count());
  zorv_expr* expanded = zorv_expr_expand_cons(e);
  return least(expanded, first), expanded;
}
zorv_expr* checked_reduction(const zorv_expr* e) {
  const auto first = static_cast<uint32_t>(zorv_var_count());
  zorv_expr* reduced = zorv_expr_reduce(e);
  const Poly value = read(e), at_best = least(reduced, first);
  for (const size_t s : {kBits, kMoreBits}) {
    if (at_best[s] && *at_best[s] != *value[s]) wrong("reduction at its best");
  }
  if (zorv_expr_max_degree(reduced) > 2) wrong("degree of a reduction");
  return reduced;
}

// An equality times any weight, a range times one above 0, with bounds and no abs or relu term.
bool expands(const Item& item) {
  const Entry& entry = *item.entry;
  return entry.bounded && entry.kind == 0 && (entry.lo == entry.hi || item.weight >= 0);
}

void slack() {
  const auto open = [](Call&, const auto&...) { return plain(Poly()); };
  Table<In<const zorv_expr*>, SmallCoeff, SmallCoeff>::each("zorv_between", checked_penalty, open);
  Table<In<const zorv_expr*>>::whole(
      "zorv_expr_reduce", checked_reduction, [](Call& call, auto& e) {
        call.legal = !e.model.e[0].declared() && !zorv_expr_has_int_atom(e.handle);
        return Thing{nullptr, {}, {plain(Poly())}};
      });
  Table<In<const zorv_expr*>>::each("zorv_expr_expand_cons", checked_expansion,
                                    [](Call& call, auto& e) {
                                      if (!e.declared())
                                        return e.tag == Tag::kVarInt ? e : plain(e.p);
                                      for (const Item& item : e.items)
                                        call.legal = call.legal && expands(item);
                                      return plain(Poly());
                                    });
}

}  // namespace

void add_expr_calls() {
  terms(), building(), sums(), products(), rewriting(), questions(), integers(), constraints(),
      slack();
}

}  // namespace zorv::fuzz
