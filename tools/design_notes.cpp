#include "tools/design_notes.h"

#include "core/preferences.h"
#include "core/text.h"
#include "threads/colour_conversion.h"
#include "tools/size_text.h"

namespace fennick {
namespace {

constexpr float kMetresPerUnit = 0.0001f;
// Units to yards in single precision through centimetres and inches, as the
// sheet has always shown them.
constexpr float kCentimetresPerUnit = 0.01f;
constexpr float kInchesPerCentimetre = 0.3937008f;
constexpr float kYardsPerInch = 0.02777778f;

void AppendThreadLine(std::string& text, int number, const ThreadColor& thread, bool english) {
  const char* format = english ? "%i: %s, %i st. %-1.1f yd." : "%i: %s, %i st. %-1.1f m.";
  const float length = english ? static_cast<float>(thread.threadLength) * kCentimetresPerUnit *
                                     kInchesPerCentimetre * kYardsPerInch
                               : static_cast<float>(thread.threadLength) * kMetresPerUnit;
  text += FormatText(format, number, thread.colorName.c_str(), static_cast<int>(thread.stitchCount),
                     static_cast<double>(length));
  text += "\r\n\r\n";
}

}  // namespace

std::string ShortDateText(std::time_t when) {
  std::tm local{};
  localtime_r(&when, &local);
  char text[16];
  std::strftime(text, sizeof text, "%m/%d/%y", &local);
  return text;
}

std::string DesignNotes(const Design& design, bool english, std::string_view date,
                        std::string_view matchText) {
  std::string text = design.name + "\r\n";
  text += SizeText(design, english, true) + "\r\n";
  text.append(date);
  text += "\r\n\r\n";
  int number = 1;
  for (const ThreadColor& thread : design.threads) AppendThreadLine(text, number++, thread, english);
  text += "\r\n";
  text.append(matchText);
  return text;
}

std::string DesignNotes(const Design& design) {
  return DesignNotes(design, GetEnglish() != 0, ShortDateText(std::time(nullptr)), BuildMatchText(design));
}

}  // namespace fennick
