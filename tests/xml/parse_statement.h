// An XML PARSE as the compiler lays it out, with a processing procedure that keeps what it is
// shown.
//
//     ParsedDocument run("<a>x</a>", 819);
//     EXPECT_EQ(run.code, 0);
//     EXPECT_EQ(run.log(), "START-OF-DOCUMENT <a>x</a>|START-OF-ELEMENT a|...");
//
// A parse ends at an exception; `answer` is what the procedure leaves in XML-CODE there.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kvr2/kvr2.h"

struct XmlEvent {
    std::string name, text; // the name without its padding
    bool national;          // the text is that of XML-NTEXT
    int32_t code;
};

inline std::string withoutBlanks(const char *name)
{
    size_t length = ZVK_XML_EVENT_LENGTH;
    while (length > 0 && name[length - 1] == ' ') length--;
    return std::string(name, length);
}

// The registers and the block; `seen` is called at each event.
struct ParseStatement {
    XmlParseBlock block{};
    uint64_t base = reinterpret_cast<uintptr_t>(&base);
    uint32_t textLength = 77, nTextLength = 77, status = 77;
    int32_t code = 77;
    char event[ZVK_XML_EVENT_LENGTH + 1] = {};
    std::function<void(ParseStatement &)> seen;
    XmlProcedure procedure{&ParseStatement::call, this};

    ParseStatement(const void *document, size_t length, uint32_t ccsid)
    {
        block.ccsid = ccsid;
        block.procedure = &procedure;
        block.document = static_cast<const uint8_t *>(document);
        block.documentLength = static_cast<uint32_t>(length);
        block.xmlEvent = event;
        block.xmlTextBase = &base;
        block.xmlTextLength = &textLength;
        block.xmlNTextLength = &nTextLength;
        block.xmlCode = &code;
        block.parseStatus = &status;
    }
    ParseStatement(const ParseStatement &) = delete;
    ParseStatement &operator=(const ParseStatement &) = delete;

    std::string name() const { return withoutBlanks(event); }
    std::string text() const
    {
        uint32_t length = textLength ? textLength : nTextLength;
        return length ? std::string(reinterpret_cast<const char *>(base), length) : "";
    }
    bool isIdle() const { return base == reinterpret_cast<uintptr_t>(&base) && textLength == 0 && nTextLength == 0; }
    int32_t run() { return _zvkcXML(&block); }

    static void call(void *self)
    {
        auto &statement = *static_cast<ParseStatement *>(self);
        if (statement.seen) statement.seen(statement);
        statement.base = 0; // the compiled procedure's exit
    }
};

struct ParsedDocument {
    std::vector<XmlEvent> events;
    int32_t code = 0;
    uint32_t status = 0;
    bool idle = false;

    explicit ParsedDocument(std::string_view document, uint32_t ccsid = 1208, std::optional<int32_t> answer = {})
    {
        parse(document.data(), document.size(), ccsid, answer);
    }
    bool wellFormed() const
    {
        for (const XmlEvent &event : events)
            if (event.name == "EXCEPTION") return false;
        return code == 0;
    }
    // All but the first event.
    std::string log() const
    {
        std::string text;
        for (size_t i = 1; i < events.size(); i++) {
            if (i > 1) text += '|';
            text += events[i].name;
            if (events[i].code) text += " " + std::to_string(events[i].code);
            text += " " + events[i].text;
        }
        return text;
    }
    int32_t exception() const
    {
        for (const XmlEvent &event : events)
            if (event.name == "EXCEPTION") return event.code;
        return 0;
    }

private:
    void parse(const void *document, size_t length, uint32_t ccsid, std::optional<int32_t> answer)
    {
        ParseStatement statement(document, length, ccsid);
        statement.seen = [&](ParseStatement &s) {
            events.push_back({s.name(), s.text(), s.nTextLength > 0, s.code});
            if (s.code != 0 && answer) s.code = *answer;
        };
        code = statement.run();
        status = statement.status;
        idle = statement.isIdle() && statement.code == code;
    }
};
