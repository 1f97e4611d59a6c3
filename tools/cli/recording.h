// Recording files: CSV with a header naming its columns, one row per tracked point, the rows of a
// sample contiguous. Columns: subject, gesture, repetition, point_index, x, y, z, t (a leading
// dataset column is ignored), optionally qx, qy, qz, qw (hand rotation) and hx, hy, hz, hqx, hqy,
// hqz, hqw (head pose; absent: at the origin, identity).
#ifndef ZANDO_TOOLS_CLI_RECORDING_H
#define ZANDO_TOOLS_CLI_RECORDING_H

#include <string>
#include <vector>

namespace cli {

struct Pose {
  double position[3] = {0.0, 0.0, 0.0};
  double rotation[4] = {0.0, 0.0, 0.0, 1.0};
};

struct Point {
  Pose hand;
  Pose head;
  double time = 0.0;  // milliseconds, from the `t` column
};

struct Sample {
  std::string subject;
  int gesture = 0;  // index into Recording::gestures
  std::string repetition;
  std::vector<Point> points;
};

struct Recording {
  std::vector<std::string> gestures;  // labels in first-seen order
  std::vector<std::string> subjects;  // in first-seen order
  std::vector<Sample> samples;
};

// Reads a recording; on failure returns false with a message naming the line.
bool readRecording(const std::string& path, Recording& recording, std::string& error);

// Records one sample into a recogniser through the stroke cycle, as a host would; the gesture
// index -1 identifies the stroke instead. Returns what the end of the stroke returned.
int performSample(void* recognizer, const Sample& sample, int gesture);

}  // namespace cli

#endif  // ZANDO_TOOLS_CLI_RECORDING_H
