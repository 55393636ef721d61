// The platform's pictures of the moment: vexo_model_capture, to a file and to a buffer.
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <fstream>
#include <memory>
#include <mutex>
#include <vector>

#include "core/faults.h"
#include "jpeg.h"
#include "logins.h"
#include "mosaic.h"
#include "vexo_model.h"

namespace simulator {
namespace {

// What one channel's pictures are made with, of the main stream's size. Kept from picture to picture.
struct Eye {
    std::mutex mutex;
    std::unique_ptr<MosaicCell> cell;  // guarded by mutex
};

Eye& EyeOf(unsigned index) {
    static std::vector<Eye>& eyes = *new std::vector<Eye>(TheScenario().cameras.size());
    return eyes[index];
}

int64_t Now() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

std::vector<uint8_t> TakePicture(unsigned index) {
    Eye& eye = EyeOf(index);
    const VideoSettings& size = TheScenario().cameras[index].main;
    std::lock_guard<std::mutex> lock(eye.mutex);
    if (eye.cell == nullptr) {
        eye.cell = std::make_unique<MosaicCell>(index + 1, static_cast<int>(size.width), static_cast<int>(size.height));
    }
    const AVFrame* picture = eye.cell->Draw(Now());
    return picture != nullptr ? EncodeJpeg(*picture) : std::vector<uint8_t>();
}

bool MayCapture(unsigned id, unsigned channel) {
    return Logins::Get().UserOf(id).has_value() && channel < TheScenario().cameras.size();
}

bool Write(const std::vector<uint8_t>& jpeg, const char* path) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    if (!file) {
        return false;
    }
    file.write(reinterpret_cast<const char*>(jpeg.data()), static_cast<std::streamsize>(jpeg.size()));
    file.close();
    if (!file) {
        unlink(path);
    }
    return file.good();
}

}  // namespace
}  // namespace simulator

int vexo_model_capture(unsigned int id, unsigned int channel, const char* path, unsigned int* size) {
    if (simulator::ShallFail(__func__) || path == nullptr || size == nullptr || !simulator::MayCapture(id, channel)) {
        return -1;
    }
    const std::vector<uint8_t> jpeg = simulator::TakePicture(channel);
    if (jpeg.empty() || !simulator::Write(jpeg, path)) {
        return -1;
    }
    *size = static_cast<unsigned>(jpeg.size());
    return 0;
}

int vexo_model_capture(unsigned int id, unsigned int channel, char* buffer, unsigned int buffer_size,
                       unsigned int* size) {
    if (simulator::ShallFail(__func__) || buffer == nullptr || size == nullptr || !simulator::MayCapture(id, channel)) {
        return -1;
    }
    const std::vector<uint8_t> jpeg = simulator::TakePicture(channel);
    if (jpeg.empty() || jpeg.size() > buffer_size) {
        return -1;
    }
    memcpy(buffer, jpeg.data(), jpeg.size());
    *size = static_cast<unsigned>(jpeg.size());
    return 0;
}
