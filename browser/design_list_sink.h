// What the browser's trees do to the design list when a tick changes: the
// list side of the browser, seen from a tree. Owners are tree item handles.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace fennick {

using TreeItem = uint32_t;  // a tree item's handle; 0 is none

class DesignListSink {
 public:
  virtual ~DesignListSink() = default;
  // Adds the designs of one folder (not its subfolders); returns a count.
  virtual int32_t AddFolder(TreeItem owner, const std::string& folder) = 0;
  // Sorts text-form design paths by file name and appends them; returns how many.
  virtual int32_t AddEntries(TreeItem owner, const std::vector<std::string>& paths) = 0;
  // Removes every record the item brought in.
  virtual void RemoveOwner(TreeItem owner) = 0;
  virtual void ClearAll() = 0;
};

}  // namespace fennick
