// A klb5 library that writes down its calls. Its engines answer what the test tells them to; its
// rounds do improve states, by descent on energies computed plainly from what they were given.
#include "fakes/klb5_fake.h"

#include <algorithm>

namespace fake {
namespace {

Klb5Fake& control() { return *klb5_fake(); }

template <typename... Parts>
void log(const Parts&... parts) {
  if (!control().is_quiet) say(parts...);
}

// The engines -------------------------------------------------------------------------------------

struct Solver {
  const char* engine;
  void* wrapper;
  uint8_t* stop;
};

SolverCallback callback_of_cpu, callback_of_gpu;
SolverCallbackIv callback_iv;

// The solver, which must be of the engine whose function was called.
Solver& solver_of(const char* engine, void* handle) {
  Solver& solver = *static_cast<Solver*>(handle);
  if (std::strcmp(solver.engine, engine) != 0) say("a handle of ", solver.engine);
  return solver;
}

void fill(const Klb5Answer& answer, Klb5SolutionOut* out) {
  write(answer.energy, &out->energy);
  std::copy_n(answer.bits.begin(), std::min<size_t>(answer.bits.size(), out->nwords), out->bits);
  out->tts = answer.tts;
}

void* run_search(const Solver& solver, SolverCallback callback, Klb5SolutionOut* out) {
  if (control().during_search) {
    control().during_search({solver.wrapper, solver.stop, callback, callback_iv});
  }
  fill(control().answers[0], out);
  if (control().has_facts) out->info = facts({{"moves", "12"}, {"device", "none"}});
  return control().answers.size() > 1 ? new int(0) : nullptr;
}

std::string ranges(uint64_t n, const ::coeff_t* lo, const ::coeff_t* hi) {
  return std::to_string(n) + " ints" + intervals(n, lo, hi);
}

// The rounds --------------------------------------------------------------------------------------

struct RoundCons {
  Coeff weight, lo, hi, constant;
  std::vector<uint32_t> vars;
  std::vector<Coeff> coeffs;
  std::vector<uint64_t> nl_head;
  std::vector<uint32_t> nl_vars;
  std::vector<Coeff> nl_coeffs, allowed_lo, allowed_hi;
  uint8_t shape_k;
};

struct Rounds {
  uint64_t nbits, nints;
  const Coeff *lo, *hi, *constant;
  uint32_t max_degree;
  const uint64_t* term_count;
  const uint32_t* const* term_vars;
  const ::coeff_t* const* term_coeffs;
  std::vector<RoundCons> cons;
  uint64_t rounds = 0;

  uint64_t words() const { return std::max<uint64_t>(1, (nbits + 63) / 64); }
  uint64_t ints() const { return std::max<uint64_t>(1, nints); }
};

using State = std::vector<Coeff>;  // binary variables first

// The product of literals, where bit 31 marks complements and bit 30 integer variables.
Coeff product(const Rounds& r, const State& x, const uint32_t* from, const uint32_t* to) {
  Coeff value = 1;
  for (; from != to && value != 0; ++from) {
    const Coeff& v = x[(*from & 0x3FFFFFFF) + ((*from >> 30 & 1) != 0 ? r.nbits : 0)];
    value *= *from >> 31 != 0 ? Coeff(1 - v) : v;
  }
  return value;
}

Coeff penalty(const Rounds& r, const RoundCons& c, const State& x) {
  Coeff body = c.constant;
  for (size_t i = 0; i < c.vars.size(); ++i) body += c.coeffs[i] * x[c.vars[i]];
  for (size_t t = 0; t < c.nl_coeffs.size(); ++t) {
    body += c.nl_coeffs[t] *
            product(r, x, c.nl_vars.data() + c.nl_head[t], c.nl_vars.data() + c.nl_head[t + 1]);
  }
  const auto distance = [&](const Coeff& lo, const Coeff& hi) {
    return std::max({Coeff(0), Coeff(lo - body), Coeff(body - hi)});
  };
  Coeff violation = distance(c.lo, c.hi);
  for (size_t i = 0; i < c.allowed_lo.size(); ++i) {
    const Coeff d = distance(c.allowed_lo[i], c.allowed_hi[i]);
    violation = i == 0 ? d : std::min(violation, d);
  }
  return c.weight * (c.shape_k == 1 ? violation : violation * violation);
}

Coeff energy_of(const Rounds& r, const State& x) {
  Coeff energy = *r.constant;
  for (uint32_t d = 1; d <= r.max_degree; ++d) {
    for (uint64_t t = 0; t < r.term_count[d - 1]; ++t) {
      const uint32_t* literals = r.term_vars[d - 1] + t * d;
      energy += values(r.term_coeffs[d - 1])[t] * product(r, x, literals, literals + d);
    }
  }
  for (const RoundCons& c : r.cons) energy += penalty(r, c, x);
  return energy;
}

// Flips bits and moves integers by one as long as that helps.
void improve(const Rounds& r, State& x, Coeff& energy) {
  for (bool is_better = true; is_better;) {
    is_better = false;
    for (size_t i = 0; i < x.size(); ++i) {
      const Coeff old = x[i];
      for (const Coeff& moved : i < r.nbits ? State{1 - old} : State{old - 1, old + 1}) {
        if (i >= r.nbits && (moved < r.lo[i - r.nbits] || moved > r.hi[i - r.nbits])) continue;
        x[i] = moved;
        const Coeff changed = energy_of(r, x);
        if (changed < energy) {
          energy = changed;
          is_better = true;
          break;
        }
        x[i] = old;
      }
    }
  }
}

}  // namespace
}  // namespace fake

