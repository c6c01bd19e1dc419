#include "db/dao/storage/Storage.h"

#include "db/dao/ChangeJournal.h"

namespace varnlog::dao {

void Storage::RequireWritable() const {
  if (mode_.readOnly)
    throw EngineError(ErrorNumber::kReadOnlyDatabase,
                      "The database '" + path_ + "' is open for reading only.");
}

void Storage::TellCommitting() {
  if (journal_ == nullptr) return;
  Database self(shared_from_this());
  journal_->Committing(self);
}

void Storage::TellEnded() noexcept {
  if (journal_ != nullptr) journal_->Ended();
}

ChangeGroup::ChangeGroup(std::shared_ptr<Storage> storage)
    : storage_(std::move(storage)), scope_(std::make_unique<WriteScope>(*storage_)) {}
ChangeGroup::ChangeGroup(ChangeGroup&&) noexcept = default;
ChangeGroup::~ChangeGroup() = default;

void ChangeGroup::Commit() {
  scope_->Commit();
}

RulesSuspension::RulesSuspension(std::shared_ptr<Storage> storage)
    : storage_(std::move(storage)), wereObeyed_(storage_->AreRulesObeyed()) {
  if (wereObeyed_) storage_->SetRulesObeyed(false);
  storage_->LetRowsWait(true);
}

void RulesSuspension::End() {
  if (hasEnded_ || !storage_->IsOpen()) return;
  hasEnded_ = true;
  try {
    storage_->LetRowsWait(false);
  } catch (const std::exception&) {
    if (wereObeyed_) storage_->SetRulesObeyed(true);
    throw;
  }
  if (wereObeyed_) storage_->SetRulesObeyed(true);
}

RulesSuspension::~RulesSuspension() {
  try {
    End();
  } catch (const std::exception&) {
    // The transaction cannot be committed any more, and says so when that is tried.
    return;
  }
}

}  // namespace varnlog::dao
