// How the recorder encodes: channels and zero channel.
#include "config_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;

using namespace vexo_soft;

class ConfigEncode : public ConfigFixture {
protected:
    /** What the recorder says of every channel. */
    void SetUp() override {
        ConfigFixture::SetUp();
        m_para.mode = 1;
        m_para.quality = 0x0305;
        m_para.bps = 0x12345678;
        ON_CALL(platform, vexo_model_get_audio_enable)
            .WillByDefault([this](unsigned int channel, unsigned int, VEXO_BOOL* enable, unsigned int) {
                EXPECT_EQ(*enable, VEXO_FALSE);
                *enable = m_audio;
                return m_audio_fails.count(channel) != 0 ? -1 : 0;
            });
        ON_CALL(platform, vexo_model_get_enc_para)
            .WillByDefault([this](unsigned int channel, unsigned int, vexo_enc_para* para, VEXO_BOOL) {
                EXPECT_TRUE(IsZero(*para));
                *para = m_para;
                return m_para_fails.count(channel) != 0 ? -1 : 0;
            });
    }

    static void PutEntry(Image& image, size_t entry) {
        image.Word(entry, 116).Bytes(entry + 88, {1, 3, 0, 5}).Half(entry + 100, 0x5678);
        image.Byte(entry + 102, 2).Byte(entry + 105, 1);
    }
    /** Audio, fixed, mode and level bytes of a single entry. */
    std::vector<unsigned int> AudioFixedModeLevel() {
        const std::vector<uint8_t> bytes = Expected(106, 116).All();
        return {bytes[88], bytes[89], bytes[90], bytes[91]};
    }

    VEXO_BOOL m_audio = VEXO_TRUE;
    vexo_enc_para m_para = {};
    std::set<unsigned int> m_audio_fails;
    std::set<unsigned int> m_para_fails;
};

class ConfigZeroCodec : public ConfigFixture {
protected:
    void SetUp() override {
        ConfigFixture::SetUp();
        ON_CALL(platform, vexo_model_zero_channel_get_resolution_ability)
            .WillByDefault([this](vexo_resolution_ability* ability) {
                EXPECT_TRUE(IsZero(*ability));
                ability->node_num = m_nodes;
                return m_fails == "ability" ? -1 : 0;
            });
        ON_CALL(platform, vexo_model_zero_channel_get_resolution).WillByDefault([this](vexo_resolution* resolution) {
            EXPECT_TRUE(IsZero(*resolution));
            *resolution = m_resolution;
            return m_fails == "resolution" ? -1 : 0;
        });
        ON_CALL(platform, vexo_model_zero_channel_get_bps).WillByDefault([this](unsigned int* bps, unsigned int* mode) {
            EXPECT_EQ(*bps, 512U);
            EXPECT_EQ(*mode, 0U);
            if (m_says_nothing)
                return 0;
            *bps = 2048;
            *mode = m_mode;
            return m_fails == "bps" ? -1 : 0;
        });
        ON_CALL(platform, vexo_model_zero_channel_get_fps).WillByDefault([this](unsigned int* fps) {
            EXPECT_EQ(*fps, 15U);
            if (!m_says_nothing)
                *fps = 12;
            return m_fails == "fps" ? -1 : 0;
        });
    }

    /** A read that must fail with that text; what it had written is in the image. */
    Image Failed(const char* operation, const std::string& text) {
        m_fails = operation;
        const ConfigRead read = Read(160, 56);
        EXPECT_EQ(read.result, -1);
        EXPECT_EQ(read.returned, 56U);
        EXPECT_EQ(read.console, Error("HostMgr_Dev_GetConfig", text + "\n"));
        return read.image;
    }
    unsigned int ResolutionOf(unsigned int width, unsigned int height) {
        m_resolution = {width, height};
        return Expected(160, 56).All()[0];
    }

    unsigned int m_nodes = 1;
    vexo_resolution m_resolution = {704, 576};
    unsigned int m_mode = 0;
    bool m_says_nothing = false;
    std::string m_fails;
};

// ---- channels ------------------------------------------------------------------------------------------------------

