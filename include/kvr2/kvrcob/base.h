/**
 * What the helpers of compiled programs have in common.
 */
#ifndef KVR2_KVRCOB_BASE_H
#define KVR2_KVRCOB_BASE_H

/* 128-bit integers are no ISO C. */
#if defined(__GNUC__)
#pragma GCC system_header
#endif

#ifndef _GNU_SOURCE
#define _GNU_SOURCE
#endif
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>

#include "kvr2/kvr2.h"

#define KVR_INLINE static inline __attribute__((unused))

/*
 * Longer ones that many places use: a call costs less than a copy at each of them. They are
 * "inline" as well, for without optimisation the C compiler makes every static function that is
 * not.
 */
#define KVR_SHARED static inline __attribute__((unused, noinline))

#endif
