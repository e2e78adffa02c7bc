// Catches: a count, a replacement or a conversion that differs from what trying every phrase at
// every place gives; a region, a LEADING run or a sign handled wrong by one of the short ways; a
// store or a load beside an operand; a statement of odd or absurd lengths that does not end.
#include <algorithm>

#include "kvr2/inspect.h"
#include "support/child.h"
#include "support/require.h"
#include "support/share.h"
#include "verbs/guarded_text.h"

namespace {

constexpr uint32_t kSigned = ZVK_INSPECT_DISPLAY_SIGNED;

struct Operand {
    uint32_t flags = 0;
    std::string text = {};
};

struct Phrase {
    uint32_t kind; // with ZVK_INSPECT_FIGURATIVE and the sign flags of `result`
    std::string result = {};
    Operand compared = {}, before = {}, after = {};
    uint64_t counter = 0;
};

struct Statement {
    Operand item;
    std::vector<Phrase> phrases;
};

// --- The slow model: every phrase at every place, with the item as a string.

std::string plain(uint32_t flags, std::string text)
{
    bool separate = flags & ZVK_INSPECT_SIGN_SEPARATE, leading = flags & ZVK_INSPECT_SIGN_LEADING;
    size_t sign = 0;
    if ((flags & kSigned) == kSigned) {
        if (!separate) {
            char &digit = leading ? text.front() : text.back();
            digit = static_cast<char>((digit & 0x0F) | '0');
            return text;
        }
        sign = 1;
    } else if ((flags & ZVK_INSPECT_NATIONAL_SIGNED) == ZVK_INSPECT_NATIONAL_SIGNED && separate) {
        sign = 2;
    }
    return leading ? text.substr(sign) : text.substr(0, text.size() - sign);
}

struct Model {
    size_t unit;
    std::string item;
    std::vector<Phrase> &phrases;

    size_t find(const Operand &operand) const
    {
        std::string text = plain(operand.flags, operand.text);
        for (size_t at = 0; at + text.size() <= item.size(); at += unit)
            if (item.compare(at, text.size(), text) == 0) return at;
        return std::string::npos;
    }

    void group(size_t begin, size_t end)
    {
        struct Live {
            std::string result, compared;
            long first, last;
            bool closed;
        };
        std::vector<Live> live;
        for (size_t i = begin; i < end; i++) {
            Phrase &phrase = phrases[i];
            Live one = {plain(phrase.kind, phrase.result), plain(phrase.compared.flags, phrase.compared.text), 0,
                        static_cast<long>(item.size()) - static_cast<long>(unit), false};
            if (phrase.kind & ZVK_INSPECT_CHARACTERS) one.compared = std::string(unit, '?');
            if (phrase.kind & (ZVK_INSPECT_REPLACING | ZVK_INSPECT_CONVERTING) &&
                !(phrase.kind & ZVK_INSPECT_FIGURATIVE)) {
                size_t shorter = std::min(one.result.size(), one.compared.size());
                one.result.resize(shorter);
                one.compared.resize(shorter);
            }
            if (phrase.kind & ZVK_INSPECT_AFTER) {
                size_t at = find(phrase.after);
                one.closed = at == std::string::npos;
                one.first = static_cast<long>(at + plain(phrase.after.flags, phrase.after.text).size());
            }
            if (phrase.kind & ZVK_INSPECT_BEFORE) {
                size_t at = find(phrase.before);
                if (at != std::string::npos) one.last = static_cast<long>(at) - static_cast<long>(unit);
            }
            live.push_back(one);
        }
        size_t lastMatch = std::string::npos;
        for (size_t at = 0; at < item.size();) {
            size_t advance = unit;
            for (size_t i = begin; i < end; i++) {
                Phrase &phrase = phrases[i];
                Live &one = live[i - begin];
                if (one.closed || static_cast<long>(at) > one.last || static_cast<long>(at) < one.first) continue;
                bool leading = phrase.kind & ZVK_INSPECT_LEADING;
                if (leading && static_cast<long>(at) > one.first && lastMatch != i) {
                    one.closed = true;
                    continue;
                }
                if (phrase.kind & ZVK_INSPECT_CONVERTING) {
                    for (size_t k = 0; k + unit <= one.compared.size(); k += unit) {
                        if (one.compared.compare(k, unit, item, at, unit) != 0) continue;
                        item.replace(at, unit, one.result, phrase.kind & ZVK_INSPECT_FIGURATIVE ? 0 : k, unit);
                        break;
                    }
                    break;
                }
                if (!(phrase.kind & ZVK_INSPECT_CHARACTERS)) {
                    if (one.compared.empty() || at + one.compared.size() > static_cast<size_t>(one.last) + unit) {
                        one.closed = true;
                        continue;
                    }
                    if (item.compare(at, one.compared.size(), one.compared) != 0) {
                        one.closed |= leading;
                        continue;
                    }
                }
                if (phrase.kind & ZVK_INSPECT_TALLYING) phrase.counter++;
                if (phrase.kind & ZVK_INSPECT_REPLACING) {
                    for (size_t k = 0; k < one.compared.size(); k++)
                        item[at + k] = one.result[phrase.kind & ZVK_INSPECT_FIGURATIVE ? k % unit : k];
                    one.closed |= (phrase.kind & ZVK_INSPECT_FIRST) != 0;
                }
                lastMatch = leading ? i : std::string::npos;
                if (!one.compared.empty()) advance = one.compared.size();
                break;
            }
            at += advance;
        }
    }

