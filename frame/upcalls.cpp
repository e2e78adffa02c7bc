// What holds while a room above the frame is not part of the library: it has no files and no sorts. The rooms' own definitions replace these.
#include "frame/upcalls.h"

__attribute__((weak)) void zvkRegisterFiles(int32_t, FCB **, FIB **, PCB *) {}
__attribute__((weak)) bool zvkFileIsOpen(const FCB *) { return false; }
__attribute__((weak)) bool zvkFileIsExternal(const FCB *) { return false; }
__attribute__((weak)) void zvkCloseFile(FCB *, IPCB *, bool) {}
__attribute__((weak)) void zvkUnloadModules() {}
__attribute__((weak)) bool zvkAbandonSort() { return false; }
