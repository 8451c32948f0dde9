// The history of a virtual machine: rows in memory, where somebody wants to look at them.
#pragma once

#include <map>
#include <utility>

#include "platform/history.h"

namespace ostrel {

class VirtualHistory : public History {
 public:
  Earlier Begin(const HistoryTerms& /*terms*/) override {
    Earlier earlier;
    for (const auto& [id, row] : rows) {
      if (!row.ended) earlier.open.push_back(row);
      earlier.lastId = id;
    }
    return earlier;
  }
  void End() override {}
  std::unique_ptr<ProductContent> Open(const std::string& /*path*/) override { return nullptr; }
  void Put(const ProductRow& row, std::unique_ptr<ProductContent> /*content*/) override {
    if (isKept) rows[row.id] = row;
  }
  std::optional<HistoryNews> TakeNews() override { return std::exchange(news, std::nullopt); }

  bool isKept = false;
  std::optional<HistoryNews> news;
  std::map<std::int64_t, ProductRow> rows;  // by id
};

}  // namespace ostrel
