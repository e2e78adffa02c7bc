// COPY and REPLACE: a source file to the tokens of the whole compilation group.
#pragma once

#include <string>
#include <vector>

#include "cobol/text/lexer.h"

namespace kvrcob {

struct CopyPath {
    std::vector<std::string> directories; // -I, then COBCPY
};

// Reads a main source with everything that it copies. The last token is an End. `dependencies` gets
// the paths of the copybooks.
std::vector<Token> readSource(uint32_t file, TextOptions &options, const CopyPath &path,
                              std::vector<std::string> &dependencies);

// -E: the tokens as a source in free form.
std::string printTokens(const std::vector<Token> &tokens);

} // namespace kvrcob
