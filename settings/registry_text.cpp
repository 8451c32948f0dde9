#include "settings/registry_text.h"

#include <algorithm>
#include <fmt/format.h>
#include <set>

#include "base/failure.h"
#include "base/text.h"
#include "base/utf8.h"
#include "settings/settings_table.h"
#include "settings/spelled_out_text.h"

namespace ostrel {

namespace {

constexpr auto kMostLevels = 512;  // as many as a registry has

std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted += '"';
}

/// A text that is no UTF-8 (a path in another code page, say) has its bytes spelled out.
std::string Notation(const StoredValue& value) {
  if (value.isRaw) return value.value;
  return IsUtf8(value.value) ? Quoted(value.value) : SpellOut(value.value);
}

bool StartsWithPath(std::string_view path, std::string_view tree) {
  return ToUpper(path.substr(0, tree.size())) == ToUpper(tree) &&
         (path.size() == tree.size() || path[tree.size()] == '\\');
}

/// A path below the root as this station keeps it; empty when it is not of the family's tree. On a
/// 64-bit system the registry keeps the tree of a 32-bit program one level down.
std::string PathInTree(std::string_view key) {
  constexpr std::string_view kRedirected = "Software\\Wow6432Node\\Corvain";
  const std::string root = std::string(kRootName) + '\\';
  if (ToUpper(key.substr(0, root.size())) != ToUpper(root)) return {};
  key.remove_prefix(root.size());
  for (const std::string_view tree : {std::string_view(kFamilyTree), kRedirected}) {
    if (StartsWithPath(key, tree)) return kFamilyTree + std::string(key.substr(tree.size()));
  }
  return {};
}

bool HasDriveLetter(std::string_view text) {
  const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
  return text.size() > 2 && isLetter(text[0]) && text[1] == ':' &&
         (text[2] == '\\' || text[2] == '/');
}

/// dword:0000000a, hex:01,02 or hex(7):01,02 and nothing else.
bool IsNumberNotation(std::string_view raw) {
  const auto colon = raw.find(':');
  if (colon == std::string_view::npos) return false;
  const auto kind = raw.substr(0, colon), digits = raw.substr(colon + 1);
  if (kind == "dword")
    return digits.size() == 8 &&
           digits.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
  return (kind == "hex" || (kind.starts_with("hex(") && kind.ends_with(')'))) && BytesOf(digits);
}

/// Walks the text once, element by element.
class RegistryReader {
 public:
  explicit RegistryReader(std::string_view text) : text_(text) {}

  RegistryImport Read() {
    RefuseNul();
    const auto header = RestOfLine();
    isOld_ = header == kOldRegistryHeader;
    if (header != kRegistryHeader && !isOld_) Refuse("no registry file");
    while (!AtEnd()) ReadElement();
    return std::move(import_);
  }

 private:
  /// No text of a registry holds one, and a store would end its text there.
  void RefuseNul() {
    const auto nul = text_.find('\0');
    if (nul == std::string_view::npos) return;
    at_ = nul;
    Refuse("a NUL character");
  }

  void ReadElement() {
    SkipWhile(" \t\r\n");
    if (AtEnd()) return;
    switch (text_[at_]) {
      case ';':
        RestOfLine();
        return;
      case '[':
        ReadKey();
        return;
      default:
        ReadValue();
    }
  }

  void ReadKey() {
    auto key = RestOfLine();
    if (key.size() < 3 || key.back() != ']') Refuse("a key without its closing bracket");
    key = key.substr(1, key.size() - 2);
    if (std::count(key.begin(), key.end(), '\\') >= kMostLevels) Refuse("a key too deep");
    hasKey_ = true;
    path_ = PathInTree(key);
    if (key.starts_with('-')) {
      import_.leftOut.push_back(fmt::format("deletion of the key {}", key.substr(1)));
    } else if (path_.empty()) {
      import_.leftOut.push_back(fmt::format("the key {} of another tree", key));
    }
  }

  void ReadValue() {
    if (!hasKey_) Refuse("a value before the first key");
    StoredValue value{path_, ReadName(), "", false};
    Expect('=');
    if (AtEnd()) Refuse("a value that is cut off");
    if (text_[at_] == '"') {
      value.value = ReadQuoted();
      ExpectEndOfLine();
    } else {
      value.value = ReadRaw();
      value.isRaw = true;
      TakeSpelledOutText(value);
    }
    Take(std::move(value));
  }

  /// Some registry editors write every text as its bytes.
  void TakeSpelledOutText(StoredValue& value) const {
    if (!value.value.starts_with(kSpelledOut)) return;
    const auto digits = std::string_view(value.value).substr(kSpelledOut.size());
    if (auto text = isOld_ ? SpelledOutAscii(digits) : SpelledOutText(digits)) {
      value.value = std::move(*text);
      value.isRaw = false;
    }
  }

