// Resolving a name against a group's catalogue, entering a generation, and rolling off old ones.
//
// Entries sort by age as plain numbers: below, the generation's number from 1 to 9999, and above it
// a counter that goes up each time the numbers wrap.
#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "fileio/generation_catalogue.h"
#include "fileio/generation_files.h"
#include "kvr2/generations.h"

namespace {

constexpr int32_t kMaxGeneration = 9999;

enum class Form { WholeGroup, Relative, Absolute, Number, None };

// Cuts a name into its base and what is after it.
Form parseName(char *name, int32_t *number)
{
    *number = 0;
    size_t length = strlen(name);
    if (length && name[length - 1] == ')') {
        char *open = strrchr(name, '(');
        if (!open) return Form::None;
        *open = 0;
        name[length - 1] = 0;
        const char *text = open + 1;
        if (strcmp(text, "*") == 0) return Form::WholeGroup;
        char *end;
        errno = 0;
        long value = strtol(text, &end, 10);
        if (end == text || *end || errno == ERANGE || value < -kMaxGeneration || value > kMaxGeneration)
            return Form::None;
        *number = static_cast<int32_t>(value);
        return *text == '+' || *text == '-' || value == 0 ? Form::Relative : Form::Absolute;
    }
    char *dot = strrchr(name, '.');
    if (!dot || strlen(dot) != 9 || dot[1] != 'g' || strcmp(dot + 6, "v00") != 0) return Form::WholeGroup;
    for (int i = 2; i < 6; i++) {
        if (dot[i] < '0' || dot[i] > '9') return Form::WholeGroup;
        *number = *number * 10 + (dot[i] - '0');
    }
    *dot = 0;
    return Form::Number;
}

// Whether the catalogue is there: 0, or what GDG_stat answers.
int findCatalogue(const GdgContext *context, int mode)
{
    struct stat found;
    if (stat(context->cataloguePath, &found) == 0) {
        if (S_ISREG(found.st_mode)) return 0;
        fprintf(stderr, "Error: GDG catalogue %s is not regular.\n", context->cataloguePath);
        errno = EINVAL;
        return -1;
    }
    if (errno == ENOENT || errno == ENOTDIR) {
        if (mode != 1) return 1;
        fprintf(stderr, "Error: GDG %s not found.\n", context->baseName);
        return -1;
    }
    if (errno != ENAMETOOLONG)
        fprintf(stderr, "Error: GDG_stat:stat(%s) - %d %s\n", context->cataloguePath, errno, strerror(errno));
    return -1;
}

// The generation that lies `back` before the newest; false if the list does not reach so far.
bool countBack(GdgContext *context, int32_t back)
{
    const GdgImage &image = context->image;
    if (static_cast<uint32_t>(back) >= image.entries) return false;
    context->generation = static_cast<int32_t>(gdgNumber(image.entry[image.entries - 1 - static_cast<uint32_t>(back)]));
    return true;
}

bool resolveRelative(GdgContext *context, int32_t number)
{
    if (number <= 0) return countBack(context, -number);
    int64_t next = int64_t{context->image.newest} + number;
    context->generation = static_cast<int32_t>(next > kMaxGeneration ? next - kMaxGeneration : next);
    return true;
}

int outOfRange(GdgContext *context, const char *kind, int mode)
{
    if (mode != -1 || kind[0] == 'D')
        fprintf(stderr, "Error: %s access exceeds the entries allocated for GDG %s\n", kind, context->baseName);
    errno = EINVAL;
    context->generation = -1;
    return 1;
}

int alreadyExists(const GdgContext *context, char letter, const char *name)
{
    fprintf(stderr, "Error: GD%c %s already exists.\n", letter, name);
    errno = EINVAL;
    (void)context;
    return -1;
}

int statGeneration(GdgContext *context, int mode)
{
    if (context->generation < 1 || !zvkGdgFormName(context, static_cast<uint32_t>(context->generation))) {
        errno = context->generation < 1 ? EINVAL : ENAMETOOLONG;
        return -1;
    }
    struct stat found;
    if (zvkGdsStat(context->fsCode, context->fileName, &found) == 0) {
        if (!S_ISREG(found.st_mode)) {
            fprintf(stderr, "Error: GDS file %s is not regular.\n", context->fileName);
            errno = EINVAL;
            return -1;
        }
        if (GDG_add(context) != 0) return -1;
        return mode ? 0 : alreadyExists(context, 'S', context->fileName);
    }
    if (errno != ENOENT) {
        fprintf(stderr, "Error: GDG_stat:stat(%s) - %d %s\n", context->fileName, errno, strerror(errno));
        return -1;
    }
    if (mode == -1) return 1;
    fprintf(stderr, "Error: GDS %s not found.\n", context->fileName);
    return -1;
}

// Numbers the entries anew from an epoch on, which goes up where the numbers fall; returns the last
// one.
uint64_t renumber(GdgImage &image, uint64_t epoch)
{
    uint32_t previous = 0;
    for (uint32_t i = 0; i < image.entries; i++) {
        uint32_t number = gdgNumber(image.entry[i]);
        if (number < previous) epoch += kGdgEpochStep;
        image.entry[i] = static_cast<uint32_t>(epoch) | number;
        previous = number;
    }
    return epoch;
}

void takeLast(GdgImage &image)
{
    uint32_t last = image.entries ? image.entry[image.entries - 1] : 0;
    image.newest = gdgNumber(last);
    image.epoch = last & ~(kGdgEpochStep - 1);
}

// The entry for a number that is new in the list.
uint32_t newEntry(GdgImage &image, uint32_t number)
{
    uint64_t epoch = image.epoch;
    if (image.entries && image.newest >= 9000 && number < 1000) {
        epoch += kGdgEpochStep;
        if (epoch > UINT32_MAX) epoch = renumber(image, 0) + kGdgEpochStep;
    } else if (image.entries && image.newest < 1000 && number >= 9000) {
        // An old generation, from before the numbers wrapped.
        if (epoch == 0) epoch = renumber(image, kGdgEpochStep);
        epoch -= kGdgEpochStep;
    }
    return static_cast<uint32_t>(epoch) | number;
}

// How many of the oldest `count` entries are old enough to roll off.
uint32_t oldEnough(GdgContext *context, uint32_t count)
{
    const GdgImage &image = context->image;
    if (!image.days) return count;
    time_t youngest = time(nullptr) - static_cast<time_t>(image.days) * 86400;
    for (uint32_t i = 0; i < count; i++) {
        struct stat found;
        if (!zvkGdgFormName(context, gdgNumber(image.entry[i]))) continue;
        if (zvkGdsStat(context->fsCode, context->fileName, &found) == 0) {
            if (found.st_mtime > youngest) return i;
        } else if (errno != ENOENT) {
            fprintf(stderr, "Error: GDG_empty:stat(%s) - %d %s\n", context->fileName, errno, strerror(errno));
        }
    }
    return count;
}

void scratch(GdgContext *context, uint32_t count)
{
    for (uint32_t i = 0; i < count; i++) {
        if (!zvkGdgFormName(context, gdgNumber(context->image.entry[i]))) continue;
        if (zvkGdsDelete(context->fsCode, context->fileName) != 0 && errno != ENOENT)
            fprintf(stderr, "Error: GDG_empty:unlink(%s) - %d %s\n", context->fileName, errno, strerror(errno));
    }
}

} // namespace

