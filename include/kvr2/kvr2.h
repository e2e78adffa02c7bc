/** All public headers of the COBOL run-time library. */
#ifndef KVR2_KVR2_H
#define KVR2_KVR2_H

#include "kvr2/messages.h"
#include "kvr2/run_unit.h"
#include "kvr2/storage.h"

#endif
