#include "device/softcard/file_information.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <span>
#include <string>

namespace kelpin::device::softcard {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kPin1Reference = 0x01;
constexpr std::uint8_t kPin2Reference = 0x81;
constexpr std::uint8_t kAdmReference = 0x0A;

std::uint8_t Low(std::size_t value) {
  return static_cast<std::uint8_t>(value & 0xFF);
}

std::uint8_t High(std::size_t value) {
  return static_cast<std::uint8_t>(value >> 8 & 0xFF);
}

void Add(Bytes& out, std::uint8_t tag, std::span<const std::uint8_t> value) {
  out.push_back(tag);
  if (value.size() > 0x7F) {
    out.push_back(0x81);
  }
  out.push_back(Low(value.size()));
  out.insert(out.end(), value.begin(), value.end());
}

void Add(Bytes& out, std::uint8_t tag, std::initializer_list<std::uint8_t> value) {
  Add(out, tag, std::span(value.begin(), value.size()));
}

// One pair of the expanded security attributes (TS 102 221 9.2.4 and ISO/IEC 7816-4): what is
// done, and what it takes.
void AddRule(Bytes& out, std::uint8_t accessMode, Access access) {
  Add(out, 0x80, {accessMode});
  const auto keyed = [&out](std::uint8_t reference) {
    Add(out, 0xA4, {0x83, 0x01, reference, 0x95, 0x01, 0x08});
  };
  switch (access) {
    case Access::kAlways:
      Add(out, 0x90, {});
      break;
    case Access::kPin1:
      keyed(kPin1Reference);
      break;
    case Access::kPin2:
      keyed(kPin2Reference);
      break;
    case Access::kAdm:
      keyed(kAdmReference);
      break;
    case Access::kNever:
      Add(out, 0x97, {});
      break;
  }
}

Bytes SecurityAttributes(const CardFile& file) {
  Bytes rules;
  if (file.IsDirectory()) {
    AddRule(rules, 0x7F, Access::kNever);
    return rules;
  }
  AddRule(rules, 0x01, file.read);
  AddRule(rules, 0x02, file.update);
  AddRule(rules, 0x08, file.deactivate);
  AddRule(rules, 0x10, file.activate);
  return rules;
}

// TS 102 221 11.1.1.4.10: a bit for every reference that follows, set when it is in force. PIN2
// belongs to an application and is announced there alone.
Bytes PinStatus(const CardImage& image, const CardFile& directory) {
  std::uint8_t enabled = 0;
  Bytes references;
  std::uint8_t bit = 0x80;
  const auto announce = [&](const Pin& pin, std::uint8_t reference) {
    if (pin.enabled) {
      enabled = static_cast<std::uint8_t>(enabled | bit);
    }
    Add(references, 0x83, {reference});
    bit = static_cast<std::uint8_t>(bit >> 1);
  };
  announce(image.pin1, kPin1Reference);
  if (image.pin2 && directory.Application() != nullptr) {
    announce(*image.pin2, kPin2Reference);
  }
  if (image.adm) {
    announce(*image.adm, kAdmReference);
  }
  Bytes status;
  Add(status, 0x90, {enabled});
  status.insert(status.end(), references.begin(), references.end());
  return status;
}

std::uint8_t FileDescriptor(FileKind kind) {
  switch (kind) {
    case FileKind::kTransparent:
      return 0x41;
    case FileKind::kLinearFixed:
      return 0x42;
    case FileKind::kCyclic:
      return 0x46;
    default:
      return 0x78;
  }
}

std::uint8_t GsmAccess(Access access) {
  switch (access) {
    case Access::kAlways:
      return 0x0;
    case Access::kPin1:
      return 0x1;
    case Access::kPin2:
      return 0x2;
    case Access::kAdm:
      return 0x4;
    case Access::kNever:
      break;
  }
  return 0xF;
}

std::uint8_t GsmAccess(Access high, Access low) {
  return static_cast<std::uint8_t>(GsmAccess(high) << 4 | GsmAccess(low));
}

// "b8: the code exists; b4-b1: tries left"; nothing for a code the card has not.
std::uint8_t GsmTries(bool exists, int tries) {
  return exists ? static_cast<std::uint8_t>(0x80 | tries) : std::uint8_t{0};
}

Bytes GsmDirectory(const CardImage& image, const CardFile& directory) {
  const auto directories =
      std::count_if(directory.children.begin(), directory.children.end(),
                    [](const auto& child) { return child->kind == FileKind::kDf; });
  const auto files = std::count_if(directory.children.begin(), directory.children.end(),
                                   [](const auto& child) { return !child->IsDirectory(); });
  const auto count = [](std::ptrdiff_t number) {
    return Low(static_cast<std::size_t>(std::min<std::ptrdiff_t>(number, 255)));
  };
  Bytes out = {0,
               0,
               0,
               0,
               High(directory.id),
               Low(directory.id),
               static_cast<std::uint8_t>(directory.kind == FileKind::kMf ? 0x01 : 0x02),
               0,
               0,
               0,
               0,
               0,
               9};
  // Clock stop allowed, works at 3 V and 1.8 V, and whether CHV1 is off.
  out.push_back(image.pin1.enabled ? 0x31 : 0xB1);
  out.push_back(count(directories));
  out.push_back(count(files));
  out.push_back(image.pin2 ? 4 : 2);
  out.push_back(0);
  out.push_back(GsmTries(true, image.pin1.tries));
  out.push_back(GsmTries(!image.pin1.puk.empty(), image.pin1.pukTries));
  const Pin absent;
  const Pin& pin2 = image.pin2 ? *image.pin2 : absent;
  out.push_back(GsmTries(image.pin2.has_value(), pin2.tries));
  out.push_back(GsmTries(!pin2.puk.empty(), pin2.pukTries));
  return out;
}

}  // namespace

