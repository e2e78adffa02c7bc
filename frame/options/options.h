// The run-time options of the environment variable COBRTOPT.
#pragma once

// Sets Proccom's option words, ERRCOUNT, UPSI and the default file system from COBRTOPT. Called
// once at each start of the runtime.
void zvkParseOptions();
