#include "device/registry/reg_file.h"

#include <algorithm>
#include <cstdio>
#include <type_traits>
#include <utility>

#include "device/registry/reg_text.h"

namespace kelpin::device::registry {
namespace {

using platform::RegistryRoot;
using platform::RegistryType;

constexpr std::size_t kWrapColumn = 78;
constexpr std::size_t kMaxCommentBehind = 1000;

bool IsControl(char16_t unit) {
  return unit < 0x20 || unit == 0x7F;
}

bool IsPlainText(std::u16string_view text) {
  std::string ignored;
  return std::none_of(text.begin(), text.end(), IsControl) && Utf8FromUtf16(text, ignored);
}

std::string Quoted(std::u16string_view text) {
  std::string bytes;
  if (!Utf8FromUtf16(text, bytes)) return "\"\"";
  std::string quoted = "\"";
  for (const char c : bytes) {
    if (c == '"' || c == '\\') quoted.push_back('\\');
    quoted.push_back(c);
  }
  quoted.push_back('"');
  return quoted;
}

void AppendHex(std::uint32_t value, int digits, std::string& text) {
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "%0*x", digits, value);
  text += buffer;
}

// True for a string value that can stand between quotes: one terminator, at the end.
bool IsQuotable(const RegValue& value, std::u16string& text) {
  if (value.type != RegistryType::kString || value.data.size() < 2 || value.data.size() % 2 != 0) {
    return false;
  }
  text = Utf16FromLittleEndian(value.data);
  if (text.back() != 0) return false;
  text.pop_back();
  return IsPlainText(text);
}

void AppendBytes(const RegValue& value, std::string& line) {
  line += "hex";
  if (value.type != RegistryType::kBinary) {
    line.push_back('(');
    AppendHex(static_cast<std::uint32_t>(value.type), 1, line);
    line.push_back(')');
  }
  line.push_back(':');
  std::size_t lineStart = 0;
  for (std::size_t i = 0; i < value.data.size(); ++i) {
    if (line.size() - lineStart + 3 > kWrapColumn) {
      line += "\\\n";
      lineStart = line.size();
      line += "  ";
    }
    AppendHex(value.data[i], 2, line);
    if (i + 1 < value.data.size()) line.push_back(',');
  }
}

std::string Render(const RegValue& value) {
  if (!value.source.empty()) return value.source;
  std::string line = value.name.empty() ? "@" : Quoted(value.name);
  line.push_back('=');
  std::u16string text;
  if (value.type == RegistryType::kDword && value.data.size() == 4) {
    line += "dword:";
    AppendHex(value.data[0] | static_cast<std::uint32_t>(value.data[1]) << 8 |
                  static_cast<std::uint32_t>(value.data[2]) << 16 |
                  static_cast<std::uint32_t>(value.data[3]) << 24,
              8, line);
  } else if (IsQuotable(value, text)) {
    line += Quoted(text);
  } else {
    AppendBytes(value, line);
  }
  if (value.comment.empty()) return line;
  // A long one goes before, for lines have a limit.
  if (value.comment.size() > kMaxCommentBehind) return value.comment + "\n" + line;
  return line + "  " + value.comment;
}

std::string Render(const RegSection& section) {
  std::string path;
  if (!Utf8FromUtf16(section.path, path)) path.clear();
  std::string line =
      section.root == RegistryRoot::kLocalMachine ? "[HKEY_LOCAL_MACHINE" : "[HKEY_CURRENT_USER";
  if (!path.empty()) line += "\\" + path;
  return line + "]";
}

bool IsBlank(const RegLine& line) {
  const std::string* text = std::get_if<std::string>(&line);
  return text != nullptr && text->find_first_not_of(" \t") == std::string::npos;
}

}  // namespace

std::u16string_view TrimPath(std::u16string_view path) {
  if (!path.empty() && path.front() == u'\\') path.remove_prefix(1);
  if (!path.empty() && path.back() == u'\\') path.remove_suffix(1);
  return path;
}

bool IsStorableName(std::u16string_view name) {
  return name.size() <= kMaxNameLength && IsPlainText(name);
}

