// The simulated recorder's advance reader: what it pushes, in which order, when it offers a frame again, and what
// remove_reader and stop promise. Time is not measured here: order and counts show it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>

#include "recorded.h"
#include "recorder_test_support.h"

namespace {

using live::Eventually;
using live::Frame;
using recorded::GOP;
using recorded::List;
using recorded::Player;
using recorder_test::NewComplaints;
using testing::IsEmpty;

constexpr unsigned REFUSED = 0x401A0000;

const testing::Environment* const RECORDER =
    testing::AddGlobalTestEnvironment(new recorded::Recorder(recorded::HISTORY));

/** One call of the callback. */
struct Call {
    const void* para;
    bool valid;
    std::optional<Frame> frame;  ///< nothing: the end
};

/** What the callbacks of a test did; the callback has no pointer of its own but the reader's. */
struct Log {
    std::mutex mutex;
    std::vector<Call> calls;                                                       // guarded by mutex
    std::function<unsigned(const Call&)> answer = [](const Call&) { return 0U; };  ///< without the mutex
};
Log* g_log = nullptr;

unsigned int OnFrame(void* para, VEXO_BOOL valid, unsigned char* bytes) {
    Call call = {para, valid != VEXO_FALSE, std::nullopt};
    if (bytes != nullptr) {
        call.frame = live::CopyOf(bytes, {}, VEXO_FALSE);
    }
    {
        std::lock_guard<std::mutex> lock(g_log->mutex);
        g_log->calls.push_back(call);
    }
    return g_log->answer(call);
}

class AdvanceReaderTest : public testing::Test {
protected:
    AdvanceReaderTest() {
        g_log = &m_log;
        m_reader = vexo_model_new_advance_avss_reader(VEXO_USER_HOSTMGR, "advance");
        EXPECT_EQ(m_reader->set_callback(OnFrame), 0);
        EXPECT_EQ(m_reader->set_param(0), 0);
    }
    ~AdvanceReaderTest() override {
        Delete();
        g_log = nullptr;
    }

    void Delete() {
        if (m_reader != nullptr) {
            vexo_model_delete_advance_avss_reader(m_reader, "test", "Delete");
        }
        m_reader = nullptr;
    }

    size_t Count() {
        std::lock_guard<std::mutex> lock(m_log.mutex);
        return m_log.calls.size();
    }
    std::vector<Call> Calls() {
        std::lock_guard<std::mutex> lock(m_log.mutex);
        return m_log.calls;
    }
    size_t Ends() {
        const std::vector<Call> calls = Calls();
        return std::count_if(calls.begin(), calls.end(), [](const Call& call) { return !call.frame; });
    }
    bool Ended(size_t ends) {
        return Eventually([&] { return Ends() == ends; });
    }

    Log m_log;
    vexo_advance_avss_file_reader* m_reader = nullptr;
};

/** Three seconds of a recording, all frames, or as it is set then. */
class Excerpt {
public:
    explicit Excerpt(unsigned channel, size_t segment = 1)
        : m_list(channel), m_player(m_list), m_start(m_list.Files()[segment].start) {
        m_player->set_time_range(m_start, m_start + 3);
    }
    vexo_avss_file_reader* operator->() const { return m_player.Get(); }
    vexo_avss_file_reader* Get() const { return m_player.Get(); }
    Player& Reader() { return m_player; }
    long Start() const { return m_start; }

    /** What it gives by itself. */
    std::vector<uint64_t> Times() {
        std::vector<uint64_t> times;
        for (const Frame& frame : m_player.Rest()) {
            times.push_back(frame.Milliseconds());
        }
        m_player->seek(m_start);
        return times;
    }

private:
    const List m_list;
    Player m_player;
    const long m_start;
};

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
    m_reader->start(0);
    ASSERT_TRUE(Ended(1));
    m_reader->stop();
    const std::vector<Call> calls = Calls();
    for (size_t i = 0; i + 1 < calls.size(); ++i) {
        const auto recorded =
            std::chrono::milliseconds(calls[i].frame->Milliseconds() - calls[0].frame->Milliseconds());
        EXPECT_GE(moments[i] - moments[0] + std::chrono::milliseconds(20), recorded) << i;
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

// ---- removing, stopping, deleting ----------------------------------------------------------------------------------

/** Holds the first callback until it is let go. */
class Gate {
public:
    void Wait() {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_reached = true;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_open; });
    }
    void AwaitReached() {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return m_reached; });
    }
    void Open() {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_open = true;
        m_changed.notify_all();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_reached = false;
    bool m_open = false;
};

