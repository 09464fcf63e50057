#include "solvers/klb5_solver.h"

#include <algorithm>
#include <cstdlib>
#include <random>
#include <utility>

#include "core/fatal.h"
#include "model/stage_clock.h"
#include "solvers/library_params.h"
#include "solvers/library_result.h"

namespace zorv {

namespace {

constexpr uint64_t kDefaultReplicas = 2048;

constexpr ConstraintTexts kCpuTexts = {
    "KLB5Solver: this klb5 .so predates zorv::abs/relu (missing zorv_klb5_cpu_set_cons_shape) — "
    "update the solver .so.",
    "KLB5Solver: this klb5 .so does not support native constraints (rebuild it)",
    "KLB5Solver: this solver .so does not support nonlinear native constraint bodies (rebuild it)",
    "KLB5Solver: this solver .so does not support allowed-value set constraints (equal{...}); "
    "rebuild it",
    "KLB5Solver: this solver .so does not support free-form penalty constraints (rebuild it)",
};

constexpr ConstraintTexts kGpuTexts = {
    "KLB5Solver: this klb5 .so predates zorv::abs/relu (missing zorv_klb5_set_cons_shape) — update "
    "the solver .so.",
    "KLB5Solver: this klb5 .so does not support native constraints on the GPU path (rebuild it)",
    "KLB5Solver: this klb5 .so does not support nonlinear native constraint bodies on the GPU "
    "(rebuild it)",
    "KLB5Solver: this klb5 .so does not support allowed-value set constraints (equal{...}) on the "
    "GPU (rebuild it)",
    kCpuTexts.no_remainder,
};

constexpr ConstraintTexts kUnifiedTexts = {
    "KLB5Solver: this klb5 .so predates zorv::abs/relu (missing zorv_klb5_cpu_set_cons_shape)",
    kCpuTexts.no_constraints,
    nullptr,  // nonlinear bodies keep a model off this path
    "KLB5Solver: this klb5 .so does not support allowed-value set constraints (rebuild it)",
    nullptr,
};

// What may be missing of a GPU engine that is there is asked for where it is called.
template <typename Function>
Function* needed(Function* function, const char* symbol) {
  if (function == nullptr) fatal("KLB5Solver: symbol not found: ", symbol);
  return function;
}

bool has_gpu(const Klb5Table& library) {
  return library.gpu_device_count() >= 1 && library.gpu_create != nullptr;
}

uint64_t replica_count() {
  const char* text = std::getenv("ZORV_KLB5_INT_REPLICAS");
  const uint64_t count = text == nullptr ? 0 : std::strtoul(text, nullptr, 10);
  return count == 0 ? kDefaultReplicas : count;
}

}  // namespace

// Construction -----------------------------------------------------------------------------------

Klb5Solver::Klb5Solver(ModelHandle model, int32_t mode)
    : model_(std::move(model)), terms_(*model_), mode_(mode) {
  if (!has_int_model()) {
    create_binary_solver();
    return;
  }
  if (model_->has_remainder) {
    fatal(
        "KLB5Solver: internal error — a free-form remainder with integer variables should have "
        "been rejected at Model.");
  }
  if (mode != 0) choose_rounds();
}

Klb5Solver::~Klb5Solver() {
  if (solver_ == nullptr) return;
  const Klb5Table& library = klb5_dispatch();
  if (uses_gpu_) {
    needed(library.gpu.destroy, "zorv_klb5_solver_destroy")(solver_);
  } else {
    library.cpu.destroy(solver_);
  }
}

void Klb5Solver::create_binary_solver() {
  StageClock clock("Wrap");
  clock.lap("enter (after model copy)");
  const Klb5Table& library = klb5_dispatch();
  clock.lap("klb5_dispatch()");
  const bool is_gpu_there = has_gpu(library);
  clock.lap("gpu_count + has_gpu (CUDA init)");
  if (!is_gpu_there && mode_ > 0) {
    fatal("KLB5Solver: GPU mode requested but no GPU available");
  }
  uses_gpu_ = is_gpu_there && mode_ > 0;
  // Bodies that the engine cannot take are refused before a solver is made.
  const ConstraintFunctions& cpu = library.cpu.constraints;
  if (has_nonlinear_bodies(*model_)) {
    if (uses_gpu_) fatal(kGpuTexts.no_nonlinear);
    if (cpu.add_constraint_nl == nullptr) fatal(kCpuTexts.no_nonlinear);
  }
  if (has_allowed_values(*model_)) {
    if (uses_gpu_) fatal(kGpuTexts.no_allowed);
    if (cpu.add_constraint_set == nullptr) fatal(kCpuTexts.no_allowed);
  }
  clock.lap("set tv_ptrs + ca_ptrs (no copy)");
  if (uses_gpu_) {
    create_on_gpu();
  } else {
    create_on_cpu();
  }
  clock.lap("gpu/cpu_create (DeltaModel + DeviceDeltaModel)");
}

void Klb5Solver::create_on_cpu() {
  const Klb5Table& library = klb5_dispatch();
  static std::once_flag registered;
  std::call_once(registered, library.cpu.register_callback, on_event);
  solver_ = library.cpu_create(this, bit_count(), model_->max_degree, as_abi(&model_->constant),
                               model_->term_count.data(), terms_.vars.data(), terms_.coeffs.data());
  if (library.cpu.set_external_stop != nullptr) {
    library.cpu.set_external_stop(solver_, stop_byte());
  }
  deliver_constraints(*model_, solver_, library.cpu.constraints, kCpuTexts);
}

void Klb5Solver::create_on_gpu() {
  const Klb5Table& library = klb5_dispatch();
  static std::once_flag registered;
  std::call_once(registered, [&] {
    needed(library.gpu.register_callback, "zorv_klb5_register_callback")(on_event);
  });
  solver_ = library.gpu_create(this, bit_count(), model_->max_degree, as_abi(&model_->constant),
                               model_->term_count.data(), terms_.vars.data(), terms_.coeffs.data(),
                               mode_);
  deliver_constraints(*model_, solver_, library.gpu.constraints, kGpuTexts);
  if (library.gpu.set_external_stop != nullptr) {
    library.gpu.set_external_stop(solver_, stop_byte());
  }
}

// Whether integer searches of this model have GPU rounds beside them.
void Klb5Solver::choose_rounds() {
  const Klb5Table& library = klb5_dispatch();
  const Klb5Rounds& rounds = library.rounds;
  if (rounds.create != nullptr && has_penalty_shapes(*model_) && rounds.set_cons_shape == nullptr) {
    if (mode_ < 0) return;
    fatal(
        "KLB5Solver: this klb5 .so predates zorv::abs/relu on the integer GPU engine (missing "
        "zorv_klb5_int_set_cons_shape) — update the solver .so.");
  }
  has_gpu_rounds_ = rounds.create != nullptr && library.gpu_device_count() >= 1;
  if (!has_gpu_rounds_ && mode_ > 0) {
    fatal(
        "KLB5Solver: GPU mode requested but the integer GPU engine is unavailable (no CUDA device, "
        "or this klb5 .so has no integer kernels).");
  }
}

// Searches ---------------------------------------------------------------------------------------

SearchResult Klb5Solver::search(const ParamPair* params, const uint64_t* hint) {
  if (!has_int_model()) return search_binary(params, hint);
  if (hint != nullptr) {
    fatal(
        "KLB5Solver: hint on a native integer model requires the int-aware search path (update "
        "the zorv header).");
  }
  return search_int(params, nullptr, nullptr, 0);
}

SearchResult Klb5Solver::search_int(const ParamPair* params, const uint64_t* hint_bits,
                                    const coeff_t* hint_ints, uint64_t hint_int_count) {
  if (!has_int_model()) fatal("KLB5Solver: search_int called on a binary model.");
  stop_.store(0, std::memory_order_relaxed);
  if (hint_bits == nullptr && wants_unified_search(*model_, params)) return search_unified(params);
  return search_native(params, hint_bits, hint_ints, hint_int_count);
}

SearchResult Klb5Solver::search_binary(const ParamPair* params, const uint64_t* hint) {
  stop_.store(0, std::memory_order_relaxed);
  const Klb5Table& library = klb5_dispatch();
  const Klb5Engine& engine = uses_gpu_ ? library.gpu : library.cpu;
  const auto nvars = static_cast<uint32_t>(bit_count());
  const std::vector<ParamPair> pairs = copy_params(params);
  Klb5SolutionBuffer best(bit_count());
  const auto search = needed(engine.search, "zorv_klb5_solver_search");
  const Stopwatch watch;
  void* list = search(solver_, best.record(), nvars, pairs.data(), hint);
  const double seconds = watch.seconds();

  SearchResult result = result_of(best, *model_);
  if (list != nullptr) {
    const auto get = needed(engine.sol_list_get, "zorv_klb5_sol_list_get");
    add_topk<Klb5SolutionBuffer>(
        result, *model_, needed(engine.sol_list_count, "zorv_klb5_sol_list_count")(list),
        [&](uint64_t i, Klb5SolutionOut* out) { get(list, i, out, nvars); });
    needed(engine.sol_list_destroy, "zorv_klb5_sol_list_destroy")(list);
  }
  add_run_time(result, seconds);
  add_info_list(result, best.info());
  add_host_info(result);
  return result;
}

SearchResult Klb5Solver::search_native(const ParamPair* params, const uint64_t* hint_bits,
                                       const coeff_t* hint_ints, uint64_t hint_int_count) {
  IntSearchOpts opts;
  opts.solver_name = "KLB5Solver";
  opts.external_stop = &stop_;
  opts.callback = callback_;
  opts.callback_ctx = callback_ctx_;
  opts.model = model_;
  opts.next_hint = take_pending_hint;
  opts.next_hint_ctx = this;
  if (!has_gpu_rounds_) {
    return run_int_search(*model_, opts, params, hint_bits, hint_ints, hint_int_count);
  }
  const Klb5Rounds& rounds = klb5_dispatch().rounds;
  opts.round_handle = create_rounds();
  opts.round_fn = rounds.round2;
  opts.round_hint_fn = rounds.hint;
  SearchResult result = run_int_search(*model_, opts, params, hint_bits, hint_ints, hint_int_count);
  rounds.destroy(opts.round_handle);
  return result;
}

void* Klb5Solver::create_rounds() const {
  const Klb5Rounds& rounds = klb5_dispatch().rounds;
  void* handle = rounds.create(
      bit_count(), int_count(), as_abi(model_->int_lo.data()), as_abi(model_->int_hi.data()),
      model_->max_degree, as_abi(&model_->constant), model_->term_count.data(), terms_.vars.data(),
      terms_.coeffs.data(), 0, replica_count(), std::random_device("default")());
  for (const NativeCons& cons : model_->native_cons) {
    const std::vector<uint32_t> vars = flat_literals(*model_, cons.vars);
    const std::vector<uint32_t> nl_vars = flat_literals(*model_, cons.nl_vars);
    const AllowedRuns allowed(cons);
    rounds.add_cons(handle, as_abi(&cons.weight), as_abi(&cons.lo), as_abi(&cons.hi),
                    as_abi(&cons.body_constant), vars.size(), vars.data(),
                    as_abi(cons.coeffs.data()), cons.nl_coeffs.size(), cons.nl_head.data(),
                    nl_vars.data(), as_abi(cons.nl_coeffs.data()), allowed.lows.size(),
                    as_abi(allowed.lows.data()), as_abi(allowed.highs.data()));
    if (!cons.has_default_shape()) {
      rounds.set_cons_shape(handle, cons.shape_k, cons.shape_kind);
    }
  }
  return handle;
}

SearchResult Klb5Solver::search_unified(const ParamPair* params) {
  const Klb5Table& library = klb5_dispatch();
  void* solver = create_unified_solver();
  const std::vector<ParamPair> pairs = copy_params(params);
  Klb5SolutionBuffer best(bit_count());
  std::vector<coeff_t> ints(int_count());
  const auto set_running = [&](void* running) {
    const MutexLock lock(hint_mutex_);
    unified_solver_ = running;
  };
  set_running(solver);
  const Stopwatch watch;
  void* list = library.cpu_search_int(solver, best.record(), static_cast<uint32_t>(bit_count()),
                                      pairs.data(), as_abi(ints.data()));
  const double seconds = watch.seconds();
  set_running(nullptr);
  if (list != nullptr) library.cpu.sol_list_destroy(list);

  SearchResult result = result_of(best, *model_);
  result.ints = std::move(ints);
  add_run_time(result, seconds);
  add_info_list(result, best.info());
  add_info(result, "engine", "integer-unified");
  add_host_info(result);
  library.cpu.destroy(solver);
  return result;
}

void* Klb5Solver::create_unified_solver() {
  const Klb5Table& library = klb5_dispatch();
  if (library.cpu_create_int == nullptr || library.cpu_search_int == nullptr ||
      library.cpu_register_callback_iv == nullptr) {
    fatal(
        "KLB5Solver: ZORV_INT_UNIFIED=1 but the klb5 solver .so lacks the unified integer engine "
        "(rebuild the solver .so)");
  }
  static std::once_flag registered;
  std::call_once(registered, library.cpu_register_callback_iv, on_integer_event);
  void* solver = library.cpu_create_int(
      this, bit_count(), static_cast<uint32_t>(int_count()), as_abi(model_->int_lo.data()),
      as_abi(model_->int_hi.data()), model_->max_degree, as_abi(&model_->constant),
      model_->term_count.data(), terms_.vars.data(), terms_.coeffs.data(), std::max(mode_, -1));
  if (library.cpu.set_external_stop != nullptr) library.cpu.set_external_stop(solver, stop_byte());
  deliver_integer_constraints(*model_, solver, library.cpu.constraints, kUnifiedTexts);
  return solver;
}

// Hints ------------------------------------------------------------------------------------------

void Klb5Solver::hint(const Sol* sol) {
  if (sol == nullptr || sol->bits.size() < (bit_count() + 63) / 64) return;
  if (has_int_model()) {
    store_hint(*sol);
  } else {
    hint_binary(*sol);
  }
}

void Klb5Solver::hint_binary(const Sol& sol) const {
  const Klb5Table& library = klb5_dispatch();
  const auto hint_solution = uses_gpu_ ? library.gpu.hint_solution : library.cpu.hint_solution;
  if (hint_solution != nullptr) hint_solution(solver_, sol.bits.data());
}

void Klb5Solver::store_hint(const Sol& sol) {
  if (sol.int_vals.size() < int_count()) return;
  for (uint64_t j = 0; j < int_count(); ++j) {
    if (sol.int_vals[j] < model_->int_lo[j] || model_->int_hi[j] < sol.int_vals[j]) return;
  }
  const MutexLock lock(hint_mutex_);
  pending_bits_ = sol.bits;
  pending_ints_ = sol.int_vals;
  for (std::atomic<bool>& is_pending : is_pending_) is_pending = true;
  if (unified_solver_ == nullptr) return;
  const auto hint_iv = klb5_dispatch().cpu_hint_iv;
  if (hint_iv == nullptr) return;
  hint_iv(unified_solver_, pending_bits_.data(), as_abi(pending_ints_.data()), int_count());
}

bool Klb5Solver::take_pending_hint(void* ctx, uint32_t consumer, uint64_t* words, coeff_t* ints) {
  Klb5Solver& solver = *static_cast<Klb5Solver*>(ctx);
  std::atomic<bool>& is_pending = solver.is_pending_[consumer];
  if (!is_pending) return false;
  const MutexLock lock(solver.hint_mutex_);
  if (!is_pending) return false;
  std::copy_n(solver.pending_bits_.begin(), (solver.bit_count() + 63) / 64, words);
  std::copy_n(solver.pending_ints_.begin(), solver.int_count(), ints);
  is_pending = false;
  return true;
}

// Callbacks --------------------------------------------------------------------------------------

void Klb5Solver::set_callback(UserCallback callback, void* ctx) {
  callback_ = callback;
  callback_ctx_ = ctx;
}

double Klb5Solver::report(const CoeffWire* energy, const uint64_t* bits, std::vector<coeff_t> ints,
                          uint32_t event, double tts) const {
  if (callback_ == nullptr) return -1.0;
  std::vector<uint64_t> words;
  if (bits != nullptr) words.assign(bits, bits + (bit_count() + 63) / 64);
  return callback_(callback_ctx_,
                   new Sol(model_, std::move(words), std::move(ints), read_wire(energy), tts),
                   event);
}

double Klb5Solver::on_event(void* ctx, const CoeffWire* energy, const uint64_t* bits,
                            uint32_t event, double tts) {
  if (ctx == nullptr) return -1.0;
  return static_cast<const Klb5Solver*>(ctx)->report(energy, bits, {}, event, tts);
}

double Klb5Solver::on_integer_event(void* ctx, const CoeffWire* energy, const uint64_t* bits,
                                    const ::coeff_t* ints, uint64_t nints, uint32_t event,
                                    double tts) {
  if (ctx == nullptr) return -1.0;
  const Klb5Solver& solver = *static_cast<const Klb5Solver*>(ctx);
  if (solver.callback_ == nullptr) return -1.0;  // the arguments are not to be touched then
  const coeff_t* values = from_abi(ints);
  return solver.report(energy, bits, std::vector<coeff_t>(values, values + nints), event, tts);
}

}  // namespace zorv
