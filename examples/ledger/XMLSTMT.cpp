// XMLSTMT as a compiler lays it out; see XMLSTMT.cbl.
//
// Numbers are edited before the XML GENERATE, into an area with a place for each occurrence, in the
// order of the walk. The processing procedure of the XML PARSE is called for each event; the
// registers are items of this program.
#include "compiled.h"

namespace {

constexpr int kMostPostings = 100;

struct XmlLine {
    char text[32000];
};
File<PostedRecord> posted(postedFile(kSequential));
File<MasterRecord> master(masterFile(kDynamic));
File<XmlLine> xmlOut({.name = "XMLOUT", .assignment = "XMLOUT", .organization = ZVK_FILE_LINE_SEQUENTIAL});
PostedRecord sortRecord;

int XMLSTMT();
Program program("XMLSTMT", reinterpret_cast<ZvkRoutine>(XMLSTMT), posted, master, xmlOut);

Unsigned<6> lastAccount;
bool inAccount;
Packed<1> one;
Packed<9> documentsOut, documentsIn;
Packed<15> sumOut, sumIn;

struct StatementOfAccount {
    Unsigned<6> account;
    Text<24> name;
    Packed<13> opening; // S9(11)V99
    uint16_t postings;  // COMP-5
    struct Posting {
        Unsigned<8> day;
        Text<8> reference;
        Packed<13> amount;
    } posting[kMostPostings];
} __attribute__((packed)) statement;

constexpr Picture kCount("ZZZ,ZZZ,ZZ9", ZVK_EDIT_UNSIGNED, 9);
constexpr Picture kMoney("$$,$$$,$$$,$$$,$$9.99CR", ZVK_EDIT_FLOAT_CURRENCY_PLUS, 15);
constexpr Picture kAmount("------------9.99", ZVK_EDIT_FLOAT_MINUS, 14);

// ---- XML GENERATE

constexpr uint8_t kText = ZVK_XML_CLASS(ZVK_XML_CLASS_NATIVE), kNumber = ZVK_XML_NODE_NUMERIC | kText;
constexpr GenerateNode group(uint8_t level, uint8_t flags, uint32_t length)
{
    return {level, flags, {.length = length}};
}
constexpr GenerateNode numeric(uint8_t level, uint8_t flags, uint16_t edited, uint16_t storage)
{
    return {level, static_cast<uint8_t>(kNumber | flags), {.numeric = {edited, storage}}};
}
constexpr GenerateNode kWalk[] = {
    group(1, kText, 0),                                // STATEMENT-OF-ACCOUNT
    numeric(5, ZVK_XML_NODE_ATTRIBUTE, 6, 6),          // ACCOUNT
    group(5, kText, 24),                               // NAME
    numeric(5, 0, 16, 7),                              // OPENING
    group(5, ZVK_XML_CLASS(ZVK_XML_CLASS_SKIPPED), 2), // POSTINGS: suppressed
    {5, ZVK_XML_NODE_DEPENDING, {.count = 0}},         // so often as depending[0] says:
    group(5, kText, 0),                                // POSTING
    numeric(10, 0, 8, 8),                              // DAY-OF-POSTING
    group(10, kText, 8),                               // REFERENCE
    numeric(10, 0, 16, 7),                             // AMOUNT
    group(0, 0, 0),
};
const uint8_t kNames[] = "\7XMLSTMT\24STATEMENT-OF-ACCOUNT\7ACCOUNT\4NAME\7OPENING\7POSTING\16DAY-OF-POSTING"
                         "\11REFERENCE\6AMOUNT";

struct EditedNumbers {
    char account[6], opening[16];
    struct {
        char day[8], amount[16];
    } posting[kMostPostings];
} edited;

void editAmount(const Packed<13> &amount, char (&target)[16])
{
    Packed<14> wide;
    move(wide, amount);
    edit(kAmount, wide, target);
}

void writeDocument()
{
    if (!inAccount) return;
    memcpy(edited.account, statement.account.bytes, 6);
    editAmount(statement.opening, edited.opening);
    for (int i = 0; i < statement.postings; i++) {
        memcpy(edited.posting[i].day, statement.posting[i].day.bytes, 8);
        editAmount(statement.posting[i].amount, edited.posting[i].amount);
    }
    memset(&xmlOut.record, ' ', sizeof xmlOut.record);
    const uint64_t depending[] = {statement.postings};
    uint32_t documentLength;
    int32_t code = _zvkcXGF(0, &xmlOut.record, sizeof xmlOut.record, ZVK_XML_RECEIVER_NATIVE, &statement, nullptr,
                            &edited, depending, 0, 0, kWalk, kNames, nullptr, 0, &documentLength);
    if (code != 0) {
        Text<11> shown;
        edit(kCount, packed<9>(code), shown.bytes);
        display("XML GENERATE FAILED ", shown);
        _zvkRunUnitTerm(12);
    }
    xmlOut.write();
    xmlOut.need();
    add(documentsOut, one);
}

void beginDocument()
{
    inAccount = true;
    move(lastAccount, sortRecord.account);
    move(master.record.number, sortRecord.account);
    move(statement.account, sortRecord.account);
    master.readKey();
    master.need();
    move(statement.name, master.record.name);
    move(statement.opening, master.record.opening);
    statement.postings = 0;
}

void takePosting()
{
    if (!inAccount || memcmp(sortRecord.account.bytes, lastAccount.bytes, 6) != 0 ||
        statement.postings == kMostPostings) {
        writeDocument();
        beginDocument();
    }
    StatementOfAccount::Posting &next = statement.posting[statement.postings++];
    move(next.day, sortRecord.date);
    move(next.reference, sortRecord.reference);
    move(next.amount, sortRecord.amount);
    add(sumOut, sortRecord.amount);
}

// SORT SORT-FILE ON ASCENDING KEY SR-ACCOUNT SR-DATE SR-SEQUENCE
void sortPostings()
{
    Sort<3> sort(program.pcb, sizeof(PostedRecord), 81,
                 {{offsetof(PostedRecord, account), 6, ZVK_KEY_ZONED, 0, ZVK_KEY_ASCENDING, {}},
                  {offsetof(PostedRecord, date), 8, ZVK_KEY_ZONED, 0, ZVK_KEY_ASCENDING, {}},
                  {offsetof(PostedRecord, sequence), 5, ZVK_KEY_PACKED, 0, ZVK_KEY_ASCENDING, {}}});
    sort.start();
    uint16_t status = 0;
    while (status == 0 && posted.read()) _zvkRelease(sizeof(PostedRecord), &posted.record, &status);
    posted.need();
    sort.inputHasEnded();
    sort.need();
    uint32_t length = 0;
    while (_zvkReturn(&length, &sortRecord, &status), status == 0) takePosting();
    writeDocument();
}

// ---- XML PARSE

char xmlEvent[ZVK_XML_EVENT_LENGTH];
uint64_t xmlText; // the address of XML-TEXT, its own where no parse is under way
uint32_t xmlTextLength, xmlNTextLength, parseStatus;
int32_t xmlCode;
Text<30> elementName;

bool isEvent(const char *name)
{
    Text<sizeof xmlEvent> event;
    memcpy(event.bytes, xmlEvent, sizeof xmlEvent);
    return equal(event, name);
}

// PROCESSING PROCEDURE IS TAKE-EVENT
void takeEvent(void *)
{
    auto *text = reinterpret_cast<const uint8_t *>(xmlText);
    if (isEvent("START-OF-ELEMENT")) {
        move(elementName.bytes, sizeof elementName.bytes, text, xmlTextLength);
    } else if (isEvent("END-OF-ELEMENT")) {
        move(elementName, "");
    } else if (isEvent("CONTENT-CHARACTERS") && equal(elementName, "AMOUNT")) {
        const ZvkNumvalParameters parameters = {'$', '.', ZVK_CURRENCY_SIGN};
        ZvkDecimal128Item value;
        ZvkDecimal128 number;
        Packed<13> readAmount;
        _Dmr_numval_decfloat16(&parameters, xmlTextLength, text, &value);
        memcpy(&number, &value, sizeof number);
        _zvkcBCD_CONV_DFlt_To_Pckd(readAmount.bytes, 13, 2, number);
        add(sumIn, readAmount);
    }
    xmlText = 0;
}
const XmlProcedure kTakeEvent = {takeEvent, nullptr};

void readStatement()
{
    static XmlParseBlock block;
    block.ccsid = 0;
    block.procedure = &kTakeEvent;
    block.document = reinterpret_cast<const uint8_t *>(xmlOut.record.text);
    block.documentLength = sizeof xmlOut.record;
    block.xmlEvent = xmlEvent;
    block.xmlTextBase = &xmlText;
    block.xmlTextLength = &xmlTextLength;
    block.xmlNTextLength = &xmlNTextLength;
    block.xmlCode = &xmlCode;
    block.parseStatus = &parseStatus;
    if (_zvkcXML(&block) == 0) return add(documentsIn, one);
    Text<11> shown;
    edit(kCount, packed<9>(xmlCode), shown.bytes);
    display("XML PARSE FAILED ", shown);
    _zvkRunUnitTerm(12);
}

// ----

template <class Amount, class Shape, size_t size>
void show(const char *label, const Amount &amount, const Shape &picture, Text<size> shown)
{
    edit(picture, amount, shown.bytes);
    display(label, shown);
}

int procedureDivision()
{
    one = 1;
    inAccount = false;
    documentsOut = documentsIn = 0;
    sumOut = sumIn = 0;
    xmlText = reinterpret_cast<uint64_t>(&xmlText);
    posted.open(ZVK_OPEN_INPUT);
    posted.need();
    master.open(ZVK_OPEN_INPUT);
    master.need();
    xmlOut.open(ZVK_OPEN_OUTPUT);
    xmlOut.need();
    sortPostings();
    posted.close();
    master.close();
    xmlOut.close();
    xmlOut.need();

    xmlOut.open(ZVK_OPEN_INPUT);
    xmlOut.need();
    while (xmlOut.read()) readStatement();
    xmlOut.need();
    xmlOut.close();

    show("DOCUMENTS WRITTEN       ", documentsOut, kCount, Text<11>());
    show("DOCUMENTS READ          ", documentsIn, kCount, Text<11>());
    show("AMOUNTS WRITTEN         ", sumOut, kMoney, Text<23>());
    show("AMOUNTS READ            ", sumIn, kMoney, Text<23>());
    bool agree = equal(documentsIn, documentsOut) && equal(sumIn, sumOut);
    display(agree ? "STATEMENTS AGREE" : "STATEMENTS DISAGREE");
    if (!agree) _zvkRunUnitTerm(12);
    return 0;
}

int XMLSTMT() { return program.run(procedureDivision); }

} // namespace

int main() { return XMLSTMT(); }
