// PICTURE strings: what they say about an item.
#pragma once

#include <string>

#include "cobol/syntax/tree.h"

namespace kvrcob {

// Reads a picture. An empty result text is success, otherwise it says what is wrong.
std::string readPicture(std::string_view text, char currency, bool commaIsPoint, Picture &out);

// The edit class of a numeric-edited picture as the library wants it (ZVK_EDIT_...).
int editClass(const Picture &picture);

} // namespace kvrcob
