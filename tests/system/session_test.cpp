// Logins through the exported functions, and callers that do not behave: full tables, many threads, null pointers,
// handles that are nobody's or somebody else's. Frames and what is in them stand in live_test.cpp.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <list>
#include <set>
#include <string>
#include <thread>

#include "agent.h"

using agent::Buffer;
using agent::Session;
using agent::Text;

namespace {

constexpr unsigned MAIN = HOSTMGR_STREAM_MAIN;
constexpr unsigned SUB = HOSTMGR_STREAM_SUB;
constexpr int STRANGE_LOGIN = 0x4321;

int Login(const char* user, const char* password, const char* address = nullptr) {
    return vexo_soft::vexo_HostMgr_Dev_Login(Text(user), Text(password), Text(address));
}

int Logout(int login) {
    return vexo_soft::vexo_HostMgr_Dev_Logout(login);
}

/** Whether the handle is a login: the simplest call that looks it up. */
bool IsLoggedIn(int login) {
    return vexo_soft::vexo_HostMgr_Dev_StartRealPlay(login, 1, 1) == 0;
}

std::string OutstandingLogins() {
    std::string text;
    for (const std::string& line : simulator::control::Outstanding()) {
        text += line.rfind("login: ", 0) == 0 ? line + "\n" : "";
    }
    return text;
}

bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

class SessionTest : public agent::LibraryTest {};

// ---- initialisation ------------------------------------------------------------------------------------------------

long CountOutstanding(const std::string& part) {
    const std::vector<std::string> lines = simulator::control::Outstanding();
    return std::count_if(lines.begin(), lines.end(), [&](const std::string& line) { return Contains(line, part); });
}

/** In a process where nobody has initialised the library: 0 when all is as it should be, else a step's number. */
int InitialiseInManyThreads() {
    if (Login(nullptr, nullptr) != -1) {
        return 1;
    }
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] {
            ++ready;
            while (ready < 8) {
                std::this_thread::yield();
            }
            vexo_soft::vexo_HostMgr_Dev_init();
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    if (CountOutstanding("vexo_hostmgr_res_manage m_lock") != 1 || CountOutstanding("HostMgrAlarm_Thread") != 1) {
        return 2;
    }
    const Session session;
    return session.Login() > 0 && simulator::control::Complaints().empty() ? 0 : 3;
}

TEST(Init, ManyThreadsAtOnce_InitialiseOnce) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";  // a fresh process
    EXPECT_EXIT(exit(InitialiseInManyThreads()), testing::ExitedWithCode(0), "");
}

// ---- login and logout ----------------------------------------------------------------------------------------------

TEST_F(SessionTest, Login_WithoutCredentials_IsTheRecordersOwnUserFromLoopback) {
    const int login = Login(nullptr, nullptr, "10.1.2.3");
    ASSERT_GE(login, 1);
    EXPECT_TRUE(Contains(OutstandingLogins(), "of admin from 127.0.0.1")) << OutstandingLogins();
    EXPECT_EQ(Logout(login), 0);
    ExpectAllGivenBack();
}

TEST_F(SessionTest, Login_WithCredentials_IsThatUserFromThatAddress) {
    const int login = Login("operator", "operator12345", "10.1.2.3");
    ASSERT_GE(login, 1);
    EXPECT_TRUE(Contains(OutstandingLogins(), "of operator from 10.1.2.3")) << OutstandingLogins();
    EXPECT_EQ(Logout(login), 0);
    ExpectAllGivenBack();
}

TEST_F(SessionTest, Login_WrongCredentials_AreRefusedAndLeaveNothing) {
    const struct {
        const char* user;
        const char* password;
    } refused[] = {
        {"admin", "wrong"}, {"nobody", "admin12345"}, {"admin", ""},           {"", ""},
        {"", "admin12345"}, {"admin", nullptr},       {nullptr, "admin12345"},
    };
    for (const auto& [user, password] : refused) {
        EXPECT_EQ(Login(user, password), -1) << (user ? user : "-") << " " << (password ? password : "-");
        EXPECT_EQ(OutstandingLogins(), "");
    }
    ExpectAllGivenBack();
}

