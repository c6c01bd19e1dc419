#include "legacy/JetRowWalk.h"

namespace varnlog::legacy {
namespace {

class Walk {
 public:
  Walk(const JetPages& pages, const JetTable& table, Budget& budget, FaultList& faults,
       const std::function<bool(RowPlace, Bytes)>& visit)
      : pages_(pages), table_(table), budget_(budget), faults_(faults), visit_(visit) {}

  WalkEnd Run() {
    for (const std::uint32_t number : pages_.DataPagesOf(table_.definitionPage)) {
      const auto page = DataPage::Open(pages_, number, table_.definitionPage, pageBuffer_);
      if (!page) {
        Report(page.Why());
      } else {
        VisitPage(*page);
      }
      if (!end_.reachedEnd) break;
    }
    return end_;
  }

 private:
  void VisitPage(const DataPage& page) {
    for (int row = 0; row < page.RowCount() && end_.reachedEnd; ++row) {
      if (page.IsSkipped(row)) continue;
      ++end_.found;
      const auto slot = page.Slot(row);
      if (!slot) {
        Report(slot.Why());
      } else if (slot->isPointer) {
        Follow({page.Number(), row}, slot->bytes);
      } else {
        Visit({page.Number(), row}, slot->bytes);
      }
    }
  }

  // The body of a moved row is skipped where it lies, or it would be read twice.
  void Follow(RowPlace from, Bytes pointer) {
    ByteReader reader(pointer);
    const RowPlace place = PlaceFrom(reader.U32(0));
    const Fault fault{FaultKind::kRowPointer, from.page, from.row, table_.name};
    const auto page = DataPage::Open(pages_, place.page, table_.definitionPage, bodyBuffer_);
    if (reader.Overran() || !page) return faults_.Add(fault);
    const auto body = page->Slot(place.row);
    if (!body || !body->isSkipped || body->isPointer) return faults_.Add(fault);
    Visit(place, body->bytes);
  }

  void Visit(RowPlace place, Bytes bytes) {
    if (!budget_.Spend(bytes.size())) {
      faults_.Add({FaultKind::kTooMuch, place.page, place.row, table_.name});
      end_.reachedEnd = false;
    } else if (!visit_(place, bytes)) {
      end_.reachedEnd = false;
    }
  }

  void Report(Fault fault) {
    fault.name = table_.name;
    faults_.Add(std::move(fault));
  }

  const JetPages& pages_;
  const JetTable& table_;
  Budget& budget_;
  FaultList& faults_;
  const std::function<bool(RowPlace, Bytes)>& visit_;
  PageBuffer pageBuffer_;
  PageBuffer bodyBuffer_;
  WalkEnd end_;
};

}  // namespace

WalkEnd WalkRows(const JetPages& pages, const JetTable& table, Budget& budget, FaultList& faults,
                 const std::function<bool(RowPlace, Bytes)>& visit) {
  return Walk(pages, table, budget, faults, visit).Run();
}

}  // namespace varnlog::legacy
