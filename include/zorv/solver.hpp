/// \file
/// The three solvers, their parameters and their results.
#pragma once

#include <charconv>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "zorv/model.hpp"

namespace zorv {

/// One parameter of a search: `{"time_limit", 2.5}`, `{"target_energy", Integer(...)}`. What a
/// solver does not know aborts; docs/parameters.md lists all of them.
struct Param {
  template <typename T>
  Param(std::string key, const T& value) : key(std::move(key)), value(text(value)) {}

  std::string key;
  std::string value;

 private:
  // "1" would also do for what is on or off, but is a number where numbers count.
  static std::string text(bool value) { return value ? "true" : "0"; }
  static std::string text(const std::string& value) { return value; }
  static std::string text(const char* value) { return value; }  // which would convert to bool
  template <detail::IntegerLike T>
  static std::string text(const T& value) {
    return Integer(value).str();
  }
  template <std::floating_point T>
  static std::string text(T value) {
    char digits[64];  // the fewest that read back as the value, whatever the locale
    return {digits, std::to_chars(digits, digits + sizeof(digits), value).ptr};
  }
};

using Params = std::vector<Param>;

/// What a search found.
struct Result {
  /// The best state.
  Sol sol;
  /// Further states, by energy, the best among them: those that "topk_sols" or "best_energy_sols"
  /// asked for.
  std::vector<Sol> sols;
  /// Facts about the search, as keys and values.
  std::vector<std::pair<std::string, std::string>> infos;

  /// The value of one fact, empty if the search did not report it.
  std::string info(std::string_view key) const {
    for (const auto& [k, value] : infos) {
      if (k == key) return value;
    }
    return {};
  }
};

namespace detail {

/// Parameters as the C interface takes them. Refers to the texts of `params`.
inline std::vector<ParamPair> param_pairs(const Params& params) {
  std::vector<ParamPair> pairs;
  for (const Param& param : params) pairs.push_back({param.key.c_str(), param.value.c_str()});
  pairs.push_back({nullptr, nullptr});
  return pairs;
}

inline Result take_result(zorv_result* handle, const Model& model) {
  struct Destroy {
    void operator()(zorv_result* r) const { zorv_easy_solver_result_destroy(r); }
  };
  const std::unique_ptr<zorv_result, Destroy> owner(handle);
  Result result{Sol(zorv_easy_solver_result_to_sol(handle, model.handle())), {}, {}};
  const uint64_t sols = zorv_easy_solver_result_topk_count(handle);
  for (uint64_t i = 0; i < sols; ++i) {
    result.sols.emplace_back(zorv_easy_solver_result_topk_to_sol(handle, i, model.handle()));
  }
  const uint64_t infos = zorv_easy_solver_result_info_count(handle);
  for (uint64_t i = 0; i < infos; ++i) {
    result.infos.emplace_back(zorv_easy_solver_result_info_key(handle, i),
                              zorv_easy_solver_result_info_value(handle, i));
  }
  return result;
}

/// Whether a solution of one model is a state of the other.
inline bool have_same_vars(const zorv_model* a, const zorv_model* b) {
  const uint64_t vars = zorv_model_var_count(a), int_vars = zorv_model_int_var_count(a);
  if (zorv_model_var_count(b) != vars || zorv_model_int_var_count(b) != int_vars) return false;
  for (uint64_t i = 0; i < vars; ++i) {
    if (zorv_model_var(a, i) != zorv_model_var(b, i)) return false;
  }
  for (uint64_t i = 0; i < int_vars; ++i) {
    if (zorv_model_int_var_orig(a, i) != zorv_model_int_var_orig(b, i)) return false;
  }
  return true;
}

inline void check_hint(const Model& model, const Sol& hint) {
  if (!have_same_vars(model.handle(), zorv_sol_model(hint.handle()))) {
    throw std::invalid_argument("zorv: the hint is of a model with other variables");
  }
}

/// A search from a state, by the function for binary models or the one for integer models.
template <typename Solver>
zorv_result* search_from(Solver* solver, const ParamPair* params, const Model& model,
                         const Sol* hint,
                         zorv_result* (*search)(Solver*, const ParamPair*, const uint64_t*),
                         zorv_result* (*search_int)(Solver*, const ParamPair*, const uint64_t*,
                                                    const coeff_t*, uint64_t)) {
  if (hint == nullptr) return search(solver, params, nullptr);
  check_hint(model, *hint);
  if (model.int_var_count() == 0) return search(solver, params, zorv_sol_bits(hint->handle()));
  // Without binary variables there may be no words, and null would mean that there is no hint.
  static constexpr uint64_t kNoBits = 0;
  const uint64_t* bits = zorv_sol_bits(hint->handle());
  return search_int(solver, params, bits != nullptr ? bits : &kNoBits,
                    zorv_sol_int_vals(hint->handle()), zorv_sol_int_count(hint->handle()));
}

}  // namespace detail

/// The everyday heuristic: simulated annealing on models with integer variables, and whatever the
/// solver library easysolver_cppint.so does on models of binary variables alone.
class EasySolver {
 public:
  explicit EasySolver(const Model& model)
      : model_(model), handle_(zorv_easy_solver_wrapper_create(model.handle())) {}

