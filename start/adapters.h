#pragma once

#include <functional>
#include <memory>
#include <string>

#include "device/card/card_channel.h"
#include "device/contacts/trouble.h"
#include "device/desktop/address_opener.h"
#include "platform/contacts_store.h"
#include "platform/telephone.h"

namespace kelpin::start {

// The ways to a card, to contacts and to calls, as the command line names them: "NAME" or
// "NAME:ARGUMENT". Nowhere else are they listed.

using ContactsTrouble = device::contacts::TroubleListener;

// Who is told why a call is not made.
struct CallsListeners {
  std::function<void(const std::string& why)> failed;  // on the screen thread; may show it
  device::desktop::AddressOpener::Failed notOpened;    // on any thread
};

// What --help says of each.
std::string SimHelp();
std::string ContactsHelp();
std::string CallsHelp();

// Empty when the text names a way, else what is wrong with it.
std::string CheckSim(const std::string& text);
std::string CheckContacts(const std::string& text);
std::string CheckCalls(const std::string& text);

// Of a text that was checked. Null when it cannot be opened; `why` says why and what to do.
std::unique_ptr<device::card::CardChannel> OpenSim(const std::string& text, std::string& why);
// `trouble` is told, on any thread, what goes wrong later.
std::unique_ptr<platform::ContactsStore> OpenContacts(const std::string& text,
                                                      ContactsTrouble trouble, std::string& why);
std::unique_ptr<platform::Telephone> OpenCalls(const std::string& text, CallsListeners listeners,
                                               std::string& why);

// The card readers, a line each. False when they cannot be asked; `why` says why and what to do.
bool ListReaders(std::string& list, std::string& why);

}  // namespace kelpin::start
