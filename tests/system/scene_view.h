// What a generated scene shows in a view, to hold a decoded picture against. How pictures are read does not belong
// here.
#ifndef TESTS_SYSTEM_SCENE_VIEW_H
#define TESTS_SYSTEM_SCENE_VIEW_H

#include <cstdlib>

#include "live_reader.h"
#include "model/scene.h"

namespace device {

class SceneView {
public:
    /** The scene of a channel, counted from 1, in a scenario of that seed, in pictures of that size. */
    SceneView(unsigned seed, unsigned channel, int width, int height)
        : m_scene(simulator::MakeSceneStyle(seed, channel), width, height),
          m_expected(simulator::NewPicture(width, height)) {}

    /** How far a picture is from that view, in luma steps on average over its middle, where nothing is written. */
    double Difference(const AVFrame& picture, const live::Frame& frame, const simulator::View& view) {
        m_scene.Draw(frame.header.seconds * 1000000LL + frame.header.microseconds, view, *m_expected);
        double sum = 0;
        long count = 0;
        for (int y = picture.height * 15 / 100; y < picture.height * 80 / 100; ++y) {
            for (int x = 0; x < picture.width; ++x, ++count) {
                sum += std::abs(picture.data[0][y * picture.linesize[0] + x] -
                                m_expected->data[0][y * m_expected->linesize[0] + x]);
            }
        }
        return sum / static_cast<double>(count);
    }

private:
    simulator::Scene m_scene;
    simulator::Av<AVFrame> m_expected;
};

}  // namespace device

#endif
