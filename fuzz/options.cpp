// COBRTOPT: any text as the value of the environment variable.
#include "frame/options/options.h"
#include "frame/run_unit.h"
#include "fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (!_zvkProccom) abort();
    setenv("COBRTOPT", fuzz::Input(data, size).rest().c_str(), 1);
    zvkParseOptions();
    return 0;
}
