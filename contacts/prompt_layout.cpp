#include "contacts/prompt_layout.h"

#include <algorithm>

namespace kelpin::contacts {
namespace {

constexpr int kLeft = 16;
constexpr int kTop = 8;
constexpr int kBetween = 4;

// Widths in hundredths of a line's height.
constexpr int kNarrow = 45;
constexpr int kWide = 90;
constexpr char16_t kFirstWide = 0x1100;

int WidthOf(char16_t unit) {
  return unit < kFirstWide ? kNarrow : kWide;
}

int LinesOf(std::u16string_view paragraph, int room) {
  int lines = 1;
  int used = 0;  // of this line
  int word = 0;  // the part of it after the last blank
  for (const char16_t unit : paragraph) {
    const int width = WidthOf(unit);
    const bool breaks = unit == u' ' || width == kWide;
    word = breaks ? 0 : word + width;
    used += width;
    if (used <= room) {
      continue;
    }
    if (unit == u' ') {
      continue;  // hangs over the end
    }
    ++lines;
    // The word goes to the next line whole, unless it is longer than a line.
    used = word == 0 || word > room ? width : word;
    word = breaks ? 0 : used;
  }
  return lines;
}

}  // namespace

int TextHeight(const ui::Metrics& metrics, std::u16string_view text, int width) {
  const int room = std::max(kWide, width * 100 / std::max(1, metrics.textLineHeight));
  int lines = 0;
  while (true) {
    const std::size_t end = text.find(u'\n');
    lines += LinesOf(text.substr(0, end), room);
    if (end == std::u16string_view::npos) {
      break;
    }
    text.remove_prefix(end + 1);
  }
  return std::max(2, lines) * metrics.textLineHeight;
}

void PlacePrompt(ui::Dialog& dialog, const ui::Metrics& metrics, ui::Size client, int text,
                 int checkBox) {
  const int width = std::max(0, client.width - 2 * kLeft);
  // However long the text, the check box stays within reach.
  const int most = std::max(0, client.height - kTop - kBetween - metrics.fieldHeight);
  const int height = std::min(TextHeight(metrics, dialog.Text(text), width), most);
  dialog.SetBounds(text, {kLeft, kTop, width, height});
  dialog.SetBounds(checkBox, {kLeft, kTop + height + kBetween, width, metrics.fieldHeight});
}

}  // namespace kelpin::contacts
