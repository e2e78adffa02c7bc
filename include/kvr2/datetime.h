/**
 * Date-time items: data items of category DATE, TIME and TIMESTAMP.
 *
 * An item holds text in the layout of its format. The library knows the layout from a field
 * descriptor, `FD`, that goes with the item in every call. Inside, each item becomes a text of
 * fixed layout, its system form, and that becomes the receiver:
 *
 *     DATE       YYYY-MM-DD                          10 characters
 *     TIME       HH:MM:SS.FFFFFFFFFFFF               21
 *     TIMESTAMP  YYYY-MM-DD-HH:MM:SS.FFFFFFFFFFFF    32
 *
 * @code
 *     FormatEntry entries[] = {{ZVK_FE_DAY}, {ZVK_FE_PERIOD}, {ZVK_FE_MONTH}, {ZVK_FE_PERIOD}, {ZVK_FE_YEAR4}};
 *     FD german = {.category = ctDATE, .storageLength = 10, .diffLength = {10}, .numberOfEntries = 5,
 *                  .formatLiteralPtr = "", .formatEntriesPtr = entries};
 *     _zvkcDateTime_Move("31.12.2026", target, &german, &targetFD, 0, 1950, noInfo);
 * @endcode
 *
 * There is no status. What compiled code must not ask for stops the run unit on an assertion that
 * shows the condition. No call touches a byte outside an item, whatever the item holds; a format
 * that is longer than its item is cut at the item's end.
 *
 * `windowYear` gives a year of two digits its century: with 1950, 50 is 1950 and 49 is 2049. It is
 * the first of the hundred years.
 *
 * A record of an item that is tied to a locale is brought up to date by the `_Locale` entries:
 * `formatLiteralPtr`, `formatIsStrptime` and `formatUpdated` change. All other operands that are no
 * result are only read.
 *
 * Threads: any, on items of their own; two threads may share the FD of an item without a locale.
 * Set_Locale and Init_Locale: one thread at a time.
 */
#ifndef KVR2_DATETIME_H
#define KVR2_DATETIME_H

#include "kvr2/export.h"

ZVK_BEGIN_DECLS

/** Categories that a descriptor may have. */
enum { ctNUMERIC = 3, ctDATE = 17, ctTIME = 18, ctTIMESTAMP = 19 };

/**
 * What an entry of a format is. "Width" is what it takes in the item.
 *
 * | value | width | |
 * |---|---|---|
 * | 1 | entryLength | literal text at `literalOffset` of the pool |
 * | 2 to 7 | 1 | the character "/", "-", ".", ",", blank, ":" |
 * | 8 | 1 | the character at `literalOffset` |
 * | 10, 12 | 2 | day of the month, month |
 * | 11 | 3 | day of the year |
 * | 13, 14, 15 | 2, 4, 4 | year; 14 is copied as it is also under a locale |
 * | 16, 18, 19 | 2 | hour 00 to 23, minutes, seconds |
 * | 17 | 1 or 2 | hour 1 to 12; one digit where no digit follows; written in two |
 * | 20, 24 | 2 | "AM" or "PM" |
 * | 21 | 1 | centuries after the window's century |
 * | 22, 23 | 1 | "%", "@" |
 * | 25 | 11 | hh:mm:ss AM |
 * | 26 | 5 | hh:mm |
 * | 27 | 8 | MM/DD/YY |
 * | 28 to 32 | 1, 2, 3, 6, 12 | so many digits of the fraction of a second |
 *
 * A DATE has no entries 16 to 20, 24 to 26 and 28 to 32, a TIME none of 10 to 15, 21 and 27.
 */
