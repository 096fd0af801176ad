#include "editor/entry_layout.h"

#include <algorithm>

#include "app/settings.h"
#include "ui/dialog.h"

namespace kelpin::editor {
namespace {

constexpr FieldControls EntryControls::*kStack[] = {
    &EntryControls::location, &EntryControls::name,    &EntryControls::nickname,
    &EntryControls::number,   &EntryControls::number2, &EntryControls::number3,
    &EntryControls::email,    &EntryControls::group};

void ShowField(ui::Dialog& dialog, const FieldControls& field, bool shown, bool withButton) {
  dialog.Show(field.label, shown);
  dialog.Show(field.edit, shown);
  dialog.Show(field.button, shown && withButton);
}

// Places one field at `y`; where the next one begins.
int PlaceField(ui::Dialog& dialog, const FieldControls& field, bool buttonByLabel, int width, int y,
               const ui::Metrics& metrics) {
  const int left = metrics.margin;
  const bool button = field.button != 0 && dialog.Shown(field.button);
  const int beside = button ? metrics.buttonWidth + metrics.gap : 0;
  const int buttonLeft = left + width - metrics.buttonWidth;
  const int labelRow = button && buttonByLabel ? std::max(metrics.labelHeight, metrics.fieldHeight)
                                               : metrics.labelHeight;
  dialog.SetBounds(field.label,
                   {left, y + labelRow - metrics.labelHeight,
                    std::max(0, width - (buttonByLabel ? beside : 0)), metrics.labelHeight});
  if (button && buttonByLabel) {
    // Half of the gap over it goes under it.
    dialog.SetBounds(field.button,
                     {buttonLeft, y - metrics.gap / 2, metrics.buttonWidth, metrics.fieldHeight});
  }
  y += labelRow;
  dialog.SetBounds(field.edit, {left, y, std::max(0, width - (buttonByLabel ? 0 : beside)),
                                metrics.fieldHeight});
  if (button && !buttonByLabel) {
    dialog.SetBounds(field.button, {buttonLeft, y, metrics.buttonWidth, metrics.fieldHeight});
  }
  return y + metrics.fieldHeight + metrics.gap;
}

}  // namespace

void ShowFields(ui::Dialog& dialog, const EntryControls& controls,
                const app::AppSettings& settings) {
  for (const ExtendedField& field : ExtendedFields()) {
    ShowField(dialog, controls.*field.controls, IsShown(field, settings), settings.Enable_AAS != 0);
  }
  ShowField(dialog, controls.group, settings.Enable_GAS != 0, true);
}

void PlaceFields(ui::Dialog& dialog, const EntryControls& controls, ui::Size client,
                 const ui::Metrics& metrics) {
  const int width = std::max(0, client.width - 2 * metrics.margin);
  int y = metrics.gap / 2;
  for (FieldControls EntryControls::*const place : kStack) {
    const FieldControls& field = controls.*place;
    if (field.edit == 0 || !dialog.Shown(field.edit)) {
      continue;
    }
    y = PlaceField(dialog, field, place != &EntryControls::group, width, y, metrics);
  }
}

}  // namespace kelpin::editor
