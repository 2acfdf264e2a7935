#pragma once
// The one place where the sound natives meet the console: the device they
// use, the window it is bound to, and whether the window is in front.
#include <cstdint>

namespace vostan {

class AudioManager;

AudioManager* consoleAudio();
void setConsoleAudio(AudioManager* audio);
uint32_t consoleWindow();
bool consoleForeground();

}  // namespace vostan
