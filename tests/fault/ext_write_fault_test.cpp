// Every command of every change of an entry with all its fields goes wrong once. Whatever happens:
// no other entry changes, no two refer to one record, none refers to a free one, a field is as
// before or as wanted, the code says which field failed, and what was left behind is free again.
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <iomanip>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/card/sim_client.h"
#include "tests/fault/faulty_channel.h"
#include "tests/fault/small_card.h"

namespace kelpin::device::card {
namespace {

using platform::SimResult;
using sim::FieldResult;
using sim::FieldSlot;
using sim::kNoRecord;
using sim::NumberField;

constexpr std::uint32_t kFree = 5, kWithLong = 3, kWithShort = 4;
constexpr std::uint32_t kEntryFailed = 1;
constexpr char16_t kLong[] = u"1234567890123456789098765";
constexpr char16_t kOtherLong[] = u"9876543210987654321011223";

// The fields in the order in which a program writes them, and the code of each one's failure.
constexpr std::array<std::pair<FieldSlot, std::uint32_t>, 4> kFields = {
    {{FieldSlot::kSecondNumber, 256},
     {FieldSlot::kThirdNumber, 258},
     {FieldSlot::kEmail, 257},
     {FieldSlot::kNickname, 259}}};

bool IsNumber(FieldSlot slot) {
  return slot == FieldSlot::kSecondNumber || slot == FieldSlot::kThirdNumber;
}

// One entry: name and number, then the fields as in kFields, then its groups.
using Entry = std::vector<std::u16string>;

class Program {
 public:
  explicit Program(CardChannel& channel) : stack_(channel), sim_(stack_.service) {}

  sim::RilExtPhonebook& Book() { return stack_.book; }

  std::u16string Read(FieldSlot slot, std::uint32_t location, std::uint32_t& existing) {
    existing = kNoRecord;
    if (IsNumber(slot)) {
      NumberField field;
      static_cast<void>(Book().ReadNumberField(slot, location, existing, field));
      return field.number;
    }
    std::u16string text;
    static_cast<void>(Book().ReadTextField(slot, location, false, existing, text));
    return text;
  }
  // 0, or the field's code. A field that the card has no file for is written by nobody.
  std::uint32_t Write(FieldSlot slot, std::uint32_t location, const std::u16string& value) {
    std::uint32_t existing = kNoRecord;
    Read(slot, location, existing);
    std::uint32_t set = 0, record = 0;
    if (Book().Place(location, set, record) == 0 || Book().SlotInUse(set, slot).recordCount == 0) {
      return 0;
    }
    return IsNumber(slot) ? Book().WriteNumberField(slot, location, {value, 2}, true, existing)
                          : Book().WriteTextField(slot, location, value, existing);
  }
  bool WriteEntry(std::uint32_t location, std::u16string name, std::u16string number) {
    return sim_.Write(location, name, number) == SimResult::kOk;
  }
  bool Delete(std::uint32_t location) { return sim_.Delete(location) == SimResult::kOk; }

  Entry ReadAll(std::uint32_t location) {
    Entry entry = {sim_.Text(location)};
    std::uint32_t existing = 0;
    for (const auto& [slot, code] : kFields) entry.push_back(Read(slot, location, existing));
    std::vector<std::uint8_t> groups;
    static_cast<void>(Book().ReadGroup(location, groups));
    entry.emplace_back(groups.begin(), groups.end());
    return entry;
  }

