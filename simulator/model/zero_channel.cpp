#include "zero_channel.h"

#include <pthread.h>

#include <cmath>
#include <system_error>
#include <utility>

#include "camera.h"
#include "core/panel.h"
#include "core/power.h"
#include "core/scenario.h"
#include "mosaic.h"
#include "work_end.h"

namespace simulator {
namespace {

using std::chrono::steady_clock;

constexpr unsigned char CODEC_H264 = 1;

/** Encoder and picture while somebody reads. */
class Studio {
public:
    explicit Studio(FrameList* list)
        : m_settings(TheScenario().zero_channel),
          m_list(list),
          m_mosaic(Width(), Height()),
          m_encoder(m_settings, {Width(), Height()}),
          m_picture(NewPicture(Width(), Height())),
          m_schedule(steady_clock::now(), m_settings.fps) {}
    ~Studio() { m_list->StartOver(); }
    Studio(const Studio&) = delete;
    Studio& operator=(const Studio&) = delete;

    SteadyTime Due() const { return m_schedule.Due(); }
    void Arrange(const std::vector<unsigned>& channels) { m_mosaic.Arrange(channels); }

    void Put() {
        m_schedule.SkipTo(steady_clock::now());
        const auto late = steady_clock::now() - m_schedule.Due();
        const auto wall_clock = std::chrono::system_clock::now().time_since_epoch() - late;
        const Moment moment = {m_schedule.Due(),
                               std::chrono::duration_cast<std::chrono::microseconds>(wall_clock).count()};
        m_schedule.Done();
        Packet packet;
        if (m_picture == nullptr || av_frame_make_writable(m_picture.get()) != 0) {
            return;
        }
        m_mosaic.Draw(moment.wall_clock, m_picture.get());
        if (m_encoder.Encode(*m_picture, &packet)) {
            Publish(moment, packet);
        }
    }

private:
    int Width() const { return static_cast<int>(m_settings.width); }
    int Height() const { return static_cast<int>(m_settings.height); }

    void Publish(const Moment& moment, const Packet& packet) {
        auto frame = NewFrame(moment, packet, false);
        frame->header.frame_type = packet.key ? VEXO_FRAME_ZERO_KEY : VEXO_FRAME_ZERO_DELTA;
        frame->header.codec = CODEC_H264;
        frame->header.format[0] = static_cast<unsigned char>(m_settings.fps);
        frame->header.width = static_cast<unsigned short>(m_settings.width);
        frame->header.height = static_cast<unsigned short>(m_settings.height);
        m_list->Add(std::move(frame));
    }

    const VideoSettings m_settings;
    FrameList* const m_list;
    Mosaic m_mosaic;
    VideoEncoder m_encoder;
    Av<AVFrame> m_picture;
    Schedule m_schedule;
};

nlohmann::json Status() {
    return {{"enabled", ZeroChannel::Get().Enabled()}, {"channels", ZeroChannel::Get().Shown()}};
}

[[maybe_unused]] const bool known =
    AddPanelPart("zero_channel", Status) && OnPowerLoss([] { ZeroChannel::Get().Reset(); });

}  // namespace

ZeroChannel::ZeroChannel() : m_list("zero channel", TheScenario().frames_kept) {}

ZeroChannel& ZeroChannel::Get() {
    static ZeroChannel& channel = *new ZeroChannel;
    static const WorkEnd end(&channel);
    return channel;
}

void ZeroChannel::Enable(bool enable) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_enabled = enable;
    m_changed.notify_one();
}

bool ZeroChannel::Enabled() {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_enabled;
}

std::vector<unsigned> ZeroChannel::Shown() {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_channels;
}

bool ZeroChannel::Show(std::vector<unsigned> channels) {
    const auto side = static_cast<size_t>(std::lround(std::sqrt(static_cast<double>(channels.size()))));
    if (channels.empty() || channels.size() > MOST_CELLS || side * side != channels.size()) {
        return false;
    }
    std::lock_guard<std::mutex> lock(m_mutex);
    m_channels = std::move(channels);
    ++m_layout;
    return true;
}

void ZeroChannel::Reset() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_enabled = false;
    m_channels = {0};
    ++m_layout;
    m_list.StartOver();
    m_changed.notify_one();
}

// A thread that is not running any more needs no lock for its last steps, so joining it under the lock is short.
void ZeroChannel::Want() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_until = steady_clock::now() + LINGER;
    if (m_running || !Wanted()) {
        return;
    }
    if (m_thread.joinable()) {
        m_thread.join();
    }
    try {
        m_thread = std::thread(&ZeroChannel::Run, this);
        m_running = true;
    } catch (const std::system_error& error) {
        Tell(std::string("the zero channel cannot start: ") + error.what());
    }
}

void ZeroChannel::Close() {
    EndWorker(&m_mutex, &m_changed, &m_closed, &m_thread);
}

// Under the lock.
bool ZeroChannel::Wanted() const {
    return m_enabled && !m_closed && steady_clock::now() < m_until;
}

void ZeroChannel::Run() {
    pthread_setname_np(pthread_self(), "zero channel");
    for (bool again = true; again;) {
        Work();
        std::lock_guard<std::mutex> lock(m_mutex);
        again = Wanted();
        m_running = again;
    }
}

// Makes pictures while somebody wants them.
void ZeroChannel::Work() {
    Studio studio(&m_list);
    unsigned layout = 0;
    bool arranged = false;
    std::unique_lock<std::mutex> lock(m_mutex);
    while (Wanted()) {
        m_changed.wait_until(lock, studio.Due(), [this] { return !Wanted(); });
        const bool arrange = !arranged || layout != m_layout;
        const std::vector<unsigned> channels = arrange ? m_channels : std::vector<unsigned>();
        layout = m_layout;
        arranged = true;
        lock.unlock();
        if (arrange) {
            studio.Arrange(channels);
        }
        studio.Put();
        lock.lock();
    }
}

}  // namespace simulator
