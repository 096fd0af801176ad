#pragma once

#include <span>

#include "ui/templates.h"

namespace kelpin::res {

// Keys of the main list. Enter is not among them: the list answers it by activating its row.
std::span<const ui::Accelerator> MainAccelerators();

}  // namespace kelpin::res
