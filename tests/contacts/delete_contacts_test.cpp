#include "contacts/delete_contacts.h"

#include "tests/contacts/to_sim_fixture.h"

namespace kelpin::contacts {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kList = 1029;
constexpr int kDeleteCommand = 345;
constexpr int kDeleteKey = 346;
constexpr int kCancelKey = 347;

class DeleteContactsTest : public ToSimTest {
 protected:
  void SetUp() override {
    Open();
    for (const std::u16string_view name : {u"A", u"B", u"C"}) oids.push_back(Add(name, u"1"));
  }
  void Choose(const Script& script) {
    device.screen.ScriptDialog(kDelete, [this, script](ui::Dialog& dialog) {
      RunThreads();
      script(dialog);
      if (!dialog.Ended()) dialog.Command(kCancelKey);
    });
    Dialog().Command(kDeleteCommand);
    device.screen.RunPending();
  }
  static ui::ListView& ListOf(ui::Dialog& dialog) { return *dialog.List(kList); }
  std::vector<std::u16string> InContacts() {
    std::vector<std::u16string> names;
    for (const auto& [oid, contact] : device.contacts.Contacts()) {
      names.push_back(contact[ContactProperty::kLastName]);
    }
    return names;
  }
  std::vector<std::string> Deleted() { return device.journal.Entries("Delete("); }
  std::string DeleteCall(std::size_t contact) {
    return "Delete(" + std::to_string(oids[contact]) + ")";
  }

  std::vector<std::int32_t> oids;
};

TEST_F(DeleteContactsTest, ItListsEveryContactUnchecked) {
  Choose([&](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Title(), u"Kelpin");
    EXPECT_EQ(dialog.Owner(), state->mainDialog);
    EXPECT_THAT(RowsOf(ListOf(dialog)), ElementsAre(u"A|1", u"B|1", u"C|1"));
    EXPECT_THAT(ChecksOf(ListOf(dialog)), Each(false));
    EXPECT_EQ(ListOf(dialog).ExtendedStyle(), 0x24u);  // check boxes, full row
    EXPECT_EQ(ListOf(dialog).Columns()[0].text, u"Name");
    EXPECT_EQ(ListOf(dialog).Columns()[1].text, u"Phone");
    for (std::size_t row = 0; row < 3; ++row) {
      const auto data = std::static_pointer_cast<const ContactDeleteRow>(
          ListOf(dialog).ItemData(static_cast<int>(row)));
      EXPECT_EQ(data->oid, oids[row]);
    }
    EXPECT_EQ(dialog.Bar()->KeyAt(0).command, kDeleteKey);
    EXPECT_EQ(dialog.Bar()->KeyAt(0).text, u"Delete");
    const auto items = dialog.Bar()->SubMenu(349)->Items();
    ASSERT_EQ(items.size(), 3u);
    EXPECT_EQ(items[0].command, 1053);
    EXPECT_EQ(items[1].command, 1054);
    EXPECT_EQ(items[2].command, kCancelKey);
    EXPECT_EQ(items[0].text, u"Check All");
    EXPECT_EQ(items[1].text, u"Uncheck All");
    EXPECT_EQ(items[2].text, u"Cancel");
  });
  EXPECT_EQ(device.contacts.OpenUses(), 0);
}

TEST_F(DeleteContactsTest, CheckAllIsOffUntilItIsFilledAndDeleteIsNot) {
  device.screen.ScriptDialog(kDelete, [&](ui::Dialog& dialog) {
    EXPECT_TRUE(dialog.Bar()->KeyAt(0).enabled);
    EXPECT_FALSE(dialog.Bar()->SubMenu(349)->IsEnabled(1053));
    EXPECT_FALSE(dialog.Bar()->SubMenu(349)->IsEnabled(1054));
    RunThreads();
    EXPECT_TRUE(dialog.Bar()->SubMenu(349)->IsEnabled(1053));
    EXPECT_TRUE(dialog.Bar()->SubMenu(349)->IsEnabled(1054));
    EXPECT_EQ(device.contacts.OpenUses(), 0);  // deleting opens another connection
    dialog.Command(kCancelKey);
  });
  Dialog().Command(kDeleteCommand);
}

TEST_F(DeleteContactsTest, DeleteBeforeItIsFilledClosesWithoutAQuestion) {
  device.screen.ScriptDialog(kDelete, [&](ui::Dialog& dialog) {
    dialog.PressSoftKey(0);
    EXPECT_TRUE(dialog.Ended());
  });
  Dialog().Command(kDeleteCommand);
  RunThreads();
  EXPECT_EQ(Boxes().size(), 0u);
  EXPECT_EQ(device.contacts.OpenUses(), 0);
}

