#include "ptz_memory.h"

#include "core/kept.h"

namespace simulator {
namespace {

using nlohmann::json;

json JsonOf(const HeadPosition& position) {
    return {{"pan", position.pan},
            {"tilt", position.tilt},
            {"zoom", position.zoom},
            {"focus", position.focus},
            {"iris", position.iris}};
}

HeadPosition PositionOf(const json& document) {
    const HeadPosition usual;
    return Limited({document.value("pan", usual.pan), document.value("tilt", usual.tilt),
                    document.value("zoom", usual.zoom), document.value("focus", usual.focus),
                    document.value("iris", usual.iris)});
}

json JsonOf(const HeadMemory& memory) {
    json document = {{"position", JsonOf(memory.position)}, {"wiper", memory.wiper}, {"light", memory.light}};
    for (const auto& [number, position] : memory.presets) {
        document["presets"].push_back({{"preset", number}, {"position", JsonOf(position)}});
    }
    for (const auto& [tour, points] : memory.tours) {
        for (const auto& [number, point] : points) {
            document["tours"].push_back(
                {{"tour", tour}, {"point", number}, {"preset", point.preset}, {"dwell", point.dwell}});
        }
    }
    for (const auto& [track, points] : memory.tracks) {
        json way = json::array();
        for (const HeadPath::Point& point : points) {
            way.push_back({{"at", point.time}, {"position", JsonOf(point.position)}});
        }
        document["tracks"].push_back({{"track", track}, {"way", way}});
    }
    return document;
}

HeadMemory MemoryOf(const json& document) {
    HeadMemory memory;
    memory.position = PositionOf(document.value("position", json::object()));
    memory.wiper = document.value("wiper", false);
    memory.light = document.value("light", false);
    for (const json& preset : document.value("presets", json::array())) {
        memory.presets[preset.at("preset")] = PositionOf(preset.at("position"));
    }
    for (const json& point : document.value("tours", json::array())) {
        memory.tours[point.at("tour")][point.at("point")] = {point.at("preset"), point.at("dwell")};
    }
    for (const json& track : document.value("tracks", json::array())) {
        for (const json& point : track.at("way")) {
            memory.tracks[track.at("track")].push_back({point.at("at"), PositionOf(point.at("position"))});
        }
    }
    return memory;
}

}  // namespace

std::vector<HeadMemory> ReadHeads(size_t channels) {
    std::vector<HeadMemory> heads(channels);
    const json document = ReadKept("ptz");
    for (size_t i = 0; i < channels; ++i) {
        const auto head = document.find(std::to_string(i + 1));
        try {
            heads[i] = head != document.end() ? MemoryOf(*head) : HeadMemory();
        } catch (const json::exception&) {
            heads[i] = HeadMemory();
        }
    }
    return heads;
}

void KeepHeads(const std::vector<HeadMemory>& heads) {
    json document = json::object();
    for (size_t i = 0; i < heads.size(); ++i) {
        document[std::to_string(i + 1)] = JsonOf(heads[i]);
    }
    Keep("ptz", document);
}

}  // namespace simulator
