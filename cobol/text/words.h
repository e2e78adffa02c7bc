// Words of a program as numbers: equal words (case does not count) have equal numbers, and the
// words that the language knows have their names K_...
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "cobol/text/words.def"

namespace kvrcob {

#define KVRCOB_ENUMERATE(name) K_##name,
enum Keyword : uint32_t { K_none, KVRCOB_WORDS(KVRCOB_ENUMERATE, KVRCOB_ENUMERATE) K_count };
#undef KVRCOB_ENUMERATE

using Word = uint32_t;

// The number of a word; letters are folded to upper case.
Word internWord(std::string_view text);
// The word in upper case.
const std::string &wordText(Word word);
bool isReserved(Word word);
// How many letters are to be put in, taken out or changed to make one word of the other.
size_t spellingDistance(const std::string &a, const std::string &b);
// The reserved word that `text` is a misspelling of, among those that are wanted; 0: none. Two
// letters at most are wrong, one in short words.
Word reservedLike(const std::string &text, bool (*wanted)(Word));
// How many words there are, for loops over all of them.
size_t wordCount();

} // namespace kvrcob
