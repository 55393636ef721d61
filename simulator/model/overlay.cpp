#include "overlay.h"

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
}
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <map>
#include <mutex>

#include "picture_stamp.h"

namespace simulator {
namespace {

using Options = std::map<std::string, std::string>;

// One text: which entry of the picture's metadata it shows, how large (in parts of the common size) and where.
struct Text {
    const char* entry;
    double size;
    const char* x;
    const char* y;
};
constexpr const char* MARK = "SIMULATED RECORDER";
const Text TEXTS[] = {
    {"name", 1.0, "edge", "edge"},
    {"clock", 0.9, "edge", "bottom-max_glyph_a"},
    {"mark", 0.72, "w-tw-edge", "bottom-max_glyph_a"},
    {"notice", 1.9, "(w-tw)/2", "(h-th)/2"},
};

// drawtext has no variables of ours: "edge" and "bottom" stand for numbers.
std::string Placed(std::string expression, const std::string& word, int value) {
    const size_t at = expression.find(word);
    return at == std::string::npos ? expression : expression.replace(at, word.size(), std::to_string(value));
}

Options TextOptions(const Text& text, int width, int height, const std::string& font) {
    const int size = std::max(9, std::min(height / 20, width / 25));
    const int edge = std::max(4, std::min(width, height) / 36);
    const int bottom = height - height * STAMP_ROWS / STAMP_GRID - edge / 2;
    return {{"fontfile", font},
            {"text", std::string("%{metadata:") + text.entry + "}"},
            {"fontsize", std::to_string(static_cast<int>(size * text.size + 0.5))},
            {"fontcolor", "white"},
            {"borderw", std::to_string(std::max(1, size / 16))},
            {"bordercolor", "black@0.75"},
            {"x", Placed(text.x, "edge", edge)},
            {"y", Placed(Placed(text.y, "edge", edge), "bottom", bottom)}};
}

AVFilterContext* Add(AVFilterGraph* graph, const char* filter, const Options& options) {
    AVFilterContext* context = avfilter_graph_alloc_filter(graph, avfilter_get_by_name(filter), filter);
    AVDictionary* entries = nullptr;
    for (const auto& [key, value] : options) {
        av_dict_set(&entries, key.c_str(), value.c_str(), 0);
    }
    const bool ready = context != nullptr && avfilter_init_dict(context, &entries) == 0;
    av_dict_free(&entries);
    return ready ? context : nullptr;
}

std::string ClockText(int64_t moment) {
    const time_t seconds = moment / 1000000;
    tm local = {};
    localtime_r(&seconds, &local);
    char text[48];
    const size_t length = strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S", &local);
    return std::string(text, length) + "." + std::to_string(moment / 100000 % 10);
}

}  // namespace

Overlay::Overlay(int width, int height, const std::string& font) {
    m_graph.reset(avfilter_graph_alloc());
    if (access(font.c_str(), R_OK) == 0 && m_graph != nullptr && Build(width, height, font)) {
        return;
    }
    m_graph.reset();
    static std::once_flag told;
    std::call_once(told, [&font] { Tell("no text in the pictures, for the font cannot be used: " + font); });
}

bool Overlay::Build(int width, int height, const std::string& font) {
    m_graph->nb_threads = 1;
    m_in = Add(m_graph.get(), "buffer",
               {{"video_size", std::to_string(width) + "x" + std::to_string(height)},
                {"pix_fmt", "yuv420p"},
                {"time_base", "1/1000000"}});
    AVFilterContext* last = m_in;
    for (const Text& text : TEXTS) {
        AVFilterContext* next = Add(m_graph.get(), "drawtext", TextOptions(text, width, height, font));
        if (last == nullptr || next == nullptr || avfilter_link(last, 0, next, 0) != 0) {
            return false;
        }
        last = next;
    }
    m_out = Add(m_graph.get(), "buffersink", {});
    return m_out != nullptr && avfilter_link(last, 0, m_out, 0) == 0 &&
           avfilter_graph_config(m_graph.get(), nullptr) >= 0;
}

bool Overlay::Write(const std::string& name, int64_t moment, const std::string& notice, AVFrame* picture) {
    if (!Works()) {
        return true;
    }
    picture->pts = moment;
    av_dict_set(&picture->metadata, "name", name.c_str(), 0);
    av_dict_set(&picture->metadata, "clock", ClockText(moment).c_str(), 0);
    av_dict_set(&picture->metadata, "mark", MARK, 0);
    av_dict_set(&picture->metadata, "notice", notice.c_str(), 0);
    // The picture goes through the graph and comes back as the same memory: the filters write in place.
    if (av_buffersrc_add_frame(m_in, picture) == 0 && av_buffersink_get_frame(m_out, picture) >= 0) {
        return true;
    }
    av_frame_unref(picture);
    return false;
}

}  // namespace simulator
