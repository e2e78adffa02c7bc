// Tokens: the text-words of a program after COPY and REPLACE.
#pragma once

#include <string_view>
#include <vector>

#include "cobol/diagnostics.h"
#include "cobol/text/words.h"

namespace kvrcob {

enum class TokenKind : uint8_t { End, Name, Number, String, Picture, Punct };

// Punctuation is one character, or one of these. No word has such a number, for START has a
// relation or one of the words FIRST and LAST.
enum : uint32_t { kPower = 1u << 30, kLessEqual, kGreaterEqual, kNotEqual, kPseudo };

// What a String is made of.
enum class StringForm : uint8_t { Plain, Hex, National, NullEnded };

struct Token {
    TokenKind kind = TokenKind::End;
    StringForm form = StringForm::Plain;
    bool spaceBefore = true;  // white space, a separator or a line's end is before it
    bool commaBefore = false; // a comma or semicolon is before it
    bool areaA = false;       // it begins in area A (fixed form), or is the first of its line (free form)
    uint32_t word = 0;        // Name: its number; Punct: the character or k...
    std::string_view text;    // as written; of a String the characters that it stands for
    Spot spot;
};

// Keeps a text for as long as the compilation lasts.
std::string_view keepText(std::string text);

} // namespace kvrcob
