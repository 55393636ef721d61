// The simulated recorder's advance reader: what remove_reader, stop and deletion promise, from inside and outside the
// callback; what it refuses, faults and the guest watch.
#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>

#include "pushed.h"
#include "recorder_test_support.h"

namespace {

using live::Eventually;
using AdvanceStopTest = pushed::AdvanceReaderTest;
using pushed::Call;
using pushed::Excerpt;
using pushed::OnFrame;
using recorded::List;
using recorded::Player;
using recorder_test::NewComplaints;

const testing::Environment* const RECORDER =
    testing::AddGlobalTestEnvironment(new recorded::Recorder(recorded::HISTORY));

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

TEST_F(AdvanceStopTest, RemoveReaderAndStop_ReturnOnlyWhenTheCallbackHasReturned) {
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

TEST_F(AdvanceStopTest, RemoveReader_OfAnother_DoesNotWaitForTheCallback) {
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
    m_reader->stop();
}

TEST_F(AdvanceStopTest, RemoveReader_FromItsOwnCallback_IsItsLastOne) {
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

TEST_F(AdvanceStopTest, Callback_ClosesAndDeletesItsReader_FrameStaysUntilItReturns) {
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

TEST_F(AdvanceStopTest, ReaderDeleted_LeavesItsAdvanceReader) {
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

TEST_F(AdvanceStopTest, Stop_Twice_AndFromTheCallback_AndStartAgain) {
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

TEST_F(AdvanceStopTest, Deleted_WhilePushing_NothingIsPushedAfterwards) {
    Excerpt excerpt(0);
    m_reader->add_reader(excerpt.Get(), &excerpt);
    m_reader->start(0);
    ASSERT_TRUE(Eventually([&] { return Count() > 0; }));
    Delete();
    const size_t count = Count();
    EXPECT_TRUE(excerpt.Reader().Next());
    EXPECT_EQ(Count(), count);
}

TEST_F(AdvanceStopTest, DeletedFromItsCallback_EndsQuietly) {
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

TEST_F(AdvanceStopTest, Start_WithoutCallback_Fails) {
    m_reader->set_callback(nullptr);
    EXPECT_NE(m_reader->start(0), 0);
}

TEST_F(AdvanceStopTest, StrangeReaders_AreRefused) {
    Player player;
    vexo_avss_file_reader* gone = vexo_model_new_avss_reader(VEXO_USER_HOSTMGR, "gone");
    vexo_model_delete_avss_reader(gone, "test", "test");
    const NewComplaints complaints;
    EXPECT_NE(m_reader->add_reader(gone, nullptr), 0);
    EXPECT_EQ(complaints.Text(), "vexo_advance_avss_file_reader::add_reader with a reader that is not handed out\n");
    EXPECT_NE(m_reader->remove_reader(player.Get()), 0);
    EXPECT_NE(m_reader->remove_reader(nullptr), 0);
}

TEST_F(AdvanceStopTest, Faults_EachOperationFailsOnOrderAndWorksAgain) {
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

TEST_F(AdvanceStopTest, Watch_OutstandingUntilDeleted_AndDeletingTwiceIsComplainedOf) {
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
