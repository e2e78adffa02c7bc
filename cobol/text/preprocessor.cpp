// See preprocessor.h.
//
// COPY is carried out as the words are read; a copybook's words go through its REPLACING phrase and
// then take the statement's place. REPLACE is a second pass over the whole. Replacing works on
// whole words. Where a replaced piece touched other characters, as in :TAG:-NAME, the pieces are
// joined to one word again.
#include "cobol/text/preprocessor.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sys/stat.h>

namespace kvrcob {
namespace {

struct Replacement {
    enum Mode : uint8_t { Whole, Leading, Trailing } mode = Whole;
    std::vector<Token> from, to;
    std::string fromText; // of `from`, where its words touch
};

bool isPunct(const Token &token, uint32_t mark) { return token.kind == TokenKind::Punct && token.word == mark; }
bool isWord(const Token &token, Word word) { return token.kind == TokenKind::Name && token.word == word; }

bool sameToken(const Token &a, const Token &b)
{
    if (a.kind != b.kind) {
        // A picture string and a word with the same letters are the same text-word.
        auto plain = [](const Token &t) {
            return t.kind == TokenKind::Name || t.kind == TokenKind::Picture || t.kind == TokenKind::Number;
        };
        return plain(a) && plain(b) && internWord(a.text) == internWord(b.text);
    }
    if (a.kind == TokenKind::Name || a.kind == TokenKind::Punct) return a.word == b.word;
    if (a.kind == TokenKind::Picture) return internWord(a.text) == internWord(b.text);
    return a.text == b.text;
}

// The digits of -5, which is one text-word: 5 is not replaced there.
bool isSigned(const std::vector<Token> &in, size_t i)
{
    if (i == 0 || in[i].kind != TokenKind::Number || in[i].spaceBefore) return false;
    const Token &sign = in[i - 1];
    if (!isPunct(sign, '-') && !isPunct(sign, '+')) return false;
    return sign.spaceBefore || i == 1 || isPunct(in[i - 2], '(');
}

// Can this token be a piece of a word?
bool isPiece(const Token &token)
{
    return token.kind == TokenKind::Name || token.kind == TokenKind::Number || token.kind == TokenKind::Picture ||
           isPunct(token, '-') || isPunct(token, '_');
}

void setText(Token &token, std::string text)
{
    token.text = keepText(std::move(text));
    if (token.kind == TokenKind::Picture) return;
    bool digits = !token.text.empty();
    for (char c : token.text)
        if (!std::isdigit(static_cast<unsigned char>(c))) digits = false;
    token.kind = digits ? TokenKind::Number : TokenKind::Name;
    if (!digits) token.word = internWord(token.text);
}

// Words and pictures that replacements put together are no longer than this.
constexpr size_t kLongestJoin = 10000;

// Puts `token` after `out`, joined with the last one if they touch and make one word.
void join(std::vector<Token> &out, const Token &token, bool mayJoin)
{
    // After a "-" that was joined, its other half.
    if (!mayJoin && !out.empty() && out.back().text.size() < kLongestJoin)
        mayJoin = out.back().kind == TokenKind::Name && out.back().text.back() == '-';
    const bool begun = !out.empty() && isPiece(out.back()) && !isPunct(out.back(), '-'); // no word begins with "-"
    if (mayJoin && begun && out.back().text.size() < kLongestJoin && !token.spaceBefore && isPiece(token)) {
        setText(out.back(), std::string(out.back().text) + std::string(token.text));
        return;
    }
    out.push_back(token);
}

// Where `part` is in `text`, in letters of either case.
size_t findFolded(std::string_view text, std::string_view part, size_t from = 0)
{
    for (; from + part.size() <= text.size(); from++) {
        size_t n = 0;
        while (n < part.size() && std::toupper(static_cast<unsigned char>(text[from + n])) ==
                                      std::toupper(static_cast<unsigned char>(part[n])))
            n++;
        if (n == part.size()) return from;
    }
    return std::string::npos;
}

// Of one compilation: texts that copy each other, or whose replacements do, could grow for ever.
constexpr size_t kMostTokens = 4000000, kMostCopies = 100000;

std::string textOf(const std::vector<Token> &tokens)
{
    std::string text;
    for (const Token &t : tokens) text += t.text;
    return text;
}

// LEADING and TRAILING: whether the rule's part is at that end of a word.
bool hasPart(const Token &token, const Replacement &rule)
{
    if (token.kind != TokenKind::Name || rule.fromText.empty()) return false;
    const std::string &text = wordText(token.word), &part = wordText(internWord(rule.fromText));
    return rule.mode == Replacement::Leading ? text.starts_with(part) : text.ends_with(part);
}

// A tag within a picture, as in X(:LENGTH:): the lexer has not divided the string.
bool mayHaveTag(const Token &token, const Replacement &rule)
{
    return token.kind == TokenKind::Picture && rule.fromText.starts_with(':') &&
           token.text.find(':') != std::string_view::npos;
}

void replaceTags(Token &picture, const Replacement &rule)
{
    size_t at = findFolded(picture.text, rule.fromText);
    if (at == std::string::npos) return;
    std::string text(picture.text);
    const std::string with = textOf(rule.to);
    while (at != std::string::npos && text.size() < kLongestJoin) {
        text.replace(at, rule.fromText.size(), with);
        at = findFolded(text, rule.fromText, at + with.size());
    }
    setText(picture, std::move(text));
}

// The first rule that matches here. Tags within a picture are replaced at once, by all rules.
const Replacement *matchAt(std::vector<Token> &in, size_t i, const std::vector<Replacement> &rules)
{
    for (const Replacement &rule : rules) {
        if (rule.mode != Replacement::Whole) {
            if (hasPart(in[i], rule)) return &rule;
        } else if (rule.from.empty() || i + rule.from.size() > in.size()) {
            continue;
        } else if (mayHaveTag(in[i], rule)) {
            replaceTags(in[i], rule);
        } else if (!isSigned(in, i) &&
                   std::equal(rule.from.begin(), rule.from.end(), in.begin() + static_cast<ptrdiff_t>(i), sameToken)) {
            return &rule;
        }
    }
    return nullptr;
}

void replacePart(Token token, const Replacement &rule, std::vector<Token> &out)
{
    std::string text(token.text);
    const size_t n = rule.fromText.size();
    text.replace(rule.mode == Replacement::Leading ? 0 : text.size() - n, n, textOf(rule.to));
    if (text.empty()) return;
    setText(token, std::move(text));
    out.push_back(token);
}

// The new words take the place of the old ones, for messages, too. Text before them that touches is
// joined.
void replaceWords(const Token &old, const Replacement &rule, std::vector<Token> &out)
{
    for (size_t k = 0; k < rule.to.size(); k++) {
        Token token = rule.to[k];
        token.spot = old.spot;
        if (k == 0) {
            token.spaceBefore = old.spaceBefore;
            token.commaBefore = old.commaBefore;
            token.areaA = old.areaA;
        }
        // A number that becomes the string after PICTURE.
        if (old.kind == TokenKind::Picture && rule.to.size() == 1) {
            token.kind = TokenKind::Picture;
            token.word = 0;
        }
        join(out, token, k == 0);
    }
}

// Ends early where the text becomes longer than any may be; the caller tells it.
std::vector<Token> replaceAll(std::vector<Token> in, const std::vector<Replacement> &rules)
{
    if (rules.empty()) return in;
    std::vector<Token> out;
    out.reserve(in.size());
    bool touched = false; // words were replaced just before: what touches them is joined
    for (size_t i = 0; i < in.size() && out.size() <= kMostTokens;) {
        const Replacement *match = matchAt(in, i, rules);
        if (!match)
            join(out, in[i], touched);
        else if (match->mode == Replacement::Whole)
            replaceWords(in[i], *match, out);
        else
            replacePart(in[i], *match, out);
        touched = match && match->mode == Replacement::Whole;
        i += touched ? match->from.size() : 1;
    }
    return out;
}

// A text whose last word is PICTURE or PICTURE IS.
static bool endsWithPicture(const std::vector<Token> &text)
{
    size_t last = text.size();
    if (last > 1 && isWord(text[last - 1], K_IS)) last--;
    return last > 0 && (isWord(text[last - 1], K_PIC) || isWord(text[last - 1], K_PICTURE));
}

class Reader {
public:
    Reader(TextOptions &options, const CopyPath &path, std::vector<std::string> &dependencies)
        : options_(options), path_(path), dependencies_(dependencies)
    {
    }

