#include "audio/jni/console_link.h"

#if __has_include("console/win_console.h")
#include "console/win_console.h"
#define VOSTAN_HAS_CONSOLE 1
#endif

namespace vostan {

namespace {
// Used while no console exists, as in tests of the sound natives alone.
AudioManager* audioWithoutConsole = nullptr;
}  // namespace

#ifdef VOSTAN_HAS_CONSOLE
AudioManager* consoleAudio() {
  return theConsole ? theConsole->audio : audioWithoutConsole;
}
void setConsoleAudio(AudioManager* audio) {
  if (theConsole)
    theConsole->audio = audio;
  else
    audioWithoutConsole = audio;
}
uint32_t consoleWindow() {
  return theConsole ? theConsole->window : 0;
}
bool consoleForeground() {
  return theConsole ? theConsole->foreground != 0 : true;
}
#else
AudioManager* consoleAudio() {
  return audioWithoutConsole;
}
void setConsoleAudio(AudioManager* audio) {
  audioWithoutConsole = audio;
}
uint32_t consoleWindow() {
  return 0;
}
bool consoleForeground() {
  return true;
}
#endif

}  // namespace vostan
