/**
 * Run-time messages.
 *
 * A message is a number, a variant and inserts; its text and severity come from the catalog `kvr2run.cat`, found through `NLSPATH`.
 * docs/messages.md lists all of them.
 */
#ifndef KVR2_MESSAGES_H
#define KVR2_MESSAGES_H

#include <stdarg.h>

#include "kvr2/export.h"

ZVK_BEGIN_DECLS

ZVK_END_DECLS

#endif
