#include "capi/handles.h"
#include "core/var_registry.h"
#include "integer/int_var.h"

namespace zorv {

extern "C" {

uint32_t zorv_new_var(const char* name) { return new_var(resolve_name(name)); }

uint32_t zorv_new_var_array(const char* name, const uint64_t* dims, size_t ndims) {
  return new_var_array(resolve_name(name), dims, ndims);
}

uint64_t zorv_var_count(void) { return var_count(); }

uint64_t zorv_int_var_count(void) { return IntVarRegistry::instance().next_index; }

uint64_t zorv_used_var_count(void) {
  return static_cast<uint32_t>(var_count()) + IntVarRegistry::instance().bit_total;
}

const char* zorv_var_str(uint32_t literal) {
  thread_local std::string name;
  name.clear();
  append_var_name(name, literal);
  return name.c_str();
}

const char* zorv_auto_var_name(void) {
  thread_local std::string name;
  name = auto_var_name();
  return name.c_str();
}

void zorv_var_reset(void) { reset_variables(); }

}  // extern "C"

}  // namespace zorv
