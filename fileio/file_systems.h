// The file systems: code, prefix, module; loading and unloading the modules.
#pragma once

#include "kvr2/fileio.h"

enum ZvkFileSystemCode : uint8_t {
    kNoFileSystem = 0,
    kJgt = 1,
    kHdk = 2,
    kPsx = 3,
    kLsq = 4,
    kStl = 5,
    kRsd = 6,
    kWbr = 7,
    kRql = 8,
    kPip = 9,
    kSok = 10,
    kMqu = 11,
    kPlx = 12,       // the file itself decides
    kUseDefault = 13 // the FCB's default applies
};

// One row a code, process-wide. Not locked: two threads' first opens may both load a module, which
// the loader counts.
struct ZvkFileSystem {
    char prefix[4];
    const char *module; // file name, empty for none
    void *handle;
    FileModuleInit init;
    void **operations;
};

ZvkFileSystem *zvkFileSystem(uint8_t code);

// The code of a prefix in any case, canonical or further ("nat", "raw", ...); -1 for an unknown
// one.
int zvkCodeOfPrefix(const char *prefix, size_t length);

// The code that the option FILESYS stands for; an unknown one is replaced by "plx".
uint8_t zvkDefaultCode();

// Makes the module of a code ready. False if there is none that works.
bool zvkReadyFileSystem(ZvkFileSystem *system);
