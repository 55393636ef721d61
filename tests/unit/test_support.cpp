#include "test_support.h"

#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <mutex>
#include <new>
#include <regex>

#if defined(__SANITIZE_ADDRESS__)
#define UNIT_LEAK_CHECK 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define UNIT_LEAK_CHECK 1
#endif
#endif
#ifdef UNIT_LEAK_CHECK
#include <sanitizer/lsan_interface.h>
#endif

// ---- console -------------------------------------------------------------------------------------------------------

static std::string ReadAll(FILE* file) {
    rewind(file);
    std::string text;
    char piece[4096];
    for (size_t length; (length = fread(piece, 1, sizeof(piece), file)) != 0;)
        text.append(piece, length);
    return text;
}

std::string RawConsole(const std::function<void()>& action) {
    FILE* file = tmpfile();
    if (file == nullptr)
        abort();
    fflush(stdout);
    const int console = dup(STDOUT_FILENO);
    dup2(fileno(file), STDOUT_FILENO);
    action();
    fflush(stdout);
    dup2(console, STDOUT_FILENO);
    close(console);
    const std::string text = ReadAll(file);
    fclose(file);
    return text;
}

static std::string WithoutLines(const std::string& console) {
    static const std::regex prefix("(\\[[A-Z_]+\\] [A-Z]+! ~?[A-Za-z0-9_]+)\\[[0-9]+\\]:");
    return std::regex_replace(console, prefix, "$1[#]:");
}

std::string Console(const std::function<void()>& action) {
    return WithoutLines(RawConsole(action));
}

static std::string Message(const char* colour, const char* level, const std::string& function,
                           const std::string& text) {
    return std::string(colour) + "[HOSTMGR] " + level + "! " + function + "[#]:" + text + "\033[m";
}

std::string Error(const std::string& function, const std::string& text) {
    return Message("\033[0;32;31m", "ERROR", function, text);
}

std::string Warning(const std::string& function, const std::string& text) {
    return Message("\033[1;33m", "WARNING", function, text);
}

std::string Debug(const std::string& function, const std::string& text) {
    return Message("\033[0;32;32m", "DEBUG", function, text);
}

void OnConsole(const std::function<void()>& action) {
    fflush(stdout);
    dup2(STDERR_FILENO, STDOUT_FILENO);
    GMOCK_FLAG_SET(catch_leaked_mocks, false);  // the process ends in the middle of things
    action();
}

static std::string AssertionText(const std::string& file, const std::string& function, const std::string& line,
                                 const std::string& condition) {
    return "\033[0;32;31mASSERT!\n >File name: " + file + "\n >Function: " + function + "\n >Line No: " + line +
           "\n >Condition: " + condition + "\n\033[m";
}

static std::string WithoutAssertionLine(const std::string& console) {
    static const std::regex line("\n >Line No: [0-9]+\n");
    return std::regex_replace(console, line, "\n >Line No: #\n");
}

testing::Matcher<const std::string&> FailedAssertion(const std::string& file, const std::string& function,
                                                     const std::string& condition) {
    return testing::ResultOf(WithoutAssertionLine, testing::Eq(AssertionText(file, function, "#", condition)));
}

testing::Matcher<const std::string&> FailedAssertion(const std::string& file, const std::string& function, int line,
                                                     const std::string& condition) {
    return testing::Eq(AssertionText(file, function, std::to_string(line), condition));
}

// ---- clock ---------------------------------------------------------------------------------------------------------

static std::atomic<long long> s_clock{1700000000LL * 1000000 + 123456};  // microseconds since 1970
static std::atomic<bool> s_localtime_fails{false};
static std::atomic<int> s_minutes_west{0};

void SetClock(long seconds, long microseconds) {
    s_clock = seconds * 1000000LL + microseconds;
}

void AdvanceClock(long milliseconds) {
    s_clock += milliseconds * 1000LL;
}

void SetTimeZone(const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
}

void FailLocaltime(bool fails) {
    s_localtime_fails = fails;
}

void SetMinutesWest(int minutes) {
    s_minutes_west = minutes;
}

// The linker sends every call of these three here.
extern "C" {
int __wrap_gettimeofday(struct timeval* now, void* zone);
time_t __wrap_time(time_t* now);
struct tm* __wrap_localtime_r(const time_t* seconds, struct tm* local);
struct tm* __real_localtime_r(const time_t* seconds, struct tm* local);

int __wrap_gettimeofday(struct timeval* now, void* zone) {
    const long long clock = s_clock;
    if (zone != nullptr)
        static_cast<struct timezone*>(zone)->tz_minuteswest = s_minutes_west;
    now->tv_sec = static_cast<time_t>(clock / 1000000);
    now->tv_usec = static_cast<suseconds_t>(clock % 1000000);
    return 0;
}

time_t __wrap_time(time_t* now) {
    const time_t seconds = static_cast<time_t>(s_clock / 1000000);
    if (now != nullptr)
        *now = seconds;
    return seconds;
}

struct tm* __wrap_localtime_r(const time_t* seconds, struct tm* local) {
    return s_localtime_fails ? nullptr : __real_localtime_r(seconds, local);
}
}

