// ALPHABET and CLASS of SPECIAL-NAMES (alphabets.cpp).
#pragma once

#include <cstdint>
#include <string>

#include "cobol/meaning/names.h"

namespace kvrcob {

// Writes the tables of a program's alphabets and classes into `globals`. `number`: the last that a
// constant has. `ebcdic`: with -febcdic, the order of a program that names none; else null.
void emitAlphabets(Meaning &meaning, Program &p, Alphabet *ebcdic, uint32_t &number, std::string &globals);

// Is this an order of characters that needs no ALPHABET clause, and the machine's own?
bool standardOrder(Word name);

} // namespace kvrcob
