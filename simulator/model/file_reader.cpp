#include "file_reader.h"

#include <algorithm>

namespace simulator {

bool ReadSettings::Admits(const ClipFrame& frame) const {
    if (frame.time < from || frame.time > to) {
        return false;
    }
    if (frame.track == TRACK_AUDIO) {
        return !reverse && !key_only;
    }
    return frame.track == video && (frame.key || !key_only);
}

void FileReader::Open(std::vector<RecordedFile> files) {
    m_files = std::move(files);
    m_clip.reset();
    m_clip_file = -1;
    m_position.reset();
    m_placed = false;
    m_key_needed = true;
}

void FileReader::Set(const ReadSettings& settings) {
    if (settings == m_settings) {
        return;
    }
    // A decoder that goes on with another stream, or forward again, can only begin at a key frame.
    m_key_needed = m_key_needed || settings.video != m_settings.video || settings.reverse != m_settings.reverse;
    m_settings = settings;
    m_placed = false;
}

void FileReader::Seek(int64_t moment) {
    m_position = Position{moment, std::nullopt};
    m_placed = false;
    m_key_needed = true;
}

std::shared_ptr<LiveFrame> FileReader::Next() {
    if (!m_placed) {
        Place();
    }
    const long count = static_cast<long>(m_files.size());
    while (m_file >= 0 && m_file < count &&
           !Beyond(m_settings.reverse ? m_files[m_file].stop : m_files[m_file].start)) {
        if (EnterFile()) {
            if (auto frame = NextOfFile()) {
                return frame;
            }
        }
        LeaveFile();
    }
    return nullptr;
}

// Whether nothing more can come once reading has got to that time.
bool FileReader::Beyond(int64_t time) const {
    return m_settings.reverse ? time < m_settings.from : time > m_settings.to;
}

// The position, or the range's near end when that comes first.
FileReader::Position FileReader::Begin() const {
    const Position range = {m_settings.reverse ? m_settings.to : m_settings.from, std::nullopt};
    if (!m_position) {
        return range;
    }
    const bool outside = m_settings.reverse ? m_position->time > range.time : m_position->time < range.time;
    return outside ? range : *m_position;
}

void FileReader::Place() {
    const Position begin = Begin();
    m_key_needed = m_key_needed || !begin.given;
    m_position = begin;
    if (m_settings.reverse) {
        const auto after = std::find_if(m_files.rbegin(), m_files.rend(),
                                        [&](const RecordedFile& file) { return file.start <= begin.time; });
        m_file = m_files.rend() - after - 1;
    } else {
        const auto first = std::find_if(m_files.begin(), m_files.end(),
                                        [&](const RecordedFile& file) { return file.stop >= begin.time; });
        m_file = first - m_files.begin();
    }
    m_placed = true;
    if (m_clip != nullptr && m_clip_file == m_file) {
        PlaceInFile();
    }
}

// The first frame to look at in the open clip: behind the position, seen in reading direction.
void FileReader::PlaceInFile() {
    const std::vector<ClipFrame>& frames = m_clip->Frames();
    const Position& at = *m_position;
    const auto before = [&](const ClipFrame& frame) {
        if (frame.time != at.time || !at.given) {
            return frame.time < at.time;
        }
        return frame.track < *at.given;
    };
    const auto not_after = [&](const ClipFrame& frame) {
        if (frame.time != at.time || !at.given) {
            return frame.time <= at.time;
        }
        return frame.track <= *at.given;
    };
    if (m_settings.reverse) {  // a sought moment's own frames are still to come, a given frame is not
        const auto end = at.given ? std::partition_point(frames.begin(), frames.end(), before)
                                  : std::partition_point(frames.begin(), frames.end(), not_after);
        m_index = end - frames.begin() - 1;
    } else {
        const auto begin = at.given ? std::partition_point(frames.begin(), frames.end(), not_after)
                                    : std::partition_point(frames.begin(), frames.end(), before);
        m_index = begin - frames.begin();
    }
}

bool FileReader::EnterFile() {
    if (m_clip_file != m_file) {
        Archive* archive = Archive::Get();
        m_clip = archive != nullptr ? ClipFile::Open(archive->PathOf(m_files[m_file]), m_files[m_file].start) : nullptr;
        m_clip_file = m_clip != nullptr ? m_file : -1;
        if (m_clip != nullptr) {
            PlaceInFile();
        }
    }
    return m_clip != nullptr && m_clip->Has(m_settings.video);
}

void FileReader::LeaveFile() {
    m_file += m_settings.reverse ? -1 : 1;
}

std::shared_ptr<LiveFrame> FileReader::NextOfFile() {
    const std::vector<ClipFrame>& frames = m_clip->Frames();
    const long step = m_settings.reverse ? -1 : 1;
    for (; m_index >= 0 && m_index < static_cast<long>(frames.size()); m_index += step) {
        const ClipFrame& frame = frames[m_index];
        const bool waits = m_key_needed && !m_settings.reverse && (frame.track == TRACK_AUDIO || !frame.key);
        if (waits || !m_settings.Admits(frame)) {
            continue;
        }
        if (auto loaded = m_clip->Load(m_index)) {
            m_key_needed = m_settings.reverse;
            m_position = Position{frame.time, frame.track};
            m_index += step;
            return loaded;
        }
        m_key_needed = true;  // what cannot be read any more leaves a gap
    }
    return nullptr;
}

}  // namespace simulator
