// Catches: a date that is read by its places and gives another day or another status than the walk
// of its picture; a text whose blanks move what follows them.
#include <random>

#include "dateservices/fixed_layout.h"
#include "dateservices/known_pictures.h"
#include "dateservices/service_calls.h"
#include "dateservices/text_services.h"

namespace {

using namespace dates;

// By the walk alone: nothing is known of the picture.
uint32_t walked(const std::string &date, const std::string &picture, DateParts &parts)
{
    parts = DateParts{};
    std::string cleared(date.size() + 1, ' '), asked(picture.size() + 1, ' ');
    char *dateEnd = normalise(date.data(), date.size(), cleared.data());
    char *askedEnd = normalise(picture.data(), picture.size(), asked.data());
    Status status = scanDate(cleared.data(), dateEnd, pictureOf(asked.data(), askedEnd), parts, nullptr);
    if (status != kGood) return messageOfScan(Service::days, status);
    return messageOfValidation(Service::days, validateDate(parts, nullptr));
}

std::string dateUnder(std::string picture, std::mt19937 &random)
{
    struct Field {
        const char *letters;
        unsigned least, most;
    };
    for (char &c : picture) c = static_cast<char>(toupper(static_cast<unsigned char>(c)));
    for (Field field : {Field{"YYYY", 1581, 9999},
                        {"DDD", 1, 366},
                        {"DD", 1, 29},
                        {"MM", 1, 12},
                        {"HH", 0, 23},
                        {"MI", 0, 59},
                        {"SS", 0, 59},
                        {"999", 0, 999}}) {
        size_t at = picture.find(field.letters), width = strlen(field.letters);
        if (at == std::string::npos) continue;
        std::string digits = std::to_string(field.least + random() % (field.most - field.least + 1));
        picture.replace(at, width, std::string(width - digits.size(), '0') + digits);
    }
    return picture;
}

TEST(FixedLayouts, ReadWhatTheWalkReads)
{
    const char *const pictures[] = {
        "YYYY-MM-DD",  "DD.MM.YYYY",  "YYYYMMDD",        "YYYYDDD",      "MM/DD/YYYY HH:MI:SS",
        "YYYY MM DD",  "YYYY, MM DD", "YYYY.DDD ",       "YYYY--MM--DD", "yyyy-mm-dd hh:mi:ss.999",
        "DD-MM-YYYY.", "-YYYY-MM-DD", "HH:MI YYYY/MM/DD"};
    std::mt19937 random(7);
    int good = 0, bad = 0;
    for (const char *text : pictures) {
        std::string picture = text;
        GuardedString asked(picture);
        for (int round = 0; round < 6000; round++) {
            // A real date, then a few bytes of something else.
            std::string date = dateUnder(picture, random);
            static const char others[] = " /-.:0123459XaZ\t\xE9";
            for (unsigned n = random() % 3; n > 0; n--) {
                size_t at = random() % date.size();
                switch (random() % 3) {
                case 0:
                    date[at] = others[random() % (sizeof others - 1)];
                    break;
                case 1:
                    date.insert(at, 1, others[random() % (sizeof others - 1)]);
                    break;
                default:
                    if (date.size() > 1) date.erase(at, 1);
                }
            }
            DateParts expected, parts;
            uint32_t message = walked(date, picture, expected);
            GuardedString given(date);
            ASSERT_EQ(readDate(Service::days, given.get(), asked.get(), parts), message)
                << picture << " of '" << date << "'";
            (message == kSuccess ? good : bad)++;
            if (message != kSuccess) continue;
            ASSERT_EQ(lilianOf(parts), lilianOf(expected)) << picture << " of '" << date << "'";
            ASSERT_EQ(parts.hour * 3600 + parts.minute * 60 + parts.second,
                      expected.hour * 3600 + expected.minute * 60 + expected.second);
            ASSERT_EQ(parts.millisecond, expected.millisecond);
        }
    }
    EXPECT_GT(good, 10000);
    EXPECT_GT(bad, 10000);
    const char *const plain = "YYYY-MM-DD";
    const Picture *known = knownPicture(plain, 10, Clearing::Yes);
    ASSERT_TRUE(known && known->layout && known->layout->alone) << "nothing was read by its places";
}

} // namespace
