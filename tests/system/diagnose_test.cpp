// The diagnostics menu as an operator at the recorder sees it, and the recorder's log as an agent hears it, while
// logins come and go.
#include <gmock/gmock.h>
#include <iconv.h>

#include <atomic>
#include <mutex>

#include "agent.h"

using agent::Buffer;
using agent::Session;
using agent::Text;
using testing::ElementsAre;
using testing::EndsWith;
using testing::StartsWith;

namespace {

/** From the recorder's console encoding; "not GBK" when it is not. */
std::string Utf8(std::string gbk) {
    const iconv_t converter = iconv_open("UTF-8", "GBK");
    std::string utf8(gbk.size() * 2 + 1, '\0');
    char* from = gbk.data();
    char* to = utf8.data();
    size_t from_left = gbk.size();
    size_t to_left = utf8.size();
    const bool converted = iconv(converter, &from, &from_left, &to, &to_left) != static_cast<size_t>(-1);
    iconv_close(converter);
    utf8.resize(utf8.size() - to_left);
    return converted ? utf8 : "not GBK";
}

std::string Diagnose(unsigned command) {
    return Utf8(simulator::control::Diagnose(command));
}

struct Range {
    unsigned first;
    const char* heading;
};
constexpr Range RANGES[] = {{0, "平台登录信息:\n"},    {1000, "预览信息:\n"}, {2000, "回放信息:\n"},
                            {3000, "文件查询信息:\n"}, {4000, "对讲信息:\n"}, {5000, "报警信息:\n"}};

class DiagnoseTest : public agent::LibraryTest {
protected:
    void TearDown() override { ExpectAllGivenBack(); }
};

std::string Hex(int number) {
    char text[16];
    snprintf(text, sizeof text, "0x%x", static_cast<unsigned>(number));
    return text;
}

// ---- menu ----------------------------------------------------------------------------------------------------------

TEST_F(DiagnoseTest, NobodyLoggedIn_EachRangeIsItsHeading) {
    for (const Range& range : RANGES) {
        EXPECT_EQ(Diagnose(range.first), range.heading);
        EXPECT_EQ(Diagnose(range.first + 999), range.heading);
    }
    EXPECT_EQ(Diagnose(6000), "");
    EXPECT_EQ(Diagnose(0xFFFFFFFF), "");
}

TEST_F(DiagnoseTest, Logins_AreListedWithTheirPasswords) {
    const Session local;
    const Session remote("operator", "operator12345");
    EXPECT_EQ(Diagnose(0), "平台登录信息:\n<Host_0>\n[0]hLogin:" + Hex(local.Login()) +
                               " username:admin passwd:admin12345 ip:127.0.0.1\n<Host_0>\n<Host_1>\n[1]hLogin:" +
                               Hex(remote.Login()) + " username:operator passwd:operator12345 ip:-\n<Host_1>\n");
}

TEST_F(DiagnoseTest, EachRange_ShowsEachLoginBetweenItsTags) {
    const Session first;
    const Session second;
    Buffer buffer(second.Login(), 1, HOSTMGR_STREAM_SUB);
    ASSERT_TRUE(buffer.Next().has_value());
    for (const Range& range : RANGES) {
        if (range.first != 0) {
            const std::string dump = Diagnose(range.first);
            EXPECT_THAT(dump, StartsWith(range.heading + std::string("<Host_0>\n")));
            EXPECT_NE(dump.find("</Host_0>\n<Host_1>\n"), std::string::npos) << dump;
            EXPECT_THAT(dump, EndsWith("</Host_1>\n"));
        }
    }
    EXPECT_NE(Diagnose(1000).find("当前读取的视频帧帧信息:帧号 "), std::string::npos) << Diagnose(1000);
}

TEST_F(DiagnoseTest, EveryRange_WhileEightThreadsComeAndGo_IsWholeAndWaitsForNobody) {
    std::atomic<int> busy{8};
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 15; ++round) {
                const Session session;
                Buffer buffer(session.Login(), 1, HOSTMGR_STREAM_SUB);
                buffer.Try();
                failures += session.Login() > 0 ? 0 : 1;
            }
            --busy;
        });
    }
    do {
        for (const Range& range : RANGES) {
            EXPECT_THAT(Diagnose(range.first), StartsWith(range.heading));
        }
    } while (busy != 0);
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(Diagnose(0), RANGES[0].heading);
}

// ---- log -----------------------------------------------------------------------------------------------------------

/** What a hook heard. */
class Log {
public:
    static void Hear(int login, tag_VexoHostMgrLog* entry, void* user) {
        Log* log = static_cast<Log*>(user);
        std::lock_guard<std::mutex> hold(log->m_mutex);
        log->m_lines.push_back(std::to_string(login) + " " + entry->sUser + ": " + entry->sText);
    }
    std::vector<std::string> Lines() {
        std::lock_guard<std::mutex> hold(m_mutex);
        return m_lines;
    }

private:
    std::mutex m_mutex;
    std::vector<std::string> m_lines;  // guarded by m_mutex
};

TEST_F(DiagnoseTest, LogHook_HearsLoginsUntilItIsReplaced) {
    static Log first;
    static Log second;
    vexo_soft::vexo_HostMgr_Dev_SetHook_InsertLog(0, Log::Hear, &first);
    const int login = vexo_soft::vexo_HostMgr_Dev_Login(Text("operator"), Text("operator12345"), Text("10.1.2.3"));
    vexo_soft::vexo_HostMgr_Dev_SetHook_InsertLog(-1, Log::Hear, &second);
    vexo_soft::vexo_HostMgr_Dev_Logout(login);
    vexo_soft::vexo_HostMgr_Dev_SetHook_InsertLog(0, nullptr, nullptr);
    { const Session unheard; }
    const std::string id = std::to_string(login);
    EXPECT_THAT(first.Lines(), ElementsAre(id + " operator: operator logged in from 10.1.2.3"));
    EXPECT_THAT(second.Lines(), ElementsAre(id + " operator: operator logged out"));
}

TEST_F(DiagnoseTest, LogHook_HearsDiskEvents) {
    static Log log;
    vexo_soft::vexo_HostMgr_Dev_SetHook_InsertLog(0, Log::Hear, &log);
    simulator::control::SetEvent("disk full", 1, true);
    EXPECT_TRUE(live::Eventually([] { return !log.Lines().empty(); }));
    simulator::control::SetEvent("disk full", 1, false);
    EXPECT_TRUE(live::Eventually([] { return log.Lines().size() == 2; }));
    vexo_soft::vexo_HostMgr_Dev_SetHook_InsertLog(0, nullptr, nullptr);
    EXPECT_THAT(log.Lines(), ElementsAre("0 : disk full, disk 1", "0 : disk full, disk 1: over"));
}

}  // namespace
