// The capture module's dump, which no menu command reaches: it prints the state of a busy lock, and nothing else.
#include "platform_mock.h"
#include "vexo_hostmgr_capture.h"

using testing::_;
using testing::ElementsAre;

class CaptureDump : public testing::Test {
protected:
    void SetUp() override { platform.TakeCalls(); }

    std::vector<std::string> Dump() {
        m_capture.HostMgrCaptureDump(6000, CollectPrint);
        return TakePieces();
    }

    void HoldLock(const std::string& info) {
        m_lock.wr_lock("test", "test");
        ON_CALL(m_lock, get_info(_, _)).WillByDefault([this, info](char* buffer, unsigned int size) {
            m_info_size = size;
            info.copy(buffer, size);
            return 0;
        });
    }

    Platform platform;
    vexo_hostmgr_capture m_capture;
    MockRwLock& m_lock = platform.RwLock("vexo_hostmgr_capture");
    unsigned int m_info_size = 0;
};

TEST_F(CaptureDump, FreeLock_PrintsNothingAndGivesItBack) {
    EXPECT_THAT(Dump(), ElementsAre());
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAre("rd_trylock(vexo_hostmgr_capture, vexo_hostmgr_capture, HostMgrCaptureDump)",
                            "unlock(vexo_hostmgr_capture, vexo_hostmgr_capture, HostMgrCaptureDump)"));
}

TEST_F(CaptureDump, BusyLock_PrintsItsInformation) {
    HoldLock("held by worker");
    std::vector<std::string> printed;
    std::thread([&] { printed = Dump(); }).join();
    EXPECT_THAT(printed, ElementsAre("rd_trylock fail, lock info is 'held by worker'\n"));
    EXPECT_EQ(m_info_size, 256u);
    m_lock.unlock("test", "test");
}

TEST_F(CaptureDump, InformationThatFillsTheBuffer_IsEnded) {
    HoldLock(std::string(256, 'x'));
    std::vector<std::string> printed;
    std::thread([&] { printed = Dump(); }).join();
    EXPECT_THAT(printed, ElementsAre("rd_trylock fail, lock info is '" + std::string(255, 'x') + "'\n"));
    m_lock.unlock("test", "test");
}
