// Faults that this test is there to catch: a sort with spill files that crashes, hangs, loses
// records with a good status, or leaves its files behind where one allocation, or one call of the
// system, fails below it.
#include <cstdlib>
#include <filesystem>

#include "statement.h"
#include "support/failing_calls.h"

namespace {

constexpr size_t kCount = 9000, kLength = 60;

// An INPUT and an OUTPUT PROCEDURE over more records than the memory holds. A RELEASE that failed
// has not released; what was released comes back in order, or a status tells that it does not.
void sortAndLook()
{
    static Statement sort(ZVK_SORT_FIXED, kLength, 8);
    sort.eighth[1] = 300 << 10;
    if (sort.op(1) != 0) return;
    std::vector<std::string> records;
    for (size_t i = 0; i < kCount; i++) {
        std::string record = numbered(i, kLength);
        if (release(record) == 7) records.push_back(std::move(record));
    }
    if (sort.op(3) != 0) return;
    REQUIRE(records.size() + 1 >= kCount); // one call fails, so one record; or none can be released any more
    std::stable_sort(records.begin(), records.end());
    for (size_t i = 0;; i++) {
        const std::string record = next();
        if (record == "FAILED") return;
        if (record == "END") {
            REQUIRE(i == records.size());
            return;
        }
        REQUIRE(i < records.size() && record == records[i]);
    }
}

KVR2_PIECE(failing_sorts)
{
    for (Calls kind : {Calls::Storage, Calls::System}) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        if (kind == Calls::Storage) continue;
#endif
        auto nothingLeft = [] {
            bool kept = false;
            for (const auto &left : std::filesystem::directory_iterator(".")) {
                fprintf(stderr, "%s failed: %s is left\n", failingCall.name, left.path().c_str());
                kept = true;
                std::filesystem::remove(left.path());
            }
            REQUIRE(!kept || strcmp(failingCall.name, "unlink") == 0);
        };
        const int calls = failEach(kind, sortAndLook, {}, nothingLeft);
        printf("%d calls\n", calls);
        REQUIRE(calls > (kind == Calls::System ? 10 : 2));
    }
    REQUIRE(!testing::Test::HasFailure());
}

TEST(FailingSort, RecordsAreThereOrAFailureIsTold)
{
    TemporaryDirectory directory;
    ChildRun run = runPiece("failing_sorts", with(kReal, directory));
    EXPECT_GOOD(run) << run.out;
}

} // namespace
