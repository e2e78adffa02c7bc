// The names of CALL and CANCEL; see bound_names.h.
//
// The table: a count, then a row of three numbers a name (index into the IPCB array from 1, length,
// offset), then the names, whose offsets count from the end of the rows.
#include "frame/programs/bound_names.h"

#include <cctype>
#include <cstring>

void zvkCopyCallName(const uint8_t *name, uint32_t length, const PCB *caller, char (&text)[ZVK_CALL_NAME_MAX + 1])
{
    memcpy(text, name, length);
    text[length] = 0;
    if (!zvkFoldsNames(caller)) return;
    for (uint32_t i = 0; i < length; i++) text[i] = static_cast<char>(toupper(static_cast<unsigned char>(text[i])));
}

int32_t zvkSearchBoundNames(const int32_t *names, const char *text, uint32_t length)
{
    const char *texts = reinterpret_cast<const char *>(names + 1 + 3 * static_cast<ptrdiff_t>(names[0]));
    for (int32_t row = 0; row < names[0]; row++) {
        const int32_t *entry = names + 1 + 3 * row;
        if (static_cast<uint32_t>(entry[1]) == length && memcmp(texts + entry[2], text, length) == 0) return row;
    }
    return -1;
}

int32_t zvkBoundNameElement(const int32_t *names, int32_t row) { return names[1 + 3 * row]; }