enum {
    ZVK_FE_LITERAL = 1,
    ZVK_FE_SLASH = 2,
    ZVK_FE_MINUS = 3,
    ZVK_FE_PERIOD = 4,
    ZVK_FE_COMMA = 5,
    ZVK_FE_SPACE = 6,
    ZVK_FE_COLON = 7,
    ZVK_FE_CHAR = 8,
    ZVK_FE_DAY = 10,
    ZVK_FE_DAY_OF_YEAR = 11,
    ZVK_FE_MONTH = 12,
    ZVK_FE_YEAR2 = 13,
    ZVK_FE_YEAR4_RAW = 14,
    ZVK_FE_YEAR4 = 15,
    ZVK_FE_HOUR24 = 16,
    ZVK_FE_HOUR12 = 17,
    ZVK_FE_MINUTE = 18,
    ZVK_FE_SECOND = 19,
    ZVK_FE_AM_PM = 20,
    ZVK_FE_CENTURY = 21,
    ZVK_FE_PERCENT = 22,
    ZVK_FE_AT = 23,
    ZVK_FE_AM_PM_LOCALE = 24,
    ZVK_FE_TIME12 = 25,
    ZVK_FE_TIME24_SHORT = 26,
    ZVK_FE_DATE_SHORT = 27,
    ZVK_FE_FRACTION1 = 28,
    ZVK_FE_FRACTION2 = 29,
    ZVK_FE_FRACTION3 = 30,
    ZVK_FE_FRACTION6 = 31,
    ZVK_FE_FRACTION12 = 32
};

/** An entry of a format. 8 bytes. */
typedef struct FormatEntry {
    uint32_t entryType;    /**< ZVK_FE_... */
    int16_t literalOffset; /**< into the literal pool, for types 1 and 8 */
    int16_t entryLength;   /**< length of the literal, above zero, for type 1 */
} FormatEntry;
ZVK_STATIC_ASSERT(sizeof(FormatEntry) == 8, "FormatEntry");

/** The descriptor of an item, in natural layout; built by the compiler. */
typedef struct FD {
    uint32_t category;      /**< ctDATE, ctTIME, ctTIMESTAMP */
    uint32_t storageLength; /**< bytes of the item; 0: those of its format, and the item is not tested */
    struct {
        int16_t actualLength; /**< length of the format as written, at most `storageLength` */
    } diffLength;
    uint8_t hasLocale;             /**< 1: the text is in the layout of a locale */
    uint16_t localeIndex;          /**< 1 the current locale, otherwise a slot of the program's table */
    int16_t numberOfEntries;       /**< above zero for a formatted item */
    uint8_t formatUpdated;         /**< set to 1 by the library when the format has been taken from the locale */
    uint8_t formatIsStrptime;      /**< 1: `formatLiteralPtr` is a format of `strptime` and not the pool */
    const char *formatLiteralPtr;  /**< the pool of literal characters */
    FormatEntry *formatEntriesPtr; /**< so many entries */
    void *reserved[2];             /**< copied with the record and not read */
} FD;

ZVK_AT(FD, storageLength, 4);
ZVK_AT(FD, diffLength, 8);
ZVK_AT(FD, hasLocale, 10);
ZVK_AT(FD, localeIndex, 12);
ZVK_AT(FD, numberOfEntries, 14);
ZVK_AT(FD, formatUpdated, 16);
ZVK_AT(FD, formatIsStrptime, 17);
ZVK_AT(FD, formatLiteralPtr, 24);
ZVK_AT(FD, formatEntriesPtr, 32);
ZVK_STATIC_ASSERT(sizeof(FD) == 56, "FD");

/** How a verb is called; passed by value. 8 bytes. */
typedef struct NewCallInfo {
    uint16_t reserved0;
    uint8_t rangeCheck; /**< 1: what is sent must be valid, or the run unit stops on Range_check */
    uint8_t reserved3;
    uint16_t reserved4[2];
} NewCallInfo;
ZVK_AT(NewCallInfo, rangeCheck, 2);
ZVK_STATIC_ASSERT(sizeof(NewCallInfo) == 8, "NewCallInfo");

/** Units of durations, and the fields that Extract_Packed knows. */
enum {
    duYears = 13,
    duMonths = 14,
    duDays = 15,
    duHours = 16,
    duMinutes = 17,
    duSeconds = 18,
    duMicroseconds = 19,
    duPicoseconds = 20
};

/** A duration to add or subtract. 8 bytes. */
typedef struct DurationEntry {
    uint32_t unit; /**< duYears ... duMicroseconds; duPicoseconds for Subtract only */
    int32_t value; /**< its sign does not count */
} DurationEntry;
ZVK_STATIC_ASSERT(sizeof(DurationEntry) == 8, "DurationEntry");

/* ---- locales ---- */

