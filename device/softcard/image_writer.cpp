#include "device/softcard/image_writer.h"

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <span>
#include <string_view>

#include "device/softcard/hex.h"
#include "device/softcard/image_names.h"
#include "device/softcard/image_reader.h"

namespace kelpin::device::softcard {
namespace {

std::string Quoted(std::string_view text) {
  // Texts come from the reader, so they are UTF-8; a broken one is written with U+FFFD.
  return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string Quoted(std::span<const std::uint8_t> bytes) {
  return '"' + ToHex(bytes) + '"';
}

// Members of one object, one line each.
class ObjectLines {
 public:
  ObjectLines(std::string& out, int depth)
      : out_(out), indent_(static_cast<std::size_t>(depth) * 2, ' ') {
    out_ += '{';
  }
  ObjectLines(const ObjectLines&) = delete;
  ObjectLines& operator=(const ObjectLines&) = delete;

  void Begin(std::string_view name) {
    out_ += first_ ? "\n" : ",\n";
    first_ = false;
    out_ += indent_ + "  \"";
    out_ += name;
    out_ += "\": ";
  }
  void Add(std::string_view name, const std::string& value) {
    Begin(name);
    out_ += value;
  }
  void End() { out_ += '\n' + indent_ + '}'; }

 private:
  std::string& out_;
  std::string indent_;
  bool first_ = true;
};

std::string PinText(const Pin& pin) {
  std::string text = "{\"code\": " + Quoted(std::string_view(pin.code)) +
                     ", \"enabled\": " + (pin.enabled ? "true" : "false") +
                     ", \"tries\": " + std::to_string(pin.tries);
  if (!pin.puk.empty()) {
    text += ", \"puk\": " + Quoted(std::string_view(pin.puk)) +
            ", \"pukTries\": " + std::to_string(pin.pukTries);
  }
  return text + '}';
}

std::string AccessText(const CardFile& file) {
  const auto word = [](Access access) { return Quoted(WordFor(kAccessWords, access)); };
  std::string text = "{\"read\": " + word(file.read) + ", \"update\": " + word(file.update);
  if (file.deactivate != Access::kAdm) {
    text += ", \"deactivate\": " + word(file.deactivate);
  }
  if (file.activate != Access::kAdm) {
    text += ", \"activate\": " + word(file.activate);
  }
  return text + '}';
}

void WriteRecords(const FileContent& content, const std::string& indent, std::string& out) {
  std::size_t last = content.RecordCount();
  while (last > 0 && content.IsFree(last) && !content.notes.contains(last)) {
    --last;
  }
  out += '[';
  for (std::size_t record = 1; record <= last; ++record) {
    out += (record == 1 ? "\n" : ",\n") + indent + "  ";
    const auto note = content.notes.find(record);
    if (note != content.notes.end()) {
      out += "{\"hex\": " + Quoted(content.Record(record)) +
             ", \"note\": " + Quoted(std::string_view(note->second)) + '}';
    } else if (content.IsFree(record)) {
      out += "\"\"";
    } else {
      out += Quoted(content.Record(record));
    }
  }
  out += last == 0 ? "]" : '\n' + indent + ']';
}

std::string IdText(std::uint16_t id) {
  const std::uint8_t bytes[] = {static_cast<std::uint8_t>(id >> 8),
                                static_cast<std::uint8_t>(id & 0xFF)};
  return Quoted(bytes);
}

void WriteElementary(const CardFile& file, int depth, ObjectLines& object, std::string& out) {
  if (file.sfi) {
    object.Add("sfi", std::to_string(*file.sfi));
  }
  object.Add("access", AccessText(file));
  if (file.deactivated) {
    object.Add("invalidated", "true");
  }
  if (!file.link.empty()) {
    object.Add("link", Quoted(std::string_view(file.link)));
    return;
  }
  object.Add("structure", Quoted(WordFor(kStructureWords, file.kind)));
  const FileContent& content = *file.content;
  if (file.kind == FileKind::kTransparent) {
    object.Add("data", Quoted(content.bytes));
    return;
  }
  object.Add("recordLength", std::to_string(content.recordLength));
  object.Add("recordCount", std::to_string(content.RecordCount()));
  if (!content.fill.empty()) {
    object.Add("fill", Quoted(content.fill));
  }
  object.Begin("records");
  WriteRecords(content, std::string(static_cast<std::size_t>(depth + 1) * 2, ' '), out);
}

void WriteFile(const CardFile& file, int depth, std::string& out) {
  ObjectLines object(out, depth);
  if (!file.name.empty()) {
    object.Add("name", Quoted(std::string_view(file.name)));
  }
  if (file.kind == FileKind::kAdf) {
    object.Add("aid", Quoted(file.aid));
  } else if (file.kind != FileKind::kMf) {
    object.Add("id", IdText(file.id));
  }
  if (!file.note.empty()) {
    object.Add("note", Quoted(std::string_view(file.note)));
  }
  if (!file.fcp.empty()) {
    object.Add("fcp", Quoted(file.fcp));
  }
  if (!file.IsDirectory()) {
    WriteElementary(file, depth, object, out);
  } else {
    const std::string indent(static_cast<std::size_t>(depth + 2) * 2, ' ');
    object.Begin("files");
    out += '[';
    for (std::size_t i = 0; i < file.children.size(); ++i) {
      out += (i == 0 ? "\n" : ",\n") + indent;
      WriteFile(*file.children[i], depth + 2, out);
    }
    out += file.children.empty() ? "]" : '\n' + indent.substr(2) + ']';
  }
  object.End();
}

}  // namespace

std::string WriteImage(const CardImage& image) {
  const auto flag = [](bool value) { return std::string(value ? "true" : "false"); };
  std::string out;
  ObjectLines root(out, 0);
  root.Add("format", Quoted(kImageFormat));
  if (!image.note.empty()) {
    root.Add("note", Quoted(std::string_view(image.note)));
  }
  root.Add("protocol", Quoted(WordFor(kProtocolWords, image.protocol)));
  root.Add("classes", Quoted(WordFor(kClassesWords, image.classes)));
  root.Add("atr", Quoted(image.atr));
  root.Add("delayMs", std::to_string(image.delayMs));
  root.Add("searchRecord", flag(image.searchRecord));
  root.Add("pathSelect", flag(image.pathSelect));
  root.Add("channels", std::to_string(image.channels));
  root.Begin("pins");
  ObjectLines pins(out, 1);
  pins.Add("pin1", PinText(image.pin1));
  if (image.pin2) {
    pins.Add("pin2", PinText(*image.pin2));
  }
  if (image.adm) {
    pins.Add("adm", PinText(*image.adm));
  }
  pins.End();
  root.Begin("mf");
  WriteFile(*image.mf, 1, out);
  root.End();
  out += '\n';
  return out;
}

}  // namespace kelpin::device::softcard
