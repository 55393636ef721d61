#include "play_step.h"

#include <hostmgr_dev.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>

#include "exit_code.h"
#include "local_time.h"

namespace hostmgrctl {
namespace {

constexpr double LATEST = 1e6;  // seconds

enum class Value { None, Speed, Time, Switch, Channel };

struct Form {
    const char* name;
    StepKind kind;
    Value value;
};

constexpr Form FORMS[] = {
    {"speed", StepKind::Speed, Value::Speed},  {"pause", StepKind::Pause, Value::None},
    {"resume", StepKind::Resume, Value::None}, {"seek", StepKind::Seek, Value::Time},
    {"audio", StepKind::Audio, Value::Switch}, {"add", StepKind::Add, Value::Channel},
    {"drop", StepKind::Drop, Value::Channel},  {"main", StepKind::Main, Value::Channel},
    {"sub", StepKind::Sub, Value::Channel},    {"stop", StepKind::Stop, Value::None},
};

[[noreturn]] void Refuse(const std::string& text) {
    std::string forms = STEP_FORMS;
    std::replace(forms.begin(), forms.end(), '\n', ' ');
    throw Failure(ExitCode::Usage, "\"" + text + "\" is no step: write SECONDS:" + forms);
}

long Whole(const std::string& text, const std::string& value, long least, long most) {
    char* end = nullptr;
    const long number = strtol(value.c_str(), &end, 10);
    if (value.empty() || *end != '\0' || number < least || number > most) {
        Refuse(text);
    }
    return number;
}

long ParseValue(const std::string& text, const std::string& value, Value kind) {
    switch (kind) {
        case Value::Speed:
            return Whole(text, value, HOSTMGR_PLAY_SPEED_MIN, HOSTMGR_PLAY_SPEED_MAX);
        case Value::Channel:
            return Whole(text, value, 1, HOSTMGR_MAX_CHANNELS);
        case Value::Time:
            return ParseTime(value, time(nullptr));
        case Value::Switch:
            return value == "on" || value == "off" ? static_cast<long>(value == "on") : (Refuse(text), 0);
        case Value::None:
            break;
    }
    return value.empty() ? 0 : (Refuse(text), 0);
}

PlayStep ParseStep(const std::string& text) {
    PlayStep step;
    char* end = nullptr;
    step.at = strtod(text.c_str(), &end);
    if (end == text.c_str() || *end != ':' || !(step.at >= 0 && step.at <= LATEST)) {
        Refuse(text);
    }
    const std::string order = end + 1;
    const size_t equals = std::min(order.find('='), order.size());
    const auto* form = std::find_if(std::begin(FORMS), std::end(FORMS),
                                    [&](const Form& known) { return order.substr(0, equals) == known.name; });
    if (form == std::end(FORMS)) {
        Refuse(text);
    }
    step.kind = form->kind;
    step.value = ParseValue(text, order.substr(std::min(equals + 1, order.size())), form->value);
    return step;
}

}  // namespace

const char* const STEP_FORMS =
    "speed=N, pause,\nresume, seek=TIME, audio=on|off, add=CHANNEL,\ndrop=CHANNEL, main=CHANNEL, sub=CHANNEL, stop";

std::vector<PlayStep> ParseSteps(const std::vector<std::string>& texts) {
    std::vector<PlayStep> steps;
    steps.reserve(texts.size());
    for (const std::string& text : texts) {
        steps.push_back(ParseStep(text));
    }
    std::stable_sort(steps.begin(), steps.end(),
                     [](const PlayStep& left, const PlayStep& right) { return left.at < right.at; });
    return steps;
}

}  // namespace hostmgrctl