 private:
  ExtStack stack_;
  SimClient sim_;
};

struct Change {
  const char* why;
  std::uint32_t location;
  std::vector<std::uint32_t> codes;  // that it may end with, beside 0
  std::function<std::uint32_t(Program&)> run;
  bool mayMix = false;  // the rest of a number is rewritten in its place before the number is
};

// A save: it ends with the first field that fails.
std::uint32_t Save(Program& program, std::uint32_t location, const std::u16string& number) {
  if (!program.WriteEntry(location, u"New", u"+4930")) return kEntryFailed;
  for (const auto& [slot, code] : kFields) {
    const std::u16string value = IsNumber(slot) ? number : u"n" + std::u16string(1, u'a');
    if (const std::uint32_t result = program.Write(slot, location, value); result != 0) {
      return result;
    }
  }
  static_cast<void>(program.Book().WriteGroup(location, std::vector<std::uint8_t>{2, 1}));
  return 0;
}

std::vector<Change> Changes() {
  std::vector<Change> changes = {
      {"a new entry",
       kFree,
       {kEntryFailed, 256, 257, 258, 259},
       [](Program& program) { return Save(program, kFree, kLong); }},
      {"a deletion", kWithLong, {kEntryFailed}, [](Program& program) -> std::uint32_t {
         if (!program.Delete(kWithLong)) return kEntryFailed;
         for (const auto& [slot, code] : kFields) {
           static_cast<void>(program.Write(slot, kWithLong, u""));
         }
         static_cast<void>(program.Book().WriteGroup(kWithLong, {}));
         return 0;
       }}};
  for (const auto& [slot, code] : kFields) {
    const auto write = [slot = slot](std::uint32_t location, std::u16string value) {
      return [=](Program& program) { return program.Write(slot, location, value); };
    };
    changes.push_back({"a field is cleared", kWithLong, {code}, write(kWithLong, u"")});
    if (!IsNumber(slot)) {
      changes.push_back({"a text changes", kWithLong, {code}, write(kWithLong, u"other")});
      continue;
    }
    changes.push_back({"a number grows", kWithShort, {code}, write(kWithShort, kLong)});
    changes.push_back({"a number shrinks", kWithLong, {code}, write(kWithLong, u"12")});
    changes.push_back(
        {"another long number", kWithLong, {code}, write(kWithLong, kOtherLong), true});
  }
  return changes;
}

// A field of a deleted entry stays what it was until it is cleared.
bool IsEither(const std::u16string& now, const std::u16string& before, const std::u16string& after,
              bool mayMix) {
  if (now == before || now == after) return true;
  return mayMix && before.size() > 20 && after.size() > 20 &&
         now == before.substr(0, 20) + after.substr(20);
}

struct Image {
  const char* name;
  bool full;       // no type-2 record is free
  bool everyRead;  // reads fail too
};
constexpr Image kImages[] = {{"usim", false, true},
                             {"usim-full", true, false},
                             {"usim-1000", false, false},
                             {"usim-local", false, false}};

class ExtWriteFault : public testing::TestWithParam<Image> {
 protected:
  void SetUp() override {
    for (const SampleCard& sample : SampleCards()) {
      if (sample.name == GetParam().name) sample_ = &sample;
    }
    ASSERT_NE(sample_, nullptr);
    const auto card = MemoryCard::FromText(SmallCard(*sample_, GetParam().full).Text());
    {
      Program program(*card);
      // One place is free, one entry has long numbers and all the rest, one has short ones.
      for (const std::uint32_t location : {kFree, kWithLong, kWithShort}) {
        for (const auto& [slot, code] : kFields) {
          ASSERT_EQ(program.Write(slot, location, u""), 0U);
        }
      }
      ASSERT_TRUE(program.Delete(kFree));
      static_cast<void>(Save(program, kWithLong, kLong));
      static_cast<void>(Save(program, kWithShort, u"123"));
    }
    text_ = softcard::WriteImage(card->Image());
    start_ = MemoryCard::FromText(text_);
    Program program(*card);
    ASSERT_EQ(program.ReadAll(kWithLong)[0], u"New|+4930");
    ASSERT_EQ(program.ReadAll(kWithLong)[1], kLong);
    ASSERT_EQ(program.ReadAll(kWithShort)[1], u"123");
    ASSERT_EQ(ImageCheck(card->Image(), *sample_).orphans, std::vector<std::string>{});
  }

  // The change without a fault: what it sends, and what it leads to.
  std::vector<std::uint8_t> RunWell(const Change& change) {
    const auto card = MemoryCard::FromText(text_);
    FaultyChannel channel(*card);
    {
      Program program(channel);
      before_ = program.ReadAll(change.location);
      channel.Arm(0, Fault::kRefused);
      result_ = change.run(program);
    }
    const std::vector<std::uint8_t> sent = channel.Sent();
    Program program(channel);
    after_ = program.ReadAll(change.location);
    return sent;
  }

