// Source lines: a file in one of the reference formats becomes one running text, without sequence
// areas, comments and continuations.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "cobol/diagnostics.h"

namespace kvrcob {

enum class SourceFormat : uint8_t { Unknown, Fixed, Free, Variable };

// What all files of a compilation have in common as they are read.
struct TextOptions {
    SourceFormat format = SourceFormat::Unknown;
    int tabStop = 8;
    std::map<std::string, std::string, std::less<>> defines; // -D, >>DEFINE
    std::set<std::string> changed;                           // names that were defined anew, or OFF
    std::set<uint32_t> freeFiles;                            // that were in free form
    bool debugging = false;                                  // WITH DEBUGGING MODE was seen
    bool commaIsPoint = false;                               // DECIMAL-POINT IS COMMA was seen
};

// The running text. Lines end with '\n'. A debugging line begins with kDebugLine.
constexpr char kDebugLine = 1;

struct RunningText {
    std::string text;
    struct Mark {
        size_t offset; // from here on ...
        uint32_t line, column;
    };
    std::vector<Mark> marks;
    uint32_t file = 0;
    SourceFormat format = SourceFormat::Fixed;

    Spot spot(size_t offset) const;
    mutable size_t last = 0; // index of the mark that was found last
};

// Tells the format of a text from its first lines.
SourceFormat guessFormat(std::string_view text);

// Whether a text without headers shows that it is in fixed form: by a comment's mark in column 7 or
// by sequence numbers.
bool showsFixed(std::string_view text);

// The encoding of a text that is neither ASCII nor something that has ASCII in it, else nothing.
const char *foreignEncoding(std::string_view text);

RunningText readLines(uint32_t file, TextOptions &options);

} // namespace kvrcob
