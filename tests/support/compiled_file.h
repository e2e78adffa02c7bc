// A COBOL file as the compiler lays it out, in a program of its own: FIB with keys and LINAGE
// block, FCB, record area, FILE STATUS and feedback field.
//
//     CompiledFile file("rsd-" + directory.file("data"), {.longest = 20, .shortest = 20});
//     EXPECT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
//     EXPECT_EQ(file.write("hello"), "00");
//     EXPECT_EQ(file.close(), "00");
//
// The modules of the build are loaded first, so that the library finds them by their names.
#pragma once

#include <cstddef>
#include <cstring>
#include <dlfcn.h>
#include <string>
#include <vector>

#include "kvr2/kvr2.h"
#include "support/compiled_program.h"

struct FileAttributes {
    uint32_t longest = 100, shortest = 100;
    uint8_t organization = 0;
    uint8_t access = ZVK_FILE_ACCESS_SEQUENTIAL;
    std::vector<FileKey> keys = {};
    bool optional = false, external = false;
    uint8_t share = 0, lock = 0; // nonzero: the file has SHARE and LOCK attributes
    uint8_t linage = 0;
    uint32_t body = 0, footing = 0, top = 0, bottom = 0;
    std::vector<FileKey> keyParts = {}; // of keys with ZVK_FILE_KEY_PARTS, those after the first
};

inline void loadFileModules()
{
    static bool loaded = [] {
        for (const char *name : {"zvkrflsq_64r.so", "zvkrfrsd_64r.so", "zvkrfwbrm_64r.so", "zvkrfstl_64r.so"}) {
#ifdef KVR2_FILE_MODULES // of a program that is not started by the tests' main
            const char *modules = KVR2_FILE_MODULES;
#else
            const std::string modules = std::string(getenv("KVR2_BUILD_DIR")) + "/companions";
#endif
            std::string path = std::string(modules) + "/" + name;
            if (!dlopen(path.c_str(), RTLD_NOW)) fprintf(stderr, "%s\n", dlerror());
        }
        return true;
    }();
    (void)loaded;
}

// What the compiler lays out for a file.
struct FileRecords {
    struct {
        FIB fib{};
        FileKey keys[16]{};
        FileLinageGroup linage[4]{};
    } laidOut;
    FCB fcb{};
    FCB *fcbCell = &fcb;
    FIB *fibCell = &laidOut.fib;
    std::vector<uint64_t> area;
    uint8_t *areaCell = nullptr;
    uint8_t status[4] = {'?', '?', '?', '?'}; // two characters, of one or two bytes
    uint8_t *statusCell = status;
    uint8_t feedback[40] = {};
    uint8_t *feedbackCell = feedback;
    std::string assignment;

    FileRecords(const std::string &assigned, const FileAttributes &wanted)
    {
        FIB &fib = laidOut.fib;
        area.resize((wanted.longest + 34) / 8 + 1);
        areaCell = reinterpret_cast<uint8_t *>(area.data());
        memcpy(fib.prefix, "???", 3);
        memcpy(fcb.eyecatcher, "FCB", 3);
        fcb.index = fib.index = 1;
        fib.organization = wanted.organization;
        fib.accessMode = wanted.access;
        fib.attributes = static_cast<uint8_t>(ZVK_FILE_ASSIGN_LITERAL | (wanted.optional ? ZVK_FILE_OPTIONAL : 0) |
                                              (wanted.external ? ZVK_FILE_EXTERNAL : 0));
        fib.maxRecord = fcb.maxRecord = wanted.longest;
        fib.minRecord = wanted.shortest;
        fib.keyCount = static_cast<uint32_t>(wanted.keys.size());
        for (size_t i = 0; i < wanted.keys.size(); ++i) laidOut.keys[i] = wanted.keys[i];
        for (size_t i = 0; i < wanted.keyParts.size(); ++i) laidOut.keys[wanted.keys.size() + i] = wanted.keyParts[i];
        fib.keysOffset = offsetof(decltype(laidOut), keys);
        fib.linageOffset = offsetof(decltype(laidOut), linage);
        fib.linage = wanted.linage;
        uint32_t values[4] = {wanted.body, wanted.footing, wanted.top, wanted.bottom};
        for (int i = 0; i < 4; ++i) laidOut.linage[i].value = values[i];
        fib.sharing = fcb.sharing = wanted.share || wanted.lock;
        fib.shareMode = wanted.share;
        fib.lockMode = wanted.lock;
        strcpy(fib.name, "DATA-FILE");
        fib.recordArea = &areaCell;
        fib.statusBase = &statusCell;
        assign(assigned);
    }
    FileRecords(const FileRecords &) = delete;

    void assign(const std::string &assigned)
    {
        assignment = assigned;
        laidOut.fib.assignment = assignment.data();
        laidOut.fib.assignmentLength = static_cast<uint16_t>(assignment.size());
    }
    // As the program's only file, before the program is entered.
    void into(CompiledProgram &program)
    {
        program.ipcb[0].files = &fcbCell;
        program.ipcb[0].fileCount = 1;
        program.pcb.fibs = &fibCell;
    }
};

struct CompiledFile {
    CompiledProgram program;
    FileRecords &all; // stays until the process ends, as a program's do
    FCB *fcb;
    FileAttributes attributes;
    FileRequest request{}; // of the last verb

    explicit CompiledFile(const std::string &assigned, const FileAttributes &wanted = {})
        : program(newName(), [] {}), all(*new FileRecords(assigned, wanted)), fcb(&all.fcb), attributes(wanted)
    {
        loadFileModules();
        all.into(program);
        _zvkPgmInit(&program.pcb);
        fcb = all.fcbCell; // the run unit's own for an EXTERNAL file
    }

    // Every file's program is one of its own: a second one of the same name would be taken for the
    // first.
    static std::string newName()
    {
        static int count;
        return "FILE" + std::to_string(++count);
    }
    std::string status() const { return std::string(all.status, all.status + 2); }
    std::string record() const { return std::string(reinterpret_cast<const char *>(fcb->record), fcb->recordLength); }

    std::string open(uint16_t mode)
    {
        fcb->requestedMode = mode;
        fcb->open(fcb, program.ipcb.data());
        return status();
    }
    std::string close(uint16_t options = 0)
    {
        fcb->closeOptions = options;
        fcb->close(fcb, program.ipcb.data());
        return status();
    }
    std::string verb(FileVerb slot, const FileRequest &wanted)
    {
        request = wanted;
        slot(fcb, program.ipcb.data(), &request);
        return status();
    }
    void move(const std::string &text)
    {
        memset(fcb->record, ' ', attributes.longest);
        memcpy(fcb->record, text.data(), text.size() < attributes.longest ? text.size() : attributes.longest);
    }
    // A fixed file's record is filled with blanks.
    std::string write(const std::string &text, FileRequest wanted = {})
    {
        move(text);
        if (attributes.longest != attributes.shortest) wanted.recordLength = static_cast<uint32_t>(text.size());
        return verb(fcb->write, wanted);
    }
    std::string rewrite(const std::string &text, FileRequest wanted = {})
    {
        move(text);
        if (attributes.longest != attributes.shortest) wanted.recordLength = static_cast<uint32_t>(text.size());
        return verb(fcb->rewrite, wanted);
    }
    std::string read(const FileRequest &wanted = {}) { return verb(fcb->read, wanted); }
};
