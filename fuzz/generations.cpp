// Generation data groups: any bytes as a group's catalogue, then all that can be asked of it.
#include <cstdio>

#include "fuzz.h"
#include "kvr2/generations.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::Input input(data, size);
    const uint32_t deeds = input.take<uint32_t>();
    const int32_t number = input.take<int16_t>();
    const std::string catalogue = input.rest();
    fuzz::emptyScratch();
    fuzz::putFile(fuzz::scratch() + "/daily.catalogue", catalogue.data(), catalogue.size());
    fuzz::putFile(fuzz::scratch() + "/daily.g0001v00", "record", 6);
    static FILE *const quiet = freopen("/dev/null", "w", stdout);
    if (!quiet) abort();

    char group[] = "daily", file[32];
    snprintf(file, sizeof file, "daily(%+d)", number % 2000);
    char *name = nullptr;
    GDS_Name(file, &name, deeds & 1, "sys");
    if (deeds & 2) GDG_List(group, "sys");
    if (deeds & 4) GDG_Verify(group, "sys");
    if (deeds & 8) GDG_Rebuild(group, "sys");
    if (deeds & 16) GDG_Alter(group, number, static_cast<int32_t>(deeds >> 8 & 0xFF), static_cast<int32_t>(deeds >> 16), "sys");
    snprintf(file, sizeof file, "daily(%+d)", static_cast<int>(deeds >> 24) - 128);
    GDS_Name(file, &name, deeds & 32, "sys");
    if (deeds & 64) GDG_remove(file, "sys");
    if (deeds & 128) GDG_Unlink(group, "sys");
    return 0;
}
