// Catches: a suppressed, floated or inserted character that is wrong for any class of picture, with
// point or comma, BLANK WHEN ZERO and the all-zero rule; a digit taken twice or skipped; digits or
// a sign that do not survive edit and de-edit; a byte stored outside the destination for any
// picture at all.
//
// The reference does not walk with states as the library does: it finds the one place where
// suppression ends and writes down what stands before and after it.
#include <cstring>
#include <random>
#include <string>

#include "kvr2/edited_moves.h"
#include "support/guarded.h"

namespace {

struct Picture {
    std::string text;
    int editClass = 0;
    bool blankWhenZero = false, commaPoint = false;
    char currency = '$';
    std::string floating; // the floating character, or empty

    bool isDigitPosition(size_t i) const
    {
        if (text[i] == '9' || text[i] == 'Z' || text[i] == '*') return true;
        return !floating.empty() && text[i] == floating[0] && text.find(floating[0]) < i;
    }
    int digits() const
    {
        int count = 0;
        for (size_t i = 0; i < text.size(); i++) count += isDigitPosition(i);
        return count;
    }
    bool allSuppress() const { return text.find('9') == std::string::npos; }
};

// The edited item by the rules of the language.
std::string referenceEdit(const Picture &picture, const std::string &number)
{
    const std::string &text = picture.text;
    const bool negative = number[0] == '-';
    const std::string showPlus = negative ? "-" : "+", showMinus = negative ? "-" : " ";
    const std::string signs[] = {" ",       " ",      showPlus,  showMinus, showPlus,  showPlus, showPlus,
                                 showMinus, showPlus, showMinus, showPlus,  showMinus, " "};
    const char sign = signs[picture.editClass][0];
    const char point = picture.commaPoint ? ',' : '.', separator = picture.commaPoint ? '.' : ',';
    const bool isZero = number.find_first_of("123456789") == std::string::npos;
    const bool signFloats = picture.floating == "+" || picture.floating == "-";

    // Where suppression ends: the point, the first "9", or the first digit that counts.
    size_t shown = text.size(), next = 1;
    std::string digitAt(text.size(), 0);
    for (size_t i = 0; i < text.size(); i++) {
        if (picture.isDigitPosition(i)) digitAt[i] = number[next++];
        bool ends = text[i] == '.' || text[i] == 'V' || text[i] == '9' || (digitAt[i] && digitAt[i] != '0');
        if (ends && shown == text.size()) shown = i;
    }
    const size_t stringStart = text.find_first_of(picture.floating.empty() ? "Z*" : picture.floating);
    const char fill = text.find('*') != std::string::npos ? '*' : ' ';

    std::string out;
    for (size_t i = 0; i < text.size(); i++) {
        if (i == shown && !picture.floating.empty()) out.back() = signFloats ? sign : picture.currency;
        char c = text[i];
        bool suppressed = i < shown && i >= stringStart;
        if (c == 'V' || c == 'P') continue;
        if (c == 'C' || c == 'D') {
            out += negative && signs[picture.editClass] != " " ? text.substr(i, 2) : "  ";
            i++;
        } else if (digitAt[i]) {
            out += suppressed ? fill : digitAt[i];
        } else if (!picture.floating.empty() && c == picture.floating[0]) {
            out += ' ';
        } else if (c == '+' || c == '-') {
            out += sign;
        } else if (c == '$') {
            out += picture.currency;
        } else if (suppressed) {
            out += fill;
        } else {
            out += c == '.' ? point : c == ',' ? separator : c;
        }
    }
    if (isZero && picture.blankWhenZero) return std::string(out.size(), ' ');
    if (isZero && picture.allSuppress()) {
        if (fill == ' ' || picture.editClass >= 8) return std::string(out.size(), ' ');
        for (char &c : out)
            if (c != point) c = '*';
    }
    return out;
}

class Generator {
public:
    explicit Generator(unsigned seed) : random_(seed) {}

