// The list of pictures: trimming, what stopping and logging out delete, and the checks of a list that is broken.
#include "capture_fixture.h"
#include "vexo_hostmgr_capture.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::ExitedWithCode;
using testing::IsEmpty;

using namespace vexo_soft;

/** Tasks of every second, so that each pass adds as many pictures as there are tasks. */
class CaptureList : public CaptureFixture {
protected:
    void StartTasks(int count) {
        for (int task = 0; task < count; ++task)
            Start(EverySecond(), task + 1);
    }
    /** The file of a task's picture of a pass, as FillTo runs them. */
    static std::string FileOf(int task, int pass) {
        return File("RT_CH" + std::to_string(task) + "_08000" + std::to_string(pass) + ".jpg");
    }
    void RunPasses(int first, int last) {
        for (int pass = first; pass <= last; ++pass)
            PassAt(At(8, 0, pass));
    }
    size_t PicturesKept() const { return m_files.size() - 1; }
};

// ---- trimming ------------------------------------------------------------------------------------------------------

// 480 tasks: eight passes make 3,840 pictures.
TEST_F(CaptureList, Picture3839_IsKeptLikeAllOthers) {
    StartTasks(480);
    RunPasses(0, 6);
    Stop(479 << 16 | LOGIN);
    RunPasses(7, 7);
    EXPECT_EQ(PicturesKept(), 3840u - 8);
    EXPECT_THAT(With("unlink", platform.TakeCalls()).size(), 7u);  // the stopped task's
}

TEST_F(CaptureList, Picture3840_DropsTheSixtyOldestAndTheirFiles) {
    StartTasks(480);
    RunPasses(0, 6);
    m_pictures.clear();
    SetClock(At(8, 0, 7), 0);
    const Lines calls = CallsOfPass();
    EXPECT_EQ(m_pictures.size(), 480u);
    EXPECT_EQ(PicturesKept(), 3780u);
    Lines dropped;
    for (int task = 0; task < 60; ++task)
        dropped = Joined({dropped,
                          {"vexo_utility_is_file_exist(" + FileOf(task, 0) + ")", "unlink(" + FileOf(task, 0) + ")",
                           "vexo_utility_free(vexo_hostmgr_capture, HostMgrAddCaptureNode, 0x80007)"}});
    // Once the last picture stands in the list, and before it is reported.
    const Lines last = {"callback(" + FileOf(479, 7) + ")"};
    ASSERT_GT(calls.size(), dropped.size());
    EXPECT_THAT(Lines(calls.end() - static_cast<long>(dropped.size()) - 1, calls.end()),
                ElementsAreArray(Joined({dropped, last})));
    EXPECT_EQ(With("unlink", calls).size(), 60u);
}

TEST_F(CaptureList, AfterTheTrimming_SixtyMorePicturesTrimAgain) {
    StartTasks(480);
    RunPasses(0, 7);
    platform.TakeCalls();
    RunPasses(8, 8);
    EXPECT_EQ(With("unlink", platform.TakeCalls()).size(), 480u);
    EXPECT_EQ(PicturesKept(), 3780u);
    EXPECT_EQ(m_files.count(FileOf(59, 1)), 0u);
    EXPECT_EQ(m_files.count(FileOf(60, 1)), 1u);
}

TEST_F(CaptureList, FilesThatAreGoneAlready_AreNotDeleted) {
    StartTasks(480);
    RunPasses(0, 6);
    for (int task = 0; task < 59; ++task)
        m_files.erase(FileOf(task, 0));
    platform.TakeCalls();
    RunPasses(7, 7);
    EXPECT_THAT(With("unlink", platform.TakeCalls()), ElementsAre("unlink(" + FileOf(59, 0) + ")"));
}

TEST_F(CaptureList, AllOfIt_IsGivenBackAtLogout) {
    StartTasks(576);
    RunPasses(0, 7);
    EXPECT_EQ(vexo_HostMgr_Dev_Logout(LOGIN), 0);
    EXPECT_THAT(Files(), ElementsAre(CAPTURE_DIR));
    EXPECT_THAT(platform.LiveMemory(), IsEmpty());
}

// ---- stopping ------------------------------------------------------------------------------------------------------

TEST_F(CaptureList, StopOfAnyTask_DeletesItsPicturesAlone) {
    // First, middle and last of the list, and then the rest.
    StartTasks(4);
    RunPasses(0, 2);
    for (const int task : {0, 2, 3, 1}) {
        EXPECT_EQ(Stop(task << 16 | LOGIN), 0);
        for (int pass = 0; pass < 3; ++pass)
            EXPECT_EQ(m_files.count(FileOf(task, pass)), 0u) << task;
    }
    EXPECT_THAT(Files(), ElementsAre(CAPTURE_DIR));
    StartTasks(1);
    RunPasses(3, 4);
    EXPECT_THAT(Files(), ElementsAre(CAPTURE_DIR, FileOf(0, 3), FileOf(0, 4)));
}

TEST_F(CaptureList, StopOfAnEmptyTask_DeletesNothing) {
    StartTasks(2);
    const int daily = Start(Daily(20, 0, 0));
    RunPasses(0, 2);
    platform.TakeCalls();
    EXPECT_EQ(Stop(daily), 0);
    EXPECT_THAT(WithAny({"unlink", "file_exist", "free"}, platform.TakeCalls()), IsEmpty());
    EXPECT_EQ(PicturesKept(), 6u);
}

