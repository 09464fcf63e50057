/* What a solver library exports, and what it receives. Compiles as C11 and as C++.
 *
 * zorv solves models with native integer variables by itself. For everything else it opens a shared
 * library at run time and calls the functions below. A solver library includes this header, defines
 * the functions of one family with exactly these names and C linkage, and is placed beside
 * zorv_skofleis.so or in the folder that the environment variable ZORV_LIB_DIR names:
 *
 *   family      file                    used by           ZORV_LIB_DIR
 *   easy        easysolver_cppint.so    EasySolver        yes
 *   exhaustive  exhaustive_cppint.so    ExhaustiveSolver  no: always beside zorv_skofleis.so
 *   klb5        klb5_cppint.so          KLB5Solver        yes
 *
 * Functions marked "required" must be there, or the library is refused. All others are looked for
 * and needed only by models or calls that use them.
 *
 * Conventions
 *
 *  1. Coefficients are objects of the unbounded integer type
 *       boost::multiprecision::number<boost::multiprecision::cpp_int_backend<>,
 *                                     boost::multiprecision::et_off>
 *     which C sees as the incomplete type coeff_t. They come as pointers to one or to contiguous
 *     arrays and are only read, except for `ints` of an integer search and the outputs of a round.
 *     Results go back as CoeffWire records, see zorv/wire.h.
 *  2. The tables of a model (term_count, term_vars, term_coeffs, int_lo, int_hi) belong to the
 *     model and stay good and unchanged until the handle is destroyed: keep the pointers, copy
 *     nothing.
 *     The arrays of pointers to them stay good equally long. Everything that comes with a
 *     constraint or a remainder is good during the call, unless it is a table of the model too.
 *  3. term_count[d - 1], term_vars[d - 1] and term_coeffs[d - 1] describe the terms of degree d,
 *     d = 1 .. max_degree: term t has the literals term_vars[d - 1][t * d] .. [t * d + d - 1] and
 *     the coefficient term_coeffs[d - 1][t].
 *  4. A literal of a binary model is a variable's index, 0 .. nvars - 1, with bit 31 set for its
 *     complement, which occurs in terms of degree 3 and more. In the term tables of an integer
 *     model bit 30 marks integer variable (literal & 0x3FFFFFFF). In the constraints of an integer
 *     model the two kinds have one numbering: binary variables 0 .. nbits - 1, integer variables
 *     from nbits on.
 *  5. The energy of an assignment is the constant, plus all terms, plus for each constraint its
 *     weight times its violation (shape_k 1) or the square of it (any other shape_k). A remainder
 *     is already part of the terms: it tells which of them are penalties and is never added again.
 *  6. Bits are words of 64, variable i at bit i % 64 of word i / 64.
 *  7. Handles and lists are the library's own, made by its create and search functions and given
 *     back to its destroy functions. A list of solutions is asked for its count and its entries and
 *     destroyed right after the search that returned it; null means that there is none.
 *  8. Parameters are pairs of texts that end with a null key, good during the call. They are passed
 *     on as the caller gave them; what they mean is the library's to say. Where a caller of
 *     EasySolver gives no "time_limit", ("time_limit", "10.0") is added at the end.
 *  9. One handle is used by one thread at a time. Different handles may be used at the same time.
 * 10. A library stays open until the process ends. */
#ifndef ZORV_SOLVER_ABI_H
#define ZORV_SOLVER_ABI_H

#include <stdint.h>

#include "zorv/wire.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct coeff_t coeff_t;

/* Where a search of the first two families, or an entry of a list, puts a solution. All five
 * pointees are the caller's; nbits and nwords are filled in, bits and tts are zero. */
typedef struct SolutionOut {
  uint32_t* nbits;   /* number of binary variables */
  uint32_t* nwords;  /* (nbits + 63) / 64 */
  CoeffWire* energy; /* to be set; `limbs` is a block of malloc that the caller frees */
  uint64_t* bits;    /* [nwords] to be set; may be null if that is 0 */
  double* tts;       /* seconds from the start of the search to this solution, to be set */
} SolutionOut;

/* The same of the klb5 family, by value. */
typedef struct Klb5SolutionOut {
  CoeffWire energy; /* zero; to be set, `limbs` likewise */
  uint64_t* bits;   /* [nwords] to be set */
  double tts;
  InfoPair* info; /* null, or set to a list that ends with a null key. Keys, values and the list
                     are blocks of malloc that the caller frees. */
  uint32_t nwords;
} Klb5SolutionOut;

