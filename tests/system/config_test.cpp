// Every configuration record through the exported functions, on a recorder whose scenario has a value of its own for
// all of them, compared byte by byte with an image built by hand.
#include <gmock/gmock.h>

#include <cstdio>
#include <ctime>
#include <random>

#include "../image.h"
#include "agent.h"
#include "device_support.h"

using agent::Session;
using device::Home;

namespace {

/** So many letters, no two neighbours alike. */
std::string Letters(size_t count) {
    std::string text;
    for (size_t i = 0; i < count; ++i) {
        text += static_cast<char>('a' + i % 26);
    }
    return text;
}

constexpr unsigned SEED = 4711;
constexpr unsigned DISKS = 30;

/** Four disks of their own and twenty-six of a megabyte more each. */
std::string Disks() {
    std::string disks = R"([{"megabytes": 1000, "partitions": [20, 900]},
        {"megabytes": 500, "kind": "array", "state": "broken"},
        {"megabytes": 300, "kind": "external", "state": "unformatted"},
        {"megabytes": 2000, "kind": "network", "partitions": [1, 2, 4, 8]})";
    for (unsigned number = 5; number <= DISKS; ++number) {
        disks += ", {\"megabytes\": " + std::to_string(10 + number) + "}";
    }
    return disks + "]";
}

/** Ten enabled links between disabled ones; the first one has all its parameters. */
std::string Links() {
    std::string links = R"([{"number": 2, "parameters": [{"name": "a", "value": "first"}, {"value": ")" + Letters(40) +
                        R"("}, {}, {"value": "fourth"}, {}, {}, {}, {"value": "eighth"}]},
        {"number": 4, "enabled": false, "parameters": [{"value": "switched off"}]})";
    for (const unsigned number : {32, 31, 30, 28, 26, 24, 22, 20, 18}) {
        links += ", {\"number\": " + std::to_string(number) + ", \"parameters\": [{\"value\": \"of " +
                 std::to_string(number) + "\"}]}";
    }
    return links + "]";
}

std::string Scenario() {
    return R"({
    "name": "configuration test", "seed": )" +
           std::to_string(SEED) + R"(, "version": "12.345", "build_date": "2031-12-9", "channels": 70,
    "cameras": [
        {"sub": {"constant": true, "kbps": 50000}},
        {"address": "yard.example.net", "audio": {"hz": 0}, "sub": {"quality": 3, "kbps": 300}},
        {"address": "203.0.113.250"},
        {"signal": false},
        {"address": ")" +
           Letters(127) + R"("}
    ],
    "users": [
        {"name": "admin", "password": "admin12345", "administrator": true},
        {"name": "default", "password": "nobody"},
        {"name": ")" +
           Letters(63) + R"(", "password": ")" + Letters(63) + R"("},
        {"name": "chief", "password": "sixteen letters.", "manage_disks": true,
         "local": {"rights": [1, 5], "by_channel": [{"right": 5, "channels": [1, 33, 64, 65, 70]},
                                                    {"right": 3, "channels": [2]}]},
         "remote": {"rights": [2, 6, 7], "by_channel": [{"right": 1, "channels": [32]}, {"right": 4, "channels": [64]}]}},
        {"name": "five"}, {"name": "six"}, {"name": "seven"}, {"name": "eight"}, {"name": "nine"}
    ],
    "disks": )" +
           Disks() + R"(,
    "capability": {"kind": "hybrid", "analog_channels": 2, "alarm_outputs": 6, "disk_slots": 40, "usb_ports": 3,
                   "hardware": "2.7"},
    "alarm_inputs": 9,
    "network": {
        "interfaces": [
            {"ipv6_address": "2001:db8:1111:2222:3333:4444:5555:6666", "ipv6_prefix": 48, "ipv6_gateway": "2001:db8::1"},
            {"name": "lan", "dhcp": true, "address": "198.51.100.123", "mask": "255.255.255.128", "gateway": ""},
            {"name": "eth12", "address": "", "mask": "", "gateway": ""},
            {"name": "wan300"}, {"name": "eth5"}, {"name": "eth6"}
        ],
        "default_interface": "wan300", "upnp": true, "dns1": "203.0.113.1", "dns2": "203.0.113.200",
        "ipv6_dns1": "2001:db8::53", "ipv6_dns2": "2001:db8::54",
        "ports": {"http": 65535, "https": 1, "onvif": 8899, "rtmp": 1936, "rtsp": 8554},
        "pppoe": {"enabled": true, "user": ")" +
           Letters(63) + R"(", "password": ")" + Letters(63) + R"(", "address": "2001:db8::77"}
    },
    "platform_links": )" +
           Links() + R"(,
    "zero_channel": {"width": 640, "height": 360, "fps": 25, "kbps": 50000, "constant": true},
    "recordings": {"history": {"segments": 0}}
})";
}

