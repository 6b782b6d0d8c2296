#include <cstdlib>

#include "cli/commands.h"
#include "cli/png_file.h"
#include "core/preferences.h"

namespace fennick::cli {
namespace {

// "RRGGBB" as 0x00RRGGBB.
bool ParseColor(const std::string& text, uint32_t& color) {
  if (text.size() != 6 || text.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) return false;
  color = static_cast<uint32_t>(std::strtoul(text.c_str(), nullptr, 16));
  return true;
}

bool ParseOptions(const Arguments& arguments, BitmapOptions& options) {
  for (size_t i = 2; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    const bool hasValue = i + 1 < arguments.size();
    if (argument == "--size" && hasValue) {
      const std::string& value = arguments[++i];
      char* end = nullptr;
      const long size = std::strtol(value.c_str(), &end, 10);
      if (*end != '\0' || size < 1 || size > 8192) {
        ReportError("render", "the size must be 1 to 8192 pixels, not \"" + value + "\"");
        return false;
      }
      options.size = static_cast<int32_t>(size);
    } else if (argument == "--flat" || argument == "--3d") {
      options.shaded = argument == "--3d";
    } else if (argument == "--outline") {
      options.outline = true;
    } else if (argument == "--jumps") {
      options.showJumps = true;
    } else if (argument == "--background" && hasValue) {
      if (!ParseColor(arguments[++i], options.background)) {
        ReportError("render", "the background must be RRGGBB in hexadecimal, not \"" + arguments[i] + "\"");
        return false;
      }
    } else {
      ReportError("render", "unknown argument \"" + argument + "\"");
      return false;
    }
  }
  return true;
}

}  // namespace

bool SavePicture(Design& design, BitmapOptions options, const std::string& path) {
  const std::string extension = LowerExtension(path);
  if (extension != "png" && extension != "bmp") {
    ReportError(path, "pictures are written as .png or .bmp");
    return false;
  }
  // A PNG stores its top row first, a bitmap file its bottom row: either way
  // the design's y points up in the picture.
  options.flipY = extension == "png";
  DesignRenderer renderer;
  if (!RenderBitmap(design, options, renderer)) {
    ReportError(path, "no bitmap of " + std::to_string(options.size) + " pixels can be had");
    return false;
  }
  const StitchBitmap& bitmap = renderer.bitmap;
  std::vector<uint8_t> bytes;
  if (extension == "bmp") {
    bytes = BmpFileImage(bitmap);
  } else if (std::string error; !EncodePng(bitmap.width, bitmap.height, bitmap.pixels, bytes, error)) {
    ReportError(path, "cannot encode the PNG: " + error);
    return false;
  }
  return SaveFile(path, bytes);
}

int RunRender(const Arguments& arguments) {
  if (arguments.size() < 2) {
    ReportError("render", "expected IN OUT");
    return 2;
  }
  BitmapOptions options = BitmapOptionsFromPreferences();
  // Previews keep their background as 0x00BBGGRR.
  const uint32_t background = GetBackgroundColor();
  options.background = (background & 0xFF) << 16 | (background & 0xFF00) | (background >> 16 & 0xFF);
  if (!ParseOptions(arguments, options)) return 2;
  Design design;
  if (!LoadDesign(arguments[0], design)) return 1;
  return SavePicture(design, options, arguments[1]) ? 0 : 1;
}

}  // namespace fennick::cli
