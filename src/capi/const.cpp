#include <string>

#include "capi/handles.h"
#include "solvers/library_text.h"

namespace zorv {
extern "C" {

const char* zorv_const_str(const char* key) {
  static thread_local std::string text;
  text = library_text(key);
  return text.c_str();
}

}  // extern "C"
}  // namespace zorv
