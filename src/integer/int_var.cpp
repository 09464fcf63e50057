#include "integer/int_var.h"

#include "core/fatal.h"
#include "core/int_atoms.h"
#include "core/literal.h"
#include "core/var_registry.h"
#include "integer/series.h"

namespace zorv {

IntVarRegistry& IntVarRegistry::instance() {
  static IntVarRegistry registry;
  return registry;
}

const IntVarGroup* IntVarRegistry::find(uint32_t index) const {
  if (index >= next_index.load(std::memory_order_acquire)) return nullptr;
  return &groups.last_where([=](const IntVarGroup& group) { return group.first <= index; });
}

uint32_t new_int_var(const char* name, const coeff_t& lo, const coeff_t& hi) {
  return new_int_var_array(name, nullptr, 0, lo, hi);
}

uint32_t new_int_var_array(const char* name, const uint64_t* shape, size_t ndim, const coeff_t& lo,
                           const coeff_t& hi) {
  if (!(lo < hi)) {
    fatal("int_var: bounds must satisfy lo < hi (got lo = ", lo, ", hi = ", hi, ")");
  }
  const uint64_t count = extent_product(shape, ndim);
  std::string resolved = resolve_name(name);
  IntVarRegistry& registry = IntVarRegistry::instance();
  const MutexLock lock(registry.mutex);
  const uint64_t next = registry.next_index.load(std::memory_order_relaxed);
  if (count > kMaxVariables - next) fatal("int_var: integer variable index space exhausted");
  const auto first = static_cast<uint32_t>(next);
  if (count > 0) {
    registry.groups.append(
        IntVarGroup{first, count, std::move(resolved), {shape, shape + ndim}, lo, hi});
    registry.bit_total += count * bit_width(lo, hi);
    registry.next_index.store(next + count, std::memory_order_release);
  }
  return atom_literal(first);
}

const IntVarGroup& int_var_bounds(uint32_t literal) {
  const IntVarGroup* group =
      is_atom(literal) ? IntVarRegistry::instance().find(index_of(literal)) : nullptr;
  if (group == nullptr) fatal("zorv_int_var_bounds: not an integer variable index");
  return *group;
}

std::vector<std::pair<coeff_t, uint32_t>> encoding_of(uint32_t literal) {
  IntVarRegistry& registry = IntVarRegistry::instance();
  const MutexLock lock(registry.mutex);
  const uint32_t index = index_of(literal);
  const IntVarGroup* group = is_atom(literal) ? registry.find(index) : nullptr;
  if (group == nullptr) fatal("binarize: not an integer variable index");
  auto& encoding = registry.encodings[index];
  if (encoding.empty()) {
    std::string name;
    append_element_name(name, group->name.c_str(), group->shape, index - group->first);
    for (coeff_t& c : encoding_series(group->lo, group->hi, 1)) {
      const uint32_t bit = new_var(name + "#" + std::to_string(encoding.size()));
      encoding.emplace_back(std::move(c), bit);
    }
  }
  return encoding;
}

uint64_t bit_width(const coeff_t& lo, const coeff_t& hi) {
  return lo < hi ? boost::multiprecision::msb(coeff_t(hi - lo)) + 1 : 1;
}

bool append_atom_name(uint32_t index, std::string& text) {
  const IntVarGroup* group = IntVarRegistry::instance().find(index);
  if (group == nullptr) return false;
  append_element_name(text, group->name.c_str(), group->shape, index - group->first);
  return true;
}

void reset_int_variables() {
  IntVarRegistry& registry = IntVarRegistry::instance();
  const MutexLock lock(registry.mutex);
  registry.groups.clear();
  registry.encodings.clear();
  registry.next_index = 0;
  registry.bit_total = 0;
}

}  // namespace zorv
