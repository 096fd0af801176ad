#pragma once

#include <cstdint>

// Every number by which the program names a resource, in groups that number on their own: a string
// and a control may share a number, two controls of one dialog may not.
namespace kelpin::res {

// Strings with a number of their own in the string table. 5, 25, 39-41, 88-90, 101, 103, 118, 119,
// 124, 128, 129 and 142 have no text.
inline constexpr int kStringInfo = 1;
inline constexpr int kStringContactsAddedWithOverwritten = 2;
inline constexpr int kStringWarning = 3;
inline constexpr int kStringDeleteFromSimQuestion = 4;
inline constexpr int kStringOptionsExplanation = 6;
inline constexpr int kStringMobileTel = 7;
inline constexpr int kStringWorkTel = 8;
inline constexpr int kStringHomeTel = 9;
inline constexpr int kStringCompanyTel = 10;
inline constexpr int kStringWork2Tel = 11;
inline constexpr int kStringHome2Tel = 12;
inline constexpr int kStringRadioTel = 13;
inline constexpr int kStringPager = 14;
inline constexpr int kStringCarTel = 15;
inline constexpr int kStringAssistantTel = 16;
inline constexpr int kStringPhoneType = 17;
inline constexpr int kStringItem = 18;
inline constexpr int kStringDescription = 19;
inline constexpr int kStringTotalSize = 20;
inline constexpr int kStringEntryCount = 21;
inline constexpr int kStringMaxNameLength = 22;
inline constexpr int kStringMaxNumberLength = 23;
inline constexpr int kStringSmsCapacity = 24;
inline constexpr int kStringOwnNumbersHeader = 26;
inline constexpr int kStringEdit = 27;
inline constexpr int kStringMenu = 28;
inline constexpr int kStringErase = 29;
inline constexpr int kStringRefresh = 30;
inline constexpr int kStringNumberSign = 31;
inline constexpr int kStringAppTitle = 32;
inline constexpr int kStringMark = 33;
inline constexpr int kStringError = 34;
inline constexpr int kStringMyNo = 35;
inline constexpr int kStringName = 36;
inline constexpr int kStringPhone = 37;
inline constexpr int kStringNumberEmpty = 38;
inline constexpr int kStringNew = 42;
inline constexpr int kStringSimInformation = 43;
inline constexpr int kStringSimFailure = 44;
inline constexpr int kStringSimBusy = 45;
inline constexpr int kStringSimWrong = 46;
inline constexpr int kStringSimNotMessageCapable = 47;
inline constexpr int kStringSimToolkitBusy = 48;
inline constexpr int kStringSimDownloadError = 49;
inline constexpr int kStringSimNotInserted = 50;
inline constexpr int kStringPhSimPinRequired = 51;
inline constexpr int kStringPhFsimPinRequired = 52;
inline constexpr int kStringPhFsimPukRequired = 53;
inline constexpr int kStringSimPinRequired = 54;
inline constexpr int kStringSimPukRequired = 55;
inline constexpr int kStringIncorrectPassword = 56;
inline constexpr int kStringSimPin2Required = 57;
inline constexpr int kStringNetworkPinRequired = 58;
inline constexpr int kStringNetworkPukRequired = 59;
inline constexpr int kStringSubsetPinRequired = 60;
inline constexpr int kStringSubsetPukRequired = 61;
inline constexpr int kStringProviderPinRequired = 62;
inline constexpr int kStringProviderPukRequired = 63;
inline constexpr int kStringCorporatePinRequired = 64;
inline constexpr int kStringCorporatePukRequired = 65;
inline constexpr int kStringSimFull = 66;
inline constexpr int kStringInvalidIndex = 67;
inline constexpr int kStringEntryNotFound = 68;
inline constexpr int kStringMemoryFailure = 69;
inline constexpr int kStringMessageStorageFull = 70;
inline constexpr int kStringLocationEmpty = 71;
inline constexpr int kStringSimNotReady = 72;
inline constexpr int kStringSimNotReadyEither = 73;  // the same text for another code
inline constexpr int kStringBufferTooSmall = 74;
inline constexpr int kStringNotTextMessage = 75;
inline constexpr int kStringNoSim = 76;
inline constexpr int kStringNetworkError = 77;
inline constexpr int kStringMobileError = 78;
inline constexpr int kStringCommandUnsupported = 79;
inline constexpr int kStringBadParameter = 80;
inline constexpr int kStringUndeterminedError = 81;
inline constexpr int kStringRadioNotPresent = 82;
inline constexpr int kStringPhoneOff = 83;
inline constexpr int kStringErrorOccurs = 84;
inline constexpr int kStringForPocketPc = 85;
inline constexpr int kStringForSmartphone = 86;
inline constexpr int kStringVersion = 87;
inline constexpr int kStringNameTooLong = 91;
inline constexpr int kStringNumberTooLong = 92;
inline constexpr int kStringSaveToContacts = 93;
inline constexpr int kStringDelete = 94;
inline constexpr int kStringCall = 95;
inline constexpr int kStringNameLabel = 96;
inline constexpr int kStringNumberLabel = 97;
inline constexpr int kStringPhoneTypeLabel = 98;
inline constexpr int kStringMarkLabel = 99;
inline constexpr int kStringDeleteFromContactsQuestion = 100;
inline constexpr int kStringServiceNumbersHeader = 102;
inline constexpr int kStringCut = 104;
inline constexpr int kStringCopy = 105;
inline constexpr int kStringPaste = 106;
inline constexpr int kStringClear = 107;
inline constexpr int kStringSelectAll = 108;
inline constexpr int kStringLocationLabel = 109;
inline constexpr int kStringNumber2Label = 110;
inline constexpr int kStringEmailLabel = 111;
inline constexpr int kStringNotAvailable = 112;
inline constexpr int kStringNumber2Failed = 113;
inline constexpr int kStringEmailFailed = 114;
inline constexpr int kStringAddressBookUpdated = 115;
inline constexpr int kStringOverwriteContactQuestion = 116;
inline constexpr int kStringApplyToAll = 117;
inline constexpr int kStringOverwriteSimQuestion = 120;
inline constexpr int kStringContactsAdded = 121;
inline constexpr int kStringNumber3Label = 122;
inline constexpr int kStringNumber3Failed = 123;
inline constexpr int kStringEditItem = 125;
inline constexpr int kStringCallItem = 126;
inline constexpr int kStringSendItem = 127;
inline constexpr int kStringNotAllCopiedQuestion = 130;
inline constexpr int kStringNewSim = 131;
inline constexpr int kStringNewSimQuestion = 132;
inline constexpr int kStringEditNumberNames = 133;
inline constexpr int kStringEditGroupNames = 134;
inline constexpr int kStringDefaultName = 135;
inline constexpr int kStringGroupLabel = 136;
inline constexpr int kStringNoGroup = 137;
inline constexpr int kStringNicknameLabel = 138;
inline constexpr int kStringNicknameFailed = 139;
inline constexpr int kStringEllipsis = 140;
inline constexpr int kStringContact = 141;
inline constexpr int kStringNotAllMovedQuestion = 143;
inline constexpr int kStringNumber2Capacity = 144;
inline constexpr int kStringEmailCapacity = 145;
inline constexpr int kStringNameCutNotice = 146;
inline constexpr int kStringNameCutWarning = 147;  // the caption of that notice
inline constexpr int kStringCopyProgress = 148;

inline constexpr int kStringFirst = 1;
inline constexpr int kStringLast = 148;

// Further texts, numbered apart from the string table.
inline constexpr int kTextReadingCard = 1001;          // before the number of entries is known
inline constexpr int kTextReadingCardProgress = 1002;  // %d read, %d in all
inline constexpr int kTextNoEntries = 1003;
inline constexpr int kTextNoEntriesHint = 1004;
inline constexpr int kTextNoCard = 1005;
inline constexpr int kTextNoCardHint = 1006;
inline constexpr int kTextCardNotRead = 1007;
inline constexpr int kTextCardNotReadHint = 1008;
inline constexpr int kTextCardLocked = 1009;
inline constexpr int kTextCardLockedHint = 1010;
inline constexpr int kTextReadingContacts = 1011;
inline constexpr int kTextReadingContactsProgress = 1012;  // %d read, %d in all
inline constexpr int kTextNoContacts = 1013;
inline constexpr int kTextNoContactsHint = 1014;
inline constexpr int kTextContactsNotOpened = 1015;
inline constexpr int kTextContactsNotOpenedHint = 1016;
inline constexpr int kTextNoOwnNumbers = 1017;
inline constexpr int kTextNoServiceNumbers = 1018;
inline constexpr int kTextNoNumberNames = 1019;
inline constexpr int kTextNoGroupNames = 1020;
inline constexpr int kTextCallChooser = 1021;
inline constexpr int kTextSendChooser = 1022;
inline constexpr int kTextOptionsTitle = 1023;
inline constexpr int kTextContactsToDelete = 1024;  // names the list for a screen reader
inline constexpr int kTextNumberNames = 1025;       // the same
inline constexpr int kTextGroups = 1026;            // the same
inline constexpr int kTextAboutPurpose = 1027;
inline constexpr int kTextAboutCopyright = 1028;
inline constexpr int kTextAboutLicense = 1029;
inline constexpr int kTextMyNoTemplate = 1030;  // stands in the header until the program writes it
inline constexpr int kTextCounterTemplate = 1031;
inline constexpr int kTextDeletionCloseQuestion = 1032;  // %d deleted, %d in all
inline constexpr int kTextDeletionStopped = 1033;        // the same
inline constexpr int kTextEntriesUsed = 1034;            // %d used, %d in all
inline constexpr int kTextMessagesStored = 1035;         // %d stored, %d in all
inline constexpr int kTextOptionsNotStored = 1036;
inline constexpr int kTextContactsKept = 1037;      // %d contacts
inline constexpr int kTextCopyToSimStopped = 1038;  // %d done, %d in all

// The card's PIN, and its opening.
inline constexpr int kTextPinTitle = 1039;
inline constexpr int kTextPinWanted = 1040;
inline constexpr int kTextPinTriesLeft = 1041;
inline constexpr int kTextPinOneTryLeft = 1042;
inline constexpr int kTextPinLabel = 1043;
inline constexpr int kTextPinRefused = 1044;
inline constexpr int kTextPinDigits = 1045;
inline constexpr int kTextPinRefusedBefore = 1046;
inline constexpr int kTextPinLastTryQuestion = 1047;
inline constexpr int kTextCodeNotAnswered = 1048;
inline constexpr int kTextPukTitle = 1049;
inline constexpr int kTextPukWanted = 1050;
inline constexpr int kTextPukOneTryLeft = 1051;
inline constexpr int kTextPukLabel = 1052;
inline constexpr int kTextNewPinLabel = 1053;
inline constexpr int kTextNewPinAgainLabel = 1054;
inline constexpr int kTextPukRefused = 1055;
inline constexpr int kTextPukDigits = 1056;
inline constexpr int kTextPukRefusedBefore = 1057;
inline constexpr int kTextPukLastTryQuestion = 1058;
inline constexpr int kTextNewPinsDiffer = 1059;
inline constexpr int kTextBlockedForGood = 1060;
inline constexpr int kTextOpeningCard = 1061;
inline constexpr int kTextOpeningCardSlow = 1062;
inline constexpr int kTextNoChosenNumbers = 1063;
inline constexpr int kTextNoChosenNumbersHint = 1064;
inline constexpr int kTextCopyFromSimStopped = 1065;        // %d done, %d in all
inline constexpr int kTextCopyFromSimCloseQuestion = 1066;  // the same
inline constexpr int kTextSimEntriesKept = 1067;            // %d entries
inline constexpr int kTextServiceCodeQuestion = 1068;       // %s the number
inline constexpr int kTextNoNamedGroups = 1069;
inline constexpr int kTextNoNamedGroupsHint = 1070;

// Menus and soft keys: those texts that the string table does not number, and the keys shown.
inline constexpr int kTextMenuNumberNames = 1071;
inline constexpr int kTextMenuGroupNames = 1072;
inline constexpr int kTextMenuOwnNumbers = 1073;
inline constexpr int kTextMenuServiceNumbers = 1074;
inline constexpr int kTextMenuSimInformation = 1075;
inline constexpr int kTextMenuOptions = 1076;
inline constexpr int kTextMenuDeleteContacts = 1077;
inline constexpr int kTextMenuMoveToContacts = 1078;
inline constexpr int kTextMenuContactsToSim = 1079;
inline constexpr int kTextMenuMoveContactsToSim = 1080;
inline constexpr int kTextMenuTools = 1081;
inline constexpr int kTextMenuAbout = 1082;
inline constexpr int kTextMenuCheckAll = 1083;
inline constexpr int kTextMenuUncheckAll = 1084;
inline constexpr int kTextKeyCancel = 1085;
inline constexpr int kTextKeyDone = 1086;
inline constexpr int kTextKeyOk = 1087;
inline constexpr int kTextKeySave = 1088;
inline constexpr int kTextKeyYes = 1089;
inline constexpr int kTextKeyNo = 1090;
inline constexpr int kTextKeySelect = 1091;
inline constexpr int kTextKeyMove = 1092;
inline constexpr int kTextShortcutEdit = 1093;
inline constexpr int kTextShortcutDelete = 1094;
inline constexpr int kTextShortcutCall = 1095;
inline constexpr int kTextShortcutSelectAll = 1096;
inline constexpr int kTextShortcutRefresh = 1097;

// Further messages.
inline constexpr int kTextContactRefused = 1098;  // %d done, %d in all, %s the contact
inline constexpr int kTextEntryChangedQuestion = 1099;
inline constexpr int kTextReopenListHint = 1100;
inline constexpr int kTextChangeNotTaken = 1101;
inline constexpr int kTextChangeNotConfirmed = 1102;

inline constexpr int kTextFirst = 1001;
inline constexpr int kTextLast = 1102;

// Dialogs.
inline constexpr int kDialogGroupPicker = 103;
inline constexpr int kDialogMain = 201;
inline constexpr int kDialogNewEntry = 202;
inline constexpr int kDialogEditEntry = 203;
inline constexpr int kDialogAbout = 204;
inline constexpr int kDialogContactPicker = 205;
inline constexpr int kDialogOptions = 206;
inline constexpr int kDialogSimInformationList = 207;
inline constexpr int kDialogOwnNumbers = 208;
inline constexpr int kDialogSimInformationPage = 209;
inline constexpr int kDialogEditOwnNumber = 210;
inline constexpr int kDialogMarkEditor = 211;
inline constexpr int kDialogDeleteContacts = 212;
inline constexpr int kDialogServiceNumbers = 213;
inline constexpr int kDialogCallChooser = 214;
inline constexpr int kDialogSendChooser = 215;
inline constexpr int kDialogNotAllPrompt = 216;
inline constexpr int kDialogEditNumberName = 217;
inline constexpr int kDialogOverwritePrompt = 356;
inline constexpr int kDialogNumberNames = 368;
inline constexpr int kDialogGroupNames = 371;
inline constexpr int kDialogEditGroupName = 373;
inline constexpr int kDialogNumberNamePicker = 375;
inline constexpr int kDialogCopyProgress = 379;

// Soft-key bars.
inline constexpr int kBarCopyPicker = 301;
inline constexpr int kBarOwnNumbers = 302;
inline constexpr int kBarOk = 303;
inline constexpr int kBarOptions = 304;
inline constexpr int kBarAbout = 305;
inline constexpr int kBarEditOwnNumber = 306;
inline constexpr int kBarDeleteContacts = 307;
inline constexpr int kBarServiceNumbers = 308;
inline constexpr int kBarMain = 309;
inline constexpr int kBarNewEntry = 310;
inline constexpr int kBarEditEntry = 311;
inline constexpr int kBarMarkEditor = 342;
inline constexpr int kBarOverwritePrompt = 359;
inline constexpr int kBarCallChooser = 362;
inline constexpr int kBarSendChooser = 363;
inline constexpr int kBarNotAllPrompt = 366;
inline constexpr int kBarNumberNames = 369;
inline constexpr int kBarGroupNames = 370;
inline constexpr int kBarEditNumberName = 372;
inline constexpr int kBarEditGroupName = 374;
inline constexpr int kBarNumberNamePicker = 376;
inline constexpr int kBarGroupPicker = 377;
inline constexpr int kBarMovePicker = 378;

// Drawings.
inline constexpr int kPictureAbout = 352;
inline constexpr int kIconApplication = 353;

// Controls of the main list.
inline constexpr int kMainList = 1000;
inline constexpr int kMainHeader = 1001;

// New entry.
inline constexpr int kNewNameLabel = 1002;
inline constexpr int kNewName = 1004;
inline constexpr int kNewNicknameLabel = 2004;
inline constexpr int kNewNickname = 2005;
inline constexpr int kNewNumberLabel = 1003;
inline constexpr int kNewNumber = 1005;
inline constexpr int kNewNumber2Label = 1061;
inline constexpr int kNewNumber2 = 1062;
inline constexpr int kNewNumber2Button = 2012;
inline constexpr int kNewNumber3Label = 1065;
inline constexpr int kNewNumber3 = 1066;
inline constexpr int kNewNumber3Button = 2011;
inline constexpr int kNewEmailLabel = 1063;
inline constexpr int kNewEmail = 1064;
inline constexpr int kNewGroupLabel = 2008;
inline constexpr int kNewGroup = 2009;
inline constexpr int kNewGroupButton = 2010;

// Edit entry.
inline constexpr int kEditLocationLabel = 1055;
inline constexpr int kEditLocation = 1056;
inline constexpr int kEditNameLabel = 1007;
inline constexpr int kEditName = 1012;
inline constexpr int kEditNicknameLabel = 2006;
inline constexpr int kEditNickname = 2007;
inline constexpr int kEditNumberLabel = 1009;
inline constexpr int kEditNumber = 1018;
inline constexpr int kEditNumber2Label = 1057;
inline constexpr int kEditNumber2 = 1058;
inline constexpr int kEditNumber2Button = 2013;
inline constexpr int kEditNumber3Label = 1067;
inline constexpr int kEditNumber3 = 1068;
inline constexpr int kEditNumber3Button = 2014;
inline constexpr int kEditEmailLabel = 1059;
inline constexpr int kEditEmail = 1060;
inline constexpr int kEditGroupLabel = 2015;
inline constexpr int kEditGroup = 2016;
inline constexpr int kEditGroupButton = 2017;

// About.
inline constexpr int kAboutIcon = 1006;
inline constexpr int kAboutVersion = 1008;
inline constexpr int kAboutTitle = 1010;
inline constexpr int kAboutPurpose = 1011;
inline constexpr int kAboutPlatform = 1013;
inline constexpr int kAboutCopyright = 1014;
inline constexpr int kAboutLicense = 1016;
inline constexpr int kAboutPicture = 1027;

// Contacts to SIM, and its options.
inline constexpr int kContactPickerList = 1015;
inline constexpr int kContactPickerCounter = 1040;
inline constexpr int kOptionsList = 1017;
inline constexpr int kOptionsTitle = 1019;
inline constexpr int kOptionsExplanation = 1020;

// SIM information, as a list and as a page.
inline constexpr int kInformationList = 1022;
inline constexpr int kInformationHeader = 1024;
inline constexpr int kInformationTotalLabel = 1035;
inline constexpr int kInformationTotal = 1037;
inline constexpr int kInformationEntriesLabel = 1039;
inline constexpr int kInformationEntries = 1041;
inline constexpr int kInformationNameLabel = 1042;
inline constexpr int kInformationName = 1043;
inline constexpr int kInformationNumber2Label = 1049;
inline constexpr int kInformationNumber2 = 1050;
inline constexpr int kInformationNumberLabel = 1044;
inline constexpr int kInformationNumber = 1045;
inline constexpr int kInformationEmailLabel = 1051;
inline constexpr int kInformationEmail = 1052;
inline constexpr int kInformationSmsLabel = 1046;
inline constexpr int kInformationSms = 1047;
inline constexpr int kInformationEntriesText = 2030;  // in both; names the bar
inline constexpr int kInformationEntriesBar = 2031;
inline constexpr int kInformationMessagesText = 2032;  // the same
inline constexpr int kInformationMessagesBar = 2033;

// Own numbers, and one of them.
inline constexpr int kOwnNumbersList = 1028;
inline constexpr int kOwnNumbersHeader = 1031;
inline constexpr int kOwnNumberNameLabel = 1021;
inline constexpr int kOwnNumberName = 1023;
inline constexpr int kOwnNumberNumberLabel = 1025;
inline constexpr int kOwnNumberNumber = 1026;

// Mark editor.
inline constexpr int kMarkTypeLabel = 1030;
inline constexpr int kMarkType = 1033;
inline constexpr int kMarkTextLabel = 1036;
inline constexpr int kMarkText = 1038;

// Delete Contacts, service numbers, call and send.
inline constexpr int kDeleteContactsList = 1029;
inline constexpr int kDeleteContactsLabel = 1075;  // never shown; names the list
inline constexpr int kServiceNumbersHeader = 1032;
inline constexpr int kServiceNumbersList = 1034;
inline constexpr int kCallChooserLabel = 1069;
inline constexpr int kCallChooserList = 1070;
inline constexpr int kSendChooserLabel = 1073;
inline constexpr int kSendChooserList = 1074;

// Prompts and progress.
inline constexpr int kNotAllText = 1079;
inline constexpr int kNotAllApplyToAll = 1080;
inline constexpr int kOverwriteText = 357;
inline constexpr int kOverwriteApplyToAll = 358;
inline constexpr int kProgressBar = 2022;
inline constexpr int kProgressStatus = 2023;

// Number names and group names.
inline constexpr int kNumberNamesHeader = 1085;
inline constexpr int kNumberNamesList = 1088;
inline constexpr int kGroupNamesHeader = 1089;
inline constexpr int kGroupNamesList = 1092;
inline constexpr int kNumberNameLabel = 2000;
inline constexpr int kNumberName = 2001;
inline constexpr int kGroupNameLabel = 2002;
inline constexpr int kGroupName = 2003;
inline constexpr int kNumberNamePickerList = 2018;
inline constexpr int kNumberNamePickerLabel = 2020;  // never shown; names the list
inline constexpr int kGroupPickerList = 2019;
inline constexpr int kGroupPickerLabel = 2021;  // never shown; names the list

// Commands every dialog knows.
inline constexpr int kOk = 1;
inline constexpr int kCancel = 2;

// Commands of the main list.
inline constexpr int kCommandNew = 312;
inline constexpr int kCommandMenu = 313;
inline constexpr int kCommandEdit = 314;
inline constexpr int kCommandDelete = 315;
inline constexpr int kCommandCall = 316;
inline constexpr int kCommandSaveToContacts = 317;
inline constexpr int kCommandContactsToSim = 318;
inline constexpr int kCommandSelectAll = 319;
inline constexpr int kCommandRefresh = 320;
inline constexpr int kCommandAbout = 322;
inline constexpr int kCommandOwnNumbers = 323;
inline constexpr int kCommandSimInformation = 324;
inline constexpr int kCommandOptions = 325;
inline constexpr int kCommandDeleteContacts = 345;
inline constexpr int kCommandServiceNumbers = 348;
inline constexpr int kCommandSend = 1076;
inline constexpr int kCommandNumberNames = 1083;
inline constexpr int kCommandGroupNames = 1084;
inline constexpr int kCommandMoveToContacts = 1107;
inline constexpr int kCommandMoveContactsToSim = 1108;
inline constexpr int kCommandCopyNumber = 0x7401;
inline constexpr int kCommandDeleteNext = 0x7402;  // in no menu: a deletion goes on
inline constexpr int kCommandListSaved = 0x7403;   // in no menu: saved entries are listed
inline constexpr int kCommandMoveNext = 0x7404;    // in no menu: a move to Contacts goes on

// Commands of an edit's pop-up.
inline constexpr int kCommandEditCut = 768;
inline constexpr int kCommandEditCopy = 769;
inline constexpr int kCommandEditPaste = 770;
inline constexpr int kCommandEditClear = 771;
inline constexpr int kCommandEditSelectAll = 0x7400;

// Commands of the other dialogs.
inline constexpr int kNewEntryDone = 326;
inline constexpr int kNewEntryCancel = 327;
inline constexpr int kEditEntryDone = 330;
inline constexpr int kEditEntryCancel = 331;
inline constexpr int kCopyPickerDone = 328;
inline constexpr int kCopyPickerCancel = 329;
inline constexpr int kCopyPickerMenu = 1048;
inline constexpr int kCopyPickerCheckAll = 1049;
inline constexpr int kCopyPickerUncheckAll = 1050;
inline constexpr int kMovePickerMove = 1110;
inline constexpr int kMovePickerMenu = 1111;
inline constexpr int kMovePickerCheckAll = 1112;
inline constexpr int kMovePickerUncheckAll = 1113;
inline constexpr int kMovePickerCancel = 1114;
inline constexpr int kOwnNumbersEdit = 332;
inline constexpr int kOwnNumbersMenu = 333;
inline constexpr int kOwnNumbersErase = 334;
inline constexpr int kOwnNumbersRefresh = 335;
inline constexpr int kOptionsOk = 337;
inline constexpr int kOptionsEdit = 342;
inline constexpr int kAboutDone = 338;
inline constexpr int kViewOk = 339;
inline constexpr int kOwnNumberSave = 340;
inline constexpr int kOwnNumberCancel = 341;
inline constexpr int kMarkSave = 343;
inline constexpr int kMarkCancel = 344;
inline constexpr int kDeleteContactsDelete = 346;
inline constexpr int kDeleteContactsCancel = 347;
inline constexpr int kDeleteContactsMenu = 349;
inline constexpr int kDeleteContactsCheckAll = 1053;
inline constexpr int kDeleteContactsUncheckAll = 1054;
inline constexpr int kServiceNumbersCall = 350;
inline constexpr int kServiceNumbersClose = 351;
inline constexpr int kOverwriteYes = 360;
inline constexpr int kOverwriteNo = 361;
inline constexpr int kCallChooserCall = 1071;
inline constexpr int kCallChooserCancel = 1072;
inline constexpr int kSendChooserSelect = 1077;
inline constexpr int kSendChooserCancel = 1078;
inline constexpr int kNotAllYes = 1081;
inline constexpr int kNotAllNo = 1082;
inline constexpr int kNumberNamesEdit = 1086;
inline constexpr int kNumberNamesErase = 1087;
inline constexpr int kGroupNamesEdit = 1090;
inline constexpr int kGroupNamesErase = 1091;
inline constexpr int kNumberNameSave = 1093;
inline constexpr int kNumberNameCancel = 1094;
inline constexpr int kGroupNameSave = 1095;
inline constexpr int kGroupNameCancel = 1096;
inline constexpr int kNumberNamePickerOk = 1097;
inline constexpr int kNumberNamePickerCancel = 1098;
inline constexpr int kGroupPickerOk = 1102;
inline constexpr int kGroupPickerCancel = 1106;

// Messages a dialog is sent or posts to itself.
inline constexpr std::uint32_t kMessageScrollReset = 0x0402;  // after a settings change; 1, 1
inline constexpr std::uint32_t kMessageStartWatchers = 0x0464;
inline constexpr std::uint32_t kMessageFillContactPicker = 0x0465;
inline constexpr std::uint32_t kMessageFillOptions = 0x0466;
inline constexpr std::uint32_t kMessageStartOwnNumbers = 0x0467;
inline constexpr std::uint32_t kMessageFillDeleteContacts = 0x0468;
inline constexpr std::uint32_t kMessageFillServiceNumbers = 0x0469;
inline constexpr std::uint32_t kMessageStartCopy = 0x046A;
inline constexpr std::uint32_t kMessageFillSendChooser = 0x046B;
inline constexpr std::uint32_t kMessageFillNumberNames = 0x046C;
inline constexpr std::uint32_t kMessageFillGroupNames = 0x046D;
inline constexpr std::uint32_t kMessageFillNumberNamePicker = 0x046E;
inline constexpr std::uint32_t kMessageFillGroupPicker = 0x046F;
inline constexpr std::uint32_t kMessageFillCallChooser = 0x0470;
inline constexpr std::uint32_t kMessageSetBusy = 0x0471;  // low word of the second: 1 busy
inline constexpr std::uint32_t kMessageResolveOwnNumbers = 0x0472;

}  // namespace kelpin::res
