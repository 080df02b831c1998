#include "toolkit/check/Document.h"

#include <utility>

namespace korvo::checking {

Document readDocument(std::FILE* file) {
  Document document;
  text::LineReader lines(file);
  std::wstring line;
  while (lines.next(line)) {
    text::CleanLine clean = text::cleanLine(line);
    text::Statement statement = text::statementOf(clean);
    const text::Keyword keyword = text::keywordOf(statement.keyword.text);
    if (keyword == text::Keyword::none) continue;
    document.push_back({lines.lineNumber(), std::move(clean.text), keyword, std::move(statement)});
  }
  return document;
}

}  // namespace korvo::checking
