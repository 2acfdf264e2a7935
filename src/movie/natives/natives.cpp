// The natives of mirelo.app.VecMovie. Movie and clip handles are the ddMovie
// and ddClip addresses as Java longs.
#include <jni.h>

#include <cstdio>
#include <string>

#include "bridge/bridge.h"
#include "console/win_console.h"
#include "graphics/texture_store.h"
#include "movie/natives/movie_host.h"

namespace {

ddMovie* asMovie(jlong handle) {
  return reinterpret_cast<ddMovie*>(static_cast<intptr_t>(handle));
}
ddClip* asClip(jlong handle) {
  return reinterpret_cast<ddClip*>(static_cast<intptr_t>(handle));
}
jlong handleOf(const void* p) {
  return static_cast<jlong>(reinterpret_cast<intptr_t>(p));
}

constexpr int32_t kTexture2D = 0x0DE1;
constexpr int32_t kRGBA = 0x1908;
constexpr int32_t kUnsignedByte = 0x1401;

void uploadToEntry(void* context, int32_t x, int32_t y, int32_t width, int32_t height,
                   const void* rgba) {
  vostan::D3DGraphics& g = *vostan::theConsole->graphics;
  vostan::updateTexture(static_cast<vostan::TextureEntry*>(context), g.device, kTexture2D, 0, x, y,
                        width, height, kRGBA, kUnsignedByte, rgba);
}

// The texture bound to the active unit, if the device has one with storage.
ddTextureTarget boundTexture() {
  ddTextureTarget t{false, 0, 0, uploadToEntry, nullptr};
  if (!vostan::theConsole || !vostan::theConsole->graphics) return t;
  vostan::D3DGraphics& g = *vostan::theConsole->graphics;
  vostan::TextureEntry* e = g.boundTextures[g.currentStage];
  if (!e || !e->texture) return t;
  t.present = true;
  t.width = int32_t(e->desc.width);
  t.height = int32_t(e->desc.height);
  t.context = e;
  return t;
}

// With the system property "vostan.movie.recoverable" set to "true", a damaged
// movie makes n_init return 0 with its message logged, instead of ending the
// process. A game that loads movies from players or the network wants that.
struct DamagedMovie {};

[[noreturn]] void throwDamaged(const char* message) {
  std::printf("%s\n", message);
  std::fflush(stdout);
  throw DamagedMovie{};
}

// Everything the open allocates is tracked, so a failure part-way frees it.
ddMovie* openRecoverable(const uint8_t* data, int32_t length, int width, int height) {
  const ddSink fatal = ddSetFatalSink(throwDamaged);
  ddMemory_setTracking(true);
  ddMovie* movie = nullptr;
  try {
    movie = ddMovie_openBytes(data, length, width, height);
    ddMemory_keepTracked();
  } catch (const DamagedMovie&) {
    ddMemory_releaseTracked();
  }
  ddMemory_setTracking(false);
  ddSetFatalSink(fatal);
  return movie;
}

}  // namespace

#define NATIVE(ret, name) extern "C" JNIEXPORT ret JNICALL Java_mirelo_app_VecMovie_##name

NATIVE(jlong, n_1init)
(JNIEnv* env, jobject, jbyteArray data, jint offset, jint length, jint width, jint height) {
  if (!data) return 0;
  const bool recoverable = vostan::systemProperty(env, "vostan.movie.recoverable") == "true";
  auto* bytes = static_cast<uint8_t*>(env->GetPrimitiveArrayCritical(data, nullptr));
  if (!bytes) return 0;
  // Nothing between the two critical calls calls back into Java.
  ddMovie* movie = recoverable ? openRecoverable(bytes + offset, length, width, height)
                               : ddMovie_openBytes(bytes + offset, length, width, height);
  env->ReleasePrimitiveArrayCritical(data, bytes, 0);
  if (!movie) {
    std::printf("DAMEDESITA...... \n");
    std::fflush(stdout);
  }
  return handleOf(movie);
}

NATIVE(void, n_1dispose)(JNIEnv*, jobject, jlong movie) {
  if (movie) ddMovie_dispose(asMovie(movie));
}

NATIVE(void, n_1setSize)(JNIEnv*, jobject, jlong movie, jint width, jint height) {
  if (movie) ddMovie_setSize(asMovie(movie), width, height);
}

NATIVE(void, n_1drawToTexture)(JNIEnv*, jobject, jlong movie, jint, jint x, jint y) {
  ddMovie_drawToTexture(asMovie(movie), x, y, boundTexture());
}

NATIVE(void, n_1moveClipFrame)(JNIEnv*, jobject, jlong movie, jlong clip, jint frame) {
  ddClip_moveFrame(asMovie(movie), asClip(clip), frame);
}

NATIVE(jlong, n_1getRootClip)(JNIEnv*, jobject, jlong movie) {
  return handleOf(asMovie(movie)->rootClip);
}

NATIVE(jlong, n_1getHitClip)(JNIEnv*, jobject, jlong movie, jint x, jint y) {
  return handleOf(ddMovie_hitClip(asMovie(movie), x, y));
}

NATIVE(jfloat, n_1getParamf)(JNIEnv*, jobject, jlong movie, jint id) {
  return ddMovie_paramf(asMovie(movie), id);
}

NATIVE(jfloat, n_1getClipParamf)(JNIEnv*, jobject, jlong clip, jint id) {
  return ddClip_paramf(asClip(clip), id);
}

NATIVE(jstring, n_1getClipParamv)(JNIEnv* env, jobject, jlong clip, jint id) {
  const char* value = ddClip_paramv(asClip(clip), id);
  if (!value) return nullptr;
  return env->NewStringUTF(ddText_toModifiedUtf8(value).c_str());
}
