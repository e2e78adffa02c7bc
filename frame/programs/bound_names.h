// The names of CALL and CANCEL: how they come from a data item, and a program's own table of names
// that it has bound.
#pragma once

#include "frame/run_unit.h"

#define ZVK_CALL_NAME_MAX 160

// The length of a name of at most 160 bytes without trailing blanks and zero bytes; 0 for a blank
// name.
inline uint32_t zvkCallNameLength(const uint8_t *name, int64_t length)
{
    uint32_t size = length < 0 ? 0 : length > ZVK_CALL_NAME_MAX ? ZVK_CALL_NAME_MAX : static_cast<uint32_t>(length);
    while (size && (name[size - 1] == ' ' || name[size - 1] == 0)) size--;
    return size;
}

// Copies a name of that length, terminated, and in upper case if the caller wants that.
void zvkCopyCallName(const uint8_t *name, uint32_t length, const PCB *caller, char (&text)[ZVK_CALL_NAME_MAX + 1]);

inline bool zvkFoldsNames(const PCB *caller) { return caller && (caller->flag & ZVK_PCB_FOLD_NAMES); }

// The row of a name in a program's table of bound names, or -1.
int32_t zvkSearchBoundNames(const int32_t *names, const char *text, uint32_t length);
inline int32_t zvkBoundNameRow(const int32_t *names, const char *text, uint32_t length)
{
    return names && names[0] > 0 ? zvkSearchBoundNames(names, text, length) : -1;
}

// The index into the program's IPCB array that a row holds, from 1.
int32_t zvkBoundNameElement(const int32_t *names, int32_t row);
