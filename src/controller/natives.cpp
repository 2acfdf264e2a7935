// The natives of mirelo.app.Controller. Controllers are not built yet: the
// console's scan delivers none, so these only answer "nothing there".
#include <jni.h>

#define NATIVE(ret, name) extern "C" JNIEXPORT ret JNICALL Java_mirelo_app_Controller_##name

NATIVE(void, n_1dispose)(JNIEnv*, jobject, jlong) {}

NATIVE(void, n_1poll)(JNIEnv*, jobject, jlong) {}

NATIVE(jint, n_1getNumAxes)(JNIEnv*, jobject, jlong) {
  return 0;
}

NATIVE(jfloat, n_1getAxesValue)(JNIEnv*, jobject, jlong, jint) {
  return 0.0f;
}

NATIVE(jint, n_1getNumButtons)(JNIEnv*, jobject, jlong) {
  return 0;
}

NATIVE(jboolean, n_1isButtonPressed)(JNIEnv*, jobject, jlong, jint) {
  return JNI_FALSE;
}

NATIVE(jint, n_1getNumHatSwitches)(JNIEnv*, jobject, jlong) {
  return 0;
}

NATIVE(jfloat, n_1getHatSwitchValue)(JNIEnv*, jobject, jlong, jint) {
  return 0.0f;
}

NATIVE(jboolean, n_1hasForceFeedback)(JNIEnv*, jobject, jlong) {
  return JNI_FALSE;
}

NATIVE(jboolean, n_1setForceFeedback)(JNIEnv*, jobject, jlong, jfloat, jfloat, jint) {
  return JNI_FALSE;
}
