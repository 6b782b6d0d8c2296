#include "core/design_path.h"

#include <gtest/gtest.h>

#include <string>

namespace fennick {
namespace {

struct PathCase {
  const char* text;
  const char* zipFile;
  const char* directory;
  const char* fileName;
  const char* label;
};

TEST(DesignPath, ParseTakesTheThreeFormsApartAndToStringJoinsThem) {
  const PathCase cases[] = {
      {"/home/ann/rose.pes", "", "/home/ann/", "rose.pes", ""},
      {"/media/usb/rose.pes\tHOOP CARD", "", "/media/usb/", "rose.pes", "HOOP CARD"},
      {"Zip:/home/ann/flowers.zip:rose/rose01.pes", "/home/ann/flowers.zip", "rose/", "rose01.pes", ""},
      // The second ":" is searched from index 2 on, past a drive letter's colon.
      {"Zip:C:/Designs/flowers.zip:rose01.pes", "C:/Designs/flowers.zip", "", "rose01.pes", ""},
      {"rose.pes", "", "", "rose.pes", ""},
      {"zip:/a/b.zip:c.pes", "", "zip:/a/", "b.zip:c.pes", ""},  // another case is no prefix: a plain path
  };
  for (const PathCase& c : cases) {
    const DesignPath path(c.text);
    EXPECT_EQ(path.GetZipFile(), c.zipFile) << c.text;
    EXPECT_EQ(path.GetDirectory(), c.directory) << c.text;
    EXPECT_EQ(path.GetFileName(), c.fileName) << c.text;
    EXPECT_EQ(path.GetVolumeLabel(), c.label) << c.text;
    EXPECT_EQ(path.ToString(), c.text);
  }
}

TEST(DesignPath, ZipPrefixWithoutItsColonNamesTheArchiveAlone) {
  const DesignPath bare("Zip:/a/b.zip");
  EXPECT_EQ(bare.GetZipFile(), "/a/b.zip");
  EXPECT_EQ(bare.FullName(), "");
}

TEST(DesignPath, FileNameOperations) {
  // Each row sets a file name, runs one operation and expects its result,
  // which also becomes the file name for ChangeExtension and NextVariant.
  enum Operation { kExtension, kStem, kChange, kNext };
  const struct {
    Operation operation;
    const char* name;
    const char* argument;
    const char* result;
  } cases[] = {
      {kExtension, "a.b.dst", "", "dst"},  {kExtension, ".pes", "", "pes"},   {kExtension, "rose.", "", ""},
      {kExtension, "rose", "", ""},        {kExtension, "r.x.", "", "x."},    {kStem, "a.b.dst", "", "a.b"},
      {kStem, ".pes", "", ""},             {kStem, "rose.", "", ""},          {kStem, "r.x.", "", "r"},
      {kChange, "rose.pes", "", "rose"},   {kChange, "rose.pes", ".Txt", "rose.Txt"},
      {kChange, "rose", "pes", "rose.pes"}, {kChange, ".pes", "dst", ".pes.dst"}, {kChange, "a.b.c", "d", "a.b.d"},
      {kNext, "rose.pes", "", "rose(2).pes"}, {kNext, "rose(9).pes", "", "rose(10).pes"},
      {kNext, "(5).pes", "", "(6).pes"},   {kNext, "rose(2)x.pes", "", "rose(2)x(2).pes"},
      // No "(" at all: the cut keeps nothing and the number is read from the start.
      {kNext, "abc).pes", "", "1).pes"},   {kNext, "7).pes", "", "8).pes"},
  };
  for (const auto& c : cases) {
    DesignPath path("/d/x");
    path.SetFileName(c.name);
    std::string result;
    switch (c.operation) {
      case kExtension: result = path.GetExtension(); break;
      case kStem: result = path.GetStem(); break;
      case kChange: result = path.ChangeExtension(c.argument); break;
      case kNext: result = path.NextVariant(); break;
    }
    EXPECT_EQ(result, c.result) << c.operation << " " << c.name;
    if (c.operation >= kChange) {
      EXPECT_EQ(path.GetFileName(), c.result) << c.name;
    }
  }
}

}  // namespace
}  // namespace fennick