TEST_F(SessionTest, Login_RecorderFails_IsRefusedAndLeavesNothing) {
    for (const char* operation : {"vexo_model_get_usr_info_byname", "vexo_model_login"}) {
        simulator::control::Fail(operation, 1);
        EXPECT_EQ(Login(nullptr, nullptr), -1) << operation;
        EXPECT_EQ(OutstandingLogins(), "") << operation;
    }
    ExpectAllGivenBack();
    EXPECT_GT(Session().Login(), 0) << "the recorder has recovered";
}

TEST_F(SessionTest, Login_128Logins_TheNextIsRefusedUntilOneIsOut) {
    {
        std::list<Session> sessions(HOSTMGR_MAX_LOGINS);
        std::set<int> handles;
        for (const Session& session : sessions) {
            EXPECT_GT(session.Login(), 0);
            handles.insert(session.Login());
        }
        EXPECT_EQ(handles.size(), HOSTMGR_MAX_LOGINS);
        EXPECT_EQ(Session().Login(), -1);
        sessions.pop_front();
        EXPECT_GT(Session().Login(), 0);
        Buffer buffer(sessions.back().Login(), 1, SUB);
        EXPECT_TRUE(buffer.Next().has_value()) << "the last one works like the first";
    }
    ExpectAllGivenBack();
}

TEST_F(SessionTest, Logout_UnknownHandle_GivesZeroFromOneOn) {
    EXPECT_EQ(Logout(STRANGE_LOGIN), 0);
    EXPECT_EQ(Logout(0), -1);
    EXPECT_EQ(Logout(-1), -1);
    const int login = Login(nullptr, nullptr);
    EXPECT_EQ(Logout(login), 0);
    EXPECT_EQ(Logout(login), 0) << "twice";
    EXPECT_FALSE(IsLoggedIn(login));
    ExpectAllGivenBack();
}

// ---- many threads --------------------------------------------------------------------------------------------------

/** Logs in, looks at a buffer and logs out, again and again; counts what went wrong. */
void ComeAndGo(int rounds, std::atomic<int>* failures) {
    for (int i = 0; i < rounds; ++i) {
        const Session session;
        Buffer buffer(session.Login(), 1, SUB);
        buffer.Try();
        *failures += session.Login() > 0 && buffer.Handle() > 0 ? 0 : 1;
    }
}

/** Reads until told to stop, at least so many frames; counts what went wrong. */
void ReadOn(unsigned channel, unsigned stream, const std::atomic<bool>* stop, std::atomic<int>* failures) {
    const Session session;
    Buffer buffer(session.Login(), channel, stream);
    for (int count = 0; count < 50 || !*stop; ++count) {
        if (!buffer.Next()) {
            ++*failures;
            return;
        }
    }
}

TEST_F(SessionTest, LoginLogout_EightThreadsWhileOthersRead_NothingIsLeft) {
    std::atomic<bool> stop{false};
    std::atomic<int> failures{0};
    std::thread readers[] = {std::thread(ReadOn, 1, MAIN, &stop, &failures),
                             std::thread(ReadOn, 1, SUB, &stop, &failures),
                             std::thread(ReadOn, 2, SUB, &stop, &failures)};
    std::vector<std::thread> visitors;
    for (int i = 0; i < 8; ++i) {
        visitors.emplace_back(ComeAndGo, 25, &failures);
    }
    for (std::thread& visitor : visitors) {
        visitor.join();
    }
    stop = true;
    for (std::thread& reader : readers) {
        reader.join();
    }
    EXPECT_EQ(failures, 0);
    ExpectAllGivenBack();
}

