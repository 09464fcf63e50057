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
// Ends the process: what the library gave is not what it should be.
[[noreturn]] void wrong(const std::string& what);

coeff_t value_of(const CoeffWire* wire);
// A record that frees its block.
class Wire {
 public:
  Wire() = default;
  explicit Wire(const coeff_t& value);
  Wire(Wire&& other) noexcept { std::swap(wire_, other.wire_); }
  Wire& operator=(Wire&& other) noexcept { return std::swap(wire_, other.wire_), *this; }
  ~Wire() { std::free(wire_.limbs); }
  CoeffWire* get() { return &wire_; }
  coeff_t value() const { return value_of(&wire_); }

 private:
  CoeffWire wire_ = {0, 0, nullptr};
};
// A list of records, and as C "{1, 2, (uint64_t[]){1, 2, 0}}".
struct Wires {
  explicit Wires(const std::vector<coeff_t>& values);
  std::vector<Wire> own;
  std::vector<CoeffWire> c;
};
std::string text_of(const coeff_t& value);

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

// ---- The objects that calls work on -------------------------------------------------------------

enum KindId { kTerm, kExpr, kVars, kInts, kTerms, kExprs, kKinds };
template <typename Handle>
struct Kind;
#define ZORV_KIND(id_, type)                               \
  template <>                                              \
  struct Kind<zorv_##type> {                               \
    static constexpr KindId id = id_;                      \
    static constexpr const char* name = #type;             \
    static constexpr auto destroy = zorv_##type##_destroy; \
  }
ZORV_KIND(kTerm, term);
ZORV_KIND(kExpr, expr);
ZORV_KIND(kVars, array_var);
ZORV_KIND(kInts, array_int);
ZORV_KIND(kTerms, array_term);
ZORV_KIND(kExprs, array_expr);
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

// The value that the library's own reading functions show.
coeff_t evaluate(const zorv_expr* e, const std::function<coeff_t(uint32_t)>& value_of);
Poly read(const zorv_expr* e);
Poly read(const zorv_term* t);

// Compares an object of any kind with what it should be, and fills in what was open.
void compare(const void* handle, KindId kind, Thing& should);

// The smallest values over the choices of the binary variables from `first` on, at 0/1 samples, as
// long as there are few of them.
Poly least(const zorv_expr* e, uint32_t first);

struct Call {
  Random random;
  bool usable = true;  // within what the driver follows
  bool legal = true;   // within the contract
  size_t draw(uint64_t n) { return below(random, n); }
};

// ---- Operands: text, what goes into the C call, and, for those with a value, a model ------------

struct Coeff {
  explicit Coeff(Call& call, bool small = false)
      : value(small || call.draw(2) == 0 ? coeff_t(static_cast<int>(call.draw(9)) - 4)
                                         : test::troublesome(call.random)),
        wire(value),
        model{nullptr, {}, {plain(number(value))}} {}
  std::string text() const { return "&(CoeffWire)" + text_of(value); }
  std::tuple<const CoeffWire*> c() { return {wire.get()}; }
  coeff_t value;
  Wire wire;
  Thing model;
};
struct SmallCoeff : Coeff {
  explicit SmallCoeff(Call& call) : Coeff(call, true) {}
};

uint32_t draw_literal(Call& call);

struct Literal {
  explicit Literal(Call& call) : value(draw_literal(call)), model{nullptr, {}, {{}}} {
    model.e[0].p = world->value(value);
    model.e[0].literal = value;
  }
  std::string text() const { return std::to_string(value) + "u"; }
  std::tuple<uint32_t> c() const { return {value}; }
  uint32_t value;
  Thing model;
};

struct Out {
  explicit Out(Call&) {}
  std::string text() const { return "out()"; }
  std::tuple<CoeffWire*> c() { return {wire.get()}; }
  coeff_t value() const { return wire.value(); }
  Wire wire;
};

template <typename T, int kFrom, int kTo>
struct Number {
  explicit Number(Call& call)
      : value(static_cast<T>(kFrom + static_cast<int>(call.draw(kTo - kFrom)))) {}
  std::string text() const { return std::to_string(value); }
  std::tuple<T> c() const { return {value}; }
  T value;
};

