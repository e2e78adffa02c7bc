// See picture.h.
//
// The string is expanded first ("9(3)V99" to "999V99"), with "." as decimal point and "," as
// separator whatever DECIMAL-POINT says, which is how the library wants it. Then the symbols are
// counted.
#include "cobol/meaning/picture.h"

#include <cctype>
#include <cstring>

namespace kvrcob {

namespace {

constexpr const char *kTooLong = "this picture is too long";

struct Expanded {
    std::string text;
    uint64_t plain = 0; // repeated symbols that are not worth storing
};

// "(3)" after a symbol; `i` is the symbol's place, and then the last one that belongs to it.
std::string repetition(std::string_view text, size_t &i, uint64_t &count)
{
    count = 1;
    if (i + 1 >= text.size() || text[i + 1] != '(') return "";
    size_t close = text.find(')', i + 1);
    if (close == std::string_view::npos || close == i + 2) return "a repetition in this picture has no closing \")\"";
    count = 0;
    for (size_t j = i + 2; j < close; j++) {
        if (!std::isdigit(static_cast<unsigned char>(text[j]))) return "a repetition in a picture is a number";
        count = count * 10 + static_cast<uint64_t>(text[j] - '0');
        if (count > 0x40000000) return kTooLong;
    }
    i = close;
    return count == 0 ? "a repetition in a picture is at least 1" : "";
}

std::string expand(std::string_view text, char currency, bool commaIsPoint, Expanded &out)
{
    for (size_t i = 0; i < text.size(); i++) {
        char c = text[i];
        if (c != currency) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        std::string symbol(1, c);
        if ((c == 'C' || c == 'D') && c != currency && i + 1 < text.size() &&
            std::toupper(static_cast<unsigned char>(text[i + 1])) == (c == 'C' ? 'R' : 'B')) {
            symbol = c == 'C' ? "CR" : "DB";
            i++;
        } else if (c == currency) {
            symbol = "$";
        } else if (!std::strchr("9XAVSPZ*+-.,/0BN", c)) {
            if (c == 'E') return "external floating-point pictures are not supported yet";
            return std::string("\"") + text[i] + "\" is no symbol of a picture";
        } else if (c == '.' || c == ',') {
            symbol = (c == '.') == !commaIsPoint ? "." : ",";
        }
        uint64_t count;
        if (std::string error = repetition(text, i, count); !error.empty()) return error;
        if (count > 1000) {
            if (symbol != "X" && symbol != "A" && symbol != "9") return kTooLong;
            out.plain += count - 1;
            count = 1;
        }
        while (count--) out.text += symbol;
        if (out.text.size() > 5000) return kTooLong;
    }
    return out.text.empty() ? "the picture is empty" : "";
}

// How often each symbol is there; CR and DB count as "C" and "D".
class Symbols {
public:
    explicit Symbols(const std::string &expanded)
    {
        for (size_t i = 0; i < expanded.size(); i++) {
            counts_[static_cast<unsigned char>(expanded[i])]++;
            if (expanded[i] == 'C' || expanded[i] == 'D') i++;
        }
    }
    // Of all symbols in a list.
    size_t operator()(const char *symbols) const
    {
        size_t count = 0;
        for (; *symbols; symbols++) count += counts_[static_cast<unsigned char>(*symbols)];
        return count;
    }

private:
    size_t counts_[256] = {};
};

// Blanks for the Bs of a picture, but not for that of DB.
void writeBlanks(std::string &expanded)
{
    for (size_t i = 0; i < expanded.size(); i++)
        if (expanded[i] == 'B' && (i == 0 || expanded[i - 1] != 'D')) expanded[i] = ' ';
}

std::string readTextPicture(const Expanded &expanded, const Symbols &count, Picture &out)
{
    if (count("Z*+-$,.CDVSP")) return "this picture mixes symbols of different categories";
    out.positions = static_cast<uint32_t>(expanded.text.size() + expanded.plain);
    out.category = count("B0/")  ? Category::AlphanumericEdited
                   : count("X9") ? Category::Alphanumeric
                                 : Category::Alphabetic;
    writeBlanks(out.expanded);
    return "";
}

std::string readNumericPicture(const Expanded &expanded, const Symbols &count, Picture &out)
{
    if (count("9") == 0) return "this picture has no character position";
    out.category = Category::Numeric;
    out.sign = count("S") != 0;
    out.digits = static_cast<int>(count("9") + expanded.plain);
    out.positions = static_cast<uint32_t>(out.digits);
    return "";
}

std::string readEditedPicture(const Expanded &expanded, const Symbols &count, Picture &out)
{
    if (count("S")) return "S does not go with editing";
    if (count("Z") && count("*")) return "Z and * do not go together";
    if ((count("+") && count("-")) || (count("+-") && count("CD")) || count("CD") > 1)
        return "a picture has at most one kind of sign";
    out.category = Category::NumericEdited;
    // A floating string gives one digit less than it has symbols.
    size_t floats = count("+-") > 1 ? count("+-") - 1 : 0;
    if (count("$") > 1) floats += count("$") - 1;
    out.digits = static_cast<int>(count("9Z*") + floats + expanded.plain);
    if (out.digits == 0) return "this picture has no digit position";
    out.sign = count("+-CD") != 0;
    out.positions = static_cast<uint32_t>(expanded.text.size() + expanded.plain - count("VP"));
    writeBlanks(out.expanded);
    return "";
}

// Decimal places: digit positions after the point, and P where the point is beyond the digits.
std::string readScale(const std::string &expanded, const Symbols &count, Picture &out)
{
    size_t point = expanded.find_first_of("V.");
    if (size_t firstP = expanded.find('P'); firstP != std::string::npos) {
        // P on the left of the digits: the point is before them; on the right: after them.
        int places = static_cast<int>(count("P"));
        out.scale = firstP < expanded.find_first_of("9Z*") ? out.digits + places : -places;
        return count(".") ? "P and a decimal point do not go together" : "";
    }
    if (point == std::string::npos) return "";
    // Fixed signs are no digit positions. The first symbol of a floating string is none either; it
    // is before the point, unless nothing else is.
    bool edited = out.category == Category::NumericEdited;
    std::string positions = "9Z*";
    if (!edited || count("+-") > 1) positions += "+-";
    if (!edited || count("$") > 1) positions += "$";
    int after = 0;
    for (size_t i = point + 1; i < expanded.size(); i++) after += positions.find(expanded[i]) != std::string::npos;
    out.scale = edited && after > out.digits ? out.digits : after;
    return "";
}

} // namespace

std::string readPicture(std::string_view text, char currency, bool commaIsPoint, Picture &out)
{
    out = Picture{};
    out.currency = currency;
    Expanded expanded;
    if (std::string error = expand(text, currency, commaIsPoint, expanded); !error.empty()) return error;
    Symbols count(expanded.text);
    if (count("V.") > 1) return "a picture has at most one decimal point";
    if (count("S") > 1 || (count("S") && expanded.text[0] != 'S')) return "S is the first symbol of a picture";
    if (count("N")) return "national items (PICTURE N) are not supported yet";
    out.expanded = expanded.text;

    if (count("XA")) return readTextPicture(expanded, count, out);
    bool edited = count("Z*+-$,.CDB0/") != 0;
    std::string error = edited ? readEditedPicture(expanded, count, out) : readNumericPicture(expanded, count, out);
    return error.empty() ? readScale(expanded.text, count, out) : error;
}

int editClass(const Picture &picture)
{
    size_t plus = 0, minus = 0, currency = 0;
    bool crdb = false;
    for (char c : picture.expanded) {
        if (c == '+') plus++;
        if (c == '-') minus++;
        if (c == '$') currency++;
        if (c == 'C' || c == 'D') crdb = true;
    }
    bool credit = picture.expanded.find("CR") != std::string::npos;
    if (currency > 1) {
        if (minus) return 11;
        if (plus || crdb) return 10;
        return 12;
    }
    if (plus > 1) return 6;
    if (minus > 1) return 7;
    if (plus) return 2;
    if (minus) return 3;
    if (crdb) return credit ? 4 : 5;
    return 0;
}

} // namespace kvrcob
