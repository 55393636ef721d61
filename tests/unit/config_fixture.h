// What the tests of the configuration share: one read with its outputs, texts that fill their field, disks of the
// recorder. Images of records stand in image.h, documents in document_fake.h, expectations in the tests.
#ifndef CONFIG_FIXTURE_H
#define CONFIG_FIXTURE_H

#include <limits.h>
#include <string.h>

#include <set>

#include "../image.h"
#include "login_fixture.h"

// ---- texts ---------------------------------------------------------------------------------------------------------

/** Puts a text into a field of the recorder's; one that fills the field has no terminator. */
template <size_t Size>
void PutText(char (&field)[Size], const std::string& text) {
    memset(field, 0, Size);
    memcpy(field, text.data(), std::min(Size, text.size()));
}

/** So many letters, no two neighbours alike. */
inline std::string Letters(size_t count) {
    std::string text;
    for (size_t index = 0; index < count; ++index)
        text += static_cast<char>('a' + index % 26);
    return text;
}

// ---- reading -------------------------------------------------------------------------------------------------------

inline constexpr unsigned int UNTOUCHED = 0xEEEEEEEE;

/** A read of one command with all that came of it. */
struct ConfigRead {
    int result = 0;
    Image image{0};
    unsigned int returned = UNTOUCHED;
    std::string console;
    std::string address;  // of the buffer, as messages print it
};

/** What a command is asked for. */
struct ConfigAsk {
    unsigned int command = 0;
    unsigned int size = 0;  // bytes of the buffer
    int startChan = 1;
    int chanNum = 1;
    int hLogin = 0;
};

inline std::string AddressText(const void* address) {
    char text[32];
    snprintf(text, sizeof(text), "%p", address);
    return text;
}

class ConfigFixture : public LoginFixture {
protected:
    /** Reads into a buffer of bytes 0xEE at an odd address that ends where its memory does. */
    static ConfigRead Read(const ConfigAsk& ask) {
        std::vector<uint8_t> memory(ask.size + 1, 0xEE);
        uint8_t* buffer = memory.data() + 1;
        ConfigRead read;
        read.address = AddressText(buffer);
        read.console = Console([&] {
            read.result = vexo_soft::vexo_HostMgr_Dev_GetConfig(ask.hLogin, ask.command, ask.startChan, ask.chanNum,
                                                                nullptr, 0, buffer, ask.size, &read.returned);
        });
        EXPECT_EQ(memory[0], 0xEE);
        read.image = Image({memory.begin() + 1, memory.end()});
        return read;
    }
    static ConfigRead Read(unsigned int command, unsigned int size) { return Read({command, size}); }

    /** A read that must succeed, print nothing and give that many bytes. */
    static Image Expected(unsigned int command, unsigned int size) {
        const ConfigRead read = Read(command, size);
        EXPECT_EQ(read.result, 0);
        EXPECT_EQ(read.returned, size);
        EXPECT_EQ(read.console, "");
        return read.image;
    }

    /** A refusal that left the buffer and the number of bytes as they were. */
    static testing::AssertionResult RefusedUntouched(const ConfigRead& read) {
        if (read.result != -1 || read.returned != UNTOUCHED)
            return testing::AssertionFailure() << "result " << read.result << ", returned " << read.returned;
        return SameImage(read.image, Image(read.image.All().size(), 0xEE));
    }

    // ---- disks ----

    static vexo_hard_disk_info Disk(const std::string& name, unsigned int type, unsigned int state, unsigned int sizeMb,
                                    const std::vector<std::pair<std::string, unsigned int>>& partitions) {
        vexo_hard_disk_info disk = {};
        PutText(disk.identity.name, name);
        disk.identity.type = type;
        disk.state = state;
        disk.size_mb = sizeMb;
        disk.partition_num = static_cast<unsigned int>(partitions.size());
        for (size_t index = 0; index < partitions.size(); ++index) {
            PutText(disk.partition[index].mount_path, partitions[index].first);
            disk.partition[index].size = partitions[index].second;
        }
        return disk;
    }

    /** The recorder's disks. One that cannot be read leaves rubbish in the record. */
    void SetDisks(const std::vector<vexo_hard_disk_info>& disks) {
        m_disks = disks;
        ON_CALL(platform, vexo_model_get_hard_disk_num).WillByDefault([this](unsigned int* num) {
            *num = static_cast<unsigned int>(m_disks.size());
            return 0;
        });
        ON_CALL(platform, vexo_model_get_hard_disk_info)
            .WillByDefault([this](unsigned int index, vexo_hard_disk_info* disk) {
                EXPECT_TRUE(IsZero(*disk));
                *disk = m_disks.at(index);
                if (m_unreadable.count(index) == 0)
                    return 0;
                memset(disk, 0x77, sizeof(*disk));
                return -1;
            });
        ON_CALL(platform, vexo_model_is_disk_recording).WillByDefault([this](const vexo_disk_identity* disk) {
            return m_recording.count(disk->name) != 0 ? 2 : 0;  // true, but not VEXO_TRUE
        });
    }
    std::set<unsigned int> m_unreadable;
    std::set<std::string> m_recording;

    /** The recorder's count fails, and leaves a number behind. */
    void FailDiskCount() {
        ON_CALL(platform, vexo_model_get_hard_disk_num).WillByDefault([](unsigned int* num) {
            *num = 3;
            return -1;
        });
    }

    template <typename Record>
    static bool IsZero(const Record& record) {
        const auto* bytes = reinterpret_cast<const unsigned char*>(&record);
        return std::all_of(bytes, bytes + sizeof(record), [](unsigned char byte) { return byte == 0; });
    }

private:
    std::vector<vexo_hard_disk_info> m_disks;
};

#endif
