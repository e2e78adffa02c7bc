// The message catalog; see message_catalog.h.
#include "frame/message_catalog.h"

#include <algorithm>
#include <climits>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <nl_types.h>

#include "frame/catalog_file.h"

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

const char *insertsOf(uint32_t number, uint32_t variant)
{
    auto at = std::lower_bound(std::begin(kSignatures), std::end(kSignatures), number,
                               [](const Signature &row, uint32_t wanted) { return row.number < wanted; });
    const char *inserts = "";
    for (; at != std::end(kSignatures) && at->number == number; at++)
        if (at->variant == -1 || at->variant == static_cast<int32_t>(variant)) inserts = at->inserts;
    return inserts;
}

// One conversion of a format: which insert it takes and as what.
struct Conversion {
    int position; // 0: the next one
    char type;    // 0: none that a text may have
};

// Reads the conversion behind a "%", which is not another "%", and moves on behind it.
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
    at += strspn(at, "0123456789");
    if (*at == '.') at += 1 + strspn(at + 1, "0123456789");
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

nl_catd openUnder(const char *locale)
{
    char path[PATH_MAX];
    const char *search = getenv("NLSPATH");
    for (const char *entry = search ? search : ""; *entry;) {
        const char *end = strchrnul(entry, ':');
        // A name with a "/" in it is opened as it stands. One that is not whole would be read beyond its end.
        if (zvkCatalogCandidate(entry, end, locale, path, sizeof path) && strchr(path, '/') && zvkCatalogIsWhole(path)) {
            nl_catd opened = catopen(path, NL_CAT_LOCALE);
            if (opened != kClosed) return opened;
        }
        entry = *end ? end + 1 : end;
    }
    return kClosed;
}

// The locale of messages, then the forms of its name from the fullest to the barest, then names that a catalog is likely to be installed under.
nl_catd openUnderSomeLocale()
{
    char name[256];
    const char *present = setlocale(LC_MESSAGES, nullptr);
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
    messageSettings.bufferSize = std::max(messageSettings.bufferSize, size);
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

MessageSettings messageSettings = {
    {'Z', 'V', 'K'}, {'I', 'W', 'S', 'C'}, "Insufficient storage. Cannot find space for message %d.", true, nullptr, 0};

void zvkOpenCatalog()
{
    if (zvkCatalogIsOpen() || messageSettings.bufferSize) return;
    setDefaults();
    catalog = openUnderSomeLocale();
    messageSettings.singleByte = MB_CUR_MAX == 1;
    if (!zvkCatalogIsOpen()) {
        zvkCloseCatalog();
        return;
    }
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

bool zvkTextFits(const char *format, const char *inserts)
{
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
        if (!conversion.type || index >= known || inserts[index] != conversion.type) return false;
        used |= 1u << index;
        highest = std::max(highest, index + 1);
    }
    // Numbered conversions must leave no gap: printf could not know the type of the insert in between.
    return !(positional && sequential) && (!positional || used == (1u << highest) - 1);
}

const char *zvkCatalogText(uint32_t number, uint32_t variant)
{
    if (!zvkCatalogIsOpen() || number > 32767) return nullptr;
    const char *text = catgets(catalog, static_cast<int>(number), static_cast<int>(variant + 1), nullptr);
    if (!text || strlen(text) < 2 || !zvkTextFits(text + 2, insertsOf(number, variant))) return nullptr;
    return text;
}
