#pragma once

#include <benchmark/benchmark.h>
#include <map>
#include <string>
#include <vector>

// Prints the runs as usual and keeps each one's real and processor time per iteration and
// counters, so that a benchmark program can print ratios of runs measured in the same process.
// Of repeated runs it keeps the median.
class RunReporter : public benchmark::ConsoleReporter {
public:
    // Runs the benchmarks the command line selects, reporting to this.
    void runAll(int* argc, char** argv) {
        benchmark::Initialize(argc, argv);
        benchmark::RunSpecifiedBenchmarks(this);
        benchmark::Shutdown();
    }

    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.iterations == 0 ||
                (!run.aggregate_name.empty() && run.aggregate_name != "median"))
                continue;
            // The name as registered, with its arguments but without "iterations:3" and such.
            std::string name = run.run_name.function_name;
            if (!run.run_name.args.empty())
                name += "/" + run.run_name.args;
            Result& result = m_results[name];
            result.seconds = run.real_accumulated_time / static_cast<double>(run.iterations);
            result.cpuSeconds = run.cpu_accumulated_time / static_cast<double>(run.iterations);
            for (const auto& [counterName, counter] : run.counters)
                result.counters[counterName] = counter.value;
        }
    }

    // Seconds per iteration of a run, 0 when it did not run.
    double seconds(const std::string& name) const {
        const auto found = m_results.find(name);
        return found == m_results.end() ? 0 : found->second.seconds;
    }
    // Processor seconds per iteration of a run, 0 when it did not run.
    double cpuSeconds(const std::string& name) const {
        const auto found = m_results.find(name);
        return found == m_results.end() ? 0 : found->second.cpuSeconds;
    }
    // A counter of a run (as the run reported it, rates already per second), 0 when absent.
    double counter(const std::string& name, const std::string& counter) const {
        const auto found = m_results.find(name);
        if (found == m_results.end())
            return 0;
        const auto value = found->second.counters.find(counter);
        return value == found->second.counters.end() ? 0 : value->second;
    }

private:
    struct Result {
        double seconds = 0;
        double cpuSeconds = 0;
        std::map<std::string, double> counters;
    };
    std::map<std::string, Result> m_results;
};
