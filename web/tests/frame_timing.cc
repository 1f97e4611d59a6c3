// The native side of the page's timing: the same scripted workload as web/tests/workloads.js, on the
// sets that tests/exchange/file_exchange writes. `frame_timing STEM ROUNDS` prints one JSON line a
// mode: microseconds a frame (contdStrokeQ with contdIdentify, and with contdDetect) and for the
// identification at a stroke's end.
#include <zando/zando.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "probe_strokes.h"

namespace {

using probe_strokes::kGestures;
using probe_strokes::kPoints;
using probe_strokes::point;

double now() {
  return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: frame_timing STEM ROUNDS\n");
    return 2;
  }
  const int rounds = std::atoi(argv[2]);
  const double head[3] = {0.0, 1.7, 0.0};
  const double facing[4] = {0.0, 0.0, 0.0, 1.0};
  for (const char* mode : {"network", "enhanced"}) {
    void* gro = GestureRecognition_create();
    const std::string path = std::string(argv[1]) + "-" + mode + ".dat";
    if (GestureRecognition_loadFromFile(gro, path.c_str(), nullptr) != 0) {
      std::fprintf(stderr, "%s does not load\n", path.c_str());
      return 1;
    }
    double identifyFrames = 0, detectFrames = 0, ends = 0;
    int frameCount = 0, endCount = 0, correct = 0;
    for (int round = 0; round < rounds; ++round) {
      for (int probe = 0; probe < 3 * kGestures; ++probe) {
        const int gesture = probe % kGestures;
        double p[3], similarity = 0, confidence = 0;
        int detected = 0;
        for (int pass = 0; pass < 2; ++pass) {
          GestureRecognition_startStroke(gro, head, facing, -1);
          const double start = now();
          for (int i = 0; i < kPoints; ++i) {
            point(gesture, 1000 + probe, i, p);
            GestureRecognition_setHostTime(gro, (round * 100 + probe * 2 + pass) + i / 60.0);
            GestureRecognition_contdStrokeQ(gro, p, facing);
            if (pass == 0) GestureRecognition_contdIdentify(gro, head, facing, &similarity);
            else GestureRecognition_contdDetect(gro, head, facing, &detected, &confidence);
          }
          (pass == 0 ? identifyFrames : detectFrames) += now() - start;
          if (pass == 0) {
            double probabilities[kGestures], similarities[kGestures];
            int n = kGestures;
            const double end = now();
            const int got = GestureRecognition_endStrokeAndGetAllProbabilitiesAndSimilarities(
                gro, probabilities, similarities, &n, nullptr, nullptr, nullptr, nullptr, nullptr);
            ends += now() - end;
            ++endCount;
            correct += got == gesture;
          } else {
            GestureRecognition_cancelStroke(gro);
          }
        }
        frameCount += kPoints;
      }
    }
    std::printf("{\"mode\":\"%s\",\"frameIdentifyUs\":%.2f,\"frameDetectUs\":%.2f,\"endStrokeUs\":%.2f,\"correct\":%d,\"strokes\":%d}\n",
                mode, identifyFrames / frameCount, detectFrames / frameCount, ends / endCount, correct, endCount);
    GestureRecognition_delete(gro);
  }
  return 0;
}
