// The catalog tree: categories of designs read from a text file, so that
// designs on removable media can be found without the medium in the drive.
// Ticking a category puts its entries into the design list. The file is made
// elsewhere; this tree only reads it, once.
#pragma once

#include <string>
#include <string_view>

#include "browser/tick_tree.h"

namespace fennick {

inline constexpr char kCatalogFileName[] = "Catalog.SV";
inline constexpr char kCatalogPathDefault[] = "C:\\Program Files\\Selvane\\Brindlemoor\\";
inline constexpr char kCatalogStatusText[] = "Click on name to select a category.";

class SCatalogTree : public TickTree {
 public:
  explicit SCatalogTree(DesignListSink* sink = nullptr) : TickTree(sink) {}

  // Reads the catalog file of the "Catalog Path" folder. A path that is
  // empty, or a file that is missing or empty, leaves the tree as it was.
  void LoadCatalog();
  // The file's bytes: one line each category or entry, TABs giving the depth.
  // Empty bytes leave the tree as it was.
  void LoadCatalogText(std::string_view bytes);
  // The catalog file's path, from the stored folder; empty when none is set.
  static std::string CatalogFile();

  void ClearCategories() { ClearTicks(); }
  // The browser shows the "Catalog" tab only for a catalog with categories.
  bool HasCatalogTab() const { return !empty(); }

 protected:
  void AddToList(TreeItem item) override;
};

}  // namespace fennick
