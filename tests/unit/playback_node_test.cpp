// A play's channels: how one is made and configured, what is left when that fails, and how it is taken out again.
#include "playback_fixture.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;

using namespace vexo_soft;

class PlayNode : public PlaybackFixture {
protected:
    /** The calls of a start, without the lock's and the thread's. */
    Lines CallsOfStart(int lChannel = 1) {
        platform.TakeCalls();
        RawConsole([&] { Start(lChannel); });
        return Without("vexo_utility_creat_thread", Without(PLAY_LOCK, platform.TakeCalls()));
    }

    /** What a start prints, without its first line. */
    std::string PrintedByStart(int* hStream, int lChannel = 1) {
        const std::string first =
            Debug("HostMgr_Dev_StartHistoryPlay", "**************HostMgr_Dev_StartHistoryPlay****************!!!\n");
        const std::string printed = Console([&] { *hStream = Start(lChannel); });
        EXPECT_EQ(printed.substr(0, first.size()), first);
        return printed.substr(first.size());
    }
};

// ---- making --------------------------------------------------------------------------------------------------------

static const char INQUIRY[] =
    "vexo_model_inquiry_rec_by_time(1281, 97, 0, 2024-7-5 12:0:0, 2024-7-5 13:0:0, 0xffff, 0)";
static const char NEW_READER[] = "vexo_model_new_avss_reader(97, avss reader for hostmgr playback)";

static std::string NodeMalloc() {
    return "vexo_utility_malloc(97, 0x80003, " + std::to_string(sizeof(HostMgrPlayNode)) + ", 1)";
}

TEST_F(PlayNode, Add_AsksOpensConfiguresAndStartsInThisOrder) {
    EXPECT_THAT(CallsOfStart(),
                ElementsAre(INQUIRY, NEW_READER, NodeMalloc(), "reader1.open(files0)", "reader1.set_stream_type(1)",
                            "reader1.set_direction(0)", "reader1.set_frame_mode(2)", "reader1.start()",
                            "reader1.set_time_range(1720180800, 1720184400)"));
}

TEST_F(PlayNode, Add_PrintsBothTimesWithTheirSeconds) {
    int hStream = 0;
    EXPECT_EQ(
        PrintedByStart(&hStream),
        Debug("HostMgrAddPlayNode", "**** StartTime 2024-07-05 12:00:00, linux_time_start 1720180800 ******\n") +
            Debug("HostMgrAddPlayNode", "**** StopTime  2024-07-05 13:00:00, linux_time_stop 1720184400 ******\n"));
    EXPECT_EQ(hStream, 0x5010001);
}

TEST_F(PlayNode, Add_HandleIsLoginAndChannelFromOne) {
    EXPECT_EQ(Start(256), 0x5010100);
    EXPECT_EQ(Start(1, 0, 0xFFFF), static_cast<int>(0xFFFF0001));
    EXPECT_EQ(Start(1, 0, 0x12345), 0x23450001) << "the login's low half";
}

TEST_F(PlayNode, Add_RangeBeyondTheClocksFields_KeepsTheirLowHalf) {
    _tagVexoHostMgrTime start = {0x12024, 0x10007, 5, 12, 0, 0, 0};
    _tagVexoHostMgrTime stop = HostTime(13, 0, 0);
    play->HostMgr_Dev_StartHistoryPlay(LOGIN, 1, 0, &start, &stop);
    EXPECT_THAT(With("inquiry", platform.TakeCalls()), ElementsAre(HasSubstr("8228-7-5 12:0:0")));
}

struct DirectionRow {
    const char* name;
    uint32_t direction;
    const char* call;
};
static void PrintTo(const DirectionRow& row, std::ostream* out) {
    *out << row.name;
}
class PlayNodeDirection : public PlayNode, public testing::WithParamInterface<DirectionRow> {};

// The first speed command looks at the sign bit alone; see the control tests.
TEST_P(PlayNodeDirection, Add_PassesAnythingButZeroAsReverse) {
    Control(HOSTMGR_PLAYCMD_DIRECTION, GetParam().direction);
    EXPECT_THAT(With("set_direction", CallsOfStart()), ElementsAre(GetParam().call));
}
INSTANTIATE_TEST_SUITE_P(Each, PlayNodeDirection,
                         testing::Values(DirectionRow{"Forward", 0, "reader1.set_direction(0)"},
                                         DirectionRow{"One", 1, "reader1.set_direction(1)"},
                                         DirectionRow{"SignBit", 0xFFFFFFFF, "reader1.set_direction(1)"}),
                         ByName());

// ---- failures ------------------------------------------------------------------------------------------------------

