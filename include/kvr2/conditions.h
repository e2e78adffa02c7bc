/**
 * Conditions and small text functions: class tests, comparisons, collating tables, case, reversal
 * and trimming.
 *
 * Lengths are bytes, of national items too; an odd byte at the end of a national item is no part
 * of what is tested. Lengths below 1 are empty items. All entries may be called from any thread;
 * only `_zvkcCollSeq` has anything to lock. None issues a message.
 */
#ifndef KVR2_CONDITIONS_H
#define KVR2_CONDITIONS_H

#include "kvr2/alphabet.h"
#include "kvr2/export.h"

ZVK_BEGIN_DECLS

/**
 * Class tests: 1 if all of the item belongs to the class, else 0; an empty item belongs to every
 * class.
 *
 * ALPHABETIC is the letters A to Z and a to z and the blank; UPPER and LOWER are the letters of
 * that case and the blank.
 */
ZVK_EXPORT int32_t _zvkcClasAlpha(const uint8_t *item, int32_t length);
ZVK_EXPORT int32_t _zvkcClasAlphaUpper(const uint8_t *item, int32_t length);
ZVK_EXPORT int32_t _zvkcClasAlphaLower(const uint8_t *item, int32_t length);

/** A class of the program's own: `table` has 256 bytes, zero for a byte of the class. */
ZVK_EXPORT int32_t _zvkcClasUserDef(const uint8_t *item, int32_t length, const uint8_t *table);

/** NUMERIC of a packed item of `digits` digits: the strict check of decimal operands. */
ZVK_EXPORT int32_t _zvkcClasPackedDec(const uint8_t *item, int32_t digits);

/** Where the sign of a zoned or national item is, in the low byte of the word of its test. */
enum {
    ZVK_CLASS_SIGN_NONE = 0,             /**< no sign */
    ZVK_CLASS_SIGN_LEADING = 1,          /**< zoned: in the first byte */
    ZVK_CLASS_SIGN_TRAILING = 2,         /**< zoned: in the last byte */
    ZVK_CLASS_SIGN_LEADING_SEPARATE = 3, /**< national: "+" or "-" in front */
    ZVK_CLASS_SIGN_TRAILING_SEPARATE = 4,
    ZVK_CLASS_STRICT = 0x100,  /**< zoned: the sign byte must have zone 3 or 7 */
    ZVK_CLASS_POSITIVE = 0x100 /**< national: the number must not be negative; without sign, not zero */
};

/**
 * NUMERIC of a zoned item.
 *
 * The digits go through the strict check of decimal operands, which lets the first and the last of
 * them have any form that a sign byte may have, NUL and blank included. For a separate sign give
 * the digits alone and test the sign byte in compiled code. An alphanumeric item, whose bytes must
 * be digits and nothing else, is tested with `_zvkcClasUserDef`.
 *
 * @param word    ZVK_CLASS_SIGN_NONE, _LEADING or _TRAILING, and ZVK_CLASS_STRICT
 * @param length  bytes
 */
ZVK_EXPORT int32_t _zvkcClasZonedDec(uint32_t word, const uint8_t *item, int32_t length);

/** NUMERIC of an unsigned national item: U+0030 to U+0039. */
ZVK_EXPORT int32_t _zvkuClasNumeric(const uint8_t *item, int32_t length);

/**
 * NUMERIC of a signed national item.
 *
 * @param word  ZVK_CLASS_SIGN_NONE, _LEADING_SEPARATE or _TRAILING_SEPARATE, and ZVK_CLASS_POSITIVE
 */
ZVK_EXPORT int32_t _zvkuSClasNumeric(uint32_t word, const uint8_t *item, int32_t length);

/** ALPHABETIC, ALPHABETIC-UPPER and ALPHABETIC-LOWER of a national item, the blank being U+0020. */
ZVK_EXPORT int32_t _zvkuClasAlpha(const uint8_t *item, int32_t length);
ZVK_EXPORT int32_t _zvkuClasUpper(const uint8_t *item, int32_t length);
ZVK_EXPORT int32_t _zvkuClasLower(const uint8_t *item, int32_t length);

