#include "app/HelpCollection.h"

#include <QFileInfo>
#include <QRegularExpression>

namespace varnlog::app {

HelpCollection::HelpCollection(std::unique_ptr<QTemporaryDir> folder)
    : folder_(std::move(folder)), engine_(folder_->filePath(QStringLiteral("help.qhc"))) {
  engine_.setReadOnly(false);
}

std::unique_ptr<HelpCollection> HelpCollection::Open(const QString& file) {
  auto folder = std::make_unique<QTemporaryDir>();
  if (!folder->isValid() || QHelpEngineCore::namespaceName(file).isEmpty()) return nullptr;
  std::unique_ptr<HelpCollection> help(new HelpCollection(std::move(folder)));
  const bool open = help->engine_.setupData() &&
                    help->engine_.registerDocumentation(QFileInfo(file).absoluteFilePath()) &&
                    !help->engine_.fileData(Page(QStringLiteral("overview"))).isEmpty();
  return open ? std::move(help) : nullptr;
}

QUrl HelpCollection::Page(const QString& name) {
  return QUrl(QStringLiteral("qthelp://varnlog/help/%1.html").arg(name));
}

QStringList SearchWords(const QString& text) {
  static const QRegularExpression between(QStringLiteral("[^\\w]+"),
                                          QRegularExpression::UseUnicodePropertiesOption);
  return text.split(between, Qt::SkipEmptyParts);
}

QString SearchQuery(const QStringList& words) {
  QStringList terms;
  for (const QString& word : words) terms << QLatin1Char('"') + word + QLatin1String("\"*");
  return terms.join(QLatin1String(" AND "));
}

}  // namespace varnlog::app
