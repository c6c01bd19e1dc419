#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "intake/CToken.h"
#include "platform/CodePage.h"
#include "platform/Files.h"

namespace varnlog::intake {

/// Run-time error numbers kept in LastErr.
enum RunTimeError : std::int32_t {
  kNoFileNumber = -1,
  kNoError = 0,
  kInvalidCall = 5,
  kFileNotFound = 53,
  kDeviceError = 57,
  kPathAccess = 75,
};

/// Reads the exchange file, which the imaging suite calls a mailslot and whose records it calls mails, and
/// afterwards removes exactly the bytes that were read, while the suite may go on appending.
///
///   record:   | L: 2 bytes, signed, little-endian | kind: 1 | skipped: 1 | strings: L - 4, each ended by a
///   zero |
///             L counts its own two bytes; L = 0 ends the data.
///   kind "T": 20 strings (a new exposure);  kind "I": 10 strings (information on one already reported);
///             other kinds are skipped whole.
///
/// Strings are in the OEM code page and lose their trailing blanks. Only the places of the records are kept
/// in memory (8 bytes each); a token's texts are read when it is asked for, through a buffer of fixed size,
/// so that a file of any length costs no more than its count of records.
class CPAXTOTokens {
 public:
  explicit CPAXTOTokens(platform::CodePage oem);

  [[nodiscard]] std::int64_t Count() const;
  /// Reads the token at `index` (0-based, in file order) into `token`, reusing its memory. Reading in order
  /// is one pass over the file. False when the file can no longer be read there.
  [[nodiscard]] bool Item(std::int64_t index, CToken& token);
  void Remove(std::int64_t index);
  void Clear();

  [[nodiscard]] bool OpenMailslot(std::string_view path);
  /// The records of the open file, counted without keeping them.
  [[nodiscard]] std::int64_t GetTokenCount();
  /// Checks and notes up to `maximum` records. The position behind the last one read, or 0 for a damaged
  /// file (a length below 4 or beyond the file's, too few strings), of which nothing is taken. A record whose
  /// end is not in the file yet is left for the next run.
  [[nodiscard]] std::int64_t ReadMailslot(std::int64_t maximum);
  void CloseMailslot();

  /// Removes the first `count` bytes: see docs/intake.md.
  [[nodiscard]] bool DeleteReadMails(std::string_view path, std::int64_t count);

  [[nodiscard]] std::int32_t LastErr() const { return lastErr_; }

 private:
  platform::CodePage oem_;
  platform::File file_;
  std::vector<std::int64_t> places_;
  std::int32_t lastErr_ = kNoError;
};

}  // namespace varnlog::intake
