// A camera of the recorder: its live frame lists, and a thread that fills them while somebody reads. What is in the
// pictures and how they are encoded does not belong here.
//
//   idle --a list is read--> at work --no list read for LINGER--> idle
//     \----------------------- Close -----------------------> closed
#ifndef SIMULATOR_MODEL_CAMERA_H
#define SIMULATOR_MODEL_CAMERA_H

#include <condition_variable>
#include <mutex>
#include <thread>

#include "camera_work.h"

namespace simulator {

/** A stream that nobody has read for so long is not encoded any more. */
constexpr std::chrono::seconds LINGER{5};

/** For any thread. */
class Camera {
public:
    /** channel counted from 1. */
    Camera(unsigned channel, const CameraSettings& settings, unsigned seed, unsigned frames_kept);

    /** The list of a stream type, or null when there is no such type. */
    FrameList* ListOf(vexo_enc_str_type type);

    /** Somebody reads that stream: it is encoded from now until LINGER after the last reading. */
    void Want(vexo_enc_str_type type);

    /** Ends the work for good and waits for it; for the process's end. */
    void Close();

private:
    SteadyTime* UntilOf(vexo_enc_str_type type);
    void Start();
    void Run();
    bool Next(CameraWork* work);
    bool Retire();
    Demand DemandNow() const;

    const unsigned m_channel;
    const CameraSettings m_settings;
    const unsigned m_seed;
    CameraLists m_lists;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::thread m_thread;  // guarded by m_mutex, as all that follows
    bool m_running = false;
    bool m_closed = false;
    SteadyTime m_main_until;  // each stream is wanted until then
    SteadyTime m_sub_until;
    SteadyTime m_audio_until;
};

}  // namespace simulator

#endif
