/**
 * Date and time services that programs CALL by name: LSVDAYS and its like.
 *
 * A Lilian day number counts days of the Gregorian calendar from 15 October 1582, day 1, to 31
 * December 9999, day 3074324. Lilian seconds are a double: day * 86400 plus the seconds of the day,
 * 86400 to 265621679999.999.
 *
 * @code
 *     ZVK_VSTRING(10) date = {10, "2026-12-31"}, picture = {10, "YYYY-MM-DD"};
 *     int32_t lilian;
 *     FeedbackCode fc;
 *     LSVDAYS((VSTRING *)&date, (VSTRING *)&picture, &lilian, &fc); // lilian 162246, fc all zero
 * @endcode
 *
 * Pictures. In input, both the picture and the date are cleared of leading blanks, folded to upper
 * case, each run of blanks becomes one "/", and a "/" at the end is dropped. In output the letters
 * of a picture may be of either case.
 *
 * | element | input | output |
 * |---|---|---|
 * | `YYYY` | four digits | four digits |
 * | `YY` | two digits, by the century window; in an era its year | two digits |
 * | `ZYY` | one or two digits | the era's year without leading zeros; only with an era |
 * | `YYY`, `ZY` | three digits (`ZY`: or two), after an era only | `YYY`: the era's year, "000" without one |
 * | `Y` | not valid | last digit of the year; the letter in an era or after `Z` |
 * | `MM`, `ZM` | month; `ZM`, `ZMM`: one or two digits | two digits; without leading zero |
 * | `MMM` | abbreviated name of the month, three bytes | the name, each letter in the case of the picture's |
 * | `MMMM` to 20, `MMMZ` | name of the month | padded to the picture's width; with a `Z` before or after it not padded |
 * | `RRRR`, `RRRZ` | I to XII | padded to four; `RRRZ`: not padded |
 * | `DD`, `ZD`, `DDD` | day of the month; day of the year | likewise |
 * | `WWW`, `WWWW` to 20, `WWWZ` | name of the day of the week; not held against the date | as the months |
 * | `HH`, `ZH` | hour 0 to 23, with `AP` 0 to 12 | with `AP` 1 to 12 |
 * | `MI`, `SS`, `ZS` | minutes, seconds | likewise |
 * | `9`, `99`, `999` | fraction of a second | digits of the milliseconds |
 * | `AP`, `A.P`, `A.P.` | AM or PM, A.M or P.M with or without a "." after it | AM, A.M, A.M. in the picture's case |
 * | `<JJJJ>` | name of a Japanese era | likewise |
 * | `<CCCC>`, `<CCCCCCCC>` | name of a Chinese era | likewise |
 * | `Z` | the next element may have a digit less | the next one has no leading zeros; `MI` and `DDD` keep them |
 * | other | one character, whatever it is; not at the start | the character |
 *
 * The names of months and days are those of the process's locale. Eras are in the message catalog
 * (message 216). Under `AP` 12 AM is hour 12 to the scanner, which the seconds of LSVSECS count as
 * 0; under `A.P` it is hour 0. On purpose.
 *
 * The length of a VSTRING is unsigned. A feedback pointer may be null: the service then writes the
 * message of the token instead.
 *
 * | message | severity | meaning |
 * |---|---|---|
 * | 813 | 3 | no work storage |
 * | 2502, 2503 | 3 | the clock or the offset from UTC cannot be read |
 * | 2505, 2512 | 3 | Lilian seconds, Lilian day out of range |
 * | 2506, 2522 | 3 | no era for that date (seconds, days) |
 * | 2507 | 3 | picture and date do not fix a day |
 * | 2508, 2511 | 3 | day not valid for its month, or day of the year (2511: LSVISEC) |
 * | 2509, 2521 | 3 | era not known; year not valid for its era |
 * | 2510, 2516, 2519, 2515 | 3 | hours, minutes, seconds, milliseconds out of range |
 * | 2513, 2514 | 3 | before 15 October 1582 or after 9999 (2514: LSVISEC, the year) |
 * | 2517 | 3 | month out of range |
 * | 2518 | 3 | picture not valid |
 * | 2520, 2525 | 3 | no digit where one is required, or text too short (LSVDAYS, LSVSECS) |
 * | 2526, 2527 | 2 | result cut at the end of the field (LSVDATE, LSVDATM) |
 * | 2531 | 3 | TKJEDT4: no local time |
 * | 2533 | 3 | LSVSCEN: not 0 to 100 |
 * | 2534 | 3 | the date cannot be written |
 *
 * A failed call leaves its numeric results at 0. Threads: any; TZ is read at each call that needs
 * it.
 */
#ifndef KVR2_DATESERVICES_H
#define KVR2_DATESERVICES_H

#include "kvr2/export.h"

ZVK_BEGIN_DECLS

/**
 * A string with its length in front, of at most `n` bytes. As a service takes it: any room,
 * `length` bytes count.
 */
