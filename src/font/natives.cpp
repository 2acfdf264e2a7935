// The natives of mirelo.gfx.font.SystemFont. A font handle is the address of
// its SystemFont; fonts live to the end of the process, and a handle Java
// passes is used only once it is found among them.
#include <jni.h>

#include <memory>
#include <new>
#include <string>
#include <unordered_map>

#include "bridge/bridge.h"
#include "console/win_console.h"
#include "font/system_font.h"
#include "graphics/texture_store.h"
#include "platform/codepage.h"
#include "platform/font/freetype_font_system.h"

using vostan::font::CharacterMetrics;
using vostan::font::SystemFont;

namespace {

constexpr int kUtf8 = 65001;
constexpr int32_t kTexture2D = 3553;
constexpr int32_t kRGBA = 6408;
constexpr int32_t kUnsignedByte = 5121;

vostan::platform::FontSystem& fontSystem() {
  static vostan::platform::FreeTypeFontSystem system;
  return system;
}

std::unordered_map<jlong, std::unique_ptr<SystemFont>>& fonts() {
  static std::unordered_map<jlong, std::unique_ptr<SystemFont>> all;
  return all;
}

SystemFont* liveFont(jlong handle) {
  auto it = fonts().find(handle);
  return it == fonts().end() ? nullptr : it->second.get();
}

jlong keep(std::unique_ptr<SystemFont> font) {
  const auto handle = static_cast<jlong>(reinterpret_cast<intptr_t>(font.get()));
  fonts()[handle] = std::move(font);
  return handle;
}

// A Java string as UTF-8; "" for null.
std::string utf8(JNIEnv* env, jstring s) {
  std::unique_ptr<char16_t[]> wide(vostan::getWideString(env, s));
  if (!wide) return {};
  size_t length = 0;
  while (wide[length]) length++;
  std::string bytes(length * 3, '\0');
  bytes.resize(
      vostan::platform::wideToMultiByte(kUtf8, wide.get(), length, bytes.data(), bytes.size()));
  return bytes;
}

std::unique_ptr<SystemFont> makeFont(JNIEnv* env, jstring face, jint height, jint flags,
                                     const SystemFont* base) {
  vostan::platform::FontRequest request;
  request.family = utf8(env, face);
  request.height = height;
  request.bold = (flags & vostan::font::kBold) != 0;
  // A family that is not there leaves a font without glyphs.
  return std::make_unique<SystemFont>(fontSystem().open(request), flags, base);
}

// Field ids of a Java class, looked up once for the first class met; an
// object of another class has its own looked up at each call.
template <int N>
struct FieldIds {
  const char* names[N];
  const char* signatures[N];
  jclass cls = nullptr;
  jfieldID cached[N] = {};

  // Null when the object lacks one of the fields.
  const jfieldID* of(JNIEnv* env, jobject object, jfieldID (&scratch)[N]) {
    if (!object) return nullptr;
    if (cls && env->IsInstanceOf(object, cls)) return cached;
    jclass objectClass = env->GetObjectClass(object);
    for (int i = 0; i < N; i++) {
      scratch[i] = env->GetFieldID(objectClass, names[i], signatures[i]);
      if (!scratch[i]) {
        env->ExceptionClear();
        env->DeleteLocalRef(objectClass);
        return nullptr;
      }
    }
    if (!cls) {
      cls = static_cast<jclass>(env->NewGlobalRef(objectClass));
      for (int i = 0; i < N; i++) cached[i] = scratch[i];
    }
    env->DeleteLocalRef(objectClass);
    return scratch;
  }
};

FieldIds<5> fontFields{{"avascent", "avdescent", "height", "canvasw", "canvash"},
                       {"F", "F", "F", "I", "I"}};
FieldIds<8> characterFields{
    {"ascent", "descent", "advance", "lsb", "cwidth", "cheight", "cy", "usealt"},
    {"F", "F", "F", "F", "I", "I", "I", "Z"}};

void uploadToEntry(void* context, int32_t x, int32_t y, int32_t width, int32_t height,
                   const void* rgba) {
  vostan::D3DGraphics& g = *vostan::theConsole->graphics;
  vostan::updateTexture(static_cast<vostan::TextureEntry*>(context), g.device, kTexture2D, 0, x, y,
                        width, height, kRGBA, kUnsignedByte, rgba);
}

vostan::font::TextureTarget boundTarget() {
  vostan::font::TextureTarget t;
  if (!vostan::theConsole || !vostan::theConsole->graphics) return t;
  vostan::D3DGraphics& g = *vostan::theConsole->graphics;
  vostan::TextureEntry* e = g.boundTextures[g.currentStage];
  if (!e || !e->texture) return t;
  t = {true, int32_t(e->desc.width), int32_t(e->desc.height), uploadToEntry, e};
  return t;
}

void outOfMemory(JNIEnv* env) {
  vostan::throwOutOfMemoryError(env, "SystemFont");
}

}  // namespace

