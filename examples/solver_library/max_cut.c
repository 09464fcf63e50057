/* How many edges of the Petersen graph can run between two halves of its vertices? A model of
 * binary variables alone, so a solver library is needed: see docs/solver_libraries.md. */
#include <stdio.h>
#include <stdlib.h>

#include "zorv/zorv.h"

#define INT(v) \
  (&(CoeffWire){((v) > 0) - ((v) < 0), 1, (uint64_t[]){(uint64_t)((v) < 0 ? -(v) : (v))}})

/* Adds 2 x y - x - y: -1 if the edge is cut, else 0. */
static void add_edge(zorv_expr* e, uint32_t x, uint32_t y) {
  CoeffWire coeffs[] = {*INT(2), *INT(-1), *INT(-1)};
  uint32_t degrees[] = {2, 1, 1}, factors[] = {x, y, x, y};
  zorv_expr_iadd_terms_bulk(e, INT(0), 3, coeffs, degrees, factors);
}

int main(void) {
  uint32_t outer = zorv_new_var_array("outer", (uint64_t[]){5}, 1);
  uint32_t inner = zorv_new_var_array("inner", (uint64_t[]){5}, 1);
  zorv_expr* cut = zorv_expr_create();
  for (uint32_t i = 0; i < 5; ++i) {
    add_edge(cut, outer + i, outer + (i + 1) % 5);
    add_edge(cut, outer + i, inner + i);
    add_edge(cut, inner + i, inner + (i + 2) % 5);
  }
  zorv_expr* energy = zorv_expr_simplify_as_binary(cut);
  zorv_model* model = zorv_model_create(energy);
  zorv_easy_wrapper* solver = zorv_easy_solver_wrapper_create(model);
  ParamPair params[] = {{"time_limit", "0.1"}, {"seed", "1"}, {NULL, NULL}};
  zorv_result* result = zorv_easy_solver_wrapper_search(solver, params, NULL);

  CoeffWire told = {0}, recomputed = {0};
  zorv_easy_solver_result_energy(result, &told);
  zorv_model_eval(model, zorv_easy_solver_result_bits(result), &recomputed);
  printf("%d of 15 edges cut, energy %s\n", (int)*recomputed.limbs,
         *told.limbs == *recomputed.limbs ? "as told" : "told wrong");

  free(told.limbs);
  free(recomputed.limbs);
  zorv_easy_solver_result_destroy(result);
  zorv_easy_solver_wrapper_destroy(solver);
  zorv_model_destroy(model);
  zorv_expr_destroy(energy);
  zorv_expr_destroy(cut);
}
