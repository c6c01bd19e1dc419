#include "report/Formula.h"

#include <array>
#include <charconv>
#include <cstdio>

#include "report/FormulaParser.h"

namespace varnlog::report {

namespace {

using Node = Formula::Node;

constexpr int kDefaultDecimals = 2;
constexpr std::string_view kDefaultPicture = "d.M.yyyy";

FormulaValue Compute(const Node& node, const FormulaContext& context);

// Not printf, whose decimal point the user's locale may turn into a comma.
std::string NumberText(double value, int decimals) {
  std::array<char, 352> buffer{};  // room for the largest double in full
  const auto [end, error] =
      std::to_chars(buffer.begin(), buffer.end(), value, std::chars_format::fixed, decimals);
  return error == std::errc() ? std::string(buffer.begin(), end) : std::string();
}

std::string AsText(const FormulaValue& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  if (const auto* number = std::get_if<double>(&value)) return NumberText(*number, kDefaultDecimals);
  if (const auto* date = std::get_if<platform::DateTime>(&value))
    return FormatPicture(*date, kDefaultPicture);
  return std::get<bool>(value) ? "True" : "False";
}

std::string ToText(const Node& node, const FormulaContext& context) {
  const FormulaValue value = Compute(*node.children[0], context);
  if (node.children.size() == 1) return AsText(value);
  const FormulaValue form = Compute(*node.children[1], context);
  if (const auto* number = std::get_if<double>(&value)) {
    const auto* decimals = std::get_if<double>(&form);
    if (decimals == nullptr || *decimals > 10)
      FailFormula(node.place, "ToText of a number takes its decimals");
    return NumberText(*number, static_cast<int>(*decimals));
  }
  const auto* picture = std::get_if<std::string>(&form);
  if (picture == nullptr) FailFormula(node.place, "ToText takes a picture here");
  // A date that was never entered is an empty text already.
  const auto* date = std::get_if<platform::DateTime>(&value);
  return date != nullptr ? FormatPicture(*date, *picture) : AsText(value);
}

FormulaValue Sum(const Node& node, const FormulaContext& context) {
  FormulaValue total = Compute(*node.children[0], context);
  for (std::size_t i = 1; i < node.children.size(); ++i) {
    FormulaValue next = Compute(*node.children[i], context);
    if (auto* text = std::get_if<std::string>(&total);
        text != nullptr && std::holds_alternative<std::string>(next)) {
      text->append(std::get<std::string>(next));
    } else if (auto* number = std::get_if<double>(&total);
               number != nullptr && std::holds_alternative<double>(next)) {
      *number += std::get<double>(next);
    } else {
      FailFormula(node.children[i]->place, "'+' joins texts or adds numbers");
    }
  }
  return total;
}

FormulaValue Compute(const Node& node, const FormulaContext& context) {
  switch (node.kind) {
    case Node::Kind::kConstant:
      return node.constant;
    case Node::Kind::kField:
      return context.Field(node.field);
    case Node::Kind::kSum:
      return Sum(node, context);
    case Node::Kind::kIf: {
      const bool equal = Compute(*node.children[0], context) == Compute(*node.children[1], context);
      return Compute(*node.children[equal ? 2 : 3], context);
    }
    case Node::Kind::kToText:
      return ToText(node, context);
    case Node::Kind::kPageNumber:
      return static_cast<double>(context.PageNumber());
    case Node::Kind::kTotalPageCount:
      return static_cast<double>(context.TotalPageCount());
    case Node::Kind::kRecordNumber:
      return static_cast<double>(context.RecordNumber());
    case Node::Kind::kCount:
      return static_cast<double>(context.Count());
    case Node::Kind::kPrintDate:
      return context.PrintDate();
  }
  return {};
}

std::string PicturePart(platform::DateTime date, char letter, std::size_t length) {
  const int value = letter == 'd' ? date.Day() : letter == 'M' ? date.Month() : date.Year();
  const int digits = letter == 'y' ? (length <= 2 ? 2 : 4) : (length >= 2 ? 2 : 1);
  const int shown = letter == 'y' && digits == 2 ? value % 100 : value;
  char buffer[16];
  const int written = std::snprintf(buffer, sizeof buffer, "%0*d", digits, shown);
  return {buffer, static_cast<std::size_t>(written)};
}

}  // namespace

Formula::Formula(std::string_view text) : root_(ParseFormula(text)) {}
Formula::~Formula() = default;
Formula::Formula(Formula&&) noexcept = default;
Formula& Formula::operator=(Formula&&) noexcept = default;

FormulaValue Formula::Evaluate(const FormulaContext& context) const {
  return Compute(*root_, context);
}

std::string Formula::EvaluateText(const FormulaContext& context) const {
  return AsText(Evaluate(context));
}

std::string FormulaQuoted(std::string_view text) {
  std::string quoted;
  for (const char c : text) quoted.append(c == '"' ? 2 : 1, c);
  return quoted;
}

std::string FormatPicture(platform::DateTime date, std::string_view picture) {
  if (!date.IsSet()) return {};
  std::string text;
  for (std::size_t i = 0; i < picture.size();) {
    const char letter = picture[i];
    std::size_t end = i + 1;
    while (end < picture.size() && picture[end] == letter) ++end;
    if (letter == 'd' || letter == 'M' || letter == 'y') {
      text += PicturePart(date, letter, end - i);
    } else {
      text.append(picture.substr(i, end - i));
    }
    i = end;
  }
  return text;
}

}  // namespace varnlog::report
