#pragma once

#include <optional>
#include <string>
#include <vector>

namespace varnlog::charts {

/// Numbers of one kind, one for each category.
struct Series {
  std::string name;
  std::vector<double> values;
};

/// How the values of one category are spread.
struct Box {
  double lowerQuartile = 0;
  double median = 0;
  double upperQuartile = 0;
  std::vector<double> points = {};       // drawn as they are, over the box
  std::optional<double> reference = {};  // a line across the category
};

struct Chart {
  enum class Kind { kStackedBars, kGroupedBars, kBoxes };
  Kind kind = Kind::kStackedBars;
  std::string unit = {};      // of the values, above their axis
  bool wholeNumbers = false;  // they count something
  std::vector<std::string> categories = {};
  std::vector<Series> series = {};             // of bars
  std::vector<std::optional<Box>> boxes = {};  // one a category; nothing where there are no values
  std::string boxName = {};                    // what a box, a point and the line are, for the legend
  std::string pointsName = {};
  std::string referenceName = {};
};

/// One value of a table: a text, or a number with so many decimals; neither where there is none.
struct Value {
  std::string text = {};
  std::optional<double> number = {};
  int decimals = 0;
};

struct Table {
  std::vector<std::string> headings;
  std::vector<std::vector<Value>> rows;
};

/// A chart and the same in numbers.
struct Page {
  std::string name;   // short, for a tab
  std::string title;  // in full
  std::string note;   // below it; "" for none
  Chart chart;
  Table table;
};

}  // namespace varnlog::charts
