// Test-only natives that push SDL events, as a user at the window would make
// them, so that JVM tests drive the real backend.
#include <SDL.h>
#include <jni.h>

#include <cstring>

#define HOOK(ret, name) extern "C" JNIEXPORT ret JNICALL Java_vostan_test_SdlInject_##name

HOOK(void, motion)(JNIEnv*, jclass, jint window, jint x, jint y, jint buttons) {
  SDL_Event e{};
  e.type = SDL_MOUSEMOTION;
  e.motion.windowID = static_cast<Uint32>(window);
  e.motion.x = x;
  e.motion.y = y;
  e.motion.state = static_cast<Uint32>(buttons);
  SDL_PushEvent(&e);
}

HOOK(void, button)(JNIEnv*, jclass, jint window, jint button, jboolean down, jint x, jint y) {
  SDL_Event e{};
  e.type = down ? SDL_MOUSEBUTTONDOWN : SDL_MOUSEBUTTONUP;
  e.button.windowID = static_cast<Uint32>(window);
  e.button.button = static_cast<Uint8>(button);
  e.button.state = down ? SDL_PRESSED : SDL_RELEASED;
  e.button.clicks = 1;
  e.button.x = x;
  e.button.y = y;
  SDL_PushEvent(&e);
}

HOOK(void, wheel)(JNIEnv*, jclass, jint window, jint steps) {
  SDL_Event e{};
  e.type = SDL_MOUSEWHEEL;
  e.wheel.windowID = static_cast<Uint32>(window);
  e.wheel.y = steps;
  e.wheel.direction = SDL_MOUSEWHEEL_NORMAL;
  SDL_PushEvent(&e);
}

HOOK(void, key)(JNIEnv*, jclass, jint window, jint scancode, jint keycode, jboolean down) {
  SDL_Event e{};
  e.type = down ? SDL_KEYDOWN : SDL_KEYUP;
  e.key.windowID = static_cast<Uint32>(window);
  e.key.state = down ? SDL_PRESSED : SDL_RELEASED;
  e.key.keysym.scancode = static_cast<SDL_Scancode>(scancode);
  e.key.keysym.sym = keycode;
  SDL_PushEvent(&e);
}

HOOK(void, text)(JNIEnv* env, jclass, jint window, jstring text) {
  SDL_Event e{};
  e.type = SDL_TEXTINPUT;
  e.text.windowID = static_cast<Uint32>(window);
  const char* utf = env->GetStringUTFChars(text, nullptr);
  std::strncpy(e.text.text, utf, sizeof e.text.text - 1);
  env->ReleaseStringUTFChars(text, utf);
  SDL_PushEvent(&e);
}

HOOK(void, close)(JNIEnv*, jclass, jint window) {
  SDL_Event e{};
  e.type = SDL_WINDOWEVENT;
  e.window.windowID = static_cast<Uint32>(window);
  e.window.event = SDL_WINDOWEVENT_CLOSE;
  SDL_PushEvent(&e);
}

#include <dlfcn.h>

// Heap allocations of the calling thread when the counting malloc is preloaded; -1 otherwise.
HOOK(jlong, mallocs)(JNIEnv*, jclass) {
  using Counter = unsigned long (*)();
  static auto counter = reinterpret_cast<Counter>(dlsym(RTLD_DEFAULT, "vostan_thread_mallocs"));
  return counter ? static_cast<jlong>(counter()) : -1;
}
