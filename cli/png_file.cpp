#include "cli/png_file.h"

#include <csetjmp>

#include <png.h>

namespace fennick::cli {
namespace {

struct PngSink {
  std::vector<uint8_t>* bytes;
  std::string* error;
};

void AppendBytes(png_structp png, png_bytep data, png_size_t length) {
  auto* sink = static_cast<PngSink*>(png_get_io_ptr(png));
  sink->bytes->insert(sink->bytes->end(), data, data + length);
}

void NoFlush(png_structp) {}

void RecordError(png_structp png, png_const_charp message) {
  auto* sink = static_cast<PngSink*>(png_get_error_ptr(png));
  *sink->error = message;
  png_longjmp(png, 1);
}

void IgnoreWarning(png_structp, png_const_charp) {}

}  // namespace

bool EncodePng(int32_t width, int32_t height, std::span<const uint32_t> pixels,
               std::vector<uint8_t>& png, std::string& error) {
  if (width <= 0 || height <= 0 || pixels.size() < static_cast<size_t>(width) * static_cast<size_t>(height)) {
    error = "no picture to encode";
    return false;
  }
  // Everything with a destructor lives before setjmp; libpng reports errors
  // by jumping back here.
  std::vector<uint8_t> row(static_cast<size_t>(width) * 3);
  PngSink sink{&png, &error};
  png.clear();
  png_structp writer = png_create_write_struct(PNG_LIBPNG_VER_STRING, &sink, RecordError, IgnoreWarning);
  if (writer == nullptr) {
    error = "out of memory";
    return false;
  }
  png_infop info = png_create_info_struct(writer);
  if (info == nullptr || setjmp(png_jmpbuf(writer))) {
    if (info == nullptr) error = "out of memory";
    png_destroy_write_struct(&writer, &info);
    return false;
  }
  png_set_write_fn(writer, &sink, AppendBytes, NoFlush);
  png_set_IHDR(writer, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), 8,
               PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(writer, info);
  for (int32_t y = 0; y < height; ++y) {
    const uint32_t* source = pixels.data() + static_cast<size_t>(y) * static_cast<size_t>(width);
    for (int32_t x = 0; x < width; ++x) {
      row[3 * static_cast<size_t>(x)] = static_cast<uint8_t>(source[x] >> 16);
      row[3 * static_cast<size_t>(x) + 1] = static_cast<uint8_t>(source[x] >> 8);
      row[3 * static_cast<size_t>(x) + 2] = static_cast<uint8_t>(source[x]);
    }
    png_write_row(writer, row.data());
  }
  png_write_end(writer, nullptr);
  png_destroy_write_struct(&writer, &info);
  return true;
}

}  // namespace fennick::cli
