// Writing the capture file of one hour at 1000 Hz (3.6 million rows), against writing the
// same bytes with plain fwrite into the same folder (aim: 0.5 of its speed or better). The
// capture file is saved through a temporary file that is flushed to disk (fdatasync) before
// it replaces the target, which plain fwrite into the page cache does not wait for; so the
// ratio to fwrite followed by fdatasync is printed too, as the like-for-like comparison, and
// the speed of the formatting alone shows what the disk leaves to win. The rows come from the
// hour's capture journal, as a save reads them.

#include "HourOfCapture.h"
#include "RunReporter.h"
#include "measure/CaptureFileWriter.h"
#include "measure/CaptureJournalReader.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <cstdio>
#include <thread>
#include <unistd.h>

namespace {

constexpr float kRate = 1000.0f;
constexpr float kMinFz = -2.5f;

struct Setup {
    QTemporaryDir folder{QDir::currentPath() + "/bench_capture-XXXXXX"};
    QString journal;
    qint64 rows = 0;
    QByteArray fileBytes; // what the writer wrote, for the baseline
};

// Built once on first use and destroyed at exit, which removes the folder.
Setup& setup() {
    static Setup s;
    if (s.journal.isEmpty()) {
        s.journal = s.folder.filePath("capture.kxcj");
        QFile file(s.journal);
        file.open(QIODevice::WriteOnly);
        file.write(hourOfCapture(kMinFz));
        file.close();
        kx::CaptureJournalReader reader;
        reader.open(s.journal);
        s.rows = reader.rowCount();
    }
    return s;
}

// Each iteration starts with nothing of the last one left to write back.
void startClean(benchmark::State& state, const QString& path) {
    state.PauseTiming();
    QFile::remove(path);
    ::sync();
    state.ResumeTiming();
}

void save(benchmark::State& state) {
    const QString path = setup().folder.filePath("capture.txt");
    for (auto _ : state) {
        startClean(state, path);
        kx::CaptureJournalReader journal;
        journal.open(setup().journal);
        kx::CaptureFileWriter writer(journal, kRate, kMinFz);
        if (!writer.save(path)) {
            state.SkipWithError(writer.errorString().toStdString().c_str());
            return;
        }
    }
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    setup().fileBytes = file.readAll();
    state.SetBytesProcessed(state.iterations() * setup().fileBytes.size());
}

// Takes what is written and keeps none of it.
class Discard : public QIODevice {
protected:
    qint64 readData(char*, qint64) override { return -1; }
    qint64 writeData(const char*, qint64 size) override { return size; }
};

// The text alone, without the disk: how fast the rows are formatted.
void format(benchmark::State& state) {
    Discard discard;
    discard.open(QIODevice::WriteOnly);
    for (auto _ : state) {
        kx::CaptureJournalReader journal;
        journal.open(setup().journal);
        kx::CaptureFileWriter writer(journal, kRate, kMinFz);
        writer.write(discard);
    }
    state.SetBytesProcessed(state.iterations() * setup().fileBytes.size());
}

void plainWrite(benchmark::State& state, bool sync) {
    const QByteArray& bytes = setup().fileBytes;
    if (bytes.isEmpty()) {
        state.SkipWithError("no capture file to copy");
        return;
    }
    const QString path = setup().folder.filePath("plain.txt");
    for (auto _ : state) {
        startClean(state, path);
        std::FILE* file = std::fopen(QFile::encodeName(path).constData(), "wb");
        std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), file);
        std::fflush(file);
        if (sync)
            ::fdatasync(fileno(file));
        std::fclose(file);
    }
    state.SetBytesProcessed(state.iterations() * bytes.size());
}

BENCHMARK(save)->Name("save/hour")->Iterations(3)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(format)->Name("format/hour")->Iterations(3)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(plainWrite, sync, true)
    ->Name("fwrite+fdatasync/hour")
    ->Iterations(3)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(plainWrite, cache, false)
    ->Name("fwrite/hour")
    ->Iterations(3)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    RunReporter reporter;
    reporter.runAll(&argc, argv);

    const double mb = 1e6;
    const double ours = reporter.counter("save/hour", "bytes_per_second") / mb;
    const double synced = reporter.counter("fwrite+fdatasync/hour", "bytes_per_second") / mb;
    const double cached = reporter.counter("fwrite/hour", "bytes_per_second") / mb;
    const double formatted = reporter.counter("format/hour", "bytes_per_second") / mb;
    std::printf("capture journal of one hour (%lld rows): %.1f MB on the disk\n",
                static_cast<long long>(setup().rows),
                static_cast<double>(QFileInfo(setup().journal).size()) / mb);
    if (ours > 0 && synced > 0 && cached > 0)
        std::printf("capture file of one hour (%.1f MB): save %.0f MB/s; plain fwrite %.0f MB/s, "
                    "ratio %.2f (aim 0.5 or better); fwrite+fdatasync %.0f MB/s, ratio %.2f\n",
                    static_cast<double>(setup().fileBytes.size()) / mb, ours, cached, ours / cached,
                    synced, ours / synced);
    if (formatted > 0)
        std::printf("formatting alone, into no file: %.0f MB/s with %u processors\n", formatted,
                    std::thread::hardware_concurrency());
    return 0;
}
