#pragma once
#include <jni.h>

namespace vostan::controller {

// WinConsole.n_scanControllers: a new scan as Controller objects made by the
// console class's factory, or null when the scan fails.
jobjectArray scanForJava(JNIEnv* env, jclass consoleClass);

}  // namespace vostan::controller
