// KVR2_COMMIT and KVR2_ROLLBACK: the end of a transaction (transaction.h), as programs call it.
//
//     CALL "KVR2_COMMIT"
//     IF RETURN-CODE NOT = 0 ...        the file status of what went wrong: all was rolled back
//
// A dynamic CALL finds the object by the program's name beside the file-system modules, or on
// COBPATH; a program that is linked with one of the objects calls it directly. Without an indexed
// or relative file there was nothing to commit: the module that keeps transactions is not loaded.
#include <dlfcn.h>

#include "kvr2/export.h"

namespace {

int endTransaction(const char *routine)
{
    void *module = dlopen("zvkrfstl_64r.so", RTLD_NOW | RTLD_NOLOAD);
    if (!module) return 0;
    auto end = reinterpret_cast<int (*)()>(dlsym(module, routine));
    int status = end ? end() : 0;
    dlclose(module);
    return status;
}

} // namespace

extern "C" {
ZVK_EXPORT int KVR2_COMMIT(void);
ZVK_EXPORT int KVR2_ROLLBACK(void);

int KVR2_COMMIT(void) { return endTransaction("zvkCommitFiles"); }
int KVR2_ROLLBACK(void) { return endTransaction("zvkRollBackFiles"); }
}
