#include "browser/browser_model.h"

#include <dirent.h>

#include <algorithm>
#include <filesystem>
#include <memory>

#include "archive/al_entry.h"
#include "archive/al_pk_archive.h"
#include "core/format_table.h"
#include "core/preferences.h"
#include "core/text.h"
#include "core/user_interface.h"

namespace fennick {
namespace {

bool IsReadable(const std::vector<std::string>& extensions, const std::string& extension) {
  return std::any_of(extensions.begin(), extensions.end(),
                     [&](const std::string& known) { return EqualsIgnoringCase(known, extension); });
}

}  // namespace

BrowserModel::BrowserModel() {
  const PreferenceStore store;
  browse3d_ = store.GetInt(kBrowserSection, "browse3d", 1);
  // A stored size other than the three is used as it stands until the next change.
  previewSize_ = store.GetInt(kBrowserSection, "previewSize", 200);
}

BrowserModel::~BrowserModel() {
  const PreferenceStore store;
  store.SetInt(kBrowserSection, "browse3d", browse3d_);
  store.SetInt(kBrowserSection, "previewSize", previewSize_);
}

int32_t BrowserModel::AddFolder(TreeItem owner, const std::string& folder) {
  const WaitCursor wait;
  if (folder.empty() || owner == 0) return 0;
  std::vector<std::string> extensions;
  ReadableExtensions(&extensions);
  const std::string directory = folder.back() == '/' ? folder : folder + "/";
  int32_t count = 0;
  std::vector<std::string> pending;
  // A folder that cannot be listed adds nothing.
  const std::unique_ptr<DIR, int (*)(DIR*)> listing(opendir(directory.c_str()), closedir);
  while (listing != nullptr) {
    const dirent* entry = readdir(listing.get());
    if (entry == nullptr) break;
    const std::string name = entry->d_name;
    // Some file systems leave the type unknown, and a link may lead to a folder: then the path is asked.
    std::error_code ignored;
    const bool asked = entry->d_type == DT_UNKNOWN || entry->d_type == DT_LNK;
    if (entry->d_type == DT_DIR || (asked && std::filesystem::is_directory(directory + name, ignored))) continue;
    const DesignPath path(directory + name);
    const std::string extension = path.GetExtension();
    if (EqualsIgnoringCase(extension, "zip")) count += AddZipFile(extensions, directory + name, "", owner);
    if (IsReadable(extensions, extension)) {
      ++count;
      pending.push_back(path.ToString());
    }
  }
  AddEntries(owner, pending);
  return count;
}

int32_t BrowserModel::AddZipFile(const std::vector<std::string>& extensions, const std::string& zipFile,
                                 const std::string& volumeLabel, TreeItem owner) {
  ALPkArchive archive(zipFile);
  ALEntryList list;
  if (archive.ReadDirectory(list) < 0) return 0;
  int32_t count = 0;
  std::vector<std::string> pending;
  for (auto& entry : list) {
    DesignPath path;
    path.SetZipFile(zipFile);
    path.SplitName(entry->GetName());
    path.SetVolumeLabel(volumeLabel);
    if (!IsReadable(extensions, path.GetExtension())) continue;
    pending.push_back(path.ToString());
    count += 2;
  }
  AddEntries(owner, pending);
  return count;
}

int32_t BrowserModel::AddEntries(TreeItem owner, const std::vector<std::string>& paths) {
  std::vector<DesignPath> batch;
  batch.reserve(paths.size());
  for (const std::string& text : paths) batch.emplace_back(text);
  // By file name, any case; equal names keep their order.
  std::stable_sort(batch.begin(), batch.end(), [](const DesignPath& a, const DesignPath& b) {
    return LessIgnoringCase(a.GetFileName(), b.GetFileName());
  });
  if (batch.empty()) return 0;
  if (listener_ != nullptr) listener_->BeginAppend(records_.size(), batch.size());
  for (DesignPath& path : batch) records_.push_back({std::move(path), owner, nextId_++, -1});
  if (listener_ != nullptr) listener_->EndAppend();
  return static_cast<int32_t>(batch.size());
}

void BrowserModel::RemoveOwner(TreeItem owner) {
  // Runs from the end, so that the places of the runs still to go stay right.
  for (size_t end = records_.size(); end > 0;) {
    if (records_[end - 1].owner != owner) {
      --end;
      continue;
    }
    size_t first = end - 1;
    while (first > 0 && records_[first - 1].owner == owner) --first;
    if (listener_ != nullptr) listener_->BeginRemove(first, end - first);
    records_.erase(records_.begin() + static_cast<ptrdiff_t>(first), records_.begin() + static_cast<ptrdiff_t>(end));
    if (listener_ != nullptr) listener_->EndRemove();
    end = first;
  }
}

void BrowserModel::ClearAll() {
  if (listener_ != nullptr && !records_.empty()) listener_->BeginRemove(0, records_.size());
  const bool any = !records_.empty();
  records_.clear();
  if (listener_ != nullptr && any) listener_->EndRemove();
  if (listener_ != nullptr) listener_->PicturesReset();
}

const BrowserRecord* BrowserModel::FindRecord(uint64_t id) const {
  const auto found = std::lower_bound(records_.begin(), records_.end(), id,
                                      [](const BrowserRecord& record, uint64_t value) { return record.id < value; });
  return found != records_.end() && found->id == id ? &*found : nullptr;
}

void BrowserModel::Toggle3D() {
  browse3d_ = browse3d_ != 0 ? 0 : 1;
  for (BrowserRecord& record : records_) record.imageIndex = -1;
  if (listener_ != nullptr) listener_->PicturesReset();
}

void BrowserModel::NextPreviewSize() {
  previewSize_ = previewSize_ > 200 ? 128 : previewSize_ > 128 ? 400 : 200;
  for (BrowserRecord& record : records_) record.imageIndex = -1;
  if (listener_ != nullptr) listener_->PicturesReset();
}

std::string BrowserModel::FilesText() const { return "Files: " + std::to_string(records_.size()); }

std::string BrowserModel::SelectedText(size_t selected) { return "Selected: " + std::to_string(selected); }

std::string BrowserModel::PointerText(const DesignPath& path) {
  std::string text = path.IsZipMember() ? path.GetZipFile() + ":" + path.FullName() : path.FullName();
  const std::string& label = path.GetVolumeLabel();
  if (label.empty()) return text;
  const DriveType type = DesignPath(path.IsZipMember() ? path.GetZipFile() : path.GetDirectory()).GetDriveType();
  if (type == kDriveRemovable) text += " can be found on disk '";
  if (type == kDriveCdRom) text += " can be found on CD-ROM '";
  return text + label + "'";
}

}  // namespace fennick
