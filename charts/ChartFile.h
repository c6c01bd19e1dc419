#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>

#include <QByteArray>
#include <QPageLayout>

#include "charts/Chart.h"

namespace varnlog::charts {

enum class ChartFormat { kPdf, kPng, kSvg, kCsv };

/// By the file's ending, letter case ignored.
[[nodiscard]] std::optional<ChartFormat> ChartFormatOf(std::string_view file);

/// All pages, as a PDF file; nothing when it could not be drawn.
[[nodiscard]] QByteArray PdfOf(std::span<const Page> pages, const std::string& heading,
                               const QPageLayout& layout);
/// One page as a picture.
[[nodiscard]] QByteArray PngOf(const Page& page);
[[nodiscard]] QByteArray SvgOf(const Page& page);

}  // namespace varnlog::charts
