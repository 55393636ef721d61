// The simulated recorder's channel reader: its states, its end, what it refuses, faults and the guest watch. Which
// frames come, and in which order, stands in reader_test.cpp.
#include <gtest/gtest.h>

#include <filesystem>

#include "core/scenario.h"
#include "recorded.h"
#include "recorder_test_support.h"

namespace {

using recorded::FPS;
using recorded::GOP;
using recorded::List;
using recorded::MAIN;
using recorded::Player;
using recorded::SUB;
using recorded::UNTIL;
using recorder_test::NewComplaints;

const testing::Environment* const RECORDER =
    testing::AddGlobalTestEnvironment(new recorded::Recorder(recorded::HISTORY));

constexpr uint64_t PERIOD = 1000 / FPS;  // milliseconds from picture to picture

class ReaderStateTest : public testing::Test {
protected:
    const List m_list{0};
    const std::vector<vexo_rec_file> m_files = m_list.Files();
};

TEST_F(ReaderStateTest, End_StaysTheEnd_AndASeekGoesOn) {
    Player player(m_list);
    player.Rest();
    unsigned char* frame = reinterpret_cast<unsigned char*>(&player);
    EXPECT_NE(player->read_frame(&frame, 0), 0);
    EXPECT_EQ(frame, nullptr);
    player->seek(m_files[3].start);
    EXPECT_TRUE(player.Next());
}

TEST_F(ReaderStateTest, NotOpenOrNotStarted_ReadFails) {
    Player player;
    unsigned char* frame = nullptr;
    EXPECT_NE(player->read_frame(&frame, 0), 0);
    EXPECT_NE(player->start(), 0);
    EXPECT_NE(player->seek(UNTIL), 0);
    ASSERT_EQ(player->open(m_list.Get()), 0);
    EXPECT_NE(player->read_frame(&frame, 0), 0);
    ASSERT_EQ(player->start(), 0);
    EXPECT_EQ(player->read_frame(&frame, 0), 0);
}

TEST_F(ReaderStateTest, Close_Twice_IsHarmless_AndOpenBeginsAgain) {
    Player player(m_list);
    player.Next();
    EXPECT_EQ(player->close(), 0);
    EXPECT_EQ(player->close(), 0);
    EXPECT_FALSE(player.Next());
    ASSERT_EQ(player->open(m_list.Get()), 0);
    ASSERT_EQ(player->start(), 0);
    const auto first = player.Next();
    ASSERT_TRUE(first);
    EXPECT_EQ(first->Milliseconds(), m_files[0].start * 1000ULL);
}

TEST_F(ReaderStateTest, SettingsBeforeOpen_AreKept) {
    Player player;
    EXPECT_EQ(player->set_stream_type(SUB), 0);
    EXPECT_EQ(player->set_direction(1), 0);
    EXPECT_EQ(player->set_frame_mode(0), 0);
    player->open(m_list.Get());
    player->start();
    const auto frame = player.Next();
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->header.frame_type, unsigned{VEXO_FRAME_SUB_KEY});
    EXPECT_EQ(frame->Milliseconds(), m_files[3].stop * 1000ULL - GOP * PERIOD);
}

TEST_F(ReaderStateTest, WrongValues_AreRefused) {
    Player player(m_list);
    for (const unsigned mode : {1U, 3U, 0xFFFFFFFFU}) {
        EXPECT_NE(player->set_frame_mode(mode), 0);
    }
    for (const unsigned type : {0U, 3U, 128U}) {
        EXPECT_NE(player->set_stream_type(type), 0);
    }
    EXPECT_NE(player->set_direction(2), 0);
    EXPECT_NE(player->read_frame(nullptr, 0), 0);
    EXPECT_TRUE(player.Next());
}

TEST_F(ReaderStateTest, Open_ListThatIsNotOut_FailsWithAComplaint) {
    vexo_rec_file_inquiry_result* freed = nullptr;
    ASSERT_EQ(recorded::Inquire(0, UNTIL - 10, UNTIL, recorded::ALL_TYPES, 0, &freed), 0);
    vexo_model_free_inquiry_rec_result(freed);
    Player player;
    for (vexo_rec_file_inquiry_result* list : {freed, static_cast<vexo_rec_file_inquiry_result*>(nullptr)}) {
        const NewComplaints complaints;
        EXPECT_NE(player->open(list), 0);
        EXPECT_EQ(complaints.Text(), "vexo_avss_file_reader::open with a list that is not handed out\n");
    }
}

TEST_F(ReaderStateTest, Faults_EachOperationFailsOnOrderAndWorksAgain) {
    Player player(m_list);
    unsigned char* frame = nullptr;
    const std::pair<const char*, std::function<int()>> operations[] = {
        {"open", [&] { return player->open(m_list.Get()); }},
        {"start", [&] { return player->start(); }},
        {"set_frame_mode", [&] { return player->set_frame_mode(2); }},
        {"set_stream_type", [&] { return player->set_stream_type(MAIN); }},
        {"set_direction", [&] { return player->set_direction(0); }},
        {"set_time_range", [&] { return player->set_time_range(0, UNTIL); }},
        {"seek", [&] { return player->seek(m_files[0].start); }},
        {"read_frame", [&] { return player->read_frame(&frame, 0); }},
        {"release_frame", [&] { return player->release_frame(0); }},
        {"close", [&] { return player->close(); }},
    };
    for (const auto& [name, run] : operations) {
        simulator::control::Fail(std::string("vexo_avss_file_reader::") + name, 1);
        EXPECT_NE(run(), 0) << name;
        EXPECT_EQ(run(), 0) << name;
    }
    simulator::control::Fail("vexo_model_new_avss_reader", 1);
    EXPECT_EQ(vexo_model_new_avss_reader(VEXO_USER_HOSTMGR, "none"), nullptr);
}

TEST_F(ReaderStateTest, FileGone_IsPassedOver) {
    Player player(m_list);
    player.Next();
    player->seek(m_files[1].start);
    const std::filesystem::path folder = simulator::HomeFolder() + "/disk-1/channel-001";
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().string().find("-" + std::to_string(m_files[1].info_1) + ".mov") != std::string::npos) {
            std::filesystem::rename(entry.path(), entry.path().string() + ".gone");
        }
    }
    const auto frame = player.Next();
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() == ".gone") {
            std::filesystem::rename(entry.path(), folder / entry.path().stem());
        }
    }
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->Milliseconds(), m_files[2].start * 1000ULL);
}

TEST_F(ReaderStateTest, Watch_ReaderIsOutstandingUntilDeleted_AndDeletingTwiceIsComplainedOf) {
    const std::string line = "reader: player, user 97";
    const long before = recorder_test::CountOutstanding(line);
    vexo_avss_file_reader* reader = vexo_model_new_avss_reader(VEXO_USER_HOSTMGR, "player");
    EXPECT_EQ(recorder_test::CountOutstanding(line), before + 1);
    vexo_model_delete_avss_reader(reader, "test", "First");
    EXPECT_EQ(recorder_test::CountOutstanding(line), before);
    const NewComplaints complaints;
    vexo_model_delete_avss_reader(reader, "test", "Second");
    EXPECT_EQ(complaints.Text(), "reader given back that was not taken, or given back twice: by Second\n");
}

}  // namespace
