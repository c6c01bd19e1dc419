#pragma once

#include <cstdint>
#include <filesystem>
#include <limits>
#include <string_view>
#include <vector>

#include "intake/ByteWindow.h"
#include "intake/CToken.h"
#include "intake/RecordFormat.h"
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
  kBadRecordLength = 59,
  kPermissionDenied = 70,
  kPathAccess = 75,
};

/// Reads the exchange file, which the imaging suite calls a mailslot and whose records it calls mails, and
/// afterwards removes exactly the bytes that were read, while the suite may go on appending. The format of a
/// record is drawn in docs/intake.md.
///
/// Only the places of the records are kept in memory (8 bytes each); a token's texts are read when it is
/// asked for, through a buffer of fixed size, so that a file of any length costs no more than its count of
/// records.
class CPAXTOTokens {
 public:
  explicit CPAXTOTokens(platform::CodePage oem);

  [[nodiscard]] std::int64_t Count() const { return static_cast<std::int64_t>(places_.size()); }
  /// Reads the token at `index` (0-based, in file order), or its beginning, into `token`, reusing its memory.
  /// Reading in order is one pass over the file. False when the file is closed or can no longer be read
  /// there.
  [[nodiscard]] bool Item(std::int64_t index, CToken& token, Extent extent = Extent::kAll);
  /// Where the token stands in the file.
  [[nodiscard]] std::uint64_t Place(std::int64_t index) const {
    return places_[static_cast<std::size_t>(index)];
  }
  void Remove(std::int64_t index);
  void Clear();

  /// False with LastErr 53 when there is no such file, -1 when the system has no more file numbers, otherwise
  /// 75. The file may grow, shrink, be renamed and be deleted while it is open.
  [[nodiscard]] bool OpenMailslot(std::string_view path);
  /// The same for the bytes from `begin` up to, not including, `end` of any file of records; positions stay
  /// those of the whole file. Here a length beyond the end is no damage but a record that is not finished.
  [[nodiscard]] bool OpenPiece(const std::filesystem::path& path, std::uint64_t begin,
                               std::uint64_t end = std::numeric_limits<std::uint64_t>::max());
  /// The records of the open file, unknown kinds included, counted without keeping them.
  [[nodiscard]] std::int64_t GetTokenCount();
  /// Checks and notes up to `maximum` records. The position behind the last one read, or 0 with LastErr 59
  /// for a damaged file (a length below 4 or beyond the file's, too few strings), of which nothing is taken,
  /// and with LastErr 57 for one that cannot be read. A record whose end is not in the file yet is left for
  /// the next run. 0 with LastErr 0 means that there is nothing to take.
  [[nodiscard]] std::int64_t ReadMailslot(std::int64_t maximum);
  /// True when the damage that ReadMailslot() found may be none: a record that claims to be longer than the
  /// file, as the first one does while it is being written.
  [[nodiscard]] bool EndsInsideRecord() const { return endsInsideRecord_; }
  void CloseMailslot();
  /// The file that is being read; closed when none is.
  [[nodiscard]] const platform::File& OpenFile() const { return file_; }

  /// Removes the first `count` bytes of the exchange file: see ExchangeRemoval.
  [[nodiscard]] bool DeleteReadMails(std::string_view path, std::int64_t count);

  [[nodiscard]] std::int32_t LastErr() const { return lastErr_; }

 private:
  /// What stands at one position.
  struct Record {
    enum class Kind { kComplete, kNotYet, kEndOfData, kLongerThanFile, kDamaged, kUnreadable };
    Kind kind = Kind::kUnreadable;
    std::string_view bytes;  // the whole record, for kComplete
  };
  struct Bounds {
    std::uint64_t end = 0;      // where reading ends
    std::uint64_t longest = 0;  // a record that claims to be longer is damaged
  };
  [[nodiscard]] bool FindBounds(Bounds& bounds);
  [[nodiscard]] Record RecordAt(std::uint64_t position, const Bounds& bounds);
  [[nodiscard]] std::int64_t Fail(std::int32_t error, std::size_t keep);

  platform::CodePage oem_;
  platform::File file_;
  ByteWindow window_;
  std::uint64_t begin_ = 0;
  std::uint64_t end_ = 0;
  bool isPiece_ = false;
  bool endsInsideRecord_ = false;
  std::vector<std::uint64_t> places_;
  std::int32_t lastErr_ = kNoError;
};

}  // namespace varnlog::intake
