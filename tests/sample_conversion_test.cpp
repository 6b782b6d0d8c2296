// Every real sample converted to every writable format through the save
// pipeline. The bytes are held to a manifest (data/conversion_bytes.txt) so
// that any change to a writer's output shows up here and has to be owned:
// rows that a deliberate change moved name it in their note. Run with
// FENNICK_WRITE_CONVERSION_BYTES=1 to rewrite the manifest; unchanged rows
// keep their notes, changed ones are marked "changed" for a person to explain.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "core/format_table.h"
#include "core/preferences.h"
#include "core/text.h"
#include "core/user_interface.h"
#include "tests/test_support.h"
#include "tools/save_pipeline.h"

namespace fennick {
namespace {

namespace fs = std::filesystem;

const char* const kSamples[] = {
    "geometric_objects.dst", "geometric_objects.emd", "geometric_objects.exp", "geometric_objects.hus",
    "geometric_objects.jef", "geometric_objects.pcs", "geometric_objects.pec", "geometric_objects.pes",
    "geometric_objects.phb", "geometric_objects.phc", "geometric_objects.sew", "geometric_objects.shv",
    "geometric_objects.vip", "geometric_objects.xxx", "reorder.pes",           "shamrockin.emd",
    "shamrockin.pes",        "Star.pcs",              "star.pes",              "Star.phb",
    "Star.shv",              "Star.vip",              "Star.xxx",
};

struct Target {
  const char* label;
  FormatCode format;
  bool pes5;
};
const Target kTargets[] = {
    {"PES", kFormatPes, false}, {"PES5", kFormatPes, true}, {"SEW", kFormatSew, false},
    {"JEF", kFormatJef, false}, {"HUS", kFormatHus, false}, {"PCS", kFormatPcs, false},
    {"DST", kFormatDst, false}, {"XXX", kFormatXxx, false}, {"EXP", kFormatExp, false},
    {"VIP", kFormatVip, false},
};

uint64_t Fnv1a(const std::vector<uint8_t>& bytes) {
  uint64_t hash = 14695981039346656037ull;
  for (uint8_t byte : bytes) hash = (hash ^ byte) * 1099511628211ull;
  return hash;
}

struct Row {
  std::string key;    // "sample -> target"
  std::string bytes;  // per written piece "size:hash", or "refused"
  std::string note;
};

class SilentUserInterface : public UserInterface {
 public:
  MessageAnswer ShowMessage(const std::string&, const std::string&, MessageButtons) override {
    return MessageAnswer::kOk;
  }
  void SetWaitCursor(bool) override {}
};

// What converting `sample` to `target` writes, piece by piece.
std::string ConvertedBytes(const test::ScratchFolder& folder, const std::string& sample, const Target& target) {
  Design design;
  if (ReadDesignFile(design, (fs::path(FENNICK_TEST_DATA) / sample).string(), LastFile::kLeave) != 0) {
    return "unreadable";
  }
  ConversionSettings settings = BuiltInConversion(target.format);
  settings.pes5 = target.pes5 ? 1 : 0;
  SetSaveAsConversion(settings);
  const fs::path out = folder.Path() / target.label;
  fs::create_directories(out);
  design.name = (out / ("out." + AsciiLower(FormatExtension(target.format)))).string();
  std::vector<DesignPath> written;
  SaveDesign(design, &written, 1, &settings);
  std::string result;
  for (const DesignPath& path : written) {
    const std::vector<uint8_t> bytes = folder.Read((fs::path(target.label) / path.GetFileName()).string());
    result += (result.empty() ? "" : " ") + std::to_string(bytes.size()) + ":" + FormatText("%016llx",
                                                                                            static_cast<unsigned long long>(Fnv1a(bytes)));
  }
  fs::remove_all(out);
  return result.empty() ? "refused" : result;
}

const fs::path kManifest = fs::path(FENNICK_TEST_DATA) / "conversion_bytes.txt";

// Lines "sample -> TARGET | bytes | note"; '#' starts a comment line.
std::map<std::string, Row> ReadManifest() {
  std::map<std::string, Row> rows;
  std::ifstream file(kManifest);
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    const size_t first = line.find(" | "), second = line.find(" | ", first + 3);
    if (first == std::string::npos) continue;
    Row row{line.substr(0, first), line.substr(first + 3, second == std::string::npos ? std::string::npos : second - first - 3),
            second == std::string::npos ? "" : line.substr(second + 3)};
    rows[row.key] = row;
  }
  return rows;
}

TEST(SampleConversion, EveryWriterKeepsItsBytes) {
  test::ScratchFolder folder;
  SilentUserInterface silent;
  SetUserInterface(&silent);
  const std::map<std::string, Row> manifest = ReadManifest();
  const bool rewrite = std::getenv("FENNICK_WRITE_CONVERSION_BYTES") != nullptr;
  std::vector<Row> rows;
  for (const char* sample : kSamples) {
    for (const Target& target : kTargets) {
      Row row{std::string(sample) + " -> " + target.label, ConvertedBytes(folder, sample, target), ""};
      const auto known = manifest.find(row.key);
      if (rewrite) {
        row.note = known == manifest.end() ? "new" : known->second.bytes == row.bytes ? known->second.note : "changed";
      } else if (known == manifest.end()) {
        ADD_FAILURE() << row.key << " is missing from " << kManifest;
      } else {
        EXPECT_EQ(row.bytes, known->second.bytes) << row.key;
      }
      rows.push_back(row);
    }
  }
  SetUserInterface(nullptr);
  SetSaveAsConversion(BuiltInConversion(kFormatPes));
  if (!rewrite) return;
  std::ofstream file(kManifest);
  file << "# Every sample converted to every writable format with the built-in conversion settings:\n"
          "# the size and FNV-1a hash of each file written. The note names the change that moved a row.\n";
  for (const Row& row : rows) file << row.key << " | " << row.bytes << " | " << row.note << "\n";
}

}  // namespace
}  // namespace fennick
