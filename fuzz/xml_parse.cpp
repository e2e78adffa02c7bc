// XML PARSE: any bytes as a document, over all families of encodings. The first byte says what the
// program declares and how it answers events.
#include "fuzz.h"
#include "kvr2/kvr2.h"
#include "support/compiled_program.h"
#include "xml/parse_statement.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    constexpr uint32_t kDeclared[] = {1208, 819, 1200, 1047, 37, 1140, 0, 1252};
    static const bool ready = [] {
        static CompiledProgram program("XMLPGM");
        _zvkPgmInit(&program.pcb);
        return true;
    }();
    (void)ready;
    fuzz::Input input(data, size);
    const uint8_t how = input.take<uint8_t>();
    const std::string document = input.rest();
    uint32_t bytes = static_cast<uint32_t>(document.size());
    const uint32_t ccsid = kDeclared[how & 7];
    auto *block = static_cast<uint8_t *>(malloc(bytes + 1)); // ends where the document ends
    memcpy(block + 1, document.data(), bytes);
    ParseStatement statement(block + 1, bytes, ccsid);
    unsigned events = 0;
    statement.seen = [&](ParseStatement &s) {
        (void)s.text();
        if (s.code != 0 && (how & 8)) s.code = 0;                                      // goes on
        if (s.code != 0 && (how & 16)) s.code = static_cast<int32_t>(kDeclared[events & 7]); // another code page
        if (++events == 200 && (how & 32)) s.code = -1;
    };
    statement.run();
    free(block);
    return 0;
}