TEST_F(DeleteContactsTest, TheFirstNumberIsShownInTheOrderOfThePhoneTypes) {
  constexpr ContactProperty kOrder[] = {
      ContactProperty::kMobileTelephoneNumber,    ContactProperty::kBusinessTelephoneNumber,
      ContactProperty::kHomeTelephoneNumber,      ContactProperty::kCompanyName,  // its number
      ContactProperty::kBusiness2TelephoneNumber, ContactProperty::kHome2TelephoneNumber,
      ContactProperty::kRadioTelephoneNumber,     ContactProperty::kPagerNumber,
      ContactProperty::kCarTelephoneNumber,       ContactProperty::kAssistantTelephoneNumber,
  };
  for (std::size_t first = 0; first < std::size(kOrder); ++first) {
    test::FakeContact contact;
    contact[ContactProperty::kEmail1Address] = u"e@example.org";
    for (std::size_t at = first; at < std::size(kOrder); ++at) {
      const std::string digits = std::to_string(10 + at);
      (kOrder[at] == ContactProperty::kCompanyName ? contact.companyPhone : contact[kOrder[at]]) =
          std::u16string(digits.begin(), digits.end());
    }
    device.contacts.Insert(contact);
  }
  state->settings.Del_Contacts_Type = 1;
  Choose([&](ui::Dialog& dialog) {
    for (int type = 0; type < 10; ++type) {
      const std::string digits = std::to_string(10 + type);
      EXPECT_EQ(ListOf(dialog).ItemText(3 + type, 1), std::u16string(digits.begin(), digits.end()));
    }
  });
}

TEST_F(DeleteContactsTest, ANumberIsShownAsTheContactHasIt) {
  Add(u"D", u"+49 (30) 1-2");
  Choose([&](ui::Dialog& dialog) { EXPECT_EQ(ListOf(dialog).ItemText(3, 1), u"+49 (30) 1-2"); });
}

TEST_F(DeleteContactsTest, AnEmailStandsInForANumberWhereTheSettingsWantThat) {
  Add(u"D", u"",
      {{ContactProperty::kEmail2Address, u"d2@example.org"},
       {ContactProperty::kEmail3Address, u"d3@example.org"}});
  Add(u"E", u"");
  Add(u"F", u"",
      {{ContactProperty::kEmail1Address, u"f1@example.org"},
       {ContactProperty::kEmail2Address, u"f2@example.org"}});
  Choose([&](ui::Dialog& dialog) {
    EXPECT_EQ(ListOf(dialog).ItemText(3, 1), u"");
    EXPECT_EQ(ListOf(dialog).ItemCount(), 6);
  });
  state->settings.Del_Contacts_Type = 1;
  Choose([&](ui::Dialog& dialog) {
    EXPECT_EQ(ListOf(dialog).Columns()[1].text, u"Contact");
    EXPECT_EQ(ListOf(dialog).ItemText(0, 1), u"1");
    EXPECT_EQ(ListOf(dialog).ItemText(3, 1), u"d2@example.org");
    EXPECT_EQ(ListOf(dialog).ItemText(4, 1), u"");
    EXPECT_EQ(ListOf(dialog).ItemText(5, 1), u"f1@example.org");
  });
}

TEST_F(DeleteContactsTest, NamesAreMadeOfBothParts) {
  Add(u"Doe", u"1", {{ContactProperty::kFirstName, u"Jane"}});
  Add(u"\u738B", u"1", {{ContactProperty::kFirstName, u"\u660E"}});
  Choose([&](ui::Dialog& dialog) {
    EXPECT_EQ(ListOf(dialog).ItemText(3, 0), u"Doe, Jane");
    EXPECT_EQ(ListOf(dialog).ItemText(4, 0), u"\u738B, \u660E");
  });
  state->language = 1028;
  Choose([&](ui::Dialog& dialog) {
    EXPECT_EQ(ListOf(dialog).ItemText(3, 0), u"Doe, Jane");
    EXPECT_EQ(ListOf(dialog).ItemText(4, 0), u"\u738B\u660E");
  });
}

TEST_F(DeleteContactsTest, CheckAllAndUncheckAllChangeEveryRow) {
  Choose([&](ui::Dialog& dialog) {
    ListOf(dialog).ClickCheckBox(1);
    dialog.Command(1053);
    EXPECT_THAT(ChecksOf(ListOf(dialog)), Each(true));
    dialog.Command(1054);
    EXPECT_THAT(ChecksOf(ListOf(dialog)), Each(false));
  });
}

