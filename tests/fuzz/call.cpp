#include "fuzz/call.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

namespace zorv::fuzz {

World* world;
bool printing;

void say(const std::string& line) {
  if (!printing) return;
  std::printf("  %s\n", line.c_str());
  std::fflush(stdout);  // the next call may be the last
}

void wrong(const std::string& what) {
  std::printf("  /* wrong: %s */\n", what.c_str());
  std::fflush(stdout);
  _exit(3);
}

// ---- Integers -----------------------------------------------------------------------------------

namespace {

std::vector<uint64_t> limbs_of(const coeff_t& value) {
  std::vector<uint64_t> limbs;
  export_bits(value, std::back_inserter(limbs), 64, false);
  return limbs;
}

}  // namespace

coeff_t value_of(const CoeffWire& wire) {
  coeff_t magnitude;
  if (wire.sign != 0) import_bits(magnitude, wire.limbs, wire.limbs + wire.nlimbs, 64, false);
  return wire.sign < 0 ? coeff_t(-magnitude) : magnitude;
}

std::string text_of(const coeff_t& value) {
  const std::vector<uint64_t> limbs = limbs_of(value);
  return "{" + std::to_string(value.sign()) + ", " + std::to_string(limbs.size()) + ", " +
         numbers_text("uint64_t", limbs) + "}";
}

Wires::Wires(const std::vector<coeff_t>& values) : text("(CoeffWire[]){") {
  for (const coeff_t& value : values) {
    auto& own = limbs.emplace_back(limbs_of(value));
    c.push_back({value.sign(), static_cast<uint32_t>(own.size()), own.data()});
    text += text_of(value) + ", ";
  }
  text += "{0, 0, 0}}";
}

// ---- Values -------------------------------------------------------------------------------------

namespace {

uint64_t hash(uint64_t x) {
  x = (x ^ x >> 31) * 0x9E3779B97F4A7C15u;
  x = (x ^ x >> 29) * 0xBF58476D1CE4E5B9u;
  return x ^ x >> 32;
}

}  // namespace

coeff_t World::value(uint32_t literal, size_t sample) const {
  const uint32_t identity = literal & ~kComplementBit;
  const bool atom = (identity & kAtomBit) != 0, free = sample == kFree || (atom && sample == kSpin);
  // A variable is the same one as spin and as bit.
  const uint64_t key = sample == kSpin && !atom ? kBits : sample;
  const uint64_t h = hash((key << 32) + (sample == kFree ? literal : identity));
  if (free) return static_cast<int64_t>(h) >> 40;
  if (atom) {
    const auto& [lo, hi] = atoms[identity - kAtomBit];
    return lo + h % (hi - lo + 1);
  }
  const auto fixed = bits.find(identity);
  const int bit = fixed != bits.end() ? fixed->second[key] : static_cast<int>(h >> 20 & 1);
  const bool set = (bit == 1) != ((literal & kComplementBit) != 0);
  return sample == kSpin ? (set ? 1 : -1) : (set ? 1 : 0);
}

Poly World::value(uint32_t literal) const {
  Poly p;
  for (size_t s = 0; s < kSamples; ++s) p[s] = value(literal, s);
  return p;
}

std::vector<uint32_t> literals_of(const zorv_term* t) {
  std::vector<uint32_t> all(zorv_term_degree(t));
  for (uint32_t i = 0; i < all.size(); ++i) all[i] = zorv_term_var_at(t, i);
  return all;
}

std::vector<uint32_t> literals_of(const zorv_expr* e) {
  std::vector<uint32_t> all;
  for (uint64_t i = 0; i < zorv_expr_term_count(e); ++i) {
    for (const uint32_t literal : literals_of(zorv_expr_term_at(e, i))) all.push_back(literal);
  }
  return all;
}

// By the other way to read terms: a head pair and a block.
coeff_t evaluate(const zorv_expr* e, const std::function<coeff_t(uint32_t)>& value_of) {
  coeff_t sum = got(zorv_expr_constant, e);
  for (uint64_t i = 0; i < zorv_expr_term_count(e); ++i) {
    uint64_t head = 0, overflow = 0;
    coeff_t product = got([&](CoeffWire* c) { zorv_expr_term_at_data(e, i, c, &head, &overflow); });
    for (const auto literal : {static_cast<uint32_t>(head), static_cast<uint32_t>(head >> 32)}) {
      if (literal != kNothing) product *= value_of(literal);
    }
    const auto* more = reinterpret_cast<const uint32_t*>(overflow);
    while (more != nullptr && *more != kNothing) product *= value_of(*more++);
    sum += product;
  }
  return sum;
}

Poly read(const zorv_expr* e) {
  Poly sum = number(got(zorv_expr_constant, e));
  for (uint64_t i = 0; i < zorv_expr_term_count(e); ++i) sum = sum + read(zorv_expr_term_at(e, i));
  return sum;
}

Poly read(const zorv_term* t) {
  Poly product = number(got(zorv_term_coeff, t));
  for (const uint32_t literal : literals_of(t)) product = product * world->value(literal);
  return product;
}

Body::Body(const zorv_expr* whole, uint64_t item) {
  const auto numbers = got<3>([&](CoeffWire* a, CoeffWire* b, CoeffWire* c) {
    kind = zorv_cons_item_info(whole, item, &e, a, b, c);
  });
  weight = numbers[0], lo = numbers[1], hi = numbers[2];
}

Poly least(const zorv_expr* e, uint32_t first) {
  std::set<uint32_t> free;
  for (const uint32_t literal : literals_of(e)) {
    const uint32_t variable = literal & ~kComplementBit;
    if (variable >= first && variable < kAtomBit) free.insert(variable);
  }
  Poly result;
  if (free.size() > 5) return result;
  for (uint64_t choice = 0; choice < uint64_t{1} << free.size(); ++choice) {
    for (const size_t s : {kBits, kMoreBits}) {
      const coeff_t value = evaluate(e, [&](uint32_t literal) -> coeff_t {
        const auto at = free.find(literal & ~kComplementBit);
        if (at == free.end()) return world->value(literal, s);
        const bool set = (choice >> std::distance(free.begin(), at) & 1) != 0;
        return set != ((literal & kComplementBit) != 0) ? 1 : 0;
      });
      if (!result[s] || value < *result[s]) result[s] = value;
    }
  }
  return result;
}

void check_penalty(const zorv_expr* penalty, const Poly& value, const coeff_t& lo,
                   const coeff_t& hi, uint32_t first) {
  const Poly at_best = least(penalty, first);
  for (const size_t s : {kBits, kMoreBits}) {
    if (!at_best[s]) continue;
    const bool holds = lo > hi || Entry::outside({lo, hi}, *value[s]) == 0;
    check(holds ? *at_best[s] == 0 : *at_best[s] > 0, "penalty at its best");
  }
}

// ---- What objects should be ---------------------------------------------------------------------

namespace {

void compare(const Poly& got, Poly& should, const char* what) {
  for (size_t s = 0; s < kSamples; ++s) {
    if (should[s] && *should[s] != *got[s]) {
      wrong(std::string(what) + " comes to " + got[s]->str() + ", not " + should[s]->str());
    }
    should[s] = got[s];
  }
}

void compare_item(const zorv_expr* e, uint64_t i, Poly& body, const Item* item) {
  static const Entry kFreeForm;
  const Entry& entry = item != nullptr && item->entry->bounded ? *item->entry : kFreeForm;
  const Body got(e, i);
  check(got.kind == (item != nullptr), "kind of item");
  compare(read(got.e), body, "body");
  check(zorv_expr_attr(got.e) == kNothing, "tag of a body");
  check(got.weight == (item != nullptr ? item->weight : 1), "weight");
  check(got.lo == entry.lo && got.hi == entry.hi, "bounds");
  uint32_t k = 0, shape = 0;
  check(zorv_cons_item_shape(e, i, &k, &shape) == entry.bounded, "shape");
  check(k == entry.k && shape == entry.kind, "shape");
  const size_t n = item != nullptr ? item->entry->allowed.size() : 0;
  Written lows(n), highs(n);
  check(zorv_cons_item_allowed(e, i, lows.c.data(), highs.c.data(), n) == n, "allowed values");
  for (size_t j = 0; j < n; ++j) {
    const Interval range = {value_of(lows.c[j]), value_of(highs.c[j])};
    check(range == item->entry->allowed[j], "allowed value");
  }
}

void look(const zorv_term* t, uint64_t, Elem& should) { compare(read(t), should.p, "term"); }

void look(const zorv_expr* e, uint64_t, Elem& should) {
  compare(read(e), should.p, "expression");
  const uint32_t attr = zorv_expr_attr(e);
  const Tag tag = should.tag;
  check((attr == kNothing) == (tag == Tag::kPlain) && (attr < 1u << 31) == (tag == Tag::kVarInt) &&
            (attr >> 30 == 2) == (tag == Tag::kSingle),
        "tag");
  check(zorv_expr_is_declared(e) == should.declared(), "is_declared");
  check(zorv_expr_all_objective_only(e) == should.only_objective(), "all_objective_only");
  check(zorv_expr_has_body(e) == (should.items.size() == 1 && !should.rest), "has_body");
  // Without bounds, or without any constraint, the expression itself is the only item.
  const bool alone =
      !should.constrained() || (tag == Tag::kSingle && !should.items[0].entry->bounded);
  const uint64_t bounded = alone ? 0 : should.items.size(), n = bounded + (alone || should.rest);
  check(zorv_cons_item_count(e) == n, "item count");
  for (uint64_t i = 0; i < n; ++i) {
    const Item* item = i < bounded ? &should.items[i] : nullptr;
    compare_item(e, i, item != nullptr ? item->entry->body : alone ? should.p : *should.rest, item);
  }
}

void look(const zorv_array_var* a, uint64_t i, Elem& should) {
  const uint32_t literal = zorv_array_var_get(a, i);
  check(zorv_array_var_data(a)[i] == literal, "data");
  if (should.literal != kNothing) check(literal == should.literal, "literal");
  should = plain(world->value(literal));
  should.literal = literal;
}
void look(const zorv_array_int* a, uint64_t i, Elem& should) {
  compare(number(got(zorv_array_int_get, a, i)), should.p, "integer");
}
void look(const zorv_array_term* a, uint64_t i, Elem& should) {
  zorv_term* t = zorv_array_term_get(a, i);
  look(t, 0, should);
  zorv_term_destroy(t);
}
void look(const zorv_array_expr* a, uint64_t i, Elem& should) {
  look(zorv_array_expr_ref(const_cast<zorv_array_expr*>(a), i), 0, should);
}

void look_at_shape(const void*, size_t size, const Thing&) { check(size == 1, "model"); }
#define ZORV_SHAPE(id, type)                                                            \
  void look_at_shape(const zorv_##type* a, size_t size, const Thing& should) {          \
    check(zorv_##type##_size(a) == size && size == extent(should.shape), "size");       \
    check(zorv_##type##_ndim(a) == should.shape.size(), "rank");                        \
    for (size_t k = 0; k < should.shape.size(); ++k) {                                  \
      check(zorv_##type##_shape(a)[k] == should.shape[k], "extent");                    \
      check(zorv_##type##_shape_at(a, static_cast<int>(k)) == should.shape[k], "axis"); \
    }                                                                                   \
  }
ZORV_ARRAY_KINDS(ZORV_SHAPE)
#undef ZORV_SHAPE

template <typename F>
void with_type(const void* handle, KindId kind, F f) {
#define ZORV_CASE(id, type) \
  if (kind == id) f(static_cast<zorv_##type*>(const_cast<void*>(handle)));
  ZORV_KINDS(ZORV_CASE)
#undef ZORV_CASE
}

}  // namespace

void compare(const void* handle, KindId kind, Thing& should) {
  with_type(handle, kind, [&](const auto* object) {
    look_at_shape(object, should.e.size(), should);
    for (uint64_t i = 0; i < should.e.size(); ++i) look(object, i, should.e[i]);
  });
}

// ---- The world ----------------------------------------------------------------------------------

namespace {

void destroy(void* handle, KindId kind) {
  with_type(handle, kind,
            [](auto* object) { Kind<std::remove_pointer_t<decltype(object)>>::destroy(object); });
}

bool is_large(KindId kind, const Thing& thing) {
  const auto is_long = [](const void* handle) {
    const auto* e = static_cast<const zorv_expr*>(handle);
    return zorv_expr_term_count(e) > 40 || zorv_expr_max_degree(e) > 8;
  };
  bool large = kind == kExpr && is_long(thing.handle);
  for (size_t i = 0; i < thing.e.size(); ++i) {
    large |= thing.e[i].items.size() > 6 || abs(*thing.e[i].p[kFree]) >= coeff_t(1) << 1200;
    if (kind == kExprs) {
      large |= is_long(zorv_array_expr_ref(static_cast<zorv_array_expr*>(thing.handle), i));
    }
  }
  return large;
}

// Fills a slot by one of the calls that make something small.
void fill(KindId kind, size_t slot) {
  static const char* kCalls[] = {"zorv_term_create_var",        "zorv_expr_create_from_bulk",
                                 "zorv_array_var_create_data",  "zorv_array_int_create_data",
                                 "zorv_array_term_create_data", "zorv_array_expr_create_data"};
  Call call(kind * kSlots + slot);
  call.target = slot;
  for (const Op& op : ops()) {
    if (op.name == kCalls[kind]) op.run(call);
  }
}

}  // namespace

void put(KindId kind, size_t slot, Thing thing) {
  compare(thing.handle, kind, thing);
  Thing& home = world->things[kind][slot];
  if (home.handle != thing.handle) destroy(home.handle, kind);
  home = std::move(thing);
  if (is_large(kind, home)) fill(kind, slot);
}

World::World() {
  world = this;
  ZORV_DO(zorv_var_reset());
  for (int i = 0; i < 5; ++i) literals.push_back(ZORV_DO(zorv_new_var(0)));
  atoms = {{-2, 1}, {3, 7}, {-(coeff_t(1) << 64) - 1, coeff_t(1) << 63}};
  for (const auto& [lo, hi] : atoms) {
    const Wires low({lo}), high({hi});
    say("zorv_new_int_var(0, " + low.text + ", " + high.text + ");");
    const uint32_t atom = zorv_new_int_var(nullptr, low.c.data(), high.c.data());
    check(atom == kAtomBit + literals.size() - 5, "number of an atom");
    literals.push_back(atom);
    // Its bits, with the values that make up its own over 0/1, largest first.
    Written coeffs(zorv_comp_coeffs_count(low.c.data(), high.c.data()));
    zorv_comp_coeffs(low.c.data(), high.c.data(), coeffs.c.data());
    const auto first = static_cast<uint32_t>(zorv_var_count());
    say("zorv_expr_destroy(zorv_expr_binarize(e = zorv_expr_create_var(" + std::to_string(atom) +
        "u))), zorv_expr_destroy(e);");
    zorv_expr* e = zorv_expr_create_var(atom);
    zorv_expr_destroy(zorv_expr_binarize(e)), zorv_varintelem_destroy(e);
    check(zorv_var_count() == first + coeffs.c.size(), "number of bits");
    for (const size_t s : {kBits, kMoreBits}) {
      coeff_t left = value(atom, s) - lo;
      for (uint32_t i = static_cast<uint32_t>(coeffs.c.size()); i-- > 0;) {
        const coeff_t c = value_of(coeffs.c[i]);
        bits[first + i][s] = c <= left;
        if (c <= left) left -= c;
      }
      check(left == 0, "an atom in bits");
    }
  }
  for (int kind = 0; kind < kKinds; ++kind) {
    for (size_t slot = 0; slot < kSlots; ++slot) fill(static_cast<KindId>(kind), slot);
  }
}

World::~World() {
  for (int kind = 0; kind < kKinds; ++kind) {
    for (Thing& thing : things[kind]) destroy(thing.handle, static_cast<KindId>(kind));
  }
  world = nullptr;
}

// ---- Operands -----------------------------------------------------------------------------------

Coeff::Coeff(Call& call, bool small)
    : value(!small              ? test::troublesome(call.random)
            : call.draw(2) == 0 ? coeff_t(call.draw(2))
                                : coeff_t(static_cast<int>(call.draw(9)) - 4)),
      wires({value}) {
  text = "&(CoeffWire)" + text_of(value), c = {wires.c.data()};
  model = {nullptr, {}, {plain(number(value))}};
}

Literal::Literal(Call& call) : value(world->literals[call.draw(world->literals.size())]) {
  if (value < kAtomBit && call.draw(4) == 0) value |= kComplementBit;
  text = std::to_string(value) + "u", c = {value};
  model = {nullptr, {}, {plain(world->value(value))}};
  model.e[0].literal = value;
}

Name::Name(Call& call) {
  static constexpr const char* kNames[] = {nullptr, "", "n", "n[1]"};
  value = kNames[call.draw(std::size(kNames))], c = {value};
  text = value == nullptr ? "0" : "\"" + std::string(value) + "\"";
}

Literals::Literals(Call& call) {
  model = {nullptr, {}, {plain(number(1))}};
  for (size_t n = call.draw(5); n > 0; --n) {
    const Literal literal(call);
    values.push_back(literal.value);
    model.e[0].p = model.e[0].p * literal.model.e[0].p;
  }
  text = numbers_text("uint32_t", values) + ", " + std::to_string(values.size());
  c = {values.data(), static_cast<uint32_t>(values.size())};
}

uint64_t adopted(const std::vector<uint32_t>& block) {
  if (block.empty()) return 0;
  const size_t room = (block.size() + 1) & ~size_t{1};
  auto* own = static_cast<uint32_t*>(std::malloc(room * sizeof(uint32_t)));
  std::copy(block.begin(), block.end(), own);
  return reinterpret_cast<uint64_t>(own);
}

Bulk::Bulk(Call& call) {
  std::vector<coeff_t> coeffs;
  model = {nullptr, {}, {plain(number(0))}};
  for (size_t n = call.draw(4); n > 0; --n) {
    const Literals literals(call);
    degs.push_back(static_cast<uint32_t>(literals.values.size()));
    vars.insert(vars.end(), literals.values.begin(), literals.values.end());
    coeffs.push_back(test::troublesome(call.random));
    model.e[0].p = model.e[0].p + number(coeffs.back()) * literals.model.e[0].p;
  }
  wires.emplace(coeffs);
  text = std::to_string(degs.size()) + ", " + wires->text + ", " + numbers_text("uint32_t", degs) +
         ", " + numbers_text("uint32_t", vars);
  c = {degs.size(), wires->c.data(), degs.data(), vars.data()};
}

Intervals::Intervals(Call& call) : ranges(call.draw(4)) {
  std::vector<coeff_t> low, high;
  for (auto& [lo, hi] : ranges) {
    low.push_back(lo = static_cast<int>(call.draw(9)) - 4);
    high.push_back(hi = lo + call.draw(4) - 1);  // now and then empty
  }
  lows.emplace(low), highs.emplace(high);
  text = lows->text + ", " + highs->text + ", " + std::to_string(ranges.size());
  c = {lows->c.data(), highs->c.data(), ranges.size()};
}

Extents::Extents(Call& call) {
  static const Shape kShapes[] = {{2, 2}, {2, 2}, {2, 2}, {2}, {}, {3}, {1, 2, 2}, {2, 0}};
  shape = kShapes[call.draw(std::size(kShapes))];
  text = numbers_text("uint64_t", shape) + ", " + std::to_string(shape.size());
  c = {shape.data(), shape.size()};
}

// ---- Calls --------------------------------------------------------------------------------------

std::vector<Op>& ops() {
  static std::vector<Op> all;
  return all;
}

void expect_abort(const std::string& text, const std::function<void()>& call) {
  std::fflush(stdout);
  int ends[2];
  if (pipe(ends) != 0) return;
  const pid_t child = fork();
  if (child == 0) {
    dup2(ends[1], STDERR_FILENO);
    close(ends[0]);
    call();
    _exit(0);
  }
  close(ends[1]);
  std::string line;
  char buffer[512];
  for (ssize_t n; (n = ::read(ends[0], buffer, sizeof buffer)) > 0;) line.append(buffer, n);
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  if (WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT && line.starts_with("zorv: ") &&
      line.find('\n') == line.size() - 1) {
    return;
  }
  say(text + ";");
  wrong("no abort with one line, but \"" + line + "\"");
}

}  // namespace zorv::fuzz
