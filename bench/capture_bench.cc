// The per-frame capture call, through the flat function as a host calls it.
#include <benchmark/benchmark.h>

#include <cmath>

#include "zando/zando.h"

namespace {

void BM_ContdStrokeQ(benchmark::State& state) {
  void* gro = GestureRecognition_create();
  const double head[3] = {0.0, 1.7, 0.0};
  const double facing[4] = {0.0, 0.0, 0.0, 1.0};
  double hand[3] = {0.0, 1.5, 0.4};
  const double rotation[4] = {0.0, 0.19509032201612825, 0.0, 0.9807852804032304};
  GestureRecognition_startStroke(gro, head, facing, -1);
  int frame = 0;
  for (auto _ : state) {
    hand[0] = 0.001 * (frame & 255);
    benchmark::DoNotOptimize(GestureRecognition_contdStrokeQ(gro, hand, rotation));
    // A host ends its strokes; a restart keeps the capacity, so steady capture stops allocating.
    if (++frame == 4096) {
      frame = 0;
      GestureRecognition_startStroke(gro, head, facing, -1);
    }
  }
  GestureRecognition_delete(gro);
}
BENCHMARK(BM_ContdStrokeQ);

}  // namespace
