#include "fuzz/call.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstring>

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

Wire::Wire(const coeff_t& value) {
  std::vector<uint64_t> limbs;
  export_bits(value, std::back_inserter(limbs), 64, false);
  wire_ = {value.sign(), static_cast<uint32_t>(limbs.size()),
           static_cast<uint64_t*>(std::malloc(limbs.size() * sizeof(uint64_t)))};
  std::copy(limbs.begin(), limbs.end(), wire_.limbs);
}

coeff_t value_of(const CoeffWire* wire) {
  coeff_t magnitude;
  if (wire->sign != 0) import_bits(magnitude, wire->limbs, wire->limbs + wire->nlimbs, 64, false);
  return wire->sign < 0 ? coeff_t(-magnitude) : magnitude;
}

Wires::Wires(const std::vector<coeff_t>& values) {
  for (const coeff_t& value : values) own.emplace_back(value);
  for (Wire& wire : own) c.push_back(*wire.get());
}

std::string text_of(const coeff_t& value) {
  std::vector<uint64_t> limbs;
  export_bits(value, std::back_inserter(limbs), 64, false);
  return "{" + std::to_string(value.sign()) + ", " + std::to_string(limbs.size()) + ", " +
         numbers_text("uint64_t", limbs) + "}";
}

// ---- Values -------------------------------------------------------------------------------------

namespace {

uint64_t hash(uint64_t x) {
  x = (x ^ x >> 31) * 0x9E3779B97F4A7C15u;
  x = (x ^ x >> 29) * 0xBF58476D1CE4E5B9u;
  return x ^ x >> 32;
}

coeff_t coeff_of(const zorv_expr* e, uint64_t i, uint64_t* head, uint64_t* overflow) {
  Wire c;
  zorv_expr_term_at_data(e, i, c.get(), head, overflow);
  return c.value();
}

// The literals of a term from its head pair and its block.
std::vector<uint32_t> literals_of(uint64_t head, uint64_t overflow) {
  std::vector<uint32_t> literals = {static_cast<uint32_t>(head), static_cast<uint32_t>(head >> 32)};
  const auto* more = reinterpret_cast<const uint32_t*>(overflow);
  while (more != nullptr && *more != kNothing) literals.push_back(*more++);
  std::erase(literals, kNothing);
  return literals;
}

template <typename F>
void for_each_term(const zorv_expr* e, F f) {
  for (uint64_t i = 0; i < zorv_expr_term_count(e); ++i) {
    uint64_t head = 0, overflow = 0;
    const coeff_t c = coeff_of(e, i, &head, &overflow);
    f(c, literals_of(head, overflow));
  }
}

coeff_t constant_of(const zorv_expr* e) {
  Wire c;
  zorv_expr_constant(e, c.get());
  return c.value();
}

}  // namespace

coeff_t World::value(uint32_t literal, size_t sample) const {
  const uint32_t identity = literal & ~kComplementBit;
  const uint64_t h =
      hash((static_cast<uint64_t>(sample) << 32) + (sample == kFree ? literal : identity));
  const bool atom = (identity & kAtomBit) != 0;
  if (sample == kFree || (atom && sample == kSpin)) {
    return static_cast<int64_t>(h) >> 40;
  }
  if (atom) {
    const auto& [lo, hi] = atoms[identity - kAtomBit];
    return lo + h % (hi - lo + 1);
  }
  const auto fixed = bits.find(identity);
  const int bit = fixed != bits.end() ? fixed->second[sample] : static_cast<int>(h >> 20 & 1);
  const bool set = (bit == 1) != ((literal & kComplementBit) != 0);
  return sample == kSpin ? (set ? 1 : -1) : (set ? 1 : 0);
}

Poly World::value(uint32_t literal) const {
  Poly p;
  for (size_t s = 0; s < kSamples; ++s) p[s] = value(literal, s);
  return p;
}

