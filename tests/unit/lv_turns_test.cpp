// Whose turn it is: which list a read asks first, which second, and by which of the two calls.
#include "lv_fixture.h"

using testing::ElementsAre;
using testing::ElementsAreArray;

class LvTurns : public LvFixture {};

// ---- one situation each --------------------------------------------------------------------------------------------

TEST_F(LvTurns, FreshBuffer_StartsWithTheFirstVideoFrame) {
    EXPECT_THAT(CallsOfRead(Create()), ElementsAre(FirstGet(1)));
}

TEST_F(LvTurns, FreshBufferOfTheSubStream_StartsWithItsFirstVideoFrame) {
    EXPECT_THAT(CallsOfRead(Create(1, 2)), ElementsAre(FirstGet(2)));
}

TEST_F(LvTurns, BothHaveFrames_VideoAndAudioAlternate) {
    const int hID = Create();
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(FirstGet(1)));
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(Rel(1, "1:1"), FirstGet(128)));
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(Rel(128, "128:1"), NextGet(1, "1:1")));
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(Rel(1, "1:2"), NextGet(128, "128:1")));
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(Rel(128, "128:2"), NextGet(1, "1:2")));
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(Rel(1, "1:3"), NextGet(128, "128:2")));
}

TEST_F(LvTurns, BothOfTheSubStreamHaveFrames_TheyAlternate) {
    const int hID = Create(9, 2);
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(FirstGet(2, 8)));
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(Rel(2, "2:1", 8), FirstGet(128, 8)));
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(Rel(128, "128:1", 8), NextGet(2, "2:1", 8)));
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(Rel(2, "2:2", 8), NextGet(128, "128:1", 8)));
}

TEST_F(LvTurns, NoVideo_AudioIsReadAgainAndAgain) {
    Main().result = -1;
    const int hID = Create();
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(FirstGet(1), FirstGet(128)));
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(Rel(128, "128:1"), FirstGet(1), NextGet(128, "128:1")));
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(Rel(128, "128:2"), FirstGet(1), NextGet(128, "128:2")));
}

TEST_F(LvTurns, NoAudio_VideoIsReadAgainAndAgain) {
    Audio().result = -1;
    const int hID = Create();
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(FirstGet(1)));
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(Rel(1, "1:1"), FirstGet(128), NextGet(1, "1:1")));
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(Rel(1, "1:2"), FirstGet(128), NextGet(1, "1:2")));
}

TEST_F(LvTurns, FirstVideoFrameFails_IsNotReadFromTheListAndAskedForAgain) {
    Main().result = -1;
    Audio().result = -1;
    const int hID = Create();
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(FirstGet(1), FirstGet(128)));
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(FirstGet(1), FirstGet(128)));
    Main().result = 0;
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(FirstGet(1)));
}

TEST_F(LvTurns, LaterFrameFails_IsAskedForFromTheSamePosition) {
    const int hID = Create();
    for (int read = 0; read < 4; ++read)
        Read(hID);
    Main().result = -1;
    Audio().result = -1;
    FrameCalls();
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(Rel(128, "128:2"), NextGet(1, "1:2"), NextGet(128, "128:2")));
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(NextGet(1, "1:2"), NextGet(128, "128:2")));
}

TEST_F(LvTurns, FailedReadAfterVideo_AudioIsStillNext) {
    const int hID = Create();
    Read(hID);
    Main().result = -1;
    Audio().result = -1;
    Read(hID);
    Main().result = 0;
    Audio().result = 0;
    FrameCalls();
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(FirstGet(128)));
}

TEST_F(LvTurns, FailedReadAfterAudio_VideoIsStillNext) {
    const int hID = Create();
    Read(hID);
    Read(hID);
    Main().result = -1;
    Audio().result = -1;
    Read(hID);
    Main().result = 0;
    Audio().result = 0;
    FrameCalls();
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(NextGet(1, "1:1")));
}

