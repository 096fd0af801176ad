#pragma once

#include <string_view>

#include "ui/dialog.h"
#include "ui/geometry.h"

namespace kelpin::contacts {

// How high a text is when it is wrapped to `width`, from the metrics alone: rather a line too much
// than one too few. At least two lines, which is what a screen wraps.
int TextHeight(const ui::Metrics& metrics, std::u16string_view text, int width);

// A prompt's text and the check box under it.
void PlacePrompt(ui::Dialog& dialog, const ui::Metrics& metrics, ui::Size client, int text,
                 int checkBox);

}  // namespace kelpin::contacts