coeff_t evaluate(const zorv_expr* e, const std::function<coeff_t(uint32_t)>& value_of) {
  coeff_t sum = constant_of(e);
  for_each_term(e, [&](coeff_t product, const std::vector<uint32_t>& literals) {
    for (const uint32_t literal : literals) product *= value_of(literal);
    sum += product;
  });
  return sum;
}

Poly read(const zorv_expr* e) {
  Poly sum = number(constant_of(e));
  for (uint64_t i = 0; i < zorv_expr_term_count(e); ++i) sum = sum + read(zorv_expr_term_at(e, i));
  return sum;
}

Poly read(const zorv_term* t) {
  Wire c;
  zorv_term_coeff(t, c.get());
  Poly product = number(c.value());
  for (uint32_t i = 0; i < zorv_term_degree(t); ++i) {
    product = product * world->value(zorv_term_var_at(t, i));
  }
  return product;
}

Poly least(const zorv_expr* e, uint32_t first) {
  std::set<uint32_t> free;
  for_each_term(e, [&](const coeff_t&, const std::vector<uint32_t>& literals) {
    for (const uint32_t literal : literals) {
      const uint32_t variable = literal & ~kComplementBit;
      if (variable >= first && variable < kAtomBit) free.insert(variable);
    }
  });
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

void check(bool holds, const char* what) {
  if (!holds) wrong(what);
}

void compare_item(const zorv_expr* e, uint64_t i, Poly& body, const Item* item) {
  zorv_expr* got = nullptr;
  Wire weight, lo, hi;
  const bool bounded = item != nullptr && item->entry->bounded;
  const int kind = zorv_cons_item_info(e, i, &got, weight.get(), lo.get(), hi.get());
  check(kind == (item != nullptr), "kind of item");
  Poly value = read(got);
  zorv_expr_destroy(got);
  compare(value, body, "body");
  check(weight.value() == (item != nullptr ? item->weight : 1), "weight");
  check(lo.value() == (bounded ? item->entry->lo : 0), "lower bound");
  check(hi.value() == (bounded ? item->entry->hi : 0), "upper bound");
  uint32_t k = 0, shape = 0;
  check(zorv_cons_item_shape(e, i, &k, &shape) == bounded, "shape");
  check(k == (bounded ? item->entry->k : 2) && shape == (bounded ? item->entry->kind : 0), "shape");
  check(zorv_cons_item_allowed(e, i, nullptr, nullptr, 0) ==
            (item != nullptr ? item->entry->allowed.size() : 0),
        "allowed values");
}

void compare(const zorv_expr* e, Elem& should) {
  compare(read(e), should.p, "expression");
  const uint32_t attr = zorv_expr_attr(e);
  const Tag tag = should.tag;
  check((attr == kNothing) == (tag == Tag::kPlain) && (attr < 1u << 31) == (tag == Tag::kVarInt) &&
            (attr >> 30 == 2) == (tag == Tag::kSingle),
        "tag");
  check(zorv_expr_is_declared(e) == should.declared(), "is_declared");
  check(zorv_expr_all_objective_only(e) == should.only_objective(), "all_objective_only");
  check(zorv_expr_has_body(e) == (should.items.size() == 1 && !should.rest), "has_body");
  if (!should.constrained()) return;
  const uint64_t n = should.items.size() + (should.rest ? 1 : 0);
  check(zorv_cons_item_count(e) == n, "item count");
  if (tag == Tag::kSingle && !should.items[0].entry->bounded) return;
  for (uint64_t i = 0; i < n; ++i) {
    const Item* item = i < should.items.size() ? &should.items[i] : nullptr;
    compare_item(e, i, item != nullptr ? item->entry->body : *should.rest, item);
  }
}

template <typename Array, typename Get>
void compare_array(const Array* a, Thing& should, size_t rank, const uint64_t* shape, Get get) {
  check(Shape(shape, shape + rank) == should.shape, "shape");
  check(should.e.size() == extent(should.shape), "number of elements");
  for (uint64_t i = 0; i < should.e.size(); ++i) get(a, i, should.e[i]);
}

}  // namespace

