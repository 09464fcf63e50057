#include "arrays/array_text.h"

#include "core/decimal.h"
#include "core/text.h"
#include "core/var_registry.h"

namespace zorv {

namespace {

void append_element(std::string& text, uint32_t literal) { append_var_name(text, literal); }
void append_element(std::string& text, const coeff_t& c) { text += decimal(c); }
void append_element(std::string& text, const TermImpl& t) { append_text(text, t); }
void append_element(std::string& text, const ExprImpl& e) { append_text(text, e); }

template <typename T>
void append_axis(std::string& text, const ArrayImpl<T>& a, size_t axis, uint64_t offset) {
  text += "{";
  for (uint64_t i = 0; i < a.shape[axis]; ++i) {
    if (i > 0) text += ",";
    const uint64_t at = offset + i * a.strides[axis];
    if (axis + 1 == a.shape.size()) {
      append_element(text, a[at]);
    } else {
      append_axis(text, a, axis + 1, at);
    }
  }
  text += "}";
}

template <typename T>
std::string nested_text(const ArrayImpl<T>& a) {
  std::string text;
  if (a.shape.empty()) return "{}";
  append_axis(text, a, 0, 0);
  return text;
}

}  // namespace

std::string array_text(const ArrayImpl<uint32_t>& a) { return nested_text(a); }
std::string array_text(const ArrayImpl<coeff_t>& a) { return nested_text(a); }
std::string array_text(const ArrayImpl<TermImpl>& a) { return nested_text(a); }
std::string array_text(const ArrayImpl<ExprImpl>& a) { return nested_text(a); }

}  // namespace zorv
