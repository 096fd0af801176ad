#include "device/softcard/json_text.h"

#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/wording.h"

namespace kelpin::device::softcard {

using platform::Say;

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
          reason_ = Say("the member %s stands twice in one object", {parsed.dump()});
        }
        break;
      default:
        break;
    }
    if (depth > kMaxDepth) {
      reason_ = Say("nested deeper than %s", {std::to_string(kMaxDepth)});
    }
    return reason_.empty();
  }

  const std::string& Reason() const { return reason_; }

 private:
  std::vector<std::set<std::string>> members_;
  std::string reason_;
};

// Where in the file the library met what is not JSON: "parse error at line 3, column 5: …". The
// rest of what it says repeats the file, which may hold anything.
std::string Place(const std::string& text) {
  std::string line;
  std::string column;
  for (const auto& [word, number] : {std::pair{" line ", &line}, std::pair{" column ", &column}}) {
    const std::size_t at = text.find(word);
    if (at == std::string::npos) return Say("a number in it is too large");
    const std::size_t first = at + std::string_view(word).size();
    *number = text.substr(first, text.find_first_not_of("0123456789", first) - first);
  }
  return Say("line %s, column %s: this is no JSON", {line, column});
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
