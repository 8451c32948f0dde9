// Rule list files as an operator's editor, or chance, left them; and keywords entered on top.
#include "intake/rule_lists.h"

#include "base/text.h"
#include "intake/rule_matcher.h"
#include "tests/fuzz/fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ostrel;
  auto input = AsText(data, size);
  Workshop shop;
  auto& files = shop.files;
  SilentReporting reporting;
  SetupFields setup;
  TransmitStatus status;
  RuleLists lists({files, reporting, setup, status, shop.folder});
  const RuleMatcher rules(setup.SetupPriList);

  const auto name = ToUpper(TakePart(input));
  const std::string keyword(TakePart(input));
  for (const std::size_t list : {std::size_t{0}, kDiscardList, kCopiesList})
    files.WriteAll(fmt::format("{}/RtList{}.txt", shop.folder, list), TakePart(input));
  lists.LoadRuleLists();
  for (const std::size_t list : {std::size_t{1}, kCopiesList}) {
    setup.pri1inbox[list].Set(keyword);
    lists.AddKeyword(list);
  }
  rules.DiscardedBy(name);
  rules.CopiesOf(name);
  if (const auto target = rules.TargetOf(name))
    Demand(setup.SetupPriList[target->list].Contains(target->keyword), "the target is a rule");

  const auto reloaded = [&](const RuleTexts& texts) {
    SetupFields next;
    RuleLists loaded({files, reporting, next, status, shop.folder});
    loaded.SaveRuleLists(texts);
    loaded.LoadRuleLists();
    return loaded.Texts();
  };
  const auto once = reloaded(lists.Texts());
  Demand(once == reloaded(once), "what was saved is what is loaded");
  return 0;
}
