#pragma once

#include <vector>

#include "ui/dialog.h"
#include "ui/geometry.h"

namespace kelpin::qt {

// Where the controls of a dialog are drawn, in the order of `controls`.
//
// That is where the program put them. A dialog that puts none of its controls anywhere gets them
// one below the other. What reached the client area's edge when the program laid it out for
// `laidOutFor` goes on reaching it in `client`, until the program lays it out again.
std::vector<ui::Rect> PlaceControls(const std::vector<ui::ControlState>& controls,
                                    ui::Size laidOutFor, ui::Size client,
                                    const ui::Metrics& metrics);

}  // namespace kelpin::qt
