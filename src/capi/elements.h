// Runs of elements that stand in no array, by the kinds that callers name.
#pragma once

#include "capi/handles.h"

namespace zorv {

// Calls f(at), where at(i) is element i: kind 0 is a run of pointers to expressions, 1 a run of
// literals, 2 a block of terms. Elements of any other kind read as 0.
template <typename F>
void visit_elements(const void* data, int kind, F f) {
  switch (kind) {
    case 0: {
      const auto run = unwrap(static_cast<zorv_expr* const*>(data));
      return f([=](uint64_t i) -> const ExprImpl& { return *run[i]; });
    }
    case 1: {
      const auto* run = static_cast<const uint32_t*>(data);
      return f([=](uint64_t i) { return run[i]; });
    }
    case 2: {
      const auto* run = static_cast<const TermImpl*>(data);
      return f([=](uint64_t i) -> const TermImpl& { return run[i]; });
    }
    default:
      return f([](uint64_t) { return coeff_t(); });
  }
}

}  // namespace zorv
