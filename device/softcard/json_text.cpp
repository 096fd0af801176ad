#include "device/softcard/json_text.h"

#include <set>
#include <utility>
#include <vector>

namespace kelpin::device::softcard {
namespace {

constexpr int kMaxDepth = 32;

// Watches the parser: depth, and the members seen in every open object.
class Watcher {
 public:
  bool operator()(int depth, nlohmann::json::parse_event_t event, nlohmann::json& parsed) {
    using Event = nlohmann::json::parse_event_t;
    if (!reason_.empty()) {
      return false;
    }
    switch (event) {
      case Event::object_start:
        members_.emplace_back();
        break;
      case Event::object_end:
        members_.pop_back();
        break;
      case Event::key:
        if (!members_.back().insert(parsed.get_ref<const std::string&>()).second) {
          reason_ = "the member " + parsed.dump() + " stands twice in one object";
        }
        break;
      default:
        break;
    }
    if (depth > kMaxDepth) {
      reason_ = "nested deeper than " + std::to_string(kMaxDepth);
    }
    return reason_.empty();
  }

  const std::string& Reason() const { return reason_; }

 private:
  std::vector<std::set<std::string>> members_;
  std::string reason_;
};

// "parse error at line 3, column 5" and what that means to the user. The rest of what the library
// says repeats the file, which may hold anything.
std::string Place(const std::string& text) {
  const std::size_t start = text.find("parse error at ");
  const std::size_t end = text.find(": ", start);
  return start == std::string::npos || end == std::string::npos
             ? "a number in it is too large"
             : text.substr(start, end - start) + ": no card image, or one that is damaged";
}

}  // namespace

bool ParseJson(std::string_view text, nlohmann::json& json, std::string& error) {
  Watcher watcher;
  try {
    json = nlohmann::json::parse(
        text, [&watcher](int depth, nlohmann::json::parse_event_t event, nlohmann::json& parsed) {
          return watcher(depth, event, parsed);
        });
  } catch (const nlohmann::json::exception& e) {
    error = Place(e.what());
    return false;
  }
  if (!watcher.Reason().empty()) {
    error = watcher.Reason();
    return false;
  }
  return true;
}

}  // namespace kelpin::device::softcard
