// From a file's assignment to the name and the file system of what is to be opened.
//
// An assignment is a literal, a data item or the name of an environment variable; its value may
// begin with a file-system prefix ("lsq-/tmp/in.txt"), may hold "~" and "$", may be a generation
// ("daily(+1)") or several names ("a:b:c").
#include "fileio/file_name.h"

#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <wordexp.h>

#include "base/environment.h"
#include "fileio/file_slots.h"
#include "fileio/file_status.h"
#include "fileio/file_systems.h"
#include "fileio/generation_catalogue.h"
#include "frame/storage.h"

namespace {

constexpr char kServerRoot[] = "/.:/txmn/hdk/";
constexpr size_t kServerRootLength = sizeof kServerRoot - 1;

bool underServerRoot(const char *name) { return strncmp(name, kServerRoot, kServerRootLength) == 0; }

// The wish of VFS_NO_FORCE_FS, read once at each of the two places that look at it.
bool noForce(int &remembered)
{
    if (remembered < 0) remembered = environmentHas("VFS_NO_FORCE_FS");
    return remembered;
}

// A name of at most `length` bytes, after its first `skip`, without trailing blanks and zero
// bytes, as a block of its own; null if nothing is left, or without storage.
char *trimmedCopy(const char *text, size_t length, size_t skip, bool *empty)
{
    length = text ? strnlen(text, length) : 0;
    while (length && (text[length - 1] == ' ' || text[length - 1] == 0)) length--;
    *empty = length <= skip;
    text += skip;
    length = *empty ? 0 : length - skip;
    auto *copy = static_cast<char *>(length ? malloc(length + 1) : nullptr);
    if (copy) {
        memcpy(copy, text, length);
        copy[length] = 0;
    }
    return copy;
}

enum class Expansion { One, Several, NoStorage };

// The system's wordexp does not survive everything that a name may hold. Arithmetic ("$[1]",
// "$((1))") that is empty, or has the program's arguments ("$@") in it, is a null pointer to it;
// each part of a nest ("${A-${B-x}}") is a call within a call. No name needs arithmetic.
bool isSafeToExpand(const char *name)
{
    constexpr int most = 256;
    int parts = 0;
    for (const char *at = name; (at = strchr(at, '$')); ++at)
        if (++parts > most || at[1] == '[' || (at[1] == '(' && at[2] == '(')) return false;
    return true;
}

// Expands "~" and "$" without ever running a command.
Expansion expandWords(char *&name)
{
    if (name[0] != '~' && !strchr(name, '$')) return Expansion::One;
    if (!isSafeToExpand(name)) return Expansion::One;
    wordexp_t words{};
    int rc = wordexp(name, &words, WRDE_NOCMD);
    if (rc == WRDE_NOSPACE) {
        wordfree(&words);
        return Expansion::NoStorage;
    }
    if (rc != 0) return Expansion::One; // what cannot be expanded is a name as it is
    Expansion result = words.we_wordc > 1 ? Expansion::Several : Expansion::One;
    if (words.we_wordc == 1) {
        if (char *expanded = strdup(words.we_wordv[0])) {
            free(name);
            name = expanded;
        } else {
            result = Expansion::NoStorage;
        }
    }
    wordfree(&words);
    return result;
}

// The assignment's text: the literal or the item's value, or the value of the environment variable
// that it names.
const char *assignedText(const FIB *fib, char *item, size_t *length, bool *prefixAllowed)
{
    *length = fib->assignmentLength;
    *prefixAllowed = fib->attributes & (ZVK_FILE_ASSIGN_LITERAL | ZVK_FILE_ASSIGN_ITEM);
    if (!(fib->attributes & ZVK_FILE_ASSIGN_ENVIRONMENT) || !item) return fib->assignment;
    const char *value = environmentText(item);
    if (!value) return fib->assignment;
    *prefixAllowed = true;
    *length = strlen(value);
    return value;
}

void choosePrefix(FCB *fcb, const FIB *fib, const char *text, size_t prefixLength)
{
    int code = prefixLength ? zvkCodeOfPrefix(text, prefixLength) : zvkCodeOfPrefix(fib->prefix, 3);
    if (code >= 0 && code != kUseDefault) {
        zvkSetFileSystem(fcb, static_cast<uint8_t>(code));
    } else if (prefixLength) {
        fcb->code = kNoFileSystem;
        memset(fcb->prefix, ' ', sizeof fcb->prefix);
        memcpy(fcb->prefix, text, prefixLength < 3 ? prefixLength : 3);
    } else {
        fcb->code = fcb->defaultCode & 0x0F;
        memcpy(fcb->prefix, fcb->defaultPrefix, 3);
    }
}

// Several files are read one after the other, and nothing else.
void requireSequentialInput(FCB *fcb, const FIB *fib)
{
    bool sequential =
        (fib->accessMode & ZVK_FILE_ACCESS_SEQUENTIAL) || !(fib->organization & (ZVK_FILE_INDEXED | ZVK_FILE_RELATIVE));
    bool possible = (fcb->requestedMode & ZVK_OPEN_INPUT) && sequential;
    if ((fcb->state & ZVK_FILE_CONCATENATED) && !possible) zvkSetStatus(fcb, 37, 0);
}

// Asks for a concatenation or a generation and takes its first name.
void resolveConcatenation(FCB *fcb, const FIB *fib)
{
    fcb->state &= ~static_cast<uint32_t>(ZVK_FILE_CONCATENATED);
    bool wanted = (fcb->requestedMode & ZVK_OPEN_OUTPUT) ||
                  ((fcb->state & ZVK_FILE_ABSENT) && !(fcb->requestedMode & ZVK_OPEN_INPUT));
    _zvk_Concat_Free(fcb->concatenation);
    uint32_t isConcat = 0, prefix = 0;
    memcpy(&prefix, fcb->prefix, 3);
    fcb->concatenation = _zvk_Concat_Check(fcb->fileName, &isConcat, wanted, &prefix);
    if (!fcb->concatenation) {
        // Without storage nobody knows what file the name stands for; its own text is not it.
        if (isConcat || errno == ENOMEM) zvkSetStatus(fcb, isConcat ? 33 : 34, isConcat ? 34 : 0);
        return;
    }
    if (zvkGdgMade()) fcb->state |= kGenerationMade;
    if (isConcat) fcb->state |= ZVK_FILE_CONCATENATED;
    const char *first = _zvk_Concat_Next(fcb->concatenation);
    if (!first) {
        zvkSetStatus(fcb, 33, 34);
        return;
    }
    char *copy = strdup(first);
    if (!copy) {
        zvkSetStatus(fcb, 93, 0);
        return;
    }
    zvkSetFileName(fcb, copy, true);
    requireSequentialInput(fcb, fib);
}

// The code of a readable file, by what its first bytes say.
void recogniseContent(FCB *fcb)
{
    // Without O_NONBLOCK the open of a FIFO would wait for a writer.
    int descriptor = open(fcb->fileName, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        zvkSetStatus(fcb, errno == EACCES ? 91 : 93, 0);
        return;
    }
    char head[28];
    ssize_t got = read(descriptor, head, sizeof head);
    if (got < 0 && errno == EAGAIN) got = 0; // a FIFO whose writer has not written yet
    close(descriptor);
    static int remembered = -1;
    if (got < 0)
        zvkSetStatus(fcb, 93, 0);
    else if (got == 0)
        zvkSetFileSystem(fcb, noForce(remembered) ? kJgt : kStl);
    else if (got == sizeof head && memcmp(head + 24, "vfs", 4) == 0)
        zvkSetFileSystem(fcb, kPsx);
    else
        zvkSetFileSystem(fcb, got >= 11 && memcmp(head + 8, "STL", 3) == 0 ? kStl : kJgt);
}

} // namespace