#define ZVK_VSTRING(n)                                                                                                 \
    struct {                                                                                                           \
        uint16_t length;                                                                                               \
        char text[n];                                                                                                  \
    }
typedef struct VSTRING {
    uint16_t length; /**< may lie at any address */
    __extension__ char text[];
} __attribute__((packed, aligned(1))) VSTRING;
ZVK_AT(VSTRING, text, 2);

/** The condition token. 12 bytes, at any address; all zero: success. */
typedef struct FeedbackCode {
    uint16_t severity;
    uint16_t messageNumber;
    uint8_t flags;    /**< 0x59 an error, 0x51 a warning */
    char facility[3]; /**< "LSV" */
    uint32_t instanceInfo;
} __attribute__((packed, aligned(1))) FeedbackCode;
ZVK_AT(FeedbackCode, messageNumber, 2);
ZVK_AT(FeedbackCode, flags, 4);
ZVK_AT(FeedbackCode, facility, 5);
ZVK_AT(FeedbackCode, instanceInfo, 8);
ZVK_STATIC_ASSERT(sizeof(FeedbackCode) == 12, "FeedbackCode");

/** Numbers of the services, at any address. */
typedef int32_t LsvNumber __attribute__((aligned(1)));
typedef uint32_t LsvUnsigned __attribute__((aligned(1)));
typedef double LsvSeconds __attribute__((aligned(1)));

/** Text to Lilian day; an empty picture stands for MM/DD/YY. */
ZVK_EXPORT void LSVDAYS(const VSTRING *date, const VSTRING *picture, LsvNumber *lilian, FeedbackCode *fc);

/**
 * Text to the day number of FUNCTION INTEGER-OF-DATE. @messages 160 for a date before 1601, as of
 * that function
 */
ZVK_EXPORT void LSVCBLDY(const VSTRING *date, const VSTRING *picture, LsvNumber *days, FeedbackCode *fc);

/**
 * Lilian day to text. @param out 80 bytes, padded with blanks; an empty picture stands for MM/DD/YY
 */
ZVK_EXPORT void LSVDATE(const LsvNumber *lilian, const VSTRING *picture, char *out, FeedbackCode *fc);

/**
 * Sets how many years before the present one the century window of two-digit years starts: 0 to
 * 100, 80 at a run unit's start.
 */
ZVK_EXPORT void LSVSCEN(const LsvUnsigned *century, FeedbackCode *fc);

/** The century window that is set. */
ZVK_EXPORT void LSVQCEN(LsvUnsigned *century, FeedbackCode *fc);

/**
 * Passes a run of literal characters that picture and date have in common, and moves both
 * positions.
 *
 * @return 0; 24 if already the first character differs, or one of the two is at its end
 */
ZVK_EXPORT int32_t LSVZDELIMITERS(const char **picture, const char *pictureEnd, const char **date, const char *dateEnd);

/** An era. */
typedef struct Era {
    uint32_t startYear, startMonth, startDay;
    uint32_t lengthInYears;
} Era;

/**
 * Eras of a language, first to last. After `eras[count]` follow `count` names of seven bytes,
 * NUL-terminated.
 */
typedef struct EraTable {
    uint32_t count; /**< at most 20 */
    __extension__ Era eras[];
} EraTable;
ZVK_STATIC_ASSERT(sizeof(Era) == 16, "Era");
ZVK_AT(EraTable, eras, 4);

/**
 * Loads the Japanese or the Chinese eras from the message catalog.
 *
 * @param table  gets the table, to be freed by `_zvkcfree`; null if there is none or its text does
 *               not begin with a count of at most 20
 * @messages 206 with 2, severe, if the catalog has no such text
 */
ZVK_EXPORT void LSVZGetJapEra(EraTable **table, FeedbackCode *fc);
ZVK_EXPORT void LSVZGetChiEra(EraTable **table, FeedbackCode *fc);

/** The day of the week of a Lilian day: 1 Sunday to 7 Saturday. */
ZVK_EXPORT void LSVDYWK(const LsvNumber *lilian, LsvNumber *weekday, FeedbackCode *fc);

/** Date and time to Lilian seconds. */
ZVK_EXPORT void LSVISEC(const LsvNumber *year, const LsvNumber *month, const LsvNumber *day, const LsvNumber *hours,
                        const LsvNumber *minutes, const LsvNumber *seconds, const LsvNumber *milliseconds,
                        LsvSeconds *lilianSeconds, FeedbackCode *fc);

/**
 * Lilian seconds to date and time. From 0.1 milliseconds before a minute or an hour on that one
 * counts, and what follows it shows 60; milliseconds show 1000 from half a millisecond before a
 * second on.
 */
ZVK_EXPORT void LSVSECI(const LsvSeconds *lilianSeconds, LsvNumber *year, LsvNumber *month, LsvNumber *day,
                        LsvNumber *hours, LsvNumber *minutes, LsvNumber *seconds, LsvNumber *milliseconds,
                        FeedbackCode *fc);

