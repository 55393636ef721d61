// What the recorder is, in both forms; its clock, in both forms; the version of the configuration interface. Numbers of
// things have the names that the recorder's capability record gives them.
#include "config_decode.h"
#include "local_time.h"

namespace hostmgrctl {
namespace {

using namespace decode;  // the tables are all about it
using Device = _tagVexoHostMgrDeviceCfg;
using Time = _tagVexoHostMgrDeviceTime;
using TimeShort = _tagVexoHostMgrDeviceTimeShort;

// ---- device --------------------------------------------------------------------------------------------------------

constexpr Name KINDS[] = {{1, "hybrid recorder"}, {2, "network recorder"}};
constexpr Name STREAM_MODES[] = {{0, "main stream alone"}, {1, "main and sub stream"}};

/** Year, month and day, each as the recorder has it. */
Shown Date(const unsigned char* bytes, size_t size, const Look& /*look*/) {
    const uint32_t date = Word(bytes, size);
    if (date == 0) {
        return {nullptr, "-"};
    }
    char text[32];
    snprintf(text, sizeof(text), "%04u-%02u-%02u", date >> 16, date >> 8 & 0xFF, date & 0xFF);
    return {text, text};
}

constexpr Field DEVICE_FIELDS[] = {
    {nullptr, "", HOSTMGRCTL_MEMBER(Device, dwSize), Number},
    {"type", "type", HOSTMGRCTL_MEMBER(Device, sDeviceType), Text},
    {"kind", "kind", HOSTMGRCTL_MEMBER(Device, byDeviceKind), Named<KINDS>},
    {"class", "class", HOSTMGRCTL_MEMBER(Device, dwDeviceClass), Number},
    {"serial_number", "serial number", HOSTMGRCTL_MEMBER(Device, sSerialNumber), Text},
    {"software_version", "software version", HOSTMGRCTL_MEMBER(Device, dwSoftwareVersion), Version},
    {"build_date", "built on", HOSTMGRCTL_MEMBER(Device, dwBuildDate), Date},
    {"hardware_version", "hardware version", HOSTMGRCTL_MEMBER(Device, dwHardwareVersion), Version},
    {"channels", "channels of its own", HOSTMGRCTL_MEMBER(Device, byChanNum), Number},
    {"network_channels", "network channels", HOSTMGRCTL_MEMBER(Device, byIpChanNum), Number},
    {"alarm_inputs", "alarm inputs", "byCapBytes[0]", offsetof(Device, byCapBytes), 1, Number},
    {"alarm_outputs", "alarm outputs", HOSTMGRCTL_MEMBER(Device, byCapByteA), Number},
    {"disk_slots", "disk slots", HOSTMGRCTL_MEMBER(Device, byCapByteB), Number},
    {"sata", "SATA disks in use", HOSTMGRCTL_MEMBER(Device, bySataFlag), Flag},
    {"usb_ports", "USB ports", "byCapBytes[1]", offsetof(Device, byCapBytes) + 1, 1, Number},
    {"network_ports", "network ports", "byCapBytes[2]", offsetof(Device, byCapBytes) + 2, 1, Number},
    {nullptr, "", HOSTMGRCTL_MEMBER(Device, byReserved1), Number},
    {nullptr, "", HOSTMGRCTL_MEMBER(Device, wReserved2), Number},
    {nullptr, "", HOSTMGRCTL_MEMBER(Device, dwReserved3), HexBytes},
    {nullptr, "", HOSTMGRCTL_MEMBER(Device, dwReserved4), Number},
    {nullptr, "", HOSTMGRCTL_MEMBER(Device, byFixedOne), Number},
    {nullptr, "", HOSTMGRCTL_MEMBER(Device, byShortForm), Flag},
    {nullptr, "", HOSTMGRCTL_MEMBER(Device, byChanNumCopy), Number},
};

// What follows the short form.
constexpr Field DEVICE_LONG_FIELDS[] = {
    {"recorded_streams", "recorded streams", HOSTMGRCTL_MEMBER(Device, byRecStreamMode), Named<STREAM_MODES>},
};

constexpr Section DEVICE_SECTIONS[] = {
    {nullptr, nullptr, Form::Lines, DEVICE_FIELDS},
    {nullptr, nullptr, Form::Lines, DEVICE_LONG_FIELDS},
};
constexpr Section DEVICE_SHORT_SECTIONS[] = {{nullptr, nullptr, Form::Lines, DEVICE_FIELDS}};

constexpr char NO_CAPABILITY[] = "it has no capability record to tell";

// ---- time ----------------------------------------------------------------------------------------------------------

constexpr char NO_TIME[] = "its clock cannot be read";

/** The recorder's zone is the tool's: both run in one process. Words that are no time stay words. */
Shown ClockOf(const _tagVexoHostMgrTime& time) {
    const time_t seconds = FromCalendarTime(time);
    char words[96];
    snprintf(words, sizeof(words), "%04u-%02u-%02u %02u:%02u:%02u", time.dwYear, time.dwMonth, time.dwDay, time.dwHour,
             time.dwMinute, time.dwSecond);
    if (seconds < 0) {
        return {words, words};
    }
    return {TimeJson(seconds), TimeText(seconds)};
}

Shown Clock(const unsigned char* bytes, size_t /*size*/, const Look& /*look*/) {
    _tagVexoHostMgrTime time = {};
    time.dwYear = WordAt(bytes, offsetof(Time, dwYear));
    time.dwMonth = WordAt(bytes, offsetof(Time, dwMonth));
    time.dwDay = WordAt(bytes, offsetof(Time, dwDay));
    time.dwHour = WordAt(bytes, offsetof(Time, dwHour));
    time.dwMinute = WordAt(bytes, offsetof(Time, dwMinute));
    time.dwSecond = WordAt(bytes, offsetof(Time, dwSecond));
    return ClockOf(time);
}

Shown ClockShort(const unsigned char* bytes, size_t /*size*/, const Look& /*look*/) {
    _tagVexoHostMgrTime time = {};
    time.dwYear = Word(bytes, sizeof(TimeShort::wYear));
    time.dwMonth = bytes[offsetof(TimeShort, byMonth)];
    time.dwDay = bytes[offsetof(TimeShort, byDay)];
    time.dwHour = bytes[offsetof(TimeShort, byHour)];
    time.dwMinute = bytes[offsetof(TimeShort, byMinute)];
    time.dwSecond = bytes[offsetof(TimeShort, bySecond)];
    return ClockOf(time);
}

/** As the record has it, which is 0 where the recorder's C library keeps no offset. */
Shown Offset(const unsigned char* bytes, size_t size, const Look& /*look*/) {
    const auto minutes = static_cast<int32_t>(Word(bytes, size));
    char text[64];
    snprintf(text, sizeof(text), "%d minutes east of UTC", minutes);
    return {minutes, minutes != 0 ? text : "0: UTC, or the recorder does not say"};
}

constexpr Field TIME_FIELDS[] = {
    {"time", "recorder's clock", nullptr, 0, sizeof(Time), Clock},
    {nullptr, "", HOSTMGRCTL_MEMBER(Time, dwYear), Number},
    {nullptr, "", HOSTMGRCTL_MEMBER(Time, dwMonth), Number},
    {nullptr, "", HOSTMGRCTL_MEMBER(Time, dwDay), Number},
    {nullptr, "", HOSTMGRCTL_MEMBER(Time, dwHour), Number},
    {nullptr, "", HOSTMGRCTL_MEMBER(Time, dwMinute), Number},
    {nullptr, "", HOSTMGRCTL_MEMBER(Time, dwSecond), Number},
};
constexpr Field TIME_SHORT_FIELDS[] = {
    {"time", "recorder's clock", nullptr, 0, sizeof(TimeShort), ClockShort},
    {"utc_offset_minutes", "offset it tells", HOSTMGRCTL_MEMBER(TimeShort, lUtcOffset), Offset},
    {nullptr, "", HOSTMGRCTL_MEMBER(TimeShort, wYear), Number},
    {nullptr, "", HOSTMGRCTL_MEMBER(TimeShort, byMonth), Number},
    {nullptr, "", HOSTMGRCTL_MEMBER(TimeShort, byDay), Number},
    {nullptr, "", HOSTMGRCTL_MEMBER(TimeShort, byHour), Number},
    {nullptr, "", HOSTMGRCTL_MEMBER(TimeShort, byMinute), Number},
    {nullptr, "", HOSTMGRCTL_MEMBER(TimeShort, bySecond), Number},
    {nullptr, "", HOSTMGRCTL_MEMBER(TimeShort, byFixedOne), Number},
};
constexpr Section TIME_SECTIONS[] = {{nullptr, nullptr, Form::Lines, TIME_FIELDS}};
constexpr Section TIME_SHORT_SECTIONS[] = {{nullptr, nullptr, Form::Lines, TIME_SHORT_FIELDS}};

// ---- version -------------------------------------------------------------------------------------------------------

constexpr Field VERSION_FIELDS[] = {{"version", "version", "(value)", 0, sizeof(uint32_t), Number}};
constexpr Section VERSION_SECTIONS[] = {{nullptr, nullptr, Form::Lines, VERSION_FIELDS}};

}  // namespace

const Record DEVICE_RECORD = {
    "device", "what the recorder is and has", HOSTMGR_CONFIG_DEVICE, sizeof(Device), NO_CAPABILITY, DEVICE_SECTIONS};
const Record DEVICE_SHORT_RECORD = {"device-short",
                                    "device, short form",
                                    HOSTMGR_CONFIG_DEVICE,
                                    HOSTMGR_DEVICE_CFG_SHORT_SIZE,
                                    NO_CAPABILITY,
                                    DEVICE_SHORT_SECTIONS,
                                    false,
                                    false};
const Record TIME_RECORD = {"time",  "the recorder's clock", HOSTMGR_CONFIG_DEVICE_TIME, sizeof(Time),
                            NO_TIME, TIME_SECTIONS};
const Record TIME_SHORT_RECORD = {"time-short",
                                  "clock, short form with offset",
                                  HOSTMGR_CONFIG_DEVICE_TIME,
                                  sizeof(TimeShort),
                                  NO_TIME,
                                  TIME_SHORT_SECTIONS,
                                  false,
                                  false};
const Record VERSION_RECORD = {"version",        "version of the configuration commands", HOSTMGR_CONFIG_VERSION,
                               sizeof(uint32_t), "it does not know this command",         VERSION_SECTIONS};

}  // namespace hostmgrctl
