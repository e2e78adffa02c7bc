/**
 * Edited moves: MOVE to and from items with an editing picture, fills, moves of variable length,
 * and the reset of altered GO TO targets.
 *
 * Compiled MOVE statements call these with records that the compiler lays out; the records are read
 * only and may be at any alignment. A picture is checked by the compiler: a wrong one is walked
 * as it is. Nothing here allocates, locks or issues a message, and all entries may be called
 * from any thread on items of their own.
 *
 * Editing 123456 as `$$,$$9.99CR` and back:
 *
 * @code
 *     record.length = 11; record.decimalPoint = '.'; record.currencySign = '$';
 *     record.editClass = 10;      picture "$$,$$9.99CR"
 *     _zvkcMoveNumToNumEdit(&record, "-123456", edited);               "$1,234.56CR", from one sign byte and the digits
 *     _zvkcMoveNumEditToNum(&deRecord, edited, number);                "123456-", digits and one
 *                                                                      sign byte: the halves differ on purpose
 * @endcode
 */
#ifndef KVR2_EDITED_MOVES_H
#define KVR2_EDITED_MOVES_H

#include "kvr2/export.h"

ZVK_BEGIN_DECLS

/** Alphanumeric picture. */
typedef struct AlphaEditRecord {
    int16_t length;     /**< picture positions; the pair 0x81 0x40 in the picture is one position */
    uint8_t repeat;     /**< nonzero: a source that runs out begins again (figurative ALL); zero: blanks */
    uint8_t picture[1]; /**< the positions */
} __attribute__((packed)) AlphaEditRecord;

ZVK_AT(AlphaEditRecord, repeat, 2);
ZVK_AT(AlphaEditRecord, picture, 3);

/** A run of equal positions of a national picture. */
typedef struct NationalEditRun {
    uint16_t unit; /**< UTF-16 code unit: 0x0020, 0x002F and 0x0030 are insertions, any other stands for data */
    int16_t count;
} __attribute__((packed)) NationalEditRun;

/** National picture. */
typedef struct NationalEditRecord {
    int16_t runBytes; /**< size of the list of runs; it holds ((runBytes - 1) / 4, rounded down) + 1 runs */
    uint8_t repeat;   /**< as in AlphaEditRecord */
    uint8_t reserved3;
    NationalEditRun runs[1];
} __attribute__((packed)) NationalEditRecord;

ZVK_AT(NationalEditRecord, repeat, 2);
ZVK_AT(NationalEditRecord, runs, 4);
ZVK_STATIC_ASSERT(sizeof(NationalEditRun) == 4, "NationalEditRun");

/** Numeric picture. */
typedef struct NumericEditRecord {
    /**
     * picture positions; negative: every digit position suppresses, so a zero value blanks the item
     */
    int16_t length;
    /**
     * "."; any other value: DECIMAL-POINT IS COMMA, the result has "," as point and "." as
     * separator
     */
    uint8_t decimalPoint;
    uint8_t currencySign; /**< the currency character */
    uint8_t editClass;    /**< 0 to 12, see ZVK_EDIT_...; the two's complement of it: BLANK WHEN ZERO */
    uint8_t picture[1];   /**< the positions, always with "." as point and "," as separator */
} __attribute__((packed)) NumericEditRecord;

ZVK_AT(NumericEditRecord, decimalPoint, 2);
ZVK_AT(NumericEditRecord, currencySign, 3);
ZVK_AT(NumericEditRecord, editClass, 4);
ZVK_AT(NumericEditRecord, picture, 5);

/** What the sign of the value does in a numeric picture, and what floats. */
enum {
    ZVK_EDIT_UNSIGNED = 0,
    ZVK_EDIT_UNSIGNED_BLANK = 1,        /**< as 0; 0 has no two's complement to say BLANK WHEN ZERO with */
    ZVK_EDIT_PLUS = 2,                  /**< fixed "+": "+" or "-" is shown */
    ZVK_EDIT_MINUS = 3,                 /**< fixed "-": "-" or a blank is shown */
    ZVK_EDIT_CR = 4,                    /**< CR where negative */
    ZVK_EDIT_DB = 5,                    /**< DB where negative */
    ZVK_EDIT_FLOAT_PLUS = 6,            /**< a string of "+" floats */
    ZVK_EDIT_FLOAT_MINUS = 7,           /**< a string of "-" floats */
    ZVK_EDIT_FLOAT_PLUS_BLANK = 8,      /**< as 6; a zero value gives blanks where stars fill */
    ZVK_EDIT_FLOAT_MINUS_BLANK = 9,     /**< as 7; likewise */
    ZVK_EDIT_FLOAT_CURRENCY_PLUS = 10,  /**< the currency sign floats, fixed "+", or CR or DB */
    ZVK_EDIT_FLOAT_CURRENCY_MINUS = 11, /**< the currency sign floats, fixed "-" */
    ZVK_EDIT_FLOAT_CURRENCY = 12        /**< the currency sign floats, no sign is shown */
};

/** Numeric picture to be read back. */
typedef struct DeEditRecord {
    int16_t length;     /**< picture positions; a negative one counts as none, but see `_zvkcMoveNumEditToNum2` */
    uint8_t picture[1]; /**< the positions */
} __attribute__((packed)) DeEditRecord;

