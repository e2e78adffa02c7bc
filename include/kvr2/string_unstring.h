/**
 * STRING and UNSTRING: one whole statement in one call.
 *
 * Lengths are bytes; POINTER, TALLYING and COUNT IN values are characters. POINTER is range-checked
 * by compiled code, before the call, where the program has ON OVERFLOW or not; a value that is out
 * of range moves nothing and stays as it is.
 *
 * `overflow` addresses a word that is nonzero where the statement has an ON OVERFLOW branch; it is
 * increased by one when the statement overflows, and compiled code looks whether it has changed. A
 * zero word stays zero.
 *
 * With flag 0x10 and an alphabet that has weights, delimiters match whose bytes weigh the same;
 * this is for single bytes only.
 *
 * Both entries may be called from any thread on items of their own, under different alphabets too.
 */
#ifndef KVR2_STRING_UNSTRING_H
#define KVR2_STRING_UNSTRING_H

#include "kvr2/alphabet.h"
#include "kvr2/export.h"

ZVK_BEGIN_DECLS

/** Flags of a StringBlock. */
enum { ZVK_STRING_POINTER = 0x80, ZVK_STRING_DBCS = 0x40, ZVK_STRING_COLLATED = 0x10, ZVK_STRING_NATIONAL = 0x08 };

typedef struct StringSource {
    const void *data;
    uint64_t length;
} StringSource;

ZVK_STATIC_ASSERT(sizeof(StringSource) == 16, "StringSource");

/** The sources before one DELIMITED BY. */
typedef struct StringGroup {
    const void *delimiter;    /**< null: DELIMITED BY SIZE */
    uint64_t delimiterLength; /**< 0: DELIMITED BY SIZE */
    uint32_t sourceCount;
    uint32_t reserved20;
    StringSource sources[1]; /**< `sourceCount` of them; the next group follows directly */
} StringGroup;

ZVK_AT(StringGroup, delimiterLength, 8);
ZVK_AT(StringGroup, sourceCount, 16);
ZVK_AT(StringGroup, sources, 24);

typedef struct StringBlock {
    uint8_t reserved0[3];
    uint8_t flags; /**< ZVK_STRING_... */
    uint8_t reserved4[4];
    void *target;
    uint64_t targetLength;
    uint64_t pointer; /**< in with ZVK_STRING_POINTER; out always: where the next byte would go, from 1 */
    uint32_t groupCount;
    uint32_t reserved36;
    StringGroup groups[1]; /**< `groupCount` of them, one after the other */
} StringBlock;

ZVK_AT(StringBlock, flags, 3);
ZVK_AT(StringBlock, target, 8);
ZVK_AT(StringBlock, targetLength, 16);
ZVK_AT(StringBlock, pointer, 24);
ZVK_AT(StringBlock, groupCount, 32);
ZVK_AT(StringBlock, groups, 40);

/** Flags of an UnstringBlock. */
enum {
    ZVK_UNSTRING_POINTER = 0x80,
    ZVK_UNSTRING_DBCS = 0x40,
    ZVK_UNSTRING_COLLATED = 0x10,
    ZVK_UNSTRING_TALLYING = 0x08,
    ZVK_UNSTRING_NATIONAL = 0x02
};

#define ZVK_UNSTRING_ALL UINT32_C(0x80000000) /**< flag of a delimiter */

typedef struct UnstringDelimiter {
    const void *data;
    uint64_t length; /**< a delimiter of length 0 is never found */
    uint32_t flags;
    uint32_t reserved20;
} UnstringDelimiter;

ZVK_AT(UnstringDelimiter, flags, 16);
ZVK_STATIC_ASSERT(sizeof(UnstringDelimiter) == 24, "UnstringDelimiter");

typedef struct UnstringBlock {
    uint8_t reserved0[3];
    uint8_t flags; /**< ZVK_UNSTRING_... */
    uint8_t reserved4[4];
    const void *source;
    uint64_t sourceLength;
    uint64_t pointer; /**< in and out, with ZVK_UNSTRING_POINTER only */
    uint32_t tally;   /**< in and out, with ZVK_UNSTRING_TALLYING only */
    uint32_t reserved36;
    uint32_t delimiterCount;
    uint32_t targetCount;
    UnstringDelimiter delimiters[1]; /**< `delimiterCount` of them */
} UnstringBlock;

ZVK_AT(UnstringBlock, flags, 3);
ZVK_AT(UnstringBlock, source, 8);
ZVK_AT(UnstringBlock, sourceLength, 16);
ZVK_AT(UnstringBlock, pointer, 24);
ZVK_AT(UnstringBlock, tally, 32);
ZVK_AT(UnstringBlock, delimiterCount, 40);
ZVK_AT(UnstringBlock, targetCount, 44);
ZVK_AT(UnstringBlock, delimiters, 48);

/** Kinds of a receiving item; 0 is alphanumeric, DBCS or national, left-justified. */
enum {
    ZVK_UNSTRING_NUMERIC = 0x80,       /**< numeric DISPLAY */
    ZVK_UNSTRING_SIGN_SEPARATE = 0x40, /**< gets "+", whatever the field says */
    ZVK_UNSTRING_SIGN_LEADING = 0x20,  /**< that sign is in front */
    ZVK_UNSTRING_JUST_RIGHT = 0x10,    /**< JUSTIFIED RIGHT, of DELIMITER IN items too */
    ZVK_UNSTRING_NUMERIC_NATIONAL = 0x08
};

typedef struct UnstringTarget {
    void *address;
    uint64_t size;        /**< bytes of the item, with decimal places and separate sign */
    uint64_t integerSize; /**< numeric items: bytes of the integer digits */
    uint8_t reserved24[3];
    uint8_t kind;
    uint8_t reserved28[4];
    void *delimiterIn; /**< or null */
    uint64_t delimiterInSize;
    uint8_t reserved48[3];
    uint8_t delimiterInKind; /**< 0 or ZVK_UNSTRING_JUST_RIGHT */
    uint8_t reserved52[4];
    uint64_t count; /**< out: COUNT IN */
} UnstringTarget;

ZVK_AT(UnstringTarget, size, 8);
ZVK_AT(UnstringTarget, integerSize, 16);
ZVK_AT(UnstringTarget, kind, 27);
ZVK_AT(UnstringTarget, delimiterIn, 32);
ZVK_AT(UnstringTarget, delimiterInSize, 40);
ZVK_AT(UnstringTarget, delimiterInKind, 51);
ZVK_AT(UnstringTarget, count, 56);
ZVK_STATIC_ASSERT(sizeof(UnstringTarget) == 64, "UnstringTarget");

/**
 * STRING. Bytes of the target that nothing is sent to stay as they are.
 *
 * @param alphabet  of the collating sequence, for ZVK_STRING_COLLATED; may be null
 */
ZVK_EXPORT void _zvkcString(StringBlock *block, const AlphabetRecord *alphabet, uint32_t *overflow);

/**
 * UNSTRING. Targets that the source does not reach stay as they are, their counts too.
 *
 * @param targets   `block->targetCount` receiving items
 * @param alphabet  of the collating sequence, for ZVK_UNSTRING_COLLATED; may be null
 */
ZVK_EXPORT void _zvkcUnString(UnstringBlock *block, UnstringTarget *targets, const AlphabetRecord *alphabet,
                              uint32_t *overflow);

ZVK_END_DECLS

#endif
