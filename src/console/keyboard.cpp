#include "console/keyboard.h"

#include "bridge/bridge.h"
#include "platform/codepage.h"
#include "platform/win32_defs.h"
#include "platform/window_system.h"

namespace vostan::keyboard {

int32_t keyCodeTable[256];
uint8_t virtualKeyTable[256];
uint8_t keyState[256];

namespace {

uint8_t leadByte = 0;

bool asyncDown(int vk) {
  return (platform::windowSystem().getAsyncKeyState(vk) & 0xFF00) != 0;
}

}  // namespace

void buildKeyTables() {
  int32_t* t = keyCodeTable;
  for (int i = 0; i < 256; ++i) t[i] = 0;
  auto same = [t](int from, int to) {
    for (int k = from; k <= to; ++k) t[k] = k;
  };
  t[3] = 3;
  same(8, 9);
  t[12] = 12;
  t[13] = 10;
  same(16, 20);
  t[25] = 263;
  same(27, 29);
  same(32, 40);
  t[44] = 154;
  t[45] = 155;
  t[46] = 127;
  t[47] = 156;
  same(48, 57);
  same(65, 90);
  same(96, 111);
  same(112, 123);
  for (int k = 124; k <= 135; ++k) t[k] = 61440 + (k - 124);
  same(144, 145);
  // Laid out for the Japanese keyboard: 186 (US semicolon) stays without a code.
  t[187] = 59;
  t[188] = 44;
  t[189] = 45;
  t[190] = 46;
  t[191] = 47;
  t[192] = 192;
  t[219] = 91;
  t[220] = 92;
  t[221] = 93;
  t[222] = 514;
  same(240, 242);
  t[243] = 244;  // half-width and full-width are crossed on purpose
  t[244] = 243;
  t[245] = 245;

  for (int i = 0; i < 256; ++i) virtualKeyTable[i] = 0;
  for (int vk = 0; vk < 256; ++vk) {
    if (keyCodeTable[vk] < 256) virtualKeyTable[keyCodeTable[vk]] = static_cast<uint8_t>(vk);
  }
}

int modifierWord(int button) {
  int word = 0;
  if (asyncDown(win::VK_CONTROL) || button == 2) word |= 2;
  if (asyncDown(win::VK_SHIFT)) word |= 1;
  if (asyncDown(win::VK_MENU)) word |= 8;
  if (button == 0) return word;
  if (button == 1) word |= 64;
  if (button == 2) word |= 256;
  if (button == 3) return word | 128;
  // The button number itself stands in the word too: 1 reads as shift, 2 as
  // control, and a whole button mask passes through unchanged.
  return word | button;
}

bool isKeyPressed(int keyCode) {
  const int vk = (keyCode >= 0 && keyCode < 256) ? virtualKeyTable[keyCode] : 0;
  return (keyState[vk] & 0x80) != 0;
}

uint16_t keyCharacter(int code, int modifiers) {
  auto& ws = platform::windowSystem();
  if (code == 13) return 10;
  const bool shift = modifiers & 1;
  bool alt = modifiers & 8;
  bool control = modifiers & 2;
  if (modifiers & 32) alt = control = true;
  if (alt) {
    const uint32_t scan = ws.mapVirtualKey(static_cast<uint32_t>(code));
    for (int pad = 96; pad <= 105; ++pad) {
      if (scan != 0 && scan == ws.mapVirtualKey(pad)) return static_cast<uint16_t>(code - 48);
    }
  }
  if (modifiers != 0) {
    // The key state is changed in place; the next n_update reads it anew.
    if (shift) keyState[win::VK_SHIFT] |= 0x80;
    if (alt) keyState[win::VK_MENU] |= 0x80;
    if (control && alt) keyState[win::VK_CONTROL] |= 0x80;
    if (control && !alt) {
      keyState[win::VK_CONTROL] &= 0x7F;
      if (code >= 65 && code <= 90) {
        keyState[win::VK_CONTROL] |= 0x80;
      } else {
        for (int ch = 27; ch <= 31; ++ch) {
          const int16_t scan = ws.vkKeyScan(static_cast<char>(ch));
          if ((scan & 0xFF) != code) continue;
          const int s = (scan >> 8) & 0xFF;
          if ((s & 2) || ((s & 1) != 0) == shift) keyState[win::VK_CONTROL] |= 0x80;
          break;
        }
      }
    }
  }
  uint16_t buffer = 0;
  if (ws.toAscii(static_cast<uint32_t>(code), ws.mapVirtualKey(static_cast<uint32_t>(code)),
                 keyState, &buffer) > 0) {
    const char byte = static_cast<char>(buffer & 0xFF);
    char16_t wide = 0;
    if (platform::multiByteToWide(textCodePage, &byte, 1, &wide, 1) == 1) return wide;
  }
  if (code == 46) return 127;
  if (code < 96 || code > 105) return 65535;
  return static_cast<uint16_t>(code - 48);
}

KeyResult keyMessage(int key) {
  KeyResult r;
  r.modifiers = modifierWord(0);
  if (key == win::VK_PROCESSKEY) return r;
  auto& ws = platform::windowSystem();
  int code = keyCodeTable[key & 0xFF];
  if (key == 21 && (ws.getKeyboardLayout() & 0xFFFF) == 0x411 && ws.getKeyboardType() == 7)
    code = 262;
  if (key == 28) {
    if (r.modifiers & 8) code = 256;
    if (r.modifiers & 1) code = 257;
  }
  if (key == 240 && (r.modifiers & 8)) code = 258;
  if (code == 0) return r;
  r.event = true;
  r.code = code;
  r.character = keyCharacter(code, r.modifiers);
  return r;
}

KeyResult typedMessage(uint8_t byte, uint16_t keyFlags, bool system, int codePage) {
  KeyResult r;
  if (leadByte == 0 && platform::isDBCSLeadByte(codePage, byte)) {
    leadByte = byte;
    return r;
  }
  if (byte < 32) return r;
  r.modifiers = modifierWord(0);
  if (!system && (keyFlags & 0x2000)) r.modifiers = (r.modifiers & ~(8 | 2)) | 32;
  char16_t wide = 0;
  if (leadByte != 0) {
    const char bytes[2] = {static_cast<char>(leadByte), static_cast<char>(byte)};
    platform::multiByteToWide(codePage, bytes, 2, &wide, 1);
    leadByte = 0;
  } else {
    const char b = static_cast<char>(byte);
    platform::multiByteToWide(codePage, &b, 1, &wide, 1);
  }
  r.event = true;
  r.character = wide;
  return r;
}

void resetTypedState() {
  leadByte = 0;
}

}  // namespace vostan::keyboard
