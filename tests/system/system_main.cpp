// main of every system test: gives the simulated recorder a home folder of its own, and takes it away again.
#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

int main(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    // The child of a death test, begun anew, may end at any point; it shares its parent's home.
    if (!testing::GTEST_FLAG(internal_run_death_test).empty()) {
        return RUN_ALL_TESTS();
    }
    // So does a process that a test starts on purpose.
    if (const char* home = getenv("RECORDER_TEST_HOME")) {
        setenv("RECORDER_HOME", home, 1);
        return RUN_ALL_TESTS();
    }
    std::string home = std::filesystem::temp_directory_path() / "recorder-test.XXXXXX";
    if (mkdtemp(home.data()) == nullptr) {
        perror(home.c_str());
        return 1;
    }
    setenv("RECORDER_HOME", home.c_str(), 1);
    setenv("RECORDER_QUIET", "1", 1);
    const int result = RUN_ALL_TESTS();
    std::error_code error;
    std::filesystem::remove_all(home, error);
    return result;
}
