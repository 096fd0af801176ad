#pragma once

#include <cstdio>
#include <nlohmann/json.hpp>

#include "tests/card/hex.h"
#include "tests/contract/known_card.h"

namespace kelpin::contract {

// The known card as a card image.
inline nlohmann::json KnownImage() {
  nlohmann::json files = nlohmann::json::array();
  for (const KnownFile& file : KnownFiles()) {
    nlohmann::json records = nlohmann::json::array();
    for (const auto& record : file.records) records.push_back(device::card::ToHex(record));
    char id[5] = {};
    std::snprintf(id, sizeof(id), "%04X", file.id);
    files.push_back({{"id", id},
                     {"structure", "linearFixed"},
                     {"recordLength", file.recordLength},
                     {"recordCount", file.records.size()},
                     {"records", records}});
  }
  const nlohmann::json telecom = {{"id", "7F10"}, {"files", files}};
  const nlohmann::json pin = {{"code", "1234"}, {"enabled", false}};
  return {{"format", "kelpin card image 1"},
          {"protocol", "T0"},
          {"classes", "A0"},
          {"atr", "3B00"},
          {"pins", {{"pin1", pin}}},
          {"mf", {{"files", {telecom}}}}};
}

}  // namespace kelpin::contract