bool IsStorablePath(std::u16string_view trimmedPath) {
  if (trimmedPath.empty()) return true;
  if (trimmedPath.size() > kMaxPathLength) return false;
  while (true) {
    const std::size_t end = trimmedPath.find(u'\\');
    const std::u16string_view part = trimmedPath.substr(0, end);
    if (part.empty() || !IsStorableName(part)) return false;
    if (end == std::u16string_view::npos) return true;
    trimmedPath.remove_prefix(end + 1);
  }
}

std::string RegFile::Text() const {
  std::string text(kRegHeader);
  text.push_back('\n');
  for (const std::string& line : preamble_) text += line + "\n";
  for (const RegSection& section : sections_) {
    text += Render(section) + "\n";
    for (const RegLine& line : section.lines) {
      const std::string* kept = std::get_if<std::string>(&line);
      text += (kept != nullptr ? *kept : Render(std::get<RegValue>(line))) + "\n";
    }
  }
  return text;
}

template <typename File>
auto RegFile::FindIn(File& file, RegistryRoot root, std::u16string_view path,
                     std::u16string_view name) {
  const std::u16string foldedPath = FoldCase(TrimPath(path));
  const std::u16string foldedName = FoldCase(name);
  using Value = std::conditional_t<std::is_const_v<File>, const RegValue, RegValue>;
  for (auto section = file.sections_.rbegin(); section != file.sections_.rend(); ++section) {
    if (section->root != root || section->foldedPath != foldedPath) continue;
    for (auto line = section->lines.rbegin(); line != section->lines.rend(); ++line) {
      Value* value = std::get_if<RegValue>(&*line);
      if (value != nullptr && value->foldedName == foldedName) return value;
    }
  }
  return static_cast<Value*>(nullptr);
}

const RegValue* RegFile::Find(RegistryRoot root, std::u16string_view path,
                              std::u16string_view name) const {
  return FindIn(*this, root, path, name);
}

bool RegFile::HasKey(RegistryRoot root, std::u16string_view path) const {
  const std::u16string folded = FoldCase(TrimPath(path));
  return std::any_of(sections_.begin(), sections_.end(), [&](const RegSection& section) {
    if (section.root != root) return false;
    if (folded.empty() || section.foldedPath == folded) return true;
    return section.foldedPath.size() > folded.size() && section.foldedPath.starts_with(folded) &&
           section.foldedPath[folded.size()] == u'\\';
  });
}

RegSection* RegFile::FindSection(RegistryRoot root, std::u16string_view foldedPath) {
  for (auto section = sections_.rbegin(); section != sections_.rend(); ++section) {
    if (section->root == root && section->foldedPath == foldedPath) return &*section;
  }
  return nullptr;
}

void RegFile::AddKey(RegistryRoot root, std::u16string_view path) {
  const std::u16string_view trimmed = TrimPath(path);
  std::u16string folded = FoldCase(trimmed);
  if (FindSection(root, folded) != nullptr) return;
  // A blank line before the new section, but for one that follows the header at once.
  if (!sections_.empty()) {
    std::vector<RegLine>& last = sections_.back().lines;
    if (last.empty() || !IsBlank(last.back())) last.emplace_back(std::string());
  } else if (preamble_.empty() || !preamble_.back().empty()) {
    preamble_.emplace_back();
  }
  sections_.push_back({root, std::u16string(trimmed), std::move(folded), {}});
}

void RegFile::Set(RegistryRoot root, std::u16string_view path, std::u16string_view name,
                  RegistryType type, std::span<const std::uint8_t> data) {
  RegValue value{std::u16string(name), type, {data.begin(), data.end()}, FoldCase(name), {}, {}};
  if (RegValue* held = FindIn(*this, root, path, name)) {
    value.name = held->name;
    value.comment = held->comment;
    *held = std::move(value);
    return;
  }
  AddKey(root, path);
  std::vector<RegLine>& lines = FindSection(root, FoldCase(TrimPath(path)))->lines;
  const auto lastValue = std::find_if(lines.rbegin(), lines.rend(), [](const RegLine& line) {
    return std::holds_alternative<RegValue>(line);
  });
  lines.insert(lastValue.base(), std::move(value));
}

}  // namespace kelpin::device::registry
