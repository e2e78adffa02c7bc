// A program as the compiler would lay it out: PCB, IPCB, name.
//
//     CompiledProgram main("MAINPGM", entry);
//     _zvkPgmInit(&main.pcb);
//     _zvkPgmExit(&main.ipcb[0].ent);
//
// compiledMain is the shape of a compiled main program: prologue, jump buffer, body, epilogue.
//
//     CompiledProgram main("MAINPGM");
//     int status = compiledMain(main, [] { _zvkRunUnitTerm(3); });      // STOP RUN; status is 3
#pragma once

#include <csetjmp>
#include <string>
#include <vector>

#include "kvr2/run_unit.h"
#include "kvr2/termination.h"

// Its records stay until the process ends, as those of a program in a shared object do until it is
// unloaded.
struct CompiledProgram {
    explicit CompiledProgram(const std::string &programName, ZvkRoutine entry = nullptr, int nested = 0);
    CompiledProgram(const CompiledProgram &) = delete;
    CompiledProgram &operator=(const CompiledProgram &) = delete;

    struct Records {
        std::string name;
        std::vector<IPCB> ipcb; // the program, then its nested programs
        PCB pcb{};
    };
    Records &records;
    std::vector<IPCB> &ipcb = records.ipcb;
    PCB &pcb = records.pcb;
};

// Runs `body` as the body of a main program. Returns 0 when it came to its end, else what STOP RUN
// or an abort jumped with.
template <class Body>
int compiledMain(CompiledProgram &program, Body body)
{
    _zvkPgmInit(&program.pcb);
    volatile int status = 0;
    if (program.pcb.flag & ZVK_PCB_MAIN) status = sigsetjmp(*static_cast<sigjmp_buf *>(_zvkGetJmpBuffer()), 1);
    if (status == 0) body();
    _zvkPgmTerm(&program.pcb);
    return status;
}

// A called program: prologue, body, epilogue with GOBACK.
template <class Body>
void compiledCall(CompiledProgram &program, Body body)
{
    _zvkPgmInit(&program.pcb);
    body();
    _zvkPgmExit(&program.ipcb[0].ent);
}
