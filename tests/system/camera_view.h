// A camera's live pictures through the exported functions, held against what its generated scene shows in a view. Where
// the camera's head goes does not belong here.
#ifndef TESTS_SYSTEM_CAMERA_VIEW_H
#define TESTS_SYSTEM_CAMERA_VIEW_H

#include "agent.h"
#include "scene_view.h"

namespace agent {

constexpr simulator::View HOME = {0.5, 0.5, 1};
constexpr double SAME = 3;    // luma steps on average: what coding makes of a picture, and more
constexpr double OTHER = 10;  // what another view differs by, and less

class CameraView {
public:
    /** The main stream of a channel, counted from 1, which has that size. */
    CameraView(int login, unsigned channel, int width, int height, unsigned seed = 1)
        : m_buffer(login, channel, HOSTMGR_STREAM_MAIN), m_scene(seed, channel, width, height) {
        m_buffer.EnableAudio(0);
    }

    /** Waits until the camera shows that view. */
    testing::AssertionResult Shows(const simulator::View& view) {
        double difference = -1;
        const bool shown = live::Eventually([&] {
            difference = DifferenceFrom(view);
            return difference >= 0 && difference < SAME;
        });
        return shown ? testing::AssertionSuccess()
                     : testing::AssertionFailure() << "the picture differs by " << difference << " on average";
    }

    /** How far the next picture is from a view, in luma steps on average; below 0 when there is none. */
    double DifferenceFrom(const simulator::View& view) {
        return NextPicture() ? m_scene.Difference(*m_picture, m_frame, view) : -1;
    }

    /** Where between left and right the head stands in the next picture, to 0.01; below 0 when there is none. */
    double Pan() {
        if (!NextPicture()) {
            return -1;
        }
        const double rough = Nearest(0, 1, 0.05);
        return Nearest(std::max(rough - 0.05, 0.0), std::min(rough + 0.05, 1.0), 0.005);
    }

    /** Whether there is no frame now. */
    bool Silent() { return !m_buffer.Try(); }

    /** Passes over the pictures that are there already. */
    void SkipOld() {
        while (const auto read = m_buffer.Try()) {
            m_decoder.Decode(read->frame);
        }
    }

private:
    bool NextPicture() {
        const auto read = m_buffer.Next(false);
        m_picture = read ? m_decoder.Decode(read->frame) : nullptr;
        m_frame = read ? read->frame : live::Frame();
        return m_picture != nullptr;
    }

    /** The pan, at middle height, whose view the picture is nearest to. */
    double Nearest(double from, double to, double step) {
        double nearest = from;
        double least = -1;
        for (double pan = from; pan < to + step / 2; pan += step) {
            const double difference = m_scene.Difference(*m_picture, m_frame, {pan, 0.5, 1});
            nearest = least < 0 || difference < least ? pan : nearest;
            least = least < 0 ? difference : std::min(least, difference);
        }
        return nearest;
    }

    Buffer m_buffer;
    live::Decoder m_decoder;
    device::SceneView m_scene;
    const AVFrame* m_picture = nullptr;
    live::Frame m_frame;
};

}  // namespace agent

#endif
