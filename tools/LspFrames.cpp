#include "tools/LspFrames.h"

#include <algorithm>

#include "tools/Failure.h"
#include "tools/Messages.h"
#include "tools/Numbers.h"

namespace korvo::tools {
namespace {

// A header has two lines of some twenty characters; what has thousands is none.
constexpr std::size_t kMaxHeaderLine = 4096;

[[noreturn]] void fail(const std::string& wanted, const std::string& found) {
  throw Failure(Exit::refused, "korvo lsp: expected " + wanted + ", found " + found);
}

// Without its end of line; nothing at the end of the input.
std::optional<std::string> headerLine(std::istream& in) {
  std::string line;
  for (int c = in.get(); c != std::istream::traits_type::eof(); c = in.get()) {
    if (c == '\n') {
      if (line.ends_with('\r')) line.pop_back();
      return line;
    }
    line += static_cast<char>(c);
    if (line.size() > kMaxHeaderLine) fail("a header line", inQuotes(line));
  }
  if (!line.empty()) fail("a whole header line", inQuotes(line));
  return std::nullopt;
}

bool isLength(std::string name) {
  std::transform(name.begin(), name.end(), name.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; });
  return name == "content-length";
}

int lengthOf(const std::string& text) {
  const std::optional<int> length = integerOf(text);
  if (!length || *length < 0 || *length > kMaxLspMessage) {
    fail("a Content-Length from 0 to " + std::to_string(kMaxLspMessage), inQuotes(trimmed(text)));
  }
  return *length;
}

// Of the message that follows; nothing at the end of the input.
std::optional<int> readHeader(std::istream& in) {
  std::optional<int> length;
  std::optional<std::string> line = headerLine(in);
  if (!line) return std::nullopt;
  for (; line && !line->empty(); line = headerLine(in)) {
    const std::size_t colon = std::min(line->find(':'), line->size());
    if (!isLength(line->substr(0, colon))) continue;
    length = lengthOf(line->substr(std::min(colon + 1, line->size())));
  }
  if (!line) fail("an empty line behind the header", "the end of the input");
  if (!length) fail("a header with a Content-Length", "none");
  return length;
}

}  // namespace

std::optional<std::string> readFrame(std::istream& in) {
  const std::optional<int> length = readHeader(in);
  if (!length) return std::nullopt;
  std::string message(static_cast<std::size_t>(*length), '\0');
  in.read(message.data(), *length);
  if (in.gcount() != *length) {
    fail("a message of " + std::to_string(*length) + " bytes", std::to_string(in.gcount()));
  }
  return message;
}

void writeFrame(std::ostream& out, const std::string& message) {
  out << "Content-Length: " << message.size() << "\r\n\r\n" << message << std::flush;
}

}  // namespace korvo::tools
