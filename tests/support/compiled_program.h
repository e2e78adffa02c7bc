// A program as the compiler would lay it out: PCB, IPCB, name.
//
//     CompiledProgram main("MAINPGM", entry);
//     _zvkPgmInit(&main.pcb);
//     _zvkPgmExit(&main.ipcb[0].ent);
#pragma once

#include <string>
#include <vector>

#include "kvr2/run_unit.h"

struct CompiledProgram {
    explicit CompiledProgram(const std::string &programName, ZvkRoutine entry = nullptr, int nested = 0);
    CompiledProgram(const CompiledProgram &) = delete;
    CompiledProgram &operator=(const CompiledProgram &) = delete;

    std::string name;
    std::vector<IPCB> ipcb; // the program, then its nested programs
    PCB pcb{};
};
