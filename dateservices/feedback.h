// Condition tokens: how a service says what went wrong.
#pragma once

#include <cstdint>

#include "dateservices/date_parts.h"

namespace dates {

inline constexpr uint32_t kSuccess = 0, kUnknownFault = 1, kNoWorkStorage = 813;

// Fills the token for a message, all zero for kSuccess. Without one the message is written.
void report(FeedbackCode *fc, uint32_t message);

// Which service asks what a status means.
enum class Service { days, seconds, lilianToText, secondsToText, parts };
uint32_t messageOfScan(Service service, Status status);
uint32_t messageOfValidation(Service service, Status status);
uint32_t messageOfWriting(Service service, Status status);

// The eras of a picture; a message if there is no storage. Null without eras.
uint32_t loadEras(EraKind kind, EraTable **table);

} // namespace dates
