// See diagnostics.h.
#include "cobol/diagnostics.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
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

static std::string jsonText(std::string_view text)
{
    std::string out = "\"";
    for (unsigned char c : text) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += static_cast<char>(c);
        } else if (c < 0x20) {
            char code[8];
            std::snprintf(code, sizeof code, "\\u%04x", c);
            out += code;
        } else {
            out += static_cast<char>(c);
        }
    }
    return out + "\"";
}

void Diagnostics::show(const char *severity, Spot spot, const std::string &text, const char *name)
{
    const std::string path =
        sources && spot.line && spot.file < sources->size() ? (*sources)[spot.file].path : "kvrcob";
    if (json) {
        std::fprintf(stderr, "{\"file\":%s,\"line\":%u,\"column\":%u,\"severity\":\"%s\",\"message\":%s%s%s%s}\n",
                     jsonText(path).c_str(), spot.line, spot.column, severity, jsonText(text).c_str(),
                     name ? ",\"option\":\"-W" : "", name ? name : "", name ? "\"" : "");
        return;
    }
    if (spot.line == 0) {
        std::fprintf(stderr, "%s: %s: %s\n", path.c_str(), severity, text.c_str());
        return;
    }
    std::fprintf(stderr, "%s:%u:%u: %s: %s", path.c_str(), spot.line, spot.column, severity, text.c_str());
    if (name) std::fprintf(stderr, " [-W%s]", name);
    std::fputc('\n', stderr);

    // The source line, tabs kept before the caret so that it is below its column. Very
    // long lines are shown in part.
    std::string_view line = sources->line(spot);
    size_t column = spot.column ? spot.column - 1 : 0, from = 0;
    if (line.size() > 200 && column > 100) from = column - 100;
    if (from > line.size()) from = line.size();
    std::string_view part = line.substr(from, 200);
    std::fprintf(stderr, " %.*s\n ", static_cast<int>(part.size()), part.data());
    for (size_t i = from; i < column && i - from < 200; i++)
        std::fputc(i < line.size() && line[i] == '\t' ? '\t' : ' ', stderr);
    std::fputc('^', stderr);
    for (uint32_t i = 1; i < spot.length && i < 60 && column + i < line.size(); i++) std::fputc('~', stderr);
    std::fputc('\n', stderr);

    // Where the copybook came from.
    for (Spot at = (*sources)[spot.file].includedAt; at.line; at = (*sources)[at.file].includedAt)
        std::fprintf(stderr, "%s:%u:%u: note: copied from here\n", (*sources)[at.file].path.c_str(), at.line,
                     at.column);
}

void Diagnostics::error(Spot spot, const std::string &text)
{
    // One error a place: what follows from the first one is noise.
    uint64_t place = static_cast<uint64_t>(spot.file) << 32 | spot.line;
    lastShown_ = placesOfErrors_.insert({place, spot.column}).second && errors_ < limit;
    if (lastShown_) {
        show("error", spot, text, nullptr);
        tellOfCutLine(spot);
    }
    if (++errors_ == limit) std::fprintf(stderr, "kvrcob: too many errors, no more are shown\n");
}

// What is wrong with a line, or the one after it, is often what column 72 has cut off.
void Diagnostics::tellOfCutLine(const Spot &spot)
{
    if (!sources || spot.line == 0 || spot.file >= sources->size()) return;
    const std::vector<uint32_t> &cut = (*sources)[spot.file].cutLines;
    for (uint32_t line : {spot.line, spot.line - 1})
        if (std::binary_search(cut.begin(), cut.end(), line) && toldOf_.insert({spot.file, line}).second)
            show("note", {spot.file, line, 73, 1},
                 "fixed form ends with column 72: what follows is not read; -variable reads it", nullptr);
}

void Diagnostics::warning(const char *name, Spot spot, const std::string &text)
{
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
    if (lastShown_) show("note", spot, text, nullptr);
}

void Diagnostics::fatal(const std::string &text)
{
    errors_++;
    show("error", Spot{}, text, nullptr);
}

} // namespace kvrcob
