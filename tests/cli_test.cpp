// The fennick program as a user runs it.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <vector>

#include "core/format_table.h"
#include "tests/test_support.h"
#include "tools/reduce_needles.h"

namespace fennick {
namespace {

struct Outcome {
  int status = -1;
  std::string out;
  std::string err;
};

class CliTest : public ::testing::Test {
 protected:
  test::ScratchFolder folder;
  const std::string sample = std::string(FENNICK_TEST_DATA) + "/geometric_objects.dst";

  Outcome Run(const std::string& arguments) {
    const std::string errFile = folder.File("stderr.txt");
    const std::string command = "cd '" + folder.Path().string() + "' && " FENNICK_CLI " " + arguments + " 2>'" +
                                errFile + "'";
    Outcome outcome;
    FILE* pipe = popen(command.c_str(), "r");
    char buffer[4096];
    for (size_t got; (got = fread(buffer, 1, sizeof buffer, pipe)) > 0;) outcome.out.append(buffer, got);
    const int status = pclose(pipe);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    std::ifstream err(errFile);
    std::stringstream text;
    text << err.rdbuf();
    outcome.err = text.str();
    return outcome;
  }
};

TEST_F(CliTest, InfoDumpNotesFormatsAndColorsPrintWhatTheyShould) {
  const std::pair<std::string, std::vector<std::string>> cases[] = {
      {"info '" + sample + "'",
       {"format:   DST", "size:     8.23 cm x 8.48 cm", "colours:  4 (default palette)", "Light Green"}},
      {"dump '" + sample + "'",
       {"\"schema\":\"emb-dump/1\"", "\"tool\":\"fennick\"", "\"format\":\"dst\"", "\"y_axis\":\"up\"",
        "\"unit\":\"0.1mm\"", "\"has_colors\":false",
        "\"block_colors\":[\"#000000\",\"#0000ff\",\"#00ff00\",\"#ff0000\"]", "\"COLOR_CHANGE\":3}",
        "\"bounds\":{\"min_x\":-411,", "\"block_starts\":[0,", "\"stitches\":[["}},
      {"notes '" + sample + "'", {sample + "\r\n", "1: Black, "}},
      {"formats",
       {"\nPES    yes  yes    300 x 200   off          99\n", "\nDST    yes  yes    300 x 300   off          off\n",
        "\nPHC    yes  as PES -           -            -\n", "\nTXT    no   notes  -           -            -\n",
        "140 x 200   64000        78\n"}},  // JEF's limits stand whether or not its writer is built in
      {"colors PCS", {"  1  #000000  Black\n  2  #000080  Dark Blue\n"}},
      {"colors vip --json", {"{\"format\":\"vip\",\"charts\":[{\"title\":\"Alcazar Rayon\",\"colors\":[{"}},
      {"colors pes", {"\nGU Dekor\n    1  #"}},
  };
  for (const auto& [arguments, parts] : cases) {
    const Outcome outcome = Run(arguments);
    EXPECT_EQ(outcome.status, 0) << arguments << ": " << outcome.err;
    for (const std::string& part : parts) EXPECT_NE(outcome.out.find(part), std::string::npos) << part << outcome.out;
  }
  // Notes into a file are what the screen shows.
  ASSERT_EQ(Run("notes '" + sample + "' rose.txt").status, 0);
  const std::vector<uint8_t> file = folder.Read("rose.txt");
  EXPECT_EQ(std::string(file.begin(), file.end()), Run("notes '" + sample + "'").out);
}

TEST_F(CliTest, ConvertToPesFollowsTheStoredSettingOrTheFlag) {
  // The stored "pes5" (on by default for PES) and the flags that override it.
  const std::pair<const char*, const char*> cases[] = {
      {"", "#PES0050"}, {" --no-pes5", "#PES0001"}, {" --pes5", "#PES0050"}};
  for (const auto& [flag, signature] : cases) {
    ASSERT_EQ(Run("convert '" + sample + "' rose.pes" + flag).status, 0) << flag;
    const std::vector<uint8_t> pes = folder.Read("rose.pes");
    EXPECT_EQ(std::string(pes.begin(), pes.begin() + 8), signature) << flag;
  }
}

TEST_F(CliTest, ConvertFitsAndSplitsAsTheSettingsAndOptionsSay) {
  // The sample is 82.3 by 84.8 mm, its 4 colours of 2768, 3046, 2199 and 256 stitches: with
  // 4000 a file, black ends the first piece and blue the second, since colours stay whole.
  struct Case {
    std::string options;
    int status;
    std::string out;
    std::string err;
  };
  const std::string tooBig = "Save Error: g.dst is too big for the current hoop.\n";
  const auto hint = [](const char* hoop) {
    return std::string("fennick: g.dst: the DST hoop is ") + hoop +
           " mm: give another with --hoop WxH or allow --shrink PCT, or store it with \"fennick settings set "
           "Conversion/dstw\" and \"Conversion/dsth\"\n";
  };
  const Case cases[] = {
      {"rose.pes --split-colors 2", 0, "rose.pes\nrose 2.pes\n", ""},
      {"g.dst --split-stitches 4000", 0, "g.dst\ng 2.dst\ng 3.dst\n", ""},
      {"g.dst --hoop 80x90 --shrink 0", 1, "", tooBig + hint("80 x 90")},
      {"g.dst --hoop 80x90 --shrink 5", 0, "g.dst\n", ""},
      {"g.dst --hoop 85x83 --rotate --shrink 0", 0, "g.dst\n", ""},
      {"g.dst --hoop 85x83 --no-rotate --shrink 0", 1, "", tooBig + hint("85 x 83")},
      {"no/g.dst", 1, "", "Save Error: no/g.dst could not be saved. The folder no does not exist.\n"},
      {"g.dst --hoop 80", 2, "", "fennick: convert: --hoop takes WIDTHxHEIGHT in millimetres, not \"80\"\n"},
      {"g.dst --split-colors -1", 2, "", "fennick: convert: --split-colors takes a whole number of 0 or more, not \"-1\"\n"},
  };
  for (const auto& c : cases) {
    const Outcome outcome = Run("convert '" + sample + "' " + c.options);
    EXPECT_EQ(outcome.status, c.status) << c.options;
    EXPECT_EQ(outcome.out, c.out) << c.options;
    EXPECT_EQ(outcome.err, c.err) << c.options;
  }
  EXPECT_NE(Run("info g.dst").out.find("size:     8.48 cm x 8.23 cm"), std::string::npos) << "turned";
  const Outcome sew = Run("convert '" + std::string(FENNICK_TEST_DATA) + "/reorder.pes' r.sew --split-colors 0");
  EXPECT_EQ(sew.err,
            "r.sew: SEW holds at most 12 colours; this design has 17: split it with --split-colors 12\n"
            "Save Error: r.sew could not be saved.\n");

  // Stored settings apply, and an option of 0 turns their split off.
  ASSERT_EQ(Run("settings set Conversion/dstsc 1").status, 0);
  ASSERT_EQ(Run("settings set Conversion/dstnc 3").status, 0);
  EXPECT_EQ(Run("convert '" + sample + "' s.dst").out, "s.dst\ns 2.dst\n");
  EXPECT_EQ(Run("convert '" + sample + "' s.dst --split-colors 0").out, "s.dst\n");
}

TEST_F(CliTest, ToolsSayWhatTheyChangedAndSaveAsConvertDoes) {
  const std::string pes = std::string(FENNICK_TEST_DATA) + "/geometric_objects.pes";
  const struct {
    std::string arguments;
    std::string line;  // what it changed, or how that line begins
    size_t threads;
    int distinct;  // of the file written
  } cases[] = {
      {"colorsort '" + pes + "' out.pes --threshold 0", "Color Sort saved 0 colours, 4 -> 4", 4, 4},
      {"baste '" + pes + "' out.pes --edge 0 --length 10", "basted, ", 5, 5},
      {"baste '" + pes + "' out.pes --no-combine --no-cross", "replaced by its baste of ", 1, 1},
      {"reduce '" + pes + "' out.pes --needles 2", "2 colours merged, 4 -> 2 needles", 4, 2},
      {"huesort '" + pes + "' out.pes --split-colors 0", "4 colours in hue order", 4, 4},
  };
  for (const auto& c : cases) {
    const Outcome outcome = Run(c.arguments);
    EXPECT_EQ(outcome.status, 0) << c.arguments << outcome.err;
    // The baste's stitch counts are the tool's own tests' business: here its line is only begun.
    const std::string expected = pes + ": " + c.line;
    EXPECT_EQ(outcome.out.substr(0, expected.size()), expected) << outcome.out;
    EXPECT_EQ(outcome.out.substr(outcome.out.find('\n') + 1), "out.pes\n") << outcome.out;
    Design written;
    ASSERT_EQ(ReadDesignFile(written, folder.File("out.pes"), LastFile::kLeave), 0) << c.arguments;
    EXPECT_EQ(written.threads.size(), c.threads) << c.arguments;
    EXPECT_EQ(CountDistinctColors(written), c.distinct) << c.arguments;
  }
}

Design ReadOrFail(const std::string& path) {
  Design design;
  EXPECT_EQ(ReadDesignFile(design, path, LastFile::kLeave), 0) << path;
  design.ComputeBounds();
  return design;
}

TEST_F(CliTest, ResizeAndFitReachTheSizeAskedFor) {
  const Design before = ReadOrFail(sample);
  const double width = before.maxX - before.minX, height = before.maxY - before.minY;
  const struct {
    std::string arguments;
    std::string line;  // how the line of what changed begins
    double xFactor, yFactor;
  } cases[] = {
      {"resize '" + sample + "' out.dst --scale 150", "resized to 150 %, ", 1.5, 1.5},
      {"resize '" + sample + "' out.dst --scale 150 --plain", "scaled to 150 %, ", 1.5, 1.5},
      {"resize '" + sample + "' out.dst --scale-x 70 --scale-y 120", "resized to 70 % x 120 %, ", 0.7, 1.2},
      {"resize '" + sample + "' out.dst --scale 80 --rotate 90", "resized to 80 %, turned 90 degrees, ", 0.8, 0.8},
      {"fit '" + sample + "' out.dst --hoop 50x40", "resized to ", 390 / height, 390 / height},
      {"fit '" + sample + "' out.dst --hoop 50x40 --stretch", "resized to ", 490 / width, 390 / height},
  };
  for (const auto& c : cases) {
    const Outcome outcome = Run(c.arguments);
    ASSERT_EQ(outcome.status, 0) << c.arguments << outcome.err;
    const std::string expected = sample + ": " + c.line;
    EXPECT_EQ(outcome.out.substr(0, expected.size()), expected) << outcome.out;
    const Design after = ReadOrFail(folder.File("out.dst"));
    const bool turned = c.arguments.find("--rotate") != std::string::npos;
    // Re-stitching may move the outline by up to 1 mm; a quarter turn swaps the sides.
    EXPECT_NEAR(after.maxX - after.minX, (turned ? height * c.yFactor : width * c.xFactor), 10) << c.arguments;
    EXPECT_NEAR(after.maxY - after.minY, (turned ? width * c.xFactor : height * c.yFactor), 10) << c.arguments;
    EXPECT_EQ(after.threads.size(), before.threads.size()) << c.arguments;
    if (c.arguments.find("--plain") != std::string::npos) {
      EXPECT_EQ(after.stitches.Size(), before.stitches.Size());
    }
  }
}

TEST_F(CliTest, HostCallRunsAMethodAgainstAOneDesignHost) {
  const std::string pes = std::string(FENNICK_TEST_DATA) + "/geometric_objects.pes";
  const struct {
    std::string arguments;
    int status;
    std::string out;  // how the output begins
  } cases[] = {
      {"host-call Name", 0, "Name: FennickAddin\n"},
      {"host-call 4", 0, "DockingPos: 59419\n"},
      {"host-call GetWriteFormats", 0, "GetWriteFormats: \ndst\r\nexp\r\nhus\r\n"},
      {"host-call FitHoop 500 400 1 '" + pes + "' --out fitted.pes", 0, "FitHoop: a design of "},
      {"host-call SaveAs '" + sample + "' --save-name saved.jef", 0, "SaveAs: a design of 8269 stitches and 4 threads"},
      {"host-call SaveAs '" + sample + "' --save-name big.jef --hoop 50x50 --no", 1, "SaveAs: 0\n"},
      {"host-call TEReSize '" + pes + "' 0 1.5 1.5 --no-host", 1, "TEReSize: 0\n"},
      {"host-call FileImport --pick '" + pes + "' --pick '" + sample + "'", 0, "FileImport: 2 designs\n"},
  };
  for (const auto& c : cases) {
    const Outcome outcome = Run(c.arguments);
    EXPECT_EQ(outcome.status, c.status) << c.arguments << outcome.err;
    EXPECT_EQ(outcome.out.substr(0, c.out.size()), c.out) << c.arguments;
  }
  // The fitted design fills the 50 by 40 mm less 1 mm; the save went where the dialog chose.
  const Design fitted = ReadOrFail(folder.File("fitted.pes"));
  EXPECT_NEAR(fitted.maxY - fitted.minY, 390, 10);
  EXPECT_TRUE(std::filesystem::exists(folder.File("saved.jef")));
  EXPECT_FALSE(std::filesystem::exists(folder.File("big.jef")));
  EXPECT_NE(Run("host-call SaveAs '" + sample + "' --save-name big.jef --hoop 50x50 --no").err.find(
                "Save Error: This design is too large for the current hoop"),
            std::string::npos);
}

TEST_F(CliTest, SettingsAreSetReadAndListed) {
  EXPECT_EQ(Run("settings get Conversion/pesw").status, 1);
  EXPECT_EQ(Run("settings set Conversion/pesw 120").status, 0);
  EXPECT_EQ(Run("settings set 'Settings/Tools otf' DST").status, 0);
  EXPECT_EQ(Run("settings set resize:MaxSL 0x40").status, 0);
  const std::pair<const char*, const char*> values[] = {
      {"conversion/PESW", "120\n"}, {"'Settings/Tools otf'", "DST\n"}, {"resize:maxsl", "64\n"}};
  for (const auto& [key, value] : values) EXPECT_EQ(Run(std::string("settings get ") + key).out, value) << key;
  // A stored number stays a number.
  EXPECT_EQ(Run("settings set Conversion/pesw wide").status, 2);
  EXPECT_EQ(Run("settings get nowhere:a/b").status, 2);

  const Outcome list = Run("settings list");
  ASSERT_EQ(list.status, 0) << list.err;
  for (const char* line : {"  pes    120 x 200   on     on    1      10      off       99\n",
                           "  jef    140 x 200   on     off   1      10      64000     78\n",
                           "  Conversion/pesw = 120\n", "  Settings/Tools otf = \"DST\"\n", "  resize:MaxSL = 64\n"}) {
    EXPECT_NE(list.out.find(line), std::string::npos) << line << list.out;
  }
}

TEST_F(CliTest, RenderWritesPngOrBitmapAtTheAskedSize) {
  ASSERT_EQ(Run("render '" + sample + "' rose.png --size 64 --flat --background 102030").status, 0);
  const std::vector<uint8_t> png = folder.Read("rose.png");
  ASSERT_GT(png.size(), 33u);
  // Signature, then the IHDR chunk: width and height big-endian, 8-bit RGB.
  EXPECT_EQ(std::vector<uint8_t>(png.begin(), png.begin() + 8),
            (std::vector<uint8_t>{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'}));
  EXPECT_EQ(std::vector<uint8_t>(png.begin() + 12, png.begin() + 26),
            (std::vector<uint8_t>{'I', 'H', 'D', 'R', 0, 0, 0, 64, 0, 0, 0, 64, 8, 2}));

  ASSERT_EQ(Run("render '" + sample + "' rose.bmp --size 32 --background 102030").status, 0);
  const std::vector<uint8_t> bmp = folder.Read("rose.bmp");
  ASSERT_EQ(bmp.size(), 32u * 32u * 4u + 58u);
  EXPECT_EQ(bmp[18], 32);
  // The corner lies in the margin: background, stored as B, G, R, 0.
  EXPECT_EQ(std::vector<uint8_t>(bmp.begin() + 58, bmp.begin() + 62), (std::vector<uint8_t>{0x30, 0x20, 0x10, 0}));
}

TEST_F(CliTest, BadInputGivesOneLineAndAnExitCode) {
  folder.Write("empty.dst", {});
  folder.Write("junk.dst", std::vector<uint8_t>(300, 0x55));
  folder.Write("junk.pes", std::vector<uint8_t>(600, 0x55));
  ASSERT_EQ(Run("zip add d.zip '" + sample + "' a.dst").status, 0);
  const struct {
    std::string arguments;
    int status;
    std::string message;
  } cases[] = {
      {"info missing.dst", 1, "fennick: missing.dst: no such file\n"},
      {"info empty.dst", 1, "fennick: empty.dst: the file is empty\n"},
      {"info junk.dst", 1, "fennick: junk.dst: holds no stitches\n"},
      {"info junk.pes", 1, "fennick: junk.pes: is not a PES design\n"},
      {"info Zip:none.zip:a.dst", 1, "fennick: Zip:none.zip:a.dst: no such ZIP file\n"},
      {"info Zip:d.zip:b.dst", 1, "fennick: Zip:d.zip:b.dst: no member \"b.dst\" in the ZIP file\n"},
      {"info notes.abc", 1, "fennick: notes.abc: no reader for the extension \".abc\"\n"},
      {"convert junk.dst out.dst", 1, "fennick: junk.dst: holds no stitches\n"},
      {"convert '" + sample + "' out.bmp", 2, "fennick: out.bmp: no writer for the extension \".bmp\"\n"},
      {"dump", 2, "fennick: dump: name exactly one design file\n"},
      {"render '" + sample + "' out.gif", 1, "fennick: out.gif: pictures are written as .png or .bmp\n"},
      {"render '" + sample + "' out.png --size 0", 2, "fennick: render: the size must be 1 to 8192 pixels"},
      {"frobnicate", 2, "fennick: unknown command \"frobnicate\"\n"},
      {"colors", 2, "fennick: colors: name a format's extension"},
      {"colors abc", 2, "fennick: abc: is not the extension of a design format\n"},
      {"colors bmp", 1, "fennick: bmp: the format has no colour table\n"},
      {"colorsort a.dst b.dst --threshold 101", 2, "fennick: colorsort: --threshold takes a whole number from 0 to 100\n"},
      {"reduce a.dst b.dst", 2, "fennick: reduce: --needles N names the most colours the design may keep\n"},
      {"baste a.dst --to pes --out x", 2, "fennick: baste: --to and --out belong to convert; baste writes one file\n"},
      {"resize a.dst b.dst", 2, "fennick: resize: give the new size as --scale PCT, or --scale-x PCT"},
      {"resize a.dst b.dst --scale-y 0", 2, "fennick: resize: a size of 0 % leaves nothing to sew\n"},
      {"resize a.dst b.dst --scale big", 2, "fennick: resize: --scale takes a number\n"},
      {"resize a.dst b.dst --scale 90 --max-fill 10", 2, "fennick: resize: --max-fill takes a whole number from 25"},
      {"fit a.dst b.dst --hoop 100x", 2, "fennick: fit: --hoop WxH names the hoop in whole millimetres"},
  };
  for (const auto& c : cases) {
    const Outcome outcome = Run(c.arguments);
    EXPECT_EQ(outcome.status, c.status) << c.arguments;
    EXPECT_EQ(outcome.err.substr(0, c.message.size()), c.message) << c.arguments;
  }
  EXPECT_FALSE(std::filesystem::exists(folder.File("out.dst")));
}

TEST_F(CliTest, EveryCommandHasHelp) {
  for (const char* command : {"info", "dump", "convert", "formats", "settings", "render", "notes", "demo", "zip", "colors",
                              "colorsort", "baste", "reduce", "huesort", "resize", "fit", "host-call"}) {
    const Outcome outcome = Run(std::string(command) + " --help");
    EXPECT_EQ(outcome.status, 0) << command;
    EXPECT_EQ(outcome.out.rfind(std::string("usage: fennick ") + command, 0), 0u) << outcome.out;
  }
}

TEST_F(CliTest, DemoWritesAndReadsBackEveryWritableFormat) {
  const Outcome outcome = Run("demo --out out");
  EXPECT_EQ(outcome.status, 0) << outcome.out << outcome.err;
  EXPECT_NE(outcome.out.find("fennick-demo.dst"), std::string::npos);
  EXPECT_EQ(outcome.out.find("instead of"), std::string::npos) << outcome.out;
  EXPECT_TRUE(std::filesystem::exists(folder.File("out/fennick-demo.dst")));
  EXPECT_TRUE(std::filesystem::exists(folder.File("out/fennick-demo.dst.png")));
  EXPECT_NE(outcome.out.find("designs.zip (dst)"), std::string::npos) << outcome.out;
}

TEST_F(CliTest, ZipMembersAreAddedListedReadAndDeleted) {
  EXPECT_EQ(Run("zip add d.zip '" + sample + "' Designs/Geo.DST").status, 0);
  const Outcome list = Run("zip list d.zip");
  EXPECT_EQ(list.status, 0) << list.err;
  EXPECT_NE(list.out.find("deflate"), std::string::npos) << list.out;
  EXPECT_NE(list.out.find("Designs/Geo.DST"), std::string::npos) << list.out;
  const std::string member = "'Zip:d.zip:designs/geo.dst'";
  for (const std::string& command : {"info " + member, "dump " + member, "notes " + member,
                                     "render " + member + " geo.png", "convert " + member + " geo.pes"}) {
    const Outcome outcome = Run(command);
    EXPECT_EQ(outcome.status, 0) << command << ": " << outcome.err;
  }
  EXPECT_NE(Run("info " + member).out.find("size:     8.23 cm x 8.48 cm"), std::string::npos);
  const Outcome missing = Run("zip delete d.zip other.dst");
  EXPECT_EQ(missing.status, 1);
  EXPECT_NE(missing.err.find("no member"), std::string::npos) << missing.err;
  EXPECT_EQ(Run("zip delete d.zip DESIGNS/GEO.DST").status, 0);
  EXPECT_NE(Run("info " + member).status, 0);
  EXPECT_EQ(Run("zip frobnicate d.zip").status, 2);
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

TEST_F(CliTest, BatchConvertsAFolderReportingEachDesignInOrder) {
  namespace fs = std::filesystem;
  fs::create_directories(folder.File("in"));
  // Every sample with a reader, their many shared stems included; the rest
  // (colour files, notes) must be passed over.
  std::vector<std::string> good;
  for (const fs::directory_entry& entry : fs::directory_iterator(FENNICK_TEST_DATA)) {
    if (!entry.is_regular_file()) continue;  // crash/ holds inputs that once broke readers
    fs::copy_file(entry.path(), folder.Path() / "in" / entry.path().filename());
    const FormatEntry* format = FindFormat(FormatFromExtension(entry.path().extension().string().substr(1)));
    if (format != nullptr && format->read != nullptr) good.push_back("in/" + entry.path().filename().string());
  }
  folder.Write("in/junk.dst", std::vector<uint8_t>(300, 0x55));
  std::vector<std::string> inputs = good;
  inputs.push_back("in/junk.dst");
  std::sort(inputs.begin(), inputs.end());

  const Outcome outcome = Run("convert --to pes in --out out");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "");
  const std::vector<std::string> lines = Lines(outcome.out);
  ASSERT_EQ(lines.size(), inputs.size() + 1) << outcome.out;
  for (size_t i = 0; i < inputs.size(); ++i) {
    if (inputs[i] == "in/junk.dst") {
      EXPECT_EQ(lines[i], "in/junk.dst: holds no stitches");
    } else {
      EXPECT_EQ(lines[i].rfind(inputs[i] + " -> out/", 0), 0u) << lines[i];
    }
  }
  EXPECT_EQ(lines.back().rfind(std::to_string(good.size()) + " converted, 1 failed, ", 0), 0u) << lines.back();

  // One file per good design, none overwritten (the sample conversions read such files back).
  EXPECT_EQ(test::FolderNames(folder.File("out")).size(), good.size());
  // Reading for a batch leaves the profile (its "Last File") alone.
  EXPECT_FALSE(fs::exists(folder.File("config/selvane/FennickAddin.reg")));
}

TEST_F(CliTest, BatchTakesZipFilesAndMembersAndNeverOverwrites) {
  ASSERT_EQ(Run("zip add d.zip '" + sample + "' Designs/Geo.DST").status, 0);
  ASSERT_EQ(Run("zip add d.zip '" + std::string(FENNICK_TEST_DATA) + "/Star.pcs' Star.pcs").status, 0);
  std::filesystem::create_directories(folder.File("out"));
  folder.Write("out/Geo 2.dst", {'k', 'e', 'e', 'p'});
  const struct {
    std::string arguments;
    int status;
    std::string out;  // without the summary's time
  } cases[] = {
      // Four colours, two a file; the second piece keeps off the file already there.
      {"d.zip 'Zip:d.zip:designs/geo.dst' --split-colors 2", 0,
       "Zip:d.zip:Designs/Geo.DST -> out/Geo.dst, out/Geo 2(2).dst\n"
       "Zip:d.zip:Star.pcs -> out/Star.dst\n"
       "Zip:d.zip:designs/geo.dst -> out/geo(2).dst, out/geo(2) 2.dst\n"
       "3 converted, 0 failed, "},
      // The pipeline's message box lands on its design's line, not on standard error.
      {"'Zip:d.zip:Star.pcs' missing.dst --hoop 20x20 --shrink 0", 1,
       "Zip:d.zip:Star.pcs: Save Error: out/Star(2).dst is too big for the current hoop.; the DST hoop is 20 x 20 "
       "mm: give another with --hoop WxH or allow --shrink PCT, or store it with \"fennick settings set "
       "Conversion/dstw\" and \"Conversion/dsth\"\n"
       "missing.dst: no such file\n"
       "0 converted, 2 failed, "},
  };
  for (const auto& c : cases) {
    const Outcome outcome = Run("convert --to dst " + c.arguments + " --out out");
    EXPECT_EQ(outcome.status, c.status) << c.arguments;
    EXPECT_EQ(outcome.out.substr(0, c.out.size()), c.out) << c.arguments;
    EXPECT_EQ(outcome.err, "") << c.arguments;
  }
  EXPECT_EQ(folder.Read("out/Geo 2.dst"), (std::vector<uint8_t>{'k', 'e', 'e', 'p'}));
}

}  // namespace
}  // namespace fennick
