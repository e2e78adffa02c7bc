// Wrapping of message text to a terminal's width.
#pragma once

#include <cstddef>

// Wraps the lines of `text` in place, in storage of `size` bytes; a width below 18 or above 256
// counts as 80. Returns the text's new length.
size_t zvkWrapText(char *text, size_t size, unsigned width);