ZVK_AT(DeEditRecord, picture, 2);

/** Currency symbol of more than one character. */
typedef struct CurrencyString {
    uint16_t length;
    uint8_t symbol[1]; /**< `length` bytes */
} __attribute__((packed)) CurrencyString;

ZVK_AT(CurrencyString, symbol, 2);

/**
 * MOVE to an alphanumeric-edited item: "/", "0" and blank of the picture are copied, every other
 * position takes the next source byte.
 *
 * @param sourceLength  bytes
 * @param destination   one byte a position, two for the pair 0x81 0x40
 */
ZVK_EXPORT void _zvkcMoveAlphaNumEdit(const AlphaEditRecord *record, const uint8_t *source, int32_t sourceLength,
                                      uint8_t *destination);

/**
 * MOVE to a national-edited item.
 *
 * A run of data in which the source ends early is stored short: one blank stands for all the
 * positions that are left. With `repeat` such a run is stored long instead: the source is taken up
 * again at every position, so that a source of one unit fills a run of count positions, 3 or more,
 * with 2 * count - 1 units. The caller has allowed for both.
 *
 * @param source        UTF-16, any alignment
 * @param sourceLength  bytes
 * @param destination   UTF-16, any alignment
 */
ZVK_EXPORT void _zvkcMoveUnicodeEdit(const NationalEditRecord *record, const uint8_t *source, int32_t sourceLength,
                                     uint8_t *destination);

/**
 * MOVE of a figurative ALL literal: the literal repeated over the item.
 *
 * @param length         bytes of the destination; negative: JUSTIFIED RIGHT, a part of the literal
 *                       is in front
 * @param literalLength  bytes; with 0 nothing is stored
 */
ZVK_EXPORT void _zvkcMoveFigConst(uint8_t *destination, int32_t length, const uint8_t *literal, int32_t literalLength);

/**
 * De-edits a numeric-edited item.
 *
 * @param source       one byte a picture position, none for `P` and `V`
 * @param destination  gets the digits and one sign byte after them, "+" or "-"
 * @return 0 good; 1 the source does not fit the picture, and what was stored so far stays
 */
ZVK_EXPORT int32_t _zvkcMoveNumEditToNum(const DeEditRecord *record, const uint8_t *source, uint8_t *destination);

/**
 * The same for an item with a currency symbol of more than one character. The symbol is sought in
 * the first bytes of the source, as many as the picture's length or the negation of a negative one
 * says; if it is not there the source is de-edited as it is.
 */
ZVK_EXPORT int32_t _zvkcMoveNumEditToNum2(const DeEditRecord *record, const uint8_t *source, uint8_t *destination,
                                          const CurrencyString *currency);

/**
 * MOVE to a numeric-edited item.
 *
 * @param source       one sign byte, "+" or "-", then one ASCII digit for each digit position of
 *                     the picture
 * @param destination  one byte a picture position, none for `P` and `V`
 */
ZVK_EXPORT void _zvkcMoveNumToNumEdit(const NumericEditRecord *record, const uint8_t *source, uint8_t *destination);

/**
 * The same with a currency symbol of more than one character, in place of the first byte of the
 * result that is `record->currencySign`: the destination is longer than the picture by the length
 * of the symbol less one. At most 263 positions.
 */
ZVK_EXPORT void _zvkcMoveNumToNumEdit2(const NumericEditRecord *record, const uint8_t *source, uint8_t *destination,
                                       const CurrencyString *currency);

/**
 * MOVE of items whose length is known only at run time; they may overlap.
 *
 * @param length        bytes of the destination; negative: JUSTIFIED RIGHT
 * @param sourceLength  bytes of the source; negative: the padding is 0x40 instead of 0x20
 */
ZVK_EXPORT void _zvkcMoveVarLenOverlap(uint8_t *destination, int32_t length, const uint8_t *source,
                                       int32_t sourceLength);

/**
 * Resets the altered GO TO targets of an independent segment (50 and above) that a GO TO DEPENDING
 * ON enters.
 *
 * @param index           1-based into segments; below 1 nothing happens
 * @param currentSegment  number of the segment that is left; entering it again resets nothing
 * @param count           entries in the three arrays
 * @param segments        segment number of each target of the GO TO
 * @param targets         current targets, of the entries of the new segment set to `initialTargets`
 * @param entrySegments   segment number of each entry
 */
ZVK_EXPORT void _zvkcRfshGoDepend(int32_t index, int32_t currentSegment, int32_t count, const uint8_t *segments,
                                  void **targets, void *const *initialTargets, const uint8_t *entrySegments);

/** Resets the altered GO TO targets of `segment`; arguments as above. */
ZVK_EXPORT void _zvkcRfshUncond(int32_t segment, int32_t count, void **targets, void *const *initialTargets,
                                const uint8_t *entrySegments);

/**
 * Resets those of `newSegment` if it is another than `currentSegment` and from 50 to 127; arguments
 * as above.
 */
ZVK_EXPORT void _zvkcRfshCond(int32_t currentSegment, int32_t count, int32_t newSegment, void **targets,
                              void *const *initialTargets, const uint8_t *entrySegments);

ZVK_END_DECLS

#endif
