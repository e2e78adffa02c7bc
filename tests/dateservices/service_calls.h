// Calls of the date services as compiled programs make them, with every operand at the end of a
// page.
#pragma once

#include <cstring>
#include <string>

#include "kvr2/dateservices.h"
#include "support/guarded.h"

struct GuardedString {
    GuardedItem item;
    explicit GuardedString(const std::string &text) : GuardedString(text, static_cast<uint16_t>(text.size())) {}
    GuardedString(const std::string &text, uint16_t length) : item(text.size() + 2)
    {
        memcpy(item.data(), &length, 2);
        memcpy(item.data() + 2, text.data(), text.size());
    }
    const VSTRING *get() const { return reinterpret_cast<const VSTRING *>(item.data()); }
};

template <class T>
struct Guarded {
    GuardedItem item{sizeof(T)};
    explicit Guarded(T value = {}) { memcpy(item.data(), &value, sizeof value); }
    T value() const
    {
        T copy;
        memcpy(&copy, item.data(), sizeof copy);
        return copy;
    }
    template <class As>
    As *as() const
    {
        return reinterpret_cast<As *>(item.data());
    }
};

// What a service left in its token: the message number, or -1 if the rest does not fit it.
inline int tokenOf(const FeedbackCode &fc)
{
    bool warning = fc.messageNumber == 2526 || fc.messageNumber == 2527;
    if (fc.messageNumber == 0) {
        const char none[sizeof fc] = {};
        return memcmp(&fc, none, sizeof fc) ? -1 : 0;
    }
    bool fits = fc.severity == (warning ? 2 : 3) && fc.flags == (warning ? 0x51 : 0x59) &&
                memcmp(fc.facility, "LSV", 3) == 0 && fc.instanceInfo == 0;
    return fits ? fc.messageNumber : -1;
}

struct Number {
    int token;
    int32_t value;
};

inline Number days(const std::string &date, const std::string &picture)
{
    GuardedString given(date), asked(picture);
    Guarded<int32_t> lilian(-1);
    Guarded<FeedbackCode> fc;
    LSVDAYS(given.get(), asked.get(), lilian.as<LsvNumber>(), fc.as<FeedbackCode>());
    return {tokenOf(fc.value()), lilian.value()};
}

struct Text {
    int token;
    std::string value; // without the blanks at its end
};

inline std::string trimmed(const char *out)
{
    std::string text(out, 80);
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

inline Text date(int32_t lilian, const std::string &picture)
{
    GuardedString asked(picture);
    Guarded<int32_t> day(lilian);
    GuardedItem out(80);
    Guarded<FeedbackCode> fc;
    char *text = reinterpret_cast<char *>(out.data());
    LSVDATE(day.as<LsvNumber>(), asked.get(), text, fc.as<FeedbackCode>());
    return {tokenOf(fc.value()), trimmed(text)};
}

struct Seconds {
    int token;
    double value;
};

inline Seconds seconds(const std::string &timestamp, const std::string &picture)
{
    GuardedString given(timestamp), asked(picture);
    Guarded<double> result(-1.0);
    Guarded<FeedbackCode> fc;
    LSVSECS(given.get(), asked.get(), result.as<LsvSeconds>(), fc.as<FeedbackCode>());
    return {tokenOf(fc.value()), result.value()};
}

inline Text dateTime(double lilianSeconds, const std::string &picture)
{
    GuardedString asked(picture);
    Guarded<double> given(lilianSeconds);
    GuardedItem out(80);
    Guarded<FeedbackCode> fc;
    char *text = reinterpret_cast<char *>(out.data());
    LSVDATM(given.as<LsvSeconds>(), asked.get(), text, fc.as<FeedbackCode>());
    return {tokenOf(fc.value()), trimmed(text)};
}
