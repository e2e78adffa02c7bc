// In which reference format a text is, where nobody says so.
//
// The first header tells most: in fixed form it begins in column 8 or after. Copied texts have no
// header; what is in the indicator's column tells.
#include <algorithm>
#include <cstring>

#include "cobol/text/line_text.h"
#include "cobol/text/source_lines.h"

namespace kvrcob {

// A comment's mark in column 7, or sequence numbers.
bool showsFixed(std::string_view text)
{
    size_t lines = 0, numbered = 0;
    for (size_t from = 0; from < text.size() && lines < 400;) {
        const size_t to = std::min(text.find('\n', from), text.size());
        const std::string_view line = text.substr(from, to - from);
        from = to + 1;
        if (trimLeft(line).empty() || line.size() < 7) continue;
        lines++;
        const bool blank = line.find_first_not_of(' ') >= 6;
        const bool digits = line.find_first_not_of("0123456789") == 6;
        if (digits) numbered++;
        if ((blank || digits) && (line[6] == '*' || line[6] == '/') && line.substr(6, 2) != "*>") return true;
    }
    return numbered > 0 && numbered == lines;
}

SourceFormat guessFormat(std::string_view text)
{
    // Where the first header is tells most; a letter in column 7 of a line with text before it
    // tells the rest.
    size_t from = 0, lines = 0, againstFixed = 0, seen = 0, numbered = 0;
    int verdict = 0; // 1 fixed, 2 free
    while (from < text.size() && lines < 400) {
        size_t to = text.find('\n', from);
        if (to == std::string_view::npos) to = text.size();
        std::string_view raw = text.substr(from, to - from);
        from = to + 1;
        lines++;
        while (!raw.empty() && (raw.back() == '\r' || raw.back() == ' ')) raw.remove_suffix(1);
        std::string line = expandTabs(raw.substr(0, 200), 8);
        std::string_view body = trimLeft(line);
        if (body.empty()) continue;
        std::string upper = upperOf(body.substr(0, 60));
        if (upper.rfind(">>SOURCE", 0) == 0 || upper.rfind("$SET SOURCEFORMAT", 0) == 0) {
            if (upper.find("FREE") != std::string::npos)
                return line[0] == ' ' && line.size() > 7 && seen == 0 ? SourceFormat::Fixed : SourceFormat::Free;
            if (upper.find("FIXED") != std::string::npos) return SourceFormat::Fixed;
            if (upper.find("VARIABLE") != std::string::npos) return SourceFormat::Variable;
        }
        if (body.substr(0, 2) == "*>" || body.substr(0, 2) == ">>") continue;
        if (line.size() >= 7 && (line[6] == '*' || line[6] == '/')) continue;
        seen++;
        size_t column = line.size() - body.size(); // from 0
        if (verdict == 0) {
            std::string word = firstWord(body);
            bool header = word == "IDENTIFICATION" || word == "ID" || word == "PROGRAM-ID" || word == "ENVIRONMENT" ||
                          word == "DATA" || word == "PROCEDURE" || word == "WORKING-STORAGE" || word == "FUNCTION-ID";
            if (header) verdict = column >= 7 ? 1 : 2;
            // A sequence number before a header.
            if (!header && line.size() > 8 && line[6] == ' ' && verdict == 0) {
                word = firstWord(std::string_view(line).substr(7));
                if (word == "IDENTIFICATION" || word == "ID" || word == "PROGRAM-ID") verdict = 1;
            }
        }
        if (line.size() > 6 && line.find_first_not_of("0123456789") == 6)
            numbered++;
        else if (line.size() > 7 && !std::strchr(" *-/Dd$", line[6]))
            againstFixed++;
    }
    if (numbered * 2 > seen) return SourceFormat::Fixed; // whatever letters mark lines in column 7
    if (verdict == 2) return SourceFormat::Free;
    if (verdict == 1) return againstFixed > 2 && againstFixed * 4 > seen ? SourceFormat::Free : SourceFormat::Fixed;
    return againstFixed * 4 > seen ? SourceFormat::Free : SourceFormat::Fixed;
}

// UTF-16 and UTF-32 have a mark at their beginning, or a zero in every second byte. EBCDIC has its
// blanks where ASCII has "@", and no ASCII blank.
const char *foreignEncoding(std::string_view text)
{
    using namespace std::literals;
    if (text.starts_with("\xFF\xFE\0\0"sv) || text.starts_with("\0\0\xFE\xFF"sv)) return "UTF-32";
    if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF")) return "UTF-16";
    const std::string_view start = text.substr(0, 400);
    size_t zeros[2] = {}, blanks = 0, ebcdic = 0, own = 0;
    for (size_t i = 0; i < start.size(); i++) {
        const auto c = static_cast<unsigned char>(start[i]);
        if (c == 0) zeros[i % 2]++;
        if (c == 0x20) blanks++;
        if (c == 0x40) ebcdic++;
        // Letters, digits, and what COBOL has most of besides: . - ( ) and the ends of lines.
        const bool letter = (c & 0x0F) <= 9 && ((c >= 0x81 && c <= 0xA9) || (c >= 0xC1 && c <= 0xF9));
        if (letter || c == 0x40 || c == 0x4B || c == 0x60 || c == 0x4D || c == 0x5D || c == 0x15 || c == 0x25) own++;
    }
    const size_t half = start.size() / 2;
    for (size_t k : {0, 1})
        if (half >= 8 && zeros[k] * 4 >= half * 3 && zeros[1 - k] == 0) return "UTF-16";
    if (ebcdic > 0 && blanks == 0 && own * 10 > start.size() * 9) return "EBCDIC";
    return nullptr;
}

} // namespace kvrcob
