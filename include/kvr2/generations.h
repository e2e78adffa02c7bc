/**
 * Generation data groups: a named series of files, its generations, kept by a small catalogue.
 *
 * The catalogue of a group `base` is the file `base.catalogue`; the generations are files named
 * `base.g0001v00` and so on. A name means:
 *
 * | Name | Means |
 * |---|---|
 * | `base`, `base(*)` | the whole group, newest generation first |
 * | `base(0)`, `base(-1)` | the newest generation, the one before |
 * | `base(+1)` | the next, new one |
 * | `base(3)` | the third before the newest |
 * | `base.g0007v00` | generation 7 |
 *
 * All routines are safe in any number of threads and processes: they hold a lock on the catalogue
 * from the time they read it until they have written it. Errors are said on stderr and stand in
 * `errno`. Environment: `gdg_home`, `HOME`, `RQLINSTANCE`, `RQLDBDFT`, `TXMN_TK_HDK_SERVER` for
 * file systems that have no directories of their own.
 *
 * `prefix` is a 3-letter file-system prefix in any case: sys, plx, lsq (plain files), jgt, hdk,
 * rql, ora; anything else, or null, means that the files tell.
 */
#ifndef KVR2_GENERATIONS_H
#define KVR2_GENERATIONS_H

#include "kvr2/export.h"

ZVK_BEGIN_DECLS

/** `flags` of `GDG_Create` and `GDG_Alter` */
enum {
    ZVK_GDG_EMPTY = 1,  /**< when the limit is exceeded all generations roll off, not only the oldest */
    ZVK_GDG_SCRATCH = 2 /**< a generation that rolls off is deleted */
};

/**
 * What is a file name to the generation data groups?
 *
 * @param name    terminated
 * @param result  receives a copy of the base name or of the generation's file name, to be freed
 *                with `free`; null for a name that is neither. May be null
 * @param create  nonzero: a new generation is entered into the catalogue
 * @return -1 a whole group, 1 one generation, 0 no name of a group, or no such generation
 */
ZVK_EXPORT int32_t GDS_Name(const char *name, char **result, uint32_t create, const char *prefix);

/**
 * Makes a group.
 * @param limit  generations kept, 1 to 1000; below 1: 255
 * @param days   least age in days before a generation rolls off, 0 none; negative: 0
 * @param flags  ZVK_GDG_...; negative: ZVK_GDG_SCRATCH
 * @return 0, or -1 with `errno`
 */
ZVK_EXPORT int32_t GDG_Create(char *name, int32_t limit, int32_t days, int32_t flags, const char *prefix);

/**
 * Changes a group; a negative argument leaves its value alone, a `limit` of 0 counts as 255. Rolls
 * off what exceeds a lower limit. @return 0 or -1
 */
ZVK_EXPORT int32_t GDG_Alter(char *name, int32_t limit, int32_t days, int32_t flags, const char *prefix);

/** Takes generations whose files are gone out of the catalogue. @return 0 or -1 */
ZVK_EXPORT int32_t GDG_Verify(char *name, const char *prefix);

/**
 * Makes the catalogue anew from the files that are there; creates the group if there is none.
 * @return 0 or -1
 */
ZVK_EXPORT int32_t GDG_Rebuild(char *name, const char *prefix);

/**
 * Removes a group's catalogue and lets all its generations roll off (deletes them, if the group has
 * Scratch). @return 0 or -1
 */
ZVK_EXPORT int32_t GDG_Unlink(char *name, const char *prefix);

/** Prints a group and its generations, oldest first, on stdout. @return 0 or -1 */
ZVK_EXPORT int32_t GDG_List(char *name, const char *prefix);

/**
 * Removes one generation from its group (and deletes it, if the group has Scratch), or, for a whole
 * group, does as `GDG_Unlink`. @return 0 or -1
 */
ZVK_EXPORT int32_t GDG_remove(char *name, const char *prefix);

ZVK_END_DECLS

#endif
