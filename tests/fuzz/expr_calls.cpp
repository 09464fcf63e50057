// Variables, terms, expressions, integers and constraints.
#include <cstring>

#include "fuzz/call.h"

namespace zorv::fuzz {

namespace {

// The values of all variables that were drawn from, as zorv_expr_eval_map takes them.
struct Values : Operand<const uint32_t*, const CoeffWire* const*, uint64_t> {
  explicit Values(Call&) {
    for (const uint32_t literal : world->literals) {
      own.emplace_back(std::vector<coeff_t>{world->value(literal, kBits)});
    }
    for (const Wires& wires : own) list.push_back(wires.c.data());
    text = numbers_text("uint32_t", world->literals) + ", " +
           list_text("const CoeffWire*", own, [](auto& wires) { return wires.text; }) + ", " +
           std::to_string(list.size());
    c = {world->literals.data(), list.data(), list.size()};
  }
  std::vector<Wires> own;
  std::vector<const CoeffWire*> list;
};

// Literals and the expressions in their places.
struct Replacements : Operand<const uint32_t*, const Expr*, uint64_t> {
  explicit Replacements(Call& call) : exprs(call, call.draw(4)) {
    while (keys.size() < exprs.list.size()) keys.push_back(Literal(call).value);
    text = numbers_text("uint32_t", keys) + ", " + exprs.text + ", " + std::to_string(keys.size());
    c = {keys.data(), exprs.list.data(), keys.size()};
  }
  Elements<Expr> exprs;
  std::vector<uint32_t> keys;
};

// How the tag of the first operand fares when something is added to it.
enum class Rule { kJoin, kKeep };

template <Rule kRule>
Elem tagged(Call& call, const Elem& e, const Poly& added, int sign) {
  const Poly p = e.p + number(sign) * added;
  if (kRule == Rule::kKeep) return kept(e, p);
  return e.constrained() ? joined({e, plain(added)}, p, call.legal) : plain(p);
}
template <Rule kRule, int kSign = 1>
constexpr auto adding = [](Call& call, const Elem& e, const Elem& b, const auto&... factor) {
  return tagged<kRule>(call, e, (b.p * ... * factor.p), kSign);
};

constexpr auto same = [](Call&, const Elem& e, const auto&...) { return e; };
constexpr auto sum = [](Call&, const Elem& a, const Elem& b) { return plain(a.p + b.p); };
constexpr auto difference = [](Call&, const Elem& a, const Elem& b) { return plain(a.p - b.p); };
constexpr auto product = [](Call&, const Elem& a, const Elem& b) { return plain(a.p * b.p); };
constexpr auto open = [](Call&, const auto&...) { return plain(Poly()); };

// A product of polynomials, which no declared constraint survives.
constexpr auto free_product = [](Call& call, const Elem& a, const auto&... b) {
  if ((a.declared() || ... || b.declared())) call.legal = false;
  return plain((a.p * ... * b.p));
};
constexpr auto times_integer = [](Call& call, const Elem& e, const Elem& c) {
  return scaled(e, c.integer(), e.p * c.p, call.legal);
};

// e + b: in place a zero adopts the constraints of the other side.
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

// The name of an element of a block; `got` names the literal whose turn it is.
bool is_named(uint32_t literal, const Name& name, const Shape& shape, uint64_t i) {
  std::string indices;
  for (size_t k = shape.size(); k-- > 0; i /= shape[k]) {
    indices = "[" + std::to_string(i % shape[k]) + "]" + indices;
  }
  const std::string got = zorv_var_str(literal);
  const bool given = name.value != nullptr && *name.value != '\0';
  return given ? got == name.value + indices : got[0] == '{' && got.ends_with("}" + indices);
}
bool are_named(uint32_t first, const Name& name, const Shape& shape) {
  bool all = true;
  for (uint64_t i = 0; i < extent(shape); ++i) {
    all = all && is_named(first + static_cast<uint32_t>(i), name, shape, i);
  }
  return all;
}

void variables() {
  QUERY(new_var, [](uint32_t v, auto& name) {
    return v + 1 == zorv_var_count() && is_named(v, name, {}, 0);
  });
  Table<Name, Extents>::query(FN(new_var_array), [](uint32_t first, auto& name, auto& extents) {
    return first + extent(extents.shape) == zorv_var_count() &&
           are_named(first, name, extents.shape);
  });
  const auto extends = [](Call& call, auto&... operands) {
    const auto bounds = std::tie(operands...);
    constexpr size_t n = sizeof...(operands);
    call.legal = std::get<n - 2>(bounds).value < std::get<n - 1>(bounds).value;
  };
  const auto known = [](uint32_t atom, const coeff_t& lo, const coeff_t& hi) {
    world->atoms.emplace_back(lo, hi);
    return got<2>(zorv_int_var_bounds, atom) == std::array<coeff_t, 2>{lo, hi};
  };
  QUERY(
      new_int_var,
      [=](uint32_t atom, auto& name, auto& lo, auto& hi) {
        return atom + 1 == kAtomBit + zorv_int_var_count() && known(atom, lo.value, hi.value) &&
               is_named(atom, name, {}, 0);
      },
      extends);
  Table<Name, Extents, SmallCoeff, Coeff>::query(
      FN(new_int_var_array),
      [=](uint32_t first, auto& name, auto& extents, auto& lo, auto& hi) {
        const auto n = static_cast<uint32_t>(extent(extents.shape));
        bool right = first + n == kAtomBit + zorv_int_var_count();
        for (uint32_t i = 0; i < n; ++i) right = known(first + i, lo.value, hi.value) && right;
        return right && are_named(first, name, extents.shape);
      },
      extends);
  QUERY(
      int_var_bounds,
      [](bool, auto& atom, auto& lo, auto& hi) {
        return Interval(lo.value(), hi.value()) == world->atoms[atom.value - kAtomBit];
      },
      [](Call& call, auto& atom, auto&...) { call.legal = (atom.value & kAtomBit) != 0; });
  QUERY(var_str, [](const std::string& text, auto& literal) {
    const bool negated = (literal.value & kComplementBit) != 0;
    return text ==
           (negated ? "~" : "") + std::string(zorv_var_str(literal.value & ~kComplementBit));
  });
  QUERY(auto_var_name, [](const std::string& name) { return name != zorv_auto_var_name(); });
  QUERY(used_var_count, [](uint64_t n) {
    n -= zorv_var_count();
    for (const auto& [lo, hi] : world->atoms) {
      const Wires ends({lo, hi});
      n -= zorv_comp_coeffs_count(&ends.c[0], &ends.c[1]);
    }
    return n == 0;
  });
  QUERY(const_str,
        [](const std::string& text, auto&) { return text == "Invalid string parameter"; });
}

void terms() {
  EACH(term_create, same);
  EACH(term_create_var, product);
  EACH(term_create_var_var, free_product);
  Table<Coeff, Head<const uint32_t*>>::each(FN(term_create_vararray), product);
  EACH(term_clone, same);
  EACH(term_mul_var, product);
  EACH(term_mul_coeff, product);
  EACH(term_mul_term, product);
  // Returns its first operand.
  Table<In<zorv_term*>, In<const zorv_term*>>::each(
      "(void)zorv_term_mul_term_move",
      +[](zorv_term* a, const zorv_term* b) {
        check(zorv_term_mul_term_move(a, b) == a, "another term");
      },
      product);
  EACH(term_negate, [](Call&, auto& t) { return plain(number(-1) * t.p); });
  WHOLE(term_div_coeff, [](Call& call, auto& t, auto& c) {
    const coeff_t own = got(zorv_term_coeff, t.handle);
    return Thing{nullptr, {}, {divided(call, t.model.e[0], c.value, own)}};
  });
  QUERY(term_str, [](const std::string& text, auto& t) {
    const coeff_t c = got(zorv_term_coeff, t.handle);
    if (zorv_term_degree(t.handle) == 0) return text == c.str();
    std::string all = c == -1 ? "-" : c == 1 ? "" : c.str() + "*";
    for (const uint32_t v : literals_of(t.handle)) all += std::string(zorv_var_str(v)) + "*";
    return text + "*" == all;
  });
}

void building() {
  using Moved = Head<uint64_t>;
  const auto product_sum = [](Call&, auto& c, auto& v, auto& k) { return plain(c.p * v.p + k.p); };
  Table<>::each(FN(expr_create), [](Call&) { return plain(number(0)); });
  EACH(expr_create_int, same);
  EACH(expr_create_var, same);
  Table<In<zorv_term*>, Number<int, 0, 1>>::each(FN(expr_create_term), same);
  Table<Taken, Number<int, 1, 2>>::each(FN(expr_create_term), same);
  EACH(expr_clone, same);
  EACH(exprexprelem_clone, same);
  EACH(varintelem_clone, same);
  Table<Coeff, Literals, Coeff>::each(FN(expr_create_raw_term), product_sum);
  Table<Coeff, Moved, Coeff>::each(FN(expr_create_move_term), product_sum);
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
  Table<Taken, In<const zorv_term*>>::each(FN(expr_create_add_term_term_ml), sum);
  Table<Taken, Taken>::each(FN(expr_create_add_term_term_mm), sum);
  EACH(expr_create_sub_term_term, difference);
  Table<Coeff, Bulk>::each(FN(expr_create_from_bulk), sum);

  using E = In<zorv_expr*>;
  Table<E, Coeff, Bulk>::each(FN(expr_iadd_terms_bulk), [](Call&, auto& e, auto& k, auto& terms) {
    return kept(e, e.p + k.p + terms.p);
  });
  EACH(expr_iadd_var, adding<Rule::kJoin>);
  EACH(expr_iadd_term, adding<Rule::kJoin>);
  Table<E, Taken>::each(FN(expr_iadd_term_move), adding<Rule::kJoin>);
  Table<E, Coeff, Literals>::each(FN(expr_iadd_raw_term), adding<Rule::kJoin>);
  EACH(expr_iadd_int, adding<Rule::kKeep>);
  EACH(expr_isub_int, (adding<Rule::kKeep, -1>));
  EACH(expr_isub_var, (adding<Rule::kKeep, -1>));
  EACH(expr_isub_term, (adding<Rule::kKeep, -1>));
  Table<E, Coeff, Literals>::each(FN(expr_isub_raw_term), adding<Rule::kKeep, -1>);
  Table<E, Coeff, Moved>::each(FN(expr_iadd_move_term), adding<Rule::kKeep>);
  Table<E, Coeff, Moved>::each(FN(expr_isub_move_term), adding<Rule::kKeep, -1>);
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
  EACH(expr_negate, [](Call& call, auto& e) {
    const Poly p = number(-1) * e.p;
    return e.declared() ? scaled(e, -1, p, call.legal) : plain(p);
  });
  EACH(expr_imul_var, free_product);
  Table<In<zorv_expr*>, Coeff, Head<const uint32_t*>>::each(FN(expr_imul_term_direct),
                                                            free_product);
  EACH(expr_imul_expr, free_product);
  EACH(expr_mul_expr, free_product);
  EACH(expr_sqr, [](Call& call, auto& e) { return free_product(call, e, e); });
  WHOLE(expr_idiv_int, [](Call& call, auto& e, auto& c) {
    const Elem& x = e.model.e[0];
    call.legal = !x.declared();
    return Thing{nullptr, {}, {plain(divided(call, x, c.value, got(zorv_expr_gcd, e.handle)).p)}};
  });
}

// Whether `e` has no atoms in its polynomial, nor in any body.
bool is_binary(const zorv_expr* e) {
  if (zorv_expr_has_int_atom(e)) return false;
  if (zorv_expr_has_body(e) && zorv_expr_has_int_atom(zorv_exprexprelem_get_body(e))) return false;
  for (uint64_t i = 0; i < zorv_cons_item_count(e); ++i) {
    if (zorv_expr_has_int_atom(Body(e, i).e)) return false;
  }
  return true;
}

// By the definition, literal by literal.
Elem replaced(Call& call, const zorv_expr* e, const Elem& was, const Replacements& map) {
  call.usable = call.usable && zorv_expr_max_degree(e) <= 2;
  Elem result = was.declared() ? rewritten(was, [](const Poly&) { return Poly(); }) : Elem();
  for (size_t s = 0; call.usable && s < kSamples; ++s) {
    result.p[s] = evaluate(e, [&](uint32_t literal) {
      for (size_t i = map.keys.size(); i-- > 0;) {
        if (map.keys[i] == literal) return *map.exprs.e[i].p[s];
      }
      return world->value(literal, s);
    });
  }
  return result;
}

void rewriting() {
  EACH(expr_simplify, [](Call&, auto& e) { return rewritten(e, [](const Poly& p) { return p; }); });
  EACH(expr_simplify_as_binary, [](Call&, auto& e) { return rewritten(e, only_bits); });
  WHOLE(expr_simplify_as_spin, [](Call& call, auto& e) {
    call.usable = is_binary(e.handle);
    return Thing{nullptr, {}, {rewritten(e.model.e[0], only_spin)}};
  });
  // Variables are the same ones as spins and as bits.
  WHOLE(expr_binary_to_spin, [](Call& call, auto& e) {
    const Elem& x = e.model.e[0];
    call.legal = !x.declared() && !zorv_expr_has_int_atom(e.handle);
    Poly p;
    p[kSpin] = *x.p[kBits] * (coeff_t(1) << zorv_expr_max_degree(e.handle));
    return Thing{nullptr, {}, {plain(p)}};
  });
  WHOLE(expr_spin_to_binary, [](Call& call, auto& e) {
    const Elem& x = e.model.e[0];
    call.legal = !x.declared() && !zorv_expr_has_int_atom(e.handle);
    Poly p;
    p[kBits] = x.p[kSpin];
    return Thing{nullptr, {}, {plain(p)}};
  });
  Table<In<const zorv_expr*>, Replacements>::whole(
      FN(expr_replace), [](Call& call, auto& e, auto& map) {
        return Thing{nullptr, {}, {replaced(call, e.handle, e.model.e[0], map)}};
      });
  Table<In<zorv_array_expr*>, Replacements>::whole(
      FN(array_expr_replace), [](Call& call, auto& a, auto& map) {
        Thing result = a.model;
        for (size_t i = 0; i < result.e.size(); ++i) {
          result.e[i] = replaced(call, zorv_array_expr_ref(a.handle, i), a.model.e[i], map);
        }
        return result;
      });
}

void questions() {
  WHOLE(expr_binarize, [](Call& call, auto& e) {
    call.legal = !e.model.e[0].constrained();
    call.usable = zorv_expr_max_degree(e.handle) <= 2;  // an atom has up to 65 bits
    return Thing{nullptr, {}, {plain(only_bits(e.model.e[0].p))}};
  });
  QUERY(expr_str, [](const char* text, auto& e) {
    const coeff_t k = got(zorv_expr_constant, e.handle);
    const uint64_t n = zorv_expr_term_count(e.handle);
    std::string all = k != 0 || n == 0 ? k.str() : "";
    for (uint64_t i = 0; i < n; ++i) {
      const zorv_term* t = zorv_expr_term_at(e.handle, i);
      if (!all.empty()) all += got(zorv_term_coeff, t) < 0 ? " " : " +";
      all += zorv_term_str(t);
    }
    return text == all;
  });
  QUERY(expr_solver_type, [](const char* text, auto&) { return std::strcmp(text, "cppint") == 0; });
  QUERY(expr_has, [](int got, auto& e, auto& literal) {
    const auto all = literals_of(e.handle);
    return got == std::any_of(all.begin(), all.end(), [&](uint32_t other) {
             return ((other ^ literal.value) & ~kComplementBit) == 0;
           });
  });
  Table<In<const zorv_expr*>, Number<int, 0, 9>>::query(
      FN(expr_term_count_degree), [](uint64_t got, auto& e, auto& degree) {
        for (uint64_t i = 0; i < zorv_expr_term_count(e.handle); ++i) {
          got -= zorv_term_degree(zorv_expr_term_at(e.handle, i)) == uint32_t(degree.value);
        }
        return got == 0;
      });
  Table<In<const zorv_expr*>, Values, Out>::query(
      FN(expr_eval_map),
      [](bool, auto& e, auto&, auto& out) { return out.value() == *e.model.e[0].p[kBits]; },
      [](Call& call, auto& e, auto&, auto&) {
        const auto all = literals_of(e.handle);
        call.legal = !e.model.e[0].declared() && std::all_of(all.begin(), all.end(), [](auto v) {
          return std::count(world->literals.begin(), world->literals.end(), v & ~kComplementBit) >
                 0;
        });
      });
  QUERY(expr_pos_sum, [](bool, auto& e, auto& out) {
    return out.value() >= *e.model.e[0].p[kBits] && out.value() >= *e.model.e[0].p[kMoreBits];
  });
  QUERY(expr_neg_sum, [](bool, auto& e, auto& out) {
    return out.value() <= *e.model.e[0].p[kBits] && out.value() <= *e.model.e[0].p[kMoreBits];
  });
}

// A fresh VarInt: its record, and its polynomial as the record has it.
zorv_expr* checked_varint(zorv_expr* e, const CoeffWire* lo, const CoeffWire* hi) {
  const coeff_t least = value_of(*lo), most = std::max(least, value_of(*hi));
  check(got(zorv_varintelem_min, e) == least && got(zorv_varintelem_max, e) == value_of(*hi),
        "ends");
  Poly value = number(least);
  coeff_t all = least;
  for (uint64_t i = 0; i < zorv_varintelem_var_count(e); ++i) {
    const coeff_t c = got(zorv_varintelem_coeff, e, i);
    value = value + number(c) * world->value(zorv_varintelem_var(e, i));
    check(c > 0 && c <= all - least + 1, "a gap");
    all += c;
  }
  check(all == most && read(e) == value, "VarInt");
  return e;
}

void integers() {
  const Elem varint = {Poly(), Tag::kVarInt, {}, {}, 0};
  const auto fresh = [=](Call&, auto&...) { return varint; };
  Table<Name, SmallCoeff, Coeff>::each(
      "zorv_varintelem_create",
      +[](const char* name, const CoeffWire* lo, const CoeffWire* hi) {
        return checked_varint(zorv_varintelem_create(name, lo, hi), lo, hi);
      },
      fresh);
  Table<Name, Extents, SmallCoeff, SmallCoeff>::whole(
      "zorv_array_varint_create_uniform",
      +[](const char* name, const uint64_t* shape, size_t rank, const CoeffWire* lo,
          const CoeffWire* hi) {
        zorv_array_expr* a = zorv_array_varint_create_uniform(name, shape, rank, lo, hi);
        for (uint64_t i = 0; i < zorv_array_expr_size(a); ++i) {
          checked_varint(zorv_array_expr_ref(a, i), lo, hi);
        }
        return a;
      },
      [=](Call&, auto&, auto& extents, auto&...) {
        return Thing{nullptr, extents.shape, std::vector<Elem>(extent(extents.shape), varint)};
      });
  // Any coefficients and variables will do.
  struct Bits : Operand<const CoeffWire*, const uint32_t*, uint64_t> {
    explicit Bits(Call& call) : coeffs(call, call.draw(4)), literals(call, coeffs.list.size()) {
      text = coeffs.text + ", " + literals.text + ", " + std::to_string(coeffs.list.size());
      c = {coeffs.list.data(), literals.list.data(), coeffs.list.size()};
    }
    Elements<CoeffWire> coeffs;
    Elements<uint32_t> literals;
  };
  Table<Name, SmallCoeff, SmallCoeff, Bits>::each(
      FN(varintelem_create_with_vars), [=](Call&, auto&, auto& lo, auto&, auto& bits) {
        Elem e = with(varint, lo.p);
        for (size_t i = 0; i < bits.coeffs.e.size(); ++i) {
          e.p = e.p + bits.coeffs.e[i].p * bits.literals.e[i].p;
        }
        return e;
      });
  const auto legal = [](Call& call, auto& e, auto&...) {
    call.legal = e.model.e[0].tag == Tag::kVarInt;
  };
  const auto some = [](bool, auto&, auto&) { return true; };  // looked at above
  QUERY(varintelem_min, some, legal);
  QUERY(varintelem_max, some, legal);
  // Greedily from the last position.
  QUERY(
      varintelem_var_count,
      [](uint64_t n, auto& e) {
        const coeff_t value = got(zorv_varintelem_min, e.handle) + 3;
        const Wires wire({value});
        std::vector<uint32_t> vars(n);
        Written digits(n);
        check(zorv_varintelem_decompose(e.handle, wire.c.data(), vars.data(), digits.c.data()) == n,
              "number of digits");
        coeff_t left = 3;
        for (uint64_t i = n; i-- > 0;) {
          const coeff_t c = got(zorv_varintelem_coeff, e.handle, i);
          if (vars[i] != zorv_varintelem_var(e.handle, i)) return false;
          if (value_of(digits.c[i]) != (c <= left ? 1 : 0)) return false;
          if (c <= left) left -= c;
        }
        return true;
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
  const auto between = [](Call& call, auto& e, auto& lo, auto& hi) {
    call.legal = !e.declared();
    return requirement(e, {}, lo.integer(), hi.integer());
  };
  EACH(cons_between, between);
  Table<In<const zorv_expr*>, SmallCoeff, SmallCoeff>::each(FN(cons_between), between);
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
  using Exponent = Number<uint32_t, 0, 4>;
  Table<In<const zorv_expr*>, Exponent>::each(
      FN(abs_term), [](Call& call, auto& f, auto& k) { return objective(call, f, k.value, 0); });
  // The lower bound of a relu term is min(0, neg_sum).
  Table<In<const zorv_expr*>, Exponent>::whole(FN(relu_term), [](Call& call, auto& f, auto& k) {
    const coeff_t lo = std::min(got(zorv_expr_neg_sum, f.handle), coeff_t(0));
    return Thing{nullptr, {}, {objective(call, f.model.e[0], k.value, lo)}};
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

zorv_expr* checked_between(const zorv_expr* f, const CoeffWire* lo, const CoeffWire* hi) {
  const auto first = static_cast<uint32_t>(zorv_var_count());
  zorv_expr* penalty = zorv_between(f, lo, hi);
  check_penalty(penalty, read(f), value_of(*lo), value_of(*hi), first);
  return penalty;
}
zorv_expr* checked_expansion(const zorv_expr* e) {
  const auto first = static_cast<uint32_t>(zorv_var_count());
  zorv_expr* expanded = zorv_expr_expand_cons(e);
  return least(expanded, first), expanded;
}
void check_reduction(const zorv_expr* e, const zorv_expr* reduced, uint32_t first) {
  const Poly value = read(e), at_best = least(reduced, first);
  for (const size_t s : {kBits, kMoreBits}) {
    check(!at_best[s] || *at_best[s] == *value[s], "reduction at its best");
  }
  check(zorv_expr_max_degree(reduced) <= 2, "degree of a reduction");
}

// An equality times any weight, a range times one above 0, with bounds and no abs or relu term.
bool expands(const Item& item) {
  const Entry& entry = *item.entry;
  return entry.bounded && entry.kind == 0 && (entry.lo == entry.hi || item.weight >= 0);
}

void slack() {
  Table<In<const zorv_expr*>, SmallCoeff, SmallCoeff>::each("zorv_between", checked_between, open);
  Table<In<const zorv_expr*>>::whole(
      "zorv_expr_reduce",
      +[](const zorv_expr* e) {
        const auto first = static_cast<uint32_t>(zorv_var_count());
        zorv_expr* reduced = zorv_expr_reduce(e);
        return check_reduction(e, reduced, first), reduced;
      },
      [](Call& call, auto& e) {
        call.legal = !e.model.e[0].declared() && !zorv_expr_has_int_atom(e.handle);
        return Thing{nullptr, {}, {plain(Poly())}};
      });
  // Atoms count as if they were binary, and nothing is known of those.
  Table<In<const zorv_array_expr*>>::each(
      "zorv_array_expr_reduce",
      +[](const zorv_array_expr* a) {
        const auto first = static_cast<uint32_t>(zorv_var_count());
        zorv_array_expr* reduced = zorv_array_expr_reduce(a);
        for (uint64_t i = 0; i < zorv_array_expr_size(a); ++i) {
          const zorv_expr* e = zorv_array_expr_ref(const_cast<zorv_array_expr*>(a), i);
          if (zorv_expr_has_int_atom(e)) continue;
          check_reduction(e, zorv_array_expr_ref(reduced, i), first);
        }
        return reduced;
      },
      open);
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
  variables(), terms(), building(), products(), rewriting(), questions(), integers(), constraints(),
      slack();
}

}  // namespace zorv::fuzz
