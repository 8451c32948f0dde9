// What listeners are shown, kept up to date while products come in. One thread adds products and
// looks at the clock; any number of others read.
#pragma once

#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

#include "listen/hearing.h"
#include "listen/home.h"
#include "listen/kept_products.h"
#include "listen/page.h"
#include "web/web_server.h"

namespace ostrel {

class ListenersPage {
 public:
  /// Reads what lies in `folder` already. Throws std::filesystem::filesystem_error.
  ListenersPage(std::filesystem::path folder, Home home);

  void Heard();           // a packet
  void Lost(int blocks);  // damaged or missing ones
  /// A product that lies in the folder as `name` now.
  void Add(const std::string& name, std::string_view data);
  /// Finds out what is in force now, where that can have changed. To be called about once a second.
  void Look();

  /// What is in force at home, as of the last look, the newest first.
  std::vector<ShownEvent> AtHome() const;

  /// Adds the page and what belongs to it to `server`, which must not outlive it.
  void Route(WebServer& server);

 private:
  ListenersView MakeView(UtcTime now) const;
  Hearing::Figures Figures() const;
  WebResponse Page() const;
  WebResponse News() const;
  WebResponse Product(const std::string& path) const;
  WebResponse Picture(const std::string& path) const;
  std::optional<std::string> ContentAt(const std::string& path) const;

  const Home home_;
  Hearing hearing_;
  mutable std::mutex mutex_;
  KeptProducts products_;
  std::vector<ShownEvent> atHome_;
  std::string content_;
  int version_ = 0;
  bool isFresh_ = false;  // nothing came since the last look
  std::chrono::steady_clock::time_point lookedAt_;
};

}  // namespace ostrel
