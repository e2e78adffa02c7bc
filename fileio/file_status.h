// File status: FS1 and FS2 in the FCB, their forms in the program's own fields, and the verbs' way to a USE procedure.
#pragma once

#include <cstdint>

#include "kvr2/file_records.h"

// Where the program keeps a file's attributes: in the FCB, or, for an EXTERNAL file, in the array of the program that executes the statement.
inline FIB *zvkFibOf(const FCB *fcb, const IPCB *element)
{
    if (!(fcb->state & ZVK_FILE_FIB_OF_PROGRAM) || !element || !element->pcb || !element->pcb->fibs || fcb->index == 0) return fcb->fib;
    return element->pcb->fibs[fcb->index - 1];
}

// The program's fields, or null where it has none.
inline uint8_t *zvkStatusField(const FIB *fib)
{
    return fib->statusBase && *fib->statusBase ? *fib->statusBase + fib->statusOffset : nullptr;
}
inline uint8_t *zvkFeedbackField(const FIB *fib)
{
    return fib->feedbackLength && fib->feedbackBase && *fib->feedbackBase ? *fib->feedbackBase + fib->feedbackOffset : nullptr;
}

// Stores FS1 in the status field, in the form that the program asked for: ASCII, EBCDIC or national digits.
void zvkStoreStatus(const FCB *fcb, const FIB *fib);

// Stores FS2 in the feedback field: the number, and for some statuses the file's name.
void zvkStoreFeedback(FCB *fcb, const FIB *fib);

// The text of a feedback field, in native characters.
void zvkFormatFeedback(uint8_t *area, uint64_t length, int32_t fs2, const FCB *fcb);

// The feedback field of a verb that made no sense: zero.
void zvkResetFeedback(const FIB *fib);

inline void zvkSetStatus(FCB *fcb, uint16_t status, uint32_t fs2)
{
    fcb->status = status;
    fcb->fs2 = fs2;
}
