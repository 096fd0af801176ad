#pragma once

#include <functional>
#include <string>
#include <utility>

namespace kelpin::device::contacts {

// Told what keeps contacts from being read or saved, and what to do about it. Any thread.
using TroubleListener = std::function<void(const std::string& trouble)>;

// The first trouble of a session on an address book. It is told when the session ends, once for all
// the contacts that it kept from being saved.
class TroubleNote {
 public:
  explicit TroubleNote(TroubleListener listener) : listener_(std::move(listener)) {}
  ~TroubleNote() {
    if (!first_.empty() && listener_) {
      listener_(first_);
    }
  }
  TroubleNote(const TroubleNote&) = delete;
  TroubleNote& operator=(const TroubleNote&) = delete;

  void Add(std::string trouble) {
    if (first_.empty()) {
      first_ = std::move(trouble);
    }
  }

 private:
  const TroubleListener listener_;
  std::string first_;
};

}  // namespace kelpin::device::contacts
