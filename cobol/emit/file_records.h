// What the run time is told of each file (file_records.cpp).
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "cobol/meaning/names.h"

namespace kvrcob {

class FileRecords {
public:
    FileRecords(Meaning &meaning, std::string &globals) : meaning_(meaning), globals_(globals) {}
    void emit(Program &p);
    // The name of the table of the USE procedures that serve a file's statements in a program; "0"
    // if there are none.
    std::string useTable(Program &p, const File &f);
    // CODE-SET: the alphabet whose codes the records have in the file; null for the native one.
    const Alphabet *codeSet(const File &f) const;

private:
    struct Assignment {
        std::string name;
        const char *attribute;
        bool dynamic = false; // an item holds the name
        bool device = false;  // the keyboard or the display
    };
    struct KeyTable {
        std::string keys, parts;
        size_t keyCount = 0, partCount = 0;
    };
    void error(Tok at, const std::string &text) { meaning_.error(at, text); }
    void fileRecord(Program &p, File &f, uint32_t room);
    Assignment assignment(Program &p, const File &f);
    void fileInformation(Program &p, const File &f, const Assignment &assigned);
    KeyTable keyTable(Program &p, const File &f);
    void addKey(Program &p, const File &f, const Reference &ref, const std::vector<Reference *> &parts, bool duplicates,
                KeyTable &table);
    const Item *keyItem(Program &p, const File &f, const Reference &ref);
    void codeSetTable(const File &f, uint32_t room);

    Meaning &meaning_;
    std::string &globals_;
    std::map<std::pair<uint32_t, uint32_t>, std::string> useTables_; // names by program and file
};

// A sequential file that is printed, and so a file of lines: WRITE ... ADVANCING or LINAGE, and
// never read.
bool isPrinted(const File &f);

// The bytes of a file's record area: files that share it need room for the longest record.
uint32_t recordRoom(const Program &p, const File &f);

// A sequential file with records of one length may come from another system, as records or as lines
// without a header. (opening.cpp)
bool mayBeGiven(const File &f);

// What the file's other users may do, of its SELECT or of an OPEN (opening.cpp).
std::string shareMode(const File &f, Word sharing);

} // namespace kvrcob
