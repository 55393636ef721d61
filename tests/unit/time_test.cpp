// Calendar time: the conversions, the comparison, the printed clock.
#include <limits.h>

#include "hostmgr_common.h"
#include "test_support.h"

using testing::ElementsAre;

// Central European time by its rule, which holds in 1970, too: winter time then.
static const char* const CENTRAL_EUROPE = "CET-1CEST,M3.5.0,M10.5.0/3";

static constexpr uint32_t UNTOUCHED = 0xDEADBEEF;

static _tagVexoHostMgrTime HostTime(uint32_t year, uint32_t month, uint32_t day, uint32_t hour = 0, uint32_t minute = 0,
                                    uint32_t second = 0) {
    return {year, month, day, hour, minute, second, UNTOUCHED};
}

static std::vector<uint32_t> Fields(const _tagVexoHostMgrTime& time) {
    return {time.dwYear, time.dwMonth, time.dwDay, time.dwHour, time.dwMinute, time.dwSecond, time.reserved};
}

static time_t ToSeconds(const _tagVexoHostMgrTime& time, time_t from = 0) {
    time_t seconds = from;
    HostMgrHostTimeToSeconds(&time, &seconds);
    return seconds;
}

static std::vector<uint32_t> FromSeconds(time_t seconds) {
    _tagVexoHostMgrTime time = HostTime(1, 2, 3, 4, 5, 6);
    HostMgrSecondsToHostTime(seconds, &time);
    return Fields(time);
}

class Time : public testing::Test {
protected:
    Time() { SetTimeZone("UTC0"); }
};

// ---- narrowing copy ------------------------------------------------------------------------------------------------

static std::vector<unsigned> Narrowed(const _tagVexoHostMgrTime& host) {
    vexo_time_struct time;
    HostMgrHostToVexoTime(&host, &time);
    return {time.year, time.month, time.day, time.hour, time.minute, time.second};
}

TEST_F(Time, NarrowingCopy_KeepsTheOrderOfTheFields) {
    EXPECT_THAT(Narrowed(HostTime(2024, 2, 29, 23, 58, 59)), ElementsAre(2024, 2, 29, 23, 58, 59));
}

TEST_F(Time, NarrowingCopy_KeepsTheLow16BitsOfEachField) {
    EXPECT_THAT(Narrowed(HostTime(0x107E8, 0x20002, 0x3001D, 0x40017, 0x5003A, 0xFFFF003B)),
                ElementsAre(2024, 2, 29, 23, 58, 59));
}

// ---- from seconds --------------------------------------------------------------------------------------------------

TEST_F(Time, FromSeconds_GivesFullYearAndMonthFromOne) {
    EXPECT_THAT(FromSeconds(1709251139), ElementsAre(2024, 2, 29, 23, 58, 59, UNTOUCHED));
}

TEST_F(Time, FromSeconds_GivesLocalTime) {
    SetTimeZone(CENTRAL_EUROPE);
    EXPECT_THAT(FromSeconds(1719828000), ElementsAre(2024, 7, 1, 12, 0, 0, UNTOUCHED));
}

TEST_F(Time, FromSeconds_OverTheYearsEnd) {
    EXPECT_THAT(FromSeconds(1735689599), ElementsAre(2024, 12, 31, 23, 59, 59, UNTOUCHED));
    EXPECT_THAT(FromSeconds(1735689600), ElementsAre(2025, 1, 1, 0, 0, 0, UNTOUCHED));
}

TEST_F(Time, FromSeconds_OverTheBeginOfSummerTime) {
    SetTimeZone(CENTRAL_EUROPE);
    EXPECT_THAT(FromSeconds(1711846799), ElementsAre(2024, 3, 31, 1, 59, 59, UNTOUCHED));
    EXPECT_THAT(FromSeconds(1711846800), ElementsAre(2024, 3, 31, 3, 0, 0, UNTOUCHED));
}

TEST_F(Time, FromSeconds_OverTheEndOfSummerTime) {
    SetTimeZone(CENTRAL_EUROPE);
    EXPECT_THAT(FromSeconds(1729990799), ElementsAre(2024, 10, 27, 2, 59, 59, UNTOUCHED));
    EXPECT_THAT(FromSeconds(1729990800), ElementsAre(2024, 10, 27, 2, 0, 0, UNTOUCHED));
}

TEST_F(Time, FromSecondsWithoutLocalTime_ZeroesTheSixFields) {
    FailLocaltime(true);
    EXPECT_THAT(FromSeconds(1709251139), ElementsAre(0, 0, 0, 0, 0, 0, UNTOUCHED));
}

#if __SIZEOF_LONG__ == 8  // every 32-bit instant has a local time
TEST_F(Time, FromSecondsBeyondTheCalendar_ZeroesTheSixFields) {
    EXPECT_THAT(FromSeconds(LONG_MAX), ElementsAre(0, 0, 0, 0, 0, 0, UNTOUCHED));
}
#endif

// ---- to seconds ----------------------------------------------------------------------------------------------------

TEST_F(Time, ToSeconds_ReadsTheSixFields) {
    EXPECT_EQ(ToSeconds(HostTime(2024, 2, 29, 23, 58, 59)), 1709251139);
}

TEST_F(Time, ToSeconds_OverTheYearsEnd) {
    EXPECT_EQ(ToSeconds(HostTime(2024, 12, 31, 23, 59, 59)), 1735689599);
    EXPECT_EQ(ToSeconds(HostTime(2025, 1, 1)), 1735689600);
}

TEST_F(Time, ToSeconds_ReadsLocalTime) {
    SetTimeZone(CENTRAL_EUROPE);
    EXPECT_EQ(ToSeconds(HostTime(2024, 1, 1, 12)), 1704106800);
}

