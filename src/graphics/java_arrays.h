#pragma once
// Java primitive arrays as the array and draw natives take them: checked for
// kind and length before use, held in place only for the time of one copy.
#include <jni.h>

#include <cstdint>
#include <new>

#include "bridge/bridge.h"

namespace vostan {

// Bytes of a primitive Java array; -1 for null and for anything else.
int64_t primitiveArrayBytes(JNIEnv* env, jobject object);

// The elements of an array in place. `commit` copies them back at the
// release, for a native that writes into the array: a machine that hands out
// a copy then sees the writes too.
class HeldArray {
 public:
  HeldArray(JNIEnv* env, jobject array, bool commit = false)
      : env_(env), array_(static_cast<jarray>(array)), commit_(commit) {
    if (array_) data_ = static_cast<uint8_t*>(env_->GetPrimitiveArrayCritical(array_, nullptr));
  }
  ~HeldArray() { release(); }
  HeldArray(const HeldArray&) = delete;
  HeldArray& operator=(const HeldArray&) = delete;
  uint8_t* data() const { return data_; }
  void release() {
    if (data_) env_->ReleasePrimitiveArrayCritical(array_, data_, commit_ ? 0 : JNI_ABORT);
    data_ = nullptr;
  }

 private:
  JNIEnv* env_;
  jarray array_;
  bool commit_;
  uint8_t* data_ = nullptr;
};

// Runs a native's work with no C++ exception escaping to Java: a failed
// allocation becomes an OutOfMemoryError, anything else is dropped.
template <class Work>
void guardedNative(JNIEnv* env, Work&& work) {
  try {
    work();
  } catch (const std::bad_alloc&) {
    throwOutOfMemoryError(env, "native graphics memory");
  } catch (...) {
  }
}

}  // namespace vostan
