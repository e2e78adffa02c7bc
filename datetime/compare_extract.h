// Comparison of items by their system forms, for the verbs that end in one.
#pragma once

#include "datetime/system_form.h"

// -1, 0 or 1, by the forms under the mask.
int compareItems(const char *left, const char *right, const FD *leftFD, const FD *rightFD, int16_t windowYear);

// Whether relation `op` holds for a sign; 0 for no relation.
int32_t relationHolds(uint32_t op, int sign);