  /// Searches for a state of low energy. A hint is where the search starts from: a solution of this
  /// model, or of one with the same variables; any other throws std::invalid_argument.
  Result search(const Params& params = {}) { return search(params, nullptr); }
  Result search(const Params& params, const Sol& hint) { return search(params, &hint); }

  zorv_easy_wrapper* handle() const { return handle_.get(); }

 private:
  struct Destroy {
    void operator()(zorv_easy_wrapper* handle) const { zorv_easy_solver_wrapper_destroy(handle); }
  };

  Result search(const Params& params, const Sol* hint) {
    return detail::take_result(
        detail::search_from(handle(), detail::param_pairs(params).data(), model_, hint,
                            zorv_easy_solver_wrapper_search, zorv_easy_solver_wrapper_search_int),
        model_);
  }

  Model model_;
  std::unique_ptr<zorv_easy_wrapper, Destroy> handle_;
};

/// Looks at every state, and so proves what it finds. Models of binary variables alone need the
/// solver library exhaustive_cppint.so.
class ExhaustiveSolver {
 public:
  explicit ExhaustiveSolver(const Model& model)
      : model_(model), handle_(zorv_exhaustive_wrapper_create(model.handle())) {}

  Result search(const Params& params = {}) {
    return detail::take_result(
        zorv_exhaustive_wrapper_search(handle(), detail::param_pairs(params).data()), model_);
  }

  zorv_exhaustive_wrapper* handle() const { return handle_.get(); }

 private:
  struct Destroy {
    void operator()(zorv_exhaustive_wrapper* handle) const {
      zorv_exhaustive_wrapper_destroy(handle);
    }
  };

  Model model_;
  std::unique_ptr<zorv_exhaustive_wrapper, Destroy> handle_;
};

/// What a callback is told: the search is about to start, it has a new best solution, or the timer
/// ticks.
enum class Event : uint32_t { kStart = 0, kBest = 1, kTick = 2 };

/// A solver with a callback, a stop from outside, and hints during a search.
class KLB5Solver {
 public:
  /// Called on threads of the search, which it may hold up: be short, start no other search, throw
  /// nothing. The result sets the timer: above 0 the new interval in seconds, 0 off, below 0 leaves
  /// it. The timer is off at the start.
  using Callback = std::function<double(const Sol&, Event)>;

  /// \param mode above 0: a GPU is required; 0: CPU only; below 0: a GPU for models with integer
  ///             variables if there is one
  explicit KLB5Solver(const Model& model, int32_t mode = 0)
      : model_(model), handle_(zorv_klb5_wrapper_create(model.handle(), mode)) {}

  /// One search at a time. A hint is where the search starts from, as for EasySolver.
  Result search(const Params& params = {}) { return search(params, nullptr); }
  Result search(const Params& params, const Sol& hint) { return search(params, &hint); }

  /// Sets the callback of the searches that follow. Not during a search.
  void set_callback(Callback callback) {
    callback_ = std::make_unique<Callback>(std::move(callback));
    zorv_klb5_wrapper_set_callback(handle(), call, callback_.get());
  }
  void clear_callback() {
    zorv_klb5_wrapper_set_callback(handle(), nullptr, nullptr);
    callback_.reset();
  }
  /// Ends the search in progress, from any thread.
  void terminate() { zorv_klb5_wrapper_terminate(handle()); }
  /// Offers a state to the search in progress, or to the next one, from any thread: a hint as
  /// above.
  void hint(const Sol& sol) {
    detail::check_hint(model_, sol);
    zorv_klb5_wrapper_hint(handle(), sol.handle());
  }

  zorv_klb5_wrapper* handle() const { return handle_.get(); }

 private:
  struct Destroy {
    void operator()(zorv_klb5_wrapper* handle) const { zorv_klb5_wrapper_destroy(handle); }
  };

  static double call(void* callback, zorv_sol* sol, uint32_t event) noexcept {
    return (*static_cast<Callback*>(callback))(Sol(sol), static_cast<Event>(event));
  }

  Result search(const Params& params, const Sol* hint) {
    return detail::take_result(
        detail::search_from(handle(), detail::param_pairs(params).data(), model_, hint,
                            zorv_klb5_wrapper_search, zorv_klb5_wrapper_search_int),
        model_);
  }

  Model model_;
  std::unique_ptr<Callback> callback_;
  std::unique_ptr<zorv_klb5_wrapper, Destroy> handle_;
};

}  // namespace zorv
