#pragma once

#include <cstdint>
#include <future>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "db/dao/CellView.h"
#include "platform/Sha256.h"

namespace varnlog::seals {

/// Three letters that tell, where a digest over many lines does not fit, which of the lines it is. No
/// protection: that is the digest's.
inline constexpr std::size_t kMarkLength = 3;
void AppendMark(std::string& marks, std::string_view line);

/// What a seal says about the exposures that were added, or about the rows of the history, told line by line
/// in the order of their numbers. Of many lines the digest and the marks are made on a second thread, while
/// the next ones are written or read.
class LineSeal {
 public:
  /// The number comes first.
  void Add(std::span<const dao::CellView> values);

  [[nodiscard]] std::int64_t First() const { return first_; }  // number; 0 without any
  [[nodiscard]] std::int64_t Last() const { return last_; }
  [[nodiscard]] std::int64_t Count() const { return count_; }
  [[nodiscard]] const std::string& Marks();
  /// "" without any line. To be asked for once.
  [[nodiscard]] std::string Digest();

 private:
  struct Lines {
    std::string bytes;
    std::vector<std::size_t> ends;
  };
  /// Shared with the second thread, which may outlive the seal for a moment.
  struct Sums {
    platform::Sha256 digest;
    std::string marks;
    Lines lines;  // that are summed up now
    void Add(const Lines& more);
  };

  void HandOver();
  void Finish();

  Lines lines_;
  std::shared_ptr<Sums> sums_ = std::make_shared<Sums>();
  std::future<void> atWork_;
  std::int64_t first_ = 0;
  std::int64_t last_ = 0;
  std::int64_t count_ = 0;
};

}  // namespace varnlog::seals
