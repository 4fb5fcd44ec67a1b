// Reading a command's input whole: a regular file (into memory of its size),
// an empty one, a pipe (into a string, its size unknown) and the inputs that
// cannot be read.
#include "cli/InputFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <thread>

#include "ToolTestSupport.h"

namespace {

using TimelineConvert::InputText;
using TimelineConvert::ReadInput;
using tool_testing::WorkPath;
using tool_testing::WriteFile;

TEST(InputFile, ReadsTheWholeTextOfAFileOrAPipe) {
  const std::string withNul("{\"a\": \"\0\"}\n", 11);
  const std::string large(300000, 'x');
  struct Row {
    const char* name;
    std::string content;
    bool pipe;
  };
  const Row rows[] = {
      {"file", withNul, false},
      {"empty", "", false},
      {"large", large, false},
      {"pipe", large, true},
  };
  for (const Row& row : rows) {
    const std::string path = WorkPath(std::string("input-") + row.name);
    std::remove(path.c_str());
    std::thread writer;
    if (row.pipe) {
      ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0) << row.name;
      writer = std::thread([&path, &row] { std::ofstream(path, std::ios::binary) << row.content; });
    } else {
      WriteFile(path, row.content);
    }
    InputText text;
    std::string problem = "unchanged";
    EXPECT_TRUE(ReadInput(path, text, problem)) << row.name;
    if (writer.joinable()) {
      writer.join();
    }
    EXPECT_EQ(problem, "") << row.name;
    EXPECT_EQ(std::string(text.View()), row.content) << row.name;
    text.Release();
    EXPECT_TRUE(text.View().empty()) << row.name;
    std::remove(path.c_str());
  }
}

TEST(InputFile, SaysWhyAnInputCannotBeRead) {
  struct Row {
    const char* name;
    std::string path;
    const char* problem;
  };
  const Row rows[] = {
      {"missing", WorkPath("input-that-is-not-there"), "No such file or directory"},
      {"directory", WorkPath("."), "it is a directory"},
  };
  for (const Row& row : rows) {
    InputText text;
    std::string problem;
    EXPECT_FALSE(ReadInput(row.path, text, problem)) << row.name;
    EXPECT_EQ(problem, row.problem) << row.name;
    EXPECT_TRUE(text.View().empty()) << row.name;
  }
}

}  // namespace
