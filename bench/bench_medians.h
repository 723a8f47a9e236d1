// Console reporters that also keep each benchmark's median (its only run
// when there are no repetitions), for the summary tables printed after the
// runs.
#ifndef VXJSON_BENCH_MEDIANS_H
#define VXJSON_BENCH_MEDIANS_H

#include <benchmark/benchmark.h>

#include <map>
#include <set>
#include <string>
#include <vector>

// Hands keep() each benchmark's representative run: its median when it
// has repetitions, else its only run.
class RepresentativeRuns : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run> &runs) override {
        for (const Run &r : runs) {
            if (r.error_occurred) continue;
            const bool median = r.run_type == Run::RT_Aggregate && r.aggregate_name == "median";
            if (r.run_type != Run::RT_Iteration && !median) continue;
            const std::string name = r.run_name.str();
            if (!median && medians_.count(name)) continue;
            if (median) medians_.insert(name);
            keep(name, r);
        }
        ConsoleReporter::ReportRuns(runs);
    }

protected:
    virtual void keep(const std::string &name, const Run &run) = 0;

private:
    std::set<std::string> medians_;
};

// The value of a run's counter, if it has one.
inline bool run_counter(const benchmark::BenchmarkReporter::Run &run, const char *counter,
                        double &value) {
    auto it = run.counters.find(counter);
    if (it == run.counters.end()) return false;
    value = it->second.value;
    return true;
}

class MedianRates : public RepresentativeRuns {
public:
    // Median MB/s by benchmark name; 0 for a name that did not run.
    double mbps(const std::string &name) const {
        auto it = mbps_.find(name);
        return it == mbps_.end() ? 0.0 : it->second;
    }

protected:
    void keep(const std::string &name, const Run &run) override {
        double rate;
        if (run_counter(run, "bytes_per_second", rate)) mbps_[name] = rate / 1e6;
    }

private:
    std::map<std::string, double> mbps_;
};

#endif
