// The lexer: running text to tokens, one at a time.
#pragma once

#include <utility>

#include "cobol/text/source_lines.h"
#include "cobol/text/token.h"

namespace kvrcob {

class Lexer {
public:
    // The running text stays for the whole compilation: tokens point into it.
    Lexer(uint32_t file, TextOptions &options) : options_(options), running_(*new RunningText(readLines(file, options)))
    {
    }

    // The next token, into an empty one; it stays End at the end.
    void next(Token &token);

    // PICTURE COPY name: the copied text begins with the picture string.
    bool takePictureCopy() { return std::exchange(pictureCopy_, false); }
    void expectPicture()
    {
        expectPicture_ = true;
        before_ = K_PICTURE; // IS may come first
    }

private:
    char at(size_t i) const { return i < running_.text.size() ? running_.text[i] : '\n'; }
    void skipSpace(Token &token);
    void string(Token &token, char quote, size_t begin);
    bool prefixedString(Token &token, size_t begin, size_t quote);
    size_t afterDigits(size_t i) const;
    size_t afterExponent(size_t i) const;
    void wordOrNumber(Token &token);
    bool atFraction() const;
    void fraction(Token &token);
    void punctuation(Token &token);
    bool atPictureCopy() const;
    bool picture(Token &token);
    void watch(const Token &token);

    TextOptions &options_;
    RunningText &running_;
    size_t position_ = 0;
    bool expectPicture_ = false, pictureCopy_ = false;
    bool lineStart_ = true;
    Word before_ = 0, beforeThat_ = 0;
    int programs_ = 0; // begun and not ended
};

} // namespace kvrcob
