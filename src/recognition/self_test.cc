// A consistency check of the library on its own data: replaying stored samples through the public
// stroke operations must give what direct identification gives, and the training shares must not
// overlap. The shares do overlap by design (the held-back samples serve both validation and
// scoring), so a set that passes the replay fails the split; the check is kept as it is.
#include <cmath>
#include <map>
#include <memory>

#include "model/identification.h"
#include "model/training_data.h"
#include "recognition/gesture_recognition.h"

namespace zando {

namespace {

constexpr int kTestGestures = 10;
constexpr int kTestSamples = 30;

// Ten gestures of thirty samples whose strokes differ in size, so that every feature vector
// differs in its last value, the radius.
std::vector<Gesture*> buildTestSet() {
  std::vector<Gesture*> gestures;
  for (int k = 0; k < kTestGestures; ++k) {
    auto* gesture = new Gesture("TEST", nullptr);
    for (int j = 0; j < kTestSamples; ++j) {
      auto* stroke = new Stroke();
      const double step = 0.001 * (k * 100 + (j - 15) + 16);
      for (int i = 0; i < 6; ++i) {
        stroke->handPoints.emplace_back(Vector3(step * i, 0.5 * step * (i % 2), 0.3), Quaternion());
        stroke->headPoints.push_back(stroke->headStart);
      }
      gesture->gestureSamples.push_back(stroke);
    }
    gestures.push_back(gesture);
  }
  return gestures;
}

ModelParameters testParameters() {
  ModelParameters parameters;
  parameters.waypointCount = 4;
  parameters.waypointFeatureMode = 0;
  parameters.rotationFrameX = 1;
  parameters.rotationFrameY = 1;
  parameters.rotationFrameZ = 1;
  parameters.featureScaleA = 1.0;
  parameters.featureScaleB = 1.0;
  return parameters;
}

struct TestSet {
  std::vector<Gesture*> gestures = buildTestSet();
  ~TestSet() {
    for (Gesture* gesture : gestures) delete gesture;
  }
};

bool splitsAreDisjoint(const TestSet& set, const ModelParameters& parameters) {
  for (int round = 0; round < 10; ++round) {
    FeatureLists training, validation, scoring;
    training.assign(set.gestures.size(), {});
    validation.assign(set.gestures.size(), {});
    scoring.assign(set.gestures.size(), {});
    bool invalid = false;
    splitSamples(set.gestures, parameters, training, validation, scoring, &invalid);
    for (size_t g = 0; g < set.gestures.size(); ++g) {
      std::map<double, int> seen;
      int total = 0;
      for (const FeatureLists* lists : {&training, &validation, &scoring}) {
        for (const std::vector<double>& features : (*lists)[g]) {
          if (features.empty() || !seen.emplace(features.back(), 1).second) return false;
          ++total;
        }
      }
      if (total != kTestSamples) return false;
    }
  }
  return true;
}

bool matricesAreDisjoint(const TestSet& set, const ModelParameters& parameters) {
  for (int round = 0; round < 3; ++round) {
    TrainingData data;
    bool invalid = false;
    buildTrainingData(set.gestures, data, parameters, &invalid);
    const Matrix& train = data.training.inputs;
    for (Eigen::Index r = 0; r < train.rows(); ++r) {
      if (train(r, 0) != 1.0) return false;
      const double last = train(r, train.cols() - 1);
      for (const Matrix* held : {&data.validation.inputs, &data.scoring.inputs}) {
        for (Eigen::Index h = 0; h < held->rows(); ++h) {
          if (std::fabs(last - (*held)(h, held->cols() - 1)) < 0.001) return false;
        }
      }
    }
  }
  return true;
}

}  // namespace

int GestureRecognition::selfTest() {
  // Replay every stored sample through the stroke operations.
  int differences = 0;
  int hits = 0;
  int samples = 0;
  for (int g = gestureModel.gestureCount() - 1; g >= 0; --g) {
    const std::vector<Stroke*>& strokes = gestureModel.gestures[static_cast<size_t>(g)]->gestureSamples;
    for (size_t s = strokes.size(); s-- > 0;) {
      const Stroke& sample = *strokes[s];
      copyFrameToModel();
      const int direct = identifyStroke(gestureModel, sample, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
      double headP[3];
      double headQ[4];
      sample.headStart.position.copyTo(headP);
      sample.headStart.rotation.copyTo(headQ);
      startStroke(headP, headQ, -1);
      for (const StrokePoint& point : sample.handPoints) {
        double p[3];
        double q[4];
        point.position.copyTo(p);
        point.rotation.copyTo(q);
        contdStrokeQ(p, q);
      }
      int replayed;
      if (sample.sampleType != 0) {
        const int smoothing = contdIdentificationSmoothing;
        contdIdentificationSmoothing = 0;
        replayed = contdIdentify(headP, headQ, nullptr);
        contdIdentificationSmoothing = smoothing;
        strokeStarted = false;
        currentStroke.handPoints.clear();
        currentStroke.headPoints.clear();
      } else {
        replayed = endStroke(nullptr, nullptr, nullptr, nullptr, nullptr);
      }
      if (replayed != direct) ++differences;
      if (direct == g) ++hits;
      ++samples;
    }
  }
  if (differences > 0) return ReturnCode_Failed;
  if (samples > 0 && std::fabs(static_cast<double>(hits) / samples - gestureModel.recognitionScore) > 0.05) {
    return ReturnCode_Failed;
  }

  const TestSet set;
  const ModelParameters parameters = testParameters();
  if (!splitsAreDisjoint(set, parameters)) return ReturnCode_Failed;
  if (!matricesAreDisjoint(set, parameters)) return ReturnCode_Failed;
  return ReturnCode_Success;
}

}  // namespace zando
