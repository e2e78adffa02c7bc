// Which file a failed sort stumbled over; see failure.h.
#include "sort/failure.h"

#include <cstdio>
#include <cstring>

namespace {

constexpr uint16_t kAtEnd = 10;

// A list's file: the one whose last verb failed, or the only one there is.
const FCB *culprit(const SortFileList *list)
{
    if (!list) return nullptr;
    for (uint32_t i = 0; i < list->count; i++)
        if (list->files[i]->status > kAtEnd) return list->files[i];
    return list->count == 1 ? list->files[0] : nullptr;
}

void describeFile(const FCB *fcb, char *text, size_t size)
{
    char path[420] = "", status[32] = "";
    if (fcb->fileName && *fcb->fileName) snprintf(path, sizeof path, " (%.400s)", fcb->fileName);
    if (fcb->status > kAtEnd) snprintf(status, sizeof status, ", file status %02d", fcb->status);
    snprintf(text, size, ": file %.44s%s%s", fcb->fib ? fcb->fib->name : "", path, status);
}

void describePath(const char *what, const char *path, char *text, size_t size)
{
    if (path && *path) snprintf(text, size, ": %s %.400s", what, path);
}

} // namespace

void zvkDescribeSortFailure(uint32_t error, const SortSides &sides, char *text, size_t size)
{
    text[0] = 0;
    switch (error) {
    case ZVK_SORT_EOPENIN:
    case ZVK_SORT_EREAD:
    case ZVK_SORT_EORDER:
        if (const FCB *fcb = culprit(sides.usingList)) return describeFile(fcb, text, size);
        return describePath("spill file", sides.input, text, size);
    case ZVK_SORT_EOPENOUT:
    case ZVK_SORT_EWRITE:
        if (const FCB *fcb = culprit(sides.givingList)) return describeFile(fcb, text, size);
        return describePath("spill file", sides.output, text, size);
    case ZVK_SORT_ECONTROL:
        return describePath("file", sides.control, text, size);
    default:
        return;
    }
}
