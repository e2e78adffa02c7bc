#include "chardata/code_page_fixture.h"

#include <cstring>

void useCodePages(int32_t row, const std::string &localeName, const std::string &ebcdicCodePage)
{
    static Proccom own;
    if (!_zvkProccom) _zvkProccom = &own;
    // What the end of the runtime does.
    if (_zvkProccom->codePageHook) reinterpret_cast<void (*)()>(_zvkProccom->codePageHook)();
    _zvkProccom->ccsid = row;
    strcpy(_zvkProccom->localeName, localeName.c_str());
    strcpy(_zvkProccom->ebcdicCodePage, ebcdicCodePage.c_str());
}
