/**
 * OPEN INPUT ... REVERSED of a sequential file, for the C that kvrcob emits.
 *
 * No file system reads a sequential file backwards. So the file is read once into memory when it is
 * opened, and while it is open its READ slot hands out the records from the last to the first. CLOSE
 * frees them and puts the slots of the file system back.
 */
#ifndef KVR2_KVRCOB_REVERSED_H
#define KVR2_KVRCOB_REVERSED_H

#include "kvr2/kvrcob.h"

typedef struct KvrReversed {
    struct KvrReversed *next;
    FCB *fcb;
    FileVerb read;
    FileOperation close;
    uint8_t *bytes; /* each record, and after it its length in four bytes */
    size_t used;
} KvrReversed;

static KvrReversed *kvr_reversed_files;

KVR_INLINE KvrReversed *kvr_reversed_of(const FCB *fcb)
{
    KvrReversed *file = kvr_reversed_files;
    while (file && file->fcb != fcb) file = file->next;
    return file;
}

KVR_INLINE void kvr_reversed_read(FCB *fcb, IPCB *element, FileRequest *request)
{
    KvrReversed *file = kvr_reversed_of(fcb);
    uint32_t length;
    fcb->currentVerb = ZVK_VERB_READ;
    if (file->used == 0) {
        zvkSetStatus(fcb, fcb->state & ZVK_FILE_READ_VALID ? 10 : 46, 0);
        fcb->state &= ~(uint32_t)ZVK_FILE_READ_VALID;
    } else {
        memcpy(&length, file->bytes + file->used - sizeof length, sizeof length);
        file->used -= sizeof length + length;
        memcpy(fcb->record, file->bytes + file->used, length);
        fcb->recordLength = request->recordLength = length;
        fcb->state |= ZVK_FILE_READ_VALID;
        zvkSetStatus(fcb, 0, 0);
    }
    zvkFinishVerb(fcb, element, ZVK_VERB_READ);
}

KVR_INLINE void kvr_reversed_close(FCB *fcb, IPCB *element)
{
    KvrReversed *file = kvr_reversed_of(fcb), **link = &kvr_reversed_files;
    while (*link != file) link = &(*link)->next;
    *link = file->next;
    fcb->read = file->read;
    fcb->close = file->close;
    free(file->bytes);
    free(file);
    fcb->close(fcb, element);
}

/* After a successful OPEN INPUT; without the storage the status becomes 30. */
KVR_INLINE void kvr_open_reversed(FCB *fcb, IPCB *element)
{
    KvrReversed *file;
    size_t room = 0;
    FileRequest request;
    uint16_t opened = fcb->status;
    uint8_t *field = zvkStatusField(zvkFibOf(fcb, element));
    if (fcb->status > 9 || (fcb->state & ZVK_FILE_ABSENT)) return;
    file = (KvrReversed *)calloc(1, sizeof *file);
    if (file) {
        file->fcb = fcb;
        for (;;) {
            uint32_t length;
            memset(&request, 0, sizeof request);
            request.options = ZVK_REQUEST_NEXT;
            fcb->statement = ZVK_STATEMENT_AT_END;
            fcb->read(fcb, element, &request);
            if (fcb->status > 9) break;
            length = request.recordLength ? request.recordLength : fcb->recordLength;
            if (file->used + length + sizeof length > room) {
                uint8_t *more = (uint8_t *)realloc(file->bytes, room = 2 * room + length + 4096);
                if (!more) break;
                file->bytes = more;
            }
            memcpy(file->bytes + file->used, fcb->record, length);
            memcpy(file->bytes + file->used + length, &length, sizeof length);
            file->used += length + sizeof length;
        }
    }
    if (fcb->status != 10) {
        if (file) free(file->bytes);
        free(file);
        fcb->close(fcb, element);
        kvr_refuse(fcb, element, 30, ZVK_VERB_OPEN);
        return;
    }
    file->read = fcb->read;
    file->close = fcb->close;
    file->next = kvr_reversed_files;
    kvr_reversed_files = file;
    fcb->read = kvr_reversed_read;
    fcb->close = kvr_reversed_close;
    fcb->state |= ZVK_FILE_READ_VALID; /* the first READ is not one after the end */
    zvkSetStatus(fcb, opened, 0);
    if (field) zvkStoreStatus(fcb, zvkFibOf(fcb, element));
    fcb->lastVerb = ZVK_VERB_OPEN;
}

#endif
