// The simulated recorder's advance reader: what it pushes, in which order, and when it offers a frame again. What
// remove_reader, stop and deletion promise stands in advance_stop_test.cpp. Time is not measured here: order and counts
// show it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>

#include "pushed.h"

namespace {

using live::Eventually;
using pushed::AdvanceReaderTest;
using pushed::Call;
using pushed::Excerpt;
using pushed::REFUSED;
using recorded::GOP;
using recorded::List;
using recorded::Player;
using testing::IsEmpty;

const testing::Environment* const RECORDER =
    testing::AddGlobalTestEnvironment(new recorded::Recorder(recorded::HISTORY));

std::vector<uint64_t> TimesFor(const std::vector<Call>& calls, const void* para) {
    std::vector<uint64_t> times;
    for (const Call& call : calls) {
        if (call.frame && call.para == para) {
            times.push_back(call.frame->Milliseconds());
        }
    }
    return times;
}

std::vector<uint64_t> TimesOf(const std::vector<Call>& calls) {
    std::vector<uint64_t> times;
    for (const Call& call : calls) {
        if (call.frame) {
            times.push_back(call.frame->Milliseconds());
        }
    }
    return times;
}

// ---- what is pushed ------------------------------------------------------------------------------------------------

TEST_F(AdvanceReaderTest, TwoReaders_EachGetsAllItsFramesMergedByTime_AndItsEnd) {
    Excerpt main(0);
    Excerpt sub(0);
    sub->set_stream_type(recorded::SUB);
    const std::vector<uint64_t> main_times = main.Times();
    const std::vector<uint64_t> sub_times = sub.Times();
    ASSERT_EQ(m_reader->add_reader(main.Get(), &main), 0);
    ASSERT_EQ(m_reader->add_reader(sub.Get(), &sub), 0);
    ASSERT_EQ(m_reader->start(0), 0);
    ASSERT_TRUE(Ended(2));
    m_reader->stop();
    const std::vector<Call> calls = Calls();
    EXPECT_EQ(TimesFor(calls, &main), main_times);
    EXPECT_EQ(TimesFor(calls, &sub), sub_times);
    const std::vector<uint64_t> all = TimesOf(calls);
    EXPECT_TRUE(std::is_sorted(all.begin(), all.end()));
    for (const Call& call : calls) {
        EXPECT_EQ(call.valid, call.frame.has_value());
        if (call.frame && recorded::IsVideo(*call.frame)) {
            EXPECT_EQ(call.frame->header.width, call.para == &main ? 320 : 160);
        }
    }
}

TEST_F(AdvanceReaderTest, TwoChannels_WholeHistoryByKeyFrames_InTheOrderOfTime) {
    const List lists[] = {List(0), List(1)};
    Player players[] = {Player(lists[0]), Player(lists[1])};
    for (Player& player : players) {
        player->set_frame_mode(0);
        m_reader->add_reader(player.Get(), &player);
    }
    m_reader->start(0);
    ASSERT_TRUE(Ended(2));
    m_reader->stop();
    const std::vector<Call> calls = Calls();
    const std::vector<uint64_t> all = TimesOf(calls);
    EXPECT_EQ(all.size(), 2 * recorded::SEGMENTS * recorded::LENGTH * recorded::FPS / GOP);
    EXPECT_TRUE(std::is_sorted(all.begin(), all.end()));
    EXPECT_EQ(TimesFor(calls, &players[0]).size(), TimesFor(calls, &players[1]).size());
}

TEST_F(AdvanceReaderTest, Backward_LatestFirst) {
    const List lists[] = {List(0), List(1)};
    Player players[] = {Player(lists[0]), Player(lists[1])};
    for (Player& player : players) {
        player->set_frame_mode(0);
        player->set_direction(1);
        m_reader->add_reader(player.Get(), &player);
    }
    m_reader->start(0);
    ASSERT_TRUE(Ended(2));
    m_reader->stop();
    const std::vector<uint64_t> all = TimesOf(Calls());
    EXPECT_EQ(all.size(), 2 * recorded::SEGMENTS * recorded::LENGTH * recorded::FPS / GOP);
    EXPECT_TRUE(std::is_sorted(all.rbegin(), all.rend()));
}

// The recorder may be late, but it is never ahead of the recorded pace.
TEST_F(AdvanceReaderTest, Pace_NoFrameComesBeforeItsTime) {
    Excerpt excerpt(0);
    std::vector<std::chrono::steady_clock::time_point> moments;
    m_log.answer = [&](const Call&) {
        moments.push_back(std::chrono::steady_clock::now());
        return 0U;
    };
    m_reader->add_reader(excerpt.Get(), &excerpt);
    const auto begun = std::chrono::steady_clock::now();  // the first frame is due later than that
    m_reader->start(0);
    ASSERT_TRUE(Ended(1));
    m_reader->stop();
    const std::vector<Call> calls = Calls();
    for (size_t i = 0; i + 1 < calls.size(); ++i) {
        const auto recorded =
            std::chrono::milliseconds(calls[i].frame->Milliseconds() - calls[0].frame->Milliseconds());
        EXPECT_GE(moments[i] - begun, recorded) << i;
    }
}

TEST_F(AdvanceReaderTest, Refused_TheSameFrameIsOfferedAgain_AndNothingElseMeanwhile) {
    Excerpt first(0);
    Excerpt second(0);
    std::atomic<int> refusals{5};
    m_log.answer = [&](const Call& call) {
        return call.frame && call.frame->Key() && refusals > 0 && refusals-- > 0 ? REFUSED : 0U;
    };
    m_reader->add_reader(first.Get(), &first);
    m_reader->add_reader(second.Get(), &second);
    m_reader->start(0);
    ASSERT_TRUE(Ended(2));
    m_reader->stop();
    const std::vector<Call> calls = Calls();
    ASSERT_GT(calls.size(), 6U);
    for (int i = 1; i <= 5; ++i) {
        EXPECT_EQ(calls[i].para, calls[0].para);
        EXPECT_EQ(calls[i].frame->Milliseconds(), calls[0].frame->Milliseconds());
    }
    EXPECT_EQ(TimesFor(calls, &first).size(), TimesFor(calls, &second).size() + 5);
}

TEST_F(AdvanceReaderTest, End_Refused_IsToldAgainUntilItIsNot) {
    Excerpt excerpt(0);
    excerpt->set_frame_mode(0);
    std::atomic<int> refusals{2};
    m_log.answer = [&](const Call& call) { return !call.frame && refusals-- > 0 ? REFUSED : 0U; };
    m_reader->add_reader(excerpt.Get(), &excerpt);
    m_reader->start(0);
    ASSERT_TRUE(Ended(3));
    Excerpt other(0);
    other->set_frame_mode(0);
    m_reader->add_reader(other.Get(), &other);
    ASSERT_TRUE(Ended(4));
    m_reader->stop();
    EXPECT_EQ(Calls().back().para, &other);
}

TEST_F(AdvanceReaderTest, Seek_AfterTheEnd_GoesOnAndEndsAgain) {
    Excerpt excerpt(0);
    excerpt->set_frame_mode(0);
    m_reader->add_reader(excerpt.Get(), &excerpt);
    m_reader->start(0);
    ASSERT_TRUE(Ended(1));
    const size_t before = Count();
    ASSERT_EQ(m_reader->seek(excerpt.Start() + 2), 0);
    ASSERT_TRUE(Ended(2));
    m_reader->stop();
    const std::vector<Call> calls = Calls();
    ASSERT_EQ(calls.size(), before + 3);
    EXPECT_EQ(calls[before].frame->Milliseconds(), (excerpt.Start() + 2) * 1000ULL);
    EXPECT_EQ(calls[before + 1].frame->Milliseconds(), (excerpt.Start() + 3) * 1000ULL);
}

TEST_F(AdvanceReaderTest, ReaderNotStarted_IsNotPushed_UntilItIs) {
    const List list(0);
    Player idle;
    Excerpt excerpt(0);
    excerpt->set_frame_mode(0);
    m_reader->add_reader(idle.Get(), &idle);
    m_reader->add_reader(excerpt.Get(), &excerpt);
    m_reader->start(0);
    ASSERT_TRUE(Ended(1));
    EXPECT_THAT(TimesFor(Calls(), &idle), IsEmpty());
    idle->open(list.Get());
    idle->set_frame_mode(0);
    idle->start();
    EXPECT_TRUE(Eventually([&] { return !TimesFor(Calls(), &idle).empty(); }));
}

TEST_F(AdvanceReaderTest, ReaderClosed_IsNotPushedAnyMore) {
    Excerpt excerpt(0);
    m_reader->add_reader(excerpt.Get(), &excerpt);
    m_reader->start(0);
    ASSERT_TRUE(Eventually([&] { return Count() > 2; }));
    excerpt->close();
    m_reader->stop();
    const size_t count = Count();
    m_reader->start(0);
    Excerpt other(0);
    other->set_frame_mode(0);
    m_reader->add_reader(other.Get(), &other);
    ASSERT_TRUE(Ended(1));  // that of the other
    const std::vector<Call> calls = Calls();
    EXPECT_TRUE(std::all_of(calls.begin() + count, calls.end(), [&](const Call& c) { return c.para == &other; }));
}

}  // namespace
