// The application's one-call ZIP access: read, add or replace, and delete one
// member named by a "Zip:archive.zip:member" design path.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "core/design_path.h"

namespace fennick {

// 0 with the member's bytes in `bytes`, 1 when the path names no ZIP member,
// the archive cannot be read or the member is missing or damaged. The member
// name compares without regard to case; of two such names the first counts.
int ReadZipMember(const DesignPath& path, std::vector<uint8_t>& bytes);

// Adds the member, deflated, or replaces one of the same name. The new
// archive is built in a temporary file beside the old and renamed over it,
// so a failure leaves the old archive whole. 0 or the negative status, whose
// detail goes to `statusText` when given.
int WriteZipMember(const DesignPath& path, std::span<const uint8_t> bytes, std::string* statusText = nullptr);

// Removes the member; a missing member leaves the archive as it was. 0 or the
// negative status.
int DeleteZipMember(const DesignPath& path, std::string* statusText = nullptr);

}  // namespace fennick
