// Immediate capture: its checks, what it asks of the recorder, and what it hands back.
#include "capture_fixture.h"
#include "vexo_hostmgr_capture.h"

using testing::_;
using testing::ElementsAre;
using testing::IsEmpty;

using namespace vexo_soft;

class CaptureNow : public CaptureFixture {
protected:
    void SetUp() override {
        CaptureFixture::SetUp();
        ON_CALL(platform, vexo_model_capture(_, _, _, _, _))
            .WillByDefault([this](unsigned int, unsigned int, char* buffer, unsigned int, unsigned int* size) {
                m_given = buffer;
                m_size_before = *size;
                *size = 4711;
                return m_result;
            });
    }

    /** The capture calls of one picture. */
    Lines CallsOf(int channel, int stream) {
        platform.TakeCalls();
        vexo_HostMgr_Dev_CapturePicture(LOGIN, channel, stream, m_buffer, sizeof(m_buffer), nullptr);
        return Without("HostMgrGetUserInfo", platform.TakeCalls());
    }

    char m_buffer[100];
    char* m_given = nullptr;
    unsigned int m_size_before = 0xEEEEEEEE;
    int m_result = 0;
};

TEST_F(CaptureNow, Picture_GoesStraightToTheCallersBuffer) {
    unsigned int size = 0xEEEEEEEE;
    EXPECT_EQ(RawConsole([&] {
                  EXPECT_EQ(vexo_HostMgr_Dev_CapturePicture(LOGIN, 5, 1, m_buffer, sizeof(m_buffer), &size), 0);
              }),
              "");
    EXPECT_EQ(size, 4711u);
    EXPECT_EQ(m_given, m_buffer);
    EXPECT_EQ(m_size_before, 0u);
}

TEST_F(CaptureNow, Picture_TakesNoLockAndDoesNotTellTheStream) {
    for (const int stream : {1, 2})
        EXPECT_THAT(CallsOf(5, stream), ElementsAre("vexo_model_capture(1281, 4, 100)"));
}

TEST_F(CaptureNow, WithoutASizeToReturn_Succeeds) {
    EXPECT_EQ(vexo_HostMgr_Dev_CapturePicture(LOGIN, 5, 1, m_buffer, sizeof(m_buffer), nullptr), 0);
}

// Channel 0 and below name none, but the recorder decides.
TEST_F(CaptureNow, LowestAndHighestChannels_PassTheCheck) {
    EXPECT_THAT(CallsOf(1, 1), ElementsAre("vexo_model_capture(1281, 0, 100)"));
    EXPECT_THAT(CallsOf(256, 1), ElementsAre("vexo_model_capture(1281, 255, 100)"));
    EXPECT_THAT(CallsOf(0, 1), ElementsAre("vexo_model_capture(1281, 4294967295, 100)"));
    EXPECT_THAT(CallsOf(-5, 1), ElementsAre("vexo_model_capture(1281, 4294967290, 100)"));
    EXPECT_THAT(CallsOf(INT32_MIN, 1), ElementsAre("vexo_model_capture(1281, 2147483647, 100)"));
}

TEST_F(CaptureNow, BadChannelOrStream_SaysWhyAndAsksNothing) {
    const std::pair<int, int> rows[] = {{257, 1}, {INT32_MAX, 2}, {1, 0}, {1, 3}, {1, -1}, {257, 3}};
    for (const auto& [channel, stream] : rows) {
        unsigned int size = 0xEEEEEEEE;
        platform.TakeCalls();
        EXPECT_EQ(Console([&, channel = channel, stream = stream] {
                      EXPECT_EQ(vexo_HostMgr_Dev_CapturePicture(LOGIN, channel, stream, m_buffer, 100, &size), -1);
                  }),
                  Error("HostMgr_Dev_CapturePicture", "Invalid Param:dwChannel " + std::to_string(channel) +
                                                          ", dwStreamIdx " + std::to_string(stream) + " \n"));
        EXPECT_EQ(size, 0xEEEEEEEE);
        EXPECT_THAT(With("vexo_model_capture", platform.TakeCalls()), IsEmpty());
    }
}

TEST_F(CaptureNow, LoginBelowZero_IsRefusedByTheObject) {
    vexo_hostmgr_capture capture;
    platform.TakeCalls();
    EXPECT_EQ(Console([&] { EXPECT_EQ(capture.HostMgr_Dev_CapturePicture(-1, 1, 1, m_buffer, 100, nullptr), -1); }),
              Error("HostMgr_Dev_CapturePicture", "Invalid Param:dwChannel 1, dwStreamIdx 1 \n"));
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
    EXPECT_EQ(capture.HostMgr_Dev_CapturePicture(0, 1, 1, m_buffer, 100, nullptr), 0);
}

TEST_F(CaptureNow, RecorderRefuses_SaysSoAndLeavesTheSize) {
    m_result = 7;
    unsigned int size = 0xEEEEEEEE;
    char expected[100];
    snprintf(expected, sizeof(expected), "vexo_model_capture failed, sPicBuffer %p, dwBufferSize 100!!\n",
             static_cast<void*>(m_buffer));
    EXPECT_EQ(Console([&] { EXPECT_EQ(vexo_HostMgr_Dev_CapturePicture(LOGIN, 5, 1, m_buffer, 100, &size), -1); }),
              Error("HostMgr_Dev_CapturePicture", expected));
    EXPECT_EQ(size, 0xEEEEEEEE);
}

// No buffer, no bytes: the recorder's to refuse.
TEST_F(CaptureNow, BufferThatIsNone_IsPassedOn) {
    m_result = -1;
    EXPECT_EQ(
        Console([] { EXPECT_EQ(vexo_HostMgr_Dev_CapturePicture(LOGIN, 5, 1, nullptr, 0xFFFFFFFF, nullptr), -1); }),
        Error("HostMgr_Dev_CapturePicture", "vexo_model_capture failed, sPicBuffer (nil), dwBufferSize -1!!\n"));
}
