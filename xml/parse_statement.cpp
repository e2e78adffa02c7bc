// XML PARSE: from the parser's events to calls of the processing procedure.
//
// A handler comes between each event and the procedure: it fills the registers, calls, and hands
// the procedure's XML-CODE back to the parser. Handlers of texts differ only in the event's name
// and are one template.
#include <cstring>

#include "frame/message_calls.h"
#include "kvr2/code_pages.h"
#include "kvr2/xml.h"
#include "xml/characters.h"
#include "xml/parser.h"

namespace {

constexpr size_t kNameStride = ZVK_XML_EVENT_LENGTH + 1;

enum EventName : size_t {
    kNameAttributeCharacter,
    kNameAttributeCharacters,
    kNameAttributeName,
    kNameAttributeNationalCharacter,
    kNameComment,
    kNameContentCharacter,
    kNameContentCharacters,
    kNameContentNationalCharacter,
    kNameDocumentTypeDeclaration,
    kNameEncodingDeclaration,
    kNameEndOfCdataSection,
    kNameEndOfDocument,
    kNameEndOfElement,
    kNameException,
    kNameInstructionData,
    kNameInstructionTarget,
    kNameStandaloneDeclaration,
    kNameStartOfCdataSection,
    kNameStartOfDocument,
    kNameStartOfElement,
    kNameUnknownInContent,
    kNameUnknownInAttribute,
    kNameVersionInformation,
    kNameStartOfPrefix, // no event has these two names
    kNameEndOfPrefix,
    kEventNames
};

struct EventTable {
    char text[kEventNames * kNameStride];
};

constexpr EventTable makeEventTable()
{
    constexpr const char *names[kEventNames] = {
        "ATTRIBUTE-CHARACTER",
        "ATTRIBUTE-CHARACTERS",
        "ATTRIBUTE-NAME",
        "ATTRIBUTE-NATIONAL-CHARACTER",
        "COMMENT",
        "CONTENT-CHARACTER",
        "CONTENT-CHARACTERS",
        "CONTENT-NATIONAL-CHARACTER",
        "DOCUMENT-TYPE-DECLARATION",
        "ENCODING-DECLARATION",
        "END-OF-CDATA-SECTION",
        "END-OF-DOCUMENT",
        "END-OF-ELEMENT",
        "EXCEPTION",
        "PROCESSING-INSTRUCTION-DATA",
        "PROCESSING-INSTRUCTION-TARGET",
        "STANDALONE-DECLARATION",
        "START-OF-CDATA-SECTION",
        "START-OF-DOCUMENT",
        "START-OF-ELEMENT",
        "UNKNOWN-REFERENCE-IN-CONTENT",
        "UNKNOWN-REFERENCE-IN-ATTRIBUTE",
        "VERSION-INFORMATION",
        "Start of namespace prefix:",
        "End of namespace prefix:",
    };
    EventTable table{};
    for (size_t k = 0; k < kEventNames; k++) {
        const char *name = names[k];
        for (size_t i = 0; i < ZVK_XML_EVENT_LENGTH; i++) table.text[k * kNameStride + i] = *name ? *name++ : ' ';
    }
    return table;
}
constexpr EventTable kEventTable = makeEventTable();

uint64_t ownAddress(const XmlParseBlock &block) { return reinterpret_cast<uintptr_t>(block.xmlTextBase); }

XmlParseBlock &blockOf(void *context) { return *static_cast<XmlParseBlock *>(context); }

// Sets the registers, calls the procedure and reads XML-CODE back.
int32_t callProcedure(XmlParseBlock &block, EventName name)
{
    // In two pieces that overlap, the first one last: the procedure looks there first, and what it
    // loads comes straight from the store.
    const char *text = block.eventNames + name * kNameStride;
    memcpy(block.xmlEvent + ZVK_XML_EVENT_LENGTH - 16, text + ZVK_XML_EVENT_LENGTH - 16, 16);
    __asm__ volatile("" ::: "memory"); // the compiler would join the two
    memcpy(block.xmlEvent, text, 16);
    *block.xmlCode = block.code;
    *block.xmlTextLength = block.textLength;
    *block.xmlNTextLength = block.nTextLength;
    block.procedure->entry(block.procedure->argument);
    if (*block.xmlTextBase != 0) msg::xmlProcedureNotLeft();
    return block.code = *block.xmlCode;
}

void setText(XmlParseBlock &block, const void *text, uint32_t bytes, uint32_t nationalBytes)
{
    *block.xmlTextBase = reinterpret_cast<uintptr_t>(text);
    block.textLength = bytes;
    block.nTextLength = nationalBytes;
}

template <EventName Name>
int32_t textEvent(void *context, const uint8_t *text, uint32_t length, uint32_t)
{
    XmlParseBlock &block = blockOf(context);
    bool national = block.ccsid == ZVK_XML_CCSID_UTF16;
    setText(block, text, national ? 0 : length, national ? 2 * length : 0);
    block.code = 0;
    return callProcedure(block, Name);
}

// The length goes over as it comes, in units for a national document; this is to stay.
int32_t exceptionEvent(void *context, const uint8_t *text, uint32_t length, uint32_t code)
{
    XmlParseBlock &block = blockOf(context);
    bool national = block.ccsid == ZVK_XML_CCSID_UTF16;
    setText(block, text, national ? 0 : length, national ? length : 0);
    block.code = static_cast<int32_t>(code);
    return callProcedure(block, kNameException);
}

int32_t endOfDocumentEvent(void *context, const uint8_t *, uint32_t, uint32_t)
{
    XmlParseBlock &block = blockOf(context);
    setText(block, block.xmlTextBase, 0, 0);
    block.code = 0;
    return callProcedure(block, kNameEndOfDocument);
}

// The text is here and not in the document, so that its address must not outlive the event.
int32_t ownTextEvent(XmlParseBlock &block, const void *text, uint32_t bytes, uint32_t nationalBytes, EventName name)
{
    setText(block, text, bytes, nationalBytes);
    block.code = 0;
    int32_t answer = callProcedure(block, name);
    *block.xmlTextBase = ownAddress(block);
    return answer;
}

template <EventName Name>
int32_t characterEvent(void *context, const uint8_t *, uint32_t, uint32_t value)
{
    XmlParseBlock &block = blockOf(context);
    if (block.ccsid == ZVK_XML_CCSID_UTF16) {
        uint16_t unit = static_cast<uint16_t>(value);
        return ownTextEvent(block, &unit, 0, sizeof unit, Name);
    }
    uint8_t byte = static_cast<uint8_t>(value);
    return ownTextEvent(block, &byte, 1, 0, Name);
}

template <EventName Name>
int32_t nationalCharacterEvent(void *context, const uint8_t *, uint32_t, uint32_t value)
{
    uint16_t units[2] = {static_cast<uint16_t>(value), 0};
    if (value > 0xFFFF) {
        units[0] = static_cast<uint16_t>(((value - 0x10000) >> 10) + 0xD800);
        units[1] = static_cast<uint16_t>((value & 0x3FF) + 0xDC00);
    }
    return ownTextEvent(blockOf(context), units, 0, value > 0xFFFF ? 4 : 2, Name);
}

constexpr XmlHandler kHandlers[kSlots] = {
    textEvent<kNameStartOfDocument>,
    textEvent<kNameVersionInformation>,
    textEvent<kNameEncodingDeclaration>,
    textEvent<kNameStandaloneDeclaration>,
    textEvent<kNameDocumentTypeDeclaration>,
    endOfDocumentEvent,
    textEvent<kNameStartOfElement>,
    textEvent<kNameAttributeName>,
    textEvent<kNameAttributeCharacters>,
    characterEvent<kNameAttributeCharacter>,
    nationalCharacterEvent<kNameAttributeNationalCharacter>,
    textEvent<kNameEndOfElement>,
    textEvent<kNameStartOfCdataSection>,
    textEvent<kNameEndOfCdataSection>,
    textEvent<kNameContentCharacters>,
    characterEvent<kNameContentCharacter>,
    nationalCharacterEvent<kNameContentNationalCharacter>,
    textEvent<kNameInstructionTarget>,
    textEvent<kNameInstructionData>,
    textEvent<kNameComment>,
    textEvent<kNameUnknownInAttribute>,
    textEvent<kNameUnknownInContent>,
    nullptr,
    nullptr,
    exceptionEvent,
};

// The code pages that two numbers stand for.
uint32_t resolvedCcsid(uint32_t ccsid)
{
    if (ccsid != ZVK_XML_CCSID_LOCALE && ccsid != ZVK_XML_CCSID_EBCDIC) return ccsid;
    char localeName[64], ebcdicCodePage[16];
    _zvkGetLocaleCP(localeName, ebcdicCodePage);
    const XmlPage *page = zvkXmlPage(ccsid == ZVK_XML_CCSID_EBCDIC ? ebcdicCodePage : localeName + 6);
    return page && page->ccsid > 0 ? static_cast<uint32_t>(page->ccsid) : 0xFFFFFFFF;
}

// If the names cannot be converted they stay as they are; the conversion has issued its message.
void nameEvents(EventTable &names, bool ebcdic)
{
    names = kEventTable;
    if (!ebcdic) return;
    EventTable converted;
    uint32_t room = sizeof converted.text;
    int32_t status = _zvkUniAtoE(reinterpret_cast<const uint8_t *>(kEventTable.text), sizeof kEventTable.text,
                                 reinterpret_cast<uint8_t *>(converted.text), &room);
    if (status == 0 && room == 0) names = converted;
}

} // namespace

extern "C" {

int32_t _zvkcXML(XmlParseBlock *block)
{
    if (*block->xmlTextBase != ownAddress(*block)) msg::xmlStatementActive();
    block->textLength = block->nTextLength = 0;
    block->code = 0;
    EventTable names;
    nameEvents(names, block->eventEncoding < 0);
    block->eventNames = names.text;
    block->ccsid = resolvedCcsid(block->ccsid);

    XmlParser parser;
    block->code = xmlCreateParser(parser, block, kHandlers, block->document, block->documentLength, block->ccsid);
    if (block->code == 0) {
        // The procedure's own value of XML-CODE stays where it ended the parse.
        int32_t result = xmlParse(parser);
        if (result != kXmlUnwound) block->code = result;
        int32_t termination = xmlTerminate(parser);
        if (block->code == 0) block->code = termination;
    }

    *block->xmlCode = block->code;
    *block->parseStatus = block->code != 0 ? 2 : 0;
    *block->xmlTextBase = ownAddress(*block);
    *block->xmlTextLength = *block->xmlNTextLength = 0;
    block->textLength = block->nTextLength = 0;
    return block->code;
}
}
