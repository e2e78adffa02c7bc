// Generation data groups: the entries for files' names and for administration.
#include "kvr2/generations.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <glob.h>
#include <unistd.h>

#include "fileio/generation_catalogue.h"
#include "fileio/generation_files.h"

namespace {

constexpr int32_t kDefaultLimit = 255;

bool validName(const char *name, int32_t limit, const char *who)
{
    if (name && *name && limit <= static_cast<int32_t>(kGdgMaxEntries)) return true;
    fprintf(stderr, "Error: %s name/limit invalid\n", who);
    errno = EINVAL;
    return false;
}

// Closes the catalogue, keeping the first failure and its errno.
int32_t finish(GdgContext *context, int32_t result)
{
    int before = errno;
    int closed = context->fd >= 0 ? GDG_close(context) : 0;
    if (result != 0)
        errno = before;
    else
        result = closed;
    return result;
}

// The thread's context with the group's catalogue open and locked; null, with everything closed, if
// there is none.
GdgContext *openGroup(const char *name, const char *prefix)
{
    GdgContext *context = zvkGdgContext(prefix);
    if (!context) return nullptr;
    if (GDG_stat(context, name, 1) == 0) return context;
    finish(context, -1);
    return nullptr;
}

// Ages cannot be asked of the servers.
void refuseDays(GdgContext *context)
{
    if (context->fsCode <= kGdgJgt || !context->image.days) return;
    context->image.days = 0;
    fprintf(stderr, "Warning: File System %s does not support the -D option, forcing a value of 0!\n",
            zvkGdgFileSystemName(context->fsCode));
}

void rollOff(GdgContext *context)
{
    if (context->image.entries > context->image.limit) GDG_empty(context, 0);
}

int32_t createIn(GdgContext *context, char *name, int32_t limit, int32_t days, int32_t flags)
{
    uint32_t fsCode = context->fsCode;
    if (GDG_path(context, name, 1) != 0) return -1;
    if (GDG_stat(context, name, 0) != 1) return -1;
    context->fsCode = fsCode ? fsCode : context->fsCode;
    if (GDG_open(context, O_CREAT | O_EXCL) != 0) return -1;
    GdgImage &image = context->image;
    memset(&image, 0, sizeof image);
    memcpy(image.magic, "GDG\n", 4);
    image.order = 1234;
    image.version = 1;
    image.limit = static_cast<uint32_t>(limit < 1 ? kDefaultLimit : limit);
    image.days = days < 0 ? 0 : static_cast<uint32_t>(days);
    image.flags = (flags < 0 ? uint32_t{ZVK_GDG_SCRATCH} : static_cast<uint32_t>(flags) & 3) | kGdgDirty;
    image.fileSystem = context->fsCode;
    refuseDays(context);
    return 0;
}

// Whether a group has a catalogue, for a name that was not found in it.
bool catalogueIsThere(const GdgContext *context)
{
    struct stat found;
    if (stat(context->cataloguePath, &found) == 0) return true;
    if (errno != ENOENT && errno != ENOTDIR) fprintf(stderr, "Error: GDS_Name:stat - %d %s\n", errno, strerror(errno));
    return false;
}

// 0 if the context's names are the answer; 1 or -1 if there is none.
int resolveForFile(GdgContext *context, const char *name, bool create)
{
    int rc = GDG_stat(context, name, -1);
    if (rc < 0) return rc;
    if (rc == 1 && (!catalogueIsThere(context) || !create || context->generation < 1)) return 1;
    bool wholeGroup = rc == 0 && strcmp(context->fileName, context->baseName) == 0;
    if (wholeGroup || (rc == 0 && !create)) return 0;
    uint32_t before = context->image.newest;
    if (GDG_add(context) != 0 || !zvkGdgFormName(context, static_cast<uint32_t>(context->generation))) return -1;
    context->made = rc == 1 && context->image.newest != before;
    return 0;
}

// A catalogue that is there and cannot be used: the name is then a plain file's, and whoever looks
// for the generation later must be able to read why there is none.
void tellOfPlainFile(const GdgContext *context, const char *name, int error)
{
    if (context->cataloguePath[0] && access(context->cataloguePath, F_OK) == 0)
        fprintf(stderr, "Warning: GDG catalogue %s cannot be used (%s). The output goes to a plain file, %s\n",
                context->cataloguePath, strerror(error), name);
}

} // namespace

