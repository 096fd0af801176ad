#include "device/softcard/image_reader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <nlohmann/json.hpp>
#include <span>
#include <utility>
#include <vector>

#include "device/softcard/hex.h"
#include "device/softcard/image_names.h"
#include "device/softcard/json_text.h"
#include "platform/wording.h"

namespace kelpin::device::softcard {

using platform::Say;

namespace {

using nlohmann::json;

constexpr int kMaxDirectoryDepth = 6;
constexpr std::size_t kMaxFiles = 512;
constexpr std::size_t kMaxContent = 1u << 20;     // of all files together
constexpr std::size_t kMaxTransparent = 0x7FFF;   // what a 15-bit offset reaches
constexpr std::size_t kMaxRecords = 254;          // FF and 00 are no record numbers
constexpr std::size_t kMaxAtr = 33;               // TS and 32 more, ISO/IEC 7816-3
constexpr std::size_t kMaxFcp = 256;              // what one answer holds
constexpr std::size_t kMinAid = 5, kMaxAid = 16;  // ISO/IEC 7816-4
constexpr std::int64_t kNoNumber = -1;

// One place of the image: the value and the way to it. Every check that fails leaves its reason in
// the error the whole reading shares.
class Place {
 public:
  Place(const json& value, std::string path, std::string& error)
      : value_(value), path_(std::move(path)), error_(error) {}

  bool Fail(const std::string& why) const {
    if (error_.empty()) {
      error_ = platform::Printable(path_.empty() ? "/" : path_) + ": " + why;
    }
    return false;
  }

  const json& Value() const { return value_; }
  bool Has(const char* member) const { return value_.contains(member); }
  Place At(const char* member) const { return {value_.at(member), path_ + '/' + member, error_}; }
  Place At(std::size_t index) const {
    return {value_.at(index), path_ + '/' + std::to_string(index), error_};
  }

  bool IsObjectOf(std::initializer_list<std::string_view> members) const {
    if (!value_.is_object()) {
      return Fail(Say("an object is wanted"));
    }
    for (const auto& item : value_.items()) {
      if (std::find(members.begin(), members.end(), item.key()) == members.end()) {
        return Fail(Say("unknown member \"%s\"", {item.key()}));
      }
    }
    return true;
  }

  bool Needs(const char* member) const {
    return Has(member) || Fail(Say("\"%s\" is missing", {member}));
  }

  bool Text(std::string& text) const {
    if (!value_.is_string()) {
      return Fail(Say("a text is wanted"));
    }
    text = value_.get_ref<const std::string&>();
    return true;
  }

  bool Flag(bool& flag) const {
    if (!value_.is_boolean()) {
      return Fail(Say("true or false is wanted"));
    }
    flag = value_.get<bool>();
    return true;
  }

  template <typename Number>
  bool Count(Number lowest, Number highest, Number& number) const {
    // A number beyond 64 bits is read as a floating one and so refused as well.
    const std::int64_t value = value_.is_number_unsigned() && value_.get<std::uint64_t>() < 1u << 31
                                   ? value_.get<std::int64_t>()
                                   : kNoNumber;
    if (value < static_cast<std::int64_t>(lowest) || value > static_cast<std::int64_t>(highest)) {
      return Fail(Say("a whole number from %s to %s is wanted",
                      {std::to_string(lowest), std::to_string(highest)}));
    }
    number = static_cast<Number>(value);
    return true;
  }

  bool Bytes(std::size_t shortest, std::size_t longest, std::vector<std::uint8_t>& bytes) const {
    std::string text;
    if (!Text(text)) {
      return false;
    }
    std::vector<std::uint8_t> decoded;
    if (!FromHex(text, decoded)) {
      return Fail(Say("hexadecimal digits are wanted, two a byte"));
    }
    if (decoded.size() < shortest || decoded.size() > longest) {
      return Fail(shortest == longest
                      ? Say("%s bytes, %s are wanted",
                            {std::to_string(decoded.size()), std::to_string(longest)})
                      : Say("%s bytes, %s to %s are wanted",
                            {std::to_string(decoded.size()), std::to_string(shortest),
                             std::to_string(longest)}));
    }
    bytes = std::move(decoded);
    return true;
  }

  template <typename Table, typename Value>
  bool Word(const Table& table, Value& value) const {
    std::string text;
    if (!Text(text)) {
      return false;
    }
    std::string known;
    for (const auto& entry : table) {
      if (text == entry.word) {
        value = entry.value;
        return true;
      }
      known += (known.empty() ? "" : ", ") + std::string(entry.word);
    }
    return Fail(Say("one of %s is wanted", {known}));
  }

