// Fuzz target: arbitrary bytes as a file a user was sent, loading a combinations set.
#include "fuzz_entries.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  zando_fuzz::runInput(zando_fuzz::Target::CombinationsLoad, data, size);
  return 0;
}
