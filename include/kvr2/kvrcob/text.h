/**
 * Texts: copies, comparisons, class tests.
 */
#ifndef KVR2_KVRCOB_TEXT_H
#define KVR2_KVRCOB_TEXT_H

/* 128-bit integers are no ISO C. */
#if defined(__GNUC__)
#pragma GCC system_header
#endif

#include "kvr2/conditions.h"
#include "kvr2/kvrcob/base.h"

/* ---- Bytes */

KVR_INLINE uint8_t *kvr_copy(void *to, const uint8_t *from, int64_t length)
{
    return (uint8_t *)memcpy(to, from, length < 0 ? 0 : (size_t)length);
}

/* Copies of the element at `first` after it, `count` in all. */
KVR_SHARED void kvr_replicate(uint8_t *first, uint64_t size, uint64_t count)
{
    uint64_t done = 1;
    while (done < count) {
        uint64_t n = done < count - done ? done : count - done;
        memcpy(first + done * size, first, n * size);
        done += n;
    }
}

KVR_SHARED int kvr_compare(const uint8_t *a, int64_t aLength, const uint8_t *b, int64_t bLength)
{
    int64_t n = aLength < bLength ? aLength : bLength;
    int order = memcmp(a, b, n > 0 ? (size_t)n : 0);
    if (order) return order;
    if (aLength > n) return _zvkcCmpToPad(a + n, ' ', (int32_t)(aLength - n));
    return -_zvkcCmpToPad(b + n, ' ', (int32_t)(bLength - n));
}

/*
 * INSPECT TRAILING: how often `compared` ends the text, or the part of it before and after what the
 * phrases say; `result`, if not null, takes its place. Without the text of BEFORE the part is the
 * whole, without that of AFTER it is empty.
 */
KVR_SHARED int64_t kvr_inspect_trailing(uint8_t *text, int64_t length, const uint8_t *compared, int64_t size,
                                        const uint8_t *before, int64_t beforeSize, const uint8_t *after,
                                        int64_t afterSize, const uint8_t *result)
{
    int64_t count = 0;
    uint8_t *end = text + length, *place;
    if (size <= 0 || length <= 0) return 0;
    if (before) {
        place = (uint8_t *)memmem(text, (size_t)length, before, (size_t)beforeSize);
        if (place) end = place;
    }
    if (after) {
        place = (uint8_t *)memmem(text, (size_t)length, after, (size_t)afterSize);
        if (!place) return 0;
        text = place + afterSize;
    }
    length = end - text;
    while (length >= size && memcmp(text + length - size, compared, (size_t)size) == 0) {
        length -= size;
        if (result) memmove(text + length, result, (size_t)size);
        count++;
    }
    return count;
}

/* ---- Class tests */

/* The table of the class of digits, for _zvkcClasUserDef. */
#define KVR_16_OTHERS 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1
#define KVR_64_OTHERS KVR_16_OTHERS, KVR_16_OTHERS, KVR_16_OTHERS, KVR_16_OTHERS
static const uint8_t kvr_digits[256] __attribute__((unused)) = {
    KVR_16_OTHERS, KVR_16_OTHERS, KVR_16_OTHERS, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1,
    KVR_64_OTHERS, KVR_64_OTHERS, KVR_64_OTHERS};

/*
 * NUMERIC of signed zoned items. form: 1 trailing, 2 leading, 3 trailing separate, 4 leading
 * separate; digits without a separate sign. The library's own test lets blanks pass at both ends.
 */
KVR_SHARED int kvr_is_zoned(const uint8_t *p, int32_t digits, int form)
{
    const uint8_t *sign = form == 1 ? p + digits - 1 : form == 3 ? p + digits : p;
    if (form >= 3) return (*sign == '+' || *sign == '-') && _zvkcClasUserDef(form == 4 ? p + 1 : p, digits, kvr_digits);
    /* The native form of a sign, or as punched cards and EBCDIC machines have it: {, A to R, }. */
    if (!((*sign >= '0' && *sign <= '9') || (*sign >= 'p' && *sign <= 'y') || (*sign >= 'A' && *sign <= 'R') ||
          *sign == '{' || *sign == '}'))
        return 0;
    return _zvkcClasUserDef(form == 2 ? p + 1 : p, digits - 1, kvr_digits);
}

/* NUMERIC of packed items; one without a sign is not negative. */
KVR_SHARED int kvr_is_packed(const uint8_t *p, int32_t digits, int isSigned)
{
    return _zvkcClasPackedDec(p, digits) &&
           (isSigned || ((p[digits / 2] & 15) != 0x0D && (p[digits / 2] & 15) != 0x0B));
}

#endif
