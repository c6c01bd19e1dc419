#include "bench/RawInsert.h"

#include <array>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>

#include <sqlite3.h>

#include "db/modCommon.h"
#include "intake/CPAXTOTokens.h"
#include "platform/Clock.h"

namespace varnlog::bench {

namespace {

using intake::CToken;

constexpr const char* kTable =
    "CREATE TABLE TXray (tXrayCulIntIDPk INTEGER PRIMARY KEY AUTOINCREMENT, tXraySName TEXT(32),"
    "tXraySFirstname TEXT(32), tXrayDBirthday DATETIME, tXraySSex TEXT(1), tXraySPreg TEXT(1),"
    "tXrayBEdPreg YESNO, tXrayTs DATETIME, tXraySDr TEXT(12), tXrayBEdDr YESNO, tXraySType TEXT(4),"
    "tXrayBEdType YESNO, tXraySDiagRetry TEXT(16), tXrayBEdDiagRetry YESNO, tXraySRegio TEXT(16),"
    "tXrayBEdRegio YESNO, tXraySRadDur TEXT(8), tXrayBEdRadDur YESNO, tXraySVolt TEXT(5),"
    "tXrayBEdVolt YESNO, tXraySCur TEXT(5), tXrayBEdCur YESNO, tXraySDose TEXT(32), tXrayBEdDose YESNO,"
    "tXraySComment TEXT(255))";

struct Closer {
  void operator()(sqlite3* connection) const { sqlite3_close(connection); }
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

void Run(sqlite3* connection, const char* sql) {
  if (sqlite3_exec(connection, sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
    throw std::runtime_error(sqlite3_errmsg(connection));
  }
}

class RowInserter {
 public:
  explicit RowInserter(sqlite3* connection) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(connection,
                       "INSERT INTO TXray VALUES (NULL,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,NULL)",
                       -1, &statement, nullptr);
    insert_.reset(statement);
  }

  void Insert(const CToken& token) {
    at_ = 1;
    const auto birth = db::DottedTextToDate(token.Birthday(), clock_);
    const auto taken =
        db::DottedTextToDate(token.TakeDate(), clock_).AtTimeOf(db::ColonTextToTime(token.TakeTime()));
    birth.WriteIso(birth_.data());
    taken.WriteIso(taken_.data());
    const bool notDiagnosable = token.TypeExtra() == "~~";
    Text(token.LastName());
    Text(token.FirstName());
    Date(birth_);
    Text(token.Sex() == "M" ? "m" : "f");
    Text(token.PregCode().empty() ? "" : "N");
    Flag(token.Sex() != "M");
    Date(taken_);
    TextAndFlag(token.Responsible());
    TextAndFlag(token.TypeCode());
    Text(notDiagnosable ? "N.d." : "");
    Flag(!notDiagnosable);
    for (const auto property :
         {CToken::kTypeExtra, CToken::kRadDur, CToken::kVolt, CToken::kCur, CToken::kDose}) {
      TextAndFlag(token.Get(property));
    }
    if (sqlite3_step(insert_.get()) != SQLITE_DONE) throw std::runtime_error("insert failed");
    sqlite3_reset(insert_.get());
  }

 private:
  void Text(std::string_view text) {
    sqlite3_bind_text(insert_.get(), at_++, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
  }
  void Date(const std::array<char, 19>& text) { Text({text.data(), text.size()}); }
  void Flag(bool flag) { sqlite3_bind_int(insert_.get(), at_++, flag ? 1 : 0); }
  void TextAndFlag(const std::string& text) {
    Text(text);
    Flag(text.empty());
  }

  platform::SystemClock system_;
  platform::FixedClock clock_{system_.Now()};
  std::unique_ptr<sqlite3_stmt, Closer> insert_;
  std::array<char, 19> birth_{};
  std::array<char, 19> taken_{};
  int at_ = 1;
};

}  // namespace

std::int64_t RawInsert(const std::filesystem::path& exchangeFile, const std::filesystem::path& database) {
  sqlite3* opened = nullptr;
  if (sqlite3_open(database.c_str(), &opened) != SQLITE_OK) throw std::runtime_error("cannot open");
  const std::unique_ptr<sqlite3, Closer> connection(opened);
  Run(opened,
      "PRAGMA page_size=16384; PRAGMA journal_mode=DELETE; PRAGMA synchronous=FULL; PRAGMA "
      "cache_size=-65536");
  Run(opened, kTable);
  intake::CPAXTOTokens reader(platform::CodePage::Oem("D"));
  if (!reader.OpenMailslot(exchangeFile.string())) throw std::runtime_error("cannot read");
  (void)reader.ReadMailslot(std::numeric_limits<std::int32_t>::max());
  Run(opened, "BEGIN IMMEDIATE");
  RowInserter inserter(opened);
  CToken token;
  const std::int64_t count = reader.Count();
  for (std::int64_t i = 0; i < count && reader.Item(i, token); ++i) inserter.Insert(token);
  Run(opened, "COMMIT");
  return count;
}

}  // namespace varnlog::bench