int32_t GDS_Name(const char *name, char **result, uint32_t create, const char *prefix)
{
    if (result) *result = nullptr;
    GdgContext *context = zvkGdgContext(prefix);
    // The answer's block comes first: an entry whose name cannot be handed out is one too many.
    char *answer = context && result ? static_cast<char *>(malloc(sizeof context->fileName)) : nullptr;
    if (!context || !name || (result && !answer)) {
        free(answer);
        errno = ENOMEM;
        return 0;
    }
    errno = 0;
    int rc = resolveForFile(context, name, create);
    if (context->fd >= 0 && GDG_close(context) != 0) rc = -1; // an entry that could not be written is none
    if (rc != 0) {
        if (rc < 0 && create) tellOfPlainFile(context, name, errno ? errno : EINVAL);
        free(answer);
        errno = 0;
        return 0;
    }
    if (result) *result = strcpy(answer, context->fileName);
    return strcmp(context->fileName, context->baseName) == 0 ? -1 : 1;
}

void zvkGdgTakeBack(const char *file, const char *prefix)
{
    GdgContext *context = zvkGdgContext(prefix);
    if (!context) return;
    // 1: the catalogue is open and the file is not there.
    if (GDG_stat(context, file, -1) == 1 && context->fd >= 0)
        for (uint32_t i = 0; i < context->image.entries; i++)
            if (gdgNumber(context->image.entry[i]) == static_cast<uint32_t>(context->generation)) {
                zvkGdgCloseUp(context, i, 1);
                break;
            }
    finish(context, 0);
}

int32_t GDG_Create(char *name, int32_t limit, int32_t days, int32_t flags, const char *prefix)
{
    if (!validName(name, limit, "GDG_Create")) return -1;
    GdgContext *context = zvkGdgContext(prefix);
    if (!context) return -1;
    return finish(context, createIn(context, name, limit, days, flags));
}

int32_t GDG_Alter(char *name, int32_t limit, int32_t days, int32_t flags, const char *prefix)
{
    if (!validName(name, limit, "GDG_Alter")) return -1;
    GdgContext *context = openGroup(name, prefix);
    if (!context) return -1;
    GdgImage &image = context->image;
    if (limit >= 0) image.limit = static_cast<uint32_t>(limit == 0 ? kDefaultLimit : limit);
    if (days >= 0) image.days = static_cast<uint32_t>(days);
    if (flags >= 0) image.flags = (image.flags & ~3u) | (static_cast<uint32_t>(flags) & 3);
    if (context->fsCode && context->fsCode != image.fileSystem) {
        if (image.fileSystem)
            fprintf(stderr,
                    "Warning: Changing File System from %s to %s\nIf this is unintended, please reset it before "
                    "doinganything else!\n",
                    zvkGdgFileSystemName(image.fileSystem), zvkGdgFileSystemName(context->fsCode));
        image.fileSystem = context->fsCode;
    }
    refuseDays(context);
    rollOff(context);
    image.flags |= kGdgDirty;
    return finish(context, 0);
}

int32_t GDG_Verify(char *name, const char *prefix)
{
    GdgContext *context = openGroup(name, prefix);
    if (!context) return -1;
    zvkGdgDropMissing(context);
    rollOff(context);
    return finish(context, 0);
}

