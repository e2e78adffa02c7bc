// See lexer.h.
//
// Two things in COBOL cannot be told apart by their letters alone, so the lexer looks at the words
// before: what follows PICTURE is a picture string, and a comma between digits is a decimal point
// after DECIMAL-POINT IS COMMA.
#include "cobol/text/lexer.h"

#include <cctype>
#include <cstring>
#include <deque>

namespace kvrcob {

std::string_view keepText(std::string text)
{
    static std::deque<std::string> all;
    all.push_back(std::move(text));
    return all.back();
}

static bool wordByte(unsigned char c)
{
    unsigned char letter = c | 0x20;
    return (letter >= 'a' && letter <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '_' || c >= 0x80;
}

void Lexer::skipSpace(Token &token)
{
    token.spaceBefore = position_ == 0;
    for (;;) {
        char c = at(position_);
        if (position_ >= running_.text.size()) return;
        if (c == '\n') {
            lineStart_ = true;
            token.spaceBefore = true;
            position_++;
        } else if (c == kDebugLine) {
            position_++;
            if (!options_.debugging)
                while (position_ < running_.text.size() && at(position_) != '\n') position_++;
        } else if (c == ' ' || c == '\0' || c == '\f' || c == '\v') {
            token.spaceBefore = true;
            position_++;
        } else if (c == ',' && expectPicture_ && at(position_ + 1) != ' ' && at(position_ + 1) != '\n') {
            return; // the first symbol of a picture
        } else if ((c == ',' || c == ';') && !(c == ',' && options_.commaIsPoint &&
                                               std::isdigit(static_cast<unsigned char>(at(position_ + 1))))) {
            token.spaceBefore = token.commaBefore = true;
            position_++;
        } else {
            return;
        }
    }
}

void Lexer::string(Token &token, char quote, size_t begin)
{
    std::string value;
    size_t i = begin + 1;
    bool closed = false;
    while (i < running_.text.size() && running_.text[i] != '\n') {
        if (running_.text[i] == quote) {
            if (at(i + 1) == quote) {
                value += quote;
                i += 2;
                continue;
            }
            closed = true;
            i++;
            break;
        }
        value += running_.text[i++];
    }
    token.kind = TokenKind::String;
    position_ = i;
    if (!closed) {
        while (!value.empty() && value.back() == ' ') value.pop_back();
        Spot spot = running_.spot(begin);
        diagnostics().error(spot, "this literal has no closing quotation mark");
    }
    token.text = keepText(std::move(value));
}

// H"FF" and B"1011": an unsigned integer, by the digits of its base.
static void numberOfDigits(Token &token, unsigned base)
{
    unsigned long long value = 0;
    for (char digit : token.text) {
        const size_t weight = std::string_view("0123456789ABCDEF")
                                  .find(static_cast<char>(std::toupper(static_cast<unsigned char>(digit))));
        if (weight >= base || value > (~0ULL >> 4)) {
            diagnostics().error(token.spot, base == 2 ? "a binary literal has up to 60 digits 0 and 1"
                                                      : "a hexadecimal number has up to 16 digits 0 to 9 and A to F");
            break;
        }
        value = value * base + weight;
    }
    token.kind = TokenKind::Number;
    token.text = keepText(std::to_string(value));
}

void Lexer::picture(Token &token)
{
    size_t begin = position_, end = begin;
    while (end < running_.text.size() && !std::strchr(" \n", running_.text[end])) {
        if (running_.text.compare(end, 2, "==") == 0) break; // the end of a pseudo-text
        end++;
    }
    // The period, comma or semicolon before a space is a separator.
    if (end > begin && std::strchr(".,;", running_.text[end - 1])) end--;
    if (end == begin) end = begin + 1;
    token.kind = TokenKind::Picture;
    token.text = std::string_view(running_.text).substr(begin, end - begin);
    position_ = end;
}

// Clauses that change how the text after them is read.
void Lexer::watch(const Token &token)
{
    if (token.kind == TokenKind::Name) {
        Word word = token.word;
        expectPicture_ =
            word == K_PIC || word == K_PICTURE || (word == K_IS && (before_ == K_PIC || before_ == K_PICTURE));
        if (word == K_COMMA && (before_ == K_DECIMAL_POINT || (before_ == K_IS && beforeThat_ == K_DECIMAL_POINT)))
            options_.commaIsPoint = true;
        if (word == K_MODE && before_ == K_DEBUGGING) options_.debugging = true;
        // Both hold for the outermost program that says so, and for those that it contains.
        if (word == K_PROGRAM_ID || word == K_FUNCTION_ID) programs_++;
        if ((word == K_PROGRAM || word == K_FUNCTION) && before_ == K_END && --programs_ <= 0) {
            programs_ = 0;
            options_.commaIsPoint = options_.debugging = false;
        }
        beforeThat_ = before_;
        before_ = word;
    } else {
        expectPicture_ = false;
        beforeThat_ = before_;
        before_ = 0;
    }
}

bool Lexer::atPictureCopy() const
{
    static const char word[] = "COPY";
    for (size_t i = 0; i < 4; i++)
        if (std::toupper(static_cast<unsigned char>(at(position_ + i))) != word[i]) return false;
    return at(position_ + 4) == ' ' || at(position_ + 4) == '\n';
}

Token Lexer::next()
{
    Token token;
    skipSpace(token);
    const std::string &text = running_.text;
    token.spot = running_.spot(position_);
    token.areaA = lineStart_ && (running_.format == SourceFormat::Free || token.spot.column < 12);
    lineStart_ = false;
    if (position_ >= text.size()) return token;
    size_t begin = position_;
    unsigned char c = static_cast<unsigned char>(text[begin]);

    if (expectPicture_ && std::toupper(c) == 'I' && std::toupper(static_cast<unsigned char>(at(begin + 1))) == 'S' &&
        (at(begin + 2) == ' ' || at(begin + 2) == '\n')) {
        // PICTURE IS: the string comes next.
    } else if (expectPicture_ && atPictureCopy()) {
        pictureCopy_ = true;
    } else if (expectPicture_ && !(c == '=' && at(begin + 1) == '=')) { // PIC may be the end of a pseudo-text
        picture(token);
        watch(token);
        token.spot.length = static_cast<uint32_t>(token.text.size());
        return token;
    }

    if (c == '"' || c == '\'') {
        string(token, static_cast<char>(c), begin);
    } else if (c != '-' && wordByte(c)) {
        size_t end = begin;
        bool allDigits = true;
        while (end < text.size() && wordByte(static_cast<unsigned char>(text[end]))) {
            if (text[end] < '0' || text[end] > '9') allDigits = false;
            end++;
        }
        // N"..." and its like.
        char quote = at(end);
        if ((quote == '"' || quote == '\'') && end - begin <= 2) {
            char first = static_cast<char>(std::toupper(c));
            bool known = end - begin == 1 ? std::strchr("XNZGBH", first) != nullptr
                                          : (first == 'N' || first == 'B') &&
                                                std::toupper(static_cast<unsigned char>(text[begin + 1])) == 'X';
            if (known) {
                string(token, quote, end);
                const bool number = end - begin == 1 && (first == 'H' || first == 'B');
                token.form = first == 'Z'                   ? StringForm::NullEnded
                             : first == 'N' || first == 'G' ? StringForm::National
                                                            : StringForm::Hex;
                if (first == 'X' && end - begin == 1) {
                    std::string bytes;
                    bool good = token.text.size() % 2 == 0;
                    for (size_t i = 0; i + 1 < token.text.size(); i += 2) {
                        if (!std::isxdigit(static_cast<unsigned char>(token.text[i])) ||
                            !std::isxdigit(static_cast<unsigned char>(token.text[i + 1]))) {
                            good = false;
                            break;
                        }
                        bytes += static_cast<char>(std::stoi(std::string(token.text.substr(i, 2)), nullptr, 16));
                    }
                    if (!good)
                        diagnostics().error(token.spot,
                                            "a hexadecimal literal has pairs of the digits 0 to 9 and A to F");
                    token.text = keepText(std::move(bytes));
                    token.form = StringForm::Plain;
                } else if (first == 'Z') {
                    token.text = keepText(std::string(token.text) + '\0');
                    token.form = StringForm::Plain;
                } else if (number) {
                    numberOfDigits(token, first == 'H' ? 16 : 2);
                }
                token.spot.length = static_cast<uint32_t>(position_ - begin);
                watch(token);
                return token;
            }
        }
        if (allDigits) {
            char point = options_.commaIsPoint ? ',' : '.';
            if (at(end) == point && std::isdigit(static_cast<unsigned char>(at(end + 1)))) {
                end++;
                while (std::isdigit(static_cast<unsigned char>(at(end)))) end++;
                // A floating-point literal: 1.5E-3
                if (std::toupper(static_cast<unsigned char>(at(end))) == 'E') {
                    size_t e = end + 1;
                    if (at(e) == '+' || at(e) == '-') e++;
                    if (std::isdigit(static_cast<unsigned char>(at(e)))) {
                        while (std::isdigit(static_cast<unsigned char>(at(e)))) e++;
                        end = e;
                    }
                }
            }
            token.kind = TokenKind::Number;
        } else {
            token.kind = TokenKind::Name;
        }
        token.text = std::string_view(text).substr(begin, end - begin);
        position_ = end;
        if (token.kind == TokenKind::Name) token.word = internWord(token.text);
    } else if ((c == '.' || c == ',') && std::isdigit(static_cast<unsigned char>(at(begin + 1))) &&
               (c == ',') == options_.commaIsPoint) {
        size_t end = begin + 1;
        while (std::isdigit(static_cast<unsigned char>(at(end)))) end++;
        token.kind = TokenKind::Number;
        token.text = std::string_view(text).substr(begin, end - begin);
        position_ = end;
    } else {
        token.kind = TokenKind::Punct;
        size_t n = 1;
        token.word = c;
        char second = at(begin + 1);
        if (c == '*' && second == '*')
            token.word = kPower, n = 2;
        else if (c == '<' && second == '=')
            token.word = kLessEqual, n = 2;
        else if (c == '>' && second == '=')
            token.word = kGreaterEqual, n = 2;
        else if (c == '<' && second == '>')
            token.word = kNotEqual, n = 2;
        else if (c == '=' && second == '=')
            token.word = kPseudo, n = 2;
        token.text = std::string_view(text).substr(begin, n);
        position_ = begin + n;
    }
    token.spot.length = static_cast<uint32_t>(position_ - begin);
    watch(token);
    return token;
}

} // namespace kvrcob
