#include "contacts/display_name.h"

#include <algorithm>

#include "sim/sim_text.h"

namespace kelpin::contacts {
namespace {

constexpr std::u16string_view kSeparator = u", ";

bool IsFirstOfPair(char16_t unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}

bool IsChinese(std::uint32_t language) {
  return language == kLanguageChineseSimplified || language == kLanguageChineseTraditional;
}

bool StandsBetweenDigits(char16_t unit) {
  constexpr std::u16string_view kSigns =
      u"\t\n\r ()[]-./\u00A0\u00AD\u2212\u3000\uFF08\uFF09\uFF0D\uFF0E\uFF0F";
  const bool blankOrDash = unit >= 0x2000 && unit <= 0x2015;
  const bool mark = (unit >= 0x2028 && unit <= 0x202F) || (unit >= 0x2060 && unit <= 0x206F);
  return blankOrDash || mark || kSigns.find(unit) != std::u16string_view::npos;
}

}  // namespace

DisplayName MakeDisplayName(std::u16string_view first, std::u16string_view last,
                            std::uint32_t language) {
  DisplayName name;
  name.ucs2 = IsChinese(language) && (sim::FitsOneByte(first) == 0 || sim::FitsOneByte(last) == 0);
  name.text = last;
  if (!first.empty()) {
    if (!last.empty() && !name.ucs2) {
      name.text += kSeparator;
    }
    name.text += first;
  }
  return name;
}

void CutText(std::u16string& text, std::size_t units) {
  if (text.size() <= units) {
    return;
  }
  text.resize(units);
  if (!text.empty() && IsFirstOfPair(text.back())) {
    text.pop_back();
  }
}

std::u16string CardName(const DisplayName& name, std::u16string_view mark,
                        std::uint32_t maxNameLength) {
  std::u16string text = name.text;
  text += mark;
  CutText(text, std::min<std::size_t>(maxNameLength, kEntryTextLimit));
  if (name.ucs2 && 2 * text.size() >= maxNameLength) {
    CutText(text, maxNameLength < 2 ? 0 : maxNameLength / 2 - 1);
  }
  return text;
}

std::u16string CardNumber(std::u16string number, std::size_t maxLength) {
  sim::FoldFullWidth(number);
  sim::KeepDialChars(number);
  number.resize(std::min({number.size(), maxLength, kEntryTextLimit}));
  return number;
}

bool KeepsNumber(std::u16string number) {
  sim::FoldFullWidth(number);
  return std::ranges::all_of(number, [](char16_t unit) {
    return sim::IsDialChar(unit) != 0 || StandsBetweenDigits(unit);
  });
}

}  // namespace kelpin::contacts
