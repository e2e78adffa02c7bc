/**
 * What the C that kvrcob emits leans on besides the library. Inline only; not for hand-written
 * programs. Numbers, texts, the console and functions have headers of their own in kvrcob/; here
 * are the process, the look-up of called programs, files and checks.
 */
#ifndef KVR2_KVRCOB_H
#define KVR2_KVRCOB_H

/* 128-bit integers are no ISO C. */
#if defined(__GNUC__)
#pragma GCC system_header
#endif

#include "kvr2/kvrcob/base.h"

#include <dlfcn.h>
#include <link.h>
#include <search.h>
#include <setjmp.h>

#include "kvr2/file_module.h"
#include "kvr2/kvrcob/console.h"
#include "kvr2/kvrcob/formatted_dates.h"
#include "kvr2/kvrcob/functions.h"
#include "kvr2/kvrcob/numbers.h"
#include "kvr2/kvrcob/performs.h"
#include "kvr2/kvrcob/text.h"

typedef int64_t (*KvrProgram)();

/* Cells of PERFORM: zero at the start, and in memory as far as the C compiler knows. */
#define KVR_CELLS(array)                                                                                               \
    memset(array, 0, sizeof array);                                                                                    \
    __asm__ volatile("" : : "r"(array) : "memory")

/* Begins a loop around a loop: the C compiler is not to make one loop of both. */
#define KVR_AGAIN __asm__ volatile("")

/* A range of paragraphs as a function of its own, which works on the program's cells: 0 at its end,
   1 if the program ends in it, more where GO TO leaves it. */
#define KVR_PERFORMED(name)                                                                                            \
    static __attribute__((noinline)) int name(int *x __attribute__((unused)), int *s __attribute__((unused)),          \
                                              int64_t *n __attribute__((unused)))

/** A program that the source contains. */
typedef struct KvrVisible {
    const char *name;
    KvrProgram entry;
    void (*cancel)(void);
} KvrVisible;

/* ---- Arguments of any length: how long those are of the function that is called next. */

/* One for all sources of a program. */
int64_t kvr_lengths[64] __attribute__((weak));

/* ---- ALLOCATE, FREE. What FREE is given and ALLOCATE did not make stays as it is. */

KVR_INLINE int kvr_address_order(const void *a, const void *b) { return (a > b) - (a < b); }

KVR_INLINE void **kvr_allocations(void)
{
    static void *root;
    return &root;
}

KVR_SHARED uint8_t *kvr_allocate(int64_t size)
{
    uint8_t *p = size > 0 ? (uint8_t *)calloc(1, (size_t)size) : 0;
    if (p && !tsearch(p, kvr_allocations(), kvr_address_order)) {
        free(p);
        p = 0;
    }
    return p;
}

KVR_SHARED void kvr_free(uint8_t *p)
{
    if (!p || !tfind(p, kvr_allocations(), kvr_address_order)) return;
    tdelete(p, kvr_allocations(), kvr_address_order);
    free(p);
}

/* ---- USE FOR DEBUGGING */

#define KVR_DEBUG_CONTENTS 200

/* DEBUG-ITEM: the line, the name, and what the event is or the item's bytes. */
KVR_INLINE void kvr_debug(uint8_t *item, int line, const char *name, const void *contents, uint32_t length)
{
    char number[16];
    size_t n = strlen(name);
    memset(item, ' ', 56 + KVR_DEBUG_CONTENTS);
    snprintf(number, sizeof number, "%06d", line % 1000000);
    memcpy(item, number, 6);
    memcpy(item + 7, name, n < 30 ? n : 30);
    memcpy(item + 56, contents, length < KVR_DEBUG_CONTENTS ? length : KVR_DEBUG_CONTENTS);
}

/* A subscript in DEBUG-SUB-1 (place 0) to DEBUG-SUB-3. */
KVR_INLINE void kvr_debug_subscript(uint8_t *item, int place, int64_t value)
{
    char number[16];
    snprintf(number, sizeof number, "%+05d", (int)(value % 10000));
    memcpy(item + 38 + 6 * place, number, 5);
}

/* Whether an EXTERNAL item has no values yet. `mark` notes that it gets them now. */
KVR_INLINE int kvr_first_external(void *mark, const uint8_t *item, size_t size)
{
    uint8_t *known = (uint8_t *)mark;
    if (!known || !item || *known) return 0;
    *known = 1;
    return item[0] == 0 && memcmp(item, item + 1, size - 1) == 0;
}