    void file(uint32_t number, std::vector<Token> &out, int depth)
    {
        if (const char *encoding = foreignEncoding(sources()[number].text)) {
            diagnostics().error({number, 1, 1, 1},
                                std::string("this text is in ") + encoding + "; make it ASCII or UTF-8 first");
            sources().forget(number);
        }
        Lexer lexer(number, options_);
        if (std::exchange(pictureCopy_, false)) lexer.expectPicture();
        for (;;) {
            lexer.next(out.emplace_back());
            if (out.back().kind == TokenKind::End || full(out.size(), out.back().spot)) break;
            if (!isWord(out.back(), K_COPY)) continue;
            const Spot statement = out.back().spot;
            out.pop_back();
            copy(lexer, statement, out, depth);
        }
        if (depth > 0)
            out.pop_back();
        else
            out.back().kind = TokenKind::End;
    }

    // Whether the text has become too long; told once.
    bool full(size_t tokens, const Spot &spot)
    {
        if (!full_ && (tokens > kMostTokens || copies_ > kMostCopies)) {
            full_ = true;
            diagnostics().error(spot, copies_ > kMostCopies
                                          ? "there are too many COPY statements here; do texts copy each other?"
                                          : "the text is too long after COPY and REPLACE");
        }
        return full_;
    }