TEST_F(CaptureList, StopInTheMiddle_LeavesTheOrderOfTheOthers) {
    StartTasks(3);
    RunPasses(0, 2);
    Stop(1 << 16 | LOGIN);
    platform.TakeCalls();
    vexo_HostMgr_Dev_Logout(LOGIN);
    EXPECT_THAT(
        With("unlink", platform.TakeCalls()),
        ElementsAre("unlink(" + FileOf(0, 0) + ")", "unlink(" + FileOf(2, 0) + ")", "unlink(" + FileOf(0, 1) + ")",
                    "unlink(" + FileOf(2, 1) + ")", "unlink(" + FileOf(0, 2) + ")", "unlink(" + FileOf(2, 2) + ")"));
}

TEST_F(CaptureList, FileThatCannotBeDeleted_IsForgottenAllTheSame) {
    ON_CALL(platform, unlink).WillByDefault(testing::Return(-1));
    StartTasks(1);
    RunPasses(0, 0);
    EXPECT_EQ(Stop(LOGIN), 0);
    EXPECT_THAT(Files(), ElementsAre(CAPTURE_DIR, FileOf(0, 0)));
    platform.TakeCalls();
    vexo_HostMgr_Dev_Logout(LOGIN);
    EXPECT_THAT(With("unlink", platform.TakeCalls()), IsEmpty());
}

// ---- a broken list -------------------------------------------------------------------------------------------------

/** Pictures whose nodes the test can see and spoil; freeing keeps them. */
class CaptureListDeathTest : public CaptureList {
protected:
    void SetUp() override {
        CaptureList::SetUp();
        ON_CALL(platform, vexo_utility_malloc)
            .WillByDefault([this](vexo_user_id, unsigned int, unsigned int size, unsigned int) -> void* {
                if (size != sizeof(HostMgrCaptureNode))
                    return nullptr;
                m_nodes.push_back(std::make_unique<HostMgrCaptureNode>());
                if (m_on_node)
                    m_on_node();
                return m_nodes.back().get();
            });
        ON_CALL(platform, vexo_utility_free).WillByDefault(testing::Return());
    }

    HostMgrCaptureNode* Node(size_t index) { return m_nodes.at(index).get(); }

    std::vector<std::unique_ptr<HostMgrCaptureNode>> m_nodes;
    std::function<void()> m_on_node;  // what happens when a node has been allocated
};

TEST_F(CaptureListDeathTest, TrimmingAcrossAGap) {
    EXPECT_EXIT(OnConsole([this] {
                    StartTasks(480);
                    RunPasses(0, 6);
                    Node(30)->next = nullptr;
                    RunPasses(7, 7);
                }),
                ExitedWithCode(255),
                FailedAssertion("vexo_hostmgr_capture", "HostMgrAddCaptureNode", "node->next != NULL"));
}

TEST_F(CaptureListDeathTest, TrimmingDownToTheLastWhileMoreAreCounted) {
    EXPECT_EXIT(OnConsole([this] {
                    StartTasks(480);
                    m_on_node = [this] {
                        if (m_nodes.size() == 3840)
                            Node(0)->next = Node(3839);
                    };
                    RunPasses(0, 7);
                }),
                ExitedWithCode(255),
                FailedAssertion("vexo_hostmgr_capture", "HostMgrAddCaptureNode", "m_capturePictureList.nodeNum == 1"));
}

TEST_F(CaptureListDeathTest, AddingToAnEmptyListThatCountsPictures) {
    EXPECT_EXIT(OnConsole([this] {
                    StartTasks(2);
                    RunPasses(0, 0);
                    Node(1)->prev = nullptr;
                    Stop(1 << 16 | LOGIN);
                    RunPasses(1, 1);
                }),
                ExitedWithCode(255),
                FailedAssertion("vexo_hostmgr_capture", "HostMgrAddCaptureNode", "m_capturePictureList.nodeNum == 0"));
}

TEST_F(CaptureListDeathTest, AddingToAListThatCountsNone) {
    EXPECT_EXIT(OnConsole([this] {
                    StartTasks(2);
                    RunPasses(0, 0);
                    Node(0)->next = Node(0);
                    ON_CALL(platform, vexo_utility_is_file_exist).WillByDefault([this](const char*) {
                        Node(0)->next = Node(1);
                        return 1;
                    });
                    Stop(LOGIN);
                    RunPasses(1, 1);
                }),
                ExitedWithCode(255),
                FailedAssertion("vexo_hostmgr_capture", "HostMgrAddCaptureNode",
                                "(m_capturePictureList.head != NULL) && (m_capturePictureList.tail != NULL) && "
                                "(m_capturePictureList.nodeNum != 0)"));
}

/** The console behind the line that a stop prints of itself. */
static testing::Matcher<const std::string&> AfterOneLine(const testing::Matcher<const std::string&>& rest) {
    return testing::ResultOf([](const std::string& console) { return console.substr(console.find('\n') + 1); }, rest);
}

TEST_F(CaptureListDeathTest, StoppingAcrossAGap) {
    EXPECT_EXIT(OnConsole([this] {
                    StartTasks(1);
                    RunPasses(0, 2);
                    Node(1)->next = nullptr;
                    vexo_HostMgr_Dev_StopCapturePicture(LOGIN);
                }),
                ExitedWithCode(255),
                AfterOneLine(FailedAssertion("vexo_hostmgr_capture", "HostMgrDelCaptureNode", "node->next != NULL")));
}

TEST_F(CaptureListDeathTest, EndingMoreThanAreCounted) {
    EXPECT_EXIT(
        OnConsole([this] {
            StartTasks(1);
            RunPasses(0, 2);
            Node(1)->next = Node(1);
            vexo_HostMgr_Dev_Logout(LOGIN);
        }),
        ExitedWithCode(255),
        FailedAssertion("vexo_hostmgr_capture", "HostMgrDelAllCaptureNode", "m_capturePictureList.nodeNum > 0"));
}
