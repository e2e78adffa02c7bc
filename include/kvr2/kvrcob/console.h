/**
 * DISPLAY and ACCEPT: what the library shows is text; numbers become text here.
 */
#ifndef KVR2_KVRCOB_CONSOLE_H
#define KVR2_KVRCOB_CONSOLE_H

/* 128-bit integers are no ISO C. */
#if defined(__GNUC__)
#pragma GCC system_header
#endif

#include "kvr2/kvrcob/base.h"
#include "kvr2/kvrcob/numbers.h"

/* ---- DISPLAY, ACCEPT */

#define KVR_DISPLAY_ERROR 100

KVR_SHARED void kvr_display(DisplayItem *items, int count, int device, int noAdvancing)
{
    DisplayRequest request;
    if (device == KVR_DISPLAY_ERROR) {
        int i;
        fflush(stdout);
        for (i = 0; i < count; i++) fwrite(items[i].address, 1, items[i].size, stderr);
        if (!noAdvancing) fputc('\n', stderr);
        return;
    }
    memset(&request, 0, sizeof request);
    request.itemCount = count;
    request.device = (uint8_t)device;
    request.options = noAdvancing ? ZVK_DISPLAY_NO_ADVANCING : 0;
    request.decimalPoint = '.';
    _zvkcDisplay(&request, items);
}

/* CURRENT-DATE (0), MM/DD/YY, and TIME-OF-DAY (1), HHMMSS, of older programs. */
KVR_SHARED uint8_t *kvr_register_of_clock(int which)
{
    static uint8_t text[2][8];
    uint8_t now[8];
    if (which == 1) {
        _zvkcAccept(ZVK_ACCEPT_TIME, 8, now);
        memcpy(text[1], now, 6);
        return text[1];
    }
    _zvkcAccept(ZVK_ACCEPT_DATE, 6, now);
    text[0][2] = text[0][5] = '/';
    memcpy(text[0], now + 2, 2);
    memcpy(text[0] + 3, now + 4, 2);
    memcpy(text[0] + 6, now, 2);
    return text[0];
}

/* EXHIBIT CHANGED: is this text another than the one kept (its length, then up to 252 bytes)? */
KVR_SHARED int kvr_changed(uint8_t *kept, const void *text, uint64_t length)
{
    const uint32_t mark = (uint32_t)length + 1;
    const size_t compared = length < 252 ? (size_t)length : 252;
    if (memcmp(kept, &mark, 4) == 0 && memcmp(kept + 4, text, compared) == 0) return 0;
    memcpy(kept, &mark, 4);
    memcpy(kept + 4, text, compared);
    return 1;
}

/*
 * A packed number as text. `width`: digits shown; `sign`: 0 none, 1 "-" or "+" in front, 2 "-" in
 * front of a negative one, without leading zeros.
 */
KVR_SHARED int kvr_show_number(const uint8_t *packed, int digits, int width, int places, int sign, char point,
                               uint8_t *out)
{
    uint8_t text[70];
    int length = 0, i, whole = width - places;
    if (places > width) width = places, whole = 0;
    _zvkcBCD_CONV_Pckd_To_ZndLS(packed, text, width, digits);
    if (sign == 1) out[length++] = text[0];
    if (sign == 2) {
        if (text[0] == '-') out[length++] = '-';
        i = 0;
        while (i < whole - 1 && text[1 + i] == '0') i++;
        for (; i < whole; i++) out[length++] = text[1 + i];
        if (whole <= 0) out[length++] = '0';
        while (places > 0 && text[whole + places] == '0') places--;
    } else {
        for (i = 0; i < whole; i++) out[length++] = text[1 + i];
    }
    if (places > 0) {
        out[length++] = (uint8_t)point;
        for (i = 0; i < places; i++) out[length++] = text[1 + whole + i];
    }
    return length;
}

/* What the process's locale puts between the digits, one byte or several, becomes `point`. */
KVR_SHARED int kvr_show_float(double v, uint8_t *out, int digits, char point)
{
    char text[48], *shown = (char *)out, *at, *to;
    int length = snprintf(text, sizeof text, "%.*E", digits - 1, v == 0 ? 0 : v), exponent, i, n = 0;
    char *e = (char *)memchr(text, 'E', (size_t)length), *from = text;
    if (!e || !memchr("0123456789", e[-1], 10)) return snprintf(shown, 48, "%g", v); /* no number */
    exponent = atoi(e + 1);
    if (*from == '-') shown[n++] = *from++;
    for (at = to = from; at < e; at++)
        if (*at >= '0' && *at <= '9') *to++ = *at; /* the digits alone */
    e = to;
    while (e > from + 1 && e[-1] == '0') e--;
    digits = (int)(e - from);

    if (exponent < -20 || exponent > 37) { /* 1.5E+100 */
        shown[n++] = *from;
        if (digits > 1) shown[n++] = point;
        for (i = 1; i < digits; i++) shown[n++] = from[i];
        return n + snprintf(shown + n, 8, "E%+03d", exponent);
    }
    if (exponent < 0) {
        shown[n++] = '0';
        shown[n++] = point;
        for (i = -1; i > exponent; i--) shown[n++] = '0';
    }
    for (i = 0; i < digits || i <= exponent; i++) {
        if (exponent >= 0 && i == exponent + 1) shown[n++] = point;
        shown[n++] = i < digits ? from[i] : '0';
    }
    return n;
}

KVR_SHARED int kvr_show_pointer(const uint8_t *p, uint8_t *out)
{
    return snprintf((char *)out, 24, "0x%016llx", (unsigned long long)kvr_get_u8(p));
}

/*
 * One line into an item, whatever the run-time option says of ACCEPT from files. The library leaves
 * the item as it is when the line is empty; a program that asks for a line expects blanks then.
 */
KVR_INLINE void kvr_accept(uint32_t flags, int64_t length, uint8_t *to)
{
    memset(to, ' ', (size_t)length);
    _zvkcAccept(flags, length, to);
}

/* Whether standard input has no line any more. */
KVR_SHARED int kvr_input_ended(void)
{
    int c;
    fflush(stdout);
    c = getc(stdin);
    if (c != EOF) ungetc(c, stdin);
    return c == EOF;
}

#endif
