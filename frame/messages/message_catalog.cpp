// The message catalog; see message_catalog.h.
#include "frame/messages/message_catalog.h"
#include "base/environment.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <nl_types.h>
#include <sys/stat.h>

#include "frame/locale/locale_handles.h"
#include "frame/messages.h"
#include "frame/messages/catalog_file.h"

namespace {

constexpr size_t kDefaultBufferSize = 4096;
constexpr char kControlDefault[] = "F ZVK IWSC  4096";
constexpr char kNoSpaceDefault[] = "1 Insufficient storage. Cannot find space for message %d.";

const nl_catd kClosed = reinterpret_cast<nl_catd>(-1);
nl_catd catalog = kClosed;

struct Signature {
    uint32_t number;
    int32_t variant; // -1: all that have no row of their own
    const char *inserts;
};

// Generated from the catalog's source, sorted by number and variant.
constexpr Signature kSignatures[] = {
#include "message_inserts.inc"
};

// Null for a number that is not in the table.
const char *insertsOf(uint32_t number, uint32_t variant)
{
    auto at = std::lower_bound(std::begin(kSignatures), std::end(kSignatures), number,
                               [](const Signature &row, uint32_t wanted) { return row.number < wanted; });
    const char *inserts = nullptr;
    for (; at != std::end(kSignatures) && at->number == number; at++)
        if (at->variant == -1 || at->variant == static_cast<int32_t>(variant)) inserts = at->inserts;
    return inserts;
}

// One conversion of a format: which insert it takes and as what.
struct Conversion {
    int position; // 0: the next one
    char type;    // 0: none that a text may have
};

// Moves over the digits of a width or precision; false for one that no text can mean.
bool skipExtent(const char *&at)
{
    size_t digits = strspn(at, "0123456789");
    at += digits;
    return digits <= 3;
}

// Reads the conversion after a "%", which is not another "%", and moves on after it.
Conversion readConversion(const char *&at)
{
    Conversion conversion{0, 0};
    char *end;
    long number = strtol(at, &end, 10);
    if (end != at && *end == '$' && *at >= '1' && *at <= '9') {
        if (number > 9) return conversion;
        conversion.position = static_cast<int>(number);
        at = end + 1;
    }
    at += strspn(at, "-+ #0");
    if (!skipExtent(at)) return conversion;
    if (*at == '.' && !skipExtent(++at)) return conversion;
    bool isLong = false;
    for (; *at && strchr("hlzjt", *at); at++) isLong |= *at != 'h';
    switch (*at) {
    case 0:
        return conversion;
    case 's':
        conversion.type = isLong ? '\0' : 's';
        break;
    case 'p':
        conversion.type = 'p';
        break;
    case 'c':
        conversion.type = isLong ? '\0' : 'd';
        break;
    case 'd':
    case 'i':
    case 'u':
    case 'x':
    case 'X':
    case 'o':
        conversion.type = isLong ? 'l' : 'd';
        break;
    default:
        break;
    }
    at++;
    return conversion;
}

// The text of a number that is a site's own.
bool foreignTextFits(const char *format)
{
    for (const char *at = format; (at = strchr(at, '%')); at++) {
        at++;
        if (*at == '%') continue;
        at += strspn(at, "0123456789$-+ #'*.hlLjzt");
        if (!*at || !strchr("diouxXcspeEfFgGaA", *at)) return false;
    }
    return true;
}

// An entry that names a plain directory means the catalog in it.
void addCatalogName(char *path, size_t size)
{
    struct stat status;
    size_t length = strlen(path);
    if (length + sizeof kCatalogName + 1 > size || stat(path, &status) != 0 || !S_ISDIR(status.st_mode)) return;
    snprintf(path + length, size - length, "/%s", kCatalogName);
}

nl_catd openFromList(const char *list, const char *locale)
{
    char path[PATH_MAX] = "./";
    char *name = path + 2;
    for (const char *entry = list; *entry;) {
        const char *end = strchrnul(entry, ':');
        if (zvkCatalogCandidate(entry, end, locale, name, sizeof path - 2)) {
            // A name with a "/" in it is opened as it is. One that is not whole would be read
            // beyond its end.
            char *whole = strchr(name, '/') ? name : path;
            addCatalogName(whole, static_cast<size_t>(std::end(path) - whole));
            nl_catd opened = zvkCatalogIsWhole(whole) ? catopen(whole, NL_CAT_LOCALE) : kClosed;
            if (opened != kClosed) return opened;
        }
        entry = *end ? end + 1 : end;
    }
    return kClosed;
}

// As catopen finds a catalog, but one that is not whole is passed over.
nl_catd openUnder(const char *locale)
{
    constexpr char systemList[] = "/usr/share/locale/%L/%N:/usr/share/locale/%L/LC_MESSAGES/%N:"
                                  "/usr/share/locale/%l/%N:/usr/share/locale/%l/LC_MESSAGES/%N";
    const char *list = environmentValue("NLSPATH");
    nl_catd opened = list ? openFromList(list, locale) : kClosed;
    return opened != kClosed ? opened : openFromList(systemList, locale);
}

// The locale of messages, then the forms of its name from the fullest to the barest, then names
// that a catalog is likely to be installed under.
nl_catd openUnderSomeLocale()
{
    char name[256];
    const char *present = zvkLocaleName(LC_MESSAGES);
    snprintf(name, sizeof name, "%s", present ? present : "C");
    nl_catd opened = openUnder(name);
    for (const char *mark : {"@", ".", "_"}) {
        char *cut = strstr(name, mark);
        if (!cut || opened != kClosed) continue;
        *cut = 0;
        opened = openUnder(name);
    }
    for (const char *usual : {"en_US", "POSIX", "C"})
        if (opened == kClosed) opened = openUnder(usual);
    return opened;
}

const char *skipBlanks(const char *text) { return text + strspn(text, " "); }

// "F ZVK IWSC  4096": prefix, letters, buffer size.
void readControlRecord()
{
    const char *at = catgets(catalog, 9999, 1, kControlDefault);
    if (strlen(at) < 2) return;
    at = skipBlanks(at + 2);
    if (strlen(at) < 3) return;
    memcpy(messageSettings.prefix, at, 3);
    at = skipBlanks(at + 3);
    if (strlen(at) < 4) return;
    memcpy(messageSettings.severityLetters, at, 4);
    size_t size = strtoul(skipBlanks(at + 4), nullptr, 0);
    // The most that a catalog may ask for; a damaged one must not take the machine's storage.
    constexpr size_t mostSize = size_t{1} << 20;
    messageSettings.bufferSize = std::max(messageSettings.bufferSize, std::min(size, mostSize));
}

void readNoSpaceText()
{
    const char *text = catgets(catalog, 993, 1, kNoSpaceDefault);
    if (strlen(text) < 2 || !zvkTextFits(text, "ds")) text = kNoSpaceDefault;
    snprintf(messageSettings.noSpaceText, sizeof messageSettings.noSpaceText, "%s", text + 2);
    // The cut may have gone through a conversion.
    if (!zvkTextFits(messageSettings.noSpaceText, "ds"))
        snprintf(messageSettings.noSpaceText, sizeof messageSettings.noSpaceText, "%s", kNoSpaceDefault + 2);
}

void setDefaults()
{
    memcpy(messageSettings.prefix, "ZVK", 3);
    memcpy(messageSettings.severityLetters, "IWSC", 4);
    snprintf(messageSettings.noSpaceText, sizeof messageSettings.noSpaceText, "%s", kNoSpaceDefault + 2);
    messageSettings.bufferSize = kDefaultBufferSize;
}

} // namespace

