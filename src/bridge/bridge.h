#pragma once
// How a native call meets Java: text conversion, exceptions, process-wide
// text state.
#include <jni.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace vostan {

// Language of the keyboard at load time; never refreshed.
extern uint16_t keyboardLanguage;
// Code page of all text conversions; 0 means the system default.
extern int textCodePage;

int updateTextCodePage(uint16_t locale);

// New NUL-terminated bytes in textCodePage, or null for null; free with delete[].
char* getMultiByteString(JNIEnv* env, jstring s);
// A new Java string from bytes in textCodePage; null bytes give "".
jstring newStringFromMultiByte(JNIEnv* env, const char* bytes, std::size_t length);
// New NUL-terminated UTF-16 copy, or null for null; free with delete[].
char16_t* getWideString(JNIEnv* env, jstring s);
// A new Java string from a path in the system code page.
jstring newStringFromPath(JNIEnv* env, const char* path);

// The Java system property `name`, or "" when it is unset or cannot be read.
// Makes JNI calls: not between the two critical array calls.
std::string systemProperty(JNIEnv* env, const char* name);

void throwNew(JNIEnv* env, const char* className, const char* message);
void throwInternalError(JNIEnv* env, const char* message);
void throwOutOfMemoryError(JNIEnv* env, const char* message);

}  // namespace vostan
