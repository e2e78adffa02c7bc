// Between text and the parts of a date, as the services have it: work storage, eras, default
// pictures.
#pragma once

#include "dateservices/feedback.h"

namespace dates {

// Both return a message, kSuccess if all is well.
uint32_t readDate(Service service, const VSTRING *date, const VSTRING *picture, DateParts &parts);
uint32_t printDate(Service service, const VSTRING *picture, char *out, DateParts &parts);

} // namespace dates
