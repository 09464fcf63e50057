/* An outside program in C: the least energy of a model that the library solves itself, and of one
 * for which it needs a solver library. */
#include <stdio.h>
#include <stdlib.h>
#include <zorv/zorv.h>

static long long least_energy(const zorv_expr* e) {
  zorv_expr* simple = zorv_expr_simplify_as_binary(e);
  zorv_model* model = zorv_model_create(simple);
  zorv_exhaustive_wrapper* solver = zorv_exhaustive_wrapper_create(model);
  zorv_result* result = zorv_exhaustive_wrapper_search(solver, NULL);
  CoeffWire energy = {0, 0, NULL};
  zorv_easy_solver_result_energy(result, &energy);
  long long value = energy.nlimbs == 0 ? 0 : energy.sign * (long long)energy.limbs[0];
  free(energy.limbs);
  zorv_easy_solver_result_destroy(result);
  zorv_exhaustive_wrapper_destroy(solver);
  zorv_model_destroy(model);
  zorv_expr_destroy(simple);
  return value;
}

int main(void) {
  uint64_t limbs[] = {1, 4, 10};
  const CoeffWire zero = {0, 0, NULL}, ten = {1, 1, &limbs[2]};
  const CoeffWire coeffs[] = {{1, 1, &limbs[0]}, {-1, 1, &limbs[1]}};
  uint32_t n = zorv_new_int_var("n", &zero, &ten), x = zorv_new_var("x"), y = zorv_new_var("y");
  const uint32_t degrees[] = {2, 1}, n_n_n[] = {n, n, n}, x_y_x[] = {x, y, x};
  /* n^2 - 4 n, and 10 + x y - 4 x. */
  zorv_expr* whole = zorv_expr_create_from_bulk(&zero, 2, coeffs, degrees, n_n_n);
  zorv_expr* binary = zorv_expr_create_from_bulk(&ten, 2, coeffs, degrees, x_y_x);
  printf("%s %lld %lld\n", zorv_const_str("version"), least_energy(whole), least_energy(binary));
  zorv_expr_destroy(whole);
  zorv_expr_destroy(binary);
}
