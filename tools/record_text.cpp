#include "tools/record_text.h"

#include <cstdlib>

#include "tools/field_text.h"
#include "tools/json_object.h"

namespace file_tool {

namespace {

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

} // namespace

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

// A record without a value in any field: zeros, and blanks in texts.
std::string RecordReader::emptyRecord() const
{
    std::string record;
    for (const Field &field : arguments_.fields) {
        if (record.size() >= field.position + field.length) continue;
        record.resize(field.position, ' ');
        std::string zero;
        if (field.form == Field::text || !fieldBytes(field, "0", &zero)) zero.assign(field.length, ' ');
        record.append(zero);
    }
    return record;
}

// Puts the value of a column or member into the record. False: it does not go there; `why` says it.
bool RecordReader::put(const std::string &name, const std::string &value, std::string *record, std::string *why)
{
    if (arguments_.fields.empty()) {
        if (name == "record") return *record = value, true;
        if (name != "hex") return *why = "no column '" + name + "'", false;
        return fromHex(value, record) || (*why = "its hexadecimal digits make no sense", false);
    }
    const Field *field = nullptr;
    for (const Field &one : arguments_.fields)
        if (one.name == name) field = &one;
    if (!field) return *why = "no field '" + name + "'", false;
    std::string bytes = value;
    bool fits =
        field->form == Field::text ? value.size() <= field->length : value.empty() || fieldBytes(*field, value, &bytes);
    if (!fits) return why->assign("'").append(value).append("' does not fit into ").append(name), false;
    if (field->form == Field::text) bytes.resize(field->length, ' ');
    if (!bytes.empty()) record->replace(field->position, field->length, bytes);
    return true;
}

bool RecordReader::assemble(const std::vector<std::string> &names, const std::vector<std::string> &values,
                            std::string *record, uint64_t *number, std::string *why)
{
    *record = emptyRecord();
    uint64_t length = record->size();
    for (size_t i = 0; i < names.size(); ++i) {
        const std::string &name = names[i], &value = values[i];
        const bool isLength = name == "length" && hasLengths(arguments_, shape_);
        if (isLength || (name == "number" && (arguments_.fields.empty() || shape_.relative()))) {
            if (!fromDecimal(value, isLength ? shape_.longest : ~uint64_t(0), isLength ? &length : number))
                return why->assign("'").append(value).append("' is no ").append(name), false;
        } else if (!put(name, value, record, why)) {
            return false;
        }
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
        if (!readJsonObject(line, &names, &values)) return *why = "it is no object of strings and numbers", false;
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
