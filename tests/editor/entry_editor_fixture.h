#pragma once

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "app/extended_fields.h"
#include "editor/editor_commands.h"
#include "editor/entry_form.h"
#include "tests/app/app_fixture.h"

namespace kelpin::editor {

using platform::SimResult;
using Bytes = std::vector<std::uint8_t>;
using Strings = std::vector<std::string>;
using Texts = std::vector<std::u16string>;

// The program with its entry editors, on a card with names of up to 14 characters and numbers of up
// to 20 digits, and a phone book of two sets of four locations. The second number is of type 1; the
// e-mail (one file for both sets), the third number and the nickname are of type 2. Three group
// names and three number names. Everything is free and every field is switched on.
class EntryEditorTest : public app::AppTest {
 protected:
  static constexpr std::uint32_t kPerSet = 4;

  EntryEditorTest() {
    std::erase(known, res::kCommandNew);
    std::erase(known, res::kCommandEdit);
    wiring.fillCommands = [fill = wiring.fillCommands](app::AppState& app, app::Commands& commands,
                                                       app::ListLoader& loader) {
      RegisterEditorCommands(app, commands, loader);
      fill(app, commands, loader);
    };
    wiring.loadLayout = app::LoadExtendedLayout;
    for (const char16_t* const name : {u"Enable_SNE", u"Enable_AAS", u"Enable_GAS"}) {
      SetSwitch(name, 1);
    }
    device.sim.SetCapacity(2 * kPerSet);
    PutFiles();
  }

  void PutFiles() {
    SetFile(0, 60, 4);
    SetReference(0x4F50);
    SetFile(50, 28, kPerSet);
    SetFile(sim::kGroupNameFile, 16, 3);
    SetFile(sim::kNumberNameFile, 14, 3);
    SetFile(sim::kExtensionFile, 13, 16);
    for (const std::uint32_t set : {0u, 1u}) {
      SetFile(1 + 10 * set, 3, kPerSet);
      SetFile(3 + 10 * set, 10, kPerSet, 0x00);
      SetFile(6 + 10 * set, 15, kPerSet);
      SetFile(7 + 10 * set, 17, 3);
      SetFile(40 + set, 12, 3);
    }
    SetFile(2, 30, 5);
    device.radio.SetExtensionBitmap(16, {0x00, 0x00});
  }
  // `email`: the second set's file of e-mails; 4F50 is the first set's.
  void SetReference(std::uint16_t email) {
    Bytes first = {0xA8, 0x11, 0xC0, 0x03, 0x4F, 0x3A, 0x01, 0xC1, 0x02, 0x4F, 0x60,
                   0xC4, 0x02, 0x4F, 0x40, 0xC6, 0x02, 0x4F, 0x70, 0xA9, 0x0C, 0xCA,
                   0x02, 0x4F, 0x50, 0xC4, 0x02, 0x4F, 0x48, 0xC3, 0x02, 0x4F, 0x58};
    Bytes second = {0xA8, 0x11, 0xC0, 0x03, 0x4F, 0x3B, 0x02, 0xC1, 0x02, 0x4F, 0x61,
                    0xC4, 0x02, 0x4F, 0x41, 0xC6, 0x02, 0x4F, 0x71, 0xA9, 0x0C, 0xCA,
                    0x02, 0x4F, 0x50, 0xC4, 0x02, 0x4F, 0x49, 0xC3, 0x02, 0x4F, 0x59};
    second[24] = static_cast<std::uint8_t>(email);
    SetRecord(0, 1, std::move(first));
    SetRecord(0, 2, std::move(second));
  }

  void SetFile(std::uint32_t code, std::uint8_t length, std::size_t count,
               std::uint8_t fill = 0xFF) {
    device.radio.SetCodedFile(code, {length, std::vector<Bytes>(count, Bytes(length, fill))});
  }
  // Padded to the file's length.
  void SetRecord(std::uint32_t code, std::uint32_t record, Bytes bytes) {
    auto file = *device.radio.GetCodedFile(code);
    bytes.resize(file.recordLength, 0xFF);
    file.records.at(record - 1) = std::move(bytes);
    device.radio.SetCodedFile(code, file);
  }
  Bytes Record(std::uint32_t code, std::uint32_t record) {
    return device.radio.GetCodedFile(code)->records.at(record - 1);
  }
  // The card's alphabet has letters, digits and '.' where ASCII has them, and '@' first.
  static Bytes Letters(std::string_view text) {
    Bytes bytes(text.begin(), text.end());
    std::replace(bytes.begin(), bytes.end(), std::uint8_t{'@'}, std::uint8_t{0});
    return bytes;
  }
  static Bytes Padded(Bytes bytes, std::size_t length) {
    bytes.resize(length, 0xFF);
    return bytes;
  }
  void FillFile(std::uint32_t code) {
    auto file = *device.radio.GetCodedFile(code);
    for (Bytes& record : file.records) record[0] = 0x20;
    device.radio.SetCodedFile(code, file);
  }

