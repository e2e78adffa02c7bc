// Elements of date pictures; see picture.h.
#include "dateservices/picture.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace dates {
namespace {

enum Letter : uint8_t { kOther, kY, kM, kD, kW, kH, kS, kNine, kRunLetters, kR = kRunLetters, kA, kZ, kAngle };

constexpr std::array<Letter, 256> kLetters = [] {
    std::array<Letter, 256> table{};
    constexpr char names[] = "YMDWHS9RAZ<";
    constexpr Letter letters[] = {kY, kM, kD, kW, kH, kS, kNine, kR, kA, kZ, kAngle};
    for (size_t i = 0; names[i]; i++) {
        table[static_cast<uint8_t>(names[i])] = letters[i];
        if (names[i] >= 'A') table[static_cast<uint8_t>(names[i] | 0x20)] = letters[i];
    }
    return table;
}();

// By letter: what a run of one, two, three, and four or more letters is. A longer run than
// `longest` is none; one of H or S is cut there.
struct RunRow {
    uint8_t longest;
    bool cut;
    Element byLength[4];
};
constexpr uint8_t kLongestName = 20;
constexpr RunRow kRuns[kRunLetters] = {
    {0, false, {}}, // none
    {4, false, {Element::year, Element::year, Element::year, Element::year}},
    {kLongestName, false, {Element::month, Element::month, Element::monthName, Element::monthFullName}},
    {3, false, {Element::day, Element::day, Element::dayOfYear, Element::badRun}},
    {kLongestName, false, {Element::badRun, Element::badRun, Element::weekdayName, Element::weekdayFullName}},
    {2, true, {Element::hour, Element::hour}},
    {2, true, {Element::second, Element::second}},
    // A fourth 9 is refused by those who use it.
    {4, true, {Element::fraction, Element::fraction, Element::fraction, Element::fraction}},
};

Letter letterAt(const char *at, const char *end) { return at < end ? kLetters[static_cast<uint8_t>(*at)] : kOther; }
bool is(const char *at, const char *end, char upper) { return at < end && (*at & ~0x20) == upper; }

// Letters of the run at `at`, as far as `most`.
uint8_t runAt(const char *at, const char *end, Letter letter, int most)
{
    uint8_t length = 0;
    while (length < most && letterAt(at + length, end) == letter) length++;
    return length;
}

bool isName(Element kind)
{
    return kind == Element::monthName || kind == Element::weekdayName || kind == Element::monthFullName ||
           kind == Element::weekdayFullName;
}

PictureElement runElement(const char *at, const char *end, Letter letter)
{
    const RunRow &row = kRuns[letter];
    uint8_t letters = runAt(at, end, letter, row.cut ? row.longest : row.longest + 1);
    if (letters > row.longest) return {Element::badRun, 1, false, 1, at};
    Element kind = row.byLength[std::min<int>(letters, 4) - 1];
    if (kind == Element::badRun) return {kind, 1, false, 1, at};
    PictureElement element{kind, letters, false, letters, at};
    if (!isName(kind)) return element;

    // A Z after three letters makes them the full name.
    uint8_t open = runAt(at + letters, end, kZ, kLongestName - letters);
    element.open = open > 0;
    element.length = static_cast<uint8_t>(letters + open);
    if (open && kind == Element::monthName) element.kind = Element::monthFullName;
    if (open && kind == Element::weekdayName) element.kind = Element::weekdayFullName;
    return element;
}

PictureElement romanElement(const char *at, const char *end)
{
    uint8_t letters = runAt(at, end, kR, 4);
    bool open = letters == 3 && letterAt(at + 3, end) == kZ;
    if (letters < 4 && !open) return {Element::badRun, 1, false, 1, at};
    return {Element::romanMonth, letters, open, 4, at};
}

PictureElement halfElement(const char *at, const char *end)
{
    if (is(at + 1, end, 'P')) return {Element::half, 2, false, 2, at};
    if (at + 1 < end && at[1] == '.' && is(at + 2, end, 'P')) {
        uint8_t length = at + 3 < end && at[3] == '.' ? 4 : 3;
        return {Element::dottedHalf, 3, false, length, at};
    }
    return {Element::literal, 1, false, 1, at};
}

PictureElement eraElement(const char *at, const char *end)
{
    bool japanese = is(at + 1, end, 'J');
    if (!japanese && !is(at + 1, end, 'C')) return {Element::angle, 1, false, 1, at};
    uint8_t letters = 0;
    while (letters < 9 && is(at + 1 + letters, end, japanese ? 'J' : 'C')) letters++;
    const char *close = at + 1 + letters;
    bool whole = close < end && *close == '>' && (letters == 4 || (letters == 8 && !japanese));
    if (!whole) return {Element::brokenEra, letters, false, 1, at};
    return {japanese ? Element::japaneseEra : Element::chineseEra, letters, false, static_cast<uint8_t>(letters + 2),
            at};
}

} // namespace

PictureElement nextElement(const char *at, const char *end)
{
    Letter letter = kLetters[static_cast<uint8_t>(*at)];
    switch (letter) {
    case kOther:
        return {Element::literal, 1, false, 1, at};
    case kR:
        return romanElement(at, end);
    case kA:
        return halfElement(at, end);
    case kZ:
        return {Element::shorter, 1, false, 1, at};
    case kAngle:
        return eraElement(at, end);
    case kM:
        if (is(at + 1, end, 'I')) return {Element::minute, 2, false, 2, at};
        [[fallthrough]];
    default:
        return runElement(at, end, letter);
    }
}

EraKind erasOf(const char *picture, const char *end)
{
    int32_t kinds = kNoEra;
    for (const char *at = picture;
         at < end && (at = static_cast<const char *>(memchr(at, '<', static_cast<size_t>(end - at)))); at++)
        kinds |= is(at + 1, end, 'J') ? kJapanese : is(at + 1, end, 'C') ? kChinese : kNoEra;
    return static_cast<EraKind>(kinds);
}

bool hasHalfOfDay(const char *picture, const char *end)
{
    for (const char *at = picture; at < end; at++)
        if (is(at, end, 'A') && (is(at + 1, end, 'P') || (at + 1 < end && at[1] == '.' && is(at + 2, end, 'P'))))
            return true;
    return false;
}

Picture pictureOf(const char *begin, const char *end)
{
    return {begin, end, nullptr, nullptr, erasOf(begin, end), hasHalfOfDay(begin, end)};
}

} // namespace dates
