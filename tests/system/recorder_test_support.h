// What the simulated recorder's tests share: a look at the guest watch. Test cases do not belong here.
#ifndef TESTS_SYSTEM_RECORDER_TEST_SUPPORT_H
#define TESTS_SYSTEM_RECORDER_TEST_SUPPORT_H

#include <algorithm>
#include <string>
#include <vector>

#include "control.h"

namespace recorder_test {

/** The complaints that came since this was made. */
class NewComplaints {
public:
    NewComplaints() : m_before(simulator::control::Complaints().size()) {}
    std::string Text() const {
        std::string text;
        const std::vector<std::string> all = simulator::control::Complaints();
        for (size_t i = m_before; i < all.size(); ++i) {
            text += all[i] + "\n";
        }
        return text;
    }

private:
    size_t m_before;
};

inline long CountOutstanding(const std::string& line) {
    const std::vector<std::string> lines = simulator::control::Outstanding();
    return std::count(lines.begin(), lines.end(), line);
}

inline bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

}  // namespace recorder_test

#endif
