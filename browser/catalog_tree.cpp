#include "browser/catalog_tree.h"

#include <cstdint>
#include <vector>

#include "core/design_path.h"
#include "core/file_io.h"
#include "core/preferences.h"
#include "core/text.h"

namespace fennick {
namespace {

constexpr std::string_view kZipPrefix = "Zip:";

size_t LeadingTabs(std::string_view line) {
  const size_t tabs = line.find_first_not_of('\t');
  return tabs == std::string_view::npos ? line.size() : tabs;
}

// A design's text form: an absolute path (here it starts at '/', where a
// drive letter's colon came second), or a ZIP member. The prefix is taken in
// any case here, though the path's own parse wants it exact.
bool IsEntry(std::string_view line) {
  return line[0] == '/' || line[1] == ':' ||
         (line.size() >= kZipPrefix.size() && EqualsIgnoringCase(line.substr(0, 4), kZipPrefix));
}

}  // namespace

std::string SCatalogTree::CatalogFile() {
  const std::string folder = PreferenceStore().GetString("Settings", "Catalog Path", kCatalogPathDefault);
  if (folder.empty()) return {};
  DesignPath path;
  path.SetDirectory(folder);
  path.SetFileName(kCatalogFileName);
  return path.FullName();
}

void SCatalogTree::LoadCatalog() {
  const std::string file = CatalogFile();
  if (file.empty()) return;
  std::vector<uint8_t> bytes;
  if (ReadWholeFile(file, bytes) != FileRead::kOk) return;
  LoadCatalogText({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

void SCatalogTree::LoadCatalogText(std::string_view bytes) {
  if (bytes.empty()) return;
  DeleteAll();
  size_t baseDepth = 0;
  TreeItem current = 0;
  for (size_t start = 0, lineNumber = 0; start < bytes.size(); ++lineNumber) {
    size_t end = bytes.find('\n', start);
    if (end == std::string_view::npos) end = bytes.size();
    std::string_view line = bytes.substr(start, end - start);
    start = end + 1;
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);

    const size_t tabs = LeadingTabs(line);
    // The first line sets the depth of the roots, even when it is too short to be read.
    if (lineNumber == 0) baseDepth = tabs;
    if (line.size() < 2) continue;
    if (IsEntry(line)) {
      if (current != 0) Entries(current).emplace_back(line);
      continue;
    }

    // Deeper by more than one is one deeper; shallower than the roots is a root.
    const long depth = static_cast<long>(tabs) - static_cast<long>(baseDepth);
    TreeItem parent = 0;
    if (current != 0) {
      const long currentDepth = Depth(current);
      if (depth > currentDepth) {
        parent = current;
      } else {
        parent = Parent(current);
        for (long climb = currentDepth - depth; climb > 0 && parent != 0; --climb) parent = Parent(parent);
      }
    }
    current = Insert(parent, std::string(line.substr(tabs)));
  }

  if (!empty()) {
    const TreeItem first = Children(0).front();
    Select(first);
    SetExpanded(first, true);
  }
}

void SCatalogTree::AddToList(TreeItem item) {
  if (Sink() != nullptr) Sink()->AddEntries(item, Entries(item));
}

}  // namespace fennick
