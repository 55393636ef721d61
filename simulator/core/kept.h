// What lasts between runs: small JSON documents in the home folder, and the factory restore that forgets them. What
// stands in a document is its owner's.
#ifndef SIMULATOR_CORE_KEPT_H
#define SIMULATOR_CORE_KEPT_H

#include <functional>
#include <nlohmann/json.hpp>
#include <string>

namespace simulator {

/** The parts of the configuration that a factory restore can name, one bit each. */
enum KeptPart : unsigned {
    KEPT_PTZ = 1U << 0,           ///< positions, presets, tours, tracks
    KEPT_RECORD_MODES = 1U << 1,  ///< record modes and manual recording
};

/** The document NAME.json of the home folder; an empty object when there is none, or none that can be read, which is
 *  told on standard error. */
nlohmann::json ReadKept(const std::string& name);

/** Writes the document, whole or not at all; when that fails, a line on standard error says so and nothing is lost but
 *  the lasting. */
void Keep(const std::string& name, const nlohmann::json& document);

/** Lets forget run when a restore names that part; it is for the owner to forget and to keep the new state. Returns true,
 *  so that a library can say so as it is loaded. */
bool OnRestore(KeptPart part, std::function<void()> forget);

/** Restores the parts whose bits are set; bits that name nothing are ignored. */
void Restore(unsigned parts);

}  // namespace simulator

#endif