void compare(const void* handle, KindId kind, Thing& should) {
  switch (kind) {
    case kTerm:
      return compare(read(static_cast<const zorv_term*>(handle)), should.e[0].p, "term");
    case kExpr:
      return compare(static_cast<const zorv_expr*>(handle), should.e[0]);
    case kVars: {
      const auto* a = static_cast<const zorv_array_var*>(handle);
      check(zorv_array_var_size(a) == should.e.size(), "size");
      return compare_array(a, should, zorv_array_var_ndim(a), zorv_array_var_shape(a),
                           [](auto* a, uint64_t i, Elem& e) {
                             check(zorv_array_var_get(a, i) == e.literal, "literal");
                             check(zorv_array_var_data(a)[i] == e.literal, "literal");
                             e.p = world->value(e.literal);
                           });
    }
    case kInts: {
      const auto* a = static_cast<const zorv_array_int*>(handle);
      check(zorv_array_int_size(a) == should.e.size(), "size");
      return compare_array(a, should, zorv_array_int_ndim(a), zorv_array_int_shape(a),
                           [](auto* a, uint64_t i, Elem& e) {
                             Wire c;
                             zorv_array_int_get(a, i, c.get());
                             compare(number(c.value()), e.p, "integer");
                           });
    }
    case kTerms: {
      const auto* a = static_cast<const zorv_array_term*>(handle);
      check(zorv_array_term_size(a) == should.e.size(), "size");
      return compare_array(a, should, zorv_array_term_ndim(a), zorv_array_term_shape(a),
                           [](auto* a, uint64_t i, Elem& e) {
                             zorv_term* t = zorv_array_term_get(a, i);
                             compare(read(t), e.p, "term");
                             zorv_term_destroy(t);
                           });
    }
    default: {
      auto* a = static_cast<zorv_array_expr*>(const_cast<void*>(handle));
      check(zorv_array_expr_size(a) == should.e.size(), "size");
      return compare_array(
          a, should, zorv_array_expr_ndim(a), zorv_array_expr_shape(a),
          [a](auto*, uint64_t i, Elem& e) { compare(zorv_array_expr_ref(a, i), e); });
    }
  }
}

// ---- The world ----------------------------------------------------------------------------------

namespace {

void destroy(KindId kind, void* handle) {
  switch (kind) {
    case kTerm:
      return zorv_term_destroy(static_cast<zorv_term*>(handle));
    case kExpr:
      return zorv_expr_destroy(static_cast<zorv_expr*>(handle));
    case kVars:
      return zorv_array_var_destroy(static_cast<zorv_array_var*>(handle));
    case kInts:
      return zorv_array_int_destroy(static_cast<zorv_array_int*>(handle));
    case kTerms:
      return zorv_array_term_destroy(static_cast<zorv_array_term*>(handle));
    default:
      return zorv_array_expr_destroy(static_cast<zorv_array_expr*>(handle));
  }
}

bool is_large(const zorv_expr* e) {
  const auto is_long = [](const coeff_t& c) { return c != 0 && msb(abs(c)) > 1200; };
  if (zorv_expr_term_count(e) > 40 || zorv_expr_max_degree(e) > 8) return true;
  Wire largest;
  zorv_expr_gcd(e, largest.get());
  return is_long(constant_of(e)) || is_long(*read(e)[kFree]);
}

bool is_large(KindId kind, const Thing& thing) {
  if (kind == kExpr) {
    return is_large(static_cast<const zorv_expr*>(thing.handle)) || thing.e[0].items.size() > 6;
  }
  for (size_t i = 0; kind == kExprs && i < thing.e.size(); ++i) {
    const auto* e = zorv_array_expr_ref(static_cast<zorv_array_expr*>(thing.handle), i);
    if (is_large(e) || thing.e[i].items.size() > 6) return true;
  }
  return std::any_of(thing.e.begin(), thing.e.end(),
                     [](const Elem& e) { return abs(*e.p[kFree]) >= coeff_t(1) << 1200; });
}

// Fills a slot with something small.
void fill(KindId kind, size_t slot) {
  const uint32_t v = world->literals[slot];
  const Wire two(2);
  Wire one(1);
  const std::string at = std::to_string(slot) + ", ", variable = std::to_string(v) + "u)";
  const uint64_t shape[] = {2, 2};
  static const std::string kTail = "(uint64_t[]){2, 2}, 2";
  Elem zero = plain(number(0)), unit = plain(world->value(v));
  const auto make = [&](const char* name, const std::string& call, void* handle, Thing thing) {
    say("PUT(" + std::string(name) + ", " + at + call + ");");
    thing.handle = handle;
    put(kind, slot, std::move(thing));
  };
  const auto array = [&](const Elem& e) { return Thing{nullptr, {2, 2}, {e, e, e, e}}; };
  switch (kind) {
    case kTerm:
      return make("term", "zorv_term_create_var(&(CoeffWire)" + text_of(1) + ", " + variable,
                  zorv_term_create_var(one.get(), v), {nullptr, {}, {unit}});
    case kExpr:
      return make("expr", "zorv_expr_create_var(" + variable, zorv_expr_create_var(v),
                  {nullptr, {}, {unit}});
    case kVars:
      return make("array_var", "zorv_array_var_create(" + kTail + ")",
                  zorv_array_var_create(shape, 2), array(plain(world->value(0))));
    case kInts:
      return make("array_int", "zorv_array_int_create(" + kTail + ")",
                  zorv_array_int_create(shape, 2), array(zero));
    case kTerms:
      return make("array_term", "zorv_array_term_create(" + kTail + ")",
                  zorv_array_term_create(shape, 2), array(zero));
    default:
      return make("array_expr", "zorv_array_expr_create_constant_var(" + kTail + ", " + variable,
                  zorv_array_expr_create_constant_var(shape, 2, v), array(unit));
  }
}

}  // namespace

