// Writes the large sample design (satin columns and fill rows) as a file, so
// that whole commands can be timed: fennick_make_large big.dst [STITCHES]
#include <cstdio>
#include <cstdlib>
#include <string>

#include "core/file_io.h"
#include "core/design_path.h"
#include "core/format_table.h"
#include "tools/sample_design.h"

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: fennick_make_large FILE [STITCHES]\n");
    return 2;
  }
  const size_t stitches = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 1'000'000;
  fennick::Design design = fennick::LargeSampleDesign(stitches);
  design.name = argv[1];
  const std::string extension = fennick::DesignPath(argv[1]).GetExtension();
  std::vector<uint8_t> bytes;
  if (fennick::WriteDesignFile(design, bytes, fennick::FormatFromExtension(extension)) == 0) {
    std::fprintf(stderr, "fennick_make_large: cannot write %s\n", argv[1]);
    return 1;
  }
  std::string error;
  if (!fennick::WriteFileAtomic(argv[1], bytes, &error)) {
    std::fprintf(stderr, "fennick_make_large: %s: %s\n", argv[1], error.c_str());
    return 1;
  }
  return 0;
}
