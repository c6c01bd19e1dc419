#include "intake/RecordNotices.h"

#include <utility>

namespace varnlog::intake {

using core::operator""_key;

void RecordNotices::Restart() {
  stillSaid_ = said_;
  unsaid_.clear();
}

void RecordNotices::AddDefault(const CToken& token, const DefaultTaken& taken) {
  std::string text = TextOf(texts_, token, taken);
  const auto said = stillSaid_.find(text);
  if (said == stillSaid_.end()) {
    unsaid_.push_back(std::move(text));
  } else if (--said->second == 0) {
    stillSaid_.erase(said);
  }
}

void RecordNotices::AddCut(const CToken& token, core::TextKey field) {
  unsaid_.push_back(core::FilledText(texts_, "RU_ERR_FIELDLEN"_key,
                                     {{"strLastName", token.LastName()},
                                      {"str1stName", token.FirstName()},
                                      {"strField", texts_.GetText(field)}}));
}

void RecordNotices::AddSkipped(const CToken& token) {
  unsaid_.push_back(core::FilledText(texts_, "RU_ERR_SKIPPED"_key,
                                     {{"strLastName", token.LastName()},
                                      {"str1stName", token.FirstName()},
                                      {"dTaken", token.TakeDate() + ' ' + token.TakeTime()}}));
}

}  // namespace varnlog::intake
