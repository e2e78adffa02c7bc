// What the frame asks of the rooms above it. The frame declares, the room that owns the concept
// defines: so the includes run downhill, and the frame can still close files at a run unit's end.
#pragma once

#include "kvr2/run_unit.h"

// fileio: makes the files of a program that is being registered known: slots are set, EXTERNAL
// files shared. False without storage. zvkCheckFiles then holds what the program says of its
// EXTERNAL files against what the first program said of them: message 75.
bool zvkRegisterFiles(int32_t count, FCB **fcbs, FIB **fibs);
void zvkCheckFiles(int32_t count, FCB **fcbs, FIB **fibs, const PCB *pcb);

// fileio: whether a file is open, whether it is EXTERNAL, and its CLOSE through its own slot.
// Without USE procedures for a run unit that ends.
bool zvkFileIsOpen(const FCB *file);
bool zvkFileIsExternal(const FCB *file);
void zvkCloseFile(FCB *file, IPCB *element, bool useProcedures);

// fileio: whether a run unit's end has begun to close the file. When that CLOSE does not come back
// (its module ended the process, say), the second end leaves the file alone.
bool zvkFileIsClosing(const FCB *file);

// fileio: gives back what a failed OPEN left in a file that is not open: with its program's code
// the record goes, too.
void zvkForgetFailedOpen(FCB *file);

// fileio: closes the file-system modules at the runtime's end.
void zvkUnloadModules();

// sort: removes the spill files of this thread's sort, where a signal ends the process.
void zvkRemoveSpillFiles();

// sort: abandons a sort of this thread that is still under way; true if one could not be stopped.
bool zvkAbandonSort();
