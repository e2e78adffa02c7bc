/**
 * Packed and zoned decimal: arithmetic, comparison, scaling and conversion.
 *
 * An operand is the address of its first byte, at any alignment, and a digit count; the form is
 * part of the entry's name:
 *
 * | Name           | Form                         | Bytes        | Sign                                                        |
 * |----------------|------------------------------|--------------|-------------------------------------------------------------|
 * | `Pckd`         | packed, two digits a byte    | (n >> 1) + 1 | low nibble of the last byte: 0xC plus, 0xD minus            |
 * | `Znd`, `ZndTO` | zoned, trailing overpunch    | n            | zone of the last byte: "0" to "9" plus, "p" to "y" minus    |
 * | `ZndLO`        | zoned, leading overpunch     | n            | zone of the first byte                                      |
 * | `ZndTS`        | zoned, trailing separate     | n + 1        | "+" or "-" after the digits                                |
 * | `ZndLS`        | zoned, leading separate      | n + 1        | "+" or "-" before the digits                                |
 * | `ZndUS`        | zoned, unsigned              | n            | none                                                        |
 *
 * A digit count never counts a separate sign byte. Entries with two operands take the addresses in
 * the order source, source, destination and the counts in the reverse order. Counts up to 63 are
 * supported.
 *
 * Reading is generous: a packed sign nibble 0xB is minus, every other one but 0xD is plus; an
 * overpunched byte may also have zone 0xD0 (minus) or 0xC0, 0xF0 (plus), or be one of "{", "A" to
 * "I" (plus 0 to 9), "}", "J" to "R" (minus 0 to 9), or a space or NUL (plus 0). With an even count
 * a packed item's first nibble belongs to no digit: it is cleared in results and should be zero in
 * operands.
 *
 * No entry reports a size error. A result that is too long loses its left digits without a message;
 * compiled code tests for ON SIZE ERROR itself.
 *
 * Environment, read by the first call of any of these entries in the process (a variable counts
 * when it is set and not empty): `COBOL_BCD_NOVALIDATE` (a number: the low eight bits of the mode
 * word), `COBOL_BCD_SAFE`, `COBOL_BCD_FAST`, `COBOL_BCD_DEBUG` (dump operands and results to
 * stderr), `COBOL_BCD_EBCDIC`.
 *
 * Messages: 903 for an item that is no number, in the families and modes that validate (arithmetic
 * does unless NOVALIDATE has bit 1); 40 for a separate sign that is neither "+" nor "-"; 902 for a
 * zero divisor. When the message returns, the entry goes on with the bytes as they are.
 *
 * Threads: every entry may run on several threads at once, on items of their own.
 */
#ifndef KVR2_DECIMAL_H
#define KVR2_DECIMAL_H

#include "kvr2/export.h"

ZVK_BEGIN_DECLS

/* ---- Addition and subtraction ---- */

/**
 * ADD: dst = op1 + op2. SUB: dst = op1 - op2.
 *
 * The result is cut on the left to dstDigits digits. It has the sign of the greater magnitude, and
 * of op1 when a difference is zero: +5 and -5 give +0, -5 and +5 give -0; a negative zero is not
 * made positive here.
 *
 * `SUB_Pckd` of operands with equally many significant digits, the first one smaller, takes 90 off
 * each pair of digits 91 to 99 in its result but for the last byte: 1001 - 2000 is -99 in packed
 * and -999 in zoned items.
 *
 * @param op1, op2  items of op1Digits and op2Digits digits, 1 to 63
 * @param dst       item of dstDigits digits, 1 to 63; must not overlap the operands
 * @return dst
 * @messages 903 for an operand that is no number, one for each, unless mode bit 0x001 is set
 * @threads  any, on items of their own
 */
ZVK_EXPORT uint8_t *_zvkcBCD_ADD_Pckd(const uint8_t *op1, const uint8_t *op2, uint8_t *dst, int32_t dstDigits,
                                      int32_t op2Digits, int32_t op1Digits);
