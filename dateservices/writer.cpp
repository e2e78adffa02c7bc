// Writing a date under a picture.
//
// The picture is walked as it is, so that the case of its letters survives: "Mmm" makes Mar, "MMM"
// makes MAR. A table says how each kind of element is written; one that cannot be filled is copied
// letter by letter.
#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <langinfo.h>

#include "calendar/decimal_text.h"
#include "dateservices/fixed_layout.h"

namespace dates {
namespace {

struct Writer {
    char *out, *end;
    ElementReader reader;
    bool twelve; // the picture has an element for the half of the day
    const DateParts &parts;
    const EraTable *eras;
    bool inEra;
    bool shorter; // a Z is in front

    Status put(char c)
    {
        if (out == end) return kCut;
        *out++ = c;
        return kGood;
    }
    Status put(const char *text, size_t length)
    {
        size_t room = static_cast<size_t>(end - out), copied = std::min(room, length);
        memcpy(out, text, copied);
        out += copied;
        return copied == length ? kGood : kCut;
    }
    Status pad(size_t count)
    {
        while (count--)
            if (put(' ') != kGood) return kCut;
        return kGood;
    }
};

using WriteStep = Status (*)(Writer &, const PictureElement &);

// The last `width` digits, with leading zeros or, after a Z, without those that a short number has.
Status number(Writer &writer, int32_t value, int width, bool shorter)
{
    constexpr int32_t powers[] = {1, 10, 100, 1000};
    char digits[12];
    calendar::putDigits(digits, width, static_cast<uint32_t>(value));
    int skipped = 0;
    while (shorter && skipped < width - 1 && value < powers[width - 1 - skipped]) skipped++;
    return writer.put(digits + skipped, static_cast<size_t>(width - skipped));
}

Status copied(Writer &writer, const PictureElement &element)
{
    if (element.length > 1) writer.reader.resume(element.text + 1);
    return writer.put(*element.text);
}

int32_t eraYear(const DateParts &parts) { return parts.eraKind == kJapanese ? parts.japaneseYear : parts.chineseYear; }

Status year(Writer &writer, const PictureElement &element)
{
    const DateParts &parts = writer.parts;
    switch (element.letters) {
    case 1:
        if (writer.shorter || writer.inEra) break;
        return number(writer, parts.year, 1, false);
    case 2:
        if (writer.inEra) return number(writer, eraYear(parts), writer.shorter ? 3 : 2, writer.shorter);
        if (writer.shorter) return kBadPicture;
        if (parts.year < calendar::kFirstLilianYear || parts.year > calendar::kLastYear) return kBadYear;
        return number(writer, parts.year, 2, false);
    case 3:
        if (writer.shorter) break;
        return number(writer, writer.inEra ? eraYear(parts) : 0, 3, false);
    default:
        if (writer.shorter || writer.inEra) break;
        return number(writer, parts.year, 4, false);
    }
    return copied(writer, element);
}

// One or two letters; one alone is just a letter.
Status pair(Writer &writer, const PictureElement &element, int32_t value)
{
    if (element.letters < 2 && !writer.shorter) return copied(writer, element);
    return number(writer, value, 2, writer.shorter);
}

Status month(Writer &writer, const PictureElement &element) { return pair(writer, element, writer.parts.month); }
Status day(Writer &writer, const PictureElement &element) { return pair(writer, element, writer.parts.day); }
Status second(Writer &writer, const PictureElement &element) { return pair(writer, element, writer.parts.second); }
// Two digits, also after a Z.
Status minute(Writer &writer, const PictureElement &) { return number(writer, writer.parts.minute, 2, false); }
Status dayOfYear(Writer &writer, const PictureElement &) { return number(writer, writer.parts.dayOfYear, 3, false); }

Status hour(Writer &writer, const PictureElement &element)
{
    int32_t value = writer.parts.hour;
    if (writer.twelve) value = value > 12 ? value - 12 : value == 0 ? 12 : value;
    return pair(writer, element, value);
}

Status fraction(Writer &writer, const PictureElement &element)
{
    if (element.letters > 3) return kBadPicture;
    char digits[16];
    snprintf(digits, sizeof digits, "%03d", writer.parts.millisecond);
    return writer.put(digits, element.letters);
}

char inCaseOf(char letter, char pattern)
{
    auto c = static_cast<uint8_t>(letter);
    return static_cast<char>(pattern >= 'a' && pattern <= 'z' ? tolower(c) : toupper(c));
}

// Letter by letter in the case of the picture's; its last letter counts for all that follow.
Status inPictureCase(Writer &writer, const PictureElement &element, const char *name, size_t length)
{
    for (size_t i = 0; i < length; i++) {
        char pattern = element.text[std::min<size_t>(i, element.letters - 1u)];
        if (writer.put(inCaseOf(name[i], pattern)) != kGood) return kCut;
    }
    return kGood;
}

Status abbreviation(Writer &writer, const PictureElement &element, const char *name)
{
    size_t length = std::min<size_t>(strlen(name), element.letters);
    // Never half a character.
    while (MB_CUR_MAX > 1 && length && (static_cast<uint8_t>(name[length]) & 0xC0) == 0x80) length--;
    return inPictureCase(writer, element, name, length);
}

Status fullName(Writer &writer, const PictureElement &element, const char *name)
{
    size_t length = strlen(name);
    if (inPictureCase(writer, element, name, length) != kGood) return kCut;
    bool padded = !element.open && !writer.shorter && length < element.letters;
    return padded ? writer.pad(element.letters - length) : kGood;
}

Status monthName(Writer &writer, const PictureElement &element)
{
    return abbreviation(writer, element, nl_langinfo(ABMON_1 + writer.parts.month - 1));
}
Status monthFullName(Writer &writer, const PictureElement &element)
{
    return fullName(writer, element, nl_langinfo(MON_1 + writer.parts.month - 1));
}
Status weekdayName(Writer &writer, const PictureElement &element)
{
    return abbreviation(writer, element, nl_langinfo(ABDAY_1 + writer.parts.weekday - 1));
}
Status weekdayFullName(Writer &writer, const PictureElement &element)
{
    return fullName(writer, element, nl_langinfo(DAY_1 + writer.parts.weekday - 1));
}

Status romanMonth(Writer &writer, const PictureElement &element)
{
    static constexpr char names[12][5] = {"I", "II", "III", "IV", "V", "VI", "VII", "VIII", "IX", "X", "XI", "XII"};
    const char *name = names[writer.parts.month - 1];
    size_t length = strlen(name);
    if (writer.put(name, length) != kGood) return kCut;
    return element.open || writer.shorter ? kGood : writer.pad(4 - length);
}

Status half(Writer &writer, const PictureElement &element)
{
    const DateParts &parts = writer.parts;
    bool afternoon = parts.halfOfDay == kNoHalf ? parts.hour >= 12 : parts.halfOfDay == kAfternoon;
    const char *text = element.text;
    size_t last = element.kind == Element::half ? 1 : 2;
    char form[4] = {inCaseOf(afternoon ? 'P' : 'A', *text), '.', '.', '.'};
    form[last] = inCaseOf('M', text[last]);
    return writer.put(form, element.length);
}

// Without a table of eras the letters are letters.
Status era(Writer &writer, const PictureElement &element)
{
    if (!writer.eras) return copied(writer, element);
    int32_t number = writer.parts.eraKind == kJapanese ? writer.parts.japaneseEra : writer.parts.chineseEra;
    if (number == 0) return kNoEraForDate;
    const char *name = eraName(writer.eras, static_cast<uint32_t>(number));
    for (size_t i = 0, length = eraNameLength(name); i < length; i++)
        if (name[i] != ' ' && writer.put(name[i]) != kGood) return kCut;
    return kGood;
}

// Too many letters are refused; too few are just letters.
Status brokenEra(Writer &writer, const PictureElement &element)
{
    bool japanese = (element.text[1] & ~0x20) == 'J';
    return element.letters > (japanese ? 4 : 8) ? kBadPicture : copied(writer, element);
}

constexpr WriteStep kSteps[static_cast<size_t>(Element::count)] = {
    copied,          // literal
    copied,          // badRun
    year,            //
    month,           //
    monthName,       //
    monthFullName,   //
    romanMonth,      //
    minute,          //
    day,             //
    dayOfYear,       //
    weekdayName,     //
    weekdayFullName, //
    hour,            //
    second,          //
    fraction,        //
    half,            //
    half,            // dottedHalf
    nullptr,         // shorter: see writeDate
    copied,          // angle
    era,             // japaneseEra
    era,             // chineseEra
    brokenEra,       //
};

} // namespace

Status writeDate(char *out, const Picture &picture, const DateParts &parts, const EraTable *eras)
{
    if (picture.layout) {
        writeFixed(*picture.layout, out, parts);
        return kGood;
    }
    Writer writer{out, out + kOutput, ElementReader(picture), picture.half, parts, eras, eras != nullptr, false};
    while (writer.reader.more()) {
        PictureElement element = writer.reader.next();
        // The last character of a picture cannot shorten anything; there a Z is a letter.
        if (element.kind == Element::shorter && writer.reader.more()) {
            writer.shorter = true;
            continue;
        }
        WriteStep step = kSteps[static_cast<size_t>(element.kind)];
        Status status = step ? step(writer, element) : copied(writer, element);
        if (status != kGood) return status;
        writer.shorter = false;
    }
    return kGood;
}

} // namespace dates
