// The text of a displayed item.
#pragma once

#include "kvr2/console.h"

inline constexpr size_t kDisplayBuffer = 1024;

// Makes the text of an item, in `buffer` or where the item stands, and sets the item's `width` to
// its length. Null: no valid kind or size.
const char *zvkDisplayText(DisplayItem &item, char decimalPoint, char (&buffer)[kDisplayBuffer]);
