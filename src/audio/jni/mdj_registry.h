#pragma once
// The music contexts Java holds handles of. A handle is used only once it is
// found here, so a dead or made-up one reaches nothing.
#include <jni.h>

#include <cstdint>
#include <mutex>

#include "audio/mdj/mdj_context.h"

namespace vostan {

std::mutex& musicContextsLock();
// The live context of a handle, or null; call under musicContextsLock.
MDJSoundContext* findMusicContext(jlong handle);

// Runs f(context) under the lock when the handle is live; `dead` otherwise.
template <class R, class F>
R withMusicContext(jlong handle, R dead, F f) {
  std::lock_guard<std::mutex> lock(musicContextsLock());
  MDJSoundContext* c = findMusicContext(handle);
  return c ? f(*c) : dead;
}

}  // namespace vostan
