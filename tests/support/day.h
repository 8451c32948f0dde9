// A day of the station as tests/days tell it: a command, and what the station did until the next
// one, by the clock on its wall.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>

#include "base/text.h"
#include "settings/window_placement.h"
#include "tests/support/buttons.h"
#include "tests/support/virtual_station.h"
#include "tests/support/words.h"

namespace ostrel {

class Day : public VirtualStation {
 public:
  /// `head` is the first line of a day: "clock 11:59:50 -5".
  explicit Day(Words head) : Day(Lines{head.Next(), head.Next(), head.Next()}) {}
  ~Day() override {
    if (!machine.dialogs.hasEnded) station->Stop();
  }

  /// Gives one command; returns it with what happened.
  std::string Live(const std::string& command) {
    told_ = command + "\n";
    Do(command);
    TellMachine();
    return told_;
  }

 private:
  explicit Day(const Lines& head)
      : VirtualStation(std::chrono::floor<std::chrono::days>(kNoon) + TimeOf(head[1]) -
                           std::chrono::hours(std::stoi(head[2])),
                       {{UtcTime{}, std::chrono::hours(std::stoi(head[2]))}}) {
    files.isSorted = true;
    machine.history.isKept = true;
    machine.line.onWrite = [this](std::string_view bytes) { TellWritten(bytes); };
    files.onAppend = [this](std::string_view line) {
      Tell("log " + std::string(line.substr(9, 9)) + "|" + std::string(line.substr(18)));
    };
    Watch();
  }

  static milliseconds TimeOf(const std::string& clock) {
    return std::stoi(clock) * 1h + std::stoi(clock.substr(3)) * 1min +
           std::stoi(clock.substr(6)) * 1s;
  }

  void Do(const std::string& command) {
    Words words(command);
    const auto verb = words.Next();
    if (verb.empty() || verb == "clock" || verb[0] == '#') return;
    const auto known = verbs_.find(verb);
    if (known == verbs_.end()) throw std::runtime_error("a day does not know \"" + verb + "\"");
    known->second(words);
  }

  void MakeStation() override {
    watched_.clear();
    VirtualStation::MakeStation();
    Watch();
  }

  void Watch() {
    auto& m = window();
    auto& s = setup();
    for (auto* field : {&m.lblStatus2,
                        &m.lblActivefile,
                        &m.lblBlkPktNum,
                        &m.lblBlkPktTot,
                        &m.lblFilesSent,
                        &m.lblDataRate,
                        &m.lblCompressionRatio,
                        &m.lblThroughput,
                        &s.CWidenty,
                        &s.IDTime,
                        &s.CWSpeed,
                        &s.TimeLeft,
                        &s.LastId,
                        &s.lblOutPort,
                        &s.lblOutBaud,
                        &s.lblOutData,
                        &s.lblOutStop,
                        &s.lblOutParity,
                        &s.lblCommMesg,
                        &s.txtTxDelay,
                        &s.totdown,
                        &s.totup,
                        &s.lblCopies,
                        &s.Diddle,
                        &s.NameAs,
                        &s.txtIngestPath,
                        &s.txtPurgeTime,
                        &s.txtLogSize,
                        &s.CompFiles,
                        &s.BlockPriority,
                        &s.txtSchedule})
      Watch(*field);
    for (auto* box : {&s.chkBrask, &s.chkByteBlaster, &s.chkUnZipFiles, &s.chkLogDaily,
                      &s.chkShowErrors, &s.LogIt, &s.chkPacketHost})
      Watch(*box);
    for (auto* list : {&s.CompressList, &s.lstSchedule}) Watch(*list);
    for (auto* shade : {&m.lblActivefileBackColor, &m.lblDataRateBackColor}) Watch(*shade);
    watched_.push_back(m.imgActivity.OnChange([this](Light) { ++flickers_; }));
    for (auto& list : s.SetupPriList) Watch(list);
    for (auto& entry : s.pri1inbox) Watch(entry);
    for (const Priority p : AllPriorities()) {
      Watch(m.lblSending[p]);
      Watch(m.PriorityList[p]);
      Watch(s.chkOverWrite[p]);
      Watch(s.chkSendComp[p]);
    }
  }
  void Watch(Field<std::string>& field) {
    texts_[field.name()] = [&field](const std::string& text) { field.Set(text); };
    watched_.push_back(
        field.OnChange([&](const std::string& text) { Tell(field.name() + " = " + text); }));
  }
  template <typename Choice>
  void Watch(Field<Choice>& field) {
    texts_[field.name()] = [&field](const std::string& text) {
      field.Set(static_cast<Choice>(std::stoi(text)));
    };
    watched_.push_back(field.OnChange([&](Choice choice) {
      Tell(fmt::format("{} = {}", field.name(), static_cast<int>(choice)));
    }));
  }
  void Watch(ListField& list) {
    watched_.push_back(list.OnChange([&](const ListChange&) {
      Tell(fmt::format("{}: {}", list.name(), fmt::join(list, ", ")));
    }));
  }

