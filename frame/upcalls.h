// What the frame asks of the rooms above it. The frame declares, the room that owns the concept defines: so the includes run downhill,
// and the frame can still close files at a run unit's end.
#pragma once

#include "kvr2/run_unit.h"

// fileio: makes the files of a program that is being registered known (EXTERNAL files are shared, slots are set).
void zvkRegisterFiles(PCB *pcb, IPCB *ipcb);
