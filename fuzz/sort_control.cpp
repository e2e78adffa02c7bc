// SORT-CONTROL: any bytes as the file of a sort's settings.
#include "companions/sortengine/control_file.h"
#include "fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const std::string path = fuzz::scratch() + "/control";
    fuzz::putFile(path, data, size);
    SortSettings settings{};
    if (readSettings(&settings, path.c_str(), SortEighth{}, ".") && settings.memory == 0) abort();
    if (memchr(settings.workDirectory, 0, sizeof settings.workDirectory) == nullptr) abort();
    return 0;
}
