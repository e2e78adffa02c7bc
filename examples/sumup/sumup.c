/*
 * SUMUP as a compiler lays it out: see sumup.cbl. Plain C over the public headers, with nothing
 * hidden in helpers.
 */
#include <string.h>

#include "kvr2/kvr2.h"

/* WORKING-STORAGE */
static uint8_t fileStat[2];
static uint8_t total[6] = {0, 0, 0, 0, 0, 0x0C}; /* PIC S9(9)V99 COMP-3: 11 digits */
static uint8_t totalOut[17];                     /* PIC $$$$,$$$,$$9.99CR */

/*
 * The record area: 32 bytes for the run time, then the record. Cells hold the addresses of what may
 * move.
 */
static struct {
    uint64_t runtime[4];
    uint8_t record[9];
} amountArea;
static uint8_t *areaCell = (uint8_t *)&amountArea;
static uint8_t *fileStatCell = fileStat;

/* SELECT, FD */
static char assignment[] = "AMOUNTS";
static FIB amountFib = {
    .index = 1,
    .prefix = "???", /* no file system in the program: the name, the options or the file tell */
    .organization = ZVK_FILE_LINE_SEQUENTIAL,
    .accessMode = ZVK_FILE_ACCESS_SEQUENTIAL,
    .attributes = ZVK_FILE_ASSIGN_ENVIRONMENT,
    .maxRecord = 9,
    .minRecord = 9,
    .name = "AMOUNT-FILE",
    .assignmentLength = 7,
    .recordArea = &areaCell,
    .assignment = assignment,
    .statusBase = &fileStatCell,
};
static FCB amountFile = {.eyecatcher = "FCB", .index = 1, .maxRecord = 9};
static FCB *files[] = {&amountFile};
static FIB *fibs[] = {&amountFib};

/* The program. The second word of the element is the entry's address. */
int main(void);
static IPCB element[1] = {{.entry = (ZvkRoutine)main, .files = files, .fileCount = 1}};
static PCB program = {.version = {5, 1, 1},
                      .ipcb = element,
                      .name = "SUMUP",
                      .nameLength = 5,
                      .fibs = fibs,
                      .yearWindow = ZVK_NO_YEAR_WINDOW};

/* PIC $$$$,$$$,$$9.99CR: the currency sign floats, CR where negative */
static const struct {
    int16_t length;
    uint8_t decimalPoint, currencySign, editClass, picture[17];
} __attribute__((packed)) totalPicture = {17, '.', '$', ZVK_EDIT_FLOAT_CURRENCY_PLUS, "$$$$,$$$,$$9.99CR"};

static void display(const char *text, size_t length, const uint8_t *item, size_t size)
{
    DisplayRequest request = {.itemCount = 2, .device = ZVK_DISPLAY_SYSOUT, .decimalPoint = '.'};
    DisplayItem items[2] = {{.address = text, .size = length, .kind = ZVK_DISPLAY_TEXT},
                            {.address = item, .size = size, .kind = ZVK_DISPLAY_TEXT}};
    _zvkcDisplay(&request, items);
}

static void procedureDivision(void)
{
    uint8_t packed[5], sum[6], signedDigits[12];
    FileRequest request;

    /* OPEN INPUT AMOUNT-FILE */
    amountFile.requestedMode = ZVK_OPEN_INPUT;
    amountFile.open(&amountFile, element);
    if (memcmp(fileStat, "00", 2) != 0) {
        display("CANNOT OPEN, STATUS ", 20, fileStat, 2);
        _zvkRunUnitTerm(12); /* STOP RUN: does not come back here, but to sigsetjmp in main */
    }
    while (memcmp(fileStat, "00", 2) == 0) {
        /* READ AMOUNT-FILE NOT AT END ... */
        memset(&request, 0, sizeof request);
        amountFile.statement = ZVK_STATEMENT_AT_END;
        amountFile.read(&amountFile, element, &request);
        if (amountFile.status == 10) continue;
        /* ADD AMOUNT TO TOTAL: the operand to packed, the sum, the sum to its place */
        _zvkcBCD_CONV_ZndTO_To_Pckd(amountFile.record, packed, 9, 9);
        _zvkcBCD_ADD_Pckd(total, packed, sum, 11, 9, 11);
        _zvkcBCD_Cpy_Pckd(sum, total, 11, 11);
    }
    /* CLOSE AMOUNT-FILE */
    amountFile.closeOptions = 0;
    amountFile.close(&amountFile, element);
    /* MOVE TOTAL TO TOTAL-OUT: a sign byte, then a digit for each digit position of the picture */
    _zvkcBCD_CONV_Pckd_To_ZndLS(total, signedDigits, 11, 11);
    _zvkcMoveNumToNumEdit((const NumericEditRecord *)&totalPicture, signedDigits, totalOut);
    display("TOTAL ", 6, totalOut, sizeof totalOut);
}

int main(void)
{
    volatile int status = 0;
    _zvkPgmInit(&program);
    /* Only the run unit's main program arms the jump buffer, at its first entry. */
    if ((program.flag & ZVK_PCB_MAIN) && element[0].ent == 1) status = sigsetjmp(*(sigjmp_buf *)_zvkGetJmpBuffer(), 1);
    if (status == 0) procedureDivision();
    _zvkPgmTerm(&program);
    return status;
}
