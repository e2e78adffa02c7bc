// Catches: an element that does not read back what it writes; a Z that is forgotten or kept too
// long; case, padding and order of elements that depend on their neighbours; names of other locales
// that are cut in the middle of a character.
//
// Pictures are made up of elements at random; each element knows by itself what it writes for a
// date. What the service writes must be that, and reading it must lead back to the day.
#include <clocale>
#include <langinfo.h>
#include <random>

#include "dateservices/service_calls.h"
#include "support/calendar_walk.h"
#include "support/child.h"
#include "support/share.h"

namespace {

struct Moment {
    CalendarWalk day;
    int hour, minute, second, millisecond;
    double seconds;
};

std::string formatted(const char *format, int value)
{
    char text[32];
    snprintf(text, sizeof text, format, value);
    return text;
}

std::string padded(std::string text, size_t width)
{
    while (text.size() < width) text += ' ';
    return text;
}

std::string upper(std::string text)
{
    for (char &c : text) c = static_cast<char>(toupper(c));
    return text;
}

struct Element {
    const char *picture;
    std::string (*shows)(const Moment &);
    int group; // of each group a picture has one element: 0 year, 1 month, 2 day, 3 and on as they come
};

const char *const kRoman[] = {"I", "II", "III", "IV", "V", "VI", "VII", "VIII", "IX", "X", "XI", "XII"};

const Element kElements[] = {
    {"YYYY", [](const Moment &m) { return formatted("%04d", m.day.year); }, 0},
    {"yyyy", [](const Moment &m) { return formatted("%04d", m.day.year); }, 0},
    {"MM", [](const Moment &m) { return formatted("%02d", m.day.month); }, 1},
    {"ZM", [](const Moment &m) { return formatted("%d", m.day.month); }, 1},
    {"ZMM", [](const Moment &m) { return formatted("%d", m.day.month); }, 1},
    {"Mmm", [](const Moment &m) { return std::string(nl_langinfo(ABMON_1 + m.day.month - 1)); }, 1},
    {"MMM", [](const Moment &m) { return upper(nl_langinfo(ABMON_1 + m.day.month - 1)); }, 1},
    {"Mmmm", [](const Moment &m) { return padded(nl_langinfo(MON_1 + m.day.month - 1), 4); }, 1},
    {"Mmmmmmmmmmmm", [](const Moment &m) { return padded(nl_langinfo(MON_1 + m.day.month - 1), 12); }, 1},
    {"MmmmmmmmmmmZ", [](const Moment &m) { return std::string(nl_langinfo(MON_1 + m.day.month - 1)); }, 1},
    {"ZMMMMMMMMMM", [](const Moment &m) { return upper(nl_langinfo(MON_1 + m.day.month - 1)); }, 1},
    {"RRRR", [](const Moment &m) { return padded(kRoman[m.day.month - 1], 4); }, 1},
    {"RRRZ", [](const Moment &m) { return std::string(kRoman[m.day.month - 1]); }, 1},
    {"DD", [](const Moment &m) { return formatted("%02d", m.day.day); }, 2},
    {"ZD", [](const Moment &m) { return formatted("%d", m.day.day); }, 2},
    {"dd", [](const Moment &m) { return formatted("%02d", m.day.day); }, 2},
    {"DDD", [](const Moment &m) { return formatted("%03d", m.day.dayOfYear); }, 3},
    {"Www", [](const Moment &m) { return std::string(nl_langinfo(ABDAY_1 + m.day.weekday)); }, 4},
    {"WWWWWWWWWW", [](const Moment &m) { return padded(upper(nl_langinfo(DAY_1 + m.day.weekday)), 10); }, 4},
    {"Wwwz", [](const Moment &m) { return std::string(nl_langinfo(DAY_1 + m.day.weekday)); }, 4},
    {"HH", [](const Moment &m) { return formatted("%02d", m.hour); }, 5},
    {"ZH", [](const Moment &m) { return formatted("%d", m.hour); }, 5},
    {"MI", [](const Moment &m) { return formatted("%02d", m.minute); }, 6},
    {"SS", [](const Moment &m) { return formatted("%02d", m.second); }, 7},
    {"ZS", [](const Moment &m) { return formatted("%d", m.second); }, 7},
    {"999", [](const Moment &m) { return formatted("%03d", m.millisecond); }, 8},
};

Moment momentOf(int32_t lilian, std::mt19937 &random)
{
    static CalendarWalk at = CalendarWalk::lilian();
    static int32_t reached = 1;
    if (lilian < reached) {
        at = CalendarWalk::lilian();
        reached = 1;
    }
    for (; reached < lilian; reached++) at.next();
    Moment moment{at, int(random() % 24), int(random() % 60), int(random() % 60), int(random() % 1000), 0};
    moment.seconds =
        lilian * 86400.0 + moment.hour * 3600 + moment.minute * 60 + moment.second + moment.millisecond / 1000.0;
    return moment;
}

TEST(Pictures, WhatIsWrittenReadsBack)
{
    std::mt19937 random(7);
    const std::string delimiters = "/.,:-_ ";
    int32_t lilian = 1;
    for (int round = 0; round < shareOf(30000); round++) {
        lilian += 1 + static_cast<int32_t>(random() % 101);
        if (lilian > 3074324) lilian = 1;
        Moment moment = momentOf(lilian, random);
        // One element of a group, in any order.
        std::vector<int> groups = {0, 1, 2, 3, 4, 5, 6, 7, 8};
        std::shuffle(groups.begin(), groups.end(), random);
        std::string picture, wanted;
        for (int group : groups) {
            if (group > 2 && random() % 3 == 0) continue;
            std::vector<const Element *> choice;
            for (const Element &element : kElements)
                if (element.group == group) choice.push_back(&element);
            const Element *element = choice[random() % choice.size()];
            std::string shown = element->shows(moment);
            if (!picture.empty()) {
                char delimiter = delimiters[random() % delimiters.size()];
                // A "." after A.P would be its own; two blanks in a row become one in the date.
                if (wanted.back() == ' ' && delimiter == ' ') delimiter = '/';
                picture += delimiter;
                wanted += delimiter;
            }
            picture += element->picture;
            wanted += shown;
        }
        if (wanted.size() > 80) continue;
        Text written = dateTime(moment.seconds, picture);
        ASSERT_EQ(written.token, 0) << picture;
        ASSERT_EQ(padded(written.value, wanted.size()), wanted) << picture;
        // Blanks that pad a name are one delimiter to the reader: with one more behind they do not
        // fit any picture.
        if (wanted.find("  ") != std::string::npos || wanted.find(" /") != std::string::npos) continue;
        bool odd = false;
        for (char each : std::string("/.,:-_")) odd |= wanted.find(std::string(" ") + each) != std::string::npos;
        if (odd || wanted.back() == ' ') continue;
        Number back = days(wanted, picture);
        ASSERT_EQ(back.token, 0) << wanted << " by " << picture;
        ASSERT_EQ(back.value, lilian) << wanted << " by " << picture;
        bool whole = true;
        for (const char *part : {"H", "MI", "S", "999"}) whole &= picture.find(part) != std::string::npos;
        if (whole) {
            ASSERT_EQ(seconds(wanted, picture).value, moment.seconds) << wanted << " by " << picture;
        }
    }
}

TEST(Pictures, HalvesOfTheDayReadBack)
{
    for (int hour = 0; hour < 24; hour++) {
        double at = 150000 * 86400.0 + hour * 3600 + 1800;
        for (const char *half : {"AP", "ap", "A.P", "A.P.", "a.p."}) {
            std::string picture = std::string("YYYYMMDD HH:MI ") + half, first = std::string(half) + " YYYYMMDD ZH:MI";
            Text shown = dateTime(at, picture);
            EXPECT_EQ(shown.value.substr(9, 2), formatted("%02d", hour % 12 ? hour % 12 : 12));
            EXPECT_EQ(toupper(shown.value[15]), hour < 12 ? 'A' : 'P');
            EXPECT_EQ(seconds(shown.value, picture).value, at) << shown.value;
            EXPECT_EQ(seconds(dateTime(at, first).value, first).value, at) << first;
        }
    }
}

TEST(Pictures, NamesOfOtherLocales)
{
    const std::string utf8 = "de_DE.UTF-8", latin = "de_DE.ISO-8859-1";
    for (const std::string &name : {utf8, latin})
        if (access((KVR2_LOCALES "/" + name).c_str(), R_OK) != 0) GTEST_SKIP() << "localedef cannot make the locales";
    auto show = [&](const std::string &locale) {
        return runChild(
            [&] {
                if (!setlocale(LC_ALL, locale.c_str())) exit(3);
                std::string first = date(161231, "Mmm|Mmmmmmm|MMMM").value; // a day in March 2024
                Number back = days(date(161231, "DD. Mmmm YYYY").value, "DD. MMMM YYYY");
                printf("%s %d", first.c_str(), back.value);
            },
            {.env = {{"LOCPATH", KVR2_LOCALES}}});
    };
    ChildRun inUtf8 = show(utf8), inLatin = show(latin);
    ASSERT_EQ(inUtf8.status, 0);
    ASSERT_EQ(inLatin.status, 0);
    EXPECT_EQ(inLatin.out, "M\xE4r|M\xE4rz   |M\xC4RZ 161231");
    // Two bytes a letter: three bytes do not hold the abbreviation, and the name's fourth is cut
    // off by none.
    EXPECT_EQ(inUtf8.out.substr(0, inUtf8.out.find(' ')), "M\xC3\xA4|M\xC3\xA4rz");
}

} // namespace
