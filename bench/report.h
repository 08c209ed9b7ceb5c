// Turns Google Benchmark's runs into one table: our time beside the peers', as medians of ratios.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace bench {

/// The three ways in which a case is measured.
enum Way { kOurs, kFormatted, kPrepared, kWays };
inline constexpr const char *kWayNames[] = {"ours", "A", "B"};

/// What is known of a case beside its times.
struct CaseFacts {
    std::string operation;
    int records = 1;   // read or written by one call
    double bytes = 0;  // of memory for each record, 0 when not measured
};

struct RatioReporter : benchmark::BenchmarkReporter {
    std::map<std::string, CaseFacts> facts;              // by "operation/size"
    std::vector<std::string> order;                      // of the cases, as registered
    std::map<std::string, std::vector<double>> seconds;  // by "operation/size/way", one a repetition

    bool ReportContext(const Context &) override { return true; }
    void ReportRuns(const std::vector<Run> &runs) override;

    void print_table() const;
    bool write_json(const std::string &path) const;

private:
    std::vector<double> times(const std::string &name, Way way) const;
};

/// The median; 0 of nothing.
double median(std::vector<double> values);

}  // namespace bench
// SPDX-License-Identifier: Apache-2.0
