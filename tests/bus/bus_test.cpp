// The conversation between the control and tools over a real session bus
// (every test runs under a bus of its own): the reference tool pack started
// from the tool bar, and raw tools that this program plays itself
// (--raw-tool) to be refused, die, send garbage or carry 100 MB.
#include <gtest/gtest.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDBusMessage>
#include <QEventLoop>
#include <QProcess>
#include <QTimer>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <functional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "control/addin_app.h"
#include "control/bus/bus_transport.h"
#include "control/page_host.h"
#include "control/tool_bar.h"
#include "core/format_table.h"
#include "core/embroidery_file.h"
#include "core/file_io.h"
#include "tests/test_support.h"
#include "toolpack/tool_client.h"

namespace fennick {
namespace {

using namespace std::chrono_literals;

// Open memfds of this process: none may outlive a conversation.
size_t OpenMemfds() {
  size_t count = 0;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd", error)) {
    std::error_code ignored;
    count += std::filesystem::read_symlink(entry.path(), ignored).string().starts_with("/memfd:") ? 1 : 0;
  }
  return count;
}

// Runs the event loop until `done` holds; false after `limit`.
bool WaitUntil(const std::function<bool()>& done, std::chrono::milliseconds limit = 30s) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (!done()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    QEventLoop loop;
    QTimer::singleShot(10, &loop, &QEventLoop::quit);
    loop.exec();
  }
  return true;
}

// A tool this program plays: [--wait MS] then
//   call-and-hang                      asks for the design, never acknowledges
//   ask REQUEST REPLY [FORMAT OUT]     asks, takes the reply's block (FORMAT
//                                      "handle": by handle) into OUT, ends
//   offer FORMAT FILE [REQUEST]        offers FILE; with REQUEST asks for the
//                                      save and ends, else acknowledges and
//                                      stays until the control stops
// Exit 3: no reply; 4: a memfd left open; 5: the clipboard failed.
int RawTool(std::vector<std::string> args) {
  ToolClient client(FENNICK_PROTOCOL_NUMBER, getpid());
  client.retryPeriod = 200ms;
  std::string error;
  if (!client.Connect(error)) return 5;
  if (args.size() > 1 && args[0] == "--wait") {
    client.wait = std::chrono::milliseconds(std::stoi(args[1]));
    args.erase(args.begin(), args.begin() + 2);
  }
  const auto end = [&](int status) {
    client.Tell(FENNICK_MSG_PLUG_IN_ENDED);
    client.Flush();
    return status != 0 ? status : OpenMemfds() == 0 ? 0 : 4;
  };
  if (args.at(0) == "call-and-hang") {
    if (!client.Ask(FENNICK_MSG_CALL, FENNICK_MSG_CALLBACK)) return 3;
    return QCoreApplication::exec();
  }
  if (args.at(0) == "ask") {
    const std::optional<int32_t> answer = client.Ask(args.at(1).c_str(), args.at(2).c_str());
    if (!answer) return 3;
    if (args.size() < 5) return end(0);
    const std::optional<std::vector<uint8_t>> bytes = args[3] == "handle"
                                                          ? client.TakeBlock(static_cast<uint32_t>(*answer), error)
                                                          : client.Fetch(args[3].c_str(), error);
    client.Tell(FENNICK_MSG_MESSAGE_RECEIVED);
    return end(bytes && WriteFileAtomic(args[4], *bytes) ? 0 : 5);
  }
  std::vector<uint8_t> bytes;
  ReadWholeFile(args.at(2), bytes);
  if (!client.Offer(args.at(1).c_str(), bytes, error)) return 5;
  bytes = {};
  if (args.size() > 3) return end(client.Ask(args[3].c_str(), FENNICK_MSG_FILE_SAVED) ? 0 : 3);
  client.Tell(FENNICK_MSG_MESSAGE_RECEIVED);
  QEventLoop loop;
  QObject::connect(&client, &ToolClient::Woken, &loop, &QEventLoop::quit);
  while (!client.Stopped()) loop.exec();
  return OpenMemfds() == 0 ? 0 : 4;
}

// Every protocol message on the bus, the control's replies included.
class MessageLog : public QObject {
  Q_OBJECT

