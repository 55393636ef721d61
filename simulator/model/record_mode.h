// Which channels are to be recorded: the record mode and the manual switch of each, which last between runs. Recording
// itself is not done here: whoever records asks ShallRecord.
#ifndef SIMULATOR_MODEL_RECORD_MODE_H
#define SIMULATOR_MODEL_RECORD_MODE_H

namespace simulator {

/** As the platform counts them. */
enum class RecordMode : unsigned { Off = 0, Schedule = 1, Always = 2 };

struct RecordSwitches {
    RecordMode mode = RecordMode::Schedule;
    bool manual = false;
};

/** The switches of a channel, counted from 0; of one that is not there, all off. Any thread. */
RecordSwitches RecordSwitchesOf(unsigned index);

/** Whether that channel is to be recorded now: always, by a schedule that covers the whole week, or by hand; and only
 *  while the recorder runs. Cheap enough to be asked for every frame; any thread. */
bool ShallRecord(unsigned index);

/** False when there is no such channel. */
bool SetRecordMode(unsigned index, RecordMode mode);
bool SetManualRecording(unsigned index, bool enable);

}  // namespace simulator

#endif
