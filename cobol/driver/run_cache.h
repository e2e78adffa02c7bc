// `kvrcob run`: the program in the cache, and its start.
#pragma once

#include <string>
#include <vector>

#include "cobol/driver/c_compiler.h"

namespace kvrcob {

// The path in the cache of `run` for what these sources make; empty if there can be no cache. What
// was not run for a month is removed.
std::string cachedProgram(const Options &o, const Home &home, const std::vector<Translated> &translated);

// Whether a whole program of this user is there.
bool isInCache(const std::string &path);

// Becomes the program at this path, or the open one; comes back with an exit status if it cannot.
int start(Options &o, const std::string &path, int program);

} // namespace kvrcob
