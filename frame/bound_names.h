// The names of CALL and CANCEL: how they come from a data item, and a program's own table of names that it has bound.
#pragma once

#include "frame/run_unit.h"

#define ZVK_CALL_NAME_MAX 160

// Copies a name of at most 160 bytes, without trailing blanks and zero bytes and, if the caller wants that, in upper case, into `text`, terminated.
// Returns its length, 0 for a blank name.
uint32_t zvkCallName(const uint8_t *name, int64_t length, const PCB *caller, char (&text)[ZVK_CALL_NAME_MAX + 1]);

// The row of a name in a program's table of bound names, or -1.
int32_t zvkSearchBoundNames(const int32_t *names, const char *text, uint32_t length);
inline int32_t zvkBoundNameRow(const int32_t *names, const char *text, uint32_t length)
{
    return names && names[0] > 0 ? zvkSearchBoundNames(names, text, length) : -1;
}

// The index into the program's IPCB array that a row holds, from 1.
int32_t zvkBoundNameElement(const int32_t *names, int32_t row);
