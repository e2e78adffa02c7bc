// What a record is made of: --fields says it, or a COBOL copybook, --layout.
//
// kvrcob reads the copybook, in a program of nothing but the COPY: the map of its data gives places
// and lengths, its source after COPY the pictures. So the layout is the compiler's own, with SYNC,
// SIGN and whatever else moves bytes. The first record counts. What REDEFINES something is left
// out, an item that OCCURS has one field for each: HIST(2).
#pragma once

#include <vector>

#include "tools/file_tool.h"

namespace file_tool {

// --fields=NAME:LENGTH[:FORM],... in the order of the record. FORM: x text, 9 zoned, s9 zoned with
// a sign in its last byte, p packed, b binary, sb binary with a sign; a number after it is the
// decimal places: p2. False: it has said why.
bool parseFields(const char *text, std::vector<Field> *fields);

// False: it has said why.
bool readLayout(const char *copybook, std::vector<Field> *fields);

} // namespace file_tool
