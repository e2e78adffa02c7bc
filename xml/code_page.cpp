// Making code pages from converters and keeping them; see code_page.h.
//
// Pages are on a list that only grows, by ICU's own name, of which there is a fixed number. In
// front of it are two small caches, since opening a converter takes longer than parsing a short
// document: by number for the process, by name for the thread. A name comes from documents, too, so
// the second cache has room for a few names and forgets the oldest.
#include "xml/code_page.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "chardata/copy_text.h"
#include "chardata/open_converter.h"
#include "frame/storage.h"

namespace {

std::atomic<const XmlPage *> pages;

// The declaration's name of converters that have a standard name; by ICU's name, its prefix read as
// "tqx".
constexpr struct {
    const char *declared, *converter;
} kDeclaredNames[] = {
    {"ISO-8859-1", "ISO8859-1"},          {"ISO-8859-2", "tqx-912_P100-1995"},  {"ISO-8859-3", "tqx-913_P100-2000"},
    {"ISO-8859-4", "tqx-914_P100-1995"},  {"ISO-8859-5", "tqx-915_P100-1995"},  {"ISO-8859-6", "tqx-1089_P100-1995"},
    {"ISO-8859-7", "tqx-9005_X110-2007"}, {"ISO-8859-8", "tqx-5012_P100-1999"}, {"ISO-8859-9", "tqx-920_P100-1995"},
    {"ISO-8859-10", "ISO-8859_10-1998"},  {"ISO-8859-11", "ISO-8859_11-2001"},  {"ISO-8859-12", "ISO-8859_12"},
    {"ISO-8859-13", "tqx-921_P100-1995"}, {"ISO-8859-14", "ISO-8859_14-1998"},  {"ISO-8859-15", "tqx-923_P100-1998"},
    {"ISO-8859-16", "ISO-8859_16-2001"},
};

constexpr char kSwapped[] = ",swaplfnl", kSwappedDeclared[] = "-s390";

// ICU's name with the prefix of numbered converters read as "tqx".
void systemName(const XmlPage &page, char (&name)[64])
{
    copyText(name, page.converter);
    const char *dash = strchr(page.converter, '-');
    if (!dash || page.ccsid <= 0) return;
    char number[16];
    snprintf(number, sizeof number, "-%d_", static_cast<int>(page.ccsid));
    if (strncmp(dash, number, strlen(number)) == 0) snprintf(name, sizeof name, "tqx%.59s", dash);
}

void setDeclaredName(XmlPage &page)
{
    char name[64];
    systemName(page, name);
    for (const auto &row : kDeclaredNames)
        if (strcmp(row.converter, name) == 0) return copyText(page.declaredName, row.declared);
    bool swapped = strstr(name, kSwapped) != nullptr;
    size_t length = strcspn(name, swapped ? "_," : "_");
    snprintf(page.declaredName, sizeof page.declaredName, "%.*s%s", static_cast<int>(std::min<size_t>(length, 50)),
             name, swapped ? kSwappedDeclared : "");
}

PageClass classOf(UConverter *converter)
{
    const UChar probe[] = {0x20, 0x3000};
    uint8_t bytes[16];
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = ucnv_fromUChars(converter, reinterpret_cast<char *>(bytes), sizeof bytes, probe, 2, &status);
    if (U_FAILURE(status) || length < 2) return kUnknownPage;
    switch (bytes[0]) {
    case 0x40:
        return length == 2 ? kEbcdicSingle : length == 5 ? kEbcdicMixed : kUnknownPage;
    case 0xFE:
        return bytes[1] == 0xFF ? kUtf16Big : kUnknownPage;
    case 0xFF:
        return bytes[1] == 0xFE ? kUtf16Little : kUnknownPage;
    case 0x00:
        return bytes[1] == 0x20 ? kUtf16Big : kUnknownPage;
    case 0x20:
        break;
    default:
        return kUnknownPage;
    }
    if (length == 3) return kAsciiMixed;
    if (length == 4 && bytes[1] == 0x00) return kUtf16Little;
    if (length == 4 && bytes[1] == 0xE3) return kUtf8;
    return length == 2 ? kAsciiSingle : kUnknownPage;
}

// A byte that is no character alone comes out as none, or with an error.
void readBytes(UConverter *converter, XmlPage &page)
{
    for (int b = 0; b < 256; b++) {
        char byte = static_cast<char>(b);
        UChar units[4];
        UErrorCode status = U_ZERO_ERROR;
        int32_t count = ucnv_toUChars(converter, units, 4, &byte, 1, &status);
        page.toUnicode[b] = U_SUCCESS(status) && count == 1 ? units[0] : kNoCharacter;
    }
    // The shift codes of mixed pages vanish; they are data.
    if (!page.singleByte()) return;
    for (uint32_t b = 0; b < 256; b++)
        if (page.toUnicode[b] != kNoCharacter) page.fromUnicode[page.fromUnicodeCount++] = page.toUnicode[b] << 8 | b;
    std::sort(page.fromUnicode, page.fromUnicode + page.fromUnicodeCount);
}

const XmlPage *findPage(const XmlPage *first, const char *converter)
{
    for (; first; first = first->next)
        if (strcmp(first->converter, converter) == 0) return first;
    return nullptr;
}

XmlPage *makePage(UConverter *converter, const char *name)
{
    auto *page = static_cast<XmlPage *>(zvkCalloc(1, sizeof(XmlPage)));
    if (!page) return nullptr;
    copyText(page->converter, name);
    UErrorCode status = U_ZERO_ERROR;
    page->ccsid = ucnv_getCCSID(converter, &status);
    if (U_FAILURE(status)) page->ccsid = -1;
    page->maxCharSize = static_cast<uint8_t>(ucnv_getMaxCharSize(converter));
    page->pageClass = classOf(converter);
    readBytes(converter, *page);
    zvkDerivePageTables(page->toUnicode, page->tables);
    page->asciiAsIs = true;
    for (uint16_t c = ' '; c < 0x7F; c++) page->asciiAsIs = page->asciiAsIs && page->tables.markup[c] == c;
    setDeclaredName(*page);
    return page;
}

// Two threads may make the same page; the second one finds the first one's, and gives up its own.
const XmlPage *keep(XmlPage *page)
{
    const XmlPage *first = pages.load(std::memory_order_acquire);
    for (;;) {
        if (const XmlPage *same = findPage(first, page->converter)) {
            free(page);
            return same;
        }
        page->next = first;
        if (pages.compare_exchange_weak(first, page, std::memory_order_acq_rel)) return page;
    }
}

const XmlPage *openPage(const char *name)
{
    UErrorCode status = U_ZERO_ERROR;
    UConverter *converter = zvkOpenConverter(name, &status);
    if (!converter) return nullptr;
    status = U_ZERO_ERROR;
    const char *own = ucnv_getName(converter, &status);
    const XmlPage *page = nullptr;
    if (U_SUCCESS(status) && strlen(own) < sizeof page->converter) {
        page = findPage(pages.load(std::memory_order_acquire), own);
        if (!page) {
            XmlPage *made = makePage(converter, own);
            page = made ? keep(made) : nullptr;
        }
    }
    ucnv_close(converter);
    return page;
}

struct NamedPage {
    char name[64];
    const XmlPage *page; // null: there is none
};
thread_local NamedPage recentNames[4];
thread_local unsigned nextName;

// One answer a slot: the number and a page, or no page. The page's address has 48 bits.
std::atomic<uint64_t> byNumber[256];
constexpr uint64_t kAddress = (uint64_t{1} << 48) - 1;

} // namespace

