// The generated scene: a landscape with a town, larger than the camera's view, that looks different on every channel
// and the same for the same seed, and traffic in it whose place depends on the time alone.
#ifndef SIMULATOR_MODEL_SCENE_H
#define SIMULATOR_MODEL_SCENE_H

#include <vector>

#include "av.h"
#include "painter.h"
#include "picture_source.h"

namespace simulator {

/** What tells one scene from another; the world's sizes are in units, a hundredth of the world's height. */
struct SceneStyle {
    struct Building {
        double left, width, height;
        Colour wall;
        unsigned windows;  ///< seed of the pattern of lit windows
    };
    struct Tree {
        double x, size;
        Colour leaves;
    };
    struct Vehicle {
        double lane, speed, start;  ///< y of its wheels; units a second, negative to the left; x at the epoch
        Colour body;
    };

    Colour sky_upper, sky_lower, sun, hills, ground_near, ground_far, balloon;
    double sun_x, sun_y, hill_phase;
    std::vector<Building> buildings;
    std::vector<Tree> trees;
    std::vector<Vehicle> vehicles;
};

/** The style of a channel, counted from 1, in a scenario of that seed. */
SceneStyle MakeSceneStyle(unsigned seed, unsigned channel);

class Scene : public PictureSource {
public:
    /** width, height: of the widest view in pixels; the world is twice as large both ways. */
    Scene(const SceneStyle& style, int width, int height);

    bool Draw(int64_t moment, const View& view, AVFrame& picture) override;

private:
    struct Window;
    Window WindowOf(const View& view) const;
    bool CopyWorld(const Window& window, AVFrame& picture);
    void DrawWorld();
    void DrawSky(Painter& painter) const;
    void DrawGround(Painter& painter) const;
    void DrawTown(Painter& painter) const;
    void DrawTraffic(int64_t moment, Painter& painter) const;
    void DrawBalloon(int64_t moment, Painter& painter) const;

    const SceneStyle m_style;
    const double m_unit;   ///< pixels of the world a unit
    const double m_width;  ///< of the world, in units
    Av<AVFrame> m_world;
    Av<SwsContext> m_zoom;
};

}  // namespace simulator

#endif
