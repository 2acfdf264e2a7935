#pragma once
// A US keyboard layout in the terms of virtual keys: scan codes, the character
// a key makes in a key state, and the key (with shift state) behind a character.
// Both window-system backends use it, so key characters are the same in tests.
#include <cstdint>

namespace vostan::platform::us_keyboard {

uint32_t scanCode(uint32_t virtualKey);
// Returns 1 and writes the character, or 0 when the key makes none.
int toAscii(uint32_t virtualKey, const uint8_t state[256], uint16_t* out);
// Virtual key in the low byte, shift state (1 shift, 2 control) in the high byte; -1 if none.
int16_t vkKeyScan(char ch);

}  // namespace vostan::platform::us_keyboard
