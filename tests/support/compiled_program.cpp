#include "support/compiled_program.h"

CompiledProgram::CompiledProgram(const std::string &programName, ZvkRoutine entry, int nested)
    : name(programName), ipcb(static_cast<size_t>(nested) + 1)
{
    ipcb[0].entry = entry;
    ipcb[0].nested = nested;
    pcb.version[0] = 5;
    pcb.version[1] = 1;
    pcb.version[2] = 1;
    pcb.ipcb = ipcb.data();
    pcb.name = name.data();
    pcb.nameLength = static_cast<uint32_t>(name.size());
    pcb.yearWindow = ZVK_NO_YEAR_WINDOW;
}
