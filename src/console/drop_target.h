#pragma once
// Files dragged onto the window. The target only records and posts: the Java
// objects are made by the pump, on its own thread, when the messages arrive.
#include <jni.h>

#include <string>
#include <vector>

#include "platform/window_system.h"

namespace vostan {

class SimpleDropTarget final : public platform::DropTarget {
 public:
  explicit SimpleDropTarget(platform::WindowHandle window) : window(window) {}

  uint32_t dragEnter(const char* const* files, int count, uint32_t keyState,
                     platform::Point screen) override;
  uint32_t dragOver(uint32_t keyState, platform::Point screen) override;
  void dragLeave() override;
  uint32_t drop(uint32_t keyState, platform::Point screen) override;

  std::vector<std::string> medium;  // the file list of the current drag
  bool hasMedium = false;
  jobject files = nullptr;  // global reference to the File[] of this drag
  platform::WindowHandle window;
  bool accepting = false;
  uint32_t keyState = 0;
  int32_t x = 0, y = 0;

 private:
  void track(uint32_t keys, platform::Point screen);
  void post(uint32_t message);
};

uint32_t dropEffect(uint32_t keyState);

}  // namespace vostan