/** A locale that a program names, as the compiler generates it. */
typedef struct GeneratedLocaleInfo {
    const char *localeName; /**< not terminated */
    const char *libraryName;
    int16_t localeNameLen;
    int16_t libraryNameLen;
} GeneratedLocaleInfo;

/** What a locale offset and zone are. 64 bytes. */
typedef struct TodInfo {
    uint32_t utcOffset;   /**< minutes, as a signed number */
    const char *zoneName; /**< empty at first */
    uint8_t reserved16[48];
} TodInfo;
ZVK_STATIC_ASSERT(sizeof(TodInfo) == 64, "TodInfo");

/** Bytes of a category's name in a locale, with its NUL, and how many there is room for. */
enum { ZVK_LOCALE_NAME = 43, ZVK_LOCALE_SLOTS = 11 };

/** The names in force for the categories of a locale. 1200 bytes. */
typedef struct LocaleInfo {
    /**
     * LC_CTYPE, LC_NUMERIC, LC_TIME, LC_COLLATE, LC_MONETARY, LC_MESSAGES, LC_ALL, LC_TOD; three
     * more are written and not read
     */
    char names[ZVK_LOCALE_SLOTS][ZVK_LOCALE_NAME];
    TodInfo *todInfo;
    uint8_t reserved488[712];
} LocaleInfo;
ZVK_AT(LocaleInfo, todInfo, 480);
ZVK_STATIC_ASSERT(sizeof(LocaleInfo) == 1200, "LocaleInfo");

/** A locale that the run unit knows. 224 bytes. */
typedef struct LocaleDescriptor {
    char *localeName; /**< private copies, terminated */
    char *libraryName;
    LocaleInfo *localeInfo;
    struct LocaleDescriptor *left;
    struct LocaleDescriptor *right;
    int16_t localeNameLen;
    int16_t libraryNameLen;
    uint8_t reserved44[180];
} LocaleDescriptor;
ZVK_STATIC_ASSERT(sizeof(LocaleDescriptor) == 224, "LocaleDescriptor");

/** The run unit's locales; `_Dmr_rut.words[7]` points to it. 24 bytes. */
typedef struct RutLocaleTable {
    LocaleDescriptor *defaultLocaleDescriptorPtr; /**< "POSIX" */
    LocaleDescriptor *currentLocaleDescriptorPtr;
    LocaleDescriptor *localeTreeRoot;
} RutLocaleTable;
ZVK_STATIC_ASSERT(sizeof(RutLocaleTable) == 24, "RutLocaleTable");

/** The locales of a program. Slot 0 is not used, slot 1 is "POSIX", the program's own follow. */
typedef struct MgtLocaleTable {
    uint32_t mgtLocaleTableLength; /**< slots, at least 2 */
    __extension__ struct {
        void *generatedLocaleInfoPtr; /**< a GeneratedLocaleInfo until Init_Locale, then its LocaleDescriptor */
    } generatedLocaleInfoPtrStruct[];
} MgtLocaleTable;

/** The record of a program that has locales: the locale reference of the `_Locale` entries. */
typedef struct LocaleProgram {
    MgtLocaleTable *mgtLocaleTablePtr;
    uint8_t Run_mgtLocaleTableCopiedToRut; /**< 1 after Init_Locale */
} LocaleProgram;

/** Categories of SET LOCALE. */
enum {
    ZVK_LC_ALL = 1,
    ZVK_LC_COLLATE = 2,
    ZVK_LC_CTYPE = 3,
    ZVK_LC_MESSAGES = 4,
    ZVK_LC_MONETARY = 5,
    ZVK_LC_NUMERIC = 6,
    ZVK_LC_TIME = 7,
    ZVK_LC_TOD = 8
};

/* ---- MOVE ---- */

/**
 * MOVE of a date-time item to another one.
 *
 * A DATE into a TIMESTAMP keeps the time of a receiver that holds a valid timestamp, a TIME its
 * date, whatever its layout; otherwise the rest becomes 00:00:00 or 0000-01-01. A TIMESTAMP into a
 * DATE or TIME gives its part.
 *
 * @param sender, receiver      items of senderFD and receiverFD; may be the same
 * @param reserved              not read
 */
