/* zorv: combinatorial optimisation over polynomials with exact coefficients. The C interface.
 *
 * Conventions, which the contracts below do not repeat:
 *
 *  1. Literals. A variable is a 32-bit number, a literal: bits 29-0 an index, bit 30 set for an
 *     integer atom, bit 31 set for the complement of a binary variable (1 - x). A caller negates a
 *     variable by setting bit 31; an atom is never negated. 0xFFFFFFFF names nothing.
 *  2. Coefficients are unbounded integers and cross as CoeffWire records, see zorv/wire.h. A record
 *     that a function writes must be zeroed or hold a block of malloc: that block is freed.
 *     Coefficients are read before the call returns and never kept.
 *  3. Handles are pointers to incomplete types. The caller owns every handle that a function
 *     returns as a plain pointer, until the matching _destroy, which accepts null; nothing else
 *     does. A pointer to const that is returned is borrowed from the argument and dies when that is
 *     changed or destroyed.
 *  4. Names: _create makes a handle; _clone a deep copy, _clone_<op> the copy with the operation
 *     applied; i<op> changes the first argument in place; _raw takes a coefficient, a literal array
 *     and its length; _move a term by its head pair and an overflow block that is adopted; _direct
 *     the same with a block that is copied; _mm and _ml consume both handles or the left one; _bulk
 *     many terms in flat arrays; _steal_ hands a buffer over without a copy.
 *  5. A head pair is the first two literals of a term in one word, the first one low, 0xFFFFFFFF
 *     for an empty half. An overflow block holds the literals from the third on and ends with
 *     0xFFFFFFFF. A block that is adopted comes from malloc, with room for as many entries as the
 *     degree of the term rounded down to an even number. A block that is copied is looked at only
 *     if both halves of the head pair are filled.
 *  6. Yes and no are 1 and 0. Array lengths stand in brackets.
 *  7. Misuse that is detected writes one line, "zorv: " and what is wrong, to the standard error
 *     stream and aborts the process, before anything is changed. "Aborts" below means this. Null
 *     handles, indices and array lengths are not checked unless it says so, nor is whether a
 *     literal names a variable.
 *  8. std::bad_alloc passes through as an exception, for a size beyond any memory too; a C caller
 *     may treat it as the end. Where work has spread over threads it ends the process.
 *  9. Text lives in a buffer of the thread and stays good until the same function is called again
 *     on that thread.
 * 10. Threads. All functions may be called on several threads at the same time; the library's own
 *     tables, of variables, constraints and names, take care of themselves. What is left to the
 *     caller: a handle that one thread changes or destroys is used by no other thread meanwhile,
 *     while any number may read it. zorv_exprexpr_set_bounds and zorv_exprexpr_set_allowed change
 *     the constraint, and with it every expression that carries it. zorv_var_reset runs alone: no
 *     other call, on whatever handle, until it has returned.
 * 11. Long operations (above 9,999 terms) spread over threads inside the call; the number is
 *     ZORV_NUM_THREADS, or what the machine has, and at most 1,024. No result depends on it, nor on
 *     how many of them the system has to give.
 * 12. Terms are not merged by arithmetic. The zorv_expr_simplify functions do that, and a model
 *     wants zorv_expr_simplify_as_binary. Blocks of long expressions that were destroyed, at most
 *     four and 1 GiB, are kept for the next ones; the kernel may take their pages when it needs
 *     them.
 */
#ifndef ZORV_ZORV_H
#define ZORV_ZORV_H

#include <stddef.h>
#include <stdint.h>

#include "zorv/wire.h"

#define ZORV_API __attribute__((visibility("default")))

