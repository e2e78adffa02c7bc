/**
 * PERFORMs that may meet themselves: a stack of the cells that they save. A range that was left by
 * GO TO leaves its entry; the next one below that ends takes it away.
 */
#ifndef KVR2_KVRCOB_PERFORMS_H
#define KVR2_KVRCOB_PERFORMS_H

/* 128-bit integers are no ISO C. */
#if defined(__GNUC__)
#pragma GCC system_header
#endif

#include "kvr2/kvrcob/base.h"

#include <stdlib.h>

typedef struct KvrPerform {
    int site, cell;
} KvrPerform;

typedef struct KvrPerforms {
    KvrPerform *list;
    int count, room;
} KvrPerforms;

#define KVR_MOST_PERFORMS (1 << 24)

KVR_SHARED void kvr_perform(KvrPerforms *performs, int site, int cell)
{
    if (performs->count == performs->room) {
        int room = performs->room ? 2 * performs->room : 64;
        KvrPerform *list =
            room > KVR_MOST_PERFORMS ? NULL : (KvrPerform *)realloc(performs->list, (size_t)room * sizeof *list);
        if (!list) {
            fprintf(stderr, "PERFORM: too many that have not ended\n");
            exit(1);
        }
        performs->list = list;
        performs->room = room;
    }
    performs->list[performs->count].site = site;
    performs->list[performs->count++].cell = cell;
}

/* The cell that the latest PERFORM of this site saved. */
KVR_SHARED int kvr_performed(KvrPerforms *performs, int site)
{
    while (performs->count > 0)
        if (performs->list[--performs->count].site == site) return performs->list[performs->count].cell;
    return 0;
}

KVR_SHARED void kvr_performs_end(KvrPerforms *performs) { free(performs->list); }

#endif
