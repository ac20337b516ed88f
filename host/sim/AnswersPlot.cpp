#include "AnswersPlot.h"

#include <array>
#include <cmath>
#include <string>

#include "Canvas.h"
#include "PlotAxes.h"

namespace cwbsim {

namespace {

constexpr host::device::Pixel kLuma{200, 200, 200};

}  // namespace

int AnswersPlot::x(size_t i, size_t n) {
    const int left = PlotAxes::kLeft + 20, right = PlotAxes::kRight - 20;
    if (n < 2) return (left + right) / 2;
    return left + static_cast<int>(i * static_cast<size_t>(right - left) / (n - 1));
}

int AnswersPlot::y(double level) {
    return PlotAxes::kBottom -
           static_cast<int>(std::lround(level * (PlotAxes::kBottom - PlotAxes::kTop) / 255.0));
}

host::device::Frame AnswersPlot::render(const std::vector<Answer>& answers) {
    // One tick per answer, labelled with its session line; labels thin out when they would touch.
    std::vector<std::pair<int, std::string>> ticks;
    int lastRight = -1000;
    for (size_t i = 0; i < answers.size(); ++i) {
        const std::string label = std::to_string(answers[i].line);
        const int at = x(i, answers.size());
        const bool room = at - Canvas::textWidth(label, 2) / 2 > lastRight + 6;
        ticks.emplace_back(at, room ? label : "");
        if (room) lastRight = at + Canvas::textWidth(label, 2) / 2;
    }
    host::device::Frame frame =
            PlotAxes::draw("ANSWERS BY SESSION LINE", "SESSION LINE", "LEVEL", ticks, "255");
    PlotAxes::legend(frame, {{PlotAxes::kChannels[0], "R"},
                             {PlotAxes::kChannels[1], "G"},
                             {PlotAxes::kChannels[2], "B"},
                             {kLuma, "LUMA X 255"}});
    Canvas canvas(frame);
    // Each series joins its own answers; a dot marks every answer.
    auto series = [&](host::device::Pixel colour, auto level) {
        std::optional<std::pair<int, int>> last;
        for (size_t i = 0; i < answers.size(); ++i) {
            const std::optional<double> v = level(answers[i]);
            if (!v) continue;
            const std::pair<int, int> at{x(i, answers.size()), y(*v)};
            if (last) canvas.addLine(last->first, last->second, at.first, at.second, 2, colour);
            for (int d = -3; d <= 3; ++d)
                canvas.addLine(at.first - 3, at.second + d, at.first + 3, at.second + d, 1, colour);
            last = at;
        }
    };
    for (int ch = 0; ch < 3; ++ch) {
        series(PlotAxes::kChannels[ch], [ch](const Answer& a) -> std::optional<double> {
            if (!a.rgb) return std::nullopt;
            return (*a.rgb)[ch];
        });
    }
    series(kLuma, [](const Answer& a) -> std::optional<double> {
        if (!a.luma) return std::nullopt;
        return *a.luma * 255.0;
    });
    return frame;
}

}  // namespace cwbsim
