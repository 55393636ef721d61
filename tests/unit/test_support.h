// What the unit tests share besides the platform: the console as the library wrote it, expected messages, the test's
// clock, memory that runs out, printed dumps, GBK. Nothing here knows the library's inside.
#ifndef TEST_SUPPORT_H
#define TEST_SUPPORT_H

#include <gmock/gmock.h>
#include <time.h>

#include <functional>
#include <string>
#include <vector>

// ---- console -------------------------------------------------------------------------------------------------------

/** Runs action and returns exactly what the process wrote to standard output meanwhile, whoever wrote it. */
std::string RawConsole(const std::function<void()>& action);

/** As RawConsole, with the line number of every message's prefix replaced by #: "[HOSTMGR] ERROR! Name[#]:". */
std::string Console(const std::function<void()>& action);

/** A message of a level as Console gives it. text is what follows the prefix, with its newline if it has one. */
std::string Error(const std::string& function, const std::string& text);
std::string Warning(const std::string& function, const std::string& text);
std::string Debug(const std::string& function, const std::string& text);

/**
 * For EXPECT_EXIT(OnConsole(action), testing::ExitedWithCode(255), FailedAssertion(...)): the whole console of the
 * process that ended is that assertion's block. Without a line any number will do.
 */
void OnConsole(const std::function<void()>& action);
testing::Matcher<const std::string&> FailedAssertion(const std::string& file, const std::string& function,
                                                     const std::string& condition);
testing::Matcher<const std::string&> FailedAssertion(const std::string& file, const std::string& function, int line,
                                                     const std::string& condition);

// ---- clock ---------------------------------------------------------------------------------------------------------

/** The time of day that gettimeofday and time give to the library and the tests; stands still unless it is moved. */
void SetClock(long seconds, long microseconds);
void AdvanceClock(long milliseconds);

/** Sets the time zone of the process, such as "UTC" or "CET-1CEST,M3.5.0,M10.5.0/3". */
void SetTimeZone(const char* zone);

/** localtime_r fails until it is told otherwise. */
void FailLocaltime(bool fails);

/** The time zone that gettimeofday tells with the time: minutes west of UTC; 0 at first. */
void SetMinutesWest(int minutes);

// ---- files ---------------------------------------------------------------------------------------------------------

/** Where access looks for the recorder's /config/ from now on; an empty text: there is no such directory. */
void SetConfigDirectory(const std::string& directory);
/** A path as the library gives it, in that directory when it is one of /config/. */
std::string FilePath(const char* path);

// ---- memory --------------------------------------------------------------------------------------------------------

/** The nth new (std::nothrow) from now on gives null, once; 1 is the next. */
void FailNothrowNew(int nth);

/** Each malloc of so many bytes and more gives null from now on; 0: none does. */
void FailMallocFrom(size_t bytes);

/** What is allocated while one lives may be leaked: for the one leak that is part of the library's contract, the module
 *  objects that a failed login leaves behind and a later login overwrites. */
class StatedLeak {
public:
    StatedLeak();
    ~StatedLeak();
    StatedLeak(const StatedLeak&) = delete;
    StatedLeak& operator=(const StatedLeak&) = delete;
};

// ---- tables --------------------------------------------------------------------------------------------------------

/** Names the tests of a table by their rows' names. */
struct ByName {
    template <typename Row>
    std::string operator()(const testing::TestParamInfo<Row>& row) const {
        return row.param.name;
    }
};

// ---- dumps ---------------------------------------------------------------------------------------------------------

/** A print function for dumps; what it is given is collected, one piece a call. */
int CollectPrint(const char* format, ...) __attribute__((format(printf, 1, 2)));
/** The pieces so far, or all of them joined; they are forgotten. */
std::vector<std::string> TakePieces();
std::string TakePrinted();

/** A UTF-8 text in GBK and back. Text that is not in the encoding fails the test. */
std::string Gbk(const std::string& utf8);
std::string Utf8(const std::string& gbk);

#endif
