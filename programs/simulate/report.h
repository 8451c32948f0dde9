// The measures of a simulation for people and for other programs.
#pragma once

#include <string>

#include "programs/simulate/simulation.h"

namespace ostrel {

/// A table, a line for each priority that sent something or had something waiting.
std::string TableOf(const Measures& measures);
/// The same as comma-separated values, a line for each priority, times in seconds.
std::string CsvOf(const Measures& measures);
/// A picture of the queues' depth over time.
std::string SvgOf(const Measures& measures);

}  // namespace ostrel
