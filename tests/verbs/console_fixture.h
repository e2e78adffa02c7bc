// A process record for tests of the console verbs, with all device streams unbound.
#pragma once

#include "kvr2/run_unit.h"

inline void freshConsole()
{
    static Proccom own;
    if (!_zvkProccom) {
        own.ccsid = -1;
        _zvkProccom = &own;
    }
    for (FILE *Proccom::*stream :
         {&Proccom::sysin, &Proccom::sysout, &Proccom::msgs, &Proccom::conIn, &Proccom::conOut, &Proccom::syspunch})
        _zvkProccom->*stream = nullptr;
}
