// Pictures from the air: what a browser may be given to draw.
#pragma once

#include <cstddef>
#include <string_view>

namespace ostrel {

/// A picture with more points, or of a greater width or height, is not shown: few bytes can say
/// that they are many, and drawing them takes the memory of a telephone.
inline constexpr std::size_t kMostPoints = 40'000'000;
inline constexpr std::size_t kLongestSide = 20'000;

/// "image/gif", "image/png" or "image/jpeg" by the first bytes, where the picture's own header
/// tells a size within these limits; empty for all else, whatever its name is.
std::string_view PictureTypeOf(std::string_view bytes);

}  // namespace ostrel
