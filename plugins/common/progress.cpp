#include "common/progress.h"

#include <iomanip>
#include <iostream>

namespace zorv::plugin {

void print_progress(const BinaryModel& model, double tts, const Coeff& energy,
                    const uint64_t* words) {
  const ConstraintTally tally = tally_constraints(model, words);
  std::cout << std::fixed << std::setprecision(3) << std::setfill('0');
  std::cout << "TTS = " << tts << "s Energy = " << energy.str();
  if (!model.constraints.empty()) std::cout << " Obj = " << Coeff(energy - tally.penalties).str();
  if (tally.required != 0) std::cout << " Viol = " << tally.violated << "/" << tally.required;
  std::cout << std::endl;
}

}  // namespace zorv::plugin
