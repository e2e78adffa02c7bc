// --list: the source with the map of its data.
#pragma once

#include <cstdint>

#include "cobol/syntax/tree.h"

namespace kvrcob {

void listing(const Group &group, uint32_t file);

} // namespace kvrcob