/**
 * Compares under an alphabet: byte by byte through the weights; the rest of the longer operand is
 * compared with the weight of the blank.
 *
 * @param leftLength, rightLength  negative: a figurative value of that many bytes, which is
 *                                 repeated or cut to the length of the other operand
 * @param weights                  256 bytes; null: native order
 * @return below 0, 0 or above 0
 */
ZVK_EXPORT int32_t _zvkcCmpACS(const uint8_t *left, int32_t leftLength, const uint8_t *right, int32_t rightLength,
                               const uint8_t *weights);

/**
 * Compares an item with a literal repeated over its length; below 0, 0 or above 0. A negative
 * length, or a literal without a byte, gives 0.
 */
ZVK_EXPORT int32_t _zvkcCmpMultiByteFig(const uint8_t *left, int32_t length, const uint8_t *literal,
                                        int32_t literalLength);

/** Compares an item with a byte repeated over its length: -1, 0 or 1. */
ZVK_EXPORT int32_t _zvkcCmpToPad(const uint8_t *left, uint8_t pad, int32_t length);

/**
 * Stores the tables of the native collating sequence, `collatingWeights` and `collatingOrder`, in
 * the record. They are built at the first call, in the collating order of the locale, with a
 * locale of multi-byte characters in that of "en_US".
 */
ZVK_EXPORT void _zvkcCollSeq(AlphabetRecord *record);

/**
 * Case, byte by byte, by the process's locale; source and destination may be the same storage.
 * The entries of the two lines are the same.
 */
ZVK_EXPORT void _zvkToLower(int32_t length, const uint8_t *source, uint8_t *destination);
ZVK_EXPORT void _Dmr_lower_case(int32_t length, const uint8_t *source, uint8_t *destination);
ZVK_EXPORT void _zvkToUpper(int32_t length, const uint8_t *source, uint8_t *destination);
ZVK_EXPORT void _Dmr_upper_case(int32_t length, const uint8_t *source, uint8_t *destination);

/** The bytes in reverse order; the items must not overlap. */
ZVK_EXPORT void _Dmr_reverse(int32_t length, const uint8_t *source, uint8_t *destination);

/**
 * The UTF-16 units in reverse order, those of a surrogate pair too; an odd last byte stays at the
 * end. The items must not overlap.
 */
ZVK_EXPORT void _zvkcReverseUnicode(int32_t length, const uint8_t *source, uint8_t *destination);

/** Character forms of a text to be trimmed; 4 is the same as 1. */
enum {
    ZVK_TRIM_BYTES = 1,
    ZVK_TRIM_UNITS = 2 /**< UTF-16; an odd last byte of the text is no character and is always copied */
};

/**
 * Copies the text without its leading characters (`_zvk_triml`), trailing characters
 * (`_zvk_trimr`), or both, that belong to a set.
 *
 * @param length       bytes of the source
 * @param setLength    bytes of the set; a set without a character removes nothing
 * @param set          null: the blank, whatever setLength says
 * @param destination  gets the rest, at most `length` bytes; may be the source
 * @return bytes stored
 */
ZVK_EXPORT int64_t _zvk_triml(int32_t length, const uint8_t *source, int32_t setLength, const uint8_t *set,
                              uint8_t *destination, int32_t kind);
ZVK_EXPORT int64_t _zvk_trimr(int32_t length, const uint8_t *source, int32_t setLength, const uint8_t *set,
                              uint8_t *destination, int32_t kind);
ZVK_EXPORT int64_t _zvk_trim(int32_t length, const uint8_t *source, int32_t setLength, const uint8_t *set,
                             uint8_t *destination, int32_t kind);

ZVK_END_DECLS

#endif
