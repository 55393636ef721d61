// A sound file read as the recorder's own kind of sound: one channel, 8000 samples a second, over and over.
#ifndef SIMULATOR_MODEL_SOUND_FILE_H
#define SIMULATOR_MODEL_SOUND_FILE_H

#include <cstdint>
#include <string>
#include <vector>

namespace simulator {

/** All samples of a file; empty, after a line on standard error, when it cannot be read or holds no sound. At most an
 *  hour is read. */
std::vector<int16_t> ReadSound(const std::string& path);

}  // namespace simulator

#endif
