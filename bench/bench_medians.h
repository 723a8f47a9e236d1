// A console reporter that also keeps each benchmark's median rate in MB/s
// (its only run when there are no repetitions), for the summary tables
// printed after the runs.
#ifndef VXJSON_BENCH_MEDIANS_H
#define VXJSON_BENCH_MEDIANS_H

#include <benchmark/benchmark.h>

#include <map>
#include <set>
#include <string>
#include <vector>

class MedianRates : public benchmark::ConsoleReporter {
public:
    // Median MB/s by benchmark name; 0 for a name that did not run.
    double mbps(const std::string &name) const {
        auto it = mbps_.find(name);
        return it == mbps_.end() ? 0.0 : it->second;
    }
    void ReportRuns(const std::vector<Run> &runs) override {
        for (const Run &r : runs) {
            if (r.error_occurred) continue;
            const bool median = r.run_type == Run::RT_Aggregate && r.aggregate_name == "median";
            if (r.run_type != Run::RT_Iteration && !median) continue;
            const std::string name = r.run_name.str();
            if (!median && medians_.count(name)) continue;
            if (median) medians_.insert(name);
            auto rate = r.counters.find("bytes_per_second");
            if (rate != r.counters.end()) mbps_[name] = rate->second.value / 1e6;
        }
        ConsoleReporter::ReportRuns(runs);
    }

private:
    std::map<std::string, double> mbps_;
    std::set<std::string> medians_;
};

#endif
