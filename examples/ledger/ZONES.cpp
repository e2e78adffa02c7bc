// ZONES as a compiler lays it out; see ZONES.cbl. UNSTRING, INSPECT and the class test have no
// entries yet and are done in place.
#include "../compiled.h"

using namespace compiled;

namespace {

struct ZoneLine {
    char text[160];
};
struct ZoneRecord {
    Text<32> name;
    Text<2> country;
    Unsigned<3> countries;
    Packed<7> latitude, longitude; // S9(3)V9(4)
};
static_assert(sizeof(ZoneRecord) == 45);
struct ListingLine {
    char text[72];
};

File<ZoneLine> zoneText({.name = "ZONE-TEXT", .assignment = "ZONETAB", .organization = ZVK_FILE_LINE_SEQUENTIAL});
File<ZoneRecord> zoneFile({.name = "ZONE-FILE",
                           .assignment = "ZONEFILE",
                           .organization = ZVK_FILE_INDEXED,
                           .access = 0,
                           .keys = {{32, 0, 0, {}}, {2, 32, ZVK_FILE_KEY_DUPLICATES, {}}},
                           .keyCount = 2});
File<ListingLine> listing({.name = "LISTING",
                           .assignment = "ZONELIST",
                           .organization = ZVK_FILE_LINE_SEQUENTIAL,
                           .body = 60,
                           .footing = 58,
                           .top = 2,
                           .bottom = 2});
ZoneRecord sortRecord;

Packed<5> zonesOfCountry, allZones, pageNumber;
Text<2> lastCountry;

constexpr Picture kAngle("---9.9999", ZVK_EDIT_FLOAT_MINUS, 7);
constexpr Picture kCount3("ZZ9", ZVK_EDIT_UNSIGNED, 3);
constexpr Picture kCount5("ZZZZ9", ZVK_EDIT_UNSIGNED, 5);

struct DetailLine {
    Text<2> country;
    char gap1[2];
    Text<32> name;
    char gap2[2];
    char latitude[9], gap3[2];
    char longitude[9], gap4[2];
    char countries[3];
};
struct CountryLine {
    Text<2> country;
    Text<7> text;
    char zones[5];
};
struct HeadingLine {
    Text<40> title;
    Text<5> text;
    char page[5];
};

int ZONES();
Program program("ZONES", reinterpret_cast<ZvkRoutine>(ZONES), zoneText, zoneFile, listing);

// MOVE of digits in a text to a numeric item.
template <int32_t digits>
Packed<digits> number(const char *text)
{
    Unsigned<digits> item;
    memcpy(item.bytes, text, digits);
    Packed<digits> value;
    move(value, item);
    return value;
}

// COMPUTE-ANGLE: degrees, minutes and, if there are any, seconds, as ten-thousandths of a degree.
template <int32_t degreeDigits>
Packed<7> computeAngle(const char *text, size_t length, bool negative)
{
    auto seconds = sum(product(number<degreeDigits>(text), packed<4>(3600)),
                       product(number<2>(text + degreeDigits), packed<2>(60)));
    Packed<7> total;
    move(total, seconds);
    if (length > degreeDigits + 2u) add(total, number<2>(text + degreeDigits + 2));
    // One place more than the result has, for ROUNDED.
    Packed<7> angle;
    move(angle, rounded<1>(quotient(product(total, packed<6>(100000)), packed<4>(3600))));
    if (negative) negate(angle);
    return angle;
}

void loadOneZone()
{
    const char *line = zoneText.record.text, *end = line + sizeof zoneText.record.text;
    ZoneRecord &zone = zoneFile.record;
    // UNSTRING ... DELIMITED BY X"09"
    auto field = [&](const char *&from) {
        const char *begin = from;
        while (from < end && *from != '\t') from++;
        size_t length = static_cast<size_t>(from - begin);
        if (from < end) from++;
        return length;
    };
    const char *at = line;
    size_t countriesLength = field(at);
    const char *place = at;
    size_t placeLength = field(at);
    const char *name = at;
    size_t nameLength = field(at);
    while (nameLength && name[nameLength - 1] == ' ') nameLength--;
    move(zone.name.bytes, sizeof zone.name, name, nameLength);
    move(zone.country.bytes, sizeof zone.country, line, countriesLength);
    // INSPECT ... TALLYING
    int64_t commas = 0;
    for (size_t i = 0; i < countriesLength; i++) commas += line[i] == ',';
    move(zone.countries, packed<3>(commas + 1));
    // The second sign parts latitude and longitude.
    size_t second = 1;
    while (second < placeLength && place[second] != '+' && place[second] != '-') second++;
    if (placeLength < 11 || second < 5 || placeLength - second < 6) return display("NO PLACE: ", zone.name);
    zone.latitude = 0;
    zone.longitude = 0;
    move(zone.latitude, computeAngle<2>(place + 1, second - 1, place[0] == '-'));
    move(zone.longitude, computeAngle<3>(place + second + 1, placeLength - second - 1, place[second] == '-'));
    if (!zoneFile.write()) display("ZONE TWICE: ", zone.name);
}

void loadZones()
{
    zoneText.open(ZVK_OPEN_INPUT);
    zoneText.need();
    zoneFile.open(ZVK_OPEN_OUTPUT);
    zoneFile.need();
    while (zoneText.read())
        if (zoneText.record.text[0] != '#') loadOneZone();
    zoneText.close();
    zoneFile.close();
    zoneFile.need();
}

void giveZones()
{
    memset(zoneFile.record.country.bytes, 0, sizeof zoneFile.record.country); // LOW-VALUES
    uint16_t status = 0;
    if (!zoneFile.start(ZVK_RELATION_NOT_LESS, 1)) return;
    while (zoneFile.read()) _zvkRelease(sizeof(ZoneRecord), &zoneFile.record, &status);
}

template <class Line>
void print(const Line &line)
{
    move(listing.record.text, sizeof listing.record.text, &line, sizeof line);
}

void printHeading()
{
    HeadingLine heading;
    add(pageNumber, packed<1>(1));
    move(heading.title, "TIME ZONES SINCE 1970");
    move(heading.text, "PAGE ");
    edit(kCount5, pageNumber, heading.page);
    print(heading);
    if (equal(pageNumber, packed<1>(1)))
        listing.write();
    else
        listing.writeAfter(ZVK_ADVANCE_PAGE);
    listing.need();
}

template <class Line>
void printInBody(const Line &line)
{
    print(line);
    listing.write();
    listing.need();
    if (listing.endOfPage()) printHeading();
}

void printCountry()
{
    if (isZero(zonesOfCountry)) return;
    CountryLine line;
    move(line.country, lastCountry);
    move(line.text, " ZONES ");
    edit(kCount5, zonesOfCountry, line.zones);
    printInBody(line);
    zonesOfCountry = 0;
}

void printOneZone()
{
    if (memcmp(sortRecord.country.bytes, lastCountry.bytes, sizeof lastCountry) != 0) {
        printCountry();
        move(lastCountry, sortRecord.country);
    }
    add(zonesOfCountry, packed<1>(1));
    add(allZones, packed<1>(1));
    DetailLine line;
    memset(&line, ' ', sizeof line);
    move(line.country, sortRecord.country);
    move(line.name, sortRecord.name);
    edit(kAngle, sortRecord.latitude, line.latitude);
    edit(kAngle, sortRecord.longitude, line.longitude);
    Packed<3> countries;
    move(countries, sortRecord.countries);
    edit(kCount3, countries, line.countries);
    printInBody(line);
}

void printZones()
{
    uint32_t length = 0;
    uint16_t status = 0;
    while (_zvkReturn(&length, &sortRecord, &status), status == 0) printOneZone();
    printCountry();
}

// SORT SORT-FILE ON ASCENDING KEY SR-COUNTRY SR-NAME
void sortZones()
{
    Sort<2> sort(program.pcb, sizeof(ZoneRecord), 105,
                 {{offsetof(ZoneRecord, country), 2, ZVK_KEY_ALPHANUMERIC, 0, ZVK_KEY_ASCENDING, {}},
                  {offsetof(ZoneRecord, name), 32, ZVK_KEY_ALPHANUMERIC, 0, ZVK_KEY_ASCENDING, {}}});
    sort.start();
    giveZones();
    sort.inputHasEnded();
    sort.need();
    printZones();
}

int procedureDivision()
{
    zonesOfCountry = 0;
    allZones = 0;
    pageNumber = 0;
    move(lastCountry, " ");
    loadZones();
    zoneFile.open(ZVK_OPEN_INPUT);
    zoneFile.need();
    listing.open(ZVK_OPEN_OUTPUT);
    listing.need();
    printHeading();
    sortZones();
    zoneFile.close();
    listing.close();
    listing.need();
    Text<5> shown;
    edit(kCount5, allZones, shown.bytes);
    display("ZONES LISTED ", shown);
    return 0;
}

int ZONES() { return program.run(procedureDivision); }

} // namespace

int main() { return ZONES(); }
