// PLACEHOLDER natives of mirelo.app.win32.MDJSoundContextWin32 until the music
// mixer lands: they are exported so that the Java class links, and they do
// nothing. n_init reports that no context could be made.
#include <jni.h>

#define MDJ(ret, name) \
  extern "C" JNIEXPORT ret JNICALL Java_mirelo_app_win32_MDJSoundContextWin32_##name

MDJ(jlong, n_1init)(JNIEnv*, jobject) {
  return 0;
}
MDJ(void, n_1dispose)(JNIEnv*, jobject, jlong) {}
MDJ(jboolean, n_1setMDJSongFile)(JNIEnv*, jobject, jlong, jstring) {
  return JNI_FALSE;
}
MDJ(jboolean, n_1setMDJTrick)(JNIEnv*, jobject, jlong, jint) {
  return JNI_FALSE;
}
MDJ(jboolean, n_1play)(JNIEnv*, jobject, jlong, jboolean) {
  return JNI_FALSE;
}
MDJ(jboolean, n_1stop)(JNIEnv*, jobject, jlong) {
  return JNI_FALSE;
}
MDJ(jboolean, n_1playing)(JNIEnv*, jobject, jlong) {
  return JNI_FALSE;
}
MDJ(void, n_1setVolume)(JNIEnv*, jobject, jlong, jfloat) {}
MDJ(jfloat, n_1getPitch)(JNIEnv*, jobject, jlong) {
  return 0.0f;
}
MDJ(jfloat, n_1getStreamSize)(JNIEnv*, jobject, jlong) {
  return 0.0f;
}
MDJ(void, n_1writeStream)(JNIEnv*, jobject, jlong, jfloatArray) {}
