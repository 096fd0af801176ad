#pragma once

#include <algorithm>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "tests/card/ext_card.h"
#include "tests/card/hex.h"
#include "tests/card/sim_client.h"

namespace kelpin::device::card {

// One file of records: its id, their length and number, and what the first of them hold in hex.
// Blanks are left out; what is missing is FF.
struct HandFile {
  std::string id;
  std::size_t length = 0;
  std::size_t count = 0;
  std::vector<std::string> records;
};

// A card made by hand: the files of the phone book below DF TELECOM, those of a local one in the
// application, and the GSM files beside the phone book.
struct HandBook {
  std::vector<HandFile> global;
  std::vector<HandFile> local;
  std::vector<HandFile> telecom;
};

inline std::string HandRecord(const std::string& hex, std::size_t length) {
  std::string record;
  std::copy_if(hex.begin(), hex.end(), std::back_inserter(record), [](char c) { return c != ' '; });
  record.resize(std::max(record.size(), 2 * length), 'F');
  return record;
}

// A record of EF_ADN with ten bytes of alpha: name and number part in hex.
inline constexpr std::size_t kHandAdn = 24;
inline std::string HandEntry(const std::string& name, const std::string& number) {
  return HandRecord(name, kHandAdn - 14) + number;
}

inline std::string HandFiles(const std::vector<HandFile>& files) {
  std::string text;
  for (const HandFile& file : files) {
    std::string records;
    for (const std::string& record : file.records) {
      records += (records.empty() ? "\"" : ",\"") + HandRecord(record, file.length) + "\"";
    }
    text += (text.empty() ? "" : ",");
    text +=
        R"({"name":"EF","id":")" + file.id +
        R"(","access":{"read":"ALW","update":"ALW"},"structure":"linearFixed","recordLength":)" +
        std::to_string(file.length) + R"(,"recordCount":)" + std::to_string(file.count) +
        R"(,"records":[)" + records + "]}";
  }
  return text;
}

inline std::string HandFolder(const std::vector<HandFile>& files) {
  return files.empty() ? "" : R"({"name":"DF","id":"5F3A","files":[)" + HandFiles(files) + "]}";
}

inline std::string HandText(const HandBook& book) {
  std::string telecom = HandFiles(book.telecom);
  const std::string global = HandFolder(book.global);
  if (!telecom.empty() && !global.empty()) telecom += ",";
  const std::vector<HandFile> directory = {
      {"2F00", 32, 1, {"61 12 4F 0C A0000000871002FF49FF0589 50 02 5553"}}};
  return R"({"format":"kelpin card image 1","note":"","protocol":"T0","classes":"both",)"
         R"("atr":"3B9E96801FC78031E073FE2113564B454C50494EFD","delayMs":0,"searchRecord":true,)"
         R"("pathSelect":true,"channels":3,"pins":{"pin1":{"code":"1234","enabled":false,"tries":3,)"
         R"("puk":"12345678","pukTries":10},"pin2":{"code":"5678","enabled":true,"tries":3,)"
         R"("puk":"87654321","pukTries":10},"adm":{"code":"88888888","enabled":true,"tries":3}},)"
         R"("mf":{"files":[)" +
         HandFiles(directory) + R"(,{"name":"DF","id":"7F10","files":[)" + telecom + global +
         R"(]},{"name":"ADF","aid":"A0000000871002FF49FF0589","files":[)" + HandFolder(book.local) +
         "]}]}}";
}

// The program on such a card.
class HandCard {
 public:
  explicit HandCard(const HandBook& book) : card_(MemoryCard::FromText(HandText(book))) {}

  sim::RilExtPhonebook& Book() { return stack_.book; }
  SimClient& Sim() { return sim_; }
  SimService& Service() { return stack_.service; }

  std::u16string Number(sim::FieldSlot slot, std::uint32_t location) {
    sim::NumberField field;
    existing_ = sim::kNoRecord;
    return Told(Book().ReadNumberField(slot, location, existing_, field), field.number);
  }
  std::u16string Text(sim::FieldSlot slot, std::uint32_t location) {
    std::u16string text;
    existing_ = sim::kNoRecord;
    return Told(Book().ReadTextField(slot, location, false, existing_, text), text);
  }
  // As an editor saves: what was read before goes with it. 0, or the field's code.
  std::uint32_t SaveNumber(sim::FieldSlot slot, std::uint32_t location, const std::u16string& to) {
    Number(slot, location);
    return Book().WriteNumberField(slot, location, {to, 0}, false, existing_);
  }
  std::uint32_t SaveText(sim::FieldSlot slot, std::uint32_t location, const std::u16string& to) {
    Text(slot, location);
    return Book().WriteTextField(slot, location, to, existing_);
  }
  // A record in hex without its padding, of the global phone book unless the path says otherwise.
  std::string Record(const std::string& file, std::size_t record) const {
    const std::string path = file.size() > 4 ? file : "3F00/7F10/5F3A/" + file;
    const auto bytes = card_->Image().Find(path)->content->Record(record);
    std::string hex = ToHex({bytes.begin(), bytes.end()});
    while (hex.ends_with("FF")) hex.resize(hex.size() - 2);
    return hex;
  }

 private:
  static std::u16string Told(sim::FieldResult result, const std::u16string& text) {
    switch (result) {
      case sim::FieldResult::kRead:
        return text;
      case sim::FieldResult::kAbsent:
        return u"(none)";
      case sim::FieldResult::kUnsupported:
        return u"(not read)";
      default:
        return u"(failed)";
    }
  }

  std::unique_ptr<MemoryCard> card_;
  ExtStack stack_{*card_};
  SimClient sim_{stack_.service};
  std::uint32_t existing_ = sim::kNoRecord;
};

}  // namespace kelpin::device::card
