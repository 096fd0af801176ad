#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "device/registry/reg_file.h"

namespace kelpin::device::registry {

// Reads one file's text, line by line, and stops at the first line that is not right.
class RegParser {
 public:
  RegParser(RegFile& file, RegError& error) : file_(file), error_(error) {}

  bool Parse(std::string_view bytes);

 private:
  bool Fail(std::string reason);
  bool SplitLines(std::string_view text);
  bool CheckLine(std::string_view line);
  bool ParseHeader();
  bool ParseLine();
  bool ParseSection(std::string_view line);
  bool ParseValue();
  bool ParseName(RegValue& value);
  bool ParseData(RegValue& value);
  bool ParseQuoted(std::u16string& text);
  bool ParseDword(RegValue& value);
  bool ParseHex(RegValue& value);
  bool ParseHexType(RegValue& value);
  bool ParseHexBytes(RegValue& value);
  bool ContinueLine();
  bool ParseEnd(RegValue& value);
  bool WidenBytes(RegValue& value);

  bool AtEnd() const { return at_ >= line_.size(); }
  char Peek() const { return AtEnd() ? '\0' : line_[at_]; }
  void SkipBlanks();
  bool Take(std::string_view word);  // without regard to case
  std::string Take(std::size_t most, bool (*accepts)(char));
  void Keep(std::string line);

  RegFile& file_;
  RegError& error_;
  std::string converted_;  // what a UTF-16 file says in UTF-8
  std::vector<std::string_view> lines_;
  std::size_t next_ = 0;  // the line after line_
  std::string_view line_;
  std::size_t at_ = 0;
  bool narrowStrings_ = false;  // a format whose hex strings are one byte a character
  bool widened_ = false;        // the value is no longer what its line says
};

}  // namespace kelpin::device::registry
