// Date pictures: a picture string as a row of elements, the same for reading a date and for writing
// one.
//
// An element is a run of one letter ("YYYY"), or one of a few pairs ("MI", "AP"). What a run of so
// many letters means is a table, a row for each letter; only what is no plain run is told in code.
// Letters count in either case.
//
//     "Zd. mmmm YYYY"     shorter, day (1 letter), literal ".", literal " ", monthFullName (4), literal " ", year (4)
#pragma once

#include <cstddef>
#include <cstdint>

namespace dates {

enum class Element : uint8_t {
    literal,
    badRun, // a run that means nothing: not valid in a date that is read, copied letter by letter when one is written
    year,
    month,
    monthName,
    monthFullName,
    romanMonth,
    minute,
    day,
    dayOfYear,
    weekdayName,
    weekdayFullName,
    hour,
    second,
    fraction,
    half,       // AP
    dottedHalf, // A.P, A.P.
    shorter,    // Z: the next element may be shorter
    angle,      // "<" that opens no era
    japaneseEra,
    chineseEra,
    brokenEra,
    count
};

struct PictureElement {
    Element kind;
    uint8_t letters; // of the run, without a Z after it
    bool open;       // a Z ends it: no padding
    uint8_t length;  // bytes of the picture
    const char *text;
};

// The element at `at`, which is before `end`.
PictureElement nextElement(const char *at, const char *end);

enum EraKind : int32_t { kNoEra = 0, kJapanese = 1, kChinese = 2, kBothEras = 3 };

// What eras a picture asks for.
EraKind erasOf(const char *picture, const char *end);

// Whether a picture has an element for the half of the day.
bool hasHalfOfDay(const char *picture, const char *end);

struct FixedLayout;

// A picture as it is walked, with what a walk wants to know before it begins.
struct Picture {
    const char *begin, *end;
    const PictureElement *elements; // null where the walk is to find them as it goes
    const FixedLayout *layout;      // null where it has none, or it is not known
    EraKind eras;
    bool half;
};

Picture pictureOf(const char *begin, const char *end);

// Goes through the elements of a picture.
class ElementReader {
public:
    explicit ElementReader(const Picture &picture) : ready(picture.elements), at(picture.begin), end(picture.end) {}
    bool more() const { return at < end; }
    PictureElement next()
    {
        PictureElement element = ready ? *ready++ : nextElement(at, end);
        at = element.text + element.length;
        return element;
    }
    // Goes on at any place, where other elements may begin.
    void resume(const char *place)
    {
        ready = nullptr;
        at = place;
    }

private:
    const PictureElement *ready;
    const char *at, *end;
};

} // namespace dates
