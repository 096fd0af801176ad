#pragma once

#include <string>
#include <string_view>

namespace kelpin::ui {

// The same letter without its case: Latin (with its extensions), Greek, Cyrillic, Armenian and the
// full-width forms. Other units stay. The same on every system: no locale is asked.
char16_t FoldCase(char16_t unit);
std::u16string FoldCase(std::u16string_view text);

// Below, at or above 0, as `left` sorts before, with or after `right`, letter case aside.
int CompareIgnoringCase(std::u16string_view left, std::u16string_view right);

}  // namespace kelpin::ui
