#include "ui/fold_case.h"

namespace kelpin::ui {
namespace {

constexpr bool Within(char16_t unit, char16_t first, char16_t last) {
  return unit >= first && unit <= last;
}

constexpr char16_t Up(char16_t unit, int distance) {
  return static_cast<char16_t>(unit + distance);
}

// Pairs that lie side by side, the capital first, at an even or at an odd place.
constexpr bool CapitalOfAPair(char16_t unit) {
  if (Within(unit, 0x0139, 0x0148) || Within(unit, 0x0179, 0x017E)) {
    return unit % 2 == 1;
  }
  const bool pairs = Within(unit, 0x0100, 0x012F) || Within(unit, 0x0132, 0x0137) ||
                     Within(unit, 0x014A, 0x0177) || Within(unit, 0x03D8, 0x03EF) ||
                     Within(unit, 0x0460, 0x0481) || Within(unit, 0x048A, 0x04BF) ||
                     Within(unit, 0x04D0, 0x052F) || Within(unit, 0x1E00, 0x1E95) ||
                     Within(unit, 0x1EA0, 0x1EFF);
  return pairs && unit % 2 == 0;
}

}  // namespace

char16_t FoldCase(char16_t unit) {
  if (Within(unit, u'A', u'Z')) {
    return Up(unit, 32);
  }
  if (unit < 0x80) {
    return unit;
  }
  if (Within(unit, 0x00C0, 0x00DE) && unit != 0x00D7) {
    return Up(unit, 32);
  }
  if (CapitalOfAPair(unit)) {
    return Up(unit, 1);
  }
  if (Within(unit, 0x0391, 0x03AB) && unit != 0x03A2) {
    return Up(unit, 32);
  }
  if (Within(unit, 0x0410, 0x042F)) {
    return Up(unit, 32);
  }
  if (Within(unit, 0x0400, 0x040F)) {
    return Up(unit, 80);
  }
  if (Within(unit, 0x0531, 0x0556)) {
    return Up(unit, 48);
  }
  switch (unit) {
    case 0x0178:  // Y with diaeresis
      return 0x00FF;
    case 0x0386:  // Greek with tonos
      return 0x03AC;
    case 0x0388:
    case 0x0389:
    case 0x038A:
      return Up(unit, 37);
    case 0x038C:
      return 0x03CC;
    case 0x038E:
    case 0x038F:
      return Up(unit, 63);
    case 0x03C2:  // final sigma
      return 0x03C3;
    default:
      return unit;
  }
}

std::u16string FoldCase(std::u16string_view text) {
  std::u16string folded(text);
  for (char16_t& unit : folded) {
    unit = FoldCase(unit);
  }
  return folded;
}

}  // namespace kelpin::ui
