#include <gmock/gmock.h>

#include <filesystem>

#include "tests/flow/contacts_out_card.h"

// The card is exchanged for another while entries are copied. The new card gets nothing that was
// chosen for the old one, and Contacts gets nothing of the new one.
namespace kelpin::contacts {
namespace {

using device::card::SoftCard;
using platform::ContactProperty;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kCopyIn = 318;
constexpr int kMoveIn = 1108;
constexpr int kPicker = 205;
constexpr int kPrompt = 356;
constexpr int kPromptYes = 360;
constexpr int kPromptNo = 361;
constexpr char16_t kWrong[] = u"Inorrect SIM was inserted.";
constexpr char16_t kStopped[] =
    u"1 of 3 entries are done. The card was changed meanwhile, so the others were not copied and "
    u"the list is read again.";

const WholeEntry kAnn = {u"Ann", u"+491", u"222", u"333", u"ann@example.org"};
const WholeEntry kBob = {u"Bob", u"55", u"", u"", u""};
const WholeEntry kCem = {u"Cem", u"44", u"66", u"", u"cem@example.org"};

class CopyExchange : public testing::TestWithParam<int> {
 protected:
  explicit CopyExchange(const char* sample) : another(sample) {
    std::filesystem::copy_file(another.File(), file);
  }

  void Add(std::u16string_view name, std::u16string_view number) {
    test::FakeContact contact;
    contact[ContactProperty::kLastName] = name;
    contact[ContactProperty::kFileAs] = name;
    contact[ContactProperty::kMobileTelephoneNumber] = number;
    store.Insert(contact);
  }
  void Exchange(SoftCard& card) {
    std::string error;
    ASSERT_TRUE(card.Channel().Insert(file, error)) << error;
  }
  nlohmann::json OtherCard() const { return nlohmann::json::parse(std::ifstream(file))["mf"]; }

  test::Journal journal;
  test::FailPlan failures;
  test::FakeContacts store{journal, failures};
  SoftCard another;
  const std::string file = another.File() + ".other";
};

class CopyInExchange : public CopyExchange {
 protected:
  CopyInExchange() : CopyExchange("usim") {}
};

TEST_P(CopyInExchange, ContactsThatWereChosenForTheOldCardDoNotGoToTheOther) {
  Add(u"Zora", u"77");
  SoftCard card("usim-empty");
  CardProgram program(card.Channel(), store, CardProgram::Threads::kReal);
  program.SetSwitch(u"CToSim_Type", 2);
  program.Open();
  program.screen.ScriptDialog(kPicker, [&](ui::Dialog& picker) {
    ASSERT_TRUE(program.screen.RunUntil([&] { return picker.Bar()->KeyAt(0).enabled; }));
    Exchange(card);
    ASSERT_TRUE(program.screen.RunUntil(
        [&] { return program.List().ItemCount() == 180 && !app::IsListLoading(program.state); }));
    picker.PressSoftKey(0);
    EXPECT_TRUE(program.screen.RunUntil([&] { return picker.Ended(); }));
  });
  program.state.dialog->Command(GetParam());
  ASSERT_FALSE(program.BoxTexts().empty());
  EXPECT_EQ(program.BoxTexts()[0], kWrong);
  EXPECT_TRUE(OtherCard() == another.Image()["mf"]);
  EXPECT_EQ(store.Contacts().size(), 1u);

  // The list of the card that is in now is read, and then the same command is meant for it.
  ASSERT_TRUE(program.screen.RunUntil([&] { return !program.service.IsExchanged(); }));
  ASSERT_TRUE(program.screen.RunUntil(
      [&] { return program.List().ItemCount() == 180 && !app::IsListLoading(program.state); }));
  program.Copy(GetParam());
  EXPECT_NE(program.Find(u"Zora"), 0u);
  EXPECT_FALSE(OtherCard() == another.Image()["mf"]);
}

INSTANTIATE_TEST_SUITE_P(Commands, CopyInExchange, testing::Values(kCopyIn, kMoveIn));

class CopyOutExchange : public CopyExchange {
 protected:
  CopyOutExchange() : CopyExchange("usim-full") {}
};

// Nobody tells the program of the exchange: the card itself does, when it is read next.
TEST_P(CopyOutExchange, ContactsGetNothingOfTheOtherCard) {
  Add(u"Ann", u"0");
  SoftCard card = SoftCard::FromText(ImageWith({kAnn, kBob, kCem}));
  const nlohmann::json before = card.Image()["mf"];
  CardProgram program(card.Channel(), store);
  program.Open();
  program.screen.ScriptDialog(kPrompt, [&](ui::Dialog& prompt) {
    Exchange(card);
    prompt.Command(kPromptYes);
  });
  CopyOut(program, GetParam());
  EXPECT_THAT(program.BoxTexts(), ElementsAre(kStopped));
  EXPECT_EQ(ContactsIn(store), (std::map<std::u16string, WholeEntry>{{kAnn.name, kAnn}}));
  EXPECT_TRUE(OtherCard() == another.Image()["mf"]);
  EXPECT_EQ(program.state.simPhonebook.CollectDeletions(), 1u);
  std::string error;
  ASSERT_TRUE(card.Channel().Insert(card.File(), error)) << error;
  EXPECT_TRUE(card.Image()["mf"] == before);
}

// What follows could only be read in part, and would stay on the card as well.
TEST_P(CopyOutExchange, NothingMoreIsCopiedWhenTheProgramIsToEnd) {
  Add(u"Bob", u"0");
  SoftCard card = SoftCard::FromText(ImageWith({kAnn, kBob, kCem}));
  CardProgram program(card.Channel(), store);
  program.Open();
  program.screen.ScriptDialog(kPrompt, [&](ui::Dialog& prompt) {
    program.service.Abandon();
    prompt.Command(kPromptNo);
  });
  CopyOut(program, GetParam());
  const std::map<std::u16string, WholeEntry> copied = ContactsIn(store);
  EXPECT_EQ(copied.size(), 2u);
  EXPECT_EQ(copied.at(kAnn.name), kAnn);
  EXPECT_EQ(copied.at(kBob.name).number, u"0");
  EXPECT_THAT(program.BoxTexts(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Commands, CopyOutExchange, testing::Values(kSaveCommand, kMoveOutCommand));

}  // namespace
}  // namespace kelpin::contacts