/* Called by a library during a search, with the context that its create function received. Events:
 * 0 the start, 1 a new best solution, 2 a tick of the timer. The result sets the timer: above 0 the
 * new interval in seconds, exactly 0 off, anything else leaves it; at the start it is off. Only the
 * klb5 family is given a function that does something, the others one that returns -1.0.
 *   bits  [(nvars + 63) / 64], or null      ints  [nints] */
typedef double (*SolverCallback)(void* ctx, const CoeffWire* energy, const uint64_t* bits,
                                 uint32_t event, double tts);
typedef double (*SolverCallbackIv)(void* ctx, const CoeffWire* energy, const uint64_t* bits,
                                   const coeff_t* ints, uint64_t nints, uint32_t event, double tts);

/* ---- easy --------------------------------------------------------------------------------------
 */

/* required. A solver for a binary model. `ctx` is null. */
void* zorv_easy_solver_create(void* ctx, uint64_t nvars, uint32_t max_degree,
                              const coeff_t* constant, const uint64_t* term_count,
                              const uint32_t* const* term_vars, const coeff_t* const* term_coeffs);

/* required. Frees a solver of either kind. */
void zorv_easy_solver_destroy(void* handle);

/* required. Searches, fills in `out` and returns further solutions or null. May be called again.
 *   hint  [(nvars + 63) / 64] words to start from, or null */
void* zorv_easy_solver_search(void* handle, SolutionOut* out, const ParamPair* params,
                              const uint64_t* hint);

/* required. The entries of a list; `out` is fresh for each. */
uint64_t zorv_easy_solver_sol_list_count(void* list);
void zorv_easy_solver_sol_list_get(void* list, uint64_t i, SolutionOut* out);
void zorv_easy_solver_sol_list_destroy(void* list);

/* required. Called once in a process for binary models, and once more for integer models, before
 * the first solver of the kind is made. */
void zorv_easy_solver_register_callback(SolverCallback fn);

/* Facts about the last search, a list that ends with a null key, or null; and its release. */
InfoPair* zorv_easy_solver_get_info(void* handle);
void zorv_easy_solver_free_info(InfoPair* list);

/* Declared constraints, after the solver was made and in the order of the model. The body is
 * body_constant plus coeffs[i] times vars[i], i < nvars, and in the second form nl_count terms
 * more: term t has the coefficient nl_coeffs[t] and the literals nl_vars[nl_head[t]] ..
 * nl_vars[nl_head[t + 1] - 1]. The violation is the distance of the body to [lo, hi], in the third
 * form to the nearest of the intervals [allowed_lo[i], allowed_hi[i]], i < n_allowed. */
void zorv_easy_solver_add_constraint(void* handle, const coeff_t* weight, const coeff_t* lo,
                                     const coeff_t* hi, const coeff_t* body_constant,
                                     uint64_t nvars, const uint32_t* vars, const coeff_t* coeffs);
void zorv_easy_solver_add_constraint_nl(void* handle, const coeff_t* weight, const coeff_t* lo,
                                        const coeff_t* hi, const coeff_t* body_constant,
                                        uint64_t nvars, const uint32_t* vars, const coeff_t* coeffs,
                                        uint64_t nl_count, const uint64_t* nl_head,
                                        const uint32_t* nl_vars, const coeff_t* nl_coeffs);
void zorv_easy_solver_add_constraint_set(void* handle, const coeff_t* weight, const coeff_t* lo,
                                         const coeff_t* hi, const coeff_t* body_constant,
                                         uint64_t nvars, const uint32_t* vars,
                                         const coeff_t* coeffs, uint64_t n_allowed,
                                         const coeff_t* allowed_lo, const coeff_t* allowed_hi);

/* Shape of the constraint that was added last, called only where it is not 2 and 0: the exponent
 * shape_k of the violation, and shape_kind 0 for a requirement, 1 for an objective term, which
 * counts as no violation. */
void zorv_easy_solver_set_cons_shape(void* handle, uint8_t shape_k, uint8_t shape_kind);

