// The front panel's inside: what a command from another shell does, and what the recorder's parts add to its status. The
// socket that commands come through is panel_socket.cpp's.
#ifndef SIMULATOR_CORE_PANEL_H
#define SIMULATOR_CORE_PANEL_H

#include <functional>
#include <nlohmann/json.hpp>
#include <string>

namespace simulator {

/** Adds a part to the status, under its name; status is called on the panel's thread with no lock held. Returns true,
 *  so that a library can add its part as it is loaded. */
bool AddPanelPart(const std::string& name, std::function<nlohmann::json()> status);

/** What the recorder is and does now. */
nlohmann::json PanelStatus();

/**
 * Does what a request says and answers: {"result": ...} or {"error": "what is wrong and what to do"}. Requests are
 * described in docs/simulator.md. Never throws.
 */
nlohmann::json AnswerPanel(const std::string& request);

/** Opens the panel's socket in the home folder and serves it on a thread; a panel that cannot be opened is told on
 *  standard error and the recorder runs without. */
void OpenPanel();

}  // namespace simulator

#endif
