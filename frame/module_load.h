// Loading of companions: the shared objects that the library takes in on demand, file-system
// modules and the sort engine.
//
// A companion is looked for in the library's own folder, then wherever the system's loader looks,
// then in the folder of the installation:
//
//     zvkLoadModule("zvkrflsq_64r.so", RTLD_NOW, _zvkProccom->libDir, _zvkProccom->installDir)
#pragma once

// Loads a companion's shared object; null after a line on stderr that says why.
void *zvkLoadModule(const char *file, int flags, const char *libDir, const char *installDir);
