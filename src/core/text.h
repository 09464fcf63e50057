// Terms and expressions as one line of text. The format is fixed: "2 +x -3*y", "-x*y", "0".
#pragma once

#include <string>

#include "core/expr.h"

namespace zorv {

void append_text(std::string& text, const TermImpl& term);
void append_text(std::string& text, const ExprImpl& e);

}  // namespace zorv