TEST_F(ConfigEncode, OneChannel_IsOneEntry) {
    Image expected(116);
    PutEntry(expected, 0);
    EXPECT_TRUE(SameImage(Expected(106, 116), expected));
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAre("vexo_model_get_audio_enable(0, 2, 0)", "vexo_model_get_enc_para(0, 2, 1)"));
}

TEST_F(ConfigEncode, SeveralChannels_BeginAtTheFirst) {
    const ConfigRead read = Read({106, 116 * 3, 126, 3});
    EXPECT_EQ(read.result, 0);
    EXPECT_EQ(read.returned, 348U);
    Image expected(348);
    for (const size_t entry : {0, 116, 232})
        PutEntry(expected, entry);
    EXPECT_TRUE(SameImage(read.image, expected));
    EXPECT_THAT(WithAny({"audio"}, platform.TakeCalls()),
                ElementsAre("vexo_model_get_audio_enable(125, 2, 0)", "vexo_model_get_audio_enable(126, 2, 0)",
                            "vexo_model_get_audio_enable(127, 2, 0)"));
}

TEST_F(ConfigEncode, FirstChannelBelowOne_GoesToTheRecorderAsItIs) {
    EXPECT_EQ(Read({106, 232, 0, 2}).result, 0);
    EXPECT_THAT(WithAny({"audio"}, platform.TakeCalls()),
                ElementsAre("vexo_model_get_audio_enable(4294967295, 2, 0)", "vexo_model_get_audio_enable(0, 2, 0)"));
    EXPECT_EQ(Read({106, 116, INT_MIN, 1}).result, 0);
    EXPECT_THAT(WithAny({"audio"}, platform.TakeCalls()), ElementsAre("vexo_model_get_audio_enable(2147483647, 2, 0)"));
}

