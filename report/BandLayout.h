#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/ShortDate.h"
#include "report/Formula.h"
#include "report/ReportCanvas.h"
#include "report/ReportDesign.h"
#include "report/TextWrap.h"
#include "report/dsrResults.h"

namespace varnlog::report {

/// One of the report's formulas cannot be read or computed.
class NamedFormulaError : public FormulaError {
 public:
  NamedFormulaError(std::string name, const std::string& what) : FormulaError(what), name_(std::move(name)) {}
  [[nodiscard]] const std::string& name() const { return name_; }

 private:
  std::string name_;
};

/// What all bands of one report share; everything in it outlives them.
struct BandSurroundings {
  const ReportDesign& design;
  const dsrResults& report;
  const platform::ShortDate& shortDate;
  const TextMetrics& metrics;
  const std::vector<double>& columnEdges;  // one more than columns, from 0 to the width
};

/// One band with its objects in their places, ready to take the texts of a row or a page.
class BandLayout {
 public:
  /// Reads the band's formulas: throws NamedFormulaError.
  BandLayout(const BandDesign& design, const BandSurroundings& around);

  [[nodiscard]] const BandDesign& Design() const { return design_; }

  /// The height when no object takes more than `mostLines` lines.
  [[nodiscard]] double Height(const FormulaContext& context, int mostLines) const;
  /// The height when each object takes one line.
  [[nodiscard]] double LeastHeight() const;
  /// How many lines an object may take in a band of at most `height`; at least one.
  [[nodiscard]] int LinesWithin(double height) const;

  /// Draws texts and horizontal rules; the result is the height.
  double Paint(ReportCanvas& canvas, double top, const FormulaContext& context, int mostLines) const;

 private:
  struct Place {
    const ObjectDesign* object = nullptr;
    std::string text;                // of an object without a formula; what a summary begins with
    std::optional<Formula> formula;  // of the others
    double left = 0;
    TextRoom room;
  };

  [[nodiscard]] Place MakePlace(const ObjectDesign& object) const;
  [[nodiscard]] std::string TextOf(const Place& place, const FormulaContext& context) const;
  [[nodiscard]] std::string Value(const Place& place, const FormulaContext& context) const;
  [[nodiscard]] const std::string& CaptionOf(const ObjectDesign& object) const;
  [[nodiscard]] double LineHeight(int font) const;
  /// How far down the object reaches when it takes so many lines.
  [[nodiscard]] double Bottom(const Place& place, std::size_t lines) const;
  /// The lines that the text was broken into, which it was not where it fits.
  [[nodiscard]] std::size_t PaintLines(ReportCanvas& canvas, double top, const Place& place,
                                       const std::string& text, int mostLines) const;
  void PaintText(ReportCanvas& canvas, double top, const Place& place, std::string_view text,
                 bool rightToLeft) const;

  const BandDesign& design_;
  BandSurroundings around_;
  std::vector<Place> places_;
};

}  // namespace varnlog::report
