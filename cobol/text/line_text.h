// Pieces of one source line.
#pragma once

#include <cctype>
#include <string>
#include <string_view>

namespace kvrcob {

inline std::string_view trimLeft(std::string_view text)
{
    size_t i = 0;
    while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) i++;
    return text.substr(i);
}

inline std::string upperOf(std::string_view text)
{
    std::string out(text);
    for (char &c : out) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return out;
}

inline bool isWordByte(unsigned char c) { return std::isalnum(c) || c == '-' || c == '_' || c >= 0x80; }

inline std::string firstWord(std::string_view text)
{
    text = trimLeft(text);
    size_t n = 0;
    while (n < text.size() && isWordByte(static_cast<unsigned char>(text[n]))) n++;
    return upperOf(text.substr(0, n));
}

inline std::string expandTabs(std::string_view line, int tabStop)
{
    std::string out;
    out.reserve(line.size());
    for (char c : line) {
        if (c == '\t') {
            do out += ' ';
            while (out.size() % static_cast<size_t>(tabStop) != 0);
        } else {
            out += c;
        }
    }
    return out;
}

} // namespace kvrcob