    // REPLACE, over the whole text.
    std::vector<Token> replaceStatements(std::vector<Token> in)
    {
        bool any = false;
        for (const Token &t : in)
            if (isWord(t, K_REPLACE)) any = true;
        if (!any) return in;
        std::vector<Token> out, stretch;
        std::vector<Replacement> rules;
        std::vector<std::vector<Replacement>> outer;
        auto flush = [&] {
            std::vector<Token> done = replaceAll(stretch, rules);
            bool tooLong = !stretch.empty() && full(out.size() + done.size(), stretch[0].spot);
            if (!tooLong) out.insert(out.end(), done.begin(), done.end());
            stretch.clear();
        };
        size_t i = 0;
        while (i < in.size()) {
            if (!isWord(in[i], K_REPLACE)) {
                stretch.push_back(in[i++]);
                continue;
            }
            flush();
            size_t j = i + 1;
            Source source{&in, &j};
            // ALSO keeps the rules before it in force after its own; LAST OFF takes it back.
            if (isWord(in[j], K_OFF)) {
                rules.clear();
                outer.clear();
                j++;
            } else if (isWord(in[j], K_LAST) && isWord(in[j + 1], K_OFF)) {
                rules.clear();
                if (!outer.empty()) {
                    rules = outer.back();
                    outer.pop_back();
                }
                j += 2;
            } else if (isWord(in[j], K_ALSO)) {
                j++;
                outer.push_back(rules);
                std::vector<Replacement> more = pairs(source);
                rules.insert(rules.begin(), more.begin(), more.end());
            } else {
                rules = pairs(source);
                outer.clear();
            }
            while (!isPunct(in[j], '.') && in[j].kind != TokenKind::End) j++;
            if (isPunct(in[j], '.')) {
                j++;
            } else {
                diagnostics().error(in[j].spot, "REPLACE ends with a period");
            }
            i = j;
        }
        Token end = in.back();
        flush();
        if (out.empty() || out.back().kind != TokenKind::End) out.push_back(end);
        return out;
    }

private:
    // Tokens out of a vector that ends with End.
    struct Source {
        const std::vector<Token> *tokens;
        size_t *index;
        const Token &peek() const { return (*tokens)[*index]; }
        void step() const
        {
            if (peek().kind != TokenKind::End) ++*index;
        }
    };

    static void pseudo(const Source &source, std::vector<Token> &out)
    {
        Spot open = source.peek().spot;
        source.step();
        while (!isPunct(source.peek(), kPseudo)) {
            if (source.peek().kind == TokenKind::End) {
                diagnostics().error(open, "this pseudo-text has no closing ==");
                return;
            }
            out.push_back(source.peek());
            source.step();
        }
        source.step();
        if (!out.empty()) out.front().spaceBefore = true;
    }

    // One operand of REPLACING: pseudo-text, a literal, a word, an identifier with qualifiers and
    // subscripts.
    static void operand(const Source &source, std::vector<Token> &out)
    {
        const Token &token = source.peek();
        if (isPunct(token, kPseudo)) {
            pseudo(source, out);
            return;
        }
        if (token.kind == TokenKind::End || isPunct(token, '.')) {
            diagnostics().error(token.spot, "REPLACING needs a text here");
            return;
        }
        out.push_back(token);
        bool word = token.kind == TokenKind::Name;
        bool sign = isPunct(token, '-') || isPunct(token, '+');
        source.step();
        if (sign && source.peek().kind == TokenKind::Number) {
            out.push_back(source.peek());
            source.step();
        }
        if (!word) return;
        while (isWord(source.peek(), K_OF) || isWord(source.peek(), K_IN)) {
            out.push_back(source.peek());
            source.step();
            if (source.peek().kind == TokenKind::Name) {
                out.push_back(source.peek());
                source.step();
            }
        }
        if (isPunct(source.peek(), '(')) {
            int depth = 0;
            do {
                if (isPunct(source.peek(), '(')) depth++;
                if (isPunct(source.peek(), ')')) depth--;
                out.push_back(source.peek());
                source.step();
            } while (depth > 0 && source.peek().kind != TokenKind::End);
        }
    }

