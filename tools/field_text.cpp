#include "tools/field_text.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace file_tool {

static constexpr char kDigits[] = "0123456789ABCDEF";

std::string hexOf(std::string_view bytes)
{
    std::string text;
    for (unsigned char byte : bytes) text += kDigits[byte >> 4], text += kDigits[byte & 15];
    return text;
}

bool fromHex(const std::string &text, std::string *bytes)
{
    bytes->clear();
    if (text.size() % 2) return false;
    for (size_t i = 0; i < text.size(); i += 2) {
        if (!isxdigit(static_cast<unsigned char>(text[i])) || !isxdigit(static_cast<unsigned char>(text[i + 1])))
            return false;
        *bytes += static_cast<char>(strtoul(text.substr(i, 2).c_str(), nullptr, 16));
    }
    return true;
}

bool isText(std::string_view bytes)
{
    for (size_t i = 0; i < bytes.size();) {
        auto lead = static_cast<unsigned char>(bytes[i]);
        size_t more = lead < 0x80 ? 0 : lead >= 0xC2 && lead < 0xE0 ? 1 : lead >= 0xE0 && lead < 0xF0 ? 2 : 3;
        if (lead < 0x20 || lead == 0x7F || (lead >= 0x80 && lead < 0xC2) || lead > 0xF4) return false;
        if (bytes.size() - i <= more) return false;
        for (size_t k = 1; k <= more; ++k)
            if ((bytes[i + k] & 0xC0) != 0x80) return false;
        auto second = more ? static_cast<unsigned char>(bytes[i + 1]) : 0;
        bool tooLong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
        if (tooLong || (lead == 0xED && second > 0x9F) || (lead == 0xF4 && second > 0x8F)) return false;
        i += more + 1;
    }
    return true;
}

bool fromDecimal(const std::string &text, uint64_t most, uint64_t *value)
{
    errno = 0;
    *value = strtoull(text.c_str(), nullptr, 10);
    return !text.empty() && text.find_first_not_of("0123456789") == text.npos && !errno && *value <= most;
}

namespace {

std::string withoutBlanks(std::string_view text)
{
    while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
    return std::string(text);
}

std::string withPoint(std::string digits, uint32_t scale, bool negative)
{
    if (digits.size() <= scale) digits.insert(0, scale + 1 - digits.size(), '0');
    size_t zeros = digits.find_first_not_of('0'), most = digits.size() - scale - 1;
    digits.erase(0, zeros < most ? zeros : most);
    if (scale) digits.insert(digits.size() - scale, ".");
    return negative ? "-" + digits : digits;
}

bool zonedText(const Field &field, std::string_view bytes, std::string *text)
{
    std::string digits;
    bool negative = false;
    for (size_t i = 0; i < bytes.size(); ++i) {
        auto byte = static_cast<unsigned char>(bytes[i]);
        bool last = i + 1 == bytes.size();
        if (last && field.isSigned && (byte & 0xF0) == 0x70)
            negative = true, byte = static_cast<unsigned char>(byte - 0x40);
        if (byte < '0' || byte > '9') return false;
        digits += static_cast<char>(byte);
    }
    *text = withPoint(digits, field.scale, negative);
    return true;
}

bool packedText(const Field &field, std::string_view bytes, std::string *text)
{
    std::string digits;
    for (size_t i = 0; i < 2 * bytes.size() - 1; ++i) {
        unsigned digit = static_cast<unsigned char>(bytes[i / 2]) >> (i % 2 ? 0 : 4) & 15;
        if (digit > 9) return false;
        digits += kDigits[digit];
    }
    unsigned sign = static_cast<unsigned char>(bytes.back()) & 15;
    if (sign < 10) return false;
    *text = withPoint(digits, field.scale, sign == 0xB || sign == 0xD);
    return true;
}

std::string binaryText(const Field &field, std::string_view bytes)
{
    uint64_t value = field.isSigned && (bytes[0] & 0x80) ? ~uint64_t(0) : 0;
    for (unsigned char byte : bytes) value = value << 8 | byte;
    bool negative = field.isSigned && (value >> 63);
    return withPoint(std::to_string(negative ? -value : value), field.scale, negative);
}

std::string floatText(std::string_view bytes)
{
    char text[40];
    float single = 0;
    double value = 0;
    if (bytes.size() == sizeof single) {
        memcpy(&single, bytes.data(), sizeof single);
        snprintf(text, sizeof text, "%.9g", static_cast<double>(single));
    } else {
        memcpy(&value, bytes.data(), sizeof value);
        snprintf(text, sizeof text, "%.17g", value);
    }
    return text;
}

bool putFloat(const Field &field, const std::string &text, std::string *bytes)
{
    char *end;
    double value = strtod(text.c_str(), &end);
    auto single = static_cast<float>(value);
    if (end == text.c_str() || *end) return false;
    if (field.length == sizeof single)
        bytes->assign(reinterpret_cast<const char *>(&single), sizeof single);
    else
        bytes->assign(reinterpret_cast<const char *>(&value), sizeof value);
    return true;
}

// "-12.5" at two decimal places: the digits 1250 and the sign. False if it has more digits or
// places than fit.
bool digitsOf(const Field &field, const std::string &text, size_t room, std::string *digits, bool *negative)
{
    size_t at = 0, places = 0;
    bool point = false;
    digits->clear();
    *negative = !text.empty() && text[0] == '-';
    if (!text.empty() && (text[0] == '-' || text[0] == '+')) ++at;
    if (at == text.size()) return false;
    for (; at < text.size(); ++at) {
        if (text[at] == '.' && !point) {
            point = true;
        } else if (isdigit(static_cast<unsigned char>(text[at]))) {
            *digits += text[at];
            places += point;
        } else {
            return false;
        }
    }
    for (; places > field.scale && digits->back() == '0'; --places) digits->pop_back();
    if (places > field.scale) return false;
    digits->append(field.scale - places, '0');
    size_t zeros = digits->find_first_not_of('0');
    digits->erase(0, zeros == std::string::npos ? digits->size() : zeros);
    if (digits->size() > room) return false;
    digits->insert(0, room - digits->size(), '0');
    return !*negative || field.isSigned;
}

} // namespace