ZVK_EXPORT void _zvkcDateTime_Move(const char *sender, char *receiver, const FD *senderFD, const FD *receiverFD,
                                   uint64_t reserved, int16_t windowYear, NewCallInfo newCallInfo);

/**
 * MOVE of a number to a date-time item: digits go into the format from the right, "0" where they
 * are used up.
 *
 * AM/PM becomes "PM". A format entry of type 25 becomes "PM hh:mm:ss", with the half of the day in
 * front. An entry of type 32 stops the run unit.
 *
 * @param sender  senderLength digits
 */
ZVK_EXPORT void _zvkcDateTime_Edit(const char *sender, char *receiver, const FD *receiverFD, int32_t senderLength,
                                   NewCallInfo newCallInfo);

/**
 * MOVE of a date-time item to a number: the format's digits, right-aligned in receiverLength digits
 * (at most 63), "0" on the left.
 */
ZVK_EXPORT void _zvkcDateTime_DeEdit(const char *sender, char *receiver, const FD *senderFD, int32_t receiverLength,
                                     int16_t windowYear, NewCallInfo newCallInfo);

/**
 * Text into a date-time item: from a numeric item (category 3) its right end, with "0" on the left,
 * otherwise its left end; the rest of the item is filled with blanks.
 */
ZVK_EXPORT void _zvkcDateTime_Convert(const char *sender, char *receiver, const FD *senderFD, const FD *receiverFD,
                                      int32_t senderLength);

/**
 * The same for items of which at least one is tied to a locale; `program` is the program's record.
 * A TIMESTAMP has no locale form.
 */
ZVK_EXPORT void _zvkcDateTime_Move_Locale(const char *sender, char *receiver, FD *senderFD, FD *receiverFD,
                                          uint64_t reserved, int16_t windowYear, NewCallInfo newCallInfo,
                                          LocaleProgram *program);
ZVK_EXPORT void _zvkcDateTime_Edit_Locale(const char *sender, char *receiver, FD *receiverFD, int32_t senderLength,
                                          NewCallInfo newCallInfo, LocaleProgram *program);
ZVK_EXPORT void _zvkcDateTime_DeEdit_Locale(const char *sender, char *receiver, FD *senderFD, int32_t receiverLength,
                                            int16_t windowYear, NewCallInfo newCallInfo, LocaleProgram *program);
ZVK_EXPORT void _zvkcDateTime_Convert_Locale(const char *sender, char *receiver, FD *senderFD, FD *receiverFD,
                                             int32_t senderLength, NewCallInfo newCallInfo, LocaleProgram *program);

/**
 * Text into an item tied to a locale, as it is: cut or padded to receiverLength; senderLength 0: up
 * to the sender's NUL.
 */
ZVK_EXPORT void _zvkcDateTime_Move_AToD(const char *sender, char *receiver, const FD *senderFD, const FD *receiverFD,
                                        uint64_t senderLength, uint64_t receiverLength);

/** An item tied to a locale into text; `justified` 1 aligns at the right. */
ZVK_EXPORT void _zvkcDateTime_Move_DToA(const char *sender, char *receiver, const FD *senderFD, uint64_t reserved,
                                        uint64_t senderLength, uint64_t receiverLength, int32_t justified);

/* ---- durations ---- */

/**
 * Adds durations to an item, in the order of the list. After months the day is cut to the month's
 * last.
 *
 * In a TIME hours wrap within the day.
 *
 * @param receiver   item of sourceFD; may be the source
 * @param count      32-bit words of the list: two for each entry
 */
ZVK_EXPORT void _zvkcDateTime_Add_Duration(const char *source, const FD *sourceFD, char *receiver, uint32_t count,
                                           const DurationEntry *durations, int16_t windowYear, NewCallInfo newCallInfo);
ZVK_EXPORT void _zvkcDateTime_Sub_Duration(const char *source, const FD *sourceFD, char *receiver, uint32_t count,
                                           const DurationEntry *durations, int16_t windowYear, NewCallInfo newCallInfo);

/**
 * lhs - rhs in whole units of `unit` (duYears ...). A year counts 365.25 days where years are
 * turned into days and smaller units.
 *
 * @return the difference; beyond 32 bits its low-order part
 */
