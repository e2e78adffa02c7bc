/**
 * DELETE FILE: a file that is closed goes away.
 *
 * The library finds the name as OPEN does, so the file is opened for INPUT, without USE procedure
 * and message, and its name is taken from there. Status 41: it is open; 05: there is no such file;
 * 30: the system does not let it go, or it is no single file.
 */
#ifndef KVR2_KVRCOB_DELETE_FILE_H
#define KVR2_KVRCOB_DELETE_FILE_H

#if defined(__GNUC__)
#pragma GCC system_header
#endif

#include <errno.h>
#include <unistd.h>

#include "kvr2/kvrcob/base.h"

KVR_SHARED void kvr_delete_file(FCB *fcb, IPCB *element, FIB *fib)
{
    uint8_t status[2], *statusField = status, **statusBase = fib->statusBase;
    uint32_t statusOffset = fib->statusOffset;
    void **useTable = fcb->useTable;
    uint16_t result = 41;
    if (fcb->mode == 0) {
        fib->statusBase = &statusField;
        fib->statusOffset = 0;
        fcb->useTable = 0;
        fcb->requestedMode = ZVK_OPEN_INPUT;
        fcb->statement = 0;
        fcb->open(fcb, element);
        result = fcb->status;
        if (result < 10 && fcb->mode != 0) {
            char *name = result == 5 || !fcb->fileName ? 0 : strdup(fcb->fileName);
            fcb->closeOptions = 0;
            fcb->close(fcb, element);
            result = name ? (unlink(name) == 0 ? 0 : errno == ENOENT ? 5 : 30) : 5;
            free(name);
        } else if (result == 35) {
            result = 5;
        }
        fib->statusBase = statusBase;
        fib->statusOffset = statusOffset;
        fcb->useTable = useTable;
    }
    fcb->currentVerb = ZVK_VERB_DELETE;
    zvkSetStatus(fcb, result, 0);
    zvkFinishVerb(fcb, element, ZVK_VERB_DELETE);
}

#endif
