// Catches: a national or DBCS move that fills, justifies or cuts wrong; comparison by code units in
// place of the locale's order; a result stored past its destination; the DBCS padding taken from
// the code page where it is fixed; class tests that let shift codes or half characters pass.
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "chardata/code_page_fixture.h"
#include "kvr2/national.h"
#include "support/child.h"
#include "support/require.h"
#include "verbs/guarded_text.h"

namespace {

using Bytes = std::string;

int32_t size(const Bytes &text) { return static_cast<int32_t>(text.size()); }
Bytes units(const std::u16string &text) { return {reinterpret_cast<const char *>(text.data()), 2 * text.size()}; }
int sign(int value) { return (value > 0) - (value < 0); }

Bytes pairs(const Bytes &pair, size_t length, char odd)
{
    Bytes text;
    while (text.size() + 2 <= length) text += pair;
    return text.size() < length ? text + odd : text;
}

TEST(NationalMove, FillsWithTheSwappedBlank)
{
    GuardedTexts texts;
    for (unsigned i = 0; i < 4000; i++) {
        std::mt19937 random(i);
        texts.next(random);
        Bytes source = randomText(random, "ABCDEF", 1, random() % 12), item(random() % 12, '#');
        bool right = random() % 2;
        size_t moved = std::min(source.size(), item.size()) / 2 * 2, room = item.size() / 2 * 2;
        Bytes fill = pairs(Bytes("\0 ", 2), room - moved, 0);
        Bytes text = right ? source.substr(source.size() / 2 * 2 - moved, moved) : source.substr(0, moved);
        Bytes expected = (right ? fill + text : text + fill) + item.substr(room);
        uint8_t *to = texts.put(item);
        int32_t answer = _zvkMoveUnicode(to, right ? -size(item) : size(item), texts.put(source), size(source));
        ASSERT_EQ(textAt(to, item.size()), expected) << i;
        ASSERT_EQ(answer, static_cast<int32_t>(moved / 2));
    }
}

TEST(NationalConversion, FunctionsNationalOfAndDisplayOf)
{
    GuardedTexts texts;
    struct Case {
        const char *locale;
        Bytes native;
        std::u16string national;
        size_t most; // bytes of the longest native character
    };
    for (const Case &each :
         {Case{"ja_JP.eucJP", "A\xC6\xFC\xCB\xDC", u"A日本", 3}, Case{"ja_JP.UTF-8", "A日本", u"A日本", 3},
          Case{"en_US.UTF-8", "\xF0\x9F\x98\x80", u"\xD83D\xDE00", 3}, Case{"en_US.ISO8859-1", "", u"", 1}}) {
        useCodePages(48, each.locale, "TQX-1399");
        uint8_t *to = texts.put(Bytes(2 * each.native.size(), '#'));
        int32_t stored = _Dmr_national_of(size(each.native), texts.put(each.native), to);
        EXPECT_EQ(textAt(to, static_cast<size_t>(stored)), units(each.national));
        to = texts.put(Bytes(each.national.size() * each.most, '#'));
        stored = _Dmr_display_of(size(units(each.national)), texts.put(units(each.national)), to);
        EXPECT_EQ(textAt(to, static_cast<size_t>(stored)), each.native);
    }
}

int compare(GuardedTexts &texts, const std::u16string &left, const std::u16string &right)
{
    static thread_local std::mt19937 random;
    Bytes a = units(left), b = units(right);
    texts.next(random);
    return _zvkCompareUnicode(texts.put(a), size(a), texts.put(b), size(b));
}

TEST(NationalComparison, InTheOrderOfTheLocale)
{
    GuardedTexts texts;
    useCodePages(8, "en_US.UTF-8", "TQX-1140");
    EXPECT_EQ(compare(texts, u"AB ", u"AB"), 0);
    EXPECT_EQ(compare(texts, u"a", u"B"), -1); // by units "B" comes first
    EXPECT_EQ(compare(texts, u"é", u"f"), -1);
    EXPECT_EQ(compare(texts, u"z", u"ö"), 1);
    EXPECT_EQ(compare(texts, u"   ", u" "), 0);
    EXPECT_EQ(compare(texts, u" ", u""), 1); // a sole blank stays
    useCodePages(25, "sv_SE.UTF-8", "TQX-1143");
    EXPECT_EQ(compare(texts, u"z", u"ö"), -1);
}

TEST(NationalComparison, EightThreads)
{
    useCodePages(8, "en_US.UTF-8", "TQX-1140");
    GuardedTexts first;
    compare(first, u"a", u"b");
    std::vector<std::thread> threads;
    std::vector<int> wrong(8);
    for (int &count : wrong)
        threads.emplace_back([&count] {
            GuardedTexts texts;
            for (int i = 0; i < 2000; i++)
                count += compare(texts, u"côte", u"coté") != -compare(texts, u"coté", u"côte");
        });
    for (std::thread &thread : threads) thread.join();
    EXPECT_EQ(wrong, std::vector<int>(8));
}

Bytes changed(int32_t (*change)(uint8_t *, uint32_t *, const uint8_t *, uint32_t), const std::u16string &text,
              uint32_t room)
{
    GuardedTexts texts;
    uint8_t *to = texts.put(Bytes(room, '#'));
    EXPECT_EQ(change(to, &room, texts.put(units(text)), 2 * static_cast<uint32_t>(text.size())), 0);
    return textAt(to, room);
}

TEST(NationalCase, ByTheRulesOfTheLocale)
{
    useCodePages(2, "de_DE.UTF-8", "TQX-1141");
    EXPECT_EQ(changed(_zvkUpperCaseUnicode, u"Straße", 14), units(u"STRASSE"));
    EXPECT_EQ(changed(_zvkLowerCaseUnicode, u"ÄI", 10), units(u"äi"));
    EXPECT_EQ(changed(_zvkLowerCaseUnicode, u"", 1), "");
    useCodePages(45, "tr_TR.UTF-8", "TQX-1155");
    EXPECT_EQ(changed(_zvkLowerCaseUnicode, u"I", 2), units(u"ı"));

    ChildRun run = runChild([] {
        uint8_t room[4];
        uint32_t capacity = sizeof room;
        Bytes text = units(u"ABCDEF");
        _zvkLowerCaseUnicode(room, &capacity, reinterpret_cast<const uint8_t *>(text.data()), 12);
    });
    EXPECT_NE(run.err.find("ZVK225S"), std::string::npos) << run.err;
}

TEST(DbcsComparison, PadsWithAFixedPair)
{
    GuardedTexts texts;
    useCodePages(46, "zh_CN.GBK", "TQX-1388"); // its DBCS blank is another
    const Bytes blank = "\x81\x40", a = "\x88\x9F", b = "\x88\xA0";
    auto compared = [&](const Bytes &left, const Bytes &right) {
        return sign(_zvkcDBCSCmp(texts.put(left), size(left), texts.put(right), size(right)));
    };
    EXPECT_EQ(compared(a, a + blank + blank), 0);
    EXPECT_EQ(compared(a + blank, a), 0);
    EXPECT_EQ(compared(a, b + blank), -1);
    EXPECT_EQ(compared(b + b, b), 1);
    EXPECT_EQ(compared("", ""), 0);
    Bytes longText = pairs(a, 20000, 0);
    EXPECT_EQ(compared(longText.substr(0, 4000), longText.substr(0, 3998) + b), -1);
    auto figurative = [&](const Bytes &left, const Bytes &literal) {
        return sign(_zvkcDBCSCmpMultiByteFig(texts.put(left), size(left), texts.put(literal), size(literal)));
    };
    EXPECT_EQ(figurative(a + b + a, a + b), 0);
    EXPECT_EQ(figurative(a + b + b, a + b), 1);
    EXPECT_EQ(figurative(a, a + b), 0); // the literal is cut
    EXPECT_EQ(figurative("", a), 0);
}

TEST(DbcsMove, PaddingJustificationAndOverlap)
{
    GuardedTexts texts;
    useCodePages(48, "ja_JP.SJIS", "TQX-1399");
    for (unsigned i = 0; i < 6000; i++) {
        std::mt19937 random(i);
        texts.next(random);
        Bytes area = randomText(random, "ABCDEFGHIJKLMNOP", 1, 40);
        bool right = random() % 2, ebcdic = random() % 2;
        size_t from = random() % 20, to = random() % 20, sourceSize = random() % 20, itemSize = random() % 20;
        if (ebcdic && sourceSize == 0) continue; // zero has no sign
        if (right && itemSize == 0) continue;
        Bytes source = area.substr(from, sourceSize), item;
        if (sourceSize >= itemSize) {
            item = right ? source.substr(sourceSize - itemSize) : source.substr(0, itemSize);
        } else {
            Bytes padding =
                ebcdic ? Bytes(itemSize - sourceSize, '\x40') : pairs("\x81\x40", itemSize - sourceSize, ' ');
            item = right ? padding + source : source + padding;
        }
        uint8_t *place = texts.put(area);
        auto itemLength = static_cast<int32_t>(itemSize), sourceLength = static_cast<int32_t>(sourceSize);
        _zvkcDBCSMoveVarLenOverlap(place + to, right ? -itemLength : itemLength, place + from,
                                   ebcdic ? -sourceLength : sourceLength);
        ASSERT_EQ(textAt(place, area.size()), area.replace(to, itemSize, item)) << i;
    }
}

TEST(DbcsClasses, PairsOfEbcdic)
{
    GuardedTexts texts;
    useCodePages(48, "ja_JP.eucJP", "TQX-1399");
    auto both = [&](const Bytes &item, bool isEbcdic) {
        uint8_t *place = texts.put(item);
        int32_t length = isEbcdic ? -size(item) : size(item);
        return 10 * _zvkcClasDBCS(place, length) + _zvkcClasKanji(place, length);
    };
    EXPECT_EQ(both("", false), 11);
    EXPECT_EQ(both("\x45\x62\x40\x40", true), 11);
    EXPECT_EQ(both("\x41\x41\x7E\xFE", true), 11);
    EXPECT_EQ(both("\x7F\x41\xFE\xFE", true), 10);
    for (const char *bad : {"\x40\x41", "\x45\x40", "\xFF\x45", "\x45\xFF", "\x45\x0E", "\x0F\x45", "\x45\x45\x45"})
        EXPECT_EQ(both(bad, true), 0) << bad;
    EXPECT_EQ(both("\xC6\xFC\xCB\xDC", false), 11); // two ideographs
    EXPECT_EQ(both("\xA1\xA1", false), 11);         // the double-byte blank
    EXPECT_EQ(both("A\xC6\xFC", false), 0);
    EXPECT_EQ(both("\xC6\xFC"
                   "A",
                   false),
              0);
    EXPECT_EQ(both("AB", false), 0);
    Bytes longText = pairs("\xC6\xFC", 4000, 0);
    EXPECT_EQ(both(longText, false), 11);
}

} // namespace
