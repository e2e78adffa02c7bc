// What the compiled form of XMLSTMT takes from the library's records, and its copybooks.
//
// A compiler emits all of this as static data and straight-line calls; here it is templates over
// the same public headers. examples/sumup/ shows a program without any of it, docs/abi.md says what
// each piece is for.
//
//     static File<Line> input({.name = "INPUT-FILE", .assignment = "INPUTFILE",
//                              .organization = ZVK_FILE_LINE_SEQUENTIAL});
//     static Program program("COPYALL", entry, input);
//
//     int COPYALL() { return program.run([] { input.open(ZVK_OPEN_INPUT); ... }); }
#pragma once

#include <csetjmp>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "kvr2/kvr2.h"

namespace compiled {

// ---- Data items: bytes as COBOL programs have them, in records without gaps.

// PIC S9(digits) COMP-3; where the point is, only the compiler knows.
template <int32_t digits>
struct Packed {
    static constexpr int32_t kDigits = digits;
    uint8_t bytes[digits / 2 + 1];

    Packed &operator=(int64_t value)
    {
        _zvkcBCD_CONV_Int8_To_Pckd(value, bytes, digits);
        return *this;
    }
};

template <int32_t digits>
Packed<digits> packed(int64_t value)
{
    Packed<digits> item;
    item = value;
    return item;
}

// PIC 9(digits) DISPLAY.
template <int32_t digits>
struct Unsigned {
    static constexpr int32_t kDigits = digits;
    uint8_t bytes[digits];
};

// PIC X(size).
template <size_t size>
struct Text {
    char bytes[size];
};

// MOVE between alphanumeric items: left-justified, cut or padded with blanks.
inline void move(char *target, size_t size, const void *source, size_t length)
{
    size_t taken = length < size ? length : size;
    memcpy(target, source, taken);
    memset(target + taken, ' ', size - taken);
}
template <size_t size>
void move(Text<size> &target, const char *literal)
{
    move(target.bytes, size, literal, strlen(literal));
}
template <size_t size, size_t length>
void move(Text<size> &target, const Text<length> &source)
{
    move(target.bytes, size, source.bytes, length);
}

template <size_t size>
bool equal(const Text<size> &item, const char *literal)
{
    Text<size> padded;
    move(padded, literal);
    return memcmp(item.bytes, padded.bytes, size) == 0;
}

// MOVE between numeric items.
template <int32_t d, int32_t s>
void move(Packed<d> &target, const Packed<s> &source)
{
    _zvkcBCD_Cpy_Pckd(source.bytes, target.bytes, d, s);
}
template <int32_t d>
void move(Unsigned<d> &target, const Unsigned<d> &source)
{
    target = source;
}

// ---- Arithmetic. The intermediate item has room for all digits of the result, so nothing is lost
// before the last move.

template <int32_t a, int32_t b>
auto sum(const Packed<a> &left, const Packed<b> &right)
{
    Packed<(a > b ? a : b) + 1> result;
    _zvkcBCD_ADD_Pckd(left.bytes, right.bytes, result.bytes, result.kDigits, b, a);
    return result;
}
template <int32_t a, int32_t b>
void add(Packed<a> &target, const Packed<b> &addend)
{
    move(target, sum(target, addend));
}
template <int32_t a, int32_t b>
bool equal(const Packed<a> &left, const Packed<b> &right)
{
    return _zvkcBCD_EQU_Pckd(left.bytes, right.bytes, b, a) != 0;
}
// ---- Edited moves

// A numeric picture as the library takes it; `digits` is the number of digit positions.
template <size_t size>
struct Picture {
    struct {
        int16_t length;
        uint8_t decimalPoint, currencySign, editClass;
        char picture[size];
    } __attribute__((packed)) record;
    int32_t digits;

