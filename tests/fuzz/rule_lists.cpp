// Rule list files as an operator's editor, or chance, left them; and keywords entered on top.
#include "base/text.h"
#include "intake/routing_rules.h"
#include "platform/virtual/virtual_desk.h"
#include "tests/fuzz/fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ostrel;
  auto input = AsText(data, size);
  FilesInMemory files;
  VirtualDialogs dialogs;
  SilentReporting reporting;
  Setup setup;
  const std::string folder = "/station";
  RoutingRules rules({files, dialogs, reporting, setup, folder});

  const auto name = ToUpper(TakePart(input));
  const std::string keyword(TakePart(input));
  for (const std::size_t list : {std::size_t{0}, kDiscardList, kCopiesList})
    files.WriteAll(fmt::format("{}/RtList{}.txt", folder, list), TakePart(input));
  rules.LoadRuleLists();
  for (const std::size_t list : {std::size_t{1}, kCopiesList}) {
    setup.pri1inbox[list].Set(keyword);
    rules.AddKeyword(list);
  }
  rules.DiscardedBy(name);
  rules.CopiesOf(name);
  if (const auto target = rules.TargetOf(name))
    Demand(setup.SetupPriList[target->list].Contains(target->keyword), "the target is a rule");

  const auto kept = [&] {
    rules.SaveRuleLists();
    rules.LoadRuleLists();
    std::vector<std::vector<std::string>> lists;
    for (const auto& list : setup.SetupPriList) lists.emplace_back(list.begin(), list.end());
    return lists;
  };
  const auto once = kept();
  Demand(once == kept(), "what was saved is what is loaded");
  return 0;
}
