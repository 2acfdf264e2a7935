// The natives of mirelo.gfx.GLArray: records of the graphics object's array
// table, addressed by handle. Dead or made-up handles, copies that would
// reach outside a record or a Java array, and arrays of the wrong kind are
// refused without touching anything.
#include <jni.h>

#include "console/win_console.h"
#include "graphics/d3d_graphics.h"
#include "graphics/java_arrays.h"

using vostan::GLArrayRecord;
using vostan::GLArrayTable;
using vostan::guardedNative;
using vostan::HeldArray;
using vostan::primitiveArrayBytes;

namespace {

GLArrayTable* table() {
  return vostan::theConsole && vostan::theConsole->graphics ? &vostan::theConsole->graphics->arrays
                                                            : nullptr;
}

GLArrayRecord* record(jlong handle) {
  GLArrayTable* t = table();
  return t ? t->find(handle) : nullptr;
}

jlong newArray(JNIEnv* env, jint kind, jint size, jobject data, bool withData) {
  jlong handle = 0;
  GLArrayTable* t = table();
  if (!t) return 0;
  const int64_t bytes = primitiveArrayBytes(env, data);
  if (data && bytes < size) return 0;
  guardedNative(env, [&] {
    HeldArray array(env, data);
    if (data && !array.data()) return;
    handle = GLArrayTable::handleOf(t->create(kind, size, withData, array.data(), bytes));
  });
  return handle;
}

}  // namespace

#define ARRAY_NATIVE(ret, name) extern "C" JNIEXPORT ret JNICALL Java_mirelo_gfx_GLArray_##name

ARRAY_NATIVE(jlong, newGLArray__II)(JNIEnv* env, jclass, jint kind, jint size) {
  return newArray(env, kind, size, nullptr, false);
}

ARRAY_NATIVE(jlong, newGLArray__IILjava_lang_Object_2)
(JNIEnv* env, jclass, jint kind, jint size, jobject data) {
  return newArray(env, kind, size, data, true);
}

ARRAY_NATIVE(void, deleteGLArray)(JNIEnv* env, jclass, jlong handle) {
  guardedNative(env, [&] {
    if (GLArrayTable* t = table()) t->noteDelete(handle);
  });
}

ARRAY_NATIVE(void, compact)(JNIEnv* env, jclass) {
  guardedNative(env, [&] {
    if (GLArrayTable* t = table()) t->compact();
  });
}

ARRAY_NATIVE(void, dispose)(JNIEnv*, jclass, jlong handle) {
  if (GLArrayRecord* r = record(handle)) r->dispose();
}

ARRAY_NATIVE(void, memcpy__JIJII)
(JNIEnv* env, jclass, jlong source, jint sourceOffset, jlong destination, jint destinationOffset,
 jint size) {
  guardedNative(env, [&] {
    copyBetweenRecords(record(source), sourceOffset, record(destination), destinationOffset, size);
  });
}

// Into a Java array: the writes are copied back at the release.
ARRAY_NATIVE(void, memcpy__Ljava_lang_Object_2JIII)
(JNIEnv* env, jclass, jobject destination, jlong source, jint sourceOffset, jint destinationOffset,
 jint size) {
  const int64_t bytes = primitiveArrayBytes(env, destination);
  GLArrayRecord* from = record(source);
  if (bytes < 0 || !from) return;
  HeldArray array(env, destination, true);
  copyRecordToMemory(from, sourceOffset, array.data(), bytes, destinationOffset, size);
}

ARRAY_NATIVE(void, memcpy__JLjava_lang_Object_2III)
(JNIEnv* env, jclass, jlong destination, jobject source, jint sourceOffset, jint destinationOffset,
 jint size) {
  const int64_t bytes = primitiveArrayBytes(env, source);
  GLArrayRecord* to = record(destination);
  if (bytes < 0 || !to) return;
  HeldArray array(env, source);
  copyMemoryToRecord(array.data(), bytes, sourceOffset, to, destinationOffset, size);
}
