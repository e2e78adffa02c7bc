// One field of a record as text, and back: numbers in decimal, bytes in hexadecimal, texts as they
// are.
#pragma once

#include <string>
#include <string_view>

#include "tools/file_tool.h"

namespace file_tool {

std::string hexOf(std::string_view bytes);
bool fromHex(const std::string &text, std::string *bytes);

// Text that a CSV or JSON file can hold: UTF-8 without control characters.
bool isText(std::string_view bytes);

// A number of digits only, at most so much.
bool fromDecimal(const std::string &text, uint64_t most, uint64_t *value);

// The text of a record's field, "" where a short record lacks it. False: it holds none; `why` says
// it.
bool fieldText(const Field &field, std::string_view record, std::string *text, std::string *why);

// The bytes of a field that is no text. False: the number does not fit, or is none.
bool fieldBytes(const Field &field, const std::string &text, std::string *bytes);

} // namespace file_tool
