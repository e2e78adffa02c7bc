// Stands in for the sort engine: the call goes to the test program's own `testSortEngine`. Without
// a symbol version, as an older engine has none.
#include <dlfcn.h>

#include "kvr2/sort.h"

extern "C" ZVK_EXPORT int32_t sortmerge(int32_t op, uint64_t format, uint32_t length, const void *fourth,
                                        const char *fifth, SortEighth eighth, SortIoRecord input, SortIoRecord output,
                                        SortControlRecord control)
{
    auto engine = reinterpret_cast<SortEngine>(dlsym(RTLD_DEFAULT, "testSortEngine"));
    return engine ? engine(op, format, length, fourth, fifth, eighth, input, output, control) : 16;
}