std::vector<std::uint8_t> FileControlParameters(const CardImage& image, const CardFile& file) {
  if (!file.fcp.empty()) {
    return file.fcp;
  }
  Bytes body;
  const std::uint8_t descriptor = FileDescriptor(file.kind);
  if (file.IsDirectory() || file.kind == FileKind::kTransparent) {
    Add(body, 0x82, {descriptor, 0x21});
  } else {
    Add(body, 0x82,
        {descriptor, 0x21, High(file.content->recordLength), Low(file.content->recordLength),
         Low(file.content->RecordCount())});
  }
  if (file.kind == FileKind::kAdf) {
    Add(body, 0x84, file.aid);
  } else {
    Add(body, 0x83, {High(file.id), Low(file.id)});
  }
  if (file.kind == FileKind::kMf) {
    Add(body, 0xA5, {0x80, 0x01, 0x71});  // clock stop allowed, and the power classes
  }
  Add(body, 0x8A, {static_cast<std::uint8_t>(file.deactivated ? 0x04 : 0x05)});
  Add(body, 0xAB, SecurityAttributes(file));
  if (file.IsDirectory()) {
    Add(body, 0xC6, PinStatus(image, file));
  } else {
    const std::size_t size = file.content->bytes.size();
    Add(body, 0x80, {High(size), Low(size)});
    if (file.sfi == 0) {
      Add(body, 0x88, {});
    } else if (file.sfi) {
      Add(body, 0x88, {static_cast<std::uint8_t>(*file.sfi << 3)});
    }
  }
  Bytes out;
  Add(out, 0x62, body);
  return out;
}

std::vector<std::uint8_t> GsmFileInformation(const CardImage& image, const CardFile& file) {
  if (file.IsDirectory()) {
    return GsmDirectory(image, file);
  }
  const std::size_t size = file.content->bytes.size();
  std::uint8_t structure = 0x00;
  if (file.kind == FileKind::kLinearFixed) {
    structure = 0x01;
  } else if (file.kind == FileKind::kCyclic) {
    structure = 0x03;
  }
  return {0,
          0,
          High(size),
          Low(size),
          High(file.id),
          Low(file.id),
          0x04,
          0,
          GsmAccess(file.read, file.update),
          GsmAccess(Access::kNever, Access::kAlways),  // INCREASE is not offered
          GsmAccess(file.activate, file.deactivate),
          static_cast<std::uint8_t>(file.deactivated ? 0x00 : 0x01),
          2,
          structure,
          Low(file.content->recordLength)};
}

}  // namespace kelpin::device::softcard
