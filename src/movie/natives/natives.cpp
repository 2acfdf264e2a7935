// The natives of mirelo.app.VecMovie. Movie and clip handles are the ddMovie
// and ddClip addresses as Java longs.
#include <jni.h>

#include <cstdio>
#include <string>
#include <unordered_map>

#include "bridge/bridge.h"
#include "bridge/native_guard.h"
#include "console/win_console.h"
#include "graphics/texture_store.h"
#include "movie/natives/movie_host.h"

namespace {

using vostan::ArrayKind;
using vostan::PinnedArray;
using vostan::live::handleOf;

// Movies are live from n_init to n_dispose. A clip's record stays allocated
// as long as its movie, so the clips handed to Java are remembered with their
// movie and forgotten with it; any other value is no clip.
std::unordered_map<const ddClip*, ddMovie*>& handedClips() {
  static auto* clips = new std::unordered_map<const ddClip*, ddMovie*>;
  return *clips;
}

ddMovie* asMovie(jlong handle) {
  return vostan::live::find<ddMovie>(handle);
}
ddClip* asClip(jlong handle) {
  const auto* clip = static_cast<const ddClip*>(vostan::live::addressOf(handle));
  return handedClips().count(clip) ? const_cast<ddClip*>(clip) : nullptr;
}
jlong handOut(ddMovie* movie, ddClip* clip) {
  if (clip) handedClips().emplace(clip, movie);
  return handleOf(clip);
}

// Surfaces larger than this are refused: a movie's pixels would pass the
// library's memory bound.
constexpr int64_t kMaxSurfaceSide = 16384;
constexpr int64_t kMaxSurfacePixels = int64_t(64) << 20;
bool surfaceSizeOk(jint width, jint height) {
  return width >= 0 && height >= 0 && width <= kMaxSurfaceSide && height <= kMaxSurfaceSide &&
         int64_t(width) * height <= kMaxSurfacePixels;
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

// Handles that name no live movie or no clip handed out are refused: the
// native does nothing and answers 0 or null. A range of `data` beyond the
// array, or a surface too large, gives no movie.
NATIVE(jlong, n_1init)
(JNIEnv* env, jobject, jbyteArray data, jint offset, jint length, jint width, jint height) {
  if (!data) return 0;
  const bool recoverable = vostan::systemProperty(env, "vostan.movie.recoverable") == "true";
  return vostan::guarded(env, jlong{0}, [&]() -> jlong {
    if (offset < 0 || length < 0 || !surfaceSizeOk(width, height)) return 0;
    PinnedArray bytes(env, data, ArrayKind::Byte, int64_t{offset} + length);
    if (!bytes.data()) return 0;
    // Nothing between the two critical calls calls back into Java.
    const uint8_t* start = bytes.as<uint8_t>() + offset;
    ddMovie* movie = recoverable ? openRecoverable(start, length, width, height)
                                 : ddMovie_openBytes(start, length, width, height);
    if (!movie) {
      std::printf("DAMEDESITA...... \n");
      std::fflush(stdout);
      return 0;
    }
    vostan::live::add(movie);
    return handleOf(movie);
  });
}

NATIVE(void, n_1dispose)(JNIEnv*, jobject, jlong handle) {
  ddMovie* movie = vostan::live::take<ddMovie>(handle);
  if (!movie) return;
  auto& clips = handedClips();
  for (auto it = clips.begin(); it != clips.end();)
    it = it->second == movie ? clips.erase(it) : std::next(it);
  ddMovie_dispose(movie);
}

NATIVE(void, n_1setSize)(JNIEnv* env, jobject, jlong handle, jint width, jint height) {
  ddMovie* movie = asMovie(handle);
  if (movie && surfaceSizeOk(width, height))
    vostan::guardedVoid(env, [&] { ddMovie_setSize(movie, width, height); });
}

NATIVE(void, n_1drawToTexture)(JNIEnv* env, jobject, jlong handle, jint, jint x, jint y) {
  if (ddMovie* movie = asMovie(handle))
    vostan::guardedVoid(env, [&] { ddMovie_drawToTexture(movie, x, y, boundTexture()); });
}

NATIVE(void, n_1moveClipFrame)(JNIEnv* env, jobject, jlong handle, jlong clipHandle, jint frame) {
  ddMovie* movie = asMovie(handle);
  ddClip* clip = asClip(clipHandle);
  // A clip of another movie would take this movie's instances.
  if (movie && clip && handedClips()[clip] == movie)
    vostan::guardedVoid(env, [&] { ddMovie_moveClip(movie, clip, frame); });
}

NATIVE(jlong, n_1getRootClip)(JNIEnv*, jobject, jlong handle) {
  ddMovie* movie = asMovie(handle);
  return movie ? handOut(movie, movie->rootClip) : 0;
}

NATIVE(jlong, n_1getHitClip)(JNIEnv*, jobject, jlong handle, jint x, jint y) {
  ddMovie* movie = asMovie(handle);
  return movie ? handOut(movie, ddMovie_hitClip(movie, x, y)) : 0;
}

NATIVE(jfloat, n_1getParamf)(JNIEnv*, jobject, jlong handle, jint id) {
  ddMovie* movie = asMovie(handle);
  return movie ? ddMovie_paramf(movie, id) : 0.0f;
}

NATIVE(jfloat, n_1getClipParamf)(JNIEnv*, jobject, jlong handle, jint id) {
  ddClip* clip = asClip(handle);
  return clip ? ddClip_paramf(clip, id) : 0.0f;
}

NATIVE(jstring, n_1getClipParamv)(JNIEnv* env, jobject, jlong handle, jint id) {
  ddClip* clip = asClip(handle);
  if (!clip) return nullptr;
  return vostan::guarded(env, jstring{nullptr}, [&]() -> jstring {
    const char* value = ddClip_paramv(clip, id);
    if (!value) return nullptr;
    return env->NewStringUTF(ddText_toModifiedUtf8(value).c_str());
  });
}