    Picture picture(int editClass)
    {
        Picture result;
        result.editClass = editClass;
        result.commaPoint = chance(3);
        result.blankWhenZero = editClass != 0 && chance(3);
        result.currency = chance(4) ? 'E' : '$';
        const char *floatings[] = {"", "", "", "", "", "", "+", "-", "+", "-", "$", "$", "$"};
        result.floating = floatings[editClass];

        std::string body;
        char suppress = result.floating.empty() ? "9Z*"[below(3)] : result.floating[0];
        if (suppress != '9' && chance(4)) body += "/ "[below(2)]; // an insertion before the string
        for (int i = 0, n = 2 + below(8); i < n; i++) {
            body += suppress;
            if (i + 1 < n && chance(4)) body += insertion();
        }
        bool toTheEnd = suppress != '9' && chance(2);
        if (suppress != '9' && !toTheEnd) {
            if (chance(4)) body += ',';
            body += nines();
        }
        if (chance(2)) {
            body += chance(3) ? 'V' : '.';
            for (int i = 0, n = 1 + below(4); i < n; i++) {
                body += toTheEnd ? suppress : '9';
                if (i + 1 < n && chance(6)) body += "/0 "[below(3)];
            }
        }
        if (chance(8)) body += "PP";

        if (result.floating != "$" && chance(4) && !(suppress == '+' || suppress == '-')) body = "$" + body;
        std::string sign = editClass == 2 || editClass == 10 ? "+" : editClass == 3 || editClass == 11 ? "-" : "";
        if (editClass == 10 && chance(3)) sign = "CR";
        if (editClass == 4) sign = "CR";
        if (editClass == 5) sign = "DB";
        bool leading = sign.size() == 1 && chance(2);
        result.text = leading ? sign + body : body + sign;
        return result;
    }

    std::string number(int digits)
    {
        std::string text(1, "+-"[below(2)]);
        int zeros = chance(8) ? digits : below(digits + 1);
        for (int i = 0; i < digits; i++) text += static_cast<char>(i < zeros ? '0' : '0' + below(10));
        return text;
    }

    bool chance(int oneIn) { return below(oneIn) == 0; }
    int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }

private:
    char insertion() { return chance(2) ? ',' : "/0 "[below(3)]; }
    std::string nines()
    {
        std::string text;
        for (int i = 0, n = 1 + below(4); i < n; i++) {
            text += '9';
            if (i + 1 < n && chance(5)) text += insertion();
        }
        return text;
    }
    std::mt19937 random_;
};

// Storage that ends where the item ends; the pages after it are made once, since there are many
// items.
uint8_t *guarded(int which, size_t size)
{
    static GuardedItem items[] = {GuardedItem(4096), GuardedItem(4096), GuardedItem(4096), GuardedItem(4096)};
    return items[which].place(size, GuardedItem::AtEnd);
}

uint8_t *guardedCopy(int which, const std::string &text)
{
    uint8_t *item = guarded(which, text.size());
    memcpy(item, text.data(), text.size());
    return item;
}

template <class Record>
Record *guardedRecord(const std::string &picture)
{
    return reinterpret_cast<Record *>(guardedCopy(0, std::string(offsetof(Record, picture), 0) + picture));
}

std::string edit(const Picture &picture, const std::string &number, size_t size,
                 const std::string *longSymbol = nullptr)
{
    auto *record = guardedRecord<NumericEditRecord>(picture.text);
    record->length = static_cast<int16_t>(picture.allSuppress() ? -picture.text.size() : picture.text.size());
    record->decimalPoint = picture.commaPoint ? ',' : '.';
    record->currencySign = static_cast<uint8_t>(picture.currency);
    record->editClass = static_cast<uint8_t>(picture.blankWhenZero ? -picture.editClass : picture.editClass);
    uint8_t *source = guardedCopy(1, number), *out = guarded(2, size);
    memset(out, 0, size);
    if (longSymbol) {
        uint8_t *currency = guardedCopy(3, "  " + *longSymbol);
        uint16_t length = static_cast<uint16_t>(longSymbol->size());
        memcpy(currency, &length, 2);
        _zvkcMoveNumToNumEdit2(record, source, out, reinterpret_cast<CurrencyString *>(currency));
    } else {
        _zvkcMoveNumToNumEdit(record, source, out);
    }
    return {reinterpret_cast<char *>(out), size};
}

