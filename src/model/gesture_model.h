// What a recogniser has learned: gestures and samples, feature settings, the network's weights,
// the per-gesture statistics and the figures of the last training.
#ifndef ZANDO_MODEL_GESTURE_MODEL_H
#define ZANDO_MODEL_GESTURE_MODEL_H

#include <atomic>
#include <cstdint>
#include <limits>
#include <memory>
#include <mutex>
#include <vector>

#include <Eigen/Core>

#include "features/model_parameters.h"
#include "model/gesture.h"
#include "zando/zando.h"

namespace zando {

using Matrix = Eigen::MatrixXd;
struct SampleChoice;

// Progress of the file reader or writer, in percent, with the context it was installed with.
typedef void (*ProgressHook)(int percent, void* context);

struct GestureModel {
  IGestureRecognition::Metadata* metadata = nullptr;  // of the whole set; the host's
  ModelParameters parameters;
  double trainingCost = std::numeric_limits<double>::max();
  double validationCost = std::numeric_limits<double>::max();
  // The host may read the score at any time, also while a training run stores its result.
  std::atomic<double> recognitionScore{0.0};
  std::vector<Matrix> weights;       // W[0] .. W[L-1]; row 0 holds the biases
  std::vector<Matrix> layerBuffers;  // A[0] .. A[L], one row, mutable even while identifying
  std::vector<std::vector<double>> gestureMeans;
  std::vector<std::vector<double>> gestureDeviations;  // variances, despite the name
  std::vector<Gesture*> gestures;                      // owned
  bool networkInvalid = true;  // set: identify by comparison with stored samples
  // The enhanced recognition mode: identify by the shape of every stored sample (shape matching).
  // A background load sets it while the host may read it.
  std::atomic<bool> enhancedRecognition{false};
  // How willing continuous detection is to report (0 to 1); travels in files when not 0.5.
  std::atomic<double> detectionSensitivity{0.5};
  ProgressHook saveProgress = nullptr;
  void* saveProgressContext = nullptr;
  ProgressHook loadProgress = nullptr;
  void* loadProgressContext = nullptr;
  // Gestures taken off the list by deleteGesture while a background job might still hold them;
  // they are freed with the model.
  std::vector<Gesture*> detachedGestures;
  // What the enhanced mode works out from all of the set's samples together, kept until they
  // change (see shape_identification.cc).
  mutable std::mutex shapeSetMutex;
  mutable bool shapeSetKnown = false;
  mutable uint64_t shapeSetDigest = 0;
  mutable std::vector<char> reversibleGestures;
  // Which samples identification compares with (see shape_identification.cc), with the
  // sampleDigest of the set they were chosen for.
  mutable std::mutex prototypeMutex;
  mutable uint64_t prototypeDigest = 0;
  mutable std::shared_ptr<const SampleChoice> prototypes;

  GestureModel() = default;
  GestureModel(const GestureModel&) = delete;
  GestureModel& operator=(const GestureModel&) = delete;
  ~GestureModel();

  int gestureCount() const { return static_cast<int>(gestures.size()); }
};

// What is learnt from a set's samples depends on, in a few numbers: equal numbers, equal samples
// (the same strokes, of the same lengths) and the same head settings.
void sampleFingerprint(const GestureModel& model, const ModelParameters& parameters, std::vector<uintptr_t>& out);
// The same numbers mixed into one, for a check that runs with every identification.
uint64_t sampleDigest(const GestureModel& model, const ModelParameters& parameters);

}  // namespace zando

#endif  // ZANDO_MODEL_GESTURE_MODEL_H
