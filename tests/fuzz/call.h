// One call of the interface, drawn at random: operands by their C types, what the call should give,
// and its text as C.
#pragma once

#include <map>
#include <tuple>

#include "fuzz/model.h"
#include "support/random.h"
#include "zorv/zorv.h"

namespace zorv::fuzz {

using test::below;
using test::Random;

// The calls so far, as C, go to the standard output if `printing`.
extern bool printing;
void say(const std::string& line);
// Calls without operands that were drawn, such as those that read a model.
#define ZORV_DO(call) (say(#call ";"), call)
// Ends the process: what the library gave is not what it should be.
[[noreturn]] void wrong(const std::string& what);
inline void check(bool holds, const std::string& what) {
  if (!holds) wrong(what);
}

// ---- Integers, lists and their text -------------------------------------------------------------

// "(TYPE[]){a, b, 0}"; C has no empty lists.
template <typename List, typename F>
std::string list_text(const char* type, const List& list, F text) {
  std::string all = std::string("(") + type + "[]){";
  for (const auto& item : list) all += text(item) + ", ";
  return all + "0}";
}
inline std::string numbers_text(const char* type, const auto& list) {
  return list_text(type, list, [](auto n) { return std::to_string(n) + "u"; });
}

coeff_t value_of(const CoeffWire& wire);
std::string text_of(const coeff_t& value);  // "{1, 2, (uint64_t[]){1, 2, 0}}"

// Integers as records for the library to read.
struct Wires {
  explicit Wires(const std::vector<coeff_t>& values);
  Wires(Wires&&) = default;
  std::vector<std::vector<uint64_t>> limbs;
  std::vector<CoeffWire> c;
  std::string text;
};

// Records for the library to write.
struct Written {
  explicit Written(size_t n) : c(n) {}
  Written(Written&&) = default;
  ~Written() {
    for (const CoeffWire& wire : c) std::free(wire.limbs);
  }
  std::vector<CoeffWire> c;
};

// What f(args..., outputs...) writes: one integer, or an array of several.
template <size_t kCount = 1, typename F, typename... A>
auto got(F f, A... args) {
  Written out(kCount);
  std::array<CoeffWire*, kCount> pointers;
  std::array<coeff_t, kCount> values;
  for (size_t i = 0; i < kCount; ++i) pointers[i] = &out.c[i];
  std::apply([&](auto... pointer) { f(args..., pointer...); }, pointers);
  for (size_t i = 0; i < kCount; ++i) values[i] = value_of(out.c[i]);
  if constexpr (kCount == 1) {
    return values[0];
  } else {
    return values;
  }
}

// ---- The objects that calls work on -------------------------------------------------------------

enum KindId { kTerm, kExpr, kVars, kInts, kTerms, kExprs, kKinds };
#define ZORV_ARRAY_KINDS(X) \
  X(kVars, array_var) X(kInts, array_int) X(kTerms, array_term) X(kExprs, array_expr)
#define ZORV_KINDS(X) X(kTerm, term) X(kExpr, expr) ZORV_ARRAY_KINDS(X)
template <typename Handle>
struct Kind;
#define ZORV_KIND(id_, type)                               \
  template <>                                              \
  struct Kind<zorv_##type> {                               \
    static constexpr KindId id = id_;                      \
    static constexpr const char* name = #type;             \
    static constexpr auto destroy = zorv_##type##_destroy; \
  };
ZORV_KINDS(ZORV_KIND)
#undef ZORV_KIND

constexpr uint32_t kAtomBit = 1u << 30, kComplementBit = 1u << 31, kNothing = 0xFFFFFFFFu;
constexpr size_t kSlots = 3;

struct World {
  World();
  ~World();
  coeff_t value(uint32_t literal, size_t sample) const;
  Poly value(uint32_t literal) const;

  Thing things[kKinds][kSlots];
  std::vector<uint32_t> literals;                      // to draw from
  std::vector<Interval> atoms;                         // their bounds
  std::map<uint32_t, std::array<int, kSamples>> bits;  // variables whose values are not free
};
extern World* world;

// What the library's own reading functions show: values, literals, and an item of constraints.
coeff_t evaluate(const zorv_expr* e, const std::function<coeff_t(uint32_t)>& value_of);
Poly read(const zorv_expr* e);
Poly read(const zorv_term* t);
std::vector<uint32_t> literals_of(const zorv_term* t);
std::vector<uint32_t> literals_of(const zorv_expr* e);
struct Body {
  Body(const zorv_expr* e, uint64_t item);
  Body(Body&&) = delete;
  ~Body() { zorv_exprexprelem_destroy(e); }
  zorv_expr* e = nullptr;
  int kind;
  coeff_t weight, lo, hi;
};

// Compares an object of any kind with what it should be, and fills in what was open.
void compare(const void* handle, KindId kind, Thing& should);

