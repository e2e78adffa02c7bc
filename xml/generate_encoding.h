// The code pages of an XML GENERATE: of the document, of the program, and of EBCDIC data.
#pragma once

#include "kvr2/xml.h"
#include "xml/code_page.h"

struct GenerateEncoding {
    const XmlPage *document; // of single bytes, UTF-8 or UTF-16
    const char *declared;    // its name in the declaration
    const XmlPage *native, *ebcdic;
};

// A code of XML GENERATE, 0 if all is well.
int32_t zvkChooseEncoding(const XmlGenerateOptions *options, uint32_t receiverClass,
                          const XmlConversionContext *context, GenerateEncoding &encoding);
