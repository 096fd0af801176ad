#include "start/device.h"

#include <QFile>
#include <filesystem>
#include <iostream>
#include <system_error>
#include <utility>
#include <vector>

#include "device/contacts/contact_list.h"
#include "device/contacts/sqlite/sqlite_store.h"
#include "platform/wording.h"

namespace kelpin::start {

namespace fs = std::filesystem;
using namespace device;

namespace {

// Copies a card image that is part of the program to `file`.
bool WriteSampleCard(const char* name, const fs::path& file, std::string& why) {
  QFile sample(QString(":/kelpin/cards/") + name);
  if (!sample.open(QIODevice::ReadOnly)) {
    why = platform::Say("the sample card %s is not part of this program. Install Kelpin again",
                        {name});
    return false;
  }
  return desktop::MakeWholeFile(file, sample.readAll().toStdString(), why);
}

// The settings that count where the user's say nothing: the system's, else those that come with the
// program.
fs::path FindSystemSettings() {
  fs::path file = desktop::FindSystemConfig("registry.reg");
  if (!file.empty()) {
    return file;
  }
  for (const fs::path& folder : desktop::DataFolders(desktop::ProgramFolder())) {
    std::error_code ignored;
    if (file = folder / "registry-default.reg"; fs::exists(file, ignored)) {
      return file;
    }
  }
  return {};
}

bool OpenRegistry(const Options& options, const desktop::Folders& folders, Device& device,
                  std::string& why) {
  fs::path file = options.registry;
  if (file.empty() && options.demo) {
    file = device.scratch.Path() / "registry.reg";
  } else if (file.empty()) {
    if (!desktop::MakePrivateFolder(folders.config, why)) {
      return false;
    }
    file = folders.config / "registry.reg";
  }
  std::error_code ignored;
  const bool isNew = !fs::exists(file, ignored);
  device.registry = registry::TextRegistry::Open(file, FindSystemSettings(), why);
  if (isNew && !options.registry.empty() && device.registry != nullptr) {
    std::cerr << "kelpin: "
              << platform::Say(
                     "%s: there is no such settings file; it is made when a setting changes. See "
                     "that the name is right",
                     {options.registry})
              << '\n';
  }
  return device.registry != nullptr;
}

bool OpenCard(const Options& options, const desktop::Folders& folders, Device& device,
              std::string& why) {
  std::string sim;
  if (!options.sim.empty()) {
    sim = options.sim;
  } else if (options.demo) {
    const fs::path file = device.scratch.Path() / "card.json";
    if (!WriteSampleCard("usim.json", file, why)) {
      return false;
    }
    sim = "soft:" + file.string();
  } else {
    const fs::path file = folders.data / "card.json";
    std::error_code ignored;
    if (!desktop::MakePrivateFolder(folders.data, why) ||
        (!fs::exists(file, ignored) && !WriteSampleCard("usim-empty.json", file, why))) {
      return false;
    }
    sim = "soft:" + file.string();
  }
  device.channel = OpenSim(sim, why);
  return device.channel != nullptr;
}

// A store of the demonstration's own, with the sample contacts.
std::unique_ptr<platform::ContactsStore> OpenSampleContacts(const fs::path& file,
                                                            std::string& why) {
  QFile sample(":/kelpin/contacts/sample.json");
  std::vector<device::contacts::ContactRecord> people;
  if (!sample.open(QIODevice::ReadOnly) ||
      !device::contacts::ReadContactList(sample.readAll().toStdString(), people, why)) {
    why = platform::Say("the sample contacts are not part of this program. Install Kelpin again");
    return nullptr;
  }
  std::unique_ptr<device::contacts::SqliteStore> store =
      device::contacts::SqliteStore::Open(file.string(), why);
  return store != nullptr && store->AddAll(people, why) ? std::move(store) : nullptr;
}

bool OpenStore(const Options& options, const desktop::Folders& folders,
               const ContactsTrouble& trouble, Device& device, std::string& why) {
  if (!options.contacts.empty()) {
    device.contacts = OpenContacts(options.contacts, trouble, why);
  } else if (options.demo) {
    device.contacts = OpenSampleContacts(device.scratch.Path() / "contacts.db", why);
  } else if (desktop::MakePrivateFolder(folders.data, why)) {
    device.contacts =
        device::contacts::SqliteStore::Open((folders.data / "contacts.db").string(), why, trouble);
  }
  return device.contacts != nullptr;
}

}  // namespace

bool OpenDevice(const Options& options, const desktop::Folders& folders,
                const ContactsTrouble& trouble, Device& device, std::string& why) {
  if (options.demo && !device.scratch.Make(folders.runtime, why)) {
    return false;
  }
  device.kernel = kernel::Kernel::Open(folders.runtime, why);
  return device.kernel != nullptr && OpenRegistry(options, folders, device, why) &&
         OpenCard(options, folders, device, why) &&
         OpenStore(options, folders, trouble, device, why);
}

}  // namespace kelpin::start