TEST_F(PlayNode, InquiryRefused_IsNamedWithBothTimesAndLeavesNothing) {
    inquiryResult = -1;
    int hStream = 0;
    EXPECT_EQ(PrintedByStart(&hStream, 7),
              Error("HostMgrMallocPlayNode",
                    "vexo_model_inquiry_rec_by_time error Channel[6] StartTime[2024-07-05 12:00:00] "
                    "StopTime[2024-07-05 13:00:00]\n") +
                  Error("HostMgrAddPlayNode", "HostMgrMallocPlayNode failed!!\n"));
    EXPECT_EQ(hStream, -1);
    EXPECT_EQ(Readers(), 0u);
    EXPECT_THAT(platform.LiveMemory(), IsEmpty());
}

TEST_F(PlayNode, NoReader_FreesTheListBeforeItSaysSo) {
    noReader = true;
    int hStream = 0;
    EXPECT_EQ(PrintedByStart(&hStream), Error("HostMgrMallocPlayNode", "vexo_model_new_avss_reader failed!!\n") +
                                            Error("HostMgrAddPlayNode", "HostMgrMallocPlayNode failed!!\n"));
    EXPECT_EQ(hStream, -1);
    EXPECT_THAT(With("free", platform.TakeCalls()), ElementsAre("vexo_model_free_inquiry_rec_result()"));
    ExpectNothingHeld();
}

// Reader and list stay with the recorder: stated, and its accounting shows it.
TEST_F(PlayNode, NoMemory_LeavesReaderAndListAllocated) {
    platform.FailMalloc(1);
    int hStream = 0;
    EXPECT_EQ(PrintedByStart(&hStream), Error("HostMgrMallocPlayNode", "vexo_utility_malloc failed!!\n") +
                                            Error("HostMgrAddPlayNode", "HostMgrMallocPlayNode failed!!\n"));
    EXPECT_EQ(hStream, -1);
    const Lines calls = platform.TakeCalls();
    EXPECT_THAT(WithAny({"free", "delete", "reader1."}, calls), IsEmpty());
    EXPECT_FALSE(Reader().deleted);
}

TEST_F(PlayNode, FailedAdd_LeavesTheOtherChannelsPlaying) {
    Play(1);
    Reader().Add({0});
    inquiryResult = -1;
    RawConsole([&] { EXPECT_EQ(Start(2), -1); });
    EXPECT_THAT(At(0), ElementsAre("1"));
}

// An empty list is no failure: the channel ends with its first read.
TEST_F(PlayNode, NoRecordings_EndAtOnce) {
    Play();
    EXPECT_THAT(At(0), ElementsAre("end"));
}

// ---- deleting ------------------------------------------------------------------------------------------------------

TEST_F(PlayNode, Delete_ClosesTwiceAndFreesInThisOrder) {
    Start();
    platform.TakeCalls();
    EXPECT_EQ(Control(HOSTMGR_PLAYCMD_DELCHAN, 1), 0);
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAreArray(Joined({UnderPlayLock("HostMgrHistoryStreamPlayControl"), NodeFreed("reader1")})));
    ExpectNothingHeld();
}

TEST_F(PlayNode, DeleteWithAdvanceReader_RemovesBetweenTheCloses) {
    StartV2();
    platform.TakeCalls();
    EXPECT_EQ(Control(HOSTMGR_PLAYCMD_DELCHAN, 1), 0);
    EXPECT_THAT(
        platform.TakeCalls(),
        ElementsAreArray(Joined({UnderPlayLock("HostMgrHistoryStreamPlayControl"), NodeFreed("reader1", "advance1")})));
}

TEST_F(PlayNode, DeleteOfAChannelThatIsNotThere_SaysSo) {
    Start(1);
    EXPECT_EQ(Console([this] { EXPECT_EQ(Control(HOSTMGR_PLAYCMD_DELCHAN, 2), -1); }),
              Debug("HostMgrHistoryStreamPlayControl", "PlayCmd 0x9\n") + Error("HostMgrDelPlayNode", "Not find!!\n"));
    EXPECT_FALSE(Reader().deleted);
}

TEST_F(PlayNode, DeleteByAnotherLogin_FindsNothing) {
    Start(1);
    HostMgrPlayCtrlParam param = {};
    param.dwPlayCmd = HOSTMGR_PLAYCMD_DELCHAN;
    param.dwParam = 1;
    RawConsole([&] {
        EXPECT_EQ(play->HostMgrHistoryStreamPlayControl(LOGIN + 1, 0, 0, nullptr, 0, &param, sizeof(param), nullptr, 0),
                  -1);
    });
    EXPECT_FALSE(Reader().deleted);
}

struct DeleteRow {
    const char* name;
    uint32_t channel;
    std::vector<unsigned int> left;  // numbers of the readers, in list order
};
static void PrintTo(const DeleteRow& row, std::ostream* out) {
    *out << row.name;
}
class PlayNodePosition : public PlayNode, public testing::WithParamInterface<DeleteRow> {};

