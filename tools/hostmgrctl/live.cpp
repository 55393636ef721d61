// live: reads a channel's live video and audio, counts them, and writes them to a file.
#include <memory>

#include "agent.h"
#include "common_options.h"
#include "live_buffer.h"
#include "live_run.h"
#include "topic.h"

namespace hostmgrctl {
namespace {

struct Options {
    LoginOptions login;
    LiveOptions live;
    unsigned channel = 1;
    std::string stream = "main";
    bool no_audio = false;

    unsigned Stream() const { return StreamNumber(stream); }
};

void Read(const Options& options, LiveRun* run) {
    const Agent agent(options.login);
    LiveBuffer buffer(agent.Handle(), options.channel, options.Stream(), !options.no_audio);
    run->Read([&buffer](Frame* frame) { return buffer.Read(frame); });
}

ExitCode Run(const Options& options) {
    const std::string channel = "channel " + std::to_string(options.channel);
    LiveRun run(options.live, channel, !options.no_audio);
    Read(options, &run);
    return run.Finish(channel + ", " + options.stream + " stream",
                      {{"channel", options.channel}, {"stream", options.stream}},
                      "does the recorder have that channel?");
}

Action Add(CLI::App& app) {
    auto options = std::make_shared<Options>();
    AddChannelOption(app, &options->channel, 1, "channel, from 1");
    AddStreamOption(app, &options->stream);
    app.add_flag("--no-audio", options->no_audio, "video only");
    AddLiveOptions(app, &options->live, ".mkv (best), .mov, .mp4 (sound\nbecomes AAC), .h264 (pictures only)");
    AddLoginOptions(app, &options->login);
    return [options] { return Run(*options); };
}

}  // namespace

const Topic LIVE_TOPIC = {
    "live",
    "Reads live video and audio, counts, writes a file.",
    "  init, LoginV2, CreateRealStreamBuffer, RealStreamBufferEnableAudio,\n"
    "  ReadRealOneFrame, DestroyRealStreamBuffer, Logout\n",
    "  hostmgrctl live                             is channel 1 alive?\n"
    "  hostmgrctl live -c 2 -s 30 -o gate.mkv      half a minute to a file\n"
    "  hostmgrctl live -c 2 -S sub -n 100 --json   figures for a program\n"
    "  hostmgrctl live -s 0 -o long.mkv            until Ctrl-C\n",
    Add,
};

}  // namespace hostmgrctl
