#include "formats/pes_labels.h"

#include <string>
#include <string_view>

#include "core/text.h"

namespace fennick {
namespace {

constexpr int kRowBytes = 6;
constexpr int kWidth = 8 * kRowBytes;
constexpr int kDigitTop = 2;  // rows 0 and 1 stay blank
constexpr int kLogoTop = 11;  // the logo takes rows 11 to 23
constexpr int kLogoRows = 13;
constexpr int kDigitPitch = 9;  // digits stand 9 pixels apart
constexpr int kFirstDigitX = 7;
constexpr size_t kMaxDigits = 6;

// Digits 6 pixels wide and 9 rows high; '#' is a set pixel.
constexpr std::array<std::array<std::string_view, 9>, 10> kDigits{{
    {" #### ", "##  ##", "##  ##", "##  ##", "##  ##", "##  ##", "##  ##", "##  ##", " #### "},
    {"  ##  ", " ###  ", "####  ", "  ##  ", "  ##  ", "  ##  ", "  ##  ", "  ##  ", "######"},
    {" #### ", "##  ##", "    ##", "    ##", "   ## ", "  ##  ", " ##   ", "##    ", "######"},
    {" #### ", "##  ##", "    ##", "    ##", "  ### ", "    ##", "    ##", "##  ##", " #### "},
    {"   ## ", "  ### ", " #### ", "## ## ", "## ## ", "######", "   ## ", "   ## ", "   ## "},
    {"######", "##    ", "##    ", "##### ", "    ##", "    ##", "    ##", "##  ##", " #### "},
    {" #### ", "##  ##", "##    ", "##### ", "##  ##", "##  ##", "##  ##", "##  ##", " #### "},
    {"######", "    ##", "    ##", "   ## ", "   ## ", "  ##  ", "  ##  ", " ##   ", " ##   "},
    {" #### ", "##  ##", "##  ##", "##  ##", " #### ", "##  ##", "##  ##", "##  ##", " #### "},
    {" #### ", "##  ##", "##  ##", "##  ##", "##  ##", " #####", "    ##", "##  ##", " #### "},
}};

// Capitals 3 pixels wide and 5 rows high, for the logos; each row is three
// bits, the leftmost pixel in the highest.
struct Glyph {
  char letter;
  std::array<uint8_t, 5> rows;
};
constexpr std::array<Glyph, 22> kLetters{{
    {'A', {2, 5, 7, 5, 5}}, {'B', {6, 5, 6, 5, 6}}, {'C', {3, 4, 4, 4, 3}}, {'D', {6, 5, 5, 5, 6}},
    {'E', {7, 4, 6, 4, 7}}, {'G', {3, 4, 5, 5, 3}}, {'I', {7, 2, 2, 2, 7}}, {'K', {5, 5, 6, 5, 5}},
    {'L', {4, 4, 4, 4, 7}}, {'M', {5, 7, 7, 5, 5}}, {'N', {6, 5, 5, 5, 5}}, {'O', {2, 5, 5, 5, 2}},
    {'P', {6, 5, 6, 4, 4}}, {'Q', {2, 5, 5, 6, 3}}, {'R', {6, 5, 6, 5, 5}}, {'S', {3, 4, 2, 1, 6}},
    {'T', {7, 2, 2, 2, 2}}, {'U', {5, 5, 5, 5, 7}}, {'Y', {5, 5, 2, 2, 2}}, {'F', {7, 4, 6, 4, 4}},
    {'H', {5, 5, 7, 5, 5}}, {'.', {0, 0, 0, 0, 2}},
}};
constexpr int kLetterPitch = 4;
constexpr int kLetterRows = 5;

// The logos by brand, compared without regard to case. "Option Color"
// deliberately shows the same logo as "EMBROIDERY".
struct Logo {
  const char* brand;
  const char* text;
};
constexpr std::array<Logo, 10> kLogos{{
    {"EMBROIDERY", "EMBROIDERY"},
    {"Option Color", "EMBROIDERY"},
    {"SU Rayon", "SU RAYON"},
    {"MA Rayon", "MA RAYON"},
    {"MA Polyneon", "MA POLYNEON"},
    {"RA Rayon", "RA RAYON"},
    {"RA Polyester", "RA POLYESTER"},
    {"ISACORD", "ISACORD"},
    {"GU DEKOR", "GU DEKOR"},
    {"COUNTRY", "COUNTRY"},
}};

// Applique parts by catalogue number, when the brand is empty: two lines.
struct AppliquePicture {
  const char* number;
  const char* top;
  const char* bottom;
};
constexpr std::array<AppliquePicture, 3> kApplique{{
    {"100", "APPLIQUE", "MATERIAL"},
    {"101", "APPLIQUE", "POSITION"},
    {"102", "APPLIQUE", ""},
}};

using Label = std::array<uint8_t, kPesLabelSize>;

void SetPixel(Label& label, int x, int y) {
  if (x < 0 || x >= kWidth || y < 0 || y >= 24) return;  // what falls off the edge is lost
  label[static_cast<size_t>(y * kRowBytes + x / 8)] |= static_cast<uint8_t>(1 << (x % 8));
}

const Glyph* FindLetter(char letter) {
  for (const Glyph& glyph : kLetters) {
    if (glyph.letter == letter) return &glyph;
  }
  return nullptr;  // a blank
}

// One line of capitals centred across the label, its top at `top`.
void DrawWord(Label& label, std::string_view text, int top) {
  const int width = static_cast<int>(text.size()) * kLetterPitch - 1;
  int left = (kWidth - width) / 2;
  for (const char letter : text) {
    if (const Glyph* glyph = FindLetter(letter)) {
      for (int row = 0; row < kLetterRows; ++row) {
        for (int column = 0; column < 3; ++column) {
          if ((glyph->rows[static_cast<size_t>(row)] >> (2 - column)) & 1) SetPixel(label, left + column, top + row);
        }
      }
    }
    left += kLetterPitch;
  }
}

void DrawDigits(Label& label, std::string_view number) {
  for (size_t i = 0; i < number.size() && i < kMaxDigits; ++i) {
    const char digit = number[i];
    if (digit < '0' || digit > '9') continue;
    const auto& glyph = kDigits[static_cast<size_t>(digit - '0')];
    const int left = kFirstDigitX + kDigitPitch * static_cast<int>(i);
    for (int row = 0; row < 9; ++row) {
      for (int column = 0; column < 6; ++column) {
        if (glyph[static_cast<size_t>(row)][static_cast<size_t>(column)] == '#') {
          SetPixel(label, left + column, kDigitTop + row);
        }
      }
    }
  }
}

}  // namespace

std::array<uint8_t, kPesLabelSize> DrawPesLabel(const ThreadColor& thread) {
  Label label{};
  if (thread.brand.empty()) {
    for (const AppliquePicture& picture : kApplique) {
      if (thread.catalogNumber != picture.number) continue;
      if (*picture.bottom == '\0') {
        DrawWord(label, picture.top, 9);
      } else {
        DrawWord(label, picture.top, 5);
        DrawWord(label, picture.bottom, 14);
      }
      return label;
    }
  }
  DrawDigits(label, thread.catalogNumber);
  for (const Logo& logo : kLogos) {
    if (EqualsIgnoringCase(thread.brand, logo.brand)) {
      DrawWord(label, logo.text, kLogoTop + (kLogoRows - kLetterRows) / 2);
      break;
    }
  }
  return label;
}

}  // namespace fennick
