// talk: plays a sound file at the recorder, at the pace of the sound, and writes down what is heard there.
#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <optional>

#include "agent.h"
#include "common_options.h"
#include "console.h"
#include "level.h"
#include "live_count.h"
#include "progress.h"
#include "sound_input.h"
#include "stop.h"
#include "talk_line.h"
#include "topic.h"
#include "wave_output.h"

namespace hostmgrctl {
namespace {

using nlohmann::ordered_json;
using std::chrono::steady_clock;

constexpr std::chrono::milliseconds POLL{5};
constexpr std::chrono::milliseconds METER_INTERVAL{100};
constexpr int FRAMES_A_SECOND = 25;
constexpr double USUAL_SECONDS = 10;
constexpr double LONGEST = 1e6;
// From the last frame's sending until the recorder has played it: a stop drops what waits.
constexpr double PLAY_OUT = 0.5;
constexpr double ENDLESS = std::numeric_limits<double>::infinity();

struct Options {
    LoginOptions login;
    unsigned channel = 0;
    std::string input;
    std::string output;
    std::string law = "a";
    std::optional<double> seconds;
    double timeout = 5;
    bool json = false;
};

/** How a law is called, in options, in talk blocks, by the FFmpeg libraries, and by people. */
struct Law {
    const char* option;
    HostMgrTalkCodec codec;
    AVCodecID id;
    const char* name;
};

constexpr Law LAWS[] = {
    {"a", HOSTMGR_TALK_G711A, AV_CODEC_ID_PCM_ALAW, "G.711 A-law"},
    {"u", HOSTMGR_TALK_G711U, AV_CODEC_ID_PCM_MULAW, "G.711 mu-law"},
};

const Law& LawOf(const std::string& option) {
    return *std::find_if(std::begin(LAWS), std::end(LAWS), [&](const Law& law) { return law.option == option; });
}

/** Null for a codec that is not G.711. */
const Law* LawOf(uint8_t codec) {
    const auto* law = std::find_if(std::begin(LAWS), std::end(LAWS), [=](const Law& it) { return it.codec == codec; });
    return law != std::end(LAWS) ? law : nullptr;
}

double SecondsOf(uint64_t samples) {
    return static_cast<double>(samples) / G711_RATE;
}

double SecondsSince(steady_clock::time_point moment) {
    return std::chrono::duration<double>(steady_clock::now() - moment).count();
}

/** One direction: what has gone that way. */
struct Way {
    uint64_t samples = 0;
    Level level;
    Level now;  ///< of the last piece, for the meter

    void Add(const Samples& piece) {
        samples += piece.size();
        level.Add(piece);
        now = {};
        now.Add(piece);
    }

    ordered_json Json(const Law& law) const {
        ordered_json json = {{"seconds", SecondsOf(samples)}, {"codec", law.name}};
        level.AddJson(&json);
        return json;
    }

    void Print(const char* title, const Law& law) const {
        fprintf(console::Data(), "  %-8s%.1f s, %s\n          %s\n", title, SecondsOf(samples), law.name,
                level.Text().c_str());
    }
};

class TalkRun {
public:
    explicit TalkRun(const Options& options) : m_options(options), m_law(LawOf(options.law)), m_say(m_law.id) {
        if (!options.input.empty()) {
            m_input = std::make_unique<SoundInput>(options.input);
        }
        if (!options.output.empty()) {
            m_output = std::make_unique<WaveOutput>(options.output);
        }
    }

    ExitCode Run() {
        Talk();
        if (m_output != nullptr) {
            m_output->Finish();
        }
        m_options.json ? PrintJson() : PrintText();
        if (m_silent) {
            char text[120];
            snprintf(text, sizeof(text), "the recorder gave no %ssound for %g seconds",
                     m_heard.samples > 0 ? "further " : "", m_options.timeout);
            throw Failure(ExitCode::NoData, text);
        }
        if (m_sent.samples + m_heard.samples == 0) {
            throw Failure(ExitCode::NoData, "stopped before any sound was sent or heard");
        }
        return ExitCode::Ok;
    }

private:
    void Talk() {
        const Agent agent(m_options.login);
        TalkLine line(agent.Handle(), m_options.channel);
        Progress progress(METER_INTERVAL);
        m_began = m_last_heard = m_last_sent = steady_clock::now();
        while (!Done()) {
            SayWhatIsDue(line);
            if (const auto block = line.Hear(POLL)) {
                Take(*block);
            }
            if (progress.Due()) {
                progress.Show(Meter());
            }
        }
    }