  // Not a byte of another entry changed, nor of a record that another one refers to.
  void ExpectOthersKept(const MemoryCard& card, std::uint32_t location) {
    // Of the card as it was, without the entry, what is left to refer to a record.
    const auto others = MemoryCard::FromText(text_);
    const SampleSet& own = sample_->sets[0];
    std::set<std::string> ofEntries = {own.adn, own.iap, "4F68", "4F70", "4F78"};
    ofEntries.insert(own.type1.begin(), own.type1.end());
    for (const std::string& id : ofEntries) {
      if (softcard::CardFile* file = others->Image().Find(sample_->folder + id)) {
        const std::size_t length = file->content->recordLength;
        std::fill_n(
            file->content->bytes.begin() + static_cast<std::ptrdiff_t>((location - 1) * length),
            length, std::uint8_t{0xFF});
      }
    }
    const ImageCheck check(others->Image(), *sample_);
    std::set<std::string> linked = {sample_->ext1};
    for (const SampleSet& set : sample_->sets) linked.insert(set.type2.begin(), set.type2.end());
    const std::string folder = sample_->folder.substr(0, sample_->folder.size() - 1);
    for (const auto& file : start_->Image().Find(folder)->children) {
      if (file->content->recordLength == 0) continue;
      const std::string id = HexId(file->id);
      const softcard::FileContent& now = *card.Image().Find(sample_->folder + id)->content;
      for (std::size_t record = 1; record <= now.RecordCount(); ++record) {
        if (ofEntries.count(id) != 0 && record == location) continue;
        if (linked.count(id) != 0 && check.References(id, record) == 0) continue;
        const auto was = file->content->Record(record);
        const auto is = now.Record(record);
        EXPECT_TRUE(std::equal(was.begin(), was.end(), is.begin(), is.end()))
            << id << " " << record;
      }
    }
  }

  static std::string HexId(unsigned id) {
    std::ostringstream text;
    text << std::uppercase << std::hex << std::setw(4) << std::setfill('0') << id;
    return text.str();
  }

  bool HasBlank(const softcard::CardImage& image, const std::string& id) const {
    const softcard::FileContent& file = *image.Find(sample_->folder + id)->content;
    for (std::size_t record = 1; record <= file.RecordCount(); ++record) {
      if (!InUse(file, record)) return true;
    }
    return false;
  }

  // What the program tells as used. With `all`, what nothing refers to is free; otherwise only in
  // files without a blank record, for it is looked for where there is no other.
  void ExpectUsed(Program& program, const softcard::CardImage& image, bool all) {
    const ImageCheck check(image, *sample_);
    const auto used = [&](const std::string& id, std::size_t record) {
      const bool byContent = !all && HasBlank(image, id);
      return byContent ? InUse(*image.Find(sample_->folder + id)->content, record)
                       : check.References(id, record) > 0;
    };
    for (std::uint32_t set = 0; set < sample_->sets.size(); ++set) {
      for (const auto& [slot, code] : kFields) {
        const sim::SlotLayout file = program.Book().Slot(set, slot);
        if (file.fileClass != sim::kClassType2 || file.shared != 0) continue;
        const std::string id = HexId(static_cast<unsigned>(file.fileId[0] << 8 | file.fileId[1]));
        std::uint32_t expected = 0;
        for (std::uint32_t record = 1; record <= file.recordCount; ++record) {
          if (used(id, record)) ++expected;
        }
        EXPECT_EQ(file.usedCount, expected) << id;
      }
    }
  }

  // The first record that a long number would be offered.
  void ExpectFirstExtension(Program& program, const softcard::CardImage& image) {
    const ImageCheck check(image, *sample_);
    const softcard::FileContent& file = *image.Find(sample_->folder + sample_->ext1)->content;
    std::vector<std::uint32_t> blank, unreferenced;
    for (std::uint32_t record = 1; record <= file.RecordCount(); ++record) {
      if (!InUse(file, record)) blank.push_back(record);
      if (check.References(sample_->ext1, record) == 0) unreferenced.push_back(record);
    }
    // An entry has two long numbers beside its own.
    const std::vector<std::uint32_t>& offered = blank.size() < 2 ? unreferenced : blank;
    std::uint32_t first = 0, second = 0;
    ASSERT_TRUE(program.Book().GetFreeExtRecords(first, second));
    EXPECT_EQ(first, offered.empty() ? 0 : offered.front());
  }

