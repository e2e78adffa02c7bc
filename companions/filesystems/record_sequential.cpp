// Record sequential files, "rsd" and "str": fixed records back to back, variable ones after length
// words.
#include "companions/filesystems/back_to_back.h"

extern "C" {
ZVK_EXPORT void _IO_Init(FCB *fcb, IPCB *element);
ZVK_EXPORT void **vfs(void);

void _IO_Init(FCB *fcb, IPCB *element) { filesystems::initSequential<filesystems::BackToBack>(fcb, element); }
void **vfs(void) { return filesystems::operationTable(); }
}
