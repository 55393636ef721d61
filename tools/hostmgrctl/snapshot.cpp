// snapshot: takes a picture of the moment and writes it as a JPEG file.
#include <hostmgr_dev.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>

#include "agent.h"
#include "common_options.h"
#include "console.h"
#include "jpeg_probe.h"
#include "live_count.h"
#include "local_time.h"
#include "output_file.h"
#include "safe_text.h"
#include "topic.h"

namespace hostmgrctl {
namespace {

using std::chrono::steady_clock;

// The library does not tell the size of a picture that does not fit, nor that this was the reason: more room is tried.
constexpr unsigned FIRST_ROOM = 256U << 10U;  // bytes; a usual picture has a third of it
constexpr unsigned MOST_ROOM = 64U << 20U;
constexpr unsigned GROWTH = 4;

struct Options {
    LoginOptions login;
    unsigned channel = 1;
    std::string stream = "main";
    std::string output;
    bool json = false;

    std::string Path() const { return output.empty() ? "channel" + std::to_string(channel) + ".jpg" : output; }
};

struct Snapshot {
    std::string jpeg;
    PictureSize size;
    time_t taken = 0;                ///< seconds since 1970
    steady_clock::time_point asked;  ///< the picture is of this moment or later
};

void CheckExtension(const std::string& path) {
    const std::string extension = std::filesystem::path(path).extension().string();
    const bool special = WholePlace(path) == FilePlace::Direct;
    if (!special && extension != ".jpg" && extension != ".jpeg") {
        throw Failure(ExitCode::Usage, "the picture is a JPEG: end the name " + path + " with .jpg or .jpeg");
    }
}

Snapshot Take(const Options& options) {
    const Agent agent(options.login);
    const int stream = static_cast<int>(StreamNumber(options.stream));
    for (unsigned room = FIRST_ROOM; room <= MOST_ROOM; room *= GROWTH) {
        Snapshot snapshot = {std::string(room, '\0'), {}, time(nullptr), steady_clock::now()};
        unsigned size = 0;
        if (vexo_soft::vexo_HostMgr_Dev_CapturePicture(agent.Handle(), static_cast<int>(options.channel), stream,
                                                       snapshot.jpeg.data(), room, &size) == 0) {
            snapshot.jpeg.resize(std::min(size, room));
            return snapshot;
        }
    }
    throw Failure(ExitCode::Refused, "the recorder took no picture of channel " + std::to_string(options.channel) +
                                         ": does it have that channel?");
}

long AgeOf(const Snapshot& snapshot) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(steady_clock::now() - snapshot.asked).count();
}

void PrintText(const Options& options, const Snapshot& snapshot, long age) {
    FILE* out = console::Data();
    fprintf(out, "channel %u, picture of %s\n", options.channel, TimeText(snapshot.taken).c_str());
    fprintf(out, "  size    %dx%d pixels, %s\n", snapshot.size.width, snapshot.size.height,
            Amount(snapshot.jpeg.size()).c_str());
    fprintf(out, "  age     at most %ld ms when it was written\n", age);
    fprintf(out, "  file    %s\n", options.Path().c_str());
}

void PrintJson(const Options& options, const Snapshot& snapshot, long age) {
    const nlohmann::ordered_json json = {{"channel", options.channel},       {"time", TimeJson(snapshot.taken)},
                                         {"width", snapshot.size.width},     {"height", snapshot.size.height},
                                         {"bytes", snapshot.jpeg.size()},    {"age_ms", age},
                                         {"path", ValidText(options.Path())}};
    fprintf(console::Data(), "%s\n", json.dump(2).c_str());
}

ExitCode Run(const Options& options) {
    CheckExtension(options.Path());
    CheckWritable(options.Path(), WholePlace(options.Path()));
    Snapshot snapshot = Take(options);
    const auto size = ProbeJpeg(snapshot.jpeg);
    if (!size) {
        throw Failure(ExitCode::Refused, "what the recorder gave for channel " + std::to_string(options.channel) +
                                             " is no whole JPEG picture, so nothing was written: try again");
    }
    snapshot.size = *size;
    WriteWhole(options.Path(), snapshot.jpeg);
    const long age = AgeOf(snapshot);
    options.json ? PrintJson(options, snapshot, age) : PrintText(options, snapshot, age);
    return ExitCode::Ok;
}

Action Add(CLI::App& app) {
    auto options = std::make_shared<Options>();
    AddChannelOption(app, &options->channel, 1, "channel, from 1");
    AddStreamOption(app, &options->stream, "main or sub; the recorder takes it as a wish");
    app.add_option("-o,--output", options->output, "file to write, .jpg; without it channelN.jpg")->type_name("FILE");
    app.add_flag("--json", options->json, "print one JSON object");
    AddLoginOptions(app, &options->login);
    return [options] { return Run(*options); };
}

}  // namespace

const Topic SNAPSHOT_TOPIC = {
    "snapshot",
    "Takes a picture of the moment, writes a JPEG file.",
    "  init, LoginV2, CapturePicture, Logout\n",
    "  hostmgrctl snapshot                         channel 1, to channel1.jpg\n"
    "  hostmgrctl snapshot -c 2 -o gate.jpg\n"
    "  hostmgrctl snapshot -c 2 -o gate.jpg --json\n",
    Add,
};

}  // namespace hostmgrctl
