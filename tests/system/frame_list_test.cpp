// How readers walk the simulated recorder's live frame lists: order, loss, holding and giving back, refusals, the dump.
// What is in the frames stands in camera_test.cpp.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <string>

#include "control.h"
#include "live_reader.h"
#include "live_recorder.h"

namespace control = simulator::control;

namespace {

using live::CHANNELS;
using live::Decoder;
using live::Frame;
using live::NO_FILM;
using live::Reader;
using live::SCENE;

unsigned Kept() {
    return simulator::TheScenario().frames_kept;
}

TEST(FrameList, SlowReader_LosesTheOldest_AndGoesOnFromAKeyFrame) {
    Reader slow(SCENE, VEXO_ENC_STR_MAIN);
    const auto first = slow.Next();
    ASSERT_TRUE(first);
    Reader quick(SCENE, VEXO_ENC_STR_MAIN);
    std::optional<Frame> newest;
    do {
        newest = quick.Next();
        ASSERT_TRUE(newest);
    } while (newest->header.frame_no < first->header.frame_no + 2 * Kept());
    auto frame = slow.Next();
    ASSERT_TRUE(frame);
    EXPECT_TRUE(frame->Key());
    EXPECT_GT(frame->header.frame_no, first->header.frame_no + 1);
    EXPECT_GE(frame->header.frame_no + Kept(), newest->header.frame_no);
    Decoder decoder;
    for (unsigned number = frame->header.frame_no; number < newest->header.frame_no; ++number) {
        ASSERT_NE(decoder.Decode(*frame), nullptr);
        frame = slow.Next();
        ASSERT_TRUE(frame);
        EXPECT_EQ(frame->header.frame_no, number + 1);
    }
}

TEST(FrameList, FirstFrame_ListInUse_IsTheNewestKeyFrame) {
    Reader early(SCENE, VEXO_ENC_STR_MAIN);
    auto frame = early.Next();
    ASSERT_TRUE(frame);
    std::optional<Frame> key;
    for (int i = 0; i < 25; ++i) {
        key = frame->Key() ? frame : key;
        frame = early.Next();
        ASSERT_TRUE(frame);
    }
    const auto late = Reader(SCENE, VEXO_ENC_STR_MAIN).Next();
    ASSERT_TRUE(late && key);
    EXPECT_TRUE(late->Key());
    EXPECT_GE(late->header.frame_no, key->header.frame_no);
}

TEST(FrameList, HeldFrame_FallenOffTheList_StaysUntilItsLastRelease) {
    Reader reader(SCENE, VEXO_ENC_STR_MAIN);
    ASSERT_TRUE(reader.Next());
    unsigned char* bytes = nullptr;
    unsigned char* again = nullptr;
    vexo_read_av_list_note note = {};
    vexo_read_av_list_note same = {};
    VEXO_BOOL no_video = VEXO_FALSE;
    ASSERT_EQ(vexo_model_first_get_frame(SCENE, VEXO_USER_HOSTMGR, VEXO_ENC_STR_MAIN, &bytes, &note, &no_video), 0);
    const Frame held = live::CopyOf(bytes, note, no_video);
    const vexo_read_av_list_note before = {{note.note[0] - 1, note.note[1]}};
    ASSERT_EQ(vexo_model_get_frame(SCENE, VEXO_USER_HOSTMGR, VEXO_ENC_STR_MAIN, &before, &again, &same, &no_video), 0);
    EXPECT_EQ(again, bytes);
    const std::string booked = "frame: channel 1 main frame " + std::to_string(held.header.frame_no);
    const auto outstanding = control::Outstanding();
    EXPECT_TRUE(std::any_of(outstanding.begin(), outstanding.end(), [&](const std::string& line) {
        return line.find(booked) != std::string::npos;
    })) << booked;
    std::optional<Frame> newest;
    do {
        newest = reader.Next();
        ASSERT_TRUE(newest);
    } while (newest->header.frame_no < held.header.frame_no + 2 * Kept());
    EXPECT_EQ(live::CopyOf(bytes, note, no_video).payload, held.payload);
    EXPECT_EQ(vexo_model_rel_frame(SCENE, VEXO_USER_HOSTMGR, VEXO_ENC_STR_MAIN, &note), 0);
    EXPECT_EQ(live::CopyOf(bytes, note, no_video).payload, held.payload);
    EXPECT_EQ(vexo_model_rel_frame(SCENE, VEXO_USER_HOSTMGR, VEXO_ENC_STR_MAIN, &note), 0);
    const size_t complaints = control::Complaints().size();
    EXPECT_NE(vexo_model_rel_frame(SCENE, VEXO_USER_HOSTMGR, VEXO_ENC_STR_MAIN, &note), 0);
    EXPECT_EQ(control::Complaints().size(), complaints + 1);
}

TEST(FrameList, Release_ByAnotherUser_IsRefused) {
    ASSERT_TRUE(Reader(SCENE, VEXO_ENC_STR_MAIN).Next());
    unsigned char* bytes = nullptr;
    vexo_read_av_list_note note = {};
    VEXO_BOOL no_video = VEXO_FALSE;
    ASSERT_EQ(vexo_model_first_get_frame(SCENE, VEXO_USER_HOSTMGR, VEXO_ENC_STR_MAIN, &bytes, &note, &no_video), 0);
    EXPECT_NE(vexo_model_rel_frame(SCENE, VEXO_USER_EVENT, VEXO_ENC_STR_MAIN, &note), 0);
    EXPECT_EQ(vexo_model_rel_frame(SCENE, VEXO_USER_HOSTMGR, VEXO_ENC_STR_MAIN, &note), 0);
}

constexpr auto NO_TYPE = static_cast<vexo_enc_str_type>(3);

struct WrongList {
    unsigned channel;
    vexo_enc_str_type type;
};
const WrongList WRONG_LISTS[] = {{0xFFFFFFFF, VEXO_ENC_STR_MAIN},
                                 {CHANNELS, VEXO_ENC_STR_MAIN},
                                 {SCENE, NO_TYPE},
                                 {SCENE, static_cast<vexo_enc_str_type>(0)}};

TEST(FrameList, UnknownChannelOrType_IsRefusedAndWritesNothing) {
    for (const WrongList& wrong : WRONG_LISTS) {
        unsigned char* bytes = nullptr;
        vexo_read_av_list_note note = {};
        VEXO_BOOL no_video = 5;
        EXPECT_NE(vexo_model_first_get_frame(wrong.channel, VEXO_USER_HOSTMGR, wrong.type, &bytes, &note, &no_video),
                  0);
        EXPECT_NE(vexo_model_get_frame(wrong.channel, VEXO_USER_HOSTMGR, wrong.type, &note, &bytes, &note, &no_video),
                  0);
        EXPECT_NE(vexo_model_rel_frame(wrong.channel, VEXO_USER_HOSTMGR, wrong.type, &note), 0);
        EXPECT_EQ(bytes, nullptr);
        EXPECT_EQ(no_video, 5);
    }
}

TEST(FrameList, NullArguments_AreRefused) {
    ASSERT_TRUE(Reader(SCENE, VEXO_ENC_STR_AUDIO).Next());
    constexpr auto TYPE = VEXO_ENC_STR_AUDIO;
    constexpr auto USER = VEXO_USER_HOSTMGR;
    unsigned char* bytes = nullptr;
    vexo_read_av_list_note note = {};
    VEXO_BOOL no_video = VEXO_FALSE;
    EXPECT_NE(vexo_model_first_get_frame(SCENE, USER, TYPE, nullptr, &note, &no_video), 0);
    EXPECT_NE(vexo_model_first_get_frame(SCENE, USER, TYPE, &bytes, nullptr, &no_video), 0);
    EXPECT_NE(vexo_model_first_get_frame(SCENE, USER, TYPE, &bytes, &note, nullptr), 0);
    EXPECT_NE(vexo_model_get_frame(SCENE, USER, TYPE, nullptr, &bytes, &note, &no_video), 0);
    EXPECT_NE(vexo_model_get_frame(SCENE, USER, TYPE, &note, nullptr, &note, &no_video), 0);
    EXPECT_NE(vexo_model_get_frame(SCENE, USER, TYPE, &note, &bytes, nullptr, &no_video), 0);
    EXPECT_NE(vexo_model_get_frame(SCENE, USER, TYPE, &note, &bytes, &note, nullptr), 0);
    EXPECT_NE(vexo_model_rel_frame(SCENE, USER, TYPE, nullptr), 0);
}

TEST(FrameList, Get_PositionAheadOfTheNewest_IsNotThereYet) {
    const auto frame = Reader(SCENE, VEXO_ENC_STR_AUDIO).Next();
    ASSERT_TRUE(frame);
    const vexo_read_av_list_note ahead = {{frame->header.frame_no + 100000, frame->note.note[1]}};
    unsigned char* bytes = nullptr;
    vexo_read_av_list_note note = {};
    VEXO_BOOL no_video = VEXO_FALSE;
    EXPECT_NE(vexo_model_get_frame(SCENE, VEXO_USER_HOSTMGR, VEXO_ENC_STR_AUDIO, &ahead, &bytes, &note, &no_video), 0);
}

TEST(FrameList, Get_NoPositionYet_IsTheOldestKeyFrame) {
    Reader reader(SCENE, VEXO_ENC_STR_MAIN);
    for (unsigned i = 0; i < 2 * live::Settings(SCENE).main.gop; ++i) {
        ASSERT_TRUE(reader.Next());
    }
    const vexo_read_av_list_note nowhere = {};
    unsigned char* bytes = nullptr;
    vexo_read_av_list_note note = {};
    VEXO_BOOL no_video = VEXO_FALSE;
    ASSERT_EQ(vexo_model_get_frame(SCENE, VEXO_USER_HOSTMGR, VEXO_ENC_STR_MAIN, &nowhere, &bytes, &note, &no_video), 0);
    const Frame oldest = live::CopyOf(bytes, note, no_video);
    EXPECT_EQ(vexo_model_rel_frame(SCENE, VEXO_USER_HOSTMGR, VEXO_ENC_STR_MAIN, &note), 0);
    EXPECT_TRUE(oldest.Key());
    const auto newest = Reader(SCENE, VEXO_ENC_STR_MAIN).Next();
    ASSERT_TRUE(newest);
    EXPECT_LT(oldest.header.frame_no, newest->header.frame_no);
}

TEST(FrameList, FaultOnOrder_FirstGetFailsOnce) {
    ASSERT_TRUE(Reader(SCENE, VEXO_ENC_STR_AUDIO).Next());
    control::Fail("vexo_model_first_get_frame", 1);
    EXPECT_FALSE(Reader(SCENE, VEXO_ENC_STR_AUDIO).Try());
    EXPECT_TRUE(Reader(SCENE, VEXO_ENC_STR_AUDIO).Try());
}

std::string s_printed;

__attribute__((format(printf, 1, 2))) int Print(const char* format, ...) {
    char line[256];
    va_list arguments;
    va_start(arguments, format);
    const int length = vsnprintf(line, sizeof(line), format, arguments);
    va_end(arguments);
    s_printed += line;
    return length;
}

std::string Dump(unsigned channel, vexo_enc_str_type type) {
    s_printed.clear();
    vexo_rmta_dump_frame_list(channel, type, &Print);
    return s_printed;
}

TEST(FrameList, Dump_StreamThatNobodyReads_IsAHeadingAlone) {
    EXPECT_EQ(Dump(NO_FILM, VEXO_ENC_STR_SUB), "channel 4 sub: 0 frames kept, at most 30, generation 1, 0 held\n");
}

TEST(FrameList, Dump_StreamInUse_ListsTheNewestTenAndWhoIsHeld) {
    Reader reader(SCENE, VEXO_ENC_STR_MAIN);
    for (unsigned i = 0; i < 12; ++i) {
        ASSERT_TRUE(reader.Next());
    }
    unsigned char* bytes = nullptr;
    vexo_read_av_list_note note = {};
    VEXO_BOOL no_video = VEXO_FALSE;
    ASSERT_EQ(vexo_model_first_get_frame(SCENE, VEXO_USER_HOSTMGR, VEXO_ENC_STR_MAIN, &bytes, &note, &no_video), 0);
    const std::string dump = Dump(SCENE, VEXO_ENC_STR_MAIN);
    const vexo_frame_header header = live::CopyOf(bytes, note, no_video).header;
    char line[160];
    snprintf(line, sizeof(line), "  frame %u type 1 time %u.%06u length %u held 1\n", header.frame_no, header.seconds,
             header.microseconds, header.data_length);
    EXPECT_NE(dump.find(line), std::string::npos) << line << "in\n" << dump;
    EXPECT_EQ(std::count(dump.begin(), dump.end(), '\n'), 11);
    EXPECT_EQ(vexo_model_rel_frame(SCENE, VEXO_USER_HOSTMGR, VEXO_ENC_STR_MAIN, &note), 0);
}

TEST(FrameList, Dump_NoSuchList_SaysSo) {
    EXPECT_EQ(Dump(0xFFFFFFFF, VEXO_ENC_STR_MAIN), "channel index 4294967295 has no frame list of type 1\n");
}

}  // namespace
