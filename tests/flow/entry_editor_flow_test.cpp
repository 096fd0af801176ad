#include "tests/flow/entry_with_every_field.h"

// Entries made and changed in the dialogs, read back from the card's bytes.
namespace kelpin::editor {
namespace {

std::u16string Digits(std::size_t count) {
  std::u16string digits;
  for (std::size_t i = 1; i <= count; ++i) digits += static_cast<char16_t>(u'0' + i % 10);
  return digits;
}

TEST(EntryEditorFlow, AnEntryWithEveryField) {
  EntryFlow flow("usim");
  flow.Open();
  MakeAnEntryWithEveryField(flow);
  ChangeTheEntryWithEveryField(flow);
  DeleteTheEntryWithEveryField(flow);
}

// On "usim" the free records of the extensions begin with 5.
TEST(EntryEditorFlow, LongNumbersTakeAnExtension) {
  struct Case {
    std::u16string number;
    std::string record;     // up to the digits' end, then FF
    std::string extension;  // record 5
  };
  // 20 digits fill ten bytes; the '+' is a bit of the type; what is more goes on in the extension.
  const std::string kTwenty = "21436587092143658709";
  const Case cases[] = {
      {Digits(20), "000B81" + kTwenty + "FFFF", ""},
      {u"+" + Digits(20), "000B91" + kTwenty + "FFFF", ""},
      {Digits(21), "000B81" + kTwenty + "FF05", "0201F1"},
      {u"+" + Digits(21), "000B91" + kTwenty + "FF05", "0201F1"},
      {Digits(40), "000B81" + kTwenty + "FF05", "020A" + kTwenty},
      {u"+" + Digits(39), "000B91" + kTwenty + "FF05", "020A214365870921436587F9"},
  };
  for (const Case& wanted : cases) {
    SCOPED_TRACE(test::ArgumentText(wanted.number));
    EntryFlow flow("usim");
    flow.Open();
    flow.InNew([&](ui::Dialog& dialog) {
      flow.Type(dialog, res::kNewNumber, u"1");
      flow.Type(dialog, res::kNewNumber2, wanted.number);
      EXPECT_EQ(dialog.Text(res::kNewNumber2), wanted.number);
      flow.Done(dialog);
      EXPECT_TRUE(dialog.Ended());
    });
    EXPECT_EQ(flow.Record("4F40", 17), wanted.record);
    EXPECT_EQ(flow.Record("4F80", 5),
              wanted.extension.empty() ? "" : EntryFlow::Padded(wanted.extension, 13));
    flow.InEdit(
        17, [&](ui::Dialog& dialog) { EXPECT_EQ(dialog.Text(res::kEditNumber2), wanted.number); });
  }
}

TEST(EntryEditorFlow, TheNumberItselfTakesWhatTheCardSays) {
  for (const std::u16string& number :
       {Digits(20), u"+" + Digits(20), Digits(21), Digits(40), u"+" + Digits(40)}) {
    SCOPED_TRACE(test::ArgumentText(number));
    EntryFlow flow("usim");
    flow.Open();
    ASSERT_EQ(flow.state.simPhonebook.MaxNumberLength(), 40u);
    flow.InNew([&](ui::Dialog& dialog) {
      flow.Type(dialog, res::kNewNumber, number);
      flow.Done(dialog);
      EXPECT_TRUE(dialog.Ended());
    });
    EXPECT_TRUE(flow.BoxTexts().empty());
    std::u16string row;
    EXPECT_EQ(flow.RowsOf(17, &row), 1);
    EXPECT_EQ(row, u"|" + number);
  }
  EntryFlow flow("usim");
  flow.Open();
  flow.InNew([&](ui::Dialog& dialog) {
    flow.Type(dialog, res::kNewNumber, Digits(41));
    flow.Done(dialog);
    EXPECT_FALSE(dialog.Ended());
  });
  EXPECT_EQ(flow.BoxTexts(), Texts{u"Maximum length for phone numbers has been exceeded."});
  EXPECT_EQ(flow.Record("4F3A", 17), "");
}

// Names of up to 16 bytes: 16 letters of the alphabet, or seven of another after the 80.
TEST(EntryEditorFlow, NamesUpToTheLimitInEveryEncoding) {
  struct Case {
    std::u16string name;
    std::string alpha;
  };
  const Case cases[] = {
      {u"abcdefghijklmnop", "6162636465666768696A6B6C6D6E6F70"},
      {u"a€{}[]~", "611B651B281B291B3C1B3E1B3DFFFFFF"},
      {u"Ä@Δñ", "5B00107DFFFFFFFFFFFFFFFFFFFFFFFF"},
      {u"中文字典汉语书", "80 4E2D 6587 5B57 5178 6C49 8BED 4E66 FF"},
  };
  for (Case wanted : cases) {
    std::erase(wanted.alpha, ' ');
    SCOPED_TRACE(wanted.alpha);
    EntryFlow flow("usim-empty");
    flow.Open();
    flow.InNew([&](ui::Dialog& dialog) {
      EXPECT_EQ(dialog.Limit(res::kNewName), 16);
      flow.Type(dialog, res::kNewNumber, u"1");
      flow.Type(dialog, res::kNewName, wanted.name);
      flow.Done(dialog);
      EXPECT_TRUE(dialog.Ended());
    });
    EXPECT_EQ(flow.Record("4F3A", 1).substr(0, 32), wanted.alpha);
    std::u16string row;
    EXPECT_EQ(flow.RowsOf(1, &row), 1);
    EXPECT_EQ(row, wanted.name + u"|1");
  }
  EntryFlow flow("usim-empty");
  flow.Open();
  flow.InNew([&](ui::Dialog& dialog) {
    flow.Type(dialog, res::kNewNumber, u"1");
    flow.Type(dialog, res::kNewName, u"中文字典汉语书店");
    flow.Done(dialog);
    EXPECT_FALSE(dialog.Ended());
    EXPECT_EQ(dialog.Focus(), res::kNewName);
  });
  EXPECT_EQ(flow.BoxTexts(), Texts{u"Maximum length for names has been exceeded."});
  EXPECT_EQ(flow.Record("4F3A", 1), "");
}

TEST(EntryEditorFlow, TenGroups) {
  EntryFlow flow("usim", [](nlohmann::json& image) {
    nlohmann::json& groups = device::card::ImageFile(image, {"7F10", "5F3A", "4F70"});
    groups["recordLength"] = 10;
    groups["fill"] = std::string(20, '0');
    groups["records"] = nlohmann::json::array();
    for (std::size_t id = 1; id <= 10; ++id) {
      // "A" to "J".
      const std::string letter = "4" + std::string(1, "123456789A"[id - 1]);
      device::card::SetImageRecord(image, {"7F10", "5F3A", "4F82"}, id,
                                   EntryFlow::Padded(letter, 16));
    }
  });
  flow.Open();
  flow.InEdit(1, [&](ui::Dialog& dialog) {
    flow.PickGroups(dialog, res::kEditGroupButton, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
    EXPECT_EQ(dialog.Text(res::kEditGroup), u"A, B, C, D, E, F, G, H, I, J");
    flow.Done(dialog);
  });
  EXPECT_EQ(flow.Record("4F70", 1), "0102030405060708090A");
  flow.InEdit(1, [&](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Text(res::kEditGroup), u"A, B, C, D, E, F, G, H, I, J");
    flow.PickGroups(dialog, res::kEditGroupButton, {});
    EXPECT_EQ(dialog.Text(res::kEditGroup), u"<No Group>");
    flow.Done(dialog);
  });
  EXPECT_EQ(flow.Record("4F70", 1), "");  // ten zeros, which is how a free one is written
}

// Location 251 + 49 is record 50 of the second set, whose e-mails stand in the first set's file.
TEST(EntryEditorFlow, AnEntryOfTheSecondSet) {
  EntryFlow flow("usim");
  flow.Open();
  const std::string before = flow.Record("4F3A", 50);
  flow.InEdit(300, [&](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Text(res::kEditLocation), u"300");
    flow.Type(dialog, res::kEditName, u"Dora");
    flow.Type(dialog, res::kEditNumber, u"12");
    for (const int edit : {res::kEditEmail, res::kEditNickname, res::kEditNumber3}) {
      flow.Type(dialog, edit, u"");
    }
    flow.Done(dialog);
    EXPECT_TRUE(dialog.Ended());
  });
  EXPECT_EQ(flow.Record("4F61", 50), "");  // FF alone: no references
  flow.InEdit(300, [&](ui::Dialog& dialog) {
    flow.Type(dialog, res::kEditNumber2, u"34");
    flow.Type(dialog, res::kEditEmail, u"d.e");
    flow.Done(dialog);
    EXPECT_TRUE(dialog.Ended());
  });
  EXPECT_EQ(flow.Record("4F3B", 50),
            EntryFlow::Padded("446F7261", 24) + EntryFlow::Padded("028121", 14));
  EXPECT_EQ(flow.Record("4F41", 50).substr(2), EntryFlow::Padded("028143", 14));
  const std::string references = flow.Record("4F61", 50);
  const auto mail = static_cast<std::size_t>(std::stoi(references.substr(0, 2), nullptr, 16));
  EXPECT_EQ(flow.Record("4F50", mail).substr(0, 6), "642E65");
  EXPECT_EQ(flow.Record("4F3A", 50), before);  // the first set's entry is another one
}

}  // namespace
}  // namespace kelpin::editor