// The smallest values over the choices of the binary variables from `first` on, at 0/1 samples, as
// long as there are few of them.
Poly least(const zorv_expr* e, uint32_t first);

// Whether a penalty of lo <= value <= hi, whose slack variables begin with `first`, is 0 with the
// best slack exactly where that holds.
void check_penalty(const zorv_expr* penalty, const Poly& value, const coeff_t& lo,
                   const coeff_t& hi, uint32_t first);

// Compares with `thing` and puts it in its slot; what has grown too large to follow is replaced.
void put(KindId kind, size_t slot, Thing thing);

struct Call {
  explicit Call(uint64_t seed) : random(seed), target(draw(kSlots)) {}
  size_t draw(uint64_t n) { return below(random, n); }
  Random random;
  size_t target;       // the slot of what is made
  bool usable = true;  // within what the driver follows
  bool legal = true;   // within the contract
};

// An exact quotient. Whether there is one depends on coefficients; `gcd` is that of the element.
inline Elem divided(Call& call, const Elem& e, const coeff_t& c, const coeff_t& gcd) {
  call.legal = call.legal && c != 0 && gcd % c == 0;
  if (!call.legal) return e;
  return with(e, pointwise(e.p, number(c), std::divides<coeff_t>()));
}

// ---- Operands: text, what goes into the C call, and, for those with a value, a model ------------

template <typename... C>
struct Operand {
  std::string text;
  std::tuple<C...> c;
};
template <typename... C>
struct Valued : Operand<C...> {
  Thing model;
  bool is_array = false;
};

struct Coeff : Valued<const CoeffWire*> {
  explicit Coeff(Call& call) : Coeff(call, call.draw(2) == 0) {}
  Coeff(Call& call, bool small);
  coeff_t value;
  Wires wires;
};
struct SmallCoeff : Coeff {
  explicit SmallCoeff(Call& call) : Coeff(call, true) {}
};

struct Literal : Valued<uint32_t> {
  explicit Literal(Call& call);
  uint32_t value;
};

struct Out : Operand<CoeffWire*> {
  explicit Out(Call&) : wire(1) { text = "out()", c = {wire.c.data()}; }
  coeff_t value() const { return value_of(wire.c[0]); }
  Written wire;
};
// Room for plain numbers.
template <typename T>
struct Room : Operand<T*> {
  explicit Room(Call&) : values(256) { this->text = "(void*)room", this->c = {values.data()}; }
  std::vector<T> values;
};

template <typename T, int kFrom, int kTo>
struct Number : Operand<T> {
  explicit Number(Call& call)
      : value(static_cast<T>(kFrom + static_cast<int>(call.draw(kTo - kFrom)))) {
    this->text = std::to_string(value), this->c = {value};
  }
  T value;
};

// A name for something new; none draws a generated one.
struct Name : Operand<const char*> {
  explicit Name(Call& call);
  const char* value;
};

// An object in a slot; now and then a term inside an expression, or an expression inside an array.
template <typename Pointer>
struct In : Valued<Pointer> {
  using Handle = std::remove_const_t<std::remove_pointer_t<Pointer>>;
  using K = Kind<Handle>;

  explicit In(Call& call) : slot(call.draw(kSlots)), home(&world->things[K::id][slot]) {
    const std::string at = "[" + std::to_string(slot) + "]";
    this->text = K::name + at;
    this->model = *home;
    this->is_array = K::id >= kVars;
    handle = static_cast<Pointer>(home->handle);
    const uint64_t within = call.draw(64);
    if constexpr (std::is_same_v<Handle, zorv_expr>) {
      Thing& array = world->things[kExprs][slot];
      if (within < 8 && !array.e.empty()) {
        home = &array;
        index = within % array.e.size();
        handle = zorv_array_expr_ref(static_cast<zorv_array_expr*>(array.handle), index);
        this->text = "zorv_array_expr_ref(array_expr" + at + ", " + std::to_string(index) + ")";
        this->model = {nullptr, {}, {array.e[index]}};
      }
    } else if constexpr (std::is_same_v<Pointer, const zorv_term*>) {
      const auto* e = static_cast<zorv_expr*>(world->things[kExpr][slot].handle);
      if (within < 16 && zorv_expr_term_count(e) > 0) {
        const uint64_t i = within % zorv_expr_term_count(e);
        handle = zorv_expr_term_at(e, i);
        this->text = "zorv_expr_term_at(expr" + at + ", " + std::to_string(i) + ")";
        this->model = {nullptr, {}, {plain(read(handle))}};
      }
    }
    this->c = {handle};
  }
  // After a call that changed the object.
  void store(Thing should) {
    should.handle = const_cast<Handle*>(handle);
    if (home->handle == handle) return put(K::id, slot, std::move(should));
    compare(handle, K::id, should);
    home->e[index] = std::move(should.e[0]);
  }

