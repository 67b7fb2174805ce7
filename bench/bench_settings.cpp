// Reading and writing back the settings file with keys nested as deep as the registry allows
// (512 levels of 128-character names). Judged by the time of one read and rewrite, which once
// took seconds; well under a tenth of a second is the aim.

#include "RunReporter.h"
#include "support/SettingsFile.h"

#include <QByteArray>
#include <benchmark/benchmark.h>
#include <cstdio>

namespace {

QByteArray deepFile() {
    QByteArray path = "HKEY_CURRENT_USER";
    for (int i = 0; i < 512; ++i)
        path += '\\' + QByteArray(128, 'k');
    return '[' + path + "]\n\"n\"=dword:2\n";
}

void readAndRewriteDeepKeys(benchmark::State& state) {
    const QByteArray text = deepFile();
    for (auto _ : state) {
        const kx::SettingsFile file = kx::SettingsFile::fromText(text);
        const kx::SettingsFile reread = kx::SettingsFile::fromText(file.toText());
        benchmark::DoNotOptimize(reread);
    }
}

BENCHMARK(readAndRewriteDeepKeys)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    RunReporter reporter;
    reporter.runAll(&argc, argv);
    const double seconds = reporter.seconds("readAndRewriteDeepKeys");
    if (seconds > 0)
        std::printf("512 nested keys: read and rewrite %.1f ms\n", seconds * 1000);
    return 0;
}
