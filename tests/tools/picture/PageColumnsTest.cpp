// The page's data columns pick their coding from the values: these rows pin
// the choice and the bytes for each kind of column, including the values that
// are not whole numbers a typed array can hold (fractions, past 2^53,
// infinities, NaN), which must fall back to doubles unchanged.
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "picture/PageColumns.h"

namespace {

using TimelineConvert::Column;
using TimelineConvert::DataWriter;

struct ColumnRow {
  const char* name;
  std::vector<double> values;
  const char* written;
};

std::vector<double> Steps(double first, std::size_t count) {
  std::vector<double> values;
  for (std::size_t index = 0; index < count; ++index) {
    values.push_back(first + static_cast<double>(index));
  }
  return values;
}

TEST(PageColumns, EachColumnTakesItsShortestCoding) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  std::vector<double> runs(16, 1.0);
  runs.resize(32, 2.0);
  const ColumnRow rows[] = {
      {"equal", {7, 7, 7}, R"("equal":["c",7])"},
      {"zeros", {-0.0, 0.0, -0.0}, R"("zeros":["c",0])"},
      {"bytes", {3, 200, 17, 90, 255, 1}, R"("bytes":["u8",0,"A8gRWv8B"])"},
      {"signed", {-5, 100, -128, 3}, R"("signed":["i8",0,"+2SAAw=="])"},
      {"wide", {70000, -1, 4000000000.0, 12}, R"("wide":["r",1,"4MUIAgECgKDZ5h0CGAI="])"},
      {"growing", Steps(0, 41),
       R"("growing":["u8",0,"AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8gISIjJCUmJyg="])"},
      {"steps", Steps(1000, 20), R"("steps":["v",1,"0A8CAgICAgICAgICAgICAgICAgIC"])"},
      {"runs", runs, R"("runs":["r",1,"AiAEIA=="])"},
      {"fraction", {1, 2.5, 3}, R"("fraction":["f64",0,"AAAAAAAA8D8AAAAAAAAEQAAAAAAAAAhA"])"},
      {"beyondExact",
       {9007199254740994.0, 1},
       R"("beyondExact":["f64",0,"AQAAAAAAQEMAAAAAAADwPw=="])"},
      {"huge", {1e300, -1e300}, R"("huge":["f64",0,"nHUAiDzkN36cdQCIPOQ3/g=="])"},
      {"notANumber", {nan, 1}, R"("notANumber":["f64",0,"AAAAAAAA+H8AAAAAAADwPw=="])"},
      {"infinite", {inf, -inf}, R"("infinite":["f64",0,"AAAAAAAA8H8AAAAAAADw/w=="])"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Column column;
    for (const double value : row.values) {
      column.Add(value);
    }
    std::string out;
    DataWriter json(out);
    json.Open('{');
    column.Write(json, row.name);
    json.Close('}');
    EXPECT_EQ(out, std::string("{") + row.written + "}");
  }
}

}  // namespace
