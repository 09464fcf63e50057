// How far a state is from holding all native constraints, and the line that tells it.
#pragma once

#include <cstdint>

#include "model/model.h"

namespace zorv {

struct ConstraintTally {
  coeff_t penalties;      // of all constraints, abs and relu terms included
  uint64_t required = 0;  // constraints that ask for something: no abs or relu terms
  uint64_t violated = 0;  // of those, the ones that do not hold
};

// Writes "TTS = 0.012s Energy = 5 Obj = 3 Viol = 1/2" and a line end to the standard output and
// flushes it; the last two only where the model has something to tell. The caller's formatting of
// that stream neither matters nor changes.
void print_progress(const ModelImpl& model, double tts, const coeff_t& energy,
                    const ConstraintTally& tally);

}  // namespace zorv
