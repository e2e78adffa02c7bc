// Faults that these tests are there to catch: a text that the grammar allows refused, or the
// reverse; an error reported at the wrong place, twice, or with scanning on after it; a wrong value
// or sign; the short way to a value differing from the C library's in a bit; a look beyond the
// argument; time that grows faster than the argument.
#include <cmath>
#include <cstring>
#include <ctime>
#include <gtest/gtest.h>
#include <quadmath.h>
#include <random>

#include "intrinsics/dfp.h"
#include "kvr2/numval.h"
#include "support/guarded.h"
#include "support/pattern.h"
#include "terse_messages.h"

namespace {

const ZvkNumvalParameters kPoint = {'$', '.', ZVK_CURRENCY_SIGN}, kComma = {'$', ',', ZVK_CURRENCY_SIGN};

const uint8_t *bytes(const char *text) { return reinterpret_cast<const uint8_t *>(text); }
const uint8_t *bytes(const std::string &text) { return reinterpret_cast<const uint8_t *>(text.data()); }

std::string national(const std::string &text)
{
    std::string wide;
    for (char c : text) wide += {c, 0};
    return wide;
}

double numval(const std::string &text, const ZvkNumvalParameters &parameters = kPoint)
{
    double value = -1;
    _Dmr_numval(&parameters, static_cast<int64_t>(text.size()), bytes(text), &value);
    return value;
}

double numvalC(const std::string &text, const std::string &currency = "", bool comma = false)
{
    ZvkNumvalParameters parameters = comma ? kComma : kPoint;
    if (!currency.empty()) parameters.currencyKind = ZVK_CURRENCY_STRING;
    double value = -1;
    _Dmr_numval_c(&parameters, static_cast<int64_t>(text.size()), bytes(text), static_cast<int64_t>(currency.size()),
                  bytes(currency), &value);
    return value;
}

TEST(Numval, ReadsWhatTheGrammarAllows)
{
    EXPECT_EQ(numval("  -12.5 "), -12.5);
    EXPECT_EQ(numval(" + 12.5"), 12.5);
    EXPECT_EQ(numval("12.5-"), -12.5);
    EXPECT_EQ(numval("12 CR  "), -12);
    EXPECT_EQ(numval("12DB"), -12);
    EXPECT_EQ(numval(".5"), 0.5);
    EXPECT_EQ(numval("5."), 5);
    EXPECT_EQ(numval("12C"), 12); // an end is never too early
    EXPECT_EQ(numval("12,5", kComma), 12.5);
    EXPECT_TRUE(std::signbit(numval("-0")));

    EXPECT_EQ(numvalC("EUR 1,234.50", "EUR"), 1234.5);
    EXPECT_EQ(numvalC(" - EUR1,2,3.50 ", "EUR"), -123.5);
    EXPECT_EQ(numvalC("$1,234.50CR"), -1234.5);
    EXPECT_EQ(numvalC("1.234,50-", "", true), -1234.5);
    EXPECT_EQ(numvalC("CRD 7", "CRD"), 7); // a currency of the letters of CR and DB
}

TEST(Numval, HasManyNamesAndFormats)
{
    const std::string text = " 1234567890123456789012345678.25 ", currency = "EUR";
    auto length = static_cast<int64_t>(text.size());
    ZvkNumvalParameters named = {0, '.', ZVK_CURRENCY_STRING};
    ZvkFloat128 wanted = 1234567890123456789012345678.25Q, quads[5] = {};
    _Dmr_numval_float16(&kPoint, length, bytes(text), &quads[0]);
    _zvkcNumval16(&kPoint, length, bytes(text), &quads[1]);
    _zvkcNumvalFloat16(&kPoint, length, bytes(text), &quads[2]);
    _zvkcNumvalC16(&named, length, bytes(text), 3, bytes(currency), &quads[3]);
    _zvkcNumvalCFloat16(&named, length, bytes(text), 3, bytes(currency), &quads[4]);
    for (ZvkFloat128 value : quads) EXPECT_TRUE(value == wanted);
    double doubles[4] = {};
    _zvkcNumval(&kPoint, length, bytes(text), &doubles[0]);
    _zvkcNumvalFloat8(&kPoint, length, bytes(text), &doubles[1]);
    _zvkcNumvalC(&named, length, bytes(text), 3, bytes(currency), &doubles[2]);
    _zvkcNumvalCFloat8(&named, length, bytes(text), 3, bytes(currency), &doubles[3]);
    for (double value : doubles) EXPECT_EQ(value, 1234567890123456789012345678.25);
    ZvkDecimal128 decimals[2] = {};
    _Dmr_numval_decfloat16(&kPoint, length, bytes(text), &decimals[0]);
    _Dmr_numval_c_decfloat16(&named, length, bytes(text), 3, bytes(currency), &decimals[1]);
    for (ZvkDecimal128 value : decimals) EXPECT_TRUE(value == strtod128("1234567890123456789012345678.25", nullptr));
    int here;
    EXPECT_EQ(_Dmr_numval_decpacked3232(&kPoint, 1, bytes("x"), &here), &here);
    EXPECT_EQ(_Dmr_numval_deczoned6332(&kPoint, 1, bytes("x"), &here), &here);
    EXPECT_EQ(_Dmr_numval_c_decpacked3232(&kPoint, 1, bytes("x"), 0, nullptr, &here), &here);
    EXPECT_EQ(_Dmr_numval_c_deczoned6332(&kPoint, 1, bytes("x"), 0, nullptr, &here), &here);
}

TEST(Numval, ReadsNationalText)
{
    std::string text = national(" -12.5 "), money = national("EUR 1,234.50"), euro = national("EUR");
    ZvkNumvalParameters named = {0, '.', ZVK_CURRENCY_STRING};
    double value = 0;
    ZvkFloat128 quad = 0;
    _zvkuNumval(&kPoint, static_cast<int64_t>(text.size()), bytes(text), &value);
    EXPECT_EQ(value, -12.5);
    _zvkuNumval16(&kPoint, static_cast<int64_t>(text.size()), bytes(text), &quad);
    EXPECT_EQ(static_cast<double>(quad), -12.5);
    _zvkuNumvalC(&named, static_cast<int64_t>(money.size()), bytes(money), 6, bytes(euro), &value);
    EXPECT_EQ(value, 1234.5);
    _zvkuNumvalC16(&named, static_cast<int64_t>(money.size()), bytes(money), 6, bytes(euro), &quad);
    EXPECT_EQ(static_cast<double>(quad), 1234.5);
    std::string odd = national("12") + "3"; // half a character
    _zvkuNumval(&kPoint, 5, bytes(odd), &value);
    EXPECT_EQ(value, 12);
    std::string bad = national("12x4");
    EXPECT_EQ(messagesOf([&] { _zvkuNumval(&kPoint, 8, bytes(bad), &value); }), Messages{"152 120 3 NUMVAL"});
}

// All prefixes of texts of the grammar, as the scan allows a text to end anywhere.
const char *const kNumvalPrefix =
    R"( *([+-] *([0-9]*(\.[0-9]*)? *)|([0-9]+(\.[0-9]*)?|\.[0-9]*) *([+-] *|C(R *)?|D(B *)?)?)?)";
// With "$" as currency sign: after it, signs are trailing ones, even before a digit.
const char *const kNumvalCPrefix =
    R"( *([+-] *(\$ *)?(([0-9](,?[0-9])*(,|(\.[0-9]*)? *)|\.[0-9]* *))?)"
    R"(|([0-9](,?[0-9])*(,|(\.[0-9]*)? *([+-] *|C(R *)?|D(B *)?)?)|\.[0-9]* *([+-] *|C(R *)?|D(B *)?)?))"
    R"(|\$ *(([0-9](,?[0-9])*(,|(\.[0-9]*)? *([+-] *|C(R *)?|D(B *)?)?)|\.[0-9]* *([+-] *|C(R *)?|D(B *)?)?))"
    R"(|[+-] *|C(R *)?|D(B *)?)?)?)";

// What the bytes up to an error come to, by the C library.
double plainValue(const std::string &text)
{
    std::string clean;
    bool minus = false, digit = false;
    for (char c : text) {
        if (isdigit(c) || c == '.') clean += c;
        minus |= c == '-' || c == 'R' || c == 'B';
        digit |= isdigit(c) != 0;
    }
    return digit ? strtod(((minus ? "-" : "") + clean).c_str(), nullptr) : 0;
}

TEST(Numval, ReportsTheFirstCharacterThatDoesNotFitAndNoOther)
{
    std::mt19937 random(1);
    const std::string letters = "  +-001234...CRDB,$x";
    std::vector<std::string> texts;
    for (int i = 0; i < 3000; i++) {
        std::string text;
        for (unsigned n = random() % 9; n > 0; n--) text += letters[random() % letters.size()];
        texts.push_back(text);
    }
    for (bool currency : {false, true}) {
        Messages wanted;
        std::string wantedValues;
        const std::string name = currency ? "NUMVAL-C" : "NUMVAL";
        for (const std::string &text : texts) {
            size_t length = longestBeginning(text, currency ? kNumvalCPrefix : kNumvalPrefix);
            if (length < text.size())
                wanted.push_back("152 " + std::to_string(static_cast<int>(text[length])) + " " +
                                 std::to_string(length + 1) + " " + name);
            std::string good = text.substr(0, length);
            if (good.find_first_of("0123456789") == std::string::npos) wanted.push_back("97 " + name);
            char value[40];
            snprintf(value, sizeof value, "%.17g\n", plainValue(good) + 0.0);
            wantedValues += value;
        }
        TerseRun run = terse([&] {
            for (const std::string &text : texts) printf("%.17g\n", (currency ? numvalC(text) : numval(text)) + 0.0);
        });
        EXPECT_EQ(run.status, 0);
        ASSERT_EQ(run.messages.size(), wanted.size());
        for (size_t i = 0; i < wanted.size(); i++) ASSERT_EQ(run.messages[i], wanted[i]);
        EXPECT_EQ(run.out, wantedValues);
    }
}

TEST(Numval, ReportsEmptyTextsLongOnesAndBadCurrencies)
{
    EXPECT_EQ(messagesOf([] { numval(""); }), Messages{"97 NUMVAL"});
    double value = 7;
    EXPECT_EQ(messagesOf([&] { _Dmr_numval(&kPoint, -1, bytes("1"), &value); }), Messages{"97 NUMVAL"});
    EXPECT_EQ(messagesOf([] { numval("-12.5-"); }), Messages{"152 45 6 NUMVAL"});
    EXPECT_EQ(messagesOf([] { numval("12 cr"); }), Messages{"152 99 4 NUMVAL"});
    EXPECT_EQ(messagesOf([] { numvalC("1,234.50 EUR", "EUR"); }), Messages{"152 69 10 NUMVAL-C"});
    EXPECT_EQ(messagesOf([] { numvalC("EU", "EUR"); }), (Messages{"152 69 1 NUMVAL-C", "97 NUMVAL-C"}));
    // 63 digits are taken; each byte after them is one too many while no more are counted.
    EXPECT_EQ(messagesOf([] { numval(std::string(63, '1')); }), Messages{});
    EXPECT_EQ(messagesOf([] { numval(std::string(63, '1') + "2 "); }), (Messages{"151 NUMVAL", "151 NUMVAL"}));

    const struct {
        const char *currency, *message;
    } rows[] = {{" E", "155 32 1 NUMVAL-C"},  {"E1", "155 49 2 NUMVAL-C"}, {"A+", "155 43 2 NUMVAL-C"},
                {"A.B", "155 46 2 NUMVAL-C"}, {"A,", "155 44 2 NUMVAL-C"}, {"EUR  ", "155 32 4 NUMVAL-C"}};
    for (auto &row : rows) EXPECT_EQ(messagesOf([&] { numvalC("1", row.currency); }), Messages{row.message});
    EXPECT_EQ(messagesOf([] { numvalC("1", "E UR"); }), Messages{});
}

TEST(Numval, IsTheNearestNumber)
{
    std::mt19937_64 random(2);
    for (int i = 0; i < 20000; i++) {
        std::string text;
        for (size_t n = random() % 40 + 1; n > 0; n--) text += static_cast<char>('0' + random() % 10);
        text.insert(random() % (text.size() + 1), ".");
        if (text.size() > 63) text.resize(63);
        if (random() % 2) text = "-" + text;
        ASSERT_EQ(numval(text), strtod(text.c_str(), nullptr)) << text;
        ZvkFloat128 quad = 0;
        _zvkcNumval16(&kPoint, static_cast<int64_t>(text.size()), bytes(text), &quad);
        ASSERT_TRUE(quad == strtoflt128(text.c_str(), nullptr)) << text;
        ZvkDecimal128 decimal = 0;
        _Dmr_numval_decfloat16(&kPoint, static_cast<int64_t>(text.size()), bytes(text), &decimal);
        // That parser cuts what is longer than the format.
        if (text.find_first_of("123456789") == std::string::npos || text.size() <= 35) {
            ASSERT_TRUE(decimal == strtod128(text.c_str(), nullptr)) << text;
        } else {
            auto difference = static_cast<ZvkFloat128>(decimal) / strtoflt128(text.c_str(), nullptr) - 1;
            ASSERT_TRUE(fabsq(difference) < 1e-33Q) << text;
        }
    }
}

TEST(Numval, RoundsLongTextsToDecimalFormatsOnce)
{
    const struct {
        const char *text, *wanted;
    } rows[] = {
        {"1234567890123456789012345678901234500000000001", "1234567890123456789012345678901235E12"},
        {"1234567890123456789012345678901234500000000000", "1234567890123456789012345678901234E12"}, // tie to even
        {"1234567890123456789012345678901235.50000000000", "1234567890123456789012345678901236"},
        {"0.00000000000000000000000001234567890123456789012345678901234567", "1234567890123456789012345678901235E-59"},
        {"99999999999999999999999999999999999.9", "1E35"},
    };
    for (auto &row : rows) {
        ZvkDecimal128 decimal = 0;
        _Dmr_numval_decfloat16(&kPoint, static_cast<int64_t>(strlen(row.text)), bytes(row.text), &decimal);
        EXPECT_TRUE(decimal == strtod128(row.wanted, nullptr)) << row.text;
    }
}

TEST(Numval, UsesTheLocalesRadix)
{
    // A locale whose radix is a comma, if the system has one; the short way does not ask for it.
    std::string text(40, '1');
    text[20] = '.';
    double wanted = strtod(text.c_str(), nullptr);
    for (const char *name : {"de_DE.UTF-8", "de_DE", "fr_FR.UTF-8", "C"}) {
        if (!setlocale(LC_NUMERIC, name)) continue;
        EXPECT_EQ(numval(text), wanted) << name;
        setlocale(LC_NUMERIC, "C");
    }
}

TEST(Numval, StaysInsideItsArgumentAndIsLinear)
{
    GuardedItem item(65536);
    for (size_t length : {size_t{0}, size_t{1}, size_t{7}, size_t{65536}})
        for (auto side : {GuardedItem::AtStart, GuardedItem::AtEnd}) {
            uint8_t *at = item.place(length, side);
            memset(at, ' ', length);
            if (length) at[length - 1] = '7';
            double value = 0;
            if (length) {
                _zvkcNumval(&kPoint, static_cast<int64_t>(length), at, &value);
                EXPECT_EQ(value, 7);
                ZvkNumvalParameters named = {0, '.', ZVK_CURRENCY_STRING};
                at[length - 1] = 'E'; // a currency string that is longer than what is left
                EXPECT_EQ(messagesOf([&] {
                              _zvkcNumvalC(&named, static_cast<int64_t>(length), at, 5, bytes("EUROS"), &value);
                          }).size(),
                          2u);
            }
        }
    uint8_t *at = item.place(65536, GuardedItem::AtEnd);
    memset(at, ' ', 65536);
    at[65535] = '7';
    clock_t start = clock();
    double value = 0;
    for (int i = 0; i < 100; i++) _zvkcNumval(&kPoint, 65536, at, &value);
    EXPECT_LT(clock() - start, 2 * CLOCKS_PER_SEC); // 6.5 million bytes
    memset(at, '5', 65536);
    EXPECT_EQ(messagesOf([&] { _zvkcNumval(&kPoint, 1000, at, &value); }).size(), 1000u - 63);
}

TEST(Numval, TakesAnyBytes)
{
    TerseRun run = terse([] {
        std::mt19937 random(3);
        freopen("/dev/null", "w", stderr);
        for (int i = 0; i < 3000; i++) {
            std::string text(random() % 20, ' '), currency(random() % 4, ' ');
            for (char &c : text) c = static_cast<char>(random());
            for (char &c : currency) c = static_cast<char>(random());
            ZvkNumvalParameters any = {static_cast<uint8_t>(random()), static_cast<uint8_t>(random()),
                                       static_cast<uint16_t>(random() % 4)};
            alignas(16) uint8_t out[17];
            _zvkcNumval(&any, static_cast<int64_t>(text.size()), bytes(text),
                        reinterpret_cast<ZvkFloat64Item *>(out + 1));
            _zvkcNumvalC16(&any, static_cast<int64_t>(text.size()), bytes(text), static_cast<int64_t>(currency.size()),
                           bytes(currency), reinterpret_cast<ZvkFloat128Item *>(out + 1));
            _zvkuNumvalC(&any, static_cast<int64_t>(text.size()), bytes(text), static_cast<int64_t>(currency.size()),
                         bytes(currency), reinterpret_cast<ZvkFloat64Item *>(out + 1));
        }
    });
    EXPECT_EQ(run.status, 0);
}

} // namespace
