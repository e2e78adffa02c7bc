// Catches: a locale's text that is read or written by another locale's layout; a name that is cut
// or saved wrongly; a table that is merged twice or in another order; a check of the sender that is
// lost on the way; messages without their inserts. Everything runs in a child: a locale is the
// process's.
#include <clocale>
#include <cstdlib>
#include <ctime>
#include <langinfo.h>
#include <unistd.h>

#include "datetime/item.h"
#include "kvr2/run_unit.h"
#include "support/child.h"
#include "support/require.h"

namespace {

// A program with the locales that it names, as a compiler lays it out.
struct Program {
    std::vector<std::string> names;
    std::vector<GeneratedLocaleInfo> generated;
    std::vector<uint64_t> table;
    LocaleProgram record{};

    explicit Program(std::vector<std::string> own) : names(own), generated(own.size()), table(3 + own.size())
    {
        auto length = static_cast<uint32_t>(2 + own.size());
        memcpy(table.data(), &length, sizeof length);
        for (size_t i = 0; i < own.size(); i++) {
            generated[i] = {names[i].data(), nullptr, static_cast<int16_t>(names[i].size()), 0};
            GeneratedLocaleInfo *info = &generated[i];
            memcpy(&table[3 + i], &info, sizeof info);
        }
        record.mgtLocaleTablePtr = reinterpret_cast<MgtLocaleTable *>(table.data());
    }
    LocaleDescriptor *slot(size_t i) const { return reinterpret_cast<LocaleDescriptor *>(table[1 + i]); }
};

FD localeItem(uint32_t category, uint16_t index, uint32_t storage)
{
    FD fd{};
    fd.category = category;
    fd.storageLength = storage;
    fd.diffLength.actualLength = static_cast<int16_t>(storage);
    fd.hasLocale = 1;
    fd.localeIndex = index;
    return fd;
}

bool haveLocales()
{
    for (const char *name : {"de_DE.UTF-8", "en_US.ISO-8859-1", "fr_FR.ISO-8859-1"})
        if (access((std::string(KVR2_LOCALES "/") + name).c_str(), R_OK) != 0) return false;
    return true;
}

ChildRun inLocales(const std::function<void()> &body, const std::string &current = "C")
{
    return runChild(
        [&] {
            REQUIRE(setlocale(LC_ALL, current.c_str()));
            body();
        },
        {.env = {{"LOCPATH", KVR2_LOCALES}}});
}

#define NEED_LOCALES()                                                                                                 \
    if (!haveLocales()) GTEST_SKIP() << "localedef cannot make the locales"

std::string movedLocale(const std::string &text, FD *from, FD *to, Program &program, NewCallInfo info = kNoCheck)
{
    Item sender(text), receiver(std::string(to->storageLength, '?'));
    _zvkcDateTime_Move_Locale(sender.get(), receiver.get(), from, to, 0, 1950, info, &program.record);
    return receiver.text();
}

TEST(Locale, ThePlainLocaleNeedsNoOther)
{
    EXPECT_GOOD(inLocales([] {
        Program program({});
        REQUIRE(_zvkcDateTime_Init_Locale(&program.record) == &program.record);
        REQUIRE(program.record.Run_mgtLocaleTableCopiedToRut == 1);
        REQUIRE(std::string(program.slot(1)->localeName) == "POSIX");
        FD date = localeItem(ctDATE, 1, 10), time = localeItem(ctTIME, 1, 8);
        Format iso = isoDate(), clock = isoTime();
        REQUIRE(movedLocale("2026-03-07", &iso.fd, &date, program) == "03/07/26  ");
        REQUIRE(date.formatIsStrptime == 1 && date.formatUpdated == 1);
        REQUIRE(movedLocale("03/07/26  ", &date, &iso.fd, program, kCheck) == "2026-03-07");
        REQUIRE(movedLocale("08:09:10", &clock.fd, &time, program) == "08:09:10");
    }));
}

TEST(Locale, EachLocaleHasItsLayout)
{
    NEED_LOCALES();
    EXPECT_GOOD(inLocales([] {
        Program program({"en_US.ISO-8859-1", "de_DE.UTF-8", "fr_FR.ISO-8859-1", "de_DE.UTF-8"});
        _zvkcDateTime_Init_Locale(&program.record);
        REQUIRE(program.slot(3) == program.slot(5)); // one descriptor for a name
        REQUIRE(program.slot(2) != program.slot(3));
        FD american = localeItem(ctDATE, 2, 10), german = localeItem(ctDATE, 3, 12), french = localeItem(ctDATE, 4, 10);
        Format iso = isoDate();
        REQUIRE(movedLocale("2026-03-07", &iso.fd, &german, program) == "07.03.2026  ");
        REQUIRE(movedLocale("2026-03-07", &iso.fd, &american, program) == "03/07/2026");
        REQUIRE(movedLocale("07.03.2026  ", &german, &american, program, kCheck) == "03/07/2026");
        REQUIRE(movedLocale("03/07/2026", &american, &french, program) == "07/03/2026");

        Item a("07.03.2026  "), b("03/08/2026");
        REQUIRE(_zvkcDateTime_Compare_Locale(a.get(), b.get(), &german, &american, ZVK_LESS, 1950, kCheck,
                                             &program.record) == 1);
        REQUIRE(_zvkcDateTime_Compare_NN_Locale(a.get(), a.get(), &german, &iso.fd, 12, 10, ZVK_EQUAL, 1950, kNoCheck,
                                                &program.record) == 1);
        REQUIRE(_zvkcDateTime_Find_Duration_Locale(b.get(), &american, a.get(), &german, duDays, 1950, kCheck,
                                                   &program.record) == 1);
        Item stamp("2026-03-10-01:00:00.000000"); // whatever its descriptor says, it has no locale form
        Format marked = isoStamp();
        marked.fd.hasLocale = 1;
        marked.fd.localeIndex = 3;
        REQUIRE(_zvkcDateTime_Find_Duration_Locale(stamp.get(), &marked.fd, a.get(), &german, duDays, 1950, kCheck,
                                                   &program.record) == 3);
        DurationEntry month{duMonths, 1};
        _zvkcDateTime_Add_Duration_Locale(a.get(), &german, a.get(), 2, &month, 1950, kCheck, &program.record);
        REQUIRE(a.text() == "07.04.2026  ");
        _zvkcDateTime_Sub_Duration_Locale(a.get(), &german, a.get(), 2, &month, 1950, kCheck, &program.record);
        REQUIRE(a.text() == "07.03.2026  ");

        REQUIRE(_zvkcDateTime_Test_Locale(a.get(), &german, nullptr, 12, 1950, &program.record) == '1');
        REQUIRE(_zvkcDateTime_Test_Locale(a.get(), &german, nullptr, 5, 1950, &program.record) == '0');
        REQUIRE(_zvkcDateTime_Test_Locale(a.get(), &german, nullptr, 0, 1950, &program.record) == '0');
        REQUIRE(_zvkcDateTime_Test_Locale(b.get(), &german, nullptr, 10, 1950, &program.record) == '0');

        Item digits("????????"), number("20251231");
        _zvkcDateTime_DeEdit_Locale(a.get(), digits.get(), &german, 8, 1950, kCheck, &program.record);
        REQUIRE(digits.text() == "20260307");
        _zvkcDateTime_Edit_Locale(number.get(), a.get(), &german, 8, kNoCheck, &program.record);
        REQUIRE(a.text() == "31.12.2025  ");
        Item text("2024-02-29");
        _zvkcDateTime_Convert_Locale(text.get(), a.get(), &iso.fd, &german, 10, kNoCheck, &program.record);
        REQUIRE(a.text() == "29.02.2024  ");
        PackedField field;
        _zvkcDateTime_Extract_Packed_Locale(&field, a.get(), &german, duYears, 1950, kCheck, &program.record);
        REQUIRE(field.bytes[13] == 0x4C && field.bytes[12] == 0x02 && field.bytes[11] == 0x02);
        Format year(ctDATE, {entry(15)}, 4);
        _zvkcDateTime_Extract_Int_Locale(&field, a.get(), &german, &year.fd, 1950, kCheck, &program.record);
        REQUIRE(field.bytes[13] == 0x4C && field.bytes[12] == 0x02);
        Item out("????");
        _zvkcDateTime_Extract_Alph_Locale(a.get(), &german, &year.fd, out.get(), 1950, kCheck, &program.record);
        REQUIRE(out.text() == "2024");
    }));
}

TEST(Locale, EntriesAreTranslatedOneByOne)
{
    NEED_LOCALES();
    EXPECT_GOOD(inLocales([] {
        Program program({"en_US.ISO-8859-1"});
        _zvkcDateTime_Init_Locale(&program.record);
        Format half(ctTIME, {entry(17), entry(7), entry(18), entry(6), entry(24)}, 8), iso = isoTime();
        half.fd.hasLocale = 1;
        half.fd.localeIndex = 2;
        REQUIRE(movedLocale("12:30 PM", &half.fd, &iso.fd, program) == "12:30:00");
        REQUIRE(movedLocale("12:30 AM", &half.fd, &iso.fd, program) == "00:30:00");
        REQUIRE(movedLocale("01:30 PM", &half.fd, &iso.fd, program) == "13:30:00");
        REQUIRE(movedLocale("21:07:00", &iso.fd, &half.fd, program) == "09:07 PM");
        // A single character is copied as a separator is.
        Format lettered(ctTIME, {entry(16), {8, 4, 0}, entry(18)}, 5);
        lettered.fd.hasLocale = 1;
        lettered.fd.localeIndex = 2;
        REQUIRE(movedLocale("21:07:00", &iso.fd, &lettered.fd, program) == "21t07");
        REQUIRE(movedLocale("21t07", &lettered.fd, &iso.fd, program) == "21:07:00");
        Item item("13:30 PM");
        REQUIRE(_zvkcDateTime_Test_Locale(item.get(), &half.fd, nullptr, 8, 1950, &program.record) == '0');
    }));
}

struct Saved {
    std::string name, library, result;
};

Saved setLocale(Program &program, uint32_t category, int32_t from, const std::string &name, size_t room = 8)
{
    GuardedItem to(room), library(3);
    const char *result =
        _zvkcDateTime_Set_Locale(1, &category, reinterpret_cast<char *>(to.data()), static_cast<uint32_t>(room),
                                 reinterpret_cast<char *>(library.data()), 3, from, name.data(),
                                 static_cast<uint32_t>(name.size()), &program.record);
    return {std::string(reinterpret_cast<char *>(to.data()), room),
            std::string(reinterpret_cast<char *>(library.data()), 3), result};
}

TEST(Locale, SetLocaleSavesAndSets)
{
    NEED_LOCALES();
    EXPECT_GOOD(inLocales([] {
        Program program({"de_DE.UTF-8"});
        _zvkcDateTime_Init_Locale(&program.record);
        Saved saved = setLocale(program, ZVK_LC_TIME, ZVK_LOCALE_SAVE_ONLY, "");
        REQUIRE(saved.name == "DEFAULT " && saved.library == "   ");
        REQUIRE(setLocale(program, ZVK_LC_TIME, ZVK_LOCALE_SAVE_ONLY, "", 5).name == "DEFAU");
        REQUIRE(setLocale(program, ZVK_LC_TIME, 2, "").result == "de_DE.UTF-8");
        REQUIRE(std::string(setlocale(LC_TIME, nullptr)) == "de_DE.UTF-8");
        REQUIRE(std::string(setlocale(LC_NUMERIC, nullptr)) == "C");
        FD date = localeItem(ctDATE, 1, 10);
        Format iso = isoDate();
        REQUIRE(movedLocale("2026-03-07", &iso.fd, &date, program) == "07.03.2026");
        REQUIRE(setLocale(program, ZVK_LC_TIME, ZVK_LOCALE_BY_NAME, "en_US.ISO-8859-1  ", 12).name == "de_DE.UTF-8 ");
        REQUIRE(movedLocale("2026-03-07", &iso.fd, &date, program) == "03/07/2026"); // the current locale's, taken anew
        // The category of all has the name of LC_CTYPE to save, and setting it leaves that one
        // alone.
        REQUIRE(setLocale(program, ZVK_LC_ALL, ZVK_LOCALE_BY_NAME, "de_DE.UTF-8").result == "de_DE.UTF-8");
        REQUIRE(std::string(setlocale(LC_MONETARY, nullptr)) == "de_DE.UTF-8");
        REQUIRE(setLocale(program, ZVK_LC_ALL, ZVK_LOCALE_DEFAULT, "").name == "DEFAULT ");
        REQUIRE(std::string(setlocale(LC_ALL, nullptr)) == "C");
        setLocale(program, ZVK_LC_TOD, ZVK_LOCALE_BY_NAME, std::string(60, 'x')); // no system category
        REQUIRE(setLocale(program, ZVK_LC_TOD, ZVK_LOCALE_SAVE_ONLY, "", 60).name ==
                std::string(42, 'x') + std::string(18, ' '));
    }));
}

TEST(Locale, FunctionsOfALocale)
{
    NEED_LOCALES();
    EXPECT_GOOD(inLocales([] {
        Program program({"de_DE.UTF-8", "en_US.ISO-8859-1"});
        _zvkcDateTime_Init_Locale(&program.record);
        char out[256];
        Item date("20260307"), time("14050900 "), shifted("23050900-0130");
        int32_t length = _zvkcDateTime_Locale_Date(date.get(), rltALPHANUMERIC, 2, out, kNoCheck, &program.record);
        REQUIRE(std::string(out, static_cast<size_t>(length)) == "07.03.2026");
        length = _zvkcDateTime_Locale_Time(time.get(), rltALPHANUMERIC, 2, out, kNoCheck, &program.record);
        REQUIRE(std::string(out, static_cast<size_t>(length)) == "14:05:09");
        length = _zvkcDateTime_Locale_Time(time.get(), rltALPHANUMERIC, 3, out, kNoCheck, &program.record);
        REQUIRE(std::string(out, static_cast<size_t>(length)) == "02:05:09 PM");
        length = _zvkcDateTime_Locale_Time(shifted.get(), rltALPHANUMERIC, 2, out, kNoCheck, &program.record);
        REQUIRE(std::string(out, static_cast<size_t>(length)) == "00:35:09");
    }));
}

TEST(Locale, FailuresShowTheirMessages)
{
    struct Case {
        void (*call)();
        const char *shown;
    };
    const Case cases[] = {
        {[] {
             Program program({"xx_XX.none"});
             _zvkcDateTime_Init_Locale(&program.record);
         },
         "xx_XX.none"},
        {[] {
             Program program({});
             _zvkcDateTime_Init_Locale(&program.record);
             setLocale(program, ZVK_LC_TIME, ZVK_LOCALE_BY_NAME, "xx_XX.none");
         },
         "ZVK1001W"},
        {[] {
             Program program({});
             _zvkcDateTime_Init_Locale(&program.record);
             _zvkcDateTime_Init_Locale(&program.record);
         },
         "( (owningMgtPtr) ->Run_mgtLocaleTableCopiedToRut ) == 0x00"},
        {[] {
             Program program({});
             _zvkcDateTime_Init_Locale(&program.record);
             char out[256];
             _zvkcDateTime_Locale_Time("24000000", 1, 1, out, kNoCheck, &program.record);
         },
         "ZVK1003W"},
        {[] {
             Program program({});
             _zvkcDateTime_Init_Locale(&program.record);
             FD date = localeItem(ctDATE, 1, 8);
             Format iso = isoDate();
             movedLocale("99/99/99", &date, &iso.fd, program, kCheck);
         },
         "Range_check_locale"},
        {[] {
             Program program({});
             _zvkcDateTime_Init_Locale(&program.record);
             Format iso = isoDate();
             movedLocale("2026-03-07", &iso.fd, &iso.fd, program);
         },
         "( (senderFDPtr) -> hasLocale) == 1 || ( (receiverFDPtr) -> hasLocale) == 1"},
        {[] { _zvkcDateTime_Set_Locale(1, nullptr, nullptr, 0, nullptr, 0, -2, nullptr, 0, nullptr); },
         "categoryPtr != ((void *)0)"},
    };
    for (const Case &each : cases) {
        ChildRun run = inLocales(each.call);
        EXPECT_NE(run.signal, 0) << each.shown;
        EXPECT_NE(run.err.find(each.shown), std::string::npos) << each.shown << ":\n" << run.err;
        // A message leaves the ending to the assertion after it.
        EXPECT_NE(run.err.find("Assertion `"), std::string::npos) << each.shown << ":\n" << run.err;
    }
}

TEST(Locale, TextBesideItems)
{
    FD item = localeItem(ctDATE, 1, 10), plain{};
    auto aToD = [&](const std::string &text, size_t room, uint64_t length) {
        Item from(text), to(std::string(room, '?'));
        _zvkcDateTime_Move_AToD(from.get(), to.get(), &plain, &item, length, room);
        return to.text();
    };
    auto dToA = [&](const std::string &text, size_t room, int32_t justified) {
        Item from(text), to(std::string(room, '?'));
        _zvkcDateTime_Move_DToA(from.get(), to.get(), &item, 0, text.size(), room, justified);
        return to.text();
    };
    EXPECT_EQ(aToD("abc", 5, 3), "abc  ");
    EXPECT_EQ(aToD("abcdef", 5, 6), "abcde");
    EXPECT_EQ(aToD(std::string("abc") + '\0', 5, 0), "abc  ");
    EXPECT_EQ(dToA("abc", 5, 0), "abc  ");
    EXPECT_EQ(dToA("abc", 5, 1), "  abc");
    EXPECT_EQ(dToA("abcdef", 4, 1), "cdef");
    EXPECT_EQ(dToA("abcdef", 4, 0), "abcd");
}

} // namespace
