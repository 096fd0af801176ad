#include <gmock/gmock.h>

#include "device/contacts/sqlite/sqlite_store.h"
#include "tests/flow/contacts_out_card.h"

// The card's entries to Contacts, from the card's files to the file of the store.
namespace kelpin::contacts {
namespace {

using device::card::ScratchFolder;
using device::card::SoftCard;
using device::contacts::SqliteStore;
using testing::ElementsAre;
using testing::IsEmpty;

const WholeEntry kAnn = {u"Ann", u"+491", u"222", u"333", u"ann@example.org"};
const WholeEntry kZoe = {u"Zo\u00EB \u0416", u"44", u"+4930231251231234567890123", u"",
                         u"zoe@example.org"};
const WholeEntry kBob = {u"Bob", u"55", u"", u"", u""};

std::u16string Summary(std::u16string_view created, std::u16string_view overwritten,
                       std::u16string_view existing) {
  std::u16string text = u"Contact(s) successfully added.\n\n - ";
  text.append(created).append(u" new item(s).\n - ").append(overwritten);
  return text.append(u" item(s) overwritten.\n - ").append(existing) + u" item(s) already exists.";
}

class ContactsOutTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string why;
    store = SqliteStore::Open((folder.Path() / "contacts.db").string(), why);
    ASSERT_NE(store, nullptr) << why;
  }

  ScratchFolder folder;
  std::unique_ptr<SqliteStore> store;
};

TEST_F(ContactsOutTest, ASavedEntryIsInContactsWithAllItsFieldsAndStillOnTheCard) {
  SoftCard card = SoftCard::FromText(ImageWith({kAnn, kZoe, kBob}));
  const auto before = EntriesOn(card.Channel());
  {
    CardProgram program(card.Channel(), *store);
    program.Open();
    CopyOut(program, kSaveCommand);
    EXPECT_THAT(program.BoxTexts(), ElementsAre(Summary(u"3", u"0", u"0")));
  }
  EXPECT_EQ(ContactsIn(*store), before);
  EXPECT_EQ(ContactsIn(*store), (std::map<std::u16string, WholeEntry>{
                                    {kAnn.name, kAnn}, {kZoe.name, kZoe}, {kBob.name, kBob}}));
  EXPECT_EQ(EntriesOn(card.Channel()), before);
}

TEST_F(ContactsOutTest, AMovedEntryLeavesNothingForTheNextAtItsPlace) {
  SoftCard card = SoftCard::FromText(ImageWith({kAnn, kZoe, kBob}));
  {
    CardProgram program(card.Channel(), *store);
    program.SetSwitch(u"Enable_SNE", 1);
    program.Open();
    CopyOut(program, kMoveOutCommand);
    EXPECT_THAT(program.BoxTexts(), ElementsAre(Summary(u"3", u"0", u"0")));
    EXPECT_THAT(program.Rows(), IsEmpty());
    EXPECT_EQ(program.state.simPhonebook.DeletedCount(), 0u);
    ASSERT_EQ(program.state.simPhonebook.WriteEntry(1, u"New", u"1"), platform::SimResult::kOk);
    std::uint32_t existing = sim::kNoRecord;
    std::u16string nickname;
    static_cast<void>(program.state.extPhonebook.ReadTextField(sim::FieldSlot::kNickname, 1, false,
                                                               existing, nickname));
    EXPECT_EQ(nickname, u"");
  }
  EXPECT_EQ(ContactsIn(*store).size(), 3u);
  EXPECT_EQ(ContactsIn(*store).at(u"Ann"), kAnn);
  const auto left = EntriesOn(card.Channel());
  ASSERT_EQ(left.size(), 1u);
  EXPECT_EQ(left.at(u"New"), (WholeEntry{u"New", u"1", u"", u"", u""}));
}

TEST_F(ContactsOutTest, FieldsThatAreSwitchedOffAreNotCopied) {
  SoftCard card = SoftCard::FromText(ImageWith({kAnn}));
  CardProgram program(card.Channel(), *store);
  program.SetSwitch(u"Disable_ANR", 1);
  program.SetSwitch(u"Disable_ANRA", 1);
  program.SetSwitch(u"Disable_EMAIL", 1);
  program.Open();
  CopyOut(program, kSaveCommand);
  EXPECT_EQ(ContactsIn(*store).at(u"Ann"), (WholeEntry{u"Ann", u"+491", u"", u"", u""}));
}

TEST_F(ContactsOutTest, EachFieldHasASwitchOfItsOwn) {
  const std::string image = ImageWith({kAnn});
  const std::pair<const char16_t*, WholeEntry> kLeft[] = {
      {u"Disable_ANR", {u"Ann", u"+491", u"", u"333", u"ann@example.org"}},
      {u"Disable_ANRA", {u"Ann", u"+491", u"222", u"", u"ann@example.org"}},
      {u"Disable_EMAIL", {u"Ann", u"+491", u"222", u"333", u""}},
  };
  for (const auto& [name, left] : kLeft) {
    SoftCard card = SoftCard::FromText(image);
    test::Journal journal;
    test::FailPlan failures;
    test::FakeContacts contacts(journal, failures);
    CardProgram program(card.Channel(), contacts);
    program.SetSwitch(name, 1);
    program.Open();
    CopyOut(program, kSaveCommand);
    EXPECT_EQ(ContactsIn(contacts).at(u"Ann"), left);
  }
}