[[maybe_unused]] const testing::Environment* const RECORDER =
    testing::AddGlobalTestEnvironment(new device::Recorder(Scenario()));

// ---- reading -------------------------------------------------------------------------------------------------------

constexpr unsigned UNTOUCHED = 0xEEEEEEEE;

/** One read with what came of it. */
struct Reading {
    int result;
    unsigned returned = UNTOUCHED;
    Image image{0};
};

/** Reads into a buffer of bytes 0xEE that ends where its memory does, at an odd address. */
Reading Read(unsigned command, unsigned size, int start = 1, int count = 1) {
    std::vector<uint8_t> memory(size + 1, 0xEE);
    Reading reading;
    reading.result = vexo_soft::vexo_HostMgr_Dev_GetConfig(-1, command, start, count, nullptr, 0, memory.data() + 1,
                                                           size, &reading.returned);
    reading.image = Image({memory.begin() + 1, memory.end()});
    return reading;
}

/** A read that must succeed and return as many bytes as it was given room. */
Image Whole(unsigned command, unsigned size, int start = 1, int count = 1) {
    const Reading reading = Read(command, size, start, count);
    EXPECT_EQ(reading.result, 0);
    EXPECT_EQ(reading.returned, size);
    return reading.image;
}

class ConfigTest : public agent::LibraryTest {
protected:
    // None of the records leaves anything behind at the recorder.
    void TearDown() override { ExpectAllGivenBack(); }
};

// ---- device --------------------------------------------------------------------------------------------------------

/** What both forms hold. The identity comes from the scenario's seed. */
Image Device(unsigned size) {
    Image image(size);
    std::mt19937 identity(SEED);
    std::string serial;
    for (unsigned i = 0; i < 10; ++i) {
        char digits[3];
        snprintf(digits, sizeof digits, "%02x", static_cast<unsigned>(identity() & 0xFFU));
        serial += digits;
    }
    image.Word(0, size).Text(4, "NVR2.0").Word(36, 1).Text(44, serial);
    image.Word(92, 12U << 16U | 345U).Word(96, 2031U << 16U | 12U << 8U | 9U).Word(112, 2U << 16U | 7U);
    image.Bytes(116, {64, 6, 0, 0, 40, 0, 1, 1});
    return image.Bytes(124, {2, 1, 9, 3, 6, 0});
}

TEST_F(ConfigTest, Device_ShortForm) {
    EXPECT_TRUE(SameImage(Whole(100, 132), Device(132).Byte(130, 1).Byte(131, 2)));
}

TEST_F(ConfigTest, Device_LongForm) {
    EXPECT_TRUE(SameImage(Whole(100, 164), Device(164).Byte(133, 1)));
}

TEST_F(ConfigTest, Device_SizeInBetween_WritesNothing) {
    const Reading reading = Read(100, 140);
    EXPECT_EQ(reading.result, 0);
    EXPECT_EQ(reading.returned, UNTOUCHED);
    EXPECT_TRUE(SameImage(reading.image, Image(140, 0xEE)));
}

// ---- network -------------------------------------------------------------------------------------------------------

/** An interface's fixed fields, number, short text and name servers. */
void PutInterface(Image& image, size_t at, unsigned number, const std::string& text, unsigned dhcp) {
    image.Word(at + 288, 5).Byte(at + 292, number).Half(at + 294, 1500).Text(at + 296, text).Byte(at + 304, dhcp);
    image.Text(at + 452, "203.0.113.1").Text(at + 468, "2001:db8::53");
    image.Text(at + 596, "203.0.113.200").Text(at + 612, "2001:db8::54");
}

