// Catches: a piece cut at the wrong place, above all with several delimiters, ALL, an alphabet and
// two-byte characters; a receiver filled or justified wrong; POINTER, TALLYING, COUNT IN and
// overflow that disagree with what was done; a load or store beside an operand, with a POINTER that
// compiled code should have refused too.
#include <algorithm>
#include <thread>

#include "kvr2/string_unstring.h"
#include "support/share.h"
#include "verbs/guarded_text.h"

namespace {

using Bytes = std::string;

// Upper and lower case weigh the same.
const AlphabetRecord &foldingAlphabet()
{
    static uint8_t weights[256];
    static AlphabetRecord record = [] {
        for (int i = 0; i < 256; i++) weights[i] = static_cast<uint8_t>(i >= 'a' && i <= 'z' ? i - 0x20 : i);
        AlphabetRecord made{};
        made.collatingWeights = weights;
        return made;
    }();
    return record;
}

bool same(const Bytes &left, const Bytes &right, bool folded)
{
    if (left.size() != right.size()) return false;
    for (size_t i = 0; i < left.size(); i++) {
        auto fold = [&](char c) {
            return folded ? foldingAlphabet().collatingWeights[static_cast<uint8_t>(c)] : static_cast<uint8_t>(c);
        };
        if (fold(left[i]) != fold(right[i])) return false;
    }
    return true;
}

// --- STRING

struct Group {
    Bytes delimiter; // empty: SIZE
    std::vector<Bytes> sources;
};

struct StringStatement {
    uint8_t flags;
    Bytes target;
    uint64_t pointer;
    uint32_t overflow;
    std::vector<Group> groups;
    bool operator==(const StringStatement &other) const
    {
        return target == other.target && pointer == other.pointer && overflow == other.overflow;
    }
};

void modelString(StringStatement &statement)
{
    size_t unit = statement.flags & (ZVK_STRING_NATIONAL | ZVK_STRING_DBCS) ? 2 : 1;
    bool folded = statement.flags & ZVK_STRING_COLLATED && unit == 1, full = false;
    size_t offset = statement.flags & ZVK_STRING_POINTER ? (statement.pointer - 1) * unit : 0;
    for (const Group &group : statement.groups) {
        for (const Bytes &source : group.sources) {
            size_t length = source.size(), delimiter = group.delimiter.size();
            for (size_t at = 0; delimiter > 0 && at + delimiter <= source.size(); at += unit) {
                if (!same(source.substr(at, delimiter), group.delimiter, folded)) continue;
                length = at;
                break;
            }
            size_t sent = std::min(length, statement.target.size() - offset);
            full |= sent < length;
            statement.target.replace(offset, sent, source, 0, sent);
            offset += sent;
        }
    }
    if (full && statement.overflow) statement.overflow++;
    statement.pointer = unit == 1 ? offset + 1 : (offset + 2) / 2;
}

void callString(GuardedTexts &texts, StringStatement &statement)
{
    Bytes block(offsetof(StringBlock, groups), '\0');
    auto *head = reinterpret_cast<StringBlock *>(block.data());
    uint8_t *target = texts.put(statement.target);
    head->flags = statement.flags;
    head->target = target;
    head->targetLength = statement.target.size();
    head->pointer = statement.pointer;
    head->groupCount = static_cast<uint32_t>(statement.groups.size());
    for (const Group &group : statement.groups) {
        StringGroup record{};
        record.delimiter = group.delimiter.empty() && group.sources.size() % 2 ? nullptr : texts.put(group.delimiter);
        record.delimiterLength = group.delimiter.size();
        record.sourceCount = static_cast<uint32_t>(group.sources.size());
        block += textAt(&record, offsetof(StringGroup, sources));
        for (const Bytes &source : group.sources) {
            StringSource entry = {texts.put(source), source.size()};
            block += textAt(&entry, sizeof entry);
        }
    }
    // The block ends with the last source, and is at its records' alignment at the end of its pages
    // too.
    auto *placed = reinterpret_cast<StringBlock *>(texts.put(block));
    _zvkcString(placed, &foldingAlphabet(), &statement.overflow);
    statement.pointer = placed->pointer;
    statement.target = textAt(target, statement.target.size());
}

TEST(String, GeneratedStatementsAsTheModelHasThem)
{
    GuardedTexts texts;
    for (unsigned i = 0; i < 30000; i++) {
        std::mt19937 random(i);
        texts.next(random);
        bool pairs = random() % 2;
        size_t unit = pairs ? 2 : 1;
        Bytes set = pairs ? Bytes("ABBAAA,,", 8) : "Aab,,;";
        StringStatement statement{};
        statement.flags = pairs ? (random() % 2 ? ZVK_STRING_NATIONAL : ZVK_STRING_DBCS) : 0;
        if (random() % 3 == 0) statement.flags |= ZVK_STRING_COLLATED;
        statement.target = Bytes(random() % 40, '.');
        statement.pointer = random();
        if (random() % 2) {
            statement.flags |= ZVK_STRING_POINTER;
            statement.pointer = 1 + random() % (statement.target.size() / unit + 1);
        }
        statement.overflow = random() % 2 ? 7 : 0;
        for (unsigned n = random() % 4; n > 0; n--) {
            Group group;
            if (random() % 3) group.delimiter = randomText(random, set, unit, random() % 3);
            for (unsigned m = random() % 4; m > 0; m--)
                group.sources.push_back(randomText(random, set, unit, random() % 12));
            if (pairs && random() % 5 == 0 && !group.sources.empty()) group.sources.back() += 'A'; // no whole character
            statement.groups.push_back(group);
        }
        StringStatement model = statement;
        modelString(model);
        callString(texts, statement);
        ASSERT_EQ(statement, model) << i << ": [" << statement.target << "] [" << model.target << "] "
                                    << statement.pointer << " " << model.pointer;
    }
}

TEST(String, PointerOutsideTheTarget)
{
    GuardedTexts texts;
    for (uint8_t kind : {uint8_t{0}, uint8_t{ZVK_STRING_NATIONAL}})
        for (uint64_t pointer : {uint64_t{0}, uint64_t{12}, uint64_t{1} << 31, uint64_t{1} << 63, ~uint64_t{0}}) {
            StringStatement statement = {
                static_cast<uint8_t>(kind | ZVK_STRING_POINTER), "..........", pointer, 1, {{"", {"AB"}}}};
            callString(texts, statement);
            EXPECT_EQ(statement, (StringStatement{0, "..........", pointer, 2, {}})) << pointer;
        }
}

// --- UNSTRING

struct Delimiter {
    Bytes text;
    bool all;
};

struct Receiver {
    uint8_t kind = 0;
    Bytes item = {};
    uint64_t integerSize = 0;
    bool wantsDelimiter = false;
    uint8_t delimiterKind = 0;
    Bytes delimiterIn = {};
    uint64_t count = 99;
    bool operator==(const Receiver &other) const
    {
        return item == other.item && delimiterIn == other.delimiterIn && count == other.count;
    }
};

struct UnstringStatement {
    uint8_t flags;
    Bytes source;
    uint64_t pointer;
    uint32_t tally, overflow;
    std::vector<Delimiter> delimiters;
    std::vector<Receiver> receivers;
    bool operator==(const UnstringStatement &other) const
    {
        return pointer == other.pointer && tally == other.tally && overflow == other.overflow &&
               receivers == other.receivers;
    }
};

// `size` bytes of `pad`, a last odd one `odd`.
Bytes padding(const Bytes &pad, size_t size, char odd)
{
    Bytes text;
    while (text.size() + pad.size() <= size) text += pad;
    return text.size() < size ? text + odd : text;
}

Bytes movedText(const Bytes &text, size_t size, bool right, const Bytes &blank)
{
    if (text.size() >= size) return right ? text.substr(text.size() - size) : text.substr(0, size);
    Bytes blanks = padding(blank, size - text.size(), ' ');
    return right ? blanks + text : text + blanks;
}

Bytes movedDigits(const Receiver &to, const Bytes &text)
{
    Bytes zero = to.kind & ZVK_UNSTRING_NUMERIC ? Bytes("0") : Bytes("0\0", 2), plus = zero;
    plus[0] = '+';
    bool separate = to.kind & ZVK_UNSTRING_SIGN_SEPARATE && to.item.size() >= plus.size();
    size_t digits = to.item.size() - (separate ? plus.size() : 0), integers = std::min<size_t>(to.integerSize, digits);
    Bytes kept = text.size() > integers ? text.substr(text.size() - integers) : text;
    Bytes number = padding(zero, integers - kept.size(), '0') + kept + padding(zero, digits - integers, '0');
    if (!separate) return number;
    return to.kind & ZVK_UNSTRING_SIGN_LEADING ? plus + number : number + plus;
}

void modelUnstring(UnstringStatement &statement)
{
    bool national = statement.flags & ZVK_UNSTRING_NATIONAL, dbcs = statement.flags & ZVK_UNSTRING_DBCS;
    size_t unit = national || dbcs ? 2 : 1, end = statement.source.size();
    bool folded = statement.flags & ZVK_UNSTRING_COLLATED && !dbcs;
    Bytes blank = dbcs ? "  " : national ? Bytes(" \0", 2) : " ";
    size_t start = statement.flags & ZVK_UNSTRING_POINTER ? (statement.pointer - 1) * unit : 0, at = start;
    uint32_t served = 0;
    for (Receiver &to : statement.receivers) {
        if (at >= end) break;
        served++;
        size_t fieldEnd = end, next = end;
        Bytes occurrence;
        if (statement.delimiters.empty()) {
            bool number = to.kind & (ZVK_UNSTRING_NUMERIC | ZVK_UNSTRING_NUMERIC_NATIONAL);
            fieldEnd = next = std::min(end, at + (number ? to.integerSize : to.item.size()));
        }
        for (size_t place = at; place < end && !statement.delimiters.empty() && next == end && occurrence.empty();
             place += unit) {
            for (const Delimiter &delimiter : statement.delimiters) {
                auto stands = [&](size_t where) {
                    return !delimiter.text.empty() && where <= end &&
                           same(statement.source.substr(where, delimiter.text.size()), delimiter.text, folded);
                };
                if (!stands(place)) continue;
                fieldEnd = place;
                size_t last = place;
                while (delimiter.all && stands(last + delimiter.text.size())) last += delimiter.text.size();
                occurrence = statement.source.substr(last, delimiter.text.size());
                next = last + delimiter.text.size();
                break;
            }
        }
        if (to.wantsDelimiter && !statement.delimiters.empty())
            to.delimiterIn =
                movedText(occurrence, to.delimiterIn.size(), to.delimiterKind & ZVK_UNSTRING_JUST_RIGHT, blank);
        Bytes field = statement.source.substr(at, fieldEnd - at);
        bool number = to.kind & (ZVK_UNSTRING_NUMERIC | ZVK_UNSTRING_NUMERIC_NATIONAL);
        to.item = number ? movedDigits(to, field)
                         : movedText(field, to.item.size(), to.kind & ZVK_UNSTRING_JUST_RIGHT, blank);
        to.count = field.size() / unit;
        at = next;
    }
    if (at < end && statement.overflow) statement.overflow++;
    if (statement.flags & ZVK_UNSTRING_POINTER) statement.pointer += unit == 1 ? at - start : (at - start + 2) / 2 - 1;
    if (statement.flags & ZVK_UNSTRING_TALLYING) statement.tally += served;
}

void callUnstring(GuardedTexts &texts, UnstringStatement &statement)
{
    Bytes block(offsetof(UnstringBlock, delimiters), '\0');
    auto *head = reinterpret_cast<UnstringBlock *>(block.data());
    head->flags = statement.flags;
    head->source = texts.put(statement.source);
    head->sourceLength = statement.source.size();
    head->pointer = statement.pointer;
    head->tally = statement.tally;
    head->delimiterCount = static_cast<uint32_t>(statement.delimiters.size());
    head->targetCount = static_cast<uint32_t>(statement.receivers.size());
    for (const Delimiter &delimiter : statement.delimiters) {
        UnstringDelimiter record = {texts.put(delimiter.text), delimiter.text.size(),
                                    delimiter.all ? ZVK_UNSTRING_ALL : 0, 0};
        block += textAt(&record, sizeof record);
    }
    std::vector<UnstringTarget> targets;
    for (const Receiver &receiver : statement.receivers) {
        UnstringTarget target{};
        target.address = texts.put(receiver.item);
        target.size = receiver.item.size();
        target.integerSize = receiver.integerSize;
        target.kind = receiver.kind;
        if (receiver.wantsDelimiter) target.delimiterIn = texts.put(receiver.delimiterIn);
        target.delimiterInSize = receiver.delimiterIn.size();
        target.delimiterInKind = receiver.delimiterKind;
        target.count = receiver.count;
        targets.push_back(target);
    }
    auto *placed = reinterpret_cast<UnstringBlock *>(texts.put(block));
    _zvkcUnString(placed, targets.data(), &foldingAlphabet(), &statement.overflow);
    statement.pointer = placed->pointer;
    statement.tally = placed->tally;
    for (size_t i = 0; i < targets.size(); i++) {
        Receiver &receiver = statement.receivers[i];
        receiver.item = textAt(targets[i].address, receiver.item.size());
        if (receiver.wantsDelimiter) receiver.delimiterIn = textAt(targets[i].delimiterIn, receiver.delimiterIn.size());
        receiver.count = targets[i].count;
    }
}

Receiver randomReceiver(std::mt19937 &random)
{
    static constexpr uint8_t kinds[] = {0, 0, ZVK_UNSTRING_JUST_RIGHT, ZVK_UNSTRING_NUMERIC,
                                        ZVK_UNSTRING_NUMERIC_NATIONAL};
    Receiver to;
    to.kind = kinds[random() % 5];
    to.item = Bytes(random() % 12, '#');
    to.integerSize = random() % (to.item.size() + 1);
    if (random() % 8 == 0) to.integerSize = to.item.size() + 5;
    if (to.kind & (ZVK_UNSTRING_NUMERIC | ZVK_UNSTRING_NUMERIC_NATIONAL)) {
        if (random() % 2) to.kind |= ZVK_UNSTRING_SIGN_SEPARATE;
        if (random() % 2) to.kind |= ZVK_UNSTRING_SIGN_LEADING;
    }
    to.wantsDelimiter = random() % 2;
    to.delimiterIn = Bytes(to.wantsDelimiter ? random() % 5 : 0, '#');
    to.delimiterKind = random() % 2 ? ZVK_UNSTRING_JUST_RIGHT : 0;
    return to;
}

TEST(Unstring, GeneratedStatementsAsTheModelHasThem)
{
    GuardedTexts texts;
    for (unsigned i = 0; i < shareOf(60000u); i++) {
        std::mt19937 random(i);
        texts.next(random);
        static constexpr uint8_t forms[] = {0, ZVK_UNSTRING_NATIONAL, ZVK_UNSTRING_DBCS};
        UnstringStatement statement{};
        statement.flags = forms[random() % 3];
        size_t unit = statement.flags ? 2 : 1;
        Bytes set = unit == 2 ? Bytes("AB,,BA;;AAaa", 12) : "ABab,,;";
        if (random() % 3 == 0) statement.flags |= ZVK_UNSTRING_COLLATED;
        statement.source = randomText(random, set, unit, random() % 30);
        if (unit == 2 && random() % 5 == 0) statement.source += 'A';
        statement.pointer = random();
        if (random() % 2) {
            statement.flags |= ZVK_UNSTRING_POINTER;
            statement.pointer = 1 + random() % (statement.source.size() / unit + 1);
        }
        if (random() % 2) statement.flags |= ZVK_UNSTRING_TALLYING;
        statement.tally = random();
        statement.overflow = random() % 2;
        for (unsigned n = random() % 4; n > 0; n--)
            statement.delimiters.push_back(
                {randomText(random, set, unit, random() % 8 ? 1 + random() % 2 : 0), random() % 2 == 0});
        for (unsigned n = random() % 6; n > 0; n--) statement.receivers.push_back(randomReceiver(random));
        UnstringStatement model = statement;
        modelUnstring(model);
        callUnstring(texts, statement);
        ASSERT_EQ(statement.receivers.size(), model.receivers.size());
        for (size_t n = 0; n < model.receivers.size(); n++)
            ASSERT_EQ(statement.receivers[n], model.receivers[n])
                << i << ", " << n << ": [" << statement.source << "] gives [" << statement.receivers[n].item << "] ["
                << statement.receivers[n].delimiterIn << "], not [" << model.receivers[n].item << "] ["
                << model.receivers[n].delimiterIn << "]";
        ASSERT_EQ(statement, model) << i << ": " << statement.pointer << " " << model.pointer << ", "
                                    << statement.overflow;
    }
}

TEST(Unstring, WhatProgramsWrite)
{
    GuardedTexts texts;
    UnstringStatement statement = {ZVK_UNSTRING_TALLYING, "ABABX,-12,", 0, 0, 1, {{"AB", true}, {",", false}}, {}};
    statement.receivers = {{0, "??"},
                           {0, "?"},
                           {ZVK_UNSTRING_NUMERIC | ZVK_UNSTRING_SIGN_SEPARATE | ZVK_UNSTRING_SIGN_LEADING, "??????", 4},
                           {0, "??"}};
    callUnstring(texts, statement);
    EXPECT_EQ(statement.receivers[0], (Receiver{.item = "  ", .count = 0}));
    EXPECT_EQ(statement.receivers[1], (Receiver{.item = "X", .count = 1}));
    EXPECT_EQ(statement.receivers[2],
              (Receiver{.item = "+0-120", .count = 3}));         // the sign of the field goes in with the digits
    EXPECT_EQ(statement.receivers[3], (Receiver{.item = "??"})); // the last delimiter ended the source
    EXPECT_EQ(statement.tally, 3u);
    EXPECT_EQ(statement.overflow, 1u);
}

TEST(Unstring, PointerOutsideTheSourceAndLongSources)
{
    GuardedTexts texts(size_t{1} << 20);
    for (uint8_t kind : {uint8_t{0}, uint8_t{ZVK_UNSTRING_NATIONAL}})
        for (uint64_t pointer : {uint64_t{0}, uint64_t{12}, uint64_t{1} << 31, uint64_t{1} << 63, ~uint64_t{0}}) {
            UnstringStatement statement = {
                static_cast<uint8_t>(kind | ZVK_UNSTRING_POINTER), "ABCDEFGHIJ", pointer, 5, 1, {}, {{0, "??"}}};
            UnstringStatement same = statement;
            callUnstring(texts, statement);
            EXPECT_EQ(statement, same) << pointer;
        }
    Bytes source((size_t{1} << 20) - 1, 'x');
    UnstringStatement statement = {ZVK_UNSTRING_POINTER,        source + ';', 1, 0, 1,
                                   {{",", false}, {";", true}}, {{0, "????"}}};
    texts = GuardedTexts(size_t{1} << 20);
    callUnstring(texts, statement);
    EXPECT_EQ(statement.receivers[0], (Receiver{.item = "xxxx", .count = (1u << 20) - 1}));
    EXPECT_EQ(statement.pointer, (1u << 20) + 1u);

    UnstringStatement many = {0, Bytes(1000, 'x') + "xy999", 0, 0, 0, {}, {{0, "????"}}};
    for (int i = 0; i < 1000; i++) many.delimiters.push_back({"xy" + std::to_string(i), false});
    GuardedTexts wide(1 << 15);
    callUnstring(wide, many);
    EXPECT_EQ(many.receivers[0], (Receiver{.item = "xxxx", .count = 1000})); // "xy9" ends the field
}

TEST(Unstring, ThreadsUnderDifferentAlphabets)
{
    std::vector<std::thread> threads;
    std::vector<int> wrong(8);
    for (size_t t = 0; t < wrong.size(); t++)
        threads.emplace_back([&, t] {
            uint8_t weights[256];
            for (size_t i = 0; i < 256; i++) weights[i] = static_cast<uint8_t>(i);
            weights['a' + t] = ','; // every thread has a comma of its own
            AlphabetRecord alphabet{};
            alphabet.collatingWeights = weights;
            for (int i = 0; i < 20000; i++) {
                uint8_t item[4];
                UnstringTarget target{};
                target.address = item;
                target.size = sizeof item;
                UnstringBlock block{};
                block.flags = ZVK_UNSTRING_COLLATED;
                block.source = "xabcdefgh";
                block.sourceLength = 9;
                block.delimiterCount = block.targetCount = 1;
                block.delimiters[0] = {",", 1, 0, 0};
                uint32_t overflow = 0;
                _zvkcUnString(&block, &target, &alphabet, &overflow);
                wrong[t] += target.count != t + 1;
            }
        });
    for (std::thread &thread : threads) thread.join();
    for (int count : wrong) EXPECT_EQ(count, 0);
}

} // namespace
