#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "intake/CPAXTOTokens.h"
#include "intake/IntakeCopy.h"
#include "intake/RunStep.h"
#include "intake/TakenFiles.h"

namespace varnlog::intake {

/// Everything a run reads, in the order in which it was written: what an interrupted run had removed, what
/// came late into files that were moved aside, the exchange file. To be used while the log's write lock is
/// held, so that only one workstation does.
class IntakeSources {
 public:
  /// `language` decides on the code page of the texts.
  IntakeSources(const std::filesystem::path& exchange, const std::filesystem::path& logFile,
                std::string_view language, RunOptions options);

  /// True when there is a file that a run has to look at.
  [[nodiscard]] bool AnythingThere() const;
  /// Deletes what earlier runs moved aside and nobody needs any more. Needs no lock.
  void Sweep() const;
  /// True when there is data to take, or a copy of a run other than `committed`.
  [[nodiscard]] bool IsPending(const std::function<RunId()>& committed) const;

  enum class Opened {
    kReady,
    kCannotOpen,  // the exchange file, perhaps only for the moment
    kCannotRead,  // something is damaged or the disk fails; nothing is to be taken
  };
  /// Finds, opens and checks all records. `committed` is the last run that the log knows.
  [[nodiscard]] Opened Open(const RunId& committed);
  /// True when Open() came upon a left-over that nobody can read any more, and put it out of the way.
  [[nodiscard]] bool FoundDamage() const { return foundDamage_; }

  /// True when there was nothing to open.
  [[nodiscard]] bool IsEmpty() const { return sources_.empty(); }
  [[nodiscard]] std::int64_t TokenCount() const;
  /// Hands every record on; `take` returns false to stop. False when one can no longer be read.
  [[nodiscard]] bool ForEachToken(const std::function<bool(CToken&)>& take);

  /// True when records, or bytes that are none, were read.
  [[nodiscard]] bool HasRead() const;
  /// Ends reading and makes the safe copy of what was read. False leaves everything as it was.
  [[nodiscard]] bool Secure(const RunId& id);
  /// The run whose copy still holds what an interruption had removed: the one to be noted as committed when
  /// Secure() has failed. "" when there is none.
  [[nodiscard]] RunId CopiedRun() const;
  /// Removes what was read, stopping at the first failure.
  [[nodiscard]] bool RemoveRead();

 private:
  struct Source {
    Source(CopySection::Source from, std::filesystem::path file, std::string_view language);
    CopySection::Source kind;
    std::filesystem::path path;
    TakenFile taken;
    std::uint64_t begin = 0;
    std::uint64_t reached = 0;
    FilePiece carried;
    CPAXTOTokens tokens;
  };
  [[nodiscard]] Opened OpenCopy(const RunId& committed);
  [[nodiscard]] bool IsStillThere(const CopySection& section) const;
  [[nodiscard]] bool Carry(const CopySection& section);
  [[nodiscard]] bool OpenTaken(const TakenFile& taken);
  [[nodiscard]] Opened OpenExchange();
  [[nodiscard]] bool RemoveFrom(const Source& source);
  void PutAway(const std::filesystem::path& path);

  std::filesystem::path exchange_;
  RunOptions options_;
  std::string language_;
  IntakeCopy copy_;
  std::vector<TakenFile> takenFiles_;
  std::vector<Source> sources_;
  bool foundDamage_ = false;
};

}  // namespace varnlog::intake
