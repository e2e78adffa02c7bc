// Everything that kvrcob says about a source: errors, warnings, notes, in one place.
//
// A message names a spot: a file (or rather one reading of it: a copybook that is copied twice is
// read twice), a line, a column. Shown is `file:line:column: error: text`, the source line with a
// caret, and for a copybook's line a note at the COPY that brought it in. Warnings carry the name
// of the option that turns them off. With -fdiagnostics-format=json each message, and each note, is
// one JSON object on a line of its own. Columns are those of the reference format: tabs reach to
// their stops, other bytes count one each.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace kvrcob {

// A place in a source. `file` indexes Sources; column and line count from 1, 0 is "nowhere".
struct Spot {
    uint32_t file = 0;
    uint32_t line = 0;
    uint32_t column = 0;
    uint32_t length = 1;
};

// One reading of a file.
struct SourceFile {
    std::string path;
    std::string text;
    std::vector<size_t> lineStarts; // when a line was shown
    Spot includedAt;                // the COPY; line 0 for the main source
    // Lines of fixed form whose text goes on where column 73 begins, in order.
    std::vector<uint32_t> cutLines;
};

class Sources {
public:
    // Reads a file; -1 if it cannot be read.
    int open(const std::string &path, Spot includedAt);
    const SourceFile &operator[](uint32_t index) const { return files_[index]; }
    // A file that cannot be read as a source is empty from here on.
    void forget(uint32_t index) { files_[index].text.clear(), files_[index].lineStarts.clear(); }
    void noteCutLine(const Spot &spot) { files_[spot.file].cutLines.push_back(spot.line); }
    size_t size() const { return files_.size(); }
    const std::vector<size_t> &lineStarts(uint32_t file);
    std::string_view line(const Spot &spot);

private:
    std::vector<SourceFile> files_;
};

class Diagnostics {
public:
    void error(Spot spot, const std::string &text);
    void warning(const char *name, Spot spot, const std::string &text);
    void note(Spot spot, const std::string &text);
    // An error that has no place in a source.
    void fatal(const std::string &text);
    // -WNAME and -Wno-NAME.
    void choose(const std::string &name, bool on);

    size_t errors() const { return errors_; }
    // No error is shown any more: what would only better its text need not be looked for.
    bool full() const { return errors_ >= limit; }

    bool json = false;
    bool warningsAreErrors = false;
    int tabStop = 8;
    std::set<std::string, std::less<>> disabled, enabled; // warnings, by name
    size_t limit = 100;                                   // errors shown
    Sources *sources = nullptr;

private:
    bool hasPlace(const Spot &spot) const { return sources && spot.line && spot.file < sources->size(); }
    void show(const char *severity, Spot spot, const std::string &text, const char *name = nullptr) const;
    void tell(const char *severity, const Spot &spot, std::string text, const char *name) const;
    void showLine(const Spot &spot) const;
    void tellOfCutLine(const Spot &spot);
    size_t errors_ = 0;
    bool lastShown_ = true;
    std::set<std::pair<uint64_t, uint64_t>> placesOfErrors_;
    std::set<std::pair<uint32_t, uint32_t>> toldOf_; // file and line
};

Diagnostics &diagnostics();
Sources &sources();

} // namespace kvrcob
