// Opening a converter by name or by number; see open_converter.h.
//
// Most of ICU's converters are named PREFIX-number_year: the number is found by reading names
// alone. It is sought in three rounds, each over the available converters in ICU's order:
//
//   1. the canonical name is PREFIX-number_...
//   2. an alias of a converter named so is PREFIX-number with the same prefix: ICU serves some
//      numbers by a close relative, whose own
//      number differs (the Thai page 9030 by 838)
//   3. the converter, opened, reports the number (UTF-8, ISO-8859-1 and others whose names hold
//      none)
//
// Names with a comma are variants with options (line feed and new line swapped, say) and are passed
// over. The answer is remembered, a "no" as well: round 3 opens a hundred converters.
#include "chardata/open_converter.h"

#include <atomic>
#include <cstring>
#include <strings.h>

namespace {

constexpr char kPrefix[] = "TQX-";
constexpr size_t kPrefixLength = sizeof kPrefix - 1;
constexpr int kNotThere = -1;

// One answer a slot: the number in the upper half, the converter's index plus one in the lower
// half; zero there means "no such converter". One word, so that threads need no lock.
std::atomic<uint64_t> remembered[64];

std::atomic<uint64_t> &slotOf(uint32_t ccsid) { return remembered[ccsid % std::size(remembered)]; }
bool isAnswerFor(uint64_t answer, uint32_t ccsid) { return answer >> 32 == ccsid; }

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Reads decimal digits; false if there are none or the number is no CCSID.
bool readNumber(const char *&text, uint32_t &number)
{
    if (!isDigit(*text)) return false;
    for (number = 0; isDigit(*text); text++) {
        number = number * 10 + static_cast<uint32_t>(*text - '0');
        if (number > 0xFFFF) return false;
    }
    return number != 0;
}

// The number in a canonical name PREFIX-number_..., else 0; prefixLength gets the length with the
// "-".
uint32_t numberOfName(const char *name, size_t &prefixLength)
{
    const char *dash = strchr(name, '-');
    if (!dash || strchr(name, ',')) return 0;
    prefixLength = static_cast<size_t>(dash + 1 - name);
    const char *digits = dash + 1;
    uint32_t number = 0;
    return readNumber(digits, number) && *digits == '_' ? number : 0;
}

bool hasAliasOfNumber(const char *name, uint32_t ccsid)
{
    size_t prefixLength = 0;
    if (!numberOfName(name, prefixLength)) return false;
    UErrorCode status = U_ZERO_ERROR;
    uint16_t count = ucnv_countAliases(name, &status);
    for (uint16_t i = 0; i < count; i++) {
        status = U_ZERO_ERROR;
        const char *alias = ucnv_getAlias(name, i, &status);
        if (U_FAILURE(status) || !alias || strncmp(alias, name, prefixLength) != 0) continue;
        const char *digits = alias + prefixLength;
        uint32_t number = 0;
        if (readNumber(digits, number) && *digits == 0 && number == ccsid) return true;
    }
    return false;
}

bool reportsNumber(const char *name, uint32_t ccsid)
{
    if (strchr(name, ',')) return false;
    UErrorCode status = U_ZERO_ERROR;
    UConverter *converter = ucnv_open(name, &status);
    if (!converter) return false;
    bool same = static_cast<uint32_t>(ucnv_getCCSID(converter, &status)) == ccsid && U_SUCCESS(status);
    ucnv_close(converter);
    return same;
}

int findConverter(uint32_t ccsid)
{
    int count = ucnv_countAvailable();
    size_t ignored = 0;
    for (int i = 0; i < count; i++)
        if (numberOfName(ucnv_getAvailableName(i), ignored) == ccsid) return i;
    for (int i = 0; i < count; i++)
        if (hasAliasOfNumber(ucnv_getAvailableName(i), ccsid)) return i;
    for (int i = 0; i < count; i++)
        if (reportsNumber(ucnv_getAvailableName(i), ccsid)) return i;
    return kNotThere;
}

// The number that a name TQX-number means, else 0. Blanks after it are ignored, as ICU ignores
// them in other names.
uint32_t numberBehindPrefix(const char *name)
{
    if (strncasecmp(name, kPrefix, kPrefixLength) != 0) return 0;
    const char *digits = name + kPrefixLength;
    uint32_t number = 0;
    if (!readNumber(digits, number)) return 0;
    return digits[strspn(digits, " ")] == 0 ? number : 0;
}

} // namespace

const char *zvkConverterNameOfCcsid(uint32_t ccsid)
{
    if (ccsid == 0) return nullptr;
    std::atomic<uint64_t> &slot = slotOf(ccsid);
    uint64_t known = slot.load(std::memory_order_relaxed);
    if (!isAnswerFor(known, ccsid)) {
        known = uint64_t{ccsid} << 32 | static_cast<uint32_t>(findConverter(ccsid) + 1);
        slot.store(known, std::memory_order_relaxed);
    }
    int index = static_cast<int>(known & 0xFFFFFFFF) - 1;
    return index == kNotThere ? nullptr : ucnv_getAvailableName(index);
}

UConverter *zvkOpenConverter(const char *name, UErrorCode *status)
{
    *status = U_ZERO_ERROR;
    uint32_t number = numberBehindPrefix(name);
    // A number is sought only after ICU has refused its name: one that is remembered need not be
    // refused again.
    if (!number || !isAnswerFor(slotOf(number).load(std::memory_order_relaxed), number)) {
        if (UConverter *converter = ucnv_open(name, status)) return converter;
    }
    const char *known = number ? zvkConverterNameOfCcsid(number) : nullptr;
    if (!known) {
        if (U_SUCCESS(*status)) *status = U_FILE_ACCESS_ERROR; // as ICU said the first time
        return nullptr;
    }
    *status = U_ZERO_ERROR;
    return ucnv_open(known, status);
}