/* ON n AND EVERY m UNTIL k; 0 for what is left out. */
KVR_INLINE int kvr_on(int64_t *count, int64_t from, int64_t every, int64_t until)
{
    const int64_t now = ++*count;
    if (until && now >= until) return 0;
    if (now <= from || !every) return now == from || (until && !every && now > from);
    return (now - from) % every == 0;
}

/* DEBUG-SUB-1 to DEBUG-SUB-3 as numbers: blank, as they are without a subscript, they are zero. */
KVR_INLINE uint8_t *kvr_debug_number(uint8_t *subscript)
{
    static uint8_t zero[] = "+0000";
    return *subscript == ' ' ? zero : subscript;
}

/* ---- The process */

static int kvr_argc __attribute__((unused));
static char **kvr_argv __attribute__((unused));

KVR_INLINE void kvr_main(int argc, char **argv, int check)
{
    kvr_argc = argc;
    kvr_argv = argv;
    /*
     * Without -fcheck numbers are taken as they stand, as the options of the compiler say; ACCEPT
     * reads lines.
     */
    if (!check) setenv("COBOL_BCD_NOVALIDATE", "1", 0);
    if (!getenv("COBRTOPT")) setenv("COBRTOPT", "ACCEPT=NEW", 0);
}

/* The main program's parameters: the arguments, each after its length in two bytes. */
KVR_INLINE uint8_t *kvr_parameter(int i)
{
    static uint8_t blocks[8][4098];
    int length = 0;
    if (i >= 8) return 0;
    if (i + 1 < kvr_argc) {
        length = (int)strlen(kvr_argv[i + 1]);
        if (length > 4000) length = 4000;
        memcpy(blocks[i] + 2, kvr_argv[i + 1], (size_t)length);
    }
    blocks[i][0] = (uint8_t)length;
    blocks[i][1] = (uint8_t)(length >> 8);
    return blocks[i];
}

KVR_INLINE int kvr_command_line(uint8_t *out, int room)
{
    FILE *f = fopen("/proc/self/cmdline", "rb");
    int n = 0, c, first = 1;
    if (!f) return 0;
    while ((c = fgetc(f)) != EOF && n < room) {
        if (first) {
            if (c == 0) first = 0;
            continue;
        }
        out[n++] = c ? (uint8_t)c : ' ';
    }
    fclose(f);
    while (n > 0 && out[n - 1] == ' ') n--;
    return n;
}

KVR_INLINE int kvr_argument_number(uint8_t *out, int room)
{
    FILE *f = fopen("/proc/self/cmdline", "rb");
    int n = -1, c;
    if (f) {
        while ((c = fgetc(f)) != EOF) n += c == 0;
        fclose(f);
    }
    return snprintf((char *)out, (size_t)room, "%d", n < 0 ? 0 : n);
}

static int kvr_next_argument __attribute__((unused)) = 1;

KVR_INLINE int kvr_argument_value(uint8_t *out, int room)
{
    int next = kvr_next_argument;
    FILE *f = fopen("/proc/self/cmdline", "rb");
    int index = 0, n = 0, c, found = 0;
    if (!f) return -1;
    while ((c = fgetc(f)) != EOF) {
        if (index == next) {
            found = 1;
            if (c && n < room) out[n++] = (uint8_t)c;
        }
        if (c == 0) index++;
    }
    fclose(f);
    kvr_next_argument++;
    return found ? n : -1;
}

static char kvr_environment[256] __attribute__((unused));

KVR_INLINE void kvr_environment_name(const uint8_t *name, int64_t length)
{
    while (length > 0 && name[length - 1] == ' ') length--;
    if (length > 255) length = 255;
    memcpy(kvr_environment, name, (size_t)length);
    kvr_environment[length] = 0;
}
KVR_INLINE void kvr_environment_value(const uint8_t *value, int64_t length)
{
    char text[4096];
    while (length > 0 && value[length - 1] == ' ') length--;
    if (length > 4095) length = 4095;
    memcpy(text, value, (size_t)length);
    text[length] = 0;
    if (kvr_environment[0]) setenv(kvr_environment, text, 1);
}
KVR_INLINE int kvr_get_environment(const uint8_t *name, int64_t length, uint8_t *out, int room)
{
    const char *value;
    int n;
    kvr_environment_name(name, length);
    value = getenv(kvr_environment);
    if (!value) return -1;
    n = (int)strlen(value);
    if (n > room) n = room;
    memcpy(out, value, (size_t)n);
    return n;
}
KVR_INLINE int kvr_accept_environment(uint8_t *out, int room)
{
    return kvr_get_environment((const uint8_t *)kvr_environment, (int64_t)strlen(kvr_environment), out, room);
}

/* ---- CALL, CANCEL */