/* Which terms of the model are a penalty, that is, are to be 0: remainder_constant plus term t with
 * the coefficient remainder_coeffs[t] and the literals remainder_vars[remainder_head[t]] ..
 * [remainder_head[t + 1] - 1], t < n_coeffs. */
void zorv_easy_solver_set_remainder(void* handle, const coeff_t* remainder_constant,
                                    uint64_t n_coeffs, const uint64_t* remainder_head,
                                    const uint32_t* remainder_vars,
                                    const coeff_t* remainder_coeffs);

/* A solver for a model with integer variables, and its search: used if the environment variable
 * ZORV_INT_UNIFIED begins with "1". "threads" arrives under the name "thread_count".
 *   int_lo, int_hi  [nints] bounds        ints  [nints] zeros, to be set to the best solution's */
void* zorv_easy_solver_create_int(void* ctx, uint32_t nbits, uint32_t nints, const coeff_t* int_lo,
                                  const coeff_t* int_hi, uint32_t max_degree,
                                  const coeff_t* constant, const uint64_t* term_count,
                                  const uint32_t* const* term_vars,
                                  const coeff_t* const* term_coeffs);
void* zorv_easy_solver_search_int(void* handle, SolutionOut* out, const ParamPair* params,
                                  coeff_t* ints);

/* ---- exhaustive --------------------------------------------------------------------------------
 */

/* The same as in the family above, for a search that looks at every assignment. `all_ones` is ~0;
 * there is no hint. Required: create, destroy, search, the three of the list, register_callback. */
void* zorv_exhaustive_create(void* ctx, uint64_t nvars, uint32_t max_degree,
                             const coeff_t* constant, const uint64_t* term_count,
                             const uint32_t* const* term_vars, const coeff_t* const* term_coeffs,
                             uint64_t all_ones);
void zorv_exhaustive_destroy(void* handle);
void* zorv_exhaustive_search(void* handle, SolutionOut* out, const ParamPair* params);
uint64_t zorv_exhaustive_sol_list_count(void* list);
void zorv_exhaustive_sol_list_get(void* list, uint64_t i, SolutionOut* out);
void zorv_exhaustive_sol_list_destroy(void* list);
void zorv_exhaustive_register_callback(SolverCallback fn);
InfoPair* zorv_exhaustive_get_info(void* handle);
void zorv_exhaustive_free_info(InfoPair* list);
void zorv_exhaustive_add_constraint(void* handle, const coeff_t* weight, const coeff_t* lo,
                                    const coeff_t* hi, const coeff_t* body_constant, uint64_t nvars,
                                    const uint32_t* vars, const coeff_t* coeffs);
void zorv_exhaustive_add_constraint_nl(void* handle, const coeff_t* weight, const coeff_t* lo,
                                       const coeff_t* hi, const coeff_t* body_constant,
                                       uint64_t nvars, const uint32_t* vars, const coeff_t* coeffs,
                                       uint64_t nl_count, const uint64_t* nl_head,
                                       const uint32_t* nl_vars, const coeff_t* nl_coeffs);
void zorv_exhaustive_add_constraint_set(void* handle, const coeff_t* weight, const coeff_t* lo,
                                        const coeff_t* hi, const coeff_t* body_constant,
                                        uint64_t nvars, const uint32_t* vars, const coeff_t* coeffs,
                                        uint64_t n_allowed, const coeff_t* allowed_lo,
                                        const coeff_t* allowed_hi);
void zorv_exhaustive_set_cons_shape(void* handle, uint8_t shape_k, uint8_t shape_kind);
void zorv_exhaustive_set_remainder(void* handle, const coeff_t* remainder_constant,
                                   uint64_t n_coeffs, const uint64_t* remainder_head,
                                   const uint32_t* remainder_vars, const coeff_t* remainder_coeffs);

/* ---- klb5 --------------------------------------------------------------------------------------
 */

/* Two binary engines, one on the CPU and one on a GPU, and a helper of the native integer search on
 * a GPU. `wrapper` is the context of callbacks. The list functions, constraints, shapes and
 * remainders of both engines work as above; `nvars` of a search and of a list entry repeats the
 * model's. A caller may ask a running search to end by setting the byte at `stop`, and may hand it
 * a state from another thread by a hint function. */

/* required. The number of GPUs that can be used. */
int32_t zorv_klb5_gpu_device_count(void);

