// See constants.h.
#include "cobol/meaning/constants.h"

#include <cctype>
#include <cstdlib>
#include <cstring>

namespace kvrcob {

Decimal decimalOf(std::string_view text, bool negative)
{
    Decimal d;
    d.negative = negative;
    bool point = false;
    size_t i = 0;
    for (; i < text.size(); i++) {
        char c = text[i];
        if (c == '.' || c == ',') {
            point = true;
        } else if (std::isdigit(static_cast<unsigned char>(c))) {
            d.digits += c;
            if (point) d.scale++;
        } else {
            break;
        }
    }
    if (i < text.size() && (text[i] == 'E' || text[i] == 'e')) {
        d.isFloating = true;
        d.exponent = std::atoi(std::string(text.substr(i + 1)).c_str());
    }
    size_t zeros = d.digits.find_first_not_of('0');
    d.digits = zeros == std::string::npos ? "0" : d.digits.substr(zeros);
    if (d.isZero()) d.negative = false;
    return d;
}

double Decimal::value() const
{
    std::string text = (negative ? "-" : "") + digits + "e" + std::to_string(exponent - scale);
    return std::strtod(text.c_str(), nullptr);
}

bool decimalOf(const Expr *e, Decimal &out)
{
    if (!e) return false;
    if (e->kind == ExprKind::Number) {
        out = decimalOf(e->text, false);
        return true;
    }
    if (e->kind == ExprKind::Negate && e->left && e->left->kind == ExprKind::Number) {
        out = decimalOf(e->left->text, true);
        return true;
    }
    if (e->kind == ExprKind::Figurative && e->op == K_ZERO) {
        out = Decimal{};
        out.digits = "0";
        return true;
    }
    return false;
}

std::string digitsAtScale(const Decimal &value, int scale)
{
    std::string digits = value.digits;
    int shift = scale - value.scale + value.exponent;
    if (shift >= 0)
        digits.append(static_cast<size_t>(shift), '0');
    else if (static_cast<size_t>(-shift) >= digits.size())
        digits = "0";
    else
        digits.resize(digits.size() - static_cast<size_t>(-shift));
    size_t zeros = digits.find_first_not_of('0');
    return zeros == std::string::npos ? "0" : digits.substr(zeros);
}

static std::string fitted(const std::string &digits, size_t count)
{
    return digits.size() >= count ? digits.substr(digits.size() - count)
                                  : std::string(count - digits.size(), '0') + digits;
}

std::string packedBytes(const std::string &digits, bool negative, int count, bool isSigned)
{
    std::string text = fitted(digits, static_cast<size_t>(count));
    if (text.find_first_not_of('0') == std::string::npos) negative = false;
    if (count % 2 == 0) text = "0" + text;
    std::string out;
    for (size_t i = 0; i + 1 < text.size(); i += 2)
        out += static_cast<char>((text[i] - '0') << 4 | (text[i + 1] - '0'));
    out += static_cast<char>((text.back() - '0') << 4 | (isSigned ? (negative ? 0xD : 0xC) : 0xF));
    return out;
}

std::string numericBytes(const Item &item, const Decimal &value)
{
    std::string digits = digitsAtScale(value, item.picture.scale);
    bool negative = value.negative && digits != "0";
    switch (item.usage) {
    case Usage::Float: {
        float f = static_cast<float>(value.value());
        return std::string(reinterpret_cast<const char *>(&f), 4);
    }
    case Usage::Double: {
        double f = value.value();
        return std::string(reinterpret_cast<const char *>(&f), 8);
    }
    case Usage::Packed:
        return packedBytes(digits, negative && item.picture.sign, item.picture.digits, item.picture.sign);
    case Usage::Comp6: { // the digits of a packed number, without its sign
        const std::string text = "0" + fitted(digits, static_cast<size_t>(item.picture.digits));
        std::string bytes;
        for (size_t i = text.size() - 2 * item.size; i + 1 < text.size(); i += 2)
            bytes += static_cast<char>((text[i] - '0') << 4 | (text[i + 1] - '0'));
        return bytes;
    }
    case Usage::Binary:
    case Usage::Native:
    case Usage::CompX:
    case Usage::Index:
    case Usage::Pointer:
    case Usage::ProcedurePointer: {
        uint64_t number = 0;
        for (char c : fitted(digits, 20)) number = number * 10 + static_cast<uint64_t>(c - '0');
        if (negative) number = 0 - number;
        if (item.usage == Usage::CompX) {
            std::string bytes;
            for (uint32_t i = item.size; i-- > 0;) bytes += static_cast<char>(number >> (8 * i));
            return bytes;
        }
        return std::string(reinterpret_cast<const char *>(&number), item.size < 8 ? item.size : 8);
    }
    default:
        break;
    }
    std::string text = fitted(digits, static_cast<size_t>(item.picture.digits));
    if (text.find_first_not_of('0') == std::string::npos) negative = false;
    switch (item.signForm) {
    case SignForm::None:
        return text;
    case SignForm::Trailing:
        if (negative) text.back() = static_cast<char>(text.back() + 0x40);
        return text;
    case SignForm::Leading:
        if (negative) text.front() = static_cast<char>(text.front() + 0x40);
        return text;
    case SignForm::TrailingSeparate:
        return text + (negative ? "-" : "+");
    case SignForm::LeadingSeparate:
        return (negative ? "-" : "+") + text;
    }
    return text;
}

} // namespace kvrcob