 public:
  struct Heard {
    std::string name;
    int32_t wParam;
    int64_t lParam;
  };
  MessageLog() {
    QDBusConnection::sessionBus().connect(QString(), QString(), FENNICK_PROTOCOL_INTERFACE, FENNICK_PROTOCOL_MEMBER,
                                          this, SLOT(OnMessage(QDBusMessage)));
  }
  // The names heard with this cookie, in order.
  std::vector<std::string> Names(int64_t cookie) const {
    std::vector<std::string> names;
    for (const Heard& each : heard) {
      if (each.lParam == cookie) names.push_back(each.name);
    }
    return names;
  }
  // The cookies of the tools that ended.
  std::vector<int64_t> Ended() const {
    std::vector<int64_t> cookies;
    for (const Heard& each : heard) {
      if (each.name == FENNICK_MSG_PLUG_IN_ENDED) cookies.push_back(each.lParam);
    }
    return cookies;
  }
  bool Has(const std::string& name, int64_t cookie) const {
    const std::vector<std::string> names = Names(cookie);
    return std::find(names.begin(), names.end(), name) != names.end();
  }

  std::vector<Heard> heard;

 private slots:
  void OnMessage(const QDBusMessage& message) {
    const QList<QVariant> arguments = message.arguments();
    if (arguments.size() != 3) return;
    heard.push_back({arguments[0].toString().toStdString(), arguments[1].toInt(), arguments[2].toLongLong()});
  }
};

class FolderUser : public test::Messages {
 public:
  std::optional<bool> AskWithCheckBox(const std::string& caption, const std::string&, const std::string&,
                                      bool) override {
    captions.push_back(caption);
    return false;
  }
  std::optional<std::string> ChooseFolder(const std::string&, const std::string&) override { return folder; }
  std::optional<std::string> folder;
};

// A control on the bus, its host's page holding a design of two colours, and
// the reference pack registered in the machine tool key.
class BusTest : public testing::Test {
 protected:
  void SetUp() override {
    TheApp().InitInstance();
    std::string error;
    ASSERT_TRUE(transport.Start(error)) << error;
    TheApp().SetTransport(&transport);
    host.page = test::DesignOf({{-30, -30, STITCH_JUMP}, {60, 0, 0}, {0, 60, 0}, {0, 0, STITCH_COLORSTOP},
                                {-60, 0, 0}, {0, -40, 0}},
                               {0x2020E0, 0x20A020});
    host.page.name = scratch.File("rose.pes");
    std::filesystem::create_directory(scratch.Path() / "out");
    user.folder = scratch.File("out");
    ASSERT_EQ(QProcess::execute(FENNICK_TOOL, {"--register", QString::fromStdString(scratch.File("etc1")), FENNICK_TOOL_PACK}), 0);
    bar.LoadTools();
    blocks = GlobalBlockCount();
  }
  void TearDown() override { TheApp().SetTransport(nullptr); }

  // Starts a raw tool; its cookie is its process id.
  int64_t StartRaw(QProcess& tool, const QStringList& args) {
    tool.setProcessChannelMode(QProcess::ForwardedChannels);
    tool.start(QCoreApplication::applicationFilePath(), QStringList{"--raw-tool"} + args);
    EXPECT_TRUE(tool.waitForStarted());
    return tool.processId();
  }
  int RunRaw(const QStringList& args) {
    QProcess tool;
    StartRaw(tool, args);
    EXPECT_TRUE(WaitUntil([&] { return tool.state() == QProcess::NotRunning; }));
    return tool.exitCode();
  }
  // Starts the pack's button `index` and waits for the tool to end.
  int64_t RunButton(int index) {
    const size_t ended = log.Ended().size();
    bar.LaunchTool(kFirstToolCommand + index);
    EXPECT_TRUE(WaitUntil([&] { return log.Ended().size() > ended; }));
    return log.Ended().empty() ? 0 : log.Ended().back();
  }
  // Nothing of a conversation is left once it is over.
  void ExpectNothingLeft(size_t keptByHost = 0) {
    EXPECT_TRUE(WaitUntil([&] { return transport.Clipboard().BlockCount() == 0; }));
    EXPECT_EQ(GlobalBlockCount(), blocks + keptByHost);
    EXPECT_EQ(OpenMemfds(), 0u);
  }
  std::vector<test::Node> Mirrored(const Design& design) {
    std::vector<test::Node> nodes = test::Nodes(design);
    for (test::Node& node : nodes) std::get<0>(node) = -std::get<0>(node);
    return nodes;
  }
  size_t Puts() const { return std::count(host.calls.begin(), host.calls.end(), "PutDesign"); }

