// File names: any text as the assignment of a file, from a literal or through a variable of the
// environment, resolved and opened for input.
#include "fileio/file_name.h"
#include "fuzz.h"
#include "support/compiled_program.h"

namespace {

struct File {
    CompiledProgram program{"NAMES"};
    FCB fcb{};
    FIB fib{};
    FCB *fcbCell = &fcb;
    FIB *fibCell = &fib;
    std::string assignment;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::scratch();
    fuzz::Input input(data, size);
    const uint8_t how = input.take<uint8_t>();
    std::string text = input.rest();
    if (text.size() > 2000 || text.find('/') != std::string::npos) return 0; // the disk is not the fuzzer's
    static auto &file = *new File;
    file.fcb = {};
    file.fib = {};
    if (how & 1) {
        setenv("ASSIGNED", text.c_str(), 1);
        file.assignment = "ASSIGNED";
    } else {
        file.assignment = text;
        file.fib.attributes = how & 2 ? ZVK_FILE_ASSIGN_LITERAL : 0;
    }
    file.fib.assignment = file.assignment.data();
    file.fib.assignmentLength = static_cast<uint16_t>(file.assignment.size());
    file.fib.organization = static_cast<uint8_t>(how >> 4);
    memcpy(file.fcb.eyecatcher, "FCB", 3);
    strcpy(file.fib.name, "FUZZED");
    file.fcb.fib = &file.fib;
    file.fcb.requestedMode = how & 4 ? ZVK_OPEN_INPUT : ZVK_OPEN_IO;
    zvkResolveName(&file.fcb, &file.fib);
    zvkChooseByFile(&file.fcb);
    if (file.fcb.fileName) free(file.fcb.fileName);
    return 0;
}
