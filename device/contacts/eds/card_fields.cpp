#include "device/contacts/eds/card_fields.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "device/contacts/eds/glib_pointers.h"

namespace kelpin::device::contacts {

using platform::ContactProperty;

namespace {

constexpr const char* kPlaceParameter = "X-KELPIN-PLACE";
constexpr const char* kFileAs = "X-EVOLUTION-FILE-AS";

// Texts that one kind of attribute holds, told apart by their order.
struct Family {
  const char* attribute;
  std::array<std::size_t, 3> texts;
  std::size_t places;
  std::array<const char*, 2> types;  // what a new one is marked with
};

constexpr Family Alone(ContactProperty property, const char* first, const char* second = nullptr) {
  return {EVC_TEL, {TextIndex(property)}, 1, {first, second}};
}

constexpr Family kFamilies[] = {
    Alone(ContactProperty::kMobileTelephoneNumber, "CELL"),
    {EVC_TEL,
     {TextIndex(ContactProperty::kBusinessTelephoneNumber),
      TextIndex(ContactProperty::kBusiness2TelephoneNumber)},
     2,
     {"WORK", "VOICE"}},
    {EVC_TEL,
     {TextIndex(ContactProperty::kHomeTelephoneNumber),
      TextIndex(ContactProperty::kHome2TelephoneNumber)},
     2,
     {"HOME", "VOICE"}},
    Alone(ContactProperty::kRadioTelephoneNumber, "X-EVOLUTION-RADIO"),
    Alone(ContactProperty::kPagerNumber, "PAGER"),
    Alone(ContactProperty::kCarTelephoneNumber, "CAR"),
    Alone(ContactProperty::kAssistantTelephoneNumber, "X-EVOLUTION-ASSISTANT"),
    Alone(ContactProperty::kHomeFaxNumber, "HOME", "FAX"),
    Alone(ContactProperty::kBusinessFaxNumber, "WORK", "FAX"),
    {EVC_TEL, {kCompanyPhoneText}, 1, {"X-EVOLUTION-COMPANY", nullptr}},
    {EVC_EMAIL,
     {TextIndex(ContactProperty::kEmail1Address), TextIndex(ContactProperty::kEmail2Address),
      TextIndex(ContactProperty::kEmail3Address)},
     3,
     {"INTERNET", nullptr}},
};
enum FamilyIndex : std::size_t {
  kMobile,
  kWork,
  kHome,
  kRadio,
  kPager,
  kCar,
  kAssistant,
  kHomeFax,
  kWorkFax,
  kCompany,
  kEmail,
  kFamilyCount,
};
static_assert(std::size(kFamilies) == kFamilyCount);

bool IsNamed(EVCardAttribute* attribute, const char* name) {
  return g_ascii_strcasecmp(e_vcard_attribute_get_name(attribute), name) == 0;
}

std::string UpperCase(std::string_view text) {
  std::string upper(text);
  std::transform(upper.begin(), upper.end(), upper.begin(),
                 [](char letter) { return g_ascii_toupper(letter); });
  return upper;
}

// The attribute's types, upper-case; "work,voice" in one value is two of them.
std::vector<std::string> TypesOf(EVCardAttribute* attribute) {
  std::vector<std::string> types;
  for (auto* parameter : Each<EVCardAttributeParam>(e_vcard_attribute_get_params(attribute))) {
    if (g_ascii_strcasecmp(e_vcard_attribute_param_get_name(parameter), EVC_TYPE) != 0) {
      continue;
    }
    for (const gchar* value : Each<gchar>(e_vcard_attribute_param_get_values(parameter))) {
      std::string_view rest(value);
      while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(','), rest.size());
        types.push_back(UpperCase(rest.substr(0, end)));
        rest.remove_prefix(std::min(end + 1, rest.size()));
      }
    }
  }
  return types;
}

std::optional<FamilyIndex> FamilyOfPhone(EVCardAttribute* attribute) {
  const std::vector<std::string> types = TypesOf(attribute);
  const auto has = [&types](const char* type) {
    return std::find(types.begin(), types.end(), type) != types.end();
  };
  if (has("FAX")) {
    if (has("WORK")) return kWorkFax;
    return has("HOME") ? std::optional(kHomeFax) : std::nullopt;
  }
  constexpr std::pair<const char*, FamilyIndex> kTold[] = {
      {"PAGER", kPager},
      {"CAR", kCar},
      {"X-EVOLUTION-RADIO", kRadio},
      {"X-EVOLUTION-ASSISTANT", kAssistant},
      {"X-EVOLUTION-COMPANY", kCompany},
      {"CELL", kMobile},
  };
  for (const auto& [type, family] : kTold) {
    if (has(type)) return family;
  }
  for (const char* other : {"MODEM", "ISDN", "VIDEO", "MSG", "BBS", "X-EVOLUTION-CALLBACK",
                            "X-EVOLUTION-TELEX", "X-EVOLUTION-TTYTDD"}) {
    if (has(other)) return std::nullopt;
  }
  if (has("WORK")) return kWork;
  if (has("HOME")) return kHome;
  return std::nullopt;
}

