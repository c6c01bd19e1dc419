#include <map>

#include <gtest/gtest.h>

#include "report/Formula.h"

namespace varnlog::report {
namespace {

using platform::DateTime;

class OneLine final : public FormulaContext {
 public:
  [[nodiscard]] FormulaValue Field(std::string_view name) const override {
    const auto found = fields.find(std::string(name));
    if (found == fields.end()) throw FormulaError("no field " + std::string(name));
    return found->second;
  }
  [[nodiscard]] std::int64_t PageNumber() const override { return 3; }
  [[nodiscard]] std::int64_t TotalPageCount() const override { return 12; }
  [[nodiscard]] std::int64_t RecordNumber() const override { return 57; }
  [[nodiscard]] std::int64_t Count() const override { return 400; }
  [[nodiscard]] DateTime PrintDate() const override { return *DateTime::FromCivil(2024, 2, 9); }

  std::map<std::string, FormulaValue> fields = {{"tXraySName", std::string("D'Angelo \"Rex\" {x}")},
                                                {"tXraySPreg", std::string("N")},
                                                {"tXraySDiagRetry", std::string()},
                                                {"tXrayDBirthday", *DateTime::FromCivil(1961, 7, 5)}};
};

TEST(FormulaTest, ComputesWhatTheReportsFormulasSay) {
  const OneLine line;
  const std::pair<const char*, const char*> rows[] = {
      {R"({dao.tXraySName} + ", " + "x")", "D'Angelo \"Rex\" {x}, x"},
      {R"("Seite " + ToText(pageNumber, 0) + " von " + ToText(TotalPageCount, 0))", "Seite 3 von 12"},
      {R"(ToText({dao.tXrayDBirthday}, "d.M.yyyy"))", "5.7.1961"},
      {R"(ToText({dao.tXrayDBirthday}, "yyyy-MM-dd"))", "1961-07-05"},
      {R"(ToText({dao.tXrayDBirthday}, "M/d/yy"))", "7/5/61"},
      {R"("Gedruckt: " + ToText(PrintDate))", "Gedruckt: 9.2.2024"},
      {R"(if {dao.tXraySPreg}="J" then "ja" else if {dao.tXraySPreg}="N" then "nein" else "?")", "nein"},
      {R"(if {dao.tXraySDiagRetry}="N.d." then "n" else {dao.tXraySDiagRetry})", ""},
      {R"(ToText(Count({dao.tXrayTs}), 0) + "/" + totext(RECORDNUMBER + 1, 1))", "400/58.0"},
      {R"("sagt ""ja""")", "sagt \"ja\""},
  };
  for (const auto& [text, result] : rows) EXPECT_EQ(Formula(text).EvaluateText(line), result) << text;
}

TEST(FormulaTest, NamesThePlaceOfWhatItCannotRead) {
  const std::pair<std::string, const char*> rows[] = {
      {"", "character 1: a value"},
      {"\"offen", "character 1: the text is not closed"},
      {"{dao.tXraySName", "character 1: the field reference"},
      {"{table.x}", "character 1: fields are written"},
      {"\"a\" \"b\"", "character 5: nothing more"},
      {"if {dao.a}=\"b\" then \"c\"", "character 24: 'else' expected"},
      {"Shell(\"x\")", "character 1: 'shell' is not known"},
      {std::string(1000, '('), "nested too deeply"},
  };
  for (const auto& [text, message] : rows) {
    try {
      const Formula formula(text);
      ADD_FAILURE() << text << " was accepted";
    } catch (const FormulaError& error) {
      EXPECT_NE(std::string(error.what()).find(message), std::string::npos) << error.what();
    }
  }
}

TEST(FormulaTest, RefusesToMixTypesAndUnknownFields) {
  const OneLine line;
  for (const char* text : {"\"a\" + 1", "{dao.tXrayTs}", "ToText(1, \"d\")", "ToText(PrintDate, 2)"}) {
    EXPECT_THROW((void)Formula(text).EvaluateText(line), FormulaError) << text;
  }
}

}  // namespace
}  // namespace varnlog::report
