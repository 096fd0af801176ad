#pragma once

#include <string>

namespace kelpin::qt {

// What stands on the buttons that are the screen's own. Yes and No are also given by their first
// letters, where these differ.
struct ButtonWords {
  std::u16string yes = u"Yes";
  std::u16string no = u"No";
  std::u16string ok = u"OK";
  std::u16string done = u"Done";
};

// Screen thread. English until it is set; windows that are open keep their words.
void SetButtonWords(ButtonWords words);
const ButtonWords& CurrentButtonWords();

}  // namespace kelpin::qt
