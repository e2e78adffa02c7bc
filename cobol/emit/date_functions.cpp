// Functions of dates and times that give a number.
#include "cobol/emit/emitter.h"

namespace kvrcob {

// INTEGER-OF-FORMATTED-DATE, SECONDS-FROM-FORMATTED-TIME, TEST-FORMATTED-DATETIME
Num Emitter::ofFormatted(const FunctionCall &f)
{
    Text format = text(f.args[0]), t = text(f.args[1]);
    if (!format.good || !t.good) return Num{};
    bool seconds = f.name[0] == 'S';
    Num n = integerNumber(
        cat(emitsFunction(f.name), "(", format.address, ", ", format.length, ", ", t.address, ", ", t.length, ")"),
        seconds ? 14 : 10, false);
    if (seconds) n.scale = 9;
    return n;
}

Num Emitter::combinedDatetime(const FunctionCall &f)
{
    // Seconds as a part of 100,000, so that the time of day does not reach the days.
    Num seconds = toInt(scaleTo(number(f.args[1], -1), 9, false));
    if (!seconds.good()) return Num{};
    seconds.scale += 5;
    return add(integerNumber(integer(f.args[0]), 8, false), seconds, false);
}

Num Emitter::secondsPastMidnight(const FunctionCall &f)
{
    return integerNumber(cat(emitsFunction(f.name), "()"), 5, false);
}

// TEST-DATE-YYYYMMDD, TEST-DAY-YYYYDDD
Num Emitter::testDate(const FunctionCall &f)
{
    return integerNumber(
        cat(emitsFunction(f.name), "(", integer(f.args[0]), ", ", f.name == "TEST-DAY-YYYYDDD" ? 1 : 0, ")"), 1, false);
}

// DATE-OF-INTEGER and its three like.
Num Emitter::dateOfInteger(const FunctionCall &f)
{
    return integerNumber(cat("(int64_t)", emitsFunction(f.name), "((int32_t)", integer(f.args[0]), ")"),
                         f.name == "DATE-OF-INTEGER" ? 8 : 7, false);
}

// YEAR-TO-YYYY, DATE-TO-YYYYMMDD, DAY-TO-YYYYDDD
Num Emitter::windowed(const FunctionCall &f)
{
    std::string window = f.args.size() > 1 ? integer(f.args[1]) : "50";
    if (f.args.size() > 2) // counted from that year
        window = cat(window, " + ", integer(f.args[2]), " - ", emits(Do::PresentYear), "()");
    int digits = f.name[0] == 'Y' ? 4 : f.name == "DATE-TO-YYYYMMDD" ? 8 : 7;
    return integerNumber(
        cat(emitsFunction(f.name), "(", digits, ", (int32_t)", integer(f.args[0]), ", (int32_t)(", window, "))"),
        digits, false);
}

} // namespace kvrcob
