// Morse tables, texts and speeds.
#include "ident/morse_code.h"
#include "tests/fuzz/fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ostrel;
  auto input = AsText(data, size);
  const auto speed = TakePart(input);
  const auto text = TakePart(input);
  const int factor = TimingFactor(speed);
  Demand(factor >= 1 && factor <= 100'000, "a usable timing factor");
  constexpr std::size_t kMostOfOne = 7;  // six columns and a gap
  const auto elements = MorseElements(text, JoinMorseTable(input));
  Demand(elements.size() <= 3 + kMostOfOne * text.size(), "no more than the code of each sign");
  for (const char symbol : elements) {
    const auto step = KeyingOf(symbol, factor);
    Demand(step.on >= milliseconds(0) && step.off >= milliseconds(0), "times that can be waited");
  }
  return 0;
}