  test::ScratchFolder scratch;
  FolderUser user;
  BusTransport transport;
  DesignPageHost host;
  MessageLog log;
  ToolBarModel bar;
  size_t blocks = 0;
};

TEST_F(BusTest, AToolFromTheToolBarMirrorsTheDesignOntoANewPage) {
  ASSERT_EQ(bar.Buttons().size(), 4u);
  EXPECT_EQ(bar.ToolTipText(kFirstToolCommand + 2), "Launch Color Sort");
  const std::vector<test::Node> mirrored = Mirrored(host.page);
  const int64_t cookie = RunButton(0);
  EXPECT_EQ(log.Names(cookie), (std::vector<std::string>{"QXCall", "QXCallback", "QXMessageReceived", "QXRequestSave",
                                                         "QXFileSaved", "Plug-in ended"}));
  EXPECT_EQ(test::Nodes(host.page), mirrored);
  EXPECT_EQ(host.calls.back(), "PutDesign");
  EXPECT_EQ(TheApp().busy, 0);
  ExpectNothingLeft();
}

TEST_F(BusTest, SplitByColorSavesEachColourInTheChosenFolder) {
  const int64_t cookie = RunButton(3);
  EXPECT_TRUE(log.Has("QXReqMultiSave", cookie));
  EXPECT_EQ(user.captions, std::vector<std::string>{"Multiple File Save"});
  EXPECT_EQ(test::FolderNames(scratch.Path() / "out"), (std::vector<std::string>{"rose-1.pes", "rose-2.pes"}));
  for (const char* name : {"out/rose-1.pes", "out/rose-2.pes"}) {
    Design piece;
    ASSERT_EQ(ReadDesignFile(piece, scratch.File(name)), 0) << name;
    EXPECT_EQ(piece.threads.size(), 1u) << name;
  }
  ExpectNothingLeft();
}

TEST_F(BusTest, TwoToolsAtOnceAreToldApartByTheirCookies) {
  bar.LaunchTool(kFirstToolCommand);
  bar.LaunchTool(kFirstToolCommand + 1);
  ASSERT_TRUE(WaitUntil([&] { return log.Ended().size() == 2; }));
  for (int64_t cookie : log.Ended()) {
    const std::vector<std::string> names = log.Names(cookie);
    EXPECT_EQ(std::count(names.begin(), names.end(), "QXCallback"), 1) << cookie;
    EXPECT_EQ(std::count(names.begin(), names.end(), "QXFileSaved"), 1) << cookie;
  }
  EXPECT_EQ(Puts(), 2u);
  ExpectNothingLeft();
}

TEST_F(BusTest, BusyDropsRequestsAndADeadToolHoldsTheControlUntilAToolEnds) {
  QProcess hanging;
  const int64_t dead = StartRaw(hanging, {"call-and-hang"});
  ASSERT_TRUE(WaitUntil([&] { return log.Has("QXCallback", dead); }));
  EXPECT_EQ(TheApp().busy, 1);
  EXPECT_EQ(transport.Clipboard().BlockCount(), 1u);

  QProcess refused;
  const int64_t other = StartRaw(refused, {"--wait", "1000", "ask", "QXGetFileTypeList", "QXFileTypeList"});
  ASSERT_TRUE(WaitUntil([&] { return refused.state() == QProcess::NotRunning; }));
  EXPECT_EQ(refused.exitCode(), 3) << "a busy control answers nothing";
  const std::vector<std::string> asked = log.Names(other);
  EXPECT_GE(asked.size(), 3u);
  EXPECT_TRUE(std::all_of(asked.begin(), asked.end(), [](const std::string& n) { return n == "QXGetFileTypeList"; }));

  // The dead tool's block goes with it from the bus; busy stays: nothing times out.
  hanging.kill();
  hanging.waitForFinished();
  EXPECT_TRUE(WaitUntil([&] { return transport.Clipboard().BlockCount() == 0; }));
  EXPECT_EQ(TheApp().busy, 1);

  // The pack's tool gives up on the busy control, and its "Plug-in ended" frees it.
  setenv("FENNICK_TOOL_WAIT", "1", 1);
  const int64_t gaveUp = RunButton(0);
  unsetenv("FENNICK_TOOL_WAIT");
  EXPECT_FALSE(log.Has("QXCallback", gaveUp));
  EXPECT_EQ(TheApp().busy, 0);
  EXPECT_EQ(Puts(), 0u);

  const std::vector<test::Node> mirrored = Mirrored(host.page);
  RunButton(0);
  EXPECT_EQ(test::Nodes(host.page), mirrored);
  ExpectNothingLeft();
}