    void run()
    {
        for (size_t begin = 0, end; begin < phrases.size(); begin = end) {
            for (end = begin + 1; end < phrases.size(); end++)
                if (phrases[end - 1].kind & ZVK_INSPECT_TALLYING && phrases[end].kind & ZVK_INSPECT_REPLACING) break;
            group(begin, end);
        }
    }
};

size_t unitOf(uint32_t flags) { return flags & (ZVK_INSPECT_NATIONAL | ZVK_INSPECT_DBCS) ? 2 : 1; }

std::string expectedItem(Statement &statement)
{
    const Operand &given = statement.item;
    Model model{unitOf(given.flags), plain(given.flags, given.text), statement.phrases};
    model.run();
    bool separate = given.flags & ZVK_INSPECT_SIGN_SEPARATE, leading = given.flags & ZVK_INSPECT_SIGN_LEADING;
    size_t missing = given.text.size() - model.item.size();
    if (missing > 0)
        return leading ? given.text.substr(0, missing) + model.item : model.item + given.text.substr(model.item.size());
    if ((given.flags & kSigned) == kSigned && !separate && !given.text.empty()) {
        size_t sign = leading ? 0 : given.text.size() - 1;
        model.item[sign] = static_cast<char>((given.text[sign] & 0xF0) | (model.item[sign] & 0x0F));
    }
    return model.item;
}

// --- The entry, with all operands between protected pages.

std::string inspect(GuardedTexts &texts, Statement &statement)
{
    std::vector<uint64_t> storage((sizeof(InspectBlock) + statement.phrases.size() * sizeof(InspectPhrase)) / 8 + 1);
    auto *block = reinterpret_cast<InspectBlock *>(storage.data());
    uint8_t *item = texts.put(statement.item.text);
    block->phraseCount = static_cast<int32_t>(statement.phrases.size());
    block->flags = statement.item.flags;
    block->length = statement.item.text.size();
    block->data = item;
    auto operand = [&](const Operand &given) {
        return InspectOperand{given.flags, 0, given.text.size(), texts.put(given.text)};
    };
    std::vector<uint8_t *> counters;
    for (size_t i = 0; i < statement.phrases.size(); i++) {
        const Phrase &phrase = statement.phrases[i];
        counters.push_back(nullptr);
        Operand result = {phrase.kind, phrase.result};
        if (phrase.kind & ZVK_INSPECT_TALLYING) result.text = textAt(&phrase.counter, 8);
        block->phrases[i] = {operand(result), operand(phrase.compared), operand(phrase.before), operand(phrase.after)};
        counters[i] = static_cast<uint8_t *>(block->phrases[i].result.data);
    }
    _zvkcInspect(block);
    for (size_t i = 0; i < statement.phrases.size(); i++)
        if (statement.phrases[i].kind & ZVK_INSPECT_TALLYING) memcpy(&statement.phrases[i].counter, counters[i], 8);
    return textAt(item, statement.item.text.size());
}

std::string one(const std::string &item, const Phrase &phrase)
{
    GuardedTexts texts;
    Statement statement = {{0, item}, {phrase}};
    return inspect(texts, statement);
}

uint64_t tally(const std::string &item, const Phrase &phrase)
{
    GuardedTexts texts;
    Statement statement = {{0, item}, {phrase}};
    inspect(texts, statement);
    return statement.phrases[0].counter;
}

// --- Generated statements

struct Generator {
    std::mt19937 random;
    size_t unit = 1;
    std::string set;

