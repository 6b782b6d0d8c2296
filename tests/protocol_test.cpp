// The control's side of the tool conversation, over the in-memory transport
// with a one-design host: what each request gets, and what busy lets through.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "archive/zip_member.h"
#include "control/addin_app.h"
#include "control/page_host.h"
#include "control/protocol.h"
#include "core/embroidery_file.h"
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
    const auto found = transport.clipboard.find(format.number);
    return found == transport.clipboard.end() ? 0 : found->second;
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
  EXPECT_TRUE(transport.clipboard.empty());

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

}  // namespace
}  // namespace fennick
