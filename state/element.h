// The names of elements that stand in an array, and the arrays of fields made under them.
#pragma once

#include <array>
#include <fmt/format.h>
#include <string>
#include <string_view>
#include <utility>

#include "base/priority.h"

namespace ostrel {

/// "PriorityList(3)": the name of an element of an array.
inline std::string ElementName(std::string_view array, std::size_t index) {
  return fmt::format("{}({})", array, index);
}

/// Makes the field of each priority, under the name of its element.
template <typename AnyField>
auto Element(const char* array) {
  return [array](Priority p) { return AnyField(ElementName(array, p.index())); };
}

template <typename AnyField, std::size_t... index>
std::array<AnyField, sizeof...(index)> ElementArray(const char* array,
                                                    std::index_sequence<index...> /*all*/) {
  return {AnyField(ElementName(array, index))...};
}

/// `count` fields under the names of their elements.
template <typename AnyField, std::size_t count>
std::array<AnyField, count> ElementArray(const char* array) {
  return ElementArray<AnyField>(array, std::make_index_sequence<count>{});
}

}  // namespace ostrel
