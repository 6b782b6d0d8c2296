// fennick-tool: the reference tool pack. The tool bar starts it with the
// protocol number as its only argument; the program's name says which of its
// operations the button stands for. Its conversation is the one every
// well-behaved tool holds: ask for the design, acknowledge it, work, send the
// result back to be saved, and always end with "Plug-in ended".
#include <QCoreApplication>
#include <cstdio>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <unistd.h>

#include "core/embroidery_file.h"
#include "fennick/protocol.h"
#include "toolpack/operations.h"
#include "toolpack/registration.h"
#include "toolpack/tool_client.h"

namespace fennick {
namespace {

constexpr char kUsage[] =
    "usage: fennick-tool NUMBER [mirror|autobaste|colorsort|split]\n"
    "       fennick-tool --register|--unregister [KEY-FOLDER [TOOL-FOLDER]]\n";

int Fail(const std::string& message) {
  std::fprintf(stderr, "fennick-tool: %s\n", message.c_str());
  return 1;
}

// The design's conversation, from the request to the save.
int Converse(ToolClient& client, ToolOperation operation) {
  std::string error;
  if (!client.TakeTurn()) return Fail("another tool kept the clipboard");
  const std::optional<int32_t> called = client.Ask(FENNICK_MSG_CALL, FENNICK_MSG_CALLBACK);
  if (!called) return Fail(client.Stopped() ? "the control stopped" : "the control did not answer (busy with another tool)");
  if (*called == 0) return Fail("the host has no design");
  const std::optional<std::vector<uint8_t>> block = client.Fetch(FENNICK_FORMAT_EMBROIDERY_FILE, error);
  // Acknowledged whatever came of it: the control waits for it before it serves anyone.
  client.Tell(FENNICK_MSG_MESSAGE_RECEIVED);
  client.EndTurn();
  if (!block) return Fail("cannot take the design: " + error);
  Design design;
  DecodeEmbroideryFile(design, *block);
  if (design.stitches.Empty()) return Fail("the control sent no design");

  std::vector<Design> result = ApplyOperation(operation, std::move(design));
  const bool several = result.size() > 1;
  const char* format = several ? FENNICK_FORMAT_MULT_EMBROIDERY_FILES : FENNICK_FORMAT_EMBROIDERY_FILE;
  const std::vector<uint8_t> payload = several ? EncodeDesignList(result) : EncodeEmbroideryFile(result[0]);
  if (!client.TakeTurn()) return Fail("another tool kept the clipboard");
  if (!client.Offer(format, payload, error)) return Fail("cannot offer the result: " + error);
  // A save refused while another tool is served leaves the payload where it
  // was: asked again then. Once the control took it, its answer will come.
  const auto unanswered = [&] {
    std::string ignored;
    const std::optional<std::vector<uint8_t>> still = client.Fetch(format, ignored);
    return still && *still == payload;
  };
  const std::optional<int32_t> saved =
      client.Ask(several ? FENNICK_MSG_REQ_MULTI_SAVE : FENNICK_MSG_REQUEST_SAVE, FENNICK_MSG_FILE_SAVED, unanswered);
  client.EndTurn();
  if (!saved) return Fail("the control did not take the result");
  return 0;
}

int Run(int argc, char** argv) {
  const std::string first = argc > 1 ? argv[1] : "";
  if (first == "--register" || first == "--unregister") {
    const std::string keyFolder = argc > 2 ? argv[2] : "";
    const std::string toolFolder =
        argc > 3 ? argv[3] : std::filesystem::read_symlink("/proc/self/exe").parent_path().string();
    std::string error;
    if (!RegisterTools(keyFolder, toolFolder, first == "--register", error)) return Fail(error);
    return 0;
  }
  char* end = nullptr;
  const long number = std::strtol(first.c_str(), &end, 10);
  const std::optional<ToolOperation> operation =
      OperationNamed(argc > 2 ? argv[2] : std::filesystem::path(argv[0]).filename().string());
  if (first.empty() || *end != '\0' || !operation || argc > 3) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  QCoreApplication application(argc, argv);
  ToolClient client(static_cast<int32_t>(number), getpid());
  // How long a busy control is asked again before the tool gives up.
  if (const char* seconds = std::getenv("FENNICK_TOOL_WAIT")) client.wait = std::chrono::seconds(std::atoi(seconds));
  std::string error;
  if (!client.Connect(error)) return Fail(error);
  const int status = Converse(client, *operation);
  if (!client.Stopped()) client.Tell(FENNICK_MSG_PLUG_IN_ENDED);
  client.Flush();
  return status;
}

}  // namespace
}  // namespace fennick

int main(int argc, char** argv) { return fennick::Run(argc, argv); }
