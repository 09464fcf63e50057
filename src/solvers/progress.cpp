#include "solvers/progress.h"

#include <iomanip>
#include <iostream>
#include <locale>
#include <sstream>

namespace zorv {

void print_progress(const ModelImpl& model, double tts, const coeff_t& energy,
                    const ConstraintTally& tally) {
  std::ostringstream line;
  line.imbue(std::locale::classic());
  line << "TTS = " << std::fixed << std::setprecision(3) << tts << "s Energy = " << energy.str();
  if (!model.native_cons.empty()) line << " Obj = " << coeff_t(energy - tally.penalties).str();
  if (tally.required != 0) line << " Viol = " << tally.violated << "/" << tally.required;
  line << "\n";
  const std::string text = line.str();
  std::cout.write(text.data(), static_cast<std::streamsize>(text.size())).flush();
}

}  // namespace zorv
