// Deleting and looking at a generation's file, by file system.
#pragma once

#include <cstdint>
#include <sys/stat.h>

// As stat and unlink: 0, or -1 with errno; ENOENT where there is no such file.
int zvkGdsStat(uint32_t fsCode, const char *file, struct stat *result);
int zvkGdsDelete(uint32_t fsCode, const char *file);
