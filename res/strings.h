#pragma once

#include <string_view>

#include "res/ids.h"

namespace kelpin::res {

// The text of a `kString…` or `kText…` id in the language in use (res/language.h), for as long as
// the program runs. Empty for an id that has none. "\n" is a line break; "%d" and "%s" are filled
// in by Format. Any thread.
std::u16string_view LoadString(int id);

}  // namespace kelpin::res
