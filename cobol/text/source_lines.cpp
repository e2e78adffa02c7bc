// See source_lines.h.
//
// In fixed form columns 1 to 6 and those after 72 say nothing, column 7 is the indicator: "*" and
// "/" comment, "D" debugging line, "-" continuation. A continued word goes on at the first
// character that is no blank; a continued literal is filled up to column 72 and goes on after the
// quotation mark of the next line. So the reader keeps track of literals that are open at a line's
// end.
//
// What conditional compilation leaves out (conditional_text.h) and comment entries of the
// IDENTIFICATION DIVISION go here, too: their lines are no program text, and what is in them need
// not even be words.
#include "cobol/text/source_lines.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <string_view>

#include "cobol/text/conditional_text.h"
#include "cobol/text/line_text.h"

namespace kvrcob {
namespace {

// The reader of one file.
class LineReader {
public:
    LineReader(uint32_t file, TextOptions &options) : options_(options), conditions_(options)
    {
        out_.file = file;
        const SourceFile &source = sources()[file];
        format_ = options.format != SourceFormat::Unknown ? options.format : guessFormat(source.text);
        // A text that is copied into a free one is free, unless it shows that it is not.
        if (options.format == SourceFormat::Unknown && source.includedAt.line && format_ == SourceFormat::Fixed &&
            options.freeFiles.count(source.includedAt.file) && !showsFixed(source.text))
            format_ = SourceFormat::Free;
        out_.format = format_;
    }

    RunningText read()
    {
        const std::string &text = sources()[out_.file].text;
        const bool tabs = text.find('\t') != std::string::npos;
        mayDirect_ = text.find('$') != std::string::npos || text.find(">>") != std::string::npos;
        out_.text.reserve(text.size());
        out_.marks.reserve(text.size() / 20); // a line is seldom shorter
        size_t from = 0;
        while (from < text.size()) {
            size_t to = text.find('\n', from);
            if (to == std::string::npos) to = text.size();
            size_t end = to;
            while (end > from && (text[end - 1] == '\r' || text[end - 1] == 0x1A)) end--;
            line_++;
            std::string_view raw(text.data() + from, end - from);
            if (tabs && raw.find('\t') != std::string_view::npos)
                oneLine(expandTabs(raw, options_.tabStop));
            else
                oneLine(raw);
            from = to + 1;
        }
        conditions_.end();
        if (format_ == SourceFormat::Free) options_.freeFiles.insert(out_.file);
        return std::move(out_);
    }

private:
    Spot here(uint32_t column = 1) const { return {out_.file, line_, column, 1}; }

    void oneLine(std::string_view line)
    {
        if (mayDirect_ && directive(line)) return;
        if (conditions_.skipping()) return;
        if (format_ == SourceFormat::Free)
            freeLine(line);
        else
            fixedLine(line);
    }

    // ---- Directives

    bool directive(std::string_view line)
    {
        std::string_view body = trimLeft(line);
        if (format_ != SourceFormat::Free && body.size() < line.size() && line.size() > 6 &&
            (line[6] == '*' || line[6] == '/'))
            return false;
        if (!body.starts_with(">>") && line.size() > 8 && line[7] == '>' && line[8] == '>') body = line.substr(7);
        const bool dollar =
            (format_ != SourceFormat::Free && line.size() > 7 && line[6] == '$') || body.starts_with('$');
        if (!body.starts_with(">>") && !dollar) return false;
        const std::string_view written = dollar ? line.substr(line.find('$') + 1) : body.substr(2);
        const std::vector<std::string> words = ConditionalText::split(written);
        const std::string verb = words.empty() ? "" : words[0];
        if (conditions_.directive(words, dollar, here()) || conditions_.skipping()) return true;
        if (verb == "DEFINE")
            conditions_.define(words);
        else if (verb == "SOURCE" || verb == "SET")
            setFormat(upperOf(written));
        else if (verb == "D")
            debugLine(line);
        else if (std::find(std::begin(kNoEffect), std::end(kNoEffect), verb) == std::end(kNoEffect))
            diagnostics().warning("directive", here(), "the directive >>" + verb + " is not known and has no effect");
        return true;
    }