bool fieldBytes(const Field &field, const std::string &text, std::string *bytes)
{
    std::string digits;
    bool negative;
    if (field.form == Field::floating) return putFloat(field, text, bytes);
    if (field.form == Field::bytes)
        return text == "0" ? bytes->assign(field.length, 0),
               true        : fromHex(text, bytes) && bytes->size() == field.length;
    size_t room = field.form == Field::zoned ? field.length : field.form == Field::packed ? 2 * field.length - 1 : 20;
    if (!digitsOf(field, text, room, &digits, &negative)) return false;
    if (field.form == Field::zoned) {
        if (negative) digits.back() = static_cast<char>(digits.back() + 0x40);
        *bytes = digits;
    } else if (field.form == Field::packed) {
        digits += field.isSigned ? (negative ? 'D' : 'C') : 'F';
        return fromHex(digits, bytes);
    } else {
        errno = 0;
        uint64_t value = strtoull(digits.c_str(), nullptr, 10);
        uint64_t most = field.length == 8 ? ~uint64_t(0) : (uint64_t(1) << 8 * field.length) - 1;
        if (field.isSigned) most = (most >> 1) + negative;
        if (errno || value > most) return false;
        if (negative) value = -value;
        bytes->assign(field.length, 0);
        for (size_t i = field.length; i--; value >>= 8) (*bytes)[i] = static_cast<char>(value);
        if (field.form == Field::native) *bytes = std::string(bytes->rbegin(), bytes->rend());
    }
    return true;
}

bool fieldText(const Field &field, std::string_view record, std::string *text, std::string *why)
{
    if (field.position >= record.size()) return text->clear(), true; // a short record lacks it
    std::string_view bytes = record.substr(field.position, field.length);
    if (bytes.size() < field.length && field.form != Field::text)
        return *why = "it ends within field " + field.name, false;
    bool good = true;
    switch (field.form) {
    case Field::text:
        *text = withoutBlanks(bytes);
        good = isText(*text);
        break;
    case Field::zoned:
        good = zonedText(field, bytes, text);
        break;
    case Field::packed:
        good = packedText(field, bytes, text);
        break;
    case Field::binary:
        *text = binaryText(field, bytes);
        break;
    case Field::native:
        *text = binaryText(field, std::string(bytes.rbegin(), bytes.rend()));
        break;
    case Field::floating:
        *text = floatText(bytes);
        good = !strpbrk(text->c_str(), "in"); // infinities and what is no number
        break;
    case Field::bytes:
        *text = hexOf(bytes);
        break;
    }
    if (!good) *why = "field " + field.name + " holds X'" + hexOf(bytes) + "'";
    return good;
}

} // namespace file_tool