// A null name, which draws a generated one.
struct NoName {
  explicit NoName(Call&) {}
  std::string text() const { return "0"; }
  std::tuple<const char*> c() const { return {nullptr}; }
};

// An object in a slot; now and then a term inside an expression, or an expression inside an array.
template <typename Pointer>
struct In {
  using Handle = std::remove_const_t<std::remove_pointer_t<Pointer>>;
  using K = Kind<Handle>;

  explicit In(Call& call) : slot(call.draw(kSlots)), home(&world->things[K::id][slot]) {
    name = std::string(K::name) + "[" + std::to_string(slot) + "]";
    const uint64_t within = call.draw(64);
    handle = static_cast<Pointer>(home->handle);
    model = *home;
    if constexpr (std::is_same_v<Handle, zorv_expr>) {
      Thing& array = world->things[kExprs][slot];
      if (within >= 8 || array.e.empty()) return;
      home = &array;
      index = within % array.e.size();
      handle = zorv_array_expr_ref(static_cast<zorv_array_expr*>(array.handle), index);
      name = "zorv_array_expr_ref(array_expr[" + std::to_string(slot) + "], " +
             std::to_string(index) + ")";
      model = {nullptr, {}, {array.e[index]}};
    } else if constexpr (std::is_same_v<Pointer, const zorv_term*>) {
      const auto* e = static_cast<zorv_expr*>(world->things[kExpr][slot].handle);
      if (within >= 16 || zorv_expr_term_count(e) == 0) return;
      const uint64_t i = within % zorv_expr_term_count(e);
      handle = zorv_expr_term_at(e, i);
      name = "zorv_expr_term_at(expr[" + std::to_string(slot) + "], " + std::to_string(i) + ")";
      model = {nullptr, {}, {plain(read(handle))}};
    }
  }
  std::string text() const { return name; }
  std::tuple<Pointer> c() const { return {handle}; }
  bool is_slot() const { return home->handle == handle; }
  // After a call that changed the object.
  void store(Thing should) {
    compare(handle, K::id, should);
    if (is_slot()) {
      should.handle = home->handle;
      *home = std::move(should);
      prune(K::id, slot);
    } else {
      home->e[index] = std::move(should.e[0]);
    }
  }

  size_t slot;
  Thing* home;
  std::string name;
  Pointer handle;
  Thing model;
  size_t index = 0;
};

// An object that the call consumes; its slot gets a fresh one.
template <typename Handle>
struct Taken : In<Handle*> {
  explicit Taken(Call& call) : In<Handle*>(call) { call.usable = call.usable && this->is_slot(); }
};

struct Literals {
  explicit Literals(Call& call);
  std::string text() const {
    return numbers_text("uint32_t", values) + ", " + std::to_string(values.size());
  }
  std::tuple<const uint32_t*, uint32_t> c() const {
    return {values.data(), static_cast<uint32_t>(values.size())};
  }
  std::vector<uint32_t> values;
  Thing model;  // their product
};

// The literals of a term as a head pair and a block, which is copied or adopted.
enum class Block { kCopied, kAdopted };
template <Block kBlock>
struct Head : Literals {
  explicit Head(Call& call) : Literals(call) {}
  uint64_t pair() const {
    const uint32_t low = values.empty() ? kNothing : values[0];
    const uint32_t high = values.size() < 2 ? kNothing : values[1];
    return low | static_cast<uint64_t>(high) << 32;
  }
  std::vector<uint32_t> block() const {
    std::vector<uint32_t> rest;
    if (values.size() > 2) {
      rest.assign(values.begin() + 2, values.end());
      rest.push_back(kNothing);
    }
    return rest;
  }
  std::string text() const {
    const std::string rest = values.size() > 2 ? numbers_text("uint32_t", block()) : "0";
    return std::to_string(pair()) + "u, " +
           (kBlock == Block::kCopied ? rest : "adopted(" + rest + ")");
  }
  auto c() {
    rest = block();
    if constexpr (kBlock == Block::kCopied) {
      return std::tuple<uint64_t, const uint32_t*>(pair(), rest.empty() ? nullptr : rest.data());
    } else {
      uint32_t* own = nullptr;
      if (!rest.empty()) {
        own = static_cast<uint32_t*>(std::malloc((values.size() & ~size_t{1}) * sizeof(uint32_t)));
        std::copy(rest.begin(), rest.end(), own);
      }
      return std::tuple<uint64_t, uint64_t>(pair(), reinterpret_cast<uint64_t>(own));
    }
  }
  std::vector<uint32_t> rest;
};

