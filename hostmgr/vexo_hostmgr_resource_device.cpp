// What the recorder is: its type, identity, versions and numbers of things, in two lengths.
#include "vexo_hostmgr_resource_config.h"

static void FillSerialNumber(const vexo_dev_capability& cap, _tagVexoHostMgrDeviceCfg* record) {
    char* digits = record->sSerialNumber;
    for (const unsigned char byte : cap.identity)
        digits += snprintf(digits, 3, "%02x", byte);
}

/** Parts of the date that cannot be read are 0; none is masked. */
static uint32_t BuildDate(const vexo_dev_capability& cap) {
    char text[sizeof(cap.build_date) + 1];
    memcpy(text, cap.build_date, sizeof(cap.build_date));
    text[sizeof(cap.build_date)] = '\0';
    int year = 0;
    int month = 0;
    int day = 0;
    sscanf(text, "%d-%d-%d", &year, &month, &day);
    return static_cast<uint32_t>(year) << 16 | static_cast<uint32_t>(month) << 8 | static_cast<uint32_t>(day);
}

/** Unsigned on purpose: fewer channels in all than analog ones count as many network channels. */
static uint8_t NetworkChannels(const vexo_dev_capability& cap) {
    constexpr uint8_t MOST = 64;
    const uint8_t channels = static_cast<uint8_t>(cap.total_channels - cap.analog_channels);
    return channels < MOST ? channels : MOST;
}

static uint8_t DeviceKind(const vexo_dev_capability& cap) {
    constexpr unsigned int HYBRID_RECORDER = 3;
    return cap.device_kind == HYBRID_RECORDER ? 1 : 2;
}

static uint8_t LowByte(unsigned int word) {
    return static_cast<uint8_t>(word);
}

/** What both forms hold, the sizes and counts that differ apart. */
static void FillCommon(const vexo_dev_capability& cap, const vexo_sata_info& sata, _tagVexoHostMgrDeviceCfg* record) {
    HostMgrCopyText(record->sDeviceType, "NVR2.0");
    record->dwDeviceClass = cap.device_class;
    FillSerialNumber(cap, record);
    record->dwSoftwareVersion = cap.software_major << 16 | cap.software_minor;
    record->dwBuildDate = BuildDate(cap);
    record->dwHardwareVersion = cap.hardware_major << 16 | cap.hardware_minor;
    record->byIpChanNum = NetworkChannels(cap);
    record->byCapByteA = LowByte(cap.alarm_outputs);
    record->byCapByteB = LowByte(cap.disk_slots);
    record->bySataFlag = sata.flag;
    record->byDeviceKind = DeviceKind(cap);
    record->byChanNum = LowByte(cap.analog_channels);
    record->byFixedOne = 1;
    record->byCapBytes[0] = LowByte(cap.alarm_inputs);
    record->byCapBytes[1] = cap.usb_ports;
    record->byCapBytes[2] = cap.network_ports;
}

/** Reading fails as if the mode were 0. */
static uint8_t RecordsBothStreams() {
    unsigned int mode = 0;
    vexo_model_get_rec_stream_mode(&mode);
    return mode == 0 ? 1 : 0;
}

// A size between and beyond the two forms is a success that writes nothing; agents probe with it.
int vexo_hostmgr_get_device_cfg(const HostMgrConfigCall& call) {
    if (call.dwSize < HOSTMGR_DEVICE_CFG_SHORT_SIZE)
        return -1;
    const vexo_dev_capability* cap = vexo_model_get_dev_capability();
    if (cap == NULL) {
        HOSTMGR_PUTS(ERROR, "vexo_model_get_dev_capability failed!!");
        return -1;
    }
    vexo_sata_info sata;
    memset(&sata, 0, sizeof(sata));
    vexo_model_get_sata_info(&sata);
    const bool shortForm = call.dwSize == HOSTMGR_DEVICE_CFG_SHORT_SIZE;
    if (!shortForm && call.dwSize != sizeof(_tagVexoHostMgrDeviceCfg))
        return 0;
    _tagVexoHostMgrDeviceCfg record;
    memset(&record, 0, sizeof(record));
    record.dwSize = call.dwSize;
    FillCommon(*cap, sata, &record);
    if (shortForm) {
        record.byShortForm = 1;
        record.byChanNumCopy = record.byChanNum;
    } else {
        record.byRecStreamMode = RecordsBothStreams();
    }
    memcpy(call.pBuffer, &record, call.dwSize);
    call.SetReturned(call.dwSize);
    return 0;
}
