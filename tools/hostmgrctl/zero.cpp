// zero: reads the zero channel, one picture of several channels; chooses them, changes them on the way, writes a file.
#include <algorithm>
#include <cmath>
#include <memory>

#include "agent.h"
#include "channel_list.h"
#include "live_run.h"
#include "topic.h"

namespace hostmgrctl {
namespace {

constexpr int UNUSED = 0;  // the spare arguments that nobody reads
constexpr double LATEST = 1e6;

struct Options {
    LoginOptions login;
    LiveOptions live;
    std::string channels = "1-4";
    std::vector<std::string> then;
};

/** Which channels are shown from a moment on, seconds after the first picture. */
struct Choice {
    double at = 0;
    std::vector<unsigned> channels;

    /** Pictures in a row: the smallest square that holds the channels, and one alone when there are too many. */
    unsigned Side() const {
        const bool fits = channels.size() <= HOSTMGR_MAX_ZERO_PICTURES;
        return fits ? static_cast<unsigned>(std::ceil(std::sqrt(channels.size()))) : 1;
    }
    unsigned Pictures() const { return Side() * Side(); }
};

Choice ParseChoice(const std::string& text) {
    Choice choice;
    char* end = nullptr;
    choice.at = strtod(text.c_str(), &end);
    if (end == text.c_str() || *end != ':' || !(choice.at >= 0 && choice.at <= LATEST)) {
        throw Failure(ExitCode::Usage, "\"" + text + "\" is no change: write SECONDS:CHANNELS, such as 5:1-9");
    }
    choice.channels = ParseChannels(end + 1);
    return choice;
}

/** The first choice, and those that come later in the order in which they are due. */
std::vector<Choice> ChoicesOf(const Options& options) {
    std::vector<Choice> choices = {{0, ParseChannels(options.channels)}};
    for (const std::string& text : options.then) {
        choices.push_back(ParseChoice(text));
    }
    std::stable_sort(choices.begin() + 1, choices.end(),
                     [](const Choice& left, const Choice& right) { return left.at < right.at; });
    return choices;
}

/** The zero channel of a login, from its start to its stop. */
class ZeroStream {
public:
    ZeroStream(int login, std::vector<unsigned> channels)
        : m_handle(vexo_soft::vexo_HostMgr_Dev_StartZeroCodec(login, UNUSED, static_cast<unsigned>(channels.size()),
                                                              channels.data())) {
        if (m_handle < 0) {
            throw Failure(ExitCode::Refused, "the recorder does not start the zero channel: does it have one?");
        }
    }
    ~ZeroStream() { vexo_soft::vexo_HostMgr_Dev_StopZeroCodec(m_handle); }
    ZeroStream(const ZeroStream&) = delete;
    ZeroStream& operator=(const ZeroStream&) = delete;

    void Show(std::vector<unsigned> channels) const {
        if (vexo_soft::vexo_HostMgr_Dev_SetZeroCodecMode(m_handle, UNUSED, static_cast<unsigned>(channels.size()),
                                                         channels.data()) != 0) {
            throw Failure(ExitCode::Refused, "the recorder does not show " + ChannelsText(channels) +
                                                 " in its zero channel: try fewer, or others");
        }
    }

    bool Read(Frame* frame) const {
        unsigned char* buffer = nullptr;
        unsigned length = 0;
        unsigned type = 0;
        if (vexo_soft::vexo_HostMgr_Dev_ReadZeroCodecStream(m_handle, UNUSED, &buffer, &length, &type) != 0) {
            return false;
        }
        *frame = Frame(buffer, length, 0);
        return true;
    }

private:
    const int m_handle;
};

constexpr const char* INDENT = "\n          ";

/** The square, a line for each row, and what is to be said about it. */
std::string LayoutText(const Choice& choice) {
    const unsigned side = choice.Side();
    std::string text = side == 1 ? "one picture" : std::to_string(side) + " x " + std::to_string(side) + " pictures";
    for (unsigned place = 0; place < choice.Pictures(); ++place) {
        const std::string channel = place < choice.channels.size() ? std::to_string(choice.channels[place]) : "-";
        text += (place % side == 0 ? INDENT : "") + std::string(4 - channel.size(), ' ') + channel;
    }
    if (choice.channels.size() > HOSTMGR_MAX_ZERO_PICTURES) {
        text += INDENT + std::to_string(choice.channels.size()) + " channels are more than " +
                std::to_string(HOSTMGR_MAX_ZERO_PICTURES) + ", so the first is shown alone";
    }
    return text;
}

class ZeroRun {
public:
    explicit ZeroRun(const Options& options)
        : m_options(options), m_choices(ChoicesOf(options)), m_run(options.live, "the zero channel", false) {}