/** Text to Lilian seconds; an empty picture stands for MM/DD/YY HH:MI:SS AP. */
ZVK_EXPORT void LSVSECS(const VSTRING *timestamp, const VSTRING *picture, LsvSeconds *lilianSeconds, FeedbackCode *fc);

/**
 * Lilian seconds to text; an empty picture stands for MM/DD/YY HH:MI:SS AP. @param out 80 bytes,
 * padded with blanks
 */
ZVK_EXPORT void LSVDATM(const LsvSeconds *lilianSeconds, const VSTRING *picture, char *out, FeedbackCode *fc);

/** The present time in Greenwich. LSVUTC is the same. */
ZVK_EXPORT void LSVGMT(LsvNumber *lilian, LsvSeconds *lilianSeconds, FeedbackCode *fc);
ZVK_EXPORT void LSVUTC(LsvNumber *lilian, LsvSeconds *lilianSeconds, FeedbackCode *fc);

/**
 * The offset of local time from Greenwich, positive in the east. `minutes` is never negative;
 * `seconds` is the whole offset.
 */
ZVK_EXPORT void LSVGMTO(LsvNumber *hours, LsvNumber *minutes, LsvSeconds *seconds, FeedbackCode *fc);

/** The present local time. @param gregorian 17 bytes, YYYYMMDDHHMISS and milliseconds */
ZVK_EXPORT void LSVLOCT(LsvNumber *lilian, LsvSeconds *lilianSeconds, char *gregorian, FeedbackCode *fc);

/** Today's date. @param out 8 bytes, YYYYMMDD; a NUL in the first one after a failure */
ZVK_EXPORT void TKJEDT4(char *out, FeedbackCode *fc);

/**
 * The services for programs with EBCDIC data. Strings are EBCDIC; numbers do not cross this layer:
 * numeric inputs count as 0 and numeric results are 0. A failure shows in `facility` only, as the
 * bytes C3 C5 C5, with severity and message number 0. On purpose: programs that were compiled for
 * them know it so. A string longer than 270 bytes is cut. Threads: one at a time, as all
 * conversions of code pages.
 */
ZVK_EXPORT void LSVDAYS_HOST(const VSTRING *date, const VSTRING *picture, LsvNumber *lilian, FeedbackCode *fc);
ZVK_EXPORT void LSVCBLDY_HOST(const VSTRING *date, const VSTRING *picture, LsvNumber *result, FeedbackCode *fc);
ZVK_EXPORT void LSVDATE_HOST(const LsvNumber *lilian, const VSTRING *picture, char *out, FeedbackCode *fc);
ZVK_EXPORT void LSVDATM_HOST(const LsvSeconds *lilianSeconds, const VSTRING *picture, char *out, FeedbackCode *fc);
ZVK_EXPORT void LSVDYWK_HOST(const LsvNumber *lilian, LsvNumber *weekday, FeedbackCode *fc);
ZVK_EXPORT void LSVGMT_HOST(LsvNumber *lilian, LsvSeconds *lilianSeconds, FeedbackCode *fc);
ZVK_EXPORT void LSVUTC_HOST(LsvNumber *lilian, LsvSeconds *lilianSeconds, FeedbackCode *fc);
ZVK_EXPORT void LSVGMTO_HOST(LsvNumber *hours, LsvNumber *minutes, LsvSeconds *seconds, FeedbackCode *fc);
ZVK_EXPORT void LSVISEC_HOST(const LsvNumber *year, const LsvNumber *month, const LsvNumber *day,
                             const LsvNumber *hours, const LsvNumber *minutes, const LsvNumber *seconds,
                             const LsvNumber *milliseconds, LsvSeconds *lilianSeconds, FeedbackCode *fc);
ZVK_EXPORT void LSVLOCT_HOST(LsvNumber *lilian, LsvSeconds *lilianSeconds, char *gregorian, FeedbackCode *fc);
ZVK_EXPORT void LSVQCEN_HOST(LsvUnsigned *century, FeedbackCode *fc);
ZVK_EXPORT void LSVSCEN_HOST(const LsvUnsigned *century, FeedbackCode *fc);
/** The seconds come as a hexadecimal number and go through `_zvkcConvHex8toIEEE`. */
ZVK_EXPORT void LSVSECI_HOST(const LsvUnsigned *hexSeconds, LsvNumber *year, LsvNumber *month, LsvNumber *day,
                             LsvNumber *hours, LsvNumber *minutes, LsvNumber *seconds, LsvNumber *milliseconds,
                             FeedbackCode *fc);
ZVK_EXPORT void LSVSECS_HOST(const VSTRING *timestamp, const VSTRING *picture, LsvSeconds *lilianSeconds,
                             FeedbackCode *fc);
ZVK_EXPORT void TKJEDT4_HOST(char *out, FeedbackCode *fc);

ZVK_END_DECLS

#endif