TEST_F(SessionTest, OneLogin_ManyThreadsReadTheirBuffers_NothingIsLeft) {
    std::atomic<int> failures{0};
    {
        const Session session;
        std::vector<std::thread> threads;
        for (unsigned i = 0; i < 6; ++i) {
            threads.emplace_back([&, i] {
                Buffer buffer(session.Login(), 1 + i % 2, 1 + i / 3);
                for (int count = 0; count < 40; ++count) {
                    failures += buffer.Next() ? 0 : 1;
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
    EXPECT_EQ(failures, 0);
    ExpectAllGivenBack();
}

// ---- hostile callers -----------------------------------------------------------------------------------------------

/** The handle of a slot of a login. */
int HandleOf(int slot, int login) {
    return static_cast<int>(static_cast<unsigned>(slot) << 16 | static_cast<unsigned>(login));
}

int Read(int handle) {
    unsigned words[5];
    unsigned char* bytes = nullptr;
    return vexo_soft::vexo_HostMgr_Dev_ReadRealOneFrame(handle, &words[0], &words[1], &bytes, &words[2], &words[3],
                                                        &words[4]);
}

/** No stream buffer of that handle: every call says so; Release alone does not mind, as long as there is the login. */
void ExpectNoBuffer(int handle, int release_result) {
    EXPECT_EQ(Read(handle), -1) << std::hex << handle;
    EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_RealStreamBufferEnableAudio(handle, 1), -1) << std::hex << handle;
    EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_ReleaseRealOneFrame(handle), release_result) << std::hex << handle;
    EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_DestroyRealStreamBuffer(handle), -1) << std::hex << handle;
}

TEST_F(SessionTest, StreamBuffer_HandlesOfNobody_AreNotFound) {
    const Session session;
    for (const int handle : {0, -1, -0x10000, HandleOf(0, STRANGE_LOGIN), HandleOf(3, STRANGE_LOGIN)}) {
        ExpectNoBuffer(handle, -1);
    }
    for (const int slot : {0, 1, 127, 128, 129, 255, 0x7FFF}) {
        ExpectNoBuffer(HandleOf(slot, session.Login()), 0);
    }
}

TEST_F(SessionTest, StreamBuffer_SlotOfAnotherLogin_IsNotFound) {
    const Session owner;
    const Session other;
    Buffer buffer(owner.Login(), 1, SUB);
    ASSERT_TRUE(buffer.Next().has_value());
    ExpectNoBuffer(HandleOf(0, other.Login()), 0);
    EXPECT_TRUE(buffer.Next().has_value()) << "the owner's is untouched";
}

TEST_F(SessionTest, StreamBuffer_AfterDestroy_IsNotFound) {
    const Session session;
    Buffer buffer(session.Login(), 1, SUB);
    const int handle = buffer.Handle();
    EXPECT_EQ(buffer.Destroy(), 0);
    ExpectNoBuffer(handle, 0);
}

TEST_F(SessionTest, CreateRealStreamBuffer_WrongArguments_AreRefused) {
    const Session session;
    const auto create = vexo_soft::vexo_HostMgr_Dev_CreateRealStreamBuffer;
    EXPECT_EQ(create(session.Login(), 257, MAIN), -1);
    EXPECT_EQ(create(session.Login(), 0xFFFFFFFF, MAIN), -1);
    EXPECT_EQ(create(session.Login(), 1, 0), -1);
    EXPECT_EQ(create(session.Login(), 1, 3), -1);
    EXPECT_EQ(create(STRANGE_LOGIN, 1, MAIN), -1);
    EXPECT_EQ(create(-5, 1, MAIN), -1);
}

TEST_F(SessionTest, CreateRealStreamBuffer_128Buffers_TheNextIsRefusedUntilOneIsGone) {
    {
        const Session session;
        std::vector<int> handles;
        for (unsigned i = 0; i < HOSTMGR_MAX_STREAM_BUFFERS; ++i) {
            handles.push_back(vexo_soft::vexo_HostMgr_Dev_CreateRealStreamBuffer(session.Login(), 1, MAIN));
            EXPECT_EQ(handles.back(), HandleOf(static_cast<int>(i), session.Login()));
        }
        EXPECT_EQ(Buffer(session.Login(), 1, MAIN).Handle(), -1);
        EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_DestroyRealStreamBuffer(handles[17]), 0);
        EXPECT_EQ(Buffer(session.Login(), 1, MAIN).Handle(), handles[17]);
    }
    ExpectAllGivenBack();
}

TEST_F(SessionTest, ReadRealOneFrame_NullOutput_IsRefusedAndHoldsNothing) {
    const Session session;
    const Buffer buffer(session.Login(), 1, SUB);
    for (size_t missing = 0; missing < 6; ++missing) {
        std::array<unsigned, 5> words;
        unsigned char* bytes = nullptr;
        const auto word = [&](size_t place) { return place == missing ? nullptr : &words[place]; };
        EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_ReadRealOneFrame(
                      buffer.Handle(), word(0), word(1), missing == 5 ? nullptr : &bytes, word(2), word(3), word(4)),
                  -1)
            << missing;
    }
    EXPECT_EQ(HeldFrames(), 0);
}