TEST_F(ConfigTest, Network_IsComplete) {
    Image expected(3848);
    expected.Word(0, 3848).Bytes(4, {3, 4, 1, 1});
    PutInterface(expected, 8, 0, "fixed", 0);
    expected.Text(8, "192.0.2.20").Text(8 + 16, "2001:db8:1111:2222:3333:4444:5555:6666");
    expected.Text(8 + 144, "255.255.255.0").Text(8 + 160, "48");
    expected.Text(8 + 308, "192.0.2.1").Text(8 + 324, "2001:db8::1");
    PutInterface(expected, 748, 1, "dhcp", 1);
    expected.Text(748, "198.51.100.123").Text(748 + 144, "255.255.255.128");
    PutInterface(expected, 1488, 12, "fixed", 0);
    PutInterface(expected, 2228, 300 - 256, "fixed", 0);
    expected.Text(2228, "192.0.2.20").Text(2228 + 144, "255.255.255.0").Text(2228 + 308, "192.0.2.1");
    expected.Half(3474, 5050).Half(3476, 65535).Half(3478, 1).Half(3482, 8899);
    expected.Word(3628, 1).Text(3632, Letters(31)).Text(3664, Letters(15)).Text(3696, "2001:db8::77");
    expected.Half(3824, 1936).Byte(3826, 1).Byte(3829, 1).Half(3830, 8554);
    EXPECT_TRUE(SameImage(Whole(1062, 3848), expected));
}

TEST_F(ConfigTest, Network_RecorderThatFails_HasDefaultsAndWhatItCouldRead) {
    simulator::control::Fail("vexo_cfgm_get_local_eth_cfg", 1, 4);
    simulator::control::Fail("vexo_cfgm_get_dns_cfg", 1, 4);
    simulator::control::Fail("vexo_cfgm_get_upnp_cfg_ex", 1);
    simulator::control::Fail("vexo_cfgm_get_pppoe_cfg", 1);
    for (const char* service : {"http", "https", "onvif", "rtmp", "rtsp"}) {
        simulator::control::Fail("vexo_cfgm_get_" + std::string(service) + "_port", 1);
    }
    Image expected(3848);
    expected.Word(0, 3848).Bytes(4, {3, 4, 0, 1});
    expected.Half(3476, 80).Half(3478, 4433).Half(3482, 8000).Half(3824, 1935).Half(3830, 554);
    EXPECT_TRUE(SameImage(Whole(1062, 3848), expected.Byte(3826, 1).Byte(3829, 1)));
}

// ---- disks ---------------------------------------------------------------------------------------------------------

/** Index, capacity, partitions, status, type and address of disk N as the list shows them. */
void PutDisk(Image& image, unsigned number, unsigned partitions, unsigned abnormal, unsigned type) {
    const size_t at = 8 + 144 * (number - 1);
    const unsigned capacity[] = {1000, 500, 300, 2000};
    image.Word(at, number - 1).Word(at + 4, number <= 4 ? capacity[number - 1] : 10 + number);
    image.Word(at + 8, partitions).Word(at + 12, abnormal).Byte(at + 17, type).Word(at + 20, 1);
    image.Byte(at + 24, type == 0 ? number : 0);
}

Image DiskList(unsigned size, unsigned entries) {
    Image image(size);
    image.Word(0, size).Word(4, DISKS);
    PutDisk(image, 1, 920, 0, 0);
    PutDisk(image, 2, 500, 1, 4);
    PutDisk(image, 3, 0, 1, 1);
    PutDisk(image, 4, 15, 0, 2);
    for (unsigned number = 5; number <= entries; ++number) {
        PutDisk(image, number, 10 + number, 0, 0);
    }
    return image;
}

TEST_F(ConfigTest, ThirtyDisks_FillBothLists) {
    EXPECT_TRUE(SameImage(Whole(1054, 1160), DiskList(1160, 8)));
    EXPECT_TRUE(SameImage(Whole(2026, 3464), DiskList(3464, 24)));
}

TEST_F(ConfigTest, DiskThatCannotBeRead_LeavesItsPlaceEmpty) {
    simulator::control::Fail("vexo_model_get_hard_disk_info", 2);
    Image expected = DiskList(1160, 8);
    for (size_t offset = 8 + 144; offset < 8 + 288; ++offset) {
        expected.Byte(offset, 0);
    }
    EXPECT_TRUE(SameImage(Whole(1054, 1160), expected));
}