    // `editClass` ZVK_EDIT_...; with `blankWhenZero` its two's complement. `allSuppressed`: every
    // digit position can be blank.
    constexpr Picture(const char (&text)[size], int editClass, int32_t digitPositions, bool blankWhenZero = false,
                      bool allSuppressed = false)
        : record{static_cast<int16_t>(allSuppressed ? 1 - static_cast<int>(size) : static_cast<int>(size) - 1),
                 '.',
                 '$',
                 static_cast<uint8_t>(blankWhenZero ? -editClass : editClass),
                 {}},
          digits(digitPositions)
    {
        for (size_t i = 0; i < size; i++) record.picture[i] = text[i];
    }
};

// MOVE to a numeric-edited item. The picture must have as many decimal places as the item.
template <size_t size, int32_t digits, size_t room>
void edit(const Picture<size> &picture, const Packed<digits> &source, char (&target)[room])
{
    static_assert(room == size - 1);
    uint8_t signedDigits[64];
    _zvkcBCD_CONV_Pckd_To_ZndLS(source.bytes, signedDigits, picture.digits, digits);
    _zvkcMoveNumToNumEdit(reinterpret_cast<const NumericEditRecord *>(&picture.record), signedDigits,
                          reinterpret_cast<uint8_t *>(target));
}

// ---- DISPLAY, ACCEPT

struct Shown {
    const void *address;
    size_t size;
    Shown(const char *literal) : address(literal), size(strlen(literal)) {}
    template <size_t length>
    Shown(const Text<length> &item) : address(item.bytes), size(length)
    {
    }
    Shown(const void *item, size_t length) : address(item), size(length) {}
};

inline DisplayItem shownItem(const Shown &item) { return {item.address, item.size, item.size, ZVK_DISPLAY_TEXT, 0}; }

template <class... Items>
void display(const Items &...items)
{
    DisplayRequest request{};
    request.itemCount = sizeof...(items);
    request.device = ZVK_DISPLAY_SYSOUT;
    request.decimalPoint = '.';
    DisplayItem rows[sizeof...(items)];
    DisplayItem *row = rows;
    ((*row++ = shownItem(Shown(items))), ...);
    _zvkcDisplay(&request, rows);
}

// ---- Files

struct FileDescription {
    const char *name;       // FD
    const char *assignment; // the environment variable that names the file
    uint8_t organization = 0;
    uint8_t access = 0x80; // sequential; 0: dynamic
    bool alone = false;    // SHARE WITH NO OTHER
    FileKey keys[2] = {};  // an indexed file's primary and alternate key
    uint32_t keyCount = 0;
};

// The part of a file that does not depend on its record: FIB with what is after it, FCB, FILE
// STATUS.
struct FileRecords {
    struct {
        FIB fib;
        FileKey keys[2];
    } information{};
    FCB control{};
    IPCB *element = nullptr; // the program's, set by Program
    uint8_t status[2] = {'0', '0'};
    uint8_t *statusCell = status;
    uint8_t *areaCell = nullptr;
    FileRequest request{};

    void describe(const FileDescription &file, uint32_t recordLength, uint8_t *area)
    {
        FIB &fib = information.fib;
        memcpy(control.eyecatcher, "FCB", 3);
        memcpy(fib.prefix, "???", 3); // the assignment's prefix, the options or the file itself tell the file system
        areaCell = area;
        fib.organization = file.organization;
        fib.accessMode = file.access;
        fib.attributes = ZVK_FILE_ASSIGN_ENVIRONMENT;
        fib.sharing = file.alone;
        fib.shareMode = file.alone ? 3 : 0;
        fib.maxRecord = fib.minRecord = control.maxRecord = recordLength;
        snprintf(fib.name, sizeof fib.name, "%s", file.name);
        fib.assignment = const_cast<char *>(file.assignment);
        fib.assignmentLength = static_cast<uint16_t>(strlen(file.assignment));
        fib.keyCount = file.keyCount;
        memcpy(information.keys, file.keys, sizeof information.keys);
        fib.keysOffset = offsetof(decltype(information), keys);
        fib.recordArea = &areaCell;
        fib.statusBase = &statusCell;
    }

    // IF FILE-STATUS = ...
    bool is(const char *value) const { return memcmp(status, value, 2) == 0; }
    bool failed() const { return status[0] > '1'; }

    // IF FILE-STATUS ... DISPLAY ..., STOP RUN: the run ends with 12 unless the last statement was
    // successful.
    void need() const
    {
        if (!failed()) return;
        display("FILE ", information.fib.name, " STATUS ", Shown(status, 2));
        _zvkRunUnitTerm(12);
    }

    void open(uint16_t mode)
    {
        control.requestedMode = mode;
        control.open(&control, element);
    }
    void close()
    {
        control.closeOptions = 0;
        control.close(&control, element);
    }
    void verb(FileVerb slot, const FileRequest &statement)
    {
        request = statement;
        // All statements of these programs have an AT END or an INVALID KEY phrase, or look at the
        // status.
        control.statement = ZVK_STATEMENT_AT_END | ZVK_STATEMENT_INVALID_KEY;
        slot(&control, element, &request);
    }
    // READ ... NEXT RECORD; true for NOT AT END
    bool read()
    {
        FileRequest next{};
        next.options = ZVK_REQUEST_NEXT;
        verb(control.read, next);
        return !failed() && !is("10");
    }
    // READ ... KEY IS; true for NOT INVALID KEY
    bool readKey(uint32_t key = 0)
    {
        FileRequest byKey{};
        byKey.options = ZVK_REQUEST_KEY;
        byKey.key = key;
        verb(control.read, byKey);
        return !failed();
    }
    bool write()
    {
        verb(control.write, {});
        return !failed();
    }
};

template <class Record>
struct File : FileRecords {
    struct alignas(8) {
        uint8_t runtime[32];
        Record record;
        uint8_t spare[2];
    } area{};
    Record &record = area.record;