size_t zvkPrefixLength(const char *name)
{
    const char *dash = strchr(name, '-');
    if (!dash || dash - name < 3 || !dash[1]) return 0;
    auto first = static_cast<unsigned char>(name[0]);
    // The test looks at the two codes that follow the first character's own in the code table, not
    // at the characters after it, and must stay so: nearly every name whose first letter is not y
    // or z has a prefix by it.
    return isalpha(first) && isalnum((first + 1) & 0xFF) && isalnum((first + 2) & 0xFF)
               ? static_cast<size_t>(dash - name)
               : 0;
}

void zvkSetFileSystem(FCB *fcb, uint8_t code)
{
    fcb->code = code;
    memcpy(fcb->prefix, zvkFileSystem(code)->prefix, 3);
}

void zvkResolveName(FCB *fcb, const FIB *fib)
{
    bool empty = false, prefixAllowed = false;
    char *item = trimmedCopy(fib->assignment, fib->assignmentLength, 0, &empty);
    if (!item && !empty) {
        zvkSetStatus(fcb, 34, 0); // the variable that it names could not be asked for
        return;
    }
    size_t length = 0;
    const char *text = assignedText(fib, item, &length, &prefixAllowed);
    // The prefix is looked for before blanks are dropped: "stl-" and blanks is a prefix with no
    // name after it.
    char *whole = text ? strndup(text, length) : strdup("");
    size_t prefixLength = prefixAllowed && whole ? zvkPrefixLength(whole) : 0;
    char *name = whole ? trimmedCopy(whole, length, prefixLength ? prefixLength + 1 : 0, &empty) : nullptr;
    free(item);
    if (name) choosePrefix(fcb, fib, whole, prefixLength);
    free(whole);
    if (!name) {
        zvkSetStatus(fcb, empty ? 95 : 34, empty ? 2 : 0);
        return;
    }
    Expansion expansion = expandWords(name);
    zvkSetFileName(fcb, name, true);
    if (expansion != Expansion::One) {
        zvkSetStatus(fcb, expansion == Expansion::Several ? 95 : 34, 0);
        return;
    }
    resolveConcatenation(fcb, fib);
}

