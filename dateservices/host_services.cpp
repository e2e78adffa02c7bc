// The services for programs with EBCDIC data: strings are converted, numbers are not handed
// through.
//
// Each entry is its service between two conversions. Numeric inputs reach the service as 0 and
// numeric results come back as 0, and a failure shows in the token's facility alone, as three
// EBCDIC bytes; on purpose, in all of them.
#include <algorithm>
#include <cstring>
#include <initializer_list>

#include "dateservices/date_parts.h"
#include "kvr2/code_pages.h"
#include "kvr2/dateservices.h"
#include "kvr2/external_floats.h"

namespace {

constexpr int32_t kHostString = 270;

struct HostString {
    uint16_t length;
    char text[kHostString];

    explicit HostString(const VSTRING *given) : length(0), text{}
    {
        int32_t ebcdic = std::min<int32_t>(given->length, kHostString);
        int32_t room = kHostString;
        if (ebcdic == 0) return;
        _zvkConvToASCII(reinterpret_cast<const uint8_t *>(given->text), ebcdic, reinterpret_cast<uint8_t *>(text),
                        &room);
        length = static_cast<uint16_t>(std::clamp(room, 0, kHostString));
    }
    const VSTRING *string() const { return reinterpret_cast<const VSTRING *>(this); }
};
static_assert(sizeof(HostString) == 272);

void toEbcdic(const char *native, int32_t length, char *out)
{
    int32_t room = length;
    _zvkConvToEBCDIC(reinterpret_cast<const uint8_t *>(native), length, reinterpret_cast<uint8_t *>(out), &room);
}

// The token as the caller gets it; without one the service writes its message itself.
class HostToken {
public:
    explicit HostToken(FeedbackCode *given) : caller(given), own{} {}
    FeedbackCode *token() { return caller ? &own : nullptr; }
    void handBack()
    {
        if (!caller) return;
        if (own.messageNumber != 0) {
            own.severity = own.messageNumber = 0;
            memcpy(own.facility, "\xC3\xC5\xC5", 3);
            own.instanceInfo = 0;
        }
        *caller = own;
    }

private:
    FeedbackCode *caller;
    FeedbackCode own;
};

// Numbers of one service: what it is given, and what it is made to give.
struct Zeros {
    LsvNumber numbers[8] = {};
    LsvSeconds seconds = 0;
};

// Results lie at any address.
void clear(std::initializer_list<void *> numbers)
{
    for (void *number : numbers) memset(number, 0, sizeof(int32_t));
}
void clearSeconds(void *seconds) { memset(seconds, 0, sizeof(double)); }

using TextToNumber = void (*)(const VSTRING *, const VSTRING *, LsvNumber *, FeedbackCode *);
void textToNumber(TextToNumber service, const VSTRING *date, const VSTRING *picture, LsvNumber *result,
                  FeedbackCode *fc)
{
    HostString nativeDate(date), nativePicture(picture);
    HostToken feedback(fc);
    Zeros zeros;
    service(nativeDate.string(), nativePicture.string(), zeros.numbers, feedback.token());
    feedback.handBack();
    clear({result});
}

} // namespace

void LSVDAYS_HOST(const VSTRING *date, const VSTRING *picture, LsvNumber *lilian, FeedbackCode *fc)
{
    textToNumber(LSVDAYS, date, picture, lilian, fc);
}

void LSVCBLDY_HOST(const VSTRING *date, const VSTRING *picture, LsvNumber *result, FeedbackCode *fc)
{
    textToNumber(LSVCBLDY, date, picture, result, fc);
}

void LSVSECS_HOST(const VSTRING *timestamp, const VSTRING *picture, LsvSeconds *lilianSeconds, FeedbackCode *fc)
{
    HostString nativeTime(timestamp), nativePicture(picture);
    HostToken feedback(fc);
    Zeros zeros;
    LSVSECS(nativeTime.string(), nativePicture.string(), &zeros.seconds, feedback.token());
    feedback.handBack();
    clearSeconds(lilianSeconds);
}

void LSVDATE_HOST(const LsvNumber *, const VSTRING *picture, char *out, FeedbackCode *fc)
{
    HostString nativePicture(picture);
    HostToken feedback(fc);
    Zeros zeros;
    char native[dates::kOutput];
    LSVDATE(zeros.numbers, nativePicture.string(), native, feedback.token());
    feedback.handBack();
    toEbcdic(native, sizeof native, out);
}

