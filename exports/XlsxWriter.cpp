#include "exports/XlsxWriter.h"

#include <cerrno>
#include <cstdio>
#include <map>
#include <system_error>
#include <utility>
#include <xlsxwriter.h>

#include "exports/ZipDirectory.h"
#include "logview/MeasuredValue.h"
#include "platform/CodePage.h"
#include "platform/Files.h"
#include "platform/Terminal.h"

namespace varnlog::exports {

namespace {

constexpr std::size_t kLongestSheetName = 28;  // with room for a number, of the 31 there may be
constexpr std::uint8_t kShortDate = 14;        // the built-in format that each reader shows in his own way
constexpr lxw_color_t kHeadingColor = 0xE7E6E6;
constexpr int kUsualWidth = 16;
constexpr int kMargin = 2;

// Days before it have another number in every spreadsheet, which take 1900 for a leap year.
constexpr std::int64_t kSecondsPerDay = 86'400;
constexpr std::int64_t kFirstCommonDay = 61;

[[noreturn]] void Fail(lxw_error error) {
  const bool isSystem = error == LXW_ERROR_CREATING_XLSX_FILE || error == LXW_ERROR_CREATING_TMPFILE ||
                        error == LXW_ERROR_ZIP_FILE_OPERATION || error == LXW_ERROR_ZIP_FILE_ADD;
  if (isSystem && errno != 0) throw WorkbookError(std::generic_category().message(errno));
  throw WorkbookError(lxw_strerror(error));
}

void Require(lxw_error error) {
  if (error != LXW_NO_ERROR) Fail(error);
}

/// What spreadsheets accept as the name of a sheet.
std::string SheetName(std::string_view wanted) {
  std::string name;
  for (const char c : wanted)
    name += std::string_view("[]:*?/\\'").find(c) == std::string_view::npos ? c : ' ';
  return std::string(platform::FirstCharacters(name, kLongestSheetName));
}

}  // namespace

class XlsxWriter::Book {
 public:
  Book(std::filesystem::path file, WorkbookForm form)
      : file_(std::move(file)),
        name_(platform::FromPath(file_)),
        folder_(platform::FromPath(file_.parent_path())),
        form_(std::move(form)) {
    errno = 0;
    lxw_workbook_options options{};
    options.constant_memory = LXW_TRUE;
    options.tmpdir = folder_.empty() ? nullptr : folder_.data();
    book_ = workbook_new_opt(name_.c_str(), &options);
    if (book_ == nullptr) Fail(LXW_ERROR_MEMORY_MALLOC_FAILED);
    heading_ = NewFormat();
    format_set_bold(heading_);
    format_set_bg_color(heading_, kHeadingColor);
    format_set_bottom(heading_, LXW_BORDER_THIN);
    date_ = NewFormat();
    format_set_num_format_index(date_, kShortDate);
  }
  ~Book() {
    if (book_ == nullptr) return;
    // The library forgets to close the files in which rows wait for the end.
    for (const Sheet& sheet : sheets_)
      if (std::FILE* const rows = std::exchange(sheet.sheet->optimize_tmpfile, nullptr)) std::fclose(rows);
    lxw_workbook_free(book_);
  }
  Book(const Book&) = delete;
  Book& operator=(const Book&) = delete;

  void SetHeadings(std::vector<std::string> headings) {
    headings_ = std::move(headings);
    BeginSheet();
  }

  void Add(const Row& row) {
    if (rowsOnSheet_ == form_.rowsPerSheet) {
      EndSheet();
      BeginSheet();
    }
    ++rowsOnSheet_;
    ++rows_;
    for (std::size_t i = 0; i < row.size(); ++i) {
      Require(Write(static_cast<lxw_row_t>(rowsOnSheet_), static_cast<lxw_col_t>(i), row[i]));
    }
  }

  void Finish() {
    EndSheet();
    AddFacts();
    RequireWritten();
    lxw_workbook* const book = std::exchange(book_, nullptr);
    errno = 0;
    Require(workbook_close(book));
    RequireComplete();
  }

 private:
  lxw_format* NewFormat() {
    lxw_format* const format = workbook_add_format(book_);
    if (format == nullptr) Fail(LXW_ERROR_MEMORY_MALLOC_FAILED);
    return format;
  }

  lxw_worksheet* NewSheet(const std::string& name) {
    errno = 0;
    sheet_ = workbook_add_worksheet(book_, name.c_str());
    if (sheet_ == nullptr) Fail(LXW_ERROR_CREATING_TMPFILE);
    sheets_.push_back({sheet_, 0});
    return sheet_;
  }

  void BeginSheet() {
    ++rowSheets_;
    const std::string number = rowSheets_ > 1 ? " " + std::to_string(rowSheets_) : "";
    NewSheet(SheetName(form_.sheetName) + number);
    rowsOnSheet_ = 0;
    for (std::size_t i = 0; i < headings_.size(); ++i) {
      const auto column = static_cast<lxw_col_t>(i);
      const int width = i < form_.widths.size() && form_.widths[i] > 0 ? form_.widths[i] : kUsualWidth;
      Require(worksheet_set_column(sheet_, column, column, width + kMargin, nullptr));
      Require(WriteText(0, column, headings_[i], heading_));
    }
    worksheet_freeze_panes(sheet_, 1, 0);
  }

