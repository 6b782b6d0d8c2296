// The commands the tool bar's window answers on the host's current design:
// each fetches the design from the host, runs one tool and hands the result
// back. With no host or no design on the page a command does nothing and
// shows nothing.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "fennick/fennickaddin.h"

namespace fennick {

// The ids are the public header's.
inline constexpr int32_t kCommandSave = FENNICK_CMD_SAVE;
inline constexpr int32_t kCommandOpen = FENNICK_CMD_OPEN;
inline constexpr int32_t kCommandNew = FENNICK_CMD_NEW;
inline constexpr int32_t kCommandAutoBaste = FENNICK_CMD_AUTO_BASTE;
inline constexpr int32_t kCommandColorSort = FENNICK_CMD_COLOR_SORT;
inline constexpr int32_t kCommandNotes = FENNICK_CMD_NOTES;
inline constexpr int32_t kCommandBitmap = FENNICK_CMD_BITMAP;
inline constexpr int32_t kCommandReduceNeedles = FENNICK_CMD_REDUCE_NEEDLES;
inline constexpr int32_t kCommandPreferences = FENNICK_CMD_PREFERENCES;
inline constexpr int32_t kCommandFitHoop = FENNICK_CMD_FIT_HOOP;

struct DesignCommand {
  int32_t id;
  const char* name;      // as a menu shows it
  const char* resource;  // status text, a line feed, the tip
};

// New, Open, Save, Auto-Baste, Color Sort, Notes, Bitmap, Reduce Needles,
// Preferences, Fit Hoop.
std::span<const DesignCommand> DesignCommands();
// The command of `id`, or nullptr.
const DesignCommand* FindDesignCommand(int32_t id);
// The parts of a command string after and before its line feed.
std::string TipText(const std::string& resource);
std::string StatusText(const std::string& resource);

// Runs the command; false when `id` is none of the design commands.
bool RunDesignCommand(int32_t id);

}  // namespace fennick
