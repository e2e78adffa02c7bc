// The body of MOVE between date-time items, for the verbs that end in one.
#pragma once

#include "datetime/system_form.h"

// Without any check of the operands. The items may be the same.
void moveItem(const char *sender, char *receiver, const FD *senderFD, const FD *receiverFD, int16_t windowYear);

// Cut or padded with blanks; the two may overlap.
void copyPadded(const char *from, uint64_t length, char *to, uint64_t room);
