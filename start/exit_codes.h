#pragma once

namespace kelpin::start {

constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

}  // namespace kelpin::start