TEST_P(PlayNodePosition, Delete_LeavesTheOthersLinkedInOrder) {
    for (const int channel : {1, 2, 3})
        Start(channel);
    EXPECT_EQ(Control(HOSTMGR_PLAYCMD_DELCHAN, GetParam().channel), 0);
    Start(4);
    platform.TakeCalls();
    Speed(5);
    Lines expected;
    for (const unsigned int reader : GetParam().left)
        expected.push_back("reader" + std::to_string(reader) + ".set_frame_mode(0)");
    EXPECT_THAT(With("set_frame_mode(0)", platform.TakeCalls()), ElementsAreArray(expected));
    EXPECT_EQ(Stop(), 0);
    ExpectNothingHeld();
}
INSTANTIATE_TEST_SUITE_P(Each, PlayNodePosition,
                         testing::Values(DeleteRow{"Head", 1, {2, 3, 4}}, DeleteRow{"Middle", 2, {1, 3, 4}},
                                         DeleteRow{"Tail", 3, {1, 2, 4}}),
                         ByName());

TEST_F(PlayNode, OnlyOneDeleted_TheNextIsHeadAndTail) {
    Play(1);
    EXPECT_EQ(Control(HOSTMGR_PLAYCMD_DELCHAN, 1), 0);
    EXPECT_THAT(Dump(), HasSubstr("回放节点数:0\n"));
    RawConsole([&] { Receive(Start(2)); });
    Reader(2).Add({0});
    EXPECT_THAT(At(0), ElementsAre("1"));
    EXPECT_THAT(Dump(), HasSubstr("回放节点数:1\n"));
}

// ---- one channel twice ---------------------------------------------------------------------------------------------

TEST_F(PlayNode, OneChannelTwice_HasOneHandleAndTwoReaders) {
    EXPECT_EQ(Start(3), Start(3));
    EXPECT_EQ(Readers(), 2u);
}

TEST_F(PlayNode, OneChannelTwice_DeleteTakesTheFirst) {
    Start(3);
    Start(3);
    EXPECT_EQ(Control(HOSTMGR_PLAYCMD_DELCHAN, 3), 0);
    EXPECT_TRUE(Reader(1).deleted);
    EXPECT_FALSE(Reader(2).deleted);
}

TEST_F(PlayNode, OneChannelTwice_TheCallbackGoesToTheFirst) {
    const int hStream = Play(3);
    RawConsole([&] { Start(3); });
    Receive(hStream);
    Reader(1).Add(1, VEXO_FRAME_MAIN_KEY, 0);
    Reader(2).Add(2, VEXO_FRAME_MAIN_KEY, 0);
    EXPECT_THAT(At(0), ElementsAre("1"));
}

// The end of either takes the first in the list away, without an end mark; the other goes with the next pass.
TEST_F(PlayNode, OneChannelTwice_TheSecondsEndDeletesTheFirst) {
    const int hStream = Play(3, HOSTMGR_PLAYMODE_DOWNLOAD);
    Reader(1).Add({0, 40, 80});
    EXPECT_THAT(At(0), ElementsAre("1"));
    RawConsole([&] { Start(3); });
    EXPECT_THAT(At(10), ElementsAre("2")) << "the second has no callback, and its end goes nowhere";
    EXPECT_TRUE(Reader(1).deleted);
    EXPECT_FALSE(Reader(2).deleted);
    Receive(hStream);
    EXPECT_THAT(At(20), IsEmpty()) << "a finished channel gets no second end mark";
    EXPECT_TRUE(Reader(2).deleted);
    Stop();
    ExpectNothingHeld();
}

TEST_F(PlayNode, OneChannelTwice_BothEndTogetherAndBothGo) {
    Play(3);
    RawConsole([&] { Start(3); });
    EXPECT_THAT(At(0), ElementsAre("end"));
    EXPECT_TRUE(Reader(1).deleted);
    EXPECT_TRUE(Reader(2).deleted);
}

// ---- the object ----------------------------------------------------------------------------------------------------

TEST_F(PlayNode, DestructionOfAPlay_JoinsThenFreesFromTheHead) {
    Start(1);
    Start(2);
    platform.TakeCalls();
    play.reset();
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAreArray(Joined({{"vexo_utility_retrieve_thread(1)"},
                                         NodeFreed("reader1"),
                                         NodeFreed("reader2"),
                                         {"vexo_utility_delete_lock(vexo_hostmgr_playback lock, vexo_hostmgr_playback, "
                                          "~vexo_hostmgr_playback)"}})));
    ExpectNothingHeld();
}

TEST_F(PlayNode, DestructionOfAReaderPlay_DeletesTheAdvanceReaderWithoutStoppingIt) {
    PlayV2();
    play.reset();
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAreArray(
                    Joined({NodeFreed("reader1", "advance1"),
                            {"vexo_model_delete_advance_avss_reader(vexo_hostmgr_playback, ~vexo_hostmgr_playback)",
                             "advance1.deleted()",
                             "vexo_utility_delete_lock(vexo_hostmgr_playback lock, vexo_hostmgr_playback, "
                             "~vexo_hostmgr_playback)"}})));
    ExpectNothingHeld();
}
