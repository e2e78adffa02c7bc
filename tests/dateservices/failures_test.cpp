// Catches: a clock that cannot be read taken for a date; storage that runs out taken for a bad
// date, or for no eras; eras of a catalog that is missing.
//
// The linker leads the library's calls of the clock and of aligned_alloc here.
#include <ctime>
#include <sys/time.h>

#include "dateservices/date_parts.h"
#include "dateservices/service_calls.h"
#include "frame/messages.h"
#include "kvr2/dateservices.h"
#include "support/child.h"

static bool noClock, noStorage;

extern "C" {
int __real_gettimeofday(struct timeval *now, void *zone);
time_t __real_time(time_t *now);
void *__real_aligned_alloc(size_t alignment, size_t size);
int __wrap_gettimeofday(struct timeval *now, void *zone);
time_t __wrap_time(time_t *now);
void *__wrap_aligned_alloc(size_t alignment, size_t size);

int __wrap_gettimeofday(struct timeval *now, void *zone) { return noClock ? -1 : __real_gettimeofday(now, zone); }
time_t __wrap_time(time_t *now) { return noClock ? static_cast<time_t>(-1) : __real_time(now); }
void *__wrap_aligned_alloc(size_t alignment, size_t size)
{
    return noStorage ? nullptr : __real_aligned_alloc(alignment, size);
}
}

namespace {

struct Without {
    bool &what;
    explicit Without(bool &flag) : what(flag) { what = true; }
    ~Without() { what = false; }
};

TEST(DateFailures, AClockThatCannotBeRead)
{
    Without clock(noClock);
    int32_t day = 7, hours, minutes;
    double seconds = 7;
    char text[17], date[9] = "????????";
    FeedbackCode fc;
    LSVGMT(&day, &seconds, &fc);
    EXPECT_EQ(tokenOf(fc), 2503);
    EXPECT_EQ(day, 0);
    EXPECT_EQ(seconds, 0.0);
    LSVLOCT(&day, &seconds, text, &fc);
    EXPECT_EQ(tokenOf(fc), 2503);
    EXPECT_EQ(std::string(text, 17), std::string(17, '0'));
    LSVGMTO(&hours, &minutes, &seconds, &fc);
    EXPECT_EQ(tokenOf(fc), 2503);
    EXPECT_EQ(hours * 60 + minutes, 0);
    TKJEDT4(date, &fc);
    EXPECT_EQ(tokenOf(fc), 2531);
    EXPECT_EQ(date[0], 0);
    LsvUnsigned century = 50;
    LSVSCEN(&century, &fc);
    EXPECT_EQ(tokenOf(fc), 2502);
    // The window of a year of two digits ends today; one of four digits asks no clock.
    EXPECT_EQ(days("26-11-22", "YY-MM-DD").token, 2513);
    EXPECT_EQ(days("2026-11-22", "YYYY-MM-DD").token, 0);
}

TEST(DateFailures, StorageThatRunsOut)
{
    std::string blanks(900, ' ');
    ASSERT_EQ(days("2026-11-22", "YYYY-MM-DD" + blanks).token, 0);
    ASSERT_EQ(days("R08-11-22" + blanks, "<JJJJ>YY-MM-DD").token, days("R08-11-22", "<JJJJ>YY-MM-DD").token);
    Text reiwa = date(161000, "<JJJJ>YY.MM.DD");
    ASSERT_EQ(reiwa.token, 0);
    {
        Without storage(noStorage);
        EXPECT_EQ(days("2026-11-22", "YYYY-MM-DD").token, 0); // needs none
        EXPECT_EQ(days("2026-11-22", "YYYY-MM-DD" + blanks).token, 813);
        EXPECT_EQ(days(reiwa.value, "<JJJJ>YY.MM.DD").token, 813);
        EXPECT_EQ(date(161000, "<JJJJ>YY.MM.DD").token, 813);
    }
    EXPECT_EQ(days(reiwa.value, "<JJJJ>YY.MM.DD").value, 161000);
}

TEST(DateFailures, ErasOfACatalogThatIsMissing)
{
    ChildRun run = runChild(
        [] {
            zvkWriteMsg(0, ZVK_MSG_CLOSE_CATALOG);
            zvkWriteMsg(0, ZVK_MSG_OPEN_CATALOG); // where NLSPATH says now
            Text written = date(161000, "<JJJJ>YY.MM.DD");
            printf("token %d\n", written.token);
        },
        {.env = {{"NLSPATH", "/nonexistent/%N"}}});
    EXPECT_NE(run.err.find("ZVK206"), std::string::npos) << run.err;
}

// A catalog whose text of eras does not begin with a count gives no table, and that is no failure.
TEST(DateFailures, WithoutATableOfErasLettersAreLetters)
{
    char out[dates::kOutput];
    memset(out, ' ', sizeof out);
    dates::DateParts parts{};
    dates::setDate(parts, 162246);
    const char picture[] = "<JJJJ>YYYY YY";
    parts.eraKind = dates::kJapanese;
    EXPECT_EQ(dates::writeDate(out, dates::pictureOf(picture, picture + strlen(picture)), parts, nullptr),
              dates::kGood);
    EXPECT_EQ(trimmed(out), "<JJJJ>2026 26");
}

} // namespace