  std::string ReadName() {
    if (text_[at_] == '@') {
      ++at_;
      return "";
    }
    return ReadQuoted();
  }

  std::string ReadQuoted() {
    Expect('"');
    std::string result;
    while (!AtEnd() && text_[at_] != '"') {
      if (text_[at_] == '\\') ++at_;
      if (AtEnd()) break;
      result += text_[at_++];
    }
    Expect('"');
    return result;
  }

  /// dword:0000000a, hex:01,02,\ with its continuation lines, or - for a deletion.
  std::string ReadRaw() {
    std::string raw;
    for (;;) {
      const auto line = TrimBlanks(RestOfLine());
      raw.append(line);
      if (!raw.ends_with('\\')) break;
      raw.pop_back();
      SkipWhile(" \t");
      if (AtEnd()) Refuse("a value that is cut off");
    }
    if (raw != "-" && !IsNumberNotation(raw)) Refuse("a value of no known kind");
    return raw;
  }

  void Take(StoredValue value) {
    if (path_.empty()) return;
    const auto name = fmt::format("{}\\{}", path_, value.name);
    if (value.isRaw && value.value == "-") {
      import_.leftOut.push_back("deletion of the value " + name);
    } else if (isOld_ && value.isRaw && value.value.starts_with(kSpelledOut)) {
      import_.leftOut.push_back(name + ", a text in a code page that the file does not name");
    } else if (!value.isRaw && HasDriveLetter(value.value)) {
      import_.leftOut.push_back(
          fmt::format("{} = {}, a path of another system", name, value.value));
    } else {
      import_.values.push_back(std::move(value));
    }
  }

  bool AtEnd() const { return at_ >= text_.size(); }

  void SkipWhile(std::string_view characters) {
    at_ = std::min(text_.find_first_not_of(characters, at_), text_.size());
  }

  std::string_view RestOfLine() {
    const auto end = std::min(text_.find_first_of("\r\n", at_), text_.size());
    const auto line = text_.substr(at_, end - at_);
    at_ = end;
    if (text_.substr(at_).starts_with("\r\n")) ++at_;
    at_ = std::min(at_ + 1, text_.size());
    return TrimBlanks(line);
  }

  void Expect(char c) {
    if (AtEnd() || text_[at_] != c) Refuse(fmt::format("{} is missing", c));
    ++at_;
  }

  void ExpectEndOfLine() {
    if (!RestOfLine().empty()) Refuse("something behind a value");
  }

  [[noreturn]] void Refuse(std::string_view what) const {
    const auto line = 1 + std::count(text_.begin(), text_.begin() + static_cast<long>(at_), '\n');
    throw Failure(failure_number::kTypeMismatch, fmt::format("line {}: {}", line, what));
  }

  std::string_view text_;
  std::size_t at_ = 0;
  bool isOld_ = false;  // the form of the file
  bool hasKey_ = false;
  std::string path_;  // of the present key, empty when it is not of the tree
  RegistryImport import_;
};

/// Opens the key `path`, and before it those that it lies in: a reader makes none of itself.
void AppendKey(std::string& text, const std::string& path, std::set<std::string>& written) {
  for (auto end = path.find('\\', std::string_view(kFamilyTree).size());;
       end = path.find('\\', end + 1)) {
    const auto key = path.substr(0, end);
    if (written.insert(ToUpper(key)).second)
      text += fmt::format("{0}[{1}\\{2}]{0}", kLineEnd, kRootName, key);
    if (end == std::string::npos) return;
  }
}

}  // namespace

std::string FormatRegistryText(const std::vector<StoredValue>& values) {
  std::string text = fmt::format("{}{}", kRegistryHeader, kLineEnd);
  std::set<std::string> written;
  const std::string* under = nullptr;  // the key whose values are being written
  for (const auto& value : values) {
    const bool isBack =
        written.contains(ToUpper(value.keyPath)) && under && *under != value.keyPath;
    if (isBack) text += fmt::format("{0}[{1}\\{2}]{0}", kLineEnd, kRootName, value.keyPath);
    AppendKey(text, value.keyPath, written);
    under = &value.keyPath;
    text += fmt::format("{}={}{}", value.name.empty() ? "@" : Quoted(value.name), Notation(value),
                        kLineEnd);
  }
  return text.append(kLineEnd);
}

RegistryImport ParseRegistryText(std::string_view text) {
  return RegistryReader(text).Read();
}

}  // namespace ostrel
