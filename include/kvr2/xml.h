/**
 * XML PARSE and XML GENERATE: one whole statement in one call.
 *
 * XML PARSE: compiled code fills an XmlParseBlock and calls `_zvkcXML`. The library scans the
 * document where it lies and calls the processing procedure once for each event, with the special
 * registers set. Nothing is copied: XML-TEXT is a place in the document.
 *
 *     <?xml version="1.0"?><a k="v">x&lt;</a>
 *
 *     START-OF-DOCUMENT    the whole document      ATTRIBUTE-CHARACTERS  v
 *     VERSION-INFORMATION  1.0                     CONTENT-CHARACTERS    x
 *     START-OF-ELEMENT     a                       CONTENT-CHARACTER     <
 *     ATTRIBUTE-NAME       k                       END-OF-ELEMENT        a
 *                                                  END-OF-DOCUMENT
 *
 * Document encodings: UTF-8, UTF-16 (little-endian, in memory order), and single-byte code pages of
 * the ASCII and the EBCDIC families. The first bytes of the document say which family it is of;
 * program and encoding declaration must agree with that.
 *
 * XML-CODE. At each event it is 0, but for EXCEPTION, where it is the code. What the procedure
 * leaves there is its answer: not 0 ends the parse, and that value is the statement's code. The
 * codes are of three sorts:
 *
 *     questions      70 to 73, 80 to 89, 92, and from 100000 on: which encoding? Answered 0 the
 *                    parse goes on, with all its events, in the encoding that the table states
 *     recoverable    1 to 18: answered 0 the parse goes on to its end in silence: no event and no
 *                    exception is delivered any more but the one event that the table names. The
 *                    statement's code is then 0, or the code of a fatal error that follows
 *     fatal          all others: the parse ends. Answered 0 the statement's code is the code itself
 *
 * | Code | Cause; "then:" the event that comes even after an answer of 0 |
 * |---|---|
 * | 1 | a character before, or after, the root element that is no white space. Then: the stretch up to the next "<" as CONTENT-CHARACTERS |
 * | 2 | there, a "<" that begins nothing known. Then: the same |
 * | 3 | an attribute's name is there twice in a tag; only the first ten attributes are compared |
 * | 4 | "<" in an attribute's value. Then: it, as ATTRIBUTE-CHARACTERS |
 * | 5 | an end tag's name is not that of the start tag. Then: END-OF-ELEMENT with the end tag's name |
 * | 6 | a character in content that XML does not allow |
 * | 7 | "<" in content that begins nothing known |
 * | 8 | "]]>" in content outside a CDATA section. Then: it, as CONTENT-CHARACTERS |
 * | 9 | a character in a comment that XML does not allow |
 * | 10 | "--" inside a comment |
 * | 11 | a character in the data of a processing instruction that XML does not allow |
 * | 12 | a processing instruction's target is "xml", in any case of letters |
 * | 13, 14 | a character that is no digit in a hexadecimal, in a decimal character reference. Then: it, as CONTENT-CHARACTERS or ATTRIBUTE-CHARACTERS |
 * | 15 | the name of the encoding does not begin with a letter |
 * | 16 | a character reference to what is no character of XML; above 10FFFF it is taken for that. Then: ...-NATIONAL-CHARACTER |
 * | 17 | a reference to an entity that is not predefined. Then: UNKNOWN-REFERENCE-IN-... |
 * | 18 | a character in an attribute's value that XML does not allow |
 * | 70, 80 | the declared encoding is unknown, or (70) of another family; the program's is used |
 * | 71, 81 | the program's code page is unusable; the declared one is used |
 * | 72 | EBCDIC: no declared encoding, and the program's code page is unusable; 1140 is used |
 * | 73 | EBCDIC: neither the declared nor the program's is usable; 1140 is used |
 * | 85 | the declared encoding is not of the ASCII family; the program's is used |
 * | 89 | ASCII: neither is usable; 819 is used |
 * | 92 | the document is UTF-16, the program's code page is not; UTF-16 is used |
 * | 100000 + n | EBCDIC: the declared code page n is not the program's. Answer 0: the program's is used; answer n: the declared one; any other answer ends the parse |
 * | 200000 + n | the same, of the ASCII family and UTF-8 |
 * | 100 | the document ends before it has begun |
 * | 101 | it ends in the XML declaration, between its clauses |
 * | 102 | it ends before the root element |
 * | 103 | it ends after "<?xml" |
 * | 104, 106, 108 | it ends in the version, in the encoding, in the standalone clause |
 * | 109 | it ends in a start tag, between attributes |
 * | 110, 111 | it ends in an attribute, in a reference there |
 * | 112 | it ends after the "/" of an empty tag |
 * | 113, 114 | it ends in the name of the root, of another element |
 * | 115 | it ends in content |
 * | 116, 118 | it ends in a processing instruction, in a comment, in content |
 * | 117, 119 | it ends after "<!" in content, in "<![CDATA[" |
 * | 120 | it ends in a reference in content |
 * | 121 | it ends in a comment or processing instruction after the root |
 * | 122 | "<!D" that is not DOCTYPE and white space |
 * | 123 | a second document type declaration |
 * | 124 | reserved: a root whose name begins badly gets 2 |
 * | 125, 126 | in a start tag, after the name: a character that a name cannot begin with; any other |
 * | 127, 128 | no "=" after an attribute's name; no quote after "=" |
 * | 130, 131 | after an attribute's value: a name, or part of one, where there can be none; any other character |
 * | 132 | no ">" after the "/" of an empty tag |
 * | 133, 134 | an end tag without name; no ">" after its name |
 * | 135 | "<" in content, and then a character that a name can hold but not begin with |
 * | 136, 137 | "<![" that is not "<![CDATA["; "<!-" that is not "<!--" |
 * | 138, 139, 140 | a processing instruction's target: no name; neither white space nor "?" after it; "?" without ">" |
 * | 141 | "&" and neither a name nor "#" after it |
 * | 142 to 146 | XML declaration: "version"; "="; a quote; the closing quote; after it neither white space nor "?" |
 * | 147 to 151 | the same of "encoding" |
 * | 152 to 157 | the same of "standalone"; 155: neither "yes" nor "no" |
 * | 158 | the XML declaration does not end in "?>" |
 * | 159, 160 | after the root: a document type declaration; another element |
 * | 161 | bytes that are no UTF-8 |
 * | 162 | UTF-8: a character above U+FFFF |
 * | 315, 316, 317 | the document is big-endian UTF-16; UCS-4; nothing that is known, or shorter than 4 bytes |
 * | 320, 322 | an EBCDIC document, and the program's code page is UTF-16; of the ASCII family |
 * | 321, 323 | an ASCII document, and the program's code page is UTF-16; of the EBCDIC family |
 * | 324, 325 | a UTF-8 document, and the program's code page is UTF-16; of the EBCDIC family |
 * | 500 | no storage |
 * | 502, 503, 561, 570 | reserved for faults inside the library |
 *
 * The text of EXCEPTION is the document up to the character in question, for recoverable codes with
 * it. For the end of the document and codes from 315 on it is the whole document, for questions the
 * declared name if there is one, else the whole document.
 *
 * White space is blank, tab, line feed, carriage return, and U+0085, the new line of EBCDIC. Names
 * are those of XML 1.0, up to its fourth edition.
 */
