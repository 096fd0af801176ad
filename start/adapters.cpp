#include "start/adapters.h"

#include <cstddef>
#include <filesystem>
#include <iostream>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "device/calls/modem_manager_telephone.h"
#include "device/contacts/sqlite/sqlite_store.h"
#include "device/desktop/desktop_telephone.h"
#include "device/modem/modem_channel.h"
#include "device/softcard/soft_channel.h"
#include "platform/wording.h"
#if KELPIN_HAS_EDS
#include "device/contacts/eds/eds_store.h"
#endif
#if KELPIN_HAS_PCSC
#include "device/pcsc/pcsc_channel.h"
#endif

namespace kelpin::start {

using namespace device;

namespace {

// A way to what the program needs, on the command line "NAME" or "NAME:ARGUMENT".
template <class Needed>
struct Adapter {
  const char* name;
  bool needsArgument;
  const char* help;
  // Null when it cannot be opened; `why` says why and what to do.
  std::unique_ptr<Needed> (*open)(const std::string& argument, std::string& why);
};

std::unique_ptr<card::CardChannel> OpenSoftCard(const std::string& file, std::string& why) {
  return softcard::SoftChannel::Open(file, why);
}

#if KELPIN_HAS_PCSC
std::unique_ptr<card::CardChannel> OpenCardReader(const std::string& name, std::string& why) {
  std::unique_ptr<pcsc::PcscChannel> channel = pcsc::PcscChannel::Open(name, why);
  if (channel != nullptr && !channel->HadCard()) {
    std::cerr << "kelpin: "
              << platform::Say("no card in the reader %s; put one in, then press Refresh",
                               {channel->ReaderName()})
              << '\n';
  }
  return channel;
}

bool ReadReaders(std::string& list, std::string& why) {
  std::vector<pcsc::Reader> readers;
  if (!pcsc::ListReaders(readers, why)) {
    return false;
  }
  for (const pcsc::Reader& reader : readers) {
    list += platform::Printable(reader.name) + (reader.hasCard ? "  (card)\n" : "  (empty)\n");
  }
  return true;
}
#else
constexpr std::string_view kNoReaders = platform::Words(
    "this Kelpin was built without card readers; install libpcsclite-dev and build it again");

std::unique_ptr<card::CardChannel> OpenCardReader(const std::string& /*name*/, std::string& why) {
  why = platform::Say(kNoReaders);
  return nullptr;
}

bool ReadReaders(std::string& /*list*/, std::string& why) {
  why = platform::Say(kNoReaders);
  return false;
}
#endif

std::unique_ptr<card::CardChannel> OpenModem(const std::string& port, std::string& why) {
  std::unique_ptr<modem::ModemChannel> channel = modem::ModemChannel::Open(port, why);
  if (channel != nullptr && !channel->HadCard()) {
    std::cerr << "kelpin: "
              << platform::Say("no card in the modem on %s; put one in, then press Refresh", {port})
              << '\n';
  }
  return channel;
}

constexpr Adapter<card::CardChannel> kSimAdapters[] = {
    {"soft", true, "soft:FILE  a software card kept in FILE", OpenSoftCard},
    {"pcsc", false, "pcsc[:NAME]  the card in a PC/SC reader, the first one or NAME",
     OpenCardReader},
    {"modem", true, "modem:PORT  the card in the modem on PORT (/dev/ttyUSB2, say)", OpenModem},
};

std::unique_ptr<platform::ContactsStore> OpenSqlite(const std::string& file,
                                                    ContactsTrouble trouble, std::string& why) {
  std::error_code ignored;
  const bool isNew = !std::filesystem::exists(file, ignored);
  std::unique_ptr<platform::ContactsStore> store =
      device::contacts::SqliteStore::Open(file, why, std::move(trouble));
  if (isNew && store != nullptr) {
    std::cerr << "kelpin: "
              << platform::Say(
                     "%s: there was no such contacts file, so an empty one was made. See that the "
                     "name is right",
                     {file})
              << '\n';
  }
  return store;
}

std::unique_ptr<platform::ContactsStore> OpenEds(const std::string& book,
                                                 [[maybe_unused]] ContactsTrouble trouble,
                                                 std::string& why) {
#if KELPIN_HAS_EDS
  return device::contacts::EdsStore::Open(book, why, std::move(trouble));
#else
  why = platform::Say(
      "this Kelpin was built without the desktop's contacts (eds:%s); install libebook1.2-dev and "
      "build it again",
      {book});
  return nullptr;
#endif
}

struct ContactsAdapter {
  const char* name;
  bool needsArgument;
  const char* help;
  // As above. `trouble` is told, on any thread, what goes wrong later.
  std::unique_ptr<platform::ContactsStore> (*open)(const std::string& argument,
                                                   ContactsTrouble trouble, std::string& why);
};

constexpr ContactsAdapter kContactsAdapters[] = {
    {"sqlite", true, "sqlite:FILE  contacts kept in FILE", OpenSqlite},
    {"eds", false, "eds[:BOOK]  the desktop's contacts (Evolution Data Server)", OpenEds},
};

std::unique_ptr<platform::Telephone> OpenDesktopCalls(CallsListeners listeners,
                                                      std::string& /*why*/) {
  return std::make_unique<desktop::DesktopTelephone>("xdg-open", std::move(listeners.notOpened));
}

std::unique_ptr<platform::Telephone> OpenModemCalls(CallsListeners listeners, std::string& why) {
  return calls::ModemManagerTelephone::Open({.failed = std::move(listeners.failed)}, why);
}

struct CallsAdapter {
  const char* name;
  const char* help;
  // As above.
  std::unique_ptr<platform::Telephone> (*open)(CallsListeners listeners, std::string& why);
};

constexpr CallsAdapter kCallsAdapters[] = {
    {"desktop", "desktop  the desktop's telephone program (the default)", OpenDesktopCalls},
    {"modem", "modem  a modem, through ModemManager", OpenModemCalls},
};

template <class Row, std::size_t kCount>
std::string HelpLines(const Row (&adapters)[kCount]) {
  std::string help;
  for (const Row& adapter : adapters) {
    help += "\n" + std::string(adapter.help);
  }
  return help;
}

// What stands before and after the first colon.
struct AdapterText {
  explicit AdapterText(const std::string& text) : name(text.substr(0, text.find(':'))) {
    argument = text.size() > name.size() ? text.substr(name.size() + 1) : "";
  }

