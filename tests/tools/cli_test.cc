// The `zando` program as a developer runs it: usage and errors, and the round of a small
// recording through train, info, eval (also on streams) and plot; also a combination file.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cmath>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <string>

#include "../scratch_files.h"
#include "zando/zando.h"

namespace {

using zando::testing_support::readFile;
using zando::testing_support::scratchPath;
using zando::testing_support::ScratchFiles;

struct Outcome {
  int exitCode;
  std::string output;  // standard output and error together
};

Outcome run(const std::string& arguments) {
  const std::string command = std::string(ZANDO_TOOL) + " " + arguments + " 2>&1";
  Outcome result{-1, ""};
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return result;
  char buffer[4096];
  size_t got;
  while ((got = fread(buffer, 1, sizeof(buffer), pipe)) > 0) result.output.append(buffer, got);
  const int status = pclose(pipe);
  result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return result;
}

// Each of `parts` somewhere in the output.
void expectMentions(const std::string& output, std::initializer_list<const char*> parts) {
  for (const char* part : parts) EXPECT_NE(output.find(part), std::string::npos) << part;
}

// Runs `arguments`, expecting `exitCode` and each of `parts` in the output.
Outcome expectRun(const std::string& arguments, int exitCode, std::initializer_list<const char*> parts = {}) {
  Outcome outcome = run(arguments);
  EXPECT_EQ(outcome.exitCode, exitCode) << outcome.output;
  expectMentions(outcome.output, parts);
  return outcome;
}

// Three gestures (circle, swipe, zigzag) by two subjects, four repetitions each; the second
// subject's rows carry hand rotations and head poses. Written to `path`, which it returns.
std::string writeRecording(const std::string& path) {
  std::ofstream out(path);
  out << "dataset,subject,gesture,repetition,point_index,x,y,z,t,qx,qy,qz,qw,hx,hy,hz,hqx,hqy,hqz,hqw\n";
  const char* labels[3] = {"circle", "swipe", "zigzag"};
  for (int subject = 1; subject <= 2; ++subject) {
    for (int g = 0; g < 3; ++g) {
      for (int r = 0; r < 4; ++r) {
        for (int i = 0; i < 30; ++i) {
          const double t = i / 29.0, size = 0.2 + 0.01 * r;
          double x = 0, y = 0;
          if (g == 0) { x = std::cos(6.283 * t); y = std::sin(6.283 * t); }
          if (g == 1) { x = -1 + 2 * t; y = 0.1 * std::sin(3.14 * t); }
          if (g == 2) { x = 0.3 * std::sin(18.85 * t); y = 1 - 2 * t; }
          out << "test," << subject << "," << labels[g] << "," << r << "," << i << "," << size * x << ","
              << 1.4 + size * y << ",0.4," << 11 * i << ",0,0,0,1,0,1.7,0,0,0,0,1\n";
        }
      }
    }
  }
  return path;
}

TEST(CommandLineTest, UsageAndErrorsAreClear) {
  ScratchFiles scratch;
  expectRun("", 0, {"info"});
  EXPECT_EQ(run("--help").exitCode, 0);
  const Outcome bad = expectRun("frobnicate", 2);
  EXPECT_EQ(std::count(bad.output.begin(), bad.output.end(), '\n'), 1);
  // No output named; no trials.
  for (const char* wrong : {"train data.csv", "eval data.csv --trials 0"}) EXPECT_EQ(run(wrong).exitCode, 2) << wrong;

  expectRun("info " + scratchPath("no-such-file"), 1, {"cannot open"});
  const std::string damaged = scratch("damaged.dat");
  std::ofstream(damaged) << "#18\n7.5\n";
  expectRun("info " + damaged, 1, {"-4 (ReturnCode_InvalidFile)"});

  const std::string csv = scratch("short.csv");
  std::ofstream(csv) << "subject,gesture,repetition,point_index,x,y,t\n1,a,0,0,0,0,0\n";
  EXPECT_NE(run("train " + csv + " -o " + damaged).output.find("no 'z' column"), std::string::npos);
  std::ofstream(csv) << "subject,gesture,repetition,point_index,x,y,z,t\n1,a,0,0,0,zero,0,0\n";
  expectRun("train " + csv + " -o " + damaged, 1, {":2: 'zero' is not a number"});
}

TEST(CommandLineTest, ARecordingTrainsAndIsDescribedEvaluatedAndDrawn) {
  ScratchFiles scratch;
  const std::string csv = writeRecording(scratch("gestures.csv")), set = scratch("gestures.dat");
  // Plain lines off a terminal.
  expectRun("train " + csv + " -o " + set + " --seconds 1 --param 1=20 --param 6=0", 0,
            {"24 samples of 3 gestures from 2 subjects", "training done"});
  // Eight samples, enabled; three outputs.
  expectRun("info " + set, 0, {"format version      18", "swipe", " 8  yes", "-> 3,"});
  expectRun("eval " + csv + " --train-per-class 2 --trials 2 --seconds 1 --json --jobs 2 --perturb-jitter 0.004", 0,
            {"\"jitter\": 0.004", "\"per_trial\"", "\"confusion\""});
  // One training for each left-out subject.
  expectRun("eval " + csv + " --train-per-class 2 --trials 1 --seconds 1 --by-subject", 0, {"new user", "2 trainings"});

  // A folder: each recording in it (not other files) at each training size, in one table.
  const std::filesystem::path folder = scratch("recordings");
  std::filesystem::create_directories(folder);
  for (const char* name : {"b.csv", "a.csv"}) std::filesystem::copy_file(csv, folder / name);
  std::ofstream(folder / "notes.txt") << "not a recording\n";
  const Outcome table =
      expectRun("eval " + folder.string() + " --train-per-class 2,3 --trials 1 --seconds 1 --enhanced", 0, {"T = 3"});
  const size_t a = table.output.find("a.csv"), b = table.output.find("b.csv"), pooled = table.output.find("pooled");
  EXPECT_TRUE(a < b && b < pooled && pooled != std::string::npos) << table.output;
  EXPECT_EQ(table.output.find("notes"), std::string::npos);

  const std::string svg = scratch("gestures.svg");
  ASSERT_EQ(run("plot " + set + " -o " + svg).exitCode, 0);
  const std::string picture = readFile(svg);
  EXPECT_EQ(picture.rfind("<svg", 0), 0u);
  size_t lines = 0;
  for (size_t at = picture.find("<polyline"); at != std::string::npos; at = picture.find("<polyline", at + 1)) ++lines;
  EXPECT_GE(lines, 3u * 4u * 8u);  // every sample in each of the four views
  // Features of positions: a fourth view shows the mean in the samples' normalised frame.
  expectMentions(picture, {"normalised, with the mean", "stroke=\"#d2452b\""});
  EXPECT_EQ(run("plot " + csv + " --gesture nothing -o " + svg).exitCode, 1);
}

TEST(CommandLineTest, ContinuousEvaluationPlaysStreamsForOneAndTwoHands) {
  ScratchFiles scratch;
  const std::string csv = writeRecording(scratch("stream.csv"));
  // Three gestures: one stays untrained in each trial, so each subject's stream holds two held-out
  // samples of each of the other two.
  const Outcome json =
      expectRun("eval " + csv + " --continuous --train-per-class 2 --trials 1 --seconds 1 --sensitivity 0.25 --json", 0,
                {"\"samples\": 8", "\"detections\"", "\"false_alarms\"", "\"misses\"", "\"precision\"", "\"recall\"",
                 "\"f1\"", "\"false_alarms_per_minute\"", "\"delay_seconds\"", "\"detect_call_us\"", "\"p95\"",
                 "\"between_gestures\"", "\"sensitivity\": 0.25"});
  ASSERT_GE(json.output.size(), 2u);
  EXPECT_EQ(json.output.front(), '{');
  EXPECT_EQ(json.output.substr(json.output.size() - 2), "}\n");
  expectRun("eval " + csv +
                " --continuous --hands 2 --speed-range 0.5,2 --fps 60 --by-subject --train-per-class 2"
                " --trials 1 --seconds 1 --jobs 2",
            0, {"two hands", "new user", "false alarms", "per minute", "precision", "recall", "F1", "delay",
                "contdDetect"});
  // Two hands are for streams only; a speed range runs upward; a sensitivity lies in [0, 1].
  for (const char* wrong : {" --hands 2", " --continuous --speed-range 2,0.5", " --continuous --sensitivity 1.5"}) {
    EXPECT_EQ(run("eval " + csv + wrong).exitCode, 2) << wrong;
  }
}

TEST(CommandLineTest, CombinationFilesAreDescribed) {
  void* gco = GestureCombinations_create(2);
  GestureCombinations_createGesture(gco, 1, "wave", nullptr);
  const int k = GestureCombinations_createGestureCombination(gco, "right wave");
  GestureCombinations_setCombinationPartGesture(gco, k, 1, 0);
  ScratchFiles scratch;
  const std::string path = scratch("hands.dat");
  ASSERT_EQ(GestureCombinations_saveToFile(gco, path.c_str()), 0);
  GestureCombinations_delete(gco);
  expectRun("info " + path, 0, {"combination file, 2 parts", "right wave", "part 0: idle, part 1: wave"});
}

}  // namespace
