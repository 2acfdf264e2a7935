// Opens a movie and shows every frame of every clip it ever makes, with an
// update after each move, so that the whole reader and the display lists run.
// Shared by the corpus test, the fuzz target and the benchmark.
#pragma once

#include <cstdint>

#include "movie/dd.h"

struct MovieWalkLimits {
  int32_t maxClips = 1 << 30;           // clips visited
  int64_t maxMoves = int64_t(1) << 40;  // frame moves in all
};

struct MovieWalkResult {
  int parse = -1;  // ddMovie_open's result
  int32_t clipsVisited = 0;
  int64_t moves = 0;
};

// `data` must stay valid during the call. The movie is disposed at the end
// unless `keep` receives it.
inline MovieWalkResult walkMovie(const uint8_t* data, int32_t size, int width, int height,
                                 const MovieWalkLimits& limits = {}, ddMovie** keep = nullptr) {
  MovieWalkResult result;
  ddMovie* movie = ddMovie_create(ddSurface_create(width, height), data, size);
  result.parse = ddMovie_open(movie);
  if (result.parse == 0) {
    ddMovie_start(movie);
    ddMovie_draw(movie, nullptr, nullptr);
    // Clips made while walking are appended to the list and visited too.
    for (ddActiveNode* n = movie->activeHead; n && result.clipsVisited < limits.maxClips;
         n = n->next) {
      ddClip* clip = n->clip;
      if (!clip) continue;
      result.clipsVisited++;
      int32_t frames = clip->timeline->framesRead;
      for (int32_t f = frames - 1; f >= -1 && result.moves < limits.maxMoves; f--) {
        if (!n->clip) break;  // the clip left the stage while a sibling moved
        ddClip_moveFrame(movie, clip, f);
        ddMovie_draw(movie, nullptr, nullptr);
        result.moves++;
      }
    }
  }
  if (keep)
    *keep = movie;
  else
    ddMovie_dispose(movie);
  return result;
}
