// The barrier of the flat face: every exported function casts its handle and forwards, and no
// C++ exception may cross into a host. An int result becomes -14, a pointer null, a count 0; a
// null handle is an invalid parameter.
#ifndef ZANDO_API_FLAT_FORWARDING_H
#define ZANDO_API_FLAT_FORWARDING_H

#include "zando/zando.h"

namespace zando {

template <typename Object, typename F>
int forwardCode(void* handle, F&& operation) {
  if (handle == nullptr) return ReturnCode_InvalidParameter;
  try {
    return operation(static_cast<Object*>(handle));
  } catch (...) {
    return ReturnCode_ResourceError;
  }
}

template <typename Object, typename R, typename F>
R forwardValue(void* handle, R fallback, F&& operation) {
  if (handle == nullptr) return fallback;
  try {
    return operation(static_cast<Object*>(handle));
  } catch (...) {
    return fallback;
  }
}

template <typename Object, typename F>
void forwardApply(void* handle, F&& operation) {
  if (handle == nullptr) return;
  try {
    operation(static_cast<Object*>(handle));
  } catch (...) {
  }
}

}  // namespace zando

#endif  // ZANDO_API_FLAT_FORWARDING_H