void LSVDATM_HOST(const LsvSeconds *, const VSTRING *picture, char *out, FeedbackCode *fc)
{
    HostString nativePicture(picture);
    HostToken feedback(fc);
    Zeros zeros;
    char native[dates::kOutput];
    LSVDATM(&zeros.seconds, nativePicture.string(), native, feedback.token());
    feedback.handBack();
    toEbcdic(native, sizeof native, out);
}

void LSVDYWK_HOST(const LsvNumber *, LsvNumber *weekday, FeedbackCode *fc)
{
    HostToken feedback(fc);
    Zeros zeros;
    LSVDYWK(&zeros.numbers[0], &zeros.numbers[1], feedback.token());
    feedback.handBack();
    clear({weekday});
}

void LSVGMT_HOST(LsvNumber *lilian, LsvSeconds *lilianSeconds, FeedbackCode *fc)
{
    HostToken feedback(fc);
    Zeros zeros;
    LSVGMT(zeros.numbers, &zeros.seconds, feedback.token());
    feedback.handBack();
    clear({lilian});
    clearSeconds(lilianSeconds);
}

void LSVUTC_HOST(LsvNumber *lilian, LsvSeconds *lilianSeconds, FeedbackCode *fc)
{
    LSVGMT_HOST(lilian, lilianSeconds, fc);
}

void LSVGMTO_HOST(LsvNumber *hours, LsvNumber *minutes, LsvSeconds *seconds, FeedbackCode *fc)
{
    HostToken feedback(fc);
    Zeros zeros;
    LSVGMTO(&zeros.numbers[0], &zeros.numbers[1], &zeros.seconds, feedback.token());
    feedback.handBack();
    clear({hours, minutes});
    clearSeconds(seconds);
}

void LSVISEC_HOST(const LsvNumber *, const LsvNumber *, const LsvNumber *, const LsvNumber *, const LsvNumber *,
                  const LsvNumber *, const LsvNumber *, LsvSeconds *lilianSeconds, FeedbackCode *fc)
{
    HostToken feedback(fc);
    Zeros zeros;
    const LsvNumber *none = zeros.numbers;
    LSVISEC(none, none, none, none, none, none, none, &zeros.seconds, feedback.token());
    feedback.handBack();
    clearSeconds(lilianSeconds);
}

void LSVLOCT_HOST(LsvNumber *lilian, LsvSeconds *lilianSeconds, char *gregorian, FeedbackCode *fc)
{
    HostToken feedback(fc);
    Zeros zeros;
    char native[17];
    LSVLOCT(zeros.numbers, &zeros.seconds, native, feedback.token());
    feedback.handBack();
    clear({lilian});
    clearSeconds(lilianSeconds);
    toEbcdic(native, sizeof native, gregorian);
}

void LSVQCEN_HOST(LsvUnsigned *century, FeedbackCode *fc)
{
    HostToken feedback(fc);
    LsvUnsigned kept;
    LSVQCEN(&kept, feedback.token());
    feedback.handBack();
    clear({century});
}

void LSVSCEN_HOST(const LsvUnsigned *, FeedbackCode *fc)
{
    HostToken feedback(fc);
    const LsvUnsigned none = 0;
    LSVSCEN(&none, feedback.token());
    feedback.handBack();
}

void LSVSECI_HOST(const LsvUnsigned *hexSeconds, LsvNumber *year, LsvNumber *month, LsvNumber *day, LsvNumber *hours,
                  LsvNumber *minutes, LsvNumber *seconds, LsvNumber *milliseconds, FeedbackCode *fc)
{
    HostToken feedback(fc);
    Zeros zeros;
    uint64_t hex, ieee;
    memcpy(&hex, hexSeconds, sizeof hex);
    ieee = _zvkcConvHex8toIEEE(hex, 0);
    memcpy(&zeros.seconds, &ieee, sizeof ieee);
    LsvNumber *out = zeros.numbers;
    LSVSECI(&zeros.seconds, out, out + 1, out + 2, out + 3, out + 4, out + 5, out + 6, feedback.token());
    feedback.handBack();
    clear({year, month, day, hours, minutes, seconds, milliseconds});
}

void TKJEDT4_HOST(char *out, FeedbackCode *fc)
{
    HostToken feedback(fc);
    char native[8] = {};
    TKJEDT4(native, feedback.token());
    feedback.handBack();
    toEbcdic(native, sizeof native, out);
}