    /** Frames are sent at the pace of the sound; after a hold-up those that are late follow at once. */
    void SayWhatIsDue(const TalkLine& line) {
        const auto due = static_cast<uint64_t>(SecondsSince(m_began) * FRAMES_A_SECOND) + 1;
        while (!SaidAll() && m_sent.samples < due * HOSTMGR_TALK_FRAME_SIZE) {
            Samples piece = m_input->Next(HOSTMGR_TALK_FRAME_SIZE);
            m_exhausted = piece.size() < HOSTMGR_TALK_FRAME_SIZE;
            if (piece.empty()) {
                return;
            }
            m_sent.Add(piece);
            piece.resize(HOSTMGR_TALK_FRAME_SIZE);  // the last one is filled up with silence
            line.Say(m_law.codec, m_say.Encode(piece));
            m_last_sent = steady_clock::now();
        }
    }

    bool SaidAll() const {
        return m_input == nullptr || m_exhausted || static_cast<double>(m_sent.samples) >= Length();
    }

    /** In samples. */
    double Length() const {
        if (m_options.seconds) {
            return *m_options.seconds > 0 ? std::ceil(*m_options.seconds * G711_RATE) : ENDLESS;
        }
        if (m_input != nullptr) {
            return m_exhausted ? static_cast<double>(m_sent.samples) : ENDLESS;
        }
        return USUAL_SECONDS * G711_RATE;
    }

    bool HeardAll() const { return static_cast<double>(m_heard.samples) >= Length(); }

    /** Whether it matters that something is heard: who only speaks does not mind a recorder without a microphone. */
    bool Listens() const { return m_output != nullptr || m_input == nullptr; }

    void Take(const HeardBlock& block) {
        m_last_heard = steady_clock::now();
        Samples samples = DecoderFor(block.codec).Decode(block.audio.data(), block.audio.size());
        const double room = Length() - static_cast<double>(m_heard.samples);
        samples.resize(static_cast<size_t>(std::clamp(room, 0.0, static_cast<double>(samples.size()))));
        m_heard.Add(samples);
        if (m_output != nullptr) {
            m_output->Append(samples);
        }
    }

    /** As the block says; a block that does not say continues the one before. */
    G711& DecoderFor(uint8_t codec) {
        m_heard_law = codec != 0 ? LawOf(codec) : m_heard_law;
        if (m_heard_law == nullptr) {
            throw Failure(ExitCode::Refused, "the recorder's sound is not G.711, but codec " + std::to_string(codec));
        }
        if (m_hear == nullptr || m_hear->Law() != m_heard_law->id) {
            m_hear = std::make_unique<G711>(m_heard_law->id);
        }
        return *m_hear;
    }

    bool Done() {
        m_stopped = StopRequested();
        m_silent = Listens() && SecondsSince(m_last_heard) >= m_options.timeout;
        const bool said = SaidAll() && (m_input == nullptr || SecondsSince(m_last_sent) >= PLAY_OUT);
        const bool endless = m_options.seconds && *m_options.seconds == 0;
        const bool heard = !Listens() || HeardAll() || Overdue();
        return m_stopped || m_silent || (said && heard && !endless);
    }

    /** By the clock on the wall: a recorder whose sound comes too slowly is not heard for hours. */
    bool Overdue() const { return SecondsSince(m_began) > Length() / G711_RATE + m_options.timeout; }

    std::string Meter() const {
        char seconds[32];
        snprintf(seconds, sizeof(seconds), "%5.1f s", SecondsSince(m_began));
        std::string text = seconds;
        text += "  heard " + LevelBar(m_heard.now.Mean());
        if (m_input != nullptr) {
            text += "  sent " + LevelBar(SaidAll() ? -ENDLESS : m_sent.now.Mean());
        }
        return text + " dBFS";
    }

