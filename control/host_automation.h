// The host's side of the control: the automation object the control calls
// back (methods by name and by dispatch id 2 to 12), how the control finds it
// (the running-object table, then a factory registered for the host's class
// id) and the class ids of this product.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "control/variant.h"
#include "core/preferences.h"
#include "resize/resize_engine.h"

namespace fennick {

// Class identifiers, fixed once and kept, in the text form with braces.
inline constexpr char kControlClassId[] = "{68F3B8D7-C90D-4681-8547-CEBB969143B4}";
inline constexpr char kPropertyPageClassId[] = "{C21005DC-883C-46B6-8C60-A6C21141E6A7}";
inline constexpr char kTypeLibraryId[] = "{0F8E6833-CE4A-4F34-88C0-EA4DDFACFAA2}";
inline constexpr char kDispatchInterfaceId[] = "{F2BBAB17-F5BE-4436-8154-11E144137346}";
inline constexpr char kEventInterfaceId[] = "{794C30E1-AC72-4511-AE5B-DEB7E8FC0F6C}";
// The host application's class, under which a host announces itself.
inline constexpr char kHostClassId[] = "{CD21DD56-82C0-44CC-A03D-18BCEEBF6D65}";

// The eleven values a host's GetConversion fills, in order: split by colours
// on, colour limit, split by stitches on, stitch limit, both orientations,
// rotate, shrink, shrink percent, PES version 5, ensure trims, last word.
using ConversionValues = std::array<int32_t, 11>;
// The record's fields that those values are, in that order.
std::array<int32_t*, 11> ConversionFields(ConversionSettings& record);
ConversionValues ToConversionValues(ConversionSettings record);
// The nine resize settings' fields in the order a host passes them.
std::array<int32_t*, 9> ResizeFields(ResizeSettings& settings);

// Hoop sizes are in tenths of a millimetre; handles are the caller's to free
// where the method says so.
class HostAutomation {
 public:
  virtual ~HostAutomation() = default;
  virtual void PrepareImport() = 0;                                                             // 2
  virtual bool GetDesign(int32_t& hDesign) = 0;                                                 // 3
  virtual bool PutDesign(int32_t hDesign) = 0;                                                  // 4
  virtual bool NewDesign() = 0;                                                                 // 5
  virtual void GetHoopSize(int32_t& width, int32_t& height) = 0;                                // 6
  virtual void GetFormatHoop(const std::string& extension, int32_t& width, int32_t& height) = 0;  // 7
  virtual std::string GetDesignExtension() = 0;                                                 // 8
  virtual std::string GetImportExtension() = 0;                                                 // 9
  virtual std::string GetSaveExtension() = 0;                                                   // 10
  virtual void GetConversion(const std::string& extension, ConversionValues& values) = 0;       // 11
  virtual void GetResizeSettings(ResizeSettings& settings) = 0;                                 // 12
};

// Lets the host overwrite the record's eleven conversion values for `extension`.
void AskConversion(HostAutomation& host, const std::string& extension, ConversionSettings& record);

// Calls a host method by dispatch id. Out-arguments come back in `arguments`
// (which is grown to the method's count); the result is the method's, empty
// for one without. An unknown id does nothing and gives an empty result.
Variant InvokeHost(HostAutomation& host, int32_t dispatchId, DispatchArguments& arguments);

// The running-object table: a host announces itself under its class id while
// it runs. The table does not own the host; revoke before destroying it.
void RegisterActiveObject(const std::string& classId, HostAutomation* host);
void RevokeActiveObject(const std::string& classId);
HostAutomation* GetActiveObject(const std::string& classId);

// A factory that makes a host for a class id when none runs; an empty
// function removes it.
using HostFactory = std::function<std::unique_ptr<HostAutomation>()>;
void RegisterHostFactory(const std::string& classId, HostFactory factory);

// The connection a method makes to the host and drops at its end: a running
// host, or one the factory made for this method alone.
class HostDriver {
 public:
  HostAutomation* operator->() const { return host_; }
  HostAutomation& operator*() const { return *host_; }
  explicit operator bool() const { return host_ != nullptr; }

 private:
  friend bool ConnectHost(HostDriver& driver);
  HostAutomation* host_ = nullptr;
  std::unique_ptr<HostAutomation> created_;
};

// Finds the host of kHostClassId: first in the running-object table, then
// through its factory. False when neither gives one.
bool ConnectHost(HostDriver& driver);

}  // namespace fennick
