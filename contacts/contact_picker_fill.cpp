#include "contacts/contact_picker_fill.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "app/app_state.h"
#include "contacts/contact_list_dialog.h"
#include "contacts/display_name.h"
#include "contacts/phone_types.h"
#include "sim/ril_ext_phonebook.h"
#include "ui/fold_case.h"

namespace kelpin::contacts {
namespace {

using platform::ContactProperty;

constexpr std::size_t kNumber2Limit = 40;
constexpr std::size_t kEntryLink = 2;  // bytes that a type-2 record has behind its text

// Where a contact's first two numbers are looked for, in order.
constexpr ContactProperty kNumbersBeforeCompany[] = {
    ContactProperty::kMobileTelephoneNumber,   ContactProperty::kRadioTelephoneNumber,
    ContactProperty::kHomeTelephoneNumber,     ContactProperty::kHome2TelephoneNumber,
    ContactProperty::kBusinessTelephoneNumber, ContactProperty::kBusiness2TelephoneNumber,
};
constexpr ContactProperty kNumbersAfterCompany[] = {
    ContactProperty::kAssistantTelephoneNumber,
    ContactProperty::kHomeFaxNumber,
    ContactProperty::kBusinessFaxNumber,
    ContactProperty::kCarTelephoneNumber,
    ContactProperty::kPagerNumber,
};
std::size_t MaxEmailLength(const sim::RilExtPhonebook& phonebook) {
  const sim::SlotLayout file = phonebook.SlotInUse(0, sim::FieldSlot::kEmail);
  // What the card has no place for at all is not cut: it is told of when it cannot be written.
  if (file.fileClass == sim::kClassNone || file.recordLength == 0) {
    return kEntryTextLimit;
  }
  const std::size_t link = file.fileClass == sim::kClassType1 ? 0 : kEntryLink;
  return std::min(kEntryTextLimit,
                  file.recordLength - std::min<std::size_t>(link, file.recordLength));
}

// One row for each number of a chosen type. A single one needs no mark.
void AddNumberRows(const PickRules& rules, ContactsConnection& connection, const ContactHead& head,
                   ui::ListView& list) {
  const DisplayName name = MakeDisplayName(head.first, head.last, rules.language);
  std::vector<std::vector<std::u16string>> rows;
  for (const PhoneTypeInfo& info : kPhoneTypes) {
    const auto type = static_cast<std::size_t>(info.type);
    std::u16string number =
        rules.chosen[type] ? ReadPhone(connection, head.oid, info) : std::u16string();
    if (!number.empty()) {
      rows.push_back({CardName(name, rules.marks[type], rules.maxNameLength),
                      CardNumber(std::move(number), rules.maxNumberLength)});
    }
  }
  if (rows.size() == 1) {
    rows.front()[kContactColumnName] = CardName(name, {}, rules.maxNameLength);
  }
  for (std::vector<std::u16string>& row : rows) {
    list.InsertRow(list.ItemCount(), std::move(row), std::make_unique<ContactPickRow>());
  }
}

// The first two numbers that can be dialled.
class FirstNumbers {
 public:
  bool Wanted() const { return found_ < 2; }
  // Of the numbers that were looked at nothing is missing that has to be dialled.
  bool Whole() const { return whole_; }
  void Add(std::u16string number) {
    whole_ = whole_ && KeepsNumber(number);
    number = CardNumber(std::move(number), kEntryTextLimit);
    if (Wanted() && !number.empty()) {
      (found_ == 0 ? first : second) = std::move(number);
      ++found_;
    }
  }
  std::u16string first;
  std::u16string second;

