/**
 * The small utilities that programs call by well-known names: SYSTEM, C$SLEEP, CBL_AND and so on.
 * docs/cobol.md lists them.
 *
 * The emitted code fills `kvr_arguments` before such a CALL, for a utility wants to know how long
 * its arguments are, and an address does not tell. A program of the user's that has the name and is
 * linked with the caller goes before the utility.
 */
#ifndef KVR2_KVRCOB_UTILITIES_H
#define KVR2_KVRCOB_UTILITIES_H

#if defined(__GNUC__)
#pragma GCC system_header
#endif

#include "kvr2/kvrcob.h" /* asks the system's headers for all that they have */

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

typedef struct KvrArgument {
    uint8_t *address;
    int64_t size;  /* bytes; -1 for an argument BY VALUE */
    int64_t value; /* of a number */
    int number;    /* it is one */
} KvrArgument;

static KvrArgument kvr_arguments[8];
static int kvr_argument_count;

/*
 * Argument i as a C string without the blanks at its end. One that has no room is empty, with errno
 * ENAMETOOLONG: its beginning would be another file, another command.
 */
KVR_SHARED char *kvr_u_text(int i, char *out, size_t room)
{
    const KvrArgument *a = kvr_arguments + i;
    size_t n = i < kvr_argument_count && a->size > 0 ? (size_t)a->size : 0;
    if (n) {
        const void *end = memchr(a->address, 0, n);
        if (end) n = (size_t)((const uint8_t *)end - a->address);
    }
    while (n > 0 && a->address[n - 1] == ' ') n--;
    if (n >= room) {
        n = 0;
        errno = ENAMETOOLONG;
    }
    if (n) memcpy(out, a->address, n);
    out[n] = 0;
    return out;
}

