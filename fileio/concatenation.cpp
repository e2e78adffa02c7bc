// Concatenated files: several names separated by ":", or a generation data group, read one after
// the other.
//
// The record holds the whole string cut into names. A name that is a group is walked in place: its
// generations from the newest back, as relative numbers 0, -1, -2, until there is none; then the
// next name follows.
#include "fileio/concatenation.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "frame/storage.h"
#include "kvr2/generations.h"

namespace {

constexpr uint32_t kWalking = 1;
constexpr uint32_t kMaxNames = 256;
constexpr int32_t kWholeGroup = -1, kOneFile = 1;

char generationName[1024]; // the file name handed out last; shared by all files and threads

// The ":" of "/.:/" belongs to a name.
bool splits(const char *text, const char *colon)
{
    return !(colon - text >= 2 && colon[-1] == '.' && colon[-2] == '/' && colon[1] == '/');
}

bool hasSplit(const char *text)
{
    for (const char *colon = strchr(text, ':'); colon; colon = strchr(colon + 1, ':'))
        if (splits(text, colon)) return true;
    return false;
}

// A record with the names of `text`; null for more than 256 of them, or without storage.
ZvkConcatenation *split(const char *text, const uint32_t *prefix)
{
    size_t length = strlen(text);
    auto *record = static_cast<ZvkConcatenation *>(zvkCalloc(1, sizeof(ZvkConcatenation) + length + 1));
    if (!record) return nullptr;
    record->text = reinterpret_cast<char *>(record + 1);
    memcpy(record->text, text, length + 1);
    memcpy(record->nameSpace, "???", 4);
    if (prefix) memcpy(record->nameSpace, prefix, 3);
    bool inName = false;
    for (size_t i = 0; i < length; i++) {
        if (text[i] == ':' && splits(text, text + i)) {
            record->text[i] = 0;
            inName = false;
        } else if (!inName) {
            if (record->entries == kMaxNames) {
                free(record);
                return nullptr;
            }
            record->names[record->entries++] = record->text + i;
            inName = true;
        }
    }
    return record;
}

// What a name is to the generation data groups; a file name or base comes back as a block of its
// own.
int32_t ask(const char *name, char **result, bool create, const char *prefix)
{
    *result = nullptr;
    return GDS_Name(name, result, create, prefix);
}

// The generation with the record's relative number of the group that is being walked, or null when
// there is none.
const char *generationOf(ZvkConcatenation *record)
{
    char relative[1024];
    const char *base = record->names[record->next];
    int length = snprintf(relative, sizeof relative, "%s(%d)", base, static_cast<int32_t>(record->generation));
    char *file = nullptr;
    bool found = length > 0 && static_cast<size_t>(length) < sizeof relative &&
                 ask(relative, &file, false, record->nameSpace) == kOneFile && file;
    if (found) snprintf(generationName, sizeof generationName, "%s", file);
    free(file);
    return found ? generationName : nullptr;
}

void endWalk(ZvkConcatenation *record)
{
    record->generation = 0;
    record->flags &= ~kWalking;
    record->next++;
}

} // namespace

ZvkConcatenation *_zvk_Concat_Check(char *name, uint32_t *isConcat, uint32_t create, uint32_t *prefix)
{
    *isConcat = 0;
    errno = 0;
    if (hasSplit(name)) {
        *isConcat = 1;
        return split(name, prefix);
    }
    char *file = nullptr;
    int32_t kind = ask(name, &file, create, reinterpret_cast<const char *>(prefix));
    if (kind == 0 && errno != ENOMEM) return nullptr;
    ZvkConcatenation *record = nullptr;
    if (kind == kOneFile && file) {
        record = split(file, prefix);
    } else if (kind == kWholeGroup) {
        *isConcat = 1;
        record = split(name, prefix);
    }
    if (!record) errno = ENOMEM; // the name is no plain file's: a caller must not go on with it
    free(file);
    return record;
}

const char *_zvk_Concat_Next(ZvkConcatenation *record)
{
    if (record->flags & kWalking) {
        record->generation--;
        if (const char *file = generationOf(record)) return file;
        endWalk(record);
    }
    while (record->next < record->entries) {
        char *name = record->names[record->next];
        record->flags &= ~kWalking;
        char *base = nullptr;
        int32_t kind = ask(name, &base, false, record->nameSpace);
        // A group given as "base(*)" goes on as "base", which is never longer.
        if (kind == kWholeGroup && base && strlen(base) <= strlen(name)) strcpy(name, base);
        free(base);
        if (kind != kWholeGroup) {
            record->next++;
            return name;
        }
        record->flags |= kWalking;
        record->generation = 0;
        if (const char *file = generationOf(record)) return file;
        endWalk(record);
    }
    return nullptr;
}

void _zvk_Concat_Free(ZvkConcatenation *record) { free(record); }

void zvkConcatDump(const ZvkConcatenation *record)
{
    printf("Concatenation data:\n  Entries:    %d\n  Next:       %d\n  Generation: %d\n  Flags:      %d\n  Namespace:  "
           "%3.3s\n",
           record->entries, record->next, static_cast<int32_t>(record->generation), record->flags, record->nameSpace);
    if (!record->entries) return;
    printf("  Names:\n");
    for (uint32_t i = 0; i < record->entries; i++) printf("    %s\n", record->names[i]);
}