    ExitCode Run() {
        Read();
        return m_run.Finish(Head(), Members(), "does the recorder have one, and encodes it?");
    }

private:
    void Read() {
        const Agent agent(m_options.login);
        const ZeroStream stream(agent.Handle(), m_choices[0].channels);
        m_shown = 1;
        m_run.Read([&stream](Frame* frame) { return stream.Read(frame); },
                   [this, &stream](double at) { ShowWhatIsDue(stream, at); });
    }

    void ShowWhatIsDue(const ZeroStream& stream, double at) {
        for (; m_shown < m_choices.size() && m_choices[m_shown].at <= at; ++m_shown) {
            stream.Show(m_choices[m_shown].channels);
        }
    }

    std::string Head() const {
        std::string text = "zero channel";
        for (size_t i = 0; i < m_shown; ++i) {
            char from[32] = "";
            if (i > 0) {
                snprintf(from, sizeof(from), "from %g s on ", m_choices[i].at);
            }
            text += "\n  layout  " + std::string(from) + LayoutText(m_choices[i]);
        }
        return text;
    }

    nlohmann::ordered_json Members() const {
        nlohmann::ordered_json layouts = nlohmann::ordered_json::array();
        for (size_t i = 0; i < m_shown; ++i) {
            const Choice& choice = m_choices[i];
            nlohmann::ordered_json places = choice.channels;
            places.get_ref<nlohmann::ordered_json::array_t&>().resize(choice.Pictures());
            layouts.push_back({{"at", choice.at},
                               {"channels", choice.channels},
                               {"columns", choice.Side()},
                               {"pictures", choice.Pictures()},
                               {"places", places}});
        }
        return {{"layouts", layouts}};
    }

    const Options& m_options;
    const std::vector<Choice> m_choices;
    size_t m_shown = 0;  ///< how many of them have been sent
    LiveRun m_run;
};

Action Add(CLI::App& app) {
    auto options = std::make_shared<Options>();
    app.add_option("-c,--channels", options->channels, "channels to show, row by row: 2, 1,3 or 1-4")
        ->type_name("LIST")
        ->capture_default_str();
    app.add_option("--then", options->then, "show other channels from a moment on, seconds\nafter the first picture")
        ->type_name("SECONDS:LIST")
        ->allow_extra_args(false);
    AddLiveOptions(app, &options->live, ".mkv (best), .mov, .mp4, .h264");
    AddLoginOptions(app, &options->login);
    return [options] { return ZeroRun(*options).Run(); };
}

}  // namespace

const Topic ZERO_TOPIC = {
    "zero",
    "Reads several channels in one picture.",
    "  init, LoginV2, StartZeroCodec, ReadZeroCodecStream,\n"
    "  SetZeroCodecMode (--then), StopZeroCodec, Logout\n",
    "  hostmgrctl zero -s 10 -o all.mkv            channels 1 to 4, ten seconds\n"
    "  hostmgrctl zero -c 1,3,4 -n 50 --json       three of them in a 2 x 2 picture\n"
    "  hostmgrctl zero -c 1-4 --then 5:1-9 -o all.mkv\n"
    "                                              nine of them after five seconds\n",
    Add,
};

}  // namespace hostmgrctl
