// The natives of mirelo.app.win32.WinConsole. All are static and act on theConsole.
#include <jni.h>

#include <memory>
#include <string>

#include "bridge/bridge.h"
#include "bridge/native_guard.h"
#include "console/java_events.h"
#include "console/keyboard.h"
#include "console/win_console.h"
#include "controller/scan_natives.h"
#include "graphics/d3d_graphics.h"
#include "platform/codepage.h"
#include "platform/low_memory.h"
#include "platform/win32_defs.h"

using vostan::JniEvents;
using vostan::theConsole;
using vostan::platform::windowSystem;
namespace keyboard = vostan::keyboard;

namespace vostan {

jobject JniEvents::checked(jobject result) {
  // A factory that throws leaves its exception for Java to see on return; the
  // pump carries on with a null.
  if (env_->ExceptionCheck()) return nullptr;
  return result;
}

jobject JniEvents::keyEvent(int id, int modifiers, int keyCode, uint16_t character) {
  static jmethodID factory = nullptr;
  if (!factory)
    factory = env_->GetStaticMethodID(cls_, "createKeyEvent", "(IIIC)Lmirelo/mwt/event/KeyEvent;");
  if (!factory) return nullptr;
  return checked(env_->CallStaticObjectMethod(cls_, factory, id, modifiers, keyCode,
                                              static_cast<jchar>(character)));
}

jobject JniEvents::mouseEvent(int id, int modifiers, int x, int y, int clickCount, bool popup,
                              int rotation) {
  static jmethodID factory = nullptr;
  if (!factory)
    factory =
        env_->GetStaticMethodID(cls_, "createMouseEvent", "(IIIIIZI)Lmirelo/mwt/event/MouseEvent;");
  if (!factory) return nullptr;
  return checked(env_->CallStaticObjectMethod(cls_, factory, id, modifiers, x, y, clickCount,
                                              static_cast<jboolean>(popup), rotation));
}

jobject JniEvents::applicationEvent(int id) {
  static jmethodID factory = nullptr;
  if (!factory)
    factory = env_->GetStaticMethodID(cls_, "createApplicationEvent",
                                      "(I)Lmirelo/mwt/event/ApplicationEvent;");
  if (!factory) return nullptr;
  return checked(env_->CallStaticObjectMethod(cls_, factory, id));
}

jobject JniEvents::dropTargetEvent(int id, int keyState, int x, int y, jobject files) {
  static jmethodID factory = nullptr;
  if (!factory)
    factory = env_->GetStaticMethodID(cls_, "createDropTargetEvent",
                                      "(IIIILjava/lang/Object;)Lmirelo/mwt/dnd/DropTargetEvent;");
  if (!factory) return nullptr;
  return checked(env_->CallStaticObjectMethod(cls_, factory, id, keyState, x, y, files));
}

jobject JniEvents::inputMethodEvent(int id, const char16_t* text, int length,
                                    const int32_t* attributes, int committedCount, int caret) {
  static jmethodID factory = nullptr;
  if (!factory)
    factory =
        env_->GetStaticMethodID(cls_, "createInputMethodEvent",
                                "(ILjava/lang/String;[III)Lmirelo/mwt/event/InputMethodEvent;");
  if (!factory) return nullptr;
  jstring string = nullptr;
  jintArray array = nullptr;
  if (text) {
    string = env_->NewString(reinterpret_cast<const jchar*>(text), length);
    if (!string) return nullptr;
  }
  if (text && attributes) {
    array = env_->NewIntArray(length);
    if (!array) return nullptr;
    env_->SetIntArrayRegion(array, 0, length, attributes);
  }
  jobject event = checked(
      env_->CallStaticObjectMethod(cls_, factory, id, string, array, committedCount, caret));
  if (string) env_->DeleteLocalRef(string);
  if (array) env_->DeleteLocalRef(array);
  return event;
}

void JniEvents::throwOutOfMemory() {
  throwOutOfMemoryError(env_, "out of memory error");
}

void JniEvents::throwInternal() {
  throwInternalError(env_, "internal error");
}

jobject JniEvents::newFileArray(const std::vector<std::string>& paths) {
  static jclass fileClass = nullptr;
  static jmethodID fileInit = nullptr;
  if (!fileClass) {
    jclass local = env_->FindClass("java/io/File");
    if (!local) return nullptr;
    fileClass = static_cast<jclass>(env_->NewGlobalRef(local));
    fileInit = env_->GetMethodID(fileClass, "<init>", "(Ljava/lang/String;)V");
  }
  jobjectArray array = env_->NewObjectArray(static_cast<jsize>(paths.size()), fileClass, nullptr);
  if (!array) return nullptr;
  for (std::size_t i = 0; i < paths.size(); ++i) {
    // Paths keep to the system code page, whatever the keyboard's is.
    jstring name = newStringFromPath(env_, paths[i].c_str());
    jobject file = env_->NewObject(fileClass, fileInit, name);
    if (env_->ExceptionCheck()) return nullptr;
    env_->SetObjectArrayElement(array, static_cast<jsize>(i), file);
    env_->DeleteLocalRef(file);
    env_->DeleteLocalRef(name);
  }
  return env_->NewGlobalRef(array);
}

}  // namespace vostan