/** Runs an operation on another thread while the first callback runs; whether it returned after that callback. */
bool ReturnsAfterTheCallback(Gate& gate, const std::atomic<bool>& callback_returned, const std::function<void()>& run) {
    std::atomic<bool> begun{false};
    bool in_order = false;
    std::thread other([&] {
        begun = true;
        run();
        in_order = callback_returned;
    });
    Eventually([&] { return begun.load(); });
    gate.Open();
    other.join();
    return in_order;
}

TEST_F(AdvanceReaderTest, RemoveReaderAndStop_ReturnOnlyWhenTheCallbackHasReturned) {
    const std::function<int(vexo_avss_file_reader*)> operations[] = {
        [&](vexo_avss_file_reader* reader) { return m_reader->remove_reader(reader); },
        [&](vexo_avss_file_reader*) { return m_reader->stop(); },
    };
    for (const auto& operation : operations) {
        Excerpt excerpt(0);
        Gate gate;
        std::atomic<bool> returned{false};
        m_log.answer = [&](const Call&) {
            gate.Wait();
            std::this_thread::sleep_for(std::chrono::milliseconds(20));  // room for one that does not wait
            returned = true;
            return 0U;
        };
        m_reader->add_reader(excerpt.Get(), &excerpt);
        m_reader->start(0);
        gate.AwaitReached();
        EXPECT_TRUE(ReturnsAfterTheCallback(gate, returned, [&] { EXPECT_EQ(operation(excerpt.Get()), 0); }));
        const size_t count = Count();
        m_reader->stop();
        EXPECT_EQ(Count(), count);
        m_reader->remove_reader(excerpt.Get());
    }
}

TEST_F(AdvanceReaderTest, RemoveReader_OfAnother_DoesNotWaitForTheCallback) {
    Excerpt running(0);
    Excerpt other(1);
    other->close();  // never pushed
    Gate gate;
    m_log.answer = [&](const Call&) {
        gate.Wait();
        return 0U;
    };
    m_reader->add_reader(running.Get(), &running);
    m_reader->add_reader(other.Get(), &other);
    m_reader->start(0);
    gate.AwaitReached();
    EXPECT_EQ(m_reader->remove_reader(other.Get()), 0);
    gate.Open();
}

TEST_F(AdvanceReaderTest, RemoveReader_FromItsOwnCallback_IsItsLastOne) {
    Excerpt excerpt(0);
    std::atomic<int> removed{-1};
    m_log.answer = [&](const Call&) {
        removed = m_reader->remove_reader(excerpt.Get());
        return 0U;
    };
    m_reader->add_reader(excerpt.Get(), &excerpt);
    m_reader->start(0);
    ASSERT_TRUE(Eventually([&] { return removed == 0; }));
    m_reader->stop();
    EXPECT_EQ(Count(), 1U);
}

TEST_F(AdvanceReaderTest, Callback_ClosesAndDeletesItsReader_FrameStaysUntilItReturns) {
    const List list(0);
    Player player(list);
    std::atomic<bool> intact{false};
    m_log.answer = [&](const Call& call) {
        m_reader->remove_reader(player.Get());
        player->close();
        player.Delete();
        intact = call.frame->header.magic == VEXO_FRAME_MAGIC;
        return 0U;
    };
    m_reader->add_reader(player.Get(), &player);
    m_reader->start(0);
    ASSERT_TRUE(Eventually([&] { return intact.load(); }));
    m_reader->stop();
    EXPECT_EQ(Count(), 1U);
}

TEST_F(AdvanceReaderTest, ReaderDeleted_LeavesItsAdvanceReader) {
    const List list(0);
    Player player(list);
    m_reader->add_reader(player.Get(), &player);
    m_reader->start(0);
    ASSERT_TRUE(Eventually([&] { return Count() > 0; }));
    player.Delete();
    const size_t count = Count();
    m_reader->stop();
    EXPECT_EQ(Count(), count);
}

