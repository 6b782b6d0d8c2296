#include "browser/catalog_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "core/preferences.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

TreeItem Item(const TickTree& tree, const std::string& text) {
  for (const TreeItem item : tree.DepthFirst()) {
    if (tree.Text(item) == text) return item;
  }
  ADD_FAILURE() << "no item " << text;
  return 0;
}

// The tree in walking order: dots for depth, then the text and its entries.
std::string Dump(const TickTree& tree) {
  std::string dump;
  for (const TreeItem item : tree.DepthFirst()) {
    if (!dump.empty()) dump += " | ";
    dump += std::string(static_cast<size_t>(tree.Depth(item)), '.') + tree.Text(item);
    for (size_t i = 0; i < tree.Entries(item).size(); ++i) dump += (i == 0 ? "=" : ",") + tree.Entries(item)[i];
  }
  return dump;
}

std::string States(const TickTree& tree) {
  std::string states;
  for (const TreeItem item : tree.DepthFirst()) states += std::to_string(tree.State(item));
  return states;
}

// Logs what reaches the list and the view, owners by their item texts.
class Recorder : public DesignListSink, public TickTreeObserver {
 public:
  int32_t AddFolder(TreeItem, const std::string&) override { return 0; }
  int32_t AddEntries(TreeItem owner, const std::vector<std::string>& paths) override {
    EXPECT_EQ(paths, TreeOf(owner).Entries(owner));
    Log("+", owner);
    return static_cast<int32_t>(paths.size());
  }
  void RemoveOwner(TreeItem owner) override { Log("-", owner); }
  void ClearAll() override { log += " clear"; }
  void TreeEnabled(bool enabled) override { log += enabled ? " on" : " off"; }
  void ListRedraw() override { log += " redraw"; }

  std::vector<const TickTree*> trees;
  std::string log;

 private:
  const TickTree& TreeOf(TreeItem owner) const {
    return **std::find_if(trees.begin(), trees.end(), [&](const TickTree* tree) { return tree->Contains(owner); });
  }
  void Log(const char* what, TreeItem owner) { log += std::string(" ") + what + TreeOf(owner).Text(owner); }
};

TEST(CatalogTreeTest, LoadsLinesIntoCategories) {
  const std::vector<std::pair<const char*, const char*>> cases = {
      // This system's own paths start at the root.
      {"Designs\n/home/ann/rose.pes\n", "Designs=/home/ann/rose.pes"},
      // CR LF line ends; a ZIP member with its volume label.
      {"Flowers\r\nC:\\Designs\\rose.pes\r\n\tSummer\r\nZip:D:\\Packs\\summer.zip:sun\\sun01.pes\tCard Pack 3\r\n",
       "Flowers=C:\\Designs\\rose.pes | .Summer=Zip:D:\\Packs\\summer.zip:sun\\sun01.pes\tCard Pack 3"},
      // The first line sets the roots' depth; shallower lines climb no higher than the roots.
      {"\t\tAA\n\t\t\tBB\n\tCC\nDD\n", "AA | .BB | CC | DD"},
      // Any depth beyond the current item's is one deeper.
      {"AA\n\t\t\tBB\n\t\t\tCC\n\tDD\nEE\n", "AA | .BB | ..CC | .DD | EE"},
      // A too-short first line still sets the depth.
      {"\t\n\tAA\n\t\tBB\n\tCC", "AA | .BB | CC"},
      // Entries: none before a category, lower-case prefix, no final line end; short lines skipped.
      {"C:\\lost.pes\nAA\nzip:E:\\a.zip:b.pes\n\n;\nD:\\b.pes", "AA=zip:E:\\a.zip:b.pes,D:\\b.pes"},
      // A TAB in front makes any line a category.
      {"AA\n\tC:\\x.pes\n", "AA | .C:\\x.pes"},
      // Nothing to show: no catalog tab.
      {"C:\\only.pes\nx\n", ""},
  };
  for (const auto& [text, expected] : cases) {
    SCatalogTree tree;
    tree.LoadCatalogText(text);
    EXPECT_EQ(Dump(tree), expected) << text;
    EXPECT_EQ(tree.HasCatalogTab(), expected[0] != '\0') << text;
  }
}

TEST(CatalogTreeTest, LoadCatalogReadsTheStoredFolder) {
  test::ScratchFolder folder;
  SCatalogTree tree;
  tree.LoadCatalog();  // the default folder holds nothing here
  EXPECT_FALSE(tree.HasCatalogTab());

  PreferenceStore().SetString("Settings", "Catalog Path", folder.Path().string());
  EXPECT_EQ(SCatalogTree::CatalogFile(), folder.File("Catalog.SV"));
  folder.Write("Catalog.SV", test::ToBytes("AA\n\tBB\nCC\n"));
  tree.LoadCatalog();
  EXPECT_EQ(Dump(tree), "AA | .BB | CC");
  EXPECT_EQ(tree.Selected(), Item(tree, "AA"));
  EXPECT_TRUE(tree.IsExpanded(Item(tree, "AA")));

  folder.Write("Catalog.SV", {});
  tree.LoadCatalog();
  EXPECT_EQ(Dump(tree), "AA | .BB | CC");
  PreferenceStore().SetString("Settings", "Catalog Path", "");
  EXPECT_EQ(SCatalogTree::CatalogFile(), "");
}