// Entries of the sample have nicknames and groups.
TEST_F(ContactsOutTest, WhatAContactHasNoPlaceForIsNotCarried) {
  SoftCard card("usim");
  test::Journal journal;
  test::FailPlan failures;
  test::FakeContacts contacts(journal, failures);
  CardProgram program(card.Channel(), contacts);
  program.SetSwitch(u"Disable_Prompt_Contact_Exist", 1);
  program.SetSwitch(u"Enable_SNE", 1);
  program.SetSwitch(u"Enable_GAS", 1);
  program.Open();
  CopyOut(program, kSaveCommand);
  EXPECT_GT(contacts.Contacts().size(), 100u);
  using platform::ContactProperty;
  for (const auto& [oid, contact] : contacts.Contacts()) {
    test::FakeContact expected;
    for (const auto property :
         {ContactProperty::kLastName, ContactProperty::kFileAs,
          ContactProperty::kMobileTelephoneNumber, ContactProperty::kBusinessTelephoneNumber,
          ContactProperty::kHomeTelephoneNumber, ContactProperty::kEmail1Address}) {
      expected[property] = contact[property];
    }
    EXPECT_EQ(contact, expected) << oid;
  }
}

TEST_F(ContactsOutTest, AnEntryWithATextInAFormThatIsNotReadIsCopiedAndStays) {
  nlohmann::json image = nlohmann::json::parse(ImageWith({kAnn}));
  const std::vector<std::string> emails = {"7F10", "5F3A", "4F50"};
  std::string record = device::card::ImageRecord(image, emails, 1);
  record.replace(0, 2, "83");  // 80 to 82 are the forms that there are
  device::card::SetImageRecord(image, emails, 1, record);
  SoftCard card = SoftCard::FromText(image.dump());
  {
    CardProgram program(card.Channel(), *store);
    program.Open();
    CopyOut(program, kMoveOutCommand);
    EXPECT_THAT(program.BoxTexts(),
                ElementsAre(Summary(u"1", u"0", u"0") +
                            u"\n\n1 of them are still on the SIM card as well, because not all "
                            u"they hold could be read or is in Contacts."));
  }
  EXPECT_EQ(ContactsIn(*store).size(), 1u);
  EXPECT_EQ(EntriesOn(card.Channel()).size(), 1u);
  nlohmann::json left = card.Image();
  EXPECT_EQ(device::card::ImageRecord(left, emails, 1), record);
}

TEST_F(ContactsOutTest, ASecondCopyFindsEveryEntryAndOverwritesItAfterAYes) {
  SoftCard card = SoftCard::FromText(ImageWith({kAnn, kZoe, kBob}));
  CardProgram program(card.Channel(), *store);
  program.Open();
  CopyOut(program, kSaveCommand);
  program.screen.ScriptDialog(356, [](ui::Dialog& prompt) {
    prompt.PressCheckBox(358);
    prompt.Command(360);
  });
  CopyOut(program, kMoveOutCommand);
  EXPECT_THAT(program.BoxTexts(),
              ElementsAre(Summary(u"3", u"0", u"0"), Summary(u"0", u"3", u"0")));
  EXPECT_EQ(ContactsIn(*store).size(), 3u);
  EXPECT_THAT(program.Rows(), IsEmpty());
}

TEST_F(ContactsOutTest, TextsOfAnyKindArriveAsTheyAre) {
  const std::vector<WholeEntry> hostile = {
      {u"\"50%\" %s %d\\", u"*31#+4917", u"#*123", u"", u"a@b"},
      {u"O'Hara; DROP", u"1p2p3", u"", u"", u""},
      {u"\u05D0\u05D1\u05D2", u"3", u"", u"", u""},
      {u"\U0001F600\U0001F1E9", u"4", u"", u"", u""},
      {u"two\nlines", u"5", u"", u"", u""},
  };
  SoftCard card = SoftCard::FromText(ImageWith(hostile));
  const auto before = EntriesOn(card.Channel());
  CardProgram program(card.Channel(), *store);
  program.Open();
  CopyOut(program, kMoveOutCommand);
  EXPECT_THAT(program.BoxTexts(), ElementsAre(Summary(u"5", u"0", u"0")));
  EXPECT_EQ(ContactsIn(*store), before);
  EXPECT_THAT(program.Rows(), IsEmpty());
}

// A card that is full of entries, on threads of their own, with the watchers that look on.
TEST_F(ContactsOutTest, TheWholeSampleCardIsCopiedWhileTheWindowLives) {
  SoftCard card("usim");
  CardProgram program(card.Channel(), *store, CardProgram::Threads::kReal);
  program.SetSwitch(u"Show_ProgressBar", 1);
  program.Open();
  const int rows = program.List().ItemCount();
  for (int row = 0; row < rows; ++row) {
    program.List().SetItemState(row, ui::kItemSelected, ui::kItemSelected);
  }
  int answered = 0;
  program.screen.ScriptEveryDialog(356, [&](ui::Dialog& prompt) {
    ++answered;
    prompt.PressCheckBox(358);
    prompt.Command(361);
  });
  program.screen.ScriptWaitForEnd(379);
  program.state.dialog->Command(kSaveCommand);
  ASSERT_TRUE(program.screen.RunUntil(
      [&] { return program.screen.Boxes().size() == 1 && !app::IsListLoading(program.state); }));
  EXPECT_LE(answered, 1);
  EXPECT_TRUE(program.screen.RunUntil([&] { return program.state.menuBar->KeyAt(0).enabled; }));
  ContactsConnection connection(*store);
  ASSERT_EQ(connection.Open(), 1);
  ASSERT_EQ(connection.OpenContactsFolder(), 1);
  EXPECT_GT(connection.count, 100);
  const std::string created = std::to_string(connection.count);
  EXPECT_TRUE(program.screen.Boxes()[0].text.starts_with(
      u"Contact(s) successfully added.\n\n - " + std::u16string(created.begin(), created.end()) +
      u" new item(s)."));
}

}  // namespace
}  // namespace kelpin::contacts
