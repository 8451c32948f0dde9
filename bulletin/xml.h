// XML from strangers as a small tree: no document type, no entities but the five of XML itself,
// nothing fetched, bounded in depth and size.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

struct XmlElement {
  std::string name, nameSpace;
  std::string text;  // its own, blanks around it aside
  std::vector<XmlElement> children;

  /// The text of the first child of that name; empty where there is none.
  std::string_view TextOf(std::string_view child) const;
  std::vector<const XmlElement*> All(std::string_view child) const;
};

inline constexpr std::size_t kMostXmlElements = 20000;
inline constexpr int kDeepestXml = 16;

/// The root of `text`, UTF-8; nothing when it is not well-formed, has a document type, or more or
/// deeper elements than that.
std::optional<XmlElement> ReadXml(std::string_view text);

}  // namespace ostrel