    // Known, and without effect here.
    static constexpr std::string_view kNoEffect[] = {
        "TURN", "LISTING", "PAGE", "CALL-CONVENTION", "FLAG-02", "FLAG-85", "LEAP-SECOND", "PROPAGATE", "COBOL-WORDS"};

    void setFormat(const std::string &text)
    {
        if (text.find("FREE") != std::string::npos)
            format_ = SourceFormat::Free;
        else if (text.find("VARIABLE") != std::string::npos)
            format_ = SourceFormat::Variable;
        else if (text.find("FIXED") != std::string::npos)
            format_ = SourceFormat::Fixed;
    }

    // >>D: a line for debugging.
    void debugLine(std::string_view line)
    {
        size_t at = line.find(">>");
        std::string_view rest = line.substr(std::min(line.size(), at + 3));
        append(std::string(1, kDebugLine) + std::string(rest), static_cast<uint32_t>(at + 4));
        out_.text += '\n';
    }

    // ---- Comment entries: AUTHOR and its like, up to the next line that begins in area A.

    static bool isEntry(const std::string &word)
    {
        static const char *const entries[] = {"AUTHOR",        "INSTALLATION", "DATE-WRITTEN",
                                              "DATE-COMPILED", "SECURITY",     "REMARKS"};
        return std::any_of(std::begin(entries), std::end(entries), [&](const char *e) { return word == e; });
    }

    // True for a line that is not to be read. `body` begins in `column`.
    bool commentEntry(std::string_view body, uint32_t column, bool beginsInAreaA)
    {
        if (!inIdentification_ && !inEntry_ && !first_ && !beginsInAreaA) return false; // most lines
        std::string word = firstWord(body);
        if (word.empty()) return inEntry_;
        if ((word == "IDENTIFICATION" || word == "ID") && beginsInAreaA &&
            upperOf(body).find("DIVISION") != std::string::npos) {
            inIdentification_ = true;
            inEntry_ = false;
            return false;
        }
        // A copied text may begin inside the division.
        bool first = first_;
        first_ = false;
        if (first && (word == "PROGRAM-ID" || isEntry(word))) inIdentification_ = true;
        if (!inIdentification_) return false;
        if (beginsInAreaA &&
            (word == "ENVIRONMENT" || word == "DATA" || word == "PROCEDURE" || word == "WORKING-STORAGE" ||
             word == "CONFIGURATION" || word == "LINKAGE" || word == "FILE" || word == "INPUT-OUTPUT") &&
            (upperOf(body).find("DIVISION") != std::string::npos ||
             upperOf(body).find("SECTION") != std::string::npos)) {
            inIdentification_ = inEntry_ = false;
            return false;
        }
        if (beginsInAreaA && isEntry(word)) {
            std::string_view rest = trimLeft(body).substr(word.size());
            rest = trimLeft(rest);
            if (rest.empty() || rest[0] == '.') {
                column += static_cast<uint32_t>(body.size() - trimLeft(body).size());
                Spot spot{out_.file, line_, column, static_cast<uint32_t>(word.size())};
                diagnostics().warning("obsolete", spot, "the paragraph " + word + " is obsolete");
                inEntry_ = true;
                return true;
            }
        }
        if (inEntry_ && beginsInAreaA &&
            (format_ != SourceFormat::Free || word == "PROGRAM-ID" || word == "COPY" || word == "OPTIONS"))
            inEntry_ = false;
        return inEntry_;
    }

    // ---- The formats

    void append(std::string_view text, uint32_t column)
    {
        out_.marks.push_back({out_.text.size(), line_, column});
        out_.text.append(text);
    }

    // Follows the literals of a piece of text: open_ is the quotation mark of one that is open at
    // its end. Comments after *> end the piece.
    std::string_view track(std::string_view text)
    {
        const auto has = [text](char c) { return text.find(c) != std::string_view::npos; };
        if (!open_ && !has('"') && !has('\'') && !has('*')) return text; // most lines
        for (size_t i = 0; i < text.size(); i++) {
            char c = text[i];
            if (open_) {
                if (c == open_) open_ = 0;
            } else if (c == '"' || c == '\'') {
                open_ = c;
            } else if (c == '*' && i + 1 < text.size() && text[i + 1] == '>') {
                return text.substr(0, i);
            }
        }
        return text;
    }

