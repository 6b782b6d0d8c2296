// The control's side of the tool conversation, over the in-memory transport
// with a one-design host: what each request gets, and what busy lets through.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "archive/zip_member.h"
#include "control/addin_app.h"
#include "control/page_host.h"
#include "control/protocol.h"
#include "core/embroidery_file.h"
#include "core/file_io.h"
#include "core/sealed_memfd.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

using Sent = InMemoryTransport::Sent;

class ToolUser : public test::Messages {
 public:
  std::optional<bool> AskWithCheckBox(const std::string& caption, const std::string& text, const std::string&,
                                      bool checked) override {
    lines.push_back(text);
    captions.push_back(caption);
    return ok ? std::optional<bool>(!checked) : std::nullopt;  // the box unticked on OK
  }
  std::optional<std::string> ChooseFolder(const std::string& title, const std::string&) override {
    captions.push_back(title);
    return folder;
  }
  bool ok = true;
  std::optional<std::string> folder;
};

// A control module with its transport and a host whose page holds a sample.
class ProtocolTest : public testing::Test {
 protected:
  ProtocolTest() {
    TheApp().InitInstance();
    TheApp().SetTransport(&transport);
    host.page = test::DesignOf({{-40, -40, STITCH_JUMP}, {80, 0, 0}, {0, 80, 0}, {-80, 0, 0}}, {0x2020E0});
    host.page.name = scratch.File("rose.pes");
  }
  ~ProtocolTest() override { TheApp().SetTransport(nullptr); }

  // A request from a tool, as its message number arrives.
  bool Request(const std::string& name, int64_t cookie = 77, int32_t wParam = 10) {
    return FilterMessage(RegisterWindowMessage(name), wParam, cookie);
  }
  GlobalHandle OnClipboard(const RegisteredName& format) {
    transport.OpenClipboard();
    const GlobalHandle block = transport.GetClipboardData(format.number);
    transport.CloseClipboard();
    return block;
  }

  test::ScratchFolder scratch;
  ToolUser user;
  InMemoryTransport transport;
  DesignPageHost host;
};

TEST_F(ProtocolTest, BusyGuardsTheConversationAndRepliesCarryTheCookie) {
  EXPECT_FALSE(Request("QXCall", 77, 9)) << "another wParam is not looked at";
  EXPECT_FALSE(FilterMessage(12345, 10, 77));
  EXPECT_TRUE(transport.sent.empty());
  EXPECT_TRUE(Request("QXCall", 5));
  EXPECT_EQ(TheApp().busy, 1);
  // Busy: consumed without a word, whoever asks.
  for (const char* name : {"QXGetFirst", "QXGetSelEmb", "QXRequestSave", "QXGetFileTypeList"}) {
    EXPECT_TRUE(Request(name, 6)) << name;
  }
  EXPECT_TRUE(Request("QXMessageReceived"));
  EXPECT_TRUE(Request("QXGetFileTypeList", 6));
  EXPECT_TRUE(Request("Plug-in ended"));  // a second tool ends in the middle of its exchange
  EXPECT_EQ(TheApp().busy, 0);
  host.page = Design();
  EXPECT_TRUE(Request("QXGetPrevFile", 7));  // no design: no busy
  EXPECT_EQ(TheApp().busy, 0);
  EXPECT_TRUE(Request("QXGetSelEmb", 8));  // busy whatever came of it
  EXPECT_EQ(TheApp().busy, 1);
  EXPECT_EQ(transport.sent, (std::vector<Sent>{{"QXCallback", 1, 5},
                                               {"QXFileTypeList", 1, 6},
                                               {"QXCallback", 0, 7},
                                               {"QXEmbSelCB", 0, 8}}));
}

