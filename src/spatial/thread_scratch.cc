#include "spatial/thread_scratch.h"

#if defined(__MINGW32__)

#define WIN32_LEAN_AND_MEAN
#define NOMINMAX
#include <windows.h>

#include <new>

namespace zando {

namespace {

void WINAPI deleteThreadScratch(void* holder) { delete static_cast<ThreadScratchHolder*>(holder); }

}  // namespace

unsigned long newThreadScratchSlot() {
  const DWORD slot = FlsAlloc(&deleteThreadScratch);
  if (slot == FLS_OUT_OF_INDEXES) throw std::bad_alloc();
  return slot;
}

ThreadScratchHolder* threadScratchIn(unsigned long slot) {
  return static_cast<ThreadScratchHolder*>(FlsGetValue(slot));
}

void keepThreadScratch(unsigned long slot, ThreadScratchHolder* holder) {
  if (!FlsSetValue(slot, holder)) {
    delete holder;
    throw std::bad_alloc();
  }
}

}  // namespace zando

#endif  // __MINGW32__