#ifndef KVR2_XML_H
#define KVR2_XML_H

#include "kvr2/export.h"

ZVK_BEGIN_DECLS

enum {
    ZVK_XML_EVENT_LENGTH = 30,  /**< bytes of XML-EVENT */
    ZVK_XML_CCSID_UTF16 = 1202, /**< texts go to XML-NTEXT */
    ZVK_XML_CCSID_LOCALE = 0,   /**< the code set of the locale */
    ZVK_XML_CCSID_EBCDIC = 1140 /**< the EBCDIC code page of the run unit */
};

/** Of a processing procedure: its code, and the argument that it is called with. */
typedef struct XmlProcedure {
    void (*entry)(void *argument);
    void *argument;
} XmlProcedure;

/**
 * An XML PARSE statement. A block serves one statement at a time.
 *
 * `*xmlTextBase` is the address of XML-TEXT or XML-NTEXT during an event; the procedure sets it to
 * 0 at its exit. Between statements it is its own address: compiled code begins it so, and the
 * library ends each statement so, after an error too.
 */
typedef struct XmlParseBlock {
    uint32_t reserved0;
    uint32_t ccsid; /**< of the document; ZVK_XML_CCSID_LOCALE and _EBCDIC are replaced by the number they stand for */
    const XmlProcedure *procedure;
    const uint8_t *document;
    uint32_t documentLength; /**< bytes */
    uint32_t reserved28;
    char *xmlEvent; /**< XML-EVENT, padded with blanks */
    uint64_t *xmlTextBase;
    uint32_t *xmlTextLength;  /**< bytes of XML-TEXT */
    uint32_t *xmlNTextLength; /**< bytes of XML-NTEXT; at EXCEPTION units */
    int32_t *xmlCode;
    uint32_t *parseStatus;  /**< out: 2 if the code is not 0, else 0 */
    int32_t eventEncoding;  /**< negative: names of events in EBCDIC */
    uint32_t textLength;    /**< working copy */
    uint32_t nTextLength;   /**< working copy */
    int32_t code;           /**< working copy of XML-CODE */
    const char *eventNames; /**< set by the library: 25 names of 30 bytes and a NUL; its own storage, gone at the end */
} XmlParseBlock;