  /// One line of what happened, behind what the machine has noted until then.
  void Tell(const std::string& what) {
    TellMachine();
    if (flickers_ > 0) Note(fmt::format("the light changes {} times", std::exchange(flickers_, 0)));
    Note(what);
  }

  void Note(const std::string& what) { Note(what, machine.clock.Now()); }
  void Note(std::string what, LocalTime time) {
    for (std::size_t at; (at = what.find(folder.path())) != std::string::npos;)
      what.replace(at, folder.path().size(), "~");
    std::replace(what.begin(), what.end(), '\n', '|');
    std::erase(what, '\r');
    while (what.ends_with('|')) what.pop_back();
    const std::chrono::hh_mm_ss clock(time - std::chrono::floor<std::chrono::days>(time));
    told_ += fmt::format("  {:02}:{:02}:{:02}.{:03} {}\n", clock.hours().count(),
                         clock.minutes().count(), clock.seconds().count(),
                         clock.subseconds().count(), what);
  }

  /// What the machine has noted since the last time.
  void TellMachine() {
    auto& line = machine.line;
    auto& dialogs = machine.dialogs;
    auto& desktop = machine.desktop;
    for (const auto& opening : std::exchange(line.openings, {})) Note("port opens " + opening);
    for (const auto& event : std::exchange(line.keying, {}))
      Note(fmt::format("key line {} {}", event.line, event.on ? "on" : "off"),
           machine.clock.Now() - (machine.clock.Monotonic() - event.at));
    for (const auto& bytes : std::exchange(machine.datagrams.sent, {}))
      Note(fmt::format("datagram {} of {} bytes to {}:{} {}", bytes.substr(0, 5), bytes.size(),
                       machine.datagrams.address, machine.datagrams.port,
                       machine.datagrams.configuration));
    for (const auto& [title, text, icon, buttons] : std::exchange(dialogs.messages, {}))
      Note(fmt::format("message {} [{}] {}{}", title, static_cast<int>(icon), text,
                       buttons == MessageButtons::kYesNo ? " (yes/no)" : ""));
    for (const auto& text : std::exchange(dialogs.errors, {})) Note("error window " + text);
    for (const auto& what : std::exchange(dialogs.asked, {})) Note(what);
    for (const auto& command : std::exchange(desktop.started, {}))
      Note(fmt::format("starts {}", fmt::join(command, " ")));
    for (const auto& title : std::exchange(desktop.restored, {})) Note("restores " + title);
    for (const auto& address : std::exchange(desktop.opened, {})) Note("opens " + address);
    const auto shown =
        fmt::format("windows:{}{}{}", dialogs.mainIsShown ? " main" : "",
                    dialogs.setupIsShown ? " setup" : "", dialogs.hasEnded ? " ended" : "");
    if (std::exchange(shown_, shown) != shown) Note(shown);
  }

  void TellWritten(std::string_view bytes) {
    if (bytes.empty()) return;
    if (bytes.size() != kReceivedPacket) return Tell(fmt::format("sends \"{}\"", bytes));
    const auto [packet, problems] = ReadPacket(bytes);
    Tell(fmt::format("sends {} {}/{} of {}{}", packet.name, packet.block, packet.count,
                     packet.stamp, fmt::join(problems, ", ")));
  }

