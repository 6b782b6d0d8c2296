// The browser's list without a window: what ticking a folder, a ZIP file or
// catalog entries puts in, in which order, what leaves again, and the texts
// of the status panes; and the pictures' threads.
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "archive/zip_member.h"
#include "browser/browser_model.h"
#include "browser/thumbnails.h"
#include "core/preferences.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

class Changes : public BrowserModel::Listener {
 public:
  void BeginAppend(size_t first, size_t count) override { log.push_back("+" + Range(first, count)); }
  void EndAppend() override {}
  void BeginRemove(size_t first, size_t count) override { log.push_back("-" + Range(first, count)); }
  void EndRemove() override {}
  void PicturesReset() override { log.push_back("reset"); }
  static std::string Range(size_t first, size_t count) { return std::to_string(first) + ":" + std::to_string(count); }
  std::vector<std::string> log;
};

std::vector<std::string> Names(const BrowserModel& model) {
  std::vector<std::string> names;
  for (const BrowserRecord& record : model.Records()) {
    names.push_back(record.path.IsZipMember() ? "zip:" + record.path.GetFileName() : record.path.GetFileName());
  }
  return names;
}

TEST(BrowserModel, AFolderComesInSortedWithItsZipMembersAheadAndLeavesWhole) {
  test::ScratchFolder scratch;
  const std::vector<uint8_t> design = test::ReadTestFile("geometric_objects.dst");
  for (const char* name : {"b.dst", "A.pes", "c.DST", "notes.txt", "sub/inner.dst"}) {
    std::filesystem::create_directories((scratch.Path() / name).parent_path());
    scratch.Write(name, design);
  }
  ASSERT_EQ(WriteZipMember(DesignPath("Zip:" + scratch.File("pack.zip") + ":z.jef"), design), 0);
  ASSERT_EQ(WriteZipMember(DesignPath("Zip:" + scratch.File("pack.zip") + ":readme.txt"), design), 0);
  ASSERT_EQ(WriteZipMember(DesignPath("Zip:" + scratch.File("pack.zip") + ":deep/Y.exp"), design), 0);

  BrowserModel model;
  Changes changes;
  model.SetListener(&changes);
  EXPECT_EQ(model.AddFolder(7, scratch.File("")), 3 + 2 * 2) << "a ZIP member counts 2";
  EXPECT_EQ(Names(model), (std::vector<std::string>{"zip:Y.exp", "zip:z.jef", "A.pes", "b.dst", "c.DST"}));
  EXPECT_EQ(model.Records()[0].path.GetZipFile(), scratch.File("pack.zip"));
  EXPECT_EQ(model.AddFolder(0, scratch.File("")), 0) << "no owner, nothing";
  EXPECT_EQ(model.AddFolder(9, scratch.File("missing")), 0);
  EXPECT_EQ(model.AddFolder(9, scratch.File("b.dst")), 0) << "a file is no folder";
  EXPECT_EQ(model.AddEntries(8, {"/x/b.pes", "/y/B.pes", "/x/a.jef"}), 3);
  EXPECT_EQ(model.FilesText(), "Files: 8");

  model.RemoveOwner(7);
  EXPECT_EQ(Names(model), (std::vector<std::string>{"a.jef", "b.pes", "B.pes"})) << "equal names keep their order";
  EXPECT_EQ(model.Records()[1].path.GetDirectory(), "/x/");
  model.ClearAll();
  EXPECT_TRUE(model.Records().empty());
  EXPECT_EQ(changes.log, (std::vector<std::string>{"+0:2", "+2:3", "+5:3", "-0:5", "-0:3", "reset"}));
}

TEST(BrowserModel, LookStatusAndPointerTexts) {
  test::ScratchFolder scratch;
  PreferenceStore().SetInt(kBrowserSection, "previewSize", 150);
  {
    BrowserModel model;
    EXPECT_EQ(model.PreviewSize(), 150) << "used as stored until the first change";
    EXPECT_TRUE(model.Browse3D());
    std::vector<int32_t> sizes;
    for (int i = 0; i < 4; ++i) {
      model.NextPreviewSize();
      sizes.push_back(model.PreviewSize());
    }
    EXPECT_EQ(sizes, (std::vector<int32_t>{400, 128, 200, 400}));
    model.Toggle3D();
  }
  EXPECT_EQ(PreferenceStore().GetInt(kBrowserSection, "browse3d", 1), 0);
  EXPECT_EQ(PreferenceStore().GetInt(kBrowserSection, "previewSize", 0), 400);

  EXPECT_EQ(BrowserModel::SelectedText(0), "Selected: 0");
  EXPECT_EQ(BrowserModel::WorkspaceText(true), "TMP");
  EXPECT_EQ(BrowserModel::WorkspaceText(false), "");
  const std::string folder = scratch.File("");
  EXPECT_EQ(BrowserModel::PointerText(DesignPath(folder + "rose.pes")), folder + "rose.pes");
  // On a fixed disk only the label and its apostrophe follow.
  EXPECT_EQ(BrowserModel::PointerText(DesignPath(folder + "rose.pes\tCard 3")), folder + "rose.pesCard 3'");
}

TEST(Thumbnails, OnlyWantedRecordsAreDrawnAndBadDesignsGetNoPicture) {
  test::ScratchFolder scratch;
  scratch.Write("good.dst", test::ReadTestFile("geometric_objects.dst"));
  scratch.Write("bad.dst", {1, 2, 3});
  std::mutex mutex;
  std::vector<std::pair<uint64_t, int>> delivered;  // record, 1 picture / 0 stock / -1 skipped
  std::atomic<int> drawing{0}, most{0};
  {
    Thumbnails thumbnails([](uint64_t record) { return record != 3; },
                          [&](const ThumbnailRequest& request, std::optional<StitchBitmap> picture) {
                            const int now = ++drawing;
                            most = std::max(most.load(), now);
                            const std::lock_guard lock(mutex);
                            delivered.emplace_back(request.record, picture ? (picture->valid ? 1 : 0) : -1);
                            if (picture && picture->valid) {
                              EXPECT_EQ(picture->width, request.size);
                            }
                            --drawing;
                          });
    thumbnails.Ask({1, scratch.File("good.dst"), 128, true});
    thumbnails.Ask({2, scratch.File("bad.dst"), 128, false});
    thumbnails.Ask({3, scratch.File("good.dst"), 128, true});
    for (int wait = 0; wait < 2000; ++wait) {
      {
        const std::lock_guard lock(mutex);
        if (delivered.size() == 3) break;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }
  std::sort(delivered.begin(), delivered.end());
  EXPECT_EQ(delivered, (std::vector<std::pair<uint64_t, int>>{{1, 1}, {2, 0}, {3, -1}}));
  EXPECT_EQ(most.load(), 1) << "one thread draws at a time";
}

}  // namespace
}  // namespace fennick
