// A JSON object on one line: strings, numbers and null, which is "".
#pragma once

#include <string>
#include <vector>

namespace file_tool {

// False: the line is no such object.
bool readJsonObject(const std::string &line, std::vector<std::string> *names, std::vector<std::string> *values);

} // namespace file_tool
