/**
 * EXTERNAL data items and the library's allocators.
 */
#ifndef KVR2_STORAGE_H
#define KVR2_STORAGE_H

#include "kvr2/export.h"

ZVK_BEGIN_DECLS

ZVK_END_DECLS

#endif