#define NATIVE(ret, name) extern "C" JNIEXPORT ret JNICALL Java_mirelo_app_win32_WinConsole_##name

// Lifecycle. Before n_init every native that needs the console does nothing
// and answers its "nothing" value.

NATIVE(jint, n_1init)(JNIEnv*, jclass) {
  return vostan::platform::toHandle32(vostan::initConsole());
}

NATIVE(jboolean, n_1createWindow)(JNIEnv* env, jclass, jstring title, jint w, jint h, jint frame) {
  if (!theConsole) return JNI_FALSE;
  return vostan::guarded(env, jboolean{JNI_FALSE}, [&]() -> jboolean {
    std::unique_ptr<char[]> text(vostan::getMultiByteString(env, title));
    // The desktop gets the title from the Java string itself: the text code
    // page may lack its characters.
    std::string shown;
    if (title) {
      const jsize length = env->GetStringLength(title);
      const jchar* chars = env->GetStringChars(title, nullptr);
      if (chars) {
        shown = vostan::platform::wideToUtf8(reinterpret_cast<const char16_t*>(chars),
                                             static_cast<std::size_t>(length));
        env->ReleaseStringChars(title, chars);
      }
    }
    return theConsole->createWindow(text.get(), w, h, frame, shown.c_str());
  });
}

NATIVE(jboolean, n_1createDisplay)(JNIEnv*, jclass, jint w, jint h, jint bits, jint refresh) {
  if (!theConsole) return JNI_FALSE;
  theConsole->createDisplay(w, h, bits, refresh);
  return JNI_TRUE;
}

NATIVE(jboolean, n_1disposeDisplay)(JNIEnv*, jclass) {
  if (!theConsole) return JNI_FALSE;
  theConsole->destroyDisplay(true);
  return JNI_TRUE;
}

NATIVE(jboolean, n_1createGraphics)(JNIEnv* env, jclass, jlong pixelFormat) {
  if (!theConsole) return JNI_FALSE;
  if (!theConsole->window) return JNI_FALSE;
  return vostan::guarded(env, jboolean{JNI_FALSE}, [&]() -> jboolean {
    return theConsole->graphics->createDevice(theConsole->window, pixelFormat) >= 0;
  });
}

NATIVE(void, n_1disposeGraphics)(JNIEnv*, jclass) {
  if (!theConsole) return;
  if (theConsole->window && theConsole->deviceContext && theConsole->graphics->hasDevice())
    theConsole->graphics->disposeDevice();
}

NATIVE(jboolean, n_1makeCurrent)(JNIEnv*, jclass) {
  if (!theConsole) return JNI_FALSE;
  if (!theConsole->window || !theConsole->deviceContext || !theConsole->graphics->hasDevice())
    return JNI_FALSE;
  return theConsole->graphics->beginScene() >= 0;
}

NATIVE(void, n_1free)(JNIEnv*, jclass) {
  if (!theConsole) return;
  if (theConsole->graphics->hasDevice()) theConsole->graphics->endScene();
}

NATIVE(void, n_1swapBuffers)(JNIEnv*, jclass) {
  if (!theConsole) return;
  if (theConsole->graphics->hasDevice()) theConsole->graphics->swapBuffers();
}

NATIVE(void, n_1update)(JNIEnv* env, jclass cls) {
  if (!theConsole) return;
  vostan::guardedVoid(env, [&] {
    JniEvents events(env, cls);
    theConsole->update(events);
  });
}

NATIVE(void, n_1minimize)(JNIEnv*, jclass, jboolean restoreMode) {
  if (!theConsole) return;
  theConsole->minimize(restoreMode);
}

NATIVE(jint, n_1getTimeMillis)(JNIEnv*, jclass) {
  return static_cast<jint>(windowSystem().timeGetTime());
}