  std::function<void()> Later(Words& words) {
    return [this, command = words.Rest()] {
      Tell("> " + command);
      Do(command);
    };
  }

  void Store(Words& words) {
    const auto key = words.Next();
    auto rows = StationSettings(setup(), station->values());
    for (auto& row : ScreenSettings()) rows.push_back(row);
    for (const auto& row : rows)
      if (row.key == key) return Set(key, words.Rest(), row.section);
    throw std::runtime_error("no setting " + key);
  }

  /// "fail delete 70 2 RtXmit": the step fails with that number, the next so many times, where the
  /// path holds that text.
  void Fail(Words& words) {
    auto step = words.Next();
    const int number = words.Number(), times = words.Number();
    const auto part = words.Rest();
    const auto isMeant = [part, left = std::make_shared<int>(times)](const std::string& path) {
      return path.find(part) != std::string::npos && (*left)-- > 0;
    };
    if (step == "copy") {
      files.copyFault = [=](auto&, const std::string& to) { return isMeant(to) ? number : 0; };
      return;
    }
    const std::map<std::string, FaultyFiles::Fault*> faults = {
        {"status", &files.statusFault}, {"lock", &files.lockFault},
        {"delete", &files.deleteFault}, {"read", &files.readFault},
        {"write", &files.writeFault},   {"append", &files.appendFault},
        {"rename", &files.renameFault}, {"link", &files.linkFault}};
    *faults.at(step) = [=](const std::string& path) {
      if (isMeant(path)) throw Failure(number, "as told");
    };
  }

  void Zip(Words& words) {
    const auto path = Path(words.Next());
    const auto member = words.Next();
    const TemporaryFolder bench;
    WriteFile(bench.path() + "/" + member, words.Content());
    const auto archive = archives.Create(path).writer;
    archive->Add(bench.path(), member);
    archive->Close();
  }

  /// What was stored since the last time.
  void TellStore() {
    for (const auto& [path, key, value, isRaw] : OpenAtRoot(stores)->List(kFamilyTree)) {
      const auto name = path.substr(std::string_view(kFamilyTree).size() + 1) + " " + key;
      const auto [known, isNew] = stored_.emplace(name, value);
      if (!isNew && std::exchange(known->second, value) == value) continue;
      Tell(fmt::format("stored {} = {}", name, value));
    }
  }

  /// The time of a file that the real machine wrote is not told.
  void TellFiles(const std::string& name) {
    for (const auto& file : Names(name)) {
      const auto [size, written] = realFiles.Status(Path(name + "/" + file));
      const bool isTold = written <= machine.clock.UtcNow();
      if (!file.starts_with("KvRegistry."))
        Tell(fmt::format("{} {} {}", file, size,
                         isTold ? FormatLogStamp(machine.clock.ToLocal(written)) : ""));
    }
  }

  /// What the history has learnt since the last time.
  void TellHistory() {
    const auto time = [&](const std::optional<UtcTime>& at) {
      return at ? FormatLogStamp(machine.clock.ToLocal(*at)).substr(9) : "-";
    };
    for (const auto& [id, row] : machine.history.rows) {
      const auto text =
          fmt::format("{} {} {} {}, {}x, {} {} {} {} {}{}{}", id, row.name, row.priority,
                      kFateWords[static_cast<std::size_t>(row.fate)], row.timesSent,
                      time(row.arrived), time(row.firstBlock), time(row.lastBlock), time(row.ended),
                      row.place, row.archive != 0 ? fmt::format("in {}", row.archive) : "",
                      row.resendOf != 0 ? fmt::format(" again {}", row.resendOf) : "");
      if (std::exchange(written_[id], text) != text) Tell(text);
    }
  }