TEST_F(DeleteContactsTest, CheckedContactsAreDeletedFromTheFirstAfterAYes) {
  std::vector<bool> waits;
  device.screen.ScriptBox(ui::BoxAnswer::kYes);
  Choose([&](ui::Dialog& dialog) {
    ListOf(dialog).ClickCheckBox(2);
    ListOf(dialog).ClickCheckBox(0);
    device.journal.Clear();
    device.screen.onWaitCursor = [&](bool wait) { waits.push_back(wait); };
    dialog.PressSoftKey(0);
    EXPECT_FALSE(dialog.Bar()->KeyAt(0).enabled);
    EXPECT_FALSE(dialog.Bar()->KeyAt(1).enabled);
    RunThreads();
    EXPECT_TRUE(dialog.Ended());
    EXPECT_EQ(dialog.Result(), 16);
  });
  EXPECT_THAT(Deleted(), ElementsAre(DeleteCall(0), DeleteCall(2)));
  EXPECT_EQ(Calls("CoInitializeEx"), 1u);  // a connection of its own
  EXPECT_THAT(InContacts(), ElementsAre(u"B"));
  ASSERT_EQ(Boxes().size(), 1u);
  EXPECT_EQ(Boxes()[0].text,
            u"The selected items will be permanently deleted from the Contacts.\nContinue?");
  EXPECT_EQ(Boxes()[0].caption, u"Warning");
  EXPECT_EQ(Boxes()[0].style, ui::kBoxQuestion);
  EXPECT_EQ(device.contacts.OpenUses(), 0);
  device.screen.onWaitCursor = nullptr;
  EXPECT_THAT(waits, ElementsAre(true, false));
}

TEST_F(DeleteContactsTest, OfTheBoxesPressedWhileItDeletesOnlyTheUncheckedCount) {
  device.screen.ScriptBox(ui::BoxAnswer::kYes);
  Choose([&](ui::Dialog& dialog) {
    ListOf(dialog).ClickCheckBox(0);
    ListOf(dialog).ClickCheckBox(2);
    dialog.PressSoftKey(0);
    device.screen.onWaitCursor = [&](bool wait) {
      if (!wait) return;
      ListOf(dialog).ClickCheckBox(1);
      ListOf(dialog).ClickCheckBox(2);
    };
    RunThreads();
    device.screen.onWaitCursor = nullptr;
  });
  EXPECT_THAT(InContacts(), ElementsAre(u"B", u"C"));
}

TEST_F(DeleteContactsTest, EnterDeletesToo) {
  device.screen.ScriptBox(ui::BoxAnswer::kYes);
  Choose([&](ui::Dialog& dialog) {
    ListOf(dialog).Click(1, 0, ui::kNoModifier);
    dialog.KeyDown({ui::Key::kSpace});
    dialog.KeyDown({ui::Key::kEnter});
    RunThreads();
    EXPECT_TRUE(dialog.Ended());
  });
  EXPECT_THAT(InContacts(), ElementsAre(u"A", u"C"));
}

TEST_F(DeleteContactsTest, NothingCheckedClosesWithoutAQuestion) {
  for (const int command : {kDeleteKey, res::kOk}) {
    Choose([&](ui::Dialog& dialog) {
      dialog.Command(command);
      EXPECT_TRUE(dialog.Ended());
    });
  }
  EXPECT_THAT(Boxes(), IsEmpty());
  EXPECT_EQ(InContacts().size(), 3u);
}

TEST_F(DeleteContactsTest, AnythingButYesDeletesNothingAndCloses) {
  for (const bool escape : {false, true}) {
    if (escape) {
      device.screen.ScriptDismissBox();
    } else {
      device.screen.ScriptBox(ui::BoxAnswer::kNo);
    }
    Choose([&](ui::Dialog& dialog) {
      dialog.Command(1053);
      dialog.PressSoftKey(0);
      EXPECT_TRUE(dialog.Ended());
    });
    EXPECT_EQ(device.kernel.RunHeldThreads(), 0u);
  }
  EXPECT_EQ(InContacts().size(), 3u);
}

