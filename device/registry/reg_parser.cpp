#include "device/registry/reg_parser.h"

#include <algorithm>
#include <charconv>
#include <span>
#include <utility>

#include "device/registry/reg_text.h"
#include "platform/wording.h"

namespace kelpin::device::registry {

using platform::Say;

namespace {

using platform::RegistryRoot;
using platform::RegistryType;

constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kSwappedMark = "\xFE\xFF";
constexpr std::string_view kNarrowHeader = "regedit4";

struct RootName {
  std::string_view name;
  RegistryRoot root;
};
constexpr RootName kRoots[] = {{"hkey_local_machine", RegistryRoot::kLocalMachine},
                               {"hkey_current_user", RegistryRoot::kCurrentUser}};

char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

std::string Lower(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) { return Lower(c); });
  return lower;
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool IsHexDigit(char c) {
  return IsDigit(c) || (Lower(c) >= 'a' && Lower(c) <= 'f');
}

std::uint32_t HexNumber(const std::string& digits) {
  std::uint32_t number = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
  return number;
}

std::string_view TrimEnd(std::string_view text) {
  const std::size_t last = text.find_last_not_of(kBlanks);
  return last == std::string_view::npos ? std::string_view() : text.substr(0, last + 1);
}

// Digits, in groups that dots part: 1, 5.00, 2.1.3.
bool IsVersionNumber(std::string_view text) {
  bool digitBefore = false;
  for (const char c : text) {
    if (!IsDigit(c) && (c != '.' || !digitBefore)) return false;
    digitBefore = IsDigit(c);
  }
  return digitBefore;
}

}  // namespace

bool RegFile::Parse(std::string_view bytes, RegFile& file, RegError& error) {
  RegFile parsed;
  RegError met;
  if (!RegParser(parsed, met).Parse(bytes)) {
    error = std::move(met);
    return false;
  }
  file = std::move(parsed);
  return true;
}

bool RegParser::Fail(std::string reason) {
  error_.line = next_;
  error_.reason = std::move(reason);
  return false;
}

bool RegParser::Parse(std::string_view bytes) {
  if (bytes.size() > kMaxFileBytes) return Fail(Say("the file is larger than 4 MiB"));
  if (bytes.empty()) return true;
  if (bytes.starts_with(kSwappedMark))
    return Fail(Say("UTF-16 with the high byte first is not read"));
  if (bytes.starts_with(kUtf16Mark)) {
    bytes.remove_prefix(kUtf16Mark.size());
    const auto* first = reinterpret_cast<const std::uint8_t*>(bytes.data());
    if (bytes.size() % 2 != 0 ||
        !Utf8FromUtf16(Utf16FromLittleEndian(std::span(first, bytes.size())), converted_)) {
      return Fail(Say("the text is not proper UTF-16"));
    }
    if (converted_.size() > kMaxFileBytes)
      return Fail(Say("the file is larger than 4 MiB as UTF-8"));
    bytes = converted_;
  } else if (bytes.starts_with(kUtf8Mark)) {
    bytes.remove_prefix(kUtf8Mark.size());
  }
  if (!SplitLines(bytes) || !ParseHeader()) return false;
  while (next_ < lines_.size()) {
    line_ = lines_[next_++];
    at_ = 0;
    if (!ParseLine()) return false;
  }
  return true;
}

bool RegParser::SplitLines(std::string_view text) {
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    next_ = lines_.size() + 1;
    if (!CheckLine(line)) return false;
    lines_.push_back(line);
  }
  next_ = 0;
  return true;
}