 private:
  const json& value_;
  std::string path_;
  std::string& error_;
};

// What the files so far cost, over the whole image.
struct Totals {
  std::size_t files = 0;
  std::size_t bytes = 0;
};

bool ReadDigits(const Place& place, std::size_t shortest, std::size_t longest,
                std::string& digits) {
  if (!place.Text(digits)) {
    return false;
  }
  const bool good =
      digits.size() >= shortest && digits.size() <= longest &&
      std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; });
  return good || place.Fail(Say("%s to %s decimal digits are wanted",
                                {std::to_string(shortest), std::to_string(longest)}));
}

bool ReadPin(const Place& place, Pin& pin) {
  if (!place.IsObjectOf({"code", "enabled", "tries", "puk", "pukTries"}) || !place.Needs("code") ||
      !ReadDigits(place.At("code"), 4, 8, pin.code)) {
    return false;
  }
  if (place.Has("puk") && !ReadDigits(place.At("puk"), 8, 8, pin.puk)) {
    return false;
  }
  return (!place.Has("enabled") || place.At("enabled").Flag(pin.enabled)) &&
         (!place.Has("tries") || place.At("tries").Count(0, Pin::kTries, pin.tries)) &&
         (!place.Has("pukTries") || place.At("pukTries").Count(0, Pin::kPukTries, pin.pukTries));
}

bool ReadPins(const Place& place, CardImage& image) {
  if (!place.IsObjectOf({"pin1", "pin2", "adm"}) || !place.Needs("pin1") ||
      !ReadPin(place.At("pin1"), image.pin1)) {
    return false;
  }
  if (place.Has("pin2") && !ReadPin(place.At("pin2"), image.pin2.emplace())) {
    return false;
  }
  return !place.Has("adm") || ReadPin(place.At("adm"), image.adm.emplace());
}

bool ReadAccess(const Place& place, CardFile& file) {
  if (!place.IsObjectOf({"read", "update", "deactivate", "activate"})) {
    return false;
  }
  const std::pair<const char*, Access&> rules[] = {{"read", file.read},
                                                   {"update", file.update},
                                                   {"deactivate", file.deactivate},
                                                   {"activate", file.activate}};
  return std::all_of(std::begin(rules), std::end(rules), [&place](const auto& rule) {
    return !place.Has(rule.first) || place.At(rule.first).Word(kAccessWords, rule.second);
  });
}

bool ReadRecord(const Place& place, std::size_t number, std::size_t count, FileContent& content) {
  std::vector<std::uint8_t> bytes;
  const std::size_t length = content.recordLength;
  if (number > count) {
    return place.Fail(Say("more records than recordCount says"));
  }
  if (place.Value().is_object()) {
    std::string note;
    if (!place.IsObjectOf({"hex", "note"}) || !place.Needs("hex") ||
        !place.At("hex").Bytes(length, length, bytes)) {
      return false;
    }
    if (place.Has("note")) {
      if (!place.At("note").Text(note)) {
        return false;
      }
      content.notes[number] = note;
    }
  } else {
    std::string text;
    if (!place.Text(text)) {
      return false;
    }
    if (text.empty()) {
      return true;  // a free record
    }
    if (!place.Bytes(length, length, bytes)) {
      return false;
    }
  }
  std::copy(bytes.begin(), bytes.end(),
            content.bytes.begin() + static_cast<std::ptrdiff_t>((number - 1) * length));
  return true;
}

bool ReadRecords(const Place& place, FileContent& content, Totals& totals) {
  std::size_t count = 0;
  if (!place.Needs("recordLength") || !place.Needs("recordCount") || !place.Needs("records") ||
      !place.At("recordLength").Count<std::size_t>(1, 255, content.recordLength) ||
      !place.At("recordCount").Count<std::size_t>(1, kMaxRecords, count)) {
    return false;
  }
  const std::size_t length = content.recordLength;
  totals.bytes += length * count;
  if (totals.bytes > kMaxContent) {
    return place.Fail(Say("the files hold more than %s bytes", {std::to_string(kMaxContent)}));
  }
  if (place.Has("fill") && !place.At("fill").Bytes(length, length, content.fill)) {
    return false;
  }
  content.bytes.assign(length * count, 0xFF);
  if (!content.fill.empty()) {
    for (std::size_t i = 0; i < content.bytes.size(); ++i) {
      content.bytes[i] = content.fill[i % length];
    }
  }
  const Place records = place.At("records");
  if (!records.Value().is_array()) {
    return records.Fail(Say("a list of records is wanted"));
  }
  for (std::size_t i = 0; i < records.Value().size(); ++i) {
    if (!ReadRecord(records.At(i), i + 1, count, content)) {
      return false;
    }
  }
  return true;
}

