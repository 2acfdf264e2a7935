#include "bridge/native_guard.h"

#include <mutex>
#include <unordered_map>

namespace vostan {

// ---------------------------------------------------------------- handles

namespace live::detail {

namespace {

// Address -> type tag. The mixer thread may look up songs while Java makes
// and disposes them, hence the lock; it is never held across a call out.
struct Registry {
  std::mutex lock;
  std::unordered_map<const void*, const void*> objects;
};

Registry& registry() {
  static Registry* r = new Registry;  // lives to the end of the process
  return *r;
}

}  // namespace

void add(const void* object, const void* tag) {
  if (!object) return;
  Registry& r = registry();
  std::lock_guard<std::mutex> hold(r.lock);
  r.objects[object] = tag;
}

bool contains(const void* object, const void* tag) {
  Registry& r = registry();
  std::lock_guard<std::mutex> hold(r.lock);
  const auto it = r.objects.find(object);
  return it != r.objects.end() && it->second == tag;
}

bool remove(const void* object, const void* tag) {
  Registry& r = registry();
  std::lock_guard<std::mutex> hold(r.lock);
  const auto it = r.objects.find(object);
  if (it == r.objects.end() || it->second != tag) return false;
  r.objects.erase(it);
  return true;
}

}  // namespace live::detail

// ----------------------------------------------------------------- arrays

namespace {

constexpr int kKinds = 8;
constexpr const char* kArrayClassNames[kKinds] = {"[Z", "[B", "[C", "[S", "[I", "[J", "[F", "[D"};
constexpr std::size_t kElementSizes[kKinds] = {1, 1, 2, 2, 4, 8, 4, 8};

// Global references to the eight primitive array classes, taken once.
struct ArrayClasses {
  jclass classes[kKinds] = {};
  bool ready = false;
};

const ArrayClasses& arrayClasses(JNIEnv* env) {
  static ArrayClasses cache;
  static std::once_flag once;
  std::call_once(once, [env] {
    for (int k = 0; k < kKinds; ++k) {
      jclass local = env->FindClass(kArrayClassNames[k]);
      if (!local) {
        env->ExceptionClear();
        return;
      }
      cache.classes[k] = static_cast<jclass>(env->NewGlobalRef(local));
      env->DeleteLocalRef(local);
    }
    cache.ready = true;
  });
  return cache;
}

}  // namespace

std::size_t elementSize(ArrayKind kind) {
  return kind == ArrayKind::AnyPrimitive ? 1 : kElementSizes[static_cast<int>(kind)];
}

ArrayKind primitiveKindOf(JNIEnv* env, jobject array, bool* isPrimitiveArray) {
  *isPrimitiveArray = false;
  if (!array) return ArrayKind::AnyPrimitive;
  const ArrayClasses& c = arrayClasses(env);
  if (!c.ready) return ArrayKind::AnyPrimitive;
  for (int k = 0; k < kKinds; ++k) {
    if (env->IsInstanceOf(array, c.classes[k])) {
      *isPrimitiveArray = true;
      return static_cast<ArrayKind>(k);
    }
  }
  return ArrayKind::AnyPrimitive;
}

int64_t arrayElements(JNIEnv* env, jobject array, ArrayKind kind) {
  if (!array) return -1;
  if (kind == ArrayKind::AnyPrimitive) {
    bool primitive = false;
    const ArrayKind actual = primitiveKindOf(env, array, &primitive);
    if (!primitive) return -1;
    return int64_t{env->GetArrayLength(static_cast<jarray>(array))} *
           static_cast<int64_t>(elementSize(actual));
  }
  const ArrayClasses& c = arrayClasses(env);
  if (!c.ready || !env->IsInstanceOf(array, c.classes[static_cast<int>(kind)])) return -1;
  return env->GetArrayLength(static_cast<jarray>(array));
}

PinnedArray::PinnedArray(JNIEnv* env, jobject array, ArrayKind kind, int64_t atLeast, bool writes)
    : env_(env), writes_(writes) {
  const int64_t n = arrayElements(env, array, kind);
  if (n < 0 || n < atLeast) return;
  array_ = static_cast<jarray>(array);
  data_ = env->GetPrimitiveArrayCritical(array_, nullptr);
  if (data_) length_ = n;
}

PinnedArray::~PinnedArray() {
  if (data_) env_->ReleasePrimitiveArrayCritical(array_, data_, writes_ ? 0 : JNI_ABORT);
}

// --------------------------------------------------------- direct buffers

int64_t directBufferBytes(JNIEnv* env, jobject buffer) {
  if (!buffer) return -1;
  static jclass bufferClass = nullptr;
  static std::once_flag once;
  std::call_once(once, [env] {
    if (jclass local = env->FindClass("java/nio/Buffer")) {
      bufferClass = static_cast<jclass>(env->NewGlobalRef(local));
      env->DeleteLocalRef(local);
    }
    env->ExceptionClear();
  });
  if (!bufferClass || !env->IsInstanceOf(buffer, bufferClass)) return -1;
  if (!env->GetDirectBufferAddress(buffer)) return -1;
  const jlong capacity = env->GetDirectBufferCapacity(buffer);
  if (capacity < 0) return -1;
  // Capacity counts elements: a view of wider elements is taken as one byte
  // an element, which can only under-count.
  return capacity;
}

void* directBuffer(JNIEnv* env, jobject buffer, int64_t bytes) {
  const int64_t have = directBufferBytes(env, buffer);
  if (have < 0 || bytes < 0 || have < bytes) return nullptr;
  return env->GetDirectBufferAddress(buffer);
}

// ------------------------------------------------------------- exceptions

void throwPendingFromCurrent(JNIEnv* env) noexcept {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    if (!env->ExceptionCheck()) throwOutOfMemoryError(env, "out of memory error");
  } catch (const std::length_error&) {
    if (!env->ExceptionCheck()) throwOutOfMemoryError(env, "out of memory error");
  } catch (...) {
    if (!env->ExceptionCheck()) throwInternalError(env, "internal error");
  }
}

// ------------------------------------------------------------------- sizes

int64_t imageBytes(int64_t width, int64_t height, int64_t bytesPerPixel) {
  if (width <= 0 || height <= 0 || bytesPerPixel <= 0) return -1;
  constexpr int64_t kLimit = int64_t{1} << 31;
  if (width >= kLimit || height >= kLimit) return -1;
  const int64_t pixels = width * height;  // below 2^62
  if (pixels >= kLimit) return -1;
  const int64_t bytes = pixels * bytesPerPixel;
  return bytes >= kLimit ? -1 : bytes;
}

}  // namespace vostan
