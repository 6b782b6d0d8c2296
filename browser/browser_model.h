// The browser's design list without a window: its records in the order they
// came, a batch per tree item sorted by file name, the look of the
// thumbnails and the texts of the status panes. The list view shows what this
// holds and is told of every change through BrowserModel::Listener.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "browser/design_list_sink.h"
#include "core/design_path.h"

namespace fennick {

inline constexpr char kBrowserSection[] = "FennickPlugin";
// The edges a thumbnail may have, in pixels.
inline constexpr int32_t kPreviewSizes[] = {128, 200, 400};

struct BrowserRecord {
  DesignPath path;
  TreeItem owner = 0;      // the tree item that brought the record in
  uint64_t id = 0;         // unique for the model's lifetime; how threads find the record again
  int32_t imageIndex = -1;  // the record's picture, -1 while it has none
};

class BrowserModel : public DesignListSink {
 public:
  class Listener {
   public:
    virtual ~Listener() = default;
    // Around appending records [first, first + count).
    virtual void BeginAppend(size_t first, size_t count) = 0;
    virtual void EndAppend() = 0;
    // Around removing records [first, first + count): once a run, last run first.
    virtual void BeginRemove(size_t first, size_t count) = 0;
    virtual void EndRemove() = 0;
    // Every picture is to be drawn again: the look or the size changed, or all went.
    virtual void PicturesReset() = 0;
  };

  // Reads "browse3d" and "previewSize"; writes them back when it goes.
  BrowserModel();
  ~BrowserModel() override;
  BrowserModel(const BrowserModel&) = delete;
  BrowserModel& operator=(const BrowserModel&) = delete;

  void SetListener(Listener* listener) { listener_ = listener; }

  int32_t AddFolder(TreeItem owner, const std::string& folder) override;
  // Adds the members of a ZIP file with a readable extension; counts 2 a
  // member, as the callers' totals always have.
  int32_t AddZipFile(const std::vector<std::string>& extensions, const std::string& zipFile,
                     const std::string& volumeLabel, TreeItem owner);
  int32_t AddEntries(TreeItem owner, const std::vector<std::string>& paths) override;
  void RemoveOwner(TreeItem owner) override;
  void ClearAll() override;

  void Toggle3D();
  // 128, 200, 400, and round; a stored size between counts as the next one up.
  void NextPreviewSize();

  const std::vector<BrowserRecord>& Records() const { return records_; }
  // The record of an id, or null once it is gone.
  const BrowserRecord* FindRecord(uint64_t id) const;
  BrowserRecord* FindRecord(uint64_t id) {
    return const_cast<BrowserRecord*>(static_cast<const BrowserModel*>(this)->FindRecord(id));
  }
  bool Browse3D() const { return browse3d_ != 0; }
  int32_t PreviewSize() const { return previewSize_; }

  // The status panes 1 to 3, and pane 0 while the pointer is over a record.
  static std::string WorkspaceText(bool workspaceOn) { return workspaceOn ? "TMP" : ""; }
  std::string FilesText() const;
  static std::string SelectedText(size_t selected);
  static std::string PointerText(const DesignPath& path);

 private:
  std::vector<BrowserRecord> records_;
  uint64_t nextId_ = 1;
  int32_t browse3d_;
  int32_t previewSize_;
  Listener* listener_ = nullptr;
};

}  // namespace fennick
