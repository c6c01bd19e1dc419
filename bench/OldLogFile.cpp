#include "bench/OldLogFile.h"

#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <vector>

#include "core/LogLayout.h"
#include "legacy/JetPages.h"
#include "legacy/JetTable.h"
#include "legacy/OldFile.h"
#include "legacy/OldLog.h"

namespace varnlog::bench {
namespace {

namespace fs = std::filesystem;
using legacy::AsBytes;

constexpr std::size_t kRowCountAt = 12;  // in a data page of version 4; the row offsets follow
constexpr std::size_t kDeclaredRowsAt = 16;
constexpr std::size_t kLastIdAt = 20;
constexpr std::size_t kIdAt = 2;  // in a row: behind the column count
constexpr std::uint32_t kDeleted = 0x8000;

void Put(std::string& bytes, std::size_t at, std::uint32_t number, std::size_t width) {
  for (std::size_t i = 0; i < width; ++i) bytes[at + i] = static_cast<char>(number >> (8 * i));
}

class Grower {
 public:
  explicit Grower(std::string log) : small_(std::move(log)), grown_(small_) {
    const auto header = legacy::ReadHeader(AsBytes(small_));
    pageSize_ = header->pageSize;
    const legacy::JetPages pages(AsBytes(small_), *header);
    const auto table = legacy::JetDatabase::Open(AsBytes(small_))->Table(core::kExposureTable);
    definitionAt_ = std::size_t{table->definitionPage} * pageSize_;
    rows_ = table->declaredRows;
    lastId_ = table->lastId;
    for (const std::uint32_t number : pages.DataPagesOf(table->definitionPage))
      ListRows(pages, number, *table);
  }

  [[nodiscard]] const std::string& GrowTo(std::uint32_t rows) {
    while (rows_ < rows) {
      for (const auto& [page, offsets] : rowsOfPage_) {
        if (rows_ < rows) AppendPage(page, offsets, rows);
      }
    }
    Put(grown_, definitionAt_ + kDeclaredRowsAt, rows_, 4);
    Put(grown_, definitionAt_ + kLastIdAt, lastId_, 4);
    return grown_;
  }

 private:
  struct Row {
    int index;
    std::size_t bodyAt;  // in its page
  };

  void ListRows(const legacy::JetPages& pages, std::uint32_t number, const legacy::JetTable& table) {
    legacy::PageBuffer buffer;
    const auto page = legacy::DataPage::Open(pages, number, table.definitionPage, buffer);
    const auto* const start = AsBytes(small_).data() + std::size_t{number} * pageSize_;
    for (int i = 0; i < page->RowCount(); ++i) {
      const auto slot = page->Slot(i);
      if (slot->isSkipped || slot->isPointer) continue;
      rowsOfPage_[number].push_back({i, static_cast<std::size_t>(slot->bytes.data() - start)});
    }
  }

  // Moved rows and deleted ones do not come along.
  void AppendPage(std::uint32_t number, const std::vector<Row>& live, std::uint32_t rows) {
    std::string page = small_.substr(std::size_t{number} * pageSize_, pageSize_);
    const auto count = static_cast<unsigned char>(page[kRowCountAt]);
    std::vector<std::uint32_t> offsets;
    for (std::size_t i = 0; i < count; ++i) {
      const std::size_t at = kRowCountAt + 2 + 2 * i;
      offsets.push_back(static_cast<unsigned char>(page[at]) | static_cast<unsigned char>(page[at + 1])
                                                                   << 8U);
      Put(page, at, offsets.back() | kDeleted, 2);
    }
    for (const Row& row : live) {
      if (rows_ == rows) break;
      const auto index = static_cast<std::size_t>(row.index);
      Put(page, kRowCountAt + 2 + 2 * index, offsets[index], 2);
      Put(page, row.bodyAt + kIdAt, ++lastId_, 4);
      ++rows_;
    }
    grown_ += page;
  }

  std::string small_;
  std::string grown_;
  std::size_t pageSize_ = 0;
  std::size_t definitionAt_ = 0;
  std::uint32_t rows_ = 0;
  std::uint32_t lastId_ = 0;
  std::map<std::uint32_t, std::vector<Row>> rowsOfPage_;
};

/// Removed when the benchmarks end.
struct MadeFile {
  explicit MadeFile(std::uint32_t rows)
      : path(fs::temp_directory_path() /
             ("varnlog-bench-old-" + std::to_string(getpid()) + "-" + std::to_string(rows))) {
    std::error_code error;
    auto small =
        legacy::ReadOldFile(fs::path(VARNLOG_SOURCE_DIR) / "tests/data/jet/log-1.1-jet4-scratch.mdb", error);
    if (!small) throw std::runtime_error("no old log to begin with: " + error.message());
    std::ofstream(path, std::ios::binary) << Grower(std::move(*small)).GrowTo(rows);
  }
  ~MadeFile() {
    std::error_code ignored;
    fs::remove(path, ignored);
  }
  MadeFile(const MadeFile&) = delete;
  MadeFile& operator=(const MadeFile&) = delete;

  fs::path path;
};

}  // namespace

const fs::path& OldLogFile(std::int64_t rows) {
  static std::map<std::int64_t, MadeFile> made;
  return made.try_emplace(rows, static_cast<std::uint32_t>(rows)).first->second.path;
}

}  // namespace varnlog::bench