#ifdef __cplusplus
extern "C" {
#endif

typedef struct zorv_term zorv_term;             /* a coefficient times literals */
typedef struct zorv_expr zorv_expr;             /* a polynomial, and the constraints it carries */
typedef struct zorv_array_var zorv_array_var;   /* an array of literals */
typedef struct zorv_array_int zorv_array_int;   /* of integers */
typedef struct zorv_array_term zorv_array_term; /* of terms */
typedef struct zorv_array_expr zorv_array_expr; /* of expressions */
typedef struct zorv_model zorv_model;           /* a compiled expression; never changes */
typedef struct zorv_sol zorv_sol;               /* an assignment of a model, with its energy */
typedef struct zorv_ilp zorv_ilp;               /* the integer linear program of a model */
typedef struct zorv_result zorv_result;         /* what a search found */
typedef struct zorv_easy_wrapper zorv_easy_wrapper; /* solvers on one model */
typedef struct zorv_exhaustive_wrapper zorv_exhaustive_wrapper;
typedef struct zorv_klb5_wrapper zorv_klb5_wrapper;
typedef struct coeff_t coeff_t; /* an unbounded integer of the library's own */

/* ---- Variables ---------------------------------------------------------------------------------
 */

/* Makes one binary variable and returns its literal. A null or empty name draws a generated one,
 * "{0}", "{1}" and so on; names may repeat. Aborts when 2^30 - 1 variables exist. */
ZORV_API uint32_t zorv_new_var(const char* name);

/* Makes a block of binary variables with consecutive literals in row-major order, named
 * "name[i][j]", and returns the first. The same abort.
 *   dims  [ndims] extents; none makes one variable with the bare name, an extent of 0 makes none */
ZORV_API uint32_t zorv_new_var_array(const char* name, const uint64_t* dims, size_t ndims);

/* How many binary variables and how many integer atoms there are, and how many binary variables
 * there would be if every atom were written in bits. */
ZORV_API uint64_t zorv_var_count(void);
ZORV_API uint64_t zorv_int_var_count(void);
ZORV_API uint64_t zorv_used_var_count(void);

/* The name of a literal: "x[1][2]", "~x" for a complement, "?" if it names nothing. The text may
 * also be the registry's own and then dies when variables are made or reset. */
ZORV_API const char* zorv_var_str(uint32_t literal);

/* Draws a generated name without making a variable. */
ZORV_API const char* zorv_auto_var_name(void);

/* Forgets all variables and atoms. Literals made before then name nothing, or name new variables;
 * nothing looks for them. Generated names go on counting. Runs alone, see convention 10. */
ZORV_API void zorv_var_reset(void);

/* ---- Terms -------------------------------------------------------------------------------------
 */

/* New terms: c, c*v, c*a*b, and c times the literals of a head pair and an overflow block. Literals
 * stay in the given order. `a` may be 0xFFFFFFFF: `b` then goes to the first slot. */
ZORV_API zorv_term* zorv_term_create(const CoeffWire* c);
ZORV_API zorv_term* zorv_term_create_var(const CoeffWire* c, uint32_t v);
ZORV_API zorv_term* zorv_term_create_var_var(const CoeffWire* c, uint32_t a, uint32_t b);
ZORV_API zorv_term* zorv_term_create_vararray(const CoeffWire* c, uint64_t head_pair,
                                              const uint32_t* overflow);
ZORV_API zorv_term* zorv_term_clone(const zorv_term* t);
ZORV_API void zorv_term_destroy(zorv_term* t);

/* The coefficient, the number of literals, and literal i below that number. */
ZORV_API void zorv_term_coeff(const zorv_term* t, CoeffWire* out);
ZORV_API uint32_t zorv_term_degree(const zorv_term* t);
ZORV_API uint32_t zorv_term_var_at(const zorv_term* t, uint32_t i);

/* Arithmetic in place. Division aborts on 0 and on a remainder. */
ZORV_API void zorv_term_mul_var(zorv_term* t, uint32_t v);
ZORV_API void zorv_term_mul_coeff(zorv_term* t, const CoeffWire* c);
ZORV_API void zorv_term_div_coeff(zorv_term* t, const CoeffWire* c);
ZORV_API void zorv_term_negate(zorv_term* t);

/* a times b, literals of `a` first: as a new term, or into `a`, which is returned. `b` is only read
 * in both, and may be `a`. */
ZORV_API zorv_term* zorv_term_mul_term(const zorv_term* a, const zorv_term* b);
ZORV_API zorv_term* zorv_term_mul_term_move(zorv_term* a, const zorv_term* b);

/* "-2*x*~y". */
ZORV_API const char* zorv_term_str(const zorv_term* t);

/* ---- Expressions -------------------------------------------------------------------------------
 */

/* An expression is a constant, terms, and a tag, zorv_expr_attr: 0xFFFFFFFF for a plain polynomial,
 * otherwise what the sections on VarInt values and constraints say. What becomes of the tag in a
 * sum or a product stands with each function; "clears the tag" leaves a plain polynomial. */

/* New expressions: zero, an integer, a variable, a term. With `steal` the term's handle is
 * consumed, otherwise the term is copied. */
ZORV_API zorv_expr* zorv_expr_create(void);
ZORV_API zorv_expr* zorv_expr_create_int(const CoeffWire* c);
ZORV_API zorv_expr* zorv_expr_create_var(uint32_t v);
ZORV_API zorv_expr* zorv_expr_create_term(zorv_term* t, int steal);
ZORV_API zorv_expr* zorv_expr_clone(const zorv_expr* e);
ZORV_API void zorv_expr_destroy(zorv_expr* e);

/* The parts of an expression. Terms are numbered from 0 in storage order; numbers are not checked.
 * A borrowed term dies when the expression changes. `overflow` receives the address of the term's
 * own block, or 0. */
ZORV_API void zorv_expr_constant(const zorv_expr* e, CoeffWire* out);
ZORV_API uint32_t zorv_expr_attr(const zorv_expr* e);
ZORV_API uint64_t zorv_expr_term_count(const zorv_expr* e);
ZORV_API const zorv_term* zorv_expr_term_at(const zorv_expr* e, uint64_t i);
ZORV_API void zorv_expr_term_at_data(const zorv_expr* e, uint64_t i, CoeffWire* out,
                                     uint64_t* head_pair, uint64_t* overflow);

/* How many terms have degree d, the highest degree (0 without terms), whether any term holds the
 * variable of a literal, negated or not, and whether any holds an atom. */
ZORV_API uint64_t zorv_expr_term_count_degree(const zorv_expr* e, int d);
ZORV_API uint32_t zorv_expr_max_degree(const zorv_expr* e);
ZORV_API int zorv_expr_has(const zorv_expr* e, uint32_t v);
ZORV_API int zorv_expr_has_int_atom(const zorv_expr* e);

/* Sums in one call; equal terms stay apart, terms stand in the order of the arguments.
 *   vars  [n] literals, copied in that order     k  the constant
 * create_move_term adopts its block; _ml consumes `a`, _mm consumes both, which must differ. */
ZORV_API zorv_expr* zorv_expr_create_raw_term(const CoeffWire* c, const uint32_t* vars, uint32_t n,
                                              const CoeffWire* k);
ZORV_API zorv_expr* zorv_expr_create_move_term(const CoeffWire* c, uint64_t head_pair,
                                               uint64_t overflow, const CoeffWire* k);
ZORV_API zorv_expr* zorv_expr_create_add_raw_terms(const CoeffWire* c1, const uint32_t* vars1,
                                                   uint32_t n1, const CoeffWire* c2,
                                                   const uint32_t* vars2, uint32_t n2);
ZORV_API zorv_expr* zorv_expr_create_add_var_var(uint32_t a, uint32_t b);
ZORV_API zorv_expr* zorv_expr_create_add_var_int(uint32_t v, const CoeffWire* k);
ZORV_API zorv_expr* zorv_expr_create_sub_int_var(const CoeffWire* k, uint32_t v);
ZORV_API zorv_expr* zorv_expr_create_add_term_var(const zorv_term* t, uint32_t v);
ZORV_API zorv_expr* zorv_expr_create_add_term_int(const zorv_term* t, const CoeffWire* k);
ZORV_API zorv_expr* zorv_expr_create_sub_int_term(const CoeffWire* k, const zorv_term* t);
ZORV_API zorv_expr* zorv_expr_create_add_term_term(const zorv_term* a, const zorv_term* b);
ZORV_API zorv_expr* zorv_expr_create_add_term_term_ml(zorv_term* a, const zorv_term* b);
ZORV_API zorv_expr* zorv_expr_create_add_term_term_mm(zorv_term* a, zorv_term* b);
ZORV_API zorv_expr* zorv_expr_create_sub_term_term(const zorv_term* a, const zorv_term* b);

/* k plus n terms given in flat arrays, copied unsorted; the fastest way to load a large model.
 *   coeffs [n]; degs [n]; vars [sum of degs], the literals term after term
 * The in-place form keeps declared constraints and clears any other tag. */
ZORV_API zorv_expr* zorv_expr_create_from_bulk(const CoeffWire* k, uint64_t n,
                                               const CoeffWire* coeffs, const uint32_t* degs,
                                               const uint32_t* vars);
ZORV_API void zorv_expr_iadd_terms_bulk(zorv_expr* e, const CoeffWire* k, uint64_t n,
                                        const CoeffWire* coeffs, const uint32_t* degs,
                                        const uint32_t* vars);

/* e + operand in place, where the operand joins the constraints: a classic constraint takes it into
 * its free-form remainder, a declared one is kept as it is, a VarInt becomes plain. The term may
 * lie in `e` itself. iadd_term_move consumes the handle. */
ZORV_API void zorv_expr_iadd_var(zorv_expr* e, uint32_t v);
ZORV_API void zorv_expr_iadd_term(zorv_expr* e, const zorv_term* t);
ZORV_API void zorv_expr_iadd_term_move(zorv_expr* e, zorv_term* t);
ZORV_API void zorv_expr_iadd_raw_term(zorv_expr* e, const CoeffWire* c, const uint32_t* vars,
                                      uint32_t n);

/* e + operand and e - operand in place, where declared constraints are kept and any other tag is
 * cleared. The _move forms take the block: it is adopted or freed. */
ZORV_API void zorv_expr_iadd_int(zorv_expr* e, const CoeffWire* c);
ZORV_API void zorv_expr_isub_int(zorv_expr* e, const CoeffWire* c);
ZORV_API void zorv_expr_isub_var(zorv_expr* e, uint32_t v);
ZORV_API void zorv_expr_isub_term(zorv_expr* e, const zorv_term* t);
ZORV_API void zorv_expr_isub_raw_term(zorv_expr* e, const CoeffWire* c, const uint32_t* vars,
                                      uint32_t n);
ZORV_API void zorv_expr_iadd_move_term(zorv_expr* e, const CoeffWire* c, uint64_t head_pair,
                                       uint64_t overflow);
ZORV_API void zorv_expr_isub_move_term(zorv_expr* e, const CoeffWire* c, uint64_t head_pair,
                                       uint64_t overflow);

/* a + b and a - b in place; `b` may be `a`. In a sum the constraints of both sides are put
 * together; a declared and a classic side abort. A difference subtracts declared constraints of
 * `b`, by turning the signs of their weights; with any other `b` declared constraints of `a` are
 * kept and any other tag is cleared. */
ZORV_API void zorv_expr_iadd_expr(zorv_expr* a, const zorv_expr* b);
ZORV_API void zorv_expr_isub_expr(zorv_expr* a, const zorv_expr* b);

/* The same on a copy. Tags: add_term and add_expr put constraints together as above; add_int keeps
 * any constraint tag for the integer 0; otherwise all but sub_expr, which is as above, keep
 * declared constraints and clear any other tag. */
ZORV_API zorv_expr* zorv_expr_clone_add_int(const zorv_expr* e, const CoeffWire* c);
ZORV_API zorv_expr* zorv_expr_clone_sub_int(const zorv_expr* e, const CoeffWire* c);
ZORV_API zorv_expr* zorv_expr_clone_add_var(const zorv_expr* e, uint32_t v);
ZORV_API zorv_expr* zorv_expr_clone_sub_var(const zorv_expr* e, uint32_t v);
ZORV_API zorv_expr* zorv_expr_clone_add_term(const zorv_expr* e, const zorv_term* t);
ZORV_API zorv_expr* zorv_expr_clone_sub_term(const zorv_expr* e, const zorv_term* t);
ZORV_API zorv_expr* zorv_expr_clone_add_expr(const zorv_expr* a, const zorv_expr* b);
ZORV_API zorv_expr* zorv_expr_clone_sub_expr(const zorv_expr* a, const zorv_expr* b);

/* An integer times e. Weights of constraints are multiplied too. A classic constraint is cleared by
 * a factor that is not positive; the factor 0 aborts on declared requirements, which it would drop
 * silently. Terms that come to 0 stay until the next simplification. */
ZORV_API void zorv_expr_imul_int(zorv_expr* e, const CoeffWire* c);
ZORV_API zorv_expr* zorv_expr_clone_mul_int(const zorv_expr* e, const CoeffWire* c);

/* -e in place. Declared constraints turn the signs of their weights, any other tag is cleared. */
ZORV_API void zorv_expr_negate(zorv_expr* e);

/* Products and exact division. The tag is cleared, and any operand with declared constraints
 * aborts. `b` may be `a`. Division aborts on 0 and on a remainder as well. cost  one allocation of
 * the size of the product, which is never merged; spread over threads */
ZORV_API void zorv_expr_imul_var(zorv_expr* e, uint32_t v);
ZORV_API void zorv_expr_imul_term_direct(zorv_expr* e, const CoeffWire* c, uint64_t head_pair,
                                         const uint32_t* overflow);
ZORV_API void zorv_expr_imul_expr(zorv_expr* a, const zorv_expr* b);
ZORV_API zorv_expr* zorv_expr_mul_expr(const zorv_expr* a, const zorv_expr* b);
ZORV_API zorv_expr* zorv_expr_sqr(const zorv_expr* e);
ZORV_API void zorv_expr_idiv_int(zorv_expr* e, const CoeffWire* c);

/* The canonical form as a new expression: equal terms added up, zeros dropped, literals and terms
 * sorted (lower degree first). The binary form also reads variables as 0/1: x*x is x, x*~x is 0,
 * and ~x is 1 - x in terms that have degree 1 or 2; terms of degree 3 and more keep their
 * complements, and powers of atoms stay. The spin form reads variables as -1/+1: s*s is 1 and ~s is
 * -s; it aborts on an atom in a term whose coefficient is not 0. The bodies of constraints are
 * simplified likewise; the tag is kept or names their simplified form. cost  linear for terms that
 * are nearly in order, as products are; else that of sorting them */
ZORV_API zorv_expr* zorv_expr_simplify(const zorv_expr* e);
ZORV_API zorv_expr* zorv_expr_simplify_as_binary(const zorv_expr* e);
ZORV_API zorv_expr* zorv_expr_simplify_as_spin(const zorv_expr* e);

/* The same polynomial over the other kind of variables, by x = (s + 1)/2 and s = 2*x - 1. To stay
 * among integers zorv_expr_binary_to_spin returns 2^D times the value, with D the highest degree of
 * a term of `e` as it stands (see zorv_expr_max_degree); there and back again leaves that factor.
 * Results are simplified for their kind and have a plain tag. Both abort on declared constraints,
 * then on atoms. cost  2^d terms for a term of d different variables, which may end in
 * std::bad_alloc */
ZORV_API zorv_expr* zorv_expr_binary_to_spin(const zorv_expr* e);
ZORV_API zorv_expr* zorv_expr_spin_to_binary(const zorv_expr* e);

/* The expression with exprs[i] in place of the literal vars[i], as a new one, multiplied out and
 * not merged. Keys are raw literals: a key x leaves ~x alone, and a later key overrides an equal
 * one. In declared constraints bodies and the free-form penalty are rewritten too; any other tag is
 * cleared.
 *   vars, exprs  [n], only read; tags of `exprs` play no part
 *   cost         linear in the size of the result; spread over threads */
ZORV_API zorv_expr* zorv_expr_replace(const zorv_expr* e, const uint32_t* vars,
                                      zorv_expr* const* exprs, uint64_t n);

/* Writes the value of `e` where the variable vars[i] has the value *values[i]; a later entry
 * overrides an equal one. A complement in `e` counts as 1 minus the value of its variable; atoms
 * are keyed by their literal. Aborts on declared constraints, and on a variable of any term, also
 * of one with coefficient 0, that has no value.
 *   vars, values  [n], only read; values are pointers to records */
ZORV_API void zorv_expr_eval_map(const zorv_expr* e, const uint32_t* vars,
                                 const CoeffWire* const* values, uint64_t n, CoeffWire* out);

/* Writes the value of `e` on a bit assignment of a model. A variable that the model does not have
 * counts as 0, and so does its complement. Aborts on declared constraints, then on atoms.
 *   bits  [(zorv_model_var_count + 63) / 64] words, dense index i at bit i % 64 of word i / 64 */
ZORV_API void zorv_expr_eval_with_model(const zorv_expr* e, const zorv_model* m,
                                        const uint64_t* bits, CoeffWire* out);

/* Writes the greatest common divisor of the constant and all coefficients, 0 if all are 0. */
ZORV_API void zorv_expr_gcd(const zorv_expr* e, CoeffWire* out);

/* Write the upper and the lower bound of the values that `e` can take, as the sum of the bounds of
 * its terms after simplification as binary: for binary variables the constant plus all positive,
 * or all negative, coefficients. Terms are taken apart, so the bounds need not be reached. Abort
 * on an atom that is not known. */
ZORV_API void zorv_expr_pos_sum(const zorv_expr* e, CoeffWire* out);
ZORV_API void zorv_expr_neg_sum(const zorv_expr* e, CoeffWire* out);

/* A polynomial of degree 2 at most whose minimum over the new auxiliary variables is the value of
 * `e`, for every assignment of 0/1 variables; good for minimisation only. Each term of degree d >=
 * 3 has auxiliary variables of its own, named "{r0}", "{r1}" and so on: one for a negative
 * coefficient, about log2(d) for a positive one. Simplified as binary, plain tag. Aborts on
 * declared constraints, then on atoms. */
ZORV_API zorv_expr* zorv_expr_reduce(const zorv_expr* e);

/* The same for each element, in flat order and without the aborts: declared constraints are
 * dropped, and atoms count as if they were binary. */
ZORV_API zorv_array_expr* zorv_array_expr_reduce(const zorv_array_expr* a);

/* "2 +x -3*y"; "0" for zero. The tag has no effect on it. */
ZORV_API const char* zorv_expr_str(const zorv_expr* e);

/* The name of the coefficient type that a solver library has to be built for: always "cppint". */
ZORV_API const char* zorv_expr_solver_type(const zorv_expr* e);

/* ---- Native integer variables ------------------------------------------------------------------
 */

/* A native integer variable is one literal, an atom, which stands in terms as a binary variable
 * does, is never negated and obeys no x*x = x. Models keep it whole. */

/* Makes one atom with lo <= value <= hi and returns its literal. A null or empty name draws a
 * generated one. Aborts unless lo < hi, and when the index space is full (2^30 - 1 atoms). */
ZORV_API uint32_t zorv_new_int_var(const char* name, const CoeffWire* lo, const CoeffWire* hi);

/* Makes a block of atoms with common bounds and returns the literal of the first; the others follow
 * consecutively, in row-major order, and are named "name[i][j]". The same aborts.
 *   shape  [ndim] extents; none makes one atom with the bare name, an extent of 0 makes none */
ZORV_API uint32_t zorv_new_int_var_array(const char* name, const uint64_t* shape, size_t ndim,
                                         const CoeffWire* lo, const CoeffWire* hi);

/* Writes the bounds of an atom. Aborts if the literal names none. */
ZORV_API void zorv_int_var_bounds(uint32_t literal, CoeffWire* lo, CoeffWire* hi);

/* The expression with every atom written in bits, as a new one with a plain tag, multiplied out and
 * not merged. The bits of the atom "n" are the binary variables "n#0", "n#1" and so on, made by the
 * first call that meets the atom and shared by all later ones; its value is lo plus the sum of
 * zorv_comp_coeffs times bit. Aborts on constraints, which zorv_expr_expand_cons turns into
 * polynomials first, and on an unknown atom. */
ZORV_API zorv_expr* zorv_expr_binarize(const zorv_expr* e);

/* The coefficients by which bits encode the values lo .. hi: 1, 2, 4, ... and what is left, which
 * add up to hi - lo. None if hi is not above lo.
 *   out  [zorv_comp_coeffs_count] */
ZORV_API uint64_t zorv_comp_coeffs_count(const CoeffWire* lo, const CoeffWire* hi);
ZORV_API void zorv_comp_coeffs(const CoeffWire* lo, const CoeffWire* hi, CoeffWire* out);

/* ---- VarInt values -----------------------------------------------------------------------------
 */

/* A VarInt is an expression from the start, lo plus a sum of coefficients times fresh binary
 * variables, and a record of how it was made, to which its tag refers. Copies and simplifications
 * keep the tag; other arithmetic drops it, and the accessors below then abort, as they do for any
 * expression that is no VarInt. Records outlive zorv_var_reset, the variables in them do not. */

/* Makes a VarInt with the coefficients 1, 2, 4, ... and the rest of hi - lo, so that its values are
 * exactly lo .. hi. A single variable bears the name itself, several are "name[0]", "name[1]", ...
 * hi at or below lo makes the constant lo without variables. A null or empty name draws a generated
 * one. */
ZORV_API zorv_expr* zorv_varintelem_create(const char* name, const CoeffWire* lo,
                                           const CoeffWire* hi);

/* The same with coefficients and variables of one's own; nothing tests that they fit the range.
 *   coeffs, vars  [n] parallel, both copied */
ZORV_API zorv_expr* zorv_varintelem_create_with_vars(const char* name, const CoeffWire* lo,
                                                     const CoeffWire* hi, const CoeffWire* coeffs,
                                                     const uint32_t* vars, uint64_t n);

/* Makes an array of VarInt values with common bounds. Their variables are one block named `name`,
 * of this shape and a last axis over the bits. */
ZORV_API zorv_array_expr* zorv_array_varint_create_uniform(const char* name, const uint64_t* shape,
                                                           size_t ndim, const CoeffWire* lo,
                                                           const CoeffWire* hi);

/* zorv_expr_clone and zorv_expr_destroy under other names. */
ZORV_API zorv_expr* zorv_varintelem_clone(const zorv_expr* e);
ZORV_API void zorv_varintelem_destroy(zorv_expr* e);

/* The record: the bounds as they were given, and the coefficients and literals by position,
 * i < zorv_varintelem_var_count, which is not checked. */
ZORV_API void zorv_varintelem_min(const zorv_expr* e, CoeffWire* out);
ZORV_API void zorv_varintelem_max(const zorv_expr* e, CoeffWire* out);
ZORV_API uint64_t zorv_varintelem_var_count(const zorv_expr* e);
ZORV_API uint32_t zorv_varintelem_var(const zorv_expr* e, uint64_t i);
ZORV_API void zorv_varintelem_coeff(const zorv_expr* e, uint64_t i, CoeffWire* out);

/* Writes the literals and the bits that make up `value`, found greedily from the last position, and
 * returns their number. Of a value out of range the part that no bit covers is dropped.
 *   out_vars, out_bits  [zorv_varintelem_var_count], bits as 0 or 1 */
ZORV_API uint64_t zorv_varintelem_decompose(const zorv_expr* e, const CoeffWire* value,
                                            uint32_t* out_vars, CoeffWire* out_bits);

/* Gives `element` the polynomial of `e`, which stays as it is; `element` keeps its tag. */
ZORV_API void zorv_varintelem_replace_expr(zorv_expr* element, const zorv_expr* e);

/* ---- Constraints -------------------------------------------------------------------------------
 */

/* An expression has a polynomial and may carry constraints, to which its tag refers.
 *
 * A declared constraint is kept as data: a body, what its value has to lie in, and a weight. It
 * adds no term; the polynomial beside it is the objective. A classic constraint is a polynomial
 * that is 0 exactly if the constraint holds, the penalty, with a record of the body behind it. The
 * two do not mix in one expression: such a sum aborts.
 *
 * Arithmetic carries constraints along. Sums join them, integer factors scale the weights, which
 * may become negative (a reward for violation), and simplification simplifies the bodies. A product
 * other than by an integer, a square or a division aborts on declared constraints and drops classic
 * ones; so does the factor 0, except on abs and relu terms alone. Classic constraints are dropped
 * as well by a factor below 1, by subtraction, by adding an integer, moved terms or a bulk, and by
 * zorv_expr_clone_add_var; whatever else is added becomes part of the penalty.
 *
 * Constraints may be built on several threads at once.
 *
 * What a tag names stays until the process ends, also when the expression is gone. But a body, and
 * a list of constraints, is stored once however often it is built or copied, and a sum stores only
 * what its longer side does not have. So a process grows, in round numbers,
 *   with each new constraint      by 400 bytes and the terms of the body
 *   with each new list            by 40 bytes, and 60 for each constraint that the longer side of
 *                                 the sum lacks, or, behind a factor, for each one
 *   with each constrained result  by 4 bytes, also if it was built before
 * and not with models, solutions and searches, which are freed as a whole. */

/* Declares `e` and returns an expression with an empty polynomial. Constraints of `e` become
 * declared ones with their weights, its own polynomial being dropped; a polynomial without
 * constraints becomes the requirement that it comes to 0. */
ZORV_API zorv_expr* zorv_cons_mark(const zorv_expr* e);

/* Declares lo <= e <= hi with weight 1; the polynomial of the result is empty. Nothing tests that
 * lo <= hi. Aborts if `e` carries declared constraints. */
ZORV_API zorv_expr* zorv_cons_between(const zorv_expr* e, const CoeffWire* lo, const CoeffWire* hi);

/* Declares that e lies in one of n intervals, with weight 1. Aborts if `e` carries declared
 * constraints, and on n = 0.
 *   lows, highs  [n] both ends of interval i inside it */
ZORV_API zorv_expr* zorv_cons_equal(const zorv_expr* e, const CoeffWire* lows,
                                    const CoeffWire* highs, uint64_t n);

/* A classic constraint: a copy of `penalty` with a record of `body`, without bounds as yet. Aborts
 * if either carries declared constraints. */
ZORV_API zorv_expr* zorv_exprexprelem_create(const zorv_expr* penalty, const zorv_expr* body);

/* zorv_expr_clone and zorv_expr_destroy under other names. */
ZORV_API zorv_expr* zorv_exprexprelem_clone(const zorv_expr* e);
ZORV_API void zorv_exprexprelem_destroy(zorv_expr* e);

/* Bounds and allowed values of a single classic constraint, shared by its copies; models that exist
 * do not change. Allowed values set the bounds to their hull. Both setters abort if `e` is anything
 * else, also a sum of one constraint, and on n = 0. The getter returns 1, or 0 and writes nothing
 * if `e` is anything else or has no bounds.
 *   lows, highs  [n] both ends of interval i inside it */
ZORV_API void zorv_exprexpr_set_bounds(const zorv_expr* e, const CoeffWire* lo,
                                       const CoeffWire* hi);
ZORV_API int zorv_exprexpr_get_bounds(const zorv_expr* e, CoeffWire* lo, CoeffWire* hi);
ZORV_API void zorv_exprexpr_set_allowed(const zorv_expr* e, const CoeffWire* lows,
                                        const CoeffWire* highs, uint64_t n);

/* 1 or 0: whether `e` carries declared constraints; whether it carries exactly one constraint and
 * no free-form penalty; whether it carries declared abs and relu terms, at least one, and no other
 * constraint. */
ZORV_API int zorv_expr_is_declared(const zorv_expr* e);
ZORV_API int zorv_expr_has_body(const zorv_expr* e);
ZORV_API int zorv_expr_all_objective_only(const zorv_expr* e);

/* |f|^k and max(f, 0)^k as declared terms of the objective, with weight 1. They count as no
 * violation and may be multiplied by 0. Models accept them only for a linear `f`. Both abort if `f`
 * carries declared constraints and unless k is 1 or 2; relu also on an unknown atom. */
ZORV_API zorv_expr* zorv_abs_term(const zorv_expr* f, uint32_t k);
ZORV_API zorv_expr* zorv_relu_term(const zorv_expr* f, uint32_t k);

/* The constraints of any expression as numbered items: the items of a sum in order and then its
 * free-form penalty, if it has one; a single constraint; or else the expression itself as a
 * free-form item. A free-form item has weight 1 and bounds 0 and 0. */
ZORV_API uint64_t zorv_cons_item_count(const zorv_expr* e);

/* Writes a new handle, the caller's, to `*body`, and weight and bounds. Returns 1 for a constraint
 * and 0 for a free-form item; a single constraint without bounds reads as free-form, an item of a
 * sum without bounds as bounded by 0 and 0. Aborts on a bad item number. */
ZORV_API int zorv_cons_item_info(const zorv_expr* e, uint64_t i, zorv_expr** body,
                                 CoeffWire* weight, CoeffWire* lo, CoeffWire* hi);

/* Evaluates item i on a solution and returns 1. `violation` is the distance of the value to what is
 * allowed, before any exponent; for a free-form item it is the value, sign included. Aborts on a
 * bad item number and on a constraint without bounds. */
ZORV_API int zorv_cons_item_eval(const zorv_expr* e, uint64_t i, const zorv_sol* sol,
                                 CoeffWire* value, CoeffWire* lo, CoeffWire* hi,
                                 CoeffWire* violation, CoeffWire* weight);

/* Writes the exponent and the kind of item i, 0 for a requirement and 1 for an abs or relu term,
 * and returns 1. For a free-form item, one without bounds or a bad number: 2, 0 and the result 0. A
 * single constraint answers to every number. */
ZORV_API int zorv_cons_item_shape(const zorv_expr* e, uint64_t i, uint32_t* k, uint32_t* kind);

/* Copies up to `capacity` allowed intervals of item i and returns how many it has, 0 also for a
 * free-form item or a bad number. A single constraint answers to every number.
 *   lows, highs  [capacity], may be null for a capacity of 0 */
ZORV_API uint64_t zorv_cons_item_allowed(const zorv_expr* e, uint64_t i, CoeffWire* lows,
                                         CoeffWire* highs, uint64_t capacity);

/* The number of items that do not hold. Abs and relu terms and constraints without bounds never
 * count; a free-form penalty counts if it is not 0. Aborts if `e` carries no constraints. */
ZORV_API uint64_t zorv_cons_violation_count(const zorv_expr* e, const zorv_sol* sol);

/* The stored body of the only constraint of `e`: lent by the library for the life of the process,
 * not to be destroyed. Aborts unless there is exactly one constraint and no free-form penalty. */
ZORV_API const zorv_expr* zorv_exprexprelem_get_body(const zorv_expr* e);

/* The penalty polynomial of lo <= f <= hi: 0 where it holds and positive elsewhere, once the new
 * slack variables, "{s0}", "{s1}" and so on, are at their best. Ranges of one or two values need no
 * slack; hi below lo gives no penalty at all. Not merged, plain tag; the tag of `f` plays no part.
 */
ZORV_API zorv_expr* zorv_between(const zorv_expr* f, const CoeffWire* lo, const CoeffWire* hi);

/* The polynomial of `e` plus weight times penalty for each declared constraint plus its free-form
 * penalty, as a new expression with a plain tag, not merged: for solvers that know no constraints.
 * Slack variables are new on every call. Without declared constraints a copy, which stays a VarInt
 * if it was one and loses any other tag. Allowed values are expanded as the range from the lowest
 * to the highest, and an equality of negative weight as a negative square. Aborts on abs and relu
 * terms, on a constraint without bounds, and on a range of negative weight. */
ZORV_API zorv_expr* zorv_expr_expand_cons(const zorv_expr* e);

/* ---- Arrays ------------------------------------------------------------------------------------
 */

/* An array is a dense N-dimensional block in row-major order, of one of four kinds of elements: var
 * (literals), int (unbounded integers), term and expr. Arrays of VarInt values and of constraints
 * are arrays of expressions whose elements have tags. Every array owns its elements, and whatever
 * gives another shape copies. Rank 0, no axis at all, means one element; an extent of 0 means none.
 * `shape` is [ndim] extents throughout, outermost first; indices are flat, in row-major order, and
 * unchecked, as axes are. Loops of more than 9,999 elements are spread over threads. */

/* New arrays of zeros: literal 0, integer 0, the term 0, the expression 0. */
ZORV_API zorv_array_var* zorv_array_var_create(const uint64_t* shape, size_t ndim);
ZORV_API zorv_array_int* zorv_array_int_create(const uint64_t* shape, size_t ndim);
ZORV_API zorv_array_int* zorv_array_int_create_zero(const uint64_t* shape, size_t ndim);
ZORV_API zorv_array_term* zorv_array_term_create(const uint64_t* shape, size_t ndim);
ZORV_API zorv_array_expr* zorv_array_expr_create(const uint64_t* shape, size_t ndim);
ZORV_API zorv_array_expr* zorv_array_expr_create_zero(const uint64_t* shape, size_t ndim);

/* New arrays of given elements, which are copied.
 *   literals, coeffs, terms, exprs  [product of shape] in row-major order; handles by pointer */
ZORV_API zorv_array_var* zorv_array_var_create_data(const uint32_t* literals, const uint64_t* shape,
                                                    size_t ndim);
ZORV_API zorv_array_int* zorv_array_int_create_data(const CoeffWire* coeffs, const uint64_t* shape,
                                                    size_t ndim);
ZORV_API zorv_array_term* zorv_array_term_create_data(zorv_term* const* terms,
                                                      const uint64_t* shape, size_t ndim);
ZORV_API zorv_array_expr* zorv_array_expr_create_data(zorv_expr* const* exprs,
                                                      const uint64_t* shape, size_t ndim);

/* Makes a block of binary variables, as zorv_new_var_array does, and an array of their literals. A
 * null or empty name draws a generated one. */
ZORV_API zorv_array_var* zorv_array_var_create_named(const char* name, const uint64_t* shape,
                                                     size_t ndim);
ZORV_API zorv_array_var* zorv_array_var_create_unnamed(const uint64_t* shape, size_t ndim);

/* Arrays in which every element is the same integer, or the same variable, as an expression. */
ZORV_API zorv_array_expr* zorv_array_expr_create_constant_int(const uint64_t* shape, size_t ndim,
                                                              const CoeffWire* value);
ZORV_API zorv_array_expr* zorv_array_expr_create_constant_var(const uint64_t* shape, size_t ndim,
                                                              uint32_t v);

/* Copies, tags of expressions included. zorv_array_expr_from_expr is another name of the last. */
ZORV_API zorv_array_var* zorv_array_var_clone(const zorv_array_var* a);
ZORV_API zorv_array_int* zorv_array_int_clone(const zorv_array_int* a);
ZORV_API zorv_array_term* zorv_array_term_clone(const zorv_array_term* a);
ZORV_API zorv_array_expr* zorv_array_expr_clone(const zorv_array_expr* a);
ZORV_API zorv_array_expr* zorv_array_expr_from_expr(const zorv_array_expr* a);

/* Free an array with its elements. */
ZORV_API void zorv_array_var_destroy(zorv_array_var* a);
ZORV_API void zorv_array_int_destroy(zorv_array_int* a);
ZORV_API void zorv_array_term_destroy(zorv_array_term* a);
ZORV_API void zorv_array_expr_destroy(zorv_array_expr* a);

/* The number of elements, the rank, the extents (lent by the array), and the extent of one axis. */
ZORV_API uint64_t zorv_array_var_size(const zorv_array_var* a);
ZORV_API size_t zorv_array_var_ndim(const zorv_array_var* a);
ZORV_API const uint64_t* zorv_array_var_shape(const zorv_array_var* a);
ZORV_API uint64_t zorv_array_var_shape_at(const zorv_array_var* a, int axis);
ZORV_API uint64_t zorv_array_int_size(const zorv_array_int* a);
ZORV_API size_t zorv_array_int_ndim(const zorv_array_int* a);
ZORV_API const uint64_t* zorv_array_int_shape(const zorv_array_int* a);
ZORV_API uint64_t zorv_array_int_shape_at(const zorv_array_int* a, int axis);
ZORV_API uint64_t zorv_array_term_size(const zorv_array_term* a);
ZORV_API size_t zorv_array_term_ndim(const zorv_array_term* a);
ZORV_API const uint64_t* zorv_array_term_shape(const zorv_array_term* a);
ZORV_API uint64_t zorv_array_term_shape_at(const zorv_array_term* a, int axis);
ZORV_API uint64_t zorv_array_expr_size(const zorv_array_expr* a);
ZORV_API size_t zorv_array_expr_ndim(const zorv_array_expr* a);
ZORV_API const uint64_t* zorv_array_expr_shape(const zorv_array_expr* a);
ZORV_API uint64_t zorv_array_expr_shape_at(const zorv_array_expr* a, int axis);

/* Elements. _get gives a copy, for terms and expressions a new handle, and _set copies in.
 * zorv_array_var_data lends the literals in row-major order, zorv_array_expr_ref one expression in
 * place, which may be changed but not destroyed. Both die with the array. */
ZORV_API uint32_t zorv_array_var_get(const zorv_array_var* a, uint64_t i);
ZORV_API void zorv_array_var_set(zorv_array_var* a, uint64_t i, uint32_t v);
ZORV_API const uint32_t* zorv_array_var_data(const zorv_array_var* a);
ZORV_API void zorv_array_int_get(const zorv_array_int* a, uint64_t i, CoeffWire* out);
ZORV_API void zorv_array_int_set(zorv_array_int* a, uint64_t i, const CoeffWire* c);
ZORV_API zorv_term* zorv_array_term_get(const zorv_array_term* a, uint64_t i);
ZORV_API void zorv_array_term_set(zorv_array_term* a, uint64_t i, const zorv_term* t);
ZORV_API zorv_expr* zorv_array_expr_get(const zorv_array_expr* a, uint64_t i);
ZORV_API zorv_expr* zorv_array_expr_ref(zorv_array_expr* a, uint64_t i);
ZORV_API void zorv_array_expr_set(zorv_array_expr* a, uint64_t i, const zorv_expr* e);

/* A copy of the element with a plain tag: the polynomial of a VarInt, the penalty of a constraint.
 */
ZORV_API zorv_expr* zorv_array_varint_get_expr(const zorv_array_expr* a, uint64_t i);
ZORV_API zorv_expr* zorv_array_exprexpr_get_penalty(const zorv_array_expr* a, uint64_t i);

/* Slice i of axis 0, as an array of one rank less; null for rank 0. A slice of rank 1 has rank 0.
 */
ZORV_API zorv_array_var* zorv_array_var_subarray(const zorv_array_var* a, uint64_t i);
ZORV_API zorv_array_int* zorv_array_int_subarray(const zorv_array_int* a, uint64_t i);
ZORV_API zorv_array_term* zorv_array_term_subarray(const zorv_array_term* a, uint64_t i);
ZORV_API zorv_array_expr* zorv_array_expr_subarray(const zorv_array_expr* a, uint64_t i);

/* The positions lo[k] .. hi[k] - 1 of each axis k. An axis with drop[k] not 0 is fixed at lo[k] and
 * vanishes, hi[k] being unused; axes from n on are fixed at 0 and vanish too.
 *   lo, hi, drop  [n] */
ZORV_API zorv_array_var* zorv_array_var_view(const zorv_array_var* a, const uint64_t* lo,
                                             const uint64_t* hi, const uint8_t* drop, size_t n);
ZORV_API zorv_array_int* zorv_array_int_view(const zorv_array_int* a, const uint64_t* lo,
                                             const uint64_t* hi, const uint8_t* drop, size_t n);
ZORV_API zorv_array_term* zorv_array_term_view(const zorv_array_term* a, const uint64_t* lo,
                                               const uint64_t* hi, const uint8_t* drop, size_t n);
ZORV_API zorv_array_expr* zorv_array_expr_view(const zorv_array_expr* a, const uint64_t* lo,
                                               const uint64_t* hi, const uint8_t* drop, size_t n);

/* `a` and behind it, along `axis`, `b`. The other axes are those of `a` and are not compared. */
ZORV_API zorv_array_var* zorv_array_var_concat(const zorv_array_var* a, const zorv_array_var* b,
                                               int axis);
ZORV_API zorv_array_int* zorv_array_int_concat(const zorv_array_int* a, const zorv_array_int* b,
                                               int axis);
ZORV_API zorv_array_term* zorv_array_term_concat(const zorv_array_term* a, const zorv_array_term* b,
                                                 int axis);
ZORV_API zorv_array_expr* zorv_array_expr_concat(const zorv_array_expr* a, const zorv_array_expr* b,
                                                 int axis);

/* The last `tail` axes, from the flat position `offset` on; the rank is `tail`. */
ZORV_API zorv_array_int* zorv_array_int_clone_subview(const zorv_array_int* a, uint64_t offset,
                                                      uint64_t tail);
ZORV_API zorv_array_expr* zorv_array_expr_clone_subview(const zorv_array_expr* a, uint64_t offset,
                                                        uint64_t tail);

/* "{{a,b},{c,d}}", elements as by the functions for single ones; "{}" for rank 0 and for an axis
 * without positions. */
ZORV_API const char* zorv_array_var_str(const zorv_array_var* a);
ZORV_API const char* zorv_array_int_str(const zorv_array_int* a);
ZORV_API const char* zorv_array_term_str(const zorv_array_term* a);
ZORV_API const char* zorv_array_expr_str(const zorv_array_expr* a);

/* Writes the integers cut down to 32 bits: what is out of range becomes the nearest value in it.
 *   out  [zorv_array_int_size] */
ZORV_API void zorv_array_int_to_ints(const zorv_array_int* a, int32_t* out);

/* ---- Arrays, element by element ----------------------------------------------------------------
 */

/* There is no broadcasting: two arrays combine only if their shapes are equal, and otherwise abort;
 * a scalar has functions of its own and stands on the right. Operands are only read and may be the
 * same array. Results of two integer operands are integers; products without an expression are
 * terms; everything else is an expression. Nothing is merged: x + x has two terms.
 *
 * Tags: an element that is a copy of an expression with something added, subtracted or multiplied
 * in as an integer keeps that expression's tag, and the other operand's is left aside; products
 * with variables, terms and expressions are plain. With zorv_array_expr_mul_int,
 * zorv_array_expr_mul_eq_int, zorv_array_expr_mul_array_int and zorv_array_expr_negate tags are
 * scaled as zorv_expr_imul_int does, with its abort; zorv_array_expr_mul_eq_array_int and the
 * products with an integer on the left leave them as they are. */

/* a + b. An expression comes first, whichever side it stands on; other operands come in their
 * order. */
ZORV_API zorv_array_expr* zorv_array_var_add_array_var(const zorv_array_var* a,
                                                       const zorv_array_var* b);
ZORV_API zorv_array_expr* zorv_array_var_add_array_int(const zorv_array_var* a,
                                                       const zorv_array_int* b);
ZORV_API zorv_array_expr* zorv_array_var_add_array_term(const zorv_array_var* a,
                                                        const zorv_array_term* b);
ZORV_API zorv_array_expr* zorv_array_var_add_array_expr(const zorv_array_var* a,
                                                        const zorv_array_expr* b);
ZORV_API zorv_array_expr* zorv_array_int_add_array_var(const zorv_array_int* a,
                                                       const zorv_array_var* b);
ZORV_API zorv_array_int* zorv_array_int_add_array_int(const zorv_array_int* a,
                                                      const zorv_array_int* b);
ZORV_API zorv_array_expr* zorv_array_int_add_array_term(const zorv_array_int* a,
                                                        const zorv_array_term* b);
ZORV_API zorv_array_expr* zorv_array_int_add_array_expr(const zorv_array_int* a,
                                                        const zorv_array_expr* b);
ZORV_API zorv_array_expr* zorv_array_term_add_array_var(const zorv_array_term* a,
                                                        const zorv_array_var* b);
ZORV_API zorv_array_expr* zorv_array_term_add_array_int(const zorv_array_term* a,
                                                        const zorv_array_int* b);
ZORV_API zorv_array_expr* zorv_array_term_add_array_term(const zorv_array_term* a,
                                                         const zorv_array_term* b);
ZORV_API zorv_array_expr* zorv_array_term_add_array_expr(const zorv_array_term* a,
                                                         const zorv_array_expr* b);
ZORV_API zorv_array_expr* zorv_array_expr_add_array_var(const zorv_array_expr* a,
                                                        const zorv_array_var* b);
ZORV_API zorv_array_expr* zorv_array_expr_add_array_int(const zorv_array_expr* a,
                                                        const zorv_array_int* b);
ZORV_API zorv_array_expr* zorv_array_expr_add_array_term(const zorv_array_expr* a,
                                                         const zorv_array_term* b);
ZORV_API zorv_array_expr* zorv_array_expr_add_array_expr(const zorv_array_expr* a,
                                                         const zorv_array_expr* b);

/* The same with one scalar on the right for all elements. */
ZORV_API zorv_array_expr* zorv_array_var_add_var(const zorv_array_var* a, uint32_t s);
ZORV_API zorv_array_expr* zorv_array_var_add_int(const zorv_array_var* a, const CoeffWire* s);
ZORV_API zorv_array_expr* zorv_array_var_add_term(const zorv_array_var* a, const zorv_term* s);
ZORV_API zorv_array_expr* zorv_array_var_add_expr(const zorv_array_var* a, const zorv_expr* s);
ZORV_API zorv_array_expr* zorv_array_int_add_var(const zorv_array_int* a, uint32_t s);
ZORV_API zorv_array_int* zorv_array_int_add_int(const zorv_array_int* a, const CoeffWire* s);
ZORV_API zorv_array_expr* zorv_array_int_add_term(const zorv_array_int* a, const zorv_term* s);
ZORV_API zorv_array_expr* zorv_array_int_add_expr(const zorv_array_int* a, const zorv_expr* s);
ZORV_API zorv_array_expr* zorv_array_term_add_var(const zorv_array_term* a, uint32_t s);
ZORV_API zorv_array_expr* zorv_array_term_add_int(const zorv_array_term* a, const CoeffWire* s);
ZORV_API zorv_array_expr* zorv_array_term_add_term(const zorv_array_term* a, const zorv_term* s);
ZORV_API zorv_array_expr* zorv_array_term_add_expr(const zorv_array_term* a, const zorv_expr* s);
ZORV_API zorv_array_expr* zorv_array_expr_add_var(const zorv_array_expr* a, uint32_t s);
ZORV_API zorv_array_expr* zorv_array_expr_add_int(const zorv_array_expr* a, const CoeffWire* s);
ZORV_API zorv_array_expr* zorv_array_expr_add_term(const zorv_array_expr* a, const zorv_term* s);
ZORV_API zorv_array_expr* zorv_array_expr_add_expr(const zorv_array_expr* a, const zorv_expr* s);

/* a - b: the terms of `a`, then those of `b` negated. */
ZORV_API zorv_array_expr* zorv_array_var_sub_array_var(const zorv_array_var* a,
                                                       const zorv_array_var* b);
ZORV_API zorv_array_expr* zorv_array_var_sub_array_int(const zorv_array_var* a,
                                                       const zorv_array_int* b);
ZORV_API zorv_array_expr* zorv_array_var_sub_array_term(const zorv_array_var* a,
                                                        const zorv_array_term* b);
ZORV_API zorv_array_expr* zorv_array_var_sub_array_expr(const zorv_array_var* a,
                                                        const zorv_array_expr* b);
ZORV_API zorv_array_expr* zorv_array_int_sub_array_var(const zorv_array_int* a,
                                                       const zorv_array_var* b);
ZORV_API zorv_array_int* zorv_array_int_sub_array_int(const zorv_array_int* a,
                                                      const zorv_array_int* b);
ZORV_API zorv_array_expr* zorv_array_int_sub_array_term(const zorv_array_int* a,
                                                        const zorv_array_term* b);
ZORV_API zorv_array_expr* zorv_array_int_sub_array_expr(const zorv_array_int* a,
                                                        const zorv_array_expr* b);
ZORV_API zorv_array_expr* zorv_array_term_sub_array_var(const zorv_array_term* a,
                                                        const zorv_array_var* b);
ZORV_API zorv_array_expr* zorv_array_term_sub_array_int(const zorv_array_term* a,
                                                        const zorv_array_int* b);
ZORV_API zorv_array_expr* zorv_array_term_sub_array_term(const zorv_array_term* a,
                                                         const zorv_array_term* b);
ZORV_API zorv_array_expr* zorv_array_term_sub_array_expr(const zorv_array_term* a,
                                                         const zorv_array_expr* b);
ZORV_API zorv_array_expr* zorv_array_expr_sub_array_var(const zorv_array_expr* a,
                                                        const zorv_array_var* b);
ZORV_API zorv_array_expr* zorv_array_expr_sub_array_int(const zorv_array_expr* a,
                                                        const zorv_array_int* b);
ZORV_API zorv_array_expr* zorv_array_expr_sub_array_term(const zorv_array_expr* a,
                                                         const zorv_array_term* b);
ZORV_API zorv_array_expr* zorv_array_expr_sub_array_expr(const zorv_array_expr* a,
                                                         const zorv_array_expr* b);

/* The same with one scalar on the right for all elements. */
ZORV_API zorv_array_expr* zorv_array_var_sub_var(const zorv_array_var* a, uint32_t s);
ZORV_API zorv_array_expr* zorv_array_var_sub_int(const zorv_array_var* a, const CoeffWire* s);
ZORV_API zorv_array_expr* zorv_array_var_sub_term(const zorv_array_var* a, const zorv_term* s);
ZORV_API zorv_array_expr* zorv_array_var_sub_expr(const zorv_array_var* a, const zorv_expr* s);
ZORV_API zorv_array_expr* zorv_array_int_sub_var(const zorv_array_int* a, uint32_t s);
ZORV_API zorv_array_int* zorv_array_int_sub_int(const zorv_array_int* a, const CoeffWire* s);
ZORV_API zorv_array_expr* zorv_array_int_sub_term(const zorv_array_int* a, const zorv_term* s);
ZORV_API zorv_array_expr* zorv_array_int_sub_expr(const zorv_array_int* a, const zorv_expr* s);
ZORV_API zorv_array_expr* zorv_array_term_sub_var(const zorv_array_term* a, uint32_t s);
ZORV_API zorv_array_expr* zorv_array_term_sub_int(const zorv_array_term* a, const CoeffWire* s);
ZORV_API zorv_array_expr* zorv_array_term_sub_term(const zorv_array_term* a, const zorv_term* s);
ZORV_API zorv_array_expr* zorv_array_term_sub_expr(const zorv_array_term* a, const zorv_expr* s);
ZORV_API zorv_array_expr* zorv_array_expr_sub_var(const zorv_array_expr* a, uint32_t s);
ZORV_API zorv_array_expr* zorv_array_expr_sub_int(const zorv_array_expr* a, const CoeffWire* s);
ZORV_API zorv_array_expr* zorv_array_expr_sub_term(const zorv_array_expr* a, const zorv_term* s);
ZORV_API zorv_array_expr* zorv_array_expr_sub_expr(const zorv_array_expr* a, const zorv_expr* s);

/* a * b: the literals of `a`, then those of `b`; those of a variable or a term come behind those of
 * an expression on either side, and those of a variable behind those of a term. */
ZORV_API zorv_array_term* zorv_array_var_mul_array_var(const zorv_array_var* a,
                                                       const zorv_array_var* b);
ZORV_API zorv_array_term* zorv_array_var_mul_array_int(const zorv_array_var* a,
                                                       const zorv_array_int* b);
ZORV_API zorv_array_term* zorv_array_var_mul_array_term(const zorv_array_var* a,
                                                        const zorv_array_term* b);
ZORV_API zorv_array_expr* zorv_array_var_mul_array_expr(const zorv_array_var* a,
                                                        const zorv_array_expr* b);
ZORV_API zorv_array_term* zorv_array_int_mul_array_var(const zorv_array_int* a,
                                                       const zorv_array_var* b);
ZORV_API zorv_array_int* zorv_array_int_mul_array_int(const zorv_array_int* a,
                                                      const zorv_array_int* b);
ZORV_API zorv_array_term* zorv_array_int_mul_array_term(const zorv_array_int* a,
                                                        const zorv_array_term* b);
ZORV_API zorv_array_expr* zorv_array_int_mul_array_expr(const zorv_array_int* a,
                                                        const zorv_array_expr* b);
ZORV_API zorv_array_term* zorv_array_term_mul_array_var(const zorv_array_term* a,
                                                        const zorv_array_var* b);
ZORV_API zorv_array_term* zorv_array_term_mul_array_int(const zorv_array_term* a,
                                                        const zorv_array_int* b);
ZORV_API zorv_array_term* zorv_array_term_mul_array_term(const zorv_array_term* a,
                                                         const zorv_array_term* b);
ZORV_API zorv_array_expr* zorv_array_term_mul_array_expr(const zorv_array_term* a,
                                                         const zorv_array_expr* b);
ZORV_API zorv_array_expr* zorv_array_expr_mul_array_var(const zorv_array_expr* a,
                                                        const zorv_array_var* b);
ZORV_API zorv_array_expr* zorv_array_expr_mul_array_int(const zorv_array_expr* a,
                                                        const zorv_array_int* b);
ZORV_API zorv_array_expr* zorv_array_expr_mul_array_term(const zorv_array_expr* a,
                                                         const zorv_array_term* b);
ZORV_API zorv_array_expr* zorv_array_expr_mul_array_expr(const zorv_array_expr* a,
                                                         const zorv_array_expr* b);

/* The same with one scalar on the right for all elements. */
ZORV_API zorv_array_term* zorv_array_var_mul_var(const zorv_array_var* a, uint32_t s);
ZORV_API zorv_array_term* zorv_array_var_mul_int(const zorv_array_var* a, const CoeffWire* s);
ZORV_API zorv_array_term* zorv_array_var_mul_term(const zorv_array_var* a, const zorv_term* s);
ZORV_API zorv_array_expr* zorv_array_var_mul_expr(const zorv_array_var* a, const zorv_expr* s);
ZORV_API zorv_array_term* zorv_array_int_mul_var(const zorv_array_int* a, uint32_t s);
ZORV_API zorv_array_int* zorv_array_int_mul_int(const zorv_array_int* a, const CoeffWire* s);
ZORV_API zorv_array_term* zorv_array_int_mul_term(const zorv_array_int* a, const zorv_term* s);
ZORV_API zorv_array_expr* zorv_array_int_mul_expr(const zorv_array_int* a, const zorv_expr* s);
ZORV_API zorv_array_term* zorv_array_term_mul_var(const zorv_array_term* a, uint32_t s);
ZORV_API zorv_array_term* zorv_array_term_mul_int(const zorv_array_term* a, const CoeffWire* s);
ZORV_API zorv_array_term* zorv_array_term_mul_term(const zorv_array_term* a, const zorv_term* s);
ZORV_API zorv_array_expr* zorv_array_term_mul_expr(const zorv_array_term* a, const zorv_expr* s);
ZORV_API zorv_array_expr* zorv_array_expr_mul_var(const zorv_array_expr* a, uint32_t s);
ZORV_API zorv_array_expr* zorv_array_expr_mul_int(const zorv_array_expr* a, const CoeffWire* s);
ZORV_API zorv_array_expr* zorv_array_expr_mul_term(const zorv_array_expr* a, const zorv_term* s);
ZORV_API zorv_array_expr* zorv_array_expr_mul_expr(const zorv_array_expr* a, const zorv_expr* s);

/* The same in place. The scalar may belong to the array itself: every element sees its old value.
 */
ZORV_API void zorv_array_expr_add_eq_array_var(zorv_array_expr* a, const zorv_array_var* b);
ZORV_API void zorv_array_expr_add_eq_array_int(zorv_array_expr* a, const zorv_array_int* b);
ZORV_API void zorv_array_expr_add_eq_array_term(zorv_array_expr* a, const zorv_array_term* b);
ZORV_API void zorv_array_expr_add_eq_array_expr(zorv_array_expr* a, const zorv_array_expr* b);
ZORV_API void zorv_array_expr_sub_eq_array_var(zorv_array_expr* a, const zorv_array_var* b);
ZORV_API void zorv_array_expr_sub_eq_array_int(zorv_array_expr* a, const zorv_array_int* b);
ZORV_API void zorv_array_expr_sub_eq_array_term(zorv_array_expr* a, const zorv_array_term* b);
ZORV_API void zorv_array_expr_sub_eq_array_expr(zorv_array_expr* a, const zorv_array_expr* b);
ZORV_API void zorv_array_expr_mul_eq_array_var(zorv_array_expr* a, const zorv_array_var* b);
ZORV_API void zorv_array_expr_mul_eq_array_int(zorv_array_expr* a, const zorv_array_int* b);
ZORV_API void zorv_array_expr_mul_eq_array_term(zorv_array_expr* a, const zorv_array_term* b);
ZORV_API void zorv_array_expr_mul_eq_array_expr(zorv_array_expr* a, const zorv_array_expr* b);
ZORV_API void zorv_array_expr_add_eq_var(zorv_array_expr* a, uint32_t s);
ZORV_API void zorv_array_expr_add_eq_int(zorv_array_expr* a, const CoeffWire* s);
ZORV_API void zorv_array_expr_add_eq_term(zorv_array_expr* a, const zorv_term* s);
ZORV_API void zorv_array_expr_add_eq_expr(zorv_array_expr* a, const zorv_expr* s);
ZORV_API void zorv_array_expr_sub_eq_var(zorv_array_expr* a, uint32_t s);
ZORV_API void zorv_array_expr_sub_eq_int(zorv_array_expr* a, const CoeffWire* s);
ZORV_API void zorv_array_expr_sub_eq_term(zorv_array_expr* a, const zorv_term* s);
ZORV_API void zorv_array_expr_sub_eq_expr(zorv_array_expr* a, const zorv_expr* s);
ZORV_API void zorv_array_expr_mul_eq_var(zorv_array_expr* a, uint32_t s);
ZORV_API void zorv_array_expr_mul_eq_int(zorv_array_expr* a, const CoeffWire* s);
ZORV_API void zorv_array_expr_mul_eq_term(zorv_array_expr* a, const zorv_term* s);
ZORV_API void zorv_array_expr_mul_eq_expr(zorv_array_expr* a, const zorv_expr* s);
ZORV_API void zorv_array_int_add_eq_array_int(zorv_array_int* a, const zorv_array_int* b);
ZORV_API void zorv_array_int_add_eq_int(zorv_array_int* a, const CoeffWire* s);
ZORV_API void zorv_array_int_sub_eq_array_int(zorv_array_int* a, const zorv_array_int* b);
ZORV_API void zorv_array_int_sub_eq_int(zorv_array_int* a, const CoeffWire* s);
ZORV_API void zorv_array_int_mul_eq_array_int(zorv_array_int* a, const zorv_array_int* b);
ZORV_API void zorv_array_int_mul_eq_int(zorv_array_int* a, const CoeffWire* s);
ZORV_API void zorv_array_term_mul_eq_int(zorv_array_term* a, const CoeffWire* s);

/* -a, always as expressions. */
ZORV_API zorv_array_expr* zorv_array_var_negate(const zorv_array_var* a);
ZORV_API zorv_array_expr* zorv_array_int_negate(const zorv_array_int* a);
ZORV_API zorv_array_expr* zorv_array_term_negate(const zorv_array_term* a);
ZORV_API zorv_array_expr* zorv_array_expr_negate(const zorv_array_expr* a);

/* The complement of each literal. */
ZORV_API zorv_array_var* zorv_array_var_invert(const zorv_array_var* a);

/* Squares, and canonical forms as for single expressions, but always with plain tags: elements lose
 * their constraints. */
ZORV_API zorv_array_expr* zorv_array_expr_sqr(const zorv_array_expr* a);
ZORV_API zorv_array_expr* zorv_array_expr_simplify(const zorv_array_expr* a);
ZORV_API zorv_array_expr* zorv_array_expr_simplify_as_binary(const zorv_array_expr* a);
ZORV_API zorv_array_expr* zorv_array_expr_simplify_as_spin(const zorv_array_expr* a);

/* Replaces literals in each element in place, by the rules of zorv_expr_replace.
 *   vars, exprs  [n], only read */
ZORV_API void zorv_array_expr_replace(zorv_array_expr* a, const uint32_t* vars,
                                      zorv_expr* const* exprs, uint64_t n);

/* The terms coeffs[i] * vars[i], with the shape of `coeffs`; the shapes are not compared, and
 * `vars` has at least as many elements. */
ZORV_API zorv_array_term* zorv_array_int_coeffvec_mul_var(const zorv_array_int* coeffs,
                                                          const zorv_array_var* vars);

/* Division by an integer, in place or as a new array. Integers are truncated towards 0, and their
 * division by 0 is a C++ exception. Terms and expressions divide exactly: they abort on 0 and on a
 * remainder; tags stay as they are. */
ZORV_API void zorv_array_int_div_eq_int(zorv_array_int* a, const CoeffWire* s);
ZORV_API void zorv_array_term_div_eq_int(zorv_array_term* a, const CoeffWire* s);
ZORV_API zorv_array_term* zorv_array_term_div_int(const zorv_array_term* a, const CoeffWire* s);
ZORV_API void zorv_array_expr_div_eq_int(zorv_array_expr* a, const CoeffWire* s);
ZORV_API zorv_array_expr* zorv_array_expr_div_int(const zorv_array_expr* a, const CoeffWire* s);

/* ---- Sums of arrays ----------------------------------------------------------------------------
 */

/* A sum is an expression, or an array of them, whatever the elements are; nothing is merged, and
 * terms come in the order of the elements. A sum of constrained expressions carries the constraints
 * of all of them, plain ones joining the penalty among classic constraints; it aborts when declared
 * and classic constraints meet. */

/* The sum of all elements. */
ZORV_API zorv_expr* zorv_array_var_sum(const zorv_array_var* a);
ZORV_API zorv_expr* zorv_array_int_sum(const zorv_array_int* a);
ZORV_API zorv_expr* zorv_array_term_sum(const zorv_array_term* a);
ZORV_API zorv_expr* zorv_array_expr_sum(const zorv_array_expr* a);

/* The sum of n expressions.
 *   exprs  [n], only read */
ZORV_API zorv_expr* zorv_array_sum(zorv_expr* const* exprs, uint64_t n);

/* The sums along one axis, which the result does not have any more. */
ZORV_API zorv_array_expr* zorv_array_var_vector_sum(const zorv_array_var* a, int axis);
ZORV_API zorv_array_expr* zorv_array_int_vector_sum(const zorv_array_int* a, int axis);
ZORV_API zorv_array_expr* zorv_array_term_vector_sum(const zorv_array_term* a, int axis);
ZORV_API zorv_array_expr* zorv_array_expr_vector_sum(const zorv_array_expr* a, int axis);

/* The same for elements in no array: writes new handles, the caller's.
 *   data  [product of shape] by `kind`: 0 pointers to expressions, 1 literals, 2 term records one
 *         after the other, as zorv_expr_term_at points into; of any other kind they count as 0
 *   ndim  at least 1
 *   out   [product of all extents but that of the axis] */
ZORV_API void zorv_array_vector_sum(const void* data, int kind, const uint64_t* shape, size_t ndim,
                                    int axis, zorv_expr** out);

/* One-hot slices along an axis as positions: the position of the only 1 of a slice that is
 * otherwise 0, and -1 for any other slice. A negative axis counts from the end. Shape (1) if no
 * axis remains; null if there is no such axis. */
ZORV_API zorv_array_int* zorv_array_int_onehot_to_int(const zorv_array_int* a, int axis);

/* The same for plain integers along the last axis, but only the sum of a row is tested: the last
 * position that holds a 1 if the row adds up to 1, and -1 otherwise. Rank 0 does nothing.
 *   bits  [product of shape]; out  [product of all extents but the last] */
ZORV_API void zorv_onehot_to_int(const int32_t* bits, const uint64_t* shape, size_t ndim,
                                 int32_t* out);

/* ---- Einsum ------------------------------------------------------------------------------------
 */

/* Contracts arrays along labelled axes: "ij,jk->ik" multiplies matrices. Labels are single bytes,
 * one for each axis of an input; tabs, newlines and blanks mean nothing. Labels of the output are
 * summed over by none; without "->" the output has every label that occurs exactly once, in
 * ascending order of signed bytes. A label that an input has twice walks its diagonal. A "," behind
 * the last input ends the reading, and what follows is ignored.
 *
 * Each output element is the sum, over all positions of the other labels with the last one fastest,
 * of the products of one element of each input, in their order. Among terms a product of 0 is left
 * out. Nothing is merged; tags play no part.
 *   type_tags    [input_count] 0 var, 1 int, 2 term, 3 expr
 *   inputs       [input_count] handles of arrays of those kinds, only read
 *   output_kind  0 for a zorv_array_int*, which needs inputs of kind 1 only; otherwise the result
 *                is a zorv_array_expr*. The caller owns it.
 *   out_dim      the rank that the caller expects
 * Aborts on a subscript, ranks, extents, kinds or an expected rank that do not fit together. *
 * cost  one product for each combination of labels; spread over threads */
ZORV_API void* zorv_einsum(const char* subscript, int32_t input_count, const uint32_t* type_tags,
                           void* const* inputs, int output_kind, uint64_t out_dim);

/* ---- Constraints on arrays ---------------------------------------------------------------------
 */

/* Arrays of classic constraints with the shape of `a`: each element is a penalty polynomial, as
 * zorv_between makes it, and carries a constraint with the element as body and with the bounds. A
 * lower bound above the upper one gives no penalty, and the constraint shows the conflict. Arrays
 * of bounds need the shape of `a` and abort otherwise, the lower one first. */

/* lo <= a <= hi, with bounds for all elements or one for each. */
ZORV_API zorv_array_expr* zorv_array_var_between(const zorv_array_var* a, const CoeffWire* lo,
                                                 const CoeffWire* hi);
ZORV_API zorv_array_expr* zorv_array_int_between(const zorv_array_int* a, const CoeffWire* lo,
                                                 const CoeffWire* hi);
ZORV_API zorv_array_expr* zorv_array_term_between(const zorv_array_term* a, const CoeffWire* lo,
                                                  const CoeffWire* hi);
ZORV_API zorv_array_expr* zorv_array_expr_between(const zorv_array_expr* a, const CoeffWire* lo,
                                                  const CoeffWire* hi);
ZORV_API zorv_array_expr* zorv_array_var_between_array_int(const zorv_array_var* a,
                                                           const zorv_array_int* lo,
                                                           const zorv_array_int* hi);
ZORV_API zorv_array_expr* zorv_array_int_between_array_int(const zorv_array_int* a,
                                                           const zorv_array_int* lo,
                                                           const zorv_array_int* hi);
ZORV_API zorv_array_expr* zorv_array_term_between_array_int(const zorv_array_term* a,
                                                            const zorv_array_int* lo,
                                                            const zorv_array_int* hi);
ZORV_API zorv_array_expr* zorv_array_expr_between_array_int(const zorv_array_expr* a,
                                                            const zorv_array_int* lo,
                                                            const zorv_array_int* hi);

/* v <= a and a <= v. The other bound is the constant of the element plus its positive, or negative,
 * coefficients after simplification as binary; with atoms in an element that is no bound, and
 * zorv_array_expr_between with a bound of one's own is to be used. */
ZORV_API zorv_array_expr* zorv_array_var_ge_int(const zorv_array_var* a, const CoeffWire* v);
ZORV_API zorv_array_expr* zorv_array_int_ge_int(const zorv_array_int* a, const CoeffWire* v);
ZORV_API zorv_array_expr* zorv_array_term_ge_int(const zorv_array_term* a, const CoeffWire* v);
ZORV_API zorv_array_expr* zorv_array_expr_ge_int(const zorv_array_expr* a, const CoeffWire* v);
ZORV_API zorv_array_expr* zorv_array_var_le_int(const zorv_array_var* a, const CoeffWire* v);
ZORV_API zorv_array_expr* zorv_array_int_le_int(const zorv_array_int* a, const CoeffWire* v);
ZORV_API zorv_array_expr* zorv_array_term_le_int(const zorv_array_term* a, const CoeffWire* v);
ZORV_API zorv_array_expr* zorv_array_expr_le_int(const zorv_array_expr* a, const CoeffWire* v);
ZORV_API zorv_array_expr* zorv_array_var_ge_array_int(const zorv_array_var* a,
                                                      const zorv_array_int* lo);
ZORV_API zorv_array_expr* zorv_array_int_ge_array_int(const zorv_array_int* a,
                                                      const zorv_array_int* lo);
ZORV_API zorv_array_expr* zorv_array_term_ge_array_int(const zorv_array_term* a,
                                                       const zorv_array_int* lo);
ZORV_API zorv_array_expr* zorv_array_expr_ge_array_int(const zorv_array_expr* a,
                                                       const zorv_array_int* lo);
ZORV_API zorv_array_expr* zorv_array_var_le_array_int(const zorv_array_var* a,
                                                      const zorv_array_int* hi);
ZORV_API zorv_array_expr* zorv_array_int_le_array_int(const zorv_array_int* a,
                                                      const zorv_array_int* hi);
ZORV_API zorv_array_expr* zorv_array_term_le_array_int(const zorv_array_term* a,
                                                       const zorv_array_int* hi);
ZORV_API zorv_array_expr* zorv_array_expr_le_array_int(const zorv_array_expr* a,
                                                       const zorv_array_int* hi);

/* a = v, with the penalty (a - v)^2. No slack variable arises. */
ZORV_API zorv_array_expr* zorv_array_var_eq_int(const zorv_array_var* a, const CoeffWire* v);
ZORV_API zorv_array_expr* zorv_array_int_eq_int(const zorv_array_int* a, const CoeffWire* v);
ZORV_API zorv_array_expr* zorv_array_term_eq_int(const zorv_array_term* a, const CoeffWire* v);
ZORV_API zorv_array_expr* zorv_array_expr_eq_int(const zorv_array_expr* a, const CoeffWire* v);
ZORV_API zorv_array_expr* zorv_array_var_eq_array_int(const zorv_array_var* a,
                                                      const zorv_array_int* b);
ZORV_API zorv_array_expr* zorv_array_term_eq_array_int(const zorv_array_term* a,
                                                       const zorv_array_int* b);
ZORV_API zorv_array_expr* zorv_array_expr_eq_array_int(const zorv_array_expr* a,
                                                       const zorv_array_int* b);

/* The penalty of lo <= element <= hi for elements in no array, as plain expressions, the caller's.
 *   elements  [n] by `kind`: 0 pointers to expressions, 1 literals, 2 term records one after the
 *             other; for any other kind expressions of 0 are written
 *   out       [n] */
ZORV_API void zorv_array_between(const void* elements, int kind, const CoeffWire* lo,
                                 const CoeffWire* hi, zorv_expr** out, uint64_t n);

/* ---- Models ------------------------------------------------------------------------------------
 */

/* A model is one expression, compiled to flat tables that never change. It is what engines and
 * solutions read. Its energy is the polynomial, objective and free-form penalty together, plus for
 * each declared constraint weight times violation to the power k.
 *
 * The model numbers the variables that it uses from 0, by ascending id, and its atoms likewise. A
 * literal in its tables is such a number, with bit 31 if it is negated, or with bit 30 if it is the
 * number of an atom. Pointers into a model are lent, and stay good as long as the model lives. All
 * functions may be called on one model by several threads at once. Degrees, positions and indices
 * are unchecked unless a comment says otherwise. */

/* Compiles `e`, which must be simplified as binary, constraint bodies included:
 * zorv_expr_simplify_as_binary does both. Declared constraints become native ones; of a classic
 * constraint the penalty polynomial alone counts. `scale` is ignored and changes nothing. Aborts if
 * a term or a body is not in that form or names an unknown variable, on a constraint without
 * bounds, on an abs or relu term of a nonlinear body, and on an atom in a free-form penalty. */
ZORV_API zorv_model* zorv_model_create(const zorv_expr* e);
ZORV_API zorv_model* zorv_model_create_scaled(const zorv_expr* e, double scale);

/* One more handle of the same model, which lives until the last one is destroyed. A solution counts
 * as one; zorv_sol_model lends it. */
ZORV_API zorv_model* zorv_model_clone(const zorv_model* m);
ZORV_API void zorv_model_destroy(zorv_model* m);

/* The binary variables: their number, the id with number i, whether the variable of a literal is
 * among them, and its number, 0xFFFFFFFF if it is not. */
ZORV_API uint64_t zorv_model_var_count(const zorv_model* m);
ZORV_API uint32_t zorv_model_var(const zorv_model* m, uint64_t i);
ZORV_API int zorv_model_has(const zorv_model* m, uint32_t lit);
ZORV_API uint32_t zorv_model_var_index(const zorv_model* m, uint32_t lit);

/* The terms of one degree d, at most zorv_model_max_degree, in the order of the expression. Degree
 * 0, the constant, has a count of 0 and null pointers; coeff_at does not take it.
 *   zorv_model_term_vars    [d * zorv_model_term_count] literals, term after term
 *   zorv_model_coeff_array  [zorv_model_term_count] coefficients as the library keeps them
 *   t                       position of a term in its degree */
ZORV_API uint32_t zorv_model_max_degree(const zorv_model* m);
ZORV_API uint64_t zorv_model_term_count(const zorv_model* m, uint32_t d);
ZORV_API const uint32_t* zorv_model_term_vars(const zorv_model* m, uint32_t d);
ZORV_API const coeff_t* zorv_model_coeff_array(const zorv_model* m, uint32_t d);
ZORV_API void zorv_model_coeff_at(const zorv_model* m, uint32_t d, uint64_t t, CoeffWire* out);
ZORV_API void zorv_model_constant(const zorv_model* m, CoeffWire* out);

/* Always 1.0: coefficients are exact. */
ZORV_API double zorv_model_scale(const zorv_model* m);

/* 1 or 0: whether a term holds a negated literal, which only degree 3 and above can. */
ZORV_API int zorv_model_has_negated_literals(const zorv_model* m);

/* The atoms: their number, and the literal and the bounds of the one with number i. Both abort
 * unless i is below the count. */
ZORV_API uint64_t zorv_model_int_var_count(const zorv_model* m);
ZORV_API uint32_t zorv_model_int_var_orig(const zorv_model* m, uint64_t i);
ZORV_API void zorv_model_int_var_bounds(const zorv_model* m, uint64_t i, CoeffWire* lo,
                                        CoeffWire* hi);

/* The native constraints, all with linear bodies first, each kind in the order of the expression:
 * lo <= constant + sum of coeffs[j] * vars[j] <= hi, at `weight`, which may be negative. They are
 * described here for consumers of linear rows: nterms aborts on a nonlinear body and on a set of
 * allowed values, so it comes before the others.
 *   zorv_model_native_cons_vars, _coeffs  [zorv_model_native_cons_nterms] parallel */
ZORV_API uint64_t zorv_model_native_cons_count(const zorv_model* m);
ZORV_API uint64_t zorv_model_native_cons_nterms(const zorv_model* m, uint64_t i);
ZORV_API const uint32_t* zorv_model_native_cons_vars(const zorv_model* m, uint64_t i);
ZORV_API const coeff_t* zorv_model_native_cons_coeffs(const zorv_model* m, uint64_t i);
ZORV_API void zorv_model_native_cons_bounds(const zorv_model* m, uint64_t i, CoeffWire* lo,
                                            CoeffWire* hi, CoeffWire* constant, CoeffWire* weight);

/* The exponent of the penalty, 1 or 2, and the kind, 0 for a requirement and 1 for an abs or relu
 * term; and whether any constraint of the model has other values than 2 and 0, 1 or 0. */
ZORV_API void zorv_model_native_cons_shape(const zorv_model* m, uint64_t i, uint32_t* k,
                                           uint32_t* kind);
ZORV_API int zorv_model_has_penalty_shapes(const zorv_model* m);

/* The free-form penalty, kept apart for consumers that must treat it as hard; the terms contain it
 * already, so it is not to be added. A model without one, and one in which nothing is left but a
 * constant, answers 0, counts no terms and has no arrays.
 *   zorv_model_remainder_head    [nterms + 1] starts of the terms in `vars`
 *   zorv_model_remainder_vars    [head[nterms]] literals
 *   zorv_model_remainder_coeffs  [nterms] */
ZORV_API int zorv_model_has_remainder(const zorv_model* m);
ZORV_API const uint64_t* zorv_model_remainder_head(const zorv_model* m);
ZORV_API const uint32_t* zorv_model_remainder_vars(const zorv_model* m);
ZORV_API const coeff_t* zorv_model_remainder_coeffs(const zorv_model* m);
ZORV_API void zorv_model_remainder_info(const zorv_model* m, CoeffWire* constant, uint64_t* nterms);

/* Evaluates the polynomial alone, without native constraints. Aborts on a model with atoms.
 *   bits  [(zorv_model_var_count + 63) / 64] variable i at bit i % 64 of word i / 64 */
ZORV_API void zorv_model_eval(const zorv_model* m, const uint64_t* bits, CoeffWire* out);

/* ---- Solutions ---------------------------------------------------------------------------------
 */

/* A solution is one assignment of a model, with its energy and the time at which a solver found it.
 * The energy is valid until a value changes, and is computed again only on request. One thread at a
 * time may change a solution, and none may read it meanwhile.
 *
 * Functions that take the literal of a binary variable abort if the model does not have it; those
 * that take an atom do so too, and on a literal that is no atom. */

/* A new solution: variables 0, atoms at their lower bounds, the energy valid, no time. The second
 * form first simplifies `e` as binary and compiles it without its constraints. */
ZORV_API zorv_sol* zorv_sol_create(const zorv_model* m);
ZORV_API zorv_sol* zorv_sol_create_from_expr(const zorv_expr* e);

/* The copy shares the model and nothing else. */
ZORV_API zorv_sol* zorv_sol_clone(const zorv_sol* sol);
ZORV_API void zorv_sol_destroy(zorv_sol* sol);

/* The solution itself as a handle of its model: lent, not to be destroyed, good as long as the
 * solution lives. zorv_model_clone makes it one's own. */
ZORV_API const zorv_model* zorv_sol_model(const zorv_sol* sol);

/* zorv_model_var_count, zorv_model_has and zorv_model_var of that model. */
ZORV_API uint64_t zorv_sol_var_count(const zorv_sol* sol);
ZORV_API int zorv_sol_has(const zorv_sol* sol, uint32_t lit);
ZORV_API uint32_t zorv_sol_model_var(const zorv_sol* sol, uint64_t i);

/* The value of a literal, 0 or 1. */
ZORV_API int zorv_sol_get(const zorv_sol* sol, uint32_t lit);

/* Gives a literal a value, any but 0 being 1. A negated literal stores 1 - value, so that any value
 * but 1 makes its variable 1. */
ZORV_API void zorv_sol_set(zorv_sol* sol, uint32_t lit, int value);

/* Toggles the variable of a literal. */
ZORV_API void zorv_sol_flip(zorv_sol* sol, uint32_t lit);

/* The value of an atom. Setting aborts on a value out of its bounds. */
ZORV_API void zorv_sol_get_int(const zorv_sol* sol, uint32_t atom, CoeffWire* out);

/* The value of each literal, 0 or 1, as a new array. A variable that the model does not have counts
 * as 0, so its complement is 1. */
ZORV_API zorv_array_int* zorv_array_int_from_sol(const zorv_sol* sol, const zorv_array_var* array);
ZORV_API void zorv_sol_set_int(zorv_sol* sol, uint32_t atom, const CoeffWire* value);

/* All values as the solution keeps them, lent.
 *   zorv_sol_int_vals  [zorv_sol_int_count] by the number of the atom
 *   zorv_sol_bits      [(zorv_sol_var_count + 63) / 64] variable i at bit i % 64 of word i / 64,
 * the bits beyond the last one 0 */
ZORV_API const coeff_t* zorv_sol_int_vals(const zorv_sol* sol);
ZORV_API uint64_t zorv_sol_int_count(const zorv_sol* sol);
ZORV_API const uint64_t* zorv_sol_bits(const zorv_sol* sol);

/* Moves the words of the bits to `vec`, whose own block is freed with operator delete. The solution
 * has no bits afterwards: nothing may read or change them, nor compute its energy. */
ZORV_API void zorv_sol_steal_bits(zorv_sol* sol, WordVec* vec);

/* The energy; both abort unless it is valid. */
ZORV_API void zorv_sol_energy(const zorv_sol* sol, CoeffWire* out);
ZORV_API void zorv_sol_energy_int(const zorv_sol* sol, CoeffWire* out);

/* Whether the energy is valid, 1 or 0; the energy, computed in full if it is not; and an energy
 * taken on trust, valid from then on. */
ZORV_API int zorv_sol_energy_valid(const zorv_sol* sol);
ZORV_API void zorv_sol_compute_energy(zorv_sol* sol, CoeffWire* out);
ZORV_API void zorv_sol_set_energy(zorv_sol* sol, const CoeffWire* value);

/* Seconds until a solver found the solution, -1.0 if none did. */
ZORV_API double zorv_sol_tts(const zorv_sol* sol);
ZORV_API void zorv_sol_set_tts(zorv_sol* sol, double seconds);

/* The scale of the model, 1.0. */
ZORV_API double zorv_sol_scale(const zorv_sol* sol);

/* Copies all values of `src`, of whatever model, by variable. Aborts if the model of `dst` lacks a
 * variable of the other, or has narrower bounds. The energy of `dst` is no longer valid. */
ZORV_API void zorv_sol_set_from_sol(zorv_sol* dst, const zorv_sol* src);

/* The solution as "energy:{{name,value},...}", binary variables alone. Aborts unless the energy is
 * valid, and unless the ids of the model's n variables are 0 to n - 1. */
ZORV_API const char* zorv_sol_str(const zorv_sol* sol);

/* Evaluates any expression: its polynomial, plus the penalties of declared constraints and their
 * free-form penalty. Never aborts: a term with a variable or an atom that the model does not have
 * adds nothing, also if the literal is negated. */
ZORV_API void zorv_sol_eval_expr(const zorv_sol* sol, const zorv_expr* e, CoeffWire* out);

/* ---- ILP export --------------------------------------------------------------------------------
 */

/* A model with a linear objective and linear constraints as an integer linear program, for another
 * solver: minimise the objective over columns within bounds and rows with bounds on both sides.
 * Constraints are hard there and weights play no part. A declared constraint is a row. A term of
 * the free-form penalty, of whatever degree, is a row that keeps its literals from being all true;
 * the term is then 0 and, from degree 2 on, left out of the objective. So the objective of every
 * feasible point is its energy, and 0 is its penalty.
 *
 * The program is a copy and does not need the model any more. It never changes, and any number of
 * threads may read it. Columns c, rows r, entries j and bits b are numbered from 0, unchecked. */

/* The program of a model, or null if the model is none; zorv_ilp_last_error tells why: a negative
 * weight, an abs or relu term, a product in the objective that the penalty does not have, a
 * constant or a negative term in the penalty. Aborts on a nonlinear constraint body and on allowed
 * values. A VarInt becomes one integer column if its bits occur in no penalty term and elsewhere in
 * the proportions of its coefficients only; its record counts, not the expression, so after
 * zorv_var_reset one of an old VarInt may meet new variables. */
ZORV_API zorv_ilp* zorv_model_ilp_build(const zorv_model* m);

/* Why the last build on this thread gave null, "" if it did not. The text stays good until the next
 * build on this thread. */
ZORV_API const char* zorv_ilp_last_error(void);
ZORV_API void zorv_ilp_destroy(zorv_ilp* ilp);

/* The columns: binary variables first, then VarInts, then atoms, each by ascending number or age.
 *   kind       0 binary, 1 integer
 *   model_var  number of the variable, or of the atom, in the model; -1 for a VarInt
 *   bounds     both ends inside */
ZORV_API uint64_t zorv_ilp_ncols(const zorv_ilp* ilp);
ZORV_API uint32_t zorv_ilp_col_kind(const zorv_ilp* ilp, uint64_t c);
ZORV_API int32_t zorv_ilp_col_model_var(const zorv_ilp* ilp, uint64_t c);
ZORV_API void zorv_ilp_col_bounds(const zorv_ilp* ilp, uint64_t c, CoeffWire* lo, CoeffWire* hi);

/* The bits of a VarInt's column, none for other columns: their number in the model, and what each
 * adds to the value. col_decode finds bits for a value, greedily by descending coefficient; it
 * aborts if that fails, which it does for every value but 0 of a column without bits.
 *   bits  [zorv_ilp_col_nbits] each written as 0 or 1 */
ZORV_API uint64_t zorv_ilp_col_nbits(const zorv_ilp* ilp, uint64_t c);
ZORV_API uint32_t zorv_ilp_col_bit_var(const zorv_ilp* ilp, uint64_t c, uint64_t b);
ZORV_API void zorv_ilp_col_bit_coeff(const zorv_ilp* ilp, uint64_t c, uint64_t b, CoeffWire* out);
ZORV_API void zorv_ilp_col_decode(const zorv_ilp* ilp, uint64_t c, const CoeffWire* value,
                                  uint8_t* bits);

/* The objective: the coefficient of column c, and the constant. */
ZORV_API void zorv_ilp_obj(const zorv_ilp* ilp, uint64_t c, CoeffWire* out);
ZORV_API void zorv_ilp_obj_constant(const zorv_ilp* ilp, CoeffWire* out);

/* The rows: those of declared constraints as the model has them, then those of the penalty. Entries
 * are not 0; a row may have none.
 *   lo_free, hi_free  written as 1 if the column bounds alone keep the row on that side, else 0 */
ZORV_API uint64_t zorv_ilp_nrows(const zorv_ilp* ilp);
ZORV_API uint64_t zorv_ilp_row_nnz(const zorv_ilp* ilp, uint64_t r);
ZORV_API uint32_t zorv_ilp_row_col(const zorv_ilp* ilp, uint64_t r, uint64_t j);
ZORV_API void zorv_ilp_row_coeff(const zorv_ilp* ilp, uint64_t r, uint64_t j, CoeffWire* out);
ZORV_API void zorv_ilp_row_bounds(const zorv_ilp* ilp, uint64_t r, CoeffWire* lo, CoeffWire* hi,
                                  uint32_t* lo_free, uint32_t* hi_free);

/* ---- EasySolver --------------------------------------------------------------------------------
 */

/* Searches for a state of a model with the least energy that it can find. Heuristic: the energy it
 * reports is exact, but nothing says that no lower one exists.
 *
 * Models with integer variables are solved by an engine of this library, which the rest of this
 * text describes. Models of binary variables alone go to the solver library easysolver_cppint.so,
 * which lies beside this one or in the folder that ZORV_LIB_DIR names; zorv/solver_abi.h says how
 * to write one. Its parameters are its own, and are passed on as they are; only a time limit of
 * 10.0 is added if there is none. If ZORV_INT_UNIFIED begins with "1", a search without a hint and
 * without lists of solutions, on a model whose constraints are linear, runs on the integer engine
 * of that library too.
 *
 * Parameters are pairs of texts, an array that ends with a null key; a null array means none. Keys
 * are compared as a whole, of equal keys the last one counts, and an unknown key aborts. Numbers
 * are read as strtod and strtoul read them, up to the first character that does not fit; without
 * digits they are 0. A null value is an empty text.
 *
 *   key                      default        value
 *   time_limit               10.0           seconds
 *   target_energy            none           decimal integer of any length: the search stops once
 *                                           the best energy is at or below it and no constraint
 *                                           other than abs and relu terms is violated
 *   seed                     random         64-bit unsigned
 *   threads                  processors     search threads, 32-bit unsigned; 0 aborts
 *                            of the process
 *   topk_sols                no list        keep so many distinct states, of those that were the
 *                                           record of a thread the best; 0 aborts
 *   best_energy_sols         off            keep distinct states of the best energy: all, or as
 *                                           many as the value says if it begins with a digit and
 *                                           is not 0; topk_sols then has no effect
 *   enable_default_callback  off            "1", "true" or "True": a line on the standard output
 *                                           for each new best
 *
 * The line reads "TTS = 0.012s Energy = 57 Obj = 55 Viol = 1/36": seconds, energy, and where the
 * model has declared constraints the energy without their penalties, and where some of them are
 * not abs or relu terms how many of those are violated.
 *
 * With one thread, a seed, and a target that is reached before the time runs out, a search makes
 * the same moves and gives the same result every time. With a time limit of 0 every thread still
 * looks at one state. Every search reports, in this order:
 *
 *   info key             value
 *   run_time             seconds, with 6 decimals
 *   threads              search threads
 *   rounds, proposals    of all threads together: annealings begun, moves looked at
 *   engine               "integer-cpu"
 *   os, cpu, gpu, ram    the machine */

/* Returns a solver that shares the model. For a binary model it aborts if the solver library cannot
 * be loaded, or lacks what the constraints of the model need. */
ZORV_API zorv_easy_wrapper* zorv_easy_solver_wrapper_create(const zorv_model* m);
ZORV_API void zorv_easy_solver_wrapper_destroy(zorv_easy_wrapper* w);

/* Searches and returns a new result, which may outlive the solver. On an integer model any number
 * of searches may run on one solver at the same time, on a binary one a single one. The first form
 * has no place for integer values in a hint: for an integer model its `hint` must be null. The
 * second form is for integer models alone; the hint is the state that the first thread starts
 * from; if `hint_bits` is null the other two arguments are not looked at, so a hint for a model
 * without binary variables, whose zorv_sol_bits is null, needs some other pointer.
 *   hint_bits  [(variables + 63) / 64] words, variable i at bit i % 64 of word i / 64
 *   hint_ints  [hint_int_count] as zorv_sol_int_vals gives them
 * Both abort on a bad parameter; the first on a hint; the second on a count other than the model's
 * number of integer variables and on a value out of bounds. */
ZORV_API zorv_result* zorv_easy_solver_wrapper_search(zorv_easy_wrapper* w, const ParamPair* params,
                                                      const uint64_t* hint);
ZORV_API zorv_result* zorv_easy_solver_wrapper_search_int(zorv_easy_wrapper* w,
                                                          const ParamPair* params,
                                                          const uint64_t* hint_bits,
                                                          const coeff_t* hint_ints,
                                                          uint64_t hint_int_count);

/* ---- ExhaustiveSolver --------------------------------------------------------------------------
 */

/* Looks at every state. Models of binary variables alone go to the solver library
 * exhaustive_cppint.so beside this library (ZORV_LIB_DIR has no say), with all parameters. Models
 * with integer variables are enumerated here, on the calling thread and with no time limit, in an
 * order in which each state differs from the one before in one variable; the first best one is
 * reported. The only parameter there is best_energy_sols, as for EasySolver: all states of the best
 * energy, or as many as it says, in the order of the walk. Info keys are run_time, states, engine
 * ("integer-cpu") and those of the machine. */

/* Returns a solver that shares the model. Aborts as zorv_easy_solver_wrapper_create does, and for
 * an integer model with more than about 2^32 states. */
ZORV_API zorv_exhaustive_wrapper* zorv_exhaustive_wrapper_create(const zorv_model* m);
ZORV_API void zorv_exhaustive_wrapper_destroy(zorv_exhaustive_wrapper* w);

/* Searches and returns a new result. Aborts on an unknown parameter of an integer model. */
ZORV_API zorv_result* zorv_exhaustive_wrapper_search(zorv_exhaustive_wrapper* w,
                                                     const ParamPair* params);

/* ---- KLB5Solver --------------------------------------------------------------------------------
 */

/* Receives a solution of a running search; it owns `sol` and destroys it. Events: 0 before the
 * search starts, with all bits 0 and all integers at their lower bounds; 1 a new best solution; 2 a
 * tick of the timer, with the best solution, or before there is one with the energy 0 and without
 * bits, so that none may be asked of it. The result sets the timer, which is off at the start:
 * above 0 the new interval in seconds, exactly 0 off, anything else leaves it. It runs on threads
 * of the search and may hold the search up: be short, and start no other search. */
typedef double (*UserCallback)(void* ctx, zorv_sol* sol, uint32_t event);

/* A solver with a callback, a stop from outside, and hints during a search. Models of binary
 * variables alone go to the solver library klb5_cppint.so, found as EasySolver's is, to its CPU or
 * its GPU engine; parameters are passed on as they are. Models with integer variables run on the
 * engine that EasySolver has, beside which a GPU may improve states if the library can; parameters
 * are EasySolver's, and so is ZORV_INT_UNIFIED. With a GPU, "engine" is "integer-cpu+gpu";
 * ZORV_KLB5_INT_REPLICAS is how many replicas of each state it works on, 2048 if unset or 0.
 *   mode  above 0: a GPU is required, the number is passed on; 0: CPU only, which for integer
 *         models needs no library; below 0: CPU for binary models, for integer models a GPU too if
 *         there is one
 * Aborts if the library cannot be loaded, or lacks what model and mode need. */
ZORV_API zorv_klb5_wrapper* zorv_klb5_wrapper_create(const zorv_model* m, int32_t mode);
ZORV_API void zorv_klb5_wrapper_destroy(zorv_klb5_wrapper* w);

/* As the functions of EasySolver, one search at a time. */
ZORV_API zorv_result* zorv_klb5_wrapper_search(zorv_klb5_wrapper* w, const ParamPair* params,
                                               const uint64_t* hint);
ZORV_API zorv_result* zorv_klb5_wrapper_search_int(zorv_klb5_wrapper* w, const ParamPair* params,
                                                   const uint64_t* hint_bits,
                                                   const coeff_t* hint_ints,
                                                   uint64_t hint_int_count);

/* Sets the callback of all searches that follow; null for none. Not during a search. */
ZORV_API void zorv_klb5_wrapper_set_callback(zorv_klb5_wrapper* w, UserCallback fn, void* ctx);

/* Ends the search in progress, from any thread; every search starts with this taken back. */
ZORV_API void zorv_klb5_wrapper_terminate(zorv_klb5_wrapper* w);

/* Offers a state to the search in progress, from any thread, or to the next one. One that does not
 * fit the model is ignored, and so is null. */
ZORV_API void zorv_klb5_wrapper_hint(zorv_klb5_wrapper* w, const zorv_sol* sol);

/* ---- Search results ----------------------------------------------------------------------------
 */

/* What a search found: the best state, a list of further ones and facts about the search. Indices
 * are not checked, and a result is for one thread at a time. */

/* The best energy, the seconds from the start of the search until it was found, and the binary
 * part of the state, lent: [(variables + 63) / 64] words, variable i at bit i % 64 of word i / 64.
 * Its integer part comes with the Sol below. */
ZORV_API void zorv_easy_solver_result_energy(const zorv_result* r, CoeffWire* out);
ZORV_API double zorv_easy_solver_result_tts(const zorv_result* r);
ZORV_API const uint64_t* zorv_easy_solver_result_bits(const zorv_result* r);

/* The same for each state that "topk_sols" or "best_energy_sols" asked for, by energy and among
 * equals by arrival; the best one is among them. i is below the count. */
ZORV_API uint64_t zorv_easy_solver_result_topk_count(const zorv_result* r);
ZORV_API void zorv_easy_solver_result_topk_energy(const zorv_result* r, uint64_t i, CoeffWire* out);
ZORV_API double zorv_easy_solver_result_topk_tts(const zorv_result* r, uint64_t i);
ZORV_API const uint64_t* zorv_easy_solver_result_topk_bits(const zorv_result* r, uint64_t i);

/* Swaps the words of the state with those of `vec`, which may be three null pointers. What the
 * result gets is freed with it. */
ZORV_API void zorv_easy_solver_result_steal_bits(zorv_result* r, WordVec* vec);
ZORV_API void zorv_easy_solver_result_steal_topk_bits(zorv_result* r, uint64_t i, WordVec* vec);

/* Keys and values of the facts, in the order above. The texts live as long as the result. */
ZORV_API uint64_t zorv_easy_solver_result_info_count(const zorv_result* r);
ZORV_API const char* zorv_easy_solver_result_info_key(const zorv_result* r, uint64_t i);
ZORV_API const char* zorv_easy_solver_result_info_value(const zorv_result* r, uint64_t i);

/* A new Sol of the state; `m` is the model that was searched, and the energy is taken over without
 * being computed again. The words move into the Sol: afterwards the result has none, and a second
 * Sol of the same state is without bits, so none may be asked of it. */
ZORV_API zorv_sol* zorv_easy_solver_result_to_sol(zorv_result* r, const zorv_model* m);
ZORV_API zorv_sol* zorv_easy_solver_result_topk_to_sol(zorv_result* r, uint64_t i,
                                                       const zorv_model* m);
ZORV_API void zorv_easy_solver_result_destroy(zorv_result* r);

/* ---- Constants of the library ------------------------------------------------------------------
 */

/* Answers a constant question about the library or the machine it runs on.
 *   key      "compilation_date" (as in "Jan  1 2026"), "author", "version" (as in "2026.01.01"),
 *            "cpu_name", "cpu_threads" (processors online), "total_ram" (as in "15.615 GiB"),
 *            "hostname"
 *   returns  a text, "Invalid string parameter" for any other key and for null, and
 *            "(unknown)" or "(unknown CPU)" where the machine does not tell
 * Asks the machine anew each time, and may start a program to do so: not for inner loops. */
ZORV_API const char* zorv_const_str(const char* key);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* ZORV_ZORV_H */
