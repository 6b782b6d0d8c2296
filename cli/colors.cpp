#include <cstdio>
#include <iostream>

#include "cli/commands.h"
#include "core/embroidery_file.h"
#include "core/format_table.h"
#include "core/global_memory.h"
#include "core/preferences.h"
#include "threads/colour_conversion.h"

namespace fennick::cli {
namespace {

// The colour list as a block carries it: a chart heading is a thread with a
// brand and no colour name of its own.
struct ColorChart {
  std::string title;  // empty for a format's single table
  std::vector<const ThreadColor*> colors;
};

std::vector<ColorChart> GroupCharts(const Design& design) {
  std::vector<ColorChart> charts;
  for (const ThreadColor& thread : design.threads) {
    if (thread.colorName.empty() && !thread.brand.empty()) {
      charts.push_back({thread.brand, {}});
      continue;
    }
    if (charts.empty()) charts.emplace_back();
    charts.back().colors.push_back(&thread);
  }
  return charts;
}

void PrintText(const std::vector<ColorChart>& charts) {
  for (const ColorChart& chart : charts) {
    const bool titled = !chart.title.empty();
    if (titled) std::cout << chart.title << "\n";
    for (size_t i = 0; i < chart.colors.size(); ++i) {
      char line[64];
      std::snprintf(line, sizeof line, "%s%3zu  %s  ", titled ? "  " : "", i + 1,
                    HexColor(chart.colors[i]->rgb).c_str());
      std::cout << line << chart.colors[i]->colorName << "\n";
    }
  }
}

void PrintJson(const std::string& extension, const std::vector<ColorChart>& charts) {
  std::cout << "{\"format\":" << JsonString(extension) << ",\"charts\":[";
  for (size_t c = 0; c < charts.size(); ++c) {
    const ColorChart& chart = charts[c];
    std::cout << (c > 0 ? "," : "") << "{\"title\":" << (chart.title.empty() ? "null" : JsonString(chart.title))
              << ",\"colors\":[";
    for (size_t i = 0; i < chart.colors.size(); ++i) {
      const ThreadColor& color = *chart.colors[i];
      std::cout << (i > 0 ? "," : "") << "{\"index\":" << i + 1 << ",\"rgb\":" << JsonString(HexColor(color.rgb))
                << ",\"name\":" << JsonString(color.colorName) << ",\"chart_index\":" << color.chartIndex << "}";
    }
    std::cout << "]}";
  }
  std::cout << "]}\n";
}

}  // namespace

int RunColors(const Arguments& arguments) {
  std::string extension;
  bool json = false;
  for (const std::string& argument : arguments) {
    if (argument == "--json") {
      json = true;
    } else if (extension.empty() && !argument.empty() && argument[0] != '-') {
      extension = argument;
    } else {
      ReportError("colors", "expected EXT [--json]");
      return 2;
    }
  }
  if (!extension.empty() && extension[0] == '.') extension.erase(0, 1);
  if (extension.empty()) {
    ReportError("colors", "name a format's extension, such as pes or jef");
    return 2;
  }
  const std::string path = "x." + extension;
  const std::string lower = LowerExtension(path);
  if (FormatFromExtension(lower) == kFormatUnknown) {
    ReportError(extension, "is not the extension of a design format");
    return 2;
  }
  // No conversion setting narrows a format's colour table.
  const GlobalHandle block = GetFormatColors(path, ConversionSettings{});
  Design design;
  ParseEmbroideryFile(design, block);
  GlobalFree(block);
  if (design.threads.empty()) {
    ReportError(extension, "the format has no colour table");
    return 1;
  }
  const std::vector<ColorChart> charts = GroupCharts(design);
  if (json) {
    PrintJson(lower, charts);
  } else {
    PrintText(charts);
  }
  return 0;
}

}  // namespace fennick::cli
