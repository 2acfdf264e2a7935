#include "graphics/java_arrays.h"

namespace vostan {

namespace {

struct PrimitiveKind {
  const char* name;
  int bytes;
  jclass cls;
};

// The classes of the eight primitive array kinds, looked up once.
PrimitiveKind* kinds(JNIEnv* env) {
  static PrimitiveKind table[] = {{"[B", 1, nullptr}, {"[S", 2, nullptr}, {"[I", 4, nullptr},
                                  {"[F", 4, nullptr}, {"[C", 2, nullptr}, {"[J", 8, nullptr},
                                  {"[D", 8, nullptr}, {"[Z", 1, nullptr}};
  static bool looked = false;
  if (!looked) {
    for (auto& k : table) {
      jclass local = env->FindClass(k.name);
      if (!local) {
        env->ExceptionClear();
        return nullptr;
      }
      k.cls = static_cast<jclass>(env->NewGlobalRef(local));
      env->DeleteLocalRef(local);
    }
    looked = true;
  }
  return table;
}

}  // namespace

int64_t primitiveArrayBytes(JNIEnv* env, jobject object) {
  if (!object) return -1;
  PrimitiveKind* table = kinds(env);
  if (!table) return -1;
  for (int i = 0; i < 8; ++i)
    if (env->IsInstanceOf(object, table[i].cls))
      return int64_t{env->GetArrayLength(static_cast<jarray>(object))} * table[i].bytes;
  return -1;
}

}  // namespace vostan
