#pragma once

#include <cstdint>

#include "res/ids.h"
#include "sim/ril_ext_phonebook.h"

namespace kelpin::editor {

// What the card's two lists of names differ in.
struct NameFamily {
  // The card's file.
  std::uint32_t file;
  std::uint32_t (sim::RilExtPhonebook::*length)() const;  // of a record, bytes
  std::uint32_t (sim::RilExtPhonebook::*count)() const;

  // The list to edit.
  int listDialog;
  int listBar;
  int heading;
  int headingText;
  int list;
  int edit;
  int erase;
  std::uint32_t fillList;
  int noRecords;  // what stands in a list of a card without them

  // One of its names.
  int nameDialog;
  int nameBar;
  int nameLabel;
  int name;
  int save;
  int cancel;

  // The list to pick from.
  int picker;
  int pickerBar;
  int pickerList;
  int pickerOk;
  int pickerCancel;
  std::uint32_t fillPicker;
};

// EF_AAS (TS 31.102 4.4.2.10).
inline constexpr NameFamily kNumberNames = {
    .file = sim::kNumberNameFile,
    .length = &sim::RilExtPhonebook::NumberNameLength,
    .count = &sim::RilExtPhonebook::NumberNameCount,
    .listDialog = res::kDialogNumberNames,
    .listBar = res::kBarNumberNames,
    .heading = res::kNumberNamesHeader,
    .headingText = res::kStringEditNumberNames,
    .list = res::kNumberNamesList,
    .edit = res::kNumberNamesEdit,
    .erase = res::kNumberNamesErase,
    .fillList = res::kMessageFillNumberNames,
    .noRecords = res::kTextNoNumberNames,
    .nameDialog = res::kDialogEditNumberName,
    .nameBar = res::kBarEditNumberName,
    .nameLabel = res::kNumberNameLabel,
    .name = res::kNumberName,
    .save = res::kNumberNameSave,
    .cancel = res::kNumberNameCancel,
    .picker = res::kDialogNumberNamePicker,
    .pickerBar = res::kBarNumberNamePicker,
    .pickerList = res::kNumberNamePickerList,
    .pickerOk = res::kNumberNamePickerOk,
    .pickerCancel = res::kNumberNamePickerCancel,
    .fillPicker = res::kMessageFillNumberNamePicker,
};

// EF_GAS (TS 31.102 4.4.2.11).
inline constexpr NameFamily kGroupNames = {
    .file = sim::kGroupNameFile,
    .length = &sim::RilExtPhonebook::GroupNameLength,
    .count = &sim::RilExtPhonebook::GroupNameCount,
    .listDialog = res::kDialogGroupNames,
    .listBar = res::kBarGroupNames,
    .heading = res::kGroupNamesHeader,
    .headingText = res::kStringEditGroupNames,
    .list = res::kGroupNamesList,
    .edit = res::kGroupNamesEdit,
    .erase = res::kGroupNamesErase,
    .fillList = res::kMessageFillGroupNames,
    .noRecords = res::kTextNoGroupNames,
    .nameDialog = res::kDialogEditGroupName,
    .nameBar = res::kBarEditGroupName,
    .nameLabel = res::kGroupNameLabel,
    .name = res::kGroupName,
    .save = res::kGroupNameSave,
    .cancel = res::kGroupNameCancel,
    .picker = res::kDialogGroupPicker,
    .pickerBar = res::kBarGroupPicker,
    .pickerList = res::kGroupPickerList,
    .pickerOk = res::kGroupPickerOk,
    .pickerCancel = res::kGroupPickerCancel,
    .fillPicker = res::kMessageFillGroupPicker,
};

}  // namespace kelpin::editor
