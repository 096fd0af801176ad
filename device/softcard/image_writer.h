#pragma once

#include <string>

#include "device/softcard/card_image.h"

namespace kelpin::device::softcard {

// The JSON text of a card image, one line a record, members in a fixed order: an image that was
// written here reads and writes back byte for byte.
//
//   format        "kelpin card image 1"
//   note          free text; also in files and beside records
//   protocol      "T0" (61xx, 6Cxx, 9Fxx, GET RESPONSE) or "T1" (data at once)
//   classes       "A0" (SIM), "00" (UICC), "both", "first" (the first command's, until a reset)
//   atr           hex
//   delayMs       least time a command takes, 0..60000
//   searchRecord  false: SEARCH RECORD and SEEK are unknown instructions
//   pathSelect    false: SELECT by path is refused
//   channels      logical channels beside the basic one, 0..3
//   pins          pin1, pin2, adm: code, enabled, tries (left), puk, pukTries (left)
//   mf            files: a list of
//     directories   name, id or aid, note, fcp, files
//     files         name, id, note, fcp, sfi (0: none; absent: from the id), invalidated,
//                   access (read, update, deactivate, activate: ALW PIN1 PIN2 ADM NEV), and
//                   structure "transparent": data; "linearFixed", "cyclic": recordLength,
//                   recordCount, fill (a free record, hex; FF throughout when absent), records
//                   (hex, "" for a free one, {"hex", "note"} for one with a note; the free ones
//                   at the end are left out); or link: the path of the file it shows.
std::string WriteImage(const CardImage& image);

}  // namespace kelpin::device::softcard
