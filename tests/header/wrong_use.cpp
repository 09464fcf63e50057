// A program with one wrong line, or with none for WRONG_LINE 0.
#include <zorv/zorv.hpp>

int main() {
  using namespace zorv;
  const Var x = var("x");
  const IntVar n = int_var("n", 0, 9);
  Expr e = 2 * x * n - ~x + 1;
#if WRONG_LINE == 1
  e += 0.5 * x;  // coefficients are integers
#elif WRONG_LINE == 2
  e += ~n;  // an integer variable has no complement
#elif WRONG_LINE == 3
  if (e == 3) e += 1;  // a comparison is a constraint, not a truth value
#endif
  e += cons(1 <= e <= 4);
}