KVR_INLINE int64_t kvr_program_name(const uint8_t *name, int64_t length, char *out)
{
    int64_t n = 0, i;
    while (length > 0 && (name[length - 1] == ' ' || name[length - 1] == 0)) length--;
    for (i = 0; i < length && n < 160; i++) out[n++] = (char)name[i];
    out[n] = 0;
    return n;
}

/* The path of a loaded module, by its place in the list. Only the path: the list is locked, and
   dlopen waits for another lock whose holder may wait for this one. */
typedef struct KvrModule {
    int place;
    char path[4096];
} KvrModule;

KVR_INLINE int kvr_module_path(struct dl_phdr_info *object, size_t size, void *wanted)
{
    KvrModule *module = (KvrModule *)wanted;
    (void)size;
    if (module->place-- > 0) return 0;
    snprintf(module->path, sizeof module->path, "%s", object->dlpi_name);
    return 1;
}

/* An ENTRY of a module that is loaded already: no file has its name, and no symbol that the program
   itself sees. A module's own symbols only, or those of the libraries that it needs would answer. */
KVR_SHARED KvrProgram kvr_loaded_entry(const char *name)
{
    KvrModule module;
    KvrProgram entry = 0;
    int i;
    for (i = 0; !entry; i++) {
        Dl_info where;
        void *handle, *symbol;
        module.place = i;
        if (!dl_iterate_phdr(kvr_module_path, &module)) break;
        handle = module.path[0] ? dlopen(module.path, RTLD_LAZY | RTLD_NOLOAD) : 0;
        symbol = handle ? dlsym(handle, name) : 0;
        if (symbol && dladdr(symbol, &where) && strcmp(where.dli_fname, module.path) == 0)
            entry = (KvrProgram)(intptr_t)symbol;
        if (handle) dlclose(handle);
    }
    return entry;
}

KVR_INLINE KvrProgram kvr_find_program(const uint8_t *name, int64_t length, PCB *pcb, const KvrVisible *visible,
                                       int exception)
{
    char text[161], upper[161];
    int64_t n = kvr_program_name(name, length, text), i;
    uint32_t failures = 1;
    KvrProgram entry;
    uint64_t *found;
    void *symbol;
    for (i = 0; i <= n; i++) upper[i] = (char)(text[i] >= 'a' && text[i] <= 'z' ? text[i] - 32 : text[i]);
    for (; visible->name; visible++)
        if (strcmp(visible->name, upper) == 0) return visible->entry;
    if (n > 0 && (symbol = dlsym(RTLD_DEFAULT, upper)) != 0) return (KvrProgram)(intptr_t)symbol;
    if (n > 0 && strcmp(text, upper) != 0 && (symbol = dlsym(RTLD_DEFAULT, text)) != 0)
        return (KvrProgram)(intptr_t)symbol;
    found = _zvkDynLd(0, n, (uint8_t *)upper, pcb, 0, &failures);
    if (failures == 1 && found && *found) return (KvrProgram)(intptr_t)*found;
    if (n > 0 && (entry = kvr_loaded_entry(upper)) != 0) return entry;
    failures = 0;
    if (!exception) _zvkDynLd(0, n, (uint8_t *)upper, pcb, 0, &failures); /* says what failed, and ends the run unit */
    return 0;
}

KVR_INLINE void kvr_cancel(const uint8_t *name, int64_t length, PCB *pcb, const KvrVisible *visible)
{
    char text[161];
    int64_t n = kvr_program_name(name, length, text), i;
    for (i = 0; i <= n; i++) text[i] = (char)(text[i] >= 'a' && text[i] <= 'z' ? text[i] - 32 : text[i]);
    for (; visible->name; visible++)
        if (strcmp(visible->name, text) == 0) {
            visible->cancel();
            return;
        }
    _zvkCancel(0, n, (uint8_t *)text, pcb);
}

/* ---- Files */

KVR_INLINE uint16_t kvr_assignment(char *to, const uint8_t *item, int64_t length)
{
    static const char prefixes[] = "jgt-qvr-hdk-psx-lsq-nat-stl-rsd-str-wbr-raw-rql-pip-fif-sok-mqu-plx-";
    int64_t n = 0, i;
    int known = 0;
    while (length > 0 && (item[length - 1] == ' ' || item[length - 1] == 0)) length--;
    if (length > 4000) length = 4000;
    if (length > 2 && item[1] == ':' && (item[0] & 0xDF) >= 'A' && (item[0] & 0xDF) <= 'Z') {
        item += 2;
        length -= 2;
    }
    if (length > 1 && item[length - 1] == ':') length--;
    for (i = 0; length > 4 && prefixes[i]; i += 4)
        if (memcmp(prefixes + i, item, 4) == 0) known = 1;
    if (!known && length > 0 && memchr(item, '-', (size_t)length) && !strchr("/.~$", item[0])) {
        to[n++] = '.';
        to[n++] = '/';
    }
    memcpy(to + n, item, (size_t)length);
    to[n + length] = 0;
    return (uint16_t)(n + length);
}

