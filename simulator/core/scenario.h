// The scenario: what the simulated recorder is made of, read once at start from a JSON file or from the built-in
// default. Data only. What the recorder does with it stands in the libraries (../utility, ../cfgm, ../model).
#ifndef SIMULATOR_CORE_SCENARIO_H
#define SIMULATOR_CORE_SCENARIO_H

#include <string>
#include <vector>

#include "core/events.h"

namespace simulator {

/** One encoded stream of a camera. */
struct VideoSettings {
    unsigned width = 0;     ///< pixels, even
    unsigned height = 0;    ///< pixels, even
    unsigned fps = 0;       ///< frames a second
    unsigned gop = 0;       ///< frames from key frame to key frame
    unsigned kbps = 0;      ///< target bit rate, kbit/s
    bool constant = false;  ///< the bit rate is kept in quiet pictures, too
    unsigned quality = 6;   ///< 1 to 6, of a bit rate that is not constant: the best that a picture may have
};

struct CameraSettings {
    std::string name;
    std::string address;  ///< IPv4 address or host name
    std::string source;   ///< "scene" for the generated scene, or the path of a video file to play in a loop
    VideoSettings main;
    VideoSettings sub;
    unsigned audio_hz = 0;   ///< pitch of the camera's sound, a tone; 0: silence
    double audio_level = 0;  ///< amplitude of the tone, 0 to 1 of full scale
    bool signal = true;      ///< false: starts without a video signal
};

/** The channels that a right covers. */
struct ChannelRight {
    unsigned right = 0;              ///< counted from 1
    std::vector<unsigned> channels;  ///< counted from 1; empty: all
};

/** What a user may do, at the recorder or over the network. */
struct RightsSettings {
    std::vector<unsigned> flags;  ///< the rights that are given, counted from 1
    std::vector<ChannelRight> masks;
};

/** An administrator has all rights, whatever else stands here. */
struct UserSettings {
    std::string name;
    std::string password;
    bool administrator = false;
    bool change_parameters = false;
    bool manage_disks = false;
    RightsSettings local;
    RightsSettings remote;
};

struct FaultSettings {
    std::string operation;  ///< such as "vexo_model_login"
    unsigned nth = 1;       ///< the use that fails first, counted from 1
    unsigned times = 1;     ///< how many uses fail from there on
};

/** One event by plan. */
struct EventSettings {
    EventKind kind;
    unsigned number = 0;  ///< channel, disk or input, counted from 1; 0 for a kind without a number
    double at = 0;        ///< seconds from the start of the recorder to the first turn
    double lasts = 0;     ///< seconds that a turn lasts; 0: it does not end
    double every = 0;     ///< seconds from turn to turn; 0: there is one
};

/** What the recorder's microphone hears, for talk with the recorder itself; and the frames of every talk. */
struct TalkSettings {
    std::string source;            ///< "tone", or the path of a sound file to play in a loop
    unsigned hz = 0;               ///< pitch of the tone; 0: silence
    double level = 0;              ///< amplitude of the tone, 0 to 1 of full scale
    std::vector<unsigned> frames;  ///< bytes of sound in captured frames, which take turns; never empty
};

/** One Ethernet interface. */
struct InterfaceSettings {
    std::string name;  ///< such as "eth0"
    bool dhcp = false;
    std::string address;
    std::string mask;
    std::string gateway;
    std::string ipv6_address;
    unsigned ipv6_prefix = 64;  ///< bits; told with an address alone
    std::string ipv6_gateway;
};

/** TCP ports of the recorder's services. */
struct PortSettings {
    unsigned http = 80;
    unsigned https = 443;
    unsigned onvif = 8000;
    unsigned rtmp = 1935;
    unsigned rtsp = 554;
};

struct PppoeSettings {
    bool enabled = false;
    std::string user;
    std::string password;
    std::string address;  ///< that the link has, IPv4 or IPv6
};

struct NetworkSettings {
    std::vector<InterfaceSettings> interfaces;
    std::string default_interface;  ///< one of their names
    unsigned bonds = 0;             ///< bonded interfaces
    std::string dns1;
    std::string dns2;
    std::string ipv6_dns1;
    std::string ipv6_dns2;
    bool upnp = false;
    PortSettings ports;
    PppoeSettings pppoe;
};

/** One parameter of a platform link. */
struct LinkParameter {
    std::string name;
    std::string value;
};

/** One platform link: what a management platform is reached by. */
struct PlatformLink {
    unsigned number = 0;  ///< 1 to 32
    bool enabled = false;
    std::vector<LinkParameter> parameters;  ///< at most 8
};

/** As the platform counts them. */
enum class DiskKind : unsigned { Local = 1, External = 2, Network = 3, Array = 4 };
enum class DiskState : unsigned { Unformatted = 1, Broken = 2, Normal = 3 };

/** One simulated disk. */
struct DiskSettings {
    unsigned megabytes = 0;  ///< 1000000 bytes each
    DiskKind kind = DiskKind::Local;
    DiskState state = DiskState::Normal;
    std::vector<unsigned> partitions = {};  ///< megabytes; empty: one of the whole disk
};

/** What the capability record says beside what follows from the rest of the scenario. */
struct CapabilitySettings {
    bool hybrid = false;
    unsigned analog_channels = 0;  ///< the first so many; the others are network channels
    unsigned alarm_outputs = 0;
    unsigned disk_slots = 0;
    unsigned usb_ports = 0;
    std::string hardware;  ///< "major.minor"
};

/** A name and value that were written at the factory. */
struct FactoryItem {
    std::string name;
    std::string value;
};

/** When what the cameras see is recorded. */
enum class LiveRecording {
    Off,
    Watched,  ///< while somebody watches: the cameras are at work then
    Always,   ///< from the first login on
};

/** What a recorder's first start puts on its disks. */
struct HistorySettings {
    unsigned hours = 0;     ///< how far back it goes
    unsigned segments = 0;  ///< recordings of a channel; 0: no history
    unsigned seconds = 0;   ///< length of each
    unsigned fps = 0;       ///< frames a second, main and sub stream
    unsigned gop = 0;       ///< frames from key frame to key frame
    unsigned width = 0;     ///< pixels; a wider main picture is made so wide, and the sub picture half of it
    std::string until;      ///< local time of its end, "2024-07-05 12:00:00"; empty: the first start
    unsigned listed = 0;    ///< further recordings of a channel, before these, that stand in the index alone
};

struct RecordingSettings {
    LiveRecording live = LiveRecording::Watched;
    unsigned file_seconds = 0;  ///< a longer recording goes on in another file
    HistorySettings history;
};

struct Scenario {
    std::string name;
    std::string model = "Simulated recorder";
    std::string version;     ///< "major.minor", such as "1.0"
    std::string build_date;  ///< year-month-day
    unsigned seed = 1;
    unsigned frames_kept = 0;  ///< frames that a live list holds before the oldest goes
    std::vector<CameraSettings> cameras;
    std::vector<UserSettings> users;  ///< one of them is "admin"
    std::vector<FaultSettings> faults;
    std::vector<EventSettings> events;
    unsigned alarm_inputs = 0;  ///< of the recorder itself
    TalkSettings talk;
    VideoSettings zero_channel;   ///< the picture of several channels in one
    unsigned reboot_seconds = 0;  ///< how long a reboot takes
    NetworkSettings network;
    std::vector<PlatformLink> platform_links;
    std::vector<DiskSettings> disks;
    CapabilitySettings capability;
    std::vector<FactoryItem> factory;
    RecordingSettings recordings;
};

/**
 * The running scenario; loaded on first use, unchanged afterwards, valid for the process's life. A file that cannot be
 * used ends the process: a message on standard error says why, the exit status is 2.
 */
const Scenario& TheScenario();

/**
 * Reads a scenario from JSON text; throws std::runtime_error that names the place and what is wrong with it. A camera's
 * file is taken as written and not opened here.
 */
Scenario ParseScenario(const std::string& json);

/** The default scenario's JSON text: four channels. */
const char* DefaultScenarioJson();

/**
 * The recorder's home folder, which exists after the call: environment variable RECORDER_HOME, else the folder
 * simulated-recorder under the user's cache folder. One that cannot be made ends the process as a bad scenario does.
 */
std::string HomeFolder();

}  // namespace simulator

#endif
