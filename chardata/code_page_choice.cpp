// Choosing the run unit's code pages; see code_page_choice.h.
//
// The locale's name is brought to the form of five bytes of language and territory, ".", code set:
// all readers take it apart by position.
//
//     "de_DE.ISO8859-1"  stays
//     "de_DE@euro"       becomes "de_DE.ISO-8859-15", the code set asked of the C library
//     "C"                becomes "en_US.ISO8859-1"
#include "chardata/code_page_choice.h"
#include "base/environment.h"

#include <cstdlib>
#include <cstring>
#include <langinfo.h>
#include <pthread.h>

#include "chardata/copy_text.h"
#include "frame/locale/locale_handles.h"
#include "frame/message_calls.h"
#include "kvr2/code_pages.h"

namespace {

constexpr size_t kLocaleBytes = 5;    // language and territory
constexpr size_t kValueLimit = 14;    // of EBCDIC_CODEPAGE
constexpr size_t kFallbackLimit = 10; // of the code page that stands in for an unknown one

// Locale and code-page names are ASCII, whatever the locale is.
void upperCase(char *text)
{
    for (; *text; text++)
        if (*text >= 'a' && *text <= 'z') *text = static_cast<char>(*text - 'a' + 'A');
}

void normaliseLocaleName(const char *locale, const char *codeSet, char (&name)[sizeof Proccom::localeName])
{
    if (strcmp(locale, "C") == 0 || strcmp(locale, "POSIX") == 0) locale = "en_US.ISO8859-1";
    copyText(name, locale);
    // A shorter name is filled up, so that the code set still begins at the seventh byte.
    for (size_t i = strlen(name); i < kLocaleBytes; i++) name[i] = ' ';
    if (name[kLocaleBytes] == '.') return;
    name[kLocaleBytes] = '.';
    char *rest = name + kLocaleBytes + 1;
    size_t room = sizeof name - kLocaleBytes - 1;
    memset(rest, 0, room);
    memcpy(rest, codeSet, strnlen(codeSet, room - 1));
}

int32_t rowOfLocale(const char *name)
{
    char key[kLocaleBytes + 1] = {};
    memcpy(key, name, kLocaleBytes);
    upperCase(key);
    for (int32_t row = 0; row < kCodePageRowCount; row++)
        if (memcmp(key, kCodePageRows[row].key, kLocaleBytes) == 0) return row;
    return kDefaultCodePageRow;
}

bool rowHasPage(const CodePageRow &row, const char *page)
{
    return strcmp(row.ebcdicBase, page) == 0 || strcmp(row.ebcdicEuro, page) == 0;
}

const CodePageRow *firstRowWithPage(const char *page)
{
    for (const CodePageRow &row : kCodePageRows)
        if (rowHasPage(row, page)) return &row;
    return nullptr;
}

bool isKeyOfLocale(const CodePageRow &row, const char *localeName)
{
    char key[kLocaleBytes + 1] = {};
    memcpy(key, localeName, kLocaleBytes);
    upperCase(key);
    return memcmp(key, row.key, kLocaleBytes) == 0;
}

void chooseEbcdicPage(const char *value, CodePageChoice &choice)
{
    const CodePageRow &own = kCodePageRows[choice.row];
    if (!value || !*value) {
        copyText(choice.ebcdicCodePage, own.ebcdicEuro);
        return;
    }
    size_t length = strlen(value);
    if (length > kValueLimit) {
        char shown[64];
        copyText(shown, value);
        copyText(choice.ebcdicCodePage, own.ebcdicEuro);
        msg::unknownCodePage(shown, choice.ebcdicCodePage, ZVK_MSG_SEVERE);
        return;
    }
    char upper[kValueLimit + 1];
    copyText(upper, value);
    upperCase(upper);
    if (const CodePageRow *found = firstRowWithPage(upper)) {
        copyText(choice.ebcdicCodePage, value);
        if (!rowHasPage(own, upper) && !isKeyOfLocale(*found, choice.localeName))
            msg::unsuitableCodePage(value, choice.localeName);
        return;
    }
    // The row is the one whose number is the length of the value. Sites have come to rely on what
    // they get.
    copyText(choice.ebcdicCodePage, kCodePageRows[length].ebcdicEuro, kFallbackLimit);
    msg::unknownCodePage(value, choice.ebcdicCodePage);
}

void chooseFromProcess(CodePageChoice &choice)
{
    const char *locale = zvkSetLocale(LC_CTYPE, "");
    if (!locale) locale = zvkLocaleName(LC_CTYPE);
    zvkChooseCodePages(locale ? locale : "C", nl_langinfo(CODESET), environmentValue("EBCDIC_CODEPAGE"), choice);
}

} // namespace

void zvkChooseCodePages(const char *locale, const char *codeSet, const char *ebcdicCodePage, CodePageChoice &choice)
{
    normaliseLocaleName(locale, codeSet, choice.localeName);
    choice.row = rowOfLocale(choice.localeName);
    chooseEbcdicPage(ebcdicCodePage, choice);
}

void zvkCurrentCodePages(CodePageChoice &choice)
{
    if (!_zvkProccom) {
        chooseFromProcess(choice);
        return;
    }
    _zvkcSetCodePages();
    choice.row = _zvkProccom->ccsid;
    copyText(choice.localeName, _zvkProccom->localeName);
    copyText(choice.ebcdicCodePage, _zvkProccom->ebcdicCodePage);
}

const CodePageRow &zvkCurrentCodePageRow()
{
    if (!_zvkProccom) return kCodePageRows[kDefaultCodePageRow];
    _zvkcSetCodePages();
    int32_t row = _zvkProccom->ccsid;
    return kCodePageRows[row >= 0 && row < kCodePageRowCount ? row : kDefaultCodePageRow];
}

extern "C" {

void _zvkcSetCodePages(void)
{
    if (!_zvkProccom || __atomic_load_n(&_zvkProccom->ccsid, __ATOMIC_ACQUIRE) >= 0) return;
    CodePageChoice choice;
    chooseFromProcess(choice);

    // Chosen without the lock, since a message may end the run unit: threads that come here at once
    // choose the same, and the first of them stores it.
    static pthread_mutex_t storing = PTHREAD_MUTEX_INITIALIZER;
    pthread_mutex_lock(&storing);
    if (_zvkProccom->ccsid < 0) {
        memcpy(_zvkProccom->localeName, choice.localeName, sizeof choice.localeName);
        memcpy(_zvkProccom->ebcdicCodePage, choice.ebcdicCodePage, sizeof choice.ebcdicCodePage);
        __atomic_store_n(&_zvkProccom->ccsid, choice.row, __ATOMIC_RELEASE); // last: it says that the names stand
    }
    pthread_mutex_unlock(&storing);
}

void _zvkGetLocaleCP(char *localeName, char *ebcdicCodePage)
{
    CodePageChoice choice;
    zvkCurrentCodePages(choice);
    memcpy(localeName, choice.localeName, strlen(choice.localeName) + 1);
    memcpy(ebcdicCodePage, choice.ebcdicCodePage, strlen(choice.ebcdicCodePage) + 1);
}
}
