#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "intake/CPAXTOTokens.h"
#include "intake/ExchangeRemoval.h"
#include "intake/IntakeCopy.h"
#include "intake/RunMark.h"
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
  /// Tells what the log has of the records that could not be removed: they are passed over.
  void SetApplied(std::vector<AppliedBytes> applied) { applied_ = std::move(applied); }
  /// Waits as long as the exchange file holds nothing new but what the suite is still writing, for as long as
  /// the run's patience goes.
  void AwaitWhatIsBeingWritten() const;
  /// True when there is data to take, or a copy of a run other than `committed`.
  [[nodiscard]] bool IsPending(const std::function<RunId()>& committed) const;
  /// Where in the exchange file the records begin that the log does not have.
  [[nodiscard]] std::uint64_t ExchangeBegin() const;

  enum class Opened {
    kReady,
    kCannotOpen,  // the exchange file, perhaps only for the moment
    kCannotRead,  // something is damaged or the disk fails; nothing is to be taken, and nothing was changed
    kIsLink,      // the exchange file is a link: whoever put it there decides what is read and removed
  };
  /// Finds, opens and checks all records. `committed` is the last run that the log knows.
  [[nodiscard]] Opened Open(const RunId& committed);
  /// Opens what can be read without a lock and without changing anything: other runs may be at work.
  void OpenToLook();
  /// A left-over that is damaged, and where Open() has put it out of the way.
  struct Damaged {
    std::filesystem::path path;
    std::filesystem::path keptAs;
  };
  [[nodiscard]] const std::vector<Damaged>& FoundDamaged() const { return damaged_; }

  /// True when there was nothing to open.
  [[nodiscard]] bool IsEmpty() const { return sources_.empty(); }
  [[nodiscard]] std::int64_t TokenCount() const;
  /// Hands every record on; `take` returns false to stop. False when one can no longer be read. `expect` is
  /// given many of them before the first is handed on.
  [[nodiscard]] bool ForEachToken(const std::function<bool(CToken& token)>& take,
                                  Extent extent = Extent::kAll,
                                  const std::function<void(std::span<const CToken>)>& expect = {});

  /// True when records, or bytes that are none, were read.
  [[nodiscard]] bool HasRead() const;
  /// Ends reading and, when the run has a name, makes the safe copy of what was read. False leaves everything
  /// as it was.
  [[nodiscard]] bool Secure(const RunId& id);
  /// SHA-256 of everything that was read, in its order; "" unless Secure() made a copy.
  [[nodiscard]] const std::string& Digest() const { return digest_; }
  /// The run whose copy Open() found to hold what an interruption had removed; "" when there is none.
  [[nodiscard]] RunId CopiedRun() const;
  /// The run whose copy stands there now, after Secure() has failed: the one to be noted as committed.
  [[nodiscard]] RunId StandingCopy() const { return copy_.PeekId(); }
  /// Removes what was read, stopping at the first failure. That somebody keeps the exchange file open and
  /// forbids it is none: what was read is noted then.
  [[nodiscard]] bool RemoveRead();
  /// What the log is to note now: what was read but is still there, and what it was told to have of files
  /// that are none of these: another site's, whose records are in the same log.
  [[nodiscard]] std::vector<AppliedBytes> StillApplied() const;

 private:
  struct Source {
    Source(CopySection::Source from, std::filesystem::path file, std::string_view language);
    CopySection::Source kind;
    std::filesystem::path path;
    TakenFile taken;
    std::uint64_t origin = 0;           // what lies before is accounted for
    std::uint64_t begin = 0;            // what lies before is in the log, ...
    std::vector<AppliedBytes> applied;  // ... as these notes say
    std::uint64_t reached = 0;
    std::string digest;  // from the origin on, where the safe copy does not tell it
    bool isRemoved = false;
    FilePiece carried;
    std::optional<ExchangeRemoval::ReadBytes> read;  // of the exchange file, once it is secured
    CPAXTOTokens tokens;
  };
  [[nodiscard]] bool SettleDamagedJournal(const std::filesystem::path& journal);
  [[nodiscard]] Opened OpenCopy(const RunId& committed);
  [[nodiscard]] Opened SetDamagedCopyAside(const RunId& committed);
  [[nodiscard]] bool ListTaken();
  /// Nothing when it cannot be read whether it is.
  [[nodiscard]] std::optional<bool> IsStillThere(const CopySection& section) const;
  [[nodiscard]] std::optional<bool> Holds(const std::filesystem::path& path,
                                          const CopySection& section) const;
  [[nodiscard]] bool Carry(const CopySection& section);
  [[nodiscard]] bool OpenTaken(const TakenFile& taken, bool mayPutAway);
  [[nodiscard]] Opened OpenExchange();
  [[nodiscard]] std::vector<AppliedBytes> AppliedAt(const platform::File& file, std::uint64_t origin) const;
  void FindApplied(Source& source) const;
  [[nodiscard]] bool IsBeingWritten() const;
  [[nodiscard]] bool HasChangedJustNow() const;
  [[nodiscard]] bool MakeCopy(const RunId& id);
  [[nodiscard]] bool NoteWhatWasRead(Source& source, std::size_t section) const;
  [[nodiscard]] RunTimeError RemoveFrom(const Source& source);
  [[nodiscard]] bool PutAway(const std::filesystem::path& path);

  std::filesystem::path exchange_;
  std::filesystem::path logFile_;
  RunOptions options_;
  std::string language_;
  std::vector<AppliedBytes> applied_;
  IntakeCopy copy_;
  std::optional<IntakeCopy> made_;  // this run's, as it stands on the disk
  std::vector<TakenFile> takenFiles_;
  std::vector<Source> sources_;
  std::vector<Damaged> damaged_;
  std::string digest_;
};

}  // namespace varnlog::intake
