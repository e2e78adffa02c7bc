#include "tools/record_text.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace file_tool {

namespace {

constexpr char kDigits[] = "0123456789ABCDEF";

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

// Text that a CSV or JSON file can hold: UTF-8 without control characters.
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

std::string withoutBlanks(std::string_view text)
{
    while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
    return std::string(text);
}

// --- numbers

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

bool fromDecimal(const std::string &text, uint64_t most, uint64_t *value)
{
    errno = 0;
    *value = strtoull(text.c_str(), nullptr, 10);
    return !text.empty() && text.find_first_not_of("0123456789") == text.npos && !errno && *value <= most;
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

bool putNumber(const Field &field, const std::string &text, std::string *bytes)
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

std::string csvCell(const std::string &text)
{
    if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string quoted = "\"";
    for (char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    return quoted + '"';
}

std::string jsonString(const std::string &text)
{
    std::string quoted = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\') quoted += '\\';
        quoted += c;
    }
    return quoted + '"';
}

void addValue(std::string *line, Format format, bool first, const std::string &name, const std::string &value,
              bool isNumber)
{
    if (format == Format::csv) {
        *line += (first ? "" : ",") + csvCell(value);
    } else {
        *line += (first ? "{" : ",") + jsonString(name) + ":";
        *line += value.empty() && isNumber ? "null" : isNumber ? value : jsonString(value);
    }
}

// --- JSON, one object a line

struct Json {
    const char *at;
    bool blank()
    {
        while (*at && isspace(static_cast<unsigned char>(*at))) ++at;
        return true;
    }
    bool take(char c) { return blank() && *at == c && ++at; }

    static void addUtf8(uint32_t code, std::string *text)
    {
        if (code < 0x80) {
            *text += static_cast<char>(code);
            return;
        }
        int more = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
        *text += static_cast<char>((0xF80 >> more & 0xFF) | code >> 6 * more);
        while (more--) *text += static_cast<char>(0x80 | (code >> 6 * more & 0x3F));
    }
    bool unit(uint32_t *code)
    {
        char digits[5] = {};
        for (int i = 0; i < 4; ++i)
            if (!isxdigit(static_cast<unsigned char>(digits[i] = *at)) || !++at) return false;
        *code = static_cast<uint32_t>(strtoul(digits, nullptr, 16));
        return true;
    }
    bool string(std::string *text)
    {
        text->clear();
        if (!take('"')) return false;
        for (; *at && *at != '"';) {
            if (*at != '\\') {
                *text += *at++;
                continue;
            }
            static const char from[] = "\"\\/bfnrt", to[] = "\"\\/\b\f\n\r\t";
            char letter = *++at;
            if (!letter) return false;
            ++at;
            if (const char *known = strchr(from, letter)) {
                *text += to[known - from];
                continue;
            }
            uint32_t code, low;
            if (letter != 'u' || !unit(&code)) return false;
            if (code >= 0xD800 && code < 0xDC00) {
                if (*at++ != '\\' || *at++ != 'u' || !unit(&low) || low < 0xDC00 || low > 0xDFFF) return false;
                code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
            }
            addUtf8(code, text);
        }
        return *at == '"' && ++at;
    }
    bool value(std::string *text)
    {
        blank();
        if (*at == '"') return string(text);
        text->clear();
        if (strncmp(at, "null", 4) == 0) return at += 4, true;
        while (*at && strchr("+-.0123456789eE", *at)) *text += *at++;
        return !text->empty();
    }
    bool object(std::vector<std::string> *names, std::vector<std::string> *values)
    {
        names->clear();
        values->clear();
        if (!take('{')) return false;
        if (!take('}')) {
            do {
                std::string name, said;
                if (!(blank() && string(&name)) || !take(':') || !value(&said)) return false;
                names->push_back(name);
                values->push_back(said);
            } while (take(','));
            if (!take('}')) return false;
        }
        return blank() && !*at;
    }
};

} // namespace

bool parseFields(const char *text, std::vector<Field> *fields)
{
    uint32_t position = 0;
    std::string all = text;
    for (size_t at = 0; at <= all.size();) {
        size_t comma = all.find(',', at);
        std::string one = all.substr(at, comma == std::string::npos ? comma : comma - at);
        Field field;
        char name[64], form[16] = "x";
        unsigned length = 0;
        int parts = sscanf(one.c_str(), "%63[^:]:%u:%15s", name, &length, form);
        const char *letter = form;
        if (*letter == 's') field.isSigned = true, ++letter;
        field.form = *letter == '9'   ? Field::zoned
                     : *letter == 'p' ? Field::packed
                     : *letter == 'b' ? Field::binary
                                      : Field::text;
        if (field.form == Field::packed) field.isSigned = true;
        char *end;
        field.scale = static_cast<uint32_t>(strtoul(letter + 1, &end, 10));
        bool known = *letter && strchr("x9pb", *letter) && !*end && field.scale <= 18;
        bool fits = length > 0 && length <= 65535 && !(field.form == Field::binary && length > 8) &&
                    !(field.form == Field::packed && length > 20);
        if (parts < 2 || !known || !fits)
            return say("--fields: '%s' is no NAME:LENGTH:FORM with a form of x, 9, s9, p, b or sb", one.c_str()), false;
        field.name = name;
        field.position = position;
        field.length = length;
        position += length;
        fields->push_back(field);
        if (comma == std::string::npos) break;
        at = comma + 1;
    }
    return true;
}

// Fields have blanks at their ends no more, so they do not tell how long a record is.
static bool hasLengths(const Arguments &arguments, const Shape &shape)
{
    return shape.variable() && !arguments.fields.empty();
}

std::string csvHead(const Arguments &arguments, const Shape &shape, bool numbered)
{
    std::string line = numbered ? "number" : "";
    auto add = [&](const std::string &name) { line += (line.empty() ? "" : ",") + csvCell(name); };
    if (hasLengths(arguments, shape)) add("length");
    for (const Field &field : arguments.fields) add(field.name);
    if (arguments.fields.empty()) add(arguments.hexadecimal ? "hex" : "record");
    return line;
}

bool formatRecord(const Arguments &arguments, const Shape &shape, std::string_view record, const uint64_t *number,
                  std::string *line, std::string *why)
{
    Format format = arguments.format;
    line->clear();
    bool first = true;
    auto add = [&](const std::string &name, const std::string &value, bool isNumber) {
        addValue(line, format, first, name, value, isNumber);
        first = false;
    };
    if (number) add("number", std::to_string(*number), true);
    if (hasLengths(arguments, shape)) add("length", std::to_string(record.size()), true);
    for (const Field &field : arguments.fields) {
        std::string text;
        if (!fieldText(field, record, &text, why)) return false;
        add(field.name, text, field.form != Field::text && field.form != Field::bytes);
    }
    if (arguments.fields.empty()) {
        bool text = isText(record) && !arguments.hexadecimal;
        if (!text && format == Format::csv && !arguments.hexadecimal)
            return *why = "it is no text; --hex writes it", false;
        add(text ? "record" : "hex", text ? std::string(record) : hexOf(record), false);
    }
    if (format == Format::jsonLines) *line += "}";
    if (line->empty()) *line = "\"\""; // others take an empty line for no row
    return true;
}

RecordReader::RecordReader(FILE *from, const Arguments &arguments, const Shape &shape)
    : from_(from), arguments_(arguments), shape_(shape)
{
}

static bool readLine(FILE *from, std::string *line)
{
    char *text = nullptr;
    size_t room = 0;
    ssize_t size = getline(&text, &room, from);
    if (size > 0) line->assign(text, static_cast<size_t>(size));
    free(text);
    if (size <= 0) return false;
    if (line->back() == '\n') line->pop_back();
    return true;
}

// Spreadsheets put a byte order mark in front of UTF-8.
bool RecordReader::textLine(std::string *line)
{
    if (!readLine(from_, line)) return false;
    if (!line_++ && line->compare(0, 3, "\xEF\xBB\xBF") == 0) line->erase(0, 3);
    return true;
}

bool RecordReader::nextLine(std::string *record)
{
    if (!readLine(from_, record)) return false;
    ++line_;
    if (!record->empty() && record->back() == '\r') record->pop_back();
    return true;
}

bool RecordReader::nextBinary(std::string *record, std::string *why)
{
    uint32_t length = shape_.longest;
    ++line_;
    if (shape_.variable()) {
        size_t got = fread(&length, 1, sizeof length, from_);
        if (got == 0) return false;
        if (got < sizeof length) return *why = "the text ends within a length", false;
        if (length > (1u << 30)) return *why = "a length of " + std::to_string(length) + " makes no sense", false;
    }
    record->resize(length);
    size_t got = fread(record->data(), 1, length, from_);
    if (got == 0 && !shape_.variable()) return false;
    if (got < length) *why = "the text ends within a record";
    return got == length;
}

bool RecordReader::csvRow(std::vector<std::string> *cells, std::string *why)
{
    std::string line, cell;
    cells->clear();
    if (!textLine(&line)) return false;
    bool quoted = false;
    for (size_t i = 0;; ++i) {
        if (i >= line.size()) {
            if (!quoted) break;
            std::string more; // a line end within quotes belongs to the cell
            if (!textLine(&more)) return *why = "a quote is not closed", false;
            cell += '\n';
            line = more;
            i = static_cast<size_t>(-1);
            continue;
        }
        char c = line[i];
        if (quoted && c == '"' && i + 1 < line.size() && line[i + 1] == '"')
            cell += '"', ++i;
        else if (c == '"' && (quoted || cell.empty()))
            quoted = !quoted;
        else if (c == ',' && !quoted)
            cells->push_back(cell), cell.clear();
        else if (!(c == '\r' && !quoted && i + 1 == line.size()))
            cell += c;
    }
    cells->push_back(cell);
    return true;
}

bool RecordReader::assemble(const std::vector<std::string> &names, const std::vector<std::string> &values,
                            std::string *record, uint64_t *number, std::string *why)
{
    record->clear();
    for (const Field &field : arguments_.fields)
        if (record->size() < field.position + field.length) {
            record->resize(field.position, ' ');
            std::string zero;
            if (field.form == Field::text || !putNumber(field, "0", &zero)) zero.assign(field.length, ' ');
            record->append(zero);
        }
    uint64_t length = record->size();
    for (size_t i = 0; i < names.size(); ++i) {
        const std::string &name = names[i], &value = values[i];
        const bool isLength = name == "length" && hasLengths(arguments_, shape_);
        if (isLength || (name == "number" && (arguments_.fields.empty() || shape_.relative()))) {
            if (!fromDecimal(value, isLength ? shape_.longest : ~uint64_t(0), isLength ? &length : number))
                return why->assign("'").append(value).append("' is no ").append(name), false;
            continue;
        }
        if (arguments_.fields.empty()) {
            if (name == "record")
                *record = value;
            else if (name != "hex" || !fromHex(value, record))
                return *why = name == "hex" ? "its hexadecimal digits make no sense" : "no column '" + name + "'",
                       false;
            continue;
        }
        const Field *field = nullptr;
        for (const Field &one : arguments_.fields)
            if (one.name == name) field = &one;
        if (!field) return *why = "no field '" + name + "'", false;
        std::string bytes = value;
        bool fits = field->form == Field::text ? value.size() <= field->length
                                               : value.empty() || putNumber(*field, value, &bytes);
        if (!fits) return why->assign("'").append(value).append("' does not fit into ").append(name), false;
        if (field->form == Field::text) bytes.resize(field->length, ' ');
        if (!bytes.empty()) record->replace(field->position, field->length, bytes);
    }
    if (hasLengths(arguments_, shape_)) record->resize(length, ' ');
    return true;
}

bool RecordReader::next(std::string *record, uint64_t *number, std::string *why)
{
    why->clear();
    *number = 0;
    if (arguments_.format == Format::lsq) return nextLine(record);
    if (arguments_.format == Format::rsd) return nextBinary(record, why);
    std::vector<std::string> values;
    if (arguments_.format == Format::jsonLines) {
        std::string line;
        std::vector<std::string> names;
        if (!textLine(&line)) return false;
        Json json = {line.c_str()};
        if (strlen(line.c_str()) != line.size() || !json.object(&names, &values))
            return *why = "it is no object of strings and numbers", false;
        return assemble(names, values, record, number, why);
    }
    if (columns_.empty() && !csvRow(&columns_, why)) return false;
    if (!csvRow(&values, why)) return false;
    if (values.size() != columns_.size())
        return *why = "it has " + std::to_string(values.size()) + " of " + std::to_string(columns_.size()) + " columns",
               false;
    return assemble(columns_, values, record, number, why);
}

} // namespace file_tool
