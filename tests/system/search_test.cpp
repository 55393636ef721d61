// Search over a hundred thousand recordings of a channel, which stand in the index alone.
#include <gtest/gtest.h>

#include <chrono>

#include "recorded.h"

namespace {

using recorded::List;

constexpr unsigned COUNT = 100000;
constexpr unsigned TYPES = 7;  // they take turns: every combination of three bits
constexpr long MINUTE = 60;    // each lasts so long, one after the other
constexpr long UNTIL = 1720173600;
constexpr long END = UNTIL - 3600;  // of the last one
constexpr long BEGIN = END - COUNT * MINUTE;

const testing::Environment* const RECORDER = testing::AddGlobalTestEnvironment(new recorded::Recorder(R"json({
    "name": "search test",
    "channels": 1,
    "recordings": {
        "live": "off",
        "history": {"hours": 1, "segments": 0, "until": "2024-07-05 12:00:00", "listed": 100000}
    }
})json"));

/** How many of the first so many files have a type that fits. */
template <class Fits>
unsigned Expected(unsigned from, unsigned to, const Fits& fits) {
    unsigned count = 0;
    for (unsigned i = from; i < to; ++i) {
        count += fits(i % TYPES + 1) ? 1 : 0;
    }
    return count;
}

TEST(LargeSearch, Everything_ComesInOrderAndWhole) {
    const List warm(0, END, UNTIL);
    const auto begun = std::chrono::steady_clock::now();
    const List list(0, BEGIN, UNTIL);
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - begun;
    RecordProperty("milliseconds", static_cast<int>(took.count()));
    unsigned count = 0;
    for (const vexo_rec_file* file = list.Get()->first; file != nullptr; file = file->next, ++count) {
        ASSERT_EQ(file->start, BEGIN + count * MINUTE);
        ASSERT_EQ(file->stop, file->start + MINUTE);
        ASSERT_EQ(file->type, count % TYPES + 1);
    }
    EXPECT_EQ(count, COUNT);
}

TEST(LargeSearch, TypesAndTime_FindExactlyTheirFiles) {
    constexpr unsigned FROM = 54321;
    constexpr unsigned TO = 64321;
    const long start = BEGIN + FROM * MINUTE;
    const long stop = BEGIN + TO * MINUTE - 1;
    for (unsigned mask = 1; mask <= TYPES; ++mask) {
        EXPECT_EQ(List(0, start, stop, mask, 0).Files().size(),
                  Expected(FROM, TO, [mask](unsigned type) { return (type & mask) != 0; }))
            << mask;
        EXPECT_EQ(List(0, start, stop, mask, 1).Files().size(),
                  Expected(FROM, TO, [mask](unsigned type) { return (type & mask) == mask; }))
            << mask;
    }
}

TEST(LargeSearch, OneMinute_FindsOneFile) {
    const std::vector<vexo_rec_file> files = List(0, BEGIN + 77777 * MINUTE + 20, BEGIN + 77777 * MINUTE + 40).Files();
    ASSERT_EQ(files.size(), 1U);
    EXPECT_EQ(files[0].start, BEGIN + 77777 * MINUTE);
}

// What is not on the disk any more is passed over: the end at once, and no crash.
TEST(LargeSearch, FilesWithoutPictures_ReadAsTheEnd) {
    const List list(0, BEGIN, BEGIN + 100 * MINUTE);
    recorded::Player player(list);
    EXPECT_FALSE(player.Next());
    player->set_direction(1);
    EXPECT_FALSE(player.Next());
}

}  // namespace