NATIVE(jboolean, n_1isForeProcess)(JNIEnv*, jclass) {
  if (!theConsole) return JNI_FALSE;
  return theConsole->foreground != 0;
}

NATIVE(jint, n_1getScreenSize)(JNIEnv*, jclass) {
  if (!theConsole) return 0;
  return static_cast<jint>((static_cast<uint32_t>(theConsole->clientWidth) << 16) |
                           (static_cast<uint32_t>(theConsole->clientHeight) & 0xFFFF));
}

NATIVE(jint, n_1getWindowHandle)(JNIEnv*, jclass) {
  if (!theConsole) return 0;
  return static_cast<jint>(theConsole->window);
}

NATIVE(void, n_1enableScreenSaver)(JNIEnv*, jclass, jboolean enabled) {
  if (!theConsole) return;
  theConsole->screenSaverEnabled = enabled;
}

NATIVE(jint, n_1command)(JNIEnv*, jclass, jint, jint) {
  return 0;
}

// Event pump

NATIVE(jobject, n_1peekEvent)(JNIEnv* env, jclass cls) {
  if (!theConsole) return nullptr;
  return vostan::guarded(env, jobject{nullptr}, [&] {
    JniEvents events(env, cls);
    return theConsole->peekEvent(events);
  });
}

NATIVE(void, n_1disableEvents)(JNIEnv* env, jclass, jintArray ids) {
  if (!theConsole) return;
  if (ids == nullptr) return;
  const jsize n = env->GetArrayLength(ids);
  auto* values = static_cast<jint*>(env->GetPrimitiveArrayCritical(ids, nullptr));
  if (values == nullptr) return;
  theConsole->disableEvents(values, n);
  env->ReleasePrimitiveArrayCritical(ids, values, JNI_ABORT);
}

// Keyboard and mouse

NATIVE(jboolean, n_1isKeyPressed)(JNIEnv*, jclass, jint code) {
  return keyboard::isKeyPressed(code);
}

NATIVE(jint, n_1getModifiers)(JNIEnv*, jclass) {
  if (!theConsole) return 0;
  return theConsole->modifiers;
}

NATIVE(jint, n_1getMousePos)(JNIEnv*, jclass) {
  if (!theConsole) return 0;
  const auto p = windowSystem().getCursorPos();
  const int x = p.x - theConsole->clientLeft, y = p.y - theConsole->clientTop;
  return static_cast<jint>((static_cast<uint32_t>(x) << 16) | (static_cast<uint32_t>(y) & 0xFFFF));
}

NATIVE(void, n_1setMousePos)(JNIEnv*, jclass, jint x, jint y) {
  if (!theConsole) return;
  if (theConsole->displayKind == 0) {
    x += theConsole->clientLeft;
    y += theConsole->clientTop;
  }
  windowSystem().setCursorPos(x, y);
}

NATIVE(void, n_1setCursorVisible)(JNIEnv*, jclass, jboolean visible) {
  if (!theConsole) return;
  // Never ShowCursor here: the window applies it when the system asks (WM_SETCURSOR).
  auto& ws = windowSystem();
  vostan::WinConsole* c = theConsole;
  const auto p = ws.screenToClient(c->window, ws.getCursorPos());
  const auto r = ws.getClientRect(c->window);
  const int hit = (p.x >= r.left && p.x <= r.right && p.y >= r.top && p.y <= r.bottom) ? 1 : 2;
  if (!visible && c->cursorHidden == 0) {
    c->cursorHidden = 1;
    ws.postMessage(c->window, vostan::win::WM_SETCURSOR, 0, hit);
  } else if (visible && c->cursorHidden == 1) {
    c->cursorHidden = 0;
    ws.postMessage(c->window, vostan::win::WM_SETCURSOR, 0, hit);
  }
}

// Input methods. Before n_init there is no console: these do nothing.

NATIVE(void, n_1enableInputMethods)(JNIEnv*, jclass, jboolean enabled) {
  if (!theConsole) return;
  theConsole->inputMethodsEnabled = enabled;
  // The pump attaches the context, or cancels the composition and detaches it.
  windowSystem().postMessage(theConsole->window, vostan::win::MSG_INPUT_CONTEXT, enabled ? 1 : 0,
                             0);
}

NATIVE(jint, n_1setInputMethodActiveMode)(JNIEnv*, jclass) {
  if (!theConsole) return 0;
  theConsole->inputMethodMode = 2;
  return 1;
}

