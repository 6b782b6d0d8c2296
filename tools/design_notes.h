// The text sheet of a design: its name, size, date and threads, with
// "\r\n" line ends as the sheet is opened by any text viewer.
#pragma once

#include <ctime>
#include <string>
#include <string_view>

#include "core/design.h"

namespace fennick {

// The date as MM/DD/YY in local time.
std::string ShortDateText(std::time_t when);

// `english` picks inches and yards over centimetres and metres. `matchText`,
// the paragraph of thread matches from the brand charts, goes last.
std::string DesignNotes(const Design& design, bool english, std::string_view date,
                        std::string_view matchText);
// The sheet as the notes command and the text save write it: units by the
// "English" preference, today's date, and BuildMatchText's paragraph.
std::string DesignNotes(const Design& design);

}  // namespace fennick
