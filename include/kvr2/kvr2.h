/** All public headers of the COBOL run-time library. */
#ifndef KVR2_KVR2_H
#define KVR2_KVR2_H

#include "kvr2/alphabet.h"
#include "kvr2/code_pages.h"
#include "kvr2/conditions.h"
#include "kvr2/console.h"
#include "kvr2/decimal.h"
#include "kvr2/decimal_conversions.h"
#include "kvr2/decimal_scaling.h"
#include "kvr2/edited_moves.h"
#include "kvr2/file_module.h"
#include "kvr2/file_records.h"
#include "kvr2/fileio.h"
#include "kvr2/generations.h"
#include "kvr2/hash_table.h"
#include "kvr2/inspect.h"
#include "kvr2/messages.h"
#include "kvr2/national.h"
#include "kvr2/program_manager.h"
#include "kvr2/run_unit.h"
#include "kvr2/search_all.h"
#include "kvr2/signals.h"
#include "kvr2/sort.h"
#include "kvr2/storage.h"
#include "kvr2/string_unstring.h"
#include "kvr2/termination.h"

#endif
