// Arrays.
#include "fuzz/call.h"

namespace zorv::fuzz {

namespace {

constexpr auto same = [](Call&, const Elem& e, const auto&...) { return e; };

// The tag of a sum is that of the expression that it began as a copy of.
template <KindId kLeft, KindId kRight>
constexpr auto sum = [](Call&, const Elem& a, const Elem& b) {
  if (kLeft == kExprs) return with(a, a.p + b.p);
  return kRight == kExprs || kRight == kExpr ? with(b, a.p + b.p) : plain(a.p + b.p);
};
template <KindId kLeft>
constexpr auto difference = [](Call&, const Elem& a, const Elem& b) {
  return kLeft == kExprs ? with(a, a.p - b.p) : plain(a.p - b.p);
};
constexpr auto product = [](Call&, const Elem& a, const Elem& b) { return plain(a.p * b.p); };
constexpr auto times_integer = [](Call& call, const Elem& e, const Elem& c) {
  return scaled(e, c.integer(), e.p * c.p, call.legal);
};
constexpr auto tag_of_first = [](Call&, const Elem& e, const Elem& c) {
  return with(e, e.p * c.p);
};
constexpr auto tag_of_second = [](Call&, const Elem& c, const Elem& e) {
  return with(e, c.p * e.p);
};

#define ZORV_ALL(M)       \
  M(var, kVars, uint32_t) \
  M(int, kInts, CoeffWire) M(term, kTerms, zorv_term*) M(expr, kExprs, zorv_expr*)

// Where integers and expressions meet, tags differ by the side and the form.
template <KindId kSide>
constexpr auto by_int = [](Call& call, const Elem& a, const Elem& b) {
  return kSide == kExprs ? times_integer(call, a, b) : product(call, a, b);
};
template <KindId kSide>
constexpr auto by_expr = [](Call& call, const Elem& a, const Elem& b) {
  return kSide == kInts ? tag_of_second(call, a, b) : product(call, a, b);
};
template <KindId kSide, bool kByOne>
constexpr auto in_place = [](Call& call, const Elem& a, const Elem& b) {
  if (kSide != kInts) return product(call, a, b);
  return kByOne ? times_integer(call, a, b) : tag_of_first(call, a, b);
};

#define ZORV_BOTH(left, op, right, ...)                   \
  EACH(array_##left##_##op##_array_##right, __VA_ARGS__); \
  EACH(array_##left##_##op##_##right, __VA_ARGS__);
#define ZORV_BINARY(left, id, right, right_id)     \
  ZORV_BOTH(left, add, right, (sum<id, right_id>)) \
  ZORV_BOTH(left, sub, right, difference<id>)
#define ZORV_FAMILY(left, id, ...)      \
  ZORV_BINARY(left, id, var, kVars)     \
  ZORV_BINARY(left, id, int, kInts)     \
  ZORV_BINARY(left, id, term, kTerms)   \
  ZORV_BINARY(left, id, expr, kExprs)   \
  ZORV_BOTH(left, mul, var, product)    \
  ZORV_BOTH(left, mul, term, product)   \
  ZORV_BOTH(left, mul, int, by_int<id>) \
  ZORV_BOTH(left, mul, expr, by_expr<id>)
#define ZORV_IN_PLACE(right, id, ...)                           \
  ZORV_BOTH(expr, add_eq, right, (sum<kExprs, id>))             \
  ZORV_BOTH(expr, sub_eq, right, difference<kExprs>)            \
  EACH(array_expr_mul_eq_array_##right, (in_place<id, false>)); \
  EACH(array_expr_mul_eq_##right, (in_place<id, true>));

// Whether no element has atoms.
bool is_binary(zorv_array_expr* a) {
  for (uint64_t i = 0; i < zorv_array_expr_size(a); ++i) {
    if (zorv_expr_has_int_atom(zorv_array_expr_ref(a, i))) return false;
  }
  return true;
}

void element_by_element() {
  ZORV_ALL(ZORV_FAMILY)
  ZORV_ALL(ZORV_IN_PLACE)
  ZORV_BOTH(int, add_eq, int, (sum<kInts, kInts>))
  ZORV_BOTH(int, sub_eq, int, difference<kInts>)
  ZORV_BOTH(int, mul_eq, int, product)
  EACH(array_term_mul_eq_int, product);
#define ZORV_NEGATE(kind, id, ...) \
  EACH(array_##kind##_negate,      \
       [](Call& call, auto& e) { return scaled(e, -1, number(-1) * e.p, call.legal); });
  ZORV_ALL(ZORV_NEGATE)
  EACH(array_var_invert, [](Call& call, auto& e) {
    call.usable = call.usable && (e.literal & kAtomBit) == 0;  // atoms have no complements
    Elem complement;
    complement.literal = e.literal ^ kComplementBit;
    return complement;
  });
  EACH(array_expr_sqr, [](Call&, auto& e) { return plain(e.p * e.p); });
  EACH(array_expr_simplify, [](Call&, auto& e) { return plain(e.p); });
  EACH(array_expr_simplify_as_binary, [](Call&, auto& e) { return plain(only_bits(e.p)); });
  WHOLE(array_expr_simplify_as_spin, [](Call& call, auto& a) {
    Thing result = a.model;
    call.usable = is_binary(const_cast<zorv_array_expr*>(a.handle));
    for (Elem& e : result.e) e = plain(only_spin(e.p));
    return result;
  });
  WHOLE(array_int_coeffvec_mul_var, [](Call& call, auto& coeffs, auto& vars) {
    Thing result = coeffs.model;
    call.usable = vars.model.e.size() >= result.e.size();
    for (size_t i = 0; call.usable && i < result.e.size(); ++i) {
      result.e[i] = plain(result.e[i].p * vars.model.e[i].p);
    }
    return result;
  });
}

// ---- Shapes -------------------------------------------------------------------------------------

// `n` elements of `a` from position `from` on.
void append(Thing& result, const Thing& a, uint64_t from, uint64_t n) {
  const auto begin = a.e.begin() + static_cast<ptrdiff_t>(from);
  result.e.insert(result.e.end(), begin, begin + static_cast<ptrdiff_t>(n));
}

// The last `rank` axes from position `offset` on.
Thing tail(Call& call, const Thing& a, uint64_t rank, uint64_t offset) {
  Thing result;
  call.usable = rank <= a.shape.size();
  if (!call.usable) return result;
  result.shape.assign(a.shape.end() - static_cast<ptrdiff_t>(rank), a.shape.end());
  call.usable = offset + extent(result.shape) <= a.e.size();
  if (call.usable) append(result, a, offset, extent(result.shape));
  return result;
}

Thing concatenated(Call& call, const Thing& a, const Thing& b, size_t axis) {
  Thing result;
  Shape rest = a.shape, other = b.shape;
  call.usable = axis < std::min(a.shape.size(), b.shape.size()) && a.e.size() + b.e.size() < 20;
  if (!call.usable) return result;
  rest[axis] = other[axis] = 1;
  call.usable = rest == other;
  result.shape = a.shape, result.shape[axis] += b.shape[axis];
  const uint64_t inner = extent(rest, axis);
  for (uint64_t i = 0; call.usable && i < extent(rest) / std::max(inner, uint64_t{1}); ++i) {
    append(result, a, i * a.shape[axis] * inner, a.shape[axis] * inner);
    append(result, b, i * b.shape[axis] * inner, b.shape[axis] * inner);
  }
  return result;
}

// Ranges of the first axes, or fixed positions on them.
struct Ranges : Operand<const uint64_t*, const uint64_t*, const uint8_t*, size_t> {
  explicit Ranges(Call& call) : lo(call.draw(4)), hi(lo), drop(lo.size()) {
    for (size_t k = 0; k < lo.size(); ++k) {
      lo[k] = call.draw(2), hi[k] = lo[k] + call.draw(3),
      drop[k] = call.draw(3) == 0 ? 1 + call.draw(255) : 0;
    }
    text = numbers_text("uint64_t", lo) + ", " + numbers_text("uint64_t", hi) + ", " +
           numbers_text("uint8_t", drop) + ", " + std::to_string(lo.size());
    c = {lo.data(), hi.data(), drop.data(), lo.size()};
  }
  std::vector<uint64_t> lo, hi;
  std::vector<uint8_t> drop;
};

Thing viewed(Call& call, const Thing& a, const Ranges& ranges) {
  Thing result;
  const size_t n = ranges.lo.size();
  call.usable = n <= a.shape.size();
  const auto hi = [&](size_t k) { return ranges.drop[k] ? ranges.lo[k] + 1 : ranges.hi[k]; };
  for (size_t k = 0; call.usable && k < a.shape.size(); ++k) {
    call.usable = (k < n ? hi(k) : 1) <= a.shape[k];
    if (k < n && !ranges.drop[k]) result.shape.push_back(hi(k) - ranges.lo[k]);
  }
  for (uint64_t i = 0; call.usable && i < a.e.size(); ++i) {
    bool within = true;
    for (size_t k = 0; k < a.shape.size(); ++k) {
      const uint64_t at = i / extent(a.shape, k + 1) % a.shape[k];
      within = within && (k < n ? at >= ranges.lo[k] && at < hi(k) : at == 0);
    }
    if (within) result.e.push_back(a.e[i]);
  }
  return result;
}

// "{{a,b},{c,d}}" of the texts of the elements.
template <typename F>
std::string nested(const Shape& shape, F text, size_t axis = 0, uint64_t at = 0) {
  if (axis == shape.size()) return axis == 0 ? "{}" : text(at);
  std::string all = "{";
  for (uint64_t i = 0; i < shape[axis]; ++i) {
    all += (i > 0 ? "," : "") + nested(shape, text, axis + 1, at + i * extent(shape, axis + 1));
  }
  return all + "}";
}
std::string text_at(const zorv_array_var* a, uint64_t i) {
  return zorv_var_str(zorv_array_var_get(a, i));
}
std::string text_at(const zorv_array_int* a, uint64_t i) {
  return got(zorv_array_int_get, a, i).str();
}
std::string text_at(const zorv_array_term* a, uint64_t i) {
  zorv_term* t = zorv_array_term_get(a, i);
  const std::string text = zorv_term_str(t);
  return zorv_term_destroy(t), text;
}
std::string text_at(const zorv_array_expr* a, uint64_t i) {
  return zorv_expr_str(zorv_array_expr_ref(const_cast<zorv_array_expr*>(a), i));
}

// The sums along axis `axis`.
Thing summed(Call& call, const Thing& a, size_t axis) {
  Shape shape = a.shape;
  shape.erase(shape.begin() + static_cast<ptrdiff_t>(axis));
  const uint64_t inner = extent(a.shape, axis + 1), along = a.shape[axis];
  Thing result{nullptr, shape, {}};
  for (uint64_t i = 0; i < extent(shape); ++i) {
    std::vector<Elem> parts;
    for (uint64_t k = 0; k < along; ++k) {
      parts.push_back(a.e[(i / inner * along + k) * inner + i % inner]);
    }
    result.e.push_back(sum_of(parts, call.legal));
  }
  return result;
}

// Elements in no array, and what of the call is about them: pointers to expressions, literals, or
// the term records of an expression behind its first one.
struct Loose : Operand<const void*, int> {
  explicit Loose(Call& call) : first_variable(static_cast<uint32_t>(zorv_var_count())) {
    const In<const zorv_expr*> e(call);
    int kind = static_cast<int>(call.draw(3));
    model.shape = {1 + call.draw(2), 2};
    const uint64_t n = extent(model.shape);
    if (kind == 2 && zorv_expr_term_count(e.handle) <= n) kind = 0;
    if (kind == 0) exprs.emplace(call, n), model.e = exprs->e;
    if (kind == 1) literals.emplace(call, n), model.e = literals->e;
    for (uint64_t i = 0; kind == 2 && i < n; ++i) {
      model.e.push_back(plain(read(zorv_expr_term_at(e.handle, i + 1))));
    }
    text = (kind == 0   ? exprs->text
            : kind == 1 ? literals->text
                        : "zorv_expr_term_at(" + e.text + ", 1)") +
           ", " + std::to_string(kind);
    if (kind == 0) c = {exprs->list.data(), 0};
    if (kind == 1) c = {literals->list.data(), 1};
    if (kind == 2) c = {zorv_expr_term_at(e.handle, 1), 2};
  }
  uint32_t first_variable;
  Thing model;
  std::optional<Elements<zorv_expr*>> exprs;
  std::optional<Elements<uint32_t>> literals;
};
struct LooseSum : Operand<const void*, int, const uint64_t*, size_t, int, zorv_expr**> {
  explicit LooseSum(Call& call) : loose(call), axis(call), out(call) {
    const Shape& shape = loose.model.shape;
    text =
        loose.text + ", " + numbers_text("uint64_t", shape) + ", 2, " + axis.text + ", (void*)room";
    c = std::tuple_cat(loose.c, std::tuple(shape.data(), shape.size()), axis.c, out.c);
  }
  Thing should(Call& call) const {
    return summed(call, loose.model, static_cast<size_t>(axis.value));
  }
  Loose loose;
  Number<int, 0, 2> axis;
  Room<zorv_expr*> out;
};
struct LooseBetween
    : Operand<const void*, int, const CoeffWire*, const CoeffWire*, zorv_expr**, uint64_t> {
  explicit LooseBetween(Call& call) : loose(call), lo(call), hi(call), out(call) {
    const uint64_t n = loose.model.e.size();
    text = loose.text + ", " + lo.text + ", " + hi.text + ", (void*)room, " + std::to_string(n);
    c = std::tuple_cat(loose.c, lo.c, hi.c, out.c, std::tuple(n));
  }
  Loose loose;
  SmallCoeff lo, hi;
  Room<zorv_expr*> out;
};

void loose_elements() {
  Table<Exprs>::whole(FN(array_sum), [](Call& call, auto& exprs) {
    return Thing{nullptr, {}, {sum_of(exprs.elements.e, call.legal)}};
  });
  Table<LooseSum>::query(
      FN(array_vector_sum),
      [](bool, auto& all) {
        Call again(0);
        const Thing should = all.should(again);
        for (size_t i = 0; i < should.e.size(); ++i) {
          Thing sum{nullptr, {}, {should.e[i]}};
          compare(all.out.values[i], kExpr, sum);
          zorv_expr_destroy(all.out.values[i]);
        }
        return true;
      },
      [](Call& call, auto& all) { all.should(call); });
  Table<LooseBetween>::query(FN(array_between), [](bool, auto& all) {
    for (size_t i = 0; i < all.loose.model.e.size(); ++i) {
      zorv_expr* penalty = all.out.values[i];
      check_penalty(penalty, all.loose.model.e[i].p, all.lo.value, all.hi.value,
                    all.loose.first_variable);
      zorv_expr_destroy(penalty);
    }
    return true;
  });
}

// The position of the only 1 of a row that is otherwise 0, or -1.
Thing one_hot(const Thing& a, size_t axis) {
  Thing result;
  result.shape = a.shape;
  result.shape.erase(result.shape.begin() + static_cast<ptrdiff_t>(axis));
  const uint64_t inner = extent(a.shape, axis + 1), along = a.shape[axis];
  for (uint64_t i = 0; i < extent(result.shape); ++i) {
    int at = -1;
    uint64_t zeros = 0;
    for (uint64_t k = 0; k < along; ++k) {
      const coeff_t c = a.e[(i / inner * along + k) * inner + i % inner].integer();
      zeros += c == 0;
      if (c == 1) at = static_cast<int>(k);
    }
    result.e.push_back(plain(number(zeros + 1 == along ? at : -1)));
  }
  if (result.shape.empty()) result.shape = {1};
  return result;
}
struct Bits : Operand<const int32_t*, const uint64_t*, size_t> {
  explicit Bits(Call& call) : extents(call), values(extent(extents.shape)) {
    for (int32_t& bit : values) bit = static_cast<int32_t>(call.draw(2));
    text = numbers_text("int32_t", values) + ", " + extents.text;
    c = std::tuple_cat(std::tuple(values.data()), extents.c);
  }
  Extents extents;
  std::vector<int32_t> values;
};

void integers() {
  Table<In<const zorv_array_int*>, Number<int, -3, 3>>::whole(
      FN(array_int_onehot_to_int), [](Call& call, auto& a, auto& axis) {
        const int rank = static_cast<int>(a.model.shape.size());
        const int at = axis.value < 0 ? axis.value + rank : axis.value;
        call.usable = at >= 0 && at < rank;
        return call.usable ? one_hot(a.model, static_cast<size_t>(at)) : Thing();
      });
  Table<Bits, Room<int32_t>>::query(FN(onehot_to_int), [](bool, auto& in, auto& out) {
    if (in.extents.shape.empty()) return true;
    const uint64_t along = in.extents.shape.back();
    for (uint64_t row = 0; along > 0 && row < in.values.size() / along; ++row) {
      int sum = 0, last = -1;
      for (uint64_t k = 0; k < along; ++k) {
        sum += in.values[row * along + k];
        if (in.values[row * along + k] == 1) last = static_cast<int>(k);
      }
      if (out.values[row] != (sum == 1 ? last : -1)) return false;
    }
    return true;
  });
  Table<In<const zorv_array_int*>, Room<int32_t>>::query(
      FN(array_int_to_ints), [](bool, auto& a, auto& out) {
        for (size_t i = 0; i < a.model.e.size(); ++i) {
          const coeff_t c = a.model.e[i].integer(), most = INT32_MAX, least = INT32_MIN;
          if (out.values[i] != std::clamp(c, least, most)) return false;
        }
        return true;
      });
}

#define ZORV_SHAPES(kind, id, type)                                                               \
  using kind##_array = In<const zorv_array_##kind*>;                                              \
  Table<Extents>::whole(FN(array_##kind##_create), filled(id == kVars ? world_zero : zero));      \
  Table<Data<type>>::whole(FN(array_##kind##_create_data),                                        \
                           [](Call&, auto& data) { return data.model; });                         \
  EACH(array_##kind##_clone, same);                                                               \
  WHOLE(array_##kind##_sum, [](Call& call, auto& a) {                                             \
    return Thing{nullptr, {}, {sum_of(a.model.e, call.legal)}};                                   \
  });                                                                                             \
  QUERY(array_##kind##_str, [](const std::string& text, auto& a) {                                \
    return text == nested(a.model.shape, [&](uint64_t i) { return text_at(a.handle, i); });       \
  });                                                                                             \
  Table<kind##_array, Number<uint64_t, 0, 3>>::whole(                                             \
      FN(array_##kind##_subarray), [](Call& call, auto& a, auto& i) {                             \
        return tail(call, a.model, a.model.shape.size() - 1, i.value * extent(a.model.shape, 1)); \
      });                                                                                         \
  Table<kind##_array, Ranges>::whole(                                                             \
      FN(array_##kind##_view),                                                                    \
      [](Call& call, auto& a, auto& ranges) { return viewed(call, a.model, ranges); });           \
  Table<kind##_array, Axis>::whole(                                                               \
      FN(array_##kind##_vector_sum), [](Call& call, auto& a, auto& axis) {                        \
        call.usable = static_cast<size_t>(axis.value) < a.model.shape.size();                     \
        return call.usable ? summed(call, a.model, static_cast<size_t>(axis.value)) : Thing();    \
      });                                                                                         \
  Table<kind##_array, kind##_array, Axis>::whole(                                                 \
      FN(array_##kind##_concat), [](Call& call, auto& a, auto& b, auto& axis) {                   \
        return concatenated(call, a.model, b.model, static_cast<size_t>(axis.value));             \
      });

// Element `i` becomes `x`.
constexpr auto set = [](Call& call, auto& a, auto& i, auto& x) {
  call.usable = i.value < a.model.e.size();
  Thing result = a.model;
  if (call.usable) result.e[i.value] = x.model.e[0];
  return result;
};
template <bool kPlain>
constexpr auto get = [](Call& call, auto& a, auto& i) {
  call.usable = i.value < a.model.e.size();
  if (!call.usable) return Thing();
  const Elem& e = a.model.e[i.value];
  return Thing{nullptr, {}, {kPlain ? plain(e.p) : e}};
};
// All elements the same.
auto filled(const Elem& e) {
  return [e](Call&, auto& extents, auto&...) {
    return Thing{nullptr, extents.shape, std::vector<Elem>(extent(extents.shape), e)};
  };
}

void shapes() {
  using Index = Number<uint64_t, 0, 5>;
  using Axis = Number<int, 0, 3>;
  const Elem zero = plain(number(0)), world_zero = Elem();
  Elem unknown;
  unknown.literal = kNothing;
  ZORV_ALL(ZORV_SHAPES)
  Table<Extents>::whole(FN(array_int_create_zero), filled(zero));
  Table<Extents>::whole(FN(array_expr_create_zero), filled(zero));
  Table<Name, Extents>::whole(FN(array_var_create_named), [=](Call& call, auto&, auto& extents) {
    return filled(unknown)(call, extents);
  });
  Table<Extents>::whole(FN(array_var_create_unnamed), filled(unknown));
  Table<In<zorv_array_var*>, Index, Literal>::whole(FN(array_var_set), set);
  Table<In<zorv_array_int*>, Index, Coeff>::whole(FN(array_int_set), set);
  Table<In<zorv_array_term*>, Index, In<const zorv_term*>>::whole(FN(array_term_set), set);
  Table<In<zorv_array_expr*>, Index, In<const zorv_expr*>>::whole(FN(array_expr_set), set);
  Table<term_array, Index>::whole(FN(array_term_get), get<false>);
  Table<expr_array, Index>::whole(FN(array_expr_get), get<false>);
  Table<expr_array, Index>::whole(FN(array_varint_get_expr), get<true>);
  Table<expr_array, Index>::whole(FN(array_exprexpr_get_penalty), get<true>);
  const auto subview = [](Call& call, auto& a, auto& offset, auto& rank) {
    return tail(call, a.model, rank.value, offset.value);
  };
  Table<int_array, Index, Number<uint64_t, 0, 3>>::whole(FN(array_int_clone_subview), subview);
  Table<expr_array, Index, Number<uint64_t, 0, 3>>::whole(FN(array_expr_clone_subview), subview);
  EACH(array_expr_from_expr, same);
  const auto all_equal = [](Call& call, auto& extents, auto& e) {
    return filled(plain(e.model.e[0].p))(call, extents);
  };
  Table<Extents, Coeff>::whole(FN(array_expr_create_constant_int), all_equal);
  Table<Extents, Literal>::whole(FN(array_expr_create_constant_var), all_equal);
}

// ---- Constraints --------------------------------------------------------------------------------

// The penalties of ranges have slack variables, whose values are open.
constexpr auto between = [](Call&, auto& e, auto& lo, auto& hi) {
  return single({}, Tag::kSingle, {e.p, true, lo.integer(), hi.integer(), {}});
};
constexpr auto equality = [](Call&, auto& e, auto& v) {
  const Poly d = e.p - v.p;
  return single(d * d, Tag::kSingle, {e.p, true, v.integer(), v.integer(), {}});
};
// One bound is given, the other is one that the element cannot pass.
template <bool kLower>
constexpr auto one_sided = [](zorv_array_expr* got, auto& a, auto& v) {
  bool right = zorv_array_expr_size(got) == a.model.e.size();
  for (size_t i = 0; right && i < a.model.e.size(); ++i) {
    const Poly& p = a.model.e[i].p;
    const auto bound = v.model.e[v.model.e.size() == 1 ? 0 : i].integer();
    const Body body(zorv_array_expr_ref(got, i), 0);
    right = (kLower ? body.lo : body.hi) == bound && read(body.e)[kFree] == p[kFree];
    if (!zorv_expr_has_int_atom(body.e)) {
      right = right && (kLower ? body.hi >= *p[kBits] : body.lo <= *p[kBits]);
    }
  }
  zorv_array_expr_destroy(got);
  return right;
};
constexpr auto equal_shapes = [](Call& call, auto& a, auto& b) {
  call.legal = a.model.shape == b.model.shape;
};
#define ZORV_CONSTRAINTS(kind, id, ...)                                                         \
  Table<In<const zorv_array_##kind*>, SmallCoeff, SmallCoeff>::each(FN(array_##kind##_between), \
                                                                    between);                   \
  EACH(array_##kind##_between_array_int, between);                                              \
  EACH(array_##kind##_eq_int, equality);                                                        \
  Table<In<const zorv_array_##kind*>, SmallCoeff>::query(FN(array_##kind##_ge_int),             \
                                                         one_sided<true>);                      \
  Table<In<const zorv_array_##kind*>, SmallCoeff>::query(FN(array_##kind##_le_int),             \
                                                         one_sided<false>);                     \
  QUERY(array_##kind##_ge_array_int, one_sided<true>, equal_shapes);                            \
  QUERY(array_##kind##_le_array_int, one_sided<false>, equal_shapes);

// ---- Einsum -------------------------------------------------------------------------------------

// A subscript, inputs of any kind, and the rank of the output.
template <int kOutput>
struct Contraction : Operand<const char*, int32_t, const uint32_t*, void* const*, int, uint64_t> {
  explicit Contraction(Call& call) {
    static const std::string kTexts[] = {"ij,jk->ik", "ii,kj->jk", "ab,bc->", "i,ij", "ij->ji"};
    const std::string& subscript = kTexts[call.draw(std::size(kTexts))];
    for (auto n = std::count(subscript.begin(), subscript.end(), ',') + 1; n > 0; --n) {
      const size_t tag = kOutput == 0 ? 1 : call.draw(4), slot = call.draw(kSlots);
      inputs.push_back(&world->things[kVars + tag][slot]);
      handles.push_back(inputs.back()->handle);
      tags.push_back(static_cast<uint32_t>(tag));
      static constexpr const char* kNames[] = {"var", "int", "term", "expr"};
      text += "array_" + std::string(kNames[tag]) + "[" + std::to_string(slot) + "], ";
    }
    const std::string full = subscript == "i,ij" ? "i,ij->j" : subscript;
    labels = full.substr(0, full.find('-')), out = full.substr(full.find('>') + 1);
    text = "\"" + subscript + "\", " + std::to_string(inputs.size()) + ", " +
           numbers_text("uint32_t", tags) + ", (void*[]){" + text + "0}, " +
           std::to_string(kOutput) + ", " + std::to_string(out.size());
    c = {subscript.c_str(), static_cast<int32_t>(inputs.size()),
         tags.data(),       handles.data(),
         kOutput,           out.size()};
  }
  std::string labels, out;
  std::vector<const Thing*> inputs;
  std::vector<void*> handles;
  std::vector<uint32_t> tags;
};

// Products of one element of each input over all labels, by the definition.
constexpr auto contracted = [](Call& call, auto& all) {
  std::map<char, uint64_t> extents, at;
  std::string labels = all.out;
  size_t input = 0, axis = 0;
  for (const char c : all.labels + ",") {
    if (c == ',') {
      call.legal = call.legal && axis == all.inputs[input]->shape.size();
      ++input, axis = 0;
      continue;
    }
    const Shape& shape = all.inputs[input]->shape;
    const uint64_t n = axis < shape.size() ? shape[axis] : 0;
    ++axis;
    if (labels.find(c) == std::string::npos) labels += c;
    if (!extents.emplace(c, n).second && extents[c] != n) call.legal = false;
  }
  Thing result;
  uint64_t steps = call.legal ? 1 : 0;
  for (const char c : all.out) result.shape.push_back(extents[c]);
  for (const char c : labels) steps *= extents[c];
  result.e.assign(extent(result.shape), plain(number(0)));
  for (uint64_t n = 0; n < steps; ++n) {
    uint64_t rest = n, target = 0;
    for (const char c : labels) at[c] = rest % extents[c], rest /= extents[c];
    for (const char c : all.out) target = target * extents[c] + at[c];
    Poly product = number(1);
    uint64_t position = 0;
    input = 0;
    for (const char c : all.labels + ",") {
      if (c == ',') product = product * all.inputs[input++]->e[position].p;
      position = c == ',' ? 0 : position * extents[c] + at[c];
    }
    result.e[target] = plain(result.e[target].p + product);
  }
  return result;
};

template <int kOutput, typename Array>
void contraction() {
  Table<Contraction<kOutput>>::whole(
      "zorv_einsum",
      +[](const char* text, int32_t n, const uint32_t* tags, void* const* inputs, int kind,
          uint64_t rank) {
        return static_cast<Array*>(zorv_einsum(text, n, tags, inputs, kind, rank));
      },
      contracted);
}

// Exact division of all elements, and truncation of integers.
void division() {
  EACH(array_int_div_eq_int, [](Call& call, auto& e, auto& c) {
    call.usable = call.usable && c.integer() != 0;
    return call.usable ? plain(number(e.integer() / c.integer())) : e;
  });
  const auto exact = [](Call& call, auto& a, auto& c) {
    Thing result = a.model;
    call.legal = c.value != 0;
    for (size_t i = 0; i < result.e.size(); ++i) {
      coeff_t gcd;
      if constexpr (std::remove_cvref_t<decltype(a)>::K::id == kTerms) {
        zorv_term* t = zorv_array_term_get(a.handle, i);
        gcd = got(zorv_term_coeff, t);
        zorv_term_destroy(t);
      } else {
        gcd = got(zorv_expr_gcd, zorv_array_expr_ref(const_cast<zorv_array_expr*>(a.handle), i));
      }
      result.e[i] = divided(call, result.e[i], c.value, gcd);
      // Nothing is said of an element that still has constraints.
      call.usable = call.usable && !result.e[i].declared();
    }
    return result;
  };
  Table<In<zorv_array_term*>, SmallCoeff>::whole(FN(array_term_div_eq_int), exact);
  Table<In<const zorv_array_term*>, SmallCoeff>::whole(FN(array_term_div_int), exact);
  Table<In<zorv_array_expr*>, SmallCoeff>::whole(FN(array_expr_div_eq_int), exact);
  Table<In<const zorv_array_expr*>, SmallCoeff>::whole(FN(array_expr_div_int), exact);
}

}  // namespace

void add_array_calls() {
  element_by_element(), shapes(), loose_elements(), integers(), division();
  ZORV_ALL(ZORV_CONSTRAINTS)
  EACH(array_var_eq_array_int, equality);
  EACH(array_term_eq_array_int, equality);
  EACH(array_expr_eq_array_int, equality);
  for (int share = 0; share < 6; ++share) contraction<1, zorv_array_expr>();
  contraction<0, zorv_array_int>();
}

}  // namespace zorv::fuzz
