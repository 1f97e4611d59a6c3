// Training, saving and loading report through C callbacks that the library calls on its worker
// threads. A worker cannot call the page's JavaScript, so each callback queues the report on the
// main thread, where the module turns it into an event; the object's handle is the metadata that
// tells the module which object reported.
#include <emscripten.h>
#include <zando/zando.h>

namespace {

enum EventKind { kTrainingUpdate = 0, kTrainingFinish = 1, kSavingUpdate = 2, kSavingFinish = 3,
                 kLoadingUpdate = 4, kLoadingFinish = 5 };

void report(void* handle, int kind, double value) {
  MAIN_THREAD_ASYNC_EM_ASM({ if (Module.zandoEvent) Module.zandoEvent($0, $1, $2); }, handle, kind, value);
}

void trainingUpdate(double score, void* handle) { report(handle, kTrainingUpdate, score); }
void trainingFinish(double score, void* handle) { report(handle, kTrainingFinish, score); }
void savingUpdate(int percent, void* handle) { report(handle, kSavingUpdate, percent); }
void savingFinish(int result, void* handle) { report(handle, kSavingFinish, result); }
void loadingUpdate(int percent, void* handle) { report(handle, kLoadingUpdate, percent); }
void loadingFinish(int result, void* handle) { report(handle, kLoadingFinish, result); }

}  // namespace

extern "C" {

EMSCRIPTEN_KEEPALIVE void ZandoWeb_attachRecognitionEvents(void* gro) {
  GestureRecognition_setTrainingUpdateCallback(gro, trainingUpdate);
  GestureRecognition_setTrainingUpdateCallbackMetadata(gro, gro);
  GestureRecognition_setTrainingFinishCallback(gro, trainingFinish);
  GestureRecognition_setTrainingFinishCallbackMetadata(gro, gro);
  GestureRecognition_setSavingUpdateCallbackFunction(gro, savingUpdate);
  GestureRecognition_setSavingUpdateCallbackMetadata(gro, gro);
  GestureRecognition_setSavingFinishCallbackFunction(gro, savingFinish);
  GestureRecognition_setSavingFinishCallbackMetadata(gro, gro);
  GestureRecognition_setLoadingUpdateCallbackFunction(gro, loadingUpdate);
  GestureRecognition_setLoadingUpdateCallbackMetadata(gro, gro);
  GestureRecognition_setLoadingFinishCallbackFunction(gro, loadingFinish);
  GestureRecognition_setLoadingFinishCallbackMetadata(gro, gro);
}

EMSCRIPTEN_KEEPALIVE void ZandoWeb_attachCombinationEvents(void* gco) {
  GestureCombinations_setTrainingUpdateCallback(gco, trainingUpdate);
  GestureCombinations_setTrainingUpdateCallbackMetadata(gco, gco);
  GestureCombinations_setTrainingFinishCallback(gco, trainingFinish);
  GestureCombinations_setTrainingFinishCallbackMetadata(gco, gco);
  GestureCombinations_setSavingUpdateCallbackFunction(gco, savingUpdate);
  GestureCombinations_setSavingUpdateCallbackMetadata(gco, gco);
  GestureCombinations_setSavingFinishCallbackFunction(gco, savingFinish);
  GestureCombinations_setSavingFinishCallbackMetadata(gco, gco);
  GestureCombinations_setLoadingUpdateCallbackFunction(gco, loadingUpdate);
  GestureCombinations_setLoadingUpdateCallbackMetadata(gco, gco);
  GestureCombinations_setLoadingFinishCallbackFunction(gco, loadingFinish);
  GestureCombinations_setLoadingFinishCallbackMetadata(gco, gco);
}

}  // extern "C"
