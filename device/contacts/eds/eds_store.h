#pragma once

#include <memory>
#include <string>

#include "device/contacts/object_store.h"
#include "device/contacts/trouble.h"

namespace kelpin::device::contacts {

struct EdsShared;

// Contacts kept by the Evolution Data Server, where the desktop's own programs keep theirs; through
// it also those of online accounts and CardDAV servers. Contacts keep their numbers as long as the
// store lives. Whether what was saved is on a disk is the server's matter.
class EdsStore final : public ObjectStore {
 public:
  // `book` is the uid or the name of an address book; the user's default one when it is empty. Null
  // when the server or the book cannot be reached: `why` says why and what to do. What goes wrong
  // later is told to `trouble`.
  static std::unique_ptr<EdsStore> Open(const std::string& book, std::string& why,
                                        TroubleListener trouble = {});
  ~EdsStore() override;

  std::shared_ptr<ContactBook> OpenBook() override;

 private:
  EdsStore(std::string book, std::shared_ptr<EdsShared> shared, TroubleListener trouble);

  const std::string book_;
  const TroubleListener trouble_;
  const std::shared_ptr<EdsShared> shared_;
};

}  // namespace kelpin::device::contacts