    // Whether a line begins with this word, in any case; then `rest` is what comes after it.
    static bool beginsWith(std::string_view body, std::string_view word, std::string_view &rest)
    {
        if (body.size() < word.size()) return false;
        for (size_t i = 0; i < word.size(); i++)
            if (std::toupper(static_cast<unsigned char>(body[i])) != word[i]) return false;
        rest = body.substr(word.size());
        if (!rest.empty() && rest[0] != ' ' && rest[0] != '.') return false;
        rest = trimLeft(rest);
        return true;
    }

    // EJECT, SKIP1 and their like only lay out a listing; CBL and PROCESS name options of other
    // compilers, before the program.
    bool listingLine(std::string_view body) const
    {
        if (open_ || !std::strchr("EeSsTtCcPp@", body[0])) return false; // most lines
        std::string_view rest;
        for (std::string_view word : {"EJECT", "SKIP1", "SKIP2", "SKIP3"})
            if (beginsWith(body, word, rest)) return rest.find_first_not_of(". ") == std::string_view::npos;
        if (beginsWith(body, "TITLE", rest)) return rest.starts_with('"') || rest.starts_with('\'');
        for (std::string_view word : {"CBL", "PROCESS", "@OPTIONS"})
            if (beginsWith(body, word, rest)) return out_.text.find_first_not_of(" \n") == std::string::npos;
        return false;
    }

    // "* TEXT" in column 1, as editors with tabs leave it. "*CR123 MOVE" is code with a mark.
    static bool commentInColumnOne(std::string_view line)
    {
        if (line[0] != '*') return false;
        bool isIndicator = std::strchr(" -Dd", line[6]);
        bool blankArea = line.substr(1, 5).find_first_not_of(' ') == std::string_view::npos;
        if (blankArea) return line[6] == ' ' || !isIndicator;
        return !isIndicator || std::strchr(" *-=", line[1]);
    }

    void fixedLine(std::string_view line)
    {
        if (line.size() < 7) return;
        char indicator = line[6];
        size_t limit = format_ == SourceFormat::Variable ? line.size() : std::min<size_t>(line.size(), 72);
        std::string_view body = line.substr(7, limit > 7 ? limit - 7 : 0);
        if (indicator == '*' || indicator == '/' || commentInColumnOne(line)) return;
        if (indicator == '-') {
            continuation(body);
            return;
        }
        if (indicator != ' ' && indicator != 'D' && indicator != 'd' && !badIndicator_) {
            badIndicator_ = true;
            diagnostics().warning("indicator", here(7),
                                  "this character in column 7 is no indicator; use -free for a source in free form");
        }
        if (limit == 72 && line.size() > 72 && line[71] != ' ' && line[72] != ' ') sources().noteCutLine(here(73));
        const std::string_view words = trimLeft(body);
        if (words.empty() || listingLine(words)) return;
        const bool areaA = body.size() - words.size() < 4;
        if (commentEntry(body, 8, areaA)) return;
        open_ = 0;
        openColumns_ = 0;
        bool debug = indicator == 'D' || indicator == 'd';
        if (debug) out_.text += kDebugLine;
        append(track(body), 8);
        openColumns_ = open_ ? body.size() : 0;
        columns_ = body.size();
        out_.text += '\n';
    }

