// The library cannot be taken down again, so each test runs in a process of its own: alone when one is selected, as
// ctest does, else one after the other in a forked process each.
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

/** Tells the names of the selected tests, one a line, and ends the process before the first of them runs. */
class SelectedTests : public testing::EmptyTestEventListener {
public:
    explicit SelectedTests(int out) : m_out(out) {}

    void OnTestProgramStart(const testing::UnitTest& unit) override {
        for (int suite = 0; suite < unit.total_test_suite_count(); ++suite)
            Tell(*unit.GetTestSuite(suite));
        _exit(0);
    }

private:
    void Tell(const testing::TestSuite& suite) {
        for (int test = 0; test < suite.total_test_count(); ++test) {
            const testing::TestInfo& info = *suite.GetTestInfo(test);
            if (info.should_run())
                dprintf(m_out, "%s.%s\n", suite.name(), info.name());
        }
    }

    const int m_out;
};

/** Whether the filter is one test's name, without a pattern: as ctest calls us. */
static bool OneTestIsNamed() {
    return GTEST_FLAG_GET(filter).find_first_of("*?:-") == std::string::npos;
}

static std::vector<std::string> FindSelectedTests() {
    int ends[2];
    if (pipe(ends) != 0)
        _exit(2);
    if (fork() == 0) {
        testing::UnitTest::GetInstance()->listeners().Append(new SelectedTests(ends[1]));
        _exit(RUN_ALL_TESTS());
    }
    close(ends[1]);
    FILE* in = fdopen(ends[0], "r");
    std::vector<std::string> names;
    char name[1024];
    while (fscanf(in, "%1023s", name) == 1)
        names.push_back(name);
    fclose(in);
    wait(nullptr);
    return names;
}

/** Runs one test in a process of its own; true when it passed. */
static bool RunApart(const std::string& name) {
    fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        GTEST_FLAG_SET(filter, name);
        exit(RUN_ALL_TESTS());
    }
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

static int RunEachApart(const std::vector<std::string>& names) {
    std::vector<std::string> failed;
    for (const std::string& name : names) {
        if (!RunApart(name))
            failed.push_back(name);
    }
    printf("\n%zu tests, each in a process of its own; %zu failed\n", names.size(), failed.size());
    for (const std::string& name : failed)
        printf("[  FAILED  ] %s\n", name.c_str());
    return failed.empty() ? 0 : 1;
}

int main(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    // What a nice or a naggy mock says of itself would stand in the console that the tests compare.
    GMOCK_FLAG_SET(verbose, "error");
    if (GTEST_FLAG_GET(list_tests) || OneTestIsNamed())
        return RUN_ALL_TESTS();
    const std::vector<std::string> names = FindSelectedTests();
    if (names.size() > 1)
        return RunEachApart(names);
    return RUN_ALL_TESTS();
}
