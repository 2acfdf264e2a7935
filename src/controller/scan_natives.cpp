#include "controller/scan_natives.h"

#include <cstring>

#include "bridge/bridge.h"
#include "controller/controller.h"

namespace vostan::controller {

jobjectArray scanForJava(JNIEnv* env, jclass consoleClass) {
  // Looked up once: a global reference, so the class outlives this call.
  static jclass controllerClass = nullptr;
  static jmethodID factory = nullptr;
  if (!controllerClass) {
    jclass local = env->FindClass("mirelo/app/Controller");
    if (!local) return nullptr;
    controllerClass = static_cast<jclass>(env->NewGlobalRef(local));
    env->DeleteLocalRef(local);
  }
  if (!factory) {
    factory = env->GetStaticMethodID(consoleClass, "createController",
                                     "(Ljava/lang/String;J)Lmirelo/app/Controller;");
    if (!factory) return nullptr;
  }
  if (!scan()) return nullptr;
  int count = scannedCount();
  jobjectArray result = env->NewObjectArray(count, controllerClass, nullptr);
  if (!result) return nullptr;
  for (int i = 0; i < count; i++) {
    Controller* c = scanned(i);
    jstring name = newStringFromMultiByte(env, c->name, std::strlen(c->name));
    jobject object = env->CallStaticObjectMethod(consoleClass, factory, name,
                                                 static_cast<jlong>(reinterpret_cast<intptr_t>(c)));
    if (env->ExceptionCheck()) return nullptr;
    env->SetObjectArrayElement(result, i, object);
    env->DeleteLocalRef(object);
    env->DeleteLocalRef(name);
  }
  return result;
}

}  // namespace vostan::controller
