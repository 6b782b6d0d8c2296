#include "archive/al_entry.h"

#include <algorithm>

#include "core/text.h"

namespace fennick {
namespace {

bool SameChar(char a, char b, bool ignoreCase) {
  return ignoreCase ? AsciiLower(a) == AsciiLower(b) : a == b;
}

bool NameMatches(const ALEntry& entry, std::string_view pattern) {
  if (!entry.storage) return false;
  return ALWildCardMatch(pattern, entry.GetName(), entry.storage->name.GetCase() != AL_EXACT_CASE);
}

}  // namespace

bool ALWildCardMatch(std::string_view pattern, std::string_view name, bool ignoreCase) {
  // Greedy match with one back-track point: linear in practice, never recursive.
  size_t p = 0, n = 0, starP = std::string_view::npos, starN = 0;
  while (n < name.size()) {
    if (p < pattern.size() && (pattern[p] == '?' || SameChar(pattern[p], name[n], ignoreCase))) {
      ++p;
      ++n;
    } else if (p < pattern.size() && pattern[p] == '*') {
      starP = p++;
      starN = n;
    } else if (starP != std::string_view::npos) {
      p = starP + 1;
      n = ++starN;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == '*') ++p;
  // "*.*" matches names without a dot too, as the file system's own match does.
  return p == pattern.size() || pattern.substr(p) == ".*";
}

ALEntry::ALEntry(ALEntryList& list, std::unique_ptr<ALStorage> storageObject, std::unique_ptr<ALCompressor> engine,
                 std::unique_ptr<ALDecompressor> unpacker)
    : storage(std::move(storageObject)), compressor(std::move(engine)), decompressor(std::move(unpacker)), list_(&list) {}

const std::string& ALEntry::GetName() const {
  static const std::string kNone;  // constant: safe to share between threads
  return storage ? storage->GetName() : kNone;
}

ALEntryList::ALEntryList(ALMonitor* listMonitor, ALToolKit kit) : monitor(listMonitor), toolkit(std::move(kit)) {}

ALEntry& ALEntryList::Add(std::unique_ptr<ALStorage> storageObject, std::unique_ptr<ALCompressor> compressor,
                          std::unique_ptr<ALDecompressor> decompressor) {
  entries_.push_back(std::make_unique<ALEntry>(*this, std::move(storageObject), std::move(compressor),
                                               std::move(decompressor)));
  return *entries_.back();
}

int ALEntryList::SetMarks(std::string_view pattern) {
  int count = 0;
  for (auto& entry : entries_) {
    if (NameMatches(*entry, pattern)) {
      entry->mark = true;
      ++count;
    }
  }
  return count;
}

int ALEntryList::ClearMarks(std::string_view pattern) {
  int count = 0;
  for (auto& entry : entries_) {
    if (NameMatches(*entry, pattern)) {
      entry->mark = false;
      ++count;
    }
  }
  return count;
}

int ALEntryList::ToggleMarks() {
  for (auto& entry : entries_) entry->mark = !entry->mark;
  return static_cast<int>(entries_.size());
}

int ALEntryList::UnmarkDuplicates(ALEntryList& other, const char* message) {
  int count = 0;
  for (size_t i = 0; i < entries_.size(); ++i) {
    ALEntry& entry = *entries_[i];
    if (!entry.mark || !entry.storage) continue;
    const size_t limit = &other == this ? i : other.entries_.size();
    for (size_t j = 0; j < limit; ++j) {
      const ALEntry& earlier = *other.entries_[j];
      if (earlier.mark && earlier.storage && entry.storage->name.Matches(earlier.GetName())) {
        entry.mark = false;
        entry.storage->status.SetError(AL_DUPLICATE_ENTRY, "%s", message);
        ++count;
        break;
      }
    }
  }
  return count;
}

int ALEntryList::DeleteUnmarked() {
  const size_t before = entries_.size();
  std::erase_if(entries_, [](const std::unique_ptr<ALEntry>& entry) { return !entry->mark; });
  return static_cast<int>(before - entries_.size());
}

int ALEntryList::MarkedCount() const {
  return static_cast<int>(std::count_if(entries_.begin(), entries_.end(), [](const auto& entry) { return entry->mark; }));
}

}  // namespace fennick
