// What the command was asked for.
#pragma once

#include <string>
#include <vector>

#include "cobol/emit/options.h"
#include "cobol/text/preprocessor.h"

namespace kvrcob {

struct Options {
    // Up to Preprocess, how far it goes: each stops before the one that stands before it.
    enum Mode { Program, Module, Object, Assembly, Preprocess, Check, Run } mode = Program;
    bool module = false; // -m, also where another option stops earlier
    std::string output;
    std::vector<std::string> sources, linker, arguments, objects;
    TextOptions text;
    CopyPath copy;
    EmitOptions emit;
    std::string optimisation; // as it was asked for; empty: kvrcob chooses
    bool debug = false, verbose = false, dependencies = false, list = false, keep = false, answered = false;
};

// Reads the command line; a wrong one ends the command with a message. True if it was a question
// (--help, --version), which has its answer now.
bool parseOptions(int argc, char **argv, Options &o);
[[noreturn]] void usage(const std::string &text);

// What a source is called without folder and extension: what it makes has this name.
std::string stemOf(const std::string &path);

} // namespace kvrcob
