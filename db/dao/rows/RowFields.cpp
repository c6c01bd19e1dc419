#include "db/dao/rows/RowFields.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "db/dao/EngineError.h"
#include "platform/CodePage.h"

namespace varnlog::dao {

namespace {

constexpr std::size_t kIsoLength = 19;

std::int64_t NumberFromText(std::string_view text) {
  std::int64_t number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

std::int64_t NumberOf(const CellView& cell) {
  if (cell.kind == CellKind::kReal) {
    constexpr double kLimit = 9.2e18;
    return static_cast<std::int64_t>(std::clamp(cell.real, -kLimit, kLimit));
  }
  return cell.kind == CellKind::kText ? NumberFromText(cell.text) : cell.integer;
}

// A text in a number's field, which another program can leave there, is shown as it is.
dao::Value ValueOf(const CellView& cell, FieldType type) {
  if (cell.kind == CellKind::kNull) return {};
  if (cell.kind == CellKind::kReal) return cell.real;
  if (cell.kind == CellKind::kInteger) {
    if (type == FieldType::kBoolean) return cell.integer != 0;
    return cell.integer;
  }
  if (type == FieldType::kDate)
    if (const auto date = platform::DateTime::FromIso(cell.text)) return *date;
  return std::string(cell.text);
}

}  // namespace

void CopyBuffer::Cell::Set(const CellView& value) {
  kind = value.kind;
  integer = value.integer;
  real = value.real;
  text.assign(value.text);
}

void CopyBuffer::Open(State state, std::size_t fields) {
  state_ = state;
  cells_.resize(fields);
  for (Cell& cell : cells_) cell.isChanged = false;
}

bool CopyBuffer::IsChanged() const {
  return std::any_of(cells_.begin(), cells_.end(), [](const Cell& cell) { return cell.isChanged; });
}

RowFields::RowFields(std::shared_ptr<const std::vector<FieldDef>> defs, RowSource& source)
    : defs_(std::move(defs)), source_(source) {
  fields_.reserve(defs_->size());
  for (std::size_t i = 0; i < defs_->size(); ++i) fields_.emplace_back(*this, (*defs_)[i], i);
}

CellView RowFields::RowField::Read() const {
  if (owner_.buffer_.state() != CopyBuffer::State::kClosed)
    return std::as_const(owner_.buffer_)[ordinal_].View();
  return owner_.source_.CurrentCell(ordinal_);
}

CopyBuffer::Cell& RowFields::RowField::Write() {
  if (owner_.buffer_.state() == CopyBuffer::State::kClosed)
    throw EngineError(ErrorNumber::kNotSupported,
                      "The field '" + def_.name + "' can be written between AddNew or Edit and Update only.");
  if (def_.isCounter)
    throw EngineError(ErrorNumber::kNotSupported, "The field '" + def_.name + "' is numbered by the engine.");
  CopyBuffer::Cell& cell = owner_.buffer_[ordinal_];
  cell.isChanged = true;
  return cell;
}

void RowFields::RowField::RefuseType() const {
  throw EngineError(ErrorNumber::kNotSupported,
                    "The field '" + def_.name + "' does not take a value of that type.");
}

bool RowFields::RowField::IsNull() const {
  return Read().kind == CellKind::kNull;
}

std::string_view RowFields::RowField::Text() const {
  const CellView cell = Read();
  if (cell.kind == CellKind::kText || cell.kind == CellKind::kNull) return cell.text;
  char digits[32];
  const auto written = cell.kind == CellKind::kInteger
                           ? std::to_chars(std::begin(digits), std::end(digits), cell.integer)
                           : std::to_chars(std::begin(digits), std::end(digits), cell.real);
  decimal_.assign(std::begin(digits), written.ptr);
  return decimal_;
}

bool RowFields::RowField::Boolean() const {
  return Number() != 0;
}
std::int64_t RowFields::RowField::Number() const {
  return NumberOf(Read());
}

platform::DateTime RowFields::RowField::Date() const {
  return platform::DateTime::FromIso(Read().text).value_or(platform::DateTime());
}

Value RowFields::RowField::Value() const {
  return ValueOf(Read(), def_.type);
}

void RowFields::RowField::SetNull() {
  CopyBuffer::Cell& cell = Write();
  cell.kind = CellKind::kNull;
  cell.text.clear();
}

// A text has at most as many characters as bytes, so that most are never counted.
void RowFields::RowField::RequireFits(std::string_view text) const {
  if (def_.size == 0 || text.size() <= static_cast<std::size_t>(def_.size)) return;
  if (platform::CharacterCount(text) <= static_cast<std::size_t>(def_.size)) return;
  throw EngineError(ErrorNumber::kTooLongForField, "The text is too long for the field '" + def_.name +
                                                       "', which holds " + std::to_string(def_.size) +
                                                       " characters.");
}

void RowFields::RowField::SetText(std::string_view text) {
  if (def_.type != FieldType::kText && def_.type != FieldType::kMemo) RefuseType();
  RequireFits(text);
  CopyBuffer::Cell& cell = Write();
  cell.kind = CellKind::kText;
  cell.text.assign(text);
}

void RowFields::RowField::SetBoolean(bool value) {
  if (def_.type != FieldType::kBoolean) RefuseType();
  CopyBuffer::Cell& cell = Write();
  cell.kind = CellKind::kInteger;
  cell.integer = value ? 1 : 0;
}

void RowFields::RowField::SetNumber(std::int64_t value) {
  if (def_.type != FieldType::kLong && def_.type != FieldType::kDouble) RefuseType();
  CopyBuffer::Cell& cell = Write();
  cell.kind = CellKind::kInteger;
  cell.integer = value;
}

void RowFields::RowField::SetDate(platform::DateTime value) {
  if (def_.type != FieldType::kDate) RefuseType();
  if (!value.IsSet()) return SetNull();
  CopyBuffer::Cell& cell = Write();
  cell.kind = CellKind::kText;
  cell.text.resize(kIsoLength);
  value.WriteIso(cell.text.data());
}

}  // namespace varnlog::dao