ZVK_EXPORT int32_t _zvkcDateTime_Find_Duration(const char *lhs, const FD *lhsFD, const char *rhs, const FD *rhsFD,
                                               uint32_t unit, int16_t windowYear, NewCallInfo newCallInfo);

ZVK_EXPORT void _zvkcDateTime_Add_Duration_Locale(const char *source, FD *sourceFD, char *receiver, uint32_t count,
                                                  const DurationEntry *durations, int16_t windowYear,
                                                  NewCallInfo newCallInfo, LocaleProgram *program);
ZVK_EXPORT void _zvkcDateTime_Sub_Duration_Locale(const char *source, FD *sourceFD, char *receiver, uint32_t count,
                                                  const DurationEntry *durations, int16_t windowYear,
                                                  NewCallInfo newCallInfo, LocaleProgram *program);
ZVK_EXPORT int32_t _zvkcDateTime_Find_Duration_Locale(const char *lhs, FD *lhsFD, const char *rhs, FD *rhsFD,
                                                      uint32_t unit, int16_t windowYear, NewCallInfo newCallInfo,
                                                      LocaleProgram *program);

/* ---- conditions ---- */

/** Relations of Compare. */
enum { ZVK_EQUAL = 0, ZVK_NOT_EQUAL = 1, ZVK_GREATER = 2, ZVK_NOT_LESS = 3, ZVK_LESS = 4, ZVK_NOT_GREATER = 5 };

/**
 * Relation of two items. Subfields that only one of the two formats has match anything; so does a
 * fraction's place that holds a leading zero.
 *
 * @return 1 if it holds, else 0; 0 for an `op` above 5
 */
ZVK_EXPORT int32_t _zvkcDateTime_Compare(const char *left, const char *right, const FD *leftFD, const FD *rightFD,
                                         uint32_t op, int16_t windowYear, NewCallInfo newCallInfo);
ZVK_EXPORT int32_t _zvkcDateTime_Compare_Locale(const char *left, const char *right, FD *leftFD, FD *rightFD,
                                                uint32_t op, int16_t windowYear, NewCallInfo newCallInfo,
                                                LocaleProgram *program);
/**
 * Relation of two texts of leftLength and rightLength bytes, both read by the descriptor that has a
 * locale.
 */
ZVK_EXPORT int32_t _zvkcDateTime_Compare_NN_Locale(const char *left, const char *right, FD *leftFD, FD *rightFD,
                                                   uint32_t leftLength, uint32_t rightLength, uint32_t op,
                                                   int16_t windowYear, NewCallInfo newCallInfo, LocaleProgram *program);

/**
 * Does an item hold a valid date or time?
 *
 * @param testFD  the format to test by, or null for the item's own
 * @param length  bytes of the item
 * @return '1' or '0'; 0 for a length of 0 (Test_Locale: '0')
 */
ZVK_EXPORT int32_t _zvkcDateTime_Test(const char *item, const FD *itemFD, const FD *testFD, uint32_t length,
                                      int16_t windowYear);
ZVK_EXPORT int32_t _zvkcDateTime_Test_Locale(const char *item, FD *itemFD, FD *testFD, uint32_t length,
                                             int16_t windowYear, LocaleProgram *program);

/* ---- subfields ---- */

/** A packed number of 27 digits. */
typedef struct PackedField {
    uint8_t bytes[14];
} PackedField;

/** An item's part as text in the layout of resultFD. */
ZVK_EXPORT void _zvkcDateTime_Extract_Alph(const char *source, const FD *sourceFD, const FD *resultFD, char *result,
                                           int16_t windowYear, NewCallInfo newCallInfo);

/**
 * An item's part as a number: the text of resultFD (at most 256 bytes), digits only.
 *
 * @param packed  gets the number; what a compiler passes for a structure that comes back through
 *                memory
 * @return packed
 */
ZVK_EXPORT PackedField *_zvkcDateTime_Extract_Int(PackedField *packed, const char *source, const FD *sourceFD,
                                                  const FD *resultFD, int16_t windowYear, NewCallInfo newCallInfo);

/**
 * A field of an item as a number.
 *
 * @param field  13 year, 14 month, 15 day, 16 hour, 17 minute, 18 second; 19 and 20, of a
 *               TIMESTAMP, the twelve digits of its fraction
 * @return packed
 */
