// The frame of a verb: what comes before its work and after it, the same for all.
//
//     void rewriteRecord(FCB *fcb, FileRequest *request);                    // its work, and the status
//     fcb->rewrite = verb<ZVK_VERB_REWRITE, rewriteRecord>;
//
// The status is 00 until the work says something else. A statement without particulars has an empty
// request.
#pragma once

#include "companions/filesystems/secondary_status.h"

namespace filesystems {

template <uint8_t which, void (*work)(FCB *, FileRequest *)>
void verb(FCB *fcb, IPCB *element, FileRequest *request)
{
    FileRequest none = {};
    fcb->currentVerb = which;
    zvkSetStatus(fcb, 0, fs2None);
    work(fcb, request ? request : &none);
    zvkFinishVerb(fcb, element, which);
}

// CLOSE: the work frees what is its own; the buffers go with the library's part.
template <void (*work)(FCB *)>
void closing(FCB *fcb, IPCB *element)
{
    fcb->currentVerb = ZVK_VERB_CLOSE;
    zvkSetStatus(fcb, 0, fs2None);
    work(fcb);
    _zvkGenericClose(fcb, element, 0);
}

} // namespace filesystems
