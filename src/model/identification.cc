#include "model/identification.h"

#include "zando/zando.h"

namespace zando {

// Identification is not built yet: every stroke finds no gesture to choose from.

int identifyStroke(GestureModel&, const Stroke&, double*, double*, double*, double*, double*, double*) {
  return ReturnCode_NoGestures;
}

int computeProbabilities(GestureModel&, double*, int*, const Stroke&, double*, double*, double*, double*,
                         double*) {
  return ReturnCode_NoGestures;
}

int computeProbabilitiesAndSimilarities(GestureModel&, double*, double*, int*, const Stroke&, double*, double*,
                                        double*, double*, double*) {
  return ReturnCode_NoGestures;
}

}  // namespace zando