void put(KindId kind, size_t slot, Thing result) {
  compare(result.handle, kind, result);
  Thing& thing = world->things[kind][slot];
  destroy(kind, thing.handle);
  thing = std::move(result);
  prune(kind, slot);
}

void prune(KindId kind, size_t slot) {
  if (is_large(kind, world->things[kind][slot])) fill(kind, slot);
}

void refill_taken(KindId kind, size_t slot, const void* taken) {
  Thing& thing = world->things[kind][slot];
  if (thing.handle != taken) return;  // the result has its place
  thing.handle = nullptr;
  say(std::string(kind == kTerm ? "term[" : "expr[") + std::to_string(slot) + "] = 0;");
  fill(kind, slot);
}

World::World() {
  world = this;
  ZORV_DO(zorv_var_reset());
  for (int i = 0; i < 5; ++i)
    ZORV_DO(zorv_new_var(0)), literals.push_back(static_cast<uint32_t>(i));
  atoms = {{-2, 1}, {3, 7}, {-(coeff_t(1) << 64) - 1, coeff_t(1) << 63}};
  for (const auto& [lo, hi] : atoms) {
    Wire low(lo), high(hi);
    say("zorv_new_int_var(0, &(CoeffWire)" + text_of(lo) + ", &(CoeffWire)" + text_of(hi) + ");");
    const uint32_t atom = zorv_new_int_var(nullptr, low.get(), high.get());
    check(atom == kAtomBit + literals.size() - 5, "number of an atom");
    literals.push_back(atom);
    zorv_expr* e = zorv_expr_create_var(atom);
    zorv_expr* in_bits = zorv_expr_binarize(e);
    say("{ zorv_expr* e = zorv_expr_create_var(" + std::to_string(atom) +
        "u), *b = zorv_expr_binarize(e); zorv_expr_destroy(e), zorv_expr_destroy(b); }");
    // Bits for the values that the atom has at the samples over 0/1, largest first.
    std::vector<std::pair<coeff_t, uint32_t>> parts;
    for_each_term(in_bits, [&](const coeff_t& c, const std::vector<uint32_t>& literal) {
      parts.emplace_back(c, literal[0]);
    });
    std::sort(parts.rbegin(), parts.rend());
    for (const size_t s : {kBits, kMoreBits}) {
      coeff_t left = value(atom, s) - lo;
      for (const auto& [c, bit] : parts) {
        bits[bit][s] = c <= left;
        if (c <= left) left -= c;
      }
      check(left == 0, "an atom in bits");
    }
    zorv_expr_destroy(e), zorv_expr_destroy(in_bits);
  }
  for (int kind = 0; kind < kKinds; ++kind) {
    for (size_t slot = 0; slot < kSlots; ++slot) fill(static_cast<KindId>(kind), slot);
  }
}