  // Writes something that nothing refers to into every blank record beside the entries.
  void FillBlanks(softcard::CardImage& image) {
    std::set<std::string> files = {sample_->ext1};
    for (const SampleSet& set : sample_->sets) files.insert(set.type2.begin(), set.type2.end());
    for (const std::string& id : files) {
      softcard::FileContent& file = *image.Find(sample_->folder + id)->content;
      for (std::size_t record = 1; record <= file.RecordCount(); ++record) {
        if (InUse(file, record)) continue;
        const auto first = (record - 1) * file.recordLength;
        file.bytes[first] = 0x02;
        file.bytes[first + 1] = 0x01;
      }
    }
  }

  // Every record that nothing refers to is free for the next entry: at once where the card has no
  // other, and otherwise as soon as the others are taken.
  void ExpectNothingLost(Program& program, const MemoryCard& card) {
    ExpectUsed(program, card.Image(), false);
    ExpectFirstExtension(program, card.Image());
    if (ImageCheck(card.Image(), *sample_).orphans.empty()) return;
    const auto full = MemoryCard::FromText(softcard::WriteImage(card.Image()));
    FillBlanks(full->Image());
    Program later(*full);
    ExpectUsed(later, full->Image(), true);
    ExpectFirstExtension(later, full->Image());
  }

  void RunFaulty(const Change& change, std::uint32_t command, Fault fault) {
    const auto card = MemoryCard::FromText(text_);
    FaultyChannel channel(*card);
    std::uint32_t result = 0;
    {
      Program program(channel);
      channel.Arm(command, fault);
      result = change.run(program);
      ASSERT_TRUE(channel.Fired());
    }
    channel.Disarm();
    if (result != result_) {
      EXPECT_EQ(std::count(change.codes.begin(), change.codes.end(), result), 1) << result;
    }

    const ImageCheck check(card->Image(), *sample_);
    EXPECT_EQ(check.dangling, std::vector<std::string>{});
    EXPECT_EQ(check.twice, std::vector<std::string>{});
    ExpectOthersKept(*card, change.location);
    {
      Program program(channel);
      const Entry now = program.ReadAll(change.location);
      for (std::size_t field = 0; field < now.size(); ++field) {
        EXPECT_TRUE(IsEither(now[field], before_[field], after_[field], change.mayMix)) << field;
      }
      ExpectNothingLost(program, *card);
      // Once more, and it is done as it should have been.
      EXPECT_EQ(change.run(program), result_);
    }
    Program program(channel);
    EXPECT_EQ(program.ReadAll(change.location), after_);
  }

  const SampleCard* sample_ = nullptr;
  std::string text_;
  std::unique_ptr<MemoryCard> start_;
  Entry before_, after_;
  std::uint32_t result_ = 0;
};

TEST_P(ExtWriteFault, EveryCommandOfEveryChangeMayFail) {
  constexpr std::uint8_t kUpdateRecord = 0xDC, kUpdateBinary = 0xD6;
  for (const Change& change : Changes()) {
    SCOPED_TRACE(change.why);
    const std::vector<std::uint8_t> sent = RunWell(change);
    for (std::uint32_t command = 1; command <= sent.size() && !HasFailure(); ++command) {
      const std::uint8_t instruction = sent[command - 1];
      const bool update = instruction == kUpdateRecord || instruction == kUpdateBinary;
      // Reads fail alike on every card, and in every change of one field.
      if (!update && (!GetParam().everyRead || change.codes.front() != kEntryFailed)) continue;
      for (const Fault fault :
           {Fault::kRefused, Fault::kGoneBefore, Fault::kCutAfter, Fault::kGoneAfter}) {
        if (!update && fault != Fault::kRefused) continue;
        SCOPED_TRACE("command " + std::to_string(command) + " of " + std::to_string(sent.size()) +
                     ", fault " + std::to_string(static_cast<int>(fault)));
        RunFaulty(change, command, fault);
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(SampleCards, ExtWriteFault, testing::ValuesIn(kImages),
                         [](const auto& image) {
                           std::string name = image.param.name;
                           std::erase(name, '-');
                           return name;
                         });

}  // namespace
}  // namespace kelpin::device::card
