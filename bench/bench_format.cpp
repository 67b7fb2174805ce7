// Fixed-decimal formatting of capture values, "0.000000": kx::appendFixed against the C
// library's snprintf("%.6f") on the same values. Judged by the values per second of
// appendFixed (at least ten million on one core) and its ratio to snprintf.

#include "RunReporter.h"
#include "support/NumberText.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace {

// Like a capture: bridge voltages of a few millivolts and forces up to about a kilonewton.
template <typename F>
std::vector<F> captureValues() {
    std::mt19937 random(7);
    std::normal_distribution<F> volts(F(0), F(0.002));
    std::normal_distribution<F> newtons(F(-400), F(300));
    std::vector<F> values(1 << 16);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = i % 2 ? volts(random) : newtons(random);
    return values;
}

template <typename F>
const std::vector<F>& values() {
    static const std::vector<F> all = captureValues<F>();
    return all;
}

template <typename F>
void appendFixed(benchmark::State& state) {
    char buffer[kx::kMaxNumberChars];
    for (auto _ : state) {
        for (const F value : values<F>()) {
            char* end = kx::appendFixed(buffer, value, 6);
            benchmark::DoNotOptimize(end);
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(values<F>().size()));
}

template <typename F>
void snprintfFixed(benchmark::State& state) {
    char buffer[512];
    for (auto _ : state) {
        for (const F value : values<F>()) {
            int length = std::snprintf(buffer, sizeof buffer, "%.6f", static_cast<double>(value));
            benchmark::DoNotOptimize(length);
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(values<F>().size()));
}

BENCHMARK(appendFixed<float>)->Name("appendFixed/single");
BENCHMARK(snprintfFixed<float>)->Name("snprintf/single");
BENCHMARK(appendFixed<double>)->Name("appendFixed/double");
BENCHMARK(snprintfFixed<double>)->Name("snprintf/double");

} // namespace

int main(int argc, char** argv) {
    RunReporter reporter;
    reporter.runAll(&argc, argv);
    for (const char* type : {"single", "double"}) {
        const double ours =
            reporter.counter(std::string("appendFixed/") + type, "items_per_second");
        const double theirs = reporter.counter(std::string("snprintf/") + type, "items_per_second");
        if (ours > 0 && theirs > 0)
            std::printf("%s \"0.000000\": appendFixed %.1f M values/s, snprintf %.1f M values/s, "
                        "ratio %.2f\n",
                        type, ours / 1e6, theirs / 1e6, ours / theirs);
    }
    return 0;
}
