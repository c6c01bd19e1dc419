#include "inspection/StartPage.h"

#include "core/Languages.h"

namespace varnlog::inspection {

namespace {

std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '&':
        escaped += "&amp;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

}  // namespace

std::string ToHtml(const StartPage& page) {
  std::string html =
      "<!DOCTYPE html>\n<html lang=\"" + std::string(core::LanguageTag(page.language)) +
      "\">\n<head>\n<meta charset=\"utf-8\">\n<title>" + Escaped(page.title) +
      "</title>\n<style>body{font-family:sans-serif;margin:2em;max-width:60em}"
      "td,th{text-align:left;padding:.3em 1em .3em 0;vertical-align:top}</style>\n</head>\n<body>\n<h1>" +
      Escaped(page.title) + "</h1>\n<table>\n";
  for (const auto& [label, value] : page.facts)
    html += "<tr><th scope=\"row\">" + Escaped(label) + "</th><td dir=\"auto\">" + Escaped(value) +
            "</td></tr>\n";
  html += "</table>\n<ul>\n";
  for (const auto& [name, meaning] : page.files)
    html +=
        "<li><a href=\"" + Escaped(name) + "\">" + Escaped(name) + "</a>: " + Escaped(meaning) + "</li>\n";
  return html + "</ul>\n</body>\n</html>\n";
}

}  // namespace varnlog::inspection
