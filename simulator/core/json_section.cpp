#include "core/json_section.h"

#include <algorithm>
#include <set>
#include <stdexcept>
#include <utility>

#include "core/nearest.h"

namespace simulator {
namespace {

using nlohmann::json;

/** What an absent object reads as. */
const json& NoObject() {
    static const json& object = *new json(json::object());
    return object;
}

/** Follows the parser through the objects and refuses a key that stands twice in one of them. */
class RepeatedKeys {
public:
    bool operator()(int, json::parse_event_t event, json& value) {
        if (event == json::parse_event_t::object_start) {
            m_open.emplace_back();
        } else if (event == json::parse_event_t::object_end) {
            m_open.pop_back();
        } else if (event == json::parse_event_t::key && !m_open.back().insert(value.get<std::string>()).second) {
            throw std::runtime_error("the key " + value.dump() + " stands twice in one object: keep one of them");
        }
        return true;
    }

private:
    std::vector<std::set<std::string>> m_open;
};

/** The parser's message without its error number: "parse error at line 3, column 5: ...". */
std::string ParserMessage(const json::exception& error) {
    const std::string text = error.what();
    const size_t end = text.find("] ");
    return "this is not JSON: " + (end == std::string::npos ? text : text.substr(end + 2));
}

std::string Number(double number) {
    return json(number).dump();
}

bool HasControlCharacter(const std::string& text) {
    return std::any_of(text.begin(), text.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; });
}

}  // namespace

json ReadJson(const std::string& text) {
    try {
        RepeatedKeys repeated;
        return json::parse(text, json::parser_callback_t(repeated), true, true);
    } catch (const json::exception& error) {
        throw std::runtime_error(ParserMessage(error));
    }
}

JsonSection::JsonSection(const json& value, std::string path) : m_value(&value), m_path(std::move(path)) {
    if (!value.is_object()) {
        Refuse("", std::string("is ") + value.type_name() + ", give an object: { ... }");
    }
}

bool JsonSection::Has(const std::string& key) const {
    return m_value->contains(key);
}

unsigned JsonSection::Whole(const std::string& key, unsigned fallback, const Bounds& bounds) {
    const json* value = Find(key);
    return value == nullptr ? fallback : Checked(*value, key, bounds);
}

unsigned JsonSection::Even(const std::string& key, unsigned fallback, const Bounds& bounds) {
    const unsigned number = Whole(key, fallback, bounds);
    if (number % 2 != 0) {
        Refuse(key, std::to_string(number) + " is odd, give an even number of " + bounds.unit);
    }
    return number;
}

double JsonSection::Real(const std::string& key, double fallback, double least, double most) {
    const json* value = Find(key);
    if (value == nullptr) {
        return fallback;
    }
    if (!value->is_number() || value->get<double>() < least || value->get<double>() > most) {
        Refuse(key, value->dump() + " does not do, give a number from " + Number(least) + " to " + Number(most));
    }
    return value->get<double>();
}

bool JsonSection::Truth(const std::string& key, bool fallback) {
    const json* value = Find(key);
    if (value == nullptr) {
        return fallback;
    }
    if (!value->is_boolean()) {
        Refuse(key, value->dump() + " does not do, give true or false");
    }
    return value->get<bool>();
}

std::string JsonSection::Text(const std::string& key, const std::string& fallback, size_t least_bytes,
                              size_t most_bytes) {
    const json* value = Find(key);
    if (value == nullptr) {
        return fallback;
    }
    const std::string wanted =
        "give a text of " + std::to_string(least_bytes) + " to " + std::to_string(most_bytes) + " bytes";
    if (!value->is_string()) {
        Refuse(key, "is " + std::string(value->type_name()) + ", " + wanted);
    }
    std::string text = value->get<std::string>();
    if (text.size() < least_bytes || text.size() > most_bytes) {
        Refuse(key, "has " + std::to_string(text.size()) + " bytes, " + wanted);
    }
    if (HasControlCharacter(text)) {
        Refuse(key, "holds a control character, " + wanted + " without");
    }
    return text;
}

std::string JsonSection::RequiredText(const std::string& key, size_t least_bytes, size_t most_bytes) {
    if (!Has(key)) {
        Refuse(key, "is missing, give a text");
    }
    return Text(key, "", least_bytes, most_bytes);
}

std::vector<unsigned> JsonSection::Wholes(const std::string& key, const Bounds& bounds) {
    std::vector<unsigned> numbers;
    const json* value = Find(key);
    if (value != nullptr) {
        for (const json& number : List(*value, key, 0, bounds.most)) {
            numbers.push_back(Checked(number, key + "[" + std::to_string(numbers.size()) + "]", bounds));
        }
    }
    return numbers;
}

JsonSection JsonSection::Object(const std::string& key) {
    const json* value = Find(key);
    return JsonSection(value == nullptr ? NoObject() : *value, PlaceOf(key));
}

std::vector<JsonSection> JsonSection::Objects(const std::string& key, size_t least, size_t most) {
    std::vector<JsonSection> sections;
    const json* value = Find(key);
    if (value != nullptr) {
        for (const json& entry : List(*value, key, least, most)) {
            sections.emplace_back(entry, PlaceOf(key) + "[" + std::to_string(sections.size()) + "]");
        }
    }
    return sections;
}

void JsonSection::RefuseOtherKeys() const {
    for (const auto& [key, value] : m_value->items()) {
        if (std::find(m_asked.begin(), m_asked.end(), key) == m_asked.end()) {
            Refuse(key, "is not a key that belongs here; the nearest one is \"" + Nearest(key, m_asked) + "\"");
        }
    }
}

void JsonSection::Refuse(const std::string& key, const std::string& fault) const {
    const std::string place = PlaceOf(key);
    throw std::runtime_error((place.empty() ? "the whole document" : place) + ": " + fault);
}

const json* JsonSection::Find(const std::string& key) {
    m_asked.push_back(key);
    const auto found = m_value->find(key);
    return found == m_value->end() ? nullptr : &*found;
}

const json& JsonSection::List(const json& value, const std::string& key, size_t least, size_t most) const {
    if (!value.is_array() || value.size() < least || value.size() > most) {
        const std::string is = value.is_array() ? std::to_string(value.size()) + " entries" : value.type_name();
        Refuse(key, "is " + is + ", give a list of " + std::to_string(least) + " to " + std::to_string(most) +
                        " entries: [ ... ]");
    }
    return value;
}

unsigned JsonSection::Checked(const json& value, const std::string& key, const Bounds& bounds) const {
    const bool fits = value.is_number_unsigned() && value.get<unsigned long long>() >= bounds.least &&
                      value.get<unsigned long long>() <= bounds.most;
    if (!fits) {
        Refuse(key, value.dump() + " does not do, give a whole number from " + std::to_string(bounds.least) + " to " +
                        std::to_string(bounds.most) + " (" + bounds.unit + ")");
    }
    return value.get<unsigned>();
}

std::string JsonSection::PlaceOf(const std::string& key) const {
    return m_path.empty() || key.empty() ? m_path + key : m_path + "." + key;
}

}  // namespace simulator
