#include "app/list_message.h"

#include <string>

#include "res/strings.h"

namespace kelpin::app {

ui::ListMessage MakeListMessage(int text, int hint) {
  return {std::u16string(res::LoadString(text)), std::u16string(res::LoadString(hint)), 0, 0};
}

}  // namespace kelpin::app