TEST_F(BusTest, GarbageFromAToolSavesNothingAndTheControlStaysUsable) {
  Design two = host.page;
  two.name = "two.pes";
  std::vector<Design> list{two, two};
  const std::vector<uint8_t> payload = EncodeDesignList(list);
  scratch.Write("truncated", std::vector<uint8_t>(payload.begin(), payload.end() - 20));
  scratch.Write("past-end", {1, 0, 0, 0, 0xE8, 3, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
  scratch.Write("no-design", std::vector<uint8_t>(64, 0xA5));
  for (const auto& [file, format, request] :
       {std::tuple{"truncated", FENNICK_FORMAT_MULT_EMBROIDERY_FILES, FENNICK_MSG_REQ_MULTI_SAVE},
        std::tuple{"past-end", FENNICK_FORMAT_MULT_EMBROIDERY_FILES, FENNICK_MSG_REQ_MULTI_SAVE},
        std::tuple{"no-design", FENNICK_FORMAT_EMBROIDERY_FILE, FENNICK_MSG_REQUEST_SAVE}}) {
    EXPECT_EQ(RunRaw({"offer", format, scratch.File(file).c_str(), request}), 0) << file << ": answered all the same";
  }
  EXPECT_EQ(Puts(), 0u);
  EXPECT_TRUE(user.captions.empty()) << "no folder asked for";
  EXPECT_TRUE(test::FolderNames(scratch.Path() / "out").empty());
  ExpectNothingLeft();

  const std::vector<test::Node> mirrored = Mirrored(host.page);
  RunButton(0);
  EXPECT_EQ(test::Nodes(host.page), mirrored);
}

TEST_F(BusTest, AHundredMegabytesCrossBothWaysIntact) {
  std::vector<uint8_t> big(100u << 20);
  std::mt19937_64 random(18);
  for (size_t i = 0; i + 8 <= big.size(); i += 8) {
    const uint64_t word = random();
    std::memcpy(big.data() + i, &word, 8);
  }
  scratch.Write("big.dst", big);
  host.page.name = scratch.File("big.dst");  // the whole file is its bytes and a zero

  EXPECT_EQ(RunRaw({"ask", "QXGetWholeFile", "QXWholeFile", "QXEmbroideryFile", scratch.File("back").c_str()}), 0);
  std::vector<uint8_t> received = scratch.Read("back");
  ASSERT_EQ(received.size(), big.size() + 1);
  EXPECT_EQ(received.back(), 0);
  received.pop_back();
  EXPECT_TRUE(received == big);
  ExpectNothingLeft();

  QProcess tool;
  const int64_t cookie = StartRaw(tool, {"offer", "QXEmbroideryFile", scratch.File("big.dst").c_str()});
  ASSERT_TRUE(WaitUntil([&] { return log.Has("QXMessageReceived", cookie); }));
  transport.OpenClipboard();
  const GlobalHandle block = transport.GetClipboardData(kEmbroideryFileFormat.number);
  ASSERT_EQ(GlobalSize(block), big.size());
  EXPECT_EQ(std::memcmp(GlobalLock(block), big.data(), big.size()), 0);
  GlobalUnlock(block);
  transport.CloseClipboard();
  transport.Broadcast(FENNICK_MSG_PLUG_IN_STOP, 0, 0);
  ASSERT_TRUE(WaitUntil([&] { return tool.state() == QProcess::NotRunning; }));
  EXPECT_EQ(tool.exitCode(), 0);
  ExpectNothingLeft();
}

TEST_F(BusTest, ThreadColoursArePassedByHandleAndTakenOnce) {
  EXPECT_EQ(RunRaw({"ask", "QXReqThreadColorArray", "QXThreadColorArray", "handle", scratch.File("colors").c_str()}), 0);
  Design colors;
  DecodeEmbroideryFile(colors, scratch.Read("colors"));
  EXPECT_GT(colors.threads.size(), 100u) << "the thread chart's colours";
  // The work keeps the host's block of the design, as it always has.
  ExpectNothingLeft(1);
}

}  // namespace
}  // namespace fennick

int main(int argc, char** argv) {
  QCoreApplication application(argc, argv);
  if (argc > 1 && std::string(argv[1]) == "--raw-tool") return fennick::RawTool({argv + 2, argv + argc});
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}

#include "bus_test.moc"
