// Test-only natives that push SDL events, as a user at the window would make
// them, so that JVM tests drive the real backend.
#include <SDL.h>
#include <SDL_syswm.h>
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

// A composition as the input method reports it; text longer than the event's
// own buffer goes as the extended event, as SDL sends it.
HOOK(void, editing)(JNIEnv* env, jclass, jint window, jstring text, jint start, jint length) {
  SDL_Event e{};
  const char* utf = env->GetStringUTFChars(text, nullptr);
  if (std::strlen(utf) < sizeof e.edit.text) {
    e.type = SDL_TEXTEDITING;
    e.edit.windowID = static_cast<Uint32>(window);
    std::strncpy(e.edit.text, utf, sizeof e.edit.text - 1);
    e.edit.start = start;
    e.edit.length = length;
  } else {
    e.type = SDL_TEXTEDITING_EXT;
    e.editExt.windowID = static_cast<Uint32>(window);
    e.editExt.text = SDL_strdup(utf);  // the receiver frees it
    e.editExt.start = start;
    e.editExt.length = length;
  }
  env->ReleaseStringUTFChars(text, utf);
  SDL_PushEvent(&e);
}

// The X11 window behind an SDL window, 0 on other drivers.
HOOK(jlong, x11Window)(JNIEnv*, jclass, jint window) {
  SDL_Window* w = SDL_GetWindowFromID(static_cast<Uint32>(window));
  SDL_SysWMinfo info;
  SDL_VERSION(&info.version);
  if (!w || !SDL_GetWindowWMInfo(w, &info) || info.subsystem != SDL_SYSWM_X11) return 0;
  return static_cast<jlong>(info.info.x11.window);
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

// The text and exception helpers, reached from Java.
#include "bridge/bridge.h"

#define BRIDGE(ret, name) extern "C" JNIEXPORT ret JNICALL Java_vostan_test_BridgeHooks_##name

BRIDGE(jstring, multiByteRoundTrip)(JNIEnv* env, jclass, jstring s, jint codePage) {
  const int saved = vostan::textCodePage;
  vostan::textCodePage = codePage;
  char* bytes = vostan::getMultiByteString(env, s);
  jstring back = bytes ? vostan::newStringFromMultiByte(env, bytes, std::strlen(bytes)) : nullptr;
  delete[] bytes;
  vostan::textCodePage = saved;
  return back;
}

BRIDGE(jint, multiByteLength)(JNIEnv* env, jclass, jstring s, jint codePage) {
  const int saved = vostan::textCodePage;
  vostan::textCodePage = codePage;
  char* bytes = vostan::getMultiByteString(env, s);
  const jint n = bytes ? static_cast<jint>(std::strlen(bytes)) : -1;
  delete[] bytes;
  vostan::textCodePage = saved;
  return n;
}

BRIDGE(jstring, fromNullBytes)(JNIEnv* env, jclass, jint length) {
  return vostan::newStringFromMultiByte(env, nullptr, static_cast<std::size_t>(length));
}

BRIDGE(jstring, wideRoundTrip)(JNIEnv* env, jclass, jstring s) {
  char16_t* wide = vostan::getWideString(env, s);
  if (!wide) return nullptr;
  jsize n = 0;
  while (wide[n]) ++n;
  jstring back = env->NewString(reinterpret_cast<const jchar*>(wide), n);
  delete[] wide;
  return back;
}

BRIDGE(jstring, fromPath)(JNIEnv* env, jclass, jbyteArray utf8) {
  const jsize n = env->GetArrayLength(utf8);
  char path[256] = {};
  env->GetByteArrayRegion(utf8, 0, n < 255 ? n : 255, reinterpret_cast<jbyte*>(path));
  return vostan::newStringFromPath(env, path);
}

BRIDGE(void, throwInternal)(JNIEnv* env, jclass, jstring message) {
  const char* m = env->GetStringUTFChars(message, nullptr);
  vostan::throwInternalError(env, m);
  env->ReleaseStringUTFChars(message, m);
}

BRIDGE(void, throwOutOfMemory)(JNIEnv* env, jclass) {
  vostan::throwOutOfMemoryError(env, "out of memory error");
}

BRIDGE(void, throwMissingClass)(JNIEnv* env, jclass) {
  vostan::throwNew(env, "no/such/Thing", "never seen");
}

HOOK(void, dropFiles)(JNIEnv* env, jclass, jint window, jobjectArray paths) {
  SDL_Event e{};
  e.type = SDL_DROPBEGIN;
  e.drop.windowID = static_cast<Uint32>(window);
  SDL_PushEvent(&e);
  const jsize n = env->GetArrayLength(paths);
  for (jsize i = 0; i < n; ++i) {
    auto path = static_cast<jstring>(env->GetObjectArrayElement(paths, i));
    const char* utf = env->GetStringUTFChars(path, nullptr);
    e = SDL_Event{};
    e.type = SDL_DROPFILE;
    e.drop.windowID = static_cast<Uint32>(window);
    e.drop.file = SDL_strdup(utf);  // the receiver frees it
    SDL_PushEvent(&e);
    env->ReleaseStringUTFChars(path, utf);
    env->DeleteLocalRef(path);
  }
  e = SDL_Event{};
  e.type = SDL_DROPCOMPLETE;
  e.drop.windowID = static_cast<Uint32>(window);
  SDL_PushEvent(&e);
}

// The window's title as the X server holds it (_NET_WM_NAME, UTF-8), or null
// when the window is not on X11.
#include <SDL_syswm.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>

HOOK(jbyteArray, titleOnX11)(JNIEnv* env, jclass, jint window) {
  SDL_Window* w = SDL_GetWindowFromID(static_cast<Uint32>(window));
  SDL_SysWMinfo info;
  SDL_VERSION(&info.version);
  if (!w || !SDL_GetWindowWMInfo(w, &info) || info.subsystem != SDL_SYSWM_X11) return nullptr;
  Display* display = info.info.x11.display;
  Atom name = XInternAtom(display, "_NET_WM_NAME", False);
  Atom utf8 = XInternAtom(display, "UTF8_STRING", False);
  Atom type = None;
  int format = 0;
  unsigned long count = 0, after = 0;
  unsigned char* data = nullptr;
  if (XGetWindowProperty(display, info.info.x11.window, name, 0, 4096, False, utf8, &type, &format,
                         &count, &after, &data) != Success ||
      type != utf8 || format != 8) {
    if (data) XFree(data);
    return nullptr;
  }
  jbyteArray bytes = env->NewByteArray(static_cast<jsize>(count));
  if (bytes)
    env->SetByteArrayRegion(bytes, 0, static_cast<jsize>(count), reinterpret_cast<jbyte*>(data));
  XFree(data);
  return bytes;
}
