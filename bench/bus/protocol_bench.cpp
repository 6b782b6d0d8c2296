// The tool conversation over a real session bus (run under dbus-run-session):
// a tool asks for a 20,000-stitch design with "QXCall" and acknowledges it,
// against a control in a process of its own (this program with --serve).
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QProcess>
#include <QThread>
#include <cstdio>
#include <string>

#include "control/addin_app.h"
#include "control/bus/bus_transport.h"
#include "control/page_host.h"
#include "tools/sample_design.h"
#include "toolpack/tool_client.h"

namespace fennick {
namespace {

constexpr size_t kStitches = 20'000;

// The control's side: a host whose page holds the design, served until killed.
int Serve() {
  TheApp().InitInstance();
  BusTransport transport;
  std::string error;
  if (!transport.Start(error)) {
    std::fprintf(stderr, "protocol_bench: %s\n", error.c_str());
    return 1;
  }
  TheApp().SetTransport(&transport);
  DesignPageHost host;
  host.page = LargeSampleDesign(kStitches);
  host.page.name = "/tmp/sample.pes";
  return QCoreApplication::exec();
}

class Conversation {
 public:
  Conversation() : client_(FENNICK_PROTOCOL_NUMBER, getpid()) {
    std::string error;
    client_.Connect(error);
    client_.retryPeriod = std::chrono::seconds(5);  // nothing is refused here: no second ask
    control_.start(QCoreApplication::applicationFilePath(), {"--serve"});
    QDBusConnectionInterface* bus = QDBusConnection::sessionBus().interface();
    while (!bus->isServiceRegistered(FENNICK_BUS_NAME)) QThread::msleep(5);
  }
  ~Conversation() {
    control_.kill();
    control_.waitForFinished();
  }
  // One round trip; with `take`, the design is taken off the clipboard too.
  size_t RoundTrip(bool take) {
    std::string error;
    const std::optional<int32_t> answer = client_.Ask(FENNICK_MSG_CALL, FENNICK_MSG_CALLBACK);
    size_t size = answer.value_or(0);
    if (take) size = client_.Fetch(FENNICK_FORMAT_EMBROIDERY_FILE, error).value_or(std::vector<uint8_t>()).size();
    client_.Tell(FENNICK_MSG_MESSAGE_RECEIVED);
    return size;
  }

 private:
  ToolClient client_;
  QProcess control_;
};

void RunConversation(benchmark::State& state, bool take) {
  Conversation conversation;
  size_t received = 0;
  for (auto _ : state) received = conversation.RoundTrip(take);
  if (received == 0) state.SkipWithError("no design came back");
  state.counters["bytes"] = static_cast<double>(received);
}

void BM_QXCallRoundTrip(benchmark::State& state) { RunConversation(state, false); }
void BM_QXCallTakingTheDesign(benchmark::State& state) { RunConversation(state, true); }
BENCHMARK(BM_QXCallRoundTrip)->Iterations(1000)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(BM_QXCallTakingTheDesign)->Iterations(1000)->Unit(benchmark::kMicrosecond)->UseRealTime();

}  // namespace
}  // namespace fennick

int main(int argc, char** argv) {
  QCoreApplication application(argc, argv);
  if (argc > 1 && std::string(argv[1]) == "--serve") return fennick::Serve();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
