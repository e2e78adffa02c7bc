// ZONES as a compiler lays it out; see ZONES.cbl.
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

// The fields of a line, as text.
Text<80> countryList;
Text<16> place;
Text<32> name;
Text<8> latitudeText, longitudeText;

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
Packed<7> computeAngle(const char *text, bool negative)
{
    auto seconds = sum(product(number<degreeDigits>(text), packed<4>(3600)),
                       product(number<2>(text + degreeDigits), packed<2>(60)));
    Packed<7> total;
    move(total, seconds);
    if (isNumeric(text + degreeDigits + 2, 2)) add(total, number<2>(text + degreeDigits + 2));
    // One place more than the result has, for ROUNDED.
    Packed<7> angle;
    move(angle, rounded<1>(quotient(product(total, packed<6>(100000)), packed<4>(3600))));
    if (negative) negate(angle);
    return angle;
}

void loadOneZone()
{
    ZoneRecord &zone = zoneFile.record;
    unstring(zoneText.record.text, sizeof zoneText.record.text, "\t", countryList, place, name);
    move(zone.name, name);
    move(zone.country, countryList);
    move(zone.countries, packed<3>(tallyAll(countryList, ",") + 1));
    // The second sign parts latitude and longitude.
    unstring(place.bytes + 1, sizeof place.bytes - 1, "+- ", latitudeText, longitudeText);
    if (!isNumeric(latitudeText.bytes, 4) || !isNumeric(longitudeText.bytes, 5))
        return display("NO PLACE: ", zone.name);
    zone.latitude = 0;
    zone.longitude = 0;
    move(zone.latitude, computeAngle<2>(latitudeText.bytes, place.bytes[0] == '-'));
    move(zone.longitude, computeAngle<3>(longitudeText.bytes, place.bytes[5] == '-' || place.bytes[7] == '-'));
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