/* CODE-SET: a record by a table of codes; `to` may be `from`. */
KVR_INLINE uint8_t *kvr_recode(uint8_t *to, const uint8_t *from, uint32_t length, const uint8_t *table)
{
    uint32_t i;
    for (i = 0; i < length; i++) to[i] = table[from[i]];
    return to;
}

/* CLOSE REEL: there is none; an open file gets status 07, a closed one 42. */
KVR_INLINE void kvr_close_reel(FCB *fcb, IPCB *element)
{
    if (fcb->mode == 0) {
        fcb->closeOptions = fcb->lastCloseOptions & ZVK_CLOSE_LOCK;
        fcb->statement = 0;
        fcb->close(fcb, element);
        return;
    }
    fcb->status = 7;
    if (fcb->fib->statusBase) {
        uint8_t *field = *fcb->fib->statusBase + fcb->fib->statusOffset;
        field[0] = '0';
        field[1] = '7';
    }
}

/* A statement that the file's state does not allow: its status, and the USE procedure. */
KVR_INLINE void kvr_refuse(FCB *fcb, IPCB *element, uint16_t status, uint8_t verb)
{
    fcb->currentVerb = verb;
    zvkSetStatus(fcb, status, 0);
    zvkFinishVerb(fcb, element, verb);
}

/*
 * LINAGE: the page that begins next takes the present values of its items; the one in hand keeps
 * its footing and its bottom margin. They stay in the FCB, so that the programs of an EXTERNAL file
 * write on the same page. `counter` is LINAGE-COUNTER before the WRITE.
 */
KVR_INLINE void kvr_linage_before(FCB *fcb, const FileLinageGroup *groups, uint32_t *counter)
{
    fcb->linageBody = groups[0].value;
    fcb->linageTop = groups[2].value;
    *counter = fcb->linageCounter;
}
KVR_INLINE void kvr_linage_after(FCB *fcb, const FileLinageGroup *groups, const uint32_t *counter, int32_t advance)
{
    if (fcb->status < 10 && fcb->linageCounter == 1 && (*counter > 1 || advance != 0)) {
        fcb->linageFooting = groups[1].value;
        fcb->linageBottom = groups[3].value;
    }
}

KVR_INLINE void kvr_unaltered(void)
{
    fprintf(stderr, "kvrcob: a GO TO without a paragraph was not altered before it was executed\n");
    _zvkRunUnitTerm(16);
}

/* ---- -fcheck */

KVR_INLINE void kvr_check_failed(const char *file, int line, const char *text)
{
    fflush(stdout);
    fprintf(stderr, "%s:%d: %s\n", file, line, text);
    _zvkRunUnitTerm(16);
}
KVR_INLINE int64_t kvr_subscript(int64_t v, int64_t most, const char *name, const char *file, int line)
{
    if (v < 1 || v > most) {
        char text[200];
        snprintf(text, sizeof text, "the subscript %lld of %.60s is not from 1 to %lld", (long long)v, name,
                 (long long)most);
        kvr_check_failed(file, line, text);
    }
    return v;
}
KVR_INLINE void kvr_refmod(int64_t from, int64_t length, int64_t size, const char *name, const char *file, int line)
{
    if (from < 1 || length < 1 || from + length - 1 > size) {
        char text[200];
        snprintf(text, sizeof text, "the part (%lld:%lld) of %.60s is outside of its %lld characters", (long long)from,
                 (long long)length, name, (long long)size);
        kvr_check_failed(file, line, text);
    }
}

/* form: where the sign of a zoned item is, as in kvr_is_zoned; -1 packed, -2 packed without sign */
KVR_SHARED uint8_t *kvr_numeric(uint8_t *p, int32_t digits, int form, const char *name, const char *file, int line)
{
    int good = form < 0    ? kvr_is_packed(p, digits, form == -1)
               : form == 0 ? _zvkcClasUserDef(p, digits, kvr_digits)
                           : kvr_is_zoned(p, digits, form);
    if (!good) {
        char text[200];
        snprintf(text, sizeof text, "%.60s holds data that is no number", name);
        kvr_check_failed(file, line, text);
    }
    return p;
}

#endif