bool RegParser::CheckLine(std::string_view line) {
  if (line.size() > kMaxLineBytes) return Fail(Say("the line is longer than 128 KiB"));
  for (const char c : line) {
    if (c == '\0') return Fail(Say("there is a zero byte, which no text has"));
    if ((static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7F) {
      return Fail(Say("there is a control character in it"));
    }
  }
  std::u16string ignored;
  return Utf16FromUtf8(line, ignored) || Fail(Say("the line is not proper UTF-8"));
}

bool RegParser::ParseHeader() {
  if (!lines_.empty()) {
    next_ = 1;
    const std::string_view header = TrimEnd(lines_.front());
    narrowStrings_ = Lower(header) == kNarrowHeader;
    if (narrowStrings_) return true;
    const std::size_t blank = header.find_last_of(kBlanks);
    const bool content = header.find_first_of("[\"@;") == 0;
    if (blank != std::string_view::npos && !content && IsVersionNumber(header.substr(blank + 1))) {
      return true;
    }
  }
  return Fail(Say("the first line names no format and version, as in \"%s\"", {kRegHeader}));
}

bool RegParser::ParseLine() {
  SkipBlanks();
  switch (Peek()) {
    case '\0':
    case ';':
      Keep(std::string(line_));
      return true;
    case '[':
      return ParseSection(TrimEnd(line_.substr(at_)));
    case '"':
    case '@':
      return ParseValue();
    default:
      return Fail(Say("this is neither a key in [ ], nor a value, nor a comment behind ;"));
  }
}

void RegParser::Keep(std::string line) {
  if (file_.sections_.empty()) {
    file_.preamble_.push_back(std::move(line));
  } else {
    file_.sections_.back().lines.emplace_back(std::move(line));
  }
}

bool RegParser::ParseSection(std::string_view line) {
  if (!line.ends_with(']')) return Fail(Say("a key's line must end in ]"));
  line = line.substr(1, line.size() - 2);
  if (line.starts_with('-')) return Fail(Say("removing a key has no meaning here"));
  const std::size_t end = line.find('\\');
  const std::string root = Lower(line.substr(0, end));
  const auto* known = std::find_if(std::begin(kRoots), std::end(kRoots),
                                   [&root](const RootName& name) { return name.name == root; });
  if (known == std::end(kRoots)) {
    return Fail(Say("a key starts with HKEY_LOCAL_MACHINE or HKEY_CURRENT_USER"));
  }
  RegSection section;
  section.root = known->root;
  if (end != std::string_view::npos) {
    if (!Utf16FromUtf8(line.substr(end + 1), section.path))
      return Fail(Say("the line is not proper UTF-8"));
    if (section.path.empty() || !IsStorablePath(section.path)) {
      return Fail(Say("the key's path is empty in part, or too long"));
    }
  }
  section.foldedPath = FoldCase(section.path);
  file_.sections_.push_back(std::move(section));
  return true;
}

bool RegParser::ParseValue() {
  if (file_.sections_.empty()) return Fail(Say("a value stands before any key"));
  const std::size_t first = next_ - 1;
  widened_ = false;
  RegValue value;
  if (!ParseName(value) || !ParseData(value) || !ParseEnd(value)) return false;
  if (!widened_) {
    for (std::size_t i = first; i < next_; ++i) {
      if (i != first) value.source.push_back('\n');
      value.source += lines_[i];
    }
  }
  value.foldedName = FoldCase(value.name);
  file_.sections_.back().lines.emplace_back(std::move(value));
  return true;
}

bool RegParser::ParseName(RegValue& value) {
  if (Peek() == '@') {
    ++at_;
  } else {
    if (!ParseQuoted(value.name)) return false;
    if (value.name.size() > kMaxNameLength) return Fail(Say("the value's name is too long"));
    if (!IsStorableName(value.name))
      return Fail(Say("there is a control character in the value's name"));
  }
  SkipBlanks();
  if (Peek() != '=') return Fail(Say("a value's name must be followed by ="));
  ++at_;
  SkipBlanks();
  return true;
}

bool RegParser::ParseData(RegValue& value) {
  if (Peek() == '"') {
    std::u16string text;
    if (!ParseQuoted(text)) return false;
    value.type = RegistryType::kString;
    value.data = StringValueBytes(text);
    return value.data.size() <= kMaxValueBytes || Fail(Say("the value is larger than 64 KiB"));
  }
  if (Take("dword:")) return ParseDword(value);
  if (Take("hex")) return ParseHex(value);
  if (Peek() == '-') return Fail(Say("removing a value has no meaning here"));
  return Fail(Say("a value is a \"text\", dword: or hex:"));
}

bool RegParser::ParseQuoted(std::u16string& text) {
  std::string bytes;
  for (++at_; !AtEnd() && Peek() != '"'; ++at_) {
    if (Peek() == '\\') {
      ++at_;
      if (Peek() != '"' && Peek() != '\\') return Fail(Say("only \\\\ and \\\" may follow a \\"));
    }
    bytes.push_back(Peek());
  }
  if (AtEnd()) return Fail(Say("the closing \" is missing"));
  ++at_;
  return Utf16FromUtf8(bytes, text) || Fail(Say("the line is not proper UTF-8"));
}

bool RegParser::ParseDword(RegValue& value) {
  const std::string digits = Take(9, IsHexDigit);
  if (digits.empty() || digits.size() > 8)
    return Fail(Say("dword: takes 1 to 8 hexadecimal digits"));
  const std::uint32_t number = HexNumber(digits);
  value.type = RegistryType::kDword;
  for (unsigned shift = 0; shift < 32; shift += 8) {
    value.data.push_back(static_cast<std::uint8_t>((number >> shift) & 0xFF));
  }
  return true;
}

bool RegParser::ParseHex(RegValue& value) {
  value.type = RegistryType::kBinary;
  if (Peek() == '(' && !ParseHexType(value)) return false;
  if (Peek() != ':') return Fail(Say("hex must be followed by : or a type in ( )"));
  ++at_;
  return ParseHexBytes(value) && WidenBytes(value);
}

bool RegParser::ParseHexType(RegValue& value) {
  ++at_;
  const std::string digits = Take(9, IsHexDigit);
  if (digits.empty() || digits.size() > 8 || Peek() != ')') {
    return Fail(Say("hex( takes 1 to 8 hexadecimal digits and )"));
  }
  ++at_;
  value.type = static_cast<RegistryType>(HexNumber(digits));
  return true;
}

bool RegParser::ParseHexBytes(RegValue& value) {
  bool byteExpected = false;  // a comma stands before
  while (true) {
    SkipBlanks();
    if (Peek() == '\\') {
      if (!ContinueLine()) return false;
      byteExpected = true;
      continue;
    }
    const std::string digits = Take(3, IsHexDigit);
    if (digits.empty() && value.data.empty() && !byteExpected) return true;
    if (digits.empty() || digits.size() > 2)
      return Fail(Say("a byte is 1 or 2 hexadecimal digits"));
    if (value.data.size() == kMaxValueBytes) return Fail(Say("the value is larger than 64 KiB"));
    value.data.push_back(static_cast<std::uint8_t>(HexNumber(digits)));
    SkipBlanks();
    if (Peek() != ',') return true;
    ++at_;
    byteExpected = true;
  }
}

bool RegParser::ContinueLine() {
  ++at_;
  SkipBlanks();
  if (!AtEnd()) return Fail(Say("nothing may follow the \\ at the end of a line"));
  if (next_ == lines_.size()) return Fail(Say("the file ends in the middle of a value"));
  line_ = lines_[next_++];
  at_ = 0;
  return true;
}

// Strings written as hex by the older format hold one byte a character, of a code page that is not
// told: only what every code page shares can be read.
bool RegParser::WidenBytes(RegValue& value) {
  const bool text = value.type == RegistryType::kString ||
                    value.type == RegistryType::kExpandString ||
                    value.type == RegistryType::kMultiString;
  if (!narrowStrings_ || !text) return true;
  std::vector<std::uint8_t> wide;
  for (const std::uint8_t byte : value.data) {
    if (byte >= 0x80)
      return Fail(Say("there is a text byte above 7F, whose code page is not known"));
    wide.insert(wide.end(), {byte, 0});
  }
  if (wide.size() > kMaxValueBytes) return Fail(Say("the value is larger than 64 KiB"));
  value.data = std::move(wide);
  widened_ = true;
  return true;
}

bool RegParser::ParseEnd(RegValue& value) {
  SkipBlanks();
  if (Peek() == ';') {
    value.comment = std::string(line_.substr(at_));
    return true;
  }
  return AtEnd() || Fail(Say("there is more text behind the value"));
}

void RegParser::SkipBlanks() {
  while (!AtEnd() && kBlanks.find(line_[at_]) != std::string_view::npos) ++at_;
}

bool RegParser::Take(std::string_view word) {
  if (Lower(line_.substr(std::min(at_, line_.size()), word.size())) != word) return false;
  at_ += word.size();
  return true;
}

std::string RegParser::Take(std::size_t most, bool (*accepts)(char)) {
  std::string taken;
  while (!AtEnd() && taken.size() < most && accepts(Peek())) {
    taken.push_back(Peek());
    ++at_;
  }
  return taken;
}

}  // namespace kelpin::device::registry
