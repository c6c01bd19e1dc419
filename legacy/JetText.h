#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "legacy/JetBytes.h"
#include "legacy/JetHeader.h"
#include "platform/CodePage.h"

namespace varnlog::legacy {

/// Turns stored text into UTF-8. Version 3 stores bytes of a code page; version 4 stores UTF-16, plain or
/// compressed. Every sequence of bytes gives a text: half a surrogate pair becomes U+FFFD, a last odd byte is
/// dropped.
class JetText {
 public:
  explicit JetText(const JetHeader& header);

  /// Appends to `out`. `codePage` is the column's own; 0, or one that the system does not know, means the
  /// file's. Not for use by several threads at a time: converters are made when first needed.
  void Append(Bytes stored, int codePage, std::string& out) const;
  [[nodiscard]] std::string Decode(Bytes stored, int codePage = 0) const;

 private:
  [[nodiscard]] const platform::CodePage& Page(int codePage) const;

  bool isJet3_;
  int codePage_;
  mutable std::vector<std::pair<int, platform::CodePage>> pages_;
};

/// UTF-16LE, or compressed after the bytes FF FE: then one byte a character, until a zero byte switches to
/// two bytes a character, and the next one back.
void AppendJet4Text(Bytes stored, std::string& out);

}  // namespace varnlog::legacy