  size_t slot;
  Thing* home;
  Pointer handle;
  size_t index = 0;
};

// A term for the call to consume.
struct Taken : Valued<zorv_term*> {
  explicit Taken(Call& call) {
    const In<const zorv_term*> original(call);
    text = "zorv_term_clone(" + original.text + ")", c = {zorv_term_clone(original.handle)};
    model = original.model;
  }
};

struct Literals : Valued<const uint32_t*, uint32_t> {
  explicit Literals(Call& call);
  std::vector<uint32_t> values;  // the model is their product
};

// The literals of a term as a head pair and a block, which is copied, or adopted as a number.
uint64_t adopted(const std::vector<uint32_t>& block);
template <typename Block>
struct Head : Valued<uint64_t, Block> {
  explicit Head(Call& call) : literals(call), rest(literals.values) {
    this->model = literals.model;
    rest.resize(std::max(rest.size(), size_t{2}), kNothing);
    const uint64_t pair = rest[0] | static_cast<uint64_t>(rest[1]) << 32;
    rest.erase(rest.begin(), rest.begin() + 2);
    if (!rest.empty()) rest.push_back(kNothing);
    this->text = rest.empty() ? "0" : numbers_text("uint32_t", rest);
    if constexpr (std::is_pointer_v<Block>) {
      this->c = {pair, rest.empty() ? nullptr : rest.data()};
    } else {
      this->c = {pair, adopted(rest)};
      this->text = "adopted(" + this->text + ")";
    }
    this->text = std::to_string(pair) + "u, " + this->text;
  }
  Literals literals;
  std::vector<uint32_t> rest;
};

// n terms in flat arrays; the model is their sum.
struct Bulk : Valued<uint64_t, const CoeffWire*, const uint32_t*, const uint32_t*> {
  explicit Bulk(Call& call);
  std::vector<uint32_t> degs, vars;
  std::optional<Wires> wires;
};

// Lower and upper ends and their number.
struct Intervals : Operand<const CoeffWire*, const CoeffWire*, uint64_t> {
  explicit Intervals(Call& call);
  std::vector<Interval> ranges;
  std::optional<Wires> lows, highs;
};

// Extents: all arrays have one of a few shapes, so that two of them often fit together.
struct Extents : Operand<const uint64_t*, size_t> {
  explicit Extents(Call& call);
  Shape shape;
};

// Which operand belongs to a C type if the table says nothing else.
template <typename C>
struct Deduce {
  using type = In<C>;
};
#define ZORV_DEDUCE(c_type, operand) \
  template <>                        \
  struct Deduce<c_type> {            \
    using type = operand;            \
  };
ZORV_DEDUCE(const CoeffWire*, Coeff)
ZORV_DEDUCE(CoeffWire, Coeff)
ZORV_DEDUCE(CoeffWire*, Out)
ZORV_DEDUCE(uint32_t, Literal)
ZORV_DEDUCE(const char*, Name)
#undef ZORV_DEDUCE

// Elements for lists that begin with (const T* elements, ...).
template <typename T>
struct Elements {
  Elements(Call& call, uint64_t n) {
    while (own.size() < n) own.emplace_back(call);
    std::string type = "uint32_t";
    if constexpr (std::is_pointer_v<T>) type = "void*";
    if constexpr (std::is_same_v<T, CoeffWire>) type = "CoeffWire", text = "*";
    text = "(" + type + "[]){";
    for (auto& operand : own) {
      if constexpr (std::is_same_v<T, CoeffWire>) {
        list.push_back(*std::get<0>(operand.c));
        text += "*";
      } else {
        list.push_back(std::get<0>(operand.c));
      }
      text += operand.text + ", ";
      e.push_back(operand.model.e[0]);
    }
    text += std::is_same_v<T, CoeffWire> ? "{0, 0, 0}}" : "0}";
  }
  std::vector<typename Deduce<T>::type> own;
  std::vector<T> list;
  std::vector<Elem> e;
  std::string text;
};
// An array by its elements and its shape.
template <typename T>
struct Data : Valued<const T*, const uint64_t*, size_t> {
  explicit Data(Call& call) : extents(call), elements(call, extent(extents.shape)) {
    this->text = elements.text + ", " + extents.text;
    this->c = std::tuple_cat(std::tuple(elements.list.data()), extents.c);
    this->model = {nullptr, extents.shape, elements.e};
  }
  Extents extents;
  Elements<T> elements;
};
using Expr = zorv_expr*;
// Expressions in no array.
struct Exprs : Operand<const Expr*, uint64_t> {
  explicit Exprs(Call& call) : elements(call, call.draw(4)) {
    text = elements.text + ", " + std::to_string(elements.list.size());
    c = {elements.list.data(), elements.list.size()};
  }
  Elements<Expr> elements;
};

