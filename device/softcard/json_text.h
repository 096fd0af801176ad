#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace kelpin::device::softcard {

// Parses JSON from outside: nesting is bounded, a member may stand once in an object. On failure
// `error` tells the place and the reason.
bool ParseJson(std::string_view text, nlohmann::json& json, std::string& error);

}  // namespace kelpin::device::softcard
