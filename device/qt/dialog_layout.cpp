#include "device/qt/dialog_layout.h"

#include <algorithm>

namespace kelpin::qt {
namespace {

bool IsEmpty(const ui::Rect& rect) {
  return rect.width <= 0 || rect.height <= 0;
}

int NaturalHeight(const ui::ControlState& control, const ui::Metrics& metrics) {
  switch (control.kind) {
    case ui::ControlKind::kLabel:
      return (control.style & ui::kStyleHeader) != 0 ? metrics.headerHeight : metrics.labelHeight;
    case ui::ControlKind::kProgress:
      return metrics.progressHeight;
    case ui::ControlKind::kPicture:
    case ui::ControlKind::kIcon:
      return 2 * metrics.fieldHeight;
    default:
      return metrics.fieldHeight;
  }
}

std::vector<ui::Rect> Stack(const std::vector<ui::ControlState>& controls, ui::Size client,
                            const ui::Metrics& metrics) {
  int fixed = 0;
  int lists = 0;
  for (const ui::ControlState& control : controls) {
    if (!control.visible) {
      continue;
    }
    if (control.kind == ui::ControlKind::kList) {
      ++lists;
    } else {
      fixed += NaturalHeight(control, metrics) + metrics.gap;
    }
  }
  const int listHeight =
      lists == 0 ? 0
                 : std::max(3 * metrics.fieldHeight, (client.height - fixed - metrics.gap) / lists);
  std::vector<ui::Rect> places;
  places.reserve(controls.size());
  int y = metrics.gap;
  for (const ui::ControlState& control : controls) {
    const bool list = control.kind == ui::ControlKind::kList;
    const int margin = list ? 0 : metrics.margin;
    const int height = list ? listHeight : NaturalHeight(control, metrics);
    places.push_back({margin, y, std::max(0, client.width - 2 * margin), height});
    if (control.visible) {
      y += height + (list ? 0 : metrics.gap);
    }
  }
  return places;
}

ui::Rect Follow(ui::Rect rect, const ui::ControlState& control, ui::Size from, ui::Size to,
                int margin) {
  const bool reachesRight = rect.x + rect.width >= from.width - margin;
  const bool reachesBottom = rect.y + rect.height >= from.height - margin;
  if (reachesRight && control.kind == ui::ControlKind::kButton) {
    rect.x += to.width - from.width;
  } else if (reachesRight) {
    rect.width += to.width - from.width;
  }
  if (reachesBottom && control.kind == ui::ControlKind::kList) {
    rect.height = std::max(1, rect.height + to.height - from.height);
  }
  return rect;
}

}  // namespace

std::vector<ui::Rect> PlaceControls(const std::vector<ui::ControlState>& controls,
                                    ui::Size laidOutFor, ui::Size client,
                                    const ui::Metrics& metrics) {
  if (std::all_of(controls.begin(), controls.end(),
                  [](const ui::ControlState& control) { return IsEmpty(control.bounds); })) {
    return Stack(controls, client, metrics);
  }
  std::vector<ui::Rect> places;
  places.reserve(controls.size());
  for (const ui::ControlState& control : controls) {
    places.push_back(laidOutFor == client
                         ? control.bounds
                         : Follow(control.bounds, control, laidOutFor, client, metrics.margin));
  }
  return places;
}

}  // namespace kelpin::qt
