// Follows each product from its arrival to its end and hands its row to the history. On its way a
// product is known by the place of its file; while a queue lists it, its entry carries its row.
// Fill files are none.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/priority.h"
#include "base/reporting.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/history.h"
#include "state/program_values.h"
#include "state/setup_fields.h"
#include "state/transmit_status.h"

namespace ostrel {

class ProductHistory {
 public:
  struct Parts {
    History& store;
    Files& files;
    Clock& clock;
    Reporting& reporting;
    const SetupFields& setup;
    TransmitStatus& status;
    const ProgramValues& values;
  };
  explicit ProductHistory(const Parts& parts) : parts_(parts) {}

  /// Before what an earlier run left comes back: reads what it knew. A store that cannot be used
  /// costs a log line; nothing is followed in this run then.
  void Begin();
  /// Once that is back: files whose rows a crash left behind find them again by their products. A
  /// row without a file ends unknown.
  void Settle();
  void End();

  /// A received file, before its scan moves or deletes it.
  struct Arrival {
    ProductRow row;
    std::unique_ptr<ProductContent> content;
  };
  Arrival Receive(const std::string& path, const std::string& name);
  /// It lies at `path` now, in the holding folder of that number.
  void Place(Arrival arrival, int folder, const std::string& path);
  void End(Arrival arrival, Fate fate);

  // A product that no queue lists, by the place of its file; unknown ones are passed over
  void Move(const std::string& from, const std::string& to);
  void EndAt(const std::string& path, Fate fate, std::int64_t archive = 0);
  /// The file at `from` went to the quarantine, to `to`. Its product ends, be it one that nobody
  /// knew until now.
  void SetAside(const std::string& from, const std::string& to, const std::string& name);

  /// A queue has taken the product whose file was at `source` as `file`, and records it as
  /// `record`. One that nobody received has a row from now on.
  ProductRow Enter(Priority p, const std::string& source, const std::string& file,
                   const std::string& record);
  /// A product leaves its queue for the place of its file.
  void Leave(ProductRow row, const std::string& path, Fate fate);
  /// A product is to be sent once more: a row of its own.
  void Repeat(Priority p, const std::string& name, std::int64_t resendOf, const std::string& path);

  // The row of an entry
  void Begins(ProductRow& row);
  void End(ProductRow& row, Fate fate);
  void Put(const ProductRow& row) { Put(row, nullptr); }

  /// True for the name or path of the fill text, which is no product.
  bool IsFill(std::string_view file) const;

 private:
  void Put(const ProductRow& row, std::unique_ptr<ProductContent> content);
  void TellNews();
  ProductRow NewRow(const std::string& name);
  void Adopt(const std::string& folder, int priority);
  std::string InDataRoot(const std::string& path) const;

  Parts parts_;
  bool isOn_ = false;
  std::string begunAnew_;  // what the status says of a store that was, while it works
  std::int64_t lastId_ = 0;
  std::map<std::string, ProductRow> places_;  // by the place of the file
  std::vector<ProductRow> strayed_;           // whose files a start did not find, oldest first
};

}  // namespace ostrel
