// Pictures that were taken apart already.
//
// A program uses the same few pictures over and over, and taking one apart costs as much as reading
// the date. So the process keeps the first 64 of them, as they were given and as the services walk
// them. A slot is filled once and never changes again: who reads it takes no lock, and who finds
// it taken by another picture does without.
#pragma once

#include <cstddef>

#include "dateservices/picture.h"

namespace dates {

// As the picture is to be read: for a date to be scanned it is cleared of blanks first, for one to
// be written it stays as it is.
enum class Clearing : bool { No, Yes };

// The picture that those bytes give, for good, or null where it is too long, or its slot taken.
const Picture *knownPicture(const char *text, size_t length, Clearing clearing);

} // namespace dates
