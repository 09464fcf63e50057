// The only place that turns a handle into a record and back.
//
// Exports are defined inside namespace zorv with C linkage; the types of the C header that have a
// namesake there are written with a leading "::".
#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

#include "core/coeff_wire.h"
#include "core/expr.h"
#include "core/term.h"
#include "model/model.h"
#include "model/sol.h"
#include "solvers/easy_solver.h"
#include "solvers/search_result.h"
#include "zorv/zorv.h"

namespace zorv {

inline TermImpl& unwrap(zorv_term* t) { return *reinterpret_cast<TermImpl*>(t); }
inline const TermImpl& unwrap(const zorv_term* t) { return *reinterpret_cast<const TermImpl*>(t); }
inline ExprImpl& unwrap(zorv_expr* e) { return *reinterpret_cast<ExprImpl*>(e); }
inline const ExprImpl& unwrap(const zorv_expr* e) { return *reinterpret_cast<const ExprImpl*>(e); }
inline Sol& unwrap(zorv_sol* s) { return *reinterpret_cast<Sol*>(s); }
inline const Sol& unwrap(const zorv_sol* s) { return *reinterpret_cast<const Sol*>(s); }
// Also reached with a Sol, which begins with the handle.
inline const ModelHandle& unwrap(const zorv_model* m) {
  return *reinterpret_cast<const ModelHandle*>(m);
}
inline SearchResult& unwrap(zorv_result* r) { return *reinterpret_cast<SearchResult*>(r); }
inline const SearchResult& unwrap(const zorv_result* r) {
  return *reinterpret_cast<const SearchResult*>(r);
}
inline EasySolver& unwrap(zorv_easy_wrapper* w) { return *reinterpret_cast<EasySolver*>(w); }
inline const coeff_t* unwrap(const ::coeff_t* c) { return reinterpret_cast<const coeff_t*>(c); }

static_assert(std::is_standard_layout_v<Sol> && offsetof(Sol, model) == 0);

inline zorv_term* wrap(TermImpl t) {
  return reinterpret_cast<zorv_term*>(new TermImpl(std::move(t)));
}
inline zorv_expr* wrap(ExprImpl e) {
  return reinterpret_cast<zorv_expr*>(new ExprImpl(std::move(e)));
}
inline zorv_sol* wrap(Sol s) { return reinterpret_cast<zorv_sol*>(new Sol(std::move(s))); }
inline zorv_model* wrap(ModelHandle m) {
  return reinterpret_cast<zorv_model*>(new ModelHandle(std::move(m)));
}
inline zorv_result* wrap(SearchResult r) {
  return reinterpret_cast<zorv_result*>(new SearchResult(std::move(r)));
}
inline zorv_easy_wrapper* wrap(EasySolver s) {
  return reinterpret_cast<zorv_easy_wrapper*>(new EasySolver(std::move(s)));
}

inline const zorv_term* borrow(const TermImpl& t) { return reinterpret_cast<const zorv_term*>(&t); }
inline const zorv_expr* borrow(const ExprImpl& e) { return reinterpret_cast<const zorv_expr*>(&e); }
// Lent by the Sol that begins with it: one handle serves as both.
inline const zorv_model* borrow(const ModelHandle& m) {
  return reinterpret_cast<const zorv_model*>(&m);
}
inline const ::coeff_t* borrow(const coeff_t* c) { return reinterpret_cast<const ::coeff_t*>(c); }

inline void destroy(zorv_term* t) { delete reinterpret_cast<TermImpl*>(t); }
inline void destroy(zorv_expr* e) { delete reinterpret_cast<ExprImpl*>(e); }
inline void destroy(zorv_sol* s) { delete reinterpret_cast<Sol*>(s); }
inline void destroy(zorv_result* r) { delete reinterpret_cast<SearchResult*>(r); }
inline void destroy(zorv_easy_wrapper* w) { delete reinterpret_cast<EasySolver*>(w); }
inline void destroy(zorv_model* m) { delete reinterpret_cast<ModelHandle*>(m); }

}  // namespace zorv
