// Exports that are not native methods.
#include <jni.h>

#include "bridge/bridge.h"
#include "bridge/log_output.h"

extern "C" {

// JNI 1.4. All set-up of the console waits for WinConsole.n_init; only the
// log switch is read here, so that it holds from the first line on.
JNIEXPORT jint JNICALL JNI_OnLoad(JavaVM* vm, void*) {
  JNIEnv* env = nullptr;
  if (vm && vm->GetEnv(reinterpret_cast<void**>(&env), JNI_VERSION_1_4) == JNI_OK && env)
    vostan::setLogEnabled(vostan::systemProperty(env, "vostan.log") != "off");
  return 0x10004;
}
JNIEXPORT void JNICALL JNI_OnUnload(JavaVM*, void*) {}
}
