#include "core/var_registry.h"

#include <utility>

#include "core/fatal.h"
#include "core/int_atoms.h"
#include "core/literal.h"

namespace zorv {

namespace {

std::atomic<uint32_t> auto_counter{0};

// The index of the first of `count` new variables.
uint64_t next_index(const VarRegistry& registry, uint64_t count) ZORV_REQUIRES(registry.mutex) {
  const uint64_t next = registry.count.load(std::memory_order_relaxed);
  if (count > kMaxVariables - next) {
    fatal("Binary variable index space exhausted (2^30 - 1 variables).");
  }
  return next;
}

// The run first, as it says which name comes next, and a name without a run would shift those of
// all later variables. Of two runs with one base only the second counts.
void begin_run(VarRegistry& registry, uint64_t base, bool is_block, std::vector<uint64_t> shape)
    ZORV_REQUIRES(registry.mutex) {
  registry.runs.append(
      VarRun{static_cast<uint32_t>(base), is_block, registry.names.size(), std::move(shape)});
}

// The run that holds a registered variable: the last one that does not begin behind it.
const VarRun& run_of(const VarRegistry& registry, uint32_t i) {
  return registry.runs.last_where([=](const VarRun& run) { return run.base <= i; });
}

void append_binary_name(std::string& text, uint32_t literal) {
  const VarRegistry& registry = VarRegistry::instance();
  const uint32_t i = identity_of(literal);
  if (i >= registry.count.load(std::memory_order_acquire)) {
    text += '?';
    return;
  }
  const VarRun& run = run_of(registry, i);
  const uint32_t offset = i - run.base;
  const size_t skip = is_negated(literal) ? 0 : 1;  // the stored names begin with "~"
  if (run.is_block) {
    append_element_name(text, registry.names[run.name].c_str() + skip, run.shape, offset);
  } else {
    text.append(registry.names[run.name + offset], skip);
  }
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
  const MutexLock lock(registry.mutex);
  const uint64_t index = next_index(registry, 1);
  const uint64_t runs = registry.runs.size();
  if (runs == 0 || registry.runs[runs - 1].is_block) begin_run(registry, index, false, {});
  registry.names.append('~' + name);
  registry.count.store(index + 1, std::memory_order_release);
  return static_cast<uint32_t>(index);
}

uint32_t new_var_array(const std::string& name, const uint64_t* dims, size_t ndims) {
  const uint64_t count = extent_product(dims, ndims);
  VarRegistry& registry = VarRegistry::instance();
  const MutexLock lock(registry.mutex);
  const uint64_t base = next_index(registry, count);
  if (count > 0) {
    begin_run(registry, base, true, {dims, dims + ndims});
    registry.names.append('~' + name);
    registry.count.store(base + count, std::memory_order_release);
  }
  return static_cast<uint32_t>(base);
}

uint64_t add_int_array_name(const std::string& name, const uint64_t* dims, size_t ndims) {
  VarRegistry& registry = VarRegistry::instance();
  const MutexLock lock(registry.mutex);
  return registry.int_arrays.append(IntArrayName{name, {dims, dims + ndims}});
}

uint64_t var_count() { return VarRegistry::instance().count.load(std::memory_order_acquire); }

void append_var_name(std::string& text, uint32_t literal) {
  if (!is_atom(literal) || is_negated(literal)) {
    append_binary_name(text, literal);
  } else if (!append_atom_name(index_of(literal), text)) {
    text += '?';
  }
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
    const MutexLock lock(registry.mutex);
    registry.count = 0;
    registry.runs.clear();
    registry.names.clear();
    registry.int_arrays.clear();
  }
  reset_int_variables();
}

}  // namespace zorv
