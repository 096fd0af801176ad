#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "res/ids.h"

// The program's texts in English, as constants, so that a template that asks for a text which is
// not there does not compile. Code that runs asks LoadString.
namespace kelpin::res {

struct StringEntry {
  int id = 0;
  std::u16string_view text;
};

inline constexpr StringEntry kStrings[] = {
    {kStringInfo, u"Info"},
    {kStringContactsAddedWithOverwritten,
     u"Contact(s) successfully added.\n\n - %d new item(s).\n - %d item(s) overwritten.\n"
     u" - %d item(s) already exists."},
    {kStringWarning, u"Warning"},
    {kStringDeleteFromSimQuestion,
     u"The selected items will be permanently deleted from the SIM card.\nContinue?"},
    {kStringOptionsExplanation,
     u"When the contact has more than one phone number, copy selected phone numbers into SIM "
     u"card."},
    {kStringMobileTel, u"Mobile tel"},
    {kStringWorkTel, u"Work tel"},
    {kStringHomeTel, u"Home tel"},
    {kStringCompanyTel, u"Company tel"},
    {kStringWork2Tel, u"Work2 tel"},
    {kStringHome2Tel, u"Home2 tel"},
    {kStringRadioTel, u"Radio tel"},
    {kStringPager, u"Pager"},
    {kStringCarTel, u"Car tel"},
    {kStringAssistantTel, u"Assistant tel"},
    {kStringPhoneType, u"Phone Type"},
    {kStringItem, u"Item"},
    {kStringDescription, u"Description"},
    {kStringTotalSize, u"Total phonebook size:"},
    {kStringEntryCount, u"No. of phonebook entries:"},
    {kStringMaxNameLength, u"Max. length for name:"},
    {kStringMaxNumberLength, u"Max. length for phone number:"},
    {kStringSmsCapacity, u"SMS message storage capacity:"},
    {kStringOwnNumbersHeader, u"Store your personal numbers."},
    {kStringEdit, u"Edit"},
    {kStringMenu, u"Menu"},
    {kStringErase, u"Erase"},
    {kStringRefresh, u"Refresh"},
    {kStringNumberSign, u"#"},
    {kStringAppTitle, u"Kelpin"},
    {kStringMark, u"Mark"},
    {kStringError, u"Error"},
    {kStringMyNo, u"My No."},
    {kStringName, u"Name"},
    {kStringPhone, u"Phone"},
    {kStringNumberEmpty, u"Phone number cannot be left empty."},
    {kStringNew, u"New"},
    {kStringSimInformation, u"SIM Information"},
    {kStringSimFailure, u"SIM failure was detected. "},
    {kStringSimBusy, u"SIM is busy."},
    {kStringSimWrong, u"Inorrect SIM was inserted."},
    {kStringSimNotMessageCapable, u"SIM isn't capable of storing messages. "},
    {kStringSimToolkitBusy, u"SIM Application Toolkit is busy."},
    {kStringSimDownloadError, u"SIM data download error. "},
    {kStringSimNotInserted, u"SIM isn't inserted into the phone. "},
    {kStringPhSimPinRequired, u"PH-SIM PIN is required to perform this operation."},
    {kStringPhFsimPinRequired, u"PH-FSIM PIN is required to perform this operation."},
    {kStringPhFsimPukRequired, u"PH-FSIM PUK is required to perform this operation."},
    {kStringSimPinRequired, u"SIM PIN is required to perform this operation."},
    {kStringSimPukRequired, u"SIM PUK is required to perform this operation."},
    {kStringIncorrectPassword, u"Incorrect password was supplied."},
    {kStringSimPin2Required, u"SIM PIN2 is required to perform this operation."},
    {kStringNetworkPinRequired,
     u"Network Personalization PIN is required to perform this operation."},
    {kStringNetworkPukRequired,
     u"Network Personalization PUK is required to perform this operation."},
    {kStringSubsetPinRequired,
     u"Network Subset Personalization PIN is required to perform this operation."},
    {kStringSubsetPukRequired,
     u"Network Subset Personalization PUK is required to perform this operation."},
    {kStringProviderPinRequired,
     u"Service Provider Personalization PIN is required to perform this operation."},
    {kStringProviderPukRequired,
     u"Service Provider Personalization PUK is required to perform this operation."},
    {kStringCorporatePinRequired,
     u"Corporate Personalization PIN is required to perform this operation."},
    {kStringCorporatePukRequired,
     u"Corporate Personalization PUK is required to perform this operation."},
    {kStringSimFull, u"The SIM is full. Delete some SIM contacts and try again."},
    {kStringInvalidIndex, u"Invalid storage index was supplied."},
    {kStringEntryNotFound, u"A requested storage entry was not found."},
    {kStringMemoryFailure, u"Storage memory failure."},
    {kStringMessageStorageFull, u"Message storage on the SIM is full."},
    {kStringLocationEmpty, u"Storage location is empty."},
    {kStringSimNotReady, u"SIM isn't yet ready to perform the requested operation. "},
    {kStringSimNotReadyEither, u"SIM isn't yet ready to perform the requested operation. "},
    {kStringBufferTooSmall, u"Buffer too small."},
    {kStringNotTextMessage,
     u"Requested Short Message Service (SMS) message is not a text message."},
    {kStringNoSim, u"Device doesn't have a SIM."},
    {kStringNetworkError, u"There was a network error."},
    {kStringMobileError, u"Mobile error."},
    {kStringCommandUnsupported, u"The command is unsupported."},
    {kStringBadParameter, u"Bad parameter."},
    {kStringUndeterminedError, u"Undetermined error."},
    {kStringRadioNotPresent, u"The Radio is not present."},
    {kStringPhoneOff,
     u"The phone function is disabled. Please turn on the phone function first in Relaydeck."},
    {kStringErrorOccurs, u"An error occurs."},
    {kStringForPocketPc, u"for Pocket PC"},
    {kStringForSmartphone, u"for Smartphone"},
    {kStringVersion, u"Version %s"},
    {kStringNameTooLong, u"Maximum length for names has been exceeded."},
    {kStringNumberTooLong, u"Maximum length for phone numbers has been exceeded."},
    {kStringSaveToContacts, u"Save to Contacts"},
    {kStringDelete, u"Delete"},
    {kStringCall, u"Call"},
    {kStringNameLabel, u"Name:"},
    {kStringNumberLabel, u"Phone Number:"},
    {kStringPhoneTypeLabel, u"Phone Type:"},
    {kStringMarkLabel, u"Mark:"},
    {kStringDeleteFromContactsQuestion,
     u"The selected items will be permanently deleted from the Contacts.\nContinue?"},
    {kStringServiceNumbersHeader, u"Service dialing numbers:"},
    {kStringCut, u"Cut"},
    {kStringCopy, u"Copy"},
    {kStringPaste, u"Paste"},
    {kStringClear, u"Clear"},
    {kStringSelectAll, u"Select All"},
    {kStringLocationLabel, u"No.:"},
    {kStringNumber2Label, u"Phone Number 2:"},
    {kStringEmailLabel, u"E-mail:"},
    {kStringNotAvailable, u"<Not available>"},
    {kStringNumber2Failed, u"Failed to update Phone Number 2 field."},
    {kStringEmailFailed, u"Failed to update Email field."},
    {kStringAddressBookUpdated, u"Address book data is updated. Please check."},
    {kStringOverwriteContactQuestion,
     u"\"%s\" already exists in Contacts. Do you want to overwrite it?"},
    {kStringApplyToAll, u"Apply to all"},
    {kStringOverwriteSimQuestion,
     u"\"%s\" already exists in SIM card. Do you want to overwrite it?"},
    {kStringContactsAdded,
     u"Contacts successfully added.\n\n - %d new item(s).\n - %d item(s) already exists."},
    {kStringNumber3Label, u"Phone Number 3:"},
    {kStringNumber3Failed, u"Failed to update Phone Number 3 field."},
    {kStringEditItem, u"Edit..."},
    {kStringCallItem, u"Call..."},
    {kStringSendItem, u"Send..."},
    {kStringNotAllCopiedQuestion,
     u"Not all \"%s\" phone(s) and email(s) could be copied. Do you want to proceed?\n\n"
     u"Yes: Still copy this contact and continue\n"
     u"No: Skip the current contact, continue from the next contact"},
    {kStringNewSim, u"New SIM Card Inserted"},
    {kStringNewSimQuestion, u"Do you want to copy SIM card entries to your Contacts?"},
    {kStringEditNumberNames, u"Edit Phone No. Name"},
    {kStringEditGroupNames, u"Edit Group Name"},
    {kStringDefaultName, u"<Default>"},
    {kStringGroupLabel, u"Group:"},
    {kStringNoGroup, u"<No Group>"},
    {kStringNicknameLabel, u"Nickname:"},
    {kStringNicknameFailed, u"Failed to update Nickname field."},
    {kStringEllipsis, u"..."},
    {kStringContact, u"Contact"},
    {kStringNotAllMovedQuestion,
     u"If you move the current contact, \u201C%s\u201D, to the SIM card, at most only two phone "
     u"numbers and one e-mail address can be stored on the SIM card.\n\n"
     u"Tap Yes to move this contact to the SIM card, or tap No to skip to the next contact."},
    {kStringNumber2Capacity, u"2nd phone number storage capacity:"},
    {kStringEmailCapacity, u"E-mail address storage capacity:"},
    {kStringNameCutNotice,
     u"For contact names over 16 bytes long, only the first 16 bytes of the name will be copied "
     u"to the SIM."},
    {kStringNameCutWarning, u"Warning"},
    {kStringCopyProgress, u"%d of %d contacts copied."},
};

inline constexpr StringEntry kTexts[] = {
    {kTextReadingCard, u"Reading the card\u2026"},
    {kTextReadingCardProgress, u"Reading the card\u2026 %d of %d"},
    {kTextNoEntries, u"No entries on this card"},
    {kTextNoEntriesHint, u"Press New to add one, or Contacts to SIM... in the menu."},
    {kTextNoCard, u"No SIM card"},
    {kTextNoCardHint, u"Insert a card, then press Refresh in the menu."},
    {kTextCardNotRead, u"The card could not be read"},
    {kTextCardNotReadHint, u"Press Refresh in the menu to try again."},
    {kTextCardLocked, u"The card is locked"},
    {kTextCardLockedHint, u"Press Refresh in the menu and type its PIN."},
    {kTextReadingContacts, u"Reading the contacts\u2026"},
    {kTextReadingContactsProgress, u"Reading the contacts\u2026 %d of %d"},
    {kTextNoContacts, u"No contacts"},
    {kTextNoContactsHint, u"Contacts saved on this device are listed here."},
    {kTextContactsNotOpened, u"The contacts could not be opened"},
    {kTextContactsNotOpenedHint, u"Close this list and try again."},
    {kTextNoOwnNumbers, u"This card keeps no own numbers"},
    {kTextNoServiceNumbers, u"No service numbers on this card"},
    {kTextNoNumberNames, u"This card keeps no names for phone numbers"},
    {kTextNoGroupNames, u"This card keeps no groups"},
    {kTextCallChooser, u"Call:"},
    {kTextSendChooser, u"Send to:"},
    {kTextOptionsTitle, u"Contacts to SIM:"},
    {kTextContactsToDelete, u"Contacts to delete"},
    {kTextNumberNames, u"Names for phone numbers"},
    {kTextGroups, u"Groups"},
    {kTextAboutPurpose, u"Phone book for SIM and USIM cards"},
    {kTextAboutCopyright, u"Copyright the Kelpin developers"},
    {kTextAboutLicense, u"Free software under the MIT License"},
    {kTextMyNoTemplate, u"My No. 1234567890"},
    {kTextCounterTemplate, u"0 / 0"},
    {kTextDeletionCloseQuestion,
     u"%d of %d entries are deleted, the others are still on the card.\nStop and close?"},
    {kTextDeletionStopped,
     u"%d of %d entries are deleted. The card was changed meanwhile, so the others were left on "
     u"it and the list is read again."},
    {kTextEntriesUsed, u"%d of %d entries used"},
    {kTextMessagesStored, u"%d of %d messages stored"},
    {kTextOptionsNotStored,
     u"The phone types and marks could not be stored.\nThey hold until Kelpin is closed."},
    {kTextContactsKept,
     u"Of the contacts that were moved, %d are still in Contacts as well: the card does not hold "
     u"all of them, or they could not be deleted."},
    {kTextCopyToSimStopped,
     u"%d of %d contacts are done. The card was changed meanwhile, so the others were left in "
     u"Contacts and the list is read again."},
    {kTextPinTitle, u"The card is locked"},
    {kTextPinWanted, u"Type the PIN of the card."},
    {kTextPinTriesLeft, u"%d tries left."},
    {kTextPinOneTryLeft,
     u"1 try left. After one more wrong PIN the card is blocked, and only its PUK opens it again."},
    {kTextPinLabel, u"PIN:"},
    {kTextPinRefused, u"Wrong PIN."},
    {kTextPinDigits, u"A PIN has 4 to 8 digits."},
    {kTextPinRefusedBefore, u"The card refused this PIN before. It was not sent again."},
    {kTextPinLastTryQuestion,
     u"This is the last try. If the PIN is wrong, the card is blocked and only its PUK opens it "
     u"again.\nSend it?"},
    {kTextCodeNotAnswered,
     u"The card did not answer. Check that it is in, then type the code again."},
    {kTextPukTitle, u"The card is blocked"},
    {kTextPukWanted, u"Type the PUK, 8 digits from the papers of the card, and choose a new PIN."},
    {kTextPukOneTryLeft, u"1 try left. After one more wrong PUK the card can never be used again."},
    {kTextPukLabel, u"PUK:"},
    {kTextNewPinLabel, u"New PIN, 4 to 8 digits:"},
    {kTextNewPinAgainLabel, u"New PIN again:"},
    {kTextPukRefused, u"Wrong PUK."},
    {kTextPukDigits, u"A PUK has 8 digits."},
    {kTextPukRefusedBefore, u"The card refused this PUK before. It was not sent again."},
    {kTextPukLastTryQuestion,
     u"This is the last try. If the PUK is wrong, the card can never be used again.\nSend it?"},
    {kTextNewPinsDiffer, u"The two new PINs are not the same. Type the new PIN twice."},
    {kTextBlockedForGood,
     u"The card is blocked for good: a wrong PUK was sent too often. Ask who gave you the card for "
     u"another one."},
    {kTextOpeningCard, u"Opening the card\u2026"},
    {kTextOpeningCardSlow, u"The card takes its time. Press Cancel to end the program."},
    {kTextNoChosenNumbers, u"No contact has a number of the chosen kinds"},
    {kTextNoChosenNumbersHint,
     u"Choose phone types first: press Cancel, then Menu, Tools, Options..."},
    {kTextCopyFromSimStopped,
     u"%d of %d entries are done. The card was changed meanwhile, so the others were not copied "
     u"and the list is read again."},
    {kTextCopyFromSimCloseQuestion,
     u"%d of %d entries are done, the others are not in Contacts yet.\nStop and close?"},
    {kTextSimEntriesKept,
     u"%d of them are still on the SIM card as well, because not all they hold could be read or "
     u"is in Contacts."},
    {kTextServiceCodeQuestion,
     u"Dial %s?\n\nIt may be a service code, which can change settings of your phone or your "
     u"line."},
    {kTextNoNamedGroups, u"None of the card's groups has a name yet"},
    {kTextNoNamedGroupsHint, u"Name one with Menu, Tools, Group Name."},
    {kTextMenuNumberNames, u"Phone No. Name..."},
    {kTextMenuGroupNames, u"Group Name..."},
    {kTextMenuOwnNumbers, u"List of Own Numbers..."},
    {kTextMenuServiceNumbers, u"Service Dialing Numbers..."},
    {kTextMenuSimInformation, u"SIM Information..."},
    {kTextMenuOptions, u"Options..."},
    {kTextMenuDeleteContacts, u"Delete Contacts..."},
    {kTextMenuMoveToContacts, u"Move to Contacts"},
    {kTextMenuContactsToSim, u"Contacts to SIM..."},
    {kTextMenuMoveContactsToSim, u"Move Contacts to SIM..."},
    {kTextMenuTools, u"Tools"},
    {kTextMenuAbout, u"About..."},
    {kTextMenuCheckAll, u"Check All"},
    {kTextMenuUncheckAll, u"Uncheck All"},
    {kTextKeyCancel, u"Cancel"},
    {kTextKeyDone, u"Done"},
    {kTextKeyOk, u"OK"},
    {kTextKeySave, u"Save"},
    {kTextKeyYes, u"Yes"},
    {kTextKeyNo, u"No"},
    {kTextKeySelect, u"Select"},
    {kTextKeyMove, u"Move"},
    {kTextShortcutEdit, u"F2"},
    {kTextShortcutDelete, u"Del"},
    {kTextShortcutCall, u"Ctrl+D"},
    {kTextShortcutSelectAll, u"Ctrl+A"},
    {kTextShortcutRefresh, u"F5"},
    {kTextContactRefused,
     u"%d of %d contacts are done. \"%s\" does not fit the card: the name is too long, or the "
     u"number is not one that the card can keep.\n\nShorten the name or correct the number in "
     u"Contacts, then copy this contact and the ones below it."},
    {kTextEntryChangedQuestion,
     u"Another program changed this entry on the card meanwhile, so it was not saved.\nRead it "
     u"again? What you typed is lost then."},
    {kTextReopenListHint, u"Close this list and open it again."},
    {kTextChangeNotTaken,
     u"The card did not take the change; the list shows what it holds.\n\nTry again. A card that "
     u"refuses every time does not allow its own numbers to be changed."},
    {kTextChangeNotConfirmed,
     u"The card did not confirm the change, and what it holds could not be read.\n\nPress Refresh "
     u"and compare."},
};

// One text per id from `first` to `last`, empty where the table has none.
template <int first, int last, std::size_t size>
constexpr std::array<std::u16string_view, static_cast<std::size_t>(last - first + 1)> IndexStrings(
    const StringEntry (&entries)[size]) {
  std::array<std::u16string_view, static_cast<std::size_t>(last - first + 1)> index;
  for (const StringEntry& entry : entries) {
    index[static_cast<std::size_t>(entry.id - first)] = entry.text;
  }
  return index;
}

inline constexpr auto kStringIndex = IndexStrings<kStringFirst, kStringLast>(kStrings);
inline constexpr auto kTextIndex = IndexStrings<kTextFirst, kTextLast>(kTexts);

// The English text of `id`; empty for an id without one.
constexpr std::u16string_view EnglishText(int id) {
  if (id >= kStringFirst && id <= kStringLast) {
    return kStringIndex[static_cast<std::size_t>(id - kStringFirst)];
  }
  if (id >= kTextFirst && id <= kTextLast) {
    return kTextIndex[static_cast<std::size_t>(id - kTextFirst)];
  }
  return {};
}

// For templates: the text of an id that has one. Any other id does not compile.
consteval std::u16string_view TemplateText(int id) {
  const std::u16string_view text = EnglishText(id);
  if (text.empty()) {
    throw "this id has no text";  // never reached in a program: compiles to an error
  }
  return text;
}

// Each table goes up without a repeated number and leaves no text empty.
template <std::size_t size>
constexpr bool IsOrdered(const StringEntry (&entries)[size]) {
  for (std::size_t i = 0; i < size; ++i) {
    if (entries[i].text.empty() || (i > 0 && entries[i - 1].id >= entries[i].id)) {
      return false;
    }
  }
  return true;
}
static_assert(IsOrdered(kStrings) && IsOrdered(kTexts));
static_assert(std::size(kStrings) == 132);
static_assert(std::size(kTexts) == static_cast<std::size_t>(kTextLast - kTextFirst + 1));

}  // namespace kelpin::res