    bool maybe(unsigned in) { return random() % in == 0; }
    std::string text(size_t most) { return randomText(random, set, unit, random() % (most + 1)); }

    Operand limit()
    {
        Operand operand = {0, text(2)};
        if (maybe(20)) operand.text = text(30) + "X"; // odd where characters have two bytes
        return operand;
    }

    Phrase phrase()
    {
        static constexpr uint32_t kinds[] = {ZVK_INSPECT_TALLYING, ZVK_INSPECT_REPLACING, ZVK_INSPECT_REPLACING,
                                             ZVK_INSPECT_CONVERTING};
        Phrase phrase = {kinds[random() % 4]};
        if (maybe(3)) {
            phrase.kind |= ZVK_INSPECT_BEFORE;
            phrase.before = limit();
        }
        if (maybe(3)) {
            phrase.kind |= ZVK_INSPECT_AFTER;
            phrase.after = limit();
        }
        phrase.counter = random();
        size_t characters = 1 + (maybe(3) ? random() % 3 : 0);
        if (phrase.kind & ZVK_INSPECT_CONVERTING) {
            characters = random() % 6;
        } else if (maybe(4)) {
            phrase.kind |= ZVK_INSPECT_CHARACTERS;
            characters = 1;
        } else if (maybe(3)) {
            phrase.kind |= ZVK_INSPECT_LEADING;
        } else if (maybe(3)) {
            phrase.kind |= ZVK_INSPECT_FIRST;
        }
        phrase.compared.text = randomText(random, set, unit, characters);
        phrase.result = randomText(random, set, unit, characters);
        if (maybe(4)) {
            phrase.kind |= ZVK_INSPECT_FIGURATIVE;
            phrase.result = randomText(random, set, unit, 1);
        }
        return phrase;
    }

    // Compared and replacing operands of numbers have signs of their own.
    void giveSigns(Phrase &phrase)
    {
        for (Operand *operand : {&phrase.compared, &phrase.before, &phrase.after}) {
            if (!maybe(3) || operand->text.empty()) continue;
            operand->flags = kSigned | (maybe(2) ? ZVK_INSPECT_SIGN_LEADING : 0);
            char &digit = operand->flags & ZVK_INSPECT_SIGN_LEADING ? operand->text.front() : operand->text.back();
            digit = static_cast<char>(digit | 0x40);
        }
        if (maybe(3) && !phrase.result.empty() && !(phrase.kind & ZVK_INSPECT_TALLYING)) {
            phrase.kind |= kSigned | ZVK_INSPECT_SIGN_SEPARATE;
            phrase.result += '-';
        }
    }