/* The CPU engine. Required: create, destroy, search, register_callback and the three of the list.
 */
void* zorv_klb5_cpu_solver_create(void* wrapper, uint64_t nvars, uint32_t max_degree,
                                  const coeff_t* constant, const uint64_t* term_count,
                                  const uint32_t* const* term_vars,
                                  const coeff_t* const* term_coeffs);
void zorv_klb5_cpu_solver_destroy(void* handle);
void* zorv_klb5_cpu_solver_search(void* handle, Klb5SolutionOut* out, uint32_t nvars,
                                  const ParamPair* params, const uint64_t* hint);
void zorv_klb5_cpu_register_callback(SolverCallback fn);
uint64_t zorv_klb5_cpu_sol_list_count(void* list);
void zorv_klb5_cpu_sol_list_get(void* list, uint64_t i, Klb5SolutionOut* out, uint32_t nvars);
void zorv_klb5_cpu_sol_list_destroy(void* list);
void zorv_klb5_cpu_hint_solution(void* handle, const uint64_t* bits);
void zorv_klb5_cpu_solver_set_external_stop(void* handle, uint8_t* stop);
void zorv_klb5_cpu_add_constraint(void* handle, const coeff_t* weight, const coeff_t* lo,
                                  const coeff_t* hi, const coeff_t* body_constant, uint64_t nvars,
                                  const uint32_t* vars, const coeff_t* coeffs);
void zorv_klb5_cpu_add_constraint_nl(void* handle, const coeff_t* weight, const coeff_t* lo,
                                     const coeff_t* hi, const coeff_t* body_constant,
                                     uint64_t nvars, const uint32_t* vars, const coeff_t* coeffs,
                                     uint64_t nl_count, const uint64_t* nl_head,
                                     const uint32_t* nl_vars, const coeff_t* nl_coeffs);
void zorv_klb5_cpu_add_constraint_set(void* handle, const coeff_t* weight, const coeff_t* lo,
                                      const coeff_t* hi, const coeff_t* body_constant,
                                      uint64_t nvars, const uint32_t* vars, const coeff_t* coeffs,
                                      uint64_t n_allowed, const coeff_t* allowed_lo,
                                      const coeff_t* allowed_hi);
void zorv_klb5_cpu_set_cons_shape(void* handle, uint8_t shape_k, uint8_t shape_kind);
void zorv_klb5_cpu_set_remainder(void* handle, const coeff_t* remainder_constant, uint64_t n_coeffs,
                                 const uint64_t* remainder_head, const uint32_t* remainder_vars,
                                 const coeff_t* remainder_coeffs);

/* The CPU engine on models with integer variables, as in the easy family. `mode` is that of the
 * solver's constructor: above 0 it asks for a GPU, 0 forbids it, -1 leaves the choice. Solvers are
 * freed by zorv_klb5_cpu_solver_destroy. */
void* zorv_klb5_cpu_solver_create_int(void* wrapper, uint64_t nbits, uint32_t nints,
                                      const coeff_t* int_lo, const coeff_t* int_hi,
                                      uint32_t max_degree, const coeff_t* constant,
                                      const uint64_t* term_count, const uint32_t* const* term_vars,
                                      const coeff_t* const* term_coeffs, int32_t mode);
void* zorv_klb5_cpu_solver_search_int(void* handle, Klb5SolutionOut* out, uint32_t nbits,
                                      const ParamPair* params, coeff_t* ints);
void zorv_klb5_cpu_register_callback_iv(SolverCallbackIv fn);
void zorv_klb5_cpu_hint_iv(void* handle, const uint64_t* bits, const coeff_t* ints, uint64_t nints);

/* The GPU engine: present if its create function is, and then the others are required where they
 * are called. It takes no nonlinear bodies and no allowed values. `mode` is above 0. */
void* zorv_klb5_solver_create(void* wrapper, uint64_t nvars, uint32_t max_degree,
                              const coeff_t* constant, const uint64_t* term_count,
                              const uint32_t* const* term_vars, const coeff_t* const* term_coeffs,
                              int64_t mode);
void zorv_klb5_solver_destroy(void* handle);
void* zorv_klb5_solver_search(void* handle, Klb5SolutionOut* out, uint32_t nvars,
                              const ParamPair* params, const uint64_t* hint);