TEST_F(ProtocolTest, RepliesPutWhatWasAskedForOnTheClipboard) {
  const std::vector<uint8_t> file{'P', 'E', 'S', '!'};
  scratch.Write("rose.pes", file);
  host.page.name = "Zip:" + scratch.File("roses.zip") + ":rose";  // no extension: the host's is given
  host.designExtension = "jef";
  ASSERT_EQ(WriteZipMember(DesignPath(host.page.name + ".jef"), file), 0);
  const size_t blocks = GlobalBlockCount();

  Request("QXCall");
  Design sent;
  ParseEmbroideryFile(sent, OnClipboard(kEmbroideryFileFormat));
  EXPECT_EQ(sent.name, "rose.jef") << "the member keeps its name, the Zip: prefix goes";
  EXPECT_EQ(test::Nodes(sent), test::Nodes(host.page));
  Request("QXMessageReceived");

  Request("QXGetWholeFile");  // the member's bytes, read through the Zip: path, and a zero
  std::vector<uint8_t> whole = file;
  whole.push_back(0);
  EXPECT_EQ(GlobalCopyOut(OnClipboard(kEmbroideryFileFormat)), whole);
  Request("QXMessageReceived");

  Request("QXGetFileTypeList");
  static constexpr char kTypes[] = "PES\0HUS\0SEW\0PCS\0JEF\0XXX\0EXP\0VIP\0DST";  // and the final zero
  const std::vector<uint8_t> listed = GlobalCopyOut(OnClipboard(kEmbroideryFileFormat));
  EXPECT_EQ(std::string(listed.begin(), listed.end()), std::string(kTypes, sizeof kTypes));
  Request("QXMessageReceived");

  Request("QXReqColorArray");  // the JEF palette, not the design's own thread
  Design colors;
  ParseEmbroideryFile(colors, OnClipboard(kEmbroideryFileFormat));
  EXPECT_GT(colors.threads.size(), 50u);
  Request("QXMessageReceived");

  Request("QXReqThreadColorArray");  // the table's handle in wParam, the receiver's to free
  ASSERT_EQ(transport.sent.back().message, "QXThreadColorArray");
  const auto table = static_cast<GlobalHandle>(transport.sent.back().wParam);
  EXPECT_GT(GlobalSize(table), 0u);
  EXPECT_EQ(GlobalFree(table), 0u);
  Request("QXMessageReceived");

  Request("QXGetSelEmb");
  const std::vector<Design> selection = DecodeDesignList(GlobalCopyOut(OnClipboard(kMultEmbroideryFilesFormat)));
  ASSERT_EQ(selection.size(), 1u);
  EXPECT_EQ(selection[0].name, "rose.jef");
  Request("Plug-in ended");
  // The clipboard holds the last block of each format; the host's blocks that
  // the colour and selection works take are not freed, as those works always did.
  EXPECT_EQ(GlobalBlockCount(), blocks + 2 + 3);
}

TEST_F(ProtocolTest, SavedDesignsReachTheHostOrTheFolderAndGarbageNothing) {
  // One design back: a new page.
  Design result = test::DesignOf({{10, 10, 0}, {20, 0, 0}}, {0x00FF00});
  transport.OpenClipboard();
  transport.SetClipboardData(kEmbroideryFileFormat.number, BuildEmbroideryFile(result));
  transport.CloseClipboard();
  Request("QXRequestSave", 3);
  EXPECT_EQ(test::Nodes(host.page), test::Nodes(result));
  EXPECT_EQ(host.calls, (std::vector<std::string>{"NewDesign", "PutDesign"}));
  EXPECT_EQ(transport.Clipboard().BlockCount(), 0u);

  // Several back: saved into the folder chosen, whatever their size.
  Design big = test::DesignOf({{0, 0, 0}, {3000, 0, 0}, {0, 3000, 0}}, {0xFF0000});
  big.name = "big.dst";
  result.name = "small.jef";
  std::vector<Design> two{big, result};
  const auto offer = [&](std::vector<uint8_t> payload) {
    transport.OpenClipboard();
    transport.SetClipboardData(kMultEmbroideryFilesFormat.number, GlobalAllocCopy(payload));
    transport.CloseClipboard();
    Request("QXReqMultiSave", 4);
    return test::FolderNames(scratch.Path() / "out");
  };
  std::filesystem::create_directory(scratch.Path() / "out");
  user.folder = scratch.File("out");
  const std::vector<uint8_t> payload = EncodeDesignList(two);
  std::vector<uint8_t> truncated(payload.begin(), payload.end() - 20), noDesign = payload;
  noDesign.assign(8 + 10, 0);
  noDesign[0] = 1, noDesign[4] = 10;  // one "design" of ten bytes of nothing
  EXPECT_TRUE(offer(truncated).empty());
  EXPECT_TRUE(offer(noDesign).empty());
  user.ok = false;
  EXPECT_TRUE(offer(payload).empty());
  user.ok = true;
  EXPECT_EQ(offer(payload), (std::vector<std::string>{"big.dst", "small.jef"}));
  EXPECT_EQ(PreferenceStore(PreferenceTree::kProfile).GetString("Directories", "SaveAs", ""), scratch.File("out"));
  EXPECT_EQ(user.captions.back(), "Select Folder to Store Files");
  // Every save request is answered, cancelled or refused as it was.
  size_t saved = 0;
  for (const Sent& sent : transport.sent) saved += sent.message == "QXFileSaved" && sent.wParam == 0 ? 1 : 0;
  EXPECT_EQ(saved, 5u);
}

