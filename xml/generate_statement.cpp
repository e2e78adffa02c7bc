// XML GENERATE: the walk through the source item, and the document that it writes.
//
//     01 ORDER.                    nodes: 1 group  2 numeric, attribute  2 control 2  2 leaf
//       02 NO    PIC 9(4).         names: ORDER NO ITEM
//       02 ITEM  PIC X(5) OCCURS 2.
//
//     <ORDER NO="12"><ITEM>pen</ITEM><ITEM>ink</ITEM></ORDER>
//
// The walk has a cursor each in the nodes, the names, the source item and the edited numbers. A
// group that repeats sends the first two back to its node; the other two only go forward.
//
// The document is written in units of a byte or of two; the code is one, over the unit. Each piece
// that is written fits as a whole, or is not written and ends the statement.
#include <algorithm>
#include <cstring>
#include <unicode/ucnv.h>

#include "base/bytes.h"
#include "chardata/open_converter.h"
#include "frame/storage.h"
#include "kvr2/xml.h"
#include "xml/characters.h"
#include "xml/generate_encoding.h"
#include "xml/generate_text.h"

namespace {

constexpr int32_t kReceiverTooSmall = 400, kUnknownEncoding = 410, kWrittenInHex = 417, kBareHex = 418,
                  kNameFailed = 419;
constexpr int32_t kNoBuffers = 604, kVersionUnknown = 606;
constexpr uint32_t kHighestVersion = 6;

constexpr uint32_t kLeastBuffer = 256, kBufferOnStack = 2048;
constexpr uint8_t kShiftOut = 0x0E, kShiftIn = 0x0F;

constexpr char kInterfaceUri[] = "http://kvr2.invalid/schemas/cobol/Interface";

// A piece of a source: bytes of a code page, or national units.
struct SourceText {
    const uint8_t *at, *end;
    const TextPair *pair; // null: national
    uint8_t kinds;        // of its bytes, put together
    bool minus = false;   // a "-" comes first
    bool comma = false;   // a "." in it is written ","
    bool hex = false;
    const char *word = nullptr; // this instead

    size_t length() const { return static_cast<size_t>(end - at); }
};

// A group whose end tag is still to come.
struct OpenGroup {
    const GenerateNode *node;
    const uint8_t *name;
    uint64_t remaining; // occurrences, with the one that is open
    bool tagged, absent;
    const uint8_t *tagName, *tagNameEnd; // in the document
};

// Buffers and a converter for source texts that are no bytes of single characters: made when they
// are needed, gone with the statement.
class WideSource {
public:
    ~WideSource()
    {
        if (converter_) ucnv_close(converter_);
        if (bytes_ != stackBytes_) free(bytes_);
        if (units_ != stackUnits_) free(units_);
    }
    WideSource() = default;
    WideSource(const WideSource &) = delete;
    WideSource &operator=(const WideSource &) = delete;

    // False without storage.
    bool reserve(uint64_t size)
    {
        if (size <= room_) return true;
        if (bytes_ != stackBytes_) free(bytes_);
        if (units_ != stackUnits_) free(units_);
        bytes_ = static_cast<uint8_t *>(zvkAlloc(size));
        units_ = static_cast<uint8_t *>(zvkAlloc(2 * size + 4));
        room_ = bytes_ && units_ ? size : 0;
        return room_ != 0;
    }

