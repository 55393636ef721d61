// What the tests of the zero channel share: a login whose recorder has a mosaic with frames, its calls, and lines of
// the record. Expectations stand in the tests.
#ifndef ZERO_FIXTURE_H
#define ZERO_FIXTURE_H

#include "lv_fixture.h"

inline const std::string FIRST = "vexo_model_zero_channel_first_get_frame(97)";
inline std::string Next(const std::string& node) {
    return "vexo_model_zero_channel_get_frame(97, " + node + ")";
}
inline std::string Release(const std::string& node) {
    return "vexo_model_zero_channel_rel_frame(97, " + node + ")";
}

/** The outputs of one read, with values that show whether they were written. */
struct ZeroOutputs {
    unsigned char* frame = reinterpret_cast<unsigned char*>(0xEE);
    unsigned int length = 0xEEEEEEEE;
    unsigned int info = 0xEEEEEEEE;

    bool FrameUntouched() const { return frame == reinterpret_cast<unsigned char*>(0xEE); }
};

/** A test with a login of the handle 0x501 at a recorder whose mosaic has frames: 9:1, 9:2 ... */
class Zero : public LoginFixture {
protected:
    static constexpr int LOGIN = 0x501;

    void SetUp() override {
        LoginFixture::SetUp();
        ON_CALL(platform, vexo_model_zero_channel_first_get_frame)
            .WillByDefault([this](vexo_user_id, unsigned char** frame, vexo_read_av_list_note* note) {
                return Give(frame, note);
            });
        ON_CALL(platform, vexo_model_zero_channel_get_frame)
            .WillByDefault([this](vexo_user_id, const vexo_read_av_list_note*, unsigned char** frame,
                                  vexo_read_av_list_note* note) { return Give(frame, note); });
        ON_CALL(platform, vexo_model_zero_channel_set_video_channels)
            .WillByDefault([this](unsigned int, const unsigned int* channels, unsigned int) {
                m_list.assign(channels, channels + 256);
                return m_list_result;
            });
        LogInAll({LOGIN});
    }

    /** Channels 101, 102 ... */
    static std::vector<unsigned int> Channels(unsigned int count) {
        std::vector<unsigned int> channels(count);
        for (unsigned int index = 0; index < count; ++index)
            channels[index] = 101 + index;
        return channels;
    }
    static int Start(std::vector<unsigned int> channels = {1, 2, 3, 4}, int hLogin = LOGIN) {
        return vexo_soft::vexo_HostMgr_Dev_StartZeroCodec(hLogin, 0, static_cast<unsigned int>(channels.size()),
                                                          channels.data());
    }
    static int SetMode(std::vector<unsigned int> channels, int handle = LOGIN) {
        return vexo_soft::vexo_HostMgr_Dev_SetZeroCodecMode(handle, 0, static_cast<unsigned int>(channels.size()),
                                                            channels.data());
    }
    static int Read(ZeroOutputs* out, int handle = LOGIN) {
        return vexo_soft::vexo_HostMgr_Dev_ReadZeroCodecStream(handle, 0, &out->frame, &out->length, &out->info);
    }
    static int Stop(int handle = LOGIN) { return vexo_soft::vexo_HostMgr_Dev_StopZeroCodec(handle); }

    /** A read with this result, and the calls to the recorder. */
    Lines ReadGives(int expected) {
        ZeroOutputs out;
        return ModelCalls([&] { RawConsole([&] { EXPECT_EQ(Read(&out), expected); }); });
    }

    /** The calls to the recorder that an action makes; all calls, or those of the model library. */
    Lines CallsOf(const std::function<void()>& action) {
        platform.TakeCalls();
        action();
        return platform.TakeCalls();
    }
    Lines ModelCalls(const std::function<void()>& action) { return With("vexo_model_", CallsOf(action)); }

    int m_result = 0;                  // of the next frame calls
    bool m_no_frame = false;           // a success with a null frame
    unsigned int m_given = 0;          // frames so far
    int m_list_result = 0;             // of the list call
    std::vector<unsigned int> m_list;  // the last list, all 256 entries

private:
    int Give(unsigned char** frame, vexo_read_av_list_note* note) {
        EXPECT_EQ(*frame, nullptr);
        EXPECT_EQ(note->note[0] + note->note[1], 0u);
        if (m_result != 0)
            return m_result;
        *note = {{9, ++m_given}};
        if (m_no_frame)
            return 0;
        m_frames.emplace_back(m_given, 1000 + m_given, 5000 + m_given);
        *frame = m_frames.back().Address();
        return 0;
    }

    std::list<TestFrame> m_frames;
};

#endif
