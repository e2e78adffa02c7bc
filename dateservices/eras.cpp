// Eras: their table out of the message catalog, and the era that a date lies in.
//
// The text of a table is a count and then, for each era, its name in braces and four numbers: the
// year, month and day of its start, its length in years.
//
//     5 {MEIJI} 1868 10 23 45 {TAISHO} 1912 7 30 15 ...
//
// A fault in the text ends the table with the eras before it. The table is made anew by each call
// that needs one: a site may install another catalog under a long-running program.
#include <algorithm>
#include <cstdio>
#include <cstring>

#include "dateservices/date_parts.h"
#include "dateservices/feedback.h"
#include "frame/message_calls.h"
#include "frame/messages/message_catalog.h"
#include "frame/storage.h"

namespace dates {
namespace {

constexpr uint32_t kEraText = 216;
constexpr uint32_t kMostEras = 20, kHighestNumber = 10000;
constexpr size_t kEraTextSize = 400;
constexpr char kSpace[] = " \r\n";

struct EraList {
    uint32_t count;
    Era eras[kMostEras];
    char names[kMostEras][kEraName];
};

bool readNumber(const char *&at, uint32_t &number)
{
    at += strspn(at, kSpace);
    size_t digits = strspn(at, "0123456789");
    if (digits == 0) return false;
    number = 0;
    for (size_t i = 0; i < digits; i++)
        number = std::min(number * 10 + static_cast<uint32_t>(at[i] - '0'), kHighestNumber + 1);
    at += digits;
    return number <= kHighestNumber;
}

// "{name}"; what is longer than six bytes is cut.
bool readName(const char *&at, char (&name)[kEraName], bool padded)
{
    at += strspn(at, kSpace);
    if (*at != '{') return false;
    const char *close = strchr(++at, '}');
    if (!close) return false;
    size_t length = std::min<size_t>(static_cast<size_t>(close - at), kEraName - 1);
    memset(name, padded ? ' ' : 0, kEraName - 1);
    memcpy(name, at, length);
    name[kEraName - 1] = 0;
    at = close + 1;
    return true;
}

bool readEra(const char *&at, Era &era, char (&name)[kEraName], bool padded)
{
    return readName(at, name, padded) && readNumber(at, era.startYear) && readNumber(at, era.startMonth) &&
           readNumber(at, era.startDay) && readNumber(at, era.lengthInYears);
}

} // namespace

uint32_t loadEras(EraKind kind, EraTable **table)
{
    *table = nullptr;
    bool chinese = kind == kChinese;
    const char *found = zvkCatalogText(kEraText, chinese ? 1 : 0);
    if (!found) {
        msg::noEraText(2, ZVK_MSG_SEVERE);
        return 0;
    }
    char text[kEraTextSize];
    snprintf(text, sizeof text, "%s", found + 2);

    const char *at = text;
    uint32_t announced;
    if (!readNumber(at, announced) || announced > kMostEras) return 0;
    EraList list{};
    while (list.count < announced && readEra(at, list.eras[list.count], list.names[list.count], chinese)) list.count++;

    size_t eras = list.count * sizeof(Era);
    auto *made = static_cast<EraTable *>(zvkAlloc(sizeof(EraTable) + eras + list.count * kEraName));
    if (!made) return kNoWorkStorage;
    made->count = list.count;
    memcpy(made->eras, list.eras, eras);
    memcpy(made->eras + list.count, list.names, list.count * kEraName);
    *table = made;
    return 0;
}

size_t eraNameLength(const char *name)
{
    size_t length = strnlen(name, kEraName - 1);
    while (length && name[length - 1] == ' ') length--;
    return length;
}

uint32_t eraOfDate(const EraTable *table, const DateParts &date)
{
    for (uint32_t i = table ? table->count : 0; i > 0; i--) {
        const Era &era = table->eras[i - 1];
        auto year = static_cast<uint32_t>(date.year), month = static_cast<uint32_t>(date.month),
             day = static_cast<uint32_t>(date.day);
        if (year < era.startYear || year >= era.startYear + era.lengthInYears) continue;
        if (year > era.startYear || month > era.startMonth || (month == era.startMonth && day >= era.startDay))
            return i;
    }
    return 0;
}

} // namespace dates

void LSVZGetJapEra(EraTable **table, FeedbackCode *fc) { dates::report(fc, dates::loadEras(dates::kJapanese, table)); }
void LSVZGetChiEra(EraTable **table, FeedbackCode *fc) { dates::report(fc, dates::loadEras(dates::kChinese, table)); }
