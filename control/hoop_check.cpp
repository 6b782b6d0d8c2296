#include "control/hoop_check.h"

#include "core/user_interface.h"
#include "tools/save_pipeline.h"

namespace fennick {

ConversionSettings HostConversion(HostAutomation& host, const std::string& extension) {
  ConversionSettings record;  // the first word -1, all others 0
  ReadConversion(extension, record);
  host.GetFormatHoop(extension, record.hoopWidth, record.hoopHeight);
  AskConversion(host, extension, record);
  return record;
}

bool ConfirmHoopForSave(HostAutomation& host, const Design& design, ConversionSettings& record) {
  constexpr char kSaveError[] = "Save Error";
  int32_t pageWidth = 0, pageHeight = 0;
  host.GetHoopSize(pageWidth, pageHeight);
  // Tenths of a millimetre at the boundary, millimetres inside.
  record.hoopWidth /= 10;
  record.hoopHeight /= 10;
  ConversionSettings page = record;
  page.hoopWidth = pageWidth / 10;
  page.hoopHeight = pageHeight / 10;
  Design copy = design;
  if (FitDesignToHoop(copy, page) == 0) return true;
  if (FitDesignToHoop(copy, record) != 0) {
    CurrentUserInterface().ShowMessage(
        "This design is too large for even the largest hoop for this format.\n\nPlease increase your hoop size.",
        kSaveError, MessageButtons::kOk);
    return false;
  }
  const MessageAnswer answer = CurrentUserInterface().ShowMessage(
      "This design is too large for the current hoop, but it can be saved in the current format.\n\nWould you "
      "like to continue with saving it?",
      kSaveError, MessageButtons::kYesNo);
  return answer == MessageAnswer::kYes;
}

}  // namespace fennick