// A voice number that says nothing about itself, as many phones write their only one.
bool IsPlainPhone(EVCardAttribute* attribute) {
  const std::vector<std::string> types = TypesOf(attribute);
  return std::all_of(types.begin(), types.end(), [](const std::string& type) {
    return type == "VOICE" || type == "PREF" || type == "OTHER";
  });
}

// The attributes of a family, in their order.
std::vector<EVCardAttribute*> MembersOf(EVCard* card, FamilyIndex family) {
  std::vector<EVCardAttribute*> members;
  std::vector<EVCardAttribute*> plain;
  for (auto* attribute : Each<EVCardAttribute>(e_vcard_get_attributes(card))) {
    if (!IsNamed(attribute, kFamilies[family].attribute)) continue;
    if (family == kEmail || FamilyOfPhone(attribute) == family) {
      members.push_back(attribute);
    } else if (family == kMobile && IsPlainPhone(attribute)) {
      plain.push_back(attribute);
    }
  }
  members.insert(members.end(), plain.begin(), plain.end());
  return members;
}

// The place that the attribute says it has, 1 being the first; -1 when it says none.
int MarkedPlace(EVCardAttribute* attribute) {
  GList* const values = e_vcard_attribute_get_param(attribute, kPlaceParameter);
  if (values == nullptr) return -1;
  const auto* const text = static_cast<const gchar*>(values->data);
  return text[0] >= '0' && text[0] <= '3' && text[1] == '\0' ? text[0] - '0' : -1;
}

// By place, from 0; null where there is none.
using Places = std::array<EVCardAttribute*, 3>;

Places PlacesOf(const std::vector<EVCardAttribute*>& members, std::size_t count,
                bool lookAtMarks = true) {
  Places places = {};
  if (lookAtMarks) {
    for (EVCardAttribute* const member : members) {
      const int marked = MarkedPlace(member);
      if (marked >= 1 && static_cast<std::size_t>(marked) <= count) {
        auto& place = places[static_cast<std::size_t>(marked) - 1];
        if (place == nullptr) place = member;
      }
    }
  }
  std::size_t next = 0;
  for (EVCardAttribute* const member : members) {
    if (lookAtMarks && MarkedPlace(member) >= 0) continue;
    while (next < count && places[next] != nullptr) ++next;
    if (next < count) places[next] = member;
  }
  return places;
}

std::string ValueAt(EVCardAttribute* attribute, guint index) {
  GList* const values = e_vcard_attribute_get_values_decoded(attribute);
  const auto* const value = static_cast<const GString*>(g_list_nth_data(values, index));
  return value == nullptr ? std::string() : std::string(value->str, value->len);
}

void SetValues(EVCardAttribute* attribute, const std::vector<std::string>& values) {
  // The texts are written as they are now, whatever the attribute was coded in.
  e_vcard_attribute_remove_param(attribute, EVC_ENCODING);
  e_vcard_attribute_remove_param(attribute, "CHARSET");
  e_vcard_attribute_remove_values(attribute);
  for (const std::string& value : values) {
    e_vcard_attribute_add_value(attribute, value.c_str());
  }
}

EVCardAttribute* AddAttribute(EVCard* card, const char* name) {
  EVCardAttribute* const attribute = e_vcard_attribute_new(nullptr, name);
  e_vcard_append_attribute(card, attribute);
  return attribute;
}

EVCardAttribute* AddMember(EVCard* card, const Family& family) {
  EVCardAttribute* const attribute = AddAttribute(card, family.attribute);
  EVCardAttributeParam* const parameter = e_vcard_attribute_param_new(EVC_TYPE);
  for (const char* type : family.types) {
    if (type != nullptr) e_vcard_attribute_param_add_value(parameter, type);
  }
  e_vcard_attribute_add_param(attribute, parameter);
  return attribute;
}

std::string PhoneOrAddress(EVCardAttribute* attribute) {
  std::string value = ValueAt(attribute, 0);
  if (IsNamed(attribute, EVC_TEL) && g_ascii_strncasecmp(value.c_str(), "tel:", 4) == 0) {
    value.erase(0, 4);
  }
  return value;
}

// Says the places in the attributes where their order does not.
void MarkPlaces(EVCard* card, FamilyIndex index, const Places& places) {
  const std::vector<EVCardAttribute*> members = MembersOf(card, index);
  const bool ordered = PlacesOf(members, kFamilies[index].places, false) == places;
  for (EVCardAttribute* const member : members) {
    e_vcard_attribute_remove_param(member, kPlaceParameter);
    if (ordered) continue;
    const auto found = std::find(places.begin(), places.end(), member);
    const auto place = found == places.end() ? 0 : found - places.begin() + 1;
    e_vcard_attribute_add_param_with_value(member, e_vcard_attribute_param_new(kPlaceParameter),
                                           std::to_string(place).c_str());
  }
}

