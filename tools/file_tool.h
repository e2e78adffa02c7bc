// What the commands of kvr2-file share: exit statuses, arguments, messages, progress.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "kvr2/file_records.h"

namespace file_tool {

enum Outcome : int {
    kDone = 0,
    kFailed = 1,  // nothing was done, or not all of it
    kUsage = 2,   // the command line makes no sense
    kDamaged = 3, // done, but something is damaged, was lost or refused
};

// What a program says of a file in its SELECT and FD.
struct Shape {
    uint8_t organization = 0; // ZVK_FILE_INDEXED, ZVK_FILE_RELATIVE, 0: sequential
    uint32_t longest = 0, shortest = 0;
    std::vector<FileKey> keys;
    std::vector<FileKey> parts; // of keys of several parts, those after the first, as in a FIB

    bool indexed() const { return organization & ZVK_FILE_INDEXED; }
    bool relative() const { return organization & ZVK_FILE_RELATIVE; }
    bool variable() const { return longest != shortest; }
};

// One column of a CSV file, one member of a JSON object.
struct Field {
    // native: binary as this machine has it; floating: COMP-1 and COMP-2; bytes: hexadecimal
    enum Form : uint8_t { text, zoned, packed, binary, native, floating, bytes };
    std::string name;
    uint32_t position = 0, length = 0;
    Form form = text;
    uint32_t scale = 0; // digits after the decimal point
    bool isSigned = false;
};

enum class Format { lsq, rsd, csv, jsonLines };

struct Arguments {
    std::vector<std::string> names;
    Format format = Format::lsq;
    bool formatGiven = false, shapeGiven = false, hexadecimal = false, force = false, create = false;
    Shape shape; // of a file that has no header, or is to be made
    std::vector<Field> fields;
    uint32_t key = 0; // dump: in the order of this key
};

// One line on the standard error stream, with the tool's name in front.
void say(const char *format, ...) __attribute__((format(printf, 1, 2)));

// Takes a line of progress away, before another text comes to the terminal.
void clearProgress();

// Work that may take long, in percent, while somebody looks on: on a terminal only. Not `wanted`
// where the work's result goes there, too.
class Progress {
public:
    Progress(const char *what, uint64_t total, bool wanted = true);
    ~Progress();
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;
    void at(uint64_t done);
    void step() { at(done_ + 1); }

private:
    const char *what_;
    uint64_t total_, done_ = 0;
    int64_t shown_ = 0; // milliseconds
    bool visible_;
};

// The commands. Each returns an Outcome and has said why it is not kDone.
int runInfo(const Arguments &arguments);
int runDump(const Arguments &arguments);
int runLoad(const Arguments &arguments);
int runCopy(const Arguments &arguments);
int runVerify(const Arguments &arguments);
int runRebuild(const Arguments &arguments);
int runCompact(const Arguments &arguments);
int runBackup(const Arguments &arguments);
int runKeysAdd(const Arguments &arguments);
int runKeysDrop(const Arguments &arguments);

} // namespace file_tool
