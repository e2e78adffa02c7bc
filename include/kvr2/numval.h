/**
 * FUNCTION NUMVAL and NUMVAL-C: a text to a number.
 *
 * Texts: blanks may be between all parts. A sign before or after the number, or "CR" or "DB"
 * after it, which is minus. NUMVAL-C takes a currency sign before the digits and commas (or points,
 * when the comma is the decimal point) between digits.
 *
 *     NUMVAL      " - 12.5 "  "12.5CR"  ".5"
 *     NUMVAL-C    "EUR 1,234.50"  "+$12"  "12.00-"
 *
 * The first character that does not fit is reported with its place, and nothing after it is read.
 * The number up to it is stored.
 *
 * | Message | When |
 * |---|---|
 * | 97 | no digit |
 * | 151 | 63 digits and more after them: at every further byte; or a value out of the format's range |
 * | 152 | a character that is not allowed at its place |
 * | 155 | NUMVAL-C: a currency string that is not allowed |
 *
 * Threads: any. The locale's radix is that of the C library's locale of the process.
 */
#ifndef KVR2_NUMVAL_H
#define KVR2_NUMVAL_H

#include "kvr2/floats.h"

ZVK_BEGIN_DECLS

enum {
    ZVK_CURRENCY_SIGN = 1,  /**< the one-byte sign of the record */
    ZVK_CURRENCY_STRING = 2 /**< the string that is passed */
};

/** What the program's SPECIAL-NAMES say. NUMVAL looks at the decimal point only. */
typedef struct ZvkNumvalParameters {
    uint8_t currencySign;
    uint8_t decimalPoint;  /**< "." or "," */
    uint16_t currencyKind; /**< ZVK_CURRENCY_... */
} ZvkNumvalParameters;
ZVK_AT(ZvkNumvalParameters, decimalPoint, 1);
ZVK_AT(ZvkNumvalParameters, currencyKind, 2);

/** NUMVAL of `length` bytes into a COMP-2 item; the three names are one. @messages 97, 151, 152 */
ZVK_EXPORT void _Dmr_numval(const ZvkNumvalParameters *parameters, int64_t length, const uint8_t *string,
                            ZvkFloat64Item *result);
ZVK_EXPORT void _zvkcNumval(const ZvkNumvalParameters *parameters, int64_t length, const uint8_t *string,
                            ZvkFloat64Item *result);
ZVK_EXPORT void _zvkcNumvalFloat8(const ZvkNumvalParameters *parameters, int64_t length, const uint8_t *string,
                                  ZvkFloat64Item *result);

/** Into a binary 128 item; the three names are one. @messages 97, 151, 152 */
ZVK_EXPORT void _Dmr_numval_float16(const ZvkNumvalParameters *parameters, int64_t length, const uint8_t *string,
                                    ZvkFloat128Item *result);
ZVK_EXPORT void _zvkcNumval16(const ZvkNumvalParameters *parameters, int64_t length, const uint8_t *string,
                              ZvkFloat128Item *result);
ZVK_EXPORT void _zvkcNumvalFloat16(const ZvkNumvalParameters *parameters, int64_t length, const uint8_t *string,
                                   ZvkFloat128Item *result);

/** Into a Decimal128 item. @messages 97, 151, 152 */
ZVK_EXPORT void _Dmr_numval_decfloat16(const ZvkNumvalParameters *parameters, int64_t length, const uint8_t *string,
                                       ZvkDecimal128Item *result);

/** Names without a function: they do nothing. @return the last argument */
ZVK_EXPORT void *_Dmr_numval_decpacked3232(const ZvkNumvalParameters *parameters, int64_t length, const uint8_t *string,
                                           void *result);
ZVK_EXPORT void *_Dmr_numval_deczoned6332(const ZvkNumvalParameters *parameters, int64_t length, const uint8_t *string,
                                          void *result);

/**
 * NUMVAL-C; `currency` is looked at for ZVK_CURRENCY_STRING only. The three names are one.
 * @messages 97, 151, 152, 155
 */
ZVK_EXPORT void _Dmr_numval_c(const ZvkNumvalParameters *parameters, int64_t length, const uint8_t *string,
                              int64_t currencyLength, const uint8_t *currency, ZvkFloat64Item *result);
ZVK_EXPORT void _zvkcNumvalC(const ZvkNumvalParameters *parameters, int64_t length, const uint8_t *string,
                             int64_t currencyLength, const uint8_t *currency, ZvkFloat64Item *result);
ZVK_EXPORT void _zvkcNumvalCFloat8(const ZvkNumvalParameters *parameters, int64_t length, const uint8_t *string,
                                   int64_t currencyLength, const uint8_t *currency, ZvkFloat64Item *result);
ZVK_EXPORT void _Dmr_numval_c_float16(const ZvkNumvalParameters *parameters, int64_t length, const uint8_t *string,
                                      int64_t currencyLength, const uint8_t *currency, ZvkFloat128Item *result);
ZVK_EXPORT void _zvkcNumvalC16(const ZvkNumvalParameters *parameters, int64_t length, const uint8_t *string,
                               int64_t currencyLength, const uint8_t *currency, ZvkFloat128Item *result);
ZVK_EXPORT void _zvkcNumvalCFloat16(const ZvkNumvalParameters *parameters, int64_t length, const uint8_t *string,
                                    int64_t currencyLength, const uint8_t *currency, ZvkFloat128Item *result);
ZVK_EXPORT void _Dmr_numval_c_decfloat16(const ZvkNumvalParameters *parameters, int64_t length, const uint8_t *string,
                                         int64_t currencyLength, const uint8_t *currency, ZvkDecimal128Item *result);
ZVK_EXPORT void *_Dmr_numval_c_decpacked3232(const ZvkNumvalParameters *parameters, int64_t length,
                                             const uint8_t *string, int64_t currencyLength, const uint8_t *currency,
                                             void *result);
ZVK_EXPORT void *_Dmr_numval_c_deczoned6332(const ZvkNumvalParameters *parameters, int64_t length,
                                            const uint8_t *string, int64_t currencyLength, const uint8_t *currency,
                                            void *result);

/**
 * National text: UTF-16, lengths in bytes, at any alignment; positions in messages count
 * characters.
 * @messages 97, 151, 152, 155
 */
ZVK_EXPORT void _zvkuNumval(const ZvkNumvalParameters *parameters, int64_t length, const uint8_t *string,
                            ZvkFloat64Item *result);
ZVK_EXPORT void _zvkuNumval16(const ZvkNumvalParameters *parameters, int64_t length, const uint8_t *string,
                              ZvkFloat128Item *result);
ZVK_EXPORT void _zvkuNumvalC(const ZvkNumvalParameters *parameters, int64_t length, const uint8_t *string,
                             int64_t currencyLength, const uint8_t *currency, ZvkFloat64Item *result);
ZVK_EXPORT void _zvkuNumvalC16(const ZvkNumvalParameters *parameters, int64_t length, const uint8_t *string,
                               int64_t currencyLength, const uint8_t *currency, ZvkFloat128Item *result);

ZVK_END_DECLS

#endif
