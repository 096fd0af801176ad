#include "device/qt/button_words.h"

#include <utility>

namespace kelpin::qt {
namespace {

ButtonWords& Words() {
  static ButtonWords words;
  return words;
}

}  // namespace

void SetButtonWords(ButtonWords words) {
  Words() = std::move(words);
}

const ButtonWords& CurrentButtonWords() {
  return Words();
}

}  // namespace kelpin::qt