TEST_F(ConfigEncode, SizeThatIsNotTheChannels_IsRefusedSilently) {
    const std::vector<std::pair<unsigned int, int>> asked = {{115, 1},
                                                             {117, 1},
                                                             {116, 2},
                                                             {232, 1},
                                                             {116, 0},
                                                             {116, -1},
                                                             {116, INT_MIN},
                                                             {1, 0},
                                                             // 116 times the number is 4 GiB and a hundred
                                                             {100, 37025581},
                                                             // and minus that
                                                             {4, -37025581}};
    for (const auto& [size, channels] : asked) {
        const ConfigRead read = Read({106, size, 1, channels});
        EXPECT_TRUE(RefusedUntouched(read)) << size << " " << channels;
        EXPECT_EQ(read.console, "");
    }
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(ConfigEncode, AudioCannotBeRead_LeavesTheRestAtZero) {
    m_audio_fails = {1};
    Image expected(348);
    PutEntry(expected, 0);
    expected.Word(116, 116);
    PutEntry(expected, 232);
    EXPECT_TRUE(SameImage(Read({106, 348, 1, 3}).image, expected));
    EXPECT_THAT(WithAny({"(1,"}, platform.TakeCalls()), ElementsAre("vexo_model_get_audio_enable(1, 2, 0)"));
}

TEST_F(ConfigEncode, EncoderCannotBeRead_KeepsTheAudioAndGoesOn) {
    m_para_fails = {1};
    Image expected(348);
    PutEntry(expected, 0);
    expected.Word(116, 116).Byte(116 + 88, 1);
    PutEntry(expected, 232);
    const ConfigRead read = Read({106, 348, 1, 3});
    EXPECT_EQ(read.result, 0);
    EXPECT_TRUE(SameImage(read.image, expected));
}

TEST_F(ConfigEncode, AudioFlag_IsPassedOnAsItIs) {
    m_audio = 7;
    EXPECT_THAT(AudioFixedModeLevel(), ElementsAre(1, 3, 0, 5));
    EXPECT_THAT(WithAny({"enc_para"}, platform.TakeCalls()), ElementsAre("vexo_model_get_enc_para(0, 2, 7)"));
    m_audio = 0;
    EXPECT_THAT(AudioFixedModeLevel(), ElementsAre(0, 3, 0, 5));
    EXPECT_THAT(WithAny({"enc_para"}, platform.TakeCalls()), ElementsAre("vexo_model_get_enc_para(0, 2, 0)"));
}

TEST_F(ConfigEncode, Mode_IsTurnedRoundAndOnlyOneHasALevel) {
    m_para.mode = 0;
    EXPECT_THAT(AudioFixedModeLevel(), ElementsAre(1, 3, 1, 0));
    m_para.mode = 2;
    EXPECT_THAT(AudioFixedModeLevel(), ElementsAre(1, 3, 0, 0));
    m_para.mode = UINT_MAX;
    EXPECT_THAT(AudioFixedModeLevel(), ElementsAre(1, 3, 0, 0));
}

// ---- zero channel --------------------------------------------------------------------------------------------------

TEST_F(ConfigZeroCodec, ConstantRate_LeavesTheAuxiliaryModeAndTheRestAlone) {
    EXPECT_TRUE(
        SameImage(Expected(160, 56), Image(56, 0xEE).Word(0, 1).Word(4, 2048).Word(8, 12).Word(16, 1).Word(20, 25)));
    EXPECT_THAT(
        platform.TakeCalls(),
        ElementsAre("vexo_model_zero_channel_get_resolution_ability()", "vexo_model_zero_channel_get_resolution()",
                    "vexo_model_zero_channel_get_bps()", "vexo_model_zero_channel_get_fps()"));
}

TEST_F(ConfigZeroCodec, VariableRate_ClearsBothModes) {
    for (const unsigned int mode : {1U, 2U, UINT_MAX}) {
        m_mode = mode;
        EXPECT_TRUE(
            SameImage(Expected(160, 56),
                      Image(56, 0xEE).Word(0, 1).Word(4, 2048).Word(8, 12).Word(12, 0).Word(16, 0).Word(20, 25)));
    }
}

TEST_F(ConfigZeroCodec, Resolution_IsSmallUpTo352By288) {
    EXPECT_EQ(ResolutionOf(352, 288), 0U);
    EXPECT_EQ(ResolutionOf(353, 288), 1U);
    EXPECT_EQ(ResolutionOf(352, 289), 1U);
    EXPECT_EQ(ResolutionOf(0, 0), 0U);
    EXPECT_EQ(ResolutionOf(UINT_MAX, 1), 1U);
}

TEST_F(ConfigZeroCodec, RecorderSaysNothing_GivesThePresets) {
    m_says_nothing = true;
    EXPECT_TRUE(
        SameImage(Expected(160, 56), Image(56, 0xEE).Word(0, 1).Word(4, 512).Word(8, 15).Word(16, 1).Word(20, 25)));
}

TEST_F(ConfigZeroCodec, OtherSizes_AreRefusedSilently) {
    for (const unsigned int size : {1U, 55U, 57U, 112U}) {
        const ConfigRead read = Read(160, size);
        EXPECT_TRUE(RefusedUntouched(read)) << size;
        EXPECT_EQ(read.console, "");
    }
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(ConfigZeroCodec, AbilityFails_NamesAnotherOperation) {
    EXPECT_TRUE(SameImage(Failed("ability", "vexo_model_zero_channel_get_enable failed!!"), Image(56, 0xEE)));
}

TEST_F(ConfigZeroCodec, NoAbility_IsAFailure) {
    m_nodes = 0;
    EXPECT_TRUE(SameImage(Failed("", "node_num == 0!!"), Image(56, 0xEE)));
    EXPECT_THAT(platform.TakeCalls(), ElementsAre("vexo_model_zero_channel_get_resolution_ability()"));
}

TEST_F(ConfigZeroCodec, ResolutionFails_WritesNothing) {
    EXPECT_TRUE(SameImage(Failed("resolution", "vexo_model_zero_channel_get_resolution failed!!"), Image(56, 0xEE)));
}

TEST_F(ConfigZeroCodec, BitrateFails_KeepsTheResolution) {
    EXPECT_TRUE(SameImage(Failed("bps", "vexo_model_zero_channel_get_bps failed!!"), Image(56, 0xEE).Word(0, 1)));
}

TEST_F(ConfigZeroCodec, FrameRateFails_KeepsWhatWasRead) {
    EXPECT_TRUE(SameImage(Failed("fps", "vexo_model_zero_channel_get_fps failed!!"),
                          Image(56, 0xEE).Word(0, 1).Word(4, 2048).Word(16, 1)));
}
