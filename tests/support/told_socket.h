// A station's socket whose questions a test asks.
#pragma once

#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "platform/local_socket.h"
#include "tests/support/virtual_station.h"

namespace ostrel {

using Json = nlohmann::json;

struct ToldSocket : LocalSocket {
  void OnLine(std::function<void(Asker, std::string_view)> call) override { ask = call; }
  void Open(const std::string& where) override {
    if (fails) throw Failure(57, where + " cannot be opened");
    path = where;
  }
  std::string AccountOf(Asker asker) override { return asker == 1 ? "alice" : "bob"; }
  void Close() override { path.clear(); }
  void Send(Asker asker, std::string_view line) override { sent[asker].emplace_back(line); }

  Json Ask(const std::string& question, Asker asker = 1) {
    ask(asker, question);
    return Json::parse(sent[asker].back());
  }
  Json Status() { return Ask(R"({"ask":"status"})"); }

  std::function<void(Asker, std::string_view)> ask;
  std::map<Asker, Lines> sent;
  std::string path;
  bool fails = false;
};

}  // namespace ostrel
