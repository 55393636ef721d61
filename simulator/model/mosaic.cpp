#include "mosaic.h"

#include <cstring>

#include "control.h"
#include "picture_stamp.h"
#include "ptz.h"
#include "stream.h"

namespace simulator {
namespace {

constexpr const char* NO_SIGNAL = "NO SIGNAL";

CameraSettings SettingsFor(unsigned channel, int width, int height) {
    CameraSettings settings = TheScenario().cameras[channel - 1];
    settings.main.width = static_cast<unsigned>(width);
    settings.main.height = static_cast<unsigned>(height);
    return settings;
}

void CopyInto(const AVFrame& from, int left, int top, AVFrame* to) {
    for (int plane = 0; plane < 3; ++plane) {
        const int half = plane == 0 ? 0 : 1;
        for (int y = 0; y < from.height >> half; ++y) {
            memcpy(to->data[plane] + ((top >> half) + y) * to->linesize[plane] + (left >> half),
                   from.data[plane] + y * from.linesize[plane], static_cast<size_t>(from.width >> half));
        }
    }
}

}  // namespace

MosaicCell::MosaicCell(unsigned channel, int width, int height)
    : m_channel(channel),
      m_source(OpenSource(SettingsFor(channel, width, height), TheScenario().seed, channel)),
      m_overlay(width, height),
      m_picture(NewPicture(width, height)) {}

const AVFrame* MosaicCell::Draw(int64_t moment) {
    if (m_picture == nullptr || av_frame_make_writable(m_picture.get()) != 0) {
        return nullptr;
    }
    const int width = m_picture->width;
    const int height = m_picture->height;
    const bool seen =
        control::HasSignal(m_channel) && m_source->Draw(moment, ViewOf(m_channel - 1), *m_picture);
    if (!seen) {
        Blacken(m_picture.get());
    }
    const std::string& name = TheScenario().cameras[m_channel - 1].name;
    if (!m_overlay.Write(name, moment, seen ? "" : NO_SIGNAL, m_picture.get())) {
        m_picture = NewPicture(width, height);
        return nullptr;
    }
    PaintStamp({static_cast<uint64_t>(moment) / 1000, m_channel}, m_picture->data, m_picture->linesize, width, height);
    return m_picture.get();
}

void Mosaic::Arrange(const std::vector<unsigned>& channels) {
    for (m_side = 1; static_cast<size_t>(m_side) * m_side < channels.size();) {
        ++m_side;
    }
    m_cells.clear();
    for (const unsigned channel : channels) {
        const bool there = channel >= 1 && channel <= TheScenario().cameras.size();
        m_cells.push_back(there ? std::make_unique<MosaicCell>(channel, m_width / m_side & ~1, m_height / m_side & ~1)
                                : nullptr);
    }
}

void Mosaic::Draw(int64_t moment, AVFrame* picture) {
    Blacken(picture);
    for (size_t i = 0; i < m_cells.size(); ++i) {
        const AVFrame* cell = m_cells[i] != nullptr ? m_cells[i]->Draw(moment) : nullptr;
        if (cell != nullptr) {
            const int column = static_cast<int>(i) % m_side;
            const int row = static_cast<int>(i) / m_side;
            CopyInto(*cell, column * (m_width / m_side & ~1), row * (m_height / m_side & ~1), picture);
        }
    }
}

}  // namespace simulator
