// The line that tells of a new best solution.
#pragma once

#include "common/binary_model.h"

namespace zorv::plugin {

// Writes "TTS = 0.012s Energy = 5 Obj = 3 Viol = 1/2" and a line end to the standard output and
// flushes it: the objective only where the model has constraints, the violations only where some
// of them are requirements. The stream stays as the line sets it: fixed notation, 3 decimals, fill
// character '0'.
void print_progress(const BinaryModel& model, double tts, const Coeff& energy,
                    const uint64_t* words);

}  // namespace zorv::plugin
