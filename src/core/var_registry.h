// VarRegistry: the names of all binary variables, one table per process.
//
// Thread rules: everything is added under `mutex`, and nothing that was added ever changes. Reads
// take no lock: `count` is published after the name and the run of a new variable, so all
// who learn of a variable find both. Only reset_variables() must be alone. Indices are dense, given
// out in order and never reused, except after a reset.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "core/stable_blocks.h"
#include "zorv/engine/mutex.h"

namespace zorv {

// Variables with consecutive indices: one block, made in one call and named by its name and shape,
// or any number that were made one by one and have a name each.
struct VarRun {
  uint32_t base;  // the first of them
  bool is_block;
  uint64_t name;  // the entry of `names` for the block or for `base`; the others' follow
  std::vector<uint64_t> shape;  // of a block
};

// The name of a VarInt, or of an array of them.
struct IntArrayName {
  std::string name;
  std::vector<uint64_t> shape;
};

struct VarRegistry {
  StableBlocks<std::string> names;  // "~" and the name
  StableBlocks<VarRun> runs;        // ascending by `base`
  std::atomic<uint64_t> count{0};
  StableBlocks<IntArrayName> int_arrays;
  Mutex mutex;

  static VarRegistry& instance();
};

// "{0}", "{1}", ...: one counter for all kinds of variables, never reset.
std::string auto_var_name();
// `name`, or a generated one if it is null or empty.
std::string resolve_name(const char* name);

// Both return the literal of the (first) new variable and abort when the index space is full. A
// block takes consecutive indices in row-major order; no dimensions make one variable. Names may
// repeat.
uint32_t new_var(const std::string& name);
uint32_t new_var_array(const std::string& name, const uint64_t* dims, size_t ndims);
// Enters a name for a VarInt or an array of them; returns its position in `int_arrays`.
uint64_t add_int_array_name(const std::string& name, const uint64_t* dims, size_t ndims);

uint64_t var_count();

// Appends the name of any literal, "?" if it names nothing.
void append_var_name(std::string& text, uint32_t literal);
// `name` with one "[i]" for each axis, the row-major coordinates of `offset`.
void append_element_name(std::string& text, const char* name, const std::vector<uint64_t>& shape,
                         uint64_t offset);
// Product of the extents, 1 for none; wraps silently.
uint64_t extent_product(const uint64_t* dims, size_t ndims);

// Empties the binary and the integer registry. Literals issued before dangle; the counter of
// generated names goes on. No other thread may make, name or look up variables meanwhile.
void reset_variables();

}  // namespace zorv
