// Models and solutions as owned handles, for tests through the exports.
#pragma once

#include <utility>
#include <vector>

#include "constraints/describe.h"

namespace zorv::test {

template <typename Raw, void (*kDestroy)(Raw*)>
class Owned {
 public:
  Owned(Raw* raw) : raw_(raw) {}
  Owned(Owned&& other) noexcept : raw_(std::exchange(other.raw_, nullptr)) {}
  Owned& operator=(Owned&&) = delete;
  ~Owned() { kDestroy(raw_); }
  operator Raw*() const { return raw_; }

 private:
  Raw* raw_;
};

template <typename Raw, void (*kDestroy)(Raw*)>
auto& unwrap(const Owned<Raw, kDestroy>& owned) {
  return unwrap(static_cast<Raw*>(owned));
}

using Model = Owned<zorv_model, zorv_model_destroy>;
using Solution = Owned<zorv_sol, zorv_sol_destroy>;

inline Model compiled(const ExprImpl& e) { return zorv_model_create(borrow(e)); }

// What an export writes to its coefficient output.
template <typename Export, typename... Args>
coeff_t written(Export read, const Args&... args) {
  Wire out;
  read(args..., out.out());
  return out.value();
}

inline std::vector<uint32_t> literals(const zorv_model* m, uint32_t degree) {
  const uint32_t* from = zorv_model_term_vars(m, degree);
  return {from, from + degree * zorv_model_term_count(m, degree)};
}

inline std::vector<coeff_t> coefficients(const zorv_model* m, uint32_t degree) {
  const coeff_t* from = unwrap(zorv_model_coeff_array(m, degree));
  return {from, from + zorv_model_term_count(m, degree)};
}

inline std::vector<uint32_t> variables(const zorv_model* m) {
  std::vector<uint32_t> ids;
  for (uint64_t i = 0; i < zorv_model_var_count(m); ++i) ids.push_back(zorv_model_var(m, i));
  return ids;
}

// c * the product of the literals, as they stand.
inline TermImpl term(const coeff_t& c, const std::vector<uint32_t>& literals) {
  return TermImpl(c, VarList(literals.data(), static_cast<uint32_t>(literals.size())));
}

// The terms in the order given, none in the first slot unless it is given by `append`.
inline ExprImpl sum_of(std::vector<TermImpl> terms) {
  ExprImpl e;
  for (TermImpl& t : terms) e.list.append(std::move(t));
  return e;
}

}  // namespace zorv::test
