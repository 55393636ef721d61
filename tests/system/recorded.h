// The recorder that the tests of recordings run on, with a history at a known time, and what they share to look at it:
// lists of recordings, channel readers, decoded stamps. Expectations do not belong here.
#ifndef TESTS_SYSTEM_RECORDED_H
#define TESTS_SYSTEM_RECORDED_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "control.h"
#include "live_reader.h"
#include "vexo_cfgm.h"
#include "vexo_model.h"
#include "vexo_utility.h"

namespace recorded {

constexpr unsigned CHANNELS = 2;
constexpr unsigned SEGMENTS = 4;  // as the scenario says, and what follows
constexpr long LENGTH = 6;        // seconds of a segment
constexpr unsigned FPS = 4;
constexpr unsigned GOP = 4;
constexpr long HOURS = 2;
constexpr long UNTIL = 1720173600;  // 2024-07-05 12:00:00 in the time zone below
constexpr unsigned ALL_TYPES = 0xFFFF;
constexpr unsigned MAIN = 1;
constexpr unsigned SUB = 2;

/** Brings the recorder up on a scenario, before its first use. */
class Recorder : public testing::Environment {
public:
    explicit Recorder(std::string scenario) : m_scenario(std::move(scenario)) {}

    void SetUp() override {
        setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
        const std::string path = std::string(getenv("RECORDER_HOME")) + "/scenario.json";
        std::ofstream(path) << m_scenario;
        setenv("RECORDER_SCENARIO", path.c_str(), 1);
        ASSERT_EQ(vexo_utility_init(VEXO_UTILITY_OPS_HOST), 0);
        ASSERT_EQ(vexo_cfgm_init(), 0);
    }

private:
    const std::string m_scenario;
};

inline constexpr char HISTORY[] = R"json({
    "name": "recording test",
    "cameras": [
        {"name": "Front gate", "main": {"width": 640, "height": 360}, "sub": {"width": 352, "height": 288}},
        {"name": "Car park", "main": {"width": 320, "height": 240}, "sub": {"width": 128, "height": 96}}
    ],
    "recordings": {
        "live": "off",
        "history": {"hours": 2, "segments": 4, "seconds": 6, "fps": 4, "gop": 4, "width": 320,
                    "until": "2024-07-05 12:00:00"}
    }
})json";

inline vexo_time_struct Local(long seconds) {
    vexo_time_struct time;
    vexo_utility_linux_to_vexo_time(seconds, &time);
    return time;
}

inline int Inquire(unsigned channel, long start, long stop, unsigned types, unsigned kind,
                   vexo_rec_file_inquiry_result** result) {
    const vexo_time_struct from = Local(start);
    const vexo_time_struct to = Local(stop);
    return vexo_model_inquiry_rec_by_time(1, VEXO_USER_HOSTMGR, channel, &from, &to, types, kind, result);
}

/** A list of recordings; channel counted from 0. */
class List {
public:
    explicit List(unsigned channel, long start = UNTIL - HOURS * 3600, long stop = UNTIL, unsigned types = ALL_TYPES,
                  unsigned kind = 0) {
        EXPECT_EQ(Inquire(channel, start, stop, types, kind, &m_list), 0);
    }
    ~List() { vexo_model_free_inquiry_rec_result(m_list); }
    List(const List&) = delete;
    List& operator=(const List&) = delete;

    vexo_rec_file_inquiry_result* Get() const { return m_list; }

    std::vector<vexo_rec_file> Files() const {
        std::vector<vexo_rec_file> files;
        for (const vexo_rec_file* file = m_list->first; file != nullptr; file = file->next) {
            files.push_back(*file);
        }
        return files;
    }

private:
    vexo_rec_file_inquiry_result* m_list = nullptr;
};

/** A channel reader. */
class Player {
public:
    Player() : m_reader(vexo_model_new_avss_reader(VEXO_USER_HOSTMGR, "player")) {}
    explicit Player(const List& list) : Player() {
        EXPECT_EQ(m_reader->open(list.Get()), 0);
        EXPECT_EQ(m_reader->start(), 0);
    }
    ~Player() { Delete(); }
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    vexo_avss_file_reader* operator->() const { return m_reader; }
    vexo_avss_file_reader* Get() const { return m_reader; }

    void Delete() {
        if (m_reader != nullptr) {
            vexo_model_delete_avss_reader(m_reader, "recorded.h", "Delete");
        }
        m_reader = nullptr;
    }

    /** The next frame, which stays held; nothing at the end. */
    std::optional<live::Frame> Read() {
        unsigned char* bytes = nullptr;
        if (m_reader->read_frame(&bytes, 0) != 0 || bytes == nullptr) {
            return std::nullopt;
        }
        return live::CopyOf(bytes, {}, VEXO_FALSE);
    }

    /** The next frame, released. */
    std::optional<live::Frame> Next() {
        std::optional<live::Frame> frame = Read();
        if (frame) {
            m_reader->release_frame(0);
        }
        return frame;
    }

    /** The next picture: sound is passed over. */
    std::optional<live::Frame> NextVideo() {
        std::optional<live::Frame> frame;
        do {
            frame = Next();
        } while (frame && frame->header.frame_type == VEXO_FRAME_AUDIO);
        return frame;
    }

    /** All that is left. */
    std::vector<live::Frame> Rest() {
        std::vector<live::Frame> frames;
        while (std::optional<live::Frame> frame = Next()) {
            frames.push_back(std::move(*frame));
        }
        return frames;
    }

private:
    vexo_avss_file_reader* m_reader;
};

inline bool IsVideo(const live::Frame& frame) {
    return frame.header.frame_type != VEXO_FRAME_AUDIO;
}

inline std::vector<live::Frame> VideoOf(const std::vector<live::Frame>& frames) {
    std::vector<live::Frame> video;
    for (const live::Frame& frame : frames) {
        if (IsVideo(frame)) {
            video.push_back(frame);
        }
    }
    return video;
}

}  // namespace recorded

#endif
