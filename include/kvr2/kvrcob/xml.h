/**
 * XML PARSE and XML GENERATE, for the C that kvrcob emits: the special registers of a program, and
 * the two calls. See kvr2/xml.h for events and codes.
 */
#ifndef KVR2_KVRCOB_XML_H
#define KVR2_KVRCOB_XML_H

#if defined(__GNUC__)
#pragma GCC system_header
#endif

#include "kvr2/kvrcob.h"
#include "kvr2/xml.h"

/** XML-EVENT, XML-TEXT and XML-CODE. */
typedef struct KvrXml {
    char event[ZVK_XML_EVENT_LENGTH];
    int32_t code;
    uint64_t text; /* the address of XML-TEXT; its own where no statement is under way */
    uint32_t textLength, nTextLength;
} KvrXml;

#define KVR_XML(registers)                                                                                             \
    {                                                                                                                  \
        .event = "                              ", .text = (uint64_t)(uintptr_t) & (registers).text                    \
    }

/** A processing procedure: the program's body, entered by a number. */
typedef struct KvrXmlProcedure {
    KvrXml *registers;
    int (*body)(int entry);
    int entry;
} KvrXmlProcedure;

KVR_SHARED void kvr_xml_event(void *argument)
{
    const KvrXmlProcedure *procedure = (const KvrXmlProcedure *)argument;
    procedure->body(procedure->entry);
    procedure->registers->text = 0;
}

/** 1 if XML-CODE is not 0 at the end. */
KVR_SHARED int kvr_xml_parse(KvrXml *registers, int (*body)(int), int entry, const uint8_t *document, int64_t length,
                             int64_t codePage)
{
    KvrXmlProcedure procedure = {registers, body, entry};
    XmlProcedure entered = {kvr_xml_event, &procedure};
    uint32_t status = 0;
    XmlParseBlock block = {.ccsid = (uint32_t)codePage,
                           .procedure = &entered,
                           .document = document,
                           .documentLength = (uint32_t)length,
                           .xmlEvent = registers->event,
                           .xmlTextBase = &registers->text,
                           .xmlTextLength = &registers->textLength,
                           .xmlNTextLength = &registers->nTextLength,
                           .xmlCode = &registers->code,
                           .parseStatus = &status};
    return _zvkcXML(&block) != 0;
}

/** 1 if XML-CODE is not 0 at the end. `length`: characters written. */
KVR_INLINE int kvr_xml_generate(KvrXml *registers, uint8_t *receiver, int64_t capacity, const uint8_t *source,
                                const uint8_t *edited, const uint64_t *depending, const GenerateNode *nodes,
                                const uint8_t *names, const XmlGenerateOptions *options, uint32_t *length)
{
    registers->code = _zvkcXGF(0, receiver, (uint32_t)capacity, ZVK_XML_RECEIVER_NATIVE, source, 0, edited, depending,
                               0, 0, nodes, names, options, 0, length);
    return registers->code != 0;
}

#endif