void WriteFamily(EVCard* card, FamilyIndex index, const ContactRecord& record,
                 const ContactTextSet& changed) {
  const Family& family = kFamilies[index];
  Places places = PlacesOf(MembersOf(card, index), family.places);
  bool written = false;
  for (std::size_t place = 0; place < family.places; ++place) {
    const std::size_t text = family.texts[place];
    if (!changed.test(text)) continue;
    written = true;
    if (record[text].empty()) {
      if (places[place] != nullptr) e_vcard_remove_attribute(card, places[place]);
      places[place] = nullptr;
      continue;
    }
    if (places[place] == nullptr) places[place] = AddMember(card, family);
    SetValues(places[place], {record[text]});
  }
  if (written) MarkPlaces(card, index, places);
}

EVCardAttribute* FindAttribute(EVCard* card, const char* name) {
  for (auto* attribute : Each<EVCardAttribute>(e_vcard_get_attributes(card))) {
    if (IsNamed(attribute, name)) return attribute;
  }
  return nullptr;
}

std::string ReadPart(EVCard* card, const char* name, guint part) {
  EVCardAttribute* const attribute = FindAttribute(card, name);
  return attribute == nullptr ? std::string() : ValueAt(attribute, part);
}

// Sets some of an attribute's parts; one that has no part left is taken away.
void WriteParts(EVCard* card, const char* name,
                const std::vector<std::pair<guint, std::string>>& parts, guint least) {
  EVCardAttribute* attribute = FindAttribute(card, name);
  std::vector<std::string> values;
  if (attribute != nullptr) {
    const guint count = g_list_length(e_vcard_attribute_get_values_decoded(attribute));
    for (guint part = 0; part < count; ++part) values.push_back(ValueAt(attribute, part));
  }
  values.resize(std::max<std::size_t>(values.size(), least));
  for (const auto& [part, text] : parts) values[part] = text;
  const bool empty = std::all_of(values.begin(), values.end(),
                                 [](const std::string& value) { return value.empty(); });
  if (empty) {
    if (attribute != nullptr) e_vcard_remove_attribute(card, attribute);
    return;
  }
  if (attribute == nullptr) attribute = AddAttribute(card, name);
  SetValues(attribute, values);
}

// Where N and ORG (RFC 2426 3.1.2, 3.5.5) have their parts.
struct Part {
  ContactProperty property;
  const char* attribute;
  guint part;
  guint parts;
};
constexpr Part kParts[] = {
    {ContactProperty::kLastName, EVC_N, 0, 5},
    {ContactProperty::kFirstName, EVC_N, 1, 5},
    {ContactProperty::kMiddleName, EVC_N, 2, 5},
    {ContactProperty::kCompanyName, EVC_ORG, 0, 1},
};

}  // namespace

ContactRecord ReadCard(EVCard* card) {
  ContactRecord record;
  for (const Part& part : kParts) {
    record[TextIndex(part.property)] = ReadPart(card, part.attribute, part.part);
  }
  std::string& fileAs = record[TextIndex(ContactProperty::kFileAs)];
  fileAs = ReadPart(card, kFileAs, 0);
  if (fileAs.empty()) fileAs = ReadPart(card, EVC_FN, 0);
  for (std::size_t index = 0; index < kFamilyCount; ++index) {
    const Family& family = kFamilies[index];
    const Places places = PlacesOf(MembersOf(card, static_cast<FamilyIndex>(index)), family.places);
    for (std::size_t place = 0; place < family.places; ++place) {
      if (places[place] != nullptr) {
        record[family.texts[place]] = PhoneOrAddress(places[place]);
      }
    }
  }
  return record;
}

std::string UidOf(EContact* contact) {
  const auto* const uid = static_cast<const gchar*>(e_contact_get_const(contact, E_CONTACT_UID));
  return uid == nullptr ? std::string() : std::string(uid);
}

void WriteCard(EVCard* card, const ContactRecord& record, const ContactTextSet& changed) {
  for (const Part& part : kParts) {
    const std::size_t text = TextIndex(part.property);
    if (changed.test(text)) {
      WriteParts(card, part.attribute, {{part.part, record[text]}}, part.parts);
    }
  }
  const std::size_t fileAs = TextIndex(ContactProperty::kFileAs);
  if (changed.test(fileAs)) {
    WriteParts(card, kFileAs, {{0, record[fileAs]}}, 1);
    // What other programs show as the contact's name.
    WriteParts(card, EVC_FN, {{0, record[fileAs]}}, 1);
  }
  for (std::size_t index = 0; index < kFamilyCount; ++index) {
    WriteFamily(card, static_cast<FamilyIndex>(index), record, changed);
  }
}

}  // namespace kelpin::device::contacts
