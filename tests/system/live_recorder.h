// The recorder that the tests of live streams run on: a scenario of their own with two generated scenes, a video file
// and a file that is none. Readers and decoders stand in live_reader.h.
#ifndef TESTS_SYSTEM_LIVE_RECORDER_H
#define TESTS_SYSTEM_LIVE_RECORDER_H

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "core/scenario.h"
#include "vexo_cfgm.h"
#include "vexo_utility.h"

namespace live {

inline constexpr unsigned SCENE = 0;  // channels, counted from 0
inline constexpr unsigned OTHER_SCENE = 1;
inline constexpr unsigned FILM = 2;
inline constexpr unsigned NO_FILM = 3;
inline constexpr unsigned CHANNELS = 4;
inline constexpr std::array<int, 2> FILM_LUMA = {60, 180};

inline constexpr char SCENARIO[] = R"json({
    "name": "camera test",
    "frames_kept": 30,
    "cameras": [
        {"name": "Front gate", "main": {"width": 640, "height": 360, "fps": 25, "gop": 10, "kbps": 800},
         "sub": {"width": 352, "height": 288, "fps": 12, "gop": 12, "kbps": 200}, "audio": {"hz": 440, "level": 0.3}},
        {"name": "100% \"Süd\": {x}", "main": {"width": 640, "height": 360}, "audio": {"hz": 1250, "level": 0.7}},
        {"name": "Film", "source": "film.y4m", "main": {"width": 320, "height": 240, "fps": 10, "gop": 10}},
        {"name": "No film", "source": "text.y4m", "main": {"width": 320, "height": 240, "fps": 10, "gop": 10}}
    ]
})json";

/** A film of two pictures, dark and bright, half a second each. */
inline void WriteFilm(const std::filesystem::path& path) {
    std::ofstream film(path, std::ios::binary);
    film << "YUV4MPEG2 W64 H48 F2:1 Ip A1:1 C420jpeg\n";
    for (const int luma : FILM_LUMA) {
        film << "FRAME\n" << std::string(64 * 48, static_cast<char>(luma)) << std::string(64 * 48 / 2, '\x80');
    }
}

/** The folder of this process; gone with it, however it ends: death tests leave by exit. */
inline const std::filesystem::path& Folder() {
    static const std::filesystem::path& folder = *[] {
        char name[] = "/tmp/camera_test.XXXXXX";
        return new std::filesystem::path(mkdtemp(name));
    }();
    return folder;
}

/** Brings the recorder up on the test's scenario, before its first use. */
class Recorder : public testing::Environment {
public:
    void SetUp() override {
        atexit([] { std::filesystem::remove_all(Folder()); });
        WriteFilm(Folder() / "film.y4m");
        std::ofstream(Folder() / "text.y4m") << "This is no film.\n";
        std::ofstream(Folder() / "scenario.json") << SCENARIO;
        setenv("RECORDER_SCENARIO", (Folder() / "scenario.json").c_str(), 1);
        ASSERT_EQ(vexo_utility_init(VEXO_UTILITY_OPS_HOST), 0);
        ASSERT_EQ(vexo_cfgm_init(), 0);
    }
};

inline const testing::Environment* const RECORDER = testing::AddGlobalTestEnvironment(new Recorder);

inline const simulator::CameraSettings& Settings(unsigned channel) {
    return simulator::TheScenario().cameras[channel];
}

}  // namespace live

#endif
