#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "db/dao/CellView.h"
#include "db/dao/Field.h"

namespace varnlog::dao {

/// Where the fields of a record set find its current row.
class RowSource {
 public:
  virtual ~RowSource() = default;
  /// Throws kNoCurrentRecord or kRecordDeleted.
  [[nodiscard]] virtual CellView CurrentCell(std::size_t ordinal) = 0;
};

/// The copy buffer between AddNew or Edit and Update. Its texts keep their memory from row to row.
class CopyBuffer {
 public:
  struct Cell {
    CellKind kind = CellKind::kNull;
    bool isChanged = false;
    std::int64_t integer = 0;
    double real = 0;
    std::string text;

    [[nodiscard]] CellView View() const {
      return {.kind = kind, .integer = integer, .real = real, .text = text};
    }
    void Set(const CellView& value);
  };

  enum class State { kClosed, kAdding, kEditing };

  [[nodiscard]] State state() const { return state_; }
  void Open(State state, std::size_t fields);
  void Close() { state_ = State::kClosed; }

  [[nodiscard]] Cell& operator[](std::size_t ordinal) { return cells_[ordinal]; }
  [[nodiscard]] const Cell& operator[](std::size_t ordinal) const { return cells_[ordinal]; }
  [[nodiscard]] std::size_t size() const { return cells_.size(); }
  [[nodiscard]] std::span<const Cell> Cells() const { return cells_; }
  [[nodiscard]] bool IsChanged() const;

 private:
  State state_ = State::kClosed;
  std::vector<Cell> cells_;
};

/// The Field objects of one record set; they stay where they are as long as it lives.
class RowFields {
 public:
  /// `defs` may be shared by many record sets of the same shape.
  RowFields(std::shared_ptr<const std::vector<FieldDef>> defs, RowSource& source);
  RowFields(const RowFields&) = delete;
  RowFields& operator=(const RowFields&) = delete;

  [[nodiscard]] std::size_t size() const { return defs_->size(); }
  [[nodiscard]] Field& operator[](std::size_t ordinal) { return fields_[ordinal]; }
  [[nodiscard]] const std::vector<FieldDef>& Defs() const { return *defs_; }
  [[nodiscard]] CopyBuffer& Buffer() { return buffer_; }

 private:
  class RowField final : public Field {
   public:
    RowField(RowFields& owner, const FieldDef& def, std::size_t ordinal)
        : owner_(owner), def_(def), ordinal_(ordinal) {}

    [[nodiscard]] const FieldDef& Def() const override { return def_; }
    [[nodiscard]] bool IsNull() const override;
    [[nodiscard]] std::string_view Text() const override;
    [[nodiscard]] bool Boolean() const override;
    [[nodiscard]] std::int64_t Number() const override;
    [[nodiscard]] platform::DateTime Date() const override;
    [[nodiscard]] dao::Value Value() const override;
    void SetNull() override;
    void SetText(std::string_view text) override;
    void SetBoolean(bool value) override;
    void SetNumber(std::int64_t value) override;
    void SetDate(platform::DateTime value) override;

   private:
    [[nodiscard]] CellView Read() const;
    [[nodiscard]] CopyBuffer::Cell& Write();
    [[noreturn]] void RefuseType() const;
    void RequireFits(std::string_view text) const;

    RowFields& owner_;
    const FieldDef& def_;
    std::size_t ordinal_;
    mutable std::string decimal_;
  };

  std::shared_ptr<const std::vector<FieldDef>> defs_;
  RowSource& source_;
  CopyBuffer buffer_;
  std::vector<RowField> fields_;
};

}  // namespace varnlog::dao
