// For tests that the library is linked into: it is not where it would find its catalog by itself.
// Runs before the library's own constructor.
#include <cstdlib>

__attribute__((constructor(101))) static void showTheCatalog()
{
    setenv("NLSPATH", KVR2_BUILD_DIR "/usr/share/locale/%L/%N", 1);
}