    // The text in UTF-16; false where it is no text of the page. `failed`: no storage.
    bool convert(const XmlPage &page, SourceText &text, bool shifted, bool &failed)
    {
        size_t length = text.length() + (shifted ? 2 : 0);
        failed = length > INT32_MAX || !reserve(length);
        if (failed || !open(page)) return false;
        uint8_t *to = bytes_;
        if (shifted) *to++ = kShiftOut;
        memcpy(to, text.at, text.length());
        if (shifted) to[text.length()] = kShiftIn;
        UErrorCode status = U_ZERO_ERROR;
        int32_t units = ucnv_toUChars(converter_, reinterpret_cast<UChar *>(units_), static_cast<int32_t>(room_ + 1),
                                      reinterpret_cast<char *>(bytes_), static_cast<int32_t>(length), &status);
        if (U_FAILURE(status)) return false;
        text.at = units_;
        text.end = units_ + 2 * static_cast<size_t>(units);
        text.pair = nullptr;
        return true;
    }

private:
    bool open(const XmlPage &page)
    {
        if (page_ == &page) return true;
        if (converter_) ucnv_close(converter_);
        page_ = nullptr;
        UErrorCode status = U_ZERO_ERROR;
        converter_ = zvkOpenConverter(page.converter, &status);
        if (!converter_) return false;
        ucnv_setToUCallBack(converter_, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
        page_ = &page;
        return U_SUCCESS(status);
    }

    uint8_t stackBytes_[kBufferOnStack];
    alignas(2) uint8_t stackUnits_[2 * kBufferOnStack + 4];
    uint8_t *bytes_ = stackBytes_, *units_ = stackUnits_;
    uint64_t room_ = kBufferOnStack;
    const XmlPage *page_ = nullptr;
    UConverter *converter_ = nullptr;
};

template <class Unit>
class Generator {
public:
    Generator(const GenerateEncoding &pages, const XmlGenerateOptions *given, void *receiver, uint32_t capacity)
        : encoding_(pages), target_(zvkTargetOf(*pages.document)), options_(given),
          start_(static_cast<uint8_t *>(receiver)), at_(start_), end_(start_ + capacity / sizeof(Unit) * sizeof(Unit))
    {
        asciiAsIs_ = sizeof(Unit) == 1 && (target_ == Target::Utf8 || pages.document->asciiAsIs);
    }

    bool prepare(uint32_t textBuffer);
    bool document(const GenerateNode *nodes, const uint8_t *names, const uint8_t *source, const uint8_t *edited,
                  const uint64_t *depending);

    uint32_t written() const { return static_cast<uint32_t>((at_ - start_) / static_cast<ptrdiff_t>(sizeof(Unit))); }
    int32_t code() const { return code_; }
    // After a document without error.
    int32_t warning() const
    {
        if (hexNamed_ && option(ZVK_XML_TELL_HEX)) return kWrittenInHex;
        return hexBare_ && option(ZVK_XML_TELL_BARE_HEX) ? kBareHex : 0;
    }

private:
    bool option(uint8_t bit) const { return options_ && options_->options & bit; }
    bool fail(int32_t code)
    {
        code_ = code;
        return false;
    }

    // Writing.
    Unit unitOfAscii(char c) const
    {
        if (target_ != Target::SingleByte) return static_cast<uint8_t>(c);
        return static_cast<Unit>(encoding_.document->tables.markup[static_cast<uint8_t>(c)]);
    }
    bool room(size_t units)
    {
        return static_cast<size_t>(end_ - at_) >= units * sizeof(Unit) || fail(kReceiverTooSmall);
    }
    void store(uint32_t unit)
    {
        ::store<Unit>(at_, static_cast<Unit>(unit));
        at_ += sizeof(Unit);
    }
    bool put(const char *ascii, size_t length)
    {
        if (!room(length)) return false;
        if (asciiAsIs_) {
            copy(ascii, length);
        } else {
            for (size_t i = 0; i < length; i++) store(unitOfAscii(ascii[i]));
        }
        return true;
    }
    template <size_t Size>
    bool put(const char (&literal)[Size])
    {
        return put(literal, Size - 1);
    }
    bool putWord(const char *word) { return put(word, strlen(word)); }
    // Most pieces are a few bytes: two overlapping moves do for them.
    void copy(const void *from, size_t length)
    {
        auto *bytes = static_cast<const uint8_t *>(from);
        if (length >= 8 && length <= 16) {
            uint64_t first = load<uint64_t>(bytes), last = load<uint64_t>(bytes + length - 8);
            ::store<uint64_t>(at_, first);
            ::store<uint64_t>(at_ + length - 8, last);
        } else if (length >= 4 && length < 8) {
            uint32_t first = load<uint32_t>(bytes), last = load<uint32_t>(bytes + length - 4);
            ::store<uint32_t>(at_, first);
            ::store<uint32_t>(at_ + length - 4, last);
        } else if (length < 4) {
            for (size_t i = 0; i < length; i++) at_[i] = bytes[i];
        } else {
            memcpy(at_, bytes, length);
        }
        at_ += length;
    }
    bool putPlain(const TextPair &pair, const uint8_t *at, const uint8_t *end);
    bool putCharacter(uint32_t character);
    bool putReference(uint32_t character);
    bool putBytes(const SourceText &text);
    bool putUnits(const SourceText &text);
    bool putHex(const SourceText &text);
    bool putText(const SourceText &text);

