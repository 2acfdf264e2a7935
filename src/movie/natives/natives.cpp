// The natives of mirelo.app.VecMovie. The movie player behind them is not
// built yet: until it is, no movie opens and every query answers 0 or null.
#include <jni.h>

#define NATIVE(ret, name) extern "C" JNIEXPORT ret JNICALL Java_mirelo_app_VecMovie_##name

NATIVE(jlong, n_1init)(JNIEnv*, jobject, jbyteArray, jint, jint, jint, jint) {
  return 0;
}

NATIVE(void, n_1dispose)(JNIEnv*, jobject, jlong) {}

NATIVE(void, n_1setSize)(JNIEnv*, jobject, jlong, jint, jint) {}

NATIVE(void, n_1drawToTexture)(JNIEnv*, jobject, jlong, jint, jint, jint) {}

NATIVE(void, n_1moveClipFrame)(JNIEnv*, jobject, jlong, jlong, jint) {}

NATIVE(jlong, n_1getRootClip)(JNIEnv*, jobject, jlong) {
  return 0;
}

NATIVE(jlong, n_1getHitClip)(JNIEnv*, jobject, jlong, jint, jint) {
  return 0;
}

NATIVE(jfloat, n_1getParamf)(JNIEnv*, jobject, jlong, jint) {
  return 0.0f;
}

NATIVE(jfloat, n_1getClipParamf)(JNIEnv*, jobject, jlong, jint) {
  return 0.0f;
}

NATIVE(jstring, n_1getClipParamv)(JNIEnv*, jobject, jlong, jint) {
  return nullptr;
}
