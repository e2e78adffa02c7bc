// Catches: a shift between the zones of two locales that goes the wrong way, is not reduced to a
// day, or touches an item that needs none.
#include "datetime/item.h"
#include "datetime/locale_table.h"
#include "datetime/locale_text.h"
#include "kvr2/run_unit.h"

namespace {

TEST(ZoneShift, ByTheDifferenceOfTheOffsets)
{
    struct {
        uint64_t length = 4;
        void *slots[4] = {};
    } table;
    static LocaleDescriptor *descriptors[2]; // kept to the end, as a run unit keeps them
    for (int i = 0; i < 2; i++) descriptors[i] = runRutCreateLocaleDescriptor("C", nullptr, 1, 0);
    table.slots[2] = descriptors[0];
    table.slots[3] = descriptors[1];
    LocaleProgram program{reinterpret_cast<MgtLocaleTable *>(&table), 1};
    RutLocaleTable rut{descriptors[0], descriptors[0], nullptr};
    _Dmr_rut.words[7] = reinterpret_cast<uint64_t>(&rut);
    Format from = isoStamp(), to = isoStamp();
    from.fd.hasLocale = to.fd.hasLocale = 1;
    from.fd.localeIndex = 2;
    to.fd.localeIndex = 3;
    auto shifted = [&](int32_t sender, int32_t receiver) {
        descriptors[0]->localeInfo->todInfo->utcOffset = static_cast<uint32_t>(sender);
        descriptors[1]->localeInfo->todInfo->utcOffset = static_cast<uint32_t>(receiver);
        Item item("2026-12-31-23:30:00.000000"), out(std::string(26, '?'));
        DateTime_retrieveTimeZoneDifference(item.get(), &from.fd, out.get(), &to.fd, 1950, &program, kNoCheck);
        return out.text().substr(0, 16);
    };
    EXPECT_EQ(shifted(0, 60), "2027-01-01-00:30");
    EXPECT_EQ(shifted(60, -330), "2026-12-31-17:00");
    EXPECT_EQ(shifted(-720, 750), "2027-01-01-00:00"); // 1470 minutes are 30
    EXPECT_EQ(shifted(120, 120), "2026-12-31-23:30");
    _Dmr_rut.words[7] = 0;
}

} // namespace
