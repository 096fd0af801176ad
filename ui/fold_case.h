#pragma once

#include <string>
#include <string_view>

namespace kelpin::ui {

// The same letter without its case, for the alphabets whose pairs lie regularly: Latin with its
// accents, Greek, Cyrillic, Armenian. Other units stay. No locale is asked.
char16_t FoldCase(char16_t unit);
std::u16string FoldCase(std::u16string_view text);

}  // namespace kelpin::ui
