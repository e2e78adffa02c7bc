// File names: any text as the assignment of a file, from a literal or through a variable of the
// environment, resolved and opened for input.
#include "fileio/concatenation.h"
#include "fileio/file_name.h"
#include "fuzz.h"
#include "support/compiled_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::scratch();
    fuzz::Input input(data, size);
    const uint8_t how = input.take<uint8_t>();
    std::string text = input.rest();
    if (text.size() > 2000 || text.find('/') != std::string::npos) return 0; // the disk is not the fuzzer's
    if (how & 1) setenv("ASSIGNED", text.c_str(), 1);
    FileRecords file(how & 1 ? "ASSIGNED" : text, {.organization = static_cast<uint8_t>(how >> 4)});
    FIB &fib = file.laidOut.fib;
    FCB &fcb = file.fcb;
    fib.attributes = !(how & 1) && how & 2 ? ZVK_FILE_ASSIGN_LITERAL : 0;
    fcb.fib = &fib;
    fcb.requestedMode = how & 4 ? ZVK_OPEN_INPUT : ZVK_OPEN_IO;
    zvkResolveName(&fcb, &fib);
    if (fcb.status <= 9) zvkChooseByFile(&fcb);
    free(fcb.fileName);
    _zvk_Concat_Free(fcb.concatenation); // the next OPEN of the FCB would do this
    return 0;
}