using namespace fake;

extern "C" {

Klb5Fake* klb5_fake() {
  static Klb5Fake record;
  return &record;
}

int32_t zorv_klb5_gpu_device_count(void) { return control().devices; }
void zorv_klb5_init(void) { log("init"); }

void* zorv_klb5_cpu_solver_create(void* wrapper, uint64_t nvars, uint32_t max_degree,
                                  const coeff_t* constant, const uint64_t* term_count,
                                  const uint32_t* const* term_vars,
                                  const coeff_t* const* term_coeffs) {
  log("cpu create ", nvars, ": ",
      polynomial(constant, max_degree, term_count, term_vars, term_coeffs));
  return new Solver{"cpu", wrapper, nullptr};
}

void* zorv_klb5_solver_create(void* wrapper, uint64_t nvars, uint32_t max_degree,
                              const coeff_t* constant, const uint64_t* term_count,
                              const uint32_t* const* term_vars, const coeff_t* const* term_coeffs,
                              int64_t mode) {
  log("gpu create ", nvars, ": ",
      polynomial(constant, max_degree, term_count, term_vars, term_coeffs), ", mode ", mode);
  return new Solver{"gpu", wrapper, nullptr};
}

#define KLB5_ENGINE(engine, prefix)                                                                \
  void prefix##solver_destroy(void* handle) {                                                      \
    log(#engine " destroy");                                                                       \
    delete &solver_of(#engine, handle);                                                            \
  }                                                                                                \
  void* prefix##solver_search(void* handle, Klb5SolutionOut* out, uint32_t nvars,                  \
                              const ParamPair* pairs, const uint64_t* hint) {                      \
    log(#engine " search ", nvars, ":", params(pairs), " hint ", words(hint, out->nwords));        \
    return run_search(solver_of(#engine, handle), callback_of_##engine, out);                      \
  }                                                                                                \
  void prefix##register_callback(SolverCallback fn) {                                              \
    log(#engine " register");                                                                      \
    callback_of_##engine = fn;                                                                     \
  }                                                                                                \
  uint64_t prefix##sol_list_count(void*) {                                                         \
    log(#engine " list count");                                                                    \
    return control().answers.size() - 1;                                                           \
  }                                                                                                \
  void prefix##sol_list_get(void*, uint64_t i, Klb5SolutionOut* out, uint32_t nvars) {             \
    log(#engine " list get ", i, " of ", nvars, " bits, ", out->nwords, " words");                 \
    fill(control().answers[i + 1], out);                                                           \
  }                                                                                                \
  void prefix##sol_list_destroy(void* list) {                                                      \
    log(#engine " list destroy");                                                                  \
    delete static_cast<int*>(list);                                                                \
  }                                                                                                \
  void prefix##hint_solution(void* handle, const uint64_t* bits) {                                 \
    solver_of(#engine, handle);                                                                    \
    log(#engine " hint ", words(bits, 1));                                                         \
  }                                                                                                \
  void prefix##solver_set_external_stop(void* handle, uint8_t* stop) {                             \
    log(#engine " stop ", int{*stop});                                                             \
    solver_of(#engine, handle).stop = stop;                                                        \
  }                                                                                                \
  void prefix##add_constraint(void* handle, const coeff_t* weight, const coeff_t* lo,              \
                              const coeff_t* hi, const coeff_t* constant, uint64_t n,              \
                              const uint32_t* vars, const coeff_t* coeffs) {                       \
    solver_of(#engine, handle);                                                                    \
    log(#engine " cons ", constraint(weight, lo, hi, linear(constant, n, vars, coeffs)));          \
  }                                                                                                \
  void prefix##add_constraint_nl(                                                                  \
      void*, const coeff_t* weight, const coeff_t* lo, const coeff_t* hi, const coeff_t* constant, \
      uint64_t n, const uint32_t* vars, const coeff_t* coeffs, uint64_t nl_n,                      \
      const uint64_t* nl_head, const uint32_t* nl_vars, const coeff_t* nl_coeffs) {                \
    log(#engine " cons ", constraint(weight, lo, hi,                                               \
                                     linear(constant, n, vars, coeffs) + " nl" +                   \
                                         nonlinear(nl_n, nl_head, nl_vars, nl_coeffs)));           \
  }                                                                                                \
  void prefix##add_constraint_set(void*, const coeff_t* weight, const coeff_t* lo,                 \
                                  const coeff_t* hi, const coeff_t* constant, uint64_t n,          \
                                  const uint32_t* vars, const coeff_t* coeffs, uint64_t sets,      \
                                  const coeff_t* allowed_lo, const coeff_t* allowed_hi) {          \
    log(#engine " cons ", constraint(weight, lo, hi, linear(constant, n, vars, coeffs)), " set",   \
        intervals(sets, allowed_lo, allowed_hi));                                                  \
  }                                                                                                \
  void prefix##set_cons_shape(void*, uint8_t k, uint8_t kind) {                                    \
    log(#engine " shape ", int{k}, " ", int{kind});                                                \
  }                                                                                                \
  void prefix##set_remainder(void*, const coeff_t* constant, uint64_t n, const uint64_t* head,     \
                             const uint32_t* vars, const coeff_t* coeffs) {                        \
    log(#engine " remainder ", number(constant), nonlinear(n, head, vars, coeffs));                \
  }
KLB5_ENGINE(cpu, zorv_klb5_cpu_)
KLB5_ENGINE(gpu, zorv_klb5_)

void* zorv_klb5_cpu_solver_create_int(void* wrapper, uint64_t nbits, uint32_t nints,
                                      const coeff_t* int_lo, const coeff_t* int_hi,
                                      uint32_t max_degree, const coeff_t* constant,
                                      const uint64_t* term_count, const uint32_t* const* term_vars,
                                      const coeff_t* const* term_coeffs, int32_t mode) {
  log("cpu create_int ", nbits, ", ", ranges(nints, int_lo, int_hi), ": ",
      polynomial(constant, max_degree, term_count, term_vars, term_coeffs), ", mode ", mode);
  return new Solver{"cpu", wrapper, nullptr};
}

void* zorv_klb5_cpu_solver_search_int(void* handle, Klb5SolutionOut* out, uint32_t nbits,
                                      const ParamPair* pairs, coeff_t* ints) {
  log("cpu search_int ", nbits, ":", params(pairs), " ints ", numbers(ints, control().ints.size()));
  std::copy(control().ints.begin(), control().ints.end(), values(ints));
  return run_search(solver_of("cpu", handle), nullptr, out);
}

void zorv_klb5_cpu_register_callback_iv(SolverCallbackIv fn) {
  log("cpu register_iv");
  callback_iv = fn;
}

void zorv_klb5_cpu_hint_iv(void* handle, const uint64_t* bits, const coeff_t* ints,
                           uint64_t nints) {
  solver_of("cpu", handle);
  log("cpu hint_iv ", words(bits, 1), " ", numbers(ints, nints));
}

void* zorv_klb5_int_create(uint64_t nbits, uint64_t nints, const coeff_t* int_lo,
                           const coeff_t* int_hi, uint32_t max_degree, const coeff_t* constant,
                           const uint64_t* term_count, const uint32_t* const* term_vars,
                           const coeff_t* const* term_coeffs, uint64_t zero, uint64_t replicas,
                           uint32_t) {
  log("int create ", nbits, ", ", ranges(nints, int_lo, int_hi), ": ",
      polynomial(constant, max_degree, term_count, term_vars, term_coeffs), ", ", zero, " ",
      replicas);
  return new Rounds{nbits,      nints,      values(int_lo), values(int_hi), values(constant),
                    max_degree, term_count, term_vars,      term_coeffs,    {}};
}

void zorv_klb5_int_add_cons(void* handle, const coeff_t* weight, const coeff_t* lo,
                            const coeff_t* hi, const coeff_t* body_constant, uint64_t nvars,
                            const uint32_t* vars, const coeff_t* coeffs, uint64_t nl_count,
                            const uint64_t* nl_head, const uint32_t* nl_vars,
                            const coeff_t* nl_coeffs, uint64_t n_allowed, const coeff_t* allowed_lo,
                            const coeff_t* allowed_hi) {
  log("int cons ",
      constraint(weight, lo, hi,
                 linear(body_constant, nvars, vars, coeffs) + " nl" +
                     nonlinear(nl_count, nl_head, nl_vars, nl_coeffs)),
      " set", intervals(n_allowed, allowed_lo, allowed_hi));
  RoundCons c = {*values(weight),
                 *values(lo),
                 *values(hi),
                 *values(body_constant),
                 {},
                 {},
                 {},
                 {},
                 {},
                 {},
                 {},
                 2};
  c.vars.assign(vars, vars + nvars);
  c.coeffs.assign(values(coeffs), values(coeffs) + nvars);
  if (nl_count > 0) {
    c.nl_head.assign(nl_head, nl_head + nl_count + 1);
    c.nl_vars.assign(nl_vars, nl_vars + c.nl_head.back());
    c.nl_coeffs.assign(values(nl_coeffs), values(nl_coeffs) + nl_count);
  }
  c.allowed_lo.assign(values(allowed_lo), values(allowed_lo) + n_allowed);
  c.allowed_hi.assign(values(allowed_hi), values(allowed_hi) + n_allowed);
  static_cast<Rounds*>(handle)->cons.push_back(std::move(c));
}

void zorv_klb5_int_set_cons_shape(void* handle, uint8_t k, uint8_t kind) {
  log("int shape ", int{k}, " ", int{kind});
  static_cast<Rounds*>(handle)->cons.back().shape_k = k;
}

int32_t zorv_klb5_int_round2(void* handle, const uint64_t* in_bits, const coeff_t* in_ints,
                             uint32_t count, uint64_t* out_bits, coeff_t* out_ints,
                             coeff_t* out_energies, uint8_t* out_flags) {
  Rounds& r = *static_cast<Rounds*>(handle);
  ++r.rounds;
  if (control().before_round) {
    const int32_t status = control().before_round({r.rounds, count, in_bits, values(in_ints)});
    if (status != 0) return status;
  }
  for (uint32_t s = 0; s < count; ++s) {
    const uint64_t* bits = in_bits + s * r.words();
    const Coeff* ints = values(in_ints) + s * r.ints();
    State x(r.nbits + r.nints);
    for (size_t i = 0; i < r.nbits; ++i) x[i] = bits[i / 64] >> (i % 64) & 1;
    std::copy_n(ints, r.nints, x.begin() + static_cast<ptrdiff_t>(r.nbits));
    for (size_t i = 0; i < r.nbits && !control().begins_at.empty(); ++i) {
      x[i] = control().begins_at[i / 64] >> (i % 64) & 1;
    }
    Coeff energy = energy_of(r, x);
    if (control().improves) improve(r, x, energy);
    if (control().value_error != 0) {
      x[r.nbits] += control().value_error;
      energy = energy_of(r, x);
    }
    if (out_flags[s] != 0) say("a flag that is set");
    std::fill_n(out_bits + s * r.words(), r.words(), 0);
    for (size_t i = 0; i < r.nbits; ++i) {
      if (x[i] != 0) out_bits[s * r.words() + i / 64] |= uint64_t{1} << (i % 64);
    }
    std::copy_n(x.begin() + static_cast<ptrdiff_t>(r.nbits), r.nints,
                values(out_ints) + s * r.ints());
    // What is not marked is not looked at.
    values(out_energies)[s] = s % 2 == 0 ? Coeff(energy + control().energy_error) : Coeff(-999);
    out_flags[s] = s % 2 == 0;
  }
  return 0;
}

void zorv_klb5_int_hint(void* handle, const uint64_t* bits, const coeff_t* ints) {
  const Rounds& r = *static_cast<Rounds*>(handle);
  log("int hint ", words(bits, r.words()), " ", numbers(ints, r.nints));
}

void zorv_klb5_int_destroy(void* handle) {
  log("int destroy");
  delete static_cast<Rounds*>(handle);
}

}  // extern "C"
