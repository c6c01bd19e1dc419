#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/CodePage.h"
#include "platform/Files.h"

namespace varnlog::intake {

/// Counts the complete records that wait in the exchange file, again and again: of a file that has only grown
/// since, only what is new is read.
class WaitingRecords {
 public:
  /// `language` chooses the code page of the file.
  explicit WaitingRecords(std::string_view language) : oem_(platform::CodePage::Oem(language)) {}

  /// Those from `begin` on. 0 as well for a file that is not there, cannot be read or is damaged: the next
  /// update says so.
  [[nodiscard]] std::int64_t Count(const std::string& exchangeFile, std::uint64_t begin = 0);

 private:
  platform::CodePage oem_;
  std::optional<platform::FileIdentity> file_;
  std::string beginning_;    // of the file; another one has others
  std::uint64_t begin_ = 0;  // of what was counted
  std::uint64_t end_ = 0;
  std::int64_t count_ = 0;
};

}  // namespace varnlog::intake