TEST_F(ConfigTest, DiskError_ShowsWhileItLasts) {
    simulator::control::SetEvent("disk error", 5, true);
    EXPECT_TRUE(SameImage(Whole(1054, 1160), DiskList(1160, 8).Byte(8 + 144 * 4 + 12, 1)));
    simulator::control::SetEvent("disk error", 5, false);
    EXPECT_TRUE(SameImage(Whole(1054, 1160), DiskList(1160, 8)));
}

// ---- work state ----------------------------------------------------------------------------------------------------

constexpr unsigned STATE_SIZE = 57464;

constexpr size_t ChannelAt(unsigned channel) {
    return 292 + 892 * (channel - 1);
}

Image WorkState() {
    Image image(STATE_SIZE);
    const std::vector<unsigned> named = {1000, 920, 0, 500, 500, 1, 300, 0, 1, 2000, 15, 0};
    for (unsigned word = 0; word < 24 * 3; ++word) {
        const unsigned megabytes = 11 + word / 3;
        image.Word(4 + 4 * word, word < named.size() ? named[word] : word % 3 == 2 ? 0 : megabytes);
    }
    for (unsigned channel = 1; channel <= 64; ++channel) {
        image.Byte(ChannelAt(channel) + 1, 1).Word(ChannelAt(channel) + 8, channel == 4 ? 0 : 1);
        if (channel == 1 || channel >= 6) {
            image.Text(ChannelAt(channel) + 12, "192.0.2." + std::to_string(100 + channel));
        }
    }
    image.Text(ChannelAt(2) + 28, "yard.example.net").Text(ChannelAt(3) + 12, "203.0.113.250");
    return image.Text(ChannelAt(5) + 28, Letters(127));
}

TEST_F(ConfigTest, WorkState_ShowsDisksAndChannels) {
    EXPECT_TRUE(SameImage(Whole(254, STATE_SIZE), WorkState()));
}

TEST_F(ConfigTest, WorkState_LostCamera_IsNotConnected) {
    simulator::control::SetSignal(64, false);
    Image expected = WorkState();
    for (size_t offset = ChannelAt(64) + 8; offset < ChannelAt(65); ++offset) {
        expected.Byte(offset, 0);
    }
    EXPECT_TRUE(SameImage(Whole(254, STATE_SIZE), expected));
    simulator::control::SetSignal(64, true);
    EXPECT_TRUE(SameImage(Whole(254, STATE_SIZE), WorkState()));
}

/** Channels, and disks by their status word's second bit, that the work state shows as recording. */
std::pair<std::vector<unsigned>, unsigned> Recording() {
    const std::vector<uint8_t> state = Read(254, STATE_SIZE).image.All();
    std::pair<std::vector<unsigned>, unsigned> recording = {{}, 0};
    for (unsigned channel = 1; channel <= 64; ++channel) {
        if (state[ChannelAt(channel)] == 1) {
            recording.first.push_back(channel);
        }
    }
    for (unsigned disk = 0; disk < 24; ++disk) {
        recording.second += state[4 + 12 * disk + 8] >> 1U & 1U;
    }
    return recording;
}

// A channel is recorded while somebody reads it.
TEST_F(ConfigTest, WorkState_ChannelThatIsRecorded_ShowsWithItsDisk) {
    EXPECT_THAT(Recording(), testing::Pair(testing::IsEmpty(), 0U));
    {
        const Session session;
        agent::Buffer buffer(session.Login(), 3, HOSTMGR_STREAM_SUB);
        EXPECT_TRUE(live::Eventually([&] {
            buffer.Try();
            return Recording() == std::make_pair(std::vector<unsigned>{3}, 1U);
        }));
    }
    EXPECT_TRUE(live::Eventually([] { return Recording().first.empty() && Recording().second == 0; }));
}

// ---- encoding ------------------------------------------------------------------------------------------------------

void PutEncoding(Image& image, size_t at, unsigned audio, unsigned mode, unsigned level, unsigned kbps) {
    image.Bytes(at + 88, {audio, 3, mode, level}).Half(at + 100, kbps).Byte(at + 102, 2).Byte(at + 105, 1);
}

TEST_F(ConfigTest, Encoding_OfSeveralChannels) {
    Image expected(3 * 116);
    for (const size_t at : {0, 116, 232}) {
        expected.Word(at, 116);
    }
    PutEncoding(expected, 0, 1, 1, 0, 50000);
    PutEncoding(expected, 116, 0, 0, 3, 300);
    PutEncoding(expected, 232, 1, 0, 6, 256);
    EXPECT_TRUE(SameImage(Whole(106, 3 * 116, 1, 3), expected));
}

