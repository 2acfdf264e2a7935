#include "console/drop_target.h"

#include "platform/win32_defs.h"

namespace vostan {

using platform::windowSystem;

uint32_t dropEffect(uint32_t keyState) {
  if (!(keyState & win::MK_CONTROL)) return win::DROPEFFECT_COPY;
  return (keyState & win::MK_SHIFT) ? win::DROPEFFECT_LINK : win::DROPEFFECT_MOVE;
}

void SimpleDropTarget::track(uint32_t keys, platform::Point screen) {
  keyState = keys;
  const platform::Point p = windowSystem().screenToClient(window, screen);
  x = p.x;
  y = p.y;
}

void SimpleDropTarget::post(uint32_t message) {
  windowSystem().postMessage(window, message, keyState, win::makeLParam(x, y));
}

uint32_t SimpleDropTarget::dragEnter(const char* const* list, int count, uint32_t keys,
                                     platform::Point screen) {
  track(keys, screen);
  medium.clear();
  hasMedium = false;
  accepting = false;
  if (list == nullptr) return win::DROPEFFECT_NONE;  // no file list: refused quietly
  for (int i = 0; i < count; ++i) medium.emplace_back(list[i]);
  hasMedium = true;
  accepting = true;
  post(win::MSG_DRAG_ENTERED);
  return dropEffect(keyState);
}

uint32_t SimpleDropTarget::dragOver(uint32_t keys, platform::Point screen) {
  track(keys, screen);
  if (!accepting) return win::DROPEFFECT_NONE;
  post(win::MSG_DRAGGED_OVER);
  return dropEffect(keyState);
}

void SimpleDropTarget::dragLeave() {
  if (accepting) post(win::MSG_DRAG_LEFT);
}

uint32_t SimpleDropTarget::drop(uint32_t keys, platform::Point screen) {
  track(keys, screen);
  if (!accepting) return win::DROPEFFECT_NONE;
  post(win::MSG_DROPPED);
  return dropEffect(keyState);
}

}  // namespace vostan
