#include "res/accelerators.h"

#include "res/ids.h"
#include "ui/keys.h"

namespace kelpin::res {
namespace {

using ui::Key;
using ui::KeyPress;

consteval KeyPress Control(char16_t letter) {
  return {Key::kCharacter, ui::kControl, letter};
}

constexpr ui::Accelerator kMain[] = {
    {{Key::kDelete}, kCommandDelete},    {{Key::kF2}, kCommandEdit},
    {{Key::kF5}, kCommandRefresh},       {Control(u'A'), kCommandSelectAll},
    {Control(u'C'), kCommandCopyNumber}, {Control(u'D'), kCommandCall},
    {Control(u'N'), kCommandNew},
};

constexpr bool PressesDiffer() {
  for (const ui::Accelerator& one : kMain) {
    int same = 0;
    for (const ui::Accelerator& other : kMain) {
      same += one.press == other.press ? 1 : 0;
    }
    if (same != 1) {
      return false;
    }
  }
  return true;
}
static_assert(PressesDiffer());

}  // namespace

std::span<const ui::Accelerator> MainAccelerators() {
  return kMain;
}

}  // namespace kelpin::res