MessageSettings messageSettings = {{'Z', 'V', 'K'},
                                   {'I', 'W', 'S', 'C'},
                                   "Insufficient storage. Cannot find space for message %d.",
                                   false,
                                   nullptr,
                                   0};

void zvkOpenCatalog()
{
    if (zvkCatalogIsOpen() || messageSettings.bufferSize) return;
    setDefaults();
    catalog = openUnderSomeLocale();
    if (!zvkCatalogIsOpen()) {
        zvkCloseCatalog();
        return;
    }
    messageSettings.singleByte = MB_CUR_MAX == 1;
    readNoSpaceText();
    readControlRecord();
    size_t size = (messageSettings.bufferSize + 15) & ~size_t{15};
    if (size >= messageSettings.bufferSize) messageSettings.buffer = static_cast<char *>(aligned_alloc(16, size));
    if (!messageSettings.buffer) {
        fputs("Insufficient storage, Cannot allocate message buffer.\n", stderr);
        zvkCloseCatalog();
    }
}

void zvkCloseCatalog()
{
    if (zvkCatalogIsOpen()) catclose(catalog);
    catalog = kClosed;
    free(messageSettings.buffer);
    messageSettings.buffer = nullptr;
    messageSettings.bufferSize = 0;
}

bool zvkCatalogIsOpen() { return catalog != kClosed; }

// Whether a conversion may show an insert. A conversion of 32 bits shows the low half of a long
// integer: both travel in the same place.
static bool takes(char insert, char conversion) { return conversion == insert || (insert == 'l' && conversion == 'd'); }

bool zvkTextFits(const char *format, const char *inserts)
{
    if (!inserts) return foreignTextFits(format);
    int known = static_cast<int>(strlen(inserts));
    int next = 0, highest = 0;
    bool positional = false, sequential = false;
    unsigned used = 0;
    for (const char *at = format; *at;) {
        if (*at++ != '%') continue;
        if (*at == '%') {
            at++;
            continue;
        }
        Conversion conversion = readConversion(at);
        (conversion.position ? positional : sequential) = true;
        int index = conversion.position ? conversion.position - 1 : next++;
        if (!conversion.type || index >= known || !takes(inserts[index], conversion.type)) return false;
        used |= 1u << index;
        highest = std::max(highest, index + 1);
    }
    // Numbered conversions must leave no gap: printf could not know the type of the insert in
    // between.
    return !(positional && sequential) && (!positional || used == (1u << highest) - 1);
}

const char *zvkCatalogText(uint32_t number, uint32_t variant)
{
    if (!zvkCatalogIsOpen() || number > 32767) return nullptr;
    const char *text = catgets(catalog, static_cast<int>(number), static_cast<int>(variant + 1), nullptr);
    if (!text || strlen(text) < 2 || !zvkTextFits(text + 2, insertsOf(number, variant))) return nullptr;
    return text;
}

bool zvkHasMessage(uint32_t number, uint32_t variant)
{
    return messageSettings.buffer && zvkCatalogText(number, variant);
}
