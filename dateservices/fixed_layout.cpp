// Pictures whose every element has its place; see fixed_layout.h.
#include "dateservices/fixed_layout.h"

#include <cstring>

namespace dates {
namespace {

// The kinds that are numbers, with the letters that their runs must have.
struct NumberKind {
    Element kind;
    uint8_t letters;
    uint16_t least, most; // values that the scanner takes
    int32_t DateParts::*value;
};
constexpr NumberKind kNumbers[] = {
    {Element::year, 4, 0, 9999, &DateParts::year},   {Element::month, 2, 0, 99, &DateParts::month},
    {Element::day, 2, 0, 99, &DateParts::day},       {Element::dayOfYear, 3, 1, 366, &DateParts::dayOfYear},
    {Element::hour, 2, 0, 23, &DateParts::hour},     {Element::minute, 2, 0, 59, &DateParts::minute},
    {Element::second, 2, 0, 59, &DateParts::second}, {Element::fraction, 3, 0, 999, &DateParts::millisecond},
};

const NumberKind *numberKind(const PictureElement &element)
{
    for (const NumberKind &each : kNumbers)
        if (each.kind == element.kind) return each.letters == element.letters && !element.open ? &each : nullptr;
    return nullptr;
}

// The value of so many digits, or more than any where one of them is none.
constexpr uint32_t kNoDigits = 1u << 31;

inline uint32_t digit(const char *text) { return static_cast<uint8_t>(*text) - uint32_t{'0'}; }

inline uint32_t pair(const char *text)
{
    uint32_t tens = digit(text), ones = digit(text + 1);
    return tens > 9 || ones > 9 ? kNoDigits : tens * 10 + ones;
}

inline uint32_t valueOf(const char *text, int width)
{
    if (width == 2) return pair(text);
    uint32_t high = pair(text);
    uint32_t low = width == 4 ? pair(text + 2) : digit(text + 2);
    if (high == kNoDigits || low > (width == 4 ? 99u : 9u)) return kNoDigits;
    return high * (width == 4 ? 100 : 10) + low;
}

struct Pairs {
    char text[200];
    constexpr Pairs() : text()
    {
        for (int i = 0; i < 100; i++) {
            text[2 * i] = static_cast<char>('0' + i / 10);
            text[2 * i + 1] = static_cast<char>('0' + i % 10);
        }
    }
};
constexpr Pairs kPairs;

} // namespace

FixedLayout layoutOf(const Picture &picture)
{
    FixedLayout layout;
    if (!picture.elements || picture.eras != kNoEra || picture.half) return {};
    auto length = static_cast<size_t>(picture.end - picture.begin);
    if (length > FixedLayout::kMostText) return {};
    memset(layout.text, ' ', sizeof layout.text);
    memcpy(layout.text, picture.begin, length);
    layout.length = static_cast<uint8_t>(length);
    bool year = false, month = false, day = false, dayOfYear = false, literalFirst = false;
    bool literalBefore = false, alone = true;
    const PictureElement *element = picture.elements;
    for (const char *at = picture.begin; at < picture.end; at += element->length, element++) {
        if (element->kind == Element::literal && element->length == 1) {
            literalFirst |= at == picture.begin;
            alone &= !literalBefore;
            literalBefore = true;
            continue;
        }
        literalBefore = false;
        const NumberKind *number = numberKind(*element);
        if (!number || element->length != number->letters || layout.count == FixedLayout::kMostParts) return {};
        auto place = static_cast<uint8_t>(at - picture.begin);
        layout.parts[layout.count++] = {number->letters, place, number->least, number->most, number->value};
        year |= number->kind == Element::year;
        month |= number->kind == Element::month;
        day |= number->kind == Element::day;
        dayOfYear |= number->kind == Element::dayOfYear;
    }
    layout.alone = alone && !literalBefore;
    layout.scannable = year && ((month && day) || dayOfYear) && !literalFirst;
    return layout;
}

bool scanFixed(const FixedLayout &layout, const char *date, const char *dateEnd, DateParts &parts)
{
    if (!layout.scannable || dateEnd - date < layout.length) return false;
    uint32_t values[FixedLayout::kMostParts];
    for (int i = 0; i < layout.count; i++) {
        const FixedPart &part = layout.parts[i];
        values[i] = valueOf(date + part.at, part.width);
        if (values[i] < part.least || values[i] > part.most) return false;
    }
    for (int i = 0; i < layout.count; i++) parts.*layout.parts[i].value = static_cast<int32_t>(values[i]);
    return true;
}

void writeFixed(const FixedLayout &layout, char *out, const DateParts &parts)
{
    memcpy(out, layout.text, sizeof layout.text);
    for (int i = 0; i < layout.count; i++) {
        const FixedPart &part = layout.parts[i];
        auto value = static_cast<uint32_t>(parts.*part.value);
        char *at = out + part.at;
        if (part.width & 1) {
            if (value > 999) value /= 10; // 1000 milliseconds show their first three digits
            at[2] = static_cast<char>('0' + value % 10);
            value /= 10;
        } else if (part.width == 4) {
            memcpy(at + 2, kPairs.text + 2 * (value % 100), 2);
            value /= 100;
        }
        memcpy(at, kPairs.text + 2 * (value % 100), 2);
    }
}

} // namespace dates
