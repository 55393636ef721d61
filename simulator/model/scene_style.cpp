#include <random>

#include "scene.h"

namespace simulator {
namespace {

// The standard library's distributions differ from one implementation to the next; these do not.
class Dice {
public:
    explicit Dice(unsigned seed) : m_engine(seed) {}

    unsigned Below(unsigned limit) { return m_engine() % limit; }
    double Between(double low, double high) { return low + (high - low) * (m_engine() % 10000) / 10000.0; }

private:
    std::mt19937 m_engine;
};

struct Daytime {
    Colour sky_upper, sky_lower, sun, hills, ground_far, ground_near;
};

const Daytime DAYTIMES[] = {
    {Rgb(64, 128, 206), Rgb(192, 222, 242), Rgb(255, 246, 206), Rgb(104, 142, 128), Rgb(150, 168, 120),
     Rgb(92, 116, 74)},  // noon
    {Rgb(62, 70, 126), Rgb(246, 176, 118), Rgb(255, 226, 160), Rgb(104, 84, 112), Rgb(148, 122, 96),
     Rgb(92, 78, 66)},  // evening
    {Rgb(128, 146, 160), Rgb(216, 220, 218), Rgb(240, 240, 232), Rgb(122, 136, 138), Rgb(150, 152, 136),
     Rgb(98, 104, 94)},  // overcast
    {Rgb(84, 152, 176), Rgb(250, 220, 196), Rgb(255, 240, 214), Rgb(110, 130, 150), Rgb(160, 160, 116),
     Rgb(104, 106, 74)},  // morning
};

const Colour WALLS[] = {Rgb(196, 92, 74),  Rgb(222, 182, 96), Rgb(92, 124, 158), Rgb(150, 156, 160),
                        Rgb(116, 84, 110), Rgb(90, 140, 124), Rgb(206, 142, 92), Rgb(176, 178, 150)};

const Colour BODIES[] = {Rgb(204, 44, 42), Rgb(38, 84, 172), Rgb(240, 200, 48), Rgb(236, 236, 232), Rgb(48, 140, 84)};

template <class T, size_t N>
const T& Any(const T (&of)[N], Dice& dice) {
    return of[dice.Below(N)];
}

void AddBuildings(Dice& dice, SceneStyle* style) {
    for (double left = dice.Between(-4, 2); left < 240;) {
        const double width = dice.Between(7, 15);
        style->buildings.push_back({left, width, dice.Between(7, 25), Any(WALLS, dice), dice.Below(1U << 16)});
        left += width + dice.Between(0.5, 9);
    }
}

void AddTrees(Dice& dice, SceneStyle* style) {
    for (double x = dice.Between(0, 8); x < 240; x += dice.Between(6, 20)) {
        const int shade = static_cast<int>(dice.Below(40));
        style->trees.push_back({x, dice.Between(3, 5.5), Rgb(44 + shade, 104 + shade / 2, 58)});
    }
}

void AddVehicles(Dice& dice, SceneStyle* style) {
    constexpr int PER_LANE = 5;
    constexpr double APART = 40;
    for (const double direction : {1.0, -1.0}) {
        const double speed = direction * dice.Between(11, 15);  // one for the lane: nobody overtakes
        for (int i = 0; i < PER_LANE; ++i) {
            const double start = i * APART + dice.Between(0, APART / 2);
            style->vehicles.push_back({direction > 0 ? 65.2 : 61.2, speed, start, Any(BODIES, dice)});
        }
    }
}

}  // namespace

SceneStyle MakeSceneStyle(unsigned seed, unsigned channel) {
    Dice dice(seed * 1009 + channel);
    const Daytime& day = DAYTIMES[(seed + channel - 2) % std::size(DAYTIMES)];
    SceneStyle style = {};
    style.sky_upper = day.sky_upper;
    style.sky_lower = day.sky_lower;
    style.sun = day.sun;
    style.hills = day.hills;
    style.ground_far = day.ground_far;
    style.ground_near = day.ground_near;
    style.balloon = Any(BODIES, dice);
    style.sun_x = dice.Between(0.32, 0.68);
    style.sun_y = dice.Between(33, 38);
    style.hill_phase = dice.Between(0, 100);
    AddBuildings(dice, &style);
    AddTrees(dice, &style);
    AddVehicles(dice, &style);
    return style;
}

}  // namespace simulator
