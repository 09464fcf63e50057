/* How many chairs x and tables y pay best, if 2 x + 3 y may not exceed 50 boards of wood? */
#include <stdio.h>
#include <stdlib.h>

#include "zorv/zorv.h"

#define INT(v) \
  (&(CoeffWire){((v) > 0) - ((v) < 0), 1, (uint64_t[]){(uint64_t)((v) < 0 ? -(v) : (v))}})

static long long take(CoeffWire w) {
  long long value = w.nlimbs == 0 ? 0 : w.sign * (long long)w.limbs[0];
  free(w.limbs);
  return value;
}

int main(void) {
  uint32_t x = zorv_new_int_var("chairs", INT(0), INT(20));
  uint32_t y = zorv_new_int_var("tables", INT(0), INT(20));

  /* The profit is 40 x + 60 y - x^2 - 2 y^2; solvers minimise, so the energy is the loss. */
  CoeffWire coeffs[] = {*INT(-40), *INT(-60), *INT(1), *INT(2)};
  uint32_t degrees[] = {1, 1, 2, 2}, factors[] = {x, y, x, x, y, y};
  zorv_expr* loss = zorv_expr_create_from_bulk(INT(0), 4, coeffs, degrees, factors);
  zorv_expr* wood = zorv_expr_create_add_raw_terms(INT(2), &x, 1, INT(3), &y, 1);
  zorv_expr* rule = zorv_cons_between(wood, INT(0), INT(50)); /* kept whole, not squared out */
  zorv_expr_imul_int(rule, INT(100));                         /* what breaking it costs */
  zorv_expr_iadd_expr(loss, rule);

  zorv_expr* energy = zorv_expr_simplify_as_binary(loss);
  zorv_model* model = zorv_model_create(energy);
  zorv_easy_wrapper* solver = zorv_easy_solver_wrapper_create(model);
  ParamPair params[] = {{"time_limit", "0.2"}, {NULL, NULL}};
  zorv_result* result = zorv_easy_solver_wrapper_search(solver, params, NULL);
  zorv_sol* sol = zorv_easy_solver_result_to_sol(result, model);

  CoeffWire chairs = {0}, tables = {0}, best = {0};
  zorv_sol_get_int(sol, x, &chairs);
  zorv_sol_get_int(sol, y, &tables);
  zorv_sol_energy(sol, &best);
  printf("%lld chairs, %lld tables: profit %lld, %d rules broken\n", take(chairs), take(tables),
         -take(best), (int)zorv_cons_violation_count(energy, sol));

  zorv_sol_destroy(sol);
  zorv_easy_solver_result_destroy(result);
  zorv_easy_solver_wrapper_destroy(solver);
  zorv_model_destroy(model);
  zorv_expr* exprs[] = {loss, wood, rule, energy};
  for (int i = 0; i < 4; ++i) zorv_expr_destroy(exprs[i]);
}