  // Names 1 to 3 of each family.
  void PutNames() {
    for (const std::uint32_t id : {1u, 2u, 3u}) {
      SetRecord(sim::kGroupNameFile, id, Letters("Group" + std::to_string(id)));
      SetRecord(sim::kNumberNameFile, id, Letters("Desk" + std::to_string(id)));
    }
  }

  // The dialogs
  // ------------------------------------------------------------------------------------

  // Everything that threads and the screen have to do, until nothing is left.
  void Serve() {
    do {
      device.screen.RunPending();
    } while (device.kernel.RunHeldThreads() > 0);
    device.screen.RunPending();
  }

  using Script = std::function<void(ui::Dialog&)>;

  // Runs `script` in the dialog when it has opened, then cancels it where it is still open.
  void InNew(const Script& script) { In(kNewEntryControls, res::kCommandNew, script); }
  void InEdit(std::uint32_t location, const Script& script) {
    Select(app::FindListRow(*state, location));
    In(kEditEntryControls, res::kCommandEdit, script);
  }
  void In(const EntryControls& controls, int command, const Script& script) {
    bool opened = false;
    device.screen.ScriptDialog(controls.dialog, [&](ui::Dialog& dialog) {
      opened = true;
      Serve();
      script(dialog);
      Serve();
      if (!dialog.Ended()) dialog.Command(controls.cancel);
    });
    theCommands->Run(command);
    Serve();
    EXPECT_TRUE(opened);
  }
  void Done(ui::Dialog& dialog) {
    dialog.Command(dialog.Resource() == res::kDialogNewEntry ? res::kNewEntryDone
                                                             : res::kEditEntryDone);
    Serve();
  }
  static void Type(ui::Dialog& dialog, int edit, std::u16string_view text) {
    dialog.SetFocus(edit);
    dialog.SetSelection(edit, 0, -1);
    dialog.ReplaceSelection(edit, text);
  }
  static void TypeNewBasics(ui::Dialog& dialog) {
    Type(dialog, res::kNewName, u"Dora");
    Type(dialog, res::kNewNumber, u"+49444");
  }
  static bool IsUnavailable(ui::Dialog& dialog, int edit) {
    const auto control = dialog.Control(edit);
    return control && control->unavailable && !control->enabled &&
           control->text == u"<Not available>";
  }

  // What the card was told, "write 6 1", "entry 3", in order, since Forget.
  Strings Written() {
    Strings written;
    for (const std::string& line : device.journal.Entries()) {
      // SimWritePhonebookEntry(handle, storage, location, …), RIL_DevSpecific(handle, 128,
      // operation, code, record)
      const std::vector<std::string> parts = Split(line);
      if (parts[0] == "SimWritePhonebookEntry") written.push_back("entry " + parts.at(3));
      if (parts[0] == "RIL_DevSpecific" && parts.at(2) == "128" && parts.at(3) == "5") {
        written.push_back("write " + parts.at(4) + " " + parts.at(5));
      }
    }
    return written;
  }
  void Forget() { device.journal.Clear(); }
  // Fails updates of the file with this code.
  void FailWrites(std::uint32_t code) {
    device.radio.SetResponder(
        [code](const test::FakeRadio::Command& command) -> std::optional<test::FakeRadio::Answer> {
          const bool hit =
              command.block.size() == 288 && command.block[8] == 5 && command.block[12] == code;
          if (!hit) return std::nullopt;
          return test::FakeRadio::Answer{platform::kRilResultError, {}, {}};
        });
  }
  // Fails reads of the file with this code.
  void FailReads(std::uint32_t code) {
    device.radio.SetResponder(
        [code](const test::FakeRadio::Command& command) -> std::optional<test::FakeRadio::Answer> {
          const bool hit =
              command.block.size() == 288 && command.block[8] == 2 && command.block[12] == code;
          if (!hit) return std::nullopt;
          return test::FakeRadio::Answer{platform::kRilResultError, {}, {}};
        });
  }
  void HealRadio() { device.radio.SetResponder(nullptr); }

  static Strings Split(const std::string& line) {
    Strings parts;
    std::string part;
    for (const char letter : line) {
      if (letter == '(' || letter == ',' || letter == ')') {
        parts.push_back(std::exchange(part, {}));
      } else if (letter != ' ') {
        part += letter;
      }
    }
    if (parts.empty()) parts.push_back(line);
    return parts;
  }
};

}  // namespace kelpin::editor
