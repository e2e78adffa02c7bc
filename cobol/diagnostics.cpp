// See diagnostics.h.
#include "cobol/diagnostics.h"

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <sys/stat.h>

namespace kvrcob {

Diagnostics &diagnostics()
{
    static Diagnostics all;
    return all;
}

Sources &sources()
{
    static Sources all;
    return all;
}

int Sources::open(const std::string &path, Spot includedAt)
{
    FILE *stream = path == "-" ? stdin : std::fopen(path.c_str(), "rb");
    if (!stream) return -1;
    SourceFile file;
    file.path = path;
    file.includedAt = includedAt;
    struct stat info;
    if (fstat(fileno(stream), &info) == 0 && S_ISREG(info.st_mode))
        file.text.reserve(static_cast<size_t>(info.st_size));
    char buffer[65536];
    size_t got;
    while ((got = std::fread(buffer, 1, sizeof buffer, stream)) > 0) file.text.append(buffer, got);
    int failure = std::ferror(stream) ? errno : 0; // a directory, for one
    if (stream != stdin) std::fclose(stream);
    if (failure) {
        errno = failure;
        return -1;
    }
    // Lines that end with a carriage return alone.
    if (file.text.find('\n') == std::string::npos) std::replace(file.text.begin(), file.text.end(), '\r', '\n');
    files_.push_back(std::move(file));
    return static_cast<int>(files_.size()) - 1;
}

// Only what tells something of a source needs them.
const std::vector<size_t> &Sources::lineStarts(uint32_t index)
{
    SourceFile &file = files_[index];
    if (file.lineStarts.empty()) {
        file.lineStarts.push_back(0);
        for (size_t at = 0; (at = file.text.find('\n', at)) != std::string::npos;) file.lineStarts.push_back(++at);
    }
    return file.lineStarts;
}

std::string_view Sources::line(const Spot &spot)
{
    if (spot.line == 0 || spot.file >= files_.size()) return {};
    const std::vector<size_t> &starts = lineStarts(spot.file);
    if (spot.line > starts.size()) return {};
    const std::string_view text = files_[spot.file].text;
    size_t from = starts[spot.line - 1], to = spot.line < starts.size() ? starts[spot.line] : text.size();
    while (to > from && (text[to - 1] == '\n' || text[to - 1] == '\r')) to--;
    return text.substr(from, to - from);
}

// The bytes of the UTF-8 character at i and its number, or 1 byte and 0 where there is none.
static size_t characterAt(std::string_view text, size_t i, uint32_t &code)
{
    const auto byte = [&](size_t at) { return static_cast<unsigned char>(text[at]); };
    const unsigned char first = byte(i);
    const size_t n = first < 0x80 ? 1 : first < 0xC2 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : first < 0xF5 ? 4 : 0;
    code = 0;
    if (n == 0 || i + n > text.size()) return 1;
    uint32_t found = n == 1 ? first : first & (0x7F >> n);
    for (size_t k = 1; k < n; k++) {
        if ((byte(i + k) & 0xC0) != 0x80) return 1;
        found = found << 6 | (byte(i + k) & 0x3F);
    }
    const bool overlong = (n == 3 && found < 0x800) || (n == 4 && found < 0x10000);
    if (overlong || (found >= 0xD800 && found < 0xE000) || found > 0x10FFFF) return 1;
    code = found;
    return n;
}

// JSON is UTF-8: a byte that is none becomes the character that stands for what cannot be shown.
static std::string jsonText(std::string_view text)
{
    std::string out = "\"";
    for (size_t i = 0, n; i < text.size(); i += n) {
        uint32_t code;
        n = characterAt(text, i, code);
        if (code == '"' || code == '\\') {
            out += '\\';
            out += text[i];
        } else if (code < 0x20 && (code || !text[i])) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", code);
            out += escape;
        } else if (code) {
            out += text.substr(i, n);
        } else {
            out += "\\ufffd";
        }
    }
    return out + "\"";
}

static bool isControl(uint32_t code, char byte)
{
    return (code > 0 && code < 0x20) || (code >= 0x7F && code < 0xA0) || byte == 0;
}

// How many cells of a terminal a character takes: none where it joins the one before, two where it
// is as wide as an ideograph.
static size_t cellsOf(uint32_t code)
{
    if ((code >= 0x300 && code < 0x370) || (code >= 0x200B && code < 0x2010) || code == 0xFEFF) return 0;
    static constexpr uint32_t wide[][2] = {{0x1100, 0x1160}, {0x2E80, 0xA4D0}, {0xAC00, 0xD7A4},   {0xF900, 0xFB00},
                                           {0xFE30, 0xFE70}, {0xFF00, 0xFF61}, {0x1F300, 0x1FB00}, {0x20000, 0x40000}};
    for (const auto &[from, to] : wide)
        if (code >= from && code < to) return 2;
    return 1;
}

