#include "ui/fold_case.h"

#include <algorithm>

namespace kelpin::ui {
namespace {

constexpr char16_t kAsciiEnd = 0x80;

struct Range {
  char16_t first;
  char16_t last;
};

constexpr bool Within(char16_t unit, Range range) {
  return unit >= range.first && unit <= range.last;
}

// Capital letters that stand a fixed distance before their small ones.
struct Block {
  Range capitals;
  int distance;
};

constexpr Block kBlocks[] = {
    {{0x00C0, 0x00D6}, 0x20}, {{0x00D8, 0x00DE}, 0x20}, {{0x0388, 0x038A}, 0x25},
    {{0x0391, 0x03A1}, 0x20}, {{0x03A3, 0x03AB}, 0x20}, {{0x0400, 0x040F}, 0x50},
    {{0x0410, 0x042F}, 0x20}, {{0x0531, 0x0556}, 0x30}, {{0xFF21, 0xFF3A}, 0x20},
};

// Runs of capital, small, capital, small … where the capital has the even number.
constexpr Range kEvenPairs[] = {
    {0x0100, 0x012F}, {0x0132, 0x0137}, {0x014A, 0x0177}, {0x01A0, 0x01A5}, {0x01DE, 0x01EF},
    {0x01F8, 0x021F}, {0x0222, 0x0233}, {0x0246, 0x024F}, {0x03D8, 0x03EF}, {0x0460, 0x0481},
    {0x048A, 0x04BF}, {0x04D0, 0x052F}, {0x1E00, 0x1E95}, {0x1EA0, 0x1EFF},
};

// The same where it has the odd one.
constexpr Range kOddPairs[] = {{0x0139, 0x0148}, {0x0179, 0x017E}, {0x01AF, 0x01B0},
                               {0x01B3, 0x01B6}, {0x01CD, 0x01DC}, {0x04C1, 0x04CE}};

constexpr char16_t Plus(char16_t unit, int distance) {
  return static_cast<char16_t>(unit + distance);
}

}  // namespace

char16_t FoldCase(char16_t unit) {
  if (unit < kAsciiEnd) {
    return Within(unit, {u'A', u'Z'}) ? Plus(unit, u'a' - u'A') : unit;
  }
  for (const Block& block : kBlocks) {
    if (Within(unit, block.capitals)) {
      return Plus(unit, block.distance);
    }
  }
  for (const Range& pairs : kEvenPairs) {
    if (Within(unit, pairs)) {
      return unit % 2 == 0 ? Plus(unit, 1) : unit;
    }
  }
  for (const Range& pairs : kOddPairs) {
    if (Within(unit, pairs)) {
      return unit % 2 == 1 ? Plus(unit, 1) : unit;
    }
  }
  switch (unit) {
    case 0x0178:  // Ÿ, whose small letter is in Latin-1
      return 0x00FF;
    case 0x0386:
      return 0x03AC;
    case 0x038C:
      return 0x03CC;
    case 0x038E:
      return 0x03CD;
    case 0x038F:
      return 0x03CE;
    case 0x03C2:  // the final sigma sorts with the other
      return 0x03C3;
    case 0x04C0:
      return 0x04CF;
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

int CompareIgnoringCase(std::u16string_view left, std::u16string_view right) {
  const std::size_t common = std::min(left.size(), right.size());
  for (std::size_t at = 0; at < common; ++at) {
    const int difference = FoldCase(left[at]) - FoldCase(right[at]);
    if (difference != 0) {
      return difference;
    }
  }
  return left.size() == right.size() ? 0 : (left.size() < right.size() ? -1 : 1);
}

}  // namespace kelpin::ui
