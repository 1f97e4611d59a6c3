// `zando info FILE`: what a gesture database or combination file holds.
#include <zip.h>

#include <cstdio>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <zando/zando.h>

#include "commands.h"

namespace cli {

namespace {

// The settings at the head of a gesture database text, as far as its version has them.
struct DatabaseHead {
  int version = 1;
  double score = 0.0;
  std::string frame = "000";
  std::string policy = "UpdateHeadPositionPolicy_UseLatest";
  long period = 1000, smoothing = 3;
  int waypointCount = 8, headerMode = 4, waypointMode = 0, flagC = 1, selector = 1, flagA = 0, flagB = 0;
  int transferMode = 0;
  double slope = 0.33333;
  std::vector<long> widths;  // feature count, then each layer's width
  bool complete = false;
};

bool readMember(zip_t* archive, const char* name, std::string& text) {
  zip_file_t* file = zip_fopen(archive, name, 0);
  if (file == nullptr) return false;
  char chunk[1 << 16];
  zip_int64_t got;
  while ((got = zip_fread(file, chunk, sizeof(chunk))) > 0) text.append(chunk, static_cast<size_t>(got));
  zip_fclose(file);
  return got == 0;
}

// The text of a member of the archive at path, or of the file itself when it is no archive.
std::string memberOrFile(const std::string& path, const char* member) {
  int error = 0;
  std::string text;
  if (zip_t* archive = zip_open(path.c_str(), ZIP_RDONLY, &error)) {
    readMember(archive, member, text);
    zip_discard(archive);
    return text;
  }
  std::ifstream in(path, std::ios::binary);
  std::ostringstream all;
  all << in.rdbuf();
  return all.str();
}

DatabaseHead readHead(const std::string& text) {
  DatabaseHead head;
  std::istringstream in(text);
  std::string line;
  const auto next = [&]() -> std::string {
    while (std::getline(in, line)) {
      while (!line.empty() && (line.back() == '\r' || line.back() == ' ')) line.pop_back();
      if (!line.empty()) return line;
    }
    return std::string();
  };
  std::string first = next();
  if (!first.empty() && first[0] == '#') {
    head.version = std::atoi(first.c_str() + 1);
    first = next();
  }
  head.score = std::atof(first.c_str());
  const int v = head.version;
  if (v >= 3) head.frame = next();
  if (v >= 17) head.policy = next();
  if (v >= 18) {
    head.period = std::atol(next().c_str());
    head.smoothing = std::atol(next().c_str());
  }
  next();  // feature scales
  const long layers = std::atol(next().c_str());
  if (v >= 2) head.waypointCount = std::atoi(next().c_str());
  if (v >= 12) head.headerMode = std::atoi(next().c_str());
  if (v >= 4) head.waypointMode = std::atoi(next().c_str());
  if (v >= 7) head.flagC = std::atoi(next().c_str());
  if (v >= 6) head.selector = std::atoi(next().c_str());
  if (v >= 10) head.flagA = std::atoi(next().c_str());
  if (v >= 11) head.flagB = std::atoi(next().c_str());
  if (v >= 15) {
    head.transferMode = std::atoi(next().c_str());
    head.slope = std::atof(next().c_str());
  }
  const int base = head.headerMode == 4 ? 10 : head.headerMode == 2 ? 8 : head.headerMode == 1 ? 7 : 4;
  const int per = head.waypointMode == 4 ? 9 : head.waypointMode == 2 ? 7 : head.waypointMode == 1 ? 6 : 3;
  long width = base + static_cast<long>(head.waypointCount) * per;
  head.widths.push_back(width);
  for (long layer = 0; layer < layers && layer < 5; ++layer) {
    const long columns = std::atol(next().c_str());
    for (long row = 0; row <= width; ++row) next();  // one row per input and the bias
    head.widths.push_back(columns);
    width = columns;
  }
  head.complete = true;
  return head;
}

long metadataSize(void* metadata) {
  return metadata == nullptr ? -1 : GestureRecognition_getDefaultMetadataSize(metadata);
}

std::string metadataText(long size) { return size < 0 ? "-" : fmt::format("{} bytes", size); }

void printSettings(const DatabaseHead& head, const char* indent) {
  const char* orders[] = {"XYZ", "XZY", "YXZ", "YZX", "ZXY", "ZYX"};
  const int order = head.frame.size() >= 4 ? head.frame[3] - '0' : 2;
  const auto flag = [&](size_t i) { return head.frame.size() > i && head.frame[i] == '1' ? "yes" : "no"; };
  fmt::print("{}format version      {}\n", indent, head.version);
  fmt::print("{}recognition score   {:.1f} %\n", indent, 100.0 * head.score);
  fmt::print("{}head rotation       ignored about X {}, Y {}, Z {}; Euler order {}\n", indent, flag(0), flag(1),
             flag(2), order >= 0 && order < 6 ? orders[order] : "YXZ");
  fmt::print("{}head position       {}\n", indent, head.policy.substr(head.policy.find('_') + 1));
  fmt::print("{}continuous          window {} ms, smoothing over {} results\n", indent, head.period, head.smoothing);
  fmt::print("{}features            {} per stroke: {} waypoints (mode {}), header mode {}, selector {}, "
             "flags A {} B {} C {}\n",
             indent, head.widths.front(), head.waypointCount, head.waypointMode, head.headerMode, head.selector,
             head.flagA, head.flagB, head.flagC);
  if (head.widths.size() < 2) {
    fmt::print("{}network             none yet (the set is not trained)\n", indent);
    return;
  }
  std::string shape;
  for (size_t i = 0; i < head.widths.size(); ++i) shape += (i > 0 ? " -> " : "") + std::to_string(head.widths[i]);
  fmt::print("{}network             {}, {} transfer (slope {:g})\n", indent, shape,
             head.transferMode == 1 ? "tanh" : "logistic", head.slope);
}

void printGestures(const char* indent, int count, const std::function<std::string(int)>& name,
                   const std::function<int(int)>& samples, const std::function<bool(int)>& enabled,
                   const std::function<long(int)>& metadata) {
  fmt::print("{}gestures            {}\n", indent, count);
  if (count == 0) return;
  fmt::print("{}  {:>3}  {:<24} {:>7}  {:<7}  {}\n", indent, "#", "name", "samples", "enabled", "metadata");
  for (int g = 0; g < count; ++g) {
    fmt::print("{}  {:>3}  {:<24} {:>7}  {:<7}  {}\n", indent, g, name(g), samples(g), enabled(g) ? "yes" : "no",
               metadataText(metadata(g)));
  }
}

int describeDatabase(const std::string& path, void* gro) {
  fmt::print("{}: gesture database\n", path);
  printSettings(readHead(memberOrFile(path, "nn.txt")), "  ");
  fmt::print("  metadata            {}\n", metadataText(metadataSize(GestureRecognition_getMetadata(gro))));
  printGestures(
      "  ", GestureRecognition_numberOfGestures(gro),
      [&](int g) { return std::string(GestureRecognition_getGestureName(gro, g)); },
      [&](int g) { return GestureRecognition_getGestureNumberOfSamples(gro, g); },
      [&](int g) { return GestureRecognition_getGestureEnabled(gro, g) != 0; },
      [&](int g) { return metadataSize(GestureRecognition_getGestureMetadata(gro, g)); });
  return 0;
}

int describeCombinations(const std::string& path, void* gco) {
  const int parts = GestureCombinations_numberOfParts(gco);
  fmt::print("{}: combination file, {} parts\n", path, parts);
  fmt::print("  combinations score  {:.1f} %\n", 100.0 * GestureCombinations_recognitionScore(gco));
  fmt::print("  metadata            {}\n", metadataText(metadataSize(GestureCombinations_getMetadata(gco))));
  for (int part = 0; part < parts; ++part) {
    fmt::print("  part {}{}\n", part, GestureCombinations_getPartEnabled(gco, part) ? "" : " (disabled)");
    char member[32];
    std::snprintf(member, sizeof(member), "part_%2i.txt", part);
    printSettings(readHead(memberOrFile(path, member)), "    ");
    printGestures(
        "    ", GestureCombinations_numberOfGestures(gco, part),
        [&](int g) { return std::string(GestureCombinations_getGestureName(gco, part, g)); },
        [&](int g) { return GestureCombinations_getGestureNumberOfSamples(gco, part, g); },
        [&](int g) { return GestureCombinations_getGestureEnabled(gco, part, g) != 0; },
        [&](int g) { return metadataSize(GestureCombinations_getGestureMetadata(gco, part, g)); });
  }
  const int count = GestureCombinations_numberOfGestureCombinations(gco);
  fmt::print("  combinations        {}\n", count);
  for (int k = 0; k < count; ++k) {
    std::string wanted;
    for (int part = 0; part < parts; ++part) {
      const int g = GestureCombinations_getCombinationPartGesture(gco, k, part);
      const char* name = g >= 0 ? GestureCombinations_getGestureName(gco, part, g) : nullptr;
      wanted += fmt::format("{}part {}: {}", part > 0 ? ", " : "", part, g < 0 ? "idle" : (name ? name : "?"));
    }
    fmt::print("    {:>3}  {:<24} {}  metadata {}\n", k, GestureCombinations_getGestureCombinationName(gco, k), wanted,
               metadataText(metadataSize(GestureCombinations_getGestureCombinationMetadata(gco, k))));
  }
  return 0;
}

}  // namespace

int storedFeatureSelector(const std::string& path) { return readHead(memberOrFile(path, "nn.txt")).selector; }

int runInfo(const std::string& path) {
  if (std::FILE* file = std::fopen(path.c_str(), "rb")) {
    std::fclose(file);
  } else {
    fmt::print(stderr, "zando: cannot open '{}'\n", path);
    return 1;
  }
  const auto creator = GestureRecognition_getDefaultMetadataCreatorFunction();
  void* gro = GestureRecognition_create();
  const int loaded = GestureRecognition_loadFromFile(gro, path.c_str(), creator);
  if (loaded == 0) {
    const int result = describeDatabase(path, gro);
    GestureRecognition_delete(gro);
    return result;
  }
  GestureRecognition_delete(gro);
  void* gco = GestureCombinations_create(1);
  const int combined = GestureCombinations_loadFromFile(gco, path.c_str(), creator);
  if (combined == 0) {
    const int result = describeCombinations(path, gco);
    GestureCombinations_delete(gco);
    return result;
  }
  GestureCombinations_delete(gco);
  // A combination archive explains itself better by the combination reader's answer.
  const bool combinationArchive = !memberOrFile(path, "combinations.txt").empty() &&
                                  memberOrFile(path, "nn.txt").empty();
  const int code = combinationArchive ? combined : loaded;
  fmt::print(stderr, "zando: '{}' does not load: {} ({})\n", path, code, returnCodeName(code));
  return 1;
}

}  // namespace cli
