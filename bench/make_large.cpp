// Writes the large sample design (satin columns and fill rows) as a file, so
// that whole commands can be timed:
//   fennick_make_large FILE [STITCHES] [--fit WIDTHxHEIGHT]
//   fennick_make_large FILE --piece column|fill WIDTHxHEIGHT
// --fit lays the tiles over each other within WIDTH by HEIGHT stitch units, so
// that the design passes the hoop fit and the whole save pipeline runs.
// --piece writes one of the resize engine's test pieces instead, of that size.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "core/design_path.h"
#include "core/file_io.h"
#include "core/format_table.h"
#include "tools/sample_design.h"

int main(int argc, char** argv) {
  const char* file = nullptr;
  size_t stitches = 1'000'000;
  long fitWidth = 0, fitHeight = 0;
  const char* piece = nullptr;
  for (int i = 1; i < argc; ++i) {
    const bool isPiece = std::strcmp(argv[i], "--piece") == 0 && i + 2 < argc;
    if (isPiece) piece = argv[++i];
    if ((std::strcmp(argv[i], "--fit") == 0 || isPiece) && i + 1 < argc) {
      char* cross = nullptr;
      fitWidth = std::strtol(argv[++i], &cross, 10);
      fitHeight = (*cross == 'x' || *cross == 'X') ? std::strtol(cross + 1, nullptr, 10) : 0;
      if (fitWidth <= 0 || fitHeight <= 0) {
        std::fprintf(stderr, "fennick_make_large: %s takes WIDTHxHEIGHT in stitch units\n", isPiece ? "--piece" : "--fit");
        return 2;
      }
    } else if (file == nullptr) {
      file = argv[i];
    } else {
      stitches = std::strtoull(argv[i], nullptr, 10);
    }
  }
  if (file == nullptr) {
    std::fprintf(stderr,
                 "usage: fennick_make_large FILE [STITCHES] [--fit WIDTHxHEIGHT]\n"
                 "       fennick_make_large FILE --piece column|fill WIDTHxHEIGHT\n");
    return 2;
  }
  const auto width = static_cast<int32_t>(fitWidth), height = static_cast<int32_t>(fitHeight);
  fennick::Design design;
  if (piece == nullptr) {
    design = fennick::LargeSampleDesign(stitches, width, height);
  } else if (std::strcmp(piece, "column") == 0) {
    design = fennick::SatinColumnSample(height, width);
  } else if (std::strcmp(piece, "fill") == 0) {
    design = fennick::FillSample(width, height);
  } else {
    std::fprintf(stderr, "fennick_make_large: --piece is column or fill\n");
    return 2;
  }
  design.name = file;
  const std::string extension = fennick::DesignPath(file).GetExtension();
  std::vector<uint8_t> bytes;
  if (fennick::WriteDesignFile(design, bytes, fennick::FormatFromExtension(extension)) == 0) {
    std::fprintf(stderr, "fennick_make_large: cannot write %s\n", file);
    return 1;
  }
  std::string error;
  if (!fennick::WriteFileAtomic(file, bytes, &error)) {
    std::fprintf(stderr, "fennick_make_large: %s: %s\n", file, error.c_str());
    return 1;
  }
  return 0;
}
