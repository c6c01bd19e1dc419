#include "logview/FindRows.h"

#include <array>

#include "db/dao/SearchForm.h"

namespace varnlog::logview {

namespace {

enum FoundColumn : std::size_t { kName, kFirstName, kBirthday, kRegion, kPerson, kComment, kFoundColumns };

const std::array<dao::IndexedColumn, kFoundColumns>& IndexedColumns() {
  static const std::array<dao::IndexedColumn, kFoundColumns> kColumns = {{{{"tXraySName"}},
                                                                          {{"tXraySFirstname"}},
                                                                          {{"tXrayDBirthday"}},
                                                                          {{"tXraySRegio", "tXraySType"}},
                                                                          {{"tXraySDr"}},
                                                                          {{"tXraySComment"}}}};
  return kColumns;
}

constexpr std::size_t kMostWords = 31;

/// A patient may be given as he is shown: what stands between his names and before his birth date is no part
/// of them.
std::vector<std::string> Words(const FindQuery& query) {
  std::vector<std::string> words;
  const std::string form = dao::SearchForm(query.text, query.accentsMatter);
  for (std::size_t at = 0; at < form.size() && words.size() < kMostWords;) {
    const std::size_t end = std::min(form.find(' ', at), form.size());
    std::string_view word = std::string_view(form).substr(at, end - at);
    if (word.ends_with(',')) word.remove_suffix(1);
    if (word.starts_with('*')) word.remove_prefix(1);
    if (!word.empty()) words.emplace_back(word);
    at = end + 1;
  }
  return words;
}

}  // namespace

RowFinder::RowFinder(dao::Database& log, const intake::ToothScheme& scheme,
                     const platform::ShortDate& shortDate)
    : index_(log.IndexValues("TXray", IndexedColumns())),
      scheme_(scheme),
      shortDate_(shortDate),
      forms_(kFoundColumns) {}

std::string RowFinder::Shown(std::size_t column, std::string_view value) const {
  if (column == kBirthday) {
    return shortDate_.Format(platform::DateTime::FromIso(value).value_or(platform::DateTime()));
  }
  if (column == kRegion) {
    const std::size_t divider = value.find(dao::kValueDivider);
    return intake::ToothToDisplay(value.substr(0, divider), value.substr(divider + 1), scheme_);
  }
  return std::string(value);
}

void RowFinder::FormNewValues(bool accentsMatter) {
  if (accentsMatter != accentsMatter_) forms_.assign(kFoundColumns, {});
  accentsMatter_ = accentsMatter;
  for (std::size_t column = 0; column < kFoundColumns; ++column) {
    std::vector<std::string>& forms = forms_[column];
    while (forms.size() < index_->ValueCount(column)) {
      forms.push_back(dao::SearchForm(Shown(column, index_->Value(column, forms.size())), accentsMatter));
    }
  }
}

dao::IdSet RowFinder::Find(const FindQuery& query) {
  FormNewValues(query.accentsMatter);
  const std::vector<std::string> words = Words(query);
  dao::ValueIndex::Marks marks(kFoundColumns);
  for (std::size_t column = 0; column < kFoundColumns; ++column) {
    for (const std::string& form : forms_[column]) {
      std::uint32_t mark = 0;
      for (std::size_t i = 0; i < words.size(); ++i) {
        if (form.find(words[i]) != std::string::npos) mark |= 1U << i;
      }
      marks[column].push_back(mark);
    }
  }
  return index_->RowsWith(marks, (1U << words.size()) - 1);
}

}  // namespace varnlog::logview
