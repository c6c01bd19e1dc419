#include "legacy/Fault.h"

#include <algorithm>

namespace varnlog::legacy {
namespace {

const char* Text(FaultKind kind) {
  switch (kind) {
    case FaultKind::kNotJet:
      return "not a Jet database";
    case FaultKind::kUnknownVersion:
      return "a Jet database of an unknown version";
    case FaultKind::kTruncated:
      return "the file ends within a page";
    case FaultKind::kPageMissing:
      return "page beyond the end of the file";
    case FaultKind::kPageType:
      return "page of another type than expected";
    case FaultKind::kPageOwner:
      return "page that belongs to something else";
    case FaultKind::kRowTable:
      return "row offsets contradict each other";
    case FaultKind::kRowPointer:
      return "moved row whose body is not where it should be";
    case FaultKind::kRowLayout:
      return "row whose inner offsets lead out of it";
    case FaultKind::kDefinition:
      return "table definition that cannot be";
    case FaultKind::kLongValue:
      return "long text whose pieces do not fit together";
    case FaultKind::kDate:
      return "number that is no date";
    case FaultKind::kTooMuch:
      return "more data than the file can hold";
    case FaultKind::kRowCount:
      return "rows found are not the rows declared";
    case FaultKind::kTableMissing:
      return "table missing";
    case FaultKind::kTableLinked:
      return "table kept in another file";
    case FaultKind::kColumnMissing:
      return "column missing or of another type";
    case FaultKind::kDoubledId:
      return "row id given twice";
    case FaultKind::kIdMissing:
      return "row without an id";
    case FaultKind::kImplausibleDate:
      return "implausible date";
    case FaultKind::kTooLong:
      return "text longer than its column";
    case FaultKind::kCatalogueUnread:
      return "list of tables damaged";
  }
  return "unknown fault";
}

}  // namespace

std::string Describe(const Fault& fault) {
  std::string place;
  if (fault.page != 0) place = "page " + std::to_string(fault.page);
  if (fault.row >= 0) place += ", row " + std::to_string(fault.row);
  if (!place.empty()) place += ": ";
  place += Text(fault.kind);
  if (!fault.name.empty()) place += " (" + fault.name + ")";
  return place;
}

void FaultList::Add(Fault fault) {
  ++count_;
  if (first_.size() < kKept) first_.push_back(std::move(fault));
}

bool FaultList::Has(FaultKind kind) const {
  return std::any_of(first_.begin(), first_.end(), [&](const Fault& fault) { return fault.kind == kind; });
}

}  // namespace varnlog::legacy
