// The operator's buttons by name, as a told day presses them.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "station/actions.h"
#include "station/queue_operations.h"
#include "tests/support/words.h"

namespace ostrel {

/// Presses the button that the next word names. Returns what the windows answer, if anything.
inline std::string Press(Actions& a, Words& words) {
  std::string answer;
  const auto button = words.Next();
  const std::map<std::string, std::function<void()>> buttons = {
      {"setup", [&] { a.ShowSetup(); }},
      {"morse", [&] { a.SendMorseId(); }},
      {"log", [&] { a.ViewLogfile(); }},
      {"ingest", [&] { a.ShowIngest(); }},
      {"export", [&] { a.ExportSettings(); }},
      {"import", [&] { a.ImportSettings(); }},
      {"exit", [&] { a.Exit(); }},
      {"close", [&] { a.Close(); }},
      {"web", [&] { a.OpenWebSite(); }},
      {"mail", [&] { a.MailSupport(); }},
      {"readout", [&] { a.ToggleTimingReadout(); }},
      {"leave",
       [&] { answer = a.LeaveSetup() == SaveOutcome::kHidden ? "setup is left" : "setup stays"; }},
      {"add", [&] { a.AddKeyword(static_cast<std::size_t>(words.Number())); }},
      {"drop", [&] { a.RemoveKeywords(static_cast<std::size_t>(words.Number()), {0}); }},
      {"schedule",
       [&] { answer = a.AddScheduleEntry() == AfterEntry::kNothing ? "taken" : "refused"; }},
      {"unschedule", [&] { a.RemoveScheduleEntries(words.Positions()); }},
      {"edit", [&] { a.EditScheduleEntry(0); }},
      {"help", [&] { a.ShowScheduleHelp(); }},
      {"port", [&] { a.StepPort(Button::kLeft); }},
      {"baud", [&] { a.StepBaud(); }},
      {"stopbits", [&] { a.StepStopBits(); }},
      {"copies", [&] { a.StepCopies(Button::kLeft); }},
      {"files", [&] { a.StepCompFiles(Button::kLeft); }},
      {"priority", [&] { a.StepBlockPriority(); }},
      {"brask", [&] { a.BraskClicked(); }},
      {"tiltor", [&] { a.ByteBlasterClicked(); }},
      {"errors", [&] { a.ShowErrorsClicked(); }},
      {"delete",
       [&] {
         const Priority p(words.Number());
         a.RemoveQueued(p, words.Positions());
       }},
  };
  buttons.at(button)();
  return answer;
}

/// Asks for the operation that the next word names, as alice. Returns what was done, or why not.
inline std::string Ask(QueueOperations& o, Words& words) {
  const auto operation = words.Next(), name = words.Next(), number = words.Next();
  const Priority p(number.empty() ? 1 : std::stoi(number));
  const std::map<std::string, std::function<std::string()>> operations = {
      {"hold", [&] { return o.Hold("alice", name); }},
      {"release", [&] { return o.Release("alice", name); }},
      {"move", [&] { return o.Move("alice", name, p); }},
      {"top", [&] { return o.PutFirst("alice", name); }},
      {"delete", [&] { return o.Delete("alice", name); }},
      {"resend",
       [&] {
         return o.SendAgain("alice", {name, p, false, name, 1});
       }},
      {"pause", [&] { return o.PauseIntake("alice"); }},
      {"resume", [&] { return o.ResumeIntake("alice"); }},
  };
  try {
    return operations.at(operation)();
  } catch (const Failure& failure) {
    return "no: " + failure.text();
  }
}

}  // namespace ostrel
