// Where compiled code called the library; see call_site.h.
#include "frame/signals/call_site.h"

#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <execinfo.h>
#include <pthread.h>

#include "base/shell_word.h"
#include "frame/locks.h"
#include "frame/programs/program_table.h"
#include "frame/signals/traceback.h"

namespace {

constexpr int kMostFrames = 32;

// The program of the run unit whose PCB lies in an object; null for none, and for an object that
// holds several, of which any may have called.
const PCB *programIn(const void *base)
{
    Runcom *runcom = zvkCurrentRuncom();
    if (!runcom || !runcom->plle) return nullptr;
    // Another thread may load a program just now, or this one while the message comes up.
    bool lock = !zvkSingleThreaded();
    if (lock && pthread_mutex_trylock(&programMutex) != 0) return nullptr;

    const PCB *found = nullptr;
    bool several = false;
    for (HashEntry *entry = HashTable_Next(runcom->plle, nullptr); entry; entry = HashTable_Next(runcom->plle, entry)) {
        const LLE *lle = zvkProgramOf(entry);
        Dl_info info;
        if (!lle || !lle->pcb || lle->pcb == found || !dladdr(lle->pcb, &info) || info.dli_fbase != base) continue;
        several |= found != nullptr;
        found = lle->pcb;
    }

    if (lock) pthread_mutex_unlock(&programMutex);
    return several ? nullptr : found;
}

// "ledger.cob:120" for an address of an object that was compiled with line tables.
bool lineOf(const Dl_info &object, const void *address, char *line, int size)
{
    char word[4096], command[sizeof word + 128];
    if (!object.dli_fname || !quoteShellWord(object.dli_fname, word, sizeof word)) return false;
    auto offset = reinterpret_cast<uintptr_t>(address) - reinterpret_cast<uintptr_t>(object.dli_fbase);
    snprintf(command, sizeof command, "/usr/bin/addr2line -s -e %s 0x%lx 2>/dev/null", word,
             static_cast<unsigned long>(offset));
    FILE *answer = popen(command, "re");
    if (!answer) return false;
    bool known = fgets(line, size, answer) && strncmp(line, "??", 2) != 0;
    pclose(answer);
    line[known ? strcspn(line, " \n") : 0] = 0; // a discriminator may follow
    return known;
}

} // namespace

bool zvkDescribeCallSite(char *text, size_t size)
{
    text[0] = 0;
    void *frames[kMostFrames];
    int count = backtrace(frames, kMostFrames);
    int own = zvkOwnFrames(frames, count);
    Dl_info object;
    // A return address is the one after the call, which may belong to the next line.
    const void *call = own < count ? static_cast<const char *>(frames[own]) - 1 : nullptr;
    if (!call || !dladdr(call, &object)) return false;

    const PCB *program = programIn(object.dli_fbase);
    char name[200] = "", line[300] = "";
    if (program && program->name)
        snprintf(name, sizeof name, "program %.*s", static_cast<int>(program->nameLength), program->name);
    bool known = zvkTracebackWantsLines() && lineOf(object, call, line, sizeof line);
    snprintf(text, size, "%s%s%s%s", name, *name && known ? ", " : "", known ? "line " : "", line);
    return *text;
}
