#include "platform/us_keyboard.h"

#include <cstring>

namespace vostan::platform::us_keyboard {
namespace {

struct OemKey {
  uint8_t vk;
  char plain, shifted;
};
constexpr OemKey kOemKeys[] = {
    {186, ';', ':'},  {187, '=', '+'}, {188, ',', '<'},  {189, '-', '_'},
    {190, '.', '>'},  {191, '/', '?'}, {192, '`', '~'},  {219, '[', '{'},
    {220, '\\', '|'}, {221, ']', '}'}, {222, '\'', '"'},
};
constexpr char kShiftedDigits[] = ")!@#$%^&*(";

bool down(const uint8_t state[256], int vk) {
  return (state[vk] & 0x80) != 0;
}

}  // namespace

uint32_t scanCode(uint32_t vk) {
  // Set 1 scan codes of a PC keyboard.
  static const uint8_t kLetters[26] = {0x1E, 0x30, 0x2E, 0x20, 0x12, 0x21, 0x22, 0x23, 0x17,
                                       0x24, 0x25, 0x26, 0x32, 0x31, 0x18, 0x19, 0x10, 0x13,
                                       0x1F, 0x14, 0x16, 0x2F, 0x11, 0x2D, 0x15, 0x2C};
  static const uint8_t kPad[10] = {0x52, 0x4F, 0x50, 0x51, 0x4B, 0x4C, 0x4D, 0x47, 0x48, 0x49};
  if (vk >= 'A' && vk <= 'Z') return kLetters[vk - 'A'];
  if (vk >= '1' && vk <= '9') return 0x02 + (vk - '1');
  if (vk == '0') return 0x0B;
  if (vk >= 96 && vk <= 105) return kPad[vk - 96];
  if (vk >= 112 && vk <= 121) return 0x3B + (vk - 112);  // F1..F10
  switch (vk) {
    case 8:
      return 0x0E;
    case 9:
      return 0x0F;
    case 13:
      return 0x1C;
    case 16:
      return 0x2A;
    case 17:
      return 0x1D;
    case 18:
      return 0x38;
    case 20:
      return 0x3A;
    case 27:
      return 0x01;
    case 32:
      return 0x39;
    case 33:
      return 0x49;  // the navigation keys share the pad's codes
    case 34:
      return 0x51;
    case 35:
      return 0x4F;
    case 36:
      return 0x47;
    case 37:
      return 0x4B;
    case 38:
      return 0x48;
    case 39:
      return 0x4D;
    case 40:
      return 0x50;
    case 45:
      return 0x52;
    case 46:
      return 0x53;
    case 106:
      return 0x37;
    case 107:
      return 0x4E;
    case 109:
      return 0x4A;
    case 110:
      return 0x53;
    case 111:
      return 0x35;
    case 122:
      return 0x57;
    case 123:
      return 0x58;
    case 186:
      return 0x27;
    case 187:
      return 0x0D;
    case 188:
      return 0x33;
    case 189:
      return 0x0C;
    case 190:
      return 0x34;
    case 191:
      return 0x35;
    case 192:
      return 0x29;
    case 219:
      return 0x1A;
    case 220:
      return 0x2B;
    case 221:
      return 0x1B;
    case 222:
      return 0x28;
    default:
      return 0;
  }
}

int toAscii(uint32_t vk, const uint8_t state[256], uint16_t* out) {
  const bool shift = down(state, 16);
  const bool control = down(state, 17);
  const bool alt = down(state, 18);
  const bool caps = (state[20] & 1) != 0;
  if (control && alt) return 0;  // AltGr: nothing on this layout
  int ch = -1;
  if (vk >= 'A' && vk <= 'Z') {
    if (control)
      ch = static_cast<int>(vk - 'A' + 1);
    else
      ch = (shift != caps) ? static_cast<int>(vk) : static_cast<int>(vk + 32);
  } else if (vk >= '0' && vk <= '9') {
    if (control) {
      if (vk == '6' && shift) ch = 30;
    } else {
      ch = shift ? kShiftedDigits[vk - '0'] : static_cast<int>(vk);
    }
  } else if (vk >= 96 && vk <= 105) {
    ch = control ? -1 : static_cast<int>(vk - 96 + '0');
  } else {
    switch (vk) {
      case 8:
        ch = control ? 127 : 8;
        break;
      case 9:
        ch = control ? -1 : 9;
        break;
      case 13:
        ch = control ? 10 : 13;
        break;
      case 27:
        ch = 27;
        break;
      case 32:
        ch = ' ';
        break;
      case 106:
        ch = '*';
        break;
      case 107:
        ch = '+';
        break;
      case 109:
        ch = '-';
        break;
      case 110:
        ch = '.';
        break;
      case 111:
        ch = '/';
        break;
      default:
        for (const OemKey& k : kOemKeys) {
          if (k.vk != vk) continue;
          if (control) {
            if (vk == 219) ch = 27;
            if (vk == 220) ch = 28;
            if (vk == 221) ch = 29;
            if (vk == 189 && shift) ch = 31;
          } else {
            ch = shift ? k.shifted : k.plain;
          }
        }
    }
  }
  if (ch < 0) return 0;
  *out = static_cast<uint16_t>(ch);
  return 1;
}

int16_t vkKeyScan(char c) {
  const auto ch = static_cast<unsigned char>(c);
  if (ch >= 'a' && ch <= 'z') return static_cast<int16_t>(ch - 32);
  if (ch >= 'A' && ch <= 'Z') return static_cast<int16_t>(0x100 | ch);
  if (ch >= '0' && ch <= '9') return static_cast<int16_t>(ch);
  if (ch >= 1 && ch <= 26) return static_cast<int16_t>(0x200 | (ch + 'A' - 1));
  switch (ch) {
    case 27:
      return 0x2DB;
    case 28:
      return 0x2DC;
    case 29:
      return 0x2DD;
    case 30:
      return 0x336;
    case 31:
      return 0x3BD;
    case ' ':
      return 32;
    default:
      break;
  }
  if (const char* p = std::strchr(kShiftedDigits, ch); p && ch) {
    return static_cast<int16_t>(0x100 | ('0' + (p - kShiftedDigits)));
  }
  for (const OemKey& k : kOemKeys) {
    if (k.plain == static_cast<char>(ch)) return k.vk;
    if (k.shifted == static_cast<char>(ch)) return static_cast<int16_t>(0x100 | k.vk);
  }
  return -1;
}

}  // namespace vostan::platform::us_keyboard
