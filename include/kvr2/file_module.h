/**
 * What a file-system module and the library do alike with a file's status: small inline routines,
 * so that a module needs nothing beyond the exported entries.
 */
#ifndef KVR2_FILE_MODULE_H
#define KVR2_FILE_MODULE_H

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "kvr2/code_pages.h"
#include "kvr2/fileio.h"

ZVK_BEGIN_DECLS

/**
 * The file's attributes: in the FCB, or, for an EXTERNAL file, in the array of the program that
 * executes the statement.
 */
static inline FIB *zvkFibOf(const FCB *fcb, const IPCB *element)
{
    if (!(fcb->state & ZVK_FILE_FIB_OF_PROGRAM) || !element || !element->pcb || !element->pcb->fibs || fcb->index == 0)
        return fcb->fib;
    return element->pcb->fibs[fcb->index - 1];
}

/** The program's FILE STATUS field of two characters, or null. */
static inline uint8_t *zvkStatusField(const FIB *fib)
{
    return fib->statusBase && *fib->statusBase ? *fib->statusBase + fib->statusOffset : NULL;
}

/** The program's feedback field of `fib->feedbackLength` bytes, or null. */
static inline uint8_t *zvkFeedbackField(const FIB *fib)
{
    return fib->feedbackLength && fib->feedbackBase && *fib->feedbackBase ? *fib->feedbackBase + fib->feedbackOffset
                                                                          : NULL;
}

static inline void zvkSetStatus(FCB *fcb, uint16_t status, uint32_t fs2)
{
    fcb->status = status;
    fcb->fs2 = fs2;
}

/**
 * Stores FS1 in the program's status field as ASCII, EBCDIC or national digits, as `fib->shareMode`
 * has it.
 */
static inline void zvkStoreStatus(const FCB *fcb, const FIB *fib)
{
    uint8_t *field = zvkStatusField(fib);
    uint8_t tens = (uint8_t)(fcb->status / 10 % 10), units = (uint8_t)(fcb->status % 10);
    uint8_t zero = fib->shareMode & ZVK_FILE_STATUS_EBCDIC ? 0xF0 : 0x30;
    if (!field) return;
    if (fib->shareMode & ZVK_FILE_STATUS_NATIONAL) {
        /* UTF-16 units, little-endian */
        field[0] = (uint8_t)(0x30 + tens);
        field[1] = 0;
        field[2] = (uint8_t)(0x30 + units);
        field[3] = 0;
        return;
    }
    field[0] = (uint8_t)(zero + tens);
    field[1] = (uint8_t)(zero + units);
}

/**
 * Appends text to a feedback field that is filled up to `at`, cut at `length` less `keep`; returns
 * the new `at`.
 */
static inline size_t zvkAppendFeedback(uint8_t *area, size_t at, size_t length, size_t keep, const char *text,
                                       size_t size)
{
    size_t room = at + keep < length ? length - keep - at : 0;
    if (size > room) size = room;
    memcpy(area + at, text, size);
    return at + size;
}

/**
 * The text of a feedback field in native characters: FS2 in six digits; after it, for status 33
 * and 35, the file's name, for 96 prefix and name.
 */
static inline void zvkFormatFeedback(uint8_t *area, uint64_t length, int32_t fs2, const FCB *fcb)
{
    const char *name = fcb->fileName ? fcb->fileName : "";
    char number[16];
    size_t at = 0;
    memset(area, ' ', length);
    if (length < 6) return;
    snprintf(number, sizeof number, "%6.6d", fs2);
    at = zvkAppendFeedback(area, at, length, 0, number, 6);
    if (fcb->status == 33 || fcb->status == 35) {
        at = zvkAppendFeedback(area, at, length, 0, ",", 1);
        zvkAppendFeedback(area, at, length, 0, name, strlen(name));
    } else if (fcb->status == 96) {
        at = zvkAppendFeedback(area, at, length, 0, ",", 1);
        at = zvkAppendFeedback(area, at, length, 0, fcb->prefix, 3);
        at = zvkAppendFeedback(area, at, length, 0, ",", 1);
        zvkAppendFeedback(area, at, length, 4, name, strlen(name));
    }
}

/**
 * Converts a feedback field to EBCDIC in place; a text that the EBCDIC page lacks stays as it was.
 */
static inline void zvkFeedbackToEbcdic(uint8_t *area, uint16_t length)
{
    int32_t capacity = length;
    uint8_t *converted = (uint8_t *)malloc(length);
    if (!converted) return;
    if (_zvkConvToEBCDIC(area, length, converted, &capacity) == 0) memcpy(area, converted, length);
    free(converted);
}

/** Stores FS2 in the program's feedback field. */
static inline void zvkStoreFeedback(const FCB *fcb, const FIB *fib)
{
    uint8_t *field = zvkFeedbackField(fib);
    if (!field) return;
    zvkFormatFeedback(field, fib->feedbackLength, (int32_t)fcb->fs2, fcb);
    if (fib->shareMode & ZVK_FILE_FEEDBACK_EBCDIC) zvkFeedbackToEbcdic(field, fib->feedbackLength);
}

/**
 * The end of a verb in a module: statuses into the program's fields, the USE procedure for a status
 * above 9, and `verb` becomes the last one.
 */
static inline void zvkFinishVerb(FCB *fcb, IPCB *element, uint8_t verb)
{
    const FIB *fib = zvkFibOf(fcb, element);
    zvkStoreStatus(fcb, fib);
    zvkStoreFeedback(fcb, fib);
    if (fcb->status > 9) _zvkCallUseProc(fcb, 0, element);
    fcb->lastVerb = verb;
}

/**
 * At the end of a file of a concatenation: closes it and opens the next one.
 * @return 1: open, read on through `fcb->read`; 0: there is no next file, and this one is still
 *         open; -1: the next file could not be opened, and
 *         the status and USE procedure of that are done
 */
static inline int zvkNextVolume(FCB *fcb, IPCB *element)
{
    uint16_t mode = fcb->mode;
    const char *next;
    char *name;
    if (!(fcb->state & ZVK_FILE_CONCATENATED) || !fcb->concatenation) return 0;
    next = _zvk_Concat_Next(fcb->concatenation);
    if (!next) return 0;
    name = (char *)malloc(strlen(next) + 1); /* the next call of any thread takes the text's place */
    if (!name) return 0;
    strcpy(name, next);
    fcb->closeOptions |= ZVK_CLOSE_NEXT_VOLUME;
    fcb->close(fcb, element);
    fcb->fileName = name;
    fcb->state |= ZVK_FILE_NAME_ALLOCATED;
    fcb->requestedMode = mode;
    fcb->open(fcb, element);
    return fcb->status > 9 ? -1 : 1;
}

ZVK_END_DECLS

#endif
