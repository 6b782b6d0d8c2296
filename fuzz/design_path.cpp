// DesignPath::Parse and the operations that cut names apart. The text form is
// not a fixed point on purpose (a ZIP name of two characters or less swallows
// the colon after it), so only the absence of faults is checked.
#include <cstdint>
#include <string>

#include "core/design_path.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace fennick;
  const std::string text(reinterpret_cast<const char*>(data), size);
  DesignPath path(text);
  const DesignPath again(path.ToString());
  again.FullName();
  path.GetExtension();
  path.GetStem();
  path.HasExtension("pes");
  path.LastExtension("._");
  path.NextVariant();
  path.ChangeExtension("dst");
  path.ChangeFileName("folder");
  DesignPath::TitleCase(text);
  return 0;
}
