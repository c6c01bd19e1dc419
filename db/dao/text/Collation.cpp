#include "db/dao/text/Collation.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <future>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include <unicode/bytestream.h>
#include <unicode/normalizer2.h>
#include <unicode/ucol.h>
#include <unicode/unistr.h>
#include <unicode/ustring.h>

#include "db/dao/EngineError.h"
#include "db/dao/WarmUp.h"
#include "platform/CodePage.h"

namespace varnlog::dao {
namespace {

void Check(UErrorCode status, const char* doing) {
  if (U_FAILURE(status)) {
    throw EngineError(ErrorNumber::kUnexpected, std::string(doing) + ": " + u_errorName(status));
  }
}

struct CloseCollator {
  void operator()(UCollator* collator) const { ucol_close(collator); }
};
using Collator = std::unique_ptr<UCollator, CloseCollator>;

Collator OpenCollator() {
  static constexpr std::u16string_view kRules = u"&ss<<<\u00DF<<<\u1E9E";
  UErrorCode status = U_ZERO_ERROR;
  // Normalising, so that accents in either order after their letter are the same letter.
  Collator collator(ucol_openRules(kRules.data(), static_cast<std::int32_t>(kRules.size()), UCOL_ON,
                                   UCOL_SECONDARY, nullptr, &status));
  Check(status, "Building the text order");
  return collator;
}

/// The ASCII characters that count, in the order's order; a letter stands for both its cases. The full rules
/// say the same, but making them takes longer than everything else that opening a small log takes.
constexpr std::string_view kAsciiOrder =
    "\t\n\v\f\r _-,;:!?.'\"()[]{}@*/\\&#%`^+<=>|~$0123456789abcdefghijklmnopqrstuvwxyz";

/// The place of each ASCII character in the order; 0 for those that do not count.
using AsciiRanks = std::array<std::uint8_t, 128>;

constexpr AsciiRanks MakeAsciiRanks() {
  AsciiRanks ranks{};
  std::uint8_t rank = 0;
  for (const char c : kAsciiOrder) {
    ranks[static_cast<unsigned char>(c)] = ++rank;
    if (c >= 'a' && c <= 'z') ranks[static_cast<unsigned char>(c - 'a' + 'A')] = rank;
  }
  return ranks;
}

constexpr AsciiRanks kAsciiRanks = MakeAsciiRanks();

}  // namespace

struct Collation::Impl {
  /// The full rules, made when a text is not plain ASCII for the first time. A process that cannot make them
  /// ends: taking two texts for equal instead could lose an exposure.
  [[nodiscard]] const UCollator* Full() noexcept {
    Make();
    return collator.get();
  }
  void Make() {
    std::call_once(made, [this] { collator = OpenCollator(); });
  }
  [[nodiscard]] int CompareFully(std::string_view a, std::string_view b);

  std::once_flag made;
  Collator collator;
  std::future<void> ahead;
};

int Collation::Impl::CompareFully(std::string_view a, std::string_view b) {
  UErrorCode status = U_ZERO_ERROR;
  const UCollationResult result = ucol_strcollUTF8(Full(), a.data(), static_cast<std::int32_t>(a.size()),
                                                   b.data(), static_cast<std::int32_t>(b.size()), &status);
  return U_FAILURE(status) ? 0 : static_cast<int>(result);
}

namespace {

/// Walks a text by the ranks of its ASCII characters.
class AsciiWalk {
 public:
  static constexpr int kEnd = 0;
  static constexpr int kBeyondAscii = -1;

  explicit AsciiWalk(std::string_view text) : text_(text) {}

  /// The next rank that counts, kEnd, or kBeyondAscii when the character is, or may combine with the next
  /// one which is.
  int Next() {
    while (position_ < text_.size()) {
      const auto byte = static_cast<unsigned char>(text_[position_++]);
      const bool plainNext = position_ == text_.size() || static_cast<unsigned char>(text_[position_]) < 0x80;
      if (byte >= 0x80 || !plainNext) return kBeyondAscii;
      if (kAsciiRanks[byte] != 0) return kAsciiRanks[byte];
    }
    return kEnd;
  }