ZVK_EXPORT uint8_t *_zvkcBCD_ADD_Znd(const uint8_t *op1, const uint8_t *op2, uint8_t *dst, int32_t dstDigits,
                                     int32_t op2Digits, int32_t op1Digits);
ZVK_EXPORT uint8_t *_zvkcBCD_SUB_Pckd(const uint8_t *op1, const uint8_t *op2, uint8_t *dst, int32_t dstDigits,
                                      int32_t op2Digits, int32_t op1Digits);
ZVK_EXPORT uint8_t *_zvkcBCD_SUB_Znd(const uint8_t *op1, const uint8_t *op2, uint8_t *dst, int32_t dstDigits,
                                     int32_t op2Digits, int32_t op1Digits);

/**
 * Adds a binary integer to an item in place, or subtracts it.
 *
 * A value of 0 leaves the item as it is, byte for byte. What does not fit on the left is dropped.
 * The packed forms that subtract (SUB of a value of the item's sign, ADD of one of the other sign)
 * turn the item's sign when the units borrow, and turn it again when the whole result has to be
 * complemented: 15 - 7 gives -8, 100 - 1 gives -99. The zoned forms have no such turn: 15 - 7 gives
 * 8.
 *
 * @param op     item of opDigits digits, 1 to 63; operand and result
 * @param value  signed binary integer; the most negative one counts with its magnitude
 * @return op
 * @messages 903 for an item that is no number, unless mode bit 0x001 is set
 * @threads  any, on items of their own
 */
ZVK_EXPORT uint8_t *_zvkcBCD_ADD_Pckd_Int8(uint8_t *op, int32_t opDigits, int64_t value);
ZVK_EXPORT uint8_t *_zvkcBCD_ADD_Pckd_Int4(uint8_t *op, int32_t opDigits, int32_t value);
ZVK_EXPORT uint8_t *_zvkcBCD_ADD_Znd_Int8(uint8_t *op, int32_t opDigits, int64_t value);
ZVK_EXPORT uint8_t *_zvkcBCD_ADD_Znd_Int4(uint8_t *op, int32_t opDigits, int32_t value);
ZVK_EXPORT uint8_t *_zvkcBCD_SUB_Pckd_Int8(uint8_t *op, int32_t opDigits, int64_t value);
ZVK_EXPORT uint8_t *_zvkcBCD_SUB_Pckd_Int4(uint8_t *op, int32_t opDigits, int32_t value);
ZVK_EXPORT uint8_t *_zvkcBCD_SUB_Znd_Int8(uint8_t *op, int32_t opDigits, int64_t value);
ZVK_EXPORT uint8_t *_zvkcBCD_SUB_Znd_Int4(uint8_t *op, int32_t opDigits, int32_t value);

/* ---- Signs ---- */

/**
 * ABS: dst = |src|, cut or filled with zeros on the left.
 *
 * `ABS_ZndLO` decodes the source's first byte only when the source is not longer than the
 * destination, and writes it into the destination's first byte: in a longer destination an
 * overpunched byte stays where it lands.
 *
 * @param src  item of srcDigits digits, 1 to 63
 * @param dst  item of dstDigits digits, 1 to 63
 * @return dst
 * @messages 903 for a source that is no number: `ABS_Pckd` unless mode bit 0x001 is set, the zoned
 *           forms only when bit 0x010 is
 * @threads  any, on items of their own
 */
