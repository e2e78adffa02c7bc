// The services between text and days: LSVDAYS, LSVCBLDY, LSVDATE, and what LSVSECS and LSVDATM
// share with them.
#include "dateservices/text_services.h"

#include <cstring>

#include "dateservices/fixed_layout.h"
#include "dateservices/known_pictures.h"
#include "frame/storage.h"
#include "kvr2/date_functions.h"

namespace dates {
namespace {

constexpr uint32_t kLilianRange = 2512;

constexpr char kDatePicture[] = "MM/DD/YY";
constexpr char kTimePicture[] = "MM/DD/YY HH:MI:SS AP";
constexpr char kScannedTimePicture[] = "MM/DD/YY/HH:MI:SS/AP"; // cleared of blanks

// Room for the cleared texts of a call. Only texts that are longer than any date take storage.
constexpr size_t kWorkStorage = 793;

struct Text {
    const char *begin, *end;
    size_t length() const { return static_cast<size_t>(end - begin); }
};

Text textOf(const VSTRING *string) { return {string->text, string->text + string->length}; }

bool isBlank(const Text &text)
{
    for (const char *at = text.begin; at < text.end; at++)
        if (*at != ' ') return false;
    return true;
}

uint32_t scanAndValidate(Service service, const Text &date, const Picture &picture, DateParts &parts)
{
    parts.eraKind = picture.eras;
    if (parts.eraKind == kBothEras) return messageOfScan(service, kBadPicture);
    EraTable *eras = nullptr;
    uint32_t message = parts.eraKind == kNoEra ? kSuccess : loadEras(parts.eraKind, &eras);
    if (message != kSuccess) return message;
    message = messageOfScan(service, scanDate(date.begin, date.end, picture, parts, eras));
    if (message == kSuccess) message = messageOfValidation(service, validateDate(parts, eras));
    free(eras);
    return message;
}

Picture usualPicture(const char *text) { return pictureOf(text, text + strlen(text)); }

} // namespace

uint32_t readDate(Service service, const VSTRING *date, const VSTRING *picture, DateParts &parts)
{
    parts = DateParts{};
    Text given = textOf(date), asked = textOf(picture);
    const Picture *known = knownPicture(asked.begin, asked.length(), Clearing::Yes);
    if (known && known->layout && known->layout->alone && scanFixed(*known->layout, given.begin, given.end, parts))
        return messageOfValidation(service, validateDate(parts, nullptr));

    char own[kWorkStorage], *work = own;
    size_t wanted = given.length() + asked.length();
    if (wanted > sizeof own && !(work = static_cast<char *>(zvkAlloc(wanted)))) return kNoWorkStorage;
    char *dateEnd = normalise(given.begin, given.length(), work);
    Picture cleared = known ? *known : pictureOf(dateEnd, normalise(asked.begin, asked.length(), dateEnd));
    if (cleared.begin == cleared.end)
        cleared = usualPicture(service == Service::seconds ? kScannedTimePicture : kDatePicture);
    uint32_t message = scanAndValidate(service, {work, dateEnd}, cleared, parts);
    if (work != own) free(work);
    return message;
}

uint32_t printDate(Service service, const VSTRING *picture, char *out, DateParts &parts)
{
    Text asked = textOf(picture);
    if (isBlank(asked)) {
        const char *usual = service == Service::secondsToText ? kTimePicture : kDatePicture;
        asked = {usual, usual + strlen(usual)};
    }
    const Picture *known = knownPicture(asked.begin, asked.length(), Clearing::No);
    Picture own = known ? *known : pictureOf(asked.begin, asked.end);
    parts.eraKind = own.eras;
    if (parts.eraKind == kBothEras) return messageOfWriting(service, kBadPicture);
    EraTable *eras = nullptr;
    if (parts.eraKind != kNoEra) {
        uint32_t message = loadEras(parts.eraKind, &eras);
        if (message != kSuccess) return message;
        uint32_t era = eraOfDate(eras, parts);
        bool japanese = parts.eraKind == kJapanese;
        (japanese ? parts.japaneseEra : parts.chineseEra) = static_cast<int32_t>(era);
        int32_t year = era ? parts.year - static_cast<int32_t>(eras->eras[era - 1].startYear) + 1 : 0;
        (japanese ? parts.japaneseYear : parts.chineseYear) = year;
    }
    uint32_t message = messageOfWriting(service, writeDate(out, own, parts, eras));
    free(eras);
    return message;
}

} // namespace dates

void LSVDAYS(const VSTRING *date, const VSTRING *picture, LsvNumber *lilian, FeedbackCode *fc)
{
    dates::DateParts parts;
    uint32_t message = dates::readDate(dates::Service::days, date, picture, parts);
    *lilian = message == dates::kSuccess ? static_cast<int32_t>(dates::lilianOf(parts)) : 0;
    dates::report(fc, message);
}

void LSVCBLDY(const VSTRING *date, const VSTRING *picture, LsvNumber *days, FeedbackCode *fc)
{
    dates::DateParts parts;
    uint32_t message = dates::readDate(dates::Service::days, date, picture, parts);
    *days = 0;
    if (message == dates::kSuccess && parts.dayOfYear) *days = _zvkIntegerOfDay(parts.year * 1000 + parts.dayOfYear);
    if (message == dates::kSuccess && !parts.dayOfYear)
        *days = _zvkIntegerOfDate(parts.year * 10000 + parts.month * 100 + parts.day);
    dates::report(fc, message);
}

void LSVDATE(const LsvNumber *lilian, const VSTRING *picture, char *out, FeedbackCode *fc)
{
    memset(out, ' ', dates::kOutput);
    int32_t day = *lilian;
    if (day < 1 || day > calendar::kLastLilian) return dates::report(fc, dates::kLilianRange);
    dates::DateParts parts{};
    dates::setDate(parts, day);
    dates::report(fc, dates::printDate(dates::Service::lilianToText, picture, out, parts));
}
