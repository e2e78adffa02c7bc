// What the scanner asks of a byte, for each code page, derived from the page's characters.
#pragma once

#include <cstdint>

#include "xml/characters.h"
#include "xml/stop_set.h"

// Classes of a byte in `charClass`. What is listed is found by one look-up; the other characters of
// mark-up are compared through `markup`.
enum CharClass : int8_t {
    kIllegal = -1,
    kData = 0,
    kLess = 1,
    kAmpersand = 2,
    kCloseBracket = 3,
    kQuestion = 4,
    kExclamation = 5,
    kSlash = 6,
    kGreater = 7,
    kWhite = 8,
    kLook = 9 // UTF-8: the first byte of characters of which some are illegal
};

// Runs of text. They end at what is not allowed, and at mark-up that matters there.
enum class Run { Content, InQuotes, InApostrophes, Comment, Instruction, Cdata };
constexpr size_t kRuns = 6;

constexpr uint16_t kNoByte = 0x100;

struct PageTables {
    CharClass charClass[256];
    uint8_t nameClass[256];
    uint8_t hexValue[256]; // 255: no digit
    uint16_t markup[128];  // the page's byte for each ASCII character, or kNoByte
    StopSet stops[kRuns];
};

// A page of single bytes: the character of each byte, kNoCharacter where there is none alone (a
// part of a longer character: plain data).
constexpr uint16_t kNoCharacter = 0xFFFD;
void zvkDerivePageTables(const uint16_t (&toUnicode)[256], PageTables &tables);

extern const PageTables zvkUtf8Tables;
