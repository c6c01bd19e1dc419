#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "db/dao/CellView.h"
#include "platform/Sha256.h"

namespace varnlog::seals {

/// The bytes over which digests are made: docs/seals.md. A value is its length in bytes in decimal, a colon,
/// its text and a comma; NULL is "-,". So no value can be taken for two, whatever it holds.
void AppendText(std::string& out, std::string_view text);
void AppendNumber(std::string& out, std::int64_t number);
/// Numbers and flags as their decimal text.
void AppendValue(std::string& out, const dao::CellView& value);
/// Appends to `waiting` what comes next in a digest; a long text, as the marks of a million exposures, is not
/// copied for it: `digest` takes it, and before it what was waiting.
void DigestValue(std::string& waiting, platform::Sha256& digest, const dao::CellView& value);
/// The line of an exposure, its values in the order of SealedFields(), or of a row of the history: values one
/// behind the other and a line feed.
void AppendLine(std::string& out, std::span<const dao::CellView> values);

/// Whether two values have the same bytes.
[[nodiscard]] bool SameValue(const dao::CellView& a, const dao::CellView& b);

/// A value's text, however it is stored; nothing is "".
[[nodiscard]] std::string TextOf(const dao::CellView& value);
/// 0 for what is no whole number.
[[nodiscard]] std::int64_t NumberOf(const dao::CellView& value);

}  // namespace varnlog::seals
