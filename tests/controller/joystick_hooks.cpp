// Test-only natives that plug SDL virtual joysticks in and move their axes,
// buttons and hats, so JVM tests drive the real controller backend.
#include <SDL.h>
#include <jni.h>

#include <cstring>

#define HOOK(ret, name) extern "C" JNIEXPORT ret JNICALL Java_vostan_test_JoystickInject_##name

namespace {
constexpr int kRoom = 8;
SDL_Joystick* attached[kRoom];

SDL_Joystick* at(jint slot) {
  return slot >= 0 && slot < kRoom ? attached[slot] : nullptr;
}
}  // namespace

HOOK(jint, attach)(JNIEnv* env, jclass, jstring name, jint axes, jint buttons, jint hats) {
  if (!SDL_WasInit(SDL_INIT_JOYSTICK) && SDL_InitSubSystem(SDL_INIT_JOYSTICK) != 0) return -1;
  int slot = 0;
  while (slot < kRoom && attached[slot]) slot++;
  if (slot == kRoom) return -1;
  const char* utf = env->GetStringUTFChars(name, nullptr);
  SDL_VirtualJoystickDesc desc;
  std::memset(&desc, 0, sizeof desc);
  desc.version = SDL_VIRTUAL_JOYSTICK_DESC_VERSION;
  desc.type = SDL_JOYSTICK_TYPE_GAMECONTROLLER;
  desc.naxes = static_cast<Uint16>(axes);
  desc.nbuttons = static_cast<Uint16>(buttons);
  desc.nhats = static_cast<Uint16>(hats);
  desc.name = utf;
  int index = SDL_JoystickAttachVirtualEx(&desc);
  env->ReleaseStringUTFChars(name, utf);
  if (index < 0) return -1;
  attached[slot] = SDL_JoystickOpen(index);
  return attached[slot] ? slot : -1;
}

HOOK(void, axis)(JNIEnv*, jclass, jint slot, jint axis, jint value) {
  if (SDL_Joystick* j = at(slot)) SDL_JoystickSetVirtualAxis(j, axis, static_cast<Sint16>(value));
}

HOOK(void, button)(JNIEnv*, jclass, jint slot, jint button, jboolean down) {
  if (SDL_Joystick* j = at(slot)) SDL_JoystickSetVirtualButton(j, button, down ? 1 : 0);
}

HOOK(void, hat)(JNIEnv*, jclass, jint slot, jint hat, jint value) {
  if (SDL_Joystick* j = at(slot)) SDL_JoystickSetVirtualHat(j, hat, static_cast<Uint8>(value));
}

HOOK(void, detach)(JNIEnv*, jclass, jint slot) {
  SDL_Joystick* j = at(slot);
  if (!j) return;
  for (int i = 0; i < SDL_NumJoysticks(); i++)
    if (SDL_JoystickGetDeviceInstanceID(i) == SDL_JoystickInstanceID(j))
      SDL_JoystickDetachVirtual(i);
  SDL_JoystickClose(j);
  attached[slot] = nullptr;
}