 private:
  std::string_view text_;
  std::size_t position_ = 0;
};

}  // namespace

Collation::Collation() : impl_(std::make_unique<Impl>()) {}
Collation::~Collation() = default;

const Collation& Collation::Instance() {
  static const Collation kInstance;
  return kInstance;
}

void Collation::MakeAhead() const {
  if (impl_->ahead.valid()) return;
  // Where no thread can be had, the first comparison makes them.
  impl_->ahead = std::async(std::launch::async | std::launch::deferred, [this] { impl_->Make(); });
}

void WarmUp() {
  Collation::Instance().MakeAhead();
}

int Collation::Compare(std::string_view a, std::string_view b) const {
  if (a == b) return 0;
  // ASCII characters have no accents and do not combine with each other, so the first two that differ decide.
  AsciiWalk left(a);
  AsciiWalk right(b);
  while (true) {
    const int x = left.Next();
    const int y = right.Next();
    if (x == AsciiWalk::kBeyondAscii || y == AsciiWalk::kBeyondAscii) return CompareFully(a, b);
    if (x != y) return x < y ? -1 : 1;
    if (x == AsciiWalk::kEnd) return 0;
  }
}

int Collation::CompareFully(std::string_view a, std::string_view b) const {
  return impl_->CompareFully(a, b);
}

std::string Collation::SortKey(std::string_view text) const {
  const auto wide =
      icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
  std::string key(text.size() * 2 + 16, '\0');
  for (int attempt = 0; attempt < 2; ++attempt) {
    const std::int32_t needed =
        ucol_getSortKey(impl_->Full(), wide.getBuffer(), wide.length(),
                        reinterpret_cast<std::uint8_t*>(key.data()), static_cast<std::int32_t>(key.size()));
    const bool fits = static_cast<std::size_t>(needed) <= key.size();
    key.resize(static_cast<std::size_t>(needed));
    if (fits) break;
  }
  if (!key.empty()) key.pop_back();  // the terminating zero
  return key;
}

namespace {

/// Whether a control character has no weight: all but the blank ones (tab to carriage return, next line).
bool IsIgnoredControl(unsigned char c) {
  return (c < 0x20 && (c < 0x09 || c > 0x0D)) || c == 0x7F;
}

/// The folded forms of the characters whose UTF-8 has two bytes, as far as they stand for themselves whatever
/// comes before them; the rest (combining accents above all) is left to the normaliser.
class TwoByteFolds {
 public:
  TwoByteFolds() {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* normalizer = icu::Normalizer2::getNFKCCasefoldInstance(status);
    Check(status, "Folding letter case");
    for (UChar32 c = 0xA0; c < kEnd; ++c) {
      if (!normalizer->hasBoundaryBefore(c)) continue;
      const icu::UnicodeString folded = normalizer->normalize(icu::UnicodeString(c), status);
      std::string& text = folds_[static_cast<std::size_t>(c)];
      folded.toUTF8String(text);
    }
    Check(status, "Folding letter case");
  }

  /// Empty when the character needs the normaliser.
  [[nodiscard]] const std::string& Of(unsigned char lead, unsigned char trail) const {
    return folds_[((lead & 0x1FU) << 6U) | (trail & 0x3FU)];
  }

 private:
  static constexpr UChar32 kEnd = 0x800;
  std::array<std::string, kEnd> folds_;
};

/// Folds what needs no normaliser; nothing when a character does.
std::optional<std::string> FoldSimply(std::string_view text) {
  static const TwoByteFolds kFolds;
  std::string folded;
  folded.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (byte < 0x80) {
      if (IsIgnoredControl(byte)) continue;
      folded += byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : text[i];
      continue;
    }
    const auto trail = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : std::uint8_t{0};
    if (byte < 0xC2 || byte >= 0xE0 || (trail & 0xC0U) != 0x80) return std::nullopt;
    const std::string& fold = kFolds.Of(byte, trail);
    if (fold.empty()) return std::nullopt;
    folded += fold;
    ++i;
  }
  return folded;
}

std::string WithoutControls(std::string_view text) {
  std::string kept;
  kept.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (IsIgnoredControl(byte)) continue;
    const auto next = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : 0U;
    if (byte == 0xC2 && next < 0xA0 && next != 0x85) {  // U+0080 to U+009F
      ++i;
      continue;
    }
    kept += text[i];
  }
  return kept;
}

}  // namespace

std::string FoldCase(std::string_view text) {
  if (auto folded = FoldSimply(text)) return *std::move(folded);
  std::string source;
  if (!platform::IsUtf8(text)) {
    icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())))
        .toUTF8String(source);
    text = source;
  }
  // Controls go first: an accent behind one still belongs to the letter before it.
  const std::string counted = WithoutControls(text);
  UErrorCode status = U_ZERO_ERROR;
  const icu::Normalizer2* normalizer = icu::Normalizer2::getNFKCCasefoldInstance(status);
  Check(status, "Folding letter case");
  std::string folded;
  icu::StringByteSink<std::string> sink(&folded);
  normalizer->normalizeUTF8(0, icu::StringPiece(counted.data(), static_cast<std::int32_t>(counted.size())),
                            sink, nullptr, status);
  Check(status, "Folding letter case");
  return folded;
}

}  // namespace varnlog::dao
