#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "legacy/Fault.h"
#include "legacy/JetBytes.h"
#include "legacy/JetHeader.h"

namespace varnlog::legacy {

enum class PageType : std::uint8_t { kData = 1, kDefinition = 2 };

/// Where a row, or a piece of a long value, lies.
struct RowPlace {
  std::uint32_t page = 0;
  int row = 0;
};

/// Room for one page that has to be decoded; keeps the last one, because rows are asked for one by one.
struct PageBuffer {
  std::array<std::byte, 4096> bytes;
  std::uint32_t number = 0;
};

/// The pages of a file, decoded where the file is encoded. Looks at the file, which must outlive it, and
/// never copies it.
class JetPages {
 public:
  /// Looks once at the head of every page.
  JetPages(Bytes file, const JetHeader& header);

  [[nodiscard]] const JetHeader& Header() const { return header_; }
  /// Whole pages.
  [[nodiscard]] std::uint32_t Count() const { return count_; }
  [[nodiscard]] bool EndsWithinPage() const { return file_.size() % header_.pageSize != 0; }
  /// Bytes of the file; no walk can find more than these.
  [[nodiscard]] std::uint64_t Size() const { return file_.size(); }

  /// One page; it lives as long as the file and, in an encoded file, until `buffer` is used again.
  [[nodiscard]] Result<Bytes> Page(std::uint32_t number, PageBuffer& buffer) const;

  /// The data pages that name `owner` (a table's definition page), ascending.
  [[nodiscard]] std::vector<std::uint32_t> DataPagesOf(std::uint32_t owner) const;

 private:
  struct DataPage {
    std::uint32_t owner;
    std::uint32_t page;
  };
  [[nodiscard]] Bytes Stored(std::uint32_t number) const;
  void Decode(std::uint32_t number, std::span<std::byte> target) const;
  void ListDataPages();

  Bytes file_;
  JetHeader header_;
  std::uint32_t count_;
  std::vector<DataPage> dataPages_;  // by owner, then page
};

/// One entry of a data page's row table.
struct RowSlot {
  bool isSkipped = false;  // see DataPage::IsSkipped()
  bool isPointer = false;  // four bytes that name the place of the body
  Bytes bytes;
};

/// The row table of a data page. The page must outlive it.
class DataPage {
 public:
  /// Fails with kPageType, kPageOwner or kRowTable.
  [[nodiscard]] static Result<DataPage> Open(const JetPages& pages, std::uint32_t number, std::uint32_t owner,
                                             PageBuffer& buffer);

  [[nodiscard]] std::uint32_t Number() const { return number_; }
  [[nodiscard]] int RowCount() const { return rowCount_; }
  /// Deleted, or the body of a moved row, which is reached through its pointer.
  [[nodiscard]] bool IsSkipped(int row) const;
  /// Fails with kRowTable: a row that is not there or lies outside its page.
  [[nodiscard]] Result<RowSlot> Slot(int row) const;

 private:
  DataPage(Bytes page, std::uint32_t number, bool isJet3);
  [[nodiscard]] std::uint16_t Offset(int row) const;

  Bytes page_;
  std::uint32_t number_;
  std::size_t tableAt_;  // where the row offsets begin
  int rowCount_ = 0;
};

/// The place that the four bytes of a pointer name: row, then page in three bytes.
[[nodiscard]] RowPlace PlaceFrom(std::uint32_t pointer);

}  // namespace varnlog::legacy
