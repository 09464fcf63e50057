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

#define ZORV_ALL(M, ...)     \
  M(var, kVars, __VA_ARGS__) \
  M(int, kInts, __VA_ARGS__) M(term, kTerms, __VA_ARGS__) M(expr, kExprs, __VA_ARGS__)

// Where integers and expressions meet, tags differ by the side and the form.
struct PlainProducts {
  static constexpr auto by_int = product, by_expr = product;
  static constexpr auto in_place = product, in_place_by_one = product;
};
template <KindId kSide>
struct Products : PlainProducts {};
template <>
struct Products<kExprs> : PlainProducts {
  static constexpr auto by_int = times_integer;
};
template <>
struct Products<kInts> : PlainProducts {
  static constexpr auto by_expr = tag_of_second;
  static constexpr auto in_place = tag_of_first;
  static constexpr auto in_place_by_one = times_integer;
};

#define ZORV_BINARY(left, id, right, right_id)                 \
  EACH(array_##left##_add_array_##right, (sum<id, right_id>)); \
  EACH(array_##left##_add_##right, (sum<id, right_id>));       \
  EACH(array_##left##_sub_array_##right, difference<id>);      \
  EACH(array_##left##_sub_##right, difference<id>);
#define ZORV_FAMILY(left, id, ...)                            \
  ZORV_BINARY(left, id, var, kVars)                           \
  ZORV_BINARY(left, id, int, kInts)                           \
  ZORV_BINARY(left, id, term, kTerms)                         \
  ZORV_BINARY(left, id, expr, kExprs)                         \
  EACH(array_##left##_mul_array_var, product);                \
  EACH(array_##left##_mul_var, product);                      \
  EACH(array_##left##_mul_array_term, product);               \
  EACH(array_##left##_mul_term, product);                     \
  EACH(array_##left##_mul_array_int, Products<id>::by_int);   \
  EACH(array_##left##_mul_int, Products<id>::by_int);         \
  EACH(array_##left##_mul_array_expr, Products<id>::by_expr); \
  EACH(array_##left##_mul_expr, Products<id>::by_expr);
#define ZORV_IN_PLACE(right, id, ...)                            \
  EACH(array_expr_add_eq_array_##right, (sum<kExprs, id>));      \
  EACH(array_expr_add_eq_##right, (sum<kExprs, id>));            \
  EACH(array_expr_sub_eq_array_##right, difference<kExprs>);     \
  EACH(array_expr_sub_eq_##right, difference<kExprs>);           \
  EACH(array_expr_mul_eq_array_##right, Products<id>::in_place); \
  EACH(array_expr_mul_eq_##right, Products<id>::in_place_by_one);

void element_by_element() {
  ZORV_ALL(ZORV_FAMILY)
  ZORV_ALL(ZORV_IN_PLACE)
  EACH(array_int_add_eq_array_int, (sum<kInts, kInts>));
  EACH(array_int_add_eq_int, (sum<kInts, kInts>));
  EACH(array_int_sub_eq_array_int, difference<kInts>);
  EACH(array_int_sub_eq_int, difference<kInts>);
  EACH(array_int_mul_eq_array_int, product);
  EACH(array_int_mul_eq_int, product);
  EACH(array_term_mul_eq_int, product);
#define ZORV_NEGATE(kind, id, ...) \
  EACH(array_##kind##_negate,      \
       [](Call& call, auto& e) { return scaled(e, -1, number(-1) * e.p, call.legal); });
  ZORV_ALL(ZORV_NEGATE)
  EACH(array_var_invert, [](Call& call, auto& e) {
    call.usable = call.usable && (e.literal & kAtomBit) == 0;  // atoms have no complements
    Elem complement = plain(Poly());
    complement.literal = e.literal ^ kComplementBit;
    return complement;
  });
  EACH(array_expr_sqr, [](Call&, auto& e) { return plain(e.p * e.p); });
  EACH(array_expr_simplify, [](Call&, auto& e) { return plain(e.p); });
  EACH(array_expr_simplify_as_binary, [](Call&, auto& e) { return plain(only_bits(e.p)); });
  WHOLE(array_int_coeffvec_mul_var, [](Call& call, auto& coeffs, auto& vars) {
    Thing result = coeffs.model;
    call.usable = vars.model.e.size() >= result.e.size();
    for (size_t i = 0; call.usable && i < result.e.size(); ++i) {
      result.e[i] = plain(result.e[i].p * vars.model.e[i].p);
    }
    return result;
  });
}

// Elements first .. of a source, by position of the result.
Thing picked(const Thing& a, Shape shape, const std::function<uint64_t(uint64_t)>& from) {
  Thing result{nullptr, std::move(shape), {}};
  for (uint64_t i = 0; i < extent(result.shape); ++i) result.e.push_back(a.e[from(i)]);
  return result;
}
Shape without_first(const Shape& shape) { return {shape.begin() + !shape.empty(), shape.end()}; }

Thing sliced(const Thing& a, uint64_t i) {
  const uint64_t step = extent(a.shape, 1);
  return picked(a, without_first(a.shape), [=](uint64_t at) { return i * step + at; });
}

// The sums along axis `axis`.
Thing summed(Call& call, const Thing& a, size_t axis) {
  Shape shape = a.shape;
  shape.erase(shape.begin() + static_cast<ptrdiff_t>(axis));
  const uint64_t inner = extent(a.shape, axis + 1), along = a.shape[axis];
  Thing result{nullptr, shape, {}};
  for (uint64_t i = 0; i < extent(shape); ++i) {
    std::vector<Elem> parts;
    Poly p = number(0);
    for (uint64_t k = 0; k < along; ++k) {
      parts.push_back(a.e[(i / inner * along + k) * inner + i % inner]);
      p = p + parts.back().p;
    }
    result.e.push_back(joined(parts, p, call.legal));
  }
  return result;
}
Thing sum_of_all(Call& call, const std::vector<Elem>& parts) {
  Poly p = number(0);
  for (const Elem& part : parts) p = p + part.p;
  return {nullptr, {}, {joined(parts, p, call.legal)}};
}

#define ZORV_SHAPES(kind, id, ...)                                                             \
  Table<Extents>::whole(FN(array_##kind##_create), [](Call&, auto& extents) {                  \
    Elem zero = plain(id == kVars ? world->value(0) : number(0));                              \
    return Thing{nullptr, extents.shape, std::vector<Elem>(extent(extents.shape), zero)};      \
  });                                                                                          \
  EACH(array_##kind##_clone, same);                                                            \
  WHOLE(array_##kind##_sum, [](Call& call, auto& a) { return sum_of_all(call, a.model.e); });  \
  QUERY(array_##kind##_str, [](const char* text, auto&) { return text[0] == '{'; });           \
  Table<In<const zorv_array_##kind*>, Number<uint64_t, 0, 3>>::whole(                          \
      FN(array_##kind##_subarray), [](Call& call, auto& a, auto& i) {                          \
        call.usable = !a.model.shape.empty() && i.value < a.model.shape[0];                    \
        return call.usable ? sliced(a.model, i.value) : Thing();                               \
      });                                                                                      \
  Table<In<const zorv_array_##kind*>, Number<int, 0, 3>>::whole(                               \
      FN(array_##kind##_vector_sum), [](Call& call, auto& a, auto& axis) {                     \
        call.usable = static_cast<size_t>(axis.value) < a.model.shape.size();                  \
        return call.usable ? summed(call, a.model, static_cast<size_t>(axis.value)) : Thing(); \
      });                                                                                      \
  Table<In<const zorv_array_##kind*>, In<const zorv_array_##kind*>, Number<int, 0, 1>>::whole( \
      FN(array_##kind##_concat), [](Call& call, auto& a, auto& b, auto&) {                     \
        Thing result = a.model;                                                                \
        call.usable = !a.model.shape.empty() && !b.model.shape.empty() &&                      \
                      a.model.e.size() + b.model.e.size() < 20 &&                              \
                      without_first(a.model.shape) == without_first(b.model.shape);            \
        if (!call.usable) return result;                                                       \
        result.shape[0] += b.model.shape[0];                                                   \
        result.e.insert(result.e.end(), b.model.e.begin(), b.model.e.end());                   \
        return result;                                                                         \
      });

// zorv_array_expr_set and its like: element `i` becomes `x`.
constexpr auto set = [](Call& call, auto& a, auto& i, auto& x) {
  call.usable = i.value < a.model.e.size();
  Thing result = a.model;
  if (call.usable) result.e[i.value] = x.model.e[0];
  return result;
};
constexpr auto get = [](Call& call, auto& a, auto& i) {
  call.usable = i.value < a.model.e.size();
  return call.usable ? Thing{nullptr, {}, {a.model.e[i.value]}} : Thing();
};

void shapes() {
  using Index = Number<uint64_t, 0, 5>;
  ZORV_ALL(ZORV_SHAPES)
  Table<In<zorv_array_var*>, Index, Literal>::whole(FN(array_var_set), set);
  Table<In<zorv_array_int*>, Index, Coeff>::whole(FN(array_int_set), set);
  Table<In<zorv_array_term*>, Index, In<const zorv_term*>>::whole(FN(array_term_set), set);
  Table<In<zorv_array_expr*>, Index, In<const zorv_expr*>>::whole(FN(array_expr_set), set);
  Table<In<const zorv_array_term*>, Index>::whole(FN(array_term_get), get);
  Table<In<const zorv_array_expr*>, Index>::whole(FN(array_expr_get), get);
  const auto get_plain = [](Call& call, auto& a, auto& i) {
    Thing result = get(call, a, i);
    if (call.usable) result.e[0] = plain(result.e[0].p);
    return result;
  };
  Table<In<const zorv_array_expr*>, Index>::whole(FN(array_varint_get_expr), get_plain);
  Table<In<const zorv_array_expr*>, Index>::whole(FN(array_exprexpr_get_penalty), get_plain);
  EACH(array_expr_from_expr, same);
  const auto all_equal = [](Call&, auto& extents, auto& e) {
    return Thing{nullptr, extents.shape,
                 std::vector<Elem>(extent(extents.shape), plain(e.model.e[0].p))};
  };
  Table<Extents, Coeff>::whole(FN(array_expr_create_constant_int), all_equal);
  Table<Extents, Literal>::whole(FN(array_expr_create_constant_var), all_equal);
}

// The penalties of ranges have slack variables, whose values are open.
Elem constrained(const Elem& e, const coeff_t& lo, const coeff_t& hi) {
  return single({}, Tag::kSingle, {e.p, true, lo, hi, {}});
}
#define ZORV_CONSTRAINTS(kind, id, ...)                                            \
  Table<In<const zorv_array_##kind*>, SmallCoeff, SmallCoeff>::each(               \
      FN(array_##kind##_between), [](Call&, auto& e, auto& lo, auto& hi) {         \
        return constrained(e, lo.integer(), hi.integer());                         \
      });                                                                          \
  EACH(array_##kind##_eq_int, [](Call&, auto& e, auto& v) {                        \
    const Poly d = e.p - v.p;                                                      \
    return single(d * d, Tag::kSingle, {e.p, true, v.integer(), v.integer(), {}}); \
  });                                                                              \
  EACH(array_##kind##_between_array_int, [](Call&, auto& e, auto& lo, auto& hi) {  \
    return constrained(e, lo.integer(), hi.integer());                             \
  });
// One bound is given, the other is one that the element cannot pass.
template <bool kLower>
constexpr auto one_sided = [](zorv_array_expr* got, auto& a, auto& v) {
  bool right = zorv_array_expr_size(got) == a.model.e.size();
  for (size_t i = 0; right && i < a.model.e.size(); ++i) {
    const Poly& p = a.model.e[i].p;
    const auto bound = v.model.e[v.model.e.size() == 1 ? 0 : i].integer();
    zorv_expr* body = nullptr;
    Wire weight, lo, hi;
    zorv_cons_item_info(zorv_array_expr_ref(got, i), 0, &body, weight.get(), lo.get(), hi.get());
    right = (kLower ? lo : hi).value() == bound && read(body)[kFree] == p[kFree];
    if (!zorv_expr_has_int_atom(body)) {
      right = right && (kLower ? hi.value() >= *p[kBits] : lo.value() <= *p[kBits]);
    }
    zorv_expr_destroy(body);
  }
  zorv_array_expr_destroy(got);
  return right;
};
constexpr auto equal_shapes = [](Call& call, auto& a, auto& b) {
  call.legal = a.model.shape == b.model.shape;
};
#define ZORV_ONE_SIDED(kind, id, ...)                                                  \
  using kind##_array = In<const zorv_array_##kind*>;                                   \
  Table<kind##_array, SmallCoeff>::query(FN(array_##kind##_ge_int), one_sided<true>);  \
  Table<kind##_array, SmallCoeff>::query(FN(array_##kind##_le_int), one_sided<false>); \
  QUERY(array_##kind##_ge_array_int, one_sided<true>, equal_shapes);                   \
  QUERY(array_##kind##_le_array_int, one_sided<false>, equal_shapes);
#define ZORV_EQUAL(kind, id, ...)                                                  \
  EACH(array_##kind##_eq_array_int, [](Call&, auto& e, auto& v) {                  \
    const Poly d = e.p - v.p;                                                      \
    return single(d * d, Tag::kSingle, {e.p, true, v.integer(), v.integer(), {}}); \
  });

// Products of one element of each input over all labels, by the definition.
Thing contracted(const char* text, const std::vector<const Thing*>& inputs) {
  const std::string subscript = text;
  const size_t arrow = subscript.find("->");
  const std::string out = subscript.substr(arrow + 2);
  std::string labels = out;
  std::map<char, uint64_t> extents, at;
  size_t input = 0, axis = 0;
  for (const char c : subscript.substr(0, arrow)) {
    if (c == ',') {
      ++input, axis = 0;
      continue;
    }
    if (labels.find(c) == std::string::npos) labels += c;
    extents[c] = inputs[input]->shape[axis++];
  }
  Thing result{nullptr, {}, {}};
  for (const char c : out) result.shape.push_back(extents[c]);
  result.e.assign(extent(result.shape), plain(number(0)));
  uint64_t all = 1;
  for (const char c : labels) all *= extents[c];
  for (uint64_t n = 0; n < all; ++n) {
    uint64_t rest = n, target = 0;
    for (const char c : labels) at[c] = rest % extents[c], rest /= extents[c];
    for (const char c : out) target = target * extents[c] + at[c];
    Poly product = number(1);
    uint64_t position = 0;
    input = 0;
    for (const char c : subscript.substr(0, arrow) + ",") {
      if (c == ',') {
        product = product * inputs[input++]->e[position].p;
        position = 0;
      } else {
        position = position * extents[c] + at[c];
      }
    }
    result.e[target] = plain(result.e[target].p + product);
  }
  return result;
}

template <const char* kSubscript, uint32_t kTagA, uint32_t kTagB>
zorv_array_expr* contract(const void* a, const void* b) {
  const uint32_t tags[] = {kTagA, kTagB};
  void* const inputs[] = {const_cast<void*>(a), const_cast<void*>(b)};
  const std::string text = kSubscript;
  return static_cast<zorv_array_expr*>(
      zorv_einsum(kSubscript, 2, tags, inputs, 1, text.size() - text.find("->") - 2));
}
constexpr char kMatrices[] = "ij,jk->ik", kDiagonal[] = "ii,kj->jk", kAll[] = "ab,bc->";

template <const char* kSubscript, uint32_t kTagA, typename A, uint32_t kTagB, typename B>
void contraction(const char* name) {
  Table<In<const A*>, In<const B*>>::whole(
      name, +[](const A* a, const B* b) { return contract<kSubscript, kTagA, kTagB>(a, b); },
      [](Call& call, auto& a, auto& b) {
        const Shape square = {2, 2};
        call.usable = a.model.shape == square && b.model.shape == square;
        return call.usable ? contracted(kSubscript, {&a.model, &b.model}) : Thing();
      });
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
    for (size_t i = 0; call.legal && i < result.e.size(); ++i) {
      zorv_expr* e = nullptr;
      if constexpr (std::remove_cvref_t<decltype(a)>::K::id == kTerms) {
        e = zorv_expr_create_term(zorv_array_term_get(a.handle, i), 1);
      } else {
        e = zorv_array_expr_get(a.handle, i);
      }
      Wire gcd;
      zorv_expr_gcd(e, gcd.get());
      zorv_expr_destroy(e);
      call.legal = gcd.value() % c.value == 0;
      if (call.legal) {
        result.e[i].p =
            pointwise(result.e[i].p, number(c.value),
                      [](const coeff_t& x, const coeff_t& y) { return coeff_t(x / y); });
      }
    }
    // Nothing is said of an element that still has constraints.
    call.usable =
        std::none_of(result.e.begin(), result.e.end(), [](auto& e) { return e.declared(); });
    return result;
  };
  Table<In<zorv_array_term*>, SmallCoeff>::whole(FN(array_term_div_eq_int), exact);
  Table<In<const zorv_array_term*>, SmallCoeff>::whole(FN(array_term_div_int), exact);
  Table<In<zorv_array_expr*>, SmallCoeff>::whole(FN(array_expr_div_eq_int), exact);
  Table<In<const zorv_array_expr*>, SmallCoeff>::whole(FN(array_expr_div_int), exact);
}

}  // namespace

void add_array_calls() {
  element_by_element(), shapes();
  ZORV_ALL(ZORV_CONSTRAINTS)
  ZORV_ALL(ZORV_ONE_SIDED)
  division();
  ZORV_EQUAL(var, kVars)
  ZORV_EQUAL(term, kTerms)
  ZORV_EQUAL(expr, kExprs)
  contraction<kMatrices, 3, zorv_array_expr, 0, zorv_array_var>("einsum_matrices");
  contraction<kDiagonal, 2, zorv_array_term, 1, zorv_array_int>("einsum_diagonal");
  contraction<kAll, 3, zorv_array_expr, 3, zorv_array_expr>("einsum_all");
}

}  // namespace zorv::fuzz
