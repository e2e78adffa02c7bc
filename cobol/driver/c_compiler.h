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

// What is made of source i, in the current folder unless -o says otherwise: one program of all
// sources, or an object, a C text, modules of each.
std::vector<std::string> outputsOf(const Options &o, const std::vector<Translated> &translated, size_t i);
// -MD: where the dependencies of source i go. "pay.d" for the program "pay" and the object "pay.o".
std::string dependenciesFile(const Options &o, size_t i);
// The words of CC, or cc.
std::vector<std::string> compilerWords();

// Objects, modules or the program, from the C texts.
bool build(const Options &o, const Home &home, const std::vector<Translated> &translated, const Workshop &shop);

} // namespace kvrcob