ZVK_EXPORT PackedField *_zvkcDateTime_Extract_Packed(PackedField *packed, const char *source, const FD *sourceFD,
                                                     uint32_t field, int16_t windowYear, NewCallInfo newCallInfo);

ZVK_EXPORT void _zvkcDateTime_Extract_Alph_Locale(const char *source, FD *sourceFD, FD *resultFD, char *result,
                                                  int16_t windowYear, NewCallInfo newCallInfo, LocaleProgram *program);
ZVK_EXPORT PackedField *_zvkcDateTime_Extract_Int_Locale(PackedField *packed, const char *source, FD *sourceFD,
                                                         FD *resultFD, int16_t windowYear, NewCallInfo newCallInfo,
                                                         LocaleProgram *program);
ZVK_EXPORT PackedField *_zvkcDateTime_Extract_Packed_Locale(PackedField *packed, const char *source, FD *sourceFD,
                                                            uint32_t field, int16_t windowYear, NewCallInfo newCallInfo,
                                                            LocaleProgram *program);

/* ---- locales of a run unit ---- */

/**
 * Makes a program's locales known to the run unit; once for each program, before its first
 * statement with a locale.
 *
 * @return program
 * @messages 1000 with the name of a locale that is not installed; the run unit then stops
 */
ZVK_EXPORT LocaleProgram *_zvkcDateTime_Init_Locale(LocaleProgram *program);

/** Values of `fromLocaleId` below the program's slots. */
enum { ZVK_LOCALE_SAVE_ONLY = -2, ZVK_LOCALE_BY_NAME = -1, ZVK_LOCALE_DEFAULT = 0 };

/**
 * SET LOCALE.
 *
 * @param numberOfCategories, categories  ZVK_LC_..., at least one; just one if something is saved
 * @param saveTo, saveLength              null, or gets the present name of the category, cut or
 *                                        padded; "DEFAULT" for C and POSIX
 * @param saveLibrary, saveLibraryLength  null, or is filled with blanks
 * @param fromLocaleId                    ZVK_LOCALE_..., or a slot of the program's table
 * @param newLocaleName, newNameLength    the name for ZVK_LOCALE_BY_NAME, not terminated; trailing
 *                                        blanks do not count
 * @param program                         the program's record, for a slot
 * @return the resulting locale name, terminated; it lives until the next SET LOCALE
 * @messages 1001 with category and locale if the system refuses it; the run unit then stops
 */
ZVK_EXPORT const char *_zvkcDateTime_Set_Locale(int32_t numberOfCategories, const uint32_t *categories, char *saveTo,
                                                uint32_t saveLength, char *saveLibrary, uint32_t saveLibraryLength,
                                                int32_t fromLocaleId, const char *newLocaleName, uint32_t newNameLength,
                                                LocaleProgram *program);

/** Classes of the source of LOCALE-DATE and LOCALE-TIME. */
enum { rltDBCS = 0, rltALPHANUMERIC = 1 };

/**
 * FUNCTION LOCALE-DATE: YYYYMMDD in the layout of a locale.
 *
 * @param source       8 digits
 * @param sourceClass  rltDBCS or rltALPHANUMERIC
 * @param localeId     1 the current locale, or a slot of the program's table
 * @param result       256 bytes; as many as the result is long are written
 * @return length of the result
 * @messages 1000, 1002; the run unit then stops
 */
ZVK_EXPORT int32_t _zvkcDateTime_Locale_Date(const char *source, int32_t sourceClass, uint16_t localeId, char *result,
                                             NewCallInfo callInfo, LocaleProgram *program);

/**
 * FUNCTION LOCALE-TIME: HHMMSSFF in the layout of a locale.
 *
 * @param source  8 digits, and then any character or, as CURRENT-DATE has it, "+" or "-" and the
 *                offset from UTC as HHMM. A time with an offset is shifted to the locale's offset
 * @messages 1003 with the source and the hours, minutes or seconds that are out of range; 1000,
 *           1002. The run unit then stops
 */
ZVK_EXPORT int32_t _zvkcDateTime_Locale_Time(const char *source, int32_t sourceClass, uint16_t localeId, char *result,
                                             NewCallInfo callInfo, LocaleProgram *program);

ZVK_END_DECLS

#endif
