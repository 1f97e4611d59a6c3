// The `zando` program as a developer runs it: usage and errors, and the round of a small
// recording through train, info, eval (also on streams) and plot; also a combination file.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cmath>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "../scratch_files.h"
#include "zando/zando.h"

namespace {

using zando::testing_support::readFile;
using zando::testing_support::scratchPath;

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

// Three gestures (circle, swipe, zigzag) by two subjects, four repetitions each; the second
// subject's rows carry hand rotations and head poses.
std::string writeRecording(const std::string& name) {
  const std::string path = scratchPath(name);
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
  Outcome usage = run("");
  EXPECT_EQ(usage.exitCode, 0);
  EXPECT_NE(usage.output.find("info"), std::string::npos);
  EXPECT_EQ(run("--help").exitCode, 0);
  const Outcome bad = run("frobnicate");
  EXPECT_EQ(bad.exitCode, 2);
  EXPECT_EQ(std::count(bad.output.begin(), bad.output.end(), '\n'), 1);
  EXPECT_EQ(run("train data.csv").exitCode, 2);  // no output named
  EXPECT_EQ(run("eval data.csv --trials 0").exitCode, 2);

  const Outcome missing = run("info " + scratchPath("no-such-file"));
  EXPECT_EQ(missing.exitCode, 1);
  EXPECT_NE(missing.output.find("cannot open"), std::string::npos);
  const std::string damaged = scratchPath("damaged.dat");
  std::ofstream(damaged) << "#18\n7.5\n";
  const Outcome broken = run("info " + damaged);
  EXPECT_EQ(broken.exitCode, 1);
  EXPECT_NE(broken.output.find("-4 (ReturnCode_InvalidFile)"), std::string::npos);

  const std::string csv = scratchPath("short.csv");
  std::ofstream(csv) << "subject,gesture,repetition,point_index,x,y,t\n1,a,0,0,0,0,0\n";
  EXPECT_NE(run("train " + csv + " -o " + damaged).output.find("no 'z' column"), std::string::npos);
  std::ofstream(csv) << "subject,gesture,repetition,point_index,x,y,z,t\n1,a,0,0,0,zero,0,0\n";
  const Outcome notNumber = run("train " + csv + " -o " + damaged);
  EXPECT_EQ(notNumber.exitCode, 1);
  EXPECT_NE(notNumber.output.find(":2: 'zero' is not a number"), std::string::npos);
  std::remove(damaged.c_str());
  std::remove(csv.c_str());
}

TEST(CommandLineTest, ARecordingTrainsAndIsDescribedEvaluatedAndDrawn) {
  const std::string csv = writeRecording("gestures.csv");
  const std::string set = scratchPath("gestures.dat");
  const Outcome trained = run("train " + csv + " -o " + set + " --seconds 1 --param 1=20 --param 6=0");
  ASSERT_EQ(trained.exitCode, 0) << trained.output;
  EXPECT_NE(trained.output.find("24 samples of 3 gestures from 2 subjects"), std::string::npos);
  EXPECT_NE(trained.output.find("training done"), std::string::npos);  // plain lines off a terminal

  const Outcome info = run("info " + set);
  ASSERT_EQ(info.exitCode, 0) << info.output;
  EXPECT_NE(info.output.find("format version      18"), std::string::npos);
  EXPECT_NE(info.output.find("swipe"), std::string::npos);
  EXPECT_NE(info.output.find(" 8  yes"), std::string::npos);  // eight samples, enabled
  EXPECT_NE(info.output.find("-> 3,"), std::string::npos);     // three outputs

  const Outcome eval =
      run("eval " + csv + " --train-per-class 2 --trials 2 --seconds 1 --json --jobs 2 --perturb-jitter 0.004");
  ASSERT_EQ(eval.exitCode, 0) << eval.output;
  EXPECT_NE(eval.output.find("\"jitter\": 0.004"), std::string::npos);
  EXPECT_NE(eval.output.find("\"per_trial\""), std::string::npos);
  EXPECT_NE(eval.output.find("\"confusion\""), std::string::npos);
  const Outcome byUser = run("eval " + csv + " --train-per-class 2 --trials 1 --seconds 1 --by-subject");
  ASSERT_EQ(byUser.exitCode, 0) << byUser.output;
  EXPECT_NE(byUser.output.find("new user"), std::string::npos);
  EXPECT_NE(byUser.output.find("2 trainings"), std::string::npos);  // one for each left-out subject

  // A folder: each recording in it (not other files) at each training size, in one table.
  const std::filesystem::path folder = scratchPath("recordings");
  std::filesystem::create_directories(folder);
  for (const char* name : {"b.csv", "a.csv"}) std::filesystem::copy_file(csv, folder / name);
  std::ofstream(folder / "notes.txt") << "not a recording\n";
  const Outcome table = run("eval " + folder.string() + " --train-per-class 2,3 --trials 1 --seconds 1 --enhanced");
  ASSERT_EQ(table.exitCode, 0) << table.output;
  const size_t a = table.output.find("a.csv"), b = table.output.find("b.csv"), pooled = table.output.find("pooled");
  EXPECT_TRUE(a < b && b < pooled && pooled != std::string::npos) << table.output;
  EXPECT_NE(table.output.find("T = 3"), std::string::npos);
  EXPECT_EQ(table.output.find("notes"), std::string::npos);
  std::filesystem::remove_all(folder);

  const std::string svg = scratchPath("gestures.svg");
  ASSERT_EQ(run("plot " + set + " -o " + svg).exitCode, 0);
  const std::string picture = readFile(svg);
  EXPECT_EQ(picture.rfind("<svg", 0), 0u);
  size_t lines = 0;
  for (size_t at = picture.find("<polyline"); at != std::string::npos; at = picture.find("<polyline", at + 1)) ++lines;
  EXPECT_GE(lines, 3u * 4u * 8u);  // every sample in each of the four views
  // Features of positions: a fourth view shows the mean in the samples' normalised frame.
  EXPECT_NE(picture.find("normalised, with the mean"), std::string::npos);
  EXPECT_NE(picture.find("stroke=\"#d2452b\""), std::string::npos);
  EXPECT_EQ(run("plot " + csv + " --gesture nothing -o " + svg).exitCode, 1);
  for (const std::string& path : {csv, set, svg}) std::remove(path.c_str());
}

TEST(CommandLineTest, ContinuousEvaluationPlaysStreamsForOneAndTwoHands) {
  const std::string csv = writeRecording("stream.csv");
  // Three gestures: one stays untrained in each trial, so each subject's stream holds two held-out
  // samples of each of the other two.
  const Outcome json =
      run("eval " + csv + " --continuous --train-per-class 2 --trials 1 --seconds 1 --sensitivity 0.25 --json");
  ASSERT_EQ(json.exitCode, 0) << json.output;
  EXPECT_EQ(json.output.front(), '{');
  EXPECT_EQ(json.output.substr(json.output.size() - 2), "}\n");
  for (const char* key : {"\"samples\": 8", "\"detections\"", "\"false_alarms\"", "\"misses\"", "\"precision\"",
                          "\"recall\"", "\"f1\"", "\"false_alarms_per_minute\"", "\"delay_seconds\"",
                          "\"detect_call_us\"", "\"p95\"", "\"between_gestures\"", "\"sensitivity\": 0.25"}) {
    EXPECT_NE(json.output.find(key), std::string::npos) << key;
  }
  const Outcome hands = run("eval " + csv +
                            " --continuous --hands 2 --speed-range 0.5,2 --fps 60 --by-subject --train-per-class 2"
                            " --trials 1 --seconds 1 --jobs 2");
  ASSERT_EQ(hands.exitCode, 0) << hands.output;
  for (const char* figure : {"two hands", "new user", "false alarms", "per minute", "precision", "recall", "F1",
                             "delay", "contdDetect"}) {
    EXPECT_NE(hands.output.find(figure), std::string::npos) << figure;
  }
  EXPECT_EQ(run("eval " + csv + " --hands 2").exitCode, 2);  // streams only
  EXPECT_EQ(run("eval " + csv + " --continuous --speed-range 2,0.5").exitCode, 2);
  EXPECT_EQ(run("eval " + csv + " --continuous --sensitivity 1.5").exitCode, 2);
  std::remove(csv.c_str());
}

TEST(CommandLineTest, CombinationFilesAreDescribed) {
  void* gco = GestureCombinations_create(2);
  GestureCombinations_createGesture(gco, 1, "wave", nullptr);
  const int k = GestureCombinations_createGestureCombination(gco, "right wave");
  GestureCombinations_setCombinationPartGesture(gco, k, 1, 0);
  const std::string path = scratchPath("hands.dat");
  ASSERT_EQ(GestureCombinations_saveToFile(gco, path.c_str()), 0);
  GestureCombinations_delete(gco);
  const Outcome info = run("info " + path);
  ASSERT_EQ(info.exitCode, 0) << info.output;
  EXPECT_NE(info.output.find("combination file, 2 parts"), std::string::npos);
  EXPECT_NE(info.output.find("right wave"), std::string::npos);
  EXPECT_NE(info.output.find("part 0: idle, part 1: wave"), std::string::npos);
  std::remove(path.c_str());
}

}  // namespace