NATIVE(void, n_1setInputMethodPassiveMode)(JNIEnv*, jclass, jboolean passive) {
  if (theConsole) theConsole->inputMethodMode = passive ? 1 : 0;
}

NATIVE(void, n_1setCandidateLocation)(JNIEnv*, jclass, jint x, jint y) {
  if (!theConsole) return;
  // Applied when the candidate list opens next.
  theConsole->candidateX = x;
  theConsole->candidateY = y;
}

// Display modes

static jobject displayModeObject(JNIEnv* env, jclass cls, const vostan::platform::DisplayMode& m) {
  static jmethodID factory = nullptr;
  if (!factory)
    factory = env->GetStaticMethodID(cls, "createDisplayMode", "(IIII)Lmirelo/app/DisplayMode;");
  if (!factory) return nullptr;
  jobject o = env->CallStaticObjectMethod(cls, factory, m.width, m.height, m.bits, m.refresh);
  return env->ExceptionCheck() ? nullptr : o;
}

NATIVE(jobject, n_1getDisplayMode)(JNIEnv* env, jclass cls) {
  vostan::platform::DisplayMode m;
  windowSystem().enumDisplaySettings(-1, m);
  return displayModeObject(env, cls, m);
}

NATIVE(jobjectArray, n_1getDisplayModeList)(JNIEnv* env, jclass cls) {
  // Held globally: the class lives as long as the process caches it.
  static jclass modeClass = nullptr;
  if (!modeClass) {
    jclass local = env->FindClass("mirelo/app/DisplayMode");
    if (!local) return nullptr;
    modeClass = static_cast<jclass>(env->NewGlobalRef(local));
  }
  auto& ws = windowSystem();
  vostan::platform::DisplayMode m;
  int count = 0;
  while (ws.enumDisplaySettings(count, m)) ++count;
  jobjectArray list = env->NewObjectArray(count, modeClass, nullptr);
  if (!list) return nullptr;
  for (int i = 0; i < count; ++i) {
    ws.enumDisplaySettings(i, m);
    jobject mode = displayModeObject(env, cls, m);
    if (env->ExceptionCheck()) return nullptr;
    env->SetObjectArrayElement(list, i, mode);
    env->DeleteLocalRef(mode);
  }
  return list;
}

NATIVE(jboolean, n_1isDisplayAvailable)(JNIEnv*, jclass, jint, jint, jint, jint) {
  return JNI_FALSE;
}

// Drag and drop
NATIVE(void, n_1enableDrop)(JNIEnv*, jclass, jboolean enabled) {
  if (theConsole) theConsole->enableDrop(enabled);
}

// Inline web views: all but the selection and the reserved entries act on
// the selected slot.

NATIVE(void, n_1showInlineWeb)(JNIEnv*, jclass, jint x, jint y, jint width, jint height) {
  if (theConsole) vostan::web::show(*theConsole, x, y, width, height);
}
NATIVE(void, n_1hideInlineWeb)(JNIEnv*, jclass) {
  if (theConsole) vostan::web::hide(*theConsole);
}
NATIVE(void, n_1setInlineWebURL)(JNIEnv* env, jclass, jstring url) {
  std::printf("n_setInlineWebURL %d \n", static_cast<int>(reinterpret_cast<intptr_t>(url)));
  if (!theConsole) return;
  char16_t* wide = vostan::getWideString(env, url);
  vostan::web::setUrl(*theConsole, wide, wide ? std::char_traits<char16_t>::length(wide) : 0);
  delete[] wide;
}
NATIVE(jstring, n_1getInlineWebURL)(JNIEnv* env, jclass) {
  const std::u16string* url = theConsole ? vostan::web::url(*theConsole) : nullptr;
  if (!url) return nullptr;
  return env->NewString(reinterpret_cast<const jchar*>(url->data()),
                        static_cast<jsize>(url->size()));
}
NATIVE(void, n_1selectInlineWeb)(JNIEnv*, jclass, jint slot) {
  if (theConsole) vostan::web::select(*theConsole, slot);
}
NATIVE(jint, n_1getInlineWebParam)(JNIEnv*, jclass, jint) {
  return 0;
}
NATIVE(void, n_1setInlineWebParam)(JNIEnv*, jclass, jint, jint) {}

NATIVE(jobjectArray, n_1scanControllers)(JNIEnv* env, jclass cls) {
  return vostan::guarded(env, jobjectArray{nullptr},
                         [&] { return vostan::controller::scanForJava(env, cls); });
}
