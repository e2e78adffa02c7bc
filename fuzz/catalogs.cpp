// Message catalogs: any bytes as the compiled catalog that NLSPATH leads to. Its texts are then
// composed with the inserts that the library passes.
#include "frame/messages.h"
#include "fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const std::string path = fuzz::scratch() + "/kvr2run.cat";
    fuzz::putFile(path, data, size);
    setenv("NLSPATH", (fuzz::scratch() + "/%N").c_str(), 1);
    zvkWriteMsg(0, ZVK_MSG_CLOSE_CATALOG);
    zvkWriteMsg(0, ZVK_MSG_OPEN_CATALOG);
    char text[200];
    for (uint32_t variant = 0; variant < 3; variant++) {
        zvkWriteMsg(12, ZVK_MSG_TO_STRING | variant, text, sizeof text);
        zvkWriteMsg(26, ZVK_MSG_TO_STRING, text, sizeof text, "LEDGER", 120, 8);
        zvkWriteMsg(96, ZVK_MSG_TO_STRING | variant, text, sizeof text, "LEDGER", "LEDGER", 0, "no such file");
        zvkWriteMsg(182, ZVK_MSG_TO_STRING | variant, text, sizeof text, "7", "ERRCOUNT", 0L, 99L);
        zvkWriteMsg(4711, ZVK_MSG_TO_STRING | variant, text, sizeof text, "a site's own", "with", "inserts", "such", "as",
                    "these");
    }
    return 0;
}