int XmlPage::byteOf(uint32_t character) const
{
    const uint32_t *end = fromUnicode + fromUnicodeCount;
    const uint32_t *found = std::lower_bound(fromUnicode, end, character << 8);
    return found != end && *found >> 8 == character ? static_cast<int>(*found & 0xFF) : -1;
}

const XmlPage *zvkXmlPage(const char *name)
{
    if (!*name || strlen(name) >= sizeof NamedPage::name) return nullptr;
    for (const NamedPage &recent : recentNames)
        if (strcmp(recent.name, name) == 0) return recent.page;
    NamedPage &slot = recentNames[nextName++ % std::size(recentNames)];
    copyText(slot.name, name);
    return slot.page = openPage(name);
}

const XmlPage *zvkXmlPageOfCcsid(uint32_t ccsid)
{
    if (ccsid == 0 || ccsid > 0xFFFF) return nullptr;
    std::atomic<uint64_t> &slot = byNumber[ccsid % std::size(byNumber)];
    uint64_t known = slot.load(std::memory_order_acquire);
    if (known >> 48 == ccsid) return reinterpret_cast<const XmlPage *>(known & kAddress);
    char name[16];
    snprintf(name, sizeof name, "TQX-%.5u", ccsid);
    const XmlPage *page = openPage(name);
    slot.store(uint64_t{ccsid} << 48 | reinterpret_cast<uintptr_t>(page), std::memory_order_release);
    return page;
}
