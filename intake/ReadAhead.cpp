#include "intake/ReadAhead.h"

#include <algorithm>
#include <utility>

namespace varnlog::intake {

namespace {

// Together they fit a processor's own cache; starting a thread for them costs a hundredth of reading them.
constexpr std::int64_t kBatch = 2048;
// Whoever takes the records begins with these; the others are read meanwhile.
constexpr std::int64_t kFirstBatch = 256;

}  // namespace

ReadAhead::ReadAhead(CPAXTOTokens& tokens, Extent extent) : tokens_(tokens), extent_(extent) {
  Fill(now_, kFirstBatch);
  StartFilling();
}

ReadAhead::~ReadAhead() {
  if (filling_.valid()) filling_.wait();
}

void ReadAhead::Fill(Batch& batch, std::int64_t most) {
  batch.count = 0;
  const std::int64_t end = std::min(tokens_.Count(), read_ + most);
  batch.tokens.resize(std::max(batch.tokens.size(), static_cast<std::size_t>(end - read_)));
  for (; read_ < end; ++read_) {
    batch.hasFailed = !tokens_.Item(read_, batch.tokens[batch.count], extent_);
    if (batch.hasFailed) return;
    ++batch.count;
  }
}

void ReadAhead::StartFilling() {
  if (now_.hasFailed || read_ == tokens_.Count()) return;
  // Where no thread can be had, get() does it.
  filling_ = std::async(std::launch::async | std::launch::deferred, [this] { Fill(next_, kBatch); });
}

std::span<const CToken> ReadAhead::NewBatch() const {
  if (given_ != 1) return {};
  return std::span<const CToken>(now_.tokens).first(now_.count);
}

CToken* ReadAhead::Next() {
  if (given_ == now_.count && filling_.valid()) {
    filling_.get();
    std::swap(now_, next_);
    given_ = 0;
    StartFilling();
  }
  return given_ < now_.count ? &now_.tokens[given_++] : nullptr;
}

}  // namespace varnlog::intake
