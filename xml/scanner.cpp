// The scan of a document as a whole, for each form of text; scanner.h says how it goes.
#include "xml/scan_content.h"
#include "xml/scan_prolog.h"
#include "xml/scan_tags.h"

namespace xml {

template <class Text>
bool Scanner<Text>::document()
{
    if (!send(kStartOfDocument, p.text, p.textEnd)) return false;
    p.state = kNothingRead;
    if (!declaration()) return false;

    p.state = kProlog;
    Misc next = misc();
    if (next == Misc::DocumentType) {
        if (!documentType()) return false;
        next = misc();
        if (next == Misc::DocumentType) return fatal(123);
    }
    if (next == Misc::End) return documentEnd();
    if (next != Misc::Element) return false;

    at += unit;
    if (!elements()) return false;

    p.state = kAfterRoot;
    switch (misc()) {
    case Misc::End:
        break;
    case Misc::DocumentType:
        return fatal(159);
    case Misc::Element:
        return fatal(160);
    case Misc::Failed:
        return false;
    }
    return end != p.textEnd ? documentEnd() : send(kEndOfDocument, end, end);
}

} // namespace xml

bool xmlScan(XmlParser &p)
{
    switch (p.scannerKind) {
    case kSingleByteScanner:
        return xml::Scanner<SingleByteText>(p, {p.tables}).document();
    case kUtf8Scanner:
        return xml::Scanner<Utf8Text>(p, {}).document();
    case kUtf16Scanner:
        return xml::Scanner<Utf16Text>(p, {}).document();
    }
    return false;
}