TEST_F(ConfigTest, Encoding_BeyondTheLastChannel_IsEmpty) {
    Image expected(2 * 116);
    expected.Word(0, 116).Word(116, 116);
    PutEncoding(expected, 0, 1, 0, 6, 256);
    EXPECT_TRUE(SameImage(Whole(106, 2 * 116, 70, 2), expected));
    EXPECT_TRUE(SameImage(Whole(106, 116, 0), Image(116).Word(0, 116)));
}

TEST_F(ConfigTest, ZeroChannel_KeepsWhatIsNotItsOwn) {
    EXPECT_TRUE(
        SameImage(Whole(160, 56), Image(56, 0xEE).Word(0, 1).Word(4, 50000).Word(8, 25).Word(16, 1).Word(20, 25)));
}

// ---- users ---------------------------------------------------------------------------------------------------------

constexpr size_t UserAt(unsigned user) {
    return 4 + 840 * user;
}

void PutUser(Image& image, unsigned user, const std::string& name, const std::string& password,
             const std::vector<unsigned>& local, const std::vector<unsigned>& remote) {
    image.Text(UserAt(user), name).Text(UserAt(user) + 32, password);
    image.Bytes(UserAt(user) + 48, local).Bytes(UserAt(user) + 80, remote).Byte(UserAt(user) + 774, 255);
}

/** Channels from first to last, in table number of a user; 8 is the one that stands apart. */
void PutChannels(Image& image, unsigned user, unsigned table, unsigned first, unsigned last) {
    const size_t at = UserAt(user) + (table == 8 ? 775 : 112 + 64 * table);
    for (unsigned channel = first; channel <= last; ++channel) {
        image.Byte(at + channel - 1, 1);
    }
}

/** A user without a word: live view and playback of every channel, local and remote. */
void PutPlainUser(Image& image, unsigned user, const std::string& name, const std::string& password) {
    PutUser(image, user, name, password, {1, 1, 0, 0, 0, 0, 0, 0, 0, 0}, {1, 1, 0, 0, 0, 0, 0, 1, 0, 1, 0, 0, 0, 0});
    for (unsigned table = 0; table < 4; ++table) {
        PutChannels(image, user, table, 1, 64);
    }
}

TEST_F(ConfigTest, Users_AreShownWithTheirRights) {
    Image expected(6724);
    PutUser(expected, 0, "admin", "admin12345", {1, 1, 1, 1, 1, 1, 1, 1, 1, 1},
            {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1});
    for (unsigned table = 0; table < 9; ++table) {
        PutChannels(expected, 0, table, 1, 64);
    }
    PutPlainUser(expected, 2, Letters(32), Letters(16));
    PutUser(expected, 3, "chief", "sixteen letters.", {1, 1, 0, 0, 1, 0, 0, 0, 1, 1},
            {1, 1, 0, 1, 0, 0, 1, 1, 0, 1, 1, 1, 0, 0});
    PutChannels(expected, 3, 4, 1, 1);
    PutChannels(expected, 3, 4, 33, 33);
    PutChannels(expected, 3, 4, 64, 64);
    PutChannels(expected, 3, 8, 2, 2);
    PutChannels(expected, 3, 1, 32, 32);
    PutChannels(expected, 3, 5, 64, 64);
    const char* const names[] = {"five", "six", "seven", "eight"};
    for (unsigned i = 0; i < 4; ++i) {
        PutPlainUser(expected, 4 + i, names[i], "");
    }
    EXPECT_TRUE(SameImage(Whole(124, 6724), expected));
}

// ---- platform links ------------------------------------------------------------------------------------------------

TEST_F(ConfigTest, PlatformLinks_ArePackedUpToEight) {
    Image expected(3200);
    expected.Word(0, 1).Word(4, 2).Text(144, "first").Text(144 + 32, Letters(31));
    expected.Text(144 + 3 * 32, "fourth").Text(144 + 7 * 32, "eighth");
    size_t at = 400;
    for (const unsigned number : {18, 20, 22, 24, 26, 28, 30}) {
        expected.Word(at, 1).Word(at + 4, number).Text(at + 144, "of " + std::to_string(number));
        at += 400;
    }
    EXPECT_TRUE(SameImage(Whole(3002, 3200), expected));
}