ZVK_AT(XmlParseBlock, ccsid, 4);
ZVK_AT(XmlParseBlock, procedure, 8);
ZVK_AT(XmlParseBlock, document, 16);
ZVK_AT(XmlParseBlock, documentLength, 24);
ZVK_AT(XmlParseBlock, xmlEvent, 32);
ZVK_AT(XmlParseBlock, xmlTextBase, 40);
ZVK_AT(XmlParseBlock, xmlTextLength, 48);
ZVK_AT(XmlParseBlock, xmlNTextLength, 56);
ZVK_AT(XmlParseBlock, xmlCode, 64);
ZVK_AT(XmlParseBlock, parseStatus, 72);
ZVK_AT(XmlParseBlock, eventEncoding, 80);
ZVK_AT(XmlParseBlock, textLength, 84);
ZVK_AT(XmlParseBlock, nTextLength, 88);
ZVK_AT(XmlParseBlock, code, 92);
ZVK_AT(XmlParseBlock, eventNames, 96);

/**
 * XML PARSE.
 *
 * XML-EVENT, XML-TEXT and XML-CODE are as the head of this page says. Texts of attributes and
 * content come in pieces: a reference is an event of its own, ...-CHARACTER for the five predefined
 * entities, ...-NATIONAL-CHARACTER (in XML-NTEXT, a pair of units above U+FFFF) for a number. With
 * a UTF-16 document and another `ccsid`, lengths count units all the same.
 *
 * The procedure may change XML-CODE, end the run unit, and run XML PARSE with another block.
 * Storage is proportional to the depth of elements, time to the length of the document.
 *
 * @return the statement's code, which XML-CODE holds, too
 * @messages 242: the block's statement is under way already
 *           243: the procedure left `*xmlTextBase` not 0
 *           as `_zvkGetLocaleCP` for `ccsid` 0 and 1140; as `_zvkUniAtoE` for names in EBCDIC
 * @threads  any, on blocks of their own, after the run unit's code pages are chosen
 */
ZVK_EXPORT int32_t _zvkcXML(XmlParseBlock *block);

/**
 * A node of the walk through the source item of XML GENERATE. The list is in the order of the items
 * in storage, and ends with a node of level 0. A node closes all open nodes whose level is not
 * below its own.
 *
 * A numeric node is a leaf whose text stands edited in the edit area. A control record says how
 * often the next node repeats; it writes nothing and has no name. What does not occur at all takes
 * no storage, and neither do the items inside it.
 */
#pragma pack(push, 1)
typedef struct GenerateNode {
    uint8_t level; /**< level number; 0 ends the list; of no matter in a control record, but not 0 */
    uint8_t flags; /**< ZVK_XML_NODE_..., and in bits 4 to 6 the data class of what is no control record */
    union {
        struct {
            uint16_t editedLength;  /**< bytes in the edit area */
            uint16_t storageLength; /**< bytes of the item */
        } numeric;
        uint32_t length; /**< any other node: bytes of the item, 0 for a group */
        uint32_t count;  /**< control record: the repeat count, or an index into the table of depending values */
    };
} GenerateNode;
#pragma pack(pop)

