// The preference file parser, reached the way the application reaches it: the
// input is the Main tree's file under a private $XDG_CONFIG_HOME. After the
// reads, one value is written into that file and must read back as written.
#include <cstdint>

#include "core/preferences.h"
#include "fuzz/fuzz_support.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fennick::fuzz::Setup();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace fennick;
  const PreferenceStore store(PreferenceTree::kMain);
  const std::filesystem::path file = store.FilePath();
  if (file.empty()) __builtin_trap();
  std::filesystem::create_directories(file.parent_path());
  fuzz::WriteFile(file, {data, size});

  for (const char* section : {"", "Settings", "Conversion", "Tools"}) {
    for (const PreferenceValue& value : store.Values(section)) {
      if (value.isNumber) {
        store.GetInt(section, value.name, 0);
      } else {
        store.GetString(section, value.name, "");
      }
    }
  }
  ConversionSettings record;
  ReadConversion("dst", record);

  store.SetInt("Settings", "Fuzz Check", 12345);
  if (store.GetInt("Settings", "Fuzz Check", 0) != 12345) __builtin_trap();
  store.SetString("Conversion", "Fuzz Text", "a \"quoted\" \\ text");
  if (store.GetString("Conversion", "Fuzz Text", "") != "a \"quoted\" \\ text") __builtin_trap();
  return 0;
}