void zorv_klb5_register_callback(SolverCallback fn);
uint64_t zorv_klb5_sol_list_count(void* list);
void zorv_klb5_sol_list_get(void* list, uint64_t i, Klb5SolutionOut* out, uint32_t nvars);
void zorv_klb5_sol_list_destroy(void* list);
void zorv_klb5_hint_solution(void* handle, const uint64_t* bits);
void zorv_klb5_solver_set_external_stop(void* handle, uint8_t* stop);
void zorv_klb5_add_constraint(void* handle, const coeff_t* weight, const coeff_t* lo,
                              const coeff_t* hi, const coeff_t* body_constant, uint64_t nvars,
                              const uint32_t* vars, const coeff_t* coeffs);
void zorv_klb5_add_constraint_nl(void* handle, const coeff_t* weight, const coeff_t* lo,
                                 const coeff_t* hi, const coeff_t* body_constant, uint64_t nvars,
                                 const uint32_t* vars, const coeff_t* coeffs, uint64_t nl_count,
                                 const uint64_t* nl_head, const uint32_t* nl_vars,
                                 const coeff_t* nl_coeffs);
void zorv_klb5_add_constraint_set(void* handle, const coeff_t* weight, const coeff_t* lo,
                                  const coeff_t* hi, const coeff_t* body_constant, uint64_t nvars,
                                  const uint32_t* vars, const coeff_t* coeffs, uint64_t n_allowed,
                                  const coeff_t* allowed_lo, const coeff_t* allowed_hi);
void zorv_klb5_set_cons_shape(void* handle, uint8_t shape_k, uint8_t shape_kind);
void zorv_klb5_set_remainder(void* handle, const coeff_t* remainder_constant, uint64_t n_coeffs,
                             const uint64_t* remainder_head, const uint32_t* remainder_vars,
                             const coeff_t* remainder_coeffs);
void zorv_klb5_init(void); /* looked for with the GPU engine, never called */

/* Rounds on a GPU that improve states beside the native integer search. All five functions must be
 * there, or none counts; the shape function is needed only by models with shapes. The handle lives
 * for one search and is used by one thread. `zero` is 0; `replicas` is ZORV_KLB5_INT_REPLICAS, 2048
 * if that is unset or 0. Constraints come in one form: nl_count is 0 for a linear body, n_allowed
 * is 0 where lo and hi apply. */
void* zorv_klb5_int_create(uint64_t nbits, uint64_t nints, const coeff_t* int_lo,
                           const coeff_t* int_hi, uint32_t max_degree, const coeff_t* constant,
                           const uint64_t* term_count, const uint32_t* const* term_vars,
                           const coeff_t* const* term_coeffs, uint64_t zero, uint64_t replicas,
                           uint32_t seed);
void zorv_klb5_int_add_cons(void* handle, const coeff_t* weight, const coeff_t* lo,
                            const coeff_t* hi, const coeff_t* body_constant, uint64_t nvars,
                            const uint32_t* vars, const coeff_t* coeffs, uint64_t nl_count,
                            const uint64_t* nl_head, const uint32_t* nl_vars,
                            const coeff_t* nl_coeffs, uint64_t n_allowed, const coeff_t* allowed_lo,
                            const coeff_t* allowed_hi);
void zorv_klb5_int_set_cons_shape(void* handle, uint8_t shape_k, uint8_t shape_kind);

/* Improves `count` states. With W = max(1, (nbits + 63) / 64) and I = max(1, nints), state s has
 * the words s * W .. and the integers s * I .. of the arrays. Where out_flags[s] is set to
 * something other than 0, the state at s of the outputs, within its bounds, has the energy
 * out_energies[s]; energies are checked. Returns 0, or anything else to be called no more.
 *   in_bits, out_bits  [count * W]      in_ints, out_ints  [count * I]
 *   out_energies  [count]      out_flags  [count], zeros */
int32_t zorv_klb5_int_round2(void* handle, const uint64_t* in_bits, const coeff_t* in_ints,
                             uint32_t count, uint64_t* out_bits, coeff_t* out_ints,
                             coeff_t* out_energies, uint8_t* out_flags);
/* A state from outside, between two rounds. */
void zorv_klb5_int_hint(void* handle, const uint64_t* bits, const coeff_t* ints);
void zorv_klb5_int_destroy(void* handle);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* ZORV_SOLVER_ABI_H */
