// What a record is made of, out of a COBOL copybook: --layout.
//
// kvrcob reads it, in a program of nothing but the COPY: the map of its data gives places and
// lengths, its source after COPY the pictures. So the layout is the compiler's own, with SYNC, SIGN
// and whatever else moves bytes. The first record counts. What REDEFINES something is left out, an
// item that OCCURS has one field for each: HIST(2).
#pragma once

#include <vector>

#include "tools/file_tool.h"

namespace file_tool {

// False: it has said why.
bool readLayout(const char *copybook, std::vector<Field> *fields);

} // namespace file_tool
