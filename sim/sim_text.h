#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

// Text and numbers as card files hold them (TS 51.011, TS 31.102, alphabet of TS 23.038), and what
// an edit field may take. Pure functions, any thread; flags are 1 and 0. No call allocates more
// than its result, reads past a span or writes past one.
namespace kelpin::sim {

// Characters ---------------------------------------------------------------------------------

inline constexpr int kCharNotGsm = 0;
inline constexpr int kCharGsmDefault = 1;    // one septet
inline constexpr int kCharGsmExtension = 2;  // an escape and one septet

// 1 when every character is in the GSM default alphabet or its extension table; so is no text.
int IsGsmText(std::u16string_view text);
// One of the kChar… values, which is also the septets the character takes.
int GsmCharClass(char16_t character);
// 1 for '0' to '9', '*', '#', '+' and a small 'p'.
int IsDialChar(char16_t character);
// 1 when every character is below U+0100; so is no text.
int FitsOneByte(std::u16string_view text);

// Alpha fields -------------------------------------------------------------------------------

inline constexpr int kAlphaUcs2 = 0;  // any other mode is UCS-2 as well
inline constexpr int kAlphaGsm = 1;
inline constexpr int kAlphaAutomatic = 2;  // GSM where IsGsmText, else UCS-2

// Bytes that hold any encoded text of up to 512 characters.
inline constexpr std::size_t kAlphaWorkSize = 1024;

// Encodes `text` from the start of `out`; `written` is how many bytes. Bytes beyond them keep what
// the caller filled in, 0xFF for a card record.
//
// UCS-2: 0x80 and as many characters, high byte first, as outSize / 2 - 1 allows; `text` is cut to
// them. GSM: the whole text whatever `outSize` is, so `out` is a work buffer (kAlphaWorkSize) of
// which the caller sends the record's length; a character of neither table is written as its low
// byte. 1, or 0 with nothing written or cut when `out` cannot take it, or has no room for the 0x80.
int EncodeAlpha(std::u16string& text, std::span<std::uint8_t> out, std::size_t outSize, int mode,
                std::size_t& written);

// The text of an alpha field of `length` bytes. 0, and no text, for the forms that begin with 0x81
// to 0xFE. The text ends at the padding, at a character that is not one, and before U+0000.
// `enableAscii`: the setting; the card may then hold ASCII (and the Latin code page above it) in
// place of the GSM alphabet, told apart by whether 0x00 or 0x40 comes first.
int DecodeAlpha(std::span<const std::uint8_t> record, std::u16string& out, std::size_t length,
                bool enableAscii);

// A card's answer carries a header before the record.
inline constexpr std::size_t kResponseHeaderSize = 16;
// Number part of an ADN-type record: length, TON/NPI, ten of BCD, capability, extension.
inline constexpr std::size_t kAdnNumberPartSize = 14;

// The alpha field at the start of the record in `response`: all of the record but its number part.
// At most `limit` characters. Pass 0 for `numberPartSize` where the record is nothing but an alpha
// field (number names, group names). Result as DecodeAlpha; never ASCII.
int DecodeAlphaRaw(std::span<const std::uint8_t> response, std::u16string& out,
                   std::size_t recordLength, std::size_t limit,
                   std::size_t numberPartSize = kAdnNumberPartSize);

// Numbers ------------------------------------------------------------------------------------

inline constexpr std::uint8_t kTonInternational = 0x91;
inline constexpr std::uint8_t kTonUnknown = 0x81;
inline constexpr std::size_t kBcdBytes = 10;  // of one record; 20 digits
inline constexpr std::size_t kAnrNumberSize = 13;
inline constexpr std::size_t kExtNumberSize = 12;

// In place: takes out every '+', makes 'W' and 'w' a 'p'. 1 when there was a '+'.
int PrepareDialString(std::u16string& text);

// The encoders run `text` through PrepareDialString and then put one '+' in front where there was
// any. 1, or 0 with `text` and the output untouched when the digits are more than the record or
// `outSize` takes. Bytes beyond the digits keep what the caller filled in.

// Bytes 0 to 12 of a record of EF_ANR: no name id, length, TON/NPI, BCD (TS 31.102 4.4.2.9).
int EncodeAnrNumber(std::u16string& text, std::span<std::uint8_t> out, std::size_t outSize);
// Bytes 0 to 11 of a record of EF_EXT1: type 2, length, BCD (TS 31.102 4.4.2.4).
int EncodeExtNumber(std::u16string& text, std::span<std::uint8_t> out, std::size_t outSize);
// A whole record of the EF_ADN form: 0xFF everywhere, `alpha` in automatic mode, the number part in
// the last 14 bytes. A UCS-2 name is cut to the field, in `alpha` as well. 0 also when the record
// is shorter than a number part or `record` than `recordLength`, or a GSM name is longer than the
// alpha field.
int EncodeAdnRecord(std::span<std::uint8_t> record, std::u16string& alpha, std::u16string& number,
                    std::size_t recordLength, std::size_t alphaLength);

// The decoders read at most ten bytes of BCD, and no more than `limit` digits where there is one.

// The number of a record of EF_ANR. An international one has its '+' at the start, or after the
// second run of '*' and '#': "*21*+1234#".
void DecodeAnrNumber(std::span<const std::uint8_t> record, std::u16string& out, std::size_t limit);
// The digits of a record of EF_EXT1.
void DecodeExtNumber(std::span<const std::uint8_t> record, std::u16string& out, std::size_t limit);
// The number of a record of the EF_ADN form in `response`; an international one begins with '+'.
void DecodeAdnNumber(std::span<const std::uint8_t> response, std::u16string& out,
                     std::size_t recordLength, std::size_t limit);
// The digits of an extension record in `response`.
void DecodeExtRaw(std::span<const std::uint8_t> response, std::u16string& out);

// Texts of the contacts store ----------------------------------------------------------------

inline constexpr std::size_t kNumberTextLimit = 256;

// In place, the first 256 characters: full-width digits, '#', '*', '+', 'P' and 'p' become the
// plain ones, either letter a 'p'.
void FoldFullWidth(std::u16string& text);
// In place: keeps the dial characters of the first 256 and nothing after them.
void KeepDialChars(std::u16string& text);
// The UCS-2 cut for a field of `bytes`: when they are no more than twice the text's length it is
// left with bytes / 2 - 1 characters. The length before.
std::size_t CutToBytes(std::u16string& text, std::size_t bytes);

// Edit fields --------------------------------------------------------------------------------

enum class EditFilter {
  kEmail,      // GSM text that fits the field's limit in septets
  kOwnNumber,  // dial characters, '+' as the first alone
  kNumber,     // dial characters
};

inline constexpr int kEditUpdateNotification = 0x400;
inline constexpr int kNewEmailControl = 1064;
inline constexpr int kEditEmailControl = 1060;
inline constexpr int kOwnNumberControl = 1026;
inline constexpr std::size_t kFilterTextLimit = 512;

EditFilter EditFilterOf(int control);

// What `filter` leaves of the first 512 characters. `limit` is the field's text limit in septets,
// 0 for none; a character that does not fit is dropped and a shorter one after it may still fit.
std::u16string FilterEditText(EditFilter filter, std::u16string_view text, std::size_t limit);

// For an edit's notification: the text to set in place of `text`, with the caret to go to its end.
// None when the notification is not that of an update or nothing is to be dropped.
std::optional<std::u16string> FilterEditInput(int notification, int control,
                                              std::u16string_view text, std::size_t limit);

}  // namespace kelpin::sim
