// Catches: a byte or unit in the wrong class, at any place of an item of any length; a comparison
// whose sign differs from that of a plain loop over a padded or repeated operand; a collating table
// that is no order of the bytes, or a locale left changed; trimming and reversal off by a
// character; a load or store beside an item.
#include <clocale>
#include <cstdlib>
#include <functional>

#include "kvr2/conditions.h"
#include "support/child.h"
#include "support/require.h"
#include "verbs/guarded_text.h"

namespace {

using Bytes = std::string;

int sign(int value) { return (value > 0) - (value < 0); }
int32_t size(const Bytes &text) { return static_cast<int32_t>(text.size()); }

using ByteTest = std::function<int32_t(const uint8_t *, int32_t)>;

// Each value at each place of items of up to 40 characters that otherwise belong to the class.
void expectClass(const ByteTest &test, size_t unit, unsigned values, const Bytes &member,
                 const std::function<bool(unsigned)> &belongs)
{
    GuardedTexts texts;
    std::mt19937 random(1);
    for (size_t characters = 0; characters <= 40; characters++) {
        Bytes item = randomText(random, member, unit, characters);
        texts.next(random);
        ASSERT_EQ(test(texts.put(item), size(item)), 1) << characters;
        for (size_t at = 0; at < characters; at++)
            for (unsigned value = 0; value < values;
                 value += 1 + (values > 256 && value > 0x180 ? random() % 500 : 0)) {
                if (characters > 20 && random() % 8) continue;
                Bytes changed = item;
                memcpy(&changed[at * unit], &value, unit);
                texts.next(random);
                ASSERT_EQ(test(texts.put(changed), size(changed)), belongs(value))
                    << characters << " " << at << " " << value;
            }
    }
    EXPECT_EQ(test(nullptr, 0), 1);
    EXPECT_EQ(test(nullptr, -1), 1);
}

bool isUpper(unsigned c) { return c >= 'A' && c <= 'Z'; }
bool isLower(unsigned c) { return c >= 'a' && c <= 'z'; }

TEST(Classes, Alphabetic)
{
    expectClass(_zvkcClasAlpha, 1, 256, "AZaz mQ", [](unsigned c) { return isUpper(c) || isLower(c) || c == ' '; });
    expectClass(_zvkcClasAlphaUpper, 1, 256, "AZ M", [](unsigned c) { return isUpper(c) || c == ' '; });
    expectClass(_zvkcClasAlphaLower, 1, 256, "az m", [](unsigned c) { return isLower(c) || c == ' '; });
    uint8_t table[256];
    for (int i = 0; i < 256; i++) table[i] = i % 3 == 0 ? 0 : static_cast<uint8_t>(1 << i % 8);
    expectClass([&](const uint8_t *item, int32_t length) { return _zvkcClasUserDef(item, length, table); }, 1, 256,
                "03`", [](unsigned c) { return c % 3 == 0; });
}

TEST(Classes, National)
{
    Bytes letters("A\0z\0 \0", 6), digits("0\0009\0005\0", 6);
    expectClass(_zvkuClasAlpha, 2, 65536, letters, [](unsigned c) { return isUpper(c) || isLower(c) || c == ' '; });
    expectClass(_zvkuClasUpper, 2, 65536, Bytes("A\0 \0", 4), [](unsigned c) { return isUpper(c) || c == ' '; });
    expectClass(_zvkuClasLower, 2, 65536, Bytes("a\0 \0", 4), [](unsigned c) { return isLower(c) || c == ' '; });
    expectClass(_zvkuClasNumeric, 2, 65536, digits, [](unsigned c) { return c >= '0' && c <= '9'; });
}

TEST(Classes, SignedNational)
{
    auto test = [](uint32_t word, const Bytes &text) {
        GuardedTexts texts;
        Bytes item;
        for (char c : text) (item += c) += '\0';
        return _zvkuSClasNumeric(word, texts.put(item), size(item));
    };
    constexpr uint32_t lead = ZVK_CLASS_SIGN_LEADING_SEPARATE, trail = ZVK_CLASS_SIGN_TRAILING_SEPARATE,
                       positive = ZVK_CLASS_POSITIVE;
    EXPECT_EQ(test(lead, "+12"), 1);
    EXPECT_EQ(test(lead, "-12"), 1);
    EXPECT_EQ(test(lead, "12+"), 0);
    EXPECT_EQ(test(lead, "112"), 0);
    EXPECT_EQ(test(trail, "12-"), 1);
    EXPECT_EQ(test(trail, "1x-"), 0);
    EXPECT_EQ(test(0, "012"), 1);
    EXPECT_EQ(test(0, "+12"), 0);
    EXPECT_EQ(test(lead | positive, "+00"), 1);
    EXPECT_EQ(test(lead | positive, "-12"), 0);
    EXPECT_EQ(test(positive, "000"), 0);
    EXPECT_EQ(test(positive, "010"), 1);
    EXPECT_EQ(test(trail | positive, ""), 1);
}

TEST(Classes, PackedAndZoned)
{
    GuardedTexts texts;
    auto packed = [&](const Bytes &item, int32_t digits) { return _zvkcClasPackedDec(texts.put(item), digits); };
    EXPECT_EQ(packed("\x12\x3C", 3), 1);
    EXPECT_EQ(packed("\x12\x33", 3), 0);
    EXPECT_EQ(packed("\x1A\x3C", 3), 0);
    EXPECT_EQ(packed("", 0), 1);

    auto zoned = [&](uint32_t word, const Bytes &item) { return _zvkcClasZonedDec(word, texts.put(item), size(item)); };
    constexpr uint32_t lead = ZVK_CLASS_SIGN_LEADING, trail = ZVK_CLASS_SIGN_TRAILING, strict = ZVK_CLASS_STRICT;
    for (const uint32_t word : {uint32_t{ZVK_CLASS_SIGN_NONE}, lead, trail, lead | strict, trail | strict}) {
        EXPECT_EQ(zoned(word, ""), 1);
        EXPECT_EQ(zoned(word, "0123456789012345"), 1) << word;
        for (size_t at = 1; at < 14; at++) {
            Bytes item = "0123456789012345";
            item[at] = '!';
            EXPECT_EQ(zoned(word, item), 0) << word << " " << at;
        }
    }
    EXPECT_EQ(zoned(trail | strict, "12u"), 1);
    EXPECT_EQ(zoned(trail | strict, "12E"), 0);
    EXPECT_EQ(zoned(trail, "12E"), 1);
    EXPECT_EQ(zoned(trail, "12M"), 0); // its low half is no digit
    EXPECT_EQ(zoned(lead | strict, "u12"), 1);
    EXPECT_EQ(zoned(lead | strict, "\xD5"
                                   "12"),
              0);
    EXPECT_EQ(zoned(lead, "\xD5"), 1);
}

KVR2_PIECE(letters_carry_the_sign)
{
    auto zoned = [](const char *item) {
        return _zvkcClasZonedDec(ZVK_CLASS_SIGN_TRAILING | ZVK_CLASS_STRICT, reinterpret_cast<const uint8_t *>(item),
                                 3);
    };
    REQUIRE(zoned("12M") == 1);
    REQUIRE(zoned("1!2") == 0);
}

TEST(Classes, ZonedUnderTheEbcdicConvention)
{
    EXPECT_GOOD(runPiece("letters_carry_the_sign", {.env = {{"COBOL_BCD_EBCDIC", "1"}}}));
}

Bytes repeated(const Bytes &value, size_t length)
{
    Bytes text;
    while (text.size() < length) text += value;
    return text.substr(0, length);
}

TEST(Comparisons, UnderAnAlphabetAsAPlainLoop)
{
    GuardedTexts texts;
    for (unsigned i = 0; i < 60000; i++) {
        std::mt19937 random(i);
        texts.next(random);
        uint8_t weights[256];
        for (int k = 0; k < 256; k++) weights[k] = static_cast<uint8_t>(k >= 'a' && k <= 'd' ? 'A' : 255 - k);
        Bytes left = randomText(random, random() % 2 ? "aab " : "abcd", 1, random() % 40);
        Bytes right = random() % 2 ? left + Bytes(random() % 20, ' ') : randomText(random, "abcd ", 1, random() % 40);
        if (!right.empty() && random() % 2) right[random() % right.size()] = "bcxA"[random() % 4];
        bool leftFigurative = random() % 4 == 0 && !left.empty(),
             rightFigurative = !leftFigurative && random() % 4 == 0 && !right.empty();
        Bytes a = leftFigurative ? repeated(left, right.size()) : left,
              b = rightFigurative ? repeated(right, left.size()) : right;
        int expected = 0;
        for (size_t k = 0; k < std::max(a.size(), b.size()) && expected == 0; k++)
            expected = weights[static_cast<uint8_t>(k < a.size() ? a[k] : ' ')] -
                       weights[static_cast<uint8_t>(k < b.size() ? b[k] : ' ')];
        int answer = _zvkcCmpACS(texts.put(left), leftFigurative ? -size(left) : size(left), texts.put(right),
                                 rightFigurative ? -size(right) : size(right), weights);
        ASSERT_EQ(sign(answer), sign(expected)) << i << ": [" << left << "] [" << right << "]";
    }
}

TEST(Comparisons, WithARepeatedLiteralAndAPad)
{
    GuardedTexts texts;
    for (unsigned i = 0; i < 30000; i++) {
        std::mt19937 random(i);
        texts.next(random);
        Bytes literal = randomText(random, "AB\xFF", 1, 1 + random() % 6), item = repeated(literal, random() % 60);
        if (!item.empty() && random() % 2) item[random() % item.size()] = "\x01Z\xFE"[random() % 3];
        ASSERT_EQ(sign(_zvkcCmpMultiByteFig(texts.put(item), size(item), texts.put(literal), size(literal))),
                  sign(item.compare(repeated(literal, item.size()))))
            << i;
        Bytes pads(item.size(), 'B');
        for (size_t k = 0; k < item.size() / 2; k++) item[k] = 'B';
        ASSERT_EQ(_zvkcCmpToPad(texts.put(item), 'B', size(item)), sign(item.compare(pads))) << i;
    }
    EXPECT_EQ(_zvkcCmpMultiByteFig(nullptr, -1, nullptr, 1), 0);
    EXPECT_EQ(_zvkcCmpToPad(nullptr, ' ', 0), 0);
}

void checkSequence()
{
    AlphabetRecord record{}, second{};
    Bytes before = setlocale(LC_COLLATE, nullptr);
    _zvkcCollSeq(&record);
    _zvkcCollSeq(&second);
    REQUIRE(before == setlocale(LC_COLLATE, nullptr));
    REQUIRE(record.collatingWeights == second.collatingWeights && record.collatingOrder == second.collatingOrder);
    for (int i = 0; i < 256; i++) REQUIRE(record.collatingWeights[record.collatingOrder[i]] == i);
    if (before == "C")
        for (int i = 1; i < 255; i++) REQUIRE(record.collatingOrder[i] == i);
    // The sort is of strings: from each byte on, the rest of the array up to a NUL.
    uint8_t expected[257] = {};
    if (MB_CUR_MAX > 1) setlocale(LC_COLLATE, "en_US");
    for (int i = 0; i < 256; i++) expected[i] = static_cast<uint8_t>(i);
    qsort(expected, 256, 1, [](const void *a, const void *b) {
        return strcoll(static_cast<const char *>(a), static_cast<const char *>(b));
    });
    REQUIRE(memcmp(expected, record.collatingOrder, 256) == 0);
}

TEST(CollatingSequence, IsAnOrderOfTheBytesAndLeavesTheLocale)
{
    for (const char *locale : {"C", "C.UTF-8"}) {
        ChildRun run = runChild([=] {
            setlocale(LC_ALL, locale);
            checkSequence();
        });
        EXPECT_GOOD(run);
    }
}

TEST(Texts, CaseAndReversal)
{
    GuardedTexts texts;
    Bytes all;
    for (int i = 0; i < 256; i++) all += static_cast<char>(i);
    Bytes out(256, '?');
    uint8_t *to = texts.put(out);
    for (auto lower : {_zvkToLower, _Dmr_lower_case}) {
        lower(256, texts.put(all), to);
        for (unsigned i = 0; i < 128; i++) EXPECT_EQ(to[i], isUpper(i) ? i + 0x20 : i);
    }
    for (auto upper : {_zvkToUpper, _Dmr_upper_case}) {
        upper(256, texts.put(all), to);
        for (unsigned i = 0; i < 128; i++) EXPECT_EQ(to[i], isLower(i) ? i - 0x20 : i);
    }
    for (int length = 0; length < 50; length++) {
        Bytes text = all.substr(100, static_cast<size_t>(length));
        to = texts.put(text);
        _Dmr_reverse(length, texts.put(text), to);
        EXPECT_EQ(textAt(to, text.size()), Bytes(text.rbegin(), text.rend()));
        Bytes units;
        for (size_t i = text.size() / 2; i-- > 0;) units += text.substr(2 * i, 2);
        units += text.substr(units.size());
        _zvkcReverseUnicode(length, texts.put(text), to);
        EXPECT_EQ(textAt(to, text.size()), units);
    }
}

TEST(Texts, Trimming)
{
    GuardedTexts texts;
    using Trim = int64_t (*)(int32_t, const uint8_t *, int32_t, const uint8_t *, uint8_t *, int32_t);
    for (unsigned i = 0; i < 40000; i++) {
        std::mt19937 random(i);
        texts.next(random);
        size_t unit = 1 + random() % 2;
        Bytes pool = unit == 1 ? "  ..A" : Bytes(" \0.\0\0 A\0", 8);
        Bytes text = randomText(random, pool, unit, random() % 20);
        if (unit == 2 && random() % 4 == 0) text += ' ';
        Bytes set = randomText(random, pool, unit, random() % 3), members = random() % 2 ? set : Bytes(" \0", unit);
        bool given = members == set;
        Bytes odd = text.substr(text.size() / unit * unit), whole = text.substr(0, text.size() - odd.size());
        auto inSet = [&](size_t at) {
            for (size_t k = 0; k < members.size(); k += unit)
                if (whole.compare(at, unit, members, k, unit) == 0) return true;
            return false;
        };
        unsigned sides = 1 + random() % 3;
        size_t start = 0, end = whole.size();
        if (sides & 1)
            while (start < end && inSet(start)) start += unit;
        if (sides & 2)
            while (end > start && inSet(end - unit)) end -= unit;
        Bytes expected = whole.substr(start, end - start) + odd;
        const Trim trims[] = {_zvk_triml, _zvk_trimr, _zvk_trim};
        uint8_t *source = texts.put(text), *to = random() % 4 ? texts.put(text) : source;
        int64_t stored = trims[sides - 1](size(text), source, size(set), given ? texts.put(set) : nullptr, to,
                                          unit == 2      ? 2
                                          : random() % 2 ? 1
                                                         : 4);
        ASSERT_EQ(textAt(to, static_cast<size_t>(stored)), expected) << i << ": [" << text << "]";
    }
    EXPECT_EQ(_zvk_trim(0, nullptr, 0, nullptr, nullptr, 1), 0);
}

} // namespace