    explicit File(const FileDescription &file) { describe(file, sizeof(Record), reinterpret_cast<uint8_t *>(&area)); }
};

// ---- SORT of records of one length, with INPUT and OUTPUT PROCEDURE

template <uint32_t keyCount>
struct Sort {
    int16_t sortReturn = 0;
    SortVerbBlock block{};
    SortRecordDesc description{};
    struct {
        uint32_t count, reserved;
        TableSortKey keys[keyCount];
    } keys{keyCount, 0, {}};
    SortFileList none{};
    char control[1] = {0};
    uint64_t eighth[3] = {0, 0, ZVK_SORT_STABLE};

    Sort(PCB &program, uint32_t recordLength, uint32_t line, const TableSortKey (&wanted)[keyCount])
    {
        block.sortReturn = &sortReturn;
        block.lineNumber = line;
        block.program = &program;
        description.recordFormat = ZVK_SORT_FIXED;
        description.recordLength = recordLength;
        memcpy(keys.keys, wanted, sizeof wanted);
    }
    void start() { _zvkSortMerge(ZVK_SORT_START, &block, &description, &keys, control, &none, &none, eighth); }
    void inputHasEnded() { _zvkSortMerge(ZVK_SORT_RUN, &block, &description, &keys, control, &none, &none, eighth); }
    // IF SORT-RETURN NOT = ZERO STOP RUN
    void need() const
    {
        if (sortReturn != 0) _zvkRunUnitTerm(12);
    }
};

// ---- Programs

// PCB, the element, and the lists of files. A program's records stay as long as its code does.
template <size_t fileCount>
struct Program {
    PCB pcb{};
    IPCB element{};
    FCB *files[fileCount + 1] = {};
    FIB *fibs[fileCount + 1] = {};

    template <class... Files>
    Program(const char *name, ZvkRoutine entry, Files &...file)
    {
        pcb.version[0] = 5, pcb.version[1] = 1, pcb.version[2] = 1;
        pcb.name = name;
        pcb.nameLength = static_cast<uint32_t>(strlen(name));
        pcb.ipcb = &element;
        pcb.fibs = fibs;
        pcb.yearWindow = ZVK_NO_YEAR_WINDOW;
        element.entry = entry;
        element.files = files;
        element.fileCount = fileCount;
        uint32_t index = 0;
        ((files[index] = &file.control, fibs[index] = &file.information.fib, file.element = &element,
          file.control.index = ++index, file.information.fib.index = index),
         ...);
    }

    // Prologue, PROCEDURE DIVISION, epilogue. The body of a main program that says STOP RUN comes
    // back through the jump buffer with the status.
    template <class Body>
    int run(Body body)
    {
        volatile int status = 0;
        _zvkPgmInit(&pcb);
        if ((pcb.flag & ZVK_PCB_MAIN) && element.ent == 1)
            status = sigsetjmp(*static_cast<sigjmp_buf *>(_zvkGetJmpBuffer()), 1);
        if (status == 0) status = body();
        _zvkPgmTerm(&pcb);
        return status;
    }
};
template <class... Files>
Program(const char *, ZvkRoutine, Files &...) -> Program<sizeof...(Files)>;

} // namespace compiled

// ---- The copybooks MASTER.cpy and POSTED.cpy, and their files

using namespace compiled;

struct MasterRecord {
    Unsigned<6> number;
    Text<24> name;
    Text<1> status;
    Packed<13> opening, balance; // S9(11)V99
    Packed<11> limit;            // S9(9)V99
    Packed<5> rate;              // S9V9(4)
    Packed<7> posted;
    Unsigned<8> lastDate;
};
static_assert(sizeof(MasterRecord) == 66);

struct PostedRecord {
    Text<8> reference;
    Unsigned<6> account;
    Unsigned<8> date;
    Packed<9> sequence;
    Text<1> type;
    Packed<13> amount; // S9(11)V99
    Unsigned<8> days;
};
static_assert(sizeof(PostedRecord) == 43);

// SELECT MASTER: the account's number, and its name with duplicates.
inline FileDescription masterFile(uint8_t access)
{
    return {.name = "MASTER",
            .assignment = "MASTER",
            .organization = ZVK_FILE_INDEXED,
            .access = access,
            .alone = true,
            .keys = {{6, 0, 0, {}}, {24, 6, ZVK_FILE_KEY_DUPLICATES, {}}},
            .keyCount = 2};
}
// SELECT POSTED
inline FileDescription postedFile(uint8_t access)
{
    return {.name = "POSTED",
            .assignment = "POSTED",
            .organization = ZVK_FILE_INDEXED,
            .access = access,
            .alone = true,
            .keys = {{8, 0, 0, {}}},
            .keyCount = 1};
}
constexpr uint8_t kSequential = 0x80, kDynamic = 0;