TEST_F(AdvanceReaderTest, Stop_Twice_AndFromTheCallback_AndStartAgain) {
    Excerpt excerpt(0);
    std::atomic<bool> stopped{false};
    m_log.answer = [&](const Call&) {
        EXPECT_EQ(m_reader->stop(), 0);
        stopped = true;
        return 0U;
    };
    m_reader->add_reader(excerpt.Get(), &excerpt);
    m_reader->start(0);
    ASSERT_TRUE(Eventually([&] { return stopped.load(); }));
    EXPECT_EQ(m_reader->stop(), 0);
    EXPECT_EQ(m_reader->stop(), 0);
    EXPECT_EQ(Count(), 1U);
    m_log.answer = [](const Call&) { return 0U; };
    excerpt->set_frame_mode(0);
    EXPECT_EQ(m_reader->start(0), 0);
    EXPECT_EQ(m_reader->start(0), 0);  // runs already
    EXPECT_TRUE(Ended(1));
}

TEST_F(AdvanceReaderTest, Deleted_WhilePushing_NothingIsPushedAfterwards) {
    Excerpt excerpt(0);
    m_reader->add_reader(excerpt.Get(), &excerpt);
    m_reader->start(0);
    ASSERT_TRUE(Eventually([&] { return Count() > 0; }));
    Delete();
    const size_t count = Count();
    EXPECT_TRUE(excerpt.Reader().Next());
    EXPECT_EQ(Count(), count);
}

TEST_F(AdvanceReaderTest, DeletedFromItsCallback_EndsQuietly) {
    Excerpt excerpt(0);
    std::atomic<bool> deleted{false};
    m_log.answer = [&](const Call&) {
        Delete();
        deleted = true;
        return 0U;
    };
    m_reader->add_reader(excerpt.Get(), &excerpt);
    m_reader->start(0);
    ASSERT_TRUE(Eventually([&] { return deleted.load(); }));
    vexo_model_delete_avss_reader(vexo_model_new_avss_reader(VEXO_USER_HOSTMGR, "next"), "test", "test");
}

TEST_F(AdvanceReaderTest, Start_WithoutCallback_Fails) {
    m_reader->set_callback(nullptr);
    EXPECT_NE(m_reader->start(0), 0);
}

TEST_F(AdvanceReaderTest, StrangeReaders_AreRefused) {
    Player player;
    vexo_avss_file_reader* gone = vexo_model_new_avss_reader(VEXO_USER_HOSTMGR, "gone");
    vexo_model_delete_avss_reader(gone, "test", "test");
    const NewComplaints complaints;
    EXPECT_NE(m_reader->add_reader(gone, nullptr), 0);
    EXPECT_EQ(complaints.Text(), "vexo_advance_avss_file_reader::add_reader with a reader that is not handed out\n");
    EXPECT_NE(m_reader->remove_reader(player.Get()), 0);
    EXPECT_NE(m_reader->remove_reader(nullptr), 0);
}

TEST_F(AdvanceReaderTest, Faults_EachOperationFailsOnOrderAndWorksAgain) {
    Player player;
    const std::pair<const char*, std::function<int()>> operations[] = {
        {"add_reader", [&] { return m_reader->add_reader(player.Get(), nullptr); }},
        {"seek", [&] { return m_reader->seek(recorded::UNTIL); }},
        {"set_callback", [&] { return m_reader->set_callback(OnFrame); }},
        {"set_param", [&] { return m_reader->set_param(0); }},
        {"start", [&] { return m_reader->start(0); }},
        {"remove_reader", [&] { return m_reader->remove_reader(player.Get()); }},
        {"stop", [&] { return m_reader->stop(); }},
    };
    for (const auto& [name, run] : operations) {
        simulator::control::Fail(std::string("vexo_advance_avss_file_reader::") + name, 1);
        EXPECT_NE(run(), 0) << name;
        EXPECT_EQ(run(), 0) << name;
    }
    simulator::control::Fail("vexo_model_new_advance_avss_reader", 1);
    EXPECT_EQ(vexo_model_new_advance_avss_reader(VEXO_USER_HOSTMGR, "none"), nullptr);
}

TEST_F(AdvanceReaderTest, Watch_OutstandingUntilDeleted_AndDeletingTwiceIsComplainedOf) {
    const std::string line = "reader: advance reader advance, user 97";
    EXPECT_EQ(recorder_test::CountOutstanding(line), 1);
    vexo_advance_avss_file_reader* reader = m_reader;
    Delete();
    EXPECT_EQ(recorder_test::CountOutstanding(line), 0);
    const NewComplaints complaints;
    vexo_model_delete_advance_avss_reader(reader, "test", "Second");
    EXPECT_EQ(complaints.Text(), "reader given back that was not taken, or given back twice: by Second\n");
}

}  // namespace