// n terms in flat arrays.
struct Bulk {
  explicit Bulk(Call& call);
  std::string text() const;
  std::tuple<uint64_t, const CoeffWire*, const uint32_t*, const uint32_t*> c() {
    return {degs.size(), wires->c.data(), degs.data(), vars.data()};
  }
  std::vector<coeff_t> coeffs;
  std::optional<Wires> wires;
  std::vector<uint32_t> degs, vars;
  Thing model;
};

// Lower and upper ends and their number.
struct Intervals {
  explicit Intervals(Call& call);
  std::string text() const;
  std::tuple<const CoeffWire*, const CoeffWire*, uint64_t> c() {
    return {lows->c.data(), highs->c.data(), ranges.size()};
  }
  std::vector<Interval> ranges;
  std::optional<Wires> lows, highs;
};

// Literals and the expressions in their places.
struct Replacements {
  explicit Replacements(Call& call);
  std::string text() const;
  std::tuple<const uint32_t*, zorv_expr* const*, uint64_t> c() {
    return {keys.data(), exprs.data(), keys.size()};
  }
  std::vector<uint32_t> keys;
  std::vector<size_t> slots;
  std::vector<zorv_expr*> exprs;
};

// Extents: all arrays have one of a few shapes, so that two of them often fit together.
struct Extents {
  explicit Extents(Call& call);
  std::string text() const {
    return numbers_text("uint64_t", shape) + ", " + std::to_string(shape.size());
  }
  std::tuple<const uint64_t*, size_t> c() const { return {shape.data(), shape.size()}; }
  Shape shape;
};

// Which operand belongs to a C type if the table says nothing else.
template <typename C>
struct Deduce {
  using type = In<C>;
};
template <>
struct Deduce<const CoeffWire*> {
  using type = Coeff;
};
template <>
struct Deduce<CoeffWire*> {
  using type = Out;
};
template <>
struct Deduce<uint32_t> {
  using type = Literal;
};

// ---- Tables of calls ----------------------------------------------------------------------------

struct Op {
  std::string name;
  std::function<void(Call&)> run;
};
std::vector<Op>& ops();

// Runs an illegal call in a child process: one line and an abort, or the driver says so.
void expect_abort(const std::string& text, const std::function<void()>& call);

void put(KindId kind, size_t slot, Thing result);
// Replaces what has grown too large to follow.
void prune(KindId kind, size_t slot);
// Gives the slot of a consumed object something new.
void refill_taken(KindId kind, size_t slot, const void* taken);

// Calls without operands that were drawn, such as those that read a model.
#define ZORV_DO(call) (say(#call ";"), call)

template <typename... Args>
struct Table {
  // f(call, operand elements...) is one element of the result, or of the operand that is changed.
  template <typename R, typename... A, typename F>
  static void each(const char* name, R (*function)(A...), F f) {
    whole(name, function, [f](Call& call, const auto&... args) {
      Thing result;
      bool is_array = false;
      [[maybe_unused]] const auto look = [&](const auto& arg) {
        if constexpr (requires { arg.handle; }) {
          using K = typename std::remove_cvref_t<decltype(arg)>::K;
          if (K::id < kVars) return;
          if (is_array && arg.model.shape != result.shape) call.legal = false;
          if (!is_array) result.shape = arg.model.shape;
          is_array = true;
        }
      };
      (look(args), ...);
      const size_t n = is_array ? extent(result.shape) : 1;
      for (size_t i = 0; call.legal && i < n; ++i) result.e.push_back(f(call, element(args, i)...));
      return result;
    });
  }

