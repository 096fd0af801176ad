#pragma once

#include <cstdint>
#include <string>

#include "editor/name_family.h"

namespace kelpin::editor {

// The card's records of one of the lists of names: a text each, then 0xFF, which is all there is of
// an erased one. None are ever added or removed. Any thread.
class NameRecords {
 public:
  NameRecords(sim::RilExtPhonebook& book, const NameFamily& family) : book_(book), file_(family) {}

  std::uint32_t Length() const { return (book_.*file_.length)(); }
  std::uint32_t Count() const { return (book_.*file_.count)(); }
  // `id` is 1-based. On failure `name` is left as it was; text of a form that is not supported
  // reads as none.
  bool Read(std::uint32_t id, std::u16string& name) const;
  // No name erases the record. What a record has no room for is not written; where that takes whole
  // characters of a name in UCS-2, `name` is cut as well.
  bool Write(std::uint32_t id, std::u16string& name) const;

 private:
  sim::RilExtPhonebook& book_;
  const NameFamily& file_;
};

}  // namespace kelpin::editor
