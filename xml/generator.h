// The writer of XML GENERATE: a document in units of a byte or of two; the code is one, over the
// unit. Each piece that is written fits as a whole, or is not written and ends the statement.
//
// generate_source.h reads the items, generate_pieces.h writes texts, generate_markup.h tags, and
// generate_statement.cpp walks through the source item.
#pragma once

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

namespace xml {

inline constexpr int32_t kReceiverTooSmall = 400, kUnknownEncoding = 410, kWrittenInHex = 417, kBareHex = 418,
                         kNameFailed = 419;
inline constexpr int32_t kNoBuffers = 604, kVersionUnknown = 606;
inline constexpr uint32_t kHighestVersion = 6;

inline constexpr uint32_t kLeastBuffer = 256, kBufferOnStack = 2048;
inline constexpr uint8_t kShiftOut = 0x0E, kShiftIn = 0x0F;

inline constexpr char kInterfaceUri[] = "http://kvr2.invalid/schemas/cobol/Interface";

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

} // namespace xml