bool ReadElementary(const Place& place, CardFile& file, Totals& totals) {
  if (!place.IsObjectOf({"name", "id", "note", "fcp", "sfi", "access", "invalidated", "structure",
                         "data", "recordLength", "recordCount", "fill", "records", "link"})) {
    return false;
  }
  if (place.Has("sfi") && !place.At("sfi").Count<std::uint8_t>(0, 30, file.sfi.emplace())) {
    return false;
  }
  if ((place.Has("access") && !ReadAccess(place.At("access"), file)) ||
      (place.Has("invalidated") && !place.At("invalidated").Flag(file.deactivated))) {
    return false;
  }
  if (place.Has("link")) {
    for (const char* own :
         {"structure", "data", "recordLength", "recordCount", "fill", "records"}) {
      if (place.Has(own)) {
        return place.Fail(Say("a link has no \"%s\" of its own", {own}));
      }
    }
    file.kind = FileKind::kTransparent;  // until the link is resolved
    return place.At("link").Text(file.link) &&
           (!file.link.empty() || place.At("link").Fail(Say("a path is wanted")));
  }
  if (!place.Needs("structure") || !place.At("structure").Word(kStructureWords, file.kind)) {
    return false;
  }
  file.content = std::make_shared<FileContent>();
  if (file.kind != FileKind::kTransparent) {
    return (!place.Has("data") || place.Fail(Say("a file of records has no \"data\""))) &&
           ReadRecords(place, *file.content, totals);
  }
  for (const char* records : {"recordLength", "recordCount", "fill", "records"}) {
    if (place.Has(records)) {
      return place.Fail(Say("a transparent file has no \"%s\"", {records}));
    }
  }
  if (!place.Needs("data") || !place.At("data").Bytes(1, kMaxTransparent, file.content->bytes)) {
    return false;
  }
  totals.bytes += file.content->bytes.size();
  return totals.bytes <= kMaxContent ||
         place.Fail(Say("the files hold more than %s bytes", {std::to_string(kMaxContent)}));
}

bool ReadFile(const Place& place, int depth, CardFile& file, Totals& totals);

bool ReadChildren(const Place& place, int depth, CardFile& directory, Totals& totals) {
  if (!place.Value().is_array()) {
    return place.Fail(Say("a list of files is wanted"));
  }
  if (depth > kMaxDirectoryDepth) {
    return place.Fail(
        Say("directories stand deeper than %s", {std::to_string(kMaxDirectoryDepth)}));
  }
  for (std::size_t i = 0; i < place.Value().size(); ++i) {
    auto child = std::make_unique<CardFile>();
    child->parent = &directory;
    const Place at = place.At(i);
    if (!ReadFile(at, depth, *child, totals)) {
      return false;
    }
    for (const auto& other : directory.children) {
      if (child->kind == FileKind::kAdf ? other->aid == child->aid && !child->aid.empty()
                                        : other->kind != FileKind::kAdf && other->id == child->id) {
        return at.Fail(Say("a second file of this id in one directory"));
      }
      if (child->sfi && *child->sfi != 0 && other->sfi == child->sfi) {
        return at.Fail(Say("a second file of this sfi in one directory"));
      }
    }
    directory.children.push_back(std::move(child));
  }
  return true;
}

bool ReadDirectory(const Place& place, int depth, CardFile& file, Totals& totals) {
  if (!place.IsObjectOf({"name", "id", "aid", "note", "fcp", "files"})) {
    return false;
  }
  if (place.Has("aid")) {
    file.kind = FileKind::kAdf;
    if (place.Has("id")) {
      return place.Fail(Say("an application has an \"aid\", no \"id\""));
    }
    if (depth != 1) {
      return place.Fail(Say("an application stands in the master file alone"));
    }
    if (!place.At("aid").Bytes(kMinAid, kMaxAid, file.aid)) {
      return false;
    }
  }
  return ReadChildren(place.At("files"), depth + 1, file, totals);
}

