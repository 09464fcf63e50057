// The arrays that a fake received last, for a test to compare with the model's own.
#pragma once

#include "zorv/solver_abi.h"

namespace fake {

struct Received {
  const uint32_t* const* term_vars;
  const ::coeff_t* const* term_coeffs;
  const uint32_t* cons_vars;
  const ::coeff_t* cons_coeffs;
  const uint64_t* remainder_head;
  const uint32_t* remainder_vars;
  const ::coeff_t* remainder_coeffs;
};

}  // namespace fake

// Exported by the fakes.
extern "C" const fake::Received* fake_received();