  std::string told_, shown_;
  std::map<std::int64_t, std::string> written_;
  std::map<std::string, std::string> stored_;
  int flickers_ = 0;
  std::vector<Subscription> watched_;
  std::map<std::string, std::function<void(const std::string&)>> texts_;
  const std::map<std::string, std::function<void(Words&)>> verbs_ = {
      {"rule",
       [this](Words& w) {
         const auto list = static_cast<std::size_t>(w.Number());
         Rule(list, w.Rest());
       }},
      {"set", [this](Words& w) { Store(w); }},
      {"lay",
       [this](Words& w) {
         const auto path = Path(w.Next());
         WriteFile(path, w.Content());
       }},
      {"more",
       [this](Words& w) {
         const auto path = Path(w.Next());
         WriteFile(path, ReadFile(path) + "\r\n" + w.Rest());
       }},
      {"drop",
       [this](Words& w) {
         const auto name = w.Next();
         Drop(name, w.Content());
       }},
      {"zip", [this](Words& w) { Zip(w); }},
      {"age",
       [this](Words& w) {
         const auto path = Path(w.Next());
         realFiles.SetLastWriteTime(path, machine.clock.UtcNow() - w.Time());
       }},
      {"delete", [this](Words& w) { std::filesystem::remove_all(Path(w.Next())); }},
      {"link",
       [this](Words& w) {
         const auto to = Path(w.Next());
         std::filesystem::create_symlink(to, Path(w.Next()));
       }},
      {"start", [this](Words&) { Tell(station->Start() ? "started" : "not started"); }},
      {"restart", [this](Words&) { Restart(); }},
      {"stop", [this](Words&) { station->Stop(); }},
      {"kill",
       [this](Words&) {
         machine.line.Close();
         machine.dialogs.hasEnded = true;
       }},
      {"run", [this](Words& w) { Run(w.Time()); }},
      {"turn", [this](Words& w) { machine.clock.StepWallClock(w.Time()); }},
      {"enter",
       [this](Words& w) {
         const auto element = w.Next();
         const auto text = w.Rest();
         texts_.at(element)(text.starts_with("~/") ? Path(text.substr(2)) : text);
       }},
      {"press",
       [this](Words& w) {
         const auto answer = Press(station->actions(), w);
         if (!answer.empty()) Tell(answer);
       }},
      {"answer",
       [this](Words& w) {
         machine.dialogs.Answer(w.Next() == "yes" ? MessageAnswer::kYes : MessageAnswer::kNo);
       }},
      {"fail", [this](Words& w) { Fail(w); }},
      {"device", [this](Words& w) { machine.line.SetPresent(w.Next() == "back"); }},
      {"no",
       [this](Words& w) {
         const auto what = w.Next();
         if (what == "editor") machine.desktop.hasEditor = false;
         if (what == "first") machine.instance.isFirst = false;
         if (what == "port") machine.line.devices.clear();
       }},
      {"stuck",
       [this](Words& w) {
         (w.Next() == "lines" ? machine.line.lineFails : machine.line.writeFails) = true;
       }},
      {"window", [this](Words& w) { machine.desktop.windows.insert(w.Rest()); }},
      {"place",
       [this](Words& w) {
         machine.dialogs.placement = {1500, 2250, 7875, 6375, static_cast<WindowState>(w.Number())};
       }},
      {"in",
       [this](Words& w) {
         const auto at = machine.clock.Monotonic() + w.Time();
         machine.loop.OperatorAt(at, Later(w));
       }},
      {"meanwhile",  // also while the station hears no operator
       [this](Words& w) {
         const auto at = machine.clock.Monotonic() + w.Time();
         machine.clock.At(at, Later(w));
       }},
      {"store", [this](Words&) { TellStore(); }},
      {"history", [this](Words&) { TellHistory(); }},
      {"ask", [this](Words& w) { Tell(Ask(station->operations(), w)); }},
      {"files", [this](Words& w) { TellFiles(w.Next()); }},
      {"placed",
       [this](Words&) {
         const auto& p = machine.dialogs.placement;
         Tell(fmt::format("window at {} {} {} {} {}", p.left, p.top, p.width, p.height,
                          static_cast<int>(p.state)));
       }},
  };
};

}  // namespace ostrel