KVR_SHARED int64_t kvr_u_system(void)
{
    char command[4096];
    int status;
    errno = 0;
    kvr_u_text(0, command, sizeof command);
    if (errno == ENAMETOOLONG) return -1;
    fflush(NULL);
    status = system(command);
    if (status < 0) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

KVR_SHARED int64_t kvr_u_pause(int64_t seconds, int64_t nanoseconds)
{
    struct timespec left;
    left.tv_sec = (time_t)(seconds < 0 ? 0 : seconds);
    left.tv_nsec = (long)(nanoseconds < 0 ? 0 : nanoseconds);
    fflush(stdout);
    while (nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
    return 0;
}
KVR_SHARED int64_t kvr_u_sleep(void) { return kvr_u_pause(kvr_argument_count ? kvr_arguments[0].value : 0, 0); }

/* The nanoseconds may be digits in a text. */
KVR_SHARED int64_t kvr_u_nanosleep(void)
{
    char digits[32];
    int64_t n = kvr_argument_count ? kvr_arguments[0].value : 0;
    if (kvr_argument_count && !kvr_arguments[0].number) n = strtoll(kvr_u_text(0, digits, sizeof digits), NULL, 10);
    return kvr_u_pause(n / 1000000000, n % 1000000000);
}

/* The first argument's text to the right, or as the second one says: R, L, C for the middle. */
KVR_SHARED int64_t kvr_u_justify(void)
{
    uint8_t *text = kvr_arguments[0].address, way = 'R';
    size_t size, first = 0, length, to;
    if (!kvr_argument_count || kvr_arguments[0].size < 1) return 1;
    if (kvr_argument_count > 1 && kvr_arguments[1].size > 0) way = (uint8_t)(kvr_arguments[1].address[0] & ~0x20);
    size = (size_t)kvr_arguments[0].size;
    while (first < size && text[first] == ' ') first++;
    length = size - first;
    while (length > 0 && text[first + length - 1] == ' ') length--;
    to = way == 'L' ? 0 : way == 'C' ? (size - length) / 2 : size - length;
    memmove(text + to, text + first, length);
    memset(text, ' ', to);
    memset(text + to + length, ' ', size - to - length);
    return 0;
}

/* Letters of the first argument; the second is how many characters count, all without it. */
KVR_SHARED int64_t kvr_u_fold(int from, int to)
{
    int64_t n = kvr_argument_count > 1 ? kvr_arguments[1].value : kvr_argument_count ? kvr_arguments[0].size : 0, i;
    if (kvr_argument_count && n > kvr_arguments[0].size) n = kvr_arguments[0].size;
    for (i = 0; i < n; i++)
        if (kvr_arguments[0].address[i] >= from && kvr_arguments[0].address[i] <= from + 25)
            kvr_arguments[0].address[i] = (uint8_t)(kvr_arguments[0].address[i] + to - from);
    return 0;
}
KVR_SHARED int64_t kvr_u_upper(void) { return kvr_u_fold('a', 'A'); }
KVR_SHARED int64_t kvr_u_lower(void) { return kvr_u_fold('A', 'a'); }

/* The bits of the second argument become those of `rule`: bit 3 for 0 and 0, bit 0 for 1 and 1. */
KVR_SHARED int64_t kvr_u_bits(int rule)
{
    int64_t n, i;
    if (kvr_argument_count < 3) return 1;
    n = kvr_arguments[2].value;
    if (n > kvr_arguments[0].size) n = kvr_arguments[0].size;
    if (n > kvr_arguments[1].size) n = kvr_arguments[1].size;
    for (i = 0; i < n; i++) {
        unsigned a = kvr_arguments[0].address[i], b = kvr_arguments[1].address[i], r = 0;
        if (rule & 1) r |= a & b;
        if (rule & 2) r |= a & ~b;
        if (rule & 4) r |= ~a & b;
        if (rule & 8) r |= ~(a | b);
        kvr_arguments[1].address[i] = (uint8_t)r;
    }
    return 0;
}
KVR_SHARED int64_t kvr_u_and(void) { return kvr_u_bits(1); }
KVR_SHARED int64_t kvr_u_or(void) { return kvr_u_bits(7); }
KVR_SHARED int64_t kvr_u_xor(void) { return kvr_u_bits(6); }
KVR_SHARED int64_t kvr_u_eq(void) { return kvr_u_bits(9); }
KVR_SHARED int64_t kvr_u_imp(void) { return kvr_u_bits(13); }
KVR_SHARED int64_t kvr_u_nor(void) { return kvr_u_bits(8); }
KVR_SHARED int64_t kvr_u_not(void)
{
    int64_t n = kvr_argument_count > 1 ? kvr_arguments[1].value : kvr_argument_count ? kvr_arguments[0].size : 0, i;
    if (kvr_argument_count && n > kvr_arguments[0].size) n = kvr_arguments[0].size;
    for (i = 0; i < n; i++) kvr_arguments[0].address[i] = (uint8_t)~kvr_arguments[0].address[i];
    return 0;
}

/* Files and folders: 0, 35 for one that is not there, 30 for any other failure. */
KVR_SHARED int64_t kvr_u_outcome(int result) { return result == 0 ? 0 : errno == ENOENT ? 35 : 30; }

KVR_SHARED int64_t kvr_u_delete_file(void)
{
    char name[4096];
    return kvr_u_outcome(unlink(kvr_u_text(0, name, sizeof name)));
}
KVR_SHARED int64_t kvr_u_rename_file(void)
{
    char from[4096], to[4096];
    return kvr_u_outcome(rename(kvr_u_text(0, from, sizeof from), kvr_u_text(1, to, sizeof to)));
}
KVR_SHARED int64_t kvr_u_copy_file(void)
{
    char name[4096], block[8192];
    FILE *from = fopen(kvr_u_text(0, name, sizeof name), "rb"), *to;
    struct stat source, present;
    size_t n;
    int bad = 0;
    if (!from) return kvr_u_outcome(-1);
    /* Onto itself it would be emptied before it is read. */
    if (fstat(fileno(from), &source) != 0 || (stat(kvr_u_text(1, name, sizeof name), &present) == 0 &&
                                              source.st_dev == present.st_dev && source.st_ino == present.st_ino)) {
        fclose(from);
        return 30;
    }
    to = fopen(kvr_u_text(1, name, sizeof name), "wb");
    if (!to) {
        fclose(from);
        return 30;
    }
    while (!bad && (n = fread(block, 1, sizeof block, from)) > 0) bad = fwrite(block, 1, n, to) != n;
    bad |= ferror(from);
    fclose(from);
    bad |= fclose(to) != 0;
    return bad ? 30 : 0;
}
KVR_SHARED int64_t kvr_u_create_dir(void)
{
    char name[4096];
    return kvr_u_outcome(mkdir(kvr_u_text(0, name, sizeof name), 0777));
}
KVR_SHARED int64_t kvr_u_delete_dir(void)
{
    char name[4096];
    return kvr_u_outcome(rmdir(kvr_u_text(0, name, sizeof name)));
}
KVR_SHARED int64_t kvr_u_change_dir(void)
{
    char name[4096];
    return kvr_u_outcome(chdir(kvr_u_text(0, name, sizeof name)));
}

/* What a file's inode says of its size and time, for the argument after its name. */
KVR_SHARED int kvr_u_file_details(uint8_t details[16], struct tm *t)
{
    char name[4096];
    struct stat info;
    if (stat(kvr_u_text(0, name, sizeof name), &info) != 0) return 0;
    localtime_r(&info.st_mtime, t);
    kvr_put_big(details, 8, (uint64_t)info.st_size);
    return 1;
}
KVR_SHARED int64_t kvr_u_give_details(const uint8_t details[16])
{
    if (kvr_argument_count > 1 && kvr_arguments[1].size > 0)
        memcpy(kvr_arguments[1].address, details, kvr_arguments[1].size < 16 ? (size_t)kvr_arguments[1].size : 16);
    return 0;
}

/* Size (8 bytes), day, month (1 each), year (2), hour, minute, second, hundredths (1 each). */
KVR_SHARED int64_t kvr_u_check_file(void)
{
    struct tm t;
    uint8_t details[16];
    if (!kvr_u_file_details(details, &t)) return 35;
    details[8] = (uint8_t)t.tm_mday;
    details[9] = (uint8_t)(t.tm_mon + 1);
    kvr_put_big(details + 10, 2, (uint64_t)t.tm_year + 1900);
    details[12] = (uint8_t)t.tm_hour;
    details[13] = (uint8_t)t.tm_min;
    details[14] = (uint8_t)t.tm_sec;
    details[15] = 0;
    return kvr_u_give_details(details);
}

/* Size (8 bytes), YYYYMMDD and HHMMSS00 (4 each). */
KVR_SHARED int64_t kvr_u_file_info(void)
{
    struct tm t;
    uint8_t details[16];
    if (!kvr_u_file_details(details, &t)) return 35;
    kvr_put_big(details + 8, 4, (uint64_t)((t.tm_year + 1900) * 10000 + (t.tm_mon + 1) * 100 + t.tm_mday));
    kvr_put_big(details + 12, 4, (uint64_t)(t.tm_hour * 1000000 + t.tm_min * 10000 + t.tm_sec * 100));
    return kvr_u_give_details(details);
}

/* The folder that the process is in: flags, room, and the item that gets its name. 128: no room. */
KVR_SHARED int64_t kvr_u_current_dir(void)
{
    char name[4096];
    size_t room, length;
    if (kvr_argument_count < 3 || kvr_arguments[2].size < 1) return 128;
    room = (size_t)kvr_arguments[2].size;
    if (!getcwd(name, sizeof name)) return 128;
    length = strlen(name);
    if (length > room) return 128;
    memset(kvr_arguments[2].address, ' ', room);
    memcpy(kvr_arguments[2].address, name, length);
    return 0;
}

/*
 * Files by bytes. The program holds a file as 4 bytes, which are the descriptor under a mark, so
 * that an item that holds anything else reaches no file, the standard streams least of all.
 */
#define KVR_U_MARK 0x4B000000u

/* Argument i as a number; an item that is none counts as its bytes, high byte first. */
KVR_SHARED uint64_t kvr_u_number(int i)
{
    const KvrArgument *a = kvr_arguments + i;
    uint64_t n = 0;
    int64_t k;
    if (i >= kvr_argument_count) return 0;
    if (a->number) return (uint64_t)a->value;
    for (k = 0; k < a->size && k < 8; k++) n = n << 8 | a->address[k];
    return n;
}
KVR_SHARED int kvr_u_descriptor(void)
{
    uint32_t held = 0;
    if (!kvr_argument_count || kvr_arguments[0].size < 4) return -1;
    memcpy(&held, kvr_arguments[0].address, 4);
    return (held & 0xFF000000u) == KVR_U_MARK ? (int)(held & 0xFFFFFFu) : -1;
}

/* A name, access (1 to read, 2 to write, 3 for both), who else may, the device, and the handle. */
KVR_SHARED int64_t kvr_u_open(int flags)
{
    char name[4096];
    uint64_t access = kvr_u_number(1) & 3;
    uint32_t held;
    int file;
    if (kvr_argument_count < 5 || kvr_arguments[4].size < 4 || access == 0) return 30;
    flags |= O_CLOEXEC | (access == 1 ? O_RDONLY : access == 2 ? O_WRONLY : O_RDWR);
    file = open(kvr_u_text(0, name, sizeof name), flags, 0666);
    if (file < 0) return kvr_u_outcome(-1);
    held = KVR_U_MARK | (uint32_t)file;
    memcpy(kvr_arguments[4].address, &held, 4);
    return 0;
}
KVR_SHARED int64_t kvr_u_open_file(void) { return kvr_u_open(0); }
KVR_SHARED int64_t kvr_u_create_file(void) { return kvr_u_open(O_CREAT | O_TRUNC); }

KVR_SHARED int64_t kvr_u_close_file(void)
{
    int file = kvr_u_descriptor();
    if (file < 0) return 30;
    memset(kvr_arguments[0].address, 0, 4);
    return kvr_u_outcome(close(file));
}
KVR_SHARED int64_t kvr_u_flush_file(void) { return kvr_u_outcome(fsync(kvr_u_descriptor())); }

/*
 * The handle, where in the file, how many bytes, flags, and the item. With flag 128 the place
 * becomes the file's size, and that is all. 10: the file ends there.
 */
KVR_SHARED int64_t kvr_u_read_file(void)
{
    int file = kvr_u_descriptor();
    uint64_t count = kvr_u_number(2), done = 0;
    struct stat info;
    if (file < 0 || kvr_argument_count < 4) return 30;
    if (kvr_u_number(3) & 128) {
        if (fstat(file, &info) != 0 || kvr_arguments[1].size < 1 || kvr_arguments[1].size > 8) return 30;
        kvr_put_big(kvr_arguments[1].address, (int)kvr_arguments[1].size, (uint64_t)info.st_size);
        return 0;
    }
    if (kvr_argument_count < 5 || kvr_arguments[4].size < 0 || count > (uint64_t)kvr_arguments[4].size) return 30;
    while (done < count) {
        ssize_t n = pread(file, kvr_arguments[4].address + done, count - done, (off_t)(kvr_u_number(1) + done));
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return 30;
        if (n == 0) break;
        done += (uint64_t)n;
    }
    return count && !done ? 10 : 0;
}
KVR_SHARED int64_t kvr_u_write_file(void)
{
    int file = kvr_u_descriptor();
    uint64_t count = kvr_u_number(2), done = 0;
    if (file < 0 || kvr_argument_count < 5 || kvr_arguments[4].size < 0) return 30;
    if (count > (uint64_t)kvr_arguments[4].size) return 30;
    while (done < count) {
        ssize_t n = pwrite(file, kvr_arguments[4].address + done, count - done, (off_t)(kvr_u_number(1) + done));
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return 30;
        done += (uint64_t)n;
    }
    return 0;
}

KVR_SHARED int64_t kvr_u_process(void) { return (int64_t)getpid(); }

typedef int64_t (*KvrUtility)();

/* The utility, or a program of that name that was linked with this one. */
KVR_INLINE KvrUtility kvr_utility(const char *name, KvrUtility utility)
{
    void *own = dlsym(RTLD_DEFAULT, name);
    return own ? (KvrUtility)(intptr_t)own : utility;
}

/* A utility's name and routine; a table of them ends with a null name. */
typedef struct KvrUtilityRow {
    const char *name;
    KvrUtility routine;
} KvrUtilityRow;

/* The utility that an item names, unless a program of that name can be reached; else null. */
KVR_SHARED KvrUtility kvr_utility_named(const uint8_t *name, int64_t length, const KvrVisible *visible,
                                        const KvrUtilityRow *row)
{
    char text[161];
    int64_t n, i;
    if (length < 1 || !memchr("SCsc", name[0], 4)) return 0;
    n = kvr_program_name(name, length, text);
    for (i = 0; i < n; i++) text[i] = (char)(text[i] >= 'a' && text[i] <= 'z' ? text[i] - 32 : text[i]);
    /* CUSTOMER and SALES are no utilities: they need not be looked for at each CALL. */
    if (strncmp(text, "C$", 2) != 0 && strncmp(text, "CBL_", 4) != 0 && strcmp(text, "SYSTEM") != 0) return 0;
    while (row->name && strcmp(row->name, text) != 0) row++;
    if (!row->name) return 0;
    for (; visible->name; visible++)
        if (strcmp(visible->name, text) == 0) return 0;
    return dlsym(RTLD_DEFAULT, text) ? 0 : row->routine;
}

#endif
