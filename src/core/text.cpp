#include "core/text.h"

#include "core/decimal.h"
#include "core/var_registry.h"

namespace zorv {

void append_text(std::string& text, const TermImpl& term) {
  if (term.vars.degree() == 0) {
    text += decimal(coeff_t(term.coeff));
    return;
  }
  if (term.coeff == -1) {
    text += "-";
  } else if (term.coeff != 1) {
    text += decimal(coeff_t(term.coeff));
    text += "*";
  }
  bool is_first = true;
  for (const uint32_t literal : term.vars) {
    // No "*" after a name that ends in "-". A deliberate quirk: readers of this text rely on it.
    if (!is_first && text.back() != '-') text += "*";
    append_var_name(text, literal);
    is_first = false;
  }
}

void append_text(std::string& text, const ExprImpl& e) {
  if (e.is_zero_polynomial()) {
    text += "0";
    return;
  }
  bool is_first = true;
  if (!is_zero(e.constant)) {
    text += decimal(coeff_t(e.constant));
    is_first = false;
  }
  e.list.for_each([&](const TermImpl& term) {
    if (!is_first) text += is_negative(term.coeff) ? " " : " +";
    append_text(text, term);
    is_first = false;
  });
}

}  // namespace zorv
