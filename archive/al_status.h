// Status reporting of the archive layer: a signed code (0 success, negative
// failure) and a formatted detail text. The first failure sticks until cleared.
#pragma once

#include <string>

namespace fennick {

inline constexpr int AL_SUCCESS = 0;
inline constexpr int AL_END_OF_FILE = -1;
inline constexpr int AL_CANT_ALLOCATE_BUFFER = -1200;
inline constexpr int AL_NEED_CRYPTO_ENGINE = -1974;
inline constexpr int AL_INVALID_KEY = -1975;
inline constexpr int AL_DUPLICATE_ENTRY = -1976;
inline constexpr int AL_GETSEL_ERROR = -1977;
inline constexpr int AL_BACKUP_FAILURE = -1978;
inline constexpr int AL_LOGIC_ERROR = -1979;
inline constexpr int AL_INVALID_ARCHIVE = -1980;
inline constexpr int AL_UNKNOWN_STORAGE_OBJECT = -1981;
inline constexpr int AL_UNKNOWN_COMPRESSION_TYPE = -1982;
inline constexpr int AL_COMPARE_ERROR = -1983;
inline constexpr int AL_CRC_ERROR = -1984;
inline constexpr int AL_NEED_LENGTH = -1985;
inline constexpr int AL_COMPRESSION_TYPE_MISMATCH = -1986;
inline constexpr int AL_SERVER_NOT_PRESENT = -1987;
inline constexpr int AL_USER_ABORT = -1988;
inline constexpr int AL_INTERNAL_ERROR = -1989;
inline constexpr int AL_ILLEGAL_PARAMETER = -1990;
inline constexpr int AL_DELETE_ERROR = -1991;
inline constexpr int AL_WRITE_ERROR = -1992;
inline constexpr int AL_READ_ERROR = -1993;
inline constexpr int AL_SEEK_ERROR = -1994;
inline constexpr int AL_CANT_OPEN_FILE = -1995;
inline constexpr int AL_RENAME_ERROR = -1996;
inline constexpr int AL_CANT_CREATE_STORAGE_OBJECT = -1997;
inline constexpr int AL_CANT_CREATE_ENGINE = -1998;
inline constexpr int AL_CANT_ALLOCATE_MEMORY = -1999;

class ALStatus {
 public:
  // Stores `code` and the detail text made from the printf `format`; returns
  // `code`. A code of 0 or above clears the detail.
  int SetError(int code, const char* format, ...) __attribute__((format(printf, 3, 4)));
  void ClearError() { SetError(AL_SUCCESS, nullptr); }

  int GetStatusCode() const { return code_; }
  operator int() const { return code_; }
  // The short text of the code, from the fixed table.
  const char* GetStatusString() const { return StatusText(code_); }
  // The detail text: "No errors" while the code is 0.
  const char* GetStatusDetail() const;

  // The short text of any code; "Unknown error" for codes outside the table.
  static const char* StatusText(int code);

 private:
  int code_ = AL_SUCCESS;
  std::string detail_;
  bool detailLost_ = false;  // no room could be had for the detail text
};

}  // namespace fennick
