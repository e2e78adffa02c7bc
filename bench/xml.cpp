// XML PARSE beside expat, each with a handler that counts, and XML GENERATE beside libxml2's
// xmlTextWriter, which writes into memory.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <expat.h>
#include <libxml/xmlwriter.h>
#include <string>
#include <vector>

#include "kvr2/xml.h"

namespace {

constexpr size_t kLarge = 10'000'000;

std::string elementHeavy()
{
    std::string text = "<?xml version=\"1.0\"?>\n<orders>\n";
    for (int i = 0; text.size() < kLarge; i++) {
        char line[256];
        snprintf(line, sizeof line,
                 "  <order no=\"%d\" day=\"2024-05-%02d\"><item>%d</item><name>pencil %d</name><price>%d.%02d</price>"
                 "<paid/></order>\n",
                 i, i % 28 + 1, i * 7 % 1000, i % 50, i % 90, i % 100);
        text += line;
    }
    return text + "</orders>";
}

std::string textHeavy()
{
    std::string text = "<book>";
    while (text.size() < kLarge) {
        text += "<p>";
        for (int i = 0; i < 25; i++) text += "The quick brown fox jumps over the lazy dog, and what then?\n";
        text += "</p>";
    }
    return text + "</book>";
}

// 200 bytes.
std::string smallDocument()
{
    std::string text =
        "<?xml version=\"1.0\"?><payment id=\"4711\"><from>DE02 1203 0000 0000 2020 51</from><to>AT61 1904 "
        "3002 3457 3201</to><amount currency=\"EUR\">1234.50</amount><text>Invoice 8</text>";
    text.resize(200 - strlen("</payment>"), ' ');
    return text + "</payment>";
}

struct Statement {
    XmlParseBlock block{};
    uint64_t base = 0;
    uint32_t textLength = 0, nTextLength = 0, status = 0;
    int32_t code = 0;
    alignas(32) char event[32]; // as static data of a program is
    uint64_t counts[3] = {};
    XmlProcedure procedure{&Statement::count, this};

    explicit Statement(const std::string &document)
    {
        base = reinterpret_cast<uintptr_t>(&base);
        block.ccsid = 1208;
        block.procedure = &procedure;
        block.document = reinterpret_cast<const uint8_t *>(document.data());
        block.documentLength = static_cast<uint32_t>(document.size());
        block.xmlEvent = event;
        block.xmlTextBase = &base;
        block.xmlTextLength = &textLength;
        block.xmlNTextLength = &nTextLength;
        block.xmlCode = &code;
        block.parseStatus = &status;
    }

