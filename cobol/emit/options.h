// What the emitter is asked for.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kvrcob {

struct EmitOptions {
    bool check = false;   // -fcheck=all
    bool truncate = true; // -fno-trunc turns it off
    bool ebcdic = false;  // -febcdic: the order of texts
    // Whether the first program is what main calls. MainIfFirst: a weak main, of which the linker
    // takes that of the first object, or another one in its place.
    enum MainFunction : uint8_t { NoMain, Main, MainIfFirst } main = Main;
    bool lines = true;                      // #line
    bool readable = false;                  // -S: C for people, several lines a statement
    bool debugMap = false;                  // -g: what lies where, for the debugger
    std::vector<std::string> otherPrograms; // names of outermost programs of the other sources
};

} // namespace kvrcob