TEST_F(LvTurns, ReleasedInBetween_TurnsGoOn) {
    const int hID = Create();
    Read(hID);
    vexo_soft::vexo_HostMgr_Dev_ReleaseRealOneFrame(hID);
    FrameCalls();
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(FirstGet(128)));
    vexo_soft::vexo_HostMgr_Dev_ReleaseRealOneFrame(hID);
    FrameCalls();
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(NextGet(1, "1:1")));
}

TEST_F(LvTurns, TwoBuffersOfOneStream_TakeTheirOwnTurns) {
    const int first = Create();
    const int second = Create();
    EXPECT_THAT(CallsOfRead(first), ElementsAre(FirstGet(1)));
    EXPECT_THAT(CallsOfRead(first), ElementsAre(Rel(1, "1:1"), FirstGet(128)));
    EXPECT_THAT(CallsOfRead(second), ElementsAre(FirstGet(1)));
    EXPECT_THAT(CallsOfRead(first), ElementsAre(Rel(128, "128:1"), NextGet(1, "1:1")));
    EXPECT_THAT(CallsOfRead(second), ElementsAre(Rel(1, "1:2"), FirstGet(128)));
}

// ---- every course of four reads ------------------------------------------------------------------------------------

/** What a list answers to one read. */
enum class Has { FRAME, NOTHING, NULL_FRAME };

/** The rules of the turns, written down once more: the calls that a read must make. */
class ExpectedBuffer {
public:
    explicit ExpectedBuffer(unsigned int video) : m_video(video) {}

    Lines Read(Has videoList, Has audioList) {
        Lines calls;
        if (m_held)
            calls.push_back(Rel(m_last, m_kind[m_last].node));
        m_held = false;
        unsigned int candidate = m_last;
        for (int attempt = 0; attempt < 2; ++attempt) {
            candidate = candidate == 128 ? m_video : 128;
            Kind& kind = m_kind[candidate];
            const Has has = candidate == 128 ? audioList : videoList;
            calls.push_back(kind.first ? FirstGet(candidate) : NextGet(candidate, kind.node));
            if (has == Has::NOTHING)
                continue;
            kind.first = false;
            ++kind.given;
            if (has == Has::FRAME)
                Hold(candidate);
            break;
        }
        return calls;
    }

private:
    struct Kind {
        bool first = true;
        unsigned int given = 0;
        std::string node = "0:0";
    };

    void Hold(unsigned int type) {
        m_held = true;
        m_last = type;
        m_kind[type].node = std::to_string(type) + ":" + std::to_string(m_kind[type].given);
    }

    const unsigned int m_video;
    unsigned int m_last = 128;
    bool m_held = false;
    std::map<unsigned int, Kind> m_kind;
};

class LvCourses : public LvFixture, public testing::WithParamInterface<unsigned int> {
protected:
    static void Set(LiveList* list, Has has) {
        list->result = has == Has::NOTHING ? -1 : 0;
        list->noFrame = has == Has::NULL_FRAME;
    }

    /** Runs one course on a fresh buffer. Each read takes two digits of the course: video and audio, three ways each.
     */
    void RunCourse(unsigned int course) {
        ExpectedBuffer expected(GetParam());
        Main() = Sub() = Audio() = LiveList();
        const int hID = Create(1, GetParam());
        for (int read = 0; read < 4; ++read) {
            const Has video = static_cast<Has>(course % 3);
            const Has audio = static_cast<Has>(course / 3 % 3);
            course /= 9;
            Set(GetParam() == 1 ? &Main() : &Sub(), video);
            Set(&Audio(), audio);
            ASSERT_THAT(CallsOfRead(hID), ElementsAreArray(expected.Read(video, audio))) << "read " << read;
        }
        vexo_soft::vexo_HostMgr_Dev_DestroyRealStreamBuffer(hID);
    }
};

TEST_P(LvCourses, EveryCourse_MakesTheCallsOfTheRules) {
    for (unsigned int course = 0; course < 9 * 9 * 9 * 9; ++course) {
        SCOPED_TRACE("course " + std::to_string(course));
        RunCourse(course);
        if (HasFatalFailure())
            return;
    }
}

INSTANTIATE_TEST_SUITE_P(Streams, LvCourses, testing::Values(1, 2));
