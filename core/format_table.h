// The table of file formats and the two dispatchers: ReadDesignFile, the one
// way in from a file, and WriteDesignFile, the one way out to bytes.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "core/design.h"

namespace fennick {

enum FormatCode : int {
  kFormatUnknown = -1,
  kFormatPes = 0,
  kFormatSew = 1,
  kFormatJef = 2,
  kFormatHus = 3,
  kFormatPcs = 4,
  kFormatDst = 5,
  kFormatXxx = 6,
  kFormatExp = 7,
  kFormatVip = 8,
  kFormatPhc = 9,
  kFormatPec = 10,
  kFormatEmd = 11,
  kFormatShv = 12,
  kFormatPhb = 13,
  kFormatPhd = 14,
  kFormatBmp = 15,
  kFormatTxt = 16,
};

// A reader gets the file's bytes followed by one zero byte, as ReadDesignFile
// hands them over, and returns false when it has no design to give.
using DesignReader = bool (*)(Design& design, std::span<const uint8_t> bytes);
// A writer replaces `out` with the file's bytes and returns 0, or -1 when it
// writes nothing. It may change the design it is given.
using DesignWriter = int (*)(Design& design, std::vector<uint8_t>& out);

struct FormatEntry {
  FormatCode code;
  const char* extension;  // upper case
  DesignReader read;      // null: not readable
  DesignWriter write;     // null: not writable
};

// All seventeen rows, in code order.
std::span<const FormatEntry> FormatTable();
// The row of a code, or null.
const FormatEntry* FindFormat(int code);

// Upper-case extension of a code; empty for any other number.
std::string FormatExtension(int code);
// The code of an extension, any case; kFormatUnknown when none matches.
FormatCode FormatFromExtension(const std::string& extension);
// Looks only at the nine writable formats, by the path's extension. `extension`
// receives that format's lower-case extension, or "pes" when there is none.
FormatCode WritableFormatFromPath(const std::string& path, std::string* extension = nullptr);

// Lower case, in the browser's order. Both return 14 when no list is given, on purpose.
int ReadableExtensions(std::vector<std::string>* list);
// Lower case, in the save dialogs' order.
int WritableExtensions(std::vector<std::string>* list);
// The writable extensions in upper case, in the order of the block of
// zero-terminated names that the host is given.
std::span<const char* const> WritableExtensionsUpper();

// Whether a read records its file as the profile's "Last File".
enum class LastFile { kRecord, kLeave };

// Loads the design at `path` (text form of DesignPath). Returns 0, or -1 on
// failure, in which case the design may hold a partial result and keeps the
// new name: a second call with the same path returns 0 without reading.
// kLeave is for reading many designs at once, from any thread: the profile
// file is then neither rewritten per design nor written by several threads.
int ReadDesignFile(Design& design, const std::string& path, LastFile lastFile = LastFile::kRecord);
// The bytes of the plain file or ZIP member that `path` names, read as
// ReadDesignFile reads them, without the zero byte it adds. 0, or -1 when
// nothing can be read. Readers that need a file beside their own use it.
int ReadDesignBytes(const std::string& path, std::vector<uint8_t>& bytes);
// Turns the design into the bytes of the target format, chosen by the "Tools"
// settings or by `forcedFormat` when it is above -1. Returns the size written,
// 0 when nothing was written; `design.name` then carries the new extension.
size_t WriteDesignFile(Design& design, std::vector<uint8_t>& out, int forcedFormat);

}  // namespace fennick