    static std::vector<Replacement> pairs(const Source &source)
    {
        std::vector<Replacement> rules;
        while (!isPunct(source.peek(), '.') && source.peek().kind != TokenKind::End) {
            Replacement rule;
            if (isWord(source.peek(), K_LEADING) || isWord(source.peek(), K_TRAILING)) {
                rule.mode = isWord(source.peek(), K_LEADING) ? Replacement::Leading : Replacement::Trailing;
                source.step();
            }
            operand(source, rule.from);
            if (!isWord(source.peek(), K_BY)) {
                diagnostics().error(source.peek().spot, "BY is missing here");
                while (!isPunct(source.peek(), '.') && source.peek().kind != TokenKind::End) source.step();
                return rules;
            }
            source.step();
            operand(source, rule.to);
            if (rule.from.empty()) continue;
            bool touching = true;
            for (size_t i = 0; i < rule.from.size(); i++) {
                touching &= i == 0 || !rule.from[i].spaceBefore;
                rule.fromText += rule.from[i].text;
            }
            if (!touching) rule.fromText.clear();
            rules.push_back(std::move(rule));
        }
        return rules;
    }

    static bool isFile(const std::string &path)
    {
        struct stat info;
        return stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
    }

    std::string find(const std::string &name, const std::string &library, uint32_t includer, std::string &tried) const
    {
        std::vector<std::string> directories;
        if (!name.empty() && name[0] == '/') {
            directories.push_back("");
        } else {
            const std::string &from = sources()[includer].path;
            size_t slash = from.rfind('/');
            directories.push_back(slash == std::string::npos ? "" : from.substr(0, slash + 1));
            if (directories[0] != "") directories.push_back("");
            for (const std::string &directory : path_.directories) directories.push_back(directory + "/");
        }
        std::string lower = name, upper = name, lowerLibrary = library;
        for (char &c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        for (char &c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        for (char &c : lowerLibrary) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        static const char *const extensions[] = {"", ".cpy", ".cbl", ".cob", ".CPY", ".CBL", ".COB"};
        for (const std::string &directory : directories) {
            std::vector<std::string> places;
            if (library.empty()) {
                places = {directory};
            } else {
                places = {directory + library + "/", directory + lowerLibrary + "/"};
                // A library that is no folder: the name alone may still be found.
                struct stat info;
                if (stat((directory + library).c_str(), &info) != 0 &&
                    stat((directory + lowerLibrary).c_str(), &info) != 0)
                    places.push_back(directory);
            }
            for (size_t i = 0; i < places.size(); i++) {
                if (i > 0 && places[i] == places[i - 1]) continue; // the library is spelled in small letters
                for (const char *extension : extensions)
                    for (const std::string &spelling : {name, upper, lower})
                        if (isFile(places[i] + spelling + extension)) return places[i] + spelling + extension;
                tried += (tried.empty() ? "" : ", ") + (places[i].empty() ? std::string(".") : places[i]);
            }
        }
        return "";
    }

    // A COPY statement; false, and told, if it names no text.
    struct CopyStatement {
        Token name;
        std::string library;
        std::vector<Replacement> rules;
    };
    bool copyStatement(Lexer &lexer, const Spot &statement, CopyStatement &copy)
    {
        // The statement's own words, up to the period, which becomes their end.
        std::vector<Token> words;
        bool inPseudo = false;
        do {
            lexer.next(words.emplace_back());
            if (isPunct(words.back(), kPseudo)) inPseudo = !inPseudo;
        } while (words.back().kind != TokenKind::End && (inPseudo || !isPunct(words.back(), '.')));
        const bool ended = words.back().kind != TokenKind::End;
        words.back().kind = TokenKind::End;
        if (!ended) diagnostics().error(statement, "this COPY has no period at its end");

        size_t index = 0;
        Source source{&words, &index};
        copy.name = source.peek();
        if (copy.name.kind != TokenKind::Name && copy.name.kind != TokenKind::String &&
            copy.name.kind != TokenKind::Number) {
            diagnostics().error(copy.name.spot, "COPY needs the name of a text");
            return false;
        }
        source.step();
        if (isWord(source.peek(), K_OF) || isWord(source.peek(), K_IN)) {
            source.step();
            copy.library = std::string(source.peek().text);
            source.step();
        }
        if (isWord(source.peek(), K_SUPPRESS)) {
            source.step();
            if (isWord(source.peek(), K_PRINTING)) source.step();
        }
        if (isWord(source.peek(), K_REPLACING)) {
            source.step();
            copy.rules = pairs(source);
        } else if (source.peek().kind != TokenKind::End) {
            diagnostics().error(source.peek().spot, "REPLACING or a period belongs here");
        }
        return true;
    }

    // The file of the text; "", and told, if there is none, or if it would never end.
    std::string copiedFile(const CopyStatement &copy, const Spot &statement, int depth)
    {
        const std::string name(copy.name.text);
        std::string tried, path = find(name, copy.library, statement.file, tried);
        if (path.empty()) {
            diagnostics().error(copy.name.spot, "the text " + name +
                                                    (copy.library.empty() ? "" : " of " + copy.library) +
                                                    " to be copied was not found in " + tried);
            return "";
        }
        if (depth >= 100) {
            diagnostics().error(copy.name.spot, "COPY is nested too deep; does the text copy itself?");
            return "";
        }
        for (Spot at = statement; at.line; at = sources()[at.file].includedAt) {
            if (sources()[at.file].path == path) {
                diagnostics().error(copy.name.spot, "the text " + name + " copies itself");
                return "";
            }
        }
        return path;
    }

    // What comes after its period is read when the copied text has been: that may end with PICTURE,
    // or say that the comma is the decimal point.
    void copy(Lexer &lexer, const Spot &statement, std::vector<Token> &out, int depth)
    {
        const bool pictureCopy = lexer.takePictureCopy();
        CopyStatement copy;
        if (!copyStatement(lexer, statement, copy)) return;
        const std::string path = copiedFile(copy, statement, depth);
        if (path.empty()) return;
        copies_++;
        int number = full(out.size(), statement) ? -1 : sources().open(path, statement);
        if (number < 0) {
            if (!full_) diagnostics().error(copy.name.spot, "cannot read " + path + ": " + std::strerror(errno));
            return;
        }
        dependencies_.push_back(path);
        std::vector<Token> copied;
        pictureCopy_ = pictureCopy;
        file(static_cast<uint32_t>(number), copied, depth + 1);
        if (!copy.rules.empty()) copied = replaceAll(copied, copy.rules);
        if (endsWithPicture(copied)) lexer.expectPicture();
        out.insert(out.end(), copied.begin(), copied.end());
    }

    TextOptions &options_;
    bool full_ = false; // the text became too long; nothing more is read
    size_t copies_ = 0;
    bool pictureCopy_ = false; // the text that comes next begins with a picture string
    const CopyPath &path_;
    std::vector<std::string> &dependencies_;
};

} // namespace

std::vector<Token> readSource(uint32_t file, TextOptions &options, const CopyPath &path,
                              std::vector<std::string> &dependencies)
{
    Reader reader(options, path, dependencies);
    std::vector<Token> tokens;
    tokens.reserve(sources()[file].text.size() / 4); // most sources have fewer
    reader.file(file, tokens, 0);
    return reader.replaceStatements(std::move(tokens));
}

// A literal as it can be read again: what has no place in a line goes by its code.
static std::string printLiteral(std::string_view text, StringForm form)
{
    std::string out;
    const bool plain = std::none_of(text.begin(), text.end(), [](unsigned char c) { return c < ' ' || c == 0x7F; });
    for (char c : text) {
        constexpr char digits[] = "0123456789ABCDEF";
        const auto byte = static_cast<unsigned char>(c);
        if (plain)
            out.append(c == '"' ? 2 : 1, c);
        else
            out += {digits[byte >> 4], digits[byte & 15]};
    }
    return (!plain ? "X\"" : form == StringForm::National ? "N\"" : "\"") + out + "\"";
}

std::string printTokens(const std::vector<Token> &tokens)
{
    std::string out;
    Spot last;
    for (const Token &token : tokens) {
        if (token.kind == TokenKind::End) break;
        if (token.commaBefore) out += ',';
        if (token.spot.file != last.file || token.spot.line != last.line) {
            if (!out.empty()) out += '\n';
            // A line that begins with D and a blank would be a debugging line.
            out += !token.areaA ? "    " : token.text.size() == 1 ? " " : "";
        } else if (token.spaceBefore) {
            out += ' ';
        }
        last = token.spot;
        if (token.kind == TokenKind::String)
            out += printLiteral(token.text, token.form);
        else
            out += token.text;
    }
    return out + "\n";
}

} // namespace kvrcob