  // f(call, operands...) is the result, or the operand that is changed.
  template <typename R, typename... A, typename F>
  static void whole(const char* name, R (*function)(A...), F f) {
    add(name, [=](Call& call, const std::string& text, auto&... args) {
      Thing should = f(call, std::as_const(args)...);
      if constexpr (std::is_void_v<R>) {
        if (!perform(call, text + ";", function, args...)) return;
        std::get<0>(std::tie(args...)).store(std::move(should));
      } else {
        using K = Kind<std::remove_pointer_t<R>>;
        const size_t slot = call.draw(kSlots);
        const std::string line =
            std::string("PUT(") + K::name + ", " + std::to_string(slot) + ", " + text + ");";
        const auto handle = perform(call, line, function, args...);
        if (!handle) return;
        should.handle = const_cast<void*>(static_cast<const void*>(*handle));
        put(K::id, slot, std::move(should));
      }
      (refill(args), ...);
    });
  }

  // check(call, what the call gave, operands...) tells whether it is right; before(call,
  // operands...) sets `legal` and `usable`.
  template <typename R, typename... A, typename F, typename Before>
  static void query(const char* name, R (*function)(A...), F check, Before before) {
    add(name, [=](Call& call, const std::string& text, auto&... args) {
      before(call, std::as_const(args)...);
      const auto got = perform(call, text + ";", function, args...);
      if (got && !check(*got, std::as_const(args)...)) wrong(text);
    });
  }
  template <typename R, typename... A, typename F>
  static void query(const char* name, R (*function)(A...), F check) {
    query(name, function, check, [](Call&, const auto&...) {});
  }

 private:
  // What is consumed may be an operand once only.
  template <typename Arg>
  static void refuse_twice(Call&, const Arg&, const auto&...) {}
  template <typename Handle>
  static void refuse_twice(Call& call, const Taken<Handle>& taken, const auto&... all) {
    const auto is_it = [&](const auto& arg) {
      if constexpr (requires { arg.handle; })
        return static_cast<const void*>(arg.handle) == taken.handle;
      return false;
    };
    if ((0 + ... + is_it(all)) > 1) call.usable = false;
  }
  template <typename Arg>
  static decltype(auto) element(const Arg& arg, size_t i) {
    if constexpr (requires { arg.model.e; }) {
      return (arg.model.e[arg.model.e.size() == 1 ? 0 : i]);
    } else {
      return (arg);
    }
  }
  template <typename Arg>
  static void refill(Arg&) {}
  template <typename Handle>
  static void refill(Taken<Handle>& taken) {
    refill_taken(Kind<Handle>::id, taken.slot, taken.handle);
  }

  template <typename F>
  static void add(const char* name, F f) {
    ops().push_back({name, [=](Call& call) {
                       std::tuple<Args...> args{Args(call)...};
                       std::apply([&](auto&... arg) { (refuse_twice(call, arg, arg...), ...); },
                                  args);
                       if (!call.usable) return;
                       std::apply(
                           [&](auto&... arg) {
                             std::string text = std::string(name) + "(";
                             if (printing) ((text += arg.text() + ", "), ...);
                             if (printing && sizeof...(Args) > 0) text.resize(text.size() - 2);
                             f(call, text + ")", arg...);
                           },
                           args);
                     }});
  }

  // Makes the call if it is legal and returns what it gives, true for nothing.
  template <typename R, typename... A>
  static auto perform(Call& call, const std::string& line, R (*function)(A...), auto&... args) {
    const auto go = [&] { return std::apply(function, std::tuple_cat(args.c()...)); };
    std::optional<std::conditional_t<std::is_void_v<R>, bool, R>> got;
    if (!call.usable) return got;
    if (!call.legal) {
      if (call.draw(16) == 0) expect_abort(line, [&] { go(); });
      return got;
    }
    say(line);
    if constexpr (std::is_void_v<R>) {
      go();
      got = true;
    } else {
      got = go();
    }
    return got;
  }
};
template <typename... A>
Table<typename Deduce<A>::type...> table_of(void (*)(A...));
template <typename R, typename... A>
Table<typename Deduce<A>::type...> table_of(R (*)(A...));

// The name of an export and its address.
#define FN(name) "zorv_" #name, zorv_##name
// The same, with operands by its C types.
#define EACH(name, ...) decltype(table_of(zorv_##name))::each(FN(name), __VA_ARGS__)
#define WHOLE(name, ...) decltype(table_of(zorv_##name))::whole(FN(name), __VA_ARGS__)
#define QUERY(name, ...) decltype(table_of(zorv_##name))::query(FN(name), __VA_ARGS__)

}  // namespace zorv::fuzz
