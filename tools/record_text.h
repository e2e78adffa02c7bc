// Records as text: CSV (RFC 4180) and JSON lines, one column or member a field.
//
// Without fields a record is one column, "record", or "hex" for what is no text. A relative file
// has its record number in front, "number"; fields of records that differ in length have the
// "length" of each before them, for what they are filled up with does not tell it. Fields of
// numbers are written in decimal: zoned and packed ones with their sign and point, binary ones
// (COMP, most significant byte first) as they are.
#pragma once

#include <string>
#include <string_view>

#include "tools/file_tool.h"

namespace file_tool {

// What goes before the first record of a CSV file.
std::string csvHead(const Arguments &arguments, const Shape &shape, bool numbered);

// One line, without its end. False: the record cannot be written so; `why` says it.
bool formatRecord(const Arguments &arguments, const Shape &shape, std::string_view record, const uint64_t *number,
                  std::string *line, std::string *why);

// The way back: reads records of text from a stream.
class RecordReader {
public:
    RecordReader(FILE *from, const Arguments &arguments, const Shape &shape);
    // False at the end, and where the text makes no sense: then `why` is not empty, and the next
    // call goes on with the next record.
    bool next(std::string *record, uint64_t *number, std::string *why);
    uint64_t line() const { return line_; }

private:
    FILE *from_;
    const Arguments &arguments_;
    const Shape &shape_;
    std::vector<std::string> columns_;
    uint64_t line_ = 0;

    bool textLine(std::string *line);
    bool nextLine(std::string *record);
    bool nextBinary(std::string *record, std::string *why);
    bool csvRow(std::vector<std::string> *cells, std::string *why);
    std::string emptyRecord() const;
    bool put(const std::string &name, const std::string &value, std::string *record, std::string *why);
    bool assemble(const std::vector<std::string> &names, const std::vector<std::string> &values, std::string *record,
                  uint64_t *number, std::string *why);
};

} // namespace file_tool
