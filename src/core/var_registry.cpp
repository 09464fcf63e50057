#include "core/var_registry.h"

#include <algorithm>
#include <atomic>

#include "core/fatal.h"
#include "core/int_atoms.h"
#include "core/literal.h"

namespace zorv {

namespace {

std::atomic<uint32_t> auto_counter{0};

void check_room(const VarRegistry& registry, uint64_t count) {
  if (count > kMaxVariables - registry.names.size()) {
    fatal("Binary variable index space exhausted (2^30 - 1 variables).");
  }
}

// The block that holds variable i; null if it was made alone. Blocks ascend by `base`.
const VarArrayRange* block_of(const VarRegistry& registry, uint32_t i) {
  const auto after =
      std::upper_bound(registry.arrays.begin(), registry.arrays.end(), i,
                       [](uint32_t index, const VarArrayRange& b) { return index < b.base; });
  if (after == registry.arrays.begin()) return nullptr;
  const VarArrayRange& block = *std::prev(after);
  return i - block.base < block.count ? &block : nullptr;
}

const char* binary_var_name(uint32_t literal, std::string& scratch) {
  const VarRegistry& registry = VarRegistry::instance();
  const uint32_t i = identity_of(literal);
  if (i >= registry.names.size()) return "?";
  const size_t skip = is_negated(literal) ? 0 : 1;  // the stored names begin with "~"
  if (const VarArrayRange* block = block_of(registry, i)) {
    scratch.clear();
    append_element_name(scratch, block->name.c_str() + skip, block->shape, i - block->base);
    return scratch.c_str();
  }
  const std::string& name = registry.names[i];
  return name.empty() ? "?" : name.c_str() + skip;
}

}  // namespace

VarRegistry& VarRegistry::instance() {
  static VarRegistry registry;
  return registry;
}

std::string auto_var_name() {
  std::string name = "{";
  name += std::to_string(auto_counter.fetch_add(1, std::memory_order_relaxed));
  name += '}';
  return name;
}

std::string resolve_name(const char* name) {
  return name == nullptr || *name == '\0' ? auto_var_name() : name;
}

uint32_t new_var(const std::string& name) {
  VarRegistry& registry = VarRegistry::instance();
  const std::lock_guard lock(registry.mutex);
  check_room(registry, 1);
  registry.names.push_back('~' + name);
  return static_cast<uint32_t>(registry.names.size() - 1);
}

uint32_t new_var_array(const std::string& name, const uint64_t* dims, size_t ndims) {
  const uint64_t count = extent_product(dims, ndims);
  VarRegistry& registry = VarRegistry::instance();
  const std::lock_guard lock(registry.mutex);
  check_room(registry, count);
  const auto base = static_cast<uint32_t>(registry.names.size());
  registry.names.resize(base + count);
  registry.arrays.push_back({base, count, '~' + name, {dims, dims + ndims}});
  return base;
}

uint64_t add_int_array_name(const std::string& name, const uint64_t* dims, size_t ndims) {
  VarRegistry& registry = VarRegistry::instance();
  const std::lock_guard lock(registry.mutex);
  const uint64_t position = registry.int_arrays.size();
  registry.int_arrays.push_back(
      {static_cast<uint32_t>(position), extent_product(dims, ndims), name, {dims, dims + ndims}});
  return position;
}

uint64_t var_count() { return VarRegistry::instance().names.size(); }

const char* var_name(uint32_t literal, std::string& scratch) {
  if (is_atom(literal) && !is_negated(literal)) {
    scratch.clear();
    return append_atom_name(index_of(literal), scratch) ? scratch.c_str() : "?";
  }
  return binary_var_name(literal, scratch);
}

void append_element_name(std::string& text, const char* name, const std::vector<uint64_t>& shape,
                         uint64_t offset) {
  text += name;
  for (size_t axis = 0; axis < shape.size(); ++axis) {
    const uint64_t stride = extent_product(shape.data() + axis + 1, shape.size() - axis - 1);
    text += '[';
    text += std::to_string(offset / stride);
    text += ']';
    offset %= stride;
  }
}

uint64_t extent_product(const uint64_t* dims, size_t ndims) {
  uint64_t product = 1;
  for (size_t i = 0; i < ndims; ++i) product *= dims[i];
  return product;
}

void reset_variables() {
  {
    VarRegistry& registry = VarRegistry::instance();
    const std::lock_guard lock(registry.mutex);
    registry.names.clear();
    registry.arrays.clear();
    registry.int_arrays.clear();
  }
  reset_int_variables();
}

}  // namespace zorv
