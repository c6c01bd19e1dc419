#pragma once

#include <span>

#include "charts/Chart.h"
#include "core/TextLookup.h"
#include "exports/RowWriter.h"

namespace varnlog::statistics {

/// The tables one after the other, a value a row: table, row, column, value; for programs that read them.
/// Numbers have a point. Nothing is written for a value that is not there.
void WriteValues(std::span<const charts::Page> pages, const core::TextLookup& texts,
                 exports::RowWriter& writer);

/// One table as it stands.
void WriteTable(const charts::Table& table, exports::RowWriter& writer);

}  // namespace varnlog::statistics
