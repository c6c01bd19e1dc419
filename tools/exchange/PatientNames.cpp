#include "tools/exchange/PatientNames.h"

#include <array>

namespace varnlog::tools {

namespace {

using Name = std::string_view;

constexpr auto kSurnames = std::to_array<Name>({
    "Müller",    "Schmidt",     "Schneider",      "Fischer",        "Weber",
    "Meyer",     "Wagner",      "Becker",         "Schulz",         "Hoffmann",
    "Schäfer",   "Koch",        "Bauer",          "Richter",        "Klein",
    "Wolf",      "Schröder",    "Neumann",        "Schwarz",        "Zimmermann",
    "Braun",     "Krüger",      "Hartmann",       "Lange",          "Weiß",
    "Jäger",     "Günther",     "Groß",           "Köhler",         "König",
    "Böhm",      "Strauß",      "Preuß",          "Grünwald",       "Ößling",
    "Übelacker", "von der Aue", "zu Löwenstein",  "Yilmaz",         "Öztürk",
    "Kowalski",  "Nowak",       "de Vries",       "van den Berg",   "van Dijk",
    "'t Hooft",  "in 't Veld",  "de Groot",       "Dupont",         "Lefèvre",
    "Béranger",  "D'Angelo",    "Dell'Acqua",     "Rossi",          "Bianchi",
    "O'Brien",   "O'Neill",     "García Márquez", "Núñez",          "Peña",
    "Ibáñez",    "Castaño",     "Müller-Lüdke",   "Meyer-Preußler", "Châtelain",
    "L'Hôpital", "Ångström",    "Sørensen",       "Lindström",      "Ferreira da Silva",
    "Gonçalves", "Bächli",
});

constexpr auto kWomen = std::to_array<Name>({
    "Anna",        "Lena",   "Käthe",  "Gisela", "Grete",     "Ursula", "Sabine",  "Petra",
    "Mia",         "Emma",   "Zoë",    "Renée",  "Amélie",    "Chloé",  "Inés",    "Lucía",
    "María José",  "Begoña", "Giulia", "Chiara", "Saskia",    "Anneke", "Marijke", "Ayla",
    "Anna-Sophie", "Björk",  "Siân",   "Maeve",  "Françoise", "Dörte",
});

constexpr auto kMen = std::to_array<Name>({
    "Max",   "Jörg",   "Jürgen",   "Günter", "Hans-Peter", "Lukas",  "Björn", "Götz",  "Uwe",     "Karl",
    "Émile", "René",   "François", "Loïc",   "José",       "Andrés", "Íñigo", "Ramón", "Niccolò", "Matteo",
    "Jan",   "Pieter", "Maarten",  "Mehmet", "Seán",       "Liam",   "Søren", "Håkan", "André",   "Tobias",
});

constexpr auto kStaff = std::to_array<Name>({
    "Dr. Weiß",
    "Dr. Krämer",
    "ZFA Grün",
    "ZFA Peters",
    "ZMF O'Hara",
    "Dr. Günther",
});

// Surnames that are the same for women and men.
constexpr auto kCyrillicSurnames = std::to_array<Name>({
    "Шевченко",  "Бондаренко", "Ткаченко", "Кравченко", "Юрченко", "Щербаченко",    "Ёлченко",
    "Ковальчук", "Мельничук",  "Полищук",  "Бондарчук", "Савчук",  "Эткинд",        "Д'Артье",
    "Черных",    "Долгих",     "Седых",    "Живаго",    "Хитрово", "Седых-Хитрово",
});

constexpr auto kCyrillicWomen = std::to_array<Name>({
    "Анна",
    "Мария",
    "Ольга",
    "Светлана",
    "Наталья",
    "Алёна",
    "Юлия",
    "Екатерина",
    "Зоя",
    "Любовь",
});

constexpr auto kCyrillicMen = std::to_array<Name>({
    "Иван",
    "Пётр",
    "Сергей",
    "Дмитрий",
    "Алексей",
    "Юрий",
    "Фёдор",
    "Михаил",
    "Эдуард",
    "Яков",
});

constexpr auto kCyrillicStaff = std::to_array<Name>({"Д-р Белов", "Д-р Ёлкина", "С. Щукина"});

}  // namespace

NameLists NamesFor(std::string_view language) {
  if (language == "CYR") {
    return {
        .surnames = kCyrillicSurnames, .women = kCyrillicWomen, .men = kCyrillicMen, .staff = kCyrillicStaff};
  }
  return {.surnames = kSurnames, .women = kWomen, .men = kMen, .staff = kStaff};
}

}  // namespace varnlog::tools
