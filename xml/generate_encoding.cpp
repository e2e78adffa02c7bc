// Choosing the encoding of a generated document; see generate_encoding.h.
#include "xml/generate_encoding.h"

#include <cstdio>
#include <cstring>

#include "base/bytes.h"
#include "kvr2/code_pages.h"
#include "xml/characters.h"
#include "xml/generate_text.h"

namespace {

constexpr int32_t kUnknownEncoding = 410, kNoUtf16 = 415, kNoMarkup = 416, kNotUtf8 = 420;
constexpr int32_t kMultiByteEbcdic = 411, kMultiByteNative = 412, kBadNumber = 413, kNoNumber = 414;
constexpr int32_t kNumberUnreadable = 602, kNameTooLong = 608, kNameUnconvertible = 610, kNameCut = 611;

constexpr size_t kLongestName = 320;
constexpr int32_t kUtf8Ccsid = 1208;

// The ENCODING value, one character at a time, from whatever it is encoded in.
struct EncodingValue {
    const uint8_t *at, *end;
    bool national, ebcdic;
    const XmlPage *ebcdicPage;

    // Below 0: what is there cannot be converted.
    int32_t take()
    {
        if (!national) {
            uint8_t b = *at++;
            return ebcdic && ebcdicPage ? ebcdicPage->toUnicode[b] : b;
        }
        if (end - at < 2) return -kNameCut;
        uint32_t unit = load<uint16_t>(at);
        at += 2;
        if (!zvkIsSurrogate(unit)) return static_cast<int32_t>(unit);
        if (zvkIsHighSurrogate(unit) && end - at < 2) return -kNameCut;
        if (!zvkIsHighSurrogate(unit) || !zvkIsLowSurrogate(load<uint16_t>(at))) return -kNameUnconvertible;
        uint32_t low = load<uint16_t>(at);
        at += 2;
        return static_cast<int32_t>(zvkPair(unit, low));
    }
};

// Bytes that a character has in UTF-8, by which a national name's length counts.
size_t utf8Length(int32_t c) { return c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4; }

// Without blanks around it. A character that no name has becomes "?", so that the name is unknown.
int32_t readName(EncodingValue value, char (&name)[kLongestName + 1])
{
    size_t length = 0, counted = 0;
    while (value.at < value.end) {
        int32_t c = value.take();
        if (c < 0) return -c;
        if (c == ' ' && length == 0) continue;
        counted += value.national ? utf8Length(c) : 1;
        if (counted > kLongestName) return kNameTooLong;
        name[length++] = c > ' ' - 1 && c < 0x7F ? static_cast<char>(c) : '?';
    }
    while (length > 0 && name[length - 1] == ' ') length--;
    name[length] = 0;
    return 0;
}

// A name of digits is the number of a coded character set.
const XmlPage *pageOfValue(const char *name)
{
    size_t digits = strspn(name, "0123456789");
    if (digits == 0 || name[digits] != 0) return zvkXmlPage(name);
    name += strspn(name, "0");
    char numbered[sizeof XmlPage::converter];
    int length = snprintf(numbered, sizeof numbered, "tqx-%s", name);
    return length < static_cast<int>(sizeof numbered) ? zvkXmlPage(numbered) : nullptr;
}

bool canHoldMarkup(const XmlPage &page)
{
    if (zvkTargetOf(page) != Target::SingleByte) return true;
    for (const char *c = "<>/=\"'&;#?:_-. abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"; *c; c++)
        if (page.tables.markup[static_cast<uint8_t>(*c)] == kNoByte) return false;
    return true;
}

bool isUtf16Number(int32_t ccsid) { return ccsid == 1200 || ccsid == 1202 || ccsid == 1204; }

int32_t checkPage(const XmlPage &page, uint32_t receiverClass, bool onlyUtf8)
{
    bool utf8 = page.ccsid == kUtf8Ccsid && page.pageClass == kUtf8;
    if (receiverClass == ZVK_XML_RECEIVER_NATIONAL) {
        if (!isUtf16Number(page.ccsid)) return kNoUtf16;
    } else if (page.maxCharSize > 1 && !utf8) {
        return receiverClass == ZVK_XML_RECEIVER_EBCDIC ? kMultiByteEbcdic : kMultiByteNative;
    }
    if (onlyUtf8 && !utf8) return kNotUtf8;
    if (page.ccsid < 0) return kNumberUnreadable;
    if (page.ccsid == 0) return kNoNumber;
    if (page.ccsid > 0xFFFF) return kBadNumber;
    return canHoldMarkup(page) ? 0 : kNoMarkup;
}

} // namespace

int32_t zvkChooseEncoding(const XmlGenerateOptions *options, uint32_t receiverClass,
                          const XmlConversionContext *context, GenerateEncoding &encoding)
{
    char localeName[64], ebcdicCodePage[16];
    _zvkGetLocaleCP(localeName, ebcdicCodePage);
    const char *codeSet = localeName + 6;
    if (context && context->localeName && strnlen(context->localeName, 7) == 7) codeSet = context->localeName + 6;
    encoding.native = zvkXmlPage(codeSet);
    encoding.ebcdic = zvkXmlPage(ebcdicCodePage);

    const XmlPage *page = nullptr;
    if (options && options->encodingLength > 0) {
        auto *value = static_cast<const uint8_t *>(options->encodingName);
        char name[kLongestName + 1];
        int32_t code =
            readName({value, value + options->encodingLength, (options->encodingClass & ZVK_XML_TEXT_NATIONAL) != 0,
                      (options->encodingClass & ZVK_XML_TEXT_EBCDIC) != 0, encoding.ebcdic},
                     name);
        if (code) return code;
        page = pageOfValue(name);
    } else if (receiverClass == ZVK_XML_RECEIVER_NATIONAL) {
        page = zvkXmlPage("UTF-16");
    } else {
        page = receiverClass == ZVK_XML_RECEIVER_EBCDIC ? encoding.ebcdic : zvkXmlPage(localeName + 6);
    }
    if (!page || !encoding.native) return kUnknownEncoding;

    bool onlyUtf8 = options && options->options & ZVK_XML_ONLY_UTF8;
    if (int32_t code = checkPage(*page, receiverClass, onlyUtf8)) return code;
    encoding.document = page;
    encoding.declared = receiverClass == ZVK_XML_RECEIVER_NATIONAL ? "UTF-16" : page->declaredName;
    return 0;
}