    // Reading.
    bool classify(SourceText &text, const XmlPage *page, bool shifted, WideSource &wide);
    bool classifyName(const uint8_t *name, SourceText &text);
    bool classifyNational(SourceText &text);
    bool partsAreCharacters(const SourceText &text) const;
    const TextPair *pairOf(const XmlPage *page);
    bool leafText(const GenerateNode &node, const uint8_t *data, const uint8_t *edited, SourceText &text);
    bool numericText(const GenerateNode &node, const uint8_t *edited, SourceText &text);
    bool optionText(uint8_t textClass, const void *at, uint64_t length, SourceText &text);

    // Mark-up.
    bool declaration();
    bool putName(const uint8_t *name, bool hex);
    bool putElementName(const uint8_t *name, bool hex);
    bool putOptionText(uint8_t textClass, const void *at, uint64_t length);
    bool namespaceDeclaration();
    bool interfaceTag(const uint8_t *name, bool closing);
    bool closeStartTag();
    bool startTag(const uint8_t *name, bool hex);
    bool endTag(const uint8_t *tagName, const uint8_t *tagNameEnd);
    bool leaf(const GenerateNode &node, const uint8_t *name, const SourceText &text);

    // The walk.
    struct Cursors {
        const GenerateNode *node;
        const uint8_t *name, *data, *edited;
        uint64_t repeat;
    };
    bool walk(Cursors &c, const uint64_t *depending);
    bool closeGroups(Cursors &c, uint8_t level, bool &again);
    bool leaves(Cursors &c);

    const GenerateEncoding &encoding_;
    const Target target_;
    const XmlGenerateOptions *options_;
    uint8_t *const start_, *at_;
    uint8_t *const end_;
    bool asciiAsIs_;
    int32_t code_ = 0;
    bool hexNamed_ = false, hexBare_ = false;
    const uint8_t *tagName_ = nullptr, *tagNameEnd_ = nullptr; // in the document: of the latest start tag
    bool tagOpen_ = false;                                     // a start tag without its ">"
    bool namespaceDone_ = false;
    bool absent_ = false; // inside what does not occur

