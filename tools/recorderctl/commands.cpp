#include "commands.h"

#include <memory>

namespace recorderctl {
namespace {

using nlohmann::json;

/** What a person typed; outlives the parser's use of it. */
struct Words {
    unsigned number = 0;
    unsigned nth = 1;
    unsigned times = 1;
    double seconds = 0;
    std::string word;
};

/** An event of one kind that is switched: a number, and one of two words of which the first begins it. */
Request AddSwitch(CLI::App& command, const char* kind, const char* subject, const char* begins, const char* ends) {
    auto words = std::make_shared<Words>();
    command.add_option(subject, words->number, std::string("number of the ") + subject + ", from 1")->required();
    command.add_option("state", words->word, std::string(begins) + " or " + ends)
        ->required()
        ->check(CLI::IsMember({begins, ends}));
    return [words, kind, begins] {
        return json{{"command", "event"}, {"kind", kind}, {"number", words->number}, {"on", words->word == begins}};
    };
}

Request AddMotion(CLI::App& command) {
    return AddSwitch(command, "motion", "channel", "on", "off");
}
Request AddShelter(CLI::App& command) {
    return AddSwitch(command, "shelter", "channel", "on", "off");
}
Request AddCamera(CLI::App& command) {
    return AddSwitch(command, "video loss", "channel", "lost", "back");
}
Request AddInput(CLI::App& command) {
    return AddSwitch(command, "input", "input", "on", "off");
}
Request AddCameraInput(CLI::App& command) {
    return AddSwitch(command, "camera input", "channel", "on", "off");
}

Request AddDisk(CLI::App& command) {
    auto words = std::make_shared<Words>();
    command.add_option("disk", words->number, "number of the disk, from 1")->required();
    command.add_option("state", words->word, "full, error or ok")
        ->required()
        ->check(CLI::IsMember({"full", "error", "ok"}));
    return [words] { return json{{"command", "disk"}, {"number", words->number}, {"state", words->word}}; };
}

/** A command with one word. */
Request AddWord(CLI::App& command, const char* name, const std::vector<std::string>& choice, const char* help) {
    auto words = std::make_shared<Words>();
    command.add_option("state", words->word, help)->required()->check(CLI::IsMember(choice));
    return [words, name] { return json{{"command", name}, {"state", words->word}}; };
}

Request AddNetwork(CLI::App& command) {
    return AddWord(command, "network", {"lost", "conflict", "ok"},
                   "lost: no link; conflict: another device has the address; ok");
}

Request AddPower(CLI::App& command) {
    return AddWord(command, "power", {"on", "off", "reboot"}, "on, off or reboot");
}

Request AddFail(CLI::App& command) {
    auto words = std::make_shared<Words>();
    command.add_option("operation", words->word, "platform operation, such as vexo_model_get_frame")->required();
    command.add_option("--nth", words->nth, "the use from now on that fails first, from 1")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    command.add_option("--times", words->times, "how many uses in a row fail")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    return [words] {
        return json{{"command", "fail"}, {"operation", words->word}, {"nth", words->nth}, {"times", words->times}};
    };
}

Request AddSkip(CLI::App& command) {
    auto words = std::make_shared<Words>();
    command.add_option("seconds", words->seconds, "how far the recorder's clock goes forward")->required();
    return [words] { return json{{"command", "skip"}, {"seconds", words->seconds}}; };
}

Request AddDiagnose(CLI::App& command) {
    auto words = std::make_shared<Words>();
    command.add_option("command", words->number, "number of the command in the diagnostics menu")->required();
    return [words] { return json{{"command", "diagnose"}, {"number", words->number}}; };
}

Request AddStatus(CLI::App&) {
    return [] { return json{{"command", "status"}}; };
}

}  // namespace

const std::vector<Command>& Commands() {
    static const std::vector<Command> commands = {
        {"status", "shows what the recorder is and does", "recorderctl status\nrecorderctl --json status | jq .events",
         AddStatus},
        {"motion", "begins or ends motion before a camera", "recorderctl motion 2 on", AddMotion},
        {"shelter", "covers a camera's view or frees it", "recorderctl shelter 1 on", AddShelter},
        {"camera", "takes a camera's video signal away or gives it back",
         "recorderctl camera 3 lost\nrecorderctl camera 3 back", AddCamera},
        {"input", "closes or opens an alarm input of the recorder", "recorderctl input 1 on", AddInput},
        {"camera-input", "closes or opens the alarm input of a network camera", "recorderctl camera-input 2 on",
         AddCameraInput},
        {"disk", "fills a disk, breaks it or makes it good", "recorderctl disk 1 full\nrecorderctl disk 1 ok", AddDisk},
        {"network", "takes the network away or gives it back", "recorderctl network lost", AddNetwork},
        {"fail", "lets a platform operation fail",
         "recorderctl fail vexo_model_get_frame --nth 3\nrecorderctl fail vexo_model_login --times 2", AddFail},
        {"power", "presses the recorder's switch", "recorderctl power off\nrecorderctl power on", AddPower},
        {"skip", "lets planned events, moving cameras and a reboot go forward in time", "recorderctl skip 3600",
         AddSkip},
        {"diagnose", "picks a command in the diagnostics menu", "recorderctl diagnose 1", AddDiagnose},
    };
    return commands;
}

}  // namespace recorderctl
