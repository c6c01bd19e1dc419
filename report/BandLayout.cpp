#include "report/BandLayout.h"

#include <algorithm>
#include <cmath>

namespace varnlog::report {

namespace {

using Kind = ObjectDesign::Kind;

// In parts of the font's size. The baseline lies where letters with accents and letters with descenders have
// equal room above and below.
constexpr double kLineHeight = 1.2;
constexpr double kBaseline = 0.94;
// Sums of heights differ from products of heights in the last digits.
constexpr double kTolerance = 0.001;

TextRoom Limited(TextRoom room, int mostLines) {
  room.lines = std::clamp(room.lines, 1, std::max(mostLines, 1));
  return room;
}

}  // namespace

BandLayout::BandLayout(const BandDesign& design, const BandSurroundings& around)
    : design_(design), around_(around) {
  for (const ObjectDesign& object : design.objects) places_.push_back(MakePlace(object));
}

BandLayout::Place BandLayout::MakePlace(const ObjectDesign& object) const {
  Place place;
  place.object = &object;
  const std::vector<double>& edges = around_.columnEdges;
  double right = edges.back() * object.to / 100;
  place.left = edges.back() * object.from / 100;
  if (object.column) {
    const auto column = static_cast<std::size_t>(*object.column);
    place.left = edges[column] + around_.design.padding;
    right = edges[column + 1] - around_.design.padding;
  }
  place.room = {right - place.left, object.font, object.lines};
  if (object.kind == Kind::kText) place.text = CaptionOf(object);
  if (object.kind == Kind::kSummary && !object.label.empty()) {
    if (const std::string* label = around_.report.Caption(object.label)) place.text = *label + " ";
  }
  if (object.kind != Kind::kFormula && object.kind != Kind::kSummary) return place;
  const std::string* text =
      object.kind == Kind::kFormula ? around_.report.FormulaText(object.value) : nullptr;
  if (object.kind == Kind::kFormula && text == nullptr)
    text = &std::ranges::find(around_.design.formulas, object.value, &FormulaDesign::name)->text;
  try {
    place.formula.emplace(text != nullptr ? *text : object.value);
  } catch (const FormulaError& error) {
    throw NamedFormulaError(object.value, error.what());
  }
  return place;
}

const std::string& BandLayout::CaptionOf(const ObjectDesign& object) const {
  const std::string* caption = around_.report.Caption(object.name);
  return caption != nullptr ? *caption : object.caption;
}

std::string BandLayout::TextOf(const Place& place, const FormulaContext& context) const {
  switch (place.object->kind) {
    case Kind::kText:
      return place.text;
    case Kind::kNumber:
      return std::to_string(context.RecordNumber());
    case Kind::kSymbol:
      return {};
    default:
      return place.text + Value(place, context);
  }
}

std::string BandLayout::Value(const Place& place, const FormulaContext& context) const {
  if (place.formula) {
    try {
      return place.formula->EvaluateText(context);
    } catch (const FormulaError& error) {
      throw NamedFormulaError(place.object->value, error.what());
    }
  }
  FormulaValue value = context.Field(place.object->value);
  if (auto* text = std::get_if<std::string>(&value)) return std::move(*text);
  if (const auto* date = std::get_if<platform::DateTime>(&value))
    return around_.shortDate.FormatGeneral(*date);
  return std::to_string(std::llround(std::get<double>(value)));
}

double BandLayout::LineHeight(int font) const {
  return around_.design.fonts[static_cast<std::size_t>(font)].size * kLineHeight;
}

double BandLayout::Bottom(const Place& place, std::size_t lines) const {
  const double height = place.object->kind == Kind::kSymbol
                            ? place.object->side
                            : static_cast<double>(lines) * LineHeight(place.room.font);
  return place.object->down + height;
}

double BandLayout::Height(const FormulaContext& context, int mostLines) const {
  double height = 0;
  for (const Place& place : places_) {
    std::size_t lines = 1;
    if (const TextRoom room = Limited(place.room, mostLines); room.lines > 1) {
      const std::string text = TextOf(place, context);
      if (!FitsOneLine(text, room, around_.metrics)) lines = WrapText(text, room, around_.metrics).size();
    }
    height = std::max(height, Bottom(place, lines));
  }
  return design_.above + height + design_.below;
}

double BandLayout::LeastHeight() const {
  double height = 0;
  for (const Place& place : places_) height = std::max(height, Bottom(place, 1));
  return design_.above + height + design_.below;
}

int BandLayout::LinesWithin(double height) const {
  double line = 1;
  for (const Place& place : places_) line = std::max(line, LineHeight(place.room.font));
  return std::max(1, static_cast<int>((height - design_.above - design_.below + kTolerance) / line));
}

double BandLayout::Paint(ReportCanvas& canvas, double top, const FormulaContext& context,
                         int mostLines) const {
  double height = 0;
  for (const Place& place : places_) {
    const double placeTop = top + design_.above + place.object->down;
    std::size_t lines = 1;
    if (place.object->kind == Kind::kSymbol) {
      canvas.DrawSymbol(place.left, placeTop, place.object->side, around_.report.Symbol());
    } else {
      lines = PaintLines(canvas, placeTop, place, TextOf(place, context), mostLines);
    }
    height = std::max(height, Bottom(place, lines));
  }
  height += design_.above + design_.below;
  const double width = around_.columnEdges.back();
  if (design_.ruleAbove > 0) canvas.DrawRule(0, top, width, top, design_.ruleAbove);
  if (design_.ruleBelow > 0) canvas.DrawRule(0, top + height, width, top + height, design_.ruleBelow);
  return height;
}

std::size_t BandLayout::PaintLines(ReportCanvas& canvas, double top, const Place& place,
                                   const std::string& text, int mostLines) const {
  const bool rightToLeft = around_.metrics.IsRightToLeft(text);
  const TextRoom room = Limited(place.room, mostLines);
  if (FitsOneLine(text, room, around_.metrics)) {
    PaintText(canvas, top, place, text, rightToLeft);
    return 1;
  }
  const std::vector<std::string> parts = WrapText(text, room, around_.metrics);
  for (const std::string& part : parts) {
    PaintText(canvas, top, place, part, rightToLeft);
    top += LineHeight(room.font);
  }
  return parts.size();
}

void BandLayout::PaintText(ReportCanvas& canvas, double top, const Place& place, std::string_view text,
                           bool rightToLeft) const {
  if (text.empty()) return;
  double left = place.left;
  // A text read from right to left begins at the right edge.
  const Align align =
      place.object->align == Align::kLeft && rightToLeft ? Align::kRight : place.object->align;
  if (align != Align::kLeft) {
    const double left_over = place.room.width - around_.metrics.Width(text, place.room.font);
    left += align == Align::kRight ? left_over : left_over / 2;
  }
  const double size = around_.design.fonts[static_cast<std::size_t>(place.room.font)].size;
  canvas.DrawText(left, top + size * kBaseline, text, place.room.font, rightToLeft);
}

}  // namespace varnlog::report
