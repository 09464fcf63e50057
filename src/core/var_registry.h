// VarRegistry: the names of all binary variables, one table per process.
//
// Thread rules: everything changes under `mutex`. Reads of names and blocks take no lock, so a
// caller must not render text while another thread makes variables. Indices are dense, given out
// in order and never reused, except after reset_variables().
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace zorv {

// A block of variables made in one call; also the naming entry of a VarInt array.
struct VarArrayRange {
  uint32_t base;  // first index; in int_arrays the position of the entry itself
  uint64_t count;
  std::string name;  // in `arrays` with a leading "~", in `int_arrays` as given
  std::vector<uint64_t> shape;
};

struct VarRegistry {
  std::vector<std::string> names;  // "~" and the name; empty for members of a block
  std::vector<VarArrayRange> arrays;
  std::vector<VarArrayRange> int_arrays;
  std::mutex mutex;

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

// The name of any literal, "?" if it names nothing. The pointer refers to the registry or to
// `scratch`, and dies with the next change of either.
const char* var_name(uint32_t literal, std::string& scratch);
// `name` with one "[i]" for each axis, the row-major coordinates of `offset`.
void append_element_name(std::string& text, const char* name, const std::vector<uint64_t>& shape,
                         uint64_t offset);
// Product of the extents, 1 for none; wraps silently.
uint64_t extent_product(const uint64_t* dims, size_t ndims);

// Empties the binary and the integer registry, one lock at a time. Literals issued before dangle;
// the counter of generated names goes on.
void reset_variables();

}  // namespace zorv
