// A parser's life; see parser.h.
#include "xml/parser.h"

#include <cstring>

#include "frame/storage.h"

int32_t xmlCreateParser(XmlParser &parser, void *context, const XmlHandler (&handlers)[kSlots], const uint8_t *document,
                        uint32_t length, uint32_t ccsid)
{
    // The tables of names need no beginning.
    memset(&parser, 0, offsetof(XmlParser, attributes));
    parser.text = document;
    parser.textEnd = parser.scanEnd = document + length;
    parser.programCcsid = ccsid & 0xFFFF;
    parser.context = context;
    memcpy(parser.handlers, handlers, sizeof handlers);
    parser.open = parser.inlineOpen;
    parser.depth = 0;
    parser.room = kInlineDepth;
    return 0;
}

int32_t xmlParse(XmlParser &parser)
{
    if (!parser.handlers[kException]) return kXmlNoHandlers;
    if (!xmlRecognise(parser) || !xmlScan(parser)) return parser.error;
    return 0;
}

int32_t xmlTerminate(XmlParser &parser)
{
    if (parser.open != parser.inlineOpen) zvkTrackedFree(parser.open);
    parser.open = parser.inlineOpen;
    return 0;
}

bool xmlException(XmlParser &parser, const uint8_t *text, uint32_t length, int32_t code)
{
    parser.error = code;
    if (parser.handlers[kException](parser.context, text, length, static_cast<uint32_t>(code)) == 0) return true;
    parser.error = kXmlUnwound;
    return false;
}
