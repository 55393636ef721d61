#include "status.h"

#include <algorithm>
#include <cstdio>

namespace recorderctl {
namespace {

using nlohmann::json;

std::string Number(double number, const char* format) {
    char text[64];
    snprintf(text, sizeof text, format, number);
    return text;
}

/** The entry of a part for that channel; null when the part is not there. */
json EntryOf(const json& status, const char* part, unsigned channel) {
    for (const json& entry : status.value(part, json::array())) {
        if (entry.at("channel") == channel) {
            return entry;
        }
    }
    return nullptr;
}

std::string HeadText(const json& head) {
    if (head.is_null()) {
        return "";
    }
    return ", looks at pan " + Number(head.at("pan"), "%.2f") + " tilt " + Number(head.at("tilt"), "%.2f") + " zoom " +
           Number(head.at("zoom"), "%.1f") + (head.at("moving").get<bool>() ? " (moving)" : "");
}

std::string RecordText(const json& record) {
    if (record.is_null()) {
        return "";
    }
    return ", record mode " + record.at("mode").get<std::string>() +
           (record.at("manual").get<bool>() ? " and by hand" : "");
}

std::string ChannelText(const json& status, const json& channel) {
    const unsigned number = channel.at("channel");
    return "  " + std::to_string(number) + " " + channel.at("name").get<std::string>() + ": " +
           (channel.at("signal").get<bool>() ? "signal" : "NO SIGNAL") +
           (channel.at("encoding").get<bool>() ? ", encoding" : "") + HeadText(EntryOf(status, "ptz", number)) +
           RecordText(EntryOf(status, "record", number)) + "\n";
}

std::string ListText(const char* heading, const json& list) {
    std::string text = std::string(heading) + ":" + (list.empty() ? " none\n" : "\n");
    for (const json& entry : list) {
        text += "  " + entry.get<std::string>() + "\n";
    }
    return text;
}

std::string TalkText(const json& talks) {
    std::string text;
    for (const json& talk : talks) {
        text += "talk with " + talk.at("with").get<std::string>() + ": " + Number(talk.at("played_seconds"), "%.1f") +
                " s played into " + talk.at("file").get<std::string>() + "\n";
    }
    return text;
}

}  // namespace

std::string StatusText(const json& status) {
    std::string text = "simulated recorder, version " + status.at("version").get<std::string>() + ", scenario \"" +
                       status.at("scenario").get<std::string>() + "\", process " +
                       std::to_string(status.at("process").get<int>()) + "\n" + status.at("state").get<std::string>() +
                       ", up for " + Number(status.at("uptime"), "%.1f") + " s\nchannels:\n";
    for (const json& channel : status.at("channels")) {
        text += ChannelText(status, channel);
    }
    return text + ListText("events", status.at("events")) + TalkText(status.value("talks", json::array())) +
           ListText("complaints", status.at("complaints"));
}

}  // namespace recorderctl