  void EndSheet() {
    if (headings_.empty()) return;
    const auto lastColumn = static_cast<lxw_col_t>(headings_.size() - 1);
    const auto lastRow = static_cast<lxw_row_t>(rowsOnSheet_);
    Require(worksheet_autofilter(sheet_, 0, 0, lastRow, lastColumn));
    // The tooth 11 is a name and no number, so nobody has to be warned that it is a text.
    Require(worksheet_ignore_errors(sheet_, LXW_IGNORE_NUMBER_STORED_AS_TEXT, "A1:XFD1048576"));
  }

  void AddFacts() {
    constexpr int kLabelWidth = 24;
    constexpr int kValueWidth = 80;
    NewSheet(SheetName(form_.infoName));
    Require(worksheet_set_column(sheet_, 0, 0, kLabelWidth, nullptr));
    Require(worksheet_set_column(sheet_, 1, 1, kValueWidth, nullptr));
    lxw_row_t line = 0;
    for (const auto& [label, value] : form_.facts) {
      Require(WriteText(line, 0, label, heading_));
      Require(WriteText(line++, 1, value, nullptr));
    }
    Require(WriteText(line, 0, form_.rowsLabel, heading_));
    lxw_format* const toTheLeft = NewFormat();
    format_set_align(toTheLeft, LXW_ALIGN_LEFT);
    Require(worksheet_write_number(sheet_, line, 1, static_cast<double>(rows_), toTheLeft));
  }

  lxw_error Write(lxw_row_t row, lxw_col_t column, const Cell& cell) {
    switch (cell.kind) {
      case Cell::Kind::kNumber:
        return worksheet_write_number(sheet_, row, column, std::stod(cell.text), nullptr);
      case Cell::Kind::kMeasured:
        if (const auto read = logview::ReadMeasured(cell.text)) {
          return worksheet_write_number(sheet_, row, column, read->value, NumberFormat(read->decimals));
        }
        break;
      case Cell::Kind::kDate:
        if (const std::int64_t seconds = cell.date.SecondsSinceEpoch();
            seconds >= kFirstCommonDay * kSecondsPerDay) {
          const double days = static_cast<double>(seconds) / static_cast<double>(kSecondsPerDay);
          return worksheet_write_number(sheet_, row, column, days, date_);
        }
        break;
      case Cell::Kind::kText:
      case Cell::Kind::kNull:
        break;
    }
    return WriteText(row, column, cell.text, nullptr);
  }

  lxw_error WriteText(lxw_row_t row, lxw_col_t column, const std::string& text, lxw_format* format) {
    if (text.empty()) return LXW_NO_ERROR;
    return worksheet_write_string(sheet_, row, column, platform::PrintableText(text, "\t\r\n").c_str(),
                                  format);
  }

  /// Shows as many decimals as were written.
  lxw_format* NumberFormat(int decimals) {
    lxw_format*& format = numbers_[decimals];
    if (format == nullptr) {
      format = NewFormat();
      const std::string digits(static_cast<std::size_t>(decimals), '0');
      format_set_num_format(format, (decimals > 0 ? "0." + digits : "0").c_str());
    }
    return format;
  }

  /// The library writes rows without looking at what becomes of them.
  void RequireWritten() {
    for (auto& [sheet, bytes] : sheets_) {
      std::FILE* const rows = sheet->optimize_tmpfile;
      errno = 0;
      if (std::fflush(rows) != 0 || std::ferror(rows) != 0) Fail(LXW_ERROR_CREATING_TMPFILE);
      bytes = static_cast<std::uint64_t>(std::ftell(rows));
    }
  }

  /// Nor does it when it puts them together: each sheet in the file must be longer than its rows.
  void RequireComplete() {
    const auto entries = ListArchive(file_);
    for (std::size_t i = 0; i < sheets_.size(); ++i) {
      const auto entry = entries.find("xl/worksheets/sheet" + std::to_string(i + 1) + ".xml");
      if (entry != entries.end() && entry->second > sheets_[i].rowBytes) continue;
      throw WorkbookError(std::generic_category().message(ENOSPC));
    }
  }

  struct Sheet {
    lxw_worksheet* sheet;
    std::uint64_t rowBytes;
  };

  std::filesystem::path file_;
  std::string name_;
  std::string folder_;
  WorkbookForm form_;
  lxw_workbook* book_ = nullptr;
  lxw_worksheet* sheet_ = nullptr;
  lxw_format* heading_ = nullptr;
  lxw_format* date_ = nullptr;
  std::map<int, lxw_format*> numbers_;  // by decimals
  std::vector<Sheet> sheets_;
  std::vector<std::string> headings_;
  std::int64_t rowSheets_ = 0;
  std::int64_t rowsOnSheet_ = 0;
  std::int64_t rows_ = 0;
};

XlsxWriter::XlsxWriter(std::filesystem::path file, WorkbookForm form)
    : book_(std::make_unique<Book>(std::move(file), std::move(form))) {}

XlsxWriter::~XlsxWriter() = default;

void XlsxWriter::Begin(const std::vector<std::string>& headings) {
  book_->SetHeadings(headings);
}

void XlsxWriter::Add(const Row& row) {
  book_->Add(row);
}

void XlsxWriter::End() {
  book_->Finish();
}

}  // namespace varnlog::exports