ZVK_STATIC_ASSERT(sizeof(GenerateNode) == 6, "GenerateNode");
ZVK_AT(GenerateNode, length, 2);

/** Flags of a GenerateNode. */
enum {
    ZVK_XML_NODE_NUMERIC = 0x80,
    ZVK_XML_NODE_CONTROL = 0xC0,   /**< both bits: a control record */
    ZVK_XML_NODE_DEPENDING = 0xE0, /**< all three bits: a control record by the table of depending values */
    ZVK_XML_NODE_ATTRIBUTE =
        0x04, /**< an attribute of the element that is open; attributes come before all other items */
    ZVK_XML_NODE_UNTAGGED = 0x02 /**< no tags of its own: its text, or its items, are the content of the open element */
};

/**
 * Data classes, for bits 4 to 6 of the flags: `ZVK_XML_CLASS(ZVK_XML_CLASS_EBCDIC)`. A numeric node
 * has NATIVE or EBCDIC for the edited text, or SKIPPED.
 */
enum {
    ZVK_XML_CLASS_SKIPPED = 1,  /**< writes nothing and has no name; its storage is passed over */
    ZVK_XML_CLASS_NATIVE = 2,   /**< alphanumeric in the program's code set; 6 means the same */
    ZVK_XML_CLASS_EBCDIC = 3,   /**< alphanumeric in the EBCDIC code page */
    ZVK_XML_CLASS_NATIONAL = 4, /**< UTF-16 */
    ZVK_XML_CLASS_DBCS = 5      /**< double bytes of the EBCDIC code page, without shift codes */
};
#define ZVK_XML_CLASS(class) ((uint8_t)((class) << 4))

/** Options of an XML GENERATE, in XmlGenerateOptions.options. */
enum {
    ZVK_XML_DECIMAL_COMMA =
        0x80,                   /**< the decimal point of numeric texts is ",", in the edit area and in the document */
    ZVK_XML_DECLARATION = 0x40, /**< WITH XML-DECLARATION */
    ZVK_XML_ONLY_UTF8 = 0x20,   /**< an encoding other than UTF-8 is refused: 420 */
    ZVK_XML_TELL_HEX = 0x10,    /**< 417 is wanted */
    ZVK_XML_TELL_BARE_HEX = 0x08, /**< 418 is wanted */
    ZVK_XML_STANDALONE = 0x02,    /**< the declaration says standalone="yes" */
    ZVK_XML_INTERFACE =
        0x01 /**< the document is wrapped in the interface element, `cbl:` and the stream's first name */
};

/** How an option's text is encoded; with neither bit it is in the program's code set. */
enum { ZVK_XML_TEXT_NATIONAL = 0x80, ZVK_XML_TEXT_EBCDIC = 0x40 };

typedef struct XmlGenerateOptions {
    uint32_t version; /**< of the node list: at most 6 */
    uint8_t options;  /**< ZVK_XML_... */
    uint8_t encodingClass;
    uint8_t namespaceClass;
    uint8_t prefixClass;
    uint64_t encodingLength;  /**< bytes, 0: no ENCODING phrase */
    const void *encodingName; /**< a converter's name, or a number of a coded character set */
    uint64_t namespaceLength; /**< bytes, 0: no NAMESPACE phrase */
    const void *namespaceUri;
    uint64_t prefixLength; /**< bytes, 0: no NAMESPACE-PREFIX phrase */
    const void *prefix;
} XmlGenerateOptions;

ZVK_AT(XmlGenerateOptions, options, 4);
ZVK_AT(XmlGenerateOptions, encodingClass, 5);
ZVK_AT(XmlGenerateOptions, namespaceClass, 6);
ZVK_AT(XmlGenerateOptions, prefixClass, 7);
ZVK_AT(XmlGenerateOptions, encodingLength, 8);
ZVK_AT(XmlGenerateOptions, encodingName, 16);
ZVK_AT(XmlGenerateOptions, namespaceLength, 24);
ZVK_AT(XmlGenerateOptions, namespaceUri, 32);
ZVK_AT(XmlGenerateOptions, prefixLength, 40);
ZVK_AT(XmlGenerateOptions, prefix, 48);

