// Names of storage objects: the current name, the name before the last change,
// and the case rule by which names compare.
#pragma once

#include <string>
#include <string_view>

namespace fennick {

// Only AL_EXACT_CASE compares by exact case; any other value ignores case.
enum ALCase : int { AL_IGNORE_CASE = 0, AL_EXACT_CASE = 2 };

class ALName {
 public:
  explicit ALName(std::string name = {}, ALCase nameCase = AL_EXACT_CASE)
      : name_(std::move(name)), case_(nameCase) {}

  // The current name becomes the old name.
  void Set(std::string name);
  const std::string& Get() const { return name_; }
  const std::string& GetOldName() const { return oldName_; }
  const char* c_str() const { return name_.c_str(); }
  bool Empty() const { return name_.empty(); }
  ALCase GetCase() const { return case_; }

  // Equality with `other` under this name's case rule.
  bool Matches(std::string_view other) const;
  // The name with its extension (after the last '.' of the last path part)
  // replaced by `extension`, which includes its dot; added when there is none.
  std::string WithExtension(std::string_view extension) const;

 private:
  std::string name_;
  std::string oldName_;
  ALCase case_;
};

}  // namespace fennick
