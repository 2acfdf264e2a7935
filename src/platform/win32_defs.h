#pragma once
// Message, key and style numbers of the window system the console logic is
// written against. The backends translate their own events into these.
#include <cstdint>

namespace vostan::win {

// Messages
constexpr uint32_t WM_CREATE = 0x0001;
constexpr uint32_t WM_MOVE = 0x0003;
constexpr uint32_t WM_SIZE = 0x0005;
constexpr uint32_t WM_ACTIVATE = 0x0006;
constexpr uint32_t WM_PAINT = 0x000F;
constexpr uint32_t WM_CLOSE = 0x0010;
constexpr uint32_t WM_SETCURSOR = 0x0020;
constexpr uint32_t WM_INPUTLANGCHANGE = 0x0051;
constexpr uint32_t WM_NCLBUTTONDOWN = 0x00A1;
constexpr uint32_t WM_NCRBUTTONDOWN = 0x00A4;
constexpr uint32_t WM_NCMBUTTONDOWN = 0x00A7;
constexpr uint32_t WM_KEYDOWN = 0x0100;
constexpr uint32_t WM_KEYUP = 0x0101;
constexpr uint32_t WM_CHAR = 0x0102;
constexpr uint32_t WM_SYSKEYDOWN = 0x0104;
constexpr uint32_t WM_SYSKEYUP = 0x0105;
constexpr uint32_t WM_SYSCHAR = 0x0106;
constexpr uint32_t WM_IME_STARTCOMPOSITION = 0x010D;
constexpr uint32_t WM_IME_ENDCOMPOSITION = 0x010E;
constexpr uint32_t WM_IME_COMPOSITION = 0x010F;
constexpr uint32_t WM_MOUSEMOVE = 0x0200;
constexpr uint32_t WM_LBUTTONDOWN = 0x0201;
constexpr uint32_t WM_LBUTTONUP = 0x0202;
constexpr uint32_t WM_LBUTTONDBLCLK = 0x0203;
constexpr uint32_t WM_RBUTTONDOWN = 0x0204;
constexpr uint32_t WM_RBUTTONUP = 0x0205;
constexpr uint32_t WM_RBUTTONDBLCLK = 0x0206;
constexpr uint32_t WM_MBUTTONDOWN = 0x0207;
constexpr uint32_t WM_MBUTTONUP = 0x0208;
constexpr uint32_t WM_MBUTTONDBLCLK = 0x0209;
constexpr uint32_t WM_MOUSEWHEEL = 0x020A;
constexpr uint32_t WM_SIZING = 0x0214;
constexpr uint32_t WM_IME_NOTIFY = 0x0282;

// Input method composition: GCS_* kinds of WM_IME_COMPOSITION's lParam, the
// composition attributes, and the notification that a candidate list opens.
constexpr uint32_t GCS_COMPREADSTR = 0x0001;
constexpr uint32_t GCS_COMPSTR = 0x0008;
constexpr uint32_t GCS_COMPATTR = 0x0010;
constexpr uint32_t GCS_COMPCLAUSE = 0x0020;
constexpr uint32_t GCS_CURSORPOS = 0x0080;
constexpr uint32_t GCS_RESULTSTR = 0x0800;
constexpr uint32_t GCS_RESULTCLAUSE = 0x1000;
constexpr uint32_t GCS_RESULT_BITS = 0x1E00;
constexpr uint32_t GCS_COMPOSITION_BITS = 0x01BF;
constexpr uint8_t ATTR_INPUT = 0;
constexpr uint8_t ATTR_TARGET_CONVERTED = 1;
constexpr uint8_t ATTR_CONVERTED = 2;
constexpr uintptr_t IMN_OPENCANDIDATE = 5;

// Messages private to the library: window procedure and drop target to pump.
constexpr uint32_t MSG_DRAG_ENTERED = 0x8064;
constexpr uint32_t MSG_DRAGGED_OVER = 0x8065;
constexpr uint32_t MSG_DRAG_LEFT = 0x8066;
constexpr uint32_t MSG_DROPPED = 0x8067;
constexpr uint32_t MSG_PRIVATE_FIRST = 0x8960;
constexpr uint32_t MSG_PRIVATE_LAST = 0x896A;
constexpr uint32_t MSG_CURSOR_HIDDEN = 0x8962;
constexpr uint32_t MSG_CLOSE_REQUESTED = 0x8964;
constexpr uint32_t MSG_INPUT_CONTEXT = 0x8965;
constexpr uint32_t MSG_ACTIVATED = 0x8966;
constexpr uint32_t MSG_DEACTIVATED = 0x8967;
constexpr uint32_t MSG_SET_CURSOR = 0x8968;
constexpr uint32_t MSG_RESIZED = 0x8969;
constexpr uint32_t MSG_WHEEL_A = 0xC07A;
constexpr uint32_t MSG_WHEEL_B = 0xC07B;

// Window styles
constexpr uint32_t WS_POPUP = 0x80000000u;
constexpr uint32_t WS_VISIBLE = 0x10000000u;
constexpr uint32_t WS_CLIPCHILDREN = 0x02000000u;
constexpr uint32_t WS_CAPTION = 0x00C00000u;
constexpr uint32_t WS_SYSMENU = 0x00080000u;
constexpr uint32_t WS_THICKFRAME = 0x00040000u;
constexpr uint32_t WS_MINIMIZEBOX = 0x00020000u;
constexpr uint32_t WS_EX_TOPMOST = 0x00000008u;

// ShowWindow commands, SetWindowPos flags, WM_SIZE kinds
constexpr int SW_SHOW = 5;
constexpr int SW_MINIMIZE = 6;
constexpr uint32_t SWP_NOSIZE = 0x0001;
constexpr uint32_t SWP_NOZORDER = 0x0004;
constexpr uint32_t SWP_NOSENDCHANGING = 0x0400;
constexpr uintptr_t SIZE_RESTORED = 0;
constexpr uintptr_t SIZE_MINIMIZED = 1;

// Mouse key-state flags in wParam of mouse messages
constexpr uintptr_t MK_LBUTTON = 0x0001;
constexpr uintptr_t MK_RBUTTON = 0x0002;
constexpr uintptr_t MK_SHIFT = 0x0004;
constexpr uintptr_t MK_CONTROL = 0x0008;
constexpr uintptr_t MK_MBUTTON = 0x0010;

// Drop effects
constexpr uint32_t DROPEFFECT_NONE = 0;
constexpr uint32_t DROPEFFECT_COPY = 1;
constexpr uint32_t DROPEFFECT_MOVE = 2;
constexpr uint32_t DROPEFFECT_LINK = 4;

// Virtual keys used by the logic
constexpr int VK_LBUTTON = 0x01;
constexpr int VK_RBUTTON = 0x02;
constexpr int VK_MBUTTON = 0x04;
constexpr int VK_SHIFT = 0x10;
constexpr int VK_CONTROL = 0x11;
constexpr int VK_MENU = 0x12;
constexpr int VK_PAUSE = 0x13;
constexpr int VK_F10 = 0x79;
constexpr int VK_PROCESSKEY = 0xE5;

// Display settings
constexpr uint32_t DM_BITSPERPEL = 0x00040000;
constexpr uint32_t DM_PELSWIDTH = 0x00080000;
constexpr uint32_t DM_PELSHEIGHT = 0x00100000;
constexpr uint32_t DM_DISPLAYFREQUENCY = 0x00400000;
constexpr uint32_t CDS_FULLSCREEN = 0x00000004;
constexpr uint32_t CDS_RESET = 0x80000000u;  // the value the console has always passed

inline int16_t loWordSigned(intptr_t v) {
  return static_cast<int16_t>(v & 0xFFFF);
}
inline int16_t hiWordSigned(intptr_t v) {
  return static_cast<int16_t>((v >> 16) & 0xFFFF);
}
inline uint16_t loWord(uintptr_t v) {
  return static_cast<uint16_t>(v & 0xFFFF);
}
inline uint16_t hiWord(uintptr_t v) {
  return static_cast<uint16_t>((v >> 16) & 0xFFFF);
}
inline intptr_t makeLParam(int lo, int hi) {
  return static_cast<intptr_t>((static_cast<uint32_t>(hi & 0xFFFF) << 16) |
                               static_cast<uint32_t>(lo & 0xFFFF));
}

}  // namespace vostan::win