TEST_F(DeleteContactsTest, ADoublePressOnARowDeletesNothing) {
  Choose([&](ui::Dialog& dialog) {
    ListOf(dialog).ClickCheckBox(0);
    ListOf(dialog).DoubleClick(0);
    EXPECT_FALSE(dialog.Ended());
  });
  EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(DeleteContactsTest, AStoreThatCannotBeOpenedGivesAnEmptyListAndNoMessageBox) {
  for (const char* call : {"CoInitializeEx", "GetDefaultFolder"}) {
    device.failures.FailCallOf(call, 1);
    Choose([&](ui::Dialog& dialog) {
      EXPECT_EQ(ListOf(dialog).ItemCount(), 0);
      EXPECT_EQ(ListOf(dialog).Message().text, u"The contacts could not be opened");
      EXPECT_TRUE(dialog.Bar()->SubMenu(349)->IsEnabled(1053));
    });
  }
  EXPECT_THAT(Boxes(), IsEmpty());
  EXPECT_EQ(device.contacts.OpenUses(), 0);
}

TEST_F(DeleteContactsTest, AnEmptyStoreGivesAnEmptyList) {
  test::Journal journal;
  for (const std::int32_t oid : oids) {
    ContactsConnection connection(device.contacts);
    ASSERT_EQ(connection.Open(), 1);
    ASSERT_EQ(connection.DeleteContactByOid(oid), 1);
    connection.Close();
  }
  Choose([&](ui::Dialog& dialog) {
    EXPECT_EQ(ListOf(dialog).ItemCount(), 0);
    EXPECT_EQ(ListOf(dialog).Message().text, u"No contacts");
  });
}

TEST_F(DeleteContactsTest, AStoreThatIsGoneWhenDeletingClosesTheDialogSilently) {
  device.screen.ScriptBox(ui::BoxAnswer::kYes);
  Choose([&](ui::Dialog& dialog) {
    dialog.Command(1053);
    device.failures.FailCallOf("CoInitializeEx", 1);
    dialog.PressSoftKey(0);
    RunThreads();
    EXPECT_TRUE(dialog.Ended());
  });
  EXPECT_EQ(Boxes().size(), 1u);
  EXPECT_EQ(InContacts().size(), 3u);
  EXPECT_FALSE(device.screen.WaitCursor());
}

TEST_F(DeleteContactsTest, ADeletionThatFailsDoesNotStopTheOthers) {
  device.screen.ScriptBox(ui::BoxAnswer::kYes);
  device.failures.FailCallOf("Delete", 2);
  Choose([&](ui::Dialog& dialog) {
    dialog.Command(1053);
    dialog.PressSoftKey(0);
    RunThreads();
  });
  EXPECT_THAT(InContacts(), ElementsAre(u"B"));
  EXPECT_EQ(Boxes().size(), 1u);
}

TEST_F(DeleteContactsTest, ARowThatCannotBeReadEndsTheDeletion) {
  device.screen.ScriptBox(ui::BoxAnswer::kYes);
  Choose([&](ui::Dialog& dialog) {
    dialog.Command(1053);
    ListOf(dialog).SetItemData(1, nullptr);
    dialog.PressSoftKey(0);
    RunThreads();
    EXPECT_TRUE(dialog.Ended());
  });
  EXPECT_THAT(InContacts(), ElementsAre(u"B", u"C"));
}

TEST_F(DeleteContactsTest, CancelEscapeAndTheCloseBoxDeleteNothing) {
  const std::vector<Script> ways = {[](ui::Dialog& dialog) { dialog.Command(kCancelKey); },
                                    [](ui::Dialog& dialog) { dialog.KeyDown({ui::Key::kEscape}); },
                                    [](ui::Dialog& dialog) { dialog.Close(); }};
  for (const Script& leave : ways) {
    Choose([&](ui::Dialog& dialog) {
      dialog.Command(1053);
      leave(dialog);
      EXPECT_TRUE(dialog.Ended());
    });
  }
  EXPECT_EQ(InContacts().size(), 3u);
  EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(DeleteContactsTest, TheListFillsTheWindow) {
  Choose([&](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Bounds(kList), (ui::Rect{0, 0, 360, 560}));
    EXPECT_EQ(ListOf(dialog).Columns()[0].width, 190);
    EXPECT_EQ(ListOf(dialog).Columns()[1].width, 170);
    device.screen.SetClientSize({500, 300});
    EXPECT_EQ(dialog.Bounds(kList), (ui::Rect{0, 0, 500, 300}));
    EXPECT_EQ(ListOf(dialog).Columns()[0].width, 260);
    EXPECT_EQ(ListOf(dialog).Columns()[1].width, 240);
  });
}

TEST_F(DeleteContactsTest, HelpShowsTheProgramsHelp) {
  Choose([](ui::Dialog& dialog) { dialog.Help(); });
  EXPECT_THAT(device.programs.Started(),
              ElementsAre(test::FakePrograms::Start{u"peghelp", u"Kelpin.htm"}));
}

TEST_F(DeleteContactsTest, TheCommandIsInTheMenu) {
  EXPECT_TRUE(Menu().Contains(kDeleteCommand));
  EXPECT_TRUE(Menu().IsEnabled(kDeleteCommand));
}

class DeleteContactsOffTest : public ToSimTest {};

TEST_F(DeleteContactsOffTest, TheSettingsTakeItOutOfTheMenu) {
  SetSwitch(u"Disable_DelContacts", 2);
  Open();
  EXPECT_FALSE(Menu().Contains(kDeleteCommand));
}

}  // namespace
}  // namespace kelpin::contacts
