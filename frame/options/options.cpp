// COBRTOPT: the run-time options.
//
// The variable is a free-form list of keywords: "TRAP(ON), check=off upsi(10000001) FS=lsq". The
// tokeniser folds it to upper case and to one spelling, so that " TRAP = ON", "TRAP(ON)" and
// "TRAP=ON" are the same token; each keyword together with its value is one row of a sorted table.
// Two parameters, UPSI and ERRCOUNT, take a free value and are handled apart. What is wrong is
// reported, replaced by its default, and the parse goes on with the next token.
#include "frame/options/options.h"

#include <cctype>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "base/environment.h"
#include "frame/message_calls.h"
#include "frame/run_unit.h"
#include "frame/storage.h"

namespace {

enum class Kind {
    Clear,   // clear the value's bits
    Set,     // set them
    TrapOff, // as Clear, and the pending default is off
    Trap,    // the value's bits replace all TRAP bits; the pending default is off
    Text,    // copy the text into the field
    Variable // set the environment variable, if it is not set: the option's other name
};

struct Keyword {
    const char *keyword;
    Kind kind;
    size_t field; // offset in Proccom, or kNoField
    uint32_t value;
    const char *text;
};

constexpr size_t kNoField = SIZE_MAX, kVariable = SIZE_MAX - 1;
constexpr size_t kProgram = offsetof(Proccom, programOptions);
constexpr size_t kRuntime = offsetof(Proccom, runtimeOptions);
constexpr size_t kFileSystem = offsetof(Proccom, fileSystem);
constexpr uint32_t kAcceptNew = ZVK_OPTION_ACCEPT_NEW;
constexpr uint32_t kCheck = ZVK_OPTION_CHECK;
constexpr uint32_t kDebug = ZVK_OPTION_DEBUG;
constexpr uint32_t kTrapCores = ZVK_OPTION_TRAP_CORE | ZVK_OPTION_TRAP_DUMP;
constexpr uint32_t kTrapNew = ZVK_OPTION_TRAP | ZVK_OPTION_TRAP_CORE;
constexpr uint32_t kTrapDump = kTrapNew | ZVK_OPTION_TRAP_DUMP;
constexpr uint32_t kTrapOld = ZVK_OPTION_TRAP;
constexpr uint32_t kProgramDefault = kCheck | kDebug;

// In strcmp order, which the search relies on.
constexpr Keyword kKeywords[] = {
    {"ACCEPT", Kind::Set, kRuntime, kAcceptNew, nullptr},
    {"ACCEPT=NEW", Kind::Set, kRuntime, kAcceptNew, nullptr},
    {"ACCEPT=OLD", Kind::Clear, kRuntime, kAcceptNew, nullptr},
    {"CHECK", Kind::Set, kProgram, kCheck, nullptr},
    {"CHECK=OFF", Kind::Clear, kProgram, kCheck, nullptr},
    {"CHECK=ON", Kind::Set, kProgram, kCheck, nullptr},
    {"DEBUG", Kind::Set, kProgram, kDebug, nullptr},
    {"DEBUG=OFF", Kind::Clear, kProgram, kDebug, nullptr},
    {"DEBUG=ON", Kind::Set, kProgram, kDebug, nullptr},
    {"DURABILITY", Kind::Text, kNoField, 0, nullptr},
    {"DURABILITY=CLOSE", Kind::Variable, kVariable, 0, "VFS_DURABILITY=close"},
    {"DURABILITY=COMMIT", Kind::Variable, kVariable, 0, "VFS_DURABILITY=commit"},
    {"DURABILITY=NONE", Kind::Variable, kVariable, 0, "VFS_DURABILITY=none"},
    {"FILEMODE", Kind::Text, kNoField, 0, nullptr},
    {"FILEMODE=L", Kind::Text, kNoField, 0, nullptr},
    {"FILEMODE=LARGE", Kind::Text, kNoField, 0, nullptr},
    {"FILEMODE=S", Kind::Text, kNoField, 0, nullptr},
    {"FILEMODE=SMALL", Kind::Text, kNoField, 0, nullptr},
    {"FILESYS", Kind::Text, kNoField, 0, nullptr},
    {"FILESYS=HDK", Kind::Text, kFileSystem, 0, "hdk"},
    {"FILESYS=JGT", Kind::Text, kFileSystem, 0, "jgt"},
    {"FILESYS=LSQ", Kind::Text, kFileSystem, 0, "lsq"},
    {"FILESYS=NAT", Kind::Text, kFileSystem, 0, "lsq"},
    {"FILESYS=PLX", Kind::Text, kFileSystem, 0, "plx"},
    {"FILESYS=PLXD", Kind::Text, kFileSystem, 0, "plx"},
    {"FILESYS=PSX", Kind::Text, kFileSystem, 0, "psx"},
    {"FILESYS=RAW", Kind::Text, kFileSystem, 0, "wbr"},
    {"FILESYS=RQL", Kind::Text, kFileSystem, 0, "rql"},
    {"FILESYS=RSD", Kind::Text, kFileSystem, 0, "rsd"},
    {"FILESYS=STL", Kind::Text, kFileSystem, 0, "stl"},
    {"FILESYS=WBR", Kind::Text, kFileSystem, 0, "wbr"},
    {"FILESYS=WBRN", Kind::Text, kFileSystem, 0, "wbr"},
    {"FM", Kind::Text, kNoField, 0, nullptr},
    {"FM=L", Kind::Text, kNoField, 0, nullptr},
    {"FM=LARGE", Kind::Text, kNoField, 0, nullptr},
    {"FM=S", Kind::Text, kNoField, 0, nullptr},
    {"FM=SMALL", Kind::Text, kNoField, 0, nullptr},
    {"FS", Kind::Text, kNoField, 0, nullptr},
    {"FS=HDK", Kind::Text, kFileSystem, 0, "hdk"},
    {"FS=JGT", Kind::Text, kFileSystem, 0, "jgt"},
    {"FS=LSQ", Kind::Text, kFileSystem, 0, "lsq"},
    {"FS=NAT", Kind::Text, kFileSystem, 0, "lsq"},
    {"FS=PLX", Kind::Text, kFileSystem, 0, "plx"},
    {"FS=PLXD", Kind::Text, kFileSystem, 0, "plx"},
    {"FS=PSX", Kind::Text, kFileSystem, 0, "psx"},
    {"FS=RAW", Kind::Text, kFileSystem, 0, "wbr"},
    {"FS=RQL", Kind::Text, kFileSystem, 0, "rql"},
    {"FS=RSD", Kind::Text, kFileSystem, 0, "rsd"},
    {"FS=STL", Kind::Text, kFileSystem, 0, "stl"},
    {"FS=WBR", Kind::Text, kFileSystem, 0, "wbr"},
    {"FS=WBRN", Kind::Text, kFileSystem, 0, "wbr"},
    {"NOCHECK", Kind::Clear, kProgram, kCheck, nullptr},
    {"NODEBUG", Kind::Clear, kProgram, kDebug, nullptr},
    {"TRANSACTIONS", Kind::Variable, kVariable, 0, "VFS_TRANSACTIONS=on"},
    {"TRANSACTIONS=OFF", Kind::Variable, kVariable, 0, "VFS_TRANSACTIONS=off"},
    {"TRANSACTIONS=ON", Kind::Variable, kVariable, 0, "VFS_TRANSACTIONS=on"},
    {"TRAP", Kind::Trap, kRuntime, kTrapNew, nullptr},
    {"TRAP=DUMP", Kind::Trap, kRuntime, kTrapDump, nullptr},
    {"TRAP=NEW", Kind::Trap, kRuntime, kTrapNew, nullptr},
    {"TRAP=OFF", Kind::TrapOff, kRuntime, ZVK_OPTION_TRAP, nullptr},
    {"TRAP=OLD", Kind::Trap, kRuntime, kTrapOld, nullptr},
    {"TRAP=ON", Kind::Trap, kRuntime, kTrapNew, nullptr},
};
constexpr int kKeywordCount = static_cast<int>(sizeof kKeywords / sizeof *kKeywords);

constexpr bool sorted()
{
    for (int i = 1; i < kKeywordCount; i++) {
        const char *a = kKeywords[i - 1].keyword, *b = kKeywords[i].keyword;
        while (*a && *a == *b) {
            a++;
            b++;
        }
        if (static_cast<unsigned char>(*a) >= static_cast<unsigned char>(*b)) return false;
    }
    return true;
}
static_assert(kKeywordCount == 62 && sorted());

struct Parameter {
    const char *name;
    bool numeric;
    uint32_t width;      // of a text
    const char *allowed; // its characters
    const char *defaultText;
    uint32_t defaultNumber;
    size_t field;
};

constexpr Parameter kParameters[] = {
    {"UPSI", false, 8, "01", "00000000", 0, offsetof(Proccom, upsi)},
    {"ERRCOUNT", true, 0, nullptr, nullptr, 0, offsetof(Proccom, errCount)},
};

const Keyword *findKeyword(const char *token)
{
    int low = 0, high = kKeywordCount - 1;
    while (low <= high) {
        int middle = (low + high) / 2;
        int order = strcmp(token, kKeywords[middle].keyword);
        if (order == 0) return &kKeywords[middle];
        if (order < 0)
            high = middle - 1;
        else
            low = middle + 1;
    }
    return nullptr;
}

// The row that is applied when no option has chosen otherwise: TRAP. Null once an option cancelled
// it.
const Keyword *pendingDefault;

template <class T>
T &fieldAt(size_t offset)
{
    return *reinterpret_cast<T *>(reinterpret_cast<char *>(_zvkProccom) + offset);
}

// "NAME=value". The modules that read it do so at each OPEN.
void setVariable(const char *text)
{
    char name[32];
    size_t length = strcspn(text, "=");
    memcpy(name, text, length);
    name[length] = 0;
    if (!environmentHas(name)) setenv(name, text + length + 1, 1);
}

void apply(const Keyword &row)
{
    if (row.field == kNoField) return;
    switch (row.kind) {
    case Kind::TrapOff:
        pendingDefault = nullptr;
        [[fallthrough]];
    case Kind::Clear:
        fieldAt<uint32_t>(row.field) &= ~row.value;
        break;
    case Kind::Trap:
        pendingDefault = nullptr;
        fieldAt<uint32_t>(row.field) &= ~(kTrapCores | row.value);
        [[fallthrough]];
    case Kind::Set:
        fieldAt<uint32_t>(row.field) |= row.value;
        break;
    case Kind::Variable:
        setVariable(row.text);
        break;
    case Kind::Text:
        if (row.text)
            memcpy(&fieldAt<char>(row.field), row.text, strlen(row.text));
        else
            memset(&fieldAt<char>(row.field), 0, row.value);
        break;
    }
}

uint32_t numericValue(const Parameter &row, const char *value)
{
    char *end = nullptr;
    errno = 0;
    long number = strtol(value, &end, 10);
    if (*end || number < 0) {
        msg::badOptionNumber(value, row.name, ZVK_MSG_NO_TRACEBACK);
        return row.defaultNumber;
    }
    if (errno) {
        msg::optionOutOfRange(value, row.name, 0L, LONG_MAX, ZVK_MSG_NO_TRACEBACK);
        return row.defaultNumber;
    }
    return static_cast<uint32_t>(number);
}

const char *textValue(const Parameter &row, const char *value)
{
    size_t length = strlen(value);
    if (length && length != row.width) {
        msg::badOptionLength(value, row.name, row.width, row.allowed, ZVK_MSG_NO_TRACEBACK);
        return row.defaultText;
    }
    if (value[strspn(value, row.allowed)]) {
        msg::badOptionCharacters(value, row.name, ZVK_MSG_NO_TRACEBACK);
        return row.defaultText;
    }
    return value;
}

void applyParameter(const Parameter &row, const char *value)
{
    if (row.numeric) {
        fieldAt<uint32_t>(row.field) = value ? numericValue(row, value) : row.defaultNumber;
        return;
    }
    const char *text = value ? textValue(row, value) : row.defaultText;
    // A fixed-width field without a terminator; an empty value leaves it all zero bytes.
    memset(&fieldAt<char>(row.field), 0, row.width);
    memcpy(&fieldAt<char>(row.field), text, strnlen(text, row.width));
}

void applyToken(char *token)
{
    if (const Keyword *row = findKeyword(token)) return apply(*row);

    char *value = strchr(token, '=');
    if (value) *value++ = 0;
    for (const Parameter &row : kParameters)
        if (strcmp(token, row.name) == 0) return applyParameter(row, value);
    if (value && findKeyword(token))
        msg::badOptionValue(value, token, ZVK_MSG_NO_TRACEBACK);
    else
        msg::unknownOption(token, ZVK_MSG_NO_TRACEBACK);
}

struct TokenTable {
    char **tokens;
    size_t count;
    size_t capacity;
};

bool startToken(TokenTable &table, char *at)
{
    if (table.count == table.capacity) {
        size_t wanted = table.capacity ? 2 * table.capacity : 512;
        char **grown = static_cast<char **>(realloc(table.tokens, wanted * sizeof *grown));
        if (!grown) return false;
        table.tokens = grown;
        table.capacity = wanted;
    }
    table.tokens[table.count++] = at;
    return true;
}

// Cuts `text` into tokens in place: writes after a second pointer, which never overtakes the
// reading one.
bool tokenise(char *text, TokenTable &table)
{
    char *write = text;
    auto atStart = [&] { return write == text || write[-1] == 0; };
    if (!startToken(table, write)) return false;
    for (const char *read = text;; read++) {
        switch (*read) {
        case ' ':
        case '\t':
        case '\n':
            break;
        case '(':
        case '=':
            *write++ = '=';
            break;
        case ',':
        case ':':
            if (atStart()) break;
            [[fallthrough]];
        case ')':
            *write++ = 0;
            if (!startToken(table, write)) return false;
            break;
        case 0:
            if (atStart()) table.count--;
            *write = 0;
            return true;
        default:
            *write++ = *read;
        }
    }
}

void parse(const char *options)
{
    size_t length = strlen(options);
    char *text = static_cast<char *>(_zvkMalloc(length + 1, 907, ZVK_MSG_NO_TRACEBACK));
    if (!text) return;
    for (size_t i = 0; i <= length; i++) text[i] = static_cast<char>(toupper(static_cast<unsigned char>(options[i])));

    TokenTable table{};
    if (tokenise(text, table)) {
        for (size_t i = 0; i < table.count; i++) applyToken(table.tokens[i]);
        free(table.tokens);
    } else {
        free(table.tokens);
        msg::noStorage(ZVK_MSG_NO_TRACEBACK);
    }
    _zvkcfree(text);
}

} // namespace

void zvkParseOptions()
{
    _zvkProccom->programOptions = kProgramDefault;
    memcpy(_zvkProccom->upsi, "00000000", sizeof _zvkProccom->upsi);
    _zvkProccom->errCount = 0;

    pendingDefault = findKeyword("TRAP");
    if (const char *options = environmentText("COBRTOPT")) parse(options);
    if (pendingDefault) apply(*pendingDefault);
}