TEST(ProtocolClipboard, OnePartyHoldsItAndAConversationTakesItsBlocksAlong) {
  const size_t start = GlobalBlockCount();
  const auto block = [] { return GlobalAllocCopy(std::vector<uint8_t>{1, 2, 3}); };
  ProtocolClipboard clipboard;
  ASSERT_TRUE(clipboard.Open("a"));
  EXPECT_FALSE(clipboard.Open("b"));
  const GlobalHandle refused = block();
  EXPECT_FALSE(clipboard.Set("b", 1, refused, "b"));
  EXPECT_EQ(GlobalSize(refused), 0u) << "a block the clipboard cannot take is freed";
  const GlobalHandle first = block(), second = block();
  clipboard.Set("a", 1, first, "a");
  clipboard.Set("a", 1, second, "a");
  EXPECT_EQ(GlobalSize(first), 0u) << "replaced";
  EXPECT_EQ(clipboard.Get("b", 1), 0u) << "only for the holder";
  EXPECT_EQ(clipboard.Get("a", 1), second);
  clipboard.Close("b");
  EXPECT_FALSE(clipboard.Open("b"));
  clipboard.Close("a");
  ASSERT_TRUE(clipboard.Open("b"));
  clipboard.Set("b", 2, block(), "c");
  const GlobalHandle handed = block();
  clipboard.Hand(handed, "c");
  EXPECT_EQ(clipboard.Take(handed, "a"), 0u) << "handed to another";
  clipboard.EndConversation("a");
  EXPECT_EQ(clipboard.BlockCount(), 2u);
  EXPECT_FALSE(clipboard.Open("c")) << "still held by b";
  clipboard.EndConversation("b");
  EXPECT_TRUE(clipboard.Open("c"));
  clipboard.EndConversation("c");
  EXPECT_EQ(clipboard.BlockCount(), 0u);
  EXPECT_EQ(GlobalBlockCount(), start);
}

TEST(SealedMemfd, OnlyASealedMemfdIsMapped) {
  std::string error;
  const std::vector<uint8_t> bytes{7, 0, 9, 255};
  FileDescriptor sealed(MakeSealedMemfd(bytes, error));
  ASSERT_GE(sealed.Get(), 0) << error;
  SealedBytes mapped;
  ASSERT_TRUE(mapped.Map(sealed.Get(), error)) << error;
  EXPECT_EQ(std::vector<uint8_t>(mapped.Bytes().begin(), mapped.Bytes().end()), bytes);
  EXPECT_EQ(write(sealed.Get(), "x", 1), -1) << "sealed against writing";

  // A memfd its sender could still change, and a pipe, are refused.
  FileDescriptor open(memfd_create("open", MFD_CLOEXEC | MFD_ALLOW_SEALING));
  ASSERT_EQ(write(open.Get(), bytes.data(), bytes.size()), 4);
  int pipeEnds[2];
  ASSERT_EQ(pipe(pipeEnds), 0);
  FileDescriptor reading(pipeEnds[0]), writing(pipeEnds[1]);
  for (int fd : {open.Get(), reading.Get()}) {
    error.clear();
    EXPECT_FALSE(mapped.Map(fd, error));
    EXPECT_NE(error.find("not a memfd sealed"), std::string::npos) << error;
  }
}

}  // namespace
}  // namespace fennick