 private:
  int found_ = 0;
  bool whole_ = true;
};

// False when one that was looked at could not be read, or has more than can be dialled.
bool ReadNumbers(ContactsConnection& connection, std::int32_t oid, FirstNumbers& numbers) {
  bool whole = true;
  const auto add = [&](ContactProperty property) {
    std::u16string number;
    if (numbers.Wanted()) {
      whole = ReadContactText(*connection.contact, property, number) != 0 && whole;
      numbers.Add(std::move(number));
    }
  };
  std::ranges::for_each(kNumbersBeforeCompany, add);
  if (numbers.Wanted()) {
    std::u16string company;
    whole = connection.ReadCompanyPhone(oid, company) != 0 && whole;
    numbers.Add(std::move(company));
  }
  std::ranges::for_each(kNumbersAfterCompany, add);
  return whole && numbers.Whole();
}

bool ReadEmail(platform::IContact& contact, std::u16string& email) {
  bool whole = true;
  for (const ContactProperty property : kEmailProperties) {
    whole = ReadContactText(contact, property, email) != 0 && whole;
    if (!email.empty()) {
      break;
    }
  }
  return whole;
}

// Whether nothing of the text had to go.
bool CutWhole(std::u16string& text, std::size_t units) {
  const std::size_t before = text.size();
  CutText(text, units);
  return text.size() == before;
}

void AddContactRow(const PickRules& rules, ContactsConnection& connection, const ContactHead& head,
                   ui::ListView& list) {
  auto row = std::make_unique<ContactPickRow>();
  row->name = MakeDisplayName(head.first, head.last, rules.language).text;
  CutText(row->name, kEntryTextLimit);
  FirstNumbers numbers;
  const bool numbersRead = ReadNumbers(connection, head.oid, numbers);
  row->number = std::move(numbers.first);
  const bool numberFits = CutWhole(row->number, rules.maxNumberLength);
  row->number2 = std::move(numbers.second);
  const bool number2Fits = CutWhole(row->number2, kNumber2Limit);
  const bool emailRead = ReadEmail(*connection.contact, row->email);
  const bool emailFits = CutWhole(row->email, rules.maxEmailLength);
  // A contact of which the row lacks something is never to be deleted for it: half a number or an
  // e-mail address without its end reaches nobody.
  const bool whole =
      head.whole && numbersRead && emailRead && numberFits && number2Fits && emailFits;
  row->oid = whole ? head.oid : 0;
  std::vector<std::u16string> texts = {row->name, row->number};
  list.InsertRow(list.ItemCount(), std::move(texts), std::move(row));
}

void SortByName(ui::ListView& list) {
  list.Sort([](const ui::RowData* left, const ui::RowData* right) {
    // This list's rows hold nothing else, and every one of them does.
    return ui::CompareIgnoringCase(static_cast<const ContactPickRow*>(left)->name,
                                   static_cast<const ContactPickRow*>(right)->name);
  });
}

}  // namespace

PickRules::PickRules(const app::AppState& state)
    : perContact(state.settings.CToSim_Type != 0),
      sorted(perContact && state.settings.Enable_Sort != 0),
      startChecked(state.settings.CToSim_NotCheckAll == 0),
      language(state.language),
      maxNameLength(state.simPhonebook.MaxNameLength()),
      maxNumberLength(state.simPhonebook.MaxNumberLength()),
      maxEmailLength(MaxEmailLength(state.extPhonebook)) {
  for (std::size_t type = 0; type < app::kPhoneTypeCount; ++type) {
    chosen[type] = state.settings.typeFlags[type] == 1;
    marks[type] = state.settings.typeMarks[type];
  }
}

FillOutcome FillPicker(platform::ContactsStore& store, const PickRules& rules,
                       const std::atomic<bool>& stop, ui::ListView& list) {
  FillOutcome outcome;
  outcome.end =
      ForEachContact(store, stop, [&](ContactsConnection& connection, const ContactHead& head) {
        outcome.anyContact = true;
        if (rules.perContact) {
          AddContactRow(rules, connection, head, list);
        } else {
          AddNumberRows(rules, connection, head, list);
        }
      });
  if (stop || outcome.end == EnumerationEnd::kNotOpened) {
    return outcome;
  }
  if (rules.sorted && list.ItemCount() > 0) {
    SortByName(list);
  }
  if (rules.startChecked) {
    list.SetCheck(-1, true);
  }
  return outcome;
}

}  // namespace kelpin::contacts