TEST_F(SessionTest, Login_TextsOfTenThousandCharacters_AreTakenOrRefusedWhole) {
    const std::string text(10000, 'x');
    EXPECT_EQ(Login(text.c_str(), "admin12345"), -1);
    EXPECT_EQ(Login("admin", text.c_str()), -1);
    EXPECT_EQ(Login(text.c_str(), text.c_str(), text.c_str()), -1);
    EXPECT_EQ(Login(("admin" + text).c_str(), "admin12345"), -1) << "not cut to a name that exists";
    for (const char* user : {"operator", static_cast<const char*>(nullptr)}) {
        const int login = Login(user, user != nullptr ? "operator12345" : nullptr, text.c_str());
        ASSERT_GE(login, 1);
        EXPECT_TRUE(IsLoggedIn(login));
        Logout(login);
    }
    ExpectAllGivenBack();
}

TEST_F(SessionTest, OtherFunctions_NullPointersAndStrangeHandles_AreRefused) {
    {
        const Session session;
        for (const int login : {session.Login(), STRANGE_LOGIN, 0, -1}) {
            EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_GetConfig(login, 0, 0, 0, nullptr, 0, nullptr, 0, nullptr), -1);
            EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_SetConfig(login, 0, 0, 0, nullptr, 0, nullptr, 0), -1);
            EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_GetAbility(login, 0, nullptr, 0, nullptr, 0), -1);
            EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_Control(login, 13, 0, 0, nullptr, 0, nullptr, 0, nullptr, 0), -1);
            EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_StartHistoryPlay(login, 1, 0, nullptr, nullptr), -1);
            EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_StartHistoryPlayV2(login, 1, 0, nullptr, nullptr, nullptr, nullptr),
                      -1);
            EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_QueryFile(login, 1, nullptr), -1);
            EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_StartTalk(login, nullptr), -1);
            EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_InputTalkData(login, 1, nullptr, 0), -1);
            EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_GetAlarmStatus(login, nullptr, nullptr), -1);
            EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_StartCapturePicture(login, 1, 1, nullptr, nullptr, nullptr), -1);
            EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_StartZeroCodec(login, 0, 0, nullptr), -1);
            EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_FormatDisk(login, 0), -1);
            EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_Upgrade(login, nullptr, 0, 0), -1);
        }
        EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_ReadCfg(nullptr), nullptr);
        EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_SaveCfg(nullptr, nullptr, 0), -1);
        EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_ReleaseAlarmStatus(nullptr), 0);
    }
    ExpectAllGivenBack();
}

}  // namespace
