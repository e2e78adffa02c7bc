// Catches: a row of the locale table that names a page which cannot be opened or is no EBCDIC page,
// a row moved or a column too wide; the wrong row or page for a locale or for a value of
// EBCDIC_CODEPAGE, its messages; the wrong converter for a number (a variant with swapped line
// ends, a newer namesake, a number that only an alias bears).
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "chardata/code_page_choice.h"
#include "chardata/open_converter.h"
#include "kvr2/code_pages.h"
#include "support/child.h"

namespace {

std::string columnText(const char (&column)[15])
{
    EXPECT_NE(memchr(column, 0, sizeof column), nullptr) << column;
    return column;
}

TEST(LocaleTable, EveryEbcdicPageOpensAndIsEbcdic)
{
    for (const CodePageRow &row : kCodePageRows) {
        SCOPED_TRACE(row.key);
        EXPECT_NE(row.ebcdicEuro[0], 0);
        for (const std::string &page : {columnText(row.ebcdicBase), columnText(row.ebcdicEuro)}) {
            if (page.empty()) continue;
            EXPECT_EQ(page.rfind("TQX-", 0), 0u);
            UErrorCode status = U_ZERO_ERROR;
            UConverter *converter = zvkOpenConverter(page.c_str(), &status);
            ASSERT_NE(converter, nullptr) << page;
            int number = std::stoi(page.substr(4));
            EXPECT_EQ(ucnv_getCCSID(converter, &status), number == 9030 ? 838 : number);
            char text[8];
            int32_t length = ucnv_fromUChars(converter, text, sizeof text, u"AZ09 ", 5, &status);
            EXPECT_EQ(std::string(text, static_cast<size_t>(length)), "\xC1\xE9\xF0\xF9\x40") << page;
            ucnv_close(converter);
        }
        for (const auto *column :
             {&row.pcFirst, &row.pcSecond, &row.windows, &row.windowsOther, &row.isoFirst, &row.isoSecond})
            columnText(*column);
    }
    EXPECT_STREQ(kCodePageRows[8].key, "EN_US");
    EXPECT_STREQ(kCodePageRows[4].ebcdicEuro, "TQX-1140");
    EXPECT_STREQ(kCodePageRows[26].ebcdicBase, "TQX-870");
    EXPECT_EQ(memcmp(kCodePageRows[47].dbcsBlank, "\xA1\x40", 2), 0);
    EXPECT_STREQ(kCodePageRows[49].ebcdicBase, "TQX-930");
    EXPECT_STREQ(kCodePageRows[52].key, "VI_VT");
}

TEST(OpenConverter, FindsNumbers)
{
    auto nameOf = [](const char *name) -> std::string {
        UErrorCode status = U_ZERO_ERROR;
        UConverter *converter = zvkOpenConverter(name, &status);
        if (!converter) {
            EXPECT_GT(status, 0);
            return "";
        }
        std::string found = ucnv_getName(converter, &status);
        ucnv_close(converter);
        return found;
    };
    auto holds = [](const std::string &name, const char *part) { return name.find(part) != std::string::npos; };
    EXPECT_TRUE(holds(nameOf("TQX-37"), "-37_"));
    EXPECT_FALSE(holds(nameOf("TQX-37"), ",")); // the variant with line feed and new line swapped
    for (int round = 0; round < 2; round++) {   // the second answers are remembered ones
        EXPECT_EQ(nameOf("tqx-037"), nameOf("TQX-37"));
        EXPECT_TRUE(holds(nameOf("Tqx-1140"), "-1140_"));
        EXPECT_TRUE(holds(nameOf("TQX-9030"), "-838_")); // an alias only
        EXPECT_EQ(nameOf("TQX-819"), "ISO-8859-1");      // told by the open converter only
        EXPECT_EQ(nameOf("TQX-1208 "), "UTF-8");
        EXPECT_EQ(nameOf("TQX-101"), ""); // shares a place with 37 in what is remembered
        EXPECT_TRUE(holds(nameOf("TQX-949"), "-949_"));
    }
    EXPECT_EQ(nameOf("ISO8859-1"), "ISO-8859-1");
    for (const char *wrong :
         {"", "TQX-", "TQX-0", "TQX-99999", "TQX-65535", "TQX-37x", "TQX-99999999999999999999", "TQX37", "NOPE"})
        EXPECT_EQ(nameOf(wrong), "") << wrong;
}

struct Choice {
    const char *locale, *codeSet, *value;
    int32_t row;
    const char *localeName, *ebcdicCodePage;
};

TEST(CodePageChoice, LocaleAndValue)
{
    const Choice cases[] = {
        {"C", "ANSI_X3.4-1968", nullptr, 8, "en_US.ISO8859-1", "TQX-1140"},
        {"POSIX", "ANSI_X3.4-1968", "", 8, "en_US.ISO8859-1", "TQX-1140"},
        {"en_US", "ISO-8859-1", nullptr, 8, "en_US.ISO-8859-1", "TQX-1140"},
        {"de_DE.ISO8859-15", "ISO-8859-15", nullptr, 2, "de_DE.ISO8859-15", "TQX-1141"},
        {"de_DE@euro", "ISO-8859-15", nullptr, 2, "de_DE.ISO-8859-15", "TQX-1141"},
        {"DE_de.UTF-8", "UTF-8", nullptr, 2, "DE_de.UTF-8", "TQX-1141"},
        {"C.utf8", "UTF-8", nullptr, 8, "C.utf.UTF-8", "TQX-1140"},
        {"eo", "UTF-8", nullptr, 8, "eo   .UTF-8", "TQX-1140"},
        {"xx_YY.UTF-8", "UTF-8", nullptr, 8, "xx_YY.UTF-8", "TQX-1140"},
        {"ja_JP.eucJP", "EUC-JP", nullptr, 48, "ja_JP.eucJP", "TQX-1399"},
        {"en_US.UTF-8", "UTF-8", "tqx-037", 8, "en_US.UTF-8", "tqx-037"},
        {"en_GB.UTF-8", "UTF-8", "TQX-285", 6, "en_GB.UTF-8",
         "TQX-285"}, // found first in another row, but its own as well
        {"ja_JP.eucJP", "EUC-JP", "TQX-930", 48, "ja_JP.eucJP", "TQX-930"}, // the other row of the same key
    };
    for (const Choice &each : cases) {
        CodePageChoice choice;
        ChildRun run = runChild([&] {
            zvkChooseCodePages(each.locale, each.codeSet, each.value, choice);
            printf("%d %s %s", choice.row, choice.localeName, choice.ebcdicCodePage);
        });
        EXPECT_EQ(run.out, std::to_string(each.row) + " " + each.localeName + " " + each.ebcdicCodePage);
        EXPECT_EQ(run.err, "") << each.locale;
    }
}

TEST(CodePageChoice, ValuesThatAreReported)
{
    const Choice cases[] = {
        {"es_ES.UTF-8", "UTF-8", "tqx-1140", 10, "es_ES.UTF-8", "tqx-1140"},     // a page of other locales
        {"es_ES.UTF-8", "UTF-8", "NOPE", 10, "es_ES.UTF-8", "TQX-1140"},         // unknown: row 4, by the length
        {"es_ES.UTF-8", "UTF-8", "no", 10, "es_ES.UTF-8", "TQX-1141"},           // row 2
        {"en_US.UTF-8", "UTF-8", "12345678901234", 8, "en_US.UTF-8", "TQX-1148"} // row 14
    };
    for (const Choice &each : cases) {
        ChildRun run = runChild([&] {
            CodePageChoice choice;
            zvkChooseCodePages(each.locale, each.codeSet, each.value, choice);
            printf("%d %s %s", choice.row, choice.localeName, choice.ebcdicCodePage);
        });
        EXPECT_EQ(run.out, std::to_string(each.row) + " " + each.localeName + " " + each.ebcdicCodePage);
        EXPECT_NE(run.err.find("ZVK230"), std::string::npos) << each.value;
    }
}

TEST(CodePageChoice, LongValuesEndTheRunUnitOrAreIgnored)
{
    for (size_t length : {15u, 64u, 100000u}) {
        ChildRun run = runChild([&] {
            CodePageChoice choice;
            zvkChooseCodePages("fr_FR.UTF-8", "UTF-8", std::string(length, 'x').c_str(), choice);
            if (strcmp(choice.ebcdicCodePage, "TQX-1148") != 0) exit(3);
        });
        EXPECT_NE(run.err.find("ZVK230"), std::string::npos);
        EXPECT_TRUE(run.signal == SIGABRT || run.status == 0) << run.signal << " " << run.status;
    }
    ChildRun run = runChild([] {
        CodePageChoice choice;
        zvkChooseCodePages(std::string(500, 'l').c_str(), std::string(500, 's').c_str(), nullptr, choice);
        printf("%zu %zu", strlen(choice.localeName), strlen(choice.ebcdicCodePage));
    });
    EXPECT_EQ(run.out, "63 8");
}

TEST(CodePageChoice, IsMadeOnceInTheProcessRecord)
{
    ChildOptions options;
    options.env = {{"LC_ALL", "C"}, {"EBCDIC_CODEPAGE", "TQX-037"}};
    ChildRun run = runChild(
        [] {
            static Proccom own;
            if (!_zvkProccom) _zvkProccom = &own;
            _zvkProccom->ccsid = -1;
            char locale[64], page[16];
            _zvkGetLocaleCP(locale, page);
            setenv("EBCDIC_CODEPAGE", "TQX-500", 1);
            _zvkcSetCodePages();
            printf("%d %s %s %s", _zvkProccom->ccsid, locale, page, _zvkProccom->ebcdicCodePage);
        },
        options);
    EXPECT_EQ(run.out, "8 en_US.ISO8859-1 TQX-037 TQX-037");
}

// Under the thread sanitizer: that threads which need the pages at once do not meet in the record.
TEST(CodePageChoice, IsStoredOnceByThreadsAtOnce)
{
    ChildRun run = runChild(
        [] {
            static Proccom own;
            if (!_zvkProccom) _zvkProccom = &own;
            _zvkProccom->ccsid = -1;
            std::vector<std::thread> threads;
            for (int t = 0; t < 8; t++)
                threads.emplace_back([] {
                    char locale[64], page[16];
                    _zvkGetLocaleCP(locale, page);
                    if (strcmp(locale, "en_US.ISO8859-1") != 0 || strcmp(page, "TQX-037") != 0) exit(3);
                });
            for (std::thread &thread : threads) thread.join();
        },
        {.env = {{"LC_ALL", "C"}, {"EBCDIC_CODEPAGE", "TQX-037"}}});
    EXPECT_EQ(run.status, 0) << run.err;
}

} // namespace