// The source line with a caret below its column, and the rest of what is meant underlined. A very
// long line is shown in part. What would move a terminal's cursor is shown as "?".
void Diagnostics::showLine(const Spot &spot) const
{
    const std::string_view line = sources->line(spot);
    const size_t target = spot.column ? spot.column - 1 : 0, end = target + std::min(spot.length, 60u);
    const size_t from = line.size() > 200 && target > 100 ? target - 100 : 0;
    std::string shown;
    size_t column = 0, cells = 0, caret = 0, underlined = 0;
    for (size_t i = 0, n; i < line.size() && column < from + 200; i += n) {
        uint32_t code;
        n = characterAt(line, i, code);
        const size_t stop = static_cast<size_t>(tabStop), tab = line[i] == '\t' ? stop - column % stop : 0;
        const size_t width = tab ? tab : cellsOf(code);
        if (column >= from) {
            if (column <= target) caret = cells;
            if (column > target && column < end) underlined += width;
            cells += width;
            if (tab)
                shown.append(tab, ' ');
            else if (isControl(code, line[i]))
                shown += '?';
            else
                shown += line.substr(i, n);
        }
        column += tab ? tab : n;
    }
    if (target >= column) caret = cells + (target - column);
    std::fprintf(stderr, " %s\n %s^%s\n", shown.c_str(), std::string(caret, ' ').c_str(),
                 std::string(underlined, '~').c_str());
}

// One message without the source's line. A word of a million letters is not told whole.
void Diagnostics::tell(const char *severity, const Spot &spot, std::string text, const char *name) const
{
    constexpr size_t kLongest = 1000;
    if (text.size() > kLongest) text = text.substr(0, kLongest) + "...";
    const bool placed = hasPlace(spot);
    const std::string path = placed ? (*sources)[spot.file].path : "kvrcob";
    if (json) {
        std::fprintf(stderr, "{\"file\":%s,\"line\":%u,\"column\":%u,\"severity\":\"%s\",\"message\":%s%s%s%s}\n",
                     jsonText(path).c_str(), spot.line, spot.column, severity, jsonText(text).c_str(),
                     name ? ",\"option\":\"-W" : "", name ? name : "", name ? "\"" : "");
        return;
    }
    for (char &c : text)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = '?';
    std::fprintf(stderr, "%s:", path.c_str());
    if (placed) std::fprintf(stderr, "%u:%u:", spot.line, spot.column);
    std::fprintf(stderr, " %s: %s", severity, text.c_str());
    if (name) std::fprintf(stderr, " [-W%s]", name);
    std::fputc('\n', stderr);
}

void Diagnostics::show(const char *severity, Spot spot, const std::string &text, const char *name) const
{
    tell(severity, spot, text, name);
    if (!hasPlace(spot)) return;
    if (!json) showLine(spot);
    for (Spot at = (*sources)[spot.file].includedAt; at.line; at = (*sources)[at.file].includedAt)
        tell("note", at, "copied from here", nullptr);
}

// All names that warnings have.
static constexpr std::string_view kWarnings[] = {"alter",     "corresponding", "directive", "evaluate",
                                                 "extension", "indicator",     "level",     "move",
                                                 "obsolete",  "occurs",        "period",    "value"};

void Diagnostics::choose(const std::string &name, bool on)
{
    static constexpr std::string_view groups[] = {"", "all", "extra"};
    if (std::find(std::begin(kWarnings), std::end(kWarnings), name) == std::end(kWarnings) &&
        std::find(std::begin(groups), std::end(groups), name) == std::end(groups))
        show("warning", Spot{}, "there is no warning " + name);
    if (on) {
        enabled.insert(name);
        disabled.erase(name);
    } else {
        enabled.erase(name);
        disabled.insert(name);
    }
}

void Diagnostics::error(Spot spot, const std::string &text)
{
    // One error a place: what follows from the first one is noise.
    uint64_t place = static_cast<uint64_t>(spot.file) << 32 | spot.line;
    lastShown_ = placesOfErrors_.insert({place, spot.column}).second && errors_ < limit;
    if (lastShown_) {
        show("error", spot, text);
        tellOfCutLine(spot);
    }
    if (++errors_ == limit) show("note", Spot{}, "too many errors, no more are shown");
}

// What is wrong with a line, or the one after it, is often what column 72 has cut off.
void Diagnostics::tellOfCutLine(const Spot &spot)
{
    if (!hasPlace(spot)) return;
    const std::vector<uint32_t> &cut = (*sources)[spot.file].cutLines;
    for (uint32_t line : {spot.line, spot.line - 1})
        if (std::binary_search(cut.begin(), cut.end(), line) && toldOf_.insert({spot.file, line}).second)
            show("note", {spot.file, line, 73, 1},
                 "fixed form ends with column 72: what follows is not read; -variable reads it");
}

void Diagnostics::warning(const char *name, Spot spot, const std::string &text)
{
    assert(std::find(std::begin(kWarnings), std::end(kWarnings), name) != std::end(kWarnings));
    lastShown_ = false;
    if (disabled.count(name) || (disabled.count("all") && !enabled.count(name))) return;
    lastShown_ = true;
    if (warningsAreErrors) {
        errors_++;
        show("error", spot, text, name);
    } else {
        show("warning", spot, text, name);
    }
}

void Diagnostics::note(Spot spot, const std::string &text)
{
    if (lastShown_) show("note", spot, text);
}

void Diagnostics::fatal(const std::string &text)
{
    errors_++;
    show("error", Spot{}, text);
}

} // namespace kvrcob
