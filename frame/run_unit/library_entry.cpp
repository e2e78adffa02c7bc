// The library as a program: `./libkvr2_64r.so` says what it is and leaves.
//
// The ELF entry point of the shared object is zvk_program_entry, and an .interp section names the
// program interpreter, so the kernel can start the file like any dynamically linked program. At
// that point only the system's own initialisation has run, not this library's constructor: nothing
// here may rely on Proccom.
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <unistd.h>

#include "frame/run_unit/banner.h"

namespace {

bool isLibraryName(const char *program)
{
    for (const char *prefix : {"lib", "zvk", "objf_reader_"})
        if (strncmp(program, prefix, strlen(prefix)) == 0) return true;
    return false;
}

// A COBOL program that was linked as a subroutine has this library's entry for its own, for want of
// a better one.
[[noreturn]] void refuseSubroutine(const char *program)
{
    fprintf(stderr,
            "\nError: You called/invoked a program (%s) that was linked as a subroutine (-e<entry>).\n"
            "       Please adjust your call to use the proper entry point name.\n"
            "       This program can not be invoked directly.\n",
            program);
    _exit(1);
}

} // namespace

extern "C" {

extern const char zvkInterpreter[];
__attribute__((section(".interp"), used)) const char zvkInterpreter[] = "/lib64/ld-linux-x86-64.so.2";

// Called by zvk_program_entry with the kernel's argument block: argc, then the argv pointers.
__attribute__((noreturn, used, visibility("hidden"))) void zvkIntroduce(const long *arguments)
{
    const char *program = arguments[0] > 0 ? reinterpret_cast<const char *>(arguments[1]) : "libkvr2_64r.so";
    const char *slash = strrchr(program, '/');
    if (slash) program = slash + 1;
    if (!isLibraryName(program)) refuseSubroutine(program);
    fprintf(stderr, "\n%s:\nCongratulations, you have found an easter-egg!\n", program);
    fprintf(stderr, "%s\n", kBanner);
    for (const char *version : kVersionStrings) fprintf(stderr, "\t%s\n", version);
    _exit(0);
}
}

// The entry is jumped to, not called: the stack holds argc and argv, and is aligned for a call only
// after this.
asm(R"(
    .text
    .globl zvk_program_entry
    .hidden zvk_program_entry
    .type zvk_program_entry, @function
zvk_program_entry:
    xorl %ebp, %ebp
    movq %rsp, %rdi
    andq $-16, %rsp
    call zvkIntroduce
    hlt
    .size zvk_program_entry, .-zvk_program_entry
)");
