/**
 * OPEN of a sequential file that another system made: it has no header, only records or lines.
 *
 * The library's own sequential files begin with a header; OPEN of any other gives 39. So an OPEN
 * that reads is tried without USE procedure and message first. If it fails, and the file has no
 * header, its first 4096 bytes tell what it is: lines, if all of them are text and there is an end
 * of line among them, else records of the FD's length back to back. An empty file has no records.
 */
#ifndef KVR2_KVRCOB_GIVEN_FILE_H
#define KVR2_KVRCOB_GIVEN_FILE_H

#if defined(__GNUC__)
#pragma GCC system_header
#endif

#include "kvr2/kvrcob/base.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

/* Are there ends of lines, and no other control characters than those of text? */
KVR_INLINE int kvr_is_text(const uint8_t *bytes, ssize_t size)
{
    int lines = 0;
    for (ssize_t i = 0; i < size; i++) {
        if (bytes[i] == '\n')
            lines = 1;
        else if (bytes[i] < ' ' && bytes[i] != '\r' && bytes[i] != '\t' && bytes[i] != '\f')
            return 0;
    }
    return lines;
}

/* The file system for such a file, or null if it is not one. */
KVR_SHARED const char *kvr_given_file(const char *name)
{
    struct stat info;
    uint8_t head[4096];
    ssize_t got;
    int file;
    if (!name || stat(name, &info) != 0 || !S_ISREG(info.st_mode)) return 0;
    file = open(name, O_RDONLY | O_CLOEXEC);
    if (file < 0) return 0;
    got = read(file, head, sizeof head);
    close(file);
    if (got < 0 || (got >= 11 && memcmp(head + 8, "STL", 3) == 0)) return 0;
    return kvr_is_text(head, got) ? "lsq" : "wbr";
}

/* OPEN; `probe`: the file is closed again, and the status stays as it was. */
KVR_SHARED void kvr_open_given(FCB *fcb, IPCB *element, FIB *fib, int probe)
{
    uint8_t status[2], *statusField = status, **statusBase = fib->statusBase;
    uint32_t statusOffset = fib->statusOffset;
    void **useTable = fcb->useTable;
    const char *system = 0;
    if (fcb->mode == 0) { /* what the last OPEN found holds no more: the name may be another one */
        memcpy(fib->prefix, "???", 3);
        fib->organization &= (uint8_t)~ZVK_FILE_LINE_SEQUENTIAL;
    }
    if (fcb->mode == 0 && !(fcb->requestedMode & ZVK_OPEN_OUTPUT)) {
        uint16_t mode = fcb->requestedMode, result;
        fib->statusBase = &statusField;
        fib->statusOffset = 0;
        fcb->useTable = 0;
        fcb->open(fcb, element);
        result = fcb->status;
        fib->statusBase = statusBase;
        fib->statusOffset = statusOffset;
        fcb->useTable = useTable;
        if (result < 10 && !probe) {
            if (statusBase) zvkStoreStatus(fcb, fib);
            return;
        }
        if (result < 10 && fcb->mode != 0) {
            fcb->closeOptions = 0;
            fcb->close(fcb, element);
            return;
        }
        if (result == 30 || result == 35 || result == 39) system = kvr_given_file(fcb->fileName);
        if (system) {
            memcpy(fib->prefix, system, 3);
            if (system[0] == 'l') fib->organization |= ZVK_FILE_LINE_SEQUENTIAL;
        }
        fcb->requestedMode = mode;
    }
    if (!probe) fcb->open(fcb, element);
}

#endif
