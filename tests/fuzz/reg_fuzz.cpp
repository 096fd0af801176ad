// Links: kelpin_registry
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "device/registry/reg_file.h"

using kelpin::device::registry::kMaxFileBytes;
using kelpin::device::registry::RegError;
using kelpin::device::registry::RegFile;
using kelpin::platform::RegistryRoot;
using kelpin::platform::RegistryType;

namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

// A file that is read can be written and read again, and a change to it changes nothing else.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  RegFile file;
  RegError error;
  if (!RegFile::Parse(bytes, file, error)) {
    Require(!error.reason.empty());
    return 0;
  }
  const std::string text = file.Text();
  if (text.size() > kMaxFileBytes / 2) return 0;  // the limit itself has a test of its own
  RegFile again;
  Require(RegFile::Parse(text, again, error));
  Require(again.Text() == text);

  const std::vector<std::uint8_t> number = {1, 2, 3, 4};
  again.Set(RegistryRoot::kLocalMachine, u"Software\\OEM\\KELPIN", u"PhoneType",
            RegistryType::kDword, number);
  RegFile changed;
  Require(RegFile::Parse(again.Text(), changed, error));
  const auto* value =
      changed.Find(RegistryRoot::kLocalMachine, u"software\\oem\\kelpin", u"phonetype");
  Require(value != nullptr && value->type == RegistryType::kDword && value->data == number);
  Require(changed.Text() == again.Text());
  return 0;
}
