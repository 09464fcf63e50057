#include "solvers/progress.h"

#include <iomanip>
#include <iostream>

#include "model/sol.h"

namespace zorv {

ConstraintTally tally_constraints(const ModelImpl& model, const std::vector<coeff_t>& bodies) {
  ConstraintTally tally;
  for (size_t i = 0; i < model.native_cons.size(); ++i) {
    const NativeCons& cons = model.native_cons[i];
    tally.penalties += penalty_of(cons, bodies[i]);
    if (cons.shape_kind != 0) continue;
    ++tally.required;
    if (!is_zero(violation_of(cons, bodies[i]))) ++tally.violated;
  }
  return tally;
}

void print_progress(const ModelImpl& model, double tts, const coeff_t& energy,
                    const std::vector<coeff_t>& bodies) {
  const ConstraintTally tally = tally_constraints(model, bodies);
  std::cout << std::fixed << std::setprecision(3) << std::setfill('0');
  std::cout << "TTS = " << tts << "s Energy = " << energy.str();
  if (!model.native_cons.empty()) std::cout << " Obj = " << coeff_t(energy - tally.penalties).str();
  if (tally.required != 0) std::cout << " Viol = " << tally.violated << "/" << tally.required;
  std::cout << std::endl;
}

}  // namespace zorv
