#include "playback.h"

#include "exit_code.h"
#include "local_time.h"

namespace hostmgrctl {
namespace {

constexpr size_t MOST_WAITING = 64UL << 20U;  // bytes; a slow file system makes the recorder wait, not the memory grow
constexpr unsigned CHANNEL_BITS = 0xFFFF;     // of a playback handle

[[noreturn]] void Refused(unsigned channel) {
    throw Failure(ExitCode::Refused, "the recorder does not play channel " + std::to_string(channel) +
                                         ": does it have that channel? (hostmgrctl files -c " +
                                         std::to_string(channel) + ")");
}

}  // namespace

Playback::Playback(int login, const PlaySetup& setup) : m_login(login), m_setup(setup) {
    // These hold for channels that are started after them.
    Command(HOSTMGR_PLAYCMD_DIRECTION, setup.reverse ? HOSTMGR_PLAYDIR_REVERSE : HOSTMGR_PLAYDIR_FORWARD);
    Command(HOSTMGR_PLAYCMD_AUDIO, setup.audio ? 1 : 0);
    try {
        for (const unsigned channel : setup.range.channels) {
            setup.way == PlayWay::Reader ? StartReader(channel) : StartCallback(channel);
            SetStream(channel, setup.stream);
        }
    } catch (const Failure&) {
        vexo_soft::vexo_HostMgr_Dev_StopHistoryPlay(m_login, 0);
        throw;
    }
}

Playback::~Playback() {
    Flow(true);
    vexo_soft::vexo_HostMgr_Dev_StopHistoryPlay(m_login, 0);
}

void Playback::StartCallback(unsigned channel) {
    _tagVexoHostMgrTime from = RangeStart(m_setup.range.from);
    _tagVexoHostMgrTime to = RangeStop(m_setup.range.to);
    const unsigned mode = m_setup.way == PlayWay::Download ? HOSTMGR_PLAYMODE_DOWNLOAD : HOSTMGR_PLAYMODE_PLAYBACK;
    const int handle =
        vexo_soft::vexo_HostMgr_Dev_StartHistoryPlay(m_login, static_cast<int>(channel), mode, &from, &to);
    if (handle == -1 || vexo_soft::vexo_HostMgr_Dev_SetHistoryStreamCallback(m_login, handle, Callback, this) != 0) {
        Refused(channel);
    }
}

void Playback::StartReader(unsigned channel) {
    if (m_begun) {
        AddChannel(channel);
        return;
    }
    _tagVexoHostMgrTime from = RangeStart(m_setup.range.from);
    _tagVexoHostMgrTime to = RangeStop(m_setup.range.to);
    if (vexo_soft::vexo_HostMgr_Dev_StartHistoryPlayV2(m_login, static_cast<int>(channel), HOSTMGR_PLAYMODE_PLAYBACK,
                                                       &from, &to, ReaderCallback, this) == -1) {
        Refused(channel);
    }
    m_begun = true;
}

void Playback::Callback(int /*login*/, int handle, unsigned char* buffer, unsigned length, void* user) {
    static_cast<Playback*>(user)->Take(
        {static_cast<unsigned>(handle) & CHANNEL_BITS, 0, {buffer, buffer == nullptr ? buffer : buffer + length}});
}

int Playback::ReaderCallback(int /*login*/, int /*handle*/, int channel, int stream, unsigned char* buffer,
                             unsigned length, void* user) {
    static_cast<Playback*>(user)->Take({static_cast<unsigned>(channel),
                                        static_cast<unsigned>(stream),
                                        {buffer, buffer == nullptr ? buffer : buffer + length}});
    return 0;
}

void Playback::Take(Played played) {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_waiting < MOST_WAITING || m_free; });
    m_waiting += played.bytes.size();
    m_queue.push_back(std::move(played));
    m_changed.notify_all();
}

std::optional<Played> Playback::Next(std::chrono::milliseconds patience) {
    std::unique_lock<std::mutex> lock(m_mutex);
    if (!m_changed.wait_for(lock, patience, [this] { return !m_queue.empty(); })) {
        return std::nullopt;
    }
    Played played = std::move(m_queue.front());
    m_queue.pop_front();
    m_waiting -= played.bytes.size();
    m_changed.notify_all();
    return played;
}

// A callback runs with the play locked, and a command waits for that lock: meanwhile no callback may wait for room.
void Playback::Flow(bool free) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_free = free;
    m_changed.notify_all();
}

HostMgrPlayCtrlParam Playback::Control(HostMgrPlayCtrlParam command) {
    Flow(true);
    vexo_soft::vexo_HostMgr_Dev_Control(m_login, HOSTMGR_CONTROL_PLAYBACK, 0, 0, nullptr, 0, &command, sizeof(command),
                                        nullptr, 0);
    Flow(false);
    return command;
}

void Playback::Command(HostMgrPlayCommand command, unsigned value, unsigned value_2) {
    HostMgrPlayCtrlParam order = {};
    order.dwPlayCmd = command;
    order.dwParam = value;
    order.dwParam2 = value_2;
    Control(order);
}

void Playback::Speed(int speed) {
    Command(HOSTMGR_PLAYCMD_SPEED, static_cast<unsigned>(speed));
    if (m_setup.way == PlayWay::Reader && speed >= HOSTMGR_PLAY_SPEED_KEY_FRAMES) {
        // The first speed command of a play leaves its readers with all frames.
        Command(HOSTMGR_PLAYCMD_SPEED, static_cast<unsigned>(speed));
    }
}

void Playback::Pause(bool pause) {
    Command(HOSTMGR_PLAYCMD_PAUSE, pause ? 1 : 0);
}

void Playback::Seek(time_t target) {
    HostMgrPlayCtrlParam order = {};
    order.dwPlayCmd = HOSTMGR_PLAYCMD_SEEK;
    order.struTime = PlayTime(target);
    Control(order);
}

void Playback::Audio(bool audio) {
    Command(HOSTMGR_PLAYCMD_AUDIO, audio ? 1 : 0);
}

// In a callback playback the command would know no range: a start adds the channel instead.
void Playback::AddChannel(unsigned channel) {
    if (m_setup.way == PlayWay::Reader) {
        Command(HOSTMGR_PLAYCMD_ADDCHAN, channel);
    } else {
        StartCallback(channel);
    }
}

void Playback::DropChannel(unsigned channel) {
    Command(HOSTMGR_PLAYCMD_DELCHAN, channel);
}

void Playback::SetStream(unsigned channel, unsigned stream) {
    Command(HOSTMGR_PLAYCMD_STREAMTYPE, channel, stream);
}

time_t Playback::CurrentTime() {
    HostMgrPlayCtrlParam order = {};
    order.dwPlayCmd = HOSTMGR_PLAYCMD_GETTIME;
    order.dwParam = HOSTMGR_PLAYTIME_CURRENT;
    return FromCalendarTime(Control(order).struTime);
}

}  // namespace hostmgrctl
