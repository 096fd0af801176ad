#pragma once

#include <string_view>

namespace kelpin::app {

// The lower-case form of one UTF-16 unit: Latin (with its extensions), Greek, Cyrillic, Armenian
// and the full-width forms. Every other unit is its own form. The same on every system, whatever
// its locale.
char16_t FoldCase(char16_t unit);

// Below, at or above 0, as `left` sorts before, with or after `right`, letter case aside.
int CompareIgnoringCase(std::u16string_view left, std::u16string_view right);

}  // namespace kelpin::app
