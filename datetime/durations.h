// The bodies of the duration verbs, without any check of their operands.
#pragma once

#include "datetime/system_form.h"

// `words` 32-bit words of durations.
void moveByDurations(const char *source, const FD *fd, char *receiver, uint32_t words, const DurationEntry *durations,
                     int16_t windowYear, bool adding);

int32_t durationBetween(const char *lhs, const FD *lhsFD, const char *rhs, const FD *rhsFD, uint32_t unit,
                        int16_t windowYear);
