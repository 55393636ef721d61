// ptz: turns cameras, zooms, calls presets and tours, by name; what turns is stopped again.
#include <chrono>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <thread>

#include "agent.h"
#include "channel_list.h"
#include "console.h"
#include "control.h"
#include "ptz_order.h"
#include "stop.h"
#include "topic.h"

namespace hostmgrctl {
namespace {

using std::chrono::steady_clock;

constexpr std::chrono::milliseconds POLL{5};
constexpr double USUAL_SECONDS = 1;  // of a movement that would not end by itself
constexpr double LONGEST = 3600;
constexpr unsigned HIGHEST_SPEED = 255;

struct Options {
    LoginOptions login;
    std::string channels = "1";
    std::vector<std::string> words;
    PtzModifiers modifiers;
    std::optional<double> seconds;
    bool json = false;
};

class PtzRun {
public:
    explicit PtzRun(const Options& options)
        : m_options(options),
          m_channels(ParseChannels(options.channels)),
          m_order(ParsePtzOrder(options.words, options.modifiers)) {
        if (options.seconds && m_order.course == PtzCourse::Once) {
            throw Failure(ExitCode::Usage, "--for does not go with \"" + m_order.text + "\", which ends by itself");
        }
        const bool goes_on = m_order.course == PtzCourse::Going;
        m_seconds = options.seconds.value_or(goes_on ? USUAL_SECONDS : 0);
    }

    ExitCode Run() {
        const Agent agent(m_options.login);
        NoteMissingChannels(agent.Handle(), m_channels);
        for (const _tagVexoHostMgrPtzCmd& command : m_order.commands) {
            SendAll(agent.Handle(), command);
        }
        if (m_seconds > 0) {
            Wait();
            SendAll(agent.Handle(), PtzStop());
        }
        m_options.json ? PrintJson() : PrintText();
        return ExitCode::Ok;
    }

private:
    void SendAll(int login, _tagVexoHostMgrPtzCmd command) const {
        for (const unsigned channel : m_channels) {
            Send(login, {HOSTMGR_CONTROL_PTZ, channel, &command, sizeof(command)},
                 "\"" + m_order.text + "\" of channel " + std::to_string(channel));
        }
    }

    /** Ctrl-C ends the movement, too: nobody wants a camera that turns on. */
    void Wait() const {
        const auto end = steady_clock::now() + std::chrono::duration<double>(m_seconds);
        while (steady_clock::now() < end && !StopRequested()) {
            std::this_thread::sleep_for(POLL);
        }
    }

    void PrintText() const {
        fprintf(console::Data(), "%s: ordered \"%s\"", ChannelsText(m_channels).c_str(), m_order.text.c_str());
        if (m_seconds > 0 && StopRequested()) {
            fprintf(console::Data(), ", stopped on request");
        } else if (m_seconds > 0) {
            fprintf(console::Data(), " for %g s, then stopped", m_seconds);
        } else if (m_order.course == PtzCourse::Going) {
            fprintf(console::Data(), ", which goes on until \"stop\"");
        }
        fprintf(console::Data(), "\n");
    }

    void PrintJson() const {
        nlohmann::ordered_json commands = nlohmann::ordered_json::array();
        for (const _tagVexoHostMgrPtzCmd& command : m_order.commands) {
            commands.push_back({command.dwPtzCmd, command.dwParam1, command.dwParam2, command.dwParam3});
        }
        const nlohmann::ordered_json json = {{"channels", m_channels},
                                             {"order", m_order.text},
                                             {"commands", commands},
                                             {"seconds", m_seconds},
                                             {"stopped", m_seconds > 0}};
        fprintf(console::Data(), "%s\n", json.dump(2).c_str());
    }

    const Options& m_options;
    const std::vector<unsigned> m_channels;
    const PtzOrder m_order;
    double m_seconds = 0;  ///< until the stop; 0: none is sent
};

Action Add(CLI::App& app) {
    auto options = std::make_shared<Options>();
    app.add_option("order", options->words,
                   "up, down, left, right, up-left, up-right, down-left,\ndown-right, auto (to and fro), stop, home;\n"
                   "zoom in|out, focus near|far, iris open|close;\n"
                   "light on|off, wiper on|off;\n"
                   "preset set|goto|clear N;\n"
                   "tour add|delete TOUR POINT, tour start|stop TOUR;\n"
                   "track begin|end|run N;\n"
                   "centre X Y [ZOOM]: that point of the picture, in\n"
                   "ten-thousandths, zoom in tenths of the present one;\n"
                   "raw COMMAND [P1] [P2] [P3]: any PTZ command number")
        ->type_name("")
        ->required();
    app.add_option("-c,--channel", options->channels, "channels, from 1: 2, 1,3 or 1-4")
        ->type_name("LIST")
        ->capture_default_str();
    app.add_option("-x,--speed", options->modifiers.speed,
                   "of movements and steps, in the recorder's own\nmeasure; 0: its usual one")
        ->type_name("N")
        ->check(CLI::Range(0U, HIGHEST_SPEED).description(""))
        ->capture_default_str();
    app.add_option("-s,--for", options->seconds,
                   "stop after so many seconds; directions and auto: 1\nunless given, and 0 lets them go on")
        ->type_name("SECONDS")
        ->check(CLI::Range(0.0, LONGEST).description(""));
    app.add_option("--preset", options->modifiers.preset,
                   "tour add: the preset of that point; 0: the one\nof its number")
        ->type_name("N")
        ->check(CLI::Range(0U, 255U).description(""));
    app.add_option("--dwell", options->modifiers.dwell, "tour add: how long to stay there; 0: as is usual")
        ->type_name("SECONDS")
        ->check(CLI::Range(0U, 3600U).description(""));
    app.add_flag("--json", options->json, "print one JSON object");
    AddLoginOptions(app, &options->login);
    return [options] { return PtzRun(*options).Run(); };
}

}  // namespace

const Topic PTZ_TOPIC = {
    "ptz",
    "Moves cameras: directions, zoom, presets, tours.",
    "  init, LoginV2, GetConfig 100, Control 2, Logout\n",
    "  hostmgrctl ptz left                         channel 1 for a second\n"
    "  hostmgrctl ptz -c 1-3 up-right -x 7 -s 2.5  three cameras, fast\n"
    "  hostmgrctl ptz zoom in\n"
    "  hostmgrctl ptz preset set 5\n"
    "  hostmgrctl ptz tour add 1 2 --preset 5 --dwell 10\n"
    "  hostmgrctl ptz tour start 1\n",
    Add,
};

}  // namespace hostmgrctl
