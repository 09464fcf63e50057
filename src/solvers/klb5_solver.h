// KLB5Solver: the solver for high throughput, with a CPU and a GPU engine in the solver library
// klb5_cppint.so, a callback, a stop from outside, and hints that may arrive during a search.
//
//   binary variables alone   one of the two engines, chosen at construction
//   integer variables        the search engine of this library, with candidates improved on the GPU
//                            beside it where that is possible; or, if ZORV_INT_UNIFIED begins with
//                            "1" and the search is eligible, the integer engine of the library
#pragma once

#include <array>
#include <atomic>
#include <vector>

#include "model/model.h"
#include "solvers/int_search.h"
#include "solvers/library_model.h"
#include "solvers/search_result.h"
#include "zorv/engine/mutex.h"

namespace zorv {

// Thread rules: one search at a time. terminate() and hint() may be called from any thread during a
// search. `hint_mutex_` guards the pending hint and `unified_solver_`. The library holds the
// address of the solver, which therefore never moves.
class Klb5Solver {
 public:
  //   mode  above 0: a GPU is required, and the number goes to the library; 0: CPU only, which for
  //         an integer model needs no library; below 0: CPU for binary models, and for integer
  //         models a GPU beside the search if there is one
  // Aborts if the library is not there or lacks what model and mode ask for.
  Klb5Solver(ModelHandle model, int32_t mode);
  Klb5Solver(const Klb5Solver&) = delete;
  Klb5Solver& operator=(const Klb5Solver&) = delete;
  ~Klb5Solver();

  // As EasySolver's.
  SearchResult search(const ParamPair* params, const uint64_t* hint);
  SearchResult search_int(const ParamPair* params, const uint64_t* hint_bits,
                          const coeff_t* hint_ints, uint64_t hint_int_count);

  // For all searches that follow.
  void set_callback(UserCallback callback, void* ctx);
  // Ends the search in progress; the next one starts anew.
  void terminate() { stop_.store(1, std::memory_order_relaxed); }
  // Offers a state to the search in progress or the next one. One that does not fit the model is
  // ignored, and so is null.
  void hint(const Sol* sol);

 private:
  bool has_int_model() const { return !model_->int_atoms.empty(); }
  uint64_t bit_count() const { return model_->variables.size(); }
  uint64_t int_count() const { return model_->int_lo.size(); }
  uint8_t* stop_byte() { return reinterpret_cast<uint8_t*>(&stop_); }

  void create_binary_solver();
  void create_on_cpu();
  void create_on_gpu();
  void choose_rounds();

  SearchResult search_binary(const ParamPair* params, const uint64_t* hint);
  SearchResult search_native(const ParamPair* params, const uint64_t* hint_bits,
                             const coeff_t* hint_ints, uint64_t hint_int_count);
  void* create_rounds() const;
  SearchResult search_unified(const ParamPair* params);
  void* create_unified_solver();

  void hint_binary(const Sol& sol) const;
  void store_hint(const Sol& sol);
  static bool take_pending_hint(void* solver, uint32_t consumer, uint64_t* words, coeff_t* ints);

  double report(const CoeffWire* energy, const uint64_t* bits, std::vector<coeff_t> ints,
                uint32_t event, double tts) const;
  static double on_event(void* ctx, const CoeffWire* energy, const uint64_t* bits, uint32_t event,
                         double tts);
  static double on_integer_event(void* ctx, const CoeffWire* energy, const uint64_t* bits,
                                 const ::coeff_t* ints, uint64_t nints, uint32_t event, double tts);

  const ModelHandle model_;
  const TermTables terms_;
  const int32_t mode_;
  bool uses_gpu_ = false;        // `solver_` is of the GPU engine
  bool has_gpu_rounds_ = false;  // integer searches have a round thread
  void* solver_ = nullptr;       // the library's; null for an integer model
  UserCallback callback_ = nullptr;
  void* callback_ctx_ = nullptr;
  std::atomic<uint8_t> stop_{0};
  static_assert(sizeof(std::atomic<uint8_t>) == 1);  // libraries read it as a byte

  Mutex hint_mutex_;
  std::vector<uint64_t> pending_bits_ ZORV_GUARDED_BY(hint_mutex_);
  std::vector<coeff_t> pending_ints_ ZORV_GUARDED_BY(hint_mutex_);
  std::array<std::atomic<bool>, 2> is_pending_{};  // by consumer; set and cleared under the mutex
  void* unified_solver_ ZORV_GUARDED_BY(hint_mutex_) = nullptr;  // while a unified search runs
};

}  // namespace zorv
