#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "legacy/ChangePlaces.h"
#include "legacy/Conversion.h"
#include "legacy/LogCopy.h"

namespace varnlog::legacy {

/// One conversion from the old file to a complete and compared new one. Whoever runs it decides which file it
/// becomes. Each step returns true to go on; otherwise Result() says how it ended and the user has been told.
class ConversionRun {
 public:
  ConversionRun(const ConversionContext& context, std::filesystem::path oldLog, ConversionView& view);
  ~ConversionRun();
  ConversionRun(const ConversionRun&) = delete;
  ConversionRun& operator=(const ConversionRun&) = delete;

  /// Waits until the old program has closed the log, as long as the user wants to retry.
  [[nodiscard]] bool WaitForOthers();
  /// Reads and examines the old file; ends with a message for what is no log.
  [[nodiscard]] bool Examine();
  /// Sees whether a damaged log is to be taken over.
  [[nodiscard]] bool AgreeToLoss(DamagedLog damaged);
  /// Builds the new log as `growing` and compares it; on the disk when this returns true.
  [[nodiscard]] bool Build(const std::filesystem::path& growing);
  /// False when the old file has changed since it was read.
  [[nodiscard]] bool IsUnchanged() const;

  [[nodiscard]] bool Ask(const std::string& text);
  void Tell(const std::string& text);
  [[nodiscard]] bool Fail(const std::string& text);
  [[nodiscard]] bool FailToWrite(const dao::EngineError& failure);
  [[nodiscard]] bool End(ConversionResult::Outcome outcome);
  /// The text of a key with the places for files and numbers filled in.
  [[nodiscard]] std::string Text(core::TextKey key, const std::string& error = {}) const;

  /// The text of a key about another file than the old log.
  [[nodiscard]] std::string TextNaming(const std::filesystem::path& file, core::TextKey key) const;

  [[nodiscard]] ConversionResult& Result() { return result_; }

 private:
  struct Stamp {
    std::uintmax_t size = 0;
    std::filesystem::file_time_type time;
    friend bool operator==(const Stamp&, const Stamp&) = default;
  };
  [[nodiscard]] std::optional<Stamp> CurrentStamp() const;
  [[nodiscard]] bool IsConvertible();
  [[nodiscard]] bool ReadAgain();
  [[nodiscard]] bool Fill(const std::filesystem::path& growing, LogCopy& copy);
  [[nodiscard]] bool Compare(const std::filesystem::path& growing, LogCopy& copy);
  void NoteUnusedIds(const std::filesystem::path& growing);
  [[nodiscard]] bool Finish(const std::filesystem::path& growing);
  [[nodiscard]] std::shared_ptr<dao::Workspace> OpenWorkspace();
  [[nodiscard]] bool Cancel();

  const ConversionContext& context_;
  std::filesystem::path oldLog_;
  ConversionView& view_;
  std::string content_;
  std::optional<Stamp> stamp_;
  ConversionResult result_;
};

}  // namespace varnlog::legacy
