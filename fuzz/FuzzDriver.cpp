// Runs a fuzz target where there is no libFuzzer (g++ builds, ctest): replays every seed of
// the corpora given, then a fixed number of mutations of them drawn from a fixed seed, so that
// every run tries the same inputs and a failure is reproducible. The input that breaks the
// target is saved as "<program>-failure.bin" in the working folder; give that file as the
// corpus to replay it alone.
//
//     fuzz_<name> [--runs N] CORPUS...     CORPUS: a folder of seed files, or one file

#include <algorithm>
#include <charconv>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
// Resolved only when a sanitizer runtime is linked in.
extern "C" void __sanitizer_set_death_callback(void (*callback)()) __attribute__((weak));

namespace {

using Bytes = std::vector<std::uint8_t>;
namespace fs = std::filesystem;
using namespace std::string_view_literals;

constexpr long kDefaultRuns = 10000;
// Big enough for long lines and huge counts, small enough to keep a run quick.
constexpr std::size_t kMaxInput = 64 * 1024;

// The input under test and where to save it, for the handlers of a fatal error.
const Bytes* g_current = nullptr;
std::string g_failurePath;

void saveCurrentInput() {
    if (!g_current)
        return;
    const int fd = ::open(g_failurePath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd >= 0) {
        [[maybe_unused]] const ssize_t written = ::write(fd, g_current->data(), g_current->size());
        ::close(fd);
    }
    constexpr std::string_view note = "fuzz driver: the failing input is saved as ";
    [[maybe_unused]] ssize_t ignored = ::write(STDERR_FILENO, note.data(), note.size());
    ignored = ::write(STDERR_FILENO, g_failurePath.data(), g_failurePath.size());
    ignored = ::write(STDERR_FILENO, "\n", 1);
    g_current = nullptr;
}

extern "C" void onFatalSignal(int signal) {
    saveCurrentInput();
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

} // namespace

// UBSan ends the process through a runtime of its own, which ignores the death callback set
// below: have it abort instead, so that the input is saved all the same.
extern "C" const char* __ubsan_default_options() {
    return "abort_on_error=1:print_stacktrace=1";
}

namespace {

void catchFailures(const char* program) {
    g_failurePath = fs::path(program).filename().string() + "-failure.bin";
    // A broken invariant aborts; the sanitizers report through their own handlers, which
    // must stay theirs, and call back before they end the process.
    std::signal(SIGABRT, onFatalSignal);
    if (__sanitizer_set_death_callback) {
        __sanitizer_set_death_callback(saveCurrentInput);
        return;
    }
    for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL})
        std::signal(signal, onFatalSignal);
}

