// The scan of INSPECT.
//
// In general the phrases are tried in turn at each place of the item, and the first that matches
// acts. Nearly every statement is simpler than that: a group of one phrase is a search, a count, a
// fill or a translation, and has a loop of its own. In a group of plain ALL and FIRST phrases of
// single bytes, places whose byte begins no phrase are passed over.
//
//     ALL "A"              count or replace bytes, sixteen at a time
//     ALL "AB"             memmem, on from the end of each match
//     CHARACTERS           the size of the region, or a fill of it
//     CONVERTING           one table of 256 bytes for the phrase
//
// A value without a byte matches nowhere.
#include <algorithm>
#include <cstring>

#include "base/text_units.h"
#include "chardata/byte_translate.h"
#include "verbs/inspect_phrase.h"

namespace {

using Vector = uint8_t __attribute__((vector_size(16)));
using Halves = uint64_t __attribute__((vector_size(16)));

// The sum of all lanes.
int64_t sumOf(Vector lanes)
{
    int64_t sum = 0;
    for (int i = 0; i < 2; i++) {
        uint64_t half = reinterpret_cast<Halves>(lanes)[i];
        half = (half & 0x00FF00FF00FF00FFu) + (half >> 8 & 0x00FF00FF00FF00FFu);
        sum += static_cast<int64_t>((half * 0x0001000100010001u) >> 48);
    }
    return sum;
}

// How often a byte is in a text.
int64_t countByte(const uint8_t *text, size_t length, uint8_t byte)
{
    constexpr size_t step = 2 * sizeof(Vector), most = 255; // what a lane can count to
    const Vector wanted = Vector{} + byte;
    int64_t count = 0;
    for (size_t rounds = length / step; rounds > 0;) {
        size_t run = std::min(rounds, most);
        Vector even = {}, odd = {};
        for (const uint8_t *end = text + run * step; text < end; text += step) {
            even -= static_cast<Vector>(load<Vector>(text) == wanted);
            odd -= static_cast<Vector>(load<Vector>(text + sizeof(Vector)) == wanted);
        }
        count += sumOf(even) + sumOf(odd);
        rounds -= run;
    }
    size_t rest = length % step;
    if (rest >= sizeof(Vector)) {
        count += sumOf(-static_cast<Vector>(load<Vector>(text) == wanted));
        text += sizeof(Vector);
        rest -= sizeof(Vector);
    }
    for (const uint8_t *end = text + rest; text < end; text++) count += *text == byte;
    return count;
}

void replaceByte(uint8_t *text, size_t length, uint8_t from, uint8_t to)
{
    size_t i = 0;
    for (; i + sizeof(Vector) <= length; i += sizeof(Vector)) {
        Vector bytes = load<Vector>(text + i), replaced = bytes == from ? Vector{} + to : bytes;
        store<Vector>(text + i, replaced);
    }
    for (; i < length; i++)
        if (text[i] == from) text[i] = to;
}

void addToCounter(const PreparedPhrase &phrase, int64_t matches)
{
    store<uint64_t>(phrase.counter, load<uint64_t>(phrase.counter) + static_cast<uint64_t>(matches));
}

// A figurative character; one that the operand holds only in part has NULs for the rest.
template <class Unit>
typename Unit::Code figurative(const PreparedPhrase &phrase)
{
    uint8_t character[2] = {};
    memcpy(character, phrase.result.data, std::min(phrase.result.length, Unit::size));
    return Unit::load(character);
}

template <class Unit>
void fill(uint8_t *at, size_t length, typename Unit::Code code)
{
    uint8_t character[2];
    Unit::store(character, code);
    if constexpr (Unit::size == 1)
        memset(at, code, length);
    else
        fillPairs(at, length, character, character[0]);
}

// What a phrase does to `length` bytes that it has matched.
template <class Unit>
void act(const PreparedPhrase &phrase, InspectedItem &item, int64_t place, size_t length)
{
    if (phrase.is(ZVK_INSPECT_TALLYING)) addToCounter(phrase, 1);
    if (!phrase.is(ZVK_INSPECT_REPLACING)) return;
    item.changed = true;
    if (!phrase.figurative) {
        if (length > 0) memmove(item.data + place, phrase.result.data, length);
    } else if (phrase.result.length > 0) {
        fill<Unit>(item.data + place, length, figurative<Unit>(phrase));
    }
}

// Places go by whole characters until something matches, so this is where a phrase can match first.
template <class Unit>
int64_t firstPlace(const PreparedPhrase &phrase)
{
    constexpr int64_t size = Unit::size;
    return (phrase.first + size - 1) / size * size;
}

// --- CONVERTING

// The character that replaces `code`, which becomes that; false if none does.
template <class Unit>
bool convert(const PreparedPhrase &phrase, typename Unit::Code &code)
{
    size_t length = wholeBytes<Unit>(phrase.compared.length);
    for (size_t i = 0; i < length; i += Unit::size) {
        if (Unit::load(phrase.compared.data + i) != code) continue;
        if (phrase.figurative && phrase.result.length == 0) return false;
        code = phrase.figurative ? figurative<Unit>(phrase) : Unit::load(phrase.result.data + i);
        return true;
    }
    return false;
}

template <class Unit>
void convertAt(const PreparedPhrase &phrase, InspectedItem &item, int64_t place)
{
    typename Unit::Code code = Unit::load(item.data + place);
    if (!convert<Unit>(phrase, code)) return;
    Unit::store(item.data + place, code);
    item.changed = true;
}

struct ByteTable {
    uint8_t to[256];
};
constexpr ByteTable kSameBytes = [] {
    ByteTable table{};
    for (int i = 0; i < 256; i++) table.to[i] = static_cast<uint8_t>(i);
    return table;
}();

void convertBytes(const PreparedPhrase &phrase, uint8_t *text, size_t length)
{
    ByteTable table = kSameBytes;
    bool nothing = phrase.figurative && phrase.result.length == 0;
    // From the end, so that of equal characters the first one has the last word.
    for (size_t i = nothing ? 0 : phrase.compared.length; i-- > 0;)
        table.to[phrase.compared.data[i]] = phrase.figurative ? *phrase.result.data : phrase.result.data[i];
    zvkTranslateBytes(text, text, length, table.to);
}

// Two-byte characters: a table for those whose second byte is zero, most of national data, and a
// search for the others.
void convertPairs(const PreparedPhrase &phrase, InspectedItem &item, int64_t first, int64_t end)
{
    uint16_t table[256];
    for (uint16_t i = 0; i < 256; i++) {
        table[i] = i;
        convert<DoubleByte>(phrase, table[i]);
    }
    for (int64_t place = first; place + 2 <= end; place += 2) {
        uint16_t code = DoubleByte::load(item.data + place);
        if (code < 256)
            code = table[code];
        else
            convert<DoubleByte>(phrase, code);
        DoubleByte::store(item.data + place, code);
    }
}

// --- One phrase alone

template <class Unit>
void scanConverting(const PreparedPhrase &phrase, InspectedItem &item)
{
    int64_t first = firstPlace<Unit>(phrase);
    if (first >= phrase.end) return;
    item.changed = true;
    if constexpr (Unit::size == 1)
        convertBytes(phrase, item.data + first, static_cast<size_t>(phrase.end - first));
    else
        convertPairs(phrase, item, first, phrase.end);
}

// CHARACTERS where the matched length is one character.
template <class Unit>
void scanCharacters(const PreparedPhrase &phrase, InspectedItem &item)
{
    constexpr int64_t size = Unit::size;
    int64_t first = firstPlace<Unit>(phrase), characters = (phrase.end - first) / size;
    if (first >= phrase.end || characters == 0) return;
    // FIRST and LEADING say nothing more about CHARACTERS but this.
    if (phrase.is(ZVK_INSPECT_FIRST) && phrase.is(ZVK_INSPECT_REPLACING)) characters = 1;
    if (phrase.is(ZVK_INSPECT_TALLYING)) addToCounter(phrase, characters);
    if (!phrase.is(ZVK_INSPECT_REPLACING)) return;
    item.changed = true;
    if (phrase.result.length > 0)
        fill<Unit>(item.data + first, static_cast<size_t>(characters * size), figurative<Unit>(phrase));
}

template <class Unit>
void scanLeading(const PreparedPhrase &phrase, InspectedItem &item)
{
    int64_t length = static_cast<int64_t>(phrase.compared.length), place = firstPlace<Unit>(phrase);
    // Where no place is the first of the region, none begins a leading run.
    if (place != phrase.first || length == 0) return;
    while (place + std::max<int64_t>(length, Unit::size) <= phrase.end &&
           memcmp(item.data + place, phrase.compared.data, phrase.compared.length) == 0) {
        act<Unit>(phrase, item, place, phrase.compared.length);
        place += length;
        if (phrase.is(ZVK_INSPECT_FIRST) && phrase.is(ZVK_INSPECT_REPLACING)) return;
    }
}

template <class Unit>
void scanAll(const PreparedPhrase &phrase, InspectedItem &item)
{
    size_t length = phrase.compared.length;
    int64_t place = firstPlace<Unit>(phrase);
    bool once = phrase.is(ZVK_INSPECT_FIRST) && phrase.is(ZVK_INSPECT_REPLACING);
    if (length == 0 || place >= phrase.end) return;
    const uint8_t *end = item.data + phrase.end;
    while (const uint8_t *found = findText<Unit>(item.data + place, end, phrase.compared.data, length)) {
        int64_t at = found - item.data;
        // The last byte of an odd item is no place.
        if (at + static_cast<int64_t>(Unit::size) > phrase.end) return;
        act<Unit>(phrase, item, at, length);
        place = at + static_cast<int64_t>(length);
        if (once || place >= phrase.end) return;
    }
}

// ALL of a single byte, without FIRST.
void scanByte(const PreparedPhrase &phrase, InspectedItem &item)
{
    if (phrase.first >= phrase.end) return;
    uint8_t *text = item.data + phrase.first;
    size_t length = static_cast<size_t>(phrase.end - phrase.first);
    uint8_t byte = *phrase.compared.data;
    if (phrase.is(ZVK_INSPECT_TALLYING)) addToCounter(phrase, countByte(text, length, byte));
    if (!phrase.is(ZVK_INSPECT_REPLACING) || phrase.result.length == 0) return;
    replaceByte(text, length, byte, *phrase.result.data);
    item.changed = true;
}

template <class Unit>
bool scanAlone(const PreparedPhrase &phrase, InspectedItem &item)
{
    bool oneCharacter = phrase.compared.length == Unit::size;
    if (phrase.is(ZVK_INSPECT_CONVERTING)) {
        scanConverting<Unit>(phrase, item);
    } else if (phrase.is(ZVK_INSPECT_CHARACTERS)) {
        if (!oneCharacter || phrase.is(ZVK_INSPECT_LEADING)) return false;
        scanCharacters<Unit>(phrase, item);
    } else if (phrase.is(ZVK_INSPECT_LEADING)) {
        scanLeading<Unit>(phrase, item);
    } else if (Unit::size == 1 && oneCharacter && !phrase.is(ZVK_INSPECT_FIRST)) {
        scanByte(phrase, item);
    } else {
        scanAll<Unit>(phrase, item);
    }
    return true;
}

// --- Several phrases

// Bytes with which a phrase of the group can begin; all of them if there is a phrase to which every
// place matters.
struct Beginnings {
    bool any = false;
    bool marks[256];

