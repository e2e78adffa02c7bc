// See lexer.h.
//
// Two things in COBOL cannot be told apart by their letters alone, so the lexer looks at the words
// before: what follows PICTURE is a picture string, and a comma between digits is a decimal point
// after DECIMAL-POINT IS COMMA.
#include "cobol/text/lexer.h"

#include <algorithm>
#include <array>
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

// What a byte is to the lexer. White space, commas and semicolons separate; so does the mark of a
// debugging line.
enum : uint8_t { kInWord = 1, kDigit = 2, kSeparator = 4 };

static constexpr auto kClasses = [] {
    std::array<uint8_t, 256> classes = {};
    for (unsigned c = 'a'; c <= 'z'; c++) classes[c] = classes[c - 'a' + 'A'] = kInWord;
    for (unsigned c = '0'; c <= '9'; c++) classes[c] = kInWord | kDigit;
    for (unsigned c = 0x80; c <= 0xFF; c++) classes[c] = kInWord;
    classes['-'] = classes['_'] = kInWord;
    for (unsigned char c : {' ', '\n', '\0', '\f', '\v', ',', ';', kDebugLine}) classes[c] = kSeparator;
    return classes;
}();

static bool is(char c, uint8_t what) { return kClasses[static_cast<unsigned char>(c)] & what; }

static char upper(char c) { return static_cast<char>(std::toupper(static_cast<unsigned char>(c))); }

void Lexer::skipSpace(Token &token)
{
    const std::string &text = running_.text;
    token.spaceBefore = position_ == 0;
    while (position_ < text.size() && is(text[position_], kSeparator)) {
        const char c = text[position_];
        if (c == kDebugLine) {
            position_++;
            if (!options_.debugging) position_ = std::min(text.find('\n', position_), text.size());
            continue;
        }
        if (c == ',' || c == ';') {
            // The first symbol of a picture, or a decimal point.
            const bool picture = expectPicture_ && at(position_ + 1) != ' ' && at(position_ + 1) != '\n';
            if (c == ',' && (picture || (options_.commaIsPoint && is(at(position_ + 1), kDigit)))) return;
            token.commaBefore = true;
        }
        if (c == '\n') lineStart_ = true;
        token.spaceBefore = true;
        position_++;
        while (text[position_] == ' ') position_++; // indentations; not beyond the NUL after the text
    }
}

// ---- Literals

