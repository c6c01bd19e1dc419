#pragma once

#include <cstdint>
#include <future>
#include <span>
#include <vector>

#include "intake/CPAXTOTokens.h"
#include "intake/CToken.h"

namespace varnlog::intake {

/// The tokens of an open file one after the other. Of many, the next ones are read and converted on a second
/// thread while the caller works on these; nobody else may use the file's reader meanwhile.
class ReadAhead {
 public:
  ReadAhead(CPAXTOTokens& tokens, Extent extent);
  ~ReadAhead();
  ReadAhead(const ReadAhead&) = delete;
  ReadAhead& operator=(const ReadAhead&) = delete;

  /// The caller may change its texts until it asks for the next. nullptr at the end, and where a token can
  /// no longer be read.
  [[nodiscard]] CToken* Next();
  /// All tokens that come from the one that Next() gave last on without waiting, where that is their first.
  [[nodiscard]] std::span<const CToken> NewBatch() const;
  /// Why the end was reached.
  [[nodiscard]] bool HasFailed() const { return now_.hasFailed; }

 private:
  struct Batch {
    std::vector<CToken> tokens;  // keep their memory
    std::size_t count = 0;
    bool hasFailed = false;
  };
  void Fill(Batch& batch, std::int64_t most);
  void StartFilling();

  CPAXTOTokens& tokens_;
  const Extent extent_;
  std::int64_t read_ = 0;  // from the file
  std::size_t given_ = 0;  // of the batch
  Batch now_;
  Batch next_;
  std::future<void> filling_;
};

}  // namespace varnlog::intake
