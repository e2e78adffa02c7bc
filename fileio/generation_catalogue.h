// The catalogue of a generation data group: its image, its lock, and the thread's context that the
// routines work in.
#pragma once

#include <cstddef>
#include <cstdint>

// The file, byte for byte, in the byte order of the machine that wrote it; `order` tells.
struct GdgImage {
    char magic[4]; // "GDG\n"
    uint32_t order;
    uint32_t version;
    uint32_t limit;
    uint32_t days;
    uint32_t flags; // ZVK_GDG_..., and in memory kGdgRead, kGdgDirty
    uint32_t entries;
    uint32_t newest; // generation number of the last entry
    uint32_t epoch;  // counter of the last entry, from bit 15 up
    uint32_t fileSystem;
    uint8_t reserved[56];
    uint32_t entry[1000]; // oldest first: number in bits 0 to 13, counter of wraps from bit 15 up
};
static_assert(sizeof(GdgImage) == 4096 && offsetof(GdgImage, fileSystem) == 36 && offsetof(GdgImage, entry) == 96);

constexpr uint32_t kGdgRead = 0x01000000;  // in memory: the image was read
constexpr uint32_t kGdgDirty = 0x02000000; // in memory: the image must be written
constexpr uint32_t kGdgMaxEntries = 1000;
constexpr uint32_t kGdgEpochStep = 0x8000;
constexpr uint32_t gdgNumber(uint32_t entry) { return entry & 0x3FFF; }

enum GdgFileSystem : uint32_t {
    kGdgUnknown = 0,
    kGdgSys = 1,
    kGdgPlx = 2,
    kGdgJgt = 3,
    kGdgHdk = 4,
    kGdgRql = 5,
    kGdgOra = 6
};

struct GdgContext {
    int32_t fd;
    int32_t generation; // 0 the whole group, -1 none
    uint32_t fsCode;
    bool made; // the last question for a file's name entered a new generation
    GdgImage image;
    char baseName[1024];
    char cataloguePath[1024];
    char fileName[1024];
};

// This thread's context, closed and with its numbers cleared; null without storage.
GdgContext *zvkGdgContext(const char *prefix);

// Frees the one context that serves when no key could be made; for the library's unloading.
void zvkGdgReleaseFallback();

const char *zvkGdgFileSystemName(uint32_t code);

// The catalogue's path of a name, made on the way where `mode` is not negative. 0, or -1 if it is
// not there or cannot be.
int GDG_path(GdgContext *context, const char *name, int mode);

// Opens and locks the catalogue and reads it; with O_CREAT in `extra` it is only opened and locked.
// 0 or -1.
int GDG_open(GdgContext *context, int extra);

// Writes what was changed, unlocks, closes. 0 or -1.
int GDG_close(GdgContext *context);

// Resolves a name: 0, 1 not found, -1 error. `mode` 0: it must not exist, 1: it must, -1: only
// asks. On success generation and fileName are set.
int GDG_stat(GdgContext *context, const char *name, int mode);

// Enters `generation` into the catalogue. 0 or -1.
int GDG_add(GdgContext *context);

// Roll-off: makes `room` for so many entries under the limit. 0 or -1.
int GDG_empty(GdgContext *context, uint32_t room);

// Whether this thread's last question for a file's name entered a new generation.
bool zvkGdgMade();

// Takes the entry of a generation back whose file was not made after all.
void zvkGdgTakeBack(const char *file, const char *prefix);

// Drops entries whose files are gone.
void zvkGdgDropMissing(GdgContext *context);

// Takes `count` entries at `first` out of the list and sets newest and epoch from what is left.
void zvkGdgCloseUp(GdgContext *context, uint32_t first, uint32_t count);

// The file name of a generation into context->fileName; false if it is too long.
bool zvkGdgFormName(GdgContext *context, uint32_t number);
