#pragma once
// Safety at the JNI boundary: what a native uses so that a careless or hostile
// Java call is refused instead of touching memory the library does not own.
//
// How to use them:
// - Handles Java keeps as `long`: `live::add(p)` when an object is handed to
//   Java, `live::find<T>(handle)` before every use (null when the handle is not
//   a live T: made up, disposed, or an object of another kind),
//   `live::take<T>(handle)` in the dispose native (finds and forgets it in one
//   step, so a second dispose finds nothing). `live::handleOf(p)` is the Java
//   value. Types are told apart by T, so a clip handle is no movie handle.
// - Java arrays: `PinnedArray pin(env, array, ArrayKind::Float, 16)` pins the
//   elements for the call, and `pin.data()` is null unless `array` is a
//   non-null float[] of at least 16 elements (ArrayKind::AnyPrimitive with a
//   byte count takes any primitive array). No JNI call may come between the
//   pin and its end of scope. `arrayElements(env, array, kind)` tells the
//   length without pinning (-1 for null or the wrong kind).
// - Direct buffers: `directBuffer(env, buffer, bytes)` is the address only when
//   `buffer` is a direct java.nio buffer of at least `bytes` bytes.
// - C++ exceptions: wrap a native's body in `guarded(env, failure, [&] {...})`;
//   std::bad_alloc (and std::length_error from a huge size) becomes a pending
//   OutOfMemoryError, any other exception an InternalError, and the native
//   answers `failure`. `guardedVoid(env, [&] {...})` for natives without a value.
#include <jni.h>

#include <cstddef>
#include <cstdint>
#include <new>
#include <stdexcept>
#include <type_traits>

#include "bridge/bridge.h"

namespace vostan {

// ---------------------------------------------------------------- handles

namespace live {

namespace detail {
// One address per type tells the kinds of object apart.
template <class T>
struct Tag {
  static inline const char id = 0;
};
void add(const void* object, const void* tag);
bool contains(const void* object, const void* tag);
bool remove(const void* object, const void* tag);
}  // namespace detail

inline jlong handleOf(const void* p) {
  return static_cast<jlong>(reinterpret_cast<intptr_t>(p));
}
inline const void* addressOf(jlong handle) {
  return reinterpret_cast<const void*>(static_cast<intptr_t>(handle));
}

// Marks `object` live as a T until remove or take.
template <class T>
void add(const T* object) {
  detail::add(object, &detail::Tag<T>::id);
}
template <class T>
bool remove(const T* object) {
  return detail::remove(object, &detail::Tag<T>::id);
}
template <class T>
bool contains(const T* object) {
  return object && detail::contains(object, &detail::Tag<T>::id);
}
// The live T a Java handle names, or null.
template <class T>
T* find(jlong handle) {
  const void* p = addressOf(handle);
  if (!p || !detail::contains(p, &detail::Tag<T>::id)) return nullptr;
  return static_cast<T*>(const_cast<void*>(p));
}
// As find, and forgets the object: for the native that disposes it.
template <class T>
T* take(jlong handle) {
  const void* p = addressOf(handle);
  if (!p || !detail::remove(p, &detail::Tag<T>::id)) return nullptr;
  return static_cast<T*>(const_cast<void*>(p));
}

}  // namespace live

// ----------------------------------------------------------------- arrays

enum class ArrayKind { Boolean, Byte, Char, Short, Int, Long, Float, Double, AnyPrimitive };

// Bytes of one element; 1 for AnyPrimitive, whose counts are in bytes.
std::size_t elementSize(ArrayKind kind);
// The kind of a primitive array, or AnyPrimitive for null and anything else.
// (A non-array answers false from isPrimitiveArray.)
ArrayKind primitiveKindOf(JNIEnv* env, jobject array, bool* isPrimitiveArray);
// Elements of `array` when it is of `kind` (AnyPrimitive: bytes of any
// primitive array); -1 for null or another kind.
int64_t arrayElements(JNIEnv* env, jobject array, ArrayKind kind);

// A Java primitive array's elements in place for the time of one call, or
// null when the array is null, of another kind or shorter than asked. The
// release never copies back when nothing was written.
class PinnedArray {
 public:
  PinnedArray(JNIEnv* env, jobject array, ArrayKind kind, int64_t atLeast, bool writes = false);
  ~PinnedArray();
  PinnedArray(const PinnedArray&) = delete;
  PinnedArray& operator=(const PinnedArray&) = delete;
  void* data() const { return data_; }
  template <class T>
  T* as() const {
    return static_cast<T*>(data_);
  }
  // Elements of the array (bytes for AnyPrimitive); -1 when refused.
  int64_t length() const { return length_; }

 private:
  JNIEnv* env_;
  jarray array_ = nullptr;
  void* data_ = nullptr;
  int64_t length_ = -1;
  bool writes_;
};

// --------------------------------------------------------- direct buffers

// Bytes of a direct java.nio buffer, or -1 for null, a heap buffer or
// anything else.
int64_t directBufferBytes(JNIEnv* env, jobject buffer);
// The address of a direct buffer holding at least `bytes` bytes, else null.
void* directBuffer(JNIEnv* env, jobject buffer, int64_t bytes);

// ------------------------------------------------------------- exceptions

// Turns the exception being handled into a pending Java exception.
void throwPendingFromCurrent(JNIEnv* env) noexcept;

template <class R, class F>
R guarded(JNIEnv* env, R failure, F&& body) noexcept {
  try {
    return body();
  } catch (...) {
    throwPendingFromCurrent(env);
    return failure;
  }
}

template <class F>
void guardedVoid(JNIEnv* env, F&& body) noexcept {
  try {
    body();
  } catch (...) {
    throwPendingFromCurrent(env);
  }
}

// ------------------------------------------------------------------- sizes

// width * height * bytesPerPixel when all are positive and the product fits
// a Java array (below 2^31); otherwise -1.
int64_t imageBytes(int64_t width, int64_t height, int64_t bytesPerPixel);

}  // namespace vostan
