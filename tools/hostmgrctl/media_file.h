// A file that ordinary players open, written from a channel's frames: H.264 as it is, G.711 as it is where the
// container can hold it. Where the frames come from does not belong here.
//
//   waiting --key frame and audio are known, or no audio comes--> open --Finish--> done
//      \------------------------- Finish without a key frame --------------------> done, no file
#ifndef HOSTMGRCTL_MEDIA_FILE_H
#define HOSTMGRCTL_MEDIA_FILE_H

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "aac_track.h"
#include "av_handle.h"
#include "frame.h"
#include "output_file.h"

namespace hostmgrctl {

/** What a container does with the channel's sound. */
enum class SoundWay { Copy, ToAac, Leave };

struct Container {
    const char* extension;
    const char* muxer;  ///< of libavformat
    SoundWay sound;
};

/** The extensions that can be written, such as ".mkv .mov". */
std::string KnownExtensions();

/** For one thread at a time. Everything throws Failure, with ExitCode::NoOutput, when the file cannot be written. */
class MediaFile {
public:
    /**
     * The extension chooses the container; an unknown one throws Failure with ExitCode::Usage. Looks whether the file
     * can be written, but leaves one that is there as it is until there is something to write, or, written aside, until
     * it is complete.
     */
    MediaFile(std::string path, bool audio, FilePlace place = FilePlace::Direct);
    ~MediaFile();
    MediaFile(const MediaFile&) = delete;
    MediaFile& operator=(const MediaFile&) = delete;

    /** Takes a frame; what comes before the first key frame is left out. Times in the file are those of the frames. */
    void Write(const Frame& frame) { Write(frame, frame.Time()); }

    /** The same with another time than the frame's own, microseconds from any moment on. */
    void Write(const Frame& frame, int64_t time);

    /** Completes the file. */
    void Finish();

    const std::string& Path() const { return m_path; }
    const char* Format() const { return m_container.muxer; }
    /** Bytes of the completed file; 0: no key frame came, so there is none. */
    uint64_t Size() const { return m_size; }
    uint64_t VideoPackets() const { return m_video_packets; }
    uint64_t AudioPackets() const { return m_audio_packets; }
    /** What a person should know about the sound in the file, or empty. */
    const std::string& Note() const { return m_note; }
    /** The members "path" to "note" of a file that there is; see README.md. */
    nlohmann::ordered_json Json() const;

private:
    Av<AVPacket> PacketOf(const Frame& frame, int64_t time) const;
    void WriteVideo(const Frame& frame, int64_t time);
    void WriteAudio(const Frame& frame, int64_t time);
    void OpenWhenReady();
    void Open();
    void AddStreams();
    void AddAudioStream();
    void Put(AVPacket* packet);
    void Mux(AVPacket* packet, AVStream* stream);
    void Check(int result) const;

    const std::string m_path;
    const FilePlace m_place;
    const std::string m_written;  ///< the path while it grows
    const Container& m_container;
    bool m_audio_wanted;
    AVCodecID m_audio_codec = AV_CODEC_ID_NONE;
    Av<AVCodecParameters> m_video_parameters;
    int64_t m_base = -1;  ///< time of the first key frame, the file's time 0
    std::vector<Av<AVPacket>> m_waiting;
    AVFormatContext* m_format = nullptr;
    AVStream* m_video = nullptr;  ///< m_format's
    AVStream* m_audio = nullptr;  ///< m_format's
    std::unique_ptr<AacTrack> m_aac;
    int64_t m_last_video = INT64_MIN;  ///< in the stream's time base
    int64_t m_last_audio = INT64_MIN;
    uint64_t m_video_packets = 0;
    uint64_t m_audio_packets = 0;
    uint64_t m_size = 0;
    std::string m_note;
};

}  // namespace hostmgrctl

#endif
