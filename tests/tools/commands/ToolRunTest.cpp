// The program itself, as one table of command lines: each row sets up a fresh
// folder, runs timeline-convert there, and states the exit status, standard
// output and standard error it expects, then what the folder must hold. Rows
// from other areas of the tool are appended to kRows.
#include <gtest/gtest.h>
#include <unistd.h>

#include <TimelineEngineConversion/TimelineEngineConversion.h>
#include <filesystem>
#include <string>
#include <vector>

#include "ToolTestSupport.h"

namespace {

using tool_testing::ReadFile;
using tool_testing::SourcePath;

std::string Golden(const char* name) {
  return ReadFile(SourcePath(std::string("tests/tools/golden/") + name));
}

const std::string kCopyExamples =
    "cp \"$SRC\"/examples/highlight.json h.json; "
    "cp \"$SRC\"/examples/refused.json r.json; ";
const std::string kName = "timeline-convert: ";
const std::string kHelpHint = " (timeline-convert --help lists the commands and options)\n";
const std::string kFraction = ": write it without a fraction part or exponent\n";

struct ToolCase {
  const char* name;
  std::string setup;      // shell, run in the row's empty folder before the tool
  std::string arguments;  // the tool's command line, shell-quoted
  int exitStatus;
  std::string out;  // exactly, or each of `outHas` when that is given
  std::string err;
  std::string after = "";  // shell, run in the folder afterwards: its output
  std::string afterOut = "";
  std::vector<std::string> outHas = {};
  bool needsRoot = false;  // device nodes can only be made by root
};

const ToolCase kRows[] = {
    {"ConvertsTheExample", kCopyExamples, "convert h.json", 0, Golden("highlight.timeline.json"),
     ""},
    {"ReadsStandardInput", kCopyExamples, "convert - < h.json", 0,
     Golden("highlight.timeline.json"), ""},
    {"ListsTheAssets", kCopyExamples, "assets h.json", 0, Golden("highlight.assets.txt"), ""},
    {"RendersSvg", kCopyExamples, "render h.json -o p.svg", 0, "", "",
     "xmllint --noout p.svg && head -c 5 p.svg", "<svg "},
    {"RendersHtml", kCopyExamples, "render --html h.json -o p.html", 0, "", "",
     "head -c 15 p.html; grep -c 'id=\"timeline-data\"' p.html", "<!DOCTYPE html>1\n"},
    {"RefusalKeepsTheOutput", kCopyExamples + "echo earlier > out.json",
     "convert r.json -o out.json", 2, "", Golden("refused.stderr.txt"), "cat out.json",
     "earlier\n"},
    // Interchange: the format follows -o's name; lists go one per side.
    {"OtioByTheFileName", kCopyExamples, "convert h.json -o x.otio", 0, "", "",
     "cmp x.otio \"$SRC\"/tests/tools/golden/highlight.otio && echo same", "same\n"},
    {"ListsIntoAFolder", kCopyExamples + "mkdir d", "convert h.json --format edl -o d", 0, "",
     kName + "h.json: the edl export approximated 2 things (--report FILE lists them by element)\n",
     "for s in picture sound aux; do cmp d/h.$s.edl \"$SRC\"/tests/tools/golden/highlight.$s.edl "
     "&& echo $s; done",
     "picture\nsound\naux\n"},
    {"OneSideToStandardOutput", kCopyExamples, "convert h.json --format edl --side picture", 0,
     Golden("highlight.picture.edl"),
     kName + "h.json: the edl export approximated 1 thing (--report FILE lists them by element)\n"},
    {"SeveralListsNeedAFolder", kCopyExamples, "convert h.json -o l.edl", 1, "",
     kName + "the timeline makes 3 lists (picture, sound, aux): -o must name an existing folder, "
             "or --side choose one\n",
     "ls -A", "h.json\nr.json\n"},
    {"FormatContradictsTheName", kCopyExamples, "convert h.json --format otio -o x.edl", 1, "",
     kName + "-o x.edl names an edit decision list, but --format otio asks for an OpenTimelineIO "
             "document; change the file name or leave the option out\n",
     "ls -A", "h.json\nr.json\n"},
    {"RenderPageByTheFileName", kCopyExamples, "render h.json -o p.html", 0, "", "",
     "head -c 15 p.html", "<!DOCTYPE html>"},
    {"RenderDoesNotWriteOtio", kCopyExamples, "render h.json -o p.otio", 1, "",
     kName + "-o p.otio names an OpenTimelineIO document, which this command does not write "
             "(convert writes engine JSON, .otio and .edl)\n"},
    {"SideOnlyForLists", kCopyExamples, "convert h.json --side aux", 1, "",
     kName + "--side chooses the side of an edit decision list; the output is engine\n"},
    {"ListRefusedAtItsPlace",
     "cp \"$SRC\"/tests/tools/documents/check-negative-duration.json n.json",
     "convert n.json --format edl --side sound -o s.edl", 2, "",
     "Cannot export to an EDL: the sound EDL cannot hold it: the item has a negative sound length "
     "(-50 frames on the timeline, -50 frames of media).\n" +
         kName + "n.json: at element 0 (item 1, clip CAM-1)\n",
     "ls -A", "n.json\n"},
    {"ReportByElement", kCopyExamples,
     "convert h.json --format edl --side picture -o p.edl --report r.txt", 0, "",
     kName + "h.json: the edl export approximated 1 thing (--report FILE lists them by element)\n",
     "cat r.txt",
     "The edl export of h.json, element by element\n"
     "at element 0 (item 1, clip CAM-A-0031): carried exactly\n"
     "at element 1 (item 2, clip CAM-B-0032): carried exactly\n"
     "at element 2 (item 3, clip CAM-SSM-001): carried exactly\n"
     "at element 3 (item 4, clip CAM-A-0031): approximated: picture list: transition of kind 1 "
     "(12 frames, 6 of them before the cut) written as a cut: a list's dissolve needs the items "
     "to overlap.\n"
     "in the aux track (clip COMMENT-01): carried exactly\n1 approximated\n"},
    {"ReportAsJson", kCopyExamples, "convert h.json -o x.otio --report r.json --errors json", 0, "",
     "", "grep -c '\"carried\":\"exact\"' r.json", "5\n"},
    {"EngineJsonCompact", kCopyExamples, "convert h.json --compact -o c.json", 0, "", "",
     "wc -l < c.json; python3 -c 'import json, sys; print(json.load(open(\"c.json\")) == "
     "json.load(open(sys.argv[1])))' \"$SRC\"/tests/tools/golden/highlight.timeline.json",
     "1\nTrue\n"},
    {"ReportOnlyForInterchange", kCopyExamples, "convert h.json --report r.txt", 1, "",
     kName + "--report lists what an interchange export (otio, edl) approximates; engine JSON "
             "carries everything\n"},
    {"MediaUrlsAndCompact", kCopyExamples,
     "convert h.json -o x.otio --compact --media-url 'file:///m/{clip}.mxf'", 0, "", "",
     "wc -l < x.otio; grep -o '\"target_url\":\"[^\"]*\"' x.otio | sort -u",
     "1\n\"target_url\":\"file:///m/CAM-A-0031.mxf\"\n\"target_url\":\"file:///m/CAM-B-0032.mxf\"\n"
     "\"target_url\":\"file:///m/CAM-SSM-001.mxf\"\n\"target_url\":\"file:///m/COMMENT-01.mxf\"\n"},
    // Output: a regular file is replaced whole, through a temporary file.
    {"NewFileHasTheUsualMode", kCopyExamples + "umask 027", "convert h.json -o new.json", 0, "", "",
     "stat -c %a new.json; cat new.json", "640\n" + Golden("highlight.timeline.json")},
    {"ExistingFileKeepsItsMode", kCopyExamples + "echo old > out.json; chmod 604 out.json",
     "convert h.json -o out.json", 0, "", "", "stat -c %a out.json; ls -A",
     "604\nh.json\nout.json\nr.json\n"},
    {"SymlinkTargetIsReplacedAndTheLinkKept",
     kCopyExamples + "mkdir d; echo old > d/t.json; ln -s d/t.json link.json",
     "assets h.json -o link.json", 0, "", "", "test -L link.json && cat d/t.json",
     Golden("highlight.assets.txt")},
    {"FailedWriteLeavesTheFileAsItWas", kCopyExamples + "echo old > out.json; ulimit -f 1",
     "convert h.json -o out.json", 1, "", kName + "cannot write out.json: File too large\n",
     "cat out.json; ls -A", "old\nh.json\nout.json\nr.json\n"},
    {"FailedWriteCreatesNothing", kCopyExamples + "ulimit -f 1", "convert h.json -o new.json", 1,
     "", kName + "cannot write new.json: File too large\n", "ls -A", "h.json\nr.json\n"},
    {"FailedWriteThroughSymlinkKeepsBoth",
     kCopyExamples + "echo old > t.json; ln -s t.json link.json; ulimit -f 1",
     "convert h.json -o link.json", 1, "", kName + "cannot write link.json: File too large\n",
     "test -L link.json && cat t.json", "old\n"},
    {"DirectoryOutputIsRefused", kCopyExamples + "mkdir d", "convert h.json -o d", 1, "",
     kName + "cannot write d: it is a directory\n", "test -d d && ls -A d", ""},
    // Output: anything else is written in place and never removed.
    {"FifoIsWrittenInPlace", kCopyExamples + "mkfifo f; cat f > got.txt &", "assets h.json -o f", 0,
     "", "", "test -p f && cat got.txt", Golden("highlight.assets.txt")},
    {"DeviceIsWrittenInPlace",
     kCopyExamples + "mknod null c 1 3",
     "convert h.json -o null",
     0,
     "",
     "",
     "test -c null && echo kept",
     "kept\n",
     {},
     true},
    {"FullDeviceFailsAndIsKept",
     kCopyExamples + "mknod full c 1 7",
     "convert h.json -o full",
     1,
     "",
     kName + "cannot write full: No space left on device\n",
     "test -c full && echo kept",
     "kept\n",
     {},
     true},
    {"DevStdoutIsTheToolsOwnOutput", kCopyExamples, "assets h.json -o /dev/stdout", 0,
     Golden("highlight.assets.txt"), ""},
    // Messages.
    {"InputDirectory", "", "convert .", 1, "", kName + "cannot read .: it is a directory\n"},
    {"MissingInput", "", "render missing.json", 1, "",
     kName + "cannot read missing.json: No such file or directory\n"},
    {"FaultNamesItsPlaceAndWritesNothing",
     "echo '{\"playlist\": {\"number\": 1}, \"assets\": []}' > m.json",
     "convert m.json -o never.json", 1, "",
     kName + "m.json: /playlist: missing field \"serverId\"\n", "ls -A", "m.json\n"},
    {"StandardInputByName", "echo '{\"playlist\": true, \"assets\": []}' > b.json",
     "convert - < b.json", 1, "",
     kName + "standard input: /playlist: expected an object, found a boolean\n"},
    {"WholeNumberWithFraction",
     kCopyExamples + "sed 's/\"number\": 12,/\"number\": 12.0,/' h.json > f.json", "convert f.json",
     1, "", kName + "f.json: /playlist/number: 12.0 is not an integer" + kFraction},
    {"WholeNumberWithExponent",
     kCopyExamples + "sed 's/\"number\": 12,/\"number\": 1e3,/' h.json > f.json", "convert f.json",
     1, "", kName + "f.json: /playlist/number: 1000.0 is not an integer" + kFraction},
    {"UnknownCommandSuggestsTheNearest", "", "convrt h.json", 1, "",
     kName + "unknown command \"convrt\" (did you mean \"convert\"?)\n"},
    {"VersionShort", "", "-V", 0,
     std::string("timeline-convert 1.0.0 (conversion library ") +
         TIMELINE_ENGINE_CONVERSION_VERSION_TEXT + ")\n",
     ""},
    {"VersionLong", "", "--version", 0,
     std::string("timeline-convert 1.0.0 (conversion library ") +
         TIMELINE_ENGINE_CONVERSION_VERSION_TEXT + ")\n",
     ""},
    {"NoCommand", "", "", 1, "",
     kName + "a command is needed: convert, assets, render or check" + kHelpHint},
    {"UnknownDurationMode", kCopyExamples, "convert h.json --duration-mode fields", 1, "",
     kName + "--duration-mode: fields not in {items,playlist}" + kHelpHint},
    {"ConvertHelp",
     "",
     "convert --help",
     0,
     "",
     "",
     "",
     "",
     {"INPUT", "--output", "--duration-mode", "items", "playlist"}},
    {"AssetsHelp", "", "assets --help", 0, "", "", "", "", {"INPUT", "--output", "missing"}},
    {"RenderHelp",
     "",
     "render --help",
     0,
     "",
     "",
     "",
     "",
     {"INPUT", "--output", "--duration-mode", "--html"}},
};

TEST(ToolRun, EveryRowOfTheTable) {
  for (const ToolCase& row : kRows) {
    SCOPED_TRACE(row.name);
    if (row.needsRoot && ::geteuid() != 0) {
      continue;  // mknod needs root; the FIFO rows cover in-place writing
    }
    const std::string folder = tool_testing::WorkPath(std::string("rows/") + row.name);
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    const auto run = tool_testing::RunScript(folder, row.setup + "\n\"$TOOL\" " + row.arguments);
    EXPECT_EQ(run.exitStatus, row.exitStatus);
    EXPECT_EQ(run.err, row.err);
    if (row.outHas.empty()) {
      EXPECT_EQ(run.out, row.out);
    }
    for (const auto& word : row.outHas) {
      EXPECT_NE(run.out.find(word), std::string::npos) << word;
    }
    if (!row.after.empty()) {
      EXPECT_EQ(tool_testing::RunScript(folder, row.after).out, row.afterOut);
    }
  }
}

}  // namespace