  std::string name;
  std::string argument;
};

template <class Row, std::size_t kCount>
const Row* FindAdapter(const Row (&adapters)[kCount], const std::string& name) {
  for (const Row& adapter : adapters) {
    if (name == adapter.name) {
      return &adapter;
    }
  }
  return nullptr;
}

// Empty when the text names one, else what is wrong with it.
template <class Row, std::size_t kCount>
std::string CheckAdapter(const Row (&adapters)[kCount], const char* kind, const std::string& text) {
  const AdapterText parts(text);
  const Row* const adapter = FindAdapter(adapters, parts.name);
  if (adapter == nullptr) {
    return std::string("no such kind of ") + kind + ": \"" + parts.name + '"';
  }
  return parts.argument.empty() && adapter->needsArgument ? std::string("write ") + adapter->help
                                                          : "";
}

}  // namespace

std::string SimHelp() {
  return "The card, one of:" + HelpLines(kSimAdapters) +
         "\nWithout it: a software card in the data folder, made empty at the first start";
}

std::string ContactsHelp() {
  return "The contacts, one of:" + HelpLines(kContactsAdapters) +
         "\nWithout it: contacts.db in the data folder";
}

std::string CallsHelp() {
  return "Who makes calls, one of:" + HelpLines(kCallsAdapters);
}

std::string CheckSim(const std::string& text) {
  return CheckAdapter(kSimAdapters, "card", text);
}

std::string CheckContacts(const std::string& text) {
  return CheckAdapter(kContactsAdapters, "contacts", text);
}

std::string CheckCalls(const std::string& text) {
  return FindAdapter(kCallsAdapters, text) == nullptr ? "no such kind of calls: \"" + text + '"'
                                                      : "";
}

std::unique_ptr<card::CardChannel> OpenSim(const std::string& text, std::string& why) {
  const AdapterText chosen(text);
  return FindAdapter(kSimAdapters, chosen.name)->open(chosen.argument, why);
}

std::unique_ptr<platform::ContactsStore> OpenContacts(const std::string& text,
                                                      ContactsTrouble trouble, std::string& why) {
  const AdapterText chosen(text);
  return FindAdapter(kContactsAdapters, chosen.name)
      ->open(chosen.argument, std::move(trouble), why);
}

std::unique_ptr<platform::Telephone> OpenCalls(const std::string& text, CallsListeners listeners,
                                               std::string& why) {
  return FindAdapter(kCallsAdapters, text)->open(std::move(listeners), why);
}

bool ListReaders(std::string& list, std::string& why) {
  return ReadReaders(list, why);
}

}  // namespace kelpin::start
