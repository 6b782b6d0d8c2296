// fennick: embroidery designs from the command line.
#include <cstring>
#include <iostream>

#include "cli/commands.h"

namespace {

using fennick::cli::Command;

constexpr Command kCommands[] = {
    {"info", "fennick info FILE...",
     "Shows each design's format, size in centimetres and inches, stitches, colours and threads.",
     fennick::cli::RunInfo},
    {"dump", "fennick dump FILE",
     "Prints the design as read, as JSON (schema emb-dump/1): absolute stitch positions in 0.1 mm\n"
     "with y up, colour blocks, bounds and node counts.",
     fennick::cli::RunDump},
    {"convert",
     "fennick convert IN OUT [OPTIONS] | convert --to EXT INPUT... --out DIR [OPTIONS]",
     "Reads IN and saves it as OUT's extension asks, through the save pipeline and the stored\n"
     "conversion settings of that format (see 'fennick settings list'): the design is fitted to the\n"
     "hoop, turned a quarter or shrunk where that is allowed and helps, and split into OUT, \"OUT 2\",\n"
     "\"OUT 3\"... when it has more stitches or colours than one file may hold. PEC, PHC, PHB and PHD\n"
     "are written as PES, SHV as VIP, and TXT writes the design's notes. Prints each file written.\n"
     "Options override the stored settings for this run:\n"
     "  --hoop WxH            largest hoop in millimetres, e.g. 130x180\n"
     "  --rotate, --no-rotate allow or forbid the quarter turn\n"
     "  --shrink PCT          shrink by up to PCT percent to fit; 0 never shrinks\n"
     "  --split-stitches N    at most N stitches a file; 0 turns this split off\n"
     "  --split-colors N      at most N colours a file; 0 turns this split off\n"
     "  --pes5, --no-pes5     PES version 5 and 6 with the real thread colours, or the plain palette\n"
     "A design too big for the hoop is refused with \"Save Error\" and exit status 1.\n"
     "\n"
     "With --to EXT and --out DIR it converts many designs to EXT, on every core. INPUTs are design\n"
     "files, folders (every file with a reader, searched recursively, in sorted order), ZIP files\n"
     "(every design member) and \"Zip:archive.zip:member\" paths. Each design is saved into DIR as\n"
     "its name with EXT, split pieces as \"name 2\"...; a name already taken, by an earlier input or\n"
     "by a file in DIR, becomes \"name(2)\", so nothing is overwritten. One line per design, in input\n"
     "order: \"IN -> DIR/name.ext\" or \"IN: cause\" (\"Save Error\" messages included), then\n"
     "\"N converted, M failed, S s\". A progress bar goes to standard error when it is a terminal.\n"
     "A bad design never stops the rest; the exit status is 1 when any failed.",
     fennick::cli::RunConvert},
    {"formats", "fennick formats",
     "Lists every format: whether it is read and written (PEC, PHC, PHB and PHD are written as PES,\n"
     "SHV as VIP), and the built-in conversion row of each writable one: the largest hoop in\n"
     "millimetres and the stitch and colour limits at which a design is split (\"off\": never).",
     fennick::cli::RunFormats},
    {"settings", "fennick settings [list | get KEY | set KEY VALUE]",
     "Shows or changes the stored preferences. 'list' (the default) shows the conversion settings\n"
     "of each format as convert uses them (stored values over the built-in rows) and every stored\n"
     "value. KEY is [TREE:]SECTION/NAME, TREE being main (the default), profile or resize; names\n"
     "ignore case. Examples: Conversion/pesw (PES hoop width, mm), Conversion/dstsh (DST shrink\n"
     "percent), Conversion/pes5, \"Settings/BMP Size\", resize:MaxSL. The conversion names are the\n"
     "lower-case extension followed by w, h (hoop), r (rotate), sh (shrink), shpct, both, ss, ns\n"
     "(split by stitches, limit), sc, nc (split by colours, limit). 'set' stores a number when VALUE\n"
     "reads as one (decimal or 0x hexadecimal) and text otherwise; a stored value keeps its type.",
     fennick::cli::RunSettings},
    {"notes", "fennick notes IN [OUT.txt]",
     "Writes the design's notes: name, size, date and each thread's stitches and length, in\n"
     "yards and inches when the \"English\" preference is set, then for each distinct colour the three\n"
     "nearest threads of the Sulky, MA Rayon, RA Poly and Isacord charts with their likeness in\n"
     "percent. Without OUT they go to standard output.",
     fennick::cli::RunNotes},
    {"colors", "fennick colors EXT [--json]",
     "Lists the colours a format offers, as a host's colour list shows them: one line per colour\n"
     "with its number, #rrggbb and name. VIP lists its nine thread charts and the PES family (pes,\n"
     "pec, phc, phb, phd, emd) nine brand charts, each under its title and in hue order. --json\n"
     "prints {\"format\", \"charts\": [{\"title\", \"colors\": [{\"index\", \"rgb\", \"name\",\n"
     "\"chart_index\"}]}]}, with a null title for a format's single table.",
     fennick::cli::RunColors},
    {"render", "fennick render IN OUT [--size N] [--flat|--3d] [--outline] [--jumps] [--background RRGGBB]",
     "Draws the design into OUT, a PNG or a Windows bitmap by its extension. The size, look and\n"
     "background default to the \"BMP Size\", \"Make 3D\", \"Outline\" and background preferences.",
     fennick::cli::RunRender},
    {"demo", "fennick demo [--out DIR]",
     "Builds a sample design in code, writes it in every writable format into DIR (default\n"
     "./demo-out), PES both plain and with real colours (fennick-demo-v5.pes), reads each file back, draws it as a PNG thumbnail beside the file and prints a\n"
     "table of the results. All files also go into DIR/designs.zip, and the DST one is read back from it.",
     fennick::cli::RunDemo},
    {"colorsort", "fennick colorsort IN OUT [--threshold PCT] [CONVERT OPTIONS]",
     "Color Sort: moves a later block of a colour up behind an earlier block of the same colour, so\n"
     "that the two sew as one and the design needs fewer colour stops, wherever the blocks it jumps\n"
     "over cover no more than PCT percent of it (default: the \"Color Sort Threshold\" preference, 5).\n"
     "Prints how many colours it saved and saves OUT as 'fennick convert IN OUT' does, with its options.",
     fennick::cli::RunColorSort},
    {"baste", "fennick baste IN OUT [--no-combine] [--no-cross] [--edge MM] [--length MM] [CONVERT OPTIONS]",
     "Auto-Baste: a rectangle of long running stitches around the design, to hold fabric and\n"
     "stabiliser together, sewn first in a thread of its own. --edge is the margin past the design\n"
     "(0 to 100 mm), --length the stitch length (1 to 100 mm), --no-cross leaves out the crosshair\n"
     "ticks at the middle of each side, and --no-combine writes the baste alone. Each defaults to its\n"
     "\"Baste\" preference. Prints the stitches added and saves OUT as 'fennick convert IN OUT' does.",
     fennick::cli::RunBaste},
    {"reduce", "fennick reduce IN OUT --needles N [CONVERT OPTIONS]",
     "Reduce Needles: merges the nearest colours until the design uses at most N distinct colours,\n"
     "for a machine of N needles. Colour stops stay; each takes the remaining colour nearest to it,\n"
     "with its whole thread record. Prints the colours merged and saves OUT as 'fennick convert IN\n"
     "OUT' does.",
     fennick::cli::RunReduce},
    {"huesort", "fennick huesort IN OUT [CONVERT OPTIONS]",
     "Orders the design's thread list by hue, near colours together, as a host's colour list shows\n"
     "them; the stitches keep their order, so each colour block takes the thread of its new place.\n"
     "A design of fewer than 3 colours keeps its order. Saves OUT as 'fennick convert IN OUT' does.",
     fennick::cli::RunHueSort},
    {"resize",
     "fennick resize IN OUT (--scale PCT | --scale-x PCT --scale-y PCT) [--rotate DEG] [--plain] [ENGINE OPTIONS]\n"
     "       [CONVERT OPTIONS]",
     "Resizes a design and keeps its density: satin columns and fills are found from the stitches\n"
     "alone and sewn anew, so that an enlarged column is as dense as before and a reduced fill no\n"
     "thicker; then stitches that came out shorter or longer than the limits are merged or split.\n"
     "PCT is a percentage (a negative one mirrors; an axis left out keeps its size), DEG turns the\n"
     "design counter-clockwise, and --plain only scales the stitches, to compare. ENGINE OPTIONS,\n"
     "each defaulting to its resize preference: --sensitivity 6..16 (how far apart fill rows may\n"
     "lie, in 0.1 mm), --min-fill 0..30, --min-satin 0..10, --max-fill 25..250, --max-satin 25..250\n"
     "(stitch lengths in 0.1 mm, each put in force), and --no-min-fill, --no-min-satin,\n"
     "--no-max-fill, --no-max-satin to lift one. Prints the new size and stitch count and saves OUT\n"
     "as 'fennick convert IN OUT' does.",
     fennick::cli::RunResize},
    {"fit", "fennick fit IN OUT --hoop WxH [--stretch] [--plain] [ENGINE OPTIONS] [CONVERT OPTIONS]",
     "Resizes a design, as 'fennick resize' does, to fill a hoop of W by H millimetres less 1 mm on\n"
     "each side, its aspect kept; --stretch fills both sides. Saves OUT as 'fennick convert' does.",
     fennick::cli::RunFit},
    {"host-call",
     "fennick host-call METHOD [ARGS] [--out FILE] [--pick FILE]... [--save-name FILE] [--yes|--no] [--page FILE]\n"
     "       [--hoop WxH] [--no-host]",
     "Calls a property or method of the control by name or dispatch id (Width, Height, Name, DockingPos,\n"
     "FileImport, FileImportTyped EXT, FitHoop CX CY PROPORTIONAL DESIGN, GetFormatColors EXT,\n"
     "GetWriteFormats, Save DESIGN, SaveAs DESIGN, SortColorListByHue DESIGN, TEWillRun, TESetRun,\n"
     "TEReSize DESIGN ROT HZ VT, ShowFennickPreferences, ColorSort DESIGN) against a host with one design\n"
     "page and no window. DESIGN is a design file, passed as a block; CX and CY are tenths of a\n"
     "millimetre. The design browser picks the --pick files, the save dialog chooses --save-name, Yes\n"
     "or No questions get --yes or --no (else No), the page holds --page and its hoop is --hoop (mm,\n"
     "default 100x100); --no-host calls without a host. Prints what came back; a design that came\n"
     "back is saved as --out as 'fennick convert' saves. Exit status 1 when the result is 0.",
     fennick::cli::RunHostCall},
    {"zip", "fennick zip list ZIP | zip add ZIP FILE [NAME] | zip delete ZIP NAME",
     "Lists the members of a ZIP file, adds FILE as member NAME (default: FILE's name; a member of\n"
     "that name, in any case, is replaced), or deletes member NAME. The ZIP file is rewritten as a\n"
     "whole, so a failure leaves it as it was. Every command that reads a design also takes a\n"
     "member as \"Zip:archive.zip:member\".",
     fennick::cli::RunZip},
    {"browse", "fennick browse [FOLDER]",
     "Opens the design browser at FOLDER, or where it was last: tick folders or catalog categories,\n"
     "pick designs among their thumbnails and press Import. Prints the designs imported, one a line\n"
     "in their text form (\"Zip:archive.zip:member\" for ZIP members); exit status 1 on Close. The\n"
     "browser is the program fennick-browse beside this one, which needs a desktop session.",
     fennick::cli::RunBrowse},
    {"preferences", "fennick preferences",
     "Opens the preference sheet, \"Fennick Preferences\": the Color Sort overlap, the Baste settings,\n"
     "each writable format's conversion settings (largest hoop, splits, rotate, shrink, PES choices)\n"
     "and the Tessimo resize settings. OK and Apply write them (see 'fennick settings list');\n"
     "Cancel writes nothing. The sheet is the program fennick-preferences beside this one, which\n"
     "needs a desktop session.",
     fennick::cli::RunPreferences},
};

void PrintUsage(std::ostream& out) {
  out << "usage: fennick COMMAND [ARGUMENTS]\n\ncommands:\n";
  for (const Command& command : kCommands) out << "  " << command.usage << "\n";
  out << "\n'fennick COMMAND --help' tells more about a command.\n";
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0) {
    PrintUsage(argc < 2 ? std::cerr : std::cout);
    return argc < 2 ? 2 : 0;
  }
  for (const Command& command : kCommands) {
    if (std::strcmp(argv[1], command.name) != 0) continue;
    fennick::cli::Arguments arguments(argv + 2, argv + argc);
    for (const std::string& argument : arguments) {
      if (argument == "--help" || argument == "-h") {
        std::cout << "usage: " << command.usage << "\n\n" << command.help << "\n";
        return 0;
      }
    }
    return command.run(arguments);
  }
  std::cerr << "fennick: unknown command \"" << argv[1] << "\"\n";
  PrintUsage(std::cerr);
  return 2;
}
