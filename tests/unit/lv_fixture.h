// What the tests of live view share: a login whose recorder has live frame lists, frames to hand out, one read with its
// six outputs, and the lines that the record holds of a frame's calls. Expectations stand in the tests.
#ifndef LV_FIXTURE_H
#define LV_FIXTURE_H

#include <string.h>

#include <list>
#include <map>

#include "login_fixture.h"

inline constexpr char LV_LOCK[] = "vexo_hostmgr_lv";

// ---- lines of the record -------------------------------------------------------------------------------------------

// channel is the model library's, counted from 0; a node is "first:second".
inline std::string FirstGet(unsigned int type, unsigned int channel = 0) {
    return "vexo_model_first_get_frame(" + std::to_string(channel) + ", 97, " + std::to_string(type) + ")";
}
inline std::string NextGet(unsigned int type, const std::string& node, unsigned int channel = 0) {
    return "vexo_model_get_frame(" + std::to_string(channel) + ", 97, " + std::to_string(type) + ", " + node + ")";
}
inline std::string Rel(unsigned int type, const std::string& node, unsigned int channel = 0) {
    return "vexo_model_rel_frame(" + std::to_string(channel) + ", 97, " + std::to_string(type) + ", " + node + ")";
}

/** The lookup that comes before every live-view operation. */
inline Lines LookupCalls() {
    return {OnTable("lock", "HostMgrGetUserInfo"), OnTable("unlock", "HostMgrGetUserInfo")};
}

/** A whole call of a live-view operation: the lookup, then what it does under its lock. */
inline Lines UnderLvLock(const std::string& function, const Lines& calls = {}) {
    const std::string tags = std::string("(") + LV_LOCK + ", vexo_hostmgr_lv, " + function + ")";
    return Joined({LookupCalls(), {"wr_lock" + tags}, calls, {"unlock" + tags}});
}

// ---- frames --------------------------------------------------------------------------------------------------------

/** A frame whose header stands at any distance from an aligned address, with nothing readable behind it. */
class TestFrame {
public:
    explicit TestFrame(unsigned int number, unsigned int info = 1, unsigned int payload = 0, size_t offset = 0)
        : m_memory(new unsigned char[offset + sizeof(vexo_frame_header)]), m_offset(offset) {
        vexo_frame_header header = {};
        header.magic = VEXO_FRAME_MAGIC;
        header.frame_type = info;
        header.frame_no = number;
        header.data_length = payload;
        memcpy(Address(), &header, sizeof(header));
    }
    unsigned char* Address() const { return m_memory.get() + m_offset; }

private:
    const std::unique_ptr<unsigned char[]> m_memory;
    const size_t m_offset;
};

/** A live frame list of the recorder, as it answers the next calls of its stream type. */
struct LiveList {
    int result = 0;                  // of the call; what follows counts when it is 0
    unsigned char* frame = nullptr;  // the frame; null: a new one, unless noFrame
    bool noFrame = false;            // a success with a null frame
    VEXO_BOOL noVideo = VEXO_FALSE;  // the no-video-signal flag
    unsigned int given = 0;          // how many times it succeeded: the position handed out is type:given
};

// ---- reading -------------------------------------------------------------------------------------------------------

/** The outputs of one read, with values that a read must overwrite. */
struct ReadOutputs {
    unsigned int channel = 0xEEEEEEEE;
    unsigned int stream = 0xEEEEEEEE;
    unsigned char* frame = reinterpret_cast<unsigned char*>(0xEE);
    unsigned int length = 0xEEEEEEEE;
    unsigned int info = 0xEEEEEEEE;
    unsigned int flags = 0xEEEEEEEE;

    bool AllZero() const {
        return channel == 0 && stream == 0 && frame == nullptr && length == 0 && info == 0 && flags == 0;
    }
    bool AllUntouched() const {
        return channel == 0xEEEEEEEE && stream == 0xEEEEEEEE && frame == reinterpret_cast<unsigned char*>(0xEE) &&
               length == 0xEEEEEEEE && info == 0xEEEEEEEE && flags == 0xEEEEEEEE;
    }
};

/** A test with a login of the handle 0x501 at a recorder whose lists have frames. */
class LvFixture : public LoginFixture {
protected:
    static constexpr int LOGIN = 0x501;

    void SetUp() override {
        LoginFixture::SetUp();
        SetLists();
        LogInAll({LOGIN});
    }

    int Create(unsigned int channel = 1, unsigned int stream = 1, int hLogin = LOGIN) {
        const int hID = vexo_soft::vexo_HostMgr_Dev_CreateRealStreamBuffer(hLogin, channel, stream);
        EXPECT_NE(hID, -1);
        platform.TakeCalls();
        return hID;
    }

    static int Read(int hID, ReadOutputs* out) {
        return vexo_soft::vexo_HostMgr_Dev_ReadRealOneFrame(hID, &out->channel, &out->stream, &out->frame, &out->length,
                                                            &out->info, &out->flags);
    }
    static int Read(int hID) {
        ReadOutputs out;
        return Read(hID, &out);
    }

    /** Reads once and gives the frame calls that this made. */
    Lines CallsOfRead(int hID) {
        platform.TakeCalls();
        Read(hID);
        return FrameCalls();
    }

    /** The frame calls since the record was last taken. */
    Lines FrameCalls() { return WithAny({"_get_frame(", "_rel_frame("}, platform.TakeCalls()); }

    /** What the diagnostics say of live view, in UTF-8. */
    std::string LiveDump() {
        TakePieces();
        platform.Diagnostics().client->diagnose(1000, CollectPrint);
        return Utf8(TakePrinted());
    }

    LiveList& Main() { return m_lists[1]; }
    LiveList& Sub() { return m_lists[2]; }
    LiveList& Audio() { return m_lists[128]; }

    /** What frame, position and flag held when each frame call came, as "frame node flag". */
    Lines m_before;

private:
    int Answer(unsigned int type, unsigned char** frame, vexo_read_av_list_note* note, VEXO_BOOL* noVideo) {
        m_before.push_back((*frame == nullptr ? "null " : "set ") + std::to_string(note->note[0]) + ":" +
                           std::to_string(note->note[1]) + " " + std::to_string(*noVideo));
        LiveList& list = m_lists[type];
        if (list.result != 0)
            return list.result;
        note->note[0] = type;
        note->note[1] = ++list.given;
        *noVideo = list.noVideo;
        if (list.noFrame)
            return 0;
        if (list.frame == nullptr)
            m_frames.emplace_back(list.given);
        *frame = list.frame != nullptr ? list.frame : m_frames.back().Address();
        return 0;
    }

    void SetLists() {
        ON_CALL(platform, vexo_model_first_get_frame)
            .WillByDefault([this](unsigned int, vexo_user_id, vexo_enc_str_type type, unsigned char** frame,
                                  vexo_read_av_list_note* note,
                                  VEXO_BOOL* noVideo) { return Answer(type, frame, note, noVideo); });
        ON_CALL(platform, vexo_model_get_frame)
            .WillByDefault([this](unsigned int, vexo_user_id, vexo_enc_str_type type, const vexo_read_av_list_note*,
                                  unsigned char** frame, vexo_read_av_list_note* note,
                                  VEXO_BOOL* noVideo) { return Answer(type, frame, note, noVideo); });
    }

    std::map<unsigned int, LiveList> m_lists;
    std::list<TestFrame> m_frames;
};

#endif
