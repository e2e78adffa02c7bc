// See picture.h.
//
// The string is expanded first ("9(3)V99" to "999V99"), with "." as decimal point and "," as
// separator whatever DECIMAL-POINT says, which is how the library wants it. Then the symbols are
// counted.
#include "cobol/meaning/picture.h"

#include <cctype>
#include <cstring>

namespace kvrcob {

std::string readPicture(std::string_view text, char currency, bool commaIsPoint, Picture &out)
{
    out = Picture{};
    out.currency = currency;
    std::string expanded;
    uint64_t plain = 0; // repeated symbols that are not worth storing
    bool simple = true; // only X, A and 9 so far
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
        uint64_t count = 1;
        if (i + 1 < text.size() && text[i + 1] == '(') {
            size_t close = text.find(')', i + 1);
            if (close == std::string_view::npos || close == i + 2)
                return "a repetition in this picture has no closing \")\"";
            count = 0;
            for (size_t j = i + 2; j < close; j++) {
                if (!std::isdigit(static_cast<unsigned char>(text[j]))) return "a repetition in a picture is a number";
                count = count * 10 + static_cast<uint64_t>(text[j] - '0');
                if (count > 0x40000000) return "this picture is too long";
            }
            if (count == 0) return "a repetition in a picture is at least 1";
            i = close;
        }
        if (count > 1000) {
            if (symbol != "X" && symbol != "A" && symbol != "9") return "this picture is too long";
            plain += count - 1;
            count = 1;
        }
        if (symbol != "X" && symbol != "A" && symbol != "9") simple = false;
        while (count--) expanded += symbol;
        if (expanded.size() > 5000) return "this picture is too long";
    }
    if (expanded.empty()) return "the picture is empty";
    (void)simple;

    size_t n9 = 0, nX = 0, nA = 0, nN = 0, nZ = 0, nStar = 0, nPlus = 0, nMinus = 0, nCurrency = 0, nInsert = 0,
           nComma = 0, nV = 0, nPoint = 0, nS = 0, nP = 0, nCrDb = 0;
    for (size_t i = 0; i < expanded.size(); i++) {
        switch (expanded[i]) {
        case '9':
            n9++;
            break;
        case 'X':
            nX++;
            break;
        case 'A':
            nA++;
            break;
        case 'N':
            nN++;
            break;
        case 'Z':
            nZ++;
            break;
        case '*':
            nStar++;
            break;
        case '+':
            nPlus++;
            break;
        case '-':
            nMinus++;
            break;
        case '$':
            nCurrency++;
            break;
        case 'B':
        case '0':
        case '/':
            nInsert++;
            break;
        case ',':
            nComma++;
            break;
        case 'V':
            nV++;
            break;
        case '.':
            nPoint++;
            break;
        case 'S':
            nS++;
            break;
        case 'P':
            nP++;
            break;
        case 'C':
        case 'D':
            nCrDb++, i++;
            break;
        }
    }
    if (nV + nPoint > 1) return "a picture has at most one decimal point";
    if (nS > 1 || (nS == 1 && expanded[0] != 'S')) return "S is the first symbol of a picture";
    if (nN) return "national items (PICTURE N) are not supported yet";
    out.expanded = expanded;

    bool edits = nZ || nStar || nPlus || nMinus || nCurrency || nComma || nPoint || nCrDb;
    if (nX || nA) {
        if (edits || nV || nS || nP) return "this picture mixes symbols of different categories";
        out.positions = static_cast<uint32_t>(expanded.size() + plain);
        out.category = nInsert    ? Category::AlphanumericEdited
                       : nX || n9 ? Category::Alphanumeric
                                  : Category::Alphabetic;
        if (nInsert)
            for (char &c : out.expanded)
                if (c == 'B') c = ' ';
        return "";
    }
    if (!edits && !nInsert) {
        if (n9 == 0) return "this picture has no character position";
        out.category = Category::Numeric;
        out.sign = nS != 0;
        out.digits = static_cast<int>(n9 + plain);
        out.positions = static_cast<uint32_t>(out.digits);
    } else {
        if (nS) return "S does not go with editing";
        if ((nZ && nStar) || nPlus + nMinus + nCrDb > 0) {
            if (nZ && nStar) return "Z and * do not go together";
            if ((nPlus && nMinus) || ((nPlus || nMinus) && nCrDb) || nCrDb > 1)
                return "a picture has at most one kind of sign";
        }
        out.category = Category::NumericEdited;
        size_t floats = nPlus + nMinus > 1 ? nPlus + nMinus - 1 : 0;
        if (nCurrency > 1) floats += nCurrency - 1;
        out.digits = static_cast<int>(n9 + nZ + nStar + floats + plain);
        if (out.digits == 0) return "this picture has no digit position";
        out.sign = nPlus || nMinus || nCrDb;
        out.positions = static_cast<uint32_t>(expanded.size() + plain - nV - nP);
        for (char &c : out.expanded)
            if (c == 'B' && &c != &out.expanded[0] && *(&c - 1) == 'D') {
                // DB keeps its letters
            } else if (c == 'B') {
                c = ' ';
            }
    }
    // Decimal places: digit positions after the point, and P where the point is beyond the digits.
    size_t point = expanded.find_first_of("V.");
    auto digitPositions = [&](size_t from, size_t to) {
        int count = 0;
        for (size_t i = from; i < to; i++)
            if (std::strchr("9Z*+-$", expanded[i])) count++;
        return count;
    };
    size_t firstP = expanded.find('P');
    if (firstP != std::string::npos) {
        // P on the left of the digits: the point is before them; on the right: after them.
        size_t firstDigit = expanded.find_first_of("9Z*");
        if (firstP < firstDigit)
            out.scale = out.digits + static_cast<int>(nP);
        else
            out.scale = -static_cast<int>(nP);
        if (point != std::string::npos && expanded[point] == '.') return "P and a decimal point do not go together";
    } else if (point != std::string::npos) {
        // A floating string gives one digit less than it has symbols, and its first symbol is
        // before the point, unless nothing else is.
        int after = digitPositions(point + 1, expanded.size());
        if (out.category == Category::NumericEdited) {
            // Fixed signs are no digit positions.
            if (nPlus + nMinus == 1)
                for (size_t i = point + 1; i < expanded.size(); i++)
                    if (expanded[i] == '+' || expanded[i] == '-') after--;
            if (nCurrency == 1)
                for (size_t i = point + 1; i < expanded.size(); i++)
                    if (expanded[i] == '$') after--;
            if (after > out.digits) after = out.digits;
        }
        out.scale = after;
    }
    return "";
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