    void continuation(std::string_view body)
    {
        if (inEntry_) return;
        size_t first = body.find_first_not_of(' ');
        if (first == std::string_view::npos) return;
        if (!out_.text.empty() && out_.text.back() == '\n') out_.text.pop_back();
        if (open_) {
            // The literal reaches to column 72 of the line before.
            if (format_ == SourceFormat::Fixed && openColumns_ < 65) out_.text.append(65 - openColumns_, ' ');
            char quote = open_;
            if (body[first] != quote) {
                diagnostics().error(here(static_cast<uint32_t>(first) + 8),
                                    "the continuation of a literal begins with its quotation mark");
                open_ = 0;
            } else {
                first++;
            }
        } else {
            // A literal that is closed at the end of its line goes on if its quotation mark is
            // repeated here: "" in two halves. From column 72 the literal reaches over to here, so
            // that the first of two marks is that of the continuation.
            char last = out_.text.empty() ? ' ' : out_.text.back();
            if (columns_ == 65 && (last == '"' || last == '\'') && body.substr(first, 2) == std::string(2, last))
                first++;
            while (!out_.text.empty() && out_.text.back() == ' ') out_.text.pop_back();
        }
        std::string_view rest = body.substr(first);
        append(track(rest), static_cast<uint32_t>(first) + 8);
        openColumns_ = open_ ? body.size() : 0;
        columns_ = body.size();
        out_.text += '\n';
    }

    void freeLine(std::string_view line)
    {
        std::string_view body = trimLeft(line);
        if (body.empty()) return;
        if (!open_ && (body.substr(0, 2) == "*>" || (body[0] == '*' && line[0] == '*'))) return;
        // A fixed-form comment in a source that was taken for free form.
        if (!open_ && line.size() > 6 && line.substr(0, 6).find_first_not_of(' ') == std::string_view::npos &&
            line[6] == '*')
            return;
        if (!open_ && commentEntry(line, 1, true)) return;
        if ((body[0] == 'D' || body[0] == 'd') && body.size() > 1 && body[1] == ' ' && line[0] == body[0]) {
            out_.text += kDebugLine;
            append(track(body.substr(2)), 3);
            out_.text += '\n';
            return;
        }
        // A literal goes on in the next line if it ends with its quotation mark and "-", as in
        // "abc"-.
        std::string_view text = line;
        if (pending_) {
            size_t first = text.find_first_not_of(' ');
            if (first != std::string_view::npos && text[first] == pending_) {
                // Take back the closing mark of the line before.
                while (!out_.text.empty() && out_.text.back() != pending_) out_.text.pop_back();
                if (!out_.text.empty()) out_.text.pop_back();
                open_ = pending_;
                std::string_view rest = text.substr(first + 1);
                finishFree(rest, static_cast<uint32_t>(first) + 2);
                return;
            }
            pending_ = 0;
        }
        open_ = 0;
        finishFree(text, 1);
    }

    void finishFree(std::string_view text, uint32_t column)
    {
        std::string_view kept = track(text);
        pending_ = 0;
        size_t end = kept.size();
        while (end > 0 && kept[end - 1] == ' ') end--;
        if (!open_ && end >= 2 && kept[end - 1] == '-' && (kept[end - 2] == '"' || kept[end - 2] == '\'')) {
            pending_ = kept[end - 2];
            kept = kept.substr(0, end - 1);
        }
        append(kept, column);
        out_.text += '\n';
        open_ = 0;
    }

    TextOptions &options_;
    RunningText out_;
    SourceFormat format_ = SourceFormat::Fixed;
    uint32_t line_ = 0;
    ConditionalText conditions_;
    bool inIdentification_ = false, inEntry_ = false, badIndicator_ = false, first_ = true;
    bool mayDirect_ = false; // there is a mark of a directive somewhere
    char open_ = 0, pending_ = 0;
    size_t openColumns_ = 0;
    size_t columns_ = 0; // of the line before, from column 8
};

} // namespace

// The lexer asks from one end of the text to the other, mostly within one line.
Spot RunningText::spot(size_t offset) const
{
    if (marks.empty() || marks.front().offset > offset) return {file, 1, 1, 1};
    if (marks[last].offset > offset) last = 0;
    while (last + 1 < marks.size() && marks[last + 1].offset <= offset) last++;
    const Mark &mark = marks[last];
    return {file, mark.line, mark.column + static_cast<uint32_t>(offset - mark.offset), 1};
}

RunningText readLines(uint32_t file, TextOptions &options) { return LineReader(file, options).read(); }

} // namespace kvrcob
