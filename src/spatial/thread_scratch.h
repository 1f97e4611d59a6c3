// Scratch objects of one thread, kept between calls so that the per-frame paths allocate nothing,
// and freed when their thread ends.
//
// Elsewhere these are plain thread_local objects. MinGW's GCC emulates thread_local on top of
// winpthreads' thread keys, and with threads that come and go (training runs, background jobs)
// that emulation was seen to corrupt memory and to hang threads; there the objects live in the
// system's fiber-local storage instead, whose callback frees each one as its thread ends.
#ifndef ZANDO_SPATIAL_THREAD_SCRATCH_H
#define ZANDO_SPATIAL_THREAD_SCRATCH_H

namespace zando {

#if defined(__MINGW32__)

struct ThreadScratchHolder {
  virtual ~ThreadScratchHolder() = default;
};

// A new slot of fiber-local storage whose objects are holders, deleted when their thread ends;
// throws std::bad_alloc when the system has no slot left.
unsigned long newThreadScratchSlot();
ThreadScratchHolder* threadScratchIn(unsigned long slot);
// Hands the holder to the slot for the calling thread.
void keepThreadScratch(unsigned long slot, ThreadScratchHolder* holder);

template <typename T>
struct ThreadScratchOf : ThreadScratchHolder {
  T object;
};

#endif

// The calling thread's object of type T for the place that `Place` names (a type declared at that
// place, so that two places never share an object), default-constructed on its first use.
template <typename T, typename Place>
T& threadScratch() {
#if defined(__MINGW32__)
  static const unsigned long slot = newThreadScratchSlot();
  ThreadScratchHolder* holder = threadScratchIn(slot);
  if (holder == nullptr) {
    holder = new ThreadScratchOf<T>();
    keepThreadScratch(slot, holder);
  }
  return static_cast<ThreadScratchOf<T>*>(holder)->object;
#else
  thread_local T object;
  return object;
#endif
}

}  // namespace zando

#endif  // ZANDO_SPATIAL_THREAD_SCRATCH_H
