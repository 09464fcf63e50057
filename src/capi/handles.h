// The only place that turns a handle into a record and back.
//
// Exports are defined inside namespace zorv with C linkage; the types of the C header that have a
// namesake there are written with a leading "::".
#pragma once

#include <cstddef>
#include <optional>
#include <type_traits>
#include <utility>

#include "arrays/array.h"
#include "core/coeff_wire.h"
#include "core/expr.h"
#include "core/term.h"
#include "model/ilp.h"
#include "model/model.h"
#include "model/sol.h"
#include "solvers/easy_solver.h"
#include "solvers/exhaustive_solver.h"
#include "solvers/klb5_solver.h"
#include "solvers/search_result.h"
#include "zorv/zorv.h"

namespace zorv {

// Which record stands behind which handle.
template <typename Handle>
struct RecordOf;
template <typename Record>
struct HandleOf;
#define ZORV_HANDLE(handle, ...) \
  template <>                    \
  struct RecordOf<handle> {      \
    using Type = __VA_ARGS__;    \
  };                             \
  template <>                    \
  struct HandleOf<__VA_ARGS__> { \
    using Type = handle;         \
  };
ZORV_HANDLE(zorv_term, TermImpl)
ZORV_HANDLE(zorv_expr, ExprImpl)
ZORV_HANDLE(zorv_array_var, ArrayImpl<uint32_t>)
ZORV_HANDLE(zorv_array_int, ArrayImpl<coeff_t>)
ZORV_HANDLE(zorv_array_term, ArrayImpl<TermImpl>)
ZORV_HANDLE(zorv_array_expr, ArrayImpl<ExprImpl>)
// A Sol begins with this record, and serves as a model too.
ZORV_HANDLE(zorv_model, ModelHandle)
ZORV_HANDLE(zorv_sol, Sol)
ZORV_HANDLE(zorv_ilp, IlpModel)
ZORV_HANDLE(zorv_result, SearchResult)
ZORV_HANDLE(zorv_easy_wrapper, EasySolver)
ZORV_HANDLE(zorv_exhaustive_wrapper, ExhaustiveSolver)
ZORV_HANDLE(zorv_klb5_wrapper, Klb5Solver)
#undef ZORV_HANDLE
static_assert(std::is_standard_layout_v<Sol> && offsetof(Sol, model) == 0);

template <typename Handle>
auto& unwrap(Handle* handle) {
  return *reinterpret_cast<typename RecordOf<Handle>::Type*>(handle);
}
template <typename Handle>
const auto& unwrap(const Handle* handle) {
  return *reinterpret_cast<const typename RecordOf<Handle>::Type*>(handle);
}
// A handle that may be null.
template <typename Handle>
auto unwrap_or_null(const Handle* handle) {
  return reinterpret_cast<const typename RecordOf<Handle>::Type*>(handle);
}
// Runs of handles that are only read, and coefficients in the library's own form.
template <typename Handle>
auto unwrap(Handle* const* run) {
  return reinterpret_cast<const typename RecordOf<Handle>::Type* const*>(run);
}
// A callback that takes solutions by handle, as the engines call it.
inline UserCallback unwrap(::UserCallback callback) {
  return reinterpret_cast<UserCallback>(callback);
}
inline const coeff_t* unwrap(const ::coeff_t* c) { return reinterpret_cast<const coeff_t*>(c); }

// Makes a handle that the caller owns.
template <typename Record>
auto wrap(Record record) {
  using Handle = typename HandleOf<Record>::Type;
  return reinterpret_cast<Handle*>(new Record(std::move(record)));
}
// Null for nothing.
template <typename Record>
auto wrap(std::optional<Record> record) {
  using Handle = typename HandleOf<Record>::Type;
  return record.has_value() ? wrap(*std::move(record)) : static_cast<Handle*>(nullptr);
}

// The same for records that never move.
template <typename Record, typename... Args>
auto make_handle(Args&&... args) {
  using Handle = typename HandleOf<Record>::Type;
  return reinterpret_cast<Handle*>(new Record(std::forward<Args>(args)...));
}

template <typename Handle>
void destroy(Handle* handle) {
  delete reinterpret_cast<typename RecordOf<Handle>::Type*>(handle);
}

// A handle for what somebody else owns.
template <typename Record>
auto borrow(const Record& record) {
  return reinterpret_cast<const typename HandleOf<Record>::Type*>(&record);
}
template <typename Record>
auto borrow(Record& record) {
  return reinterpret_cast<typename HandleOf<Record>::Type*>(&record);
}
inline const ::coeff_t* borrow(const coeff_t* c) { return reinterpret_cast<const ::coeff_t*>(c); }

}  // namespace zorv
