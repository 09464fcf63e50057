// Owners for the handles of the C interface: just enough for a C++ program to read well.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>

#include "zorv/zorv.h"

template <auto destroy>
struct Destroy {
  template <typename Handle>
  void operator()(Handle* handle) const {
    destroy(handle);
  }
};

using Expr = std::unique_ptr<zorv_expr, Destroy<zorv_expr_destroy>>;
using Model = std::unique_ptr<zorv_model, Destroy<zorv_model_destroy>>;
using Sol = std::unique_ptr<zorv_sol, Destroy<zorv_sol_destroy>>;
using Ilp = std::unique_ptr<zorv_ilp, Destroy<zorv_ilp_destroy>>;
using Solver = std::unique_ptr<zorv_easy_wrapper, Destroy<zorv_easy_solver_wrapper_destroy>>;
using Result = std::unique_ptr<zorv_result, Destroy<zorv_easy_solver_result_destroy>>;

// A coefficient to hand in: one limb that lives as long as this object.
class Coeff {
 public:
  Coeff(int64_t value)
      : limb_(value < 0 ? -static_cast<uint64_t>(value) : static_cast<uint64_t>(value)),
        wire_{(value > 0) - (value < 0), value == 0 ? 0u : 1u, &limb_} {}
  Coeff(const Coeff&) = delete;
  Coeff& operator=(const Coeff&) = delete;

  operator const CoeffWire*() const { return &wire_; }

 private:
  uint64_t limb_;
  CoeffWire wire_;
};

// A coefficient that the library hands out, known to fit in 64 bits.
class CoeffOut {
 public:
  CoeffOut() = default;
  CoeffOut(const CoeffOut&) = delete;
  CoeffOut& operator=(const CoeffOut&) = delete;
  ~CoeffOut() { std::free(wire_.limbs); }

  operator CoeffWire*() { return &wire_; }
  int64_t value() const {
    const auto magnitude = wire_.nlimbs == 0 ? 0 : static_cast<int64_t>(wire_.limbs[0]);
    return wire_.sign < 0 ? -magnitude : magnitude;
  }

 private:
  CoeffWire wire_ = {0, 0, nullptr};
};
