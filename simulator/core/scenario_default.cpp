#include "core/scenario.h"

namespace simulator {

// What is absent takes the defaults that scenario.cpp gives every scenario.
const char* DefaultScenarioJson() {
    return R"json({
    "name": "default",
    "cameras": [
        {"name": "Front gate", "audio": {"hz": 440, "level": 0.3}},
        {"name": "Car park",   "audio": {"hz": 523, "level": 0.3}},
        {"name": "Workshop",   "audio": {"hz": 659, "level": 0.3}},
        {"name": "Lobby",      "audio": {"hz": 784, "level": 0.3}}
    ],
    "users": [
        {"name": "admin", "password": "admin12345", "administrator": true},
        {"name": "operator", "password": "operator12345", "channels": [1, 2]}
    ],
    "factory": [
        {"name": "DeviceModel", "value": "simulated recorder"},
        {"name": "DeviceName", "value": "Front desk"}
    ]
}
)json";
}

}  // namespace simulator
