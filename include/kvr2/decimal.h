/**
 * Packed and zoned decimal: arithmetic, comparison, scaling and conversion.
 *
 * An operand is the address of its first byte, at any alignment, and a digit count; the form is part of the entry's name:
 *
 * | Name           | Form                         | Bytes        | Sign                                                        |
 * |----------------|------------------------------|--------------|-------------------------------------------------------------|
 * | `Pckd`         | packed, two digits a byte    | (n >> 1) + 1 | low nibble of the last byte: 0xC plus, 0xD minus            |
 * | `Znd`, `ZndTO` | zoned, trailing overpunch    | n            | zone of the last byte: "0" to "9" plus, "p" to "y" minus    |
 * | `ZndLO`        | zoned, leading overpunch     | n            | zone of the first byte                                      |
 * | `ZndTS`        | zoned, trailing separate     | n + 1        | "+" or "-" behind the digits                                |
 * | `ZndLS`        | zoned, leading separate      | n + 1        | "+" or "-" before the digits                                |
 * | `ZndUS`        | zoned, unsigned              | n            | none                                                        |
 *
 * A digit count never counts a separate sign byte. Entries with two operands take the addresses in the order source, source, destination
 * and the counts in the reverse order. Counts up to 63 are supported.
 *
 * Reading is generous: a packed sign nibble 0xB is minus, every other one but 0xD is plus; an overpunched byte may also have zone 0xD0
 * (minus) or 0xC0, 0xF0 (plus), or be one of "{", "A" to "I" (plus 0 to 9), "}", "J" to "R" (minus 0 to 9), or a space or NUL (plus 0).
 * With an even count a packed item's first nibble belongs to no digit: it is cleared in results and should be zero in operands.
 *
 * No entry reports a size error. A result that is too long loses its left digits without a message; compiled code tests for ON SIZE
 * ERROR itself.
 *
 * Environment, read by the first call of any of these entries in the process (a variable counts when it is set and not empty):
 * `COBOL_BCD_NOVALIDATE` (a number: the low eight bits of the mode word), `COBOL_BCD_SAFE`, `COBOL_BCD_FAST`, `COBOL_BCD_DEBUG` (dump
 * operands and results to stderr), `COBOL_BCD_EBCDIC`.
 *
 * Messages: 903 for an item that is no number, in the families and modes that validate (arithmetic does unless NOVALIDATE has bit 1);
 * 40 for a separate sign that is neither "+" nor "-"; 902 for a zero divisor. When the message returns, the entry goes on with the bytes as
 * they stand.
 *
 * Threads: every entry may run on several threads at once, on items of their own.
 */
#ifndef KVR2_DECIMAL_H
#define KVR2_DECIMAL_H

#include "kvr2/export.h"

ZVK_BEGIN_DECLS

ZVK_END_DECLS

#endif
