// Reads the JSON that the benchmark program writes and prints one table: each figure, its
// reference measured in the same run where there is one, the ratio, and the figure's target.
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace {

struct Row {
  const char* what;
  const char* figure;     // benchmark name
  const char* reference;  // benchmark name, or empty
  const char* target;     // in words
  double limit;           // the figure's bound in microseconds, or 0
  double ratioLimit;      // the bound of figure / reference, or 0; a row with both must meet both
};

// What people read before choosing the library. Names are those of bench/.
const Row kRows[] = {
    {"contdStrokeQ, one tracked point", "BM_ContdStrokeQ", "", "< 0.1 us", 0.1, 0},
    {"features, main path, 90 points", "BM_ExtractFeaturesMainPath", "", "< 10 us", 10, 0},
    {"features, frequency path, 90 points", "BM_ExtractFeaturesFrequencyPath", "", "< 10 us", 10, 0},
    {"network forward pass, one stroke", "BM_Forward", "BM_ForwardReference", "ratio <= 1.5", 0, 1.5},
    {"endStroke, 20 gestures, trained shape", "BM_EndStrokeIdentification/manual_time", "", "< 20 us", 20, 0},
    {"contdIdentify at 90 Hz, 1 s window (median)", "BM_ContdIdentify/1/iterations:150/manual_time",
     "BM_EndStrokeOfTheWindowsLength/1/iterations:150/manual_time", "< 30 us", 30, 0},
    {"contdIdentify back to back (median)", "BM_ContdIdentify/0/iterations:150/manual_time",
     "BM_EndStrokeOfTheWindowsLength/0/iterations:150/manual_time", "", 0, 0},
    {"endStroke, enhanced mode, 20 x 10 samples", "BM_EnhancedEndStroke/20/10/manual_time", "", "< 100 us", 100, 0},
    {"endStroke, enhanced mode, 10 x 90 samples (a set from many people)", "BM_EnhancedEndStroke/10/90/manual_time", "",
     "< 100 us", 100, 0},
    {"contdIdentify, enhanced mode, 90 Hz (median)", "BM_EnhancedContdIdentify/iterations:250/manual_time", "",
     "< 150 us", 150, 0},
    {"contdDetect at 90 Hz, 20 x 10 samples, plain mode (median)", "BM_ContdDetect/0/iterations:900/manual_time",
     "BM_ContdDetectEndStrokeReference/0/iterations:150/manual_time", "< 100 us, ratio <= 2", 100, 2},
    {"contdDetect at 90 Hz, 20 x 10 samples, enhanced mode (median)", "BM_ContdDetect/1/iterations:900/manual_time",
     "BM_ContdDetectEndStrokeReference/1/iterations:150/manual_time", "< 100 us, ratio <= 2", 100, 2},
    {"training iteration, 20 x 20 samples", "BM_TrainingIteration", "BM_TrainingIterationReference", "ratio <= 1.3",
     0, 1.3},
    {"database text write, 24 MB", "BM_WriteDatabase/min_time:2.000", "", "", 0, 0},
    {"database text read, 24 MB", "BM_ReadDatabase/min_time:2.000", "", "", 0, 0},
    {"saveToFile, 20 x 50 samples + network", "BM_SaveToFile/min_time:2.000", "", "< 1 s", 1e6, 0},
    {"loadFromFile, the same", "BM_LoadFromFile/min_time:2.000", "", "", 0, 0},
    {"combination step, 10 combinations", "BM_CombinationStep", "BM_TwoPartStrokeEnds/manual_time",
     "< 2 us on top", 2, 0},
    {"two parts trained, 2 threads vs 1", "BM_CombinationTrainingToFinish/2/iterations:1/repeats:5/manual_time_median",
     "BM_CombinationTrainingToFinish/1/iterations:1/repeats:5/manual_time_median", "ratio close to 0.5", 0, 0.6},
};

double toMicroseconds(double value, const std::string& unit) {
  if (unit == "ns") return value / 1000.0;
  if (unit == "ms") return value * 1000.0;
  if (unit == "s") return value * 1e6;
  return value;
}

std::string showTime(double us) {
  if (us < 1.0) return fmt::format("{:.0f} ns", us * 1000.0);
  if (us < 1000.0) return fmt::format("{:.1f} us", us);
  return fmt::format("{:.1f} ms", us / 1000.0);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: zando_bench_summary BENCHMARK.json\n");
    return 2;
  }
  std::ifstream in(argv[1]);
  nlohmann::json results;
  try {
    in >> results;
  } catch (const std::exception& e) {
    std::fprintf(stderr, "zando_bench_summary: cannot read %s: %s\n", argv[1], e.what());
    return 1;
  }
  std::map<std::string, double> times;
  const nlohmann::json* stages = nullptr;
  std::vector<const nlohmann::json*> detections;
  for (const auto& entry : results["benchmarks"]) {
    if (entry["name"].get<std::string>().rfind("BM_ContdIdentifyStages", 0) == 0) stages = &entry;
    if (entry["name"].get<std::string>().rfind("BM_ContdDetect/", 0) == 0) detections.push_back(&entry);
    if (entry.contains("error_occurred") && entry["error_occurred"].get<bool>()) continue;
    // Frame-loop figures carry the median of their calls, which one preemption does not move.
    times[entry["name"].get<std::string>()] =
        entry.contains("median_us")
            ? entry["median_us"].get<double>()
            : toMicroseconds(entry["real_time"].get<double>(), entry["time_unit"].get<std::string>());
  }
  fmt::print("| figure | measured | reference | ratio | target | met |\n|---|---|---|---|---|---|\n");
  for (const Row& row : kRows) {
    const auto figure = times.find(row.figure);
    if (figure == times.end()) continue;
    const auto reference = row.reference[0] != '\0' ? times.find(row.reference) : times.end();
    const bool hasReference = reference != times.end();
    const double ratio = hasReference ? figure->second / reference->second : NAN;
    std::string met = "";
    if (row.limit > 0 || row.ratioLimit > 0) {
      const bool figureMet = row.limit <= 0 || figure->second <= row.limit;
      if (row.ratioLimit <= 0 || !std::isnan(ratio)) {
        met = figureMet && (row.ratioLimit <= 0 || ratio <= row.ratioLimit) ? "yes" : "no";
      }
    }
    fmt::print("| {} | {} | {} | {} | {} | {} |\n", row.what, showTime(figure->second),
               hasReference ? showTime(reference->second) : "", hasReference ? fmt::format("{:.2f}", ratio) : "",
               row.target, met);
  }
  if (stages != nullptr) {
    // Where a frame's continuous identification goes, stage by stage (medians of the frames).
    const char* names[] = {"prune_us", "extraction_us", "network_us", "similarity_us"};
    double total = 0.0;
    for (const char* name : names) total += stages->value(name, 0.0);
    std::string line;
    for (const char* name : names) {
      const double value = stages->value(name, 0.0);
      line += fmt::format("{}{} {} ({:.0f} %)", line.empty() ? "" : ", ", std::string(name, std::strlen(name) - 3),
                          showTime(value), total > 0 ? 100.0 * value / total : 0.0);
    }
    fmt::print("\ncontdIdentify in the frame loop, by stage: {}\n", line);
  }
  for (const nlohmann::json* entry : detections) {
    // The frames of motion and of rest apart, the slow end of the frames, and what was detected.
    if (entry->contains("error_occurred") && (*entry)["error_occurred"].get<bool>()) continue;
    const bool enhanced = (*entry)["name"].get<std::string>().rfind("BM_ContdDetect/1", 0) == 0;
    fmt::print("\ncontdDetect in the frame loop, {} mode: motion {}, rest {} (medians), 95th percentile {}, first call {}; "
               "{:.0f} of {:.0f} performances detected, {:.0f} rightly\n",
               enhanced ? "enhanced" : "plain", showTime(entry->value("moving_median_us", 0.0)),
               showTime(entry->value("resting_median_us", 0.0)), showTime(entry->value("p95_us", 0.0)),
               showTime(entry->value("first_call_us", 0.0)), entry->value("detections", 0.0),
               entry->value("performances", 0.0), entry->value("right_detections", 0.0));
  }
  return 0;
}