#define NATIVE(ret, name) extern "C" JNIEXPORT ret JNICALL Java_mirelo_gfx_font_SystemFont_##name

NATIVE(jlong, n_1init)(JNIEnv* env, jobject self, jstring face, jint height, jint flags) {
  try {
    std::unique_ptr<SystemFont> font = makeFont(env, face, height, flags, nullptr);
    jfieldID scratch[5];
    if (const jfieldID* f = fontFields.of(env, self, scratch)) {
      env->SetFloatField(self, f[0], static_cast<jfloat>(font->textMetric.ascent));
      env->SetFloatField(self, f[1], static_cast<jfloat>(font->textMetric.descent));
      env->SetFloatField(self, f[2], static_cast<jfloat>(font->textMetric.height));
      env->SetIntField(self, f[3], font->canvasWidth);
      env->SetIntField(self, f[4], font->canvasHeight);
    }
    return keep(std::move(font));
  } catch (const std::bad_alloc&) {
    outOfMemory(env);
  } catch (...) {
  }
  return 0;
}

NATIVE(void, n_1setAltFont)
(JNIEnv* env, jobject, jlong handle, jstring face, jint height, jint flags, jint altParamA,
 jint altParamB) {
  try {
    SystemFont* main = liveFont(handle);
    if (!main) return;
    std::unique_ptr<SystemFont> alt = makeFont(env, face, height, flags, main);
    alt->altParamA = altParamA;
    alt->altParamB = altParamB;
    // An older alternate stays alive: Java may still hold characters of it.
    main->altFont = alt.get();
    keep(std::move(alt));
  } catch (const std::bad_alloc&) {
    outOfMemory(env);
  } catch (...) {
  }
}

NATIVE(jlong, n_1activateFont)(JNIEnv* env, jclass, jstring path) {
  try {
    if (!path) return 0;
    return fontSystem().addFontFile(utf8(env, path));
  } catch (const std::bad_alloc&) {
    outOfMemory(env);
  } catch (...) {
  }
  return 0;
}

NATIVE(void, n_1initCharacter)(JNIEnv* env, jobject, jlong handle, jchar character, jobject info) {
  try {
    SystemFont* font = liveFont(handle);
    jfieldID scratch[8];
    const jfieldID* f = font ? characterFields.of(env, info, scratch) : nullptr;
    if (!f) return;
    CharacterMetrics m;
    bool useAlt = false;
    font->initCharacter(character, m, useAlt);
    if (useAlt) env->SetBooleanField(info, f[7], JNI_TRUE);
    env->SetFloatField(info, f[0], m.ascent);
    env->SetFloatField(info, f[1], m.descent);
    env->SetFloatField(info, f[2], m.advance);
    env->SetFloatField(info, f[3], m.lsb);
    env->SetIntField(info, f[4], m.cwidth);
    env->SetIntField(info, f[5], m.cheight);
    env->SetIntField(info, f[6], m.cy);
  } catch (const std::bad_alloc&) {
    outOfMemory(env);
  } catch (...) {
  }
}

NATIVE(void, n_1createCache)
(JNIEnv* env, jobject, jlong handle, jchar character, jint x, jint y, jint width, jint height, jint,
 jint, jint, jboolean useAlt) {
  try {
    if (SystemFont* font = liveFont(handle))
      font->createCache(character, x, y, width, height, useAlt, boundTarget());
  } catch (const std::bad_alloc&) {
    outOfMemory(env);
  } catch (...) {
  }
}
