#include "control/host_automation.h"

#include <map>
#include <mutex>

namespace fennick {
namespace {

std::mutex tableMutex;
std::map<std::string, HostAutomation*>& RunningObjects() {
  static std::map<std::string, HostAutomation*> table;
  return table;
}
std::map<std::string, HostFactory>& Factories() {
  static std::map<std::string, HostFactory> factories;
  return factories;
}

// The argument at `index`, the list grown to hold it.
Variant& At(DispatchArguments& arguments, size_t index) {
  if (arguments.size() <= index) arguments.resize(index + 1);
  return arguments[index];
}

// An in-out argument's value going in.
void ReadInto(DispatchArguments& arguments, size_t index, int32_t& slot) { slot = At(arguments, index).AsInt(); }

}  // namespace

std::array<int32_t*, 11> ConversionFields(ConversionSettings& record) {
  return {&record.splitColors, &record.colorLimit, &record.splitStitches, &record.stitchLimit,
          &record.bothOrientations, &record.rotate, &record.shrink, &record.shrinkPercent,
          &record.pes5, &record.ensureTrims, &record.settingsFlag};
}

ConversionValues ToConversionValues(ConversionSettings record) {
  ConversionValues values{};
  const auto fields = ConversionFields(record);
  for (size_t i = 0; i < values.size(); ++i) values[i] = *fields[i];
  return values;
}

void AskConversion(HostAutomation& host, const std::string& extension, ConversionSettings& record) {
  ConversionValues values = ToConversionValues(record);
  host.GetConversion(extension, values);
  const auto fields = ConversionFields(record);
  for (size_t i = 0; i < values.size(); ++i) *fields[i] = values[i];
}

std::array<int32_t*, 9> ResizeFields(ResizeSettings& settings) {
  return {&settings.MinFill,    &settings.MaxSL,        &settings.MinSatin,
          &settings.MaxSatinSL, &settings.ApplyMinFill, &settings.ApplyMax,
          &settings.ApplyMinSatin, &settings.ApplyMaxSL, &settings.Sensitivity};
}

Variant InvokeHost(HostAutomation& host, int32_t dispatchId, DispatchArguments& arguments) {
  const auto truth = [](bool value) { return Variant(static_cast<int32_t>(value ? 1 : 0)); };
  switch (dispatchId) {
    case 2:
      host.PrepareImport();
      return {};
    case 3: {
      int32_t handle = 0;
      const bool given = host.GetDesign(handle);
      At(arguments, 0) = handle;
      return truth(given);
    }
    case 4:
      return truth(host.PutDesign(At(arguments, 0).AsInt()));
    case 5:
      return truth(host.NewDesign());
    case 6:
    case 7: {
      const size_t first = dispatchId == 6 ? 0 : 1;
      int32_t width = 0, height = 0;
      ReadInto(arguments, first, width);
      ReadInto(arguments, first + 1, height);
      if (dispatchId == 6) {
        host.GetHoopSize(width, height);
      } else {
        host.GetFormatHoop(At(arguments, 0).AsString(), width, height);
      }
      arguments[first] = width;
      arguments[first + 1] = height;
      return {};
    }
    case 8:
      return host.GetDesignExtension();
    case 9:
      return host.GetImportExtension();
    case 10:
      return host.GetSaveExtension();
    case 11: {
      ConversionValues values{};
      for (size_t i = 0; i < values.size(); ++i) ReadInto(arguments, i + 1, values[i]);
      host.GetConversion(At(arguments, 0).AsString(), values);
      for (size_t i = 0; i < values.size(); ++i) arguments[i + 1] = values[i];
      return {};
    }
    case 12: {
      ResizeSettings settings;
      const auto fields = ResizeFields(settings);
      for (size_t i = 0; i < fields.size(); ++i) ReadInto(arguments, i, *fields[i]);
      host.GetResizeSettings(settings);
      for (size_t i = 0; i < fields.size(); ++i) arguments[i] = *fields[i];
      return {};
    }
    default:
      return {};
  }
}

void RegisterActiveObject(const std::string& classId, HostAutomation* host) {
  const std::lock_guard<std::mutex> lock(tableMutex);
  RunningObjects()[classId] = host;
}

void RevokeActiveObject(const std::string& classId) {
  const std::lock_guard<std::mutex> lock(tableMutex);
  RunningObjects().erase(classId);
}

HostAutomation* GetActiveObject(const std::string& classId) {
  const std::lock_guard<std::mutex> lock(tableMutex);
  const auto found = RunningObjects().find(classId);
  return found == RunningObjects().end() ? nullptr : found->second;
}

void RegisterHostFactory(const std::string& classId, HostFactory factory) {
  const std::lock_guard<std::mutex> lock(tableMutex);
  if (factory) {
    Factories()[classId] = std::move(factory);
  } else {
    Factories().erase(classId);
  }
}

bool ConnectHost(HostDriver& driver) {
  driver.host_ = GetActiveObject(kHostClassId);
  if (driver.host_ != nullptr) return true;
  HostFactory factory;
  {
    const std::lock_guard<std::mutex> lock(tableMutex);
    const auto found = Factories().find(kHostClassId);
    if (found != Factories().end()) factory = found->second;
  }
  if (factory) driver.created_ = factory();
  driver.host_ = driver.created_.get();
  return driver.host_ != nullptr;
}

}  // namespace fennick
