// Exports that are not native methods.
#include <jni.h>

extern "C" {

// JNI 1.4, and nothing else: all set-up waits for WinConsole.n_init.
JNIEXPORT jint JNICALL JNI_OnLoad(JavaVM*, void*) {
  return 0x10004;
}
JNIEXPORT void JNICALL JNI_OnUnload(JavaVM*, void*) {}
}