// ---- Tables of calls ----------------------------------------------------------------------------

struct Op {
  std::string name;
  std::function<void(Call&)> run;
  uint64_t made = 0;  // legal calls
};
std::vector<Op>& ops();

// Runs an illegal call in a child process: one line and an abort, or the driver says so.
void expect_abort(const std::string& text, const std::function<void()>& call);

template <typename... Args>
struct Table {
  // f(call, operand elements...) is one element of the result, or of the operand that is changed.
  template <typename R, typename... A, typename F>
  static void each(const char* name, R (*function)(A...), F f) {
    whole(name, function, [f](Call& call, const auto&... args) {
      Thing result{nullptr, {}, std::vector<Elem>(1)};
      bool is_array = false;
      [[maybe_unused]] const auto fit = [&](const auto& arg) {
        if constexpr (requires { arg.is_array; }) {
          if (!arg.is_array) return;
          if (is_array && arg.model.shape != result.shape) call.legal = false;
          if (!is_array) result.shape = arg.model.shape, result.e.resize(arg.model.e.size());
          is_array = true;
        }
      };
      (fit(args), ...);
      for (size_t i = 0; call.legal && i < result.e.size(); ++i) {
        result.e[i] = f(call, element(args, i)...);
      }
      return result;
    });
  }

  // f(call, operands...) is the result, or the operand that is changed.
  template <typename R, typename... A, typename F>
  static void whole(const char* name, R (*function)(A...), F f) {
    add(name, [=](Call& call, const std::string& text, auto&... args) {
      Thing should = f(call, std::as_const(args)...);
      if constexpr (std::is_void_v<R>) {
        if (perform(call, text, function, args...)) {
          std::get<0>(std::tie(args...)).store(std::move(should));
        }
      } else {
        using K = Kind<std::remove_pointer_t<R>>;
        const auto handle = perform(
            call,
            std::string("PUT(") + K::name + ", " + std::to_string(call.target) + ", " + text + ")",
            function, args...);
        if (!handle) return;
        should.handle = *handle;
        put(K::id, call.target, std::move(should));
      }
    });
  }

  // check(what the call gave, operands...) tells whether it is right; before(call, operands...)
  // sets `legal` and `usable`.
  template <typename R, typename... A, typename F, typename Before>
  static void query(const char* name, R (*function)(A...), F check, Before before) {
    add(name, [=](Call& call, const std::string& text, auto&... args) {
      before(call, std::as_const(args)...);
      const auto got = perform(call, text, function, args...);
      if (got && !check(*got, std::as_const(args)...)) wrong(text);
    });
  }
  template <typename R, typename... A, typename F>
  static void query(const char* name, R (*function)(A...), F check) {
    query(name, function, check, [](Call&, const auto&...) {});
  }

 private:
  template <typename Arg>
  static decltype(auto) element(const Arg& arg, size_t i) {
    if constexpr (requires { arg.model.e; }) {
      return (arg.model.e[arg.model.e.size() == 1 ? 0 : i]);
    } else {
      return (arg);
    }
  }

  template <typename F>
  static void add(const char* name, F f) {
    ops().push_back({name, [=](Call& call) {
                       std::tuple<Args...> args{Args(call)...};
                       std::apply(
                           [&](auto&... arg) {
                             std::string text = std::string(name) + "(";
                             ((text += arg.text + ", "), ...);
                             if (sizeof...(Args) > 0) text.resize(text.size() - 2);
                             f(call, text + ")", arg...);
                           },
                           args);
                     }});
  }

  // Makes the call if it is legal and returns what it gives, true for nothing.
  template <typename R, typename... A>
  static auto perform(Call& call, const std::string& line, R (*function)(A...), auto&... args) {
    const auto go = [&] { return std::apply(function, std::tuple_cat(args.c...)); };
    std::optional<std::conditional_t<std::is_void_v<R>, bool, R>> got;
    if (call.usable && !call.legal && call.draw(48) == 0) expect_abort(line, [&] { go(); });
    call.usable = call.usable && call.legal;
    if (!call.usable) return got;
    say(line + ";");
    if constexpr (std::is_void_v<R>) {
      go();
      got = true;
    } else {
      got = go();
    }
    return got;
  }
};
template <typename R, typename... A>
Table<typename Deduce<A>::type...> table_of(R (*)(A...));

// The name of an export and its address.
#define FN(name) "zorv_" #name, zorv_##name
// The same, with operands by its C types.
#define EACH(name, ...) decltype(table_of(zorv_##name))::each(FN(name), __VA_ARGS__)
#define WHOLE(name, ...) decltype(table_of(zorv_##name))::whole(FN(name), __VA_ARGS__)
#define QUERY(name, ...) decltype(table_of(zorv_##name))::query(FN(name), __VA_ARGS__)

}  // namespace zorv::fuzz
