// The natives of mirelo.app.Controller. Each takes the controller's handle
// first; a handle that is not in the present scan reads as no controller.
#include <jni.h>

#include "controller/controller.h"

using vostan::controller::Controller;
using vostan::controller::fromHandle;

#define NATIVE(ret, name) extern "C" JNIEXPORT ret JNICALL Java_mirelo_app_Controller_##name

// Controllers live until the next scan.
NATIVE(void, n_1dispose)(JNIEnv*, jobject, jlong) {}

NATIVE(void, n_1poll)(JNIEnv*, jobject, jlong handle) {
  vostan::controller::poll(fromHandle(handle));
}

NATIVE(jint, n_1getNumAxes)(JNIEnv*, jobject, jlong handle) {
  Controller* c = fromHandle(handle);
  return c ? c->numAxes : 0;
}

NATIVE(jfloat, n_1getAxesValue)(JNIEnv*, jobject, jlong handle, jint axis) {
  Controller* c = fromHandle(handle);
  return c ? vostan::controller::axisValue(*c, axis) : 0.0f;
}

NATIVE(jint, n_1getNumButtons)(JNIEnv*, jobject, jlong handle) {
  Controller* c = fromHandle(handle);
  return c ? c->numButtons : 0;
}

NATIVE(jboolean, n_1isButtonPressed)(JNIEnv*, jobject, jlong handle, jint index) {
  Controller* c = fromHandle(handle);
  return c && vostan::controller::isButtonPressed(*c, index) ? JNI_TRUE : JNI_FALSE;
}

// Hat switches are read into the state but not delivered.
NATIVE(jint, n_1getNumHatSwitches)(JNIEnv*, jobject, jlong) {
  return 0;
}

NATIVE(jfloat, n_1getHatSwitchValue)(JNIEnv*, jobject, jlong, jint) {
  return 0.0f;
}

NATIVE(jboolean, n_1hasForceFeedback)(JNIEnv*, jobject, jlong handle) {
  Controller* c = fromHandle(handle);
  return c && c->numForceAxes != 0 ? JNI_TRUE : JNI_FALSE;
}

NATIVE(jboolean, n_1setForceFeedback)
(JNIEnv*, jobject, jlong handle, jfloat x, jfloat y, jint duration) {
  return vostan::controller::setForceFeedback(fromHandle(handle), x, y, duration) ? JNI_TRUE
                                                                                  : JNI_FALSE;
}
