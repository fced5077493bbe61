// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/hotkeys/KeyCodes.h"

#include <xkbcommon/xkbcommon-keysyms.h>

#include <QKeyEvent>
#include <algorithm>
#include <iterator>

namespace velmora {

namespace {

using enum Key::Kind;

// Ordered by key code.
constexpr Key kKeys[] = {
    {0, character, XKB_KEY_a, 38, Qt::Key_A, u""},
    {1, character, XKB_KEY_s, 39, Qt::Key_S, u""},
    {2, character, XKB_KEY_d, 40, Qt::Key_D, u""},
    {3, character, XKB_KEY_f, 41, Qt::Key_F, u""},
    {4, character, XKB_KEY_h, 43, Qt::Key_H, u""},
    {5, character, XKB_KEY_g, 42, Qt::Key_G, u""},
    {6, character, XKB_KEY_z, 52, Qt::Key_Z, u""},
    {7, character, XKB_KEY_x, 53, Qt::Key_X, u""},
    {8, character, XKB_KEY_c, 54, Qt::Key_C, u""},
    {9, character, XKB_KEY_v, 55, Qt::Key_V, u""},
    {10, character, XKB_KEY_section, 94, Qt::Key_section, u""},
    {11, character, XKB_KEY_b, 56, Qt::Key_B, u""},
    {12, character, XKB_KEY_q, 24, Qt::Key_Q, u""},
    {13, character, XKB_KEY_w, 25, Qt::Key_W, u""},
    {14, character, XKB_KEY_e, 26, Qt::Key_E, u""},
    {15, character, XKB_KEY_r, 27, Qt::Key_R, u""},
    {16, character, XKB_KEY_y, 29, Qt::Key_Y, u""},
    {17, character, XKB_KEY_t, 28, Qt::Key_T, u""},
    {18, character, XKB_KEY_1, 10, Qt::Key_1, u""},
    {19, character, XKB_KEY_2, 11, Qt::Key_2, u""},
    {20, character, XKB_KEY_3, 12, Qt::Key_3, u""},
    {21, character, XKB_KEY_4, 13, Qt::Key_4, u""},
    {22, character, XKB_KEY_6, 15, Qt::Key_6, u""},
    {23, character, XKB_KEY_5, 14, Qt::Key_5, u""},
    {24, character, XKB_KEY_equal, 21, Qt::Key_Equal, u""},
    {25, character, XKB_KEY_9, 18, Qt::Key_9, u""},
    {26, character, XKB_KEY_7, 16, Qt::Key_7, u""},
    {27, character, XKB_KEY_minus, 20, Qt::Key_Minus, u""},
    {28, character, XKB_KEY_8, 17, Qt::Key_8, u""},
    {29, character, XKB_KEY_0, 19, Qt::Key_0, u""},
    {30, character, XKB_KEY_bracketright, 35, Qt::Key_BracketRight, u""},
    {31, character, XKB_KEY_o, 32, Qt::Key_O, u""},
    {32, character, XKB_KEY_u, 30, Qt::Key_U, u""},
    {33, character, XKB_KEY_bracketleft, 34, Qt::Key_BracketLeft, u""},
    {34, character, XKB_KEY_i, 31, Qt::Key_I, u""},
    {35, character, XKB_KEY_p, 33, Qt::Key_P, u""},
    {36, special, XKB_KEY_Return, 36, Qt::Key_Return, u"\u21a9"},
    {37, character, XKB_KEY_l, 46, Qt::Key_L, u""},
    {38, character, XKB_KEY_j, 44, Qt::Key_J, u""},
    {39, character, XKB_KEY_apostrophe, 48, Qt::Key_Apostrophe, u""},
    {40, character, XKB_KEY_k, 45, Qt::Key_K, u""},
    {41, character, XKB_KEY_semicolon, 47, Qt::Key_Semicolon, u""},
    {42, character, XKB_KEY_backslash, 51, Qt::Key_Backslash, u""},
    {43, character, XKB_KEY_comma, 59, Qt::Key_Comma, u""},
    {44, character, XKB_KEY_slash, 61, Qt::Key_Slash, u""},
    {45, character, XKB_KEY_n, 57, Qt::Key_N, u""},
    {46, character, XKB_KEY_m, 58, Qt::Key_M, u""},
    {47, character, XKB_KEY_period, 60, Qt::Key_Period, u""},
    {48, special, XKB_KEY_Tab, 23, Qt::Key_Tab, u"\u21e5"},
    {49, special, XKB_KEY_space, 65, Qt::Key_Space, u"Space"},
    {50, character, XKB_KEY_grave, 49, Qt::Key_QuoteLeft, u""},
    {51, special, XKB_KEY_BackSpace, 22, Qt::Key_Backspace, u"\u232b"},
    {53, special, XKB_KEY_Escape, 9, Qt::Key_Escape, u"\u238b"},
    {54, modifier, XKB_KEY_Super_R, 134, Qt::Key_Super_R, u""},
    {55, modifier, XKB_KEY_Super_L, 133, Qt::Key_Super_L, u""},
    {56, modifier, XKB_KEY_Shift_L, 50, Qt::Key_Shift, u""},
    {57, modifier, XKB_KEY_Caps_Lock, 66, Qt::Key_CapsLock, u""},
    {58, modifier, XKB_KEY_Alt_L, 64, Qt::Key_Alt, u""},
    {59, modifier, XKB_KEY_Control_L, 37, Qt::Key_Control, u""},
    {60, modifier, XKB_KEY_Shift_R, 62, Qt::Key_Shift, u""},
    {61, modifier, XKB_KEY_Alt_R, 108, Qt::Key_Alt, u""},
    {62, modifier, XKB_KEY_Control_R, 105, Qt::Key_Control, u""},
    {63, modifier, XKB_KEY_XF86Fn, 0, Qt::Key_unknown, u""},
    {64, special, XKB_KEY_F17, 195, Qt::Key_F17, u"F17"},
    {65, keypad, XKB_KEY_KP_Decimal, 91, Qt::Key_unknown, u"."},
    {67, keypad, XKB_KEY_KP_Multiply, 63, Qt::Key_unknown, u"*"},
    {69, keypad, XKB_KEY_KP_Add, 86, Qt::Key_unknown, u"+"},
    {71, special, XKB_KEY_Clear, 0, Qt::Key_Clear, u"\u2327"},
    {75, keypad, XKB_KEY_KP_Divide, 106, Qt::Key_unknown, u"/"},
    {76, keypad, XKB_KEY_KP_Enter, 104, Qt::Key_Enter, u"\u2305"},
    {78, keypad, XKB_KEY_KP_Subtract, 82, Qt::Key_unknown, u"-"},
    {79, special, XKB_KEY_F18, 196, Qt::Key_F18, u"F18"},
    {80, special, XKB_KEY_F19, 197, Qt::Key_F19, u"F19"},
    {81, keypad, XKB_KEY_KP_Equal, 125, Qt::Key_unknown, u"="},
    {82, keypad, XKB_KEY_KP_0, 90, Qt::Key_unknown, u"0"},
    {83, keypad, XKB_KEY_KP_1, 87, Qt::Key_unknown, u"1"},
    {84, keypad, XKB_KEY_KP_2, 88, Qt::Key_unknown, u"2"},
    {85, keypad, XKB_KEY_KP_3, 89, Qt::Key_unknown, u"3"},
    {86, keypad, XKB_KEY_KP_4, 83, Qt::Key_unknown, u"4"},
    {87, keypad, XKB_KEY_KP_5, 84, Qt::Key_unknown, u"5"},
    {88, keypad, XKB_KEY_KP_6, 85, Qt::Key_unknown, u"6"},
    {89, keypad, XKB_KEY_KP_7, 79, Qt::Key_unknown, u"7"},
    {90, special, XKB_KEY_F20, 198, Qt::Key_F20, u"F20"},
    {91, keypad, XKB_KEY_KP_8, 80, Qt::Key_unknown, u"8"},
    {92, keypad, XKB_KEY_KP_9, 81, Qt::Key_unknown, u"9"},
    {93, character, XKB_KEY_yen, 132, Qt::Key_yen, u""},
    {94, character, XKB_KEY_underscore, 97, Qt::Key_Underscore, u""},
    {96, special, XKB_KEY_F5, 71, Qt::Key_F5, u"F5"},
    {97, special, XKB_KEY_F6, 72, Qt::Key_F6, u"F6"},
    {98, special, XKB_KEY_F7, 73, Qt::Key_F7, u"F7"},
    {99, special, XKB_KEY_F3, 69, Qt::Key_F3, u"F3"},
    {100, special, XKB_KEY_F8, 74, Qt::Key_F8, u"F8"},
    {101, special, XKB_KEY_F9, 75, Qt::Key_F9, u"F9"},
    {103, special, XKB_KEY_F11, 95, Qt::Key_F11, u"F11"},
    {105, special, XKB_KEY_F13, 191, Qt::Key_F13, u"F13"},
    {106, special, XKB_KEY_F16, 194, Qt::Key_F16, u"F16"},
    {107, special, XKB_KEY_F14, 192, Qt::Key_F14, u"F14"},
    {109, special, XKB_KEY_F10, 76, Qt::Key_F10, u"F10"},
    {111, special, XKB_KEY_F12, 96, Qt::Key_F12, u"F12"},
    {113, special, XKB_KEY_F15, 193, Qt::Key_F15, u"F15"},
    {114, special, XKB_KEY_Insert, 118, Qt::Key_Insert, u"Ins"},
    {115, special, XKB_KEY_Home, 110, Qt::Key_Home, u"\u2196"},
    {116, special, XKB_KEY_Prior, 112, Qt::Key_PageUp, u"\u21de"},
    {117, special, XKB_KEY_Delete, 119, Qt::Key_Delete, u"\u2326"},
    {118, special, XKB_KEY_F4, 70, Qt::Key_F4, u"F4"},
    {119, special, XKB_KEY_End, 115, Qt::Key_End, u"\u2198"},
    {120, special, XKB_KEY_F2, 68, Qt::Key_F2, u"F2"},
    {121, special, XKB_KEY_Next, 117, Qt::Key_PageDown, u"\u21df"},
    {122, special, XKB_KEY_F1, 67, Qt::Key_F1, u"F1"},
    {123, special, XKB_KEY_Left, 113, Qt::Key_Left, u"\u2190"},
    {124, special, XKB_KEY_Right, 114, Qt::Key_Right, u"\u2192"},
    {125, special, XKB_KEY_Down, 116, Qt::Key_Down, u"\u2193"},
    {126, special, XKB_KEY_Up, 111, Qt::Key_Up, u"\u2191"},
};

// Further names of keys in the table.
struct Alias {
  std::uint32_t keysym;
  std::uint32_t keyCode;
};
constexpr Alias kAliases[] = {
    {XKB_KEY_Meta_L, 55}, {XKB_KEY_Meta_R, 54},  {XKB_KEY_ISO_Level3_Shift, 61}, {XKB_KEY_ISO_Left_Tab, 48},
    {XKB_KEY_Help, 114},  {XKB_KEY_Hyper_L, 55}, {XKB_KEY_Mode_switch, 61},      {XKB_KEY_Hyper_R, 54}};

template <typename Condition>
const Key *find(Condition condition) {
  const auto *found = std::find_if(std::begin(kKeys), std::end(kKeys), condition);
  return found == std::end(kKeys) ? nullptr : found;
}

}  // namespace

const Key *keyWithCode(std::uint32_t keyCode) {
  return find([=](const Key &key) { return key.keyCode == keyCode; });
}

const Key *keyWithKeysym(std::uint32_t keysym) {
  // Accelerators may name a letter by its capital one.
  if (keysym >= XKB_KEY_A && keysym <= XKB_KEY_Z) keysym += XKB_KEY_a - XKB_KEY_A;
  for (const Alias &alias : kAliases) {
    if (alias.keysym == keysym) return keyWithCode(alias.keyCode);
  }
  return find([=](const Key &key) { return key.keysym == keysym; });
}

const Key *keyWithQtKey(Qt::Key key) {
  if (key == Qt::Key_unknown || key == Qt::Key{}) return nullptr;
  if (key == Qt::Key_Meta) key = Qt::Key_Super_L;
  if (key == Qt::Key_Backtab) key = Qt::Key_Tab;
  return find([=](const Key &each) { return each.key == key; });
}

const Key *keyOf(std::uint32_t position, std::uint32_t keysym, Qt::Key key) {
  const Key *placed =
      position == 0 ? nullptr : find([=](const Key &each) { return each.position == position; });
  if (placed && (placed->kind == character || placed->kind == keypad)) return placed;
  if (const Key *named = keysym == 0 ? nullptr : keyWithKeysym(keysym)) return named;
  return placed ? placed : keyWithQtKey(key);
}

const Key *keyOf(const QKeyEvent &event) {
  return keyOf(event.nativeScanCode(), event.nativeVirtualKey(), static_cast<Qt::Key>(event.key()));
}

}  // namespace velmora
