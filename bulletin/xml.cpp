#include "bulletin/xml.h"

#include <libxml/parser.h>
#include <limits>
#include <memory>

namespace ostrel {
namespace {

std::string Text(const xmlChar* text) {
  return text == nullptr ? std::string{} : reinterpret_cast<const char*>(text);
}

std::string Trimmed(const std::string& text) {
  constexpr const char* kBlanks = " \t\r\n";
  const auto start = text.find_first_not_of(kBlanks);
  return start == std::string::npos
             ? std::string{}
             : text.substr(start, text.find_last_not_of(kBlanks) + 1 - start);
}

/// False for too many, too deep, or anything that is neither an element nor its text.
bool Copy(const xmlNode& node, XmlElement& element, int depth, std::size_t& count) {
  if (depth > kDeepestXml || ++count > kMostXmlElements) return false;
  element.name = Text(node.name);
  if (node.ns != nullptr) element.nameSpace = Text(node.ns->href);
  for (const auto* child = node.children; child != nullptr; child = child->next) {
    if (child->type == XML_TEXT_NODE || child->type == XML_CDATA_SECTION_NODE) {
      element.text += Text(child->content);
    } else if (child->type == XML_ELEMENT_NODE) {
      if (!Copy(*child, element.children.emplace_back(), depth + 1, count)) return false;
    } else if (child->type != XML_COMMENT_NODE && child->type != XML_PI_NODE) {
      return false;
    }
  }
  element.text = Trimmed(element.text);
  return true;
}

}  // namespace

std::string_view XmlElement::TextOf(std::string_view child) const {
  for (const auto& one : children) {
    if (one.name == child) return one.text;
  }
  return {};
}

std::vector<const XmlElement*> XmlElement::All(std::string_view child) const {
  std::vector<const XmlElement*> found;
  for (const auto& one : children) {
    if (one.name == child) found.push_back(&one);
  }
  return found;
}

std::optional<XmlElement> ReadXml(std::string_view text) {
  // Read as UTF-8 whatever it says of itself, so that no document type hides in another encoding.
  if (text.size() > std::numeric_limits<int>::max() || text.find("<!DOCTYPE") != text.npos)
    return std::nullopt;
  const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
      xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, "UTF-8",
                    XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING),
      xmlFreeDoc);
  const auto* const root = document ? xmlDocGetRootElement(document.get()) : nullptr;
  XmlElement element;
  std::size_t count = 0;
  return root != nullptr && Copy(*root, element, 1, count) ? std::optional(std::move(element))
                                                           : std::nullopt;
}

}  // namespace ostrel
