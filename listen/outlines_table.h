// The table of outlines, as it stands in its file.
#pragma once

#include <string_view>

namespace ostrel {

extern const std::string_view kOutlinesTable;  // outlines.tsv

}  // namespace ostrel