// De-edits into `number`, whose length says how much may be stored.
int deEdit(const std::string &picture, const std::string &item, std::string &number)
{
    auto *record = guardedRecord<DeEditRecord>(picture);
    record->length = static_cast<int16_t>(picture.size());
    uint8_t *out = guarded(2, number.size());
    int result = _zvkcMoveNumEditToNum(record, guardedCopy(1, item), out);
    number.assign(reinterpret_cast<char *>(out), number.size());
    return result;
}

TEST(NumericEdit, AgainstTheReferenceForEveryClass)
{
    Generator generate(20);
    for (int editClass = 0; editClass <= 12; editClass++) {
        for (int i = 0; i < 4000; i++) {
            Picture picture = generate.picture(editClass);
            std::string number = generate.number(picture.digits());
            std::string expected = referenceEdit(picture, number);
            ASSERT_EQ(edit(picture, number, expected.size()), expected)
                << picture.text << " class " << editClass << " " << number
                << (picture.blankWhenZero ? " blank when zero" : "");
        }
    }
}

TEST(NumericEdit, AndDeEditBack)
{
    Generator generate(21);
    int compared = 0;
    for (int i = 0; i < 40000; i++) {
        Picture picture = generate.picture(i % 13);
        std::string number = generate.number(picture.digits());
        std::string item = edit(picture, number, referenceEdit(picture, number).size());
        bool hasSign = picture.text.find_first_of("+-CD") != std::string::npos;
        bool blanked = item.find_first_not_of(" ") == std::string::npos;
        bool starred = item.find_first_not_of("*.,") == std::string::npos;
        if (blanked && picture.text.find('*') != std::string::npos) continue; // a blank under "*" is no zero
        std::string back(number.size(), 0);
        int result = deEdit(picture.text, item, back);
        if (starred && picture.text.find_first_of("CD") != std::string::npos) {
            ASSERT_EQ(result, 1) << picture.text << " " << item; // stars stand where CR or DB or blanks would
            continue;
        }
        std::string expected = number.substr(1) + (hasSign && !blanked && !starred ? number[0] : '+');
        ASSERT_EQ(result, 0) << picture.text << " [" << item << "]";
        ASSERT_EQ(back, expected) << picture.text << " [" << item << "]";
        compared++;
    }
    EXPECT_GT(compared, 30000);
}

TEST(NumericEdit, KnownItems)
{
    auto edited = [](const char *text, int editClass, const char *number, bool comma = false) {
        Picture picture;
        picture.text = text;
        picture.editClass = editClass;
        picture.commaPoint = comma;
        return edit(picture, number, strlen(text));
    };
    EXPECT_EQ(edited("ZZZ", 0, "+000"), "   ");
    EXPECT_EQ(edited("**.**", 0, "+0000"), "**.**");
    EXPECT_EQ(edited("**.**", 8, "+0000"), "     ");
    EXPECT_EQ(edited("$$$9.99", 12, "+00500"), "  $5.00");
    EXPECT_EQ(edited("$$,$$$,$$9.99CR", 10, "-012345678"), "  $123,456.78CR");
    EXPECT_EQ(edited("ZZ,ZZZ.99", 0, "+1234567", true), "12.345,67");
    EXPECT_EQ(edited("--9", 7, "-05"), " -5");
}