// ---- files ---------------------------------------------------------------------------------------------------------

static const char CONFIG_DIRECTORY[] = "/config/";
static std::string s_config_directory;

void SetConfigDirectory(const std::string& directory) {
    s_config_directory = directory;
}

std::string FilePath(const char* path) {
    const size_t prefix = strlen(CONFIG_DIRECTORY);
    if (strncmp(path, CONFIG_DIRECTORY, prefix) != 0)
        return path;
    return s_config_directory.empty() ? "" : s_config_directory + "/" + (path + prefix);
}

extern "C" {
int __wrap_access(const char* path, int mode);
int __real_access(const char* path, int mode);

int __wrap_access(const char* path, int mode) {
    return __real_access(FilePath(path).c_str(), mode);
}
}

// ---- memory --------------------------------------------------------------------------------------------------------

static std::atomic<size_t> s_malloc_fails_from{0};

void FailMallocFrom(size_t bytes) {
    s_malloc_fails_from = bytes;
}

extern "C" {
void* __wrap_malloc(size_t size);
void* __real_malloc(size_t size);

void* __wrap_malloc(size_t size) {
    const size_t limit = s_malloc_fails_from;
    return limit != 0 && size >= limit ? nullptr : __real_malloc(size);
}
}

static std::atomic<int> s_new_fails_in{0};

void FailNothrowNew(int nth) {
    s_new_fails_in = nth;
}

// The linker puts this in the place of new (std::nothrow): a sanitizer may have an operator of its own, which cannot be
// replaced.
#if __SIZEOF_SIZE_T__ == 8
#define NOTHROW_NEW(prefix) prefix##_ZnwmRKSt9nothrow_t
#else
#define NOTHROW_NEW(prefix) prefix##_ZnwjRKSt9nothrow_t
#endif

extern "C" {
void* NOTHROW_NEW(__wrap_)(size_t size, const std::nothrow_t& tag) noexcept;
void* NOTHROW_NEW(__real_)(size_t size, const std::nothrow_t& tag) noexcept;

void* NOTHROW_NEW(__wrap_)(size_t size, const std::nothrow_t& tag) noexcept {
    if (s_new_fails_in > 0 && --s_new_fails_in == 0)
        return nullptr;
    return NOTHROW_NEW(__real_)(size, tag);
}
}

#ifdef UNIT_LEAK_CHECK
StatedLeak::StatedLeak() {
    __lsan_disable();
}
StatedLeak::~StatedLeak() {
    __lsan_enable();
}
#else
StatedLeak::StatedLeak() = default;
StatedLeak::~StatedLeak() = default;
#endif

// ---- dumps ---------------------------------------------------------------------------------------------------------

static std::mutex s_pieces_guard;
static std::vector<std::string> s_pieces;

int CollectPrint(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    char* text = nullptr;
    const int length = vasprintf(&text, format, arguments);
    va_end(arguments);
    std::lock_guard<std::mutex> guard(s_pieces_guard);
    s_pieces.push_back(text);
    free(text);
    return length;
}

std::vector<std::string> TakePieces() {
    std::lock_guard<std::mutex> guard(s_pieces_guard);
    return std::exchange(s_pieces, {});
}

std::string TakePrinted() {
    std::string printed;
    for (const std::string& piece : TakePieces())
        printed += piece;
    return printed;
}

// By the command and not by the C library's iconv: the libraries for another processor come without the converters,
// while the command runs on this one.
static std::string Convert(const char* from, const char* to, const std::string& text) {
    std::string command = "printf '";
    for (const unsigned char byte : text) {
        char octal[8];
        snprintf(octal, sizeof(octal), "\\%03o", byte);
        command += octal;
    }
    command += std::string("' | iconv -f ") + from + " -t " + to;
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr)
        abort();
    std::string converted;
    char piece[4096];
    for (size_t length; (length = fread(piece, 1, sizeof(piece), pipe)) != 0;)
        converted.append(piece, length);
    EXPECT_EQ(pclose(pipe), 0) << "not " << from << ": " << testing::PrintToString(text);
    return converted;
}

std::string Gbk(const std::string& utf8) {
    return Convert("UTF-8", "GBK", utf8);
}

std::string Utf8(const std::string& gbk) {
    return Convert("GBK", "UTF-8", gbk);
}
