#include "sim/sim_text.h"

namespace kelpin::sim {
namespace {

// Tells, character by character, what a field keeps.
class Keeper {
 public:
  Keeper(EditFilter filter, std::size_t limit) : filter_(filter), limit_(limit) {}

  bool Keeps(char16_t character) {
    switch (filter_) {
      case EditFilter::kEmail:
        return TakeSeptets(static_cast<std::size_t>(GsmCharClass(character)));
      case EditFilter::kOwnNumber:
        if (IsDialChar(character) == 0 || (character == u'+' && !first_)) {
          return false;
        }
        first_ = false;
        return true;
      case EditFilter::kNumber:
        break;
    }
    return IsDialChar(character) == 1;
  }

 private:
  bool TakeSeptets(std::size_t septets) {
    if (septets == 0 || (limit_ > 0 && used_ + septets > limit_)) {
      return false;
    }
    used_ += septets;
    return true;
  }

  const EditFilter filter_;
  const std::size_t limit_;
  std::size_t used_ = 0;
  bool first_ = true;
};

}  // namespace

EditFilter EditFilterOf(int control) {
  switch (control) {
    case kNewEmailControl:
    case kEditEmailControl:
      return EditFilter::kEmail;
    case kOwnNumberControl:
      return EditFilter::kOwnNumber;
    default:
      return EditFilter::kNumber;
  }
}

std::u16string FilterEditText(EditFilter filter, std::u16string_view text, std::size_t limit) {
  text = text.substr(0, kFilterTextLimit);
  std::u16string kept;
  kept.reserve(text.size());
  Keeper keeper(filter, limit);
  for (const char16_t character : text) {
    if (keeper.Keeps(character)) {
      kept.push_back(character);
    }
  }
  return kept;
}

std::optional<std::u16string> FilterEditInput(int notification, int control,
                                              std::u16string_view text, std::size_t limit) {
  if (notification != kEditUpdateNotification) {
    return std::nullopt;
  }
  text = text.substr(0, kFilterTextLimit);
  const EditFilter filter = EditFilterOf(control);
  Keeper keeper(filter, limit);
  for (const char16_t character : text) {
    if (!keeper.Keeps(character)) {
      return FilterEditText(filter, text, limit);
    }
  }
  return std::nullopt;
}

}  // namespace kelpin::sim
