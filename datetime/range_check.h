// Is what an item holds a date or time? The test of compiled programs and the check that verbs make
// when they are asked to.
#pragma once

#include "datetime/system_form.h"

// By a format that is a date-time one, over `length` bytes.
bool isValidItem(const char *item, const FD *fd, uint64_t length, int16_t windowYear);

// Stops the run unit on an assertion of the function "Range_check" unless the item is valid or its
// descriptor has no length.
void rangeCheckItem(const char *item, const FD *fd, int16_t windowYear, const char *function = "Range_check");
