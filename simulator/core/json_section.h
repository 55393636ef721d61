// Reads a JSON object key by key, with bounds, and knows where it is, so that every error names its place. General: the
// scenario's own keys stand in scenario.cpp.
#ifndef SIMULATOR_CORE_JSON_SECTION_H
#define SIMULATOR_CORE_JSON_SECTION_H

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace simulator {

/** What a whole number may be, and what it counts. */
struct Bounds {
    unsigned least;
    unsigned most;
    const char* unit;  ///< such as "frames a second"
};

/** Reads JSON text with comments allowed; throws std::runtime_error on bad text and on a key that stands twice. */
nlohmann::json ReadJson(const std::string& text);

/**
 * One object of the document. Each reading function throws std::runtime_error with place, fault and remedy when the
 * value is not what it must be, and gives the fallback when the key is absent. The document must outlive the section.
 */
class JsonSection {
public:
    /** path: where the object stands, such as "cameras[1].main"; "" for the whole document. */
    JsonSection(const nlohmann::json& value, std::string path);

    bool Has(const std::string& key) const;
    unsigned Whole(const std::string& key, unsigned fallback, const Bounds& bounds);
    /** As Whole; odd numbers are refused. */
    unsigned Even(const std::string& key, unsigned fallback, const Bounds& bounds);
    double Real(const std::string& key, double fallback, double least, double most);
    bool Truth(const std::string& key, bool fallback);
    /** Text of that many bytes, without control characters. */
    std::string Text(const std::string& key, const std::string& fallback, size_t least_bytes, size_t most_bytes);
    /** As Text, for a key that must be there. */
    std::string RequiredText(const std::string& key, size_t least_bytes, size_t most_bytes);
    /** A list of whole numbers; empty when absent. */
    std::vector<unsigned> Wholes(const std::string& key, const Bounds& bounds);
    /** The object of that key; an empty one when absent. */
    JsonSection Object(const std::string& key);
    /** A list of objects; empty when absent. */
    std::vector<JsonSection> Objects(const std::string& key, size_t least, size_t most);

    /** Refuses keys that nobody asked for, naming the nearest that somebody did. */
    void RefuseOtherKeys() const;

    /** Throws std::runtime_error: the key's place, then what is wrong and what to do. An empty key: the section. */
    [[noreturn]] void Refuse(const std::string& key, const std::string& fault) const;

private:
    const nlohmann::json* Find(const std::string& key);
    const nlohmann::json& List(const nlohmann::json& value, const std::string& key, size_t least, size_t most) const;
    unsigned Checked(const nlohmann::json& value, const std::string& key, const Bounds& bounds) const;
    std::string PlaceOf(const std::string& key) const;

    const nlohmann::json* m_value;
    std::string m_path;
    std::vector<std::string> m_asked;
};

}  // namespace simulator

#endif
