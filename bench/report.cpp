#include "report.h"

#include <algorithm>
#include <cstdio>

namespace bench {
namespace {

std::vector<double> ratios(const std::vector<double> &over, const std::vector<double> &under)
{
    std::vector<double> all;
    for (size_t i = 0; i < over.size() && i < under.size(); i++) all.push_back(over[i] / under[i]);
    return all;
}

}  // namespace

double median(std::vector<double> values)
{
    if (values.empty()) return 0;
    std::sort(values.begin(), values.end());
    const size_t middle = values.size() / 2;
    return values.size() % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

void RatioReporter::ReportRuns(const std::vector<Run> &runs)
{
    for (const Run &run : runs)
        if (run.run_type == Run::RT_Iteration && !run.error_occurred)
            seconds[run.run_name.function_name].push_back(run.real_accumulated_time /
                                                          static_cast<double>(run.iterations));
}

std::vector<double> RatioReporter::times(const std::string &name, Way way) const
{
    const auto found = seconds.find(name + "/" + kWayNames[way]);
    return found == seconds.end() ? std::vector<double>{} : found->second;
}

void RatioReporter::print_table() const
{
    printf("%-34s %10s %12s %12s %12s %8s %8s %10s %8s\n", "operation", "records", "ours us", "A us", "B us", "A/ours",
           "ours/B", "ns/record", "bytes");
    for (const std::string &name : order) {
        const CaseFacts &fact = facts.at(name);
        const auto ours = times(name, kOurs);
        const auto a = times(name, kFormatted);
        const auto b = times(name, kPrepared);
        printf("%-34s %10d %12.1f %12.1f %12.1f %8.2f %8.2f %10.0f %8.0f\n", name.c_str(), fact.records,
               median(ours) * 1e6, median(a) * 1e6, median(b) * 1e6, median(ratios(a, ours)), median(ratios(ours, b)),
               median(ours) * 1e9 / fact.records, fact.bytes);
    }
}

bool RatioReporter::write_json(const std::string &path) const
{
    FILE *file = fopen(path.c_str(), "w");
    if (!file) return false;
    fputs("[\n", file);
    for (const std::string &name : order) {
        const CaseFacts &fact = facts.at(name);
        const auto ours = times(name, kOurs);
        const auto a = times(name, kFormatted);
        const auto b = times(name, kPrepared);
        fprintf(file,
                "  {\"case\": \"%s\", \"operation\": \"%s\", \"records\": %d, \"ours_us\": %.3f, \"a_us\": %.3f, "
                "\"b_us\": %.3f, \"a_over_ours\": %.3f, \"ours_over_b\": %.3f, \"bytes_per_record\": %.0f}%s\n",
                name.c_str(), fact.operation.c_str(), fact.records, median(ours) * 1e6, median(a) * 1e6,
                median(b) * 1e6, median(ratios(a, ours)), median(ratios(ours, b)), fact.bytes,
                name == order.back() ? "" : ",");
    }
    fputs("]\n", file);
    return fclose(file) == 0;
}

}  // namespace bench
// SPDX-License-Identifier: Apache-2.0
