// Declaration, names and tags.
#pragma once

#include "xml/generator.h"

namespace xml {

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

} // namespace xml