bool zvkGdgFormName(GdgContext *context, uint32_t number)
{
    int length = snprintf(context->fileName, sizeof context->fileName, "%s.g%4.4dv%2.2d", context->baseName,
                          static_cast<int>(number), 0);
    return length > 0 && static_cast<size_t>(length) < sizeof context->fileName;
}

void zvkGdgCloseUp(GdgContext *context, uint32_t first, uint32_t count)
{
    GdgImage &image = context->image;
    if (!count) return;
    memmove(image.entry + first, image.entry + first + count, (image.entries - first - count) * sizeof *image.entry);
    image.entries -= count;
    memset(image.entry + image.entries, 0, count * sizeof *image.entry);
    takeLast(image);
    image.flags |= kGdgDirty;
}

void zvkGdgDropMissing(GdgContext *context)
{
    GdgImage &image = context->image;
    for (uint32_t i = 0; i < image.entries;) {
        struct stat found;
        bool gone = zvkGdgFormName(context, gdgNumber(image.entry[i])) &&
                    zvkGdsStat(context->fsCode, context->fileName, &found) != 0 && errno == ENOENT;
        if (gone)
            zvkGdgCloseUp(context, i, 1);
        else
            i++;
    }
}

int GDG_stat(GdgContext *context, const char *name, int mode)
{
    if (!name || strlen(name) >= sizeof context->baseName) {
        errno = ENAMETOOLONG;
        return -1;
    }
    strcpy(context->baseName, name);
    int32_t number;
    Form form = parseName(context->baseName, &number);
    if (form == Form::None || !context->baseName[0]) {
        errno = EINVAL;
        return -1;
    }
    errno = 0;
    if (GDG_path(context, context->baseName, -1) != 0 && errno == ENAMETOOLONG) return -1;
    if (int answer = findCatalogue(context, mode)) return answer;
    if (GDG_open(context, 0) != 0) return -1;

    switch (form) {
    case Form::Relative:
        if (!resolveRelative(context, number)) return outOfRange(context, "Relative", mode);
        return statGeneration(context, mode);
    case Form::Absolute:
        if (!countBack(context, number)) return outOfRange(context, "Direct", mode);
        return statGeneration(context, mode);
    case Form::Number:
        context->generation = number;
        return statGeneration(context, mode);
    default:
        strcpy(context->fileName, context->baseName);
        return mode ? 0 : alreadyExists(context, 'G', context->baseName);
    }
}

int GDG_add(GdgContext *context)
{
    GdgImage &image = context->image;
    if (context->generation < 1) return -1;
    auto number = static_cast<uint32_t>(context->generation);
    for (uint32_t i = 0; i < image.entries; i++)
        if (gdgNumber(image.entry[i]) == number) return 0;
    if (image.entries >= image.limit) {
        char fileName[sizeof context->fileName]; // the roll-off forms names of its own
        strcpy(fileName, context->fileName);
        GDG_empty(context, 1);
        strcpy(context->fileName, fileName);
    }
    if (image.entries >= kGdgMaxEntries) {
        errno = ENOSPC;
        fprintf(stderr, "Error: GDG_add(%s) - %d %s\n", context->baseName, errno, strerror(errno));
        return -1;
    }
    uint32_t entry = newEntry(image, number);
    image.entry[image.entries++] = entry;
    if (image.entries > 1 && entry < image.entry[image.entries - 2])
        std::sort(image.entry, image.entry + image.entries);
    takeLast(image);
    image.flags |= kGdgDirty;
    return 0;
}

int GDG_empty(GdgContext *context, uint32_t room)
{
    GdgImage &image = context->image;
    if (!image.entries) return 0;
    uint32_t count = image.entries;
    if (!(image.flags & ZVK_GDG_EMPTY)) {
        zvkGdgDropMissing(context);
        if (image.entries + room <= image.limit) return 0;
        count = std::min(image.entries - image.limit + room, image.entries);
    }
    count = oldEnough(context, count);
    if (!count) return 0;
    if (image.flags & ZVK_GDG_SCRATCH) scratch(context, count);
    zvkGdgCloseUp(context, 0, count);
    return 0;
}
