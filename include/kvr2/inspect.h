/**
 * INSPECT: one whole statement in one call.
 *
 * The block holds the inspected item and, inline, one record for each phrase, in statement order.
 * Kind and flags of a phrase are in the flags word of its first operand. TALLYING ... REPLACING
 * in one statement is two passes: the counts are those of the item before replacement. A match
 * lies wholly inside its phrase's region, and what a phrase has matched no later phrase sees.
 *
 * INSPECT TEXT-1 TALLYING N FOR ALL "A" BEFORE ".":
 *
 * @code
 *     InspectBlock *block = ...;                       // InspectBlock and one InspectPhrase
 *     block->phraseCount = 1; block->flags = 0; block->length = 10; block->data = text;
 *     InspectPhrase *phrase = block->phrases;
 *     phrase->result   = {ZVK_INSPECT_TALLYING | ZVK_INSPECT_BEFORE, 8, &counter};
 *     phrase->compared = {0, 1, "A"};
 *     phrase->before   = {0, 1, "."};
 *     _zvkcInspect(block);
 * @endcode
 */
#ifndef KVR2_INSPECT_H
#define KVR2_INSPECT_H

#include "kvr2/export.h"

ZVK_BEGIN_DECLS

/** Flags of an operand, the inspected item included. */
enum {
    ZVK_INSPECT_NATIONAL_SIGNED = 0x108000, /**< both bits: signed item in national digits */
    ZVK_INSPECT_DBCS = 0x10000,             /**< characters of two bytes */
    ZVK_INSPECT_FIGURATIVE = 0x20000,       /**< one character, repeated as needed */
    ZVK_INSPECT_SIGN_SEPARATE = 0x40000,
    ZVK_INSPECT_SIGN_LEADING = 0x80000,    /**< without it the sign is at the end */
    ZVK_INSPECT_DISPLAY_SIGNED = 0x300000, /**< both bits: signed numeric DISPLAY item */
    ZVK_INSPECT_NATIONAL = 0x400000        /**< characters of two bytes */
};

/** Kind of a phrase, in the flags of its `result` only. */
#define ZVK_INSPECT_AFTER UINT32_C(0x800000)
#define ZVK_INSPECT_BEFORE UINT32_C(0x1000000)
#define ZVK_INSPECT_FIRST UINT32_C(0x2000000)
#define ZVK_INSPECT_LEADING UINT32_C(0x4000000)
#define ZVK_INSPECT_CHARACTERS UINT32_C(0x10000000) /**< no compared operand */
#define ZVK_INSPECT_CONVERTING UINT32_C(0x20000000)
#define ZVK_INSPECT_REPLACING UINT32_C(0x40000000)
#define ZVK_INSPECT_TALLYING UINT32_C(0x80000000)

/** An operand; of a signed item the sign is no part of what is compared. */
typedef struct InspectOperand {
    uint32_t flags;
    uint32_t reserved4;
    uint64_t length; /**< bytes */
    void *data;
} InspectOperand;

ZVK_AT(InspectOperand, length, 8);
ZVK_AT(InspectOperand, data, 16);
ZVK_STATIC_ASSERT(sizeof(InspectOperand) == 24, "InspectOperand");

typedef struct InspectPhrase {
    InspectOperand result;   /**< TALLYING: `data` is the 64-bit counter; else BY, or TO of CONVERTING */
    InspectOperand compared; /**< what is searched for; CONVERTING: the characters to convert */
    InspectOperand before;
    InspectOperand after;
} InspectPhrase;

ZVK_AT(InspectPhrase, compared, 24);
ZVK_AT(InspectPhrase, before, 48);
ZVK_AT(InspectPhrase, after, 72);
ZVK_STATIC_ASSERT(sizeof(InspectPhrase) == 96, "InspectPhrase");

typedef struct InspectBlock {
    int32_t phraseCount;
    uint32_t reserved4;
    uint64_t flags;  /**< of the inspected item */
    uint64_t length; /**< bytes */
    void *data;
    InspectPhrase phrases[1]; /**< `phraseCount` of them */
} InspectBlock;

ZVK_AT(InspectBlock, flags, 8);
ZVK_AT(InspectBlock, length, 16);
ZVK_AT(InspectBlock, data, 24);
ZVK_AT(InspectBlock, phrases, 32);

/**
 * Carries out the statement: adds to the counters, changes the item in place.
 *
 * Operands of a signed DISPLAY form without separate sign are at most 126 bytes; a longer one ends
 * the process.
 *
 * @messages 76 (empty): REPLACING CHARACTERS BY an item that is not one character long;
 *           77 ("REPLACING" or "CONVERTING"): operands of different length. The statement goes on
 *           with the shorter length. 907: no storage for a statement of very many phrases
 * @threads  any, on items of their own
 */
ZVK_EXPORT void _zvkcInspect(InspectBlock *block);

ZVK_END_DECLS

#endif
