#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "report/Formula.h"

namespace varnlog::report {

/// One operation of a formula; its operands are its children.
struct Formula::Node {
  enum class Kind {
    kConstant,
    kField,
    kSum,
    kIf,  // children: left, right, then, else
    kToText,
    kPageNumber,
    kTotalPageCount,
    kRecordNumber,
    kCount,
    kPrintDate,
  };
  Kind kind = Kind::kConstant;
  FormulaValue constant;
  std::string field;
  std::size_t place = 0;  // 1-based, for error texts
  std::vector<std::unique_ptr<const Node>> children;
};

/// Throws FormulaError.
[[nodiscard]] std::unique_ptr<const Formula::Node> ParseFormula(std::string_view text);

[[noreturn]] void FailFormula(std::size_t place, std::string_view what);

}  // namespace varnlog::report