int32_t GDG_Rebuild(char *name, const char *prefix)
{
    GdgContext *context = zvkGdgContext(prefix);
    if (!context || !name) return -1;
    int rc = GDG_stat(context, name, -1);
    if (rc < 0) return finish(context, rc);
    if (rc == 0 && context->image.fileSystem >= kGdgHdk) return finish(context, -1);
    if (rc == 1) {
        finish(context, 0);
        if (createIn(context, name, 0, -1, -1) != 0) return finish(context, -1);
        context->image.flags |= kGdgRead;
    } else {
        GdgImage &image = context->image;
        image.entries = image.newest = image.epoch = 0;
        memset(image.entry, 0, sizeof image.entry);
        image.flags |= kGdgDirty;
    }

    char real[PATH_MAX], pattern[PATH_MAX + 16];
    snprintf(pattern, sizeof pattern, "%s.g????v00", realpath(name, real) ? real : name);
    glob_t found{};
    // In order of their numbers: a limit that they exceed takes the oldest.
    int globbed = glob(pattern, GLOB_ERR | GLOB_NOESCAPE, nullptr, &found);
    if (globbed != 0 && globbed != GLOB_NOMATCH)
        fprintf(stderr, "Error: GDG_Rebuild:glob - %d %s\n", errno, strerror(errno));
    if (globbed == 0)
        for (size_t i = 0; i < found.gl_pathc; i++) GDG_stat(context, found.gl_pathv[i], -1); // enters what is there
    globfree(&found);
    return finish(context, globbed != 0 && globbed != GLOB_NOMATCH ? -1 : 0);
}

int32_t GDG_Unlink(char *name, const char *prefix)
{
    GdgContext *context = openGroup(name, prefix);
    if (!context) return -1;
    GDG_close(context);
    int result = unlink(context->cataloguePath);
    if (result != 0) fprintf(stderr, "Error: GDG_Unlink:unlink - %d %s\n", errno, strerror(errno));
    if (context->image.flags & kGdgRead) {
        context->image.flags |= ZVK_GDG_EMPTY;
        GDG_empty(context, 0);
    }
    return result;
}

int32_t GDG_remove(char *name, const char *prefix)
{
    GdgContext *context = zvkGdgContext(prefix);
    if (!context || !name) return -1;
    int rc = GDG_stat(context, name, -1);
    if (rc == 0 && strcmp(context->fileName, context->baseName) == 0) {
        finish(context, 0);
        return GDG_Unlink(name, prefix);
    }
    int32_t result = -1;
    GdgImage &image = context->image;
    for (uint32_t i = 0; rc >= 0 && (image.flags & kGdgRead) && context->generation > 0 && i < image.entries; i++) {
        if (gdgNumber(image.entry[i]) != static_cast<uint32_t>(context->generation)) continue;
        zvkGdgFormName(context, gdgNumber(image.entry[i]));
        if ((image.flags & ZVK_GDG_SCRATCH) && zvkGdsDelete(context->fsCode, context->fileName) != 0 && errno != ENOENT)
            fprintf(stderr, "Error: GDG_remove:unlink(%s) - %d %s\n", context->fileName, errno, strerror(errno));
        zvkGdgCloseUp(context, i, 1);
        result = 0;
        break;
    }
    return finish(context, result);
}

int32_t GDG_List(char *name, const char *prefix)
{
    GdgContext *context = openGroup(name, prefix);
    if (!context) return -1;
    const GdgImage &image = context->image;
    printf("GDG: %s\n  Catalogue   = %s\n  Limit       = %d\n  Days        = %d\n  %s\n  %s\n  Entries     = %d\n",
           context->baseName, context->cataloguePath, image.limit, image.days,
           image.flags & ZVK_GDG_EMPTY ? "Empty" : "NoEmpty", image.flags & ZVK_GDG_SCRATCH ? "Scratch" : "NoScratch",
           image.entries);
    if (image.entries) printf("  GDS:\n");
    for (uint32_t i = 0; i < image.entries; i++) {
        struct stat found;
        zvkGdgFormName(context, gdgNumber(image.entry[i]));
        bool missing = zvkGdsStat(context->fsCode, context->fileName, &found) != 0;
        printf("%-4d  %8u: %s%s\n", i + 1, image.entry[i] >> 15, context->fileName, missing ? " (missing)" : "");
    }
    return finish(context, 0);
}