// A picture of any bytes is walked; the digits that it may take are there, and exactly its bytes
// may be stored.
TEST(NumericEdit, AnyPictureStaysInsideTheDestination)
{
    std::mt19937 random(22);
    const std::string symbols = " /,.V09Z*+-$PCRDB";
    for (int i = 0; i < 40000; i++) {
        Picture picture;
        for (unsigned n = random() % 40; n > 0; n--)
            picture.text += random() % 8 ? symbols[random() % symbols.size()] : static_cast<char>(random());
        size_t stored = 0;
        for (size_t k = 0; k < picture.text.size(); k++) stored += picture.text[k] != 'V' && picture.text[k] != 'P';
        // A pair CR or DB is two positions, whatever the second is.
        bool pairs = false;
        for (size_t k = 0; k + 1 < picture.text.size(); k++)
            if (std::string(" /,.V09Z*+-$P").find(picture.text[k]) == std::string::npos) {
                if (picture.text[k + 1] == 'V' || picture.text[k + 1] == 'P') stored++;
                pairs = true;
                k++;
            }
        std::string number = "-";
        while (number.size() < 41) number += static_cast<char>(random() % 2 ? '0' + random() % 10 : random());
        picture.editClass = static_cast<int>(random() % 256);
        picture.currency = static_cast<char>(random());
        std::string first = edit(picture, number, stored);
        ASSERT_EQ(first.size(), stored) << pairs;
        // The last byte was stored: an item that is one byte longer shows the same text before its
        // last byte.
        if (stored > 0 && random() % 4 == 0) {
            std::string longer = edit(picture, number, stored + 1);
            ASSERT_EQ(longer.substr(0, stored), first);
            ASSERT_EQ(longer.back(), '\0');
        }
    }
}

TEST(LongCurrencySymbol, TakesThePlaceOfTheSign)
{
    const std::string symbol = "EUR ";
    Picture picture;
    picture.text = "$$$9.99";
    picture.editClass = 12;
    EXPECT_EQ(edit(picture, "+00500", 10, &symbol), "  EUR 5.00");
    EXPECT_EQ(edit(picture, "+12300", 10, &symbol), "EUR 123.00");
    picture.text = "ZZ9";
    picture.editClass = 0;
    EXPECT_EQ(edit(picture, "+012", 3, &symbol), " 12");
    picture.text = std::string(300, '9');
    EXPECT_EQ(edit(picture, "+" + std::string(300, '7'), 263, &symbol), std::string(263, '7'));
}

TEST(LongCurrencySymbol, DeEdit)
{
    struct Symbol {
        uint16_t length;
        uint8_t text[6];
    } symbol{6, "EUR "}; // ends at its NUL
    auto back = [&](const std::string &picture, const std::string &item, int16_t length, std::string &number) {
        auto *record = guardedRecord<DeEditRecord>(picture);
        record->length = length;
        uint8_t *out = guarded(2, number.size());
        int result =
            _zvkcMoveNumEditToNum2(record, guardedCopy(1, item), out, reinterpret_cast<CurrencyString *>(&symbol));
        number.assign(reinterpret_cast<char *>(out), number.size());
        return result;
    };
    std::string number(7, 0);
    EXPECT_EQ(back("$$$9.99-", "  EUR 5.00-", 8, number), 0);
    EXPECT_EQ(number.substr(0, 6), "00500-");
    EXPECT_EQ(back("$$$9.99-", "       -", 8, number), 0); // no symbol: the item as it is
    EXPECT_EQ(number.substr(0, 6), "00000-");
    number.assign(1, 0);
    EXPECT_EQ(back("$$$9.99-", "  EUR 5.00-", -8, number), 0);
    EXPECT_EQ(number, "+");
    number.assign(3, 0);
    EXPECT_EQ(back("$99PPPPP", "EUR 12", 8, number), 0); // the search ends with the item, not with the picture
    EXPECT_EQ(number, "12+");
}

} // namespace
