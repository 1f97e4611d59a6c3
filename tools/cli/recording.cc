#include "recording.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>

#include <fmt/format.h>
#include <zando/zando.h>

namespace cli {

namespace {

std::vector<std::string> splitFields(const std::string& line) {
  std::vector<std::string> fields;
  std::string field;
  std::istringstream in(line);
  while (std::getline(in, field, ',')) {
    while (!field.empty() && (field.back() == '\r' || field.back() == ' ')) field.pop_back();
    while (!field.empty() && field.front() == ' ') field.erase(0, 1);
    fields.push_back(field);
  }
  if (!line.empty() && line.back() == ',') fields.emplace_back();
  return fields;
}

bool parseNumber(const std::string& text, double& value) {
  if (text.empty()) return false;
  char* end = nullptr;
  errno = 0;
  value = std::strtod(text.c_str(), &end);
  return end == text.c_str() + text.size() && errno == 0;
}

}  // namespace

bool readRecording(const std::string& path, Recording& recording, std::string& error) {
  std::ifstream in(path);
  if (!in.is_open()) {
    error = fmt::format("cannot open '{}'", path);
    return false;
  }
  std::string line;
  if (!std::getline(in, line)) {
    error = fmt::format("'{}' is empty", path);
    return false;
  }
  const std::vector<std::string> header = splitFields(line);
  std::map<std::string, size_t> column;
  for (size_t i = 0; i < header.size(); ++i) column[header[i]] = i;
  for (const char* required : {"subject", "gesture", "repetition", "point_index", "x", "y", "z", "t"}) {
    if (column.count(required) == 0) {
      error = fmt::format("{}:1: the header has no '{}' column", path, required);
      return false;
    }
  }
  const bool hasRotation = column.count("qx") && column.count("qy") && column.count("qz") && column.count("qw");
  const bool hasHead = column.count("hx") && column.count("hy") && column.count("hz") && column.count("hqx") &&
                       column.count("hqy") && column.count("hqz") && column.count("hqw");
  std::map<std::string, int> gestureIndex;
  std::map<std::string, bool> knownSubject;
  std::string lastKey;
  for (size_t lineNumber = 2; std::getline(in, line); ++lineNumber) {
    if (line.empty() || line == "\r") continue;
    const std::vector<std::string> fields = splitFields(line);
    if (fields.size() != header.size()) {
      error = fmt::format("{}:{}: {} fields where the header has {}", path, lineNumber, fields.size(), header.size());
      return false;
    }
    const auto number = [&](const char* name, double& value) {
      if (parseNumber(fields[column[name]], value)) return true;
      error = fmt::format("{}:{}: '{}' is not a number in column '{}'", path, lineNumber, fields[column[name]], name);
      return false;
    };
    Point point;
    if (!number("x", point.hand.position[0]) || !number("y", point.hand.position[1]) ||
        !number("z", point.hand.position[2]) || !number("t", point.time)) {
      return false;
    }
    if (hasRotation && (!number("qx", point.hand.rotation[0]) || !number("qy", point.hand.rotation[1]) ||
                        !number("qz", point.hand.rotation[2]) || !number("qw", point.hand.rotation[3]))) {
      return false;
    }
    if (hasHead && (!number("hx", point.head.position[0]) || !number("hy", point.head.position[1]) ||
                    !number("hz", point.head.position[2]) || !number("hqx", point.head.rotation[0]) ||
                    !number("hqy", point.head.rotation[1]) || !number("hqz", point.head.rotation[2]) ||
                    !number("hqw", point.head.rotation[3]))) {
      return false;
    }
    const std::string& subject = fields[column["subject"]];
    const std::string& label = fields[column["gesture"]];
    const std::string& repetition = fields[column["repetition"]];
    const std::string key = subject + '\n' + label + '\n' + repetition;
    if (recording.samples.empty() || key != lastKey) {
      const auto found = gestureIndex.find(label);
      int gesture = found != gestureIndex.end() ? found->second : static_cast<int>(recording.gestures.size());
      if (found == gestureIndex.end()) {
        gestureIndex[label] = gesture;
        recording.gestures.push_back(label);
      }
      if (!knownSubject[subject]) {
        knownSubject[subject] = true;
        recording.subjects.push_back(subject);
      }
      recording.samples.push_back(Sample{subject, gesture, repetition, {}});
      lastKey = key;
    }
    recording.samples.back().points.push_back(point);
  }
  if (recording.samples.empty()) {
    error = fmt::format("'{}' holds no samples", path);
    return false;
  }
  return true;
}

int performSample(void* recognizer, const Sample& sample, int gesture) {
  if (sample.points.empty()) return ReturnCode_StrokeTooShort;
  const Pose& head = sample.points.front().head;
  GestureRecognition_startStroke(recognizer, head.position, head.rotation, gesture);
  for (const Point& point : sample.points) {
    GestureRecognition_updateHeadPositionQ(recognizer, point.head.position, point.head.rotation);
    GestureRecognition_contdStrokeQ(recognizer, point.hand.position, point.hand.rotation);
  }
  return GestureRecognition_endStroke(recognizer, nullptr, nullptr, nullptr, nullptr, nullptr);
}

}  // namespace cli
