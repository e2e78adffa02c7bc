// The parser: one scan of one document, told to handlers.
//
//     XmlParser parser;
//     int32_t code = xmlCreateParser(parser, context, handlers, document, length, ccsid);
//     if (code == 0) {
//         code = xmlParse(parser);                  // calls the handlers
//         xmlTerminate(parser);
//     }
//
// It keeps nothing outside the structure but the names of open elements beyond the first few, so a
// handler may leave by a jump.
#pragma once

#include <cstdint>

#include "xml/code_page.h"

// Slots of the handler table, in the order of the events in a document.
enum XmlSlot : uint8_t {
    kStartOfDocument,
    kVersionInformation,
    kEncodingDeclaration,
    kStandaloneDeclaration,
    kDocumentTypeDeclaration,
    kEndOfDocument,
    kStartOfElement,
    kAttributeName,
    kAttributeCharacters,
    kAttributeCharacter,
    kAttributeNationalCharacter,
    kEndOfElement,
    kStartOfCdata,
    kEndOfCdata,
    kContentCharacters,
    kContentCharacter,
    kContentNationalCharacter,
    kInstructionTarget,
    kInstructionData,
    kComment,
    kUnknownInAttribute,
    kUnknownInContent,
    kException = 24,
    kSlots
};

// Text and its length in units; for the character events `value` is the character, for an exception
// the code. An answer that is not 0 ends the parse.
using XmlHandler = int32_t (*)(void *context, const uint8_t *text, uint32_t length, uint32_t value);

// Where the scanner is; it decides on the code when the document ends there.
enum XmlState : uint8_t {
    kNothingRead,
    kAfterStandalone,
    kProlog,
    kAfterXml,
    kInVersion,
    kAfterVersion,
    kInEncoding,
    kAfterEncoding,
    kInStandalone,
    kInTag,
    kInValue,
    kReferenceInValue,
    kAfterSlash,
    kRootName,
    kElementName,
    kInContent,
    kInstructionInContent,
    kAfterExclamation,
    kCommentInContent,
    kCdataStart,
    kReferenceInContent,
    kAfterRoot
};

enum XmlScannerKind : uint8_t { kSingleByteScanner, kUtf8Scanner, kUtf16Scanner };

// Results of a scan besides codes.
enum : int32_t { kXmlUnwound = -1, kXmlNoStorage = 500, kXmlNoHandlers = 561 };

struct XmlName {
    uint32_t start, length; // bytes from the document's start
};

constexpr uint32_t kComparedAttributes = 10;
constexpr uint32_t kInlineDepth = 64;

struct XmlParser {
    const uint8_t *text; // the document, after a byte order mark
    const uint8_t *textEnd;
    const uint8_t *scanEnd; // the scan gets no further than here, where `endCode` is raised
    int32_t endCode;        // 0: the end of the document, and the state decides
    int32_t error;          // what ended the scan
    XmlState state;
    uint8_t documentClass;
    XmlScannerKind scannerKind;
    bool silent; // after a recoverable code: the handlers do nothing
    uint32_t programCcsid;
    const PageTables *tables;
    void *context;
    XmlHandler handlers[kSlots];

    XmlName attributes[kComparedAttributes];
    XmlName *open; // names of open elements, outermost first
    uint32_t depth, room;
    XmlName inlineOpen[kInlineDepth];
};

int32_t xmlCreateParser(XmlParser &parser, void *context, const XmlHandler (&handlers)[kSlots], const uint8_t *document,
                        uint32_t length, uint32_t ccsid);
int32_t xmlParse(XmlParser &parser);
int32_t xmlTerminate(XmlParser &parser);

// The steps of xmlParse. Both answer false after setting `error`.
bool xmlRecognise(XmlParser &parser);
bool xmlScan(XmlParser &parser);

// Sends an exception. True if the handler's answer was 0; otherwise the parse is over, and `error`
// says so.
bool xmlException(XmlParser &parser, const uint8_t *text, uint32_t length, int32_t code);
