// The tables beside the code, as they stand in their files.
#pragma once

#include <string_view>

namespace ostrel {

extern const std::string_view kCodesTable;  // codes.tsv
extern const std::string_view kAreasTable;  // areas.tsv

}  // namespace ostrel
