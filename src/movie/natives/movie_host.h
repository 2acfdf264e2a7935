// The movie as Java sees it, without Java: opening from bytes, resizing,
// drawing into a texture through an upload hook, hit tests and parameters.
// The natives of mirelo.app.VecMovie and the command-line exporter both stand
// on these, so both reach a frame the same way.
#pragma once

#include <cstdint>
#include <string>

#include "movie/dd.h"

// Opens a movie of `length` bytes at `data` onto a new surface and runs the
// opening step; the bytes are not needed afterwards. Null when the header or
// a compressed body is unreadable, or when opening needs more memory than
// ddMovieBudgetFactor times the movie's data (then nothing of it is left
// behind). What opening took sets the budget of the movie's later work.
// `listener`, when given, hears of every block. Installs the rasteriser on
// first use.
ddMovie* ddMovie_openBytes(const uint8_t* data, int32_t length, int width, int height,
                           ddBlockListener listener = nullptr, void* listenerContext = nullptr);

// A new zero-filled surface of the given size; everything is redrawn.
void ddMovie_setSize(ddMovie* movie, int width, int height);

// ddClip_moveFrame, within the movie's memory budget.
void ddMovie_moveClip(ddMovie* movie, ddClip* clip, int32_t frame);

// The texture a movie draws into. `present` is false when no texture with
// storage is bound; `upload` receives tightly packed RGBA rows, top first.
struct ddTextureTarget {
  bool present;
  int32_t width, height;
  void (*upload)(void* context, int32_t x, int32_t y, int32_t width, int32_t height,
                 const void* rgba);
  void* context;
};

// Redraws what changed, then uploads the whole surface at (x, y) unless the
// target is absent or smaller than the surface.
void ddMovie_drawToTexture(ddMovie* movie, int32_t x, int32_t y, const ddTextureTarget& target);

// Clips taking part in a hit test, the root among them.
constexpr int ddHitCandidates = 100;

// Whether a shape of `clip` (or of a clip in it) covers the point, in target
// pixels with 10 fraction bits, as of the last draw.
bool ddClip_hit(const ddClip* clip, ddFixed x, ddFixed y);
// The latest-made clip under the point (x, y) in surface pixels, among the
// first ddHitCandidates clips on stage; the root clip never answers.
ddClip* ddMovie_hitClip(ddMovie* movie, int32_t x, int32_t y);

// 0: frames per second; 1: frames of the root timeline; others 0.
float ddMovie_paramf(const ddMovie* movie, int32_t id);
// 1: frames of the clip's timeline; others 0.
float ddClip_paramf(const ddClip* clip, int32_t id);
// 0: the clip's name; others, or a clip without a name, null.
const char* ddClip_paramv(const ddClip* clip, int32_t id);

// `text` made safe for a Java string built from modified UTF-8: valid UTF-8
// sequences of up to three bytes pass, any other byte is taken as Latin-1.
std::string ddText_toModifiedUtf8(const char* text);
