#include "archive/al_status.h"

#include <cstdarg>
#include <cstdio>
#include <new>

namespace fennick {
namespace {

struct StatusRow {
  int code;
  const char* text;
};

constexpr StatusRow kStatusTexts[] = {
    {AL_SUCCESS, "Success"},
    {AL_END_OF_FILE, "End of file"},
    {AL_CANT_ALLOCATE_BUFFER, "Can't allocate buffer"},
    {AL_NEED_CRYPTO_ENGINE, "Missing Crypto engine"},
    {AL_INVALID_KEY, "Invalid key"},
    {AL_DUPLICATE_ENTRY, "Duplicate entry"},
    {AL_GETSEL_ERROR, "Error getting selections from list box"},
    {AL_BACKUP_FAILURE, "Could not create backup"},
    {AL_LOGIC_ERROR, "Logic error"},
    {AL_INVALID_ARCHIVE, "Invalid archive"},
    {AL_UNKNOWN_STORAGE_OBJECT, "Unknown type of storage object"},
    {AL_UNKNOWN_COMPRESSION_TYPE, "Unknown compression type"},
    {AL_COMPARE_ERROR, "Comparison error"},
    {AL_CRC_ERROR, "CRC Error"},
    {AL_NEED_LENGTH, "Missing length parameter"},
    {AL_COMPRESSION_TYPE_MISMATCH, "Mismatch in compression type"},
    {AL_SERVER_NOT_PRESENT, "Server not present"},
    {AL_USER_ABORT, "User abort"},
    {AL_INTERNAL_ERROR, "Internal error"},
    {AL_ILLEGAL_PARAMETER, "Illegal parameter"},
    {AL_DELETE_ERROR, "File deletion error"},
    {AL_WRITE_ERROR, "Write error"},
    {AL_READ_ERROR, "Read error"},
    {AL_SEEK_ERROR, "Seek error"},
    {AL_CANT_OPEN_FILE, "Can't open file"},
    {AL_RENAME_ERROR, "Error renaming file"},
    {AL_CANT_CREATE_STORAGE_OBJECT, "Can't create storage object"},
    {AL_CANT_CREATE_ENGINE, "Can't create compression engine"},
    {AL_CANT_ALLOCATE_MEMORY, "Memory allocation failure"},
};

constexpr const char kNoRoomForDetail[] = "Unable to allocate memory for error detail message";

}  // namespace

const char* ALStatus::StatusText(int code) {
  for (const StatusRow& row : kStatusTexts) {
    if (row.code == code) return row.text;
  }
  return "Unknown error";
}

int ALStatus::SetError(int code, const char* format, ...) {
  code_ = code;
  detail_.clear();
  detailLost_ = false;
  if (code >= 0 || format == nullptr) return code;
  va_list arguments;
  va_start(arguments, format);
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  va_end(arguments);
  try {
    if (length >= 0) {
      detail_.resize(static_cast<size_t>(length) + 1);
      std::vsnprintf(detail_.data(), detail_.size(), format, again);
      detail_.resize(static_cast<size_t>(length));
    }
  } catch (const std::bad_alloc&) {
    detail_.clear();
    detailLost_ = true;
  }
  va_end(again);
  return code;
}

const char* ALStatus::GetStatusDetail() const {
  if (code_ >= 0) return "No errors";
  if (detailLost_) return kNoRoomForDetail;
  return detail_.empty() ? GetStatusString() : detail_.c_str();
}

}  // namespace fennick
