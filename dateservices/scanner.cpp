// Reading a date under a picture.
//
// Picture and date are walked together, element by element; a table says how each kind of element
// reads. The first status that is not kGood ends the walk. What follows in the date after the
// picture's end is not looked at.
//
//     picture "ZD.MMM.YYYY", date "3.MAR.2026"     {day 3, month 3, year 2026}
#include <cctype>
#include <cstring>
#include <langinfo.h>

#include "base/bytes.h"
#include "dateservices/fixed_layout.h"

namespace dates {
namespace {

enum Seen : uint8_t { kSeenYear = 1, kSeenMonth = 2, kSeenDay = 4, kSeenDayOfYear = 8, kSeenHour = 16 };

struct Scan {
    const char *date, *start, *end;
    DateParts &parts;
    const EraTable *eras;
    bool shorter; // a Z is in front
    bool dotted;  // the half of the day was A.M or P.M
    uint8_t seen;

    size_t left() const { return static_cast<size_t>(end - date); }
};

using ScanStep = Status (*)(Scan &, const PictureElement &);

// A number of at most `width` digits, of one less after a Z.
Status number(Scan &scan, int width, int32_t &value)
{
    int least = scan.shorter && width > 1 ? width - 1 : width;
    int digits = 0;
    value = 0;
    for (; digits < width && scan.date < scan.end; digits++, scan.date++) {
        unsigned digit = static_cast<uint8_t>(*scan.date) - '0';
        if (digit > 9) break;
        value = value * 10 + static_cast<int32_t>(digit);
    }
    return digits < least ? kBadText : kGood;
}

// Two digits; the element may be one letter only after a Z.
Status pair(Scan &scan, const PictureElement &element, int32_t &value)
{
    if (element.letters < 2 && !scan.shorter) return kBadPicture;
    return number(scan, 2, value);
}

Status year(Scan &scan, const PictureElement &element)
{
    DateParts &parts = scan.parts;
    int letters = element.letters;
    if (letters == 1) {
        if (!scan.shorter) return kBadPicture;
        letters = 3;
    }
    if (letters == 3 && !parts.japaneseEra && !parts.chineseEra) return kBadPicture;
    Status status = number(scan, letters, parts.year);
    if (status != kGood) return status;
    if (letters == 2 && parts.eraKind == kNoEra) parts.year = windowedYear(parts.year);
    scan.seen |= kSeenYear;
    return kGood;
}

Status month(Scan &scan, const PictureElement &element)
{
    scan.seen |= kSeenMonth;
    return pair(scan, element, scan.parts.month);
}

Status day(Scan &scan, const PictureElement &element)
{
    scan.seen |= kSeenDay;
    return pair(scan, element, scan.parts.day);
}

Status dayOfYear(Scan &scan, const PictureElement &)
{
    Status status = number(scan, 3, scan.parts.dayOfYear);
    if (status != kGood) return status;
    scan.seen |= kSeenDayOfYear;
    return scan.parts.dayOfYear < 1 || scan.parts.dayOfYear > 366 ? kBadDay : kGood;
}

// Puts AM or PM into the hour. 12 AM stays 12 without the dots, on purpose; the half then stays
// too, for those who count seconds.
Status applyHalf(DateParts &parts, bool dotted)
{
    if (parts.halfOfDay == kNoHalf) return kGood;
    if (parts.hour > 12) return kBadHour;
    if (parts.halfOfDay == kMorning) {
        if (parts.hour == 12 && !dotted) return kGood;
        if (parts.hour == 12) parts.hour = 0;
    } else {
        if (parts.hour == 0) return kBadHour;
        if (parts.hour < 12) parts.hour += 12;
    }
    parts.halfOfDay = kNoHalf;
    return kGood;
}

// The half of the day goes into the hour as soon as both are known.
Status hour(Scan &scan, const PictureElement &element)
{
    Status status = pair(scan, element, scan.parts.hour);
    if (status != kGood) return status;
    scan.seen |= kSeenHour;
    return scan.parts.hour > 23 ? kBadHour : applyHalf(scan.parts, scan.dotted);
}

Status minute(Scan &scan, const PictureElement &)
{
    Status status = number(scan, 2, scan.parts.minute);
    return status == kGood && scan.parts.minute > 59 ? kBadMinute : status;
}

Status second(Scan &scan, const PictureElement &element)
{
    Status status = pair(scan, element, scan.parts.second);
    return status == kGood && scan.parts.second > 59 ? kBadSecond : status;
}

Status fraction(Scan &scan, const PictureElement &element)
{
    if (element.letters > 3) return kBadPicture;
    const char *before = scan.date;
    Status status = number(scan, element.letters, scan.parts.millisecond);
    for (int64_t digits = scan.date - before; digits < 3; digits++) scan.parts.millisecond *= 10;
    return status;
}

bool sameLetters(const char *text, const char *name, size_t length)
{
    for (size_t i = 0; i < length; i++)
        if (toupper(static_cast<uint8_t>(text[i])) != toupper(static_cast<uint8_t>(name[i]))) return false;
    return true;
}

// Whether some part of `name` is the text.
bool holds(const char *name, size_t nameLength, const char *text, size_t length)
{
    for (size_t at = 0; at + length <= nameLength; at++)
        if (sameLetters(text, name + at, length)) return true;
    return false;
}

// The number of the name that the next three bytes abbreviate, from 1, or 0. With full names, the
// rest of the name is taken as well.
Status name(Scan &scan, nl_item abbreviations, nl_item fullNames, int count, int32_t &value)
{
    constexpr size_t kAbbreviation = 3;
    value = 0;
    if (scan.left() < kAbbreviation) return kBadText;
    const char *text = scan.date;
    scan.date += kAbbreviation;
    for (int i = 0; i < count; i++) {
        const char *abbreviation = nl_langinfo(abbreviations + i);
        if (strlen(abbreviation) != kAbbreviation || !sameLetters(text, abbreviation, kAbbreviation)) continue;
        if (fullNames >= 0) {
            const char *full = nl_langinfo(fullNames + i);
            size_t length = strlen(full), rest = length > kAbbreviation ? length - kAbbreviation : 0;
            if (scan.left() < rest) return kBadText;
            bool found = holds(full, length, scan.date, rest);
            scan.date += rest;
            if (!found) return kGood;
        }
        value = i + 1;
        return kGood;
    }
    return kGood;
}

Status monthName(Scan &scan, const PictureElement &element)
{
    scan.seen |= kSeenMonth;
    return name(scan, ABMON_1, element.kind == Element::monthFullName ? MON_1 : -1, 12, scan.parts.month);
}

Status weekdayName(Scan &scan, const PictureElement &element)
{
    return name(scan, ABDAY_1, element.kind == Element::weekdayFullName ? DAY_1 : -1, 7, scan.parts.weekday);
}

Status romanMonth(Scan &scan, const PictureElement &)
{
    int value = 0, ones = 0, onesInRow = 0;
    bool five = false, ten = false;
    for (; scan.date < scan.end; scan.date++) {
        char letter = *scan.date;
        if (letter == 'I') {
            if (++onesInRow > 3) return kBadMonth;
            ones++;
            value++;
        } else if (letter == 'V' || letter == 'X') {
            bool &once = letter == 'V' ? five : ten;
            // An I before it is taken away, and may only be the one I so far.
            if (once || ones > 1 || (ones == 1 && onesInRow != 1)) return kBadMonth;
            if (onesInRow == 1) value -= 2;
            once = true;
            onesInRow = 0;
            value += letter == 'V' ? 5 : 10;
        } else {
            break;
        }
    }
    if (value > 12) return kBadMonth;
    if (value == 0) return kBadText;
    scan.parts.month = value;
    scan.seen |= kSeenMonth;
    return kGood;
}

Status half(Scan &scan, const PictureElement &element)
{
    bool dotted = element.kind == Element::dottedHalf;
    size_t length = dotted ? 3 : 2;
    if (scan.left() < length) return kBadText;
    const char *text = scan.date;
    bool form = dotted ? text[1] == '.' && text[2] == 'M' : text[1] == 'M';
    if ((*text != 'A' && *text != 'P') || !form) return kBadText;
    scan.parts.halfOfDay = *text == 'A' ? kMorning : kAfternoon;
    scan.dotted = dotted;
    scan.date += length;
    if (dotted && scan.left() && *scan.date == '.') scan.date++;
    return scan.seen & kSeenHour ? applyHalf(scan.parts, dotted) : kGood;
}

Status eraByName(Scan &scan, int32_t &era)
{
    for (uint32_t i = scan.eras ? scan.eras->count : 0; i > 0; i--) {
        const char *known = eraName(scan.eras, i);
        size_t length = eraNameLength(known);
        if (length == 0 || length > scan.left() || memcmp(scan.date, known, length) != 0) continue;
        scan.date += length;
        era = static_cast<int32_t>(i);
        return kGood;
    }
    return kUnknownEra;
}

Status japaneseEra(Scan &scan, const PictureElement &) { return eraByName(scan, scan.parts.japaneseEra); }
Status chineseEra(Scan &scan, const PictureElement &) { return eraByName(scan, scan.parts.chineseEra); }

// Whatever character the date has there will do, but a picture must not begin with one.
Status literal(Scan &scan, const PictureElement &)
{
    if (scan.date == scan.start) return kBadPicture;
    scan.date++;
    return kGood;
}

Status notValid(Scan &, const PictureElement &) { return kBadPicture; }

constexpr ScanStep kSteps[static_cast<size_t>(Element::count)] = {
    literal,     // literal
    notValid,    // badRun
    year,        //
    month,       //
    monthName,   //
    monthName,   // monthFullName
    romanMonth,  //
    minute,      //
    day,         //
    dayOfYear,   //
    weekdayName, //
    weekdayName, // weekdayFullName
    hour,        //
    second,      //
    fraction,    //
    half,        //
    half,        // dottedHalf
    nullptr,     // shorter: no step, see scanDate
    nullptr,     // angle
    japaneseEra, //
    chineseEra,  //
    notValid,    // brokenEra
};

} // namespace

Status scanDate(const char *date, const char *dateEnd, const Picture &picture, DateParts &parts, const EraTable *eras)
{
    if (picture.layout && scanFixed(*picture.layout, date, dateEnd, parts)) return kGood;
    Scan scan{date, date, dateEnd, parts, eras, false, false, 0};
    for (ElementReader reader(picture); reader.more();) {
        if (scan.date == scan.end) return kBadText;
        PictureElement element = reader.next();
        if (element.kind == Element::shorter || element.kind == Element::angle) {
            scan.shorter = true;
            continue;
        }
        Status status = kSteps[static_cast<size_t>(element.kind)](scan, element);
        if (status != kGood) return status;
        scan.shorter = false;
    }
    // A half without an hour is one of hour 0.
    if (Status status = scan.seen & kSeenHour ? kGood : applyHalf(parts, scan.dotted); status != kGood) return status;
    bool fixesDay = (scan.seen & kSeenDayOfYear) || (scan.seen & (kSeenMonth | kSeenDay)) == (kSeenMonth | kSeenDay);
    return (scan.seen & kSeenYear) && fixesDay ? kGood : kNotEnough;
}

namespace {

constexpr uint64_t kOnes = 0x0101010101010101u, kHighBits = 0x8080808080808080u;

// Bit 7 of each byte that is `from` to `to`, both below 0x80.
constexpr uint64_t bytesWithin(uint64_t word, uint8_t from, uint8_t to)
{
    uint64_t low = word & ~kHighBits;
    return (low + kOnes * (0x80u - from)) & ~(low + kOnes * (0x7Fu - to)) & ~word & kHighBits;
}

char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 0x20) : c; }

} // namespace

char *normalise(const char *text, size_t length, char *out)
{
    const char *at = text, *end = text + length;
    char *begin = out;
    while (at < end && *at == ' ') at++;
    while (at < end) {
        // Eight bytes at a time as long as there is no blank among them.
        if (end - at >= 8) {
            auto word = load<uint64_t>(at);
            if (!bytesWithin(word, ' ', ' ')) {
                store<uint64_t>(out, word - (bytesWithin(word, 'a', 'z') >> 2));
                at += 8;
                out += 8;
                continue;
            }
        }
        char c = *at++;
        if (c == ' ') {
            while (at < end && *at == ' ') at++;
            c = '/';
        }
        *out++ = upper(c);
    }
    return out > begin && out[-1] == '/' ? out - 1 : out;
}

} // namespace dates

int32_t LSVZDELIMITERS(const char **picture, const char *pictureEnd, const char **date, const char *dateEnd)
{
    const char *p = *picture, *d = *date;
    if (p >= pictureEnd || d >= dateEnd || *p != *d) return dates::kBadPicture;
    while (p < pictureEnd && d < dateEnd && *p == *d) p++, d++;
    *picture = p;
    *date = d;
    return dates::kGood;
}