void Lexer::string(Token &token, char quote, size_t begin)
{
    const std::string &text = running_.text;
    std::string value;
    size_t i = begin + 1;
    bool closed = false;
    while (i < text.size() && text[i] != '\n') {
        if (text[i] == quote) {
            if (at(i + 1) == quote) {
                value += quote;
                i += 2;
                continue;
            }
            closed = true;
            i++;
            break;
        }
        value += text[i++];
    }
    token.kind = TokenKind::String;
    position_ = i;
    if (!closed) {
        while (!value.empty() && value.back() == ' ') value.pop_back();
        diagnostics().error(running_.spot(begin), "this literal has no closing quotation mark");
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

// X"4142" to the bytes themselves.
static void hexadecimalBytes(Token &token)
{
    const std::string_view digits = token.text;
    bool good = digits.size() % 2 == 0;
    for (char c : digits) good &= std::isxdigit(static_cast<unsigned char>(c)) != 0;
    if (!good) diagnostics().error(token.spot, "a hexadecimal literal has pairs of the digits 0 to 9 and A to F");
    std::string bytes;
    for (size_t i = 0; good && i < digits.size(); i += 2)
        bytes += static_cast<char>(std::stoi(std::string(digits.substr(i, 2)), nullptr, 16));
    token.text = keepText(std::move(bytes));
    token.form = StringForm::Plain;
}

// A literal whose prefix says what it is made of: X"41", N"...", NX"...", Z"..." or, of a number,
// H"1F", B"101". False: none.
bool Lexer::prefixedString(Token &token, size_t begin, size_t quote)
{
    const char first = upper(at(begin));
    const bool known = quote - begin == 1
                           ? std::strchr("XNZGBH", first) != nullptr
                           : quote - begin == 2 && (first == 'N' || first == 'B') && upper(at(begin + 1)) == 'X';
    if (!known) return false;
    string(token, at(quote), quote);
    token.form = first == 'N' || first == 'G' ? StringForm::National : StringForm::Hex;
    if (first == 'X') hexadecimalBytes(token);
    if (quote - begin == 1 && (first == 'H' || first == 'B')) numberOfDigits(token, first == 'H' ? 16 : 2);
    if (first == 'Z') {
        token.text = keepText(std::string(token.text) + '\0');
        token.form = StringForm::Plain;
    }
    return true;
}

// ---- Words and numbers

size_t Lexer::afterDigits(size_t i) const
{
    while (is(at(i), kDigit)) i++;
    return i;
}

// The exponent of a floating-point literal, 1.5E-3.
size_t Lexer::afterExponent(size_t i) const
{
    if (upper(at(i)) != 'E') return i;
    const size_t digits = at(i + 1) == '+' || at(i + 1) == '-' ? i + 2 : i + 1;
    return is(at(digits), kDigit) ? afterDigits(digits) : i;
}

void Lexer::wordOrNumber(Token &token)
{
    const char *const text = running_.text.c_str(); // the NUL after it ends every word
    const size_t begin = position_;
    size_t end = begin;
    uint8_t all = kInWord | kDigit;
    for (; is(text[end], kInWord); end++) all &= kClasses[static_cast<unsigned char>(text[end])];
    if ((at(end) == '"' || at(end) == '\'') && prefixedString(token, begin, end)) return;

    token.kind = all & kDigit ? TokenKind::Number : TokenKind::Name;
    if (token.kind == TokenKind::Number && at(end) == (options_.commaIsPoint ? ',' : '.') && is(at(end + 1), kDigit))
        end = afterExponent(afterDigits(end + 1));
    token.text = std::string_view(text + begin, end - begin);
    position_ = end;
    if (token.kind == TokenKind::Name) token.word = internWord(token.text);
}

// .5
bool Lexer::atFraction() const
{
    return at(position_) == (options_.commaIsPoint ? ',' : '.') && is(at(position_ + 1), kDigit);
}

void Lexer::fraction(Token &token)
{
    const size_t begin = position_;
    position_ = afterDigits(begin + 1);
    token.kind = TokenKind::Number;
    token.text = std::string_view(running_.text).substr(begin, position_ - begin);
}

void Lexer::punctuation(Token &token)
{
    static constexpr struct {
        char text[3];
        uint32_t mark;
    } pairs[] = {{"**", kPower}, {"<=", kLessEqual}, {">=", kGreaterEqual}, {"<>", kNotEqual}, {"==", kPseudo}};
    const char first = at(position_), second = at(position_ + 1);
    size_t n = 1;
    token.kind = TokenKind::Punct;
    token.word = static_cast<unsigned char>(first);
    for (const auto &pair : pairs)
        if (first == pair.text[0] && second == pair.text[1]) {
            token.word = pair.mark;
            n = 2;
        }
    token.text = std::string_view(running_.text).substr(position_, n);
    position_ += n;
}

// ---- Pictures

// The string after PICTURE. False: there is none, but IS or COPY, or the end of a pseudo-text.
bool Lexer::picture(Token &token)
{
    const std::string &text = running_.text;
    const size_t begin = position_;
    const bool is = upper(at(begin)) == 'I' && upper(at(begin + 1)) == 'S';
    if (is && (at(begin + 2) == ' ' || at(begin + 2) == '\n')) return false;
    if (atPictureCopy()) {
        pictureCopy_ = true;
        return false;
    }
    if (at(begin) == '=' && at(begin + 1) == '=') return false;

    size_t end = begin;
    while (end < text.size() && !std::strchr(" \n", text[end])) {
        if (text.compare(end, 2, "==") == 0) break; // the end of a pseudo-text
        end++;
    }
    // The period, comma or semicolon before a space is a separator.
    if (end > begin && std::strchr(".,;", text[end - 1])) end--;
    if (end == begin) end = begin + 1;
    token.kind = TokenKind::Picture;
    token.text = std::string_view(text).substr(begin, end - begin);
    position_ = end;
    return true;
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

void Lexer::next(Token &token)
{
    skipSpace(token);
    const size_t begin = position_;
    token.spot = running_.spot(begin);
    token.areaA = lineStart_ && (running_.format == SourceFormat::Free || token.spot.column < 12);
    lineStart_ = false;
    if (begin >= running_.text.size()) return;

    const char c = running_.text[begin];
    if (expectPicture_ && picture(token))
        ; // read
    else if (c == '"' || c == '\'')
        string(token, c, begin);
    else if (c != '-' && is(c, kInWord))
        wordOrNumber(token);
    else if (atFraction())
        fraction(token);
    else
        punctuation(token);
    token.spot.length = static_cast<uint32_t>(position_ - begin);
    watch(token);
}

} // namespace kvrcob
