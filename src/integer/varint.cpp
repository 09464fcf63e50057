#include "integer/varint.h"

#include <numeric>
#include <string>

#include "core/fatal.h"
#include "core/stable_blocks.h"
#include "core/var_registry.h"
#include "integer/bit_sum.h"
#include "integer/series.h"
#include "zorv/engine/mutex.h"

namespace zorv {

namespace {

// All VarInts of the process.
struct VarIntSet {
  StableBlocks<VarIntRecord> records;
  Mutex mutex;  // for additions

  static VarIntSet& instance() {
    static VarIntSet set;
    return set;
  }
  // Returns the index of the new record.
  uint32_t append(VarIntRecord record) {
    const MutexLock lock(mutex);
    if (records.size() > kMaxVarIntIndex) fatal("VarIntSet: index overflow");
    return static_cast<uint32_t>(records.append(std::move(record)));
  }
};

// The expression of a record that is entered in the table.
ExprImpl make_value(VarIntRecord record) {
  ExprImpl e = polynomial_of(record.min, record.coeffs, record.vars);
  e.attr = VarIntSet::instance().append(std::move(record));
  return e;
}

ExprImpl make_named(const std::string& name, const coeff_t& lo, const coeff_t& hi,
                    std::vector<coeff_t> coeffs, std::vector<uint32_t> vars) {
  const uint64_t name_index = add_int_array_name(name, nullptr, 0);
  return make_value({name_index, 0, lo, hi, std::move(coeffs), std::move(vars)});
}

}  // namespace

ExprImpl make_varint(const char* name, const coeff_t& lo, const coeff_t& hi) {
  const std::string resolved = resolve_name(name);
  std::vector<coeff_t> series = encoding_series(lo, hi, 1);
  std::vector<uint32_t> bits = new_bits(resolved, series.size());
  return make_named(resolved, lo, hi, std::move(series), std::move(bits));
}

ExprImpl make_varint_with_vars(const char* name, const coeff_t& lo, const coeff_t& hi,
                               std::vector<coeff_t> coeffs, std::vector<uint32_t> vars) {
  return make_named(resolve_name(name), lo, hi, std::move(coeffs), std::move(vars));
}

ArrayImpl<ExprImpl> make_varint_array(const char* name, const Shape& shape, const coeff_t& lo,
                                      const coeff_t& hi) {
  const std::string resolved = resolve_name(name);
  const std::vector<coeff_t> series = encoding_series(lo, hi, 1);
  const uint64_t name_index = add_int_array_name(resolved, shape.data(), shape.size());
  Shape bits = shape;
  bits.push_back(series.size());
  const uint32_t first =
      element_count(bits) == 0 ? 0 : new_var_array(resolved, bits.data(), bits.size());
  return make_array<ExprImpl>(
      shape,
      [&](uint64_t i) {
        std::vector<uint32_t> vars(series.size());
        std::iota(vars.begin(), vars.end(), static_cast<uint32_t>(first + i * series.size()));
        return make_value({name_index, i, lo, hi, series, std::move(vars)});
      },
      kInOrder);
}

const VarIntRecord& varint_record(uint32_t attr) {
  if (!is_varint_attr(attr)) {
    fatal("VarInt accessor called on a value that is not a VarInt (plain Expr or ExprExpr).");
  }
  const StableBlocks<VarIntRecord>& records = VarIntSet::instance().records;
  if (attr >= records.size()) {
    fatal(
        "VarInt accessor called on a value that is no longer a VarInt "
        "(e.g. after vi += 1, vi.sqr()).");
  }
  return records[attr];
}

uint64_t varint_record_count() { return VarIntSet::instance().records.size(); }

std::vector<bool> decompose(const VarIntRecord& record, const coeff_t& value) {
  std::vector<bool> bits(record.vars.size());
  coeff_t rest = value - record.min;
  for (size_t i = bits.size(); i-- > 0;) {
    bits[i] = rest >= record.coeffs[i];
    if (bits[i]) rest -= record.coeffs[i];
  }
  return bits;
}

void replace_polynomial(ExprImpl& element, const ExprImpl& e) {
  const uint32_t attr = element.attr;
  element = e;
  element.attr = attr;
}

}  // namespace zorv