// `depth` is that of the directory the file stands in: 1 in the master file.
bool ReadFile(const Place& place, int depth, CardFile& file, Totals& totals) {
  if (!place.Value().is_object()) {
    return place.Fail(Say("an object is wanted"));
  }
  if (++totals.files > kMaxFiles) {
    return place.Fail(Say("more than %s files", {std::to_string(kMaxFiles)}));
  }
  if ((place.Has("name") && !place.At("name").Text(file.name)) ||
      (place.Has("note") && !place.At("note").Text(file.note)) ||
      (place.Has("fcp") && !place.At("fcp").Bytes(2, kMaxFcp, file.fcp))) {
    return false;
  }
  if (!place.Has("aid")) {
    std::vector<std::uint8_t> id;
    if (!place.Needs("id") || !place.At("id").Bytes(2, 2, id)) {
      return false;
    }
    file.id = static_cast<std::uint16_t>(id[0] << 8 | id[1]);
    // The master file, the current application, and two ISO/IEC 7816-4 keeps for itself.
    if (file.id == 0x3F00 || file.id == 0x7FFF || file.id == 0x3FFF || file.id == 0xFFFF) {
      return place.At("id").Fail(Say("this id is taken by the standards"));
    }
  }
  return place.Has("files") || place.Has("aid")
             ? (place.Needs("files") && ReadDirectory(place, depth, file, totals))
             : ReadElementary(place, file, totals);
}

// Links are resolved when every file is there.
bool ResolveLinks(const CardImage& image, CardFile& directory, std::string& error) {
  for (const auto& child : directory.children) {
    if (child->IsDirectory()) {
      if (!ResolveLinks(image, *child, error)) {
        return false;
      }
      continue;
    }
    if (child->link.empty()) {
      continue;
    }
    const CardFile* target = image.Find(child->link);
    if (target == nullptr || target->IsDirectory() || !target->link.empty()) {
      error = Say("link \"%s\": no file with content of its own there", {child->link});
      return false;
    }
    child->kind = target->kind;
    child->content = target->content;
  }
  return true;
}

bool ReadOptions(const Place& root, CardImage& image) {
  return (!root.Has("note") || root.At("note").Text(image.note)) &&
         (!root.Has("protocol") || root.At("protocol").Word(kProtocolWords, image.protocol)) &&
         (!root.Has("classes") || root.At("classes").Word(kClassesWords, image.classes)) &&
         (!root.Has("atr") || root.At("atr").Bytes(0, kMaxAtr, image.atr)) &&
         (!root.Has("delayMs") ||
          root.At("delayMs").Count(0, CardImage::kMaxDelayMs, image.delayMs)) &&
         (!root.Has("searchRecord") || root.At("searchRecord").Flag(image.searchRecord)) &&
         (!root.Has("pathSelect") || root.At("pathSelect").Flag(image.pathSelect)) &&
         (!root.Has("channels") || root.At("channels").Count(0, 3, image.channels));
}

}  // namespace

bool ReadImage(std::string_view text, CardImage& image, std::string& error) {
  error.clear();
  if (text.size() > kMaxImageText) {
    error = Say("larger than %s bytes", {std::to_string(kMaxImageText)});
    return false;
  }
  json parsed;
  if (!ParseJson(text, parsed, error)) {
    return false;
  }
  const Place root(parsed, "", error);
  std::string format;
  CardImage read;
  if (!root.IsObjectOf({"format", "note", "protocol", "classes", "atr", "delayMs", "searchRecord",
                        "pathSelect", "channels", "pins", "mf"}) ||
      !root.Needs("format") || !root.At("format").Text(format)) {
    return false;
  }
  if (format != kImageFormat) {
    return root.At("format").Fail(Say("\"%s\" is wanted", {kImageFormat}));
  }
  if (!ReadOptions(root, read) || !root.Needs("pins") || !ReadPins(root.At("pins"), read) ||
      !root.Needs("mf")) {
    return false;
  }
  const Place mf = root.At("mf");
  Totals totals;
  read.mf = std::make_unique<CardFile>();
  read.mf->kind = FileKind::kMf;
  read.mf->id = 0x3F00;
  if (!mf.IsObjectOf({"note", "fcp", "files"}) || !mf.Needs("files") ||
      (mf.Has("note") && !mf.At("note").Text(read.mf->note)) ||
      (mf.Has("fcp") && !mf.At("fcp").Bytes(2, kMaxFcp, read.mf->fcp)) ||
      !ReadChildren(mf.At("files"), 1, *read.mf, totals) || !ResolveLinks(read, *read.mf, error)) {
    return false;
  }
  image = std::move(read);
  return true;
}

}  // namespace kelpin::device::softcard