    Beginnings(const PreparedPhrase *phrases, size_t count)
    {
        memset(marks, 0, sizeof marks);
        for (size_t i = 0; i < count; i++) {
            if (phrases[i].is(ZVK_INSPECT_CONVERTING | ZVK_INSPECT_CHARACTERS | ZVK_INSPECT_LEADING))
                any = true;
            else if (phrases[i].compared.length > 0)
                marks[*phrases[i].compared.data] = true;
        }
    }
    int64_t next(const InspectedItem &item, int64_t place) const
    {
        if (!any)
            while (place < item.length && !marks[item.data[place]]) place++;
        return place;
    }
};

// Does the phrase match here? One that cannot match any more is closed.
bool matches(PreparedPhrase &phrase, const InspectedItem &item, int64_t place, bool continues)
{
    bool leading = phrase.is(ZVK_INSPECT_LEADING);
    if (leading && place > phrase.first && !continues) {
        phrase.close();
        return false;
    }
    if (phrase.is(ZVK_INSPECT_CHARACTERS | ZVK_INSPECT_CONVERTING)) return true;
    int64_t length = static_cast<int64_t>(phrase.compared.length);
    bool fits = length > 0 && place + length <= phrase.end;
    if (fits && memcmp(item.data + place, phrase.compared.data, phrase.compared.length) == 0) return true;
    if (!fits || leading) phrase.close();
    return false;
}

template <class Unit>
void scanTogether(InspectedItem &item, PreparedPhrase *phrases, size_t count)
{
    constexpr int64_t size = Unit::size;
    const PreparedPhrase *run = nullptr; // the LEADING phrase that made the last match
    const Beginnings beginnings(phrases, count);
    for (int64_t place = 0; place < item.length;) {
        if constexpr (size == 1) place = beginnings.next(item, place);
        PreparedPhrase *match = nullptr;
        bool open = false; // is there a phrase yet to come, or still to be tried?
        for (PreparedPhrase *each = phrases; each < phrases + count; each++) {
            open |= place + size <= each->end;
            if (place < each->first || place + size > each->end) continue;
            if (!matches(*each, item, place, run == each)) continue;
            match = each;
            break;
        }
        if (!match) {
            if (!open) return;
            place += size;
            continue;
        }
        if (match->is(ZVK_INSPECT_CONVERTING)) {
            convertAt<Unit>(*match, item, place);
            place += size;
            continue;
        }
        act<Unit>(*match, item, place, match->compared.length);
        if (match->is(ZVK_INSPECT_REPLACING) && match->is(ZVK_INSPECT_FIRST)) match->close();
        run = match->is(ZVK_INSPECT_LEADING) ? match : nullptr;
        place += match->compared.length > 0 ? static_cast<int64_t>(match->compared.length) : size;
    }
}

} // namespace

template <class Unit>
void zvkScanGroup(InspectedItem &item, PreparedPhrase *phrases, size_t count)
{
    if (count != 1 || !scanAlone<Unit>(*phrases, item)) scanTogether<Unit>(item, phrases, count);
}

template void zvkScanGroup<SingleByte>(InspectedItem &item, PreparedPhrase *phrases, size_t count);
template void zvkScanGroup<DoubleByte>(InspectedItem &item, PreparedPhrase *phrases, size_t count);
