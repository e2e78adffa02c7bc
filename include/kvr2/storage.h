/**
 * EXTERNAL data items, and storage for compiled programs.
 *
 * Programs of a run unit share an EXTERNAL item by its name. Each program that has some calls
 * `_zvkExtVarInit` in its prologue with a table of them and gets their addresses:
 *
 * @code
 *     struct { uint32_t count; uint8_t reserved[32]; ZvkExternalRow rows[2]; } items =
 *         {2, {0}, {{80, "TAX-TABLE"}, {4, "RUN-COUNT"}}};
 *     void *addresses[2];
 *     _zvkExtVarInit(&items.count, addresses);
 * @endcode
 */
#ifndef KVR2_STORAGE_H
#define KVR2_STORAGE_H

#include "kvr2/export.h"

ZVK_BEGIN_DECLS

/** A row of the table that `_zvkExtVarInit` takes; the rows start at byte 36. */
typedef struct ZvkExternalRow {
    uint32_t length; /**< bytes of the item */
    char name[32];   /**< terminated, unless it takes all 32 bytes */
} ZvkExternalRow;

ZVK_STATIC_ASSERT(sizeof(ZvkExternalRow) == 36, "ZvkExternalRow");

/** Byte of the item table at which the rows start. */
#define ZVK_EXTERNAL_ROWS 36

/**
 * Gives the addresses of EXTERNAL data items, and makes those that the run unit does not have yet,
 * as binary zeros.
 *
 * An item lives until the run unit ends. The length of its first definition counts.
 *
 * @param items      a count, then from byte 36 so many rows of ZvkExternalRow
 * @param addresses  receives an address a row; null for an item that could not be made
 * @messages 66 with the name for an item whose length differs from its first definition; 907 when
 *           storage is short. Both severe
 * @threads  any; items that exist are found without a lock
 */
ZVK_EXPORT void _zvkExtVarInit(const uint32_t *items, void **addresses);

/**
 * A block of `size` bytes, 16-byte aligned, for `_zvkcfree`.
 *
 * @return the block; null after a failure, if the message returns
 * @messages `number` with `control` when storage is short
 * @threads any
 */
ZVK_EXPORT void *_zvkMalloc(uint64_t size, uint32_t number, uint32_t control);

/**
 * A 16-byte aligned block, zeroed if `clear` is 1; null for `size` 0 and when storage is short.
 * @threads any
 */
ZVK_EXPORT void *_zvkcalloc(int32_t clear, uint64_t size);

/**
 * Frees a block of `_zvkMalloc`, `_zvkcalloc` or `_Dmr_mem_alloc`; null does nothing. @threads any
 */
ZVK_EXPORT void _zvkcfree(void *block);

/** The same as `_zvkcfree`. */
ZVK_EXPORT void _Dmr_mem_free(void *block);

/** A 16-byte aligned block of `size` bytes; null when storage is short. @threads any */
ZVK_EXPORT void *_Dmr_mem_alloc(uint64_t size);

/**
 * memset, memcpy and memcmp that first show the call on stderr, as in "memset(@0x7f30, 0x40, 80".
 * @threads any
 */
ZVK_EXPORT void *dbg_memset(void *s1, int32_t c, uint64_t n);
ZVK_EXPORT void *dbg_memcpy(void *s1, const void *s2, uint64_t n);
ZVK_EXPORT int32_t dbg_memcmp(const void *s1, const void *s2, uint64_t n);

/**
 * The system's routines of these names, with an assertion that no argument is null, whatever the
 * length. @threads any
 */
ZVK_EXPORT void *c__memcpy(void *s1, const void *s2, uint64_t n);
ZVK_EXPORT int32_t c__memcmp(const void *s1, const void *s2, uint64_t n);
ZVK_EXPORT void *c__memset(void *s1, int32_t c, uint64_t n);
ZVK_EXPORT char *c__strcpy(char *s1, const char *s2);
ZVK_EXPORT int32_t c__strcmp(const char *s1, const char *s2);
ZVK_EXPORT uint64_t c__strlen(const char *s1);

ZVK_END_DECLS

#endif