    Statement statement()
    {
        Statement made;
        unit = 1 + random() % 2;
        // Of two-byte characters some begin in the middle of others.
        set = unit == 1 ? "AAAB " : std::string("AAABBAA\x81 \0A\0", 12);
        made.item.flags = unit == 1 ? 0 : maybe(2) ? ZVK_INSPECT_NATIONAL : ZVK_INSPECT_DBCS;
        bool number = unit == 1 && maybe(4);
        if (number) set = "00125";
        made.item.text = text(maybe(5) ? 100 : 20);
        if (unit == 2 && maybe(8)) made.item.text += 'A';
        for (unsigned n = 1 + (maybe(2) ? random() % 4 : 0); n > 0; n--) made.phrases.push_back(phrase());
        if (number) {
            for (Phrase &each : made.phrases) giveSigns(each);
            if (!made.item.text.empty() && maybe(2)) {
                made.item.flags = kSigned | (maybe(2) ? ZVK_INSPECT_SIGN_LEADING : 0);
                if (maybe(2)) made.item.flags |= ZVK_INSPECT_SIGN_SEPARATE;
                bool leading = made.item.flags & ZVK_INSPECT_SIGN_LEADING;
                char &sign = leading ? made.item.text.front() : made.item.text.back();
                sign = static_cast<char>(made.item.flags & ZVK_INSPECT_SIGN_SEPARATE ? '-' : sign | 0x40);
            }
        }
        return made;
    }
};

std::string shown(const Statement &statement)
{
    std::string all = "item " + std::to_string(statement.item.flags) + " [" + statement.item.text + "]";
    for (const Phrase &phrase : statement.phrases) {
        char kind[20];
        snprintf(kind, sizeof kind, "%08X", phrase.kind);
        all += std::string("\n  ") + kind + " [" + phrase.compared.text + "] [" + phrase.result + "] before [" +
               phrase.before.text + "] after [" + phrase.after.text + "]";
    }
    return all;
}

TEST(Inspect, GeneratedStatementsAsTheModelHasThem)
{
    Generator generator;
    GuardedTexts texts;
    for (int i = 0; i < shareOf(60000); i++) {
        generator.random.seed(static_cast<unsigned>(i));
        Statement statement = generator.statement(), model = statement;
        texts.next(generator.random);
        std::string expected = expectedItem(model), item = inspect(texts, statement);
        ASSERT_EQ(item, expected) << i << ": " << shown(statement);
        for (size_t n = 0; n < model.phrases.size(); n++)
            ASSERT_EQ(statement.phrases[n].counter, model.phrases[n].counter)
                << i << ", phrase " << n << ": " << shown(statement);
    }
}

TEST(Inspect, WhatProgramsWrite)
{
    EXPECT_EQ(tally("AABA", {ZVK_INSPECT_TALLYING | ZVK_INSPECT_LEADING, "", {0, "A"}}), 2u);
    EXPECT_EQ(tally("AB.AB.",
                    {ZVK_INSPECT_TALLYING | ZVK_INSPECT_BEFORE | ZVK_INSPECT_AFTER, "", {0, "A"}, {0, "."}, {0, "."}}),
              0u);
    EXPECT_EQ(
        tally("AB.AB.", {ZVK_INSPECT_TALLYING | ZVK_INSPECT_CHARACTERS | ZVK_INSPECT_AFTER, "", {}, {}, {0, "."}}), 3u);
    EXPECT_EQ(tally("ABCAB", {ZVK_INSPECT_TALLYING | ZVK_INSPECT_BEFORE, "", {0, "BC"}, {0, "C"}}),
              0u); // it would end in BEFORE's operand
    EXPECT_EQ(one("ABCABC", {ZVK_INSPECT_REPLACING | ZVK_INSPECT_FIGURATIVE, "*", {0, "ABC"}}), "******");
    EXPECT_EQ(one("ABCABC", {ZVK_INSPECT_REPLACING | ZVK_INSPECT_FIRST, "xyz", {0, "ABC"}}), "xyzABC");
    EXPECT_EQ(one("BANANA", {ZVK_INSPECT_CONVERTING, "1234", {0, "ANBA"}}), "312121");

    GuardedTexts texts;
    Statement number = {{kSigned, "152u"},
                        {{ZVK_INSPECT_TALLYING, "", {0, "5"}}, {ZVK_INSPECT_REPLACING, "0", {0, "5"}}}};
    EXPECT_EQ(inspect(texts, number), "102p"); // the last digit is a 5, and stays negative
    EXPECT_EQ(number.phrases[0].counter, 2u);
}

TEST(Inspect, LongItemsAndManyPhrases)
{
    std::mt19937 random(3);
    GuardedTexts texts(size_t{1} << 20);
    std::string longText = randomText(random, "AB C", 1, size_t{1} << 20);
    for (const Phrase &phrase :
         {Phrase{ZVK_INSPECT_TALLYING, "", {0, "A"}}, Phrase{ZVK_INSPECT_REPLACING, "x", {0, "A"}},
          Phrase{ZVK_INSPECT_CONVERTING, "xyz", {0, "ABC"}}, Phrase{ZVK_INSPECT_REPLACING, "xy", {0, "BA"}}}) {
        Statement statement = {{0, longText}, {phrase}}, model = statement;
        EXPECT_EQ(inspect(texts, statement), expectedItem(model));
        EXPECT_EQ(statement.phrases[0].counter, model.phrases[0].counter);
    }
    Statement many = {{0, longText.substr(0, 500)}, {}};
    for (int i = 0; i < 1000; i++) {
        bool tallying = i % 10 < 5;
        many.phrases.push_back({tallying ? ZVK_INSPECT_TALLYING : ZVK_INSPECT_REPLACING,
                                randomText(random, "ABC", 1, 3),
                                {0, randomText(random, "ABC", 1, 3)}});
    }
    GuardedTexts small;
    Statement model = many;
    EXPECT_EQ(inspect(small, many), expectedItem(model));
    for (size_t i = 0; i < many.phrases.size(); i++) ASSERT_EQ(many.phrases[i].counter, model.phrases[i].counter) << i;
}

TEST(Inspect, UnequalLengthsAreReportedAndCut)
{
    ChildRun run = runChild([] {
        REQUIRE(one("ABAB", {ZVK_INSPECT_REPLACING, "xyz", {0, "AB"}}) == "xyxy");
        REQUIRE(one("ABAB", {ZVK_INSPECT_CONVERTING, "x", {0, "AB"}}) == "xBxB");
        REQUIRE(one("ABAB", {ZVK_INSPECT_REPLACING | ZVK_INSPECT_CHARACTERS, "xyz"}) == "xxxx");
        REQUIRE(one("ABAB", {ZVK_INSPECT_REPLACING | ZVK_INSPECT_CHARACTERS, ""}) == "ABAB");
        REQUIRE(one("", {ZVK_INSPECT_REPLACING, "x", {0, "AB"}}) == "");
    });
    EXPECT_GOOD(run);
    auto count = [&](const char *text) {
        int found = 0;
        for (size_t at = 0; (at = run.err.find(text, at)) != std::string::npos; at++) found++;
        return found;
    };
    EXPECT_EQ(count("ZVK077"), 3) << run.err;
    EXPECT_EQ(count("INSPECT CONVERTING:"), 1) << run.err;
    EXPECT_EQ(count("INSPECT REPLACING:"), 2) << run.err;
    EXPECT_EQ(count("ZVK076"), 2) << run.err;
}

TEST(Inspect, SignedOperandsAreAtMost126Bytes)
{
    GuardedTexts texts;
    Statement longest = {{kSigned, std::string(125, '5') + 'u'}, {{ZVK_INSPECT_TALLYING, "", {0, "5"}}}};
    inspect(texts, longest);
    EXPECT_EQ(longest.phrases[0].counter, 126u);
    ChildRun run = runChild([] {
        GuardedTexts own;
        Statement statement = {{kSigned, std::string(126, '5') + 'u'}, {{ZVK_INSPECT_TALLYING, "", {0, "5"}}}};
        inspect(own, statement);
    });
    EXPECT_NE(run.status, 0);
    EXPECT_NE(run.err.find("kSignedCopy"), std::string::npos) << run.err;
}

} // namespace
