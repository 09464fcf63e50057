/* Plain records that cross the boundary of the library by pointer, in both directions: between a
 * caller and the library, and between the library and the solver libraries that it loads.
 * Compiles as C11 and as C++. All layouts are those of 64-bit Linux on x86-64. */
#ifndef ZORV_WIRE_H
#define ZORV_WIRE_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* One coefficient: sign and magnitude of an unbounded integer.
 *
 * Read by the library: only the sign of `sign` matters; `sign` 0 or `nlimbs` 0 is zero and `limbs`
 * is then not looked at. Leading zero limbs are accepted. The record and its block stay the
 * caller's and may be freed when the call returns.
 *
 * Written by the library: `sign` is -1, 0 or +1, `nlimbs` the exact number of limbs and `limbs` a
 * fresh block of malloc, or null for zero. The library first calls free on the `limbs` that the
 * record holds, so a fresh record must be zeroed before it is handed out: CoeffWire w = {0}; and
 * so must every record of an array. Afterwards the block belongs to the caller, who frees it. */
typedef struct CoeffWire {
  int32_t sign;    /* -1, 0, +1 */
  uint32_t nlimbs; /* number of 64-bit limbs */
  uint64_t* limbs; /* [nlimbs] magnitude, least significant limb first */
} CoeffWire;

/* One search parameter. An array of them ends with a record whose key is null. */
typedef struct ParamPair {
  const char* key;
  const char* value;
} ParamPair;

/* One fact about a finished search. Both strings come from malloc. */
typedef struct InfoPair {
  char* key;
  char* value;
} InfoPair;

/* A run of 64-bit words: the three pointers of a std::vector<uint64_t>. The block comes from
 * operator new and goes back to operator delete; three null pointers are the empty run. */
typedef struct WordVec {
  uint64_t* begin;
  uint64_t* end;
  uint64_t* end_of_storage;
} WordVec;

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* ZORV_WIRE_H */
