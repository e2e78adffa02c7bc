// From C texts to what was asked for: objects, modules, a program.
#pragma once

#include <string>
#include <vector>

#include "cobol/driver/options.h"
#include "cobol/driver/workshop.h"

namespace kvrcob {

// One source as C; empty after errors.
struct Translated {
    std::string c;
    std::vector<std::string> programs, dependencies;
};

// Library and headers, beside the command: in the build tree build/bin, build/kvrcob/lib, include;
// installed bin, lib, include.
struct Home {
    std::string include, library;
};

Home findHome();

// What the mode makes, in the current folder unless -o says otherwise.
std::vector<std::string> outputsOf(const Options &o, const std::vector<Translated> &translated);

// Objects, modules or the program, from the C texts.
bool build(const Options &o, const Home &home, const std::vector<Translated> &translated, Workshop &shop);

} // namespace kvrcob
