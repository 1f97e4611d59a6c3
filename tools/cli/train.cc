// `zando train DATA.csv -o FILE`: a set recorded from a recording file, trained offline and saved,
// as a game ships a pre-trained set.
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>

#include <fmt/format.h>
#include <zando/zando.h>

#include "commands.h"
#include "recording.h"

namespace cli {

namespace {

std::atomic<double> bestScore{0.0};
void onUpdate(double score, void*) {
  if (score > bestScore.load()) bestScore.store(score);
}

}  // namespace

Progress::Progress(std::string label) : label_(std::move(label)), terminal_(isatty(fileno(stdout)) != 0) {}

void Progress::update(double fraction, const std::string& detail) {
  fraction = fraction < 0.0 ? 0.0 : fraction > 1.0 ? 1.0 : fraction;
  if (terminal_) {
    const int width = 30;
    const int filled = static_cast<int>(width * fraction);
    fmt::print("\r{} [{}{}] {}", label_, std::string(static_cast<size_t>(filled), '#'),
               std::string(static_cast<size_t>(width - filled), '.'), detail);
    std::fflush(stdout);
    return;
  }
  // Off a terminal (a log, a pipe): a plain line at every tenth of the way.
  const int tenth = static_cast<int>(fraction * 10);
  if (tenth == lastTenth_) return;
  lastTenth_ = tenth;
  fmt::print("{} {:3d}% {}\n", label_, tenth * 10, detail);
}

void Progress::finish(const std::string& detail) {
  if (terminal_) {
    update(1.0, detail);
    fmt::print("\n");
  } else {
    fmt::print("{} done {}\n", label_, detail);
  }
}

int runTrain(const TrainOptions& options) {
  Recording recording;
  std::string error;
  if (!readRecording(options.recording, recording, error)) {
    fmt::print(stderr, "zando: {}\n", error);
    return 1;
  }
  void* gro = GestureRecognition_create();
  for (const std::string& name : recording.gestures) GestureRecognition_createGesture(gro, name.c_str(), nullptr);
  int recorded = 0;
  for (const Sample& sample : recording.samples) recorded += performSample(gro, sample, sample.gesture) >= 0;
  fmt::print("{}: {} samples of {} gestures from {} subjects ({} recorded)\n", options.recording,
             recording.samples.size(), recording.gestures.size(), recording.subjects.size(), recorded);
  for (const auto& [id, value] : options.parameters) {
    if (GestureRecognition_setTrainingParameter(gro, id, value) != 0) {
      fmt::print(stderr, "zando: training parameter {} cannot be set\n", id);
      GestureRecognition_delete(gro);
      return 2;
    }
  }
  std::atomic<bool> done{false};
  GestureRecognition_setMaxTrainingTime(gro, options.seconds);
  GestureRecognition_setTrainingUpdateCallback(gro, &onUpdate);
  GestureRecognition_setTrainingFinishCallback(gro, &markDone);
  GestureRecognition_setTrainingFinishCallbackMetadata(gro, &done);
  const int started = GestureRecognition_startTraining(gro);
  if (started != 0) {
    fmt::print(stderr, "zando: training does not start: {} ({})\n", started, returnCodeName(started));
    GestureRecognition_delete(gro);
    return 1;
  }
  Progress progress("training");
  const auto begin = std::chrono::steady_clock::now();
  const auto elapsed = [&] { return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count(); };
  while (!done.load()) {
    progress.update(elapsed() / options.seconds,
                    fmt::format("{:5.1f} / {} s  best score {:5.1f} %", elapsed(), options.seconds, 100 * bestScore.load()));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  const double score = GestureRecognition_recognitionScore(gro);
  progress.finish(fmt::format("{:5.1f} / {} s  score {:5.1f} %", elapsed(), options.seconds, 100 * score));
  const int saved = GestureRecognition_saveToFile(gro, options.output.c_str());
  GestureRecognition_delete(gro);
  if (saved != 0) {
    fmt::print(stderr, "zando: cannot save '{}': {} ({})\n", options.output, saved, returnCodeName(saved));
    return 1;
  }
  fmt::print("saved {}\n", options.output);
  return 0;
}

}  // namespace cli
