/**
 * The floating-point formats, by the names that the other headers use for them.
 *
 * | In an entry's name | Type | COBOL usage |
 * |---|---|---|
 * | `SFlt`, `BFlt32`, `Float4` | float | COMP-1 |
 * | `LFlt`, `BFlt64`, `Float8` | double | COMP-2 |
 * | `EFlt`, `BFlt128`, `Float16` | ZvkFloat128 | FLOAT-EXTENDED |
 * | `DFlt32` | ZvkDecimal32 | |
 * | `DFlt64` | ZvkDecimal64 | FLOAT-DECIMAL-16 |
 * | `DFlt`, `DFlt128`, `DFloat16`, `decfloat16` | ZvkDecimal128 | FLOAT-DECIMAL-34 |
 *
 * Decimal floats are in the binary integer encoding. By value all of them travel as the processor's
 * ABI has it: in the vector registers, a result in xmm0. Where an entry takes an address, the
 * number may lie there at any alignment: the `...Item` types say so.
 *
 * No entry that works on floating point traps, whatever its arguments are: infinities, NaNs,
 * denormal numbers and overflow go through it, although a run unit traps divisions by zero. The
 * caller's exception masks are after the call what they were before. Only the exception "inexact"
 * must not be unmasked.
 */
#ifndef KVR2_FLOATS_H
#define KVR2_FLOATS_H

#include "kvr2/export.h"

__extension__ typedef __float128 ZvkFloat128;

#if defined(__clang__)
/* A compiler without decimal floating point can declare these entries, not call them. */
typedef struct ZvkDecimal32 ZvkDecimal32;
typedef struct ZvkDecimal64 ZvkDecimal64;
typedef struct ZvkDecimal128 ZvkDecimal128;
#elif defined(__cplusplus)
typedef float ZvkDecimal32 __attribute__((mode(SD)));
typedef float ZvkDecimal64 __attribute__((mode(DD)));
typedef float ZvkDecimal128 __attribute__((mode(TD)));
#else
__extension__ typedef _Decimal32 ZvkDecimal32;
__extension__ typedef _Decimal64 ZvkDecimal64;
__extension__ typedef _Decimal128 ZvkDecimal128;
#endif

/** Numbers in storage, at any alignment. */
typedef double ZvkFloat64Item __attribute__((aligned(1)));
typedef ZvkFloat128 ZvkFloat128Item __attribute__((aligned(1)));
typedef ZvkDecimal128 ZvkDecimal128Item __attribute__((aligned(1)));

#endif
