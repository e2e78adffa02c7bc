// A file as a COBOL program uses it: the records that the compiler lays out, and the verbs through
// the library and the module of the file system.
//
//     FileProgram file("lsq-in.txt", shape);
//     if (!file.open(ZVK_OPEN_INPUT)) return kFailed; // it has said why
//     while (file.readNext()) use(file.record());
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "kvr2/kvr2.h"
#include "tools/file_tool.h"

namespace file_tool {

class FileProgram {
public:
    // `name`: as a program's ASSIGN has it, "lsq-/data/in.txt".
    FileProgram(const std::string &name, const Shape &shape, bool randomAccess = false);
    ~FileProgram(); // closes without a word
    FileProgram(const FileProgram &) = delete;
    FileProgram &operator=(const FileProgram &) = delete;

    bool open(uint16_t mode); // ZVK_OPEN_...
    bool close();
    // False at the end of the file and on a failure, which `failed` tells apart and has said.
    bool readNext();
    // START FIRST with a key.
    bool startFirst(uint32_t key);
    // Above "09": refused. `number` of a relative file; 0 is the next one.
    std::string write(std::string_view record, uint64_t number = 0);

    std::string_view record() const;
    uint64_t number() const { return fcb_->recordNumber; }
    const std::string &status() const { return status_; }
    bool cut() const { return status_ == "04" || status_ == "06"; } // the last READ
    bool failed() const { return failed_; }
    std::string reason() const; // of the last status, in words
    const Shape &shape() const { return shape_; }

private:
    struct Records;
    std::unique_ptr<Records> all_;
    FCB *fcb_;
    Shape shape_;
    std::string name_, status_;
    bool open_ = false, failed_ = false;

    bool took(const char *verb);
};

// Are both the same file, by whatever names? Says so.
bool isSameFile(const std::string &one, const std::string &two);

// The name without its prefix, and the prefix ("" for none).
std::string pathOf(const std::string &name);
std::string prefixOf(const std::string &name);

// What a prefix says: records after a header of our own; lines.
bool isStored(const std::string &prefix);
bool isLines(const std::string &prefix);

// Shape of an existing file: out of its header, or what the command line says. Gives the name its
// prefix. False: it has said why.
bool findShape(std::string &name, const Arguments &arguments, Shape *shape);

} // namespace file_tool