    // What EVALUATE XML-EVENT compiles to for three events that count: comparisons by registers.
    static bool is(const char *event, const char (&name)[31])
    {
        return memcmp(event, name, 16) == 0 && memcmp(event + 16, name + 16, 14) == 0;
    }
    static void count(void *self)
    {
        auto &s = *static_cast<Statement *>(self);
        if (is(s.event, "START-OF-ELEMENT              "))
            s.counts[0]++;
        else if (is(s.event, "END-OF-ELEMENT                "))
            s.counts[1]++;
        else if (is(s.event, "CONTENT-CHARACTERS            "))
            s.counts[2] += s.textLength;
        s.base = 0;
    }
};

void parseOurs(benchmark::State &state, const std::string &document)
{
    Statement statement(document);
    for (auto _ : state) {
        if (_zvkcXML(&statement.block) != 0) state.SkipWithError("not well-formed");
        benchmark::DoNotOptimize(statement.counts);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(document.size()));
}

void parseExpat(benchmark::State &state, const std::string &document)
{
    uint64_t counts[3] = {};
    for (auto _ : state) {
        auto parser = XML_ParserCreate(nullptr);
        XML_SetUserData(parser, counts);
        XML_SetElementHandler(
            parser, [](void *data, const char *, const char **) { static_cast<uint64_t *>(data)[0]++; },
            [](void *data, const char *) { static_cast<uint64_t *>(data)[1]++; });
        XML_SetCharacterDataHandler(parser, [](void *data, const char *, int length) {
            static_cast<uint64_t *>(data)[2] += static_cast<uint64_t>(length);
        });
        if (XML_Parse(parser, document.data(), static_cast<int>(document.size()), 1) != XML_STATUS_OK)
            state.SkipWithError("not well-formed");
        XML_ParserFree(parser);
        benchmark::DoNotOptimize(counts);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(document.size()));
}

const std::string elements = elementHeavy(), texts = textHeavy(), small = smallDocument();

void parseElementsOurs(benchmark::State &state) { parseOurs(state, elements); }
void parseElementsExpat(benchmark::State &state) { parseExpat(state, elements); }
void parseTextOurs(benchmark::State &state) { parseOurs(state, texts); }
void parseTextExpat(benchmark::State &state) { parseExpat(state, texts); }
void parseSmallOurs(benchmark::State &state) { parseOurs(state, small); }
void parseSmallExpat(benchmark::State &state) { parseExpat(state, small); }

// 100,000 records of a number, a name and a text, each with an attribute, in one document.
constexpr size_t kRecords = 100'000;
constexpr char kName[] = "Pencil, soft & dark ", kText[] = "For drawing and for writing on paper    ";
constexpr size_t kNameLength = sizeof kName - 1, kTextLength = sizeof kText - 1,
                 kRecord = 4 + kNameLength + kTextLength;

void generateOurs(benchmark::State &state)
{
    std::string source, edited;
    for (size_t i = 0; i < kRecords; i++) {
        char number[16];
        snprintf(number, sizeof number, "%08zu", i);
        source += std::string("????") + kName + kText;
        edited += number;
    }
    GenerateNode nodes[8] = {};
    auto node = [&](int i, uint8_t level, int flags, uint32_t length) {
        nodes[i].level = level;
        nodes[i].flags = static_cast<uint8_t>(flags);
        nodes[i].length = length;
    };
    node(0, 1, 0x20, 0);
    node(1, 2, ZVK_XML_NODE_CONTROL, kRecords);
    node(2, 2, 0x20, 0);
    node(3, 3, ZVK_XML_NODE_NUMERIC | 0x20 | ZVK_XML_NODE_ATTRIBUTE, 0);
    nodes[3].numeric = {8, 4};
    node(4, 3, 0x20, kNameLength);
    node(5, 3, 0x20, kTextLength);
    const uint8_t names[] = "\x01?\x05ITEMS\x04ITEM\x02NO\x04NAME\x04TEXT";
    std::vector<char> receiver(kRecords * 200);
    XmlGenerateOptions options{};
    options.options = ZVK_XML_DECLARATION;
    options.encodingLength = 5;
    options.encodingName = "UTF-8";
    XmlConversionContext context{{}, "en_US.UTF-8"};
    uint32_t length = 0;
    for (auto _ : state) {
        if (_zvkcXGF(0, receiver.data(), static_cast<uint32_t>(receiver.size()), ZVK_XML_RECEIVER_NATIVE, source.data(),
                     &context, edited.data(), nullptr, 0, 0, nodes, names, &options, 0, &length) != 0)
            state.SkipWithError("failed");
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * length);
}

const xmlChar *chars(const char *text) { return reinterpret_cast<const xmlChar *>(text); }

void generateXmlWriter(benchmark::State &state)
{
    int64_t length = 0;
    for (auto _ : state) {
        xmlBufferPtr buffer = xmlBufferCreateSize(kRecords * 200);
        xmlTextWriterPtr writer = xmlNewTextWriterMemory(buffer, 0);
        xmlTextWriterStartDocument(writer, nullptr, "UTF-8", nullptr);
        xmlTextWriterStartElement(writer, chars("ITEMS"));
        for (size_t i = 0; i < kRecords; i++) {
            char number[16];
            snprintf(number, sizeof number, "%zu", i);
            xmlTextWriterStartElement(writer, chars("ITEM"));
            xmlTextWriterWriteAttribute(writer, chars("NO"), chars(number));
            xmlTextWriterWriteElement(writer, chars("NAME"), chars("Pencil, soft & dark"));
            xmlTextWriterWriteElement(writer, chars("TEXT"), chars("For drawing and for writing on paper"));
            xmlTextWriterEndElement(writer);
        }
        xmlTextWriterEndDocument(writer);
        xmlFreeTextWriter(writer);
        length = xmlBufferLength(buffer);
        xmlBufferFree(buffer);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * length);
}

BENCHMARK(parseElementsOurs)->Name("XML PARSE, 10 MB of elements/ours");
BENCHMARK(parseElementsExpat)->Name("XML PARSE, 10 MB of elements/peer:expat");
BENCHMARK(parseTextOurs)->Name("XML PARSE, 10 MB of text/ours");
BENCHMARK(parseTextExpat)->Name("XML PARSE, 10 MB of text/peer:expat");
BENCHMARK(parseSmallOurs)->Name("XML PARSE, 200 bytes/ours");
BENCHMARK(parseSmallExpat)->Name("XML PARSE, 200 bytes/peer:expat");
BENCHMARK(generateOurs)->Name("XML GENERATE, 100000 records/ours");
BENCHMARK(generateXmlWriter)->Name("XML GENERATE, 100000 records/peer:xmlTextWriter");

} // namespace

BENCHMARK_MAIN();
