#include "support/compiled_program.h"

#include <deque>

static CompiledProgram::Records &newRecords()
{
    static auto *all = new std::deque<CompiledProgram::Records>;
    return all->emplace_back();
}

CompiledProgram::CompiledProgram(const std::string &programName, ZvkRoutine entry, int nested) : records(newRecords())
{
    records.name = programName;
    ipcb.resize(static_cast<size_t>(nested) + 1);
    ipcb[0].entry = entry;
    ipcb[0].nested = nested;
    pcb.version[0] = 5;
    pcb.version[1] = 1;
    pcb.version[2] = 1;
    pcb.ipcb = ipcb.data();
    pcb.name = records.name.data();
    pcb.nameLength = static_cast<uint32_t>(records.name.size());
    pcb.yearWindow = ZVK_NO_YEAR_WINDOW;
}