    void PrintText() const {
        FILE* out = console::Data();
        fprintf(out, "talk with %s\n",
                m_options.channel == 0 ? "the recorder" : ("channel " + std::to_string(m_options.channel)).c_str());
        if (m_input != nullptr) {
            m_sent.Print("sent", m_law);
        }
        if (m_heard.samples > 0) {
            m_heard.Print("heard", *m_heard_law);
        } else {
            fprintf(out, "  heard   nothing\n");
        }
        if (m_output != nullptr && m_output->Size() > 0) {
            fprintf(out, "  file    %s, %s\n", m_output->Path().c_str(), Amount(m_output->Size()).c_str());
        }
        if (m_stopped) {
            fprintf(out, "  ended   on request, before its time\n");
        }
    }

    void PrintJson() const {
        ordered_json json = {{"channel", m_options.channel},
                             {"sent", nullptr},
                             {"heard", nullptr},
                             {"stopped", m_stopped},
                             {"file", nullptr}};
        if (m_input != nullptr) {
            json["sent"] = m_sent.Json(m_law);
            json["sent"]["path"] = m_input->Path();
        }
        if (m_heard.samples > 0) {
            json["heard"] = m_heard.Json(*m_heard_law);
        }
        if (m_output != nullptr && m_output->Size() > 0) {
            json["file"] = {{"path", m_output->Path()}, {"bytes", m_output->Size()}};
        }
        fprintf(console::Data(), "%s\n", json.dump(2).c_str());
    }

    const Options& m_options;
    const Law& m_law;
    G711 m_say;
    std::unique_ptr<G711> m_hear;
    const Law* m_heard_law = nullptr;
    std::unique_ptr<SoundInput> m_input;
    std::unique_ptr<WaveOutput> m_output;
    Way m_sent;
    Way m_heard;
    steady_clock::time_point m_began;
    steady_clock::time_point m_last_sent;
    steady_clock::time_point m_last_heard;  ///< at first: when the waiting began
    bool m_exhausted = false;               ///< the input has come to its end
    bool m_silent = false;
    bool m_stopped = false;
};

Action Add(CLI::App& app) {
    auto options = std::make_shared<Options>();
    AddChannelOption(app, &options->channel, 0, "0: with the recorder itself; from 1: with that\nchannel's camera");
    app.add_option("-i,--input", options->input,
                   "sound file to play there: WAV, or any other; rate\nand channels are converted")
        ->type_name("FILE");
    app.add_option("-o,--output", options->output, "WAV file for what is heard there: 16 bits, mono,\n8000 Hz")
        ->type_name("FILE");
    app.add_option("-s,--seconds", options->seconds,
                   "how long; 0: until Ctrl-C. Unless given: as long\nas the input, without one 10 seconds")
        ->type_name("N")
        ->check(CLI::Range(0.0, LONGEST).description(""));
    app.add_option("--law", options->law, "G.711 of what is sent: a or u")
        ->type_name("LAW")
        ->check(CLI::IsMember({"a", "u"}).description(""))
        ->capture_default_str();
    AddTimeoutOption(app, &options->timeout,
                     "give up after so many seconds in which nothing is\nheard, unless there is only sent");
    app.add_flag("--json", options->json, "print one JSON object");
    AddLoginOptions(app, &options->login);
    return [options] { return TalkRun(*options).Run(); };
}

}  // namespace

const Topic TALK_TOPIC = {
    "talk",
    "Speaks and listens through the recorder.",
    "  init, LoginV2, StartTalk, StartTalkEx (--channel), SetTalkCallback,\n"
    "  InputTalkData (--input), StopTalk, Logout\n",
    "  hostmgrctl talk                             ten seconds; how loud is it there?\n"
    "  hostmgrctl talk -o there.wav -s 30          half a minute to a file\n"
    "  hostmgrctl talk -c 2 -i announcement.wav    plays it at channel 2's camera\n"
    "  hostmgrctl talk -i question.wav -o answer.wav -s 20 --json\n",
    Add,
};

}  // namespace hostmgrctl
