// Fuzz target: arbitrary bytes as a file a user was sent, importing a gesture set into one that has gestures.
#include "fuzz_entries.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  zando_fuzz::runInput(zando_fuzz::Target::RecognitionImport, data, size);
  return 0;
}