ZVK_EXPORT uint8_t *_zvkcBCD_ABS_Pckd(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_ABS_Znd(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_ABS_ZndLO(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits);

/**
 * NEG: dst = -src, cut or filled with zeros on the left. A source of zero gives +0 unless mode bit
 * 0x002 is set.
 *
 * `NEG_ZndLO` keeps the sign instead of turning it (and makes a negative zero positive); the digit
 * goes as in `ABS_ZndLO`.
 *
 * @param src  item of srcDigits digits, 1 to 63
 * @param dst  item of dstDigits digits, 1 to 63
 * @return dst
 * @messages 903 for a source that is no number, unless mode bit 0x001 is set
 * @threads  any, on items of their own
 */
ZVK_EXPORT uint8_t *_zvkcBCD_NEG_Pckd(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_NEG_Znd(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_NEG_ZndLO(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits);

/* ---- Comparison ---- */

/**
 * Compare op1 with op2: equal, not equal, greater, greater or equal, less, less or equal. +0 and -0
 * are equal.
 *
 * An item compared with itself (same address, same number of bytes) is equal whatever it holds.
 * Zoned items of the same sign and length are compared with their zones first, so equal digits in
 * different zones are unequal there.
 *
 * @param op1, op2  items of op1Digits and op2Digits digits, 1 to 63
 * @return 1 when the relation holds, else 0
 * @messages 903 for an operand that is no number, one for each, only when mode bit 0x040 is set
 * @threads  any
 */
ZVK_EXPORT int32_t _zvkcBCD_EQU_Pckd(const uint8_t *op1, const uint8_t *op2, int32_t op2Digits, int32_t op1Digits);
ZVK_EXPORT int32_t _zvkcBCD_NEQ_Pckd(const uint8_t *op1, const uint8_t *op2, int32_t op2Digits, int32_t op1Digits);
ZVK_EXPORT int32_t _zvkcBCD_GRT_Pckd(const uint8_t *op1, const uint8_t *op2, int32_t op2Digits, int32_t op1Digits);
ZVK_EXPORT int32_t _zvkcBCD_GEQ_Pckd(const uint8_t *op1, const uint8_t *op2, int32_t op2Digits, int32_t op1Digits);
ZVK_EXPORT int32_t _zvkcBCD_LES_Pckd(const uint8_t *op1, const uint8_t *op2, int32_t op2Digits, int32_t op1Digits);
ZVK_EXPORT int32_t _zvkcBCD_LEQ_Pckd(const uint8_t *op1, const uint8_t *op2, int32_t op2Digits, int32_t op1Digits);
ZVK_EXPORT int32_t _zvkcBCD_EQU_Znd(const uint8_t *op1, const uint8_t *op2, int32_t op2Digits, int32_t op1Digits);
ZVK_EXPORT int32_t _zvkcBCD_NEQ_Znd(const uint8_t *op1, const uint8_t *op2, int32_t op2Digits, int32_t op1Digits);
ZVK_EXPORT int32_t _zvkcBCD_GRT_Znd(const uint8_t *op1, const uint8_t *op2, int32_t op2Digits, int32_t op1Digits);
ZVK_EXPORT int32_t _zvkcBCD_GEQ_Znd(const uint8_t *op1, const uint8_t *op2, int32_t op2Digits, int32_t op1Digits);
ZVK_EXPORT int32_t _zvkcBCD_LES_Znd(const uint8_t *op1, const uint8_t *op2, int32_t op2Digits, int32_t op1Digits);
ZVK_EXPORT int32_t _zvkcBCD_LEQ_Znd(const uint8_t *op1, const uint8_t *op2, int32_t op2Digits, int32_t op1Digits);

/**
 * NOT: whether an item is zero, of either sign.
 *
 * @param op  item of opDigits digits, 1 to 63
 * @return 1 when all digits are zero, else 0
 * @messages 903 for an item that is no number, only when mode bit 0x040 is set
 * @threads  any
 */
ZVK_EXPORT int32_t _zvkcBCD_NOT_Pckd(const uint8_t *op, int32_t opDigits);
ZVK_EXPORT int32_t _zvkcBCD_NOT_Znd(const uint8_t *op, int32_t opDigits);

/* ---- Multiplication and division ---- */

/**
 * MPY: dst = op1 * op2.
 *
 * The product is cut on the left to dstDigits digits. It is positive when the signs are equal and
 * negative when they differ, also when it is zero. `MPY_Znd` takes the last digit of its operands
 * by the low nibble and does not decode letters.
 *
 * The factors of `MPY_Pckd` may have 64 significant digits together, where a factor with more bytes
 * than the destination counts as dstDigits. Beyond that nothing is computed: dst gets the digits
 * that the last product on this thread left.
 *
 * @param op1, op2  items of op1Digits and op2Digits digits, 1 to 63
 * @param dst       item of dstDigits digits, 1 to 63; must not overlap the operands
 * @return dst
 * @messages 903 for an operand that is no number, one for each, unless mode bit 0x001 is set
 * @threads  any, on items of their own
 */
ZVK_EXPORT uint8_t *_zvkcBCD_MPY_Pckd(const uint8_t *op1, const uint8_t *op2, uint8_t *dst, int32_t dstDigits,
                                      int32_t op2Digits, int32_t op1Digits);
ZVK_EXPORT uint8_t *_zvkcBCD_MPY_Znd(const uint8_t *op1, const uint8_t *op2, uint8_t *dst, int32_t dstDigits,
                                     int32_t op2Digits, int32_t op1Digits);

/**
 * DIV: dst = the whole part of op1 / op2. MOD: dst = the remainder, which has the sign of op1.
 *
 * Results are cut on the left. A quotient is negative when the signs differ, also when its digits
 * are zero after the cut, with one exception: when op1 is less than op2 in magnitude it is +0. The
 * remainder of two equal magnitudes is +0, any other zero remainder has op1's sign. With an even
 * count the first nibble of a packed quotient is not cleared and may hold a digit that was cut.
 *
 * @param op1, op2  dividend and divisor, items of op1Digits and op2Digits digits, 1 to 63
 * @param dst       item of dstDigits digits, 1 to 63; must not overlap the operands
 * @return dst
 * @messages 903 for an operand that is no number, one for each, unless mode bit 0x001 is set; 902
 *           when op2 is zero, after whose return dst holds
 *           digits without meaning
 * @threads  any, on items of their own
 */
ZVK_EXPORT uint8_t *_zvkcBCD_DIV_Pckd(const uint8_t *op1, const uint8_t *op2, uint8_t *dst, int32_t dstDigits,
                                      int32_t op2Digits, int32_t op1Digits);
ZVK_EXPORT uint8_t *_zvkcBCD_DIV_Znd(const uint8_t *op1, const uint8_t *op2, uint8_t *dst, int32_t dstDigits,
                                     int32_t op2Digits, int32_t op1Digits);
ZVK_EXPORT uint8_t *_zvkcBCD_MOD_Pckd(const uint8_t *op1, const uint8_t *op2, uint8_t *dst, int32_t dstDigits,
                                      int32_t op2Digits, int32_t op1Digits);
ZVK_EXPORT uint8_t *_zvkcBCD_MOD_Znd(const uint8_t *op1, const uint8_t *op2, uint8_t *dst, int32_t dstDigits,
                                     int32_t op2Digits, int32_t op1Digits);

/**
 * DIVR: quotient and remainder at once, as DIV and MOD give them.
 *
 * @param op1, op2   dividend and divisor, items of op1Digits and op2Digits digits, 1 to 63
 * @param quotient   item of quotientDigits digits, or null
 * @param remainder  item of remainderDigits digits, or null; no two of the four items may overlap
 * @return `DIVR_Pckd`: 0 when op1 is less than op2 in magnitude, else 1; `DIVR_Znd`: quotient
 * @messages as DIV
 * @threads  any, on items of their own
 */
ZVK_EXPORT int32_t _zvkcBCD_DIVR_Pckd(const uint8_t *op1, const uint8_t *op2, uint8_t *quotient, uint8_t *remainder,
                                      int32_t remainderDigits, int32_t quotientDigits, int32_t op2Digits,
                                      int32_t op1Digits);
ZVK_EXPORT uint8_t *_zvkcBCD_DIVR_Znd(const uint8_t *op1, const uint8_t *op2, uint8_t *quotient, uint8_t *remainder,
                                      int32_t remainderDigits, int32_t quotientDigits, int32_t op2Digits,
                                      int32_t op1Digits);

ZVK_END_DECLS

#endif