/** Class of the receiver. */
enum { ZVK_XML_RECEIVER_NATIVE = 2, ZVK_XML_RECEIVER_EBCDIC = 3, ZVK_XML_RECEIVER_NATIONAL = 4 };

/** What `_zvkcXGF` reads of the program's conversion context. */
typedef struct XmlConversionContext {
    uint64_t reserved0[8];
    const char *localeName; /**< NUL-ended, as in "en_US.UTF-8": the code set follows the sixth byte */
} XmlConversionContext;

ZVK_AT(XmlConversionContext, localeName, 64);

/**
 * XML GENERATE.
 *
 * Each node is an element by its name, `<name>text</name>`, or an attribute of the open one. Texts
 * lose trailing blanks, numbers leading zeros and blanks as well; `<`, `>`, `&`, `'` and `"` become
 * entities. A text with a character that XML does not allow, or bytes that are no character at all,
 * is written in hexadecimal, and the name gets the prefix "hex.". Characters that the encoding of
 * the document lacks, and those above U+FFFF, are written as references: `&#x1F600;`. A name that
 * XML does not let begin so gets a "_" in front. Numbers that are infinite are "INF", what is no
 * number "NaN".
 *
 * The encoding of the document is that of the ENCODING phrase; without one by the receiver's class
 * the locale's code set, the EBCDIC code page or UTF-16.
 *
 * @param walkWord      kept, of no effect
 * @param receiver      capacity bytes; for a national one an odd byte is left alone
 * @param receiverClass low byte: ZVK_XML_RECEIVER_...
 * @param source        the source item
 * @param context       names the program's code set; null, or a null name: the locale's
 * @param editArea      edited texts of the numeric nodes, one after the other, an occurrence each
 * @param depending     table of depending values
 * @param furtherWord   kept, of no effect
 * @param textBuffer    bytes of the work buffers; at least 256 are used, and more where a text needs it
 * @param nodes         the walk, ended by level 0
 * @param names         length byte and text, for the interface element and then for each node but
 *                      control records and skipped items; in the program's code set
 * @param options       or null
 * @param ccsid         kept, of no effect
 * @param result        or null; out: characters written (bytes, for a national receiver units), at
 *                      every exit
 * @return the code for XML-CODE, 0 or
 *
 * | Code | Cause |
 * |---|---|
 * | 400 | the receiver is too small; it holds the document's beginning |
 * | 410 | the encoding is unknown |
 * | 411, 412 | an EBCDIC, a native receiver cannot have a multi-byte encoding other than UTF-8 |
 * | 413, 414 | the encoding's converter has a number that is none; has no number |
 * | 415 | a national receiver can have UTF-16 only |
 * | 416 | the mark-up cannot be written in the encoding |
 * | 417 | a text was written in hexadecimal; the document is complete |
 * | 418 | a text without tags of its own was written in hexadecimal, so that no name says so; the document is complete. If 417 applies as well, that is the code |
 * | 419 | a name, the namespace or its prefix cannot be converted |
 * | 420 | the encoding is not UTF-8, which alone the statement allows |
 * | 602 | the number of the encoding cannot be read |
 * | 604 | no storage for the work buffers |
 * | 606 | the version of the node list is above 6 |
 * | 608 | the ENCODING value is longer than 320 bytes |
 * | 610, 611 | the ENCODING value cannot be converted; its end is cut off in the middle of a character |
 *
 * @messages as `_zvkGetLocaleCP`
 * @threads  any, on items of their own, after the run unit's code pages are chosen
 */
ZVK_EXPORT int32_t _zvkcXGF(uint32_t walkWord, void *receiver, uint32_t capacity, uint32_t receiverClass,
                            const void *source, const XmlConversionContext *context, const void *editArea,
                            const uint64_t *depending, uint64_t furtherWord, uint32_t textBuffer,
                            const GenerateNode *nodes, const uint8_t *names, const XmlGenerateOptions *options,
                            uint32_t ccsid, uint32_t *result);

ZVK_END_DECLS

#endif
