// Frame cost of the strip chart: a chart holding ten times the points of another, at the same
// size, rendered offscreen into an image. Each frame takes one new point, the refresh that
// rescales, and the drawing. Judged by the ratio of the two frame times (at most 1.5).
// Also prints the cost of AddPoint against the 1 ms between samples of a 1000 Hz plate.

#include "Offscreen.h"
#include "RunReporter.h"
#include "measure/StripChart.h"
#include "support/ManualClock.h"

#include <QApplication>
#include <QImage>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <random>
#include <vector>

namespace {

constexpr int kWidth = 800;
constexpr int kHeight = 200;
constexpr int kRefreshMs = 17;

// A plate's Fz: a slow sway, noise, and now and then a one-sample spike.
class Signal {
public:
    float next() {
        const double t = static_cast<double>(m_n++) / 1000.0;
        const double spike = m_n % 4999 == 0 ? 80.0 : 0.0;
        return static_cast<float>(-700.0 + 15.0 * std::sin(2 * std::numbers::pi * 0.7 * t) +
                                  m_noise(m_random) + spike);
    }

private:
    long m_n = 0;
    std::mt19937 m_random{11};
    std::normal_distribution<double> m_noise{0.0, 0.8};
};

void frame(benchmark::State& state) {
    kx::ManualClock clock;
    kx::StripChart chart(clock, nullptr, state.range(0));
    chart.setRefreshInterval(kRefreshMs);
    chart.resize(kWidth, kHeight);
    chart.show();
    Signal signal;
    for (qsizetype i = 0; i < state.range(0); ++i)
        chart.AddPoint(signal.next());
    QImage image(kWidth, kHeight, QImage::Format_ARGB32_Premultiplied);
    for (auto _ : state) {
        chart.AddPoint(signal.next());
        clock.advance(kRefreshMs);
        chart.render(&image);
    }
    state.counters["points_on_screen"] = static_cast<double>(state.range(0));
}

void addPoint(benchmark::State& state) {
    kx::ManualClock clock;
    kx::StripChart chart(clock);
    chart.resize(kWidth, kHeight);
    Signal signal;
    std::vector<float> values(1 << 16);
    for (float& value : values)
        value = signal.next();
    std::size_t i = 0;
    for (auto _ : state)
        chart.AddPoint(values[i++ & 0xFFFF]);
}

BENCHMARK(frame)->Arg(5000)->Arg(50000)->Unit(benchmark::kMicrosecond);
BENCHMARK(addPoint)->Name("AddPoint");

} // namespace

int main(int argc, char** argv) {
    QApplication app(offscreenByDefault(argc), argv);
    RunReporter reporter;
    reporter.runAll(&argc, argv);

    // Processor time: the machine may be shared, and drawing waits for nothing.
    const double small = reporter.cpuSeconds("frame/5000");
    const double large = reporter.cpuSeconds("frame/50000");
    if (small > 0 && large > 0)
        std::printf("frame of %dx%d: 5000 points %.1f us, 50000 points %.1f us, ratio %.2f "
                    "(aim at most 1.5)\n",
                    kWidth, kHeight, small * 1e6, large * 1e6, large / small);
    const double add = reporter.cpuSeconds("AddPoint");
    if (add > 0)
        std::printf("AddPoint %.1f ns: three charts take %.3f%% of a 1000 Hz sample period\n",
                    add * 1e9, 3 * add / 1e-3 * 100);
    return 0;
}
