// Native bytes to EBCDIC and back: what other rooms need of it besides _zvkUniAtoE and _zvkUniEtoA.
#pragma once

// Drops the byte tables that were built from the default converters, when those are closed.
void zvkForgetByteTables();
