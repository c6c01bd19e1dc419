#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace varnlog::legacy {

/// What can be wrong with an old file.
enum class FaultKind {
  kNotJet,           // the file does not begin as a Jet database does
  kUnknownVersion,   // a Jet database, but neither version 3 nor 4
  kTruncated,        // the last page is not whole
  kPageMissing,      // a page beyond the end of the file
  kPageType,         // a page of another type than the place that names it needs
  kPageOwner,        // a page that belongs to something else
  kRowTable,         // the row offsets of a data page contradict each other
  kRowPointer,       // a moved row whose body is not where it should be
  kRowLayout,        // the inner offsets of a row lead out of it
  kDefinition,       // a table definition that cannot be
  kLongValue,        // a chain of long value pieces that is broken, endless or of another length
  kDate,             // a number that is no date of the years 100 to 9999
  kTooMuch,          // more data than a file of this size can hold: something is named twice
  kRowCount,         // the rows found are not the rows declared
  kTableMissing,     // `name` is not in the catalogue
  kTableLinked,      // `name` is kept in another file
  kColumnMissing,    // `name` is not in the table, or has another type
  kDoubledId,        // two rows with one id
  kIdMissing,        // a row without an id
  kImplausibleDate,  // an exposure before there were any, or far in the future
  kTooLong,          // a text that its column cannot hold
  kCatalogueUnread,  // the list of tables could not be read
};

/// One finding: what, and where. A page of 0 means the file as a whole, a row of -1 the page as a whole.
struct Fault {
  FaultKind kind = FaultKind::kNotJet;
  std::uint32_t page = 0;
  int row = -1;
  std::string name = {};  // of a table or column, where that helps
};

/// An English line for technicians: "page 12, row 3: moved row whose body is not there".
[[nodiscard]] std::string Describe(const Fault& fault);

/// Either a value or why there is none.
template <typename T>
class [[nodiscard]] Result {
 public:
  Result(T value) : state_(std::in_place_index<0>, std::move(value)) {}      // NOLINT: converts on purpose
  Result(Fault fault) : state_(std::in_place_index<1>, std::move(fault)) {}  // NOLINT: converts on purpose

  [[nodiscard]] explicit operator bool() const { return state_.index() == 0; }
  [[nodiscard]] T& operator*() { return std::get<0>(state_); }
  [[nodiscard]] const T& operator*() const { return std::get<0>(state_); }
  [[nodiscard]] T* operator->() { return &std::get<0>(state_); }
  [[nodiscard]] const T* operator->() const { return &std::get<0>(state_); }
  [[nodiscard]] const Fault& Why() const { return std::get<1>(state_); }

 private:
  std::variant<T, Fault> state_;
};

/// Findings of one reading. A hostile file can hold millions; the first ones are kept, all are counted.
class FaultList {
 public:
  static constexpr std::size_t kKept = 100;

  void Add(Fault fault);
  [[nodiscard]] bool IsEmpty() const { return count_ == 0; }
  [[nodiscard]] std::uint64_t Count() const { return count_; }
  [[nodiscard]] const std::vector<Fault>& First() const { return first_; }
  /// Among those kept.
  [[nodiscard]] bool Has(FaultKind kind) const;

 private:
  std::vector<Fault> first_;
  std::uint64_t count_ = 0;
};

}  // namespace varnlog::legacy
