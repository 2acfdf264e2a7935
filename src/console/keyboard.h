#pragma once
// Virtual keys to the engine's key codes, the modifier word, key characters.
#include <cstdint>

namespace vostan::keyboard {

extern int32_t keyCodeTable[256];
extern uint8_t virtualKeyTable[256];
extern uint8_t keyState[256];

void buildKeyTables();
// The modifier word for no button (0), a button 1..3, or a button mask.
int modifierWord(int button);
uint16_t keyCharacter(int code, int modifiers);
bool isKeyPressed(int keyCode);

struct KeyResult {
  bool event = false;
  int modifiers = 0, code = 0;
  uint16_t character = 0;
};
// Key pressed (401) or released (402) for a virtual key.
KeyResult keyMessage(int virtualKey);
// WM_CHAR / WM_SYSCHAR: the typed character, bridging double-byte input.
KeyResult typedMessage(uint8_t byte, uint16_t keyFlags, bool system, int codePage);
void resetTypedState();

}  // namespace vostan::keyboard