bool readFile(const fs::path& path, std::vector<Bytes>& seeds) {
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return false;
    seeds.emplace_back(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return true;
}

// The seeds of a folder in name order, or the one file.
bool loadSeeds(const fs::path& corpus, std::vector<Bytes>& seeds) {
    std::error_code error;
    if (!fs::is_directory(corpus, error))
        return fs::is_regular_file(corpus, error) && readFile(corpus, seeds);
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(corpus, error)) {
        if (entry.is_regular_file())
            files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return !error && std::all_of(files.begin(), files.end(),
                                 [&seeds](const fs::path& file) { return readFile(file, seeds); });
}

// Stacked random edits of the seeds. The engine's output is fixed by the standard and no
// distribution is used, so every machine draws the same inputs.
class Mutator {
public:
    explicit Mutator(const std::vector<Bytes>& seeds)
        : m_seeds(seeds) {}

    Bytes next() {
        Bytes data = pickSeed();
        for (std::size_t edits = 1 + below(4); edits > 0; --edits)
            mutate(data);
        if (data.size() > kMaxInput)
            data.resize(kMaxInput);
        return data;
    }

private:
    std::size_t below(std::size_t n) {
        return n == 0 ? 0 : static_cast<std::size_t>(m_random() % n);
    }

    const Bytes& pickSeed() { return m_seeds[below(m_seeds.size())]; }

    // Half the time a byte that means something to one of the readers.
    std::uint8_t anyByte() {
        static constexpr std::string_view special = "\0\n\r\t \"'\\#;:=[]().,-+01579eE\x80\xff"sv;
        return below(2) ? static_cast<std::uint8_t>(special[below(special.size())])
                        : static_cast<std::uint8_t>(m_random());
    }

    void mutate(Bytes& data) {
        const std::size_t at = below(data.size() + 1);
        const auto position = data.begin() + static_cast<std::ptrdiff_t>(at);
        switch (below(8)) {
        case 0: // flip a bit
            if (!data.empty())
                data[below(data.size())] ^= static_cast<std::uint8_t>(1u << below(8));
            break;
        case 1: // replace a byte
            if (!data.empty())
                data[below(data.size())] = anyByte();
            break;
        case 2: { // insert a few bytes
            Bytes inserted(1 + below(8));
            std::generate(inserted.begin(), inserted.end(), [this] { return anyByte(); });
            data.insert(position, inserted.begin(), inserted.end());
            break;
        }
        case 3: { // erase a short or a long run
            const std::size_t count = std::min(data.size() - at, 1 + below(below(2) ? 8 : 512));
            data.erase(position, position + static_cast<std::ptrdiff_t>(count));
            break;
        }
        case 4: { // copy in a piece of a seed
            const Bytes& other = pickSeed();
            const std::size_t from = below(other.size());
            const std::size_t count = std::min(other.size() - from, 1 + below(64));
            const auto begin = other.begin() + static_cast<std::ptrdiff_t>(from);
            data.insert(position, begin, begin + static_cast<std::ptrdiff_t>(count));
            break;
        }
        case 5: { // splice: the start of this input, the end of a seed
            const Bytes& other = pickSeed();
            data.resize(at);
            data.insert(data.end(),
                        other.begin() + static_cast<std::ptrdiff_t>(below(other.size() + 1)),
                        other.end());
            break;
        }
        case 6: { // repeat a piece: long lines, many sections, huge numbers
            if (data.empty())
                break;
            const std::size_t from = below(data.size());
            const std::size_t count = std::min(data.size() - from, 1 + below(32));
            const std::size_t times = 2 + below(below(2) ? 16 : kMaxInput / count);
            const auto begin = data.begin() + static_cast<std::ptrdiff_t>(from);
            Bytes repeated(begin, begin + static_cast<std::ptrdiff_t>(count));
            repeated.resize(count * times);
            for (std::size_t done = count; done < repeated.size(); done *= 2)
                std::memcpy(repeated.data() + done, repeated.data(),
                            std::min(done, repeated.size() - done));
            data.insert(begin, repeated.begin(), repeated.end());
            break;
        }
        default: // truncate
            data.resize(at);
            break;
        }
    }

    const std::vector<Bytes>& m_seeds;
    std::mt19937_64 m_random{20418};
};

void runOne(const Bytes& input) {
    g_current = &input;
    LLVMFuzzerTestOneInput(input.data(), input.size());
    g_current = nullptr;
}

} // namespace

int main(int argc, char** argv) {
    long runs = kDefaultRuns;
    std::vector<Bytes> seeds;
    for (int i = 1; i < argc; ++i) {
        const std::string_view arg = argv[i];
        if (arg == "--runs" && i + 1 < argc) {
            const std::string_view count = argv[++i];
            if (std::from_chars(count.data(), count.data() + count.size(), runs).ec !=
                    std::errc{} ||
                runs < 0) {
                std::fprintf(stderr, "%s: --runs takes a count\n", argv[0]);
                return 2;
            }
        } else if (arg.starts_with("--") || !loadSeeds(argv[i], seeds)) {
            std::fprintf(stderr, "usage: %s [--runs N] CORPUS...\n(cannot use %s)\n", argv[0],
                         argv[i]);
            return 2;
        }
    }
    catchFailures(argv[0]);

    for (const Bytes& seed : seeds)
        runOne(seed);
    const std::size_t seedCount = seeds.size();
    if (seeds.empty())
        seeds.emplace_back();
    Mutator mutator(seeds);
    for (long i = 0; i < runs; ++i)
        runOne(mutator.next());
    std::printf("%s: %zu seeds and %ld mutations run\n", argv[0], seedCount, runs);
    return 0;
}
