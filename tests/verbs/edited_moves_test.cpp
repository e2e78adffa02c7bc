// Catches: a wrong byte of an alphanumeric or national edit, above all where the source runs out
// inside a run; de-editing that takes what does not fit, or refuses what does; padding,
// justification and overlap of the fills; a target of a wrong segment reset; stores outside the
// destination.
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "kvr2/edited_moves.h"
#include "support/guarded.h"

namespace {

const uint8_t *bytes(const std::string &text) { return reinterpret_cast<const uint8_t *>(text.data()); }
std::string textOf(const GuardedItem &item) { return {reinterpret_cast<char *>(item.data()), item.size()}; }

std::string alphaEdit(const std::string &picture, int positions, const std::string &source, bool repeat, size_t size)
{
    GuardedItem record(3 + picture.size()), in(source.size()), out(size);
    AlphaEditRecord *head = reinterpret_cast<AlphaEditRecord *>(record.data());
    head->length = static_cast<int16_t>(positions);
    head->repeat = repeat;
    memcpy(head->picture, picture.data(), picture.size());
    memcpy(in.data(), source.data(), source.size());
    _zvkcMoveAlphaNumEdit(head, in.data(), static_cast<int32_t>(source.size()), out.data());
    return textOf(out);
}

TEST(AlphanumericEdit, KnownAndRandomPictures)
{
    EXPECT_EQ(alphaEdit("XX/XX0X", 7, "ABCDE", false, 7), "AB/CD0E");
    EXPECT_EQ(alphaEdit("XX/XX0X", 7, "ABC", false, 7), "AB/C 0 ");
    EXPECT_EQ(alphaEdit("XX/XX0X", 7, "ABC", true, 7), "AB/CA0B");
    EXPECT_EQ(alphaEdit("X\x81\x40X", 3, "AB", false, 4), "A\x81\x40"
                                                          "B");
    EXPECT_EQ(alphaEdit("XX", -2, "AB", false, 0), "");
    EXPECT_EQ(alphaEdit("XX", 2, "", true, 2), "  ");
    std::mt19937 random(1);
    for (int i = 0; i < 3000; i++) {
        std::string picture, source, expected;
        for (unsigned n = random() % 30; n > 0; n--)
            picture += random() % 2 ? "X/0 9A"[random() % 6] : static_cast<char>(random() | 0x80);
        for (unsigned n = random() % 20; n > 0; n--) source += static_cast<char>(random());
        bool repeat = random() % 2;
        size_t next = 0;
        for (char c : picture) {
            if (c == '/' || c == '0' || c == ' ') {
                expected += c;
                continue;
            }
            if (next == source.size() && repeat) next = 0;
            expected += next < source.size() ? source[next++] : ' ';
        }
        if (!picture.empty() && picture.back() == '\x81') picture.back() = 'X'; // else the byte after it would count
        ASSERT_EQ(alphaEdit(picture, static_cast<int>(picture.size()), source, repeat, expected.size()), expected);
    }
}

using Runs = std::vector<NationalEditRun>;

std::u16string nationalEdit(const Runs &runs, const std::u16string &source, bool repeat, size_t units)
{
    GuardedItem record(4 + 4 * runs.size()), in(2 * source.size()), out(2 * units);
    NationalEditRecord *head = reinterpret_cast<NationalEditRecord *>(record.data());
    head->runBytes = static_cast<int16_t>(4 * runs.size());
    head->repeat = repeat;
    if (!runs.empty()) memcpy(record.data() + 4, runs.data(), 4 * runs.size());
    memcpy(in.data(), source.data(), 2 * source.size());
    _zvkcMoveUnicodeEdit(head, in.data(), static_cast<int32_t>(2 * source.size()), out.data());
    return {reinterpret_cast<char16_t *>(out.data()), units};
}

TEST(NationalEdit, RunsInWhichTheSourceEnds)
{
    const Runs date = {{'N', 2}, {'/', 1}, {'N', 2}, {'0', 2}, {'N', 1}};
    EXPECT_EQ(nationalEdit(date, u"ABCDE", false, 8), u"AB/CD00E");
    EXPECT_EQ(nationalEdit(date, u"ABCD", false, 8), u"AB/CD00 ");           // ended with a run: full blanks next
    EXPECT_EQ(nationalEdit({{'N', 5}, {'/', 1}}, u"AB", false, 4), u"AB /"); // ended inside: one blank for three
    EXPECT_EQ(nationalEdit({{'N', 2}, {'N', 3}}, u"AB", true, 5), u"ABABA");
    EXPECT_EQ(nationalEdit({{'N', 2}, {'N', 3}, {'N', 2}}, u"AB", true, 8), u"ABABABAB"); // from the "B" that is left
    for (int16_t count = 3; count < 9; count++)                                           // one unit: 2 * count - 1
        EXPECT_EQ(nationalEdit({{'N', count}}, u"A", true, static_cast<size_t>(2 * count - 1)),
                  std::u16string(static_cast<size_t>(2 * count - 1), u'A'));
    EXPECT_EQ(nationalEdit({{'N', 2}}, u"A", true, 2), u"AA");
    EXPECT_EQ(nationalEdit({{'N', 3}}, u"AB", true, 5),
              u"ABABA"); // from the second position: two more, then on from the front
    EXPECT_EQ(nationalEdit({{'N', 3}}, u"", true, 3), u"   ");
    EXPECT_EQ(nationalEdit({{'N', -3}, {' ', -1}}, u"A", false, 0), u"");
    EXPECT_EQ(nationalEdit({}, u"A", false, 0), u"");
}

int deEdit(const std::string &picture, const std::string &item, std::string &number)
{
    GuardedItem record(2 + picture.size()), in(item.size()), out(number.size());
    DeEditRecord *head = reinterpret_cast<DeEditRecord *>(record.data());
    head->length = static_cast<int16_t>(picture.size());
    memcpy(head->picture, picture.data(), picture.size());
    memcpy(in.data(), item.data(), item.size());
    memset(out.data(), '.', number.size());
    int result = _zvkcMoveNumEditToNum(head, in.data(), out.data());
    number = textOf(out);
    return result;
}

TEST(DeEdit, WhatFitsAndWhatDoesNot)
{
    struct Case {
        const char *picture, *item, *number;
        int result = 0;
    };
    const Case cases[] = {
        {"", "", "+"},
        {"99CR", "12CR", "12-"},
        {"99CR", "12  ", "12+"},
        {"99CR", "12cr", "12.", 1},
        {"99CR", "12 R", "12.", 1},
        {"99CR", "12C ", "12.", 1},
        {"99C", "12C", "12.", 1}, // half a pair
        {"**9", "*12", "012+"},
        {"*9", "7 ", "70+"},
        {"Z9VPP", " 4", "04+"},
        {"+99", "-12", "12-"},
        {"+99", " 12", "12+"},
        {"+99", "x12", "12+"},
        {"+99", "112", "...", 1}, // a digit at the first sign position
        {"99+", "12-", "12-"},
        {"+99+", "-12+", "12.", 1}, // two signs
        {"+++9", "  -1", "001-"},
        {"+++9", "   1", "001+"},
        {"+++9", " 1 1", "....", 1}, // a digit before any sign
        {"---9", "   1", "001+"},
        {"---9", " 123", "123+"},
        {"---9", "-123", "123-"},
        {"---9", "1123", "....", 1},
        {"---9", "+  1", "001+"}, // a plus is just another byte here
        {"---9", "+- 1", "....", 1},
        {"--,--9", "  -  1", "0001-"}, // a sign on the separator
        {"--/--9", "  -  1", "0001-"}, // and on another insertion, since the string goes on after it
        {"--/9", "  -1", "01+"},       // but not where it does not
        {"/--9", "- 11", "11+"},       // nor before the string
        {"$$$9", "  $1", "001+"},
        {"$$$9", "$123", "123+"},
        {"$99", "$12", "12+"},
        {"9/9 9.909", "1/2 3.405", "12345+"},
    };
    for (const Case &each : cases) {
        std::string number(strlen(each.number), 0);
        EXPECT_EQ(deEdit(each.picture, each.item, number), each.result) << each.picture << " [" << each.item << "]";
        EXPECT_EQ(number, each.number) << each.picture << " [" << each.item << "]";
    }
    DeEditRecord negative{-3, {'9'}};
    uint8_t out[2] = {'?', '?'};
    EXPECT_EQ(_zvkcMoveNumEditToNum(&negative, bytes("123"), out), 0);
    EXPECT_EQ(memcmp(out, "+?", 2), 0);
}

TEST(FigurativeFill, EveryLengthAndJustification)
{
    const std::string literal = "ABCDE";
    for (int piece = 1; piece <= 5; piece++) {
        for (int size = 0; size < 24; size++) {
            std::string forward, backward;
            for (int i = 0; i < size; i++) {
                forward += literal[static_cast<size_t>(i % piece)];
                backward.insert(0, 1, literal[static_cast<size_t>(piece - 1 - i % piece)]);
            }
            GuardedItem out(static_cast<size_t>(size));
            _zvkcMoveFigConst(out.data(), size, bytes(literal), piece);
            EXPECT_EQ(textOf(out), forward);
            _zvkcMoveFigConst(out.data(), -size, bytes(literal), piece);
            EXPECT_EQ(textOf(out), backward);
        }
    }
    uint8_t untouched = '?';
    _zvkcMoveFigConst(&untouched, 1, bytes(literal), 0);
    EXPECT_EQ(untouched, '?');
}

TEST(VariableLengthMove, JustificationPaddingAndOverlap)
{
    for (int from = 0; from < 9; from++) {
        for (int to = 0; to < 9; to++) {
            for (int signs = 0; signs < 4; signs++) {
                for (int shift = -8; shift <= 8; shift++) {
                    std::string storage = "abcdefghijklmnopqrstuvwxyz";
                    std::string source = storage.substr(9, static_cast<size_t>(from)), expected;
                    char pad = signs & 1 ? '\x40' : ' ';
                    size_t padding = static_cast<size_t>(std::max(0, to - from));
                    if (signs & 2)
                        expected =
                            std::string(padding, pad) + source.substr(static_cast<size_t>(std::max(0, from - to)));
                    else
                        expected = source.substr(0, static_cast<size_t>(to)) + std::string(padding, pad);
                    std::string after = storage;
                    after.replace(static_cast<size_t>(9 + shift), static_cast<size_t>(to), expected);
                    // A length of zero has no sign.
                    if ((signs & 1 && from == 0) || (signs & 2 && to == 0)) continue;
                    uint8_t *base = reinterpret_cast<uint8_t *>(storage.data());
                    _zvkcMoveVarLenOverlap(base + 9 + shift, signs & 2 ? -to : to, base + 9, signs & 1 ? -from : from);
                    ASSERT_EQ(storage, after) << from << " to " << to << " signs " << signs << " shift " << shift;
                }
            }
        }
    }
}

TEST(SegmentRefresh, ResetsTheEntriesOfAnIndependentSegment)
{
    int places[6];
    void *initial[3] = {&places[0], &places[1], &places[2]};
    const uint8_t segments[3] = {50, 49, 0x80};
    auto changed = [&](auto act) { // which of the entries were reset
        void *targets[3] = {&places[3], &places[4], &places[5]};
        act(targets);
        std::string result;
        for (int i = 0; i < 3; i++) result += targets[i] == initial[i] ? 'R' : '-';
        return result;
    };
    auto uncond = [&](int segment, int count) {
        return changed([&](void **t) { _zvkcRfshUncond(segment, count, t, initial, segments); });
    };
    auto cond = [&](int current, int next) {
        return changed([&](void **t) { _zvkcRfshCond(current, 3, next, t, initial, segments); });
    };
    EXPECT_EQ(uncond(49, 3), "-R-");
    EXPECT_EQ(uncond(0x80, 3), "--R");
    EXPECT_EQ(uncond(0x80, 2), "---");
    EXPECT_EQ(uncond(50, 0), "---");
    EXPECT_EQ(uncond(50, -1), "---");
    EXPECT_EQ(cond(0, 50), "R--");
    EXPECT_EQ(cond(50, 50), "---");
    EXPECT_EQ(cond(0, 49), "---");
    EXPECT_EQ(cond(0, 0x80), "---");
    const uint8_t table[2] = {49, 50};
    auto depend = [&](int index) {
        return changed([&](void **t) { _zvkcRfshGoDepend(index, 1, 3, table, t, initial, segments); });
    };
    EXPECT_EQ(depend(1), "---");
    EXPECT_EQ(depend(2), "R--");
    EXPECT_EQ(depend(0), "---");
}

} // namespace
