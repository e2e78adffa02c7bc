// The exported data objects of the frame.
#include "kvr2/run_unit.h"

Proccom *_zvkProccom;
DmrRut _Dmr_rut;