// ---- clock ---------------------------------------------------------------------------------------------------------

Image LongTime(time_t seconds) {
    tm local = {};
    localtime_r(&seconds, &local);
    const std::vector<int> words = {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
                                    local.tm_hour,        local.tm_min,     local.tm_sec};
    Image image(24);
    for (size_t word = 0; word < words.size(); ++word) {
        image.Word(4 * word, static_cast<unsigned>(words[word]));
    }
    return image;
}

/** The same moment in the short form. This system's call tells no offset. */
Image ShortTime(const Image& time) {
    const std::vector<uint8_t>& bytes = time.All();
    Image image(12);
    image.Bytes(0, {bytes[0], bytes[1], bytes[4], bytes[8], bytes[12], bytes[16], bytes[20], 1});
    return image;
}

TEST_F(ConfigTest, DeviceTime_IsTheRecordersClock) {
    for (const char* zone : {"UTC", "<+0545>-5:45"}) {
        setenv("TZ", zone, 1);
        tzset();
        const time_t before = time(nullptr);
        const Image given = Whole(118, 24);
        const Image given_short = Whole(118, 12);
        bool one_of_them = false;
        bool one_of_them_short = false;
        for (time_t moment = before; moment <= time(nullptr); ++moment) {
            one_of_them |= bool{SameImage(given, LongTime(moment))};
            one_of_them_short |= bool{SameImage(given_short, ShortTime(LongTime(moment)))};
        }
        EXPECT_TRUE(one_of_them) << SameImage(given, LongTime(before)).message();
        EXPECT_TRUE(one_of_them_short) << SameImage(given_short, ShortTime(LongTime(before))).message();
    }
}

// ---- version and picture directory ---------------------------------------------------------------------------------

TEST_F(ConfigTest, Version_IsTwo) {
    EXPECT_TRUE(SameImage(Whole(30000, 4), Image(4).Byte(0, 2)));
}

TEST_F(ConfigTest, PictureDirectory_IsOnTheFirstDiskThatHasRoom) {
    const std::string directory = Home() / "disk-1" / "host_pic";
    EXPECT_FALSE(std::filesystem::exists(directory));
    const Reading reading = Read(30001, 300);
    EXPECT_EQ(reading.result, 0);
    EXPECT_EQ(reading.returned, directory.size());
    EXPECT_TRUE(SameImage(reading.image, Image(300).Text(0, directory)));
    EXPECT_TRUE(std::filesystem::is_directory(directory));
}

TEST_F(ConfigTest, PictureDirectory_TooLongForTheCaller_IsCutForTheCallerOnly) {
    const std::string directory = Home() / "disk-1" / "host_pic";
    std::filesystem::remove_all(directory);
    const Reading reading = Read(30001, 19);
    EXPECT_EQ(reading.result, 0);
    EXPECT_EQ(reading.returned, 18U);
    EXPECT_TRUE(SameImage(reading.image, Image(19).Text(0, directory.substr(0, 18))));
    EXPECT_TRUE(std::filesystem::is_directory(directory));
}

// Two are broken and one is not formatted, the fourth has small partitions only, and the next two are too small by
// then.
TEST_F(ConfigTest, PictureDirectory_DiskThatDoesNotDo_IsPassedOver) {
    simulator::control::SetEvent("disk error", 1, true);
    const std::string directory = Home() / "disk-7" / "host_pic";
    EXPECT_TRUE(SameImage(Read(30001, 300).image, Image(300).Text(0, directory)));
    simulator::control::SetEvent("disk error", 1, false);
}

// ---- sizes ---------------------------------------------------------------------------------------------------------

TEST_F(ConfigTest, OneByteLess_IsRefusedUntouched) {
    const std::pair<unsigned, unsigned> sizes[] = {{100, 132},   {106, 116},   {118, 12},    {124, 6724},  {160, 56},
                                                   {254, 57464}, {1054, 1160}, {1062, 3848}, {2026, 3464}, {3002, 3200},
                                                   {3010, 304},  {30000, 4},   {30001, 19}};
    for (const auto& [command, size] : sizes) {
        const Reading reading = Read(command, size - 1);
        EXPECT_EQ(reading.result, -1) << command;
        EXPECT_EQ(reading.returned, UNTOUCHED) << command;
        EXPECT_TRUE(SameImage(reading.image, Image(size - 1, 0xEE))) << command;
    }
}

}  // namespace