void zvkResolveVolume(FCB *fcb, const FIB *fib)
{
    // An OPEN that failed is tried again here, perhaps in a mode that would write over the first
    // file.
    requireSequentialInput(fcb, fib);
    size_t prefixLength = zvkPrefixLength(fcb->fileName);
    if (fcb->status > 9 || !prefixLength) return; // without a prefix the file system in force goes on
    char prefix[4] = {};
    for (size_t i = 0; i < 3; i++) prefix[i] = static_cast<char>(tolower(static_cast<unsigned char>(fcb->fileName[i])));
    uint8_t inForce = fcb->code;
    auto is = [&](const char *name) { return prefixLength == 3 && memcmp(prefix, name, 3) == 0; };
    // Of the further prefixes only these two go with the one in force: "str" behind "rsd", or "qvr"
    // behind "jgt", is refused.
    bool same = prefixLength == 3 && memcmp(prefix, fcb->prefix, 3) == 0;
    bool further = (is("nat") && inForce == kLsq) || (is("raw") && inForce == kWbr);
    bool byFile = is("plx") && (inForce == kStl || (inForce >= kJgt && inForce <= kPsx));
    if (!same && !further && !byFile) {
        zvkSetStatus(fcb, 33, 39);
        return;
    }
    memmove(fcb->fileName, fcb->fileName + prefixLength + 1, strlen(fcb->fileName + prefixLength + 1) + 1);
    if (byFile) zvkSetFileSystem(fcb, kPlx); // each file says for itself which of the family it is
}

void zvkChooseByFile(FCB *fcb)
{
    if (access(fcb->fileName, R_OK) == 0) {
        recogniseContent(fcb);
        return;
    }
    static int remembered = -1;
    if (strlen(fcb->fileName) > 14 && underServerRoot(fcb->fileName))
        zvkSetFileSystem(fcb, kHdk);
    else
        zvkSetFileSystem(fcb, noForce(remembered) ? kJgt : kStl);
}

void zvkAdaptName(FCB *fcb)
{
    if (fcb->code == kHdk && !underServerRoot(fcb->fileName)) {
        const char *server = environmentText("TXMN_TK_HDK_SERVER");
        if (!server) {
            fputs("HDK shortname usage requires setting:\n`export TXMN_TK_HDK_SERVER=/.:/txmn/hdk/<server>`\n", stderr);
            fcb->code = kNoFileSystem;
            zvkSetStatus(fcb, 96, 2);
            return;
        }
        size_t size = strlen(server) + strlen(fcb->fileName) + 2;
        auto *full = static_cast<char *>(malloc(size));
        if (!full) {
            zvkSetStatus(fcb, 34, 0);
            return;
        }
        snprintf(full, size, "%s/%s", server, fcb->fileName);
        zvkSetFileName(fcb, full, true);
    }
    if (fcb->code == kJgt && strlen(fcb->fileName) >= 14 && underServerRoot(fcb->fileName)) zvkSetFileSystem(fcb, kHdk);
    if (fcb->code == kJgt || fcb->code == kHdk)
        if (char *parenthesis = strchr(fcb->fileName, '(')) *parenthesis = 0;
}