// States in walking order of AA(BB(CC), DD), after ticking steps from a clear tree.
TEST(CatalogTreeTest, SetCategoryFollowsTheModes) {
  struct Case {
    std::vector<std::pair<const char*, int>> steps;
    const char* states;
    const char* log;  // of the last step
  };
  const std::vector<Case> cases = {
      {{{"AA", 3}}, "5555", " off +AA +BB +CC +DD redraw on"},
      {{{"AA", 3}, {"AA", 3}}, "1111", " off -AA -BB -CC -DD redraw on"},
      {{{"AA", 3}, {"DD", 5}}, "3551", " -DD redraw on"},
      {{{"AA", 3}, {"AA", 5}}, "4555", " -AA redraw on"},
      {{{"CC", 5}}, "6451", " +CC redraw on"},
      {{{"BB", 5}}, "6211", " +BB redraw on"},
      {{{"BB", 5}, {"CC", 5}}, "6551", " +CC redraw on"},
      {{{"CC", 5}, {"BB", 3}}, "1111", " off -BB -CC redraw on"},
      {{{"AA", 5}}, "2111", " +AA redraw on"},
      {{{"BB", 1}}, "1551", " +BB +CC"},  // no parents updated
      {{{"BB", 5}, {"AA", 2}}, "1111", " -AA -BB -CC -DD"},
      {{{"BB", 5}, {"BB", 4}}, "6211", ""},
  };
  for (const Case& c : cases) {
    Recorder recorder;
    SCatalogTree tree(&recorder);
    tree.LoadCatalogText("AA\nC:\\a.pes\n\tBB\nC:\\b.pes\n\t\tCC\nC:\\c1.pes\nC:\\c2.pes\n\tDD\n");
    tree.SetObserver(&recorder);
    recorder.trees = {&tree};
    SCOPED_TRACE(testing::Message() << "case " << &c - cases.data());
    for (const auto& [item, mode] : c.steps) {
      recorder.log.clear();
      tree.SetCategory(Item(tree, item), mode);
    }
    EXPECT_EQ(States(tree), c.states);
    EXPECT_EQ(recorder.log, c.log);
    EXPECT_TRUE(tree.anyTicked());
  }
}

TEST(CatalogTreeTest, TicksComeFromOneTreeAtATime) {
  Recorder recorder;
  SCatalogTree first(&recorder), second(&recorder);
  first.LoadCatalogText("AA\n\tBB\n\t\tCC\n\tDD\n");
  second.LoadCatalogText("XX\n\tYY\n");
  first.SetOtherTree(&second);
  second.SetOtherTree(&first);
  recorder.trees = {&first, &second};
  EXPECT_FALSE(second.Contains(Item(first, "AA")));

  first.SetCategory(Item(first, "BB"), 2);
  EXPECT_FALSE(first.anyTicked());
  first.SetCategory(Item(first, "BB"), 3);
  second.SetCategory(Item(second, "YY"), 5);
  second.SetCategory(Item(second, "XX"), 5);  // nothing left to clear in the first
  EXPECT_EQ(recorder.log, " -BB -CC +BB +CC -AA -BB -CC -DD clear +YY +XX");
  EXPECT_EQ(States(first) + States(second), "111155");
  EXPECT_FALSE(first.anyTicked());

  recorder.log.clear();
  second.ClearCategories();
  second.ClearCategories();
  EXPECT_EQ(recorder.log, " -XX -YY clear");
  EXPECT_EQ(States(second), "11");

  // Clicks: the box flips a branch, the label or Ctrl and the box one item, after Ctrl clears.
  const TreeItem x = Item(second, "XX"), y = Item(second, "YY");
  EXPECT_TRUE(second.Click(x, TreeHit::kTickBox, false));
  EXPECT_TRUE(second.Click(y, TreeHit::kLabel, false));
  EXPECT_EQ(States(second), "21");
  EXPECT_EQ(second.Selected(), y);
  EXPECT_EQ(second.SpaceKey(), 4);
  EXPECT_EQ(States(second), "55");
  recorder.log.clear();
  EXPECT_TRUE(second.Click(y, TreeHit::kTickBox, true));
  EXPECT_EQ(recorder.log, " -XX -YY clear +YY");
  EXPECT_FALSE(second.Click(0, TreeHit::kElsewhere, false));
}

TEST(CatalogTreeTest, SortedInsertAndDelete) {
  SCatalogTree tree;
  const TreeItem root = tree.Insert(0, "Root");
  for (const char* name : {"beta", "Alpha", "gamma", "alpha"}) tree.Insert(root, name, true);
  const TreeItem deep = tree.Insert(Item(tree, "beta"), "deep");
  EXPECT_EQ(Dump(tree), "Root | .Alpha | .alpha | .beta | ..deep | .gamma");
  tree.Select(deep);
  tree.Delete(Item(tree, "beta"));
  EXPECT_EQ(Dump(tree), "Root | .Alpha | .alpha | .gamma");
  EXPECT_FALSE(tree.Contains(deep));
  EXPECT_EQ(tree.Selected(), 0u);
}

}  // namespace
}  // namespace fennick
