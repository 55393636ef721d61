// The recorder's own work: what the cameras see is recorded, by the scenario and by each channel's record mode. How a
// channel is written stands in channel_recorder.h.
#ifndef SIMULATOR_MODEL_LIVE_RECORDER_H
#define SIMULATOR_MODEL_LIVE_RECORDER_H

namespace simulator {

/** Somebody logs in, or reads a live stream: recording may begin. Cheap; any thread. */
void WakeLiveRecorder();

/** Whether a channel, counted from 0, is being recorded; any thread. */
bool IsChannelRecording(unsigned index);

/** Whether a disk, counted from 1, is being recorded to; any thread. */
bool IsDiskRecording(unsigned disk);

}  // namespace simulator

#endif
