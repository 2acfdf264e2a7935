#include "bridge/bridge.h"

#include <cstring>
#include <vector>

#include "platform/codepage.h"

namespace vostan {

uint16_t keyboardLanguage = platform::localeLanguageId();
int textCodePage = updateTextCodePage(keyboardLanguage);

int updateTextCodePage(uint16_t locale) {
  return platform::ansiCodePageOfLanguage(locale);
}

char* getMultiByteString(JNIEnv* env, jstring s) {
  if (s == nullptr) return nullptr;
  const jsize length = env->GetStringLength(s);
  // Two bytes per character is what a double-byte page needs; the UTF-8
  // default can need three, so it gets room for that.
  const std::size_t capacity = static_cast<std::size_t>(length) * (textCodePage == 0 ? 3 : 2);
  char* buffer = new char[capacity + 1];
  const jchar* chars = env->GetStringChars(s, nullptr);
  const std::size_t n =
      platform::wideToMultiByte(textCodePage, reinterpret_cast<const char16_t*>(chars),
                                static_cast<std::size_t>(length), buffer, capacity);
  buffer[n] = '\0';
  env->ReleaseStringChars(s, chars);
  return buffer;
}

static jstring newStringFrom(JNIEnv* env, int codePage, const char* bytes, std::size_t length) {
  if (bytes == nullptr) length = 0;
  const std::size_t n = platform::multiByteToWide(codePage, bytes, length, nullptr, 0);
  std::vector<char16_t> wide(n + 1);
  const std::size_t written = platform::multiByteToWide(codePage, bytes, length, wide.data(), n);
  return env->NewString(reinterpret_cast<const jchar*>(wide.data()), static_cast<jsize>(written));
}

jstring newStringFromMultiByte(JNIEnv* env, const char* bytes, std::size_t length) {
  return newStringFrom(env, textCodePage, bytes, length);
}

jstring newStringFromPath(JNIEnv* env, const char* path) {
  return newStringFrom(env, 0, path, path ? std::strlen(path) : 0);
}

char16_t* getWideString(JNIEnv* env, jstring s) {
  if (s == nullptr) return nullptr;
  const jsize length = env->GetStringLength(s);
  char16_t* buffer = new char16_t[static_cast<std::size_t>(length) + 1];
  const jchar* chars = env->GetStringChars(s, nullptr);
  std::memcpy(buffer, chars, static_cast<std::size_t>(length) * sizeof(char16_t));
  buffer[length] = 0;
  env->ReleaseStringChars(s, chars);
  return buffer;
}

std::string systemProperty(JNIEnv* env, const char* name) {
  static jclass system = nullptr;
  static jmethodID getProperty = nullptr;
  if (!getProperty) {
    jclass local = env->FindClass("java/lang/System");
    if (local) {
      getProperty =
          env->GetStaticMethodID(local, "getProperty", "(Ljava/lang/String;)Ljava/lang/String;");
      if (getProperty) system = static_cast<jclass>(env->NewGlobalRef(local));
      env->DeleteLocalRef(local);
    }
    if (!system) getProperty = nullptr;
  }
  std::string value;
  if (getProperty) {
    jstring key = env->NewStringUTF(name);
    auto result =
        key ? static_cast<jstring>(env->CallStaticObjectMethod(system, getProperty, key)) : nullptr;
    // A security manager may refuse; the property then counts as unset.
    if (env->ExceptionCheck()) {
      env->ExceptionClear();
      result = nullptr;
    }
    if (result) {
      if (const char* utf = env->GetStringUTFChars(result, nullptr)) {
        value = utf;
        env->ReleaseStringUTFChars(result, utf);
      }
      env->DeleteLocalRef(result);
    }
    if (key) env->DeleteLocalRef(key);
  }
  if (env->ExceptionCheck()) env->ExceptionClear();
  return value;
}

void throwNew(JNIEnv* env, const char* className, const char* message) {
  // A class that is not found leaves FindClass's own exception pending.
  if (jclass cls = env->FindClass(className)) env->ThrowNew(cls, message);
}

void throwInternalError(JNIEnv* env, const char* message) {
  throwNew(env, "java/lang/InternalError", message);
}

void throwOutOfMemoryError(JNIEnv* env, const char* message) {
  throwNew(env, "java/lang/OutOfMemoryError", message);
}

}  // namespace vostan
