#include "intake/IntakeCopy.h"

#include <random>
#include <string_view>
#include <utility>

namespace varnlog::intake {
namespace {

constexpr std::string_view kMagic = "VLINTAK1";
constexpr std::size_t kIdLength = 32;
constexpr std::size_t kHeadLength = kMagic.size() + kIdLength + 8;
constexpr std::size_t kSectionLength = 32;
/// A run reads the exchange file, what was moved aside and what an earlier run left: a handful.
constexpr std::uint64_t kMostSections = 100'000;

std::filesystem::path CopyPath(std::filesystem::path logFile) {
  logFile += ".intake";
  return logFile;
}

/// Nothing when the system does not give them out; fewer bytes only at the end of the file.
std::optional<std::string> ReadBytes(const platform::File& file, std::uint64_t offset, std::size_t length) {
  std::string bytes(length, '\0');
  std::error_code error;
  bytes.resize(file.ReadAt(offset, bytes, error));
  if (error) return std::nullopt;
  return bytes;
}

CopySection ParseSection(std::string_view bytes) {
  CopySection section;
  section.source = static_cast<CopySection::Source>(NumberAt(bytes, 0));
  section.stamp = NumberAt(bytes, 8);
  section.offset = NumberAt(bytes, 16);
  section.bytes.length = NumberAt(bytes, 24);
  return section;
}

}  // namespace

RunId NewRunId() {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::random_device random;
  RunId id(kIdLength, '0');
  for (char& digit : id) digit = kDigits[random() % kDigits.size()];
  return id;
}

IntakeCopy::IntakeCopy(const std::filesystem::path& logFile) : logFile_(logFile), path_(CopyPath(logFile)) {}

bool IntakeCopy::Exists() const {
  return platform::MayExist(path_);
}

RunId IntakeCopy::PeekId() const {
  std::error_code error;
  const platform::File file = platform::File::Open(path_, platform::File::Mode::kRead, error);
  if (error) return {};
  const auto head = ReadBytes(file, 0, kMagic.size() + kIdLength);
  if (!head || head->size() != kMagic.size() + kIdLength || !head->starts_with(kMagic)) return {};
  return head->substr(kMagic.size());
}

void IntakeCopy::Load() {
  id_.clear();
  sections_.clear();
  stored_ = OpenChecked(path_);
  switch (stored_.state) {
    case CheckedFile::State::kNone:
      state_ = State::kNone;
      break;
    case CheckedFile::State::kUnreadable:
      state_ = State::kUnreadable;
      break;
    case CheckedFile::State::kDamaged:
      state_ = State::kDamaged;
      break;
    case CheckedFile::State::kSound:
      state_ = Parse();
      break;
  }
}

IntakeCopy::State IntakeCopy::Parse() {
  const auto head = ReadBytes(stored_.file, 0, kHeadLength);
  if (!head) return State::kUnreadable;
  if (head->size() != kHeadLength || !head->starts_with(kMagic)) return State::kDamaged;
  id_ = head->substr(kMagic.size(), kIdLength);
  const std::uint64_t count = NumberAt(*head, kMagic.size() + kIdLength);
  if (count > kMostSections) return State::kDamaged;
  const auto tableLength = static_cast<std::size_t>(count) * kSectionLength;
  const auto table = ReadBytes(stored_.file, kHeadLength, tableLength);
  if (!table) return State::kUnreadable;
  return table->size() == tableLength && ParseSections(*table) ? State::kSound : State::kDamaged;
}

bool IntakeCopy::ParseSections(std::string_view table) {
  std::uint64_t place = kHeadLength + table.size();
  for (std::size_t at = 0; at < table.size(); at += kSectionLength) {
    CopySection section = ParseSection(table.substr(at, kSectionLength));
    if (section.source > CopySection::Source::kTaken) return false;
    if (place > stored_.length || section.bytes.length > stored_.length - place) return false;
    section.bytes.file = &stored_.file;
    section.bytes.offset = place;
    place += section.bytes.length;
    sections_.push_back(section);
  }
  return place == stored_.length;
}

std::error_code IntakeCopy::Replace(const RunId& id, std::span<const CopySection> sections,
                                    const RunOptions& options, const std::function<void()>& letGo) const {
  std::string head(kMagic);
  head += id;
  AppendNumber(head, sections.size());
  std::vector<FilePiece> pieces;
  for (const CopySection& section : sections) {
    AppendNumber(head, static_cast<std::uint64_t>(section.source));
    AppendNumber(head, section.stamp);
    AppendNumber(head, section.offset);
    AppendNumber(head, section.bytes.length);
    pieces.push_back(section.bytes);
  }
  CheckedFileWriter writer(path_, logFile_);
  std::error_code error = writer.Write(head, pieces);
  if (error) return error;
  options.Reached(RunStep::kCopyWritten);
  letGo();
  error = writer.Publish();
  if (!error) options.Reached(RunStep::kCopySafe);
  return error;
}

bool IntakeCopy::Delete() {
  LetGo();
  return !platform::RemoveFile(path_);
}

}  // namespace varnlog::intake
