#include "ptz_order.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

#include "exit_code.h"

namespace hostmgrctl {
namespace {

constexpr uint32_t STOPS = 1;  // p1 of a direction: ends the movement
constexpr size_t MOST_NUMBERS = 4;

/** A number that an order takes. */
struct Number {
    const char* name = nullptr;  ///< in help and messages
    unsigned least = 0;
    unsigned most = 0;
    bool optional = false;
};

using Command = _tagVexoHostMgrPtzCmd;
using Numbers = std::vector<unsigned>;

Command Make(uint32_t command, uint32_t p1 = 0, uint32_t p2 = 0, uint32_t p3 = 0) {
    return {command, p1, p2, p3, {}};
}

// How the numbers and what stands beside them become a command's words.

std::vector<Command> Speed(uint32_t command, const Numbers& /*numbers*/, const PtzModifiers& modifiers) {
    return {Make(command, 0, modifiers.speed)};
}
std::vector<Command> Stop(uint32_t command, const Numbers& /*numbers*/, const PtzModifiers& /*modifiers*/) {
    return {Make(command, STOPS)};
}
std::vector<Command> On(uint32_t command, const Numbers& /*numbers*/, const PtzModifiers& /*modifiers*/) {
    return {Make(command, 0, 1)};
}
std::vector<Command> Off(uint32_t command, const Numbers& /*numbers*/, const PtzModifiers& /*modifiers*/) {
    return {Make(command)};
}
std::vector<Command> First(uint32_t command, const Numbers& numbers, const PtzModifiers& /*modifiers*/) {
    return {Make(command, numbers[0])};
}
std::vector<Command> FirstAndSecond(uint32_t command, const Numbers& numbers, const PtzModifiers& /*modifiers*/) {
    return {Make(command, numbers[0], numbers[1])};
}
std::vector<Command> AllThree(uint32_t command, const Numbers& numbers, const PtzModifiers& /*modifiers*/) {
    return {Make(command, numbers[0], numbers[1], numbers[2])};
}
// The two values of a point are remembered by the login first.
std::vector<Command> TourPoint(uint32_t command, const Numbers& numbers, const PtzModifiers& modifiers) {
    return {Make(HOSTMGR_PTZ_TOUR_PARAM_A, numbers[0], 0, modifiers.preset),
            Make(HOSTMGR_PTZ_TOUR_PARAM_B, numbers[0], 0, modifiers.dwell), Make(command, numbers[0], 0, numbers[1])};
}
std::vector<Command> Raw(uint32_t /*command*/, const Numbers& numbers, const PtzModifiers& /*modifiers*/) {
    return {Make(numbers[0], numbers[1], numbers[2], numbers[3])};
}

struct Row {
    const char* name;
    PtzCourse course;
    uint32_t command;
    std::vector<Command> (*make)(uint32_t command, const Numbers& numbers, const PtzModifiers& modifiers);
    Number numbers[MOST_NUMBERS];
};

constexpr unsigned MOST = 0xFFFFFFFF;
constexpr Number PRESET = {"N", 1, 255};
constexpr Number TOUR = {"TOUR", 1, 255};
constexpr Number POINT = {"POINT", 1, 255};
constexpr Number TRACK = {"N", 1, 255};
constexpr Number PLACE_X = {"X", 0, 10000};
constexpr Number PLACE_Y = {"Y", 0, 10000};
constexpr Number ZOOM = {"ZOOM", 0, 1000, true};

// clang-format off
const Row ROWS[] = {
    {"up", PtzCourse::Going, HOSTMGR_PTZ_UP, Speed, {}},
    {"down", PtzCourse::Going, HOSTMGR_PTZ_DOWN, Speed, {}},
    {"left", PtzCourse::Going, HOSTMGR_PTZ_LEFT, Speed, {}},
    {"right", PtzCourse::Going, HOSTMGR_PTZ_RIGHT, Speed, {}},
    {"up-left", PtzCourse::Going, HOSTMGR_PTZ_UP_LEFT, Speed, {}},
    {"up-right", PtzCourse::Going, HOSTMGR_PTZ_UP_RIGHT, Speed, {}},
    {"down-left", PtzCourse::Going, HOSTMGR_PTZ_DOWN_LEFT, Speed, {}},
    {"down-right", PtzCourse::Going, HOSTMGR_PTZ_DOWN_RIGHT, Speed, {}},
    {"auto", PtzCourse::Going, HOSTMGR_PTZ_CMD_29, Speed, {}},
    {"stop", PtzCourse::Once, HOSTMGR_PTZ_UP, Stop, {}},
    {"zoom in", PtzCourse::Step, HOSTMGR_PTZ_ZOOM_IN, Speed, {}},
    {"zoom out", PtzCourse::Step, HOSTMGR_PTZ_ZOOM_OUT, Speed, {}},
    {"focus near", PtzCourse::Step, HOSTMGR_PTZ_FOCUS_NEAR, Speed, {}},
    {"focus far", PtzCourse::Step, HOSTMGR_PTZ_FOCUS_FAR, Speed, {}},
    {"iris open", PtzCourse::Step, HOSTMGR_PTZ_IRIS_OPEN, Speed, {}},
    {"iris close", PtzCourse::Step, HOSTMGR_PTZ_IRIS_CLOSE, Speed, {}},
    {"home", PtzCourse::Once, HOSTMGR_PTZ_CMD_41, Off, {}},
    {"centre", PtzCourse::Once, HOSTMGR_PTZ_CMD_42, AllThree, {PLACE_X, PLACE_Y, ZOOM}},
    {"light on", PtzCourse::Once, HOSTMGR_PTZ_CMD_2, On, {}},
    {"light off", PtzCourse::Once, HOSTMGR_PTZ_CMD_2, Off, {}},
    {"wiper on", PtzCourse::Once, HOSTMGR_PTZ_CMD_3, On, {}},
    {"wiper off", PtzCourse::Once, HOSTMGR_PTZ_CMD_3, Off, {}},
    {"preset set", PtzCourse::Once, HOSTMGR_PTZ_PRESET_SET, First, {PRESET}},
    {"preset goto", PtzCourse::Once, HOSTMGR_PTZ_PRESET_GOTO, First, {PRESET}},
    {"preset clear", PtzCourse::Once, HOSTMGR_PTZ_PRESET_CLEAR, First, {PRESET}},
    {"tour add", PtzCourse::Once, HOSTMGR_PTZ_TOUR_ADD_POINT, TourPoint, {TOUR, POINT}},
    {"tour delete", PtzCourse::Once, HOSTMGR_PTZ_TOUR_DELETE_POINT, FirstAndSecond, {TOUR, POINT}},
    {"tour start", PtzCourse::Once, HOSTMGR_PTZ_TOUR_START, First, {TOUR}},
    {"tour stop", PtzCourse::Once, HOSTMGR_PTZ_TOUR_STOP, First, {TOUR}},
    {"track begin", PtzCourse::Once, HOSTMGR_PTZ_CMD_34, First, {TRACK}},
    {"track end", PtzCourse::Once, HOSTMGR_PTZ_CMD_35, First, {TRACK}},
    {"track run", PtzCourse::Once, HOSTMGR_PTZ_CMD_36, First, {TRACK}},
    {"raw", PtzCourse::Once, 0, Raw, {{"COMMAND", 0, MOST}, {"P1", 0, MOST, true}, {"P2", 0, MOST, true},
                                      {"P3", 0, MOST, true}}},
};
// clang-format on

std::string Form(const Row& row) {
    std::string form = row.name;
    for (const Number& number : row.numbers) {
        if (number.name != nullptr) {
            form += number.optional ? " [" + std::string(number.name) + "]" : " " + std::string(number.name);
        }
    }
    return form;
}

std::string Joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

size_t WordsOf(const Row& row) {
    return 1 + static_cast<size_t>(std::count(row.name, row.name + std::char_traits<char>::length(row.name), ' '));
}

bool BeginsWith(const std::vector<std::string>& words, const Row& row) {
    const size_t count = WordsOf(row);
    return words.size() >= count &&
           Joined({words.begin(), words.begin() + static_cast<std::ptrdiff_t>(count)}) == row.name;
}

[[noreturn]] void RefuseUnknown(const std::vector<std::string>& words) {
    std::string others;
    for (const Row& row : ROWS) {
        if (words[0] == std::string(row.name).substr(0, std::string(row.name).find(' '))) {
            others += (others.empty() ? "" : ", ") + Form(row);
        }
    }
    throw Failure(ExitCode::Usage, "\"" + Joined(words) + "\" is no order: " +
                                       (others.empty() ? "hostmgrctl ptz --help lists them" : "there is " + others));
}

unsigned ParseNumber(const std::string& text, const Number& number, const std::string& form) {
    char* end = nullptr;
    const int base = text.rfind("0x", 0) == 0 ? 16 : 10;
    const bool digits = !text.empty() && isdigit(static_cast<unsigned char>(text[0])) != 0;
    const unsigned long long value = strtoull(text.c_str(), &end, base);
    if (!digits || *end != '\0' || value < number.least || value > number.most) {
        throw Failure(ExitCode::Usage, "\"" + text + "\" cannot be " + number.name + " of \"" + form + "\": give " +
                                           std::to_string(number.least) + " to " + std::to_string(number.most));
    }
    return static_cast<unsigned>(value);
}

/** The numbers behind an order's name; those left out are 0. */
Numbers ParseNumbers(const std::vector<std::string>& words, const Row& row) {
    Numbers numbers(MOST_NUMBERS, 0);
    size_t at = WordsOf(row);
    for (size_t i = 0; i < MOST_NUMBERS && row.numbers[i].name != nullptr; ++i) {
        if (at < words.size()) {
            numbers[i] = ParseNumber(words[at++], row.numbers[i], Form(row));
        } else if (!row.numbers[i].optional) {
            throw Failure(ExitCode::Usage, "\"" + Joined(words) + "\" lacks a number: write \"" + Form(row) + "\"");
        }
    }
    if (at < words.size()) {
        throw Failure(ExitCode::Usage, "\"" + words[at] + "\" is too much: write \"" + Form(row) + "\"");
    }
    return numbers;
}

void CheckModifiers(const std::vector<std::string>& words, const Row& row, const PtzModifiers& modifiers) {
    if (modifiers.speed != 0 && row.make != Speed) {
        throw Failure(ExitCode::Usage, "--speed does not go with \"" + Joined(words) + "\", which has none");
    }
    if ((modifiers.preset != 0 || modifiers.dwell != 0) && row.make != TourPoint) {
        throw Failure(ExitCode::Usage, "--preset and --dwell go with \"tour add\" alone");
    }
}

}  // namespace

PtzOrder ParsePtzOrder(const std::vector<std::string>& words, const PtzModifiers& modifiers) {
    const auto* row =
        std::find_if(std::begin(ROWS), std::end(ROWS), [&words](const Row& known) { return BeginsWith(words, known); });
    if (row == std::end(ROWS)) {
        RefuseUnknown(words);
    }
    CheckModifiers(words, *row, modifiers);
    return {Joined(words), row->course, row->make(row->command, ParseNumbers(words, *row), modifiers)};
}

_tagVexoHostMgrPtzCmd PtzStop() {
    return Make(HOSTMGR_PTZ_UP, STOPS);
}

}  // namespace hostmgrctl