// Kept: 12:00 of a summer day is 11:00 UTC here, as if winter time held, and not 10:00.
TEST_F(Time, ToSecondsOfASummerDayFromZero_IsAnHourLate) {
    SetTimeZone(CENTRAL_EUROPE);
    EXPECT_EQ(ToSeconds(HostTime(2024, 7, 1, 12)), 1719828000 + 3600);
}

TEST_F(Time, ToSecondsOfASummerDayFromASummerInstant_IsRight) {
    SetTimeZone(CENTRAL_EUROPE);
    EXPECT_EQ(ToSeconds(HostTime(2024, 7, 1, 12), 1719000000), 1719828000);
}

TEST_F(Time, ToSecondsWithoutLocalTime_TakesWinterTime) {
    SetTimeZone(CENTRAL_EUROPE);
    FailLocaltime(true);
    EXPECT_EQ(ToSeconds(HostTime(2024, 7, 1, 12), 1719000000), 1719828000 + 3600);
}

TEST_F(Time, ToSeconds_LeavesTheTimeAlone) {
    _tagVexoHostMgrTime time = HostTime(2024, 2, 30);
    time_t seconds = 0;
    HostMgrHostTimeToSeconds(&time, &seconds);
    EXPECT_THAT(Fields(time), ElementsAre(2024, 2, 30, 0, 0, 0, UNTOUCHED));
}

// ---- comparison ----------------------------------------------------------------------------------------------------

static int Compare(const _tagVexoHostMgrTime& left, const _tagVexoHostMgrTime& right) {
    return HostMgrCompareHostTime(&left, &right);
}

TEST_F(Time, CompareEarlierLeft_IsOne) {
    EXPECT_EQ(Compare(HostTime(2024, 2, 29, 23, 59, 59), HostTime(2024, 3, 1)), 1);
}

TEST_F(Time, CompareEqual_IsZero) {
    EXPECT_EQ(Compare(HostTime(2024, 3, 1, 1, 2, 3), HostTime(2024, 3, 1, 1, 2, 3)), 0);
}

TEST_F(Time, CompareLaterLeft_IsMinusOne) {
    EXPECT_EQ(Compare(HostTime(2024, 3, 1, 0, 0, 1), HostTime(2024, 3, 1)), -1);
}

TEST_F(Time, CompareTimesOfTheSameInstant_IsZero) {
    EXPECT_EQ(Compare(HostTime(2024, 2, 29, 24), HostTime(2024, 3, 1)), 0);
}

TEST_F(Time, CompareTimesThatDifferInTheSeventhWord_IsZero) {
    _tagVexoHostMgrTime other = HostTime(2024, 3, 1);
    other.reserved = 0;
    EXPECT_EQ(Compare(HostTime(2024, 3, 1), other), 0);
}

// Both sides start from the same instant, so both are an hour late in summer.
TEST_F(Time, CompareEqualSummerTimes_IsZero) {
    SetTimeZone(CENTRAL_EUROPE);
    EXPECT_EQ(Compare(HostTime(2024, 7, 1, 12), HostTime(2024, 7, 1, 12)), 0);
}

TEST_F(Time, CompareSummerTimesAnHourApart_KeepsTheirOrder) {
    SetTimeZone(CENTRAL_EUROPE);
    EXPECT_EQ(Compare(HostTime(2024, 7, 1, 12), HostTime(2024, 7, 1, 12, 59, 59)), 1);
}

TEST_F(Time, Compare_PrintsNothing) {
    EXPECT_EQ(RawConsole([] { Compare(HostTime(2024, 3, 1), HostTime(2024, 3, 2)); }), "");
}

/** What the comparison of two pointers, one of them null at least, prints. */
static std::string NullMessage(const void* left, const void* right) {
    char text[100];
    snprintf(text, sizeof(text), "lhostTime %p, rhostTime %p\n", left, right);
    return Error("HostMgrCompareHostTime", text);
}

static void ExpectNullRefused(const _tagVexoHostMgrTime* left, const _tagVexoHostMgrTime* right) {
    int result = 0;
    EXPECT_EQ(Console([&] { result = HostMgrCompareHostTime(left, right); }), NullMessage(left, right));
    EXPECT_EQ(result, 2);
}

TEST_F(Time, CompareNullLeft_IsTwoWithBothPointers) {
    const _tagVexoHostMgrTime time = HostTime(2024, 3, 1);
    ExpectNullRefused(nullptr, &time);
}

TEST_F(Time, CompareNullRight_IsTwoWithBothPointers) {
    const _tagVexoHostMgrTime time = HostTime(2024, 3, 1);
    ExpectNullRefused(&time, nullptr);
}

TEST_F(Time, CompareNullBoth_IsTwoWithBothPointers) {
    ExpectNullRefused(nullptr, nullptr);
}

// ---- printed clock -------------------------------------------------------------------------------------------------

static std::string PrintedClock(long seconds, long microseconds) {
    SetClock(seconds, microseconds);
    return Console(HostMgrPrintfCurTime);
}

TEST_F(Time, PrintedClock_IsSecondsAndMilliseconds) {
    EXPECT_EQ(PrintedClock(1700000000, 123456), Debug("HostMgrPrintfCurTime", "1700000000.123 s\n"));
}

TEST_F(Time, PrintedClock_HasThreeDigitsOfMilliseconds) {
    EXPECT_EQ(PrintedClock(5, 7000), Debug("HostMgrPrintfCurTime", "5.007 s\n"));
}

TEST_F(Time, PrintedClock_CutsMicrosecondsOff) {
    EXPECT_EQ(PrintedClock(5, 999999), Debug("HostMgrPrintfCurTime", "5.999 s\n"));
}
