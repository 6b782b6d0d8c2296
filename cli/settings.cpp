#include <charconv>
#include <iostream>
#include <optional>

#include "cli/commands.h"
#include "core/format_table.h"
#include "core/preferences.h"
#include "core/text.h"

namespace fennick::cli {
namespace {

// A value's place: KEY is [TREE:]SECTION/NAME, the tree being main (the
// default), profile or resize; without a '/' the name is a value of the
// tree's own key ("resize:MaxSL").
struct Key {
  PreferenceTree tree = PreferenceTree::kMain;
  std::string section;
  std::string name;
};

struct TreeName {
  const char* prefix;
  PreferenceTree tree;
};
constexpr TreeName kTrees[] = {
    {"main", PreferenceTree::kMain}, {"profile", PreferenceTree::kProfile}, {"resize", PreferenceTree::kResize}};

// The sections that `list` shows, by tree.
struct ListedSection {
  PreferenceTree tree;
  const char* section;
};
constexpr ListedSection kListedSections[] = {
    {PreferenceTree::kMain, "Settings"},      {PreferenceTree::kMain, "Conversion"},
    {PreferenceTree::kMain, "FennickPlugin"}, {PreferenceTree::kMain, "Workspace"},
    {PreferenceTree::kMain, "BkgColors"},     {PreferenceTree::kProfile, "Directories"},
    {PreferenceTree::kResize, ""},
};

std::optional<Key> ParseKey(const std::string& text) {
  Key key;
  std::string rest = text;
  if (const size_t colon = text.find(':'); colon != std::string::npos) {
    const std::string prefix = AsciiLower(text.substr(0, colon));
    bool known = false;
    for (const TreeName& tree : kTrees) {
      if (prefix == tree.prefix) {
        key.tree = tree.tree;
        known = true;
      }
    }
    if (!known) return std::nullopt;
    rest = text.substr(colon + 1);
  }
  if (const size_t slash = rest.rfind('/'); slash != std::string::npos) {
    key.section = rest.substr(0, slash);
    key.name = rest.substr(slash + 1);
  } else {
    key.name = rest;
  }
  if (key.name.empty()) return std::nullopt;
  return key;
}

std::string KeyText(PreferenceTree tree, const std::string& section, const std::string& name) {
  std::string text;
  for (const TreeName& entry : kTrees) {
    if (entry.tree == tree && tree != PreferenceTree::kMain) text = std::string(entry.prefix) + ":";
  }
  return text + (section.empty() ? "" : section + "/") + name;
}

std::optional<PreferenceValue> FindValue(const Key& key) {
  for (PreferenceValue& value : PreferenceStore(key.tree).Values(key.section)) {
    if (EqualsIgnoringCase(value.name, key.name)) return std::move(value);
  }
  return std::nullopt;
}

std::string ValueText(const PreferenceValue& value) {
  return value.isNumber ? std::to_string(static_cast<int32_t>(value.number)) : "\"" + value.text + "\"";
}

// A signed 32-bit decimal, or 0x and up to eight hexadecimal digits.
std::optional<int32_t> ParseNumber(const std::string& text) {
  const char* begin = text.data();
  const char* end = begin + text.size();
  if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
    uint32_t value = 0;
    const auto [stop, error] = std::from_chars(begin + 2, end, value, 16);
    if (error != std::errc() || stop != end) return std::nullopt;
    return static_cast<int32_t>(value);
  }
  int32_t value = 0;
  const auto [stop, error] = std::from_chars(begin, end, value);
  if (error != std::errc() || stop != end || text.empty()) return std::nullopt;
  return value;
}

std::string OnOff(int32_t word) { return word != 0 ? "on" : "off"; }

void ListConversion() {
  std::cout << "conversion (stored values over the built-in rows):\n"
            << FormatText("  %-6s %-11s %-6s %-5s %-6s %-7s %-9s %s\n", "format", "hoop (mm)", "rotate", "both",
                          "shrink", "shrink%", "stitches", "colours");
  ConversionSettings settings;
  for (int code = kFormatPes; code <= kFormatVip; ++code) {
    ReadConversion(AsciiLower(FormatExtension(code)), settings);
    const std::string hoop = std::to_string(settings.hoopWidth) + " x " + std::to_string(settings.hoopHeight);
    const std::string stitches = settings.splitStitches != 0 ? std::to_string(settings.stitchLimit) : "off";
    const std::string colours = settings.splitColors != 0 ? std::to_string(settings.colorLimit) : "off";
    std::cout << FormatText("  %-6s %-11s %-6s %-5s %-6d %-7d %-9s %s\n", AsciiLower(FormatExtension(code)).c_str(),
                            hoop.c_str(), OnOff(settings.rotate).c_str(), OnOff(settings.bothOrientations).c_str(),
                            settings.shrink, settings.shrinkPercent, stitches.c_str(), colours.c_str());
  }
  std::cout << "  pes5 " << settings.pes5 << ", pestrim " << settings.ensureTrims << "\n";
}

void ListStored() {
  std::cout << "stored:\n";
  bool any = false;
  for (const ListedSection& listed : kListedSections) {
    for (const PreferenceValue& value : PreferenceStore(listed.tree).Values(listed.section)) {
      std::cout << "  " << KeyText(listed.tree, listed.section, value.name) << " = " << ValueText(value) << "\n";
      any = true;
    }
  }
  if (!any) std::cout << "  (nothing: every value has its default)\n";
}

}  // namespace

int RunSettings(const Arguments& arguments) {
  const std::string action = arguments.empty() ? "list" : arguments[0];
  const size_t expected = action == "list" ? 1 : action == "get" ? 2 : action == "set" ? 3 : 0;
  if (expected == 0 || arguments.size() > expected || (arguments.size() < expected && action != "list")) {
    ReportError("settings", "expected list, get KEY or set KEY VALUE");
    return 2;
  }
  if (action == "list") {
    ListConversion();
    ListStored();
    return 0;
  }
  const std::optional<Key> key = ParseKey(arguments[1]);
  if (!key) {
    ReportError(arguments[1], "not a key: [main:|profile:|resize:]SECTION/NAME");
    return 2;
  }
  const std::optional<PreferenceValue> stored = FindValue(*key);
  if (action == "get") {
    if (!stored) {
      ReportError(arguments[1], "not stored: the reader's default applies");
      return 1;
    }
    std::cout << (stored->isNumber ? std::to_string(static_cast<int32_t>(stored->number)) : stored->text) << "\n";
    return 0;
  }
  // A stored value keeps its type; a new one is a number when it reads as one.
  const std::string& text = arguments[2];
  const std::optional<int32_t> number = ParseNumber(text);
  const PreferenceStore store(key->tree);
  if (stored ? stored->isNumber : number.has_value()) {
    if (!number) {
      ReportError(arguments[1], "holds a number, not \"" + text + "\"");
      return 2;
    }
    store.SetInt(key->section, key->name, *number);
  } else {
    store.SetString(key->section, key->name, text);
  }
  // Writes fail silently in the store; reading back tells.
  if (!FindValue(*key)) {
    ReportError(arguments[1], "could not be stored in " + store.FilePath().string());
    return 1;
  }
  return 0;
}

}  // namespace fennick::cli