World::~World() {
  for (int kind = 0; kind < kKinds; ++kind) {
    for (Thing& thing : things[kind]) destroy(static_cast<KindId>(kind), thing.handle);
  }
  world = nullptr;
}

// ---- Operands -----------------------------------------------------------------------------------

uint32_t draw_literal(Call& call) {
  const uint32_t literal = world->literals[call.draw(world->literals.size())];
  return literal < kAtomBit && call.draw(4) == 0 ? literal | kComplementBit : literal;
}

Literals::Literals(Call& call) : model{nullptr, {}, {plain(number(1))}} {
  values.resize(call.draw(5));
  for (uint32_t& literal : values) {
    literal = draw_literal(call);
    model.e[0].p = model.e[0].p * world->value(literal);
  }
}

Bulk::Bulk(Call& call) : model{nullptr, {}, {plain(number(0))}} {
  degs.resize(call.draw(4));
  for (uint32_t& degree : degs) {
    const Literals literals(call);
    degree = static_cast<uint32_t>(literals.values.size());
    vars.insert(vars.end(), literals.values.begin(), literals.values.end());
    coeffs.push_back(test::troublesome(call.random));
    model.e[0].p = model.e[0].p + number(coeffs.back()) * literals.model.e[0].p;
  }
  wires.emplace(coeffs);
}

namespace {
std::string coeffs_text(const std::vector<coeff_t>& values) {
  std::string all = "(CoeffWire[]){";
  for (const coeff_t& value : values) all += text_of(value) + ", ";
  return all + "{0, 0, 0}}";
}
}  // namespace

std::string Bulk::text() const {
  return std::to_string(degs.size()) + ", " + coeffs_text(coeffs) + ", " +
         numbers_text("uint32_t", degs) + ", " + numbers_text("uint32_t", vars);
}

Intervals::Intervals(Call& call) : ranges(call.draw(4)) {
  std::vector<coeff_t> low, high;
  for (auto& [lo, hi] : ranges) {
    lo = static_cast<int>(call.draw(9)) - 4;
    hi = lo + call.draw(3);
    low.push_back(lo), high.push_back(hi);
  }
  lows.emplace(low), highs.emplace(high);
}

std::string Intervals::text() const {
  std::vector<coeff_t> low, high;
  for (const auto& [lo, hi] : ranges) low.push_back(lo), high.push_back(hi);
  return coeffs_text(low) + ", " + coeffs_text(high) + ", " + std::to_string(ranges.size());
}

Replacements::Replacements(Call& call) : keys(call.draw(4)) {
  for (uint32_t& key : keys) {
    key = draw_literal(call);
    slots.push_back(call.draw(kSlots));
    exprs.push_back(static_cast<zorv_expr*>(world->things[kExpr][slots.back()].handle));
  }
}

std::string Replacements::text() const {
  return numbers_text("uint32_t", keys) + ", " +
         list_text("zorv_expr*", slots,
                   [](size_t i) { return "expr[" + std::to_string(i) + "]"; }) +
         ", " + std::to_string(keys.size());
}

Extents::Extents(Call& call) {
  static const Shape kShapes[] = {{2, 2}, {2, 2}, {2, 2}, {2}, {}, {3}, {1, 2, 2}, {2, 0}};
  shape = kShapes[call.draw(std::size(kShapes))];
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
  say(text);
  wrong("no abort with one line, but \"" + line + "\"");
}

}  // namespace zorv::fuzz