    const TextPair *native_ = nullptr, *ebcdic_ = nullptr;
    WideSource wideText_, wideName_;
    OpenGroup groups_[256]; // their levels increase
    uint32_t depth_ = 0;
};

// --- Writing -------------------------------------------------------------------------------------

template <class Unit>
bool Generator<Unit>::putPlain(const TextPair &pair, const uint8_t *at, const uint8_t *end)
{
    size_t length = static_cast<size_t>(end - at);
    if (!room(length)) return false;
    if (sizeof(Unit) == 1 && pair.same) {
        copy(at, length);
    } else {
        for (; at < end; at++) store(pair.unit[*at]);
    }
    return true;
}

// A character by itself: an entity, its units, or a reference where the document's page lacks it.
template <class Unit>
bool Generator<Unit>::putCharacter(uint32_t character)
{
    if (const char *entity = zvkEntityOf(character)) return putWord(entity);
    if (character > 0xFFFF) return putReference(character);
    if (target_ == Target::Utf16) return room(1) && (store(character), true);
    if (target_ == Target::SingleByte) {
        int byte = encoding_.document->byteOf(character);
        if (byte < 0) return putReference(character);
        return room(1) && (store(static_cast<uint32_t>(byte)), true);
    }
    if (character < 0x80) return room(1) && (store(character), true);
    if (!room(character < 0x800 ? 2 : 3)) return false;
    if (character < 0x800) {
        store(0xC0 | character >> 6);
    } else {
        store(0xE0 | character >> 12);
        store(0x80 | (character >> 6 & 0x3F));
    }
    store(0x80 | (character & 0x3F));
    return true;
}

constexpr char kHexDigits[] = "0123456789ABCDEF";

template <class Unit>
bool Generator<Unit>::putReference(uint32_t character)
{
    char text[32] = "&#x"; // 10 at most
    size_t length = 3;
    for (int shift = 20; shift >= 0; shift -= 4)
        if (character >> shift) text[length++] = kHexDigits[character >> shift & 15];
    text[length++] = ';';
    return put(text, length);
}

template <class Unit>
bool Generator<Unit>::putBytes(const SourceText &text)
{
    const TextPair &pair = *text.pair;
    if (text.kinds == kPlain) return putPlain(pair, text.at, text.end);
    for (const uint8_t *at = text.at; at < text.end;) {
        const uint8_t *run = at;
        while (at < text.end && pair.kind[*at] == kPlain) at++;
        if (at != run && !putPlain(pair, run, at)) return false;
        if (at == text.end) break;
        size_t length = 1;
        uint32_t character =
            pair.kind[*at] == kPart ? zvkUtf8Character(at, text.end, length) : pair.source->toUnicode[*at];
        if (!putCharacter(character)) return false;
        at += length;
    }
    return true;
}

template <class Unit>
bool Generator<Unit>::putUnits(const SourceText &text)
{
    for (const uint8_t *at = text.at; at < text.end; at += 2) {
        uint32_t character = load<uint16_t>(at);
        if (zvkIsHighSurrogate(character)) {
            at += 2;
            character = zvkPair(character, load<uint16_t>(at));
        }
        if (!putCharacter(character)) return false;
    }
    return true;
}

// Two digits a byte, four a unit.
template <class Unit>
bool Generator<Unit>::putHex(const SourceText &text)
{
    bool national = text.pair == nullptr;
    for (size_t i = 0; i < text.length(); i += national ? 2 : 1) {
        uint16_t value = national && i + 1 < text.length() ? load<uint16_t>(text.at + i) : text.at[i];
        char digits[4] = {kHexDigits[value >> 12], kHexDigits[value >> 8 & 15], kHexDigits[value >> 4 & 15],
                          kHexDigits[value & 15]};
        if (!put(national ? digits : digits + 2, national ? 4 : 2)) return false;
    }
    return true;
}

template <class Unit>
bool Generator<Unit>::putText(const SourceText &text)
{
    if (text.word) return putWord(text.word);
    if (text.hex) return putHex(text);
    if (text.minus && !put("-")) return false;
    if (!text.pair) return putUnits(text);
    if (!text.comma) return putBytes(text);
    int point = text.pair->source->tables.markup['.'];
    SourceText piece = text;
    piece.end = std::find(text.at, text.end, point);
    if (!putBytes(piece)) return false;
    if (piece.end == text.end) return true;
    piece.at = piece.end + 1;
    piece.end = text.end;
    return put(",") && putBytes(piece);
}

// --- Reading -------------------------------------------------------------------------------------

template <class Unit>
const TextPair *Generator<Unit>::pairOf(const XmlPage *page)
{
    const TextPair *&pair = page == encoding_.native ? native_ : ebcdic_;
    if (!page) fail(kUnknownEncoding);
    if (!pair && page && !(pair = zvkTextPair(page, encoding_.document))) fail(kNoBuffers);
    return pair;
}

// Whether the parts of longer characters in a text of UTF-8 make characters that XML allows.
template <class Unit>
bool Generator<Unit>::partsAreCharacters(const SourceText &text) const
{
    for (const uint8_t *at = text.at; at < text.end;) {
        size_t length = 1;
        if (text.pair->kind[*at] == kPart && !zvkIsXmlCharacter(zvkUtf8Character(at, text.end, length))) return false;
        at += length;
    }
    return true;
}

// Sees what a text of bytes is made of; sets `hex`. Characters of a page of several bytes that is
// not UTF-8 are put into UTF-16.
template <class Unit>
bool Generator<Unit>::classify(SourceText &text, const XmlPage *page, bool shifted, WideSource &wide)
{
    text.pair = pairOf(page);
    if (!text.pair) return false;
    uint8_t kinds = text.pair->kindsOf(text.at, text.end);
    if (shifted) kinds |= kPart;
    text.kinds = kinds;
    text.hex = kinds & kIllegalByte;
    if (text.hex || !(kinds & kPart)) return true;
    if (page->pageClass == kUtf8) {
        text.hex = !partsAreCharacters(text);
        return true;
    }
    bool failed = false;
    SourceText units = text;
    bool converted = wide.convert(*page, units, shifted, failed);
    if (failed) return fail(kNoBuffers);
    if (converted) classifyNational(units);
    if (converted && !units.hex)
        text = units;
    else
        text.hex = true;
    return true;
}

template <class Unit>
bool Generator<Unit>::classifyNational(SourceText &text)
{
    text.pair = nullptr;
    text.hex = text.length() % 2 != 0;
    for (const uint8_t *at = text.at; !text.hex && at < text.end; at += 2) {
        uint16_t unit = load<uint16_t>(at);
        bool pair = zvkIsHighSurrogate(unit) && text.end - at >= 4 && zvkIsLowSurrogate(load<uint16_t>(at + 2));
        if (pair) at += 2;
        text.hex = !pair && !zvkIsXmlCharacter(unit);
    }
    return true;
}

bool isPair(const uint8_t *at, uint8_t first, uint8_t second) { return at[0] == first && at[1] == second; }

void trimBytes(SourceText &text, uint8_t fill)
{
    while (text.at < text.end && text.end[-1] == fill) text.end--;
}
void trimPairs(SourceText &text, uint8_t first, uint8_t second)
{
    while (text.length() >= 2 && text.length() % 2 == 0 && isPair(text.end - 2, first, second)) text.end -= 2;
}

// Without blanks around it and without leading zeros; the special values as words.
template <class Unit>
bool Generator<Unit>::numericText(const GenerateNode &node, const uint8_t *edited, SourceText &text)
{
    bool ebcdic = (node.flags >> 4 & 3) == ZVK_XML_CLASS_EBCDIC;
    const XmlPage *page = ebcdic ? encoding_.ebcdic : encoding_.native;
    if (!page) return fail(kUnknownEncoding);
    auto byte = [&](char c) { return static_cast<uint8_t>(page->tables.markup[static_cast<uint8_t>(c)]); };
    text.at = edited;
    text.end = edited + node.numeric.editedLength;
    while (text.at < text.end && *text.at == byte(' ')) text.at++;
    trimBytes(text, byte(' '));

    text.minus = text.at < text.end && *text.at == byte('-');
    if (text.minus) text.at++;
    auto spells = [&](const char *word) {
        return text.length() == 3 && text.at[0] == byte(word[0]) && text.at[1] == byte(word[1]) &&
               text.at[2] == byte(word[2]);
    };
    text.word = spells("INF") ? "INF" : spells("N.N") ? "NaN" : nullptr;
    if (text.word) return true;

    text.comma = option(ZVK_XML_DECIMAL_COMMA);
    auto isPoint = [&](uint8_t b) { return b == byte('.') || (text.comma && b == byte(',')); };
    while (text.length() > 1 && *text.at == byte('0') && !isPoint(text.at[1])) text.at++;
    if (!classify(text, page, false, wideText_)) return false;
    if (text.hex && text.minus) {
        text.at--;
        text.minus = false;
    }
    return true;
}

template <class Unit>
bool Generator<Unit>::leafText(const GenerateNode &node, const uint8_t *data, const uint8_t *edited, SourceText &text)
{
    if (node.flags & ZVK_XML_NODE_NUMERIC) return numericText(node, edited, text);
    text.at = data;
    text.end = data + node.length;
    switch (node.flags >> 4 & 7) {
    case ZVK_XML_CLASS_NATIONAL:
        trimPairs(text, 0x20, 0x00);
        return classifyNational(text);
    case ZVK_XML_CLASS_DBCS:
        trimPairs(text, 0x40, 0x40);
        return classify(text, encoding_.ebcdic, text.length() > 0, wideText_);
    case ZVK_XML_CLASS_EBCDIC:
        trimBytes(text, 0x40);
        return classify(text, encoding_.ebcdic, false, wideText_);
    default:
        trimBytes(text, 0x20);
        return classify(text, encoding_.native, false, wideText_);
    }
}

// The text of an option: it must be one.
template <class Unit>
bool Generator<Unit>::optionText(uint8_t textClass, const void *at, uint64_t length, SourceText &text)
{
    text.at = static_cast<const uint8_t *>(at);
    text.end = text.at + length;
    bool good = textClass & ZVK_XML_TEXT_NATIONAL ? classifyNational(text)
                : textClass & ZVK_XML_TEXT_EBCDIC ? classify(text, encoding_.ebcdic, false, wideName_)
                                                  : classify(text, encoding_.native, false, wideName_);
    return good && (!text.hex || fail(kNameFailed));
}

// --- Mark-up -------------------------------------------------------------------------------------

template <class Unit>
bool Generator<Unit>::declaration()
{
    if (!option(ZVK_XML_DECLARATION)) return true;
    return put("<?xml version=\"1.0\"") && put(" encoding=\"") && putWord(encoding_.declared) && put("\"") &&
           putWord(option(ZVK_XML_STANDALONE) ? " standalone=\"yes\"?>" : "?>");
}

template <class Unit>
bool Generator<Unit>::putOptionText(uint8_t textClass, const void *at, uint64_t length)
{
    SourceText text{};
    return optionText(textClass, at, length, text) && putText(text);
}

// A name of the stream: it must be a text of the program's code set.
template <class Unit>
bool Generator<Unit>::classifyName(const uint8_t *name, SourceText &text)
{
    text.at = name + 1;
    text.end = text.at + *name;
    if (!classify(text, encoding_.native, false, wideName_)) return false;
    return (!text.hex && *name != 0) || fail(kNameFailed);
}

// One that begins with a digit, as names of COBOL can, gets a "_" in front. A name may have been
// put into UTF-16, so it is the stream's byte that tells.
template <class Unit>
bool Generator<Unit>::putName(const uint8_t *name, bool hex)
{
    SourceText text{};
    if (!classifyName(name, text)) return false;
    uint8_t first = name[1];
    bool begins = native_->kind[first] == kPart || zvkBeginsName(encoding_.native->tables.nameClass[first]);
    if (hex ? !put("hex.") : !begins && !put("_")) return false;
    return putText(text);
}

template <class Unit>
bool Generator<Unit>::putElementName(const uint8_t *name, bool hex)
{
    bool prefixed = options_ && options_->prefixLength > 0;
    if (prefixed && !(putOptionText(options_->prefixClass, options_->prefix, options_->prefixLength) && put(":")))
        return false;
    return putName(name, hex);
}

template <class Unit>
bool Generator<Unit>::namespaceDeclaration()
{
    bool needed = !namespaceDone_ && options_ && options_->namespaceLength > 0;
    namespaceDone_ = true;
    if (!needed) return true;
    if (!put(" xmlns")) return false;
    if (options_->prefixLength > 0 &&
        !(put(":") && putOptionText(options_->prefixClass, options_->prefix, options_->prefixLength)))
        return false;
    return put("=\"") && putOptionText(options_->namespaceClass, options_->namespaceUri, options_->namespaceLength) &&
           put("\"");
}

// The element around the document that names the program's interface.
template <class Unit>
bool Generator<Unit>::interfaceTag(const uint8_t *name, bool closing)
{
    if (!option(ZVK_XML_INTERFACE)) return true;
    SourceText text{};
    if (!classifyName(name, text)) return false;
    if (closing) return put("</") && put("cbl:") && putText(text) && put(">");
    return put("<cbl:") && putText(text) && put(" xmlns") && put(":cbl=\"") && put(kInterfaceUri) && put("\">");
}

template <class Unit>
bool Generator<Unit>::closeStartTag()
{
    bool open = tagOpen_;
    tagOpen_ = false;
    return !open || put(">");
}

template <class Unit>
bool Generator<Unit>::startTag(const uint8_t *name, bool hex)
{
    if (!closeStartTag() || !put("<")) return false;
    tagName_ = at_;
    if (!putElementName(name, hex)) return false;
    tagNameEnd_ = at_;
    tagOpen_ = true;
    return namespaceDeclaration();
}

// The name is copied from the start tag, which is in the receiver.
template <class Unit>
bool Generator<Unit>::endTag(const uint8_t *tagName, const uint8_t *tagNameEnd)
{
    if (!closeStartTag() || !put("</")) return false;
    size_t length = static_cast<size_t>(tagNameEnd - tagName);
    if (!room(length / sizeof(Unit))) return false;
    copy(tagName, length);
    return put(">");
}

// An attribute whose element's start tag has ended is written as an element: nothing is lost.
template <class Unit>
bool Generator<Unit>::leaf(const GenerateNode &node, const uint8_t *name, const SourceText &text)
{
    if (node.flags & ZVK_XML_NODE_UNTAGGED) {
        hexBare_ |= text.hex;
        return closeStartTag() && putText(text);
    }
    hexNamed_ |= text.hex;
    if (node.flags & ZVK_XML_NODE_ATTRIBUTE && tagOpen_)
        return put(" ") && putName(name, text.hex) && put("=\"") && putText(text) && put("\"");
    return startTag(name, text.hex) && closeStartTag() && putText(text) && endTag(tagName_, tagNameEnd_);
}

// --- The walk ------------------------------------------------------------------------------------

template <class Unit>
bool Generator<Unit>::prepare(uint32_t textBuffer)
{
    return wideText_.reserve(std::max(textBuffer, kLeastBuffer)) || fail(kNoBuffers);
}

template <class Unit>
bool Generator<Unit>::document(const GenerateNode *nodes, const uint8_t *names, const uint8_t *source,
                               const uint8_t *edited, const uint64_t *depending)
{
    Cursors cursors{nodes, names + 1 + *names, source, edited, 1};
    return declaration() && interfaceTag(names, false) && walk(cursors, depending) && interfaceTag(names, true);
}

template <class Unit>
bool Generator<Unit>::walk(Cursors &c, const uint64_t *depending)
{
    for (;;) {
        const GenerateNode &node = *c.node;
        if (node.level != 0 && (node.flags & ZVK_XML_NODE_CONTROL) == ZVK_XML_NODE_CONTROL) {
            bool byTable = (node.flags & ZVK_XML_NODE_DEPENDING) == ZVK_XML_NODE_DEPENDING;
            c.repeat = byTable ? depending[node.count] : node.count;
            c.node++;
            continue;
        }

        bool again = false;
        if (!closeGroups(c, node.level, again)) return false;
        if (again) continue;
        if (node.level == 0) return true;
        if (!leaves(c)) return false;
        c.node++;
        c.repeat = 1;
    }
}

// Ends the open groups that a node of this level is not inside. One that repeats is begun again
// instead: the cursors are on its node then.
template <class Unit>
bool Generator<Unit>::closeGroups(Cursors &c, uint8_t level, bool &again)
{
    while (depth_ > 0 && level <= groups_[depth_ - 1].node->level) {
        OpenGroup &group = groups_[--depth_];
        if (group.tagged && !endTag(group.tagName, group.tagNameEnd)) return false;
        if (group.absent) absent_ = false;
        if (group.remaining > 1) {
            c.node = group.node;
            c.name = group.name;
            c.repeat = group.remaining - 1;
            again = true;
            return true;
        }
    }
    return true;
}

// The node at the cursor: begins a group, or writes a leaf as often as it occurs.
template <class Unit>
bool Generator<Unit>::leaves(Cursors &c)
{
    const GenerateNode &node = *c.node;
    bool numeric = node.flags & ZVK_XML_NODE_NUMERIC;
    bool skipped = (node.flags >> 4 & (numeric ? 3 : 7)) == ZVK_XML_CLASS_SKIPPED;
    uint64_t length = numeric ? node.numeric.storageLength : node.length;
    uint64_t editedLength = numeric ? node.numeric.editedLength : 0;
    uint64_t repeat = absent_ ? 0 : c.repeat;
    if (skipped) {
        c.data += length * repeat;
        c.edited += editedLength * repeat;
        return true;
    }

    const uint8_t *name = c.name;
    c.name += 1 + *name;
    if (!numeric && length == 0) {
        bool tagged = repeat > 0 && !(node.flags & ZVK_XML_NODE_UNTAGGED);
        if (tagged && !startTag(name, false)) return false;
        groups_[depth_++] = {&node, name, repeat, tagged, !absent_ && repeat == 0, tagName_, tagNameEnd_};
        if (repeat == 0) absent_ = true;
        return true;
    }
    for (; repeat > 0; repeat--) {
        SourceText text{};
        if (!leafText(node, c.data, c.edited, text) || !leaf(node, name, text)) return false;
        c.data += length;
        c.edited += editedLength;
    }
    return true;
}

template <class Unit>
int32_t generate(const GenerateEncoding &encoding, const XmlGenerateOptions *options, void *receiver, uint32_t capacity,
                 uint32_t textBuffer, const GenerateNode *nodes, const uint8_t *names, const void *source,
                 const void *editArea, const uint64_t *depending, uint32_t *result)
{
    Generator<Unit> generator(encoding, options, receiver, capacity);
    bool complete =
        generator.prepare(textBuffer) && generator.document(nodes, names, static_cast<const uint8_t *>(source),
                                                            static_cast<const uint8_t *>(editArea), depending);
    if (result) *result = generator.written();
    return complete ? generator.warning() : generator.code();
}

} // namespace

extern "C" {

int32_t _zvkcXGF(uint32_t, void *receiver, uint32_t capacity, uint32_t receiverClass, const void *source,
                 const XmlConversionContext *context, const void *editArea, const uint64_t *depending, uint64_t,
                 uint32_t textBuffer, const GenerateNode *nodes, const uint8_t *names,
                 const XmlGenerateOptions *options, uint32_t, uint32_t *result)
{
    if (result) *result = 0;
    if (options && options->version > kHighestVersion) return kVersionUnknown;
    receiverClass &= 0xFF;
    GenerateEncoding encoding{};
    if (int32_t code = zvkChooseEncoding(options, receiverClass, context, encoding)) return code;
    auto run = zvkTargetOf(*encoding.document) == Target::Utf16 ? generate<uint16_t> : generate<uint8_t>;
    return run(encoding, options, receiver, capacity, textBuffer, nodes, names, source, editArea, depending, result);
}
}
