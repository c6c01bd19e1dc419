// Makes the databases that belong in the program folder: make_databases RESOURCES FOLDER
#include <exception>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "db/dao/DBEngine.h"
#include "platform/Files.h"
#include "tools/make_databases/TextTable.h"

namespace {

namespace fs = std::filesystem;
using varnlog::dao::Database;
using varnlog::dao::DBEngine;

std::string Content(const fs::path& path) {
  std::error_code error;
  auto content = varnlog::platform::ReadWholeFile(path, error);
  if (!content) throw std::runtime_error(path.string() + ": " + error.message());
  return *std::move(content);
}

void FillTexts(Database& database, const fs::path& source) {
  const auto table = varnlog::tools::ReadTextTable(Content(source));
  database.Execute("BEGIN");
  const auto rows = database.OpenRecordset("TRes");
  for (const auto& line : table.lines) {
    for (std::size_t i = 0; i < table.languages.size(); ++i) {
      rows->AddNew();
      rows->Fields("TResSLangKey").SetText(table.languages[i]);
      rows->Fields("TResSTextKey").SetText(line.key);
      rows->Fields("TResSText").SetText(line.texts[i]);
      rows->Update();
    }
  }
  database.Execute("COMMIT");
}

// A database is complete before it has its name, so that an interrupted build is noticed.
template <typename Fill>
void Make(const fs::path& target, const std::vector<fs::path>& schemas, const Fill& fill) {
  const fs::path unfinished = fs::path(target) += ".new";
  // What an interrupted build has left, and the journal of that.
  fs::remove(unfinished);
  fs::remove(fs::path(unfinished) += "-journal");
  DBEngine engine;
  const auto database = engine.CreateDatabase(varnlog::platform::FromPath(unfinished), "", 0);
  for (const fs::path& schema : schemas) database->Execute(Content(schema));
  fill(*database);
  database->Close();
  // A new database is private; these come with the program and are for all its users.
  fs::permissions(unfinished, fs::perms::group_read | fs::perms::others_read, fs::perm_options::add);
  fs::rename(unfinished, target);
}

void MakeAll(const fs::path& resources, const fs::path& folder) {
  const auto nothingMore = [](Database&) {};
  fs::create_directories(folder);
  Make(folder / "varnlog.md0", {resources / "log.sql", resources / "seals.sql"}, nothingMore);
  Make(folder / "system.mdw", {resources / "workgroup.sql"}, nothingMore);
  Make(folder / "verbalo.mdb", {resources / "texts.sql"},
       [&](Database& database) { FillTexts(database, resources / "texts.tsv"); });
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: make_databases RESOURCES FOLDER\n";
    return 2;
  }
  try {
    MakeAll(argv[1], argv[2]);
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "make_databases: " << error.what() << '\n';
    return 1;
  }
}
