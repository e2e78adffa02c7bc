// A file-system module that stores nothing and says what it is asked to do: for tests of what the
// library does around a module.
//
// FAKE_STATUS in the environment is the status of its open, FAKE_INIT that of its _IO_Init.
#include <cstdio>
#include <cstdlib>

#include "kvr2/fileio.h"

namespace {

int statusFrom(const char *variable)
{
    const char *value = getenv(variable);
    return value ? atoi(value) : 0;
}

const char *text(void *, uint32_t fs2, int32_t, int32_t)
{
    static char buffer[32];
    snprintf(buffer, sizeof buffer, "fake %u", fs2);
    return buffer;
}

void *table[25];

void closeFile(FCB *fcb, IPCB *element)
{
    printf("close %s;", fcb->fileName);
    fcb->status = 0;
    fcb->fs2 = 0;
    _zvkGenericClose(fcb, element, 0);
}

void openFile(FCB *fcb, IPCB *)
{
    printf("open %.3s '%s' %x;", fcb->prefix, fcb->fileName, fcb->requestedMode);
    fcb->status = static_cast<uint16_t>(statusFrom("FAKE_STATUS"));
    fcb->fs2 = fcb->status;
    fcb->moduleBuffer = malloc(10);
}

} // namespace

extern "C" {
__attribute__((visibility("default"))) void **vfs()
{
    table[ZVK_FILE_TEXT_SLOT] = reinterpret_cast<void *>(text);
    return table;
}

__attribute__((visibility("default"))) void _IO_Init(FCB *fcb, IPCB *)
{
    fcb->open = openFile;
    fcb->close = closeFile;
    fcb->status = static_cast<uint16_t>(statusFrom("FAKE_INIT"));
}
}
